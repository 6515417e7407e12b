#ifndef BV_KART_GOKART_H
#define BV_KART_GOKART_H

// The go-karts: what all karts share (models, textures, sounds, driving
// constants, colours) and the state of each kart on the track, with its
// driving physics, collisions, lap counting and computer driver.

#include <ctime>

#include "assets/3ds.h"
#include "audio/fsound.h"

const unsigned int GOKART_NKARTS = 7;
const unsigned int GOKART_NCOLORS = 24;
const unsigned int GOKART_NLAPTIMES = 99;
const unsigned int GOKART_NSLIDES = 999;

struct sGokartStaticData {
    s3DS LOarmd3DS, MEarmd3DS, HIarmd3DS;
    s3DS LOarmu3DS, MEarmu3DS, HIarmu3DS;
    s3DS LObody3DS, MEbody3DS, HIbody3DS;
    s3DS LOchasis3DS, MEchasis3DS, HIchasis3DS;
    s3DS LOfoot3DS, MEfoot3DS, HIfoot3DS;
    s3DS LOfrontwheel3DS, MEfrontwheel3DS, HIfrontwheel3DS;
    s3DS LOhead3DS, MEhead3DS, HIhead3DS;
    s3DS LOpedal3DS, MEpedal3DS, HIpedal3DS;
    s3DS LOplastic3DS, MEplastic3DS, HIplastic3DS;
    s3DS LOrearwheel3DS, MErearwheel3DS, HIrearwheel3DS;
    s3DS LOsteeringwheel3DS, MEsteeringwheel3DS, HIsteeringwheel3DS;
    s3DS SLOgokart3DS;

    unsigned int hudTexture, needleTexture, shadowmapTexture, fwshadowmapTexture, skidTexture, myfaceTexture;

    float chasiswidth, chasisfront, chasisback;
    float wheeltrack, wheelbase, wheelwidth, wheelradius, frontwheelwidth;
    float wheelcircumference, wheelaxperturn;
    float maxturn, turn, deturn;
    float topspeed, acceleration, decceleration, resistance, grip;
    float overarmslaengde, underarmslaengde;

    FSOUND_SAMPLE* collission;
    FSOUND_SAMPLE* engine;
    FSOUND_SAMPLE* tire;

    unsigned char palette[GOKART_NCOLORS][3];
    char paletteName[GOKART_NCOLORS][16];

    void init();
    void free();
    // What free() keeps: the needle texture and the plastic models.
    void freeKept();
};

// One skid-mark quad on the ground: corners 0-1 start it, 2-3 end it, with
// one opacity for each end.
struct sSlide {
    float x[4], z[4];
    float a[2];
};

struct sGokart {
    unsigned char ID;
    unsigned char lap;
    unsigned char checkpoint;
    bool aidriver;
    bool kLEFT, kRIGHT, kUP, kDOWN;
    bool thislapcounted;
    time_t lapstart;
    float laptime[GOKART_NLAPTIMES];
    float currentlaptime;
    unsigned char R, G, B;
    float px, pz;
    float ay;
    float may;
    float sw_ay;
    float slidediff;
    float lfw_ax, rfw_ax;
    float lfw_ay, rfw_ay;
    float lrw_ax, rrw_ax;
    float ups;
    float pedal_up;
    float pedal_down;
    float head_ax, head_axs, head_viewax;
    float larmuax, larmuay, larmdax, larmday, larmdpx, larmdpy, larmdpz;
    float rarmuax, rarmuay, rarmdax, rarmday, rarmdpx, rarmdpy, rarmdpz;
    float colx[8], colz[8];
    float sensor_x, sensor_z;
    float opx, opz;
    float ocosay, osinay;
    float oaydiff;
    // A kart that has never played a sound owns no channel yet; a zero here
    // would claim channel 0, which belongs to whoever started first.
    int CHANNEL_collission = -1, CHANNEL_engine = -1, CHANNEL_tire = -1;
    time_t last_aimove;
    bool checkcol;
    float placementdelay;
    float placement;
    bool newSlide;
    unsigned int CURRENTslide;
    unsigned int skill;
    float DELAYslide;
    sSlide lfSlide[GOKART_NSLIDES], rfSlide[GOKART_NSLIDES], lrSlide[GOKART_NSLIDES], rrSlide[GOKART_NSLIDES];
    bool inviewG;
    bool doshadowmap;
    float inviewDist;
    bool col[8];
    unsigned char colg;

    void init(unsigned char ID);
    void move();
    void staybehindbarriers();
    void colide();
    unsigned char colgokart(float x1, float z1, float x2, float z2);
    unsigned int getcheckpoint();
    void think();
    void isinview();
    void draw();
    // After isinview: the stencil shadow this kart's distance and the
    // shadows setting allow, or doshadowmap when it must make do with the blob.
    void castshadow();
    // The blob under the chassis and the front wheels.
    void drawshadowmap();
    // The skid marks of all four wheels.
    void drawslides();
    void drawhud();
    void free();
};

extern sGokartStaticData gokartstaticdata;
extern sGokart gokart[GOKART_NKARTS];

#endif

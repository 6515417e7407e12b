#ifndef BV_KART_GOKART_H
#define BV_KART_GOKART_H

// The go-karts: what all karts share (models, textures, sounds, driving
// constants, colours) and the state of each kart on the track, with its
// driving physics, collisions, lap counting and computer driver.

#include <ctime>
#include <limits>

#include "assets/3ds.h"
#include "audio/fsound.h"
#include "shell/kartfacts.h"

const unsigned int GOKART_NKARTS = kartfacts::kKarts;
const unsigned int GOKART_NCOLORS = kartfacts::kColours;
const unsigned int GOKART_NLAPTIMES = 99;
const unsigned int GOKART_NSLIDES = kartfacts::kSlideSlots;

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
    unsigned char ID;                 // place in gokart[]; 0 is player one
    unsigned char lap;                // laps begun; 0 before the line is first crossed
    unsigned char checkpoint;         // the last barrier pair reached in order
    bool aidriver;                    // the computer drives this kart
    bool kLEFT, kRIGHT, kUP, kDOWN;   // this frame's commands, from the keys or the computer driver
    bool thislapcounted;              // the pass over the line now behind us has counted its lap
    time_t lapstart;                  // clock at the start of this lap
    float laptime[GOKART_NLAPTIMES];  // seconds; entry n holds lap n
    float currentlaptime;             // seconds into this lap; -0.00123 before the first
    unsigned char R, G, B;            // colour of the plastic
    float px, pz;
    float ay;                         // heading, degrees; 0 looks along -z
    float may;                        // direction of travel, degrees; trails ay in a slide
    float sw_ay;                      // steering wheel: degrees of heading per unit travelled, + to the left
    float slidediff;                  // the slide: how far may trails ay, degrees, at most 50
    float lfw_ax, rfw_ax;             // front wheels' spin, degrees
    float lfw_ay, rfw_ay;             // front wheels' steer, degrees
    float lrw_ax, rrw_ax;             // rear wheels' spin, degrees
    float ups;                        // speed along the travel direction, units per second
    float pedal_up;                   // throttle travel, 0..45 degrees
    float pedal_down;                 // brake travel, 0..45 degrees
    float head_ax, head_axs, head_viewax;  // driver's nod, degrees; its rate; what the driver's view adds
    // The arms' pose, worked out as the kart is drawn so the hands hold the
    // wheel: upper arm's pitch and turn, forearm's pitch and turn, elbow.
    float larmuax, larmuay, larmdax, larmday, larmdpx, larmdpy, larmdpz;
    float rarmuax, rarmuay, rarmdax, rarmday, rarmdpx, rarmdpy, rarmdpz;
    float colx[8], colz[8];           // the outline's eight corners this frame, closed
    float sensor_x, sensor_z;         // the point ahead where the checkpoint is looked for
    float opx, opz;                   // position before the last move
    float ocosay, osinay;             // cosine and sine of the heading before the last move
    float oaydiff;                    // the slide of the last move
    // Handles of this kart's three playing sounds; -1, which reaches no
    // channel, until the kart has played any.
    int CHANNEL_collission = -1, CHANNEL_engine = -1, CHANNEL_tire = -1;
    time_t last_aimove;               // clock of the computer driver's last decision
    bool checkcol;                    // touching other karts is reacted to
    float placementdelay;             // time before the computer driver picks its line again
    float placement;                  // line across the road: 0 at the left barrier, 1 at the right
    bool newSlide;                    // the next skid mark starts a new streak
    unsigned int CURRENTslide;        // the slot of the skid-mark rings being written
    unsigned int skill;               // computer driver's level, 0..2
    float DELAYslide;                 // countdown to the next skid mark; 1 is 1/64 second
    sSlide lfSlide[GOKART_NSLIDES], rfSlide[GOKART_NSLIDES], lrSlide[GOKART_NSLIDES], rrSlide[GOKART_NSLIDES];
    bool inviewG;                     // the eye sees this kart this frame
    bool doshadowmap;                 // the blob under it stands in for its shadow
    float inviewDist;                 // distance from the eye, for the level of detail
    bool col[8];                      // which outline edges touched a kart or a barrier
    unsigned char colg;               // the kart touched; ID when none

    void init(unsigned char ID);
    // One frame of driving: the steps below, in this order.
    void move();
    unsigned int countlaps();  // the checkpoint reached
    void placeonroad(unsigned int checkpoint);
    // Back on the road after a crash (kart/rescue.cpp): at rest in the middle
    // of the pair last reached (set back a little where the nose would reach
    // the next pair from there), facing on round; on its grid place before
    // the line is first crossed. Lap, checkpoint and lap times stay.
    void rescue();
    float playengine();  // the loudness divisor of this kart's sounds; 0 without sound
    void steer();
    void pedal();
    void touchkarts(float loudness);
    void touchbarriers(float loudness);
    void turnandslide(float step, float ay0, float loudness);
    void advance(float step, float ay0);
    // After the move: the centre back on the circuit, and no point of the
    // outline more than 0.10 past a barrier line.
    void staybehindbarriers();
    void keepcentre();
    void keepoutline();
    void turnwheels(float step);
    void wrapangles();
    void nodhead(float ups0);
    bool followedhuman() const;
    void playcollision(float loudness);

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

static_assert(std::numeric_limits<decltype(sGokart::checkpoint)>::max() >= kartfacts::kMaxPairs,
              "a kart's checkpoint must count every barrier pair a track may have");

extern sGokartStaticData gokartstaticdata;
extern sGokart gokart[GOKART_NKARTS];

// Where kart id stands on the grid.
void gridslot(unsigned int id, float& x, float& z);

// The karts in this race: the setting, as far as gokart[] holds them.
unsigned int racingKarts();
// The kart the camera follows: the setting, or the first kart when gokart[]
// has no such place.
unsigned int followedKart();

#endif

// The karts' shared part: models, textures, sounds, colours, driving constants, the kart on the grid.

#include "kart/gokart.h"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <string>

#include "assets/texture.h"
#include "audio/sample.h"
#include "kart/kartshared.h"
#include "shell/angles.h"
#include "shell/bvconfig.h"
#include "shell/kartfacts.h"
#include "shell/main.h"
#include "shell/performance.h"
#include "track/track.h"

sGokartStaticData gokartstaticdata;
sGokart gokart[GOKART_NKARTS];

// ---- Constants, tables and small helpers ----

namespace {

struct sColor {
    unsigned char r, g, b;
    const char* name;
};

// Kept: the steps are 0, 64, 128, 196, 255, with 196 where even steps would
// give 192; pinned by KartStatic.PaletteHasTwentyFourNamedColours
const sColor PALETTE[GOKART_NCOLORS] = {
    {255, 0, 0, "red"},         {255, 64, 0, "orange"},     {255, 128, 0, "orange"},  {255, 196, 0, "yellow"},
    {255, 255, 0, "yellow"},    {196, 255, 0, "green"},     {128, 255, 0, "green"},   {64, 255, 0, "green"},
    {0, 255, 0, "green"},       {0, 255, 64, "green"},      {0, 255, 128, "turquoise"}, {0, 255, 196, "turquoise"},
    {0, 255, 255, "turquoise"}, {0, 196, 255, "blue"},      {0, 128, 255, "blue"},    {0, 64, 255, "blue"},
    {0, 0, 255, "blue"},        {64, 0, 255, "purple"},     {128, 0, 255, "purple"},  {196, 0, 255, "purple"},
    {255, 0, 255, "magenta"},   {255, 0, 196, "magenta"},   {255, 0, 128, "magenta"}, {255, 0, 64, "red"},
};

}  // namespace

// The models of each part, by the names of their files.
const sPart PARTS[NPARTS] = {
    {"armd", &sGokartStaticData::LOarmd3DS, &sGokartStaticData::MEarmd3DS, &sGokartStaticData::HIarmd3DS},
    {"armu", &sGokartStaticData::LOarmu3DS, &sGokartStaticData::MEarmu3DS, &sGokartStaticData::HIarmu3DS},
    {"body", &sGokartStaticData::LObody3DS, &sGokartStaticData::MEbody3DS, &sGokartStaticData::HIbody3DS},
    {"chasis", &sGokartStaticData::LOchasis3DS, &sGokartStaticData::MEchasis3DS, &sGokartStaticData::HIchasis3DS},
    {"foot", &sGokartStaticData::LOfoot3DS, &sGokartStaticData::MEfoot3DS, &sGokartStaticData::HIfoot3DS},
    {"frontwheel", &sGokartStaticData::LOfrontwheel3DS, &sGokartStaticData::MEfrontwheel3DS,
     &sGokartStaticData::HIfrontwheel3DS},
    {"head", &sGokartStaticData::LOhead3DS, &sGokartStaticData::MEhead3DS, &sGokartStaticData::HIhead3DS},
    {"pedal", &sGokartStaticData::LOpedal3DS, &sGokartStaticData::MEpedal3DS, &sGokartStaticData::HIpedal3DS},
    {"plastic", &sGokartStaticData::LOplastic3DS, &sGokartStaticData::MEplastic3DS,
     &sGokartStaticData::HIplastic3DS},
    {"rearwheel", &sGokartStaticData::LOrearwheel3DS, &sGokartStaticData::MErearwheel3DS,
     &sGokartStaticData::HIrearwheel3DS},
    {"steeringwheel", &sGokartStaticData::LOsteeringwheel3DS, &sGokartStaticData::MEsteeringwheel3DS,
     &sGokartStaticData::HIsteeringwheel3DS},
};

unsigned int racingKarts() {
    return config.ngokarts < GOKART_NKARTS ? config.ngokarts : GOKART_NKARTS;
}

unsigned int followedKart() {
    return config.gokartfocus < GOKART_NKARTS ? config.gokartfocus : 0;
}

// ---- What all karts share: models, textures, sounds, driving constants ----

void sGokartStaticData::init() {
    chasiswidth = kartfacts::kChasisWidth;
    chasisfront = kartfacts::kChasisFront;
    chasisback = -0.154f;
    wheeltrack = 0.375f;
    wheelbase = 1.2f;
    wheelwidth = 0.19f;
    wheelradius = 0.11f;
    frontwheelwidth = 0.11f;
    wheelcircumference = (float)((double)wheelradius * TWOPI);
    wheelaxperturn = (float)((double)frontwheelwidth * PI / (double)wheelcircumference * 360);
    maxturn = 45.0f;
    turn = 45.0f;
    deturn = 90.0f;
    topspeed = kartfacts::kTopSpeed;
    acceleration = kartfacts::kAcceleration;
    decceleration = 22.0f;
    resistance = 1.25f;
    grip = 5.0f;
    overarmslaengde = 0.3f;
    underarmslaengde = 0.33f;

    floadTextureTGA("Data/Textures/Hud.tga", &hudTexture);
    floadTextureTGA("Data/Textures/Needle.tga", &needleTexture);
    floadTextureTGA("Data/Textures/Shadowmap.tga", &shadowmapTexture);
    floadTextureTGA("Data/Textures/Fwshadowmap.tga", &fwshadowmapTexture);
    floadTextureTGA("Data/Textures/Skid.tga", &skidTexture);
    floadTextureTGA("Data/Textures/Dheadtv.tga", &myfaceTexture);

    // Each texture of the kart is loaded once, by the LO model; ME and HI draw with it.
    for (const sPart& part : PARTS) {
        std::string lo = std::string("Data/Models/LO") + part.name + ".3DS";
        std::string me = std::string("Data/Models/ME") + part.name + ".3DS";
        std::string hi = std::string("Data/Models/HI") + part.name + ".3DS";
        s3DS& LO = this->*part.lo;
        LO.load(lo.c_str(), "Data/Textures/");
        LO.initlist(false, true);
        (this->*part.me).load(me.c_str(), "NO_LOAD");
        (this->*part.me).initlistExtTextures(false, true, &LO);
        (this->*part.hi).load(hi.c_str(), "NO_LOAD");
        (this->*part.hi).initlistExtTextures(false, true, &LO);
    }
    SLOgokart3DS.load("Data/Models/SLOgokart.3DS", "Data/Textures/");
    SLOgokart3DS.initlist(false, false);

    collission = loadSample("Data/Sounds/Collission.wav", FSOUND_HW2D | FSOUND_8BITS | FSOUND_LOOP_OFF);
    engine = loadSample("Data/Sounds/Engine.wav", FSOUND_HW2D | FSOUND_8BITS | FSOUND_LOOP_NORMAL);
    tire = loadSample("Data/Sounds/Tire.wav", FSOUND_HW2D | FSOUND_8BITS | FSOUND_LOOP_NORMAL);

    for (unsigned int i = 0; i < GOKART_NCOLORS; i++) {
        palette[i][0] = PALETTE[i].r;
        palette[i][1] = PALETTE[i].g;
        palette[i][2] = PALETTE[i].b;
        strncpy(paletteName[i], PALETTE[i].name, sizeof paletteName[i] - 1);
        paletteName[i][sizeof paletteName[i] - 1] = 0;
    }
}

void sGokartStaticData::free() {
    // The needle texture and the plastic models stay: they go with the
    // process. The others go in the order they were loaded.
    freeTexture(&hudTexture);
    freeTexture(&shadowmapTexture);
    freeTexture(&fwshadowmapTexture);
    freeTexture(&skidTexture);
    freeTexture(&myfaceTexture);
    for (const sPart& part : PARTS) {
        if (part.lo == &sGokartStaticData::LOplastic3DS) continue;
        (this->*part.lo).free();
        (this->*part.me).free();
        (this->*part.hi).free();
    }
    SLOgokart3DS.free();
    FSOUND_StopSound(FSOUND_ALL);
    FSOUND_Sample_Free(collission);
    FSOUND_Sample_Free(engine);
    FSOUND_Sample_Free(tire);
    collission = engine = tire = nullptr;
}

// Apart from free(), so that its releases keep their order; the game's
// shutdown calls it last, so that nothing the game loaded outlives it.
void sGokartStaticData::freeKept() {
    freeTexture(&needleTexture);
    LOplastic3DS.free();
    MEplastic3DS.free();
    HIplastic3DS.free();
}

// ---- A kart on the grid ----

void sGokart::init(unsigned char id) {
    const sGokartStaticData& s = gokartstaticdata;
    ID = id;
    aidriver = ID > config.nhumanplayers;

    unsigned int colour = ID == 0 ? config.colour() : (unsigned int)(rand() % GOKART_NCOLORS);
    R = s.palette[colour][0];
    G = s.palette[colour][1];
    B = s.palette[colour][2];

    lap = 0;
    checkpoint = (unsigned char)(track.nLRpoints - 2);
    for (float& t : laptime) t = 0;
    currentlaptime = -0.00123f;
    lapstart = bvclock();
    thislapcounted = false;

    checkcol = true;
    placementdelay = 0;
    placement = 0.5f;
    skill = config.aiskill;

    newSlide = true;
    DELAYslide = 0;
    CURRENTslide = 0;
    memset(lfSlide, 0, sizeof lfSlide);
    memset(rfSlide, 0, sizeof rfSlide);
    memset(lrSlide, 0, sizeof lrSlide);
    memset(rrSlide, 0, sizeof rrSlide);

    gridslot(ID, px, pz);

    // slidediff keeps the last race's value: the first move() recomputes it.
    ay = may = sw_ay = 0;
    lfw_ax = rfw_ax = lfw_ay = rfw_ay = lrw_ax = rrw_ax = 0;
    ups = pedal_up = pedal_down = 0;
    head_ax = head_axs = head_viewax = 0;
    opx = opz = ocosay = osinay = oaydiff = 0;

    kLEFT = kRIGHT = kUP = kDOWN = false;
    last_aimove = bvclock();

    // The engine and tyre loops play silently from here on; move() gives them
    // their volume. A restarted race keeps the channels that still play.
    int* channels[3] = {&CHANNEL_collission, &CHANNEL_engine, &CHANNEL_tire};
    FSOUND_SAMPLE* samples[3] = {s.collission, s.engine, s.tire};
    for (int i = 0; i < 3; i++) {
        if (!FSOUND_IsPlaying(*channels[i])) *channels[i] = FSOUND_PlaySound(FSOUND_FREE, samples[i]);
        FSOUND_SetVolume(*channels[i], 0);
    }
    FSOUND_StopSound(CHANNEL_collission);
}

void sGokart::free() {}

// ---- Where a kart is on the circuit ----

unsigned int sGokart::getcheckpoint() {
    const sGokartStaticData& s = gokartstaticdata;
    float step = ups / performance.fps;
    float sa = (float)sin(ay / DEG_PER_RAD), ca = (float)cos(ay / DEG_PER_RAD);
    sensor_x = px - sa * step - sa * s.chasisfront;
    sensor_z = pz - ca * step - ca * s.chasisfront;

    float best = 99.0f;
    unsigned int result = 0;
    unsigned int n = track.pairs();
    for (unsigned int i = 0; i < n; i++) {
        float d = distance2(track.Lpoint[i].x, track.Lpoint[i].z, sensor_x, sensor_z);
        if (d < best) {
            best = d;
            result = i;
        }
        d = distance2(track.Rpoint[i].x, track.Rpoint[i].z, sensor_x, sensor_z);
        if (d < best) {
            best = d;
            result = i;
        }
    }
    return result;
}

// The karts: shared models and sounds, driving, collisions, laps, the computer driver, drawing.

#include "kart/gokart.h"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <string>

#include <GL/gl.h>

#include "assets/texture.h"
#include "audio/sample.h"
#include "frontend/highscore.h"
#include "scene/camera.h"
#include "scene/shader.h"
#include "shell/angles.h"
#include "shell/bvconfig.h"
#include "shell/joystick.h"
#include "shell/kartfacts.h"
#include "shell/mouse.h"
#include "shell/main.h"
#include "shell/performance.h"
#include "track/track.h"

sGokartStaticData gokartstaticdata;
sGokart gokart[GOKART_NKARTS];

// ---- Constants, tables and small helpers ----

namespace {

// The eleven body parts, each at three levels of detail, in loading order.
struct sPart {
    const char* name;
    s3DS sGokartStaticData::*lo;
    s3DS sGokartStaticData::*me;
    s3DS sGokartStaticData::*hi;
};

const sPart PARTS[11] = {
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

struct sColor {
    unsigned char r, g, b;
    const char* name;
};

// The steps are 0, 64, 128, 196, 255: 196 is how the colours were chosen.
const sColor PALETTE[GOKART_NCOLORS] = {
    {255, 0, 0, "red"},         {255, 64, 0, "orange"},     {255, 128, 0, "orange"},  {255, 196, 0, "yellow"},
    {255, 255, 0, "yellow"},    {196, 255, 0, "green"},     {128, 255, 0, "green"},   {64, 255, 0, "green"},
    {0, 255, 0, "green"},       {0, 255, 64, "green"},      {0, 255, 128, "turquoise"}, {0, 255, 196, "turquoise"},
    {0, 255, 255, "turquoise"}, {0, 196, 255, "blue"},      {0, 128, 255, "blue"},    {0, 64, 255, "blue"},
    {0, 0, 255, "blue"},        {64, 0, 255, "purple"},     {128, 0, 255, "purple"},  {196, 0, 255, "purple"},
    {255, 0, 255, "magenta"},   {255, 0, 196, "magenta"},   {255, 0, 128, "magenta"}, {255, 0, 64, "red"},
};

// Brings an angle into [-180, 180] with as many turns as it takes.
float unwind180(float a) {
    // A heading run away to billions (a computer driver's wheel swinging
    // wider each frame at a very low frame rate) would never get there by
    // adding 360s: in single precision the sum stops changing.
    if (fabsf(a) > 3600) a = fmodf(a, 360);
    while (a < -180) a += 360;
    while (a > 180) a -= 360;
    return a;
}

float distance(float x1, float y1, float z1, float x2, float y2, float z2) {
    return sqrtf((x2 - x1) * (x2 - x1) + (y2 - y1) * (y2 - y1) + (z2 - z1) * (z2 - z1));
}

float distance2(float x1, float z1, float x2, float z2) {
    return sqrtf((x2 - x1) * (x2 - x1) + (z2 - z1) * (z2 - z1));
}

int clampVolume(int v) {
    return v < 0 ? 0 : (v > 255 ? 255 : v);
}

}  // namespace

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
    topspeed = 25.0f;
    acceleration = 20.0f;
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
    // process, and the order of the other releases is kept as it was.
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

// ---- Collisions between karts ----

namespace {

// A number far from where any kart can be: beyond it the shortcuts below
// are not taken.
bool ordinary(float v) {
    return fabsf(v) <= 1e12f;
}

// Whether every corner of an outline and every one of its edges is ordinary
// enough for a crossing with it to come out a number: the coordinates, and
// the edges' widths in x (after the stand-in for none) not too small.
bool tameOutline(const float* x, const float* z) {
    for (int k = 0; k < 8; k++) {
        float dx = x[(k + 1) % 8] - x[k];
        if (dx == 0) dx = 0.000001f;
        if (!ordinary(x[k]) || !ordinary(z[k]) || !(fabsf(dx) >= 0.000001f)) return false;
    }
    return true;
}

// colgokart, passing over the karts marked in `clear` (null: none).
unsigned char collidingKart(unsigned char ID, float x1, float z1, float x2, float z2, const bool* clear) {
    float dx = x2 - x1;
    if (dx == 0) dx = 0.000001f;
    float m = (z2 - z1) / dx;
    float xmin = x1 < x2 ? x1 : x2, xmax = x1 < x2 ? x2 : x1;
    // A crossing lies within both edges' spans of x, so edges whose spans do
    // not meet are passed over without the divisions; most karts are far
    // apart. That shortcut is only taken for ordinary numbers: there the
    // crossing always comes out a number, while a runaway coordinate can make
    // it not-a-number, which has always counted as a hit.
    const bool tame = ordinary(x1) && ordinary(z1) && ordinary(x2) && ordinary(z2) && fabsf(dx) >= 0.000001f;
    unsigned int n = racingKarts();
    for (unsigned int j = 0; j < n; j++) {
        if (j == ID || (clear && clear[j])) continue;
        const sGokart& other = gokart[j];
        for (int k = 0; k < 8; k++) {
            int b = (k + 1) % 8;
            float xa = other.colx[k], za = other.colz[k], xb = other.colx[b], zb = other.colz[b];
            float dx2 = xb - xa;
            if (dx2 == 0) dx2 = 0.000001f;
            if (tame && ((xa < xb ? xb : xa) < xmin || (xa < xb ? xa : xb) > xmax) && fabsf(dx2) >= 0.000001f &&
                ordinary(xa) && ordinary(za) && ordinary(xb) && ordinary(zb))
                continue;
            float m2 = (zb - za) / dx2;
            if (m2 == m) continue;
            float xi = ((za - m2 * xa) - (z1 - m * x1)) / (m - m2);
            float lo = xa < xb ? xa : xb, hi = xa < xb ? xb : xa;
            if (xi < lo || xi > hi) continue;
            if (xi < xmin || xi > xmax) continue;
            return (unsigned char)j;
        }
    }
    return ID;
}

// The kart's outline at (px, pz) heading ay: eight corners round the chassis,
// the nose narrower than the sides.
void outline(float px, float pz, float ay, float* x, float* z) {
    const sGokartStaticData& s = gokartstaticdata;
    const float F = s.chasisfront, W = s.chasiswidth;
    const float f[8] = {F + 0.03f, F + 0.03f, F - 0.1f, F / 2, -0.17f, -0.17f, F / 2, F - 0.1f};
    const float nose = (W - 0.25f) / 2, side = (W + 0.025f) / 2;
    const float r[8] = {-nose, nose, side, side, side, -side, -side, -side};
    float sa = (float)sin(ay / DEG_PER_RAD), ca = (float)cos(ay / DEG_PER_RAD);
    for (int i = 0; i < 8; i++) {
        x[i] = px - sa * f[i] + ca * r[i];
        z[i] = pz - ca * f[i] - sa * r[i];
    }
}

}  // namespace

void sGokart::colide() {
    outline(px, pz, ay, colx, colz);
    for (bool& c : col) c = false;
    // Karts wholly clear of this one's span of x cannot touch it, whichever
    // edges are taken; they are passed over once here instead of edge by edge.
    bool clear[GOKART_NKARTS] = {};
    const unsigned int n = racingKarts();
    if (tameOutline(colx, colz)) {
        float lo = colx[0], hi = colx[0];
        for (float x : colx) {
            lo = x < lo ? x : lo;
            hi = x > hi ? x : hi;
        }
        for (unsigned int k = 0; k < n; k++) {
            const sGokart& other = gokart[k];
            if (k == ID || !tameOutline(other.colx, other.colz)) continue;
            float olo = other.colx[0], ohi = other.colx[0];
            for (float x : other.colx) {
                olo = x < olo ? x : olo;
                ohi = x > ohi ? x : ohi;
            }
            clear[k] = ohi < lo || olo > hi;
        }
    }
    for (int i = 0; i < 8; i++) {
        int j = (i + 1) % 8;
        colg = collidingKart(ID, colx[i], colz[i], colx[j], colz[j], clear);
        if (colg != ID) {
            col[i] = true;
            break;
        }
    }
}

unsigned char sGokart::colgokart(float x1, float z1, float x2, float z2) {
    return collidingKart(ID, x1, z1, x2, z2, nullptr);
}

// ---- Skid marks ----

namespace {

// One wheel's strip across the ground: how far forward of the rear axle, and
// from where to where sideways (left is negative).
struct sStrip {
    float f, rfrom, rto;
};

void strips(sStrip out[4]) {
    const sGokartStaticData& s = gokartstaticdata;
    const float F = s.chasisfront - s.wheelradius, t = s.wheeltrack;
    out[0] = {F, -(t + s.frontwheelwidth), -t};
    out[1] = {F, t, t + s.frontwheelwidth};
    out[2] = {0, -(t + s.wheelwidth), -t};
    out[3] = {0, t, t + s.wheelwidth};
}

void groundpoint(float px, float pz, float cosa, float sina, float f, float r, float& x, float& z) {
    x = px - sina * f + cosa * r;
    z = pz - cosa * f - sina * r;
}

}  // namespace

// The slots of each wheel's ring in use: the setting, kept to what the ring
// holds. The console can set 0, which keeps no marks as 1 does (the one slot
// is always the one being written, and that is never drawn).
static unsigned int slideslots() {
    const unsigned int n = config.nslides;
    return n == 0 ? 1 : (n < GOKART_NSLIDES ? n : GOKART_NSLIDES);
}

// A new quad starts where the kart was before its last move; the next
// emission, at least 1/64 second later, closes it where the kart is now.
static void emitslides(sGokart& k, float ay0) {
    k.DELAYslide = 1.0f;
    const float alpha = k.slidediff / 500;
    const unsigned int n = slideslots();
    sSlide* rings[4] = {k.lfSlide, k.rfSlide, k.lrSlide, k.rrSlide};
    sStrip strip[4];
    strips(strip);
    if (k.newSlide) {
        // Each new mark fades all the older ones a little.
        for (unsigned int i = 0; i < n; i++)
            for (sSlide* ring : rings)
                for (float& a : ring[i].a)
                    if (a > 0) a -= 0.1f / n;
        for (int w = 0; w < 4; w++) {
            sSlide& m = rings[w][k.CURRENTslide];
            groundpoint(k.opx, k.opz, k.ocosay, k.osinay, strip[w].f, strip[w].rfrom, m.x[0], m.z[0]);
            groundpoint(k.opx, k.opz, k.ocosay, k.osinay, strip[w].f, strip[w].rto, m.x[1], m.z[1]);
            m.a[0] = m.a[1] = alpha;
        }
        k.newSlide = false;
    } else {
        const float c = (float)cos(ay0 / DEG_PER_RAD), sn = (float)sin(ay0 / DEG_PER_RAD);
        // Unsigned on purpose: slot 0 wraps to the last slot only when the
        // ring's size is a power of two.
        const unsigned int previous = (k.CURRENTslide - 1u) % n;
        for (int w = 0; w < 4; w++) {
            sSlide& m = rings[w][k.CURRENTslide];
            groundpoint(k.px, k.pz, c, sn, strip[w].f, strip[w].rto, m.x[2], m.z[2]);
            groundpoint(k.px, k.pz, c, sn, strip[w].f, strip[w].rfrom, m.x[3], m.z[3]);
            m.a[0] = (w == 3 ? k.rrSlide : k.lfSlide)[previous].a[1];
            m.a[1] = alpha;
        }
        k.CURRENTslide = (k.CURRENTslide + 1) % n;
        k.newSlide = true;
    }
}

void sGokart::drawslides() {
    const unsigned int n = slideslots();
    const sSlide* rings[4] = {lfSlide, rfSlide, lrSlide, rrSlide};
    glDisable(GL_DEPTH_TEST);
    glEnable(GL_TEXTURE_2D);
    glBindTexture(GL_TEXTURE_2D, gokartstaticdata.skidTexture);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glBegin(GL_QUADS);
    for (unsigned int i = 0; i < n; i++) {
        // The slot being written holds only half a quad.
        if (i == CURRENTslide) continue;
        for (const sSlide* ring : rings) {
            const sSlide& m = ring[i];
            // Faded out at both ends (or never laid): blended at no opacity
            // it would leave every pixel as it was, and most of the ring is
            // like that for most of a race.
            if (m.a[0] <= 0 && m.a[1] <= 0) continue;
            glColor4f(1, 1, 1, m.a[0]);
            glTexCoord2f(0, 0);
            glVertex3f(m.x[0], 0, m.z[0]);
            glTexCoord2f(1, 0);
            glVertex3f(m.x[1], 0, m.z[1]);
            glColor4f(1, 1, 1, m.a[1]);
            glTexCoord2f(1, 1);
            glVertex3f(m.x[2], 0, m.z[2]);
            glTexCoord2f(0, 1);
            glVertex3f(m.x[3], 0, m.z[3]);
        }
    }
    glEnd();
    glDisable(GL_BLEND);
    glDisable(GL_TEXTURE_2D);
    glEnable(GL_DEPTH_TEST);
}

// ---- Keeping to the circuit ----

namespace {

// How far past a barrier line the outline may be left after a move (a
// centimetre short of the 0.10 we promise, for the rounding of its corners),
// and how far a correction leaves it: still across the line, so that the
// bounce registers on the next frame as it always has.
const double WALL_SLACK = 0.09;
const double WALL_LEFT = 0.05;

// Every barrier segment, left line then right.
template <class Visit>
void eachwall(Visit visit) {
    const unsigned int n = track.pairs();
    for (const sTrackPoint* P : {track.Lpoint, track.Rpoint})
        for (unsigned int i = 0; i < n; i++) visit(P[i], P[(i + 1) % n]);
}

bool outside(const sTrackPoint& a, const sTrackPoint& b, double x, double z, double r) {
    return fmin(a.x, b.x) > x + r || fmax(a.x, b.x) < x - r || fmin(a.z, b.z) > z + r || fmax(a.z, b.z) < z - r;
}

// The barrier point nearest (x, z) into (qx, qz), and its distance; `within`
// when none is nearer than that.
double nearestwall(double x, double z, double within, double& qx, double& qz) {
    double best = within;
    eachwall([&](const sTrackPoint& a, const sTrackPoint& b) {
        if (outside(a, b, x, z, best)) return;
        double ex = (double)b.x - a.x, ez = (double)b.z - a.z, l = ex * ex + ez * ez;
        double t = l > 0 ? ((x - a.x) * ex + (z - a.z) * ez) / l : 0;
        t = t < 0 ? 0 : (t > 1 ? 1 : t);
        double X = a.x + t * ex, Z = a.z + t * ez, d = hypot(x - X, z - Z);
        if (d < best) {
            best = d;
            qx = X;
            qz = Z;
        }
    });
    return best;
}

// Whether the way from (x1, z1) to (x2, z2) crosses the barriers an odd
// number of times: from a point on the circuit, whether it ends off it.
bool oddcrossings(double x1, double z1, double x2, double z2) {
    bool odd = false;
    const double mx = (x1 + x2) / 2, mz = (z1 + z2) / 2, r = hypot(x2 - x1, z2 - z1) / 2;
    eachwall([&](const sTrackPoint& a, const sTrackPoint& b) {
        if (outside(a, b, mx, mz, r)) return;
        const double dx = x2 - x1, dz = z2 - z1;
        // A barrier point right on the way counts with the side it leaves to,
        // so that a way through a corner of the barrier counts once.
        if ((dx * (a.z - z1) - dz * (a.x - x1) > 0) == (dx * (b.z - z1) - dz * (b.x - x1) > 0)) return;
        const double ex = (double)b.x - a.x, ez = (double)b.z - a.z;
        if ((ex * (z1 - a.z) - ez * (x1 - a.x) > 0) != (ex * (z2 - a.z) - ez * (x2 - a.x) > 0)) odd = !odd;
    });
    return odd;
}

// The deepest the outline goes past a barrier line, and which way (a unit
// vector) takes it back out: a corner off the circuit goes back towards the
// nearest barrier point; a barrier point inside the outline, where a corner
// of the wall reaches in across an edge, leaves through the nearest edge.
struct sIntrusion {
    double depth, ux, uz;
};

sIntrusion deepestintrusion(const float* x, const float* z, float cx, float cz) {
    sIntrusion worst = {0, 0, 0};
    for (int c = 0; c < 8; c++) {
        if (!oddcrossings(cx, cz, x[c], z[c])) continue;
        double qx = x[c], qz = z[c];
        double d = nearestwall(x[c], z[c], INFINITY, qx, qz);
        if (d > worst.depth) worst = {d, (qx - x[c]) / d, (qz - z[c]) / d};
    }
    double area = 0, lo = INFINITY, hi = -INFINITY, bottom = INFINITY, top = -INFINITY;
    for (int c = 0; c < 8; c++) {
        int e = (c + 1) % 8;
        area += (double)x[c] * z[e] - (double)x[e] * z[c];
        lo = fmin(lo, x[c]);
        hi = fmax(hi, x[c]);
        bottom = fmin(bottom, z[c]);
        top = fmax(top, z[c]);
    }
    const double sign = area > 0 ? 1 : -1;
    eachwall([&](const sTrackPoint& v, const sTrackPoint&) {
        if (v.x < lo || v.x > hi || v.z < bottom || v.z > top) return;
        sIntrusion in = {INFINITY, 0, 0};
        for (int c = 0; c < 8; c++) {
            int e = (c + 1) % 8;
            double ex = (double)x[e] - x[c], ez = (double)z[e] - z[c], l = hypot(ex, ez);
            // How far inside this edge, along its inward normal.
            double h = sign * (ex * (v.z - z[c]) - ez * (v.x - x[c])) / l;
            if (!(h > 0)) return;
            if (h < in.depth) in = {h, -sign * ez / l, sign * ex / l};
        }
        if (in.depth > worst.depth) worst = in;
    });
    return worst;
}

}  // namespace

// The barriers only meet the kart's outline, and its edges running along x
// or z never register, so a kart pushed into a wall, or a frame long enough to
// step past one, could carry it off the circuit for good. A move that takes
// the kart's centre off the circuit is taken back; the outline's own test
// bounces the kart off the wall as before. Of the move, what runs along the
// wall is kept, so that a kart scraping it slides on; where the wall's slight
// zigzag leaves no way along it, the part into the wall is turned back out.
// Then the rest of the outline: whatever of it went deeper than a hand's
// breadth into the tyres is moved back out, the heading left as it is.
void sGokart::staybehindbarriers() {
    keepcentre();
    keepoutline();
}

void sGokart::keepcentre() {
    if (track.ontrack(px, pz) || !track.ontrack(opx, opz)) return;
    const float dx = px - opx, dz = pz - opz;
    const float ways[4][2] = {{dx, 0}, {0, dz}, {-dx, dz}, {dx, -dz}};
    for (const auto& w : ways)
        if (track.ontrack(opx + w[0], opz + w[1])) {
            px = opx + w[0];
            pz = opz + w[1];
            return;
        }
    px = opx;
    pz = opz;
}

void sGokart::keepoutline() {
    if (track.pairs() < 3) return;
    // A wall in one place, another round a corner: each pass takes out the
    // deepest intrusion; a handful settles any corner of a circuit.
    for (int pass = 0; pass < 6; pass++) {
        float x[8], z[8];
        outline(px, pz, ay, x, z);
        double reach = 0, qx, qz;
        for (int c = 0; c < 8; c++) reach = fmax(reach, hypot(x[c] - px, z[c] - pz));
        if (nearestwall(px, pz, reach, qx, qz) >= reach || !track.ontrack(px, pz)) return;
        const sIntrusion in = deepestintrusion(x, z, px, pz);
        if (in.depth <= WALL_SLACK) return;
        px += (float)(in.ux * (in.depth - WALL_LEFT));
        pz += (float)(in.uz * (in.depth - WALL_LEFT));
    }
}

// ---- Driving: one move ----

void sGokart::move() {
    const float ups0 = ups, ay0 = ay;
    aidriver = ID >= config.nhumanplayers;
    placeonroad(countlaps());
    const float loudness = playengine();
    steer();
    pedal();
    touchkarts(loudness);
    touchbarriers(loudness);
    const float step = ups / performance.fps;
    turnandslide(step, ay0, loudness);
    advance(step, ay0);
    turnwheels(step);
    wrapangles();
    nodhead(ups0);
}

// Laps. The first pass over the line starts lap 1 and its timer; the
// frame after a lap was counted closes the time of the lap just driven.
unsigned int sGokart::countlaps() {
    if (lap != 0) currentlaptime = (float)(bvclock() - lapstart) / BV_CLOCKS_PER_SEC;
    unsigned int c = getcheckpoint();
    if (c == (unsigned int)checkpoint + 1) {
        checkpoint = (unsigned char)c;
    } else if (checkpoint != 0 || !thislapcounted) {
        if (checkpoint >= track.nLRpoints - 1 && !thislapcounted) {
            checkpoint = 0;
            lap++;
            thislapcounted = true;
        }
    } else {
        thislapcounted = false;
        lapstart = bvclock();
        if (lap >= 2 && lap <= GOKART_NLAPTIMES) {
            laptime[lap - 1] = currentlaptime;
            highscore.checkfornewrecord(ID);
        }
    }
    return c;
}

// A human driver's line across the road, from the barrier he is nearer.
void sGokart::placeonroad(unsigned int c) {
    const unsigned int n = track.pairs();
    if (aidriver || n == 0) return;
    unsigned int next = (c + 1) % n;
    float dL = distance2(track.Lpoint[c].x, track.Lpoint[c].z, px, pz) +
               distance2(track.Lpoint[next].x, track.Lpoint[next].z, px, pz);
    float dR = distance2(track.Rpoint[c].x, track.Rpoint[c].z, px, pz) +
               distance2(track.Rpoint[next].x, track.Rpoint[next].z, px, pz);
    if (dR > dL)
        placement = 0.25f;
    else if (dL > dR)
        placement = 0.75f;
    else
        placement = 0.5f;
}

// Engine: quieter with distance from the eye, higher with speed, and
// shifted by how fast the kart closes on the eye.
float sGokart::playengine() {
    if (!config.soundeffects) return 0;
    float k = 1.0f + 0.125f * distance(px, 0, pz, camera.px, camera.py, camera.pz);
    float b = camera.pz > pz ? 180.0f : 0.0f;
    float q = camera.ay - (b + (float)(DEG_PER_RAD * atan((px - camera.px) / (pz - camera.pz))));
    int pan = (int)(128 - 128 * sin(q / DEG_PER_RAD));
    float aheadx = px - (float)sin(may / DEG_PER_RAD) * ups, aheadz = pz - (float)cos(may / DEG_PER_RAD) * ups;
    float D1 = distance(px, 0, pz, camera.ox, camera.oy, camera.oz);
    float D2 = distance(aheadx, 0, aheadz, camera.px, camera.py, camera.pz);
    int frequency = (int)(250 * (D1 - D2)) + (int)fabsf(2500 * ups) + 22000;
    FSOUND_SetFrequency(CHANNEL_engine, frequency);
    FSOUND_SetVolume(CHANNEL_engine, (int)(255 / k));
    FSOUND_SetPan(CHANNEL_collission, pan);
    FSOUND_SetPan(CHANNEL_engine, pan);
    FSOUND_SetPan(CHANNEL_tire, pan);
    return k;
}

// The joystick and the mouse, when they steer, steer the followed human kart.
bool sGokart::followedhuman() const {
    return !aidriver && ID == config.gokartfocus;
}

void sGokart::steer() {
    const sGokartStaticData& s = gokartstaticdata;
    const float fps = performance.fps;
    if (config.joysticksteering && followedhuman()) {
        float target = -((float)joystick.x / 32000.0f - 1) * s.maxturn;
        sw_ay += (target - sw_ay) * 20 / fps;
    } else if (config.mousesteering && followedhuman()) {
        sw_ay -= (float)mouse.deltax * (float)config.mousesensitivity / 100;
        if (sw_ay > s.maxturn) sw_ay = s.maxturn;
        if (sw_ay < -s.maxturn) sw_ay = -s.maxturn;
    } else if (kLEFT) {
        if (sw_ay < s.maxturn) sw_ay += s.turn / fps;
    } else if (kRIGHT) {
        if (sw_ay > -s.maxturn) sw_ay -= s.turn / fps;
    } else {
        if (sw_ay > 0)
            sw_ay -= s.deturn / fps;
        else if (sw_ay < 0)
            sw_ay += s.deturn / fps;
        if (fabsf(sw_ay) < s.deturn / fps) sw_ay = 0;
    }
}

// Pedals and speed. There is no reverse gear: braking only ever slows.
void sGokart::pedal() {
    const sGokartStaticData& s = gokartstaticdata;
    const float fps = performance.fps;
    if (config.joysticksteering && followedhuman()) {
        float y = joystick.pedal(kUP, kDOWN);
        pedal_up += (y - pedal_up) * 20 / fps;
        if (pedal_up < 0) pedal_up = 0;
        pedal_down -= (y + pedal_down) * 20 / fps;
        if (pedal_down < 0) pedal_down = 0;
        if (ups >= 0 && ups < s.topspeed) {
            if (pedal_up <= pedal_down)
                ups -= s.decceleration / 45 * pedal_down / fps;
            else
                ups += (s.acceleration / 45 * pedal_up / fps) / (fabsf(ups) / 2.5f + 1);
        }
    } else if (kUP) {
        // The pull weakens as the kart gets faster.
        if (ups < s.topspeed) ups += (s.acceleration / 45 * pedal_up / fps) / (fabsf(ups) / 2.5f + 1);
        if (pedal_up < 45) pedal_up += 180 / fps;
    } else if (kDOWN) {
        // Two separate tests: a brake that would carry the speed below 0
        // is taken back at once, so braking never turns into reversing.
        float brake = s.decceleration / 45 * pedal_down / fps;
        if (ups > 0) ups -= brake;
        if (ups < 0) ups += brake;
        if (pedal_down < 45) pedal_down += 180 / fps;
    }

    if (ups > 0) ups -= s.resistance / fps;
    if (ups < 0) ups += s.resistance / fps;
    if (!kUP && fabsf(ups) < 1.5f * s.resistance / fps) ups = 0;
    if (!kUP && pedal_up > 0) pedal_up -= 180 / fps;
    if (!kDOWN && pedal_down > 0) pedal_down -= 180 / fps;
}

// The collision sound, louder the faster the kart hits.
void sGokart::playcollision(float loudness) {
    const sGokartStaticData& s = gokartstaticdata;
    if (FSOUND_IsPlaying(CHANNEL_collission)) FSOUND_StopSound(CHANNEL_collission);
    CHANNEL_collission = FSOUND_PlaySound(FSOUND_FREE, s.collission);
    FSOUND_SetVolume(CHANNEL_collission,
                     clampVolume((int)(fabsf(ups + 10) * (255 / (s.topspeed + 10)) / loudness)));
}

// Touching another kart sends this one straight away from it.
void sGokart::touchkarts(float loudness) {
    bool touched = false;
    for (bool hit : col) touched = touched || hit;
    if (!checkcol || !touched || colg >= GOKART_NKARTS) return;
    const sGokart& other = gokart[colg];
    may = (float)(DEG_PER_RAD * atan((other.px - px) / (other.pz - pz))) + (other.pz < pz ? 180.0f : 0.0f);
    if (ups > 0.25f) ups /= 2;
    if (col[4] && !col[0] && !col[1] && !col[7] && config.soundeffects) playcollision(loudness);
}

void sGokart::touchbarriers(float loudness) {
    const unsigned int n = track.pairs();
    bool walled = track.checkOutline(colx, colz, 8, col);
    if (!walled || n == 0) return;
    if (config.soundeffects) playcollision(loudness);
    // Bounce off the wall: along its normal when the kart already points
    // away from it, mirrored when it drives into it. 57.3 is how the wall
    // angle has always been taken.
    unsigned int i = track.lasthit < n ? track.lasthit : 0;
    unsigned int j = (i + 1) % n;
    const sTrackPoint* N = track.lasthitL ? track.LNpoint : track.RNpoint;
    float nx = (N[i].x + N[j].x) / 2, nz = (N[i].z + N[j].z) / 2;
    float w = KART_DEG_PER_RAD * (float)atan(nx / nz) + 180;
    if (nz < 0) w += 180;
    float d = unwind180(ay - w);
    if (fabsf(d) >= 90)
        may = w - d + 180;
    else
        may = w;
}

// Heading, and the slide: the travel direction follows the heading with
// a lag, and a big lag brakes.
void sGokart::turnandslide(float step, float ay0, float loudness) {
    const sGokartStaticData& s = gokartstaticdata;
    const float fps = performance.fps;
    ay += sw_ay * step;
    float d = may - ay;
    if (d < -180 || d > 180) {
        if (d + 360 >= -180 && d + 360 <= 180)
            d += 360;
        else if (d - 360 >= -180 && d - 360 <= 180)
            d -= 360;
        else
            d = 0;
    }
    may -= d * s.grip / fps;
    slidediff = fabsf(d) < 50 ? fabsf(d) : 50;
    if (slidediff > 45)
        ups -= 5 * ups / fps;
    else if (slidediff > 35)
        ups -= 2 * ups / fps;
    if (DELAYslide > 0) DELAYslide -= 64 / fps;
    if (slidediff <= 15) {
        if (config.soundeffects) FSOUND_SetPaused(CHANNEL_tire, 1);
        newSlide = true;
    } else {
        if (config.soundeffects) {
            int volume = clampVolume((int)(slidediff * 5.1f / loudness));
            FSOUND_SetPaused(CHANNEL_tire, 0);
            if (!FSOUND_IsPlaying(CHANNEL_tire)) CHANNEL_tire = FSOUND_PlaySound(FSOUND_FREE, s.tire);
            FSOUND_SetVolume(CHANNEL_tire, volume);
        }
        if ((DELAYslide <= 0 || newSlide) && config.skidmarks) emitslides(*this, ay0);
    }
}

// Along the travel direction, then held on the circuit.
void sGokart::advance(float step, float ay0) {
    opx = px;
    opz = pz;
    ocosay = (float)cos(ay0 / DEG_PER_RAD);
    osinay = (float)sin(ay0 / DEG_PER_RAD);
    oaydiff = slidediff;
    px -= (float)sin(may / DEG_PER_RAD) * step;
    pz -= (float)cos(may / DEG_PER_RAD) * step;
    staybehindbarriers();
}

// Wheels, by Ackermann: the inner front wheel steers more than the outer.
// The right wheel's path takes (R + t)(R - t) where the left takes (R - t)^2;
// that is how the wheels have always turned.
void sGokart::turnwheels(float step) {
    const sGokartStaticData& s = gokartstaticdata;
    const float t = s.wheeltrack, wb = s.wheelbase;
    float R = sw_ay != 0 ? (float)((360 / sw_ay) / TWOPI) : 9999.0f;
    float CL = (float)(TWOPI * sqrt((R - t) * (R - t) + wb * wb));
    float CR = (float)(TWOPI * sqrt((R + t) * (R - t) + wb * wb));
    float aL = (float)(DEG_PER_RAD * atan(wb / (R - t)));
    lfw_ax -= (aL - lfw_ay) / 360 * s.wheelaxperturn;
    lfw_ay = aL;
    float aR = (float)(DEG_PER_RAD * atan(wb / (R + t)));
    rfw_ax -= (rfw_ay - aR) / 360 * s.wheelaxperturn;
    rfw_ay = aR;
    float W = 360 / s.wheelcircumference * step;
    float C = (float)(TWOPI * R);
    if (sw_ay < 0) {
        lfw_ax -= W * CL / C;
        rfw_ax -= W * CR / C;
    } else {
        lfw_ax += W * CL / C;
        rfw_ax += W * CR / C;
    }
    lrw_ax += W * (float)(TWOPI * (R - t)) / C;
    rrw_ax += W * (float)(TWOPI * (R + t)) / C;
}

// One correction a frame brings the angles back into [-180, 180).
void sGokart::wrapangles() {
    for (float* a : {&ay, &may, &lfw_ax, &rfw_ax, &lrw_ax, &rrw_ax}) {
        if (*a >= 180)
            *a -= 360;
        else if (*a < -180)
            *a += 360;
    }
}

// The driver's head nods with the acceleration, a damped spring.
void sGokart::nodhead(float ups0) {
    const float fps = performance.fps;
    head_axs += (ups - ups0) * 2000 / fps;
    head_axs -= head_axs * 20 / fps;
    head_axs -= head_ax * 20 / fps;
    head_ax += head_axs * 2.5f / fps;
    if (head_ax > 5) head_ax = 5;
    if (head_ax < -5) head_ax = -5;
}

// ---- The computer driver ----

void sGokart::think() {
    const sGokartStaticData& s = gokartstaticdata;
    const float fps = performance.fps;
    const unsigned int level = sConfig::skilllevel(skill);

    if ((unsigned int)(bvclock() - last_aimove) < config.aiawakeness[level]) return;
    last_aimove = bvclock();
    kLEFT = kRIGHT = kUP = kDOWN = false;

    const unsigned int n = track.pairs();
    if (n == 0) return;

    // Look further ahead the faster the kart goes.
    unsigned int t = getcheckpoint() + 1;
    if (ups > 15) t++;
    if (ups > 20) t++;
    if (ups > 25) t++;
    t %= n;

    // The line across the track: pass the kart ahead on its free side, back
    // to the middle when the road is clear.
    if (placementdelay > 0) {
        placementdelay -= 0.1f / fps;
    } else {
        placementdelay = 0;
        int ahead = -1, nearest = 10;
        unsigned int karts = racingKarts();
        for (unsigned int j = 0; j < karts; j++) {
            if (j == ID) continue;
            int g = (int)gokart[j].checkpoint - (int)checkpoint;
            if (g >= -1 && g < 10 && g < nearest) {
                nearest = g;
                ahead = (int)j;
            }
        }
        if (ahead < 0) {
            if (placement < 0.5f)
                placement += 0.5f / fps;
            else if (placement > 0.5f)
                placement -= 0.5f / fps;
        } else if (gokart[ahead].placement < 0.5f) {
            if (placement < 0.7f) placement += 0.5f / fps;
        } else {
            if (placement > 0.3f) placement -= 0.5f / fps;
        }
    }

    float aimx = track.Lpoint[t].x + (track.Rpoint[t].x - track.Lpoint[t].x) * placement;
    float aimz = track.Lpoint[t].z + (track.Rpoint[t].z - track.Lpoint[t].z) * placement;
    float h = (float)(DEG_PER_RAD * atan((px - aimx) / (pz - aimz)));
    if (aimz > pz) h += 180;
    if (h - ay < -180)
        h += 360;
    else if (h - ay > 180)
        h -= 360;

    // Now and then the driver's attention lapses and the wheel stays put.
    int r = rand() % 100;
    // The wheel closes on the aim by 25 times its gap a second; below 25
    // frames a second that would overshoot the aim, and below 12.5 swing the
    // wheel ever wider, so one frame never turns it past the aim.
    float follow = 25 / fps < 1 ? 25 / fps : 1;
    if (r > (int)config.aistupidity[level]) sw_ay += ((h - ay) - sw_ay) * follow;
    // Half a turn, not a whole one: the wheel has always wrapped this way.
    if (sw_ay < -180)
        sw_ay += 180;
    else if (sw_ay > 180)
        sw_ay -= 180;

    if (ups >= -0.1f && s.topspeed / 100 * (float)config.aiguts[level] > ups) kUP = true;
}

// ---- Seeing and drawing a kart ----

void sGokart::isinview() {
    float x = px - sinf(ay / KART_DEG_PER_RAD) * gokartstaticdata.chasisfront / 2;
    float z = pz - cosf(ay / KART_DEG_PER_RAD) * gokartstaticdata.chasisfront / 2;
    inviewDist = camera.isinview(x, 0.2f, z);
    inviewG = inviewDist > 0 && inviewDist < config.LOrange[config.lodlevel()];
}

// Poses one arm so that its hand holds the rim of the turned steering wheel:
// side is -1 for the left arm, +1 for the right one.
static void solvearm(float sw, float side, float U, float L, float& uax, float& uay, float& dax, float& day,
                     float& dpx, float& dpy, float& dpz) {
    float theta = sw * 1.8f / KART_DEG_PER_RAD;
    float phi = -50 / KART_DEG_PER_RAD;
    float gx = side * 0.133f * cosf(theta) - 0.065f * sinf(theta);
    float gy = side * 0.133f * sinf(theta) + 0.065f * cosf(theta);
    float hx = gx;
    float hy = -0.033f * sinf(phi) + gy * cosf(phi) + 0.4f;
    float hz = 0.033f * cosf(phi) + gy * sinf(phi) - 0.85f;
    float sx = side * 0.175f, sy = 0.5f, sz = -0.35f;
    float dx = sx - hx, dz = sz - hz;
    float dh = sqrtf(dx * dx + dz * dz);
    // A grip beyond the arm's reach would give acos a value past +-1.
    float c = (U * U + dh * dh - L * L) / (2 * U * dh);
    if (c > 1) c = 1;
    if (c < -1) c = -1;
    float bend = acosf(c) * KART_DEG_PER_RAD;
    uay = (side < 0 ? bend : -bend) + (dz >= 0 ? 0 : 180) + atanf(dx / dz) * KART_DEG_PER_RAD;
    float cz = cosf(uay / KART_DEG_PER_RAD) * dz;
    uax = (cz >= 0 ? 0 : 180) - atanf((sy - hy) / cz) * KART_DEG_PER_RAD;
    dpx = sx - sinf(uay / DEG_PER_RAD_F) * U * cosf(uax / DEG_PER_RAD_F);
    dpy = sinf(uax / DEG_PER_RAD_F) * U + sy;
    dpz = sz - cosf(uay / DEG_PER_RAD_F) * U * cosf(uax / DEG_PER_RAD_F);
    float ex = dpx - hx, ey = dpy - hy, ez = dpz - hz;
    float de = sqrtf(ex * ex + ez * ez);
    day = (ez >= 0 ? 0 : 180) + atanf(ex / ez) * DEG_PER_RAD_F;
    dax = (de >= 0 ? 0 : 180) - atanf(ey / de) * DEG_PER_RAD_F;
}

namespace {

// The three levels of detail of one part, chosen together for the whole kart.
struct sPartSet {
    s3DS *plastic, *body, *chasis, *frontwheel, *rearwheel, *pedal, *foot, *head, *armu, *armd, *steeringwheel;
};

sPartSet partset(float d) {
    sGokartStaticData& s = gokartstaticdata;
    if (d < config.HIrange[config.lodlevel()])
        return {&s.HIplastic3DS, &s.HIbody3DS, &s.HIchasis3DS, &s.HIfrontwheel3DS, &s.HIrearwheel3DS, &s.HIpedal3DS,
                &s.HIfoot3DS,    &s.HIhead3DS, &s.HIarmu3DS,   &s.HIarmd3DS,       &s.HIsteeringwheel3DS};
    if (d < config.MErange[config.lodlevel()])
        return {&s.MEplastic3DS, &s.MEbody3DS, &s.MEchasis3DS, &s.MEfrontwheel3DS, &s.MErearwheel3DS, &s.MEpedal3DS,
                &s.MEfoot3DS,    &s.MEhead3DS, &s.MEarmu3DS,   &s.MEarmd3DS,       &s.MEsteeringwheel3DS};
    return {&s.LOplastic3DS, &s.LObody3DS, &s.LOchasis3DS, &s.LOfrontwheel3DS, &s.LOrearwheel3DS, &s.LOpedal3DS,
            &s.LOfoot3DS,    &s.LOhead3DS, &s.LOarmu3DS,   &s.LOarmd3DS,       &s.LOsteeringwheel3DS};
}

void drawarm(s3DS* upper, s3DS* fore, float sx, float uay, float uax, float dpx, float dpy, float dpz, float day,
             float dax) {
    glPushMatrix();
    glTranslatef(sx, 0.5f, -0.35f);
    glRotatef(uay, 0, 1, 0);
    glRotatef(uax, 1, 0, 0);
    upper->drawlist();
    glPopMatrix();
    glPushMatrix();
    glTranslatef(dpx, dpy, dpz);
    glRotatef(day, 0, 1, 0);
    glRotatef(dax, 1, 0, 0);
    fore->drawlist();
    glPopMatrix();
}

// Plastic in the kart's colour, the body, and the feet on the pedals.
void drawbody(const sGokart& k, const sPartSet& part) {
    glColor3ub(k.R, k.G, k.B);
    part.plastic->drawlist();
    glColor3f(1, 1, 1);
    part.body->drawlist();

    glPushMatrix();
    glTranslatef(-0.15f, 0.05f, -1.12f);
    glRotatef(-k.pedal_down / 1.25f - 25, 1, 0, 0);
    part.foot->drawlist();
    glPopMatrix();
    glPushMatrix();
    glTranslatef(0.15f, 0.05f, -1.12f);
    glRotatef(-k.pedal_up / 1.25f - 25, 1, 0, 0);
    part.foot->drawlist();
    glPopMatrix();
}

// The head turns with the wheel and nods; the cheats make it big or put a face on it.
void drawhead(const sGokart& k, const sPartSet& part) {
    glPushMatrix();
    glTranslatef(0, 0.55f, -0.37f);
    glRotatef(k.sw_ay / 2, 0, 1, 0);
    glRotatef(k.head_viewax + k.head_ax, 1, 0, 0);
    if (config.CHEAT_0bighead) glScalef(2, 2, 2);
    if (config.CHEAT_0toviksface) {
        glEnable(GL_TEXTURE_2D);
        glBindTexture(GL_TEXTURE_2D, gokartstaticdata.myfaceTexture);
        part.head->draw(false, false, &gokartstaticdata.LOhead3DS);
        glDisable(GL_TEXTURE_2D);
    } else {
        part.head->drawlist();
    }
    glPopMatrix();
}

// Both arms, posed first so that the hands hold the turned wheel.
void drawarms(sGokart& k, const sPartSet& part) {
    const float U = gokartstaticdata.overarmslaengde, L = gokartstaticdata.underarmslaengde;
    solvearm(k.sw_ay, -1, U, L, k.larmuax, k.larmuay, k.larmdax, k.larmday, k.larmdpx, k.larmdpy, k.larmdpz);
    solvearm(k.sw_ay, +1, U, L, k.rarmuax, k.rarmuay, k.rarmdax, k.rarmday, k.rarmdpx, k.rarmdpy, k.rarmdpz);
    drawarm(part.armu, part.armd, -0.175f, k.larmuay, k.larmuax, k.larmdpx, k.larmdpy, k.larmdpz, k.larmday,
            k.larmdax);
    drawarm(part.armu, part.armd, 0.175f, k.rarmuay, k.rarmuax, k.rarmdpx, k.rarmdpy, k.rarmdpz, k.rarmday,
            k.rarmdax);
}

// Front wheels, steered and spinning; the right one is the left one turned round.
void drawfrontwheels(const sGokart& k, const sPartSet& part) {
    const sGokartStaticData& s = gokartstaticdata;
    glPushMatrix();
    glTranslatef(-s.wheeltrack, 0, -s.wheelbase);
    glRotatef(k.lfw_ay, 0, 1, 0);
    glRotatef(-k.lfw_ax, 1, 0, 0);
    part.frontwheel->drawlist();
    glPopMatrix();
    glPushMatrix();
    glTranslatef(s.wheeltrack, 0, -s.wheelbase);
    glRotatef(180, 0, 1, 0);
    glRotatef(k.rfw_ay, 0, 1, 0);
    glRotatef(k.rfw_ax, 1, 0, 0);
    part.frontwheel->drawlist();
    glPopMatrix();
}

void drawpedals(const sGokart& k, const sPartSet& part) {
    glPushMatrix();
    glTranslatef(-0.15f, 0, -1.2f);
    glRotatef(-k.pedal_down, 1, 0, 0);
    part.pedal->drawlist();
    glPopMatrix();
    glPushMatrix();
    glTranslatef(0.15f, 0, -1.2f);
    glRotatef(-k.pedal_up, 1, 0, 0);
    part.pedal->drawlist();
    glPopMatrix();
}

void drawrearwheels(const sGokart& k, const sPartSet& part) {
    const sGokartStaticData& s = gokartstaticdata;
    glPushMatrix();
    glTranslatef(-s.wheeltrack, 0, 0);
    glRotatef(-k.lrw_ax, 1, 0, 0);
    part.rearwheel->drawlist();
    glPopMatrix();
    glPushMatrix();
    glTranslatef(s.wheeltrack, 0, 0);
    glRotatef(180, 0, 1, 0);
    glRotatef(k.rrw_ax, 1, 0, 0);
    part.rearwheel->drawlist();
    glPopMatrix();
}

void drawsteeringwheel(const sGokart& k, const sPartSet& part) {
    glPushMatrix();
    glTranslatef(0, 0.4f, -0.85f);
    glRotatef(-50, 1, 0, 0);
    glRotatef(k.sw_ay * 1.8f, 0, 0, 1);
    part.steeringwheel->drawlist();
    glPopMatrix();
}

}  // namespace

void sGokart::draw() {
    if (!inviewG) return;
    const sPartSet part = partset(inviewDist);
    // The driver never sees his own helmet or the wheels behind him.
    const bool ownview = ID == config.gokartfocus && camera.mode == CAMERA_DRIVER;

    glPushMatrix();
    glTranslatef(px, gokartstaticdata.wheelradius, pz);
    glRotatef(ay, 0, 1, 0);
    drawbody(*this, part);
    glColor3f(1, 1, 1);
    if (!ownview) drawhead(*this, part);
    drawarms(*this, part);
    glColor3f(1, 1, 1);
    part.chasis->drawlist();
    drawfrontwheels(*this, part);
    drawpedals(*this, part);
    if (!ownview) drawrearwheels(*this, part);
    drawsteeringwheel(*this, part);
    glPopMatrix();
}

// ---- Head-up display ----

void sGokart::drawhud() {
    const float h = 0.09049479f;
    resizeGLwindow2D(1.33f, 1.0f);
    glPushMatrix();
    glTranslatef(1.23f, 0.1f, 0);
    glEnable(GL_TEXTURE_2D);
    glBindTexture(GL_TEXTURE_2D, gokartstaticdata.hudTexture);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    auto quad = [h]() {
        glColor4f(1, 1, 1, 0.9f);
        unitquad(-h, -h, h, h, 1, 3);  // begun at the top-left corner, the seam the dial was drawn with
    };
    quad();
    // The needle turns clockwise, 320 degrees at 25 units per second, and the
    // same way whichever way the kart rolls.
    glRotatef(-fabsf(ups) / 25.0f * 320.0f, 0, 0, 1);
    glBindTexture(GL_TEXTURE_2D, gokartstaticdata.needleTexture);
    quad();
    glDisable(GL_BLEND);
    glDisable(GL_TEXTURE_2D);
    glPopMatrix();
}

// ---- Shadows ----

namespace {

// Casts one part of a kart the way draw() places it: at (lx, ly, lz) in the
// kart's frame, then turned by `turn` about the vertical, `pitch` about its
// own x and `roll` about its own z.
//
// The shadow steps mirror an axis each. A part turned only about the
// vertical casts exactly with the heading plus 180. A pitched part takes two
// mirrors, and the two leave the part mirrored about one of its own axes
// whatever we pass: wheels (round about their axle) are left mirrored front
// to back, everything else (feet, pedals, arms, head, steering wheel, all
// much the same left and right) side to side, which keeps each shadow under
// its part.
enum eMirror { EXACT, FRONTBACK, SIDEWAYS };

void castpart(const sGokart& k, s3DS& model, float lx, float ly, float lz, float turn, float pitch, float roll,
              eMirror mirror) {
    const float a = k.ay / KART_DEG_PER_RAD, c = cosf(a), s = sinf(a);
    const float x = k.px + lx * c + lz * s, y = gokartstaticdata.wheelradius + ly, z = k.pz - lx * s + lz * c;
    const float L0 = LightPosition[0], L1 = LightPosition[1], L2 = LightPosition[2];
    const float heading = k.ay + turn;
    switch (mirror) {
    case EXACT:
        model.castshadow(0, L0, L1, L2, x, y, z, 0, heading + 180, 0, 3, 1, 3);
        break;
    case FRONTBACK:
        model.castshadow(0, L0, L1, L2, x, y, z, -pitch, heading + 180, roll, 2, 0, 1);
        break;
    case SIDEWAYS:
        model.castshadow(0, L0, L1, L2, x, y, z, pitch, heading, -roll, 2, 0, 1);
        break;
    }
}

}  // namespace

void sGokart::castshadow() {
    if (!inviewG) return;
    sGokartStaticData& s = gokartstaticdata;
    const float d = inviewDist;
    doshadowmap = false;
    if (config.shadows >= 3 && d < config.HIrange[config.lodlevel()]) {
        // Unlike in drawing, the driver's own body goes too: he would see its
        // shadow round his feet.
        bool ownview = ID == config.gokartfocus && camera.mode == CAMERA_DRIVER;
        const float t = s.wheeltrack, wb = s.wheelbase;
        castpart(*this, s.LOplastic3DS, 0, 0, 0, 0, 0, 0, EXACT);
        castpart(*this, s.LOchasis3DS, 0, 0, 0, 0, 0, 0, EXACT);
        castpart(*this, s.LOfrontwheel3DS, -t, 0, -wb, lfw_ay, -lfw_ax, 0, FRONTBACK);
        castpart(*this, s.LOfrontwheel3DS, t, 0, -wb, 180 + rfw_ay, rfw_ax, 0, FRONTBACK);
        if (!ownview) {
            castpart(*this, s.LOrearwheel3DS, -t, 0, 0, 0, -lrw_ax, 0, FRONTBACK);
            castpart(*this, s.LOrearwheel3DS, t, 0, 0, 180, rrw_ax, 0, FRONTBACK);
        }
        castpart(*this, s.LOpedal3DS, -0.15f, 0, -1.2f, 0, -pedal_down, 0, SIDEWAYS);
        castpart(*this, s.LOpedal3DS, 0.15f, 0, -1.2f, 0, -pedal_up, 0, SIDEWAYS);
        castpart(*this, s.LOsteeringwheel3DS, 0, 0.4f, -0.85f, 0, -50, sw_ay * 1.8f, SIDEWAYS);
        if (!ownview) castpart(*this, s.LObody3DS, 0, 0, 0, 0, 0, 0, EXACT);
        castpart(*this, s.LOfoot3DS, -0.15f, 0.05f, -1.12f, 0, -pedal_down / 1.25f - 25, 0, SIDEWAYS);
        castpart(*this, s.LOfoot3DS, 0.15f, 0.05f, -1.12f, 0, -pedal_up / 1.25f - 25, 0, SIDEWAYS);
        if (!ownview) castpart(*this, s.LOhead3DS, 0, 0.55f, -0.37f, sw_ay / 2, head_viewax + head_ax, 0, SIDEWAYS);
        castpart(*this, s.LOarmu3DS, -0.175f, 0.5f, -0.35f, larmuay, larmuax, 0, SIDEWAYS);
        castpart(*this, s.LOarmd3DS, larmdpx, larmdpy, larmdpz, larmday, larmdax, 0, SIDEWAYS);
        castpart(*this, s.LOarmu3DS, 0.175f, 0.5f, -0.35f, rarmuay, rarmuax, 0, SIDEWAYS);
        castpart(*this, s.LOarmd3DS, rarmdpx, rarmdpy, rarmdpz, rarmday, rarmdax, 0, SIDEWAYS);
    } else if (config.shadows > 1 && d < config.MErange[config.lodlevel()]) {
        s.SLOgokart3DS.castshadow(0, LightPosition[0], LightPosition[1], LightPosition[2], px, s.wheelradius, pz, 0,
                                  ay + 180, 0, 3, 1, 3);
    } else {
        doshadowmap = true;
    }
}

void sGokart::drawshadowmap() {
    const sGokartStaticData& s = gokartstaticdata;
    glDisable(GL_DEPTH_TEST);
    glEnable(GL_TEXTURE_2D);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glColor4f(1, 1, 1, 0.5f);
    glPushMatrix();
    glTranslatef(px, 0, pz);
    glRotatef(ay, 0, 1, 0);

    const float w = s.chasiswidth / 2 + 0.025f, front = -s.chasisfront - 0.05f, back = -s.chasisback + 0.025f;
    glBindTexture(GL_TEXTURE_2D, s.shadowmapTexture);
    glBegin(GL_QUADS);
    glTexCoord2f(0, 1);
    glVertex3f(-w, 0, front);
    glTexCoord2f(0, 0);
    glVertex3f(-w, 0, back);
    glTexCoord2f(1, 0);
    glVertex3f(w, 0, back);
    glTexCoord2f(1, 1);
    glVertex3f(w, 0, front);
    glEnd();

    const float r = s.wheelradius, f = s.frontwheelwidth;
    glBindTexture(GL_TEXTURE_2D, s.fwshadowmapTexture);
    glPushMatrix();
    glTranslatef(-s.wheeltrack, 0, -s.wheelbase);
    glRotatef(lfw_ay, 0, 1, 0);
    glBegin(GL_QUADS);
    glTexCoord2f(0, 1);
    glVertex3f(-f, 0, -r);
    glTexCoord2f(0, 0);
    glVertex3f(-f, 0, r);
    glTexCoord2f(1, 0);
    glVertex3f(0, 0, r);
    glTexCoord2f(1, 1);
    glVertex3f(0, 0, -r);
    glEnd();
    glPopMatrix();
    glPushMatrix();
    glTranslatef(s.wheeltrack, 0, -s.wheelbase);
    glRotatef(rfw_ay, 0, 1, 0);
    glBegin(GL_QUADS);
    glTexCoord2f(0, 1);
    glVertex3f(0, 0, -r);
    glTexCoord2f(0, 0);
    glVertex3f(0, 0, r);
    glTexCoord2f(1, 0);
    glVertex3f(f, 0, r);
    glTexCoord2f(1, 1);
    glVertex3f(f, 0, -r);
    glEnd();
    glPopMatrix();

    glPopMatrix();
    glDisable(GL_BLEND);
    glDisable(GL_TEXTURE_2D);
    glEnable(GL_DEPTH_TEST);
}

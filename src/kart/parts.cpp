// Where each part of a kart sits and how it turns: the one table that drawing and the shadows walk.

#include "kart/gokart.h"

#include "kart/kartshared.h"

namespace {

// The wheels sit where the driving constants put them.
void leftfront(const sGokart&, float& x, float& y, float& z) {
    x = -gokartstaticdata.wheeltrack;
    y = 0;
    z = -gokartstaticdata.wheelbase;
}

void rightfront(const sGokart&, float& x, float& y, float& z) {
    x = gokartstaticdata.wheeltrack;
    y = 0;
    z = -gokartstaticdata.wheelbase;
}

void leftrear(const sGokart&, float& x, float& y, float& z) {
    x = -gokartstaticdata.wheeltrack;
    y = 0;
    z = 0;
}

void rightrear(const sGokart&, float& x, float& y, float& z) {
    x = gokartstaticdata.wheeltrack;
    y = 0;
    z = 0;
}

// The forearms hang from the elbows the arms' pose worked out.
void leftelbow(const sGokart& k, float& x, float& y, float& z) {
    x = k.larmdpx;
    y = k.larmdpy;
    z = k.larmdpz;
}

void rightelbow(const sGokart& k, float& x, float& y, float& z) {
    x = k.rarmdpx;
    y = k.rarmdpy;
    z = k.rarmdpz;
}

// The feet follow the pedals, the left one on the brake, a little less far.
float leftfoot(const sGokart& k) { return -k.pedal_down / 1.25f - 25; }
float rightfoot(const sGokart& k) { return -k.pedal_up / 1.25f - 25; }
float brake(const sGokart& k) { return -k.pedal_down; }
float throttle(const sGokart& k) { return -k.pedal_up; }

// The head turns with the wheel and nods.
float headturn(const sGokart& k) { return k.sw_ay / 2; }
float headnod(const sGokart& k) { return k.head_viewax + k.head_ax; }

float larmuturn(const sGokart& k) { return k.larmuay; }
float larmupitch(const sGokart& k) { return k.larmuax; }
float larmdturn(const sGokart& k) { return k.larmday; }
float larmdpitch(const sGokart& k) { return k.larmdax; }
float rarmuturn(const sGokart& k) { return k.rarmuay; }
float rarmupitch(const sGokart& k) { return k.rarmuax; }
float rarmdturn(const sGokart& k) { return k.rarmday; }
float rarmdpitch(const sGokart& k) { return k.rarmdax; }

// Front wheels steered and spinning, rear wheels spinning; the right-hand
// ones, turned round, spin the other way about their own axle.
float leftsteer(const sGokart& k) { return k.lfw_ay; }
float rightsteer(const sGokart& k) { return k.rfw_ay; }
float leftfrontspin(const sGokart& k) { return -k.lfw_ax; }
float rightfrontspin(const sGokart& k) { return k.rfw_ax; }
float leftrearspin(const sGokart& k) { return -k.lrw_ax; }
float rightrearspin(const sGokart& k) { return k.rrw_ax; }

// The steering wheel leans back towards the driver and turns 1.8 times the
// wheels' heading rate.
float wheeltilt(const sGokart&) { return -50; }
float wheelturn(const sGokart& k) { return k.sw_ay * 1.8f; }

}  // namespace

// clang-format off
const sMount KARTPARTS[NMOUNTS] = {
    // part              x        y      z       at          turned turn        pitch           roll       mirror     left out   paint
    {PART_PLASTIC,       0,       0,     0,      nullptr,    false, nullptr,    nullptr,        nullptr,   EXACT,     KEPT,      KARTCOLOUR},
    {PART_BODY,          0,       0,     0,      nullptr,    false, nullptr,    nullptr,        nullptr,   EXACT,     OWNSHADOW, WHITE},
    {PART_FOOT,          -0.15f,  0.05f, -1.12f, nullptr,    false, nullptr,    leftfoot,       nullptr,   SIDEWAYS,  KEPT,      ASITIS},
    {PART_FOOT,          0.15f,   0.05f, -1.12f, nullptr,    false, nullptr,    rightfoot,      nullptr,   SIDEWAYS,  KEPT,      ASITIS},
    {PART_HEAD,          0,       0.55f, -0.37f, nullptr,    false, headturn,   headnod,        nullptr,   SIDEWAYS,  OWNVIEW,   WHITE},
    {PART_ARMU,          -0.175f, 0.5f,  -0.35f, nullptr,    false, larmuturn,  larmupitch,     nullptr,   SIDEWAYS,  KEPT,      ASITIS},
    {PART_ARMD,          0,       0,     0,      leftelbow,  false, larmdturn,  larmdpitch,     nullptr,   SIDEWAYS,  KEPT,      ASITIS},
    {PART_ARMU,          0.175f,  0.5f,  -0.35f, nullptr,    false, rarmuturn,  rarmupitch,     nullptr,   SIDEWAYS,  KEPT,      ASITIS},
    {PART_ARMD,          0,       0,     0,      rightelbow, false, rarmdturn,  rarmdpitch,     nullptr,   SIDEWAYS,  KEPT,      ASITIS},
    {PART_CHASIS,        0,       0,     0,      nullptr,    false, nullptr,    nullptr,        nullptr,   EXACT,     KEPT,      WHITE},
    {PART_FRONTWHEEL,    0,       0,     0,      leftfront,  false, leftsteer,  leftfrontspin,  nullptr,   FRONTBACK, KEPT,      ASITIS},
    {PART_FRONTWHEEL,    0,       0,     0,      rightfront, true,  rightsteer, rightfrontspin, nullptr,   FRONTBACK, KEPT,      ASITIS},
    {PART_PEDAL,         -0.15f,  0,     -1.2f,  nullptr,    false, nullptr,    brake,          nullptr,   SIDEWAYS,  KEPT,      ASITIS},
    {PART_PEDAL,         0.15f,   0,     -1.2f,  nullptr,    false, nullptr,    throttle,       nullptr,   SIDEWAYS,  KEPT,      ASITIS},
    {PART_REARWHEEL,     0,       0,     0,      leftrear,   false, nullptr,    leftrearspin,   nullptr,   FRONTBACK, OWNVIEW,   ASITIS},
    {PART_REARWHEEL,     0,       0,     0,      rightrear,  true,  nullptr,    rightrearspin,  nullptr,   FRONTBACK, OWNVIEW,   ASITIS},
    {PART_STEERINGWHEEL, 0,       0.4f,  -0.85f, nullptr,    false, nullptr,    wheeltilt,      wheelturn, SIDEWAYS,  KEPT,      ASITIS},
};
// clang-format on

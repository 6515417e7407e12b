// Where each part of a kart sits and how it turns: the one table that drawing and the shadows walk.

#include "kart/gokart.h"

#include "kart/kartshared.h"

namespace {

// The wheels sit where the driving constants put them.
void lfront(const sGokart&, float& x, float& y, float& z) {
    x = -gokartstaticdata.wheeltrack;
    y = 0;
    z = -gokartstaticdata.wheelbase;
}

void rfront(const sGokart&, float& x, float& y, float& z) {
    x = gokartstaticdata.wheeltrack;
    y = 0;
    z = -gokartstaticdata.wheelbase;
}

void lrear(const sGokart&, float& x, float& y, float& z) {
    x = -gokartstaticdata.wheeltrack;
    y = 0;
    z = 0;
}

void rrear(const sGokart&, float& x, float& y, float& z) {
    x = gokartstaticdata.wheeltrack;
    y = 0;
    z = 0;
}

// The forearms hang from the elbows the arms' pose worked out.
void lelbow(const sGokart& k, float& x, float& y, float& z) {
    x = k.larmdpx;
    y = k.larmdpy;
    z = k.larmdpz;
}

void relbow(const sGokart& k, float& x, float& y, float& z) {
    x = k.rarmdpx;
    y = k.rarmdpy;
    z = k.rarmdpz;
}

// The feet follow the pedals, the left one on the brake, a little less far.
float lfoot(const sGokart& k) { return -k.pedal_down / 1.25f - 25; }
float rfoot(const sGokart& k) { return -k.pedal_up / 1.25f - 25; }
float brake(const sGokart& k) { return -k.pedal_down; }
float throttle(const sGokart& k) { return -k.pedal_up; }

// The head turns with the wheel and nods.
float headturn(const sGokart& k) { return k.sw_ay / 2; }
float headnod(const sGokart& k) { return k.head_viewax + k.head_ax; }

float luturn(const sGokart& k) { return k.larmuay; }
float lupitch(const sGokart& k) { return k.larmuax; }
float ldturn(const sGokart& k) { return k.larmday; }
float ldpitch(const sGokart& k) { return k.larmdax; }
float ruturn(const sGokart& k) { return k.rarmuay; }
float rupitch(const sGokart& k) { return k.rarmuax; }
float rdturn(const sGokart& k) { return k.rarmday; }
float rdpitch(const sGokart& k) { return k.rarmdax; }

// Front wheels steered and spinning, rear wheels spinning; the right-hand
// ones, turned round, spin the other way about their own axle.
float lsteer(const sGokart& k) { return k.lfw_ay; }
float rsteer(const sGokart& k) { return k.rfw_ay; }
float lfspin(const sGokart& k) { return -k.lfw_ax; }
float rfspin(const sGokart& k) { return k.rfw_ax; }
float lrspin(const sGokart& k) { return -k.lrw_ax; }
float rrspin(const sGokart& k) { return k.rrw_ax; }

// The steering wheel leans back towards the driver and turns 1.8 times the
// wheels' heading rate.
float swtilt(const sGokart&) { return -50; }
float swturn(const sGokart& k) { return k.sw_ay * 1.8f; }

}  // namespace

// clang-format off
const sMount KARTPARTS[NMOUNTS] = {
    //part               x        y      z       at       round  turn      pitch     roll     mirror     left out   paint
    {PART_PLASTIC,       0,       0,     0,      nullptr, false, nullptr,  nullptr,  nullptr, EXACT,     KEPT,      KARTCOLOUR},
    {PART_BODY,          0,       0,     0,      nullptr, false, nullptr,  nullptr,  nullptr, EXACT,     OWNSHADOW, WHITE},
    {PART_FOOT,          -0.15f,  0.05f, -1.12f, nullptr, false, nullptr,  lfoot,    nullptr, SIDEWAYS,  KEPT,      ASITIS},
    {PART_FOOT,          0.15f,   0.05f, -1.12f, nullptr, false, nullptr,  rfoot,    nullptr, SIDEWAYS,  KEPT,      ASITIS},
    {PART_HEAD,          0,       0.55f, -0.37f, nullptr, false, headturn, headnod,  nullptr, SIDEWAYS,  OWNVIEW,   WHITE},
    {PART_ARMU,          -0.175f, 0.5f,  -0.35f, nullptr, false, luturn,   lupitch,  nullptr, SIDEWAYS,  KEPT,      ASITIS},
    {PART_ARMD,          0,       0,     0,      lelbow,  false, ldturn,   ldpitch,  nullptr, SIDEWAYS,  KEPT,      ASITIS},
    {PART_ARMU,          0.175f,  0.5f,  -0.35f, nullptr, false, ruturn,   rupitch,  nullptr, SIDEWAYS,  KEPT,      ASITIS},
    {PART_ARMD,          0,       0,     0,      relbow,  false, rdturn,   rdpitch,  nullptr, SIDEWAYS,  KEPT,      ASITIS},
    {PART_CHASIS,        0,       0,     0,      nullptr, false, nullptr,  nullptr,  nullptr, EXACT,     KEPT,      WHITE},
    {PART_FRONTWHEEL,    0,       0,     0,      lfront,  false, lsteer,   lfspin,   nullptr, FRONTBACK, KEPT,      ASITIS},
    {PART_FRONTWHEEL,    0,       0,     0,      rfront,  true,  rsteer,   rfspin,   nullptr, FRONTBACK, KEPT,      ASITIS},
    {PART_PEDAL,         -0.15f,  0,     -1.2f,  nullptr, false, nullptr,  brake,    nullptr, SIDEWAYS,  KEPT,      ASITIS},
    {PART_PEDAL,         0.15f,   0,     -1.2f,  nullptr, false, nullptr,  throttle, nullptr, SIDEWAYS,  KEPT,      ASITIS},
    {PART_REARWHEEL,     0,       0,     0,      lrear,   false, nullptr,  lrspin,   nullptr, FRONTBACK, OWNVIEW,   ASITIS},
    {PART_REARWHEEL,     0,       0,     0,      rrear,   true,  nullptr,  rrspin,   nullptr, FRONTBACK, OWNVIEW,   ASITIS},
    {PART_STEERINGWHEEL, 0,       0.4f,  -0.85f, nullptr, false, nullptr,  swtilt,   swturn,  SIDEWAYS,  KEPT,      ASITIS},
};
// clang-format on

#ifndef BV_KART_KARTSHARED_H
#define BV_KART_KARTSHARED_H

// What the kart module's own files share and nothing outside it needs: small
// sums, the kart's outline, the skid marks' emission.

#include <cmath>

#include "kart/gokart.h"

// Brings an angle into [-180, 180] with as many turns as it takes.
inline float unwind180(float a) {
    // A heading run away to billions (a computer driver's wheel swinging
    // wider each frame at a very low frame rate) would never get there by
    // adding 360s: in single precision the sum stops changing.
    if (fabsf(a) > 3600) a = fmodf(a, 360);
    while (a < -180) a += 360;
    while (a > 180) a -= 360;
    return a;
}

inline float distance(float x1, float y1, float z1, float x2, float y2, float z2) {
    return sqrtf((x2 - x1) * (x2 - x1) + (y2 - y1) * (y2 - y1) + (z2 - z1) * (z2 - z1));
}

inline float distance2(float x1, float z1, float x2, float z2) {
    return sqrtf((x2 - x1) * (x2 - x1) + (z2 - z1) * (z2 - z1));
}

inline int clampVolume(int v) {
    return v < 0 ? 0 : (v > 255 ? 255 : v);
}

// The kart's outline at (px, pz) heading ay: eight corners round the chassis,
// the nose narrower than the sides (kart/collide.cpp).
void outline(float px, float pz, float ay, float* x, float* z);

// Lays the next skid mark of all four wheels (kart/slides.cpp).
void emitslides(sGokart& k, float ay0);

#endif

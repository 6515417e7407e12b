// Collisions between karts: each kart's outline against the others'.

#include "kart/gokart.h"

#include <cmath>

#include "kart/kartshared.h"
#include "shell/angles.h"

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
    // it not-a-number.
    // Kept: a crossing that comes out not-a-number counts as a hit, where a
    // test for lying within the spans would pass it over; pinned by
    // CollisionFastPaths.KartAgainstKartAnswersAsThePlainTest
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

}  // namespace

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

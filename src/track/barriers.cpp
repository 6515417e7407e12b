// The barriers: whether a point lies between them, and whether a segment or a closed outline crosses one.

#include "track/track.h"

#include <cmath>

namespace {

// Even-odd rule over the closed line through the points.
bool insideline(const sTrackPoint* p, unsigned int n, double x, double z) {
    bool in = false;
    for (unsigned int i = 0, j = n - 1; i < n; j = i++)
        if ((p[i].z > z) != (p[j].z > z) && x < (double(p[j].x) - p[i].x) * (z - p[i].z) / (double(p[j].z) - p[i].z) + p[i].x)
            in = !in;
    return in;
}

// One segment of the kart's, from (x1, z1) to (x2, z2), as a line z = a x + b
// and its span of x.
struct sCheckSegment {
    float x1, z1, a, b, xmin, xmax;
    sCheckSegment(float x1, float z1, float x2, float z2) : x1(x1), z1(z1) {
        float dx = x2 - x1;
        if (dx == 0) dx = 0.000001f;
        a = (z2 - z1) / dx;
        b = z1 - a * x1;
        xmin = x1 < x2 ? x1 : x2;
        xmax = x1 < x2 ? x2 : x1;
    }
};

// Whether the barrier segment P-Q crosses it, within both spans of x.
inline bool crosses(const sCheckSegment& k, const sTrackPoint& P, const sTrackPoint& Q) {
    // The crossing must lie within both segments' spans of x: when the spans
    // do not meet, no crossing can, and the divisions are saved. Most of a
    // track's barrier lies far from any kart.
    if ((P.x < Q.x ? Q.x : P.x) < k.xmin || (P.x < Q.x ? P.x : Q.x) > k.xmax) return false;
    float ddx = Q.x - P.x;
    if (ddx == 0) ddx = 0.000001f;
    float a2 = (Q.z - P.z) / ddx;
    float b2 = P.z - a2 * P.x;
    if (a2 == k.a) return false;  // parallel
    float x12 = (b2 - k.b) / (k.a - a2);
    float pmin = P.x < Q.x ? P.x : Q.x, pmax = P.x < Q.x ? Q.x : P.x;
    return pmin <= x12 && x12 <= pmax && k.xmin <= x12 && x12 <= k.xmax;
}

}  // namespace

bool sTrack::ontrack(float x, float z) const {
    const unsigned int n = pairs();
    if (n < 3) return true;
    // One barrier runs round the other: a point between them is inside
    // exactly one of the two lines.
    return insideline(Lpoint, n, x, z) != insideline(Rpoint, n, x, z);
}

bool sTrack::check(float x1, float z1, float x2, float z2) {
    const sCheckSegment k(x1, z1, x2, z2);
    const unsigned int n = pairs();
    for (unsigned int i = 0; i < n; i++) {
        unsigned int j = (i + 1) % n;
        if (crosses(k, Lpoint[i], Lpoint[j])) {
            lasthitL = true;
            lasthit = i;
            return true;
        }
        if (crosses(k, Rpoint[i], Rpoint[j])) {
            lasthitL = false;
            lasthit = i;
            return true;
        }
    }
    return false;
}

bool sTrack::checkOutline(const float* x, const float* z, unsigned int corners, bool* hit) {
    const unsigned int n = pairs();
    // The outline's span of x (a coordinate that is not a number takes no
    // part: an edge ending in one never crosses anything).
    float lo = INFINITY, hi = -INFINITY;
    for (unsigned int c = 0; c < corners; c++) {
        if (x[c] < lo) lo = x[c];
        if (x[c] > hi) hi = x[c];
    }
    // The barrier segments within that span, in the order check tries them:
    // no other can cross any edge.
    unsigned short near[2 * TRACK_MAXPOINTS];
    unsigned int nnear = 0;
    for (unsigned int i = 0; i < n; i++) {
        unsigned int j = (i + 1) % n;
        for (unsigned int side = 0; side < 2; side++) {
            const sTrackPoint &P = side == 0 ? Lpoint[i] : Rpoint[i], &Q = side == 0 ? Lpoint[j] : Rpoint[j];
            if ((P.x < Q.x ? Q.x : P.x) < lo || (P.x < Q.x ? P.x : Q.x) > hi) continue;
            near[nnear++] = (unsigned short)(2 * i + side);
        }
    }
    bool any = false;
    for (unsigned int c = 0; c < corners; c++) {
        unsigned int d = (c + 1) % corners;
        const sCheckSegment k(x[c], z[c], x[d], z[d]);
        hit[c] = false;
        for (unsigned int m = 0; m < nnear; m++) {
            unsigned int i = near[m] / 2u, j = (i + 1) % n;
            bool left = near[m] % 2u == 0;
            if (left ? crosses(k, Lpoint[i], Lpoint[j]) : crosses(k, Rpoint[i], Rpoint[j])) {
                lasthitL = left;
                lasthit = i;
                hit[c] = true;
                break;
            }
        }
        any = any || hit[c];
    }
    return any;
}

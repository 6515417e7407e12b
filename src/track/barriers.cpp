// The barriers: where a point lies between them, what crosses them, and what a kart asks of them.

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

// Every barrier segment, left line then right.
template <class Visit>
void eachwall(const sTrack& t, Visit visit) {
    const unsigned int n = t.pairs();
    for (const sTrackPoint* P : {t.Lpoint, t.Rpoint})
        for (unsigned int i = 0; i < n; i++) visit(P[i], P[(i + 1) % n]);
}

bool outside(const sTrackPoint& a, const sTrackPoint& b, double x, double z, double r) {
    return fmin(a.x, b.x) > x + r || fmax(a.x, b.x) < x - r || fmin(a.z, b.z) > z + r || fmax(a.z, b.z) < z - r;
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

// The barrier point nearest (x, z) into (qx, qz), and its distance; `within`
// when none is nearer than that.
double sTrack::nearestwall(double x, double z, double within, double& qx, double& qz) const {
    double best = within;
    eachwall(*this, [&](const sTrackPoint& a, const sTrackPoint& b) {
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
bool sTrack::oddcrossings(double x1, double z1, double x2, double z2) const {
    bool odd = false;
    const double mx = (x1 + x2) / 2, mz = (z1 + z2) / 2, r = hypot(x2 - x1, z2 - z1) / 2;
    eachwall(*this, [&](const sTrackPoint& a, const sTrackPoint& b) {
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

sIntrusion sTrack::deepestintrusion(const float* x, const float* z, float cx, float cz) const {
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
    eachwall(*this, [&](const sTrackPoint& v, const sTrackPoint&) {
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

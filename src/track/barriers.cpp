// The barriers: what a kart asks of them (the nearest barrier point, crossings, how deep an outline reaches in).

#include <cmath>

#include "track/track.h"

namespace {

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

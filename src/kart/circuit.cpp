// Keeping to the circuit: a kart's centre and outline held behind the barriers.

#include "kart/gokart.h"

#include <cmath>

#include "kart/kartshared.h"
#include "track/track.h"


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

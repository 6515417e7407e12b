// Keeping to the circuit: a kart's centre and outline held behind the barriers.

#include "kart/gokart.h"

#include <cmath>

#include "kart/kartshared.h"
#include "track/track.h"

namespace {

// How far past a barrier line the outline may be left after a move (a
// centimetre short of the 0.10 we promise, for the rounding of its corners),
// and how far a correction leaves it.
// Kept: a correction leaves the outline 5 cm across the line, not clear of
// it, so that the next frame's outline test still bounces the kart; pinned by
// KartKept.AKartPushedOutOfTheTyresIsLeftAcrossTheLineSoTheNextFrameBounces
const double WALL_SLACK = 0.09;
const double WALL_LEFT = 0.05;

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
        if (track.nearestwall(px, pz, reach, qx, qz) >= reach || !track.ontrack(px, pz)) return;
        const sIntrusion in = track.deepestintrusion(x, z, px, pz);
        if (in.depth <= WALL_SLACK) return;
        px += (float)(in.ux * (in.depth - WALL_LEFT));
        pz += (float)(in.uz * (in.depth - WALL_LEFT));
    }
}

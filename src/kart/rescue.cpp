// Back on the road. A kart has no reverse gear, so one driven nose-first
// into the tyres can stay there for good; the driver may ask to be put down
// again, standing still, where the circuit's order of barrier pairs last
// saw him. He loses the time it takes to get going again and gains no
// ground: the lap, the checkpoint and the lap's clock are left alone.

#include <cmath>

#include "kart/gokart.h"
#include "shell/angles.h"
#include "track/track.h"

namespace {

sTrackPoint middle(unsigned int i) {
    return {(track.Lpoint[i].x + track.Rpoint[i].x) / 2, (track.Lpoint[i].z + track.Rpoint[i].z) / 2};
}

// Along the circuit at pair c: square to the line across the road, pointing
// the way the next pair lies (towards the next pair itself when the two
// barrier points coincide).
sTrackPoint alongcircuit(unsigned int c, unsigned int n) {
    const sTrackPoint here = middle(c), next = middle((c + 1) % n);
    const float ax = track.Rpoint[c].x - track.Lpoint[c].x, az = track.Rpoint[c].z - track.Lpoint[c].z;
    sTrackPoint d = {az, -ax};
    if (d.x * (next.x - here.x) + d.z * (next.z - here.z) < 0) d = {-az, ax};
    float l = hypotf(d.x, d.z);
    if (!(l > 1e-4f)) {
        d = {next.x - here.x, next.z - here.z};
        l = hypotf(d.x, d.z);
    }
    if (!(l > 1e-4f)) return {0, -1};
    return {d.x / l, d.z / l};
}

// How far back along the road the kart may be set, a step at a time, when
// its nose would stand nearer the next pair than its own.
const float BACK_STEP = 0.1f;
const int BACK_STEPS = 40;

}  // namespace

void gridslot(unsigned int id, float& x, float& z) {
    const sGokartStaticData& s = gokartstaticdata;
    x = track.trackscale * TRACK_GANTRY_X - s.chasiswidth + 2 * s.chasiswidth * (float)(id % 2);
    z = 20.0f - 2 * (float)id * s.chasisfront;
}

void sGokart::rescue() {
    const unsigned int n = track.pairs();
    if (n < 3) return;

    // At rest, as on the grid. What the race has counted stays.
    ups = 0;
    pedal_up = pedal_down = 0;
    sw_ay = 0;
    slidediff = 0;
    lfw_ay = rfw_ay = 0;
    head_ax = head_axs = 0;
    kLEFT = kRIGHT = kUP = kDOWN = false;
    newSlide = true;
    DELAYslide = 0;

    if (lap == 0) {
        // Not over the line yet: no pair has been passed that counts, and
        // the grid is the only place behind the kart for certain.
        gridslot(ID, px, pz);
        ay = 0;
    } else {
        // The middle of the pair last reached, facing on round. From there
        // the nose's sensor must not find the next pair, or that checkpoint
        // would count on the next frame without the kart driving to it:
        // where pairs stand close it would, and the kart is set back along
        // the road, a step at a time, until it no longer does.
        const unsigned int c = checkpoint % n;
        const sTrackPoint m = middle(c), d = alongcircuit(c, n);
        ay = (float)(DEG_PER_RAD * atan2(-d.x, -d.z));
        px = m.x;
        pz = m.z;
        for (int k = 1; k <= BACK_STEPS && getcheckpoint() == (unsigned int)checkpoint + 1; k++) {
            const float x = m.x - d.x * BACK_STEP * (float)k, z = m.z - d.z * BACK_STEP * (float)k;
            if (!track.ontrack(x, z)) break;
            px = x;
            pz = z;
        }
    }
    may = ay;
    opx = px;
    opz = pz;
    ocosay = (float)cos(ay / DEG_PER_RAD);
    osinay = (float)sin(ay / DEG_PER_RAD);
    oaydiff = 0;
}

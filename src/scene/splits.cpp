// Split times: kart 0's lap against the ghost's best lap, tenth by tenth.

#include "scene/splits.h"

#include <cmath>
#include <cstdio>

#include "assets/font.h"
#include "kart/gokart.h"
#include "scene/ghost.h"
#include "shell/angles.h"
#include "shell/bvconfig.h"
#include "shell/performance.h"
#include "track/track.h"

sSplits splits;

unsigned int splitcheckpoint(unsigned int k, unsigned int pairs) {
    unsigned int c = (k * pairs + 5) / 10;
    if (c < 1) c = 1;
    if (pairs >= 1 && c > pairs - 1) c = pairs - 1;
    return c;
}

namespace {

// The pair a sensor is nearest to, found exactly as a kart finds its own
// (a sensor further than 99 from every barrier point counts as at pair 0).
unsigned int nearestpair(float x, float z) {
    float best = 99.0f;
    unsigned int result = 0;
    const unsigned int n = track.pairs();
    for (unsigned int i = 0; i < n; i++) {
        float d = hypotf(track.Lpoint[i].x - x, track.Lpoint[i].z - z);
        if (d < best) {
            best = d;
            result = i;
        }
        d = hypotf(track.Rpoint[i].x - x, track.Rpoint[i].z - z);
        if (d < best) {
            best = d;
            result = i;
        }
    }
    return result;
}

// Between samples the kart is taken to have gone straight on at an even
// pace, turning the short way round; a position is a sample index with a
// fraction.
struct sPath {
    const float *px, *pz, *ay;
    int n;
    float fps, period, front;

    // The pair nearest the sensor of the kart at position s: the sensor is
    // one frame's travel and the chassis's front ahead along its heading.
    unsigned int pairat(float s) const {
        int i = (int)s;
        if (i > n - 2) i = n - 2;
        float f = s - (float)i;
        float x = px[i] + (px[i + 1] - px[i]) * f, z = pz[i] + (pz[i + 1] - pz[i]) * f;
        float d = ay[i + 1] - ay[i];
        // Kept: samples exactly half a turn apart are turned through forwards
        // (+180), where wrap180 would turn back; pinned by
        // SplitsHeadings.HalfATurnBetweenSamplesIsTakenForwards.
        if (d > 180)
            d -= 360;
        else if (d < -180)
            d += 360;
        float a = ay[i] + d * f;
        float run = hypotf(px[i + 1] - px[i], pz[i + 1] - pz[i]) / (period * fps);
        float sa = (float)sin(a / DEG_PER_RAD), ca = (float)cos(a / DEG_PER_RAD);
        return nearestpair(x - sa * run - sa * front, z - ca * run - ca * front);
    }
};

// Steps through a sample interval: fine enough that a frame is never skipped
// at the rates the game records at.
const int SUBSTEPS = 16;

// Follows the checkpoint through the samples from position `from` on, the
// way countlaps() follows it through the frames: it moves on only to the
// next pair. reached[c] is where it became c (< 0 where it never did);
// stops once it becomes `until`, and returns where, or -1.
float walk(const sPath& path, float from, unsigned int checkpoint, unsigned int until, float* reached) {
    const unsigned int pairs = track.pairs();
    for (unsigned int c = 0; c < pairs; c++) reached[c] = -1;
    unsigned int next = path.pairat((float)(int)from);
    for (int i = (int)from; i < path.n; i++) {
        const unsigned int here = next;
        if (i + 1 < path.n) next = path.pairat((float)(i + 1));
        // Only where the nearest pair changes is the interval looked into.
        const int steps = i + 1 < path.n && next != here ? SUBSTEPS : 1;
        for (int j = 0; j < steps; j++) {
            float s = (float)i + (float)j / SUBSTEPS;
            if (s < from) continue;
            unsigned int c = j == 0 ? here : path.pairat(s);
            if (c == checkpoint + 1) {
                checkpoint = c;
                reached[c] = s;
                if (c == until) return s;
            }
        }
    }
    return -1;
}

}  // namespace

bool splitsfromsamples(const float* px, const float* pz, const float* ay, int n, float bestTime, float fps,
                       float times[SPLITS_N]) {
    for (unsigned int k = 0; k < SPLITS_N; k++) times[k] = -1;
    const unsigned int pairs = track.pairs();
    // A full recording was cut short: its end is not the lap's end.
    if (pairs < 3 || n < 2 || n >= GHOST_MAXRECS || !(bestTime > 0) || !(fps > 0)) return false;

    // The recording ends with the frame before the lap was closed, that one
    // itself or up to a whole sample period before: on average half a
    // period and half a frame before the close.
    sPath path = {px, pz, ay, n, fps, (bestTime - 0.5f / fps) / ((float)n - 0.5f), gokartstaticdata.chasisfront};
    static float reached[TRACK_MAXPOINTS];
    // Where the lap began, as a position, and how many frames after the kart
    // was there its clock started.
    float start = 0, late = 0;
    const unsigned int first = path.pairat(0);
    if (first != pairs - 1 && first != 0) {
        // Not begun at the line: a record on the first lap, recorded since
        // the grid. The lap began three frames after the sensor first found
        // the last pair: one to take it as the checkpoint, one to count the
        // lap, and the next restarts its clock. Twice over, so the sensor's
        // reach is worked out with the period the first pass found.
        for (int pass = 0; pass < 2; pass++) {
            start = walk(path, 0, pairs - 2, pairs - 1, reached);
            if (start < 0 || (float)n - 0.5f - start <= 0) return false;
            path.period = (bestTime + 2.5f / fps) / ((float)n - 0.5f - start);
        }
        late = 3;
    }
    if (!(path.period > 0.5f / fps) || !(path.period < 1.0f)) return false;

    walk(path, start, 0, pairs, reached);
    bool any = false;
    for (unsigned int k = 0; k < SPLITS_N; k++) {
        const float s = reached[splitcheckpoint(k + 1, pairs)];
        if (s < start) continue;
        // The frame after the kart got there is the one its checkpoint moves.
        times[k] = (s - start) * path.period + (1 - late) / fps;
        any = true;
    }
    return any;
}

void sSplits::init() {
    for (float& r : reference) r = -1;
    referencelap = -1;
    armed = false;
    counted = gokart[0].thislapcounted;
    checkpoint = gokart[0].checkpoint;
    shown = 0;
    delay = 0;
}

void sSplits::free() {
    init();
}

void sSplits::update() {
    if (delay > 0) delay -= 1.0f / performance.fps;
    if (config.nhumanplayers < 1) {
        armed = false;
        return;
    }
    const sGokart& k = gokart[0];
    if (counted && !k.thislapcounted && k.lap >= 1) {
        // A lap's clock has just restarted; from the second on, it closed the
        // lap before, whose time currentlaptime still holds.
        if (armed && k.lap >= 2 && referencelap > 0) {
            shown = k.currentlaptime - referencelap;
            delay = 2;
        }
        // The best as it stands now, which may be the lap just closed.
        armed = ghost.bestTime > 0 && ghost.bestTime < 99.0f;
        for (float& r : reference) r = -1;
        referencelap = -1;
        if (armed) {
            referencelap = ghost.bestTime;
            splitsfromsamples(ghost.px[1], ghost.pz[1], ghost.ay[1], ghost.nRecs[1], ghost.bestTime, performance.fps,
                              reference);
        }
    } else if (armed && k.checkpoint != checkpoint) {
        for (unsigned int i = 0; i < SPLITS_N; i++)
            if (k.checkpoint == splitcheckpoint(i + 1, track.pairs()) && reference[i] >= 0) {
                shown = k.currentlaptime - reference[i];
                delay = 2;
            }
    }
    counted = k.thislapcounted;
    checkpoint = k.checkpoint;
}

void sSplits::format(float difference, char* text, unsigned int size, float* r, float* g, float* b) {
    // Judged by what is written: a difference that shows as 0.00 is neither
    // ahead nor behind, and is white.
    long hundredths = lroundf(difference * 100);
    *r = *g = *b = 1;
    if (hundredths == 0) {
        snprintf(text, size, "0.00");
        return;
    }
    snprintf(text, size, "%+.2f", (double)hundredths / 100);
    if (hundredths < 0)
        *r = *b = 0;
    else
        *g = *b = 0;
}

void sSplits::draw() const {
    if (delay <= 0) return;
    char text[32];
    float r, g, b;
    format(shown, text, sizeof text, &r, &g, &b);
    fontTGA.out(0.5f, 0.93f, r, g, b, FONT_ALIGN_CENTER, 0.02f, "%s", text);
}

#ifndef BV_DATAGEN_SYNTH_H
#define BV_DATAGEN_SYNTH_H

// Building blocks of the generated sounds and music: oscillators without
// aliasing steps, envelopes, simple filters, and buffers that can wrap round
// so that a loop's tails carry on at its start.

#include <cmath>
#include <vector>

#include "datagen/noise.h"

namespace gen {

const float kTau = 6.28318531f;

inline float midiHz(float note) {
    return 440.0f * std::pow(2.0f, (note - 69) / 12.0f);
}

// Band-limited saw and square by polyBLEP; phase in cycles, step = hz / rate.
float polyBlep(float t, float dt);
float sawWave(float phase, float dt);
float squareWave(float phase, float dt, float width = 0.5f);

// One-pole filters.
struct LowPass {
    float y = 0;
    float run(float x, float hz, float rate) {
        float a = 1 - std::exp(-kTau * hz / rate);
        return y += a * (x - y);
    }
};
struct HighPass {
    LowPass lp;
    float run(float x, float hz, float rate) { return x - lp.run(x, hz, rate); }
};
// A resonant band-pass (state-variable filter).
struct BandPass {
    float low = 0, band = 0;
    float run(float x, float hz, float q, float rate) {
        float f = 2 * std::sin(3.14159265f * std::min(hz, rate / 6) / rate);
        low += f * band;
        float high = x - low - band / q;
        band += f * high;
        return band;
    }
};

// Attack, decay to sustain, release after `length` seconds; t in seconds.
float adsr(float t, float length, float a, float d, float s, float r);

// A mono or stereo track; add() wraps round the end when `circular`.
struct Track {
    int rate;
    bool circular;
    std::vector<float> l, r;
    Track(int rate_, size_t frames, bool circular_) : rate(rate_), circular(circular_), l(frames), r(frames) {}
    size_t size() const { return l.size(); }
    void add(long i, float left, float right) {
        long n = (long)l.size();
        if (circular) i = ((i % n) + n) % n;
        if (i < 0 || i >= n) return;
        l[i] += left;
        r[i] += right;
    }
    void addMono(long i, float v, float pan = 0) {  // pan -1 left .. 1 right
        add(i, v * std::sqrt(0.5f * (1 - pan)), v * std::sqrt(0.5f * (1 + pan)));
    }
};

// Feedback echo; on a circular track it runs twice round so that the echoes
// of the end come back at the start.
void echo(Track& t, float seconds, float feedback, float wet, float damping);
// Scales so that the highest peak is `peak` (after a gentle tanh limiter).
void finish(Track& t, float peak, float drive = 1.2f);
void finishMono(std::vector<float>& v, float peak);

}  // namespace gen

#endif

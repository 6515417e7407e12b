// Oscillators, envelopes, echo and the final mix of the generated sounds.

#include "datagen/synth.h"

#include <algorithm>

namespace gen {

float polyBlep(float t, float dt) {
    if (t < dt) {
        t /= dt;
        return t + t - t * t - 1;
    }
    if (t > 1 - dt) {
        t = (t - 1) / dt;
        return t * t + t + t + 1;
    }
    return 0;
}

float sawWave(float phase, float dt) {
    float t = phase - std::floor(phase);
    return 2 * t - 1 - polyBlep(t, dt);
}

float squareWave(float phase, float dt, float width) {
    float t = phase - std::floor(phase);
    float v = t < width ? 1.0f : -1.0f;
    v += polyBlep(t, dt);
    float t2 = t + (1 - width);
    t2 -= std::floor(t2);
    v -= polyBlep(t2, dt);
    return v;
}

float adsr(float t, float length, float a, float d, float s, float r) {
    if (t < 0) return 0;
    float level;
    if (t < a)
        level = t / a;
    else if (t < a + d)
        level = 1 - (1 - s) * (t - a) / d;
    else
        level = s;
    if (t > length) {
        float held = adsr(length, length + 1, a, d, s, r);
        level = held * std::max(0.0f, 1 - (t - length) / r);
    }
    return level;
}

void echo(Track& t, float seconds, float feedback, float wet, float damping) {
    size_t n = t.size(), delay = (size_t)(seconds * t.rate);
    std::vector<float> bl(delay, 0.0f), br(delay, 0.0f);
    LowPass fl, fr;
    std::vector<float> outl(n), outr(n);
    int passes = t.circular ? 2 : 1;
    size_t pos = 0;
    for (int p = 0; p < passes; p++)
        for (size_t i = 0; i < n; i++) {
            float el = bl[pos], er = br[pos];
            // Ping-pong: each side feeds the other.
            bl[pos] = t.l[i] + fl.run(er, damping, (float)t.rate) * feedback;
            br[pos] = t.r[i] + fr.run(el, damping, (float)t.rate) * feedback;
            pos = (pos + 1) % delay;
            outl[i] = t.l[i] + wet * el;
            outr[i] = t.r[i] + wet * er;
        }
    t.l.swap(outl);
    t.r.swap(outr);
}

void finish(Track& t, float peak, float drive) {
    float top = 0;
    for (size_t i = 0; i < t.size(); i++) top = std::max(top, std::max(std::fabs(t.l[i]), std::fabs(t.r[i])));
    if (top <= 0) return;
    float in = drive / top, out = peak / std::tanh(drive);
    for (size_t i = 0; i < t.size(); i++) {
        t.l[i] = std::tanh(t.l[i] * in) * out;
        t.r[i] = std::tanh(t.r[i] * in) * out;
    }
}

void finishMono(std::vector<float>& v, float peak) {
    float top = 0;
    for (float x : v) top = std::max(top, std::fabs(x));
    if (top <= 0) return;
    for (float& x : v) x *= peak / top;
}

}  // namespace gen

// Sound effects: the engine and tyre loops and the menu's clicks, mono at
// 22050 Hz. The loops are synthesised round a circle (whatever runs past the
// end continues at the start), so they repeat without a seam.

#include "datagen/content.h"
#include "datagen/synth.h"
#include "writers/wav.h"

namespace gen {

namespace {

const int R = kSoundRate;

bool save(const std::string& file, std::vector<float> v, float peak) {
    finishMono(v, peak);
    return bvw::writeWAV(file, bvw::toPCM16(v), 1, R);
}

// A fade in and out of a few milliseconds so one-shots start and end at rest.
void edges(std::vector<float>& v, float in, float out) {
    size_t a = (size_t)(in * R), b = (size_t)(out * R);
    for (size_t i = 0; i < a && i < v.size(); i++) v[i] *= (float)i / a;
    for (size_t i = 0; i < b && i < v.size(); i++) v[v.size() - 1 - i] *= (float)i / b;
}

// A single-cylinder two-stroke at tick-over: one firing per period, each a
// short burst of resonances; the bursts vary a little in strength.
std::vector<float> engine() {
    const int cycles = 61, n = cycles * kEnginePeriod;
    std::vector<float> v(n, 0.0f);
    Rng rng(3000);
    for (int k = 0; k < cycles; k++) {
        float strength = 0.8f + 0.2f * rng.uniform() + 0.1f * std::sin(kTau * k * 3 / cycles);
        int start = k * kEnginePeriod;
        for (int j = 0; j < 2 * kEnginePeriod; j++) {
            float t = (float)j / R;
            float attack = 1 - std::exp(-t * 2500);  // no step at the firing, which would click
            float s = attack * std::exp(-t * 90) * std::sin(kTau * 61.25f * t) * 0.9f       // the body's thump
                      + attack * std::exp(-t * 160) * std::sin(kTau * 183.75f * t + 0.6f) * 0.7f  // exhaust pipe
                      + attack * std::exp(-t * 420) * std::sin(kTau * 490 * t + 1.1f) * 0.45f    // rattle
                      + attack * std::exp(-t * 600) * std::sin(kTau * 1225 * t) * 0.2f;
            v[(start + j) % n] += strength * s;
        }
    }
    // A breath of exhaust noise, filtered round the circle twice so that the
    // filter's state at the start is what the end leaves behind.
    std::vector<float> noise(n);
    for (float& x : noise) x = rng.range(-1, 1);
    BandPass bp;
    for (int pass = 0; pass < 2; pass++)
        for (int i = 0; i < n; i++) {
            float y = bp.run(noise[i], 900, 1.2f, (float)R);
            float env = 0.35f + 0.65f * std::exp(-(float)(i % kEnginePeriod) / R * 120);
            if (pass == 1) v[i] += 0.18f * y * env;
        }
    return v;
}

// Tyre squeal: a wavering whistle with hiss, one second round.
std::vector<float> tyre() {
    const int n = R;  // whole hertz and whole vibrato cycles close the loop
    std::vector<float> v(n, 0.0f);
    double phase = 0;
    for (int i = 0; i < n; i++) {
        float t = (float)i / R;
        float hz = 1180 + 55 * std::sin(kTau * 7 * t) + 25 * std::sin(kTau * 3 * t + 1);
        phase += hz / R;
        float amp = 0.75f + 0.25f * std::sin(kTau * 5 * t);
        float p = (float)(phase - std::floor(phase));
        v[i] = amp * (std::sin(kTau * p) + 0.35f * std::sin(2 * kTau * p) + 0.12f * std::sin(3 * kTau * p));
    }
    Rng rng(3100);
    std::vector<float> noise(n);
    for (float& x : noise) x = rng.range(-1, 1);
    BandPass bp;
    for (int pass = 0; pass < 2; pass++)
        for (int i = 0; i < n; i++) {
            float y = bp.run(noise[i], 2600, 2.0f, (float)R);
            if (pass == 1) v[i] += 0.5f * y;
        }
    return v;
}

std::vector<float> collision() {
    const int n = (int)(0.6f * R);
    std::vector<float> v(n);
    Rng rng(3200);
    BandPass crack, body;
    for (int i = 0; i < n; i++) {
        float t = (float)i / R;
        float thump = std::exp(-t * 18) * std::sin(kTau * (45 * t + 30 * (1 - std::exp(-t * 30)) / 30 * 2));
        float noise = rng.range(-1, 1);
        float hit = crack.run(noise, 2200, 0.8f, (float)R) * std::exp(-t * 45);
        float plastic = body.run(noise, 650, 6.0f, (float)R) * std::exp(-t * 9);
        float rattle = std::exp(-t * 14) * (std::sin(kTau * 310 * t) * 0.3f + std::sin(kTau * 757 * t) * 0.2f);
        v[i] = thump * 1.0f + hit * 1.4f + plastic * 0.9f + rattle;
    }
    edges(v, 0.001f, 0.05f);
    return v;
}

std::vector<float> tone(float seconds, float from, float to, float decay, float harmonic) {
    const int n = (int)(seconds * R);
    std::vector<float> v(n);
    double phase = 0;
    for (int i = 0; i < n; i++) {
        float t = (float)i / R;
        float hz = from + (to - from) * std::min(1.0f, t / seconds);
        phase += hz / R;
        float p = (float)(phase - std::floor(phase));
        v[i] = std::exp(-t * decay) * (std::sin(kTau * p) + harmonic * std::sin(2 * kTau * p));
    }
    edges(v, 0.003f, 0.01f);
    return v;
}

std::vector<float> roll() {  // the mouse comes onto a button: a soft rising blip
    return tone(0.08f, 620, 940, 25, 0.15f);
}

std::vector<float> click() {  // a button pressed: two quick notes, a fifth apart
    std::vector<float> a = tone(0.06f, 880, 880, 30, 0.3f), b = tone(0.11f, 1320, 1320, 28, 0.3f);
    std::vector<float> v(a.size() + b.size(), 0.0f);
    for (size_t i = 0; i < a.size(); i++) v[i] += a[i];
    for (size_t i = 0; i < b.size(); i++) v[a.size() + i] += b[i];
    return v;
}

std::vector<float> type() {  // a typewriter key
    const int n = (int)(0.045f * R);
    std::vector<float> v(n);
    Rng rng(3300);
    BandPass bp;
    for (int i = 0; i < n; i++) {
        float t = (float)i / R;
        v[i] = bp.run(rng.range(-1, 1), 3200, 3, (float)R) * std::exp(-t * 160) +
               0.4f * std::sin(kTau * 1900 * t) * std::exp(-t * 120);
    }
    edges(v, 0.0005f, 0.005f);
    return v;
}

std::vector<float> decinc() {  // an arrow: a wood-block tick
    std::vector<float> v = tone(0.07f, 1250, 1150, 70, 0.5f);
    return v;
}

}  // namespace

void soundFiles(std::vector<SoundFile>& out) {
    out.push_back({"Sounds/Engine.wav", [](const std::string& f) { return save(f, engine(), 0.85f); }});
    out.push_back({"Sounds/Tire.wav", [](const std::string& f) { return save(f, tyre(), 0.7f); }});
    out.push_back({"Sounds/Collission.wav", [](const std::string& f) { return save(f, collision(), 0.9f); }});
    out.push_back({"Sounds/Broll.wav", [](const std::string& f) { return save(f, roll(), 0.5f); }});
    out.push_back({"Sounds/Bclick.wav", [](const std::string& f) { return save(f, click(), 0.6f); }});
    out.push_back({"Sounds/Btype.wav", [](const std::string& f) { return save(f, type(), 0.55f); }});
    out.push_back({"Sounds/Bdecinc.wav", [](const std::string& f) { return save(f, decinc(), 0.55f); }});
}

}  // namespace gen

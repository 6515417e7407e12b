// The two tunes, composed here note by note and played by small synthesisers:
// "iintro" a short fanfare for start-up, "intro" the looping menu tune. Both in
// D major at 128 beats a minute; encoded to MP3 with LAME.

#include <lame/lame.h>

#include <cstdio>

#include "datagen/canvas.h"
#include "datagen/content.h"
#include "datagen/synth.h"

namespace gen {

namespace {

const int RATE = 44100;
const float BPM = 128;
const float BEAT = 60 / BPM;
const float BAR = 4 * BEAT;

struct Note {
    float beat;    // start, in beats from the start of the piece
    float length;  // in beats
    float pitch;   // MIDI note number
};

// Melodies as (length, pitch) pairs; pitch 0 is a rest.
std::vector<Note> phrase(float startBeat, std::initializer_list<std::pair<float, float>> notes) {
    std::vector<Note> out;
    float b = startBeat;
    for (auto& n : notes) {
        if (n.second > 0) out.push_back({b, n.first, n.second});
        b += n.first;
    }
    return out;
}

// Chords as root pitch (bass octave) and triad type.
struct Chord {
    float root;
    bool minor;
};
const Chord D = {38, false}, A = {45, false}, Bm = {47, true}, G = {43, false}, Em = {40, true};

float sec(float beats) {
    return beats * BEAT;
}
long frame(float beats) {
    return (long)std::lround(sec(beats) * RATE);
}

// ---- instruments ----

void lead(Track& t, const Note& n, float gain, float pan, float bright) {
    float len = sec(n.length) * 0.92f, hz = midiHz(n.pitch), dt = hz / RATE;
    long start = frame(n.beat), count = (long)((len + 0.25f) * RATE);
    LowPass f1, f2;
    for (long i = 0; i < count; i++) {
        float tt = (float)i / RATE;
        float vib = 1 + 0.004f * std::sin(kTau * 5.5f * tt) * smooth(0.15f, 0.4f, tt);
        float ph = hz * vib * tt;
        float s = 0.6f * sawWave(ph, dt) + 0.4f * squareWave(ph * 1.002f, dt, 0.3f);
        float env = adsr(tt, len, 0.012f, 0.18f, 0.65f, 0.12f);
        float cutoff = hz * (bright + 5 * adsr(tt, len, 0.005f, 0.25f, 0.2f, 0.1f));
        s = f2.run(f1.run(s, cutoff, RATE), cutoff, RATE);
        t.addMono(start + i, s * env * gain, pan);
    }
}

void bass(Track& t, float beat, float length, float pitch, float gain) {
    float len = sec(length) * 0.85f, hz = midiHz(pitch), dt = hz / RATE;
    long start = frame(beat), count = (long)((len + 0.06f) * RATE);
    LowPass f1, f2;
    for (long i = 0; i < count; i++) {
        float tt = (float)i / RATE;
        float s = 0.7f * squareWave(hz * tt, dt) + 0.5f * sawWave(hz * tt * 0.5f, dt * 0.5f);
        float cutoff = hz * (2 + 6 * std::exp(-tt * 18));
        s = f2.run(f1.run(s, cutoff, RATE), cutoff, RATE);
        t.addMono(start + i, s * adsr(tt, len, 0.004f, 0.1f, 0.7f, 0.05f) * gain, 0);
    }
}

void pad(Track& t, float beat, float length, const Chord& c, float gain) {
    float tones[3] = {c.root + 24, c.root + 24 + (c.minor ? 3.0f : 4.0f), c.root + 31};
    float len = sec(length);
    long start = frame(beat), count = (long)((len + 0.4f) * RATE);
    for (int k = 0; k < 3; k++)
        for (int d = -1; d <= 1; d += 2) {
            float hz = midiHz(tones[k]) * (1 + 0.003f * d), dt = hz / RATE;
            LowPass f;
            for (long i = 0; i < count; i++) {
                float tt = (float)i / RATE;
                float s = f.run(sawWave(hz * tt + 0.37f * k, dt), 1400, RATE);
                t.addMono(start + i, s * adsr(tt, len, 0.25f, 0.3f, 0.8f, 0.35f) * gain, 0.5f * d);
            }
        }
}

void pluck(Track& t, float beat, float pitch, float gain, float pan) {
    float hz = midiHz(pitch);
    long start = frame(beat), count = (long)(0.35f * RATE);
    for (long i = 0; i < count; i++) {
        float tt = (float)i / RATE;
        float s = std::sin(kTau * hz * tt) + 0.3f * std::sin(kTau * 2 * hz * tt) * std::exp(-tt * 30);
        t.addMono(start + i, s * std::exp(-tt * 11) * std::min(1.0f, tt * 400) * gain, pan);
    }
}

void kick(Track& t, float beat, float gain) {
    long start = frame(beat), count = (long)(0.3f * RATE);
    double phase = 0;
    for (long i = 0; i < count; i++) {
        float tt = (float)i / RATE;
        phase += (48 + 110 * std::exp(-tt * 35)) / RATE;
        float s = std::sin(kTau * (float)(phase - std::floor(phase))) * std::exp(-tt * 9);
        t.addMono(start + i, s * gain, 0);
    }
}

void snare(Track& t, float beat, float gain, Rng& rng) {
    long start = frame(beat), count = (long)(0.2f * RATE);
    HighPass hp;
    for (long i = 0; i < count; i++) {
        float tt = (float)i / RATE;
        float s = hp.run(rng.range(-1, 1), 1200, RATE) * std::exp(-tt * 22) +
                  0.5f * std::sin(kTau * 190 * tt) * std::exp(-tt * 30);
        t.addMono(start + i, s * gain, 0.1f);
    }
}

void hat(Track& t, float beat, float gain, float decay, Rng& rng) {
    long start = frame(beat), count = (long)(0.12f * RATE);
    HighPass hp;
    for (long i = 0; i < count; i++) {
        float tt = (float)i / RATE;
        t.addMono(start + i, hp.run(rng.range(-1, 1), 7000, RATE) * std::exp(-tt * decay) * gain, -0.3f);
    }
}

void crash(Track& t, float beat, float gain, Rng& rng) {
    long start = frame(beat), count = (long)(1.6f * RATE);
    HighPass hp;
    BandPass ring;
    for (long i = 0; i < count; i++) {
        float tt = (float)i / RATE;
        float n = rng.range(-1, 1);
        float s = hp.run(n, 4000, RATE) + 0.3f * ring.run(n, 5200, 8, RATE);
        t.addMono(start + i, s * std::exp(-tt * 2.6f) * gain, 0.3f);
    }
}

// Eight bass notes to the bar: root, root, octave, root, fifth, root, octave, fifth.
void bassBar(Track& t, float beat, const Chord& c, float gain) {
    const float pattern[8] = {0, 0, 12, 0, 7, 0, 12, 7};
    for (int i = 0; i < 8; i++) bass(t, beat + i * 0.5f, 0.5f, c.root + pattern[i], gain);
}

// Sixteenth-note arpeggio up and down the chord.
void arpBar(Track& t, float beat, const Chord& c, float gain) {
    float third = c.minor ? 3.0f : 4.0f;
    const float up[8] = {0, third, 7, 12, 12 + third, 12, 7, third};
    for (int i = 0; i < 16; i++) pluck(t, beat + i * 0.25f, c.root + 24 + up[i % 8], gain, i % 2 ? 0.4f : -0.4f);
}

void beatBar(Track& t, float beat, bool full, bool fill, Rng& rng) {
    kick(t, beat, 0.9f);
    kick(t, beat + 2, 0.9f);
    if (full) kick(t, beat + 2.5f, 0.6f);
    for (int i = 0; i < 8; i++) hat(t, beat + i * 0.5f, i % 2 ? 0.12f : 0.2f, i % 2 ? 45.0f : 30.0f, rng);
    if (full) {
        snare(t, beat + 1, 0.45f, rng);
        snare(t, beat + 3, 0.45f, rng);
    }
    if (fill)
        for (int i = 0; i < 4; i++) snare(t, beat + 3 + i * 0.25f, 0.2f + 0.08f * i, rng);
}

bool encodeMP3(const std::string& file, const Track& t) {
    lame_global_flags* gf = lame_init();
    if (!gf) return false;
    lame_set_in_samplerate(gf, RATE);
    lame_set_out_samplerate(gf, RATE);
    lame_set_num_channels(gf, 2);
    lame_set_mode(gf, JOINT_STEREO);
    lame_set_brate(gf, 160);
    lame_set_quality(gf, 5);
    // The Info tag tells decoders the encoder's delay and padding, so the
    // decoded loop comes out sample for sample as long as it went in.
    lame_set_bWriteVbrTag(gf, 1);
    if (lame_init_params(gf) < 0) {
        lame_close(gf);
        return false;
    }
    std::vector<unsigned char> mp3;
    std::vector<unsigned char> chunk(1 << 16);
    const size_t block = 4096;
    for (size_t i = 0; i < t.size(); i += block) {
        int n = (int)std::min(block, t.size() - i);
        int got = lame_encode_buffer_ieee_float(gf, &t.l[i], &t.r[i], n, chunk.data(), (int)chunk.size());
        if (got < 0) {
            lame_close(gf);
            return false;
        }
        mp3.insert(mp3.end(), chunk.begin(), chunk.begin() + got);
    }
    int got = lame_encode_flush(gf, chunk.data(), (int)chunk.size());
    if (got > 0) mp3.insert(mp3.end(), chunk.begin(), chunk.begin() + got);
    size_t tag = lame_get_lametag_frame(gf, chunk.data(), chunk.size());
    if (tag > 0 && tag <= mp3.size()) std::copy(chunk.begin(), chunk.begin() + tag, mp3.begin());
    lame_close(gf);
    FILE* f = fopen(file.c_str(), "wb");
    if (!f) return false;
    bool ok = fwrite(mp3.data(), 1, mp3.size(), f) == mp3.size();
    return fclose(f) == 0 && ok;
}

// ---- the menu tune: 20 bars that loop ----
//   bars 0-3   groove: drums, bass, arpeggio
//   bars 4-11  the tune over D A Bm G, twice
//   bars 12-15 the bridge: Em G A A, climbing
//   bars 16-19 the groove again, with the pad, back into bar 0

Track menuTune() {
    const int bars = 20;
    Track t(RATE, (size_t)std::lround(bars * BAR * RATE), true);
    Rng rng(4000);
    const Chord loop[4] = {D, A, Bm, G}, bridge[4] = {Em, G, A, A};
    for (int b = 0; b < bars; b++) {
        float beat = b * 4.0f;
        bool inBridge = b >= 12 && b < 16;
        const Chord& c = inBridge ? bridge[b - 12] : loop[b % 4];
        bassBar(t, beat, c, 0.32f);
        arpBar(t, beat, c, b < 4 ? 0.1f : 0.07f);
        if (b >= 4) pad(t, beat, 4, c, 0.035f);
        beatBar(t, beat, b >= 2, b % 4 == 3, rng);
        if (b % 4 == 0 && b > 0) crash(t, beat, 0.15f, rng);
    }
    std::vector<Note> tune;
    auto add = [&](std::vector<Note> v) { tune.insert(tune.end(), v.begin(), v.end()); };
    add(phrase(16, {{1, 81}, {.5f, 78}, {.5f, 81}, {1, 86}, {1, 81},
                    {1.5f, 85}, {.5f, 83}, {1, 81}, {1, 76},
                    {1, 78}, {.5f, 83}, {.5f, 81}, {1, 78}, {1, 74},
                    {.5f, 76}, {.5f, 78}, {1, 79}, {1, 83}, {1, 81}}));
    add(phrase(32, {{1, 81}, {.5f, 78}, {.5f, 81}, {1, 86}, {1, 88},
                    {1, 85}, {.5f, 88}, {.5f, 85}, {1, 81}, {1, 83},
                    {1.5f, 86}, {.5f, 85}, {1, 83}, {1, 78},
                    {.5f, 79}, {.5f, 81}, {1, 83}, {1.5f, 81}, {.5f, 0}}));
    add(phrase(48, {{.5f, 83}, {.5f, 79}, {.5f, 76}, {.5f, 79}, {1, 83}, {1, 88},
                    {.5f, 86}, {.5f, 83}, {.5f, 79}, {.5f, 83}, {1, 86}, {1, 91},
                    {1, 88}, {1, 85}, {1, 81}, {1, 88},
                    {.5f, 85}, {.5f, 86}, {1, 88}, {2, 81}}));
    // The groove's return gets a quiet answer an octave down.
    add(phrase(64, {{2, 69}, {2, 74}, {2, 73}, {2, 69}, {2, 71}, {2, 66}, {2, 67}, {2, 69}}));
    for (const Note& n : tune) lead(t, n, n.beat >= 64 ? 0.12f : 0.2f, 0.1f, n.beat >= 64 ? 2.0f : 3.0f);
    echo(t, sec(0.75f), 0.35f, 0.3f, 3000);
    finish(t, 0.89f);
    return t;
}

// ---- the start-up fanfare ----

Track fanfare() {
    const float bars = 6.5f;
    Track t(RATE, (size_t)std::lround(bars * BAR * RATE), false);
    Rng rng(4100);
    const Chord chords[5] = {D, G, Em, D, D};
    for (int b = 0; b < 4; b++) {
        float beat = b * 4.0f;
        if (b == 2) {
            pad(t, beat, 2, Em, 0.05f);
            pad(t, beat + 2, 2, A, 0.05f);
            bassBar(t, beat, Em, 0.3f);
        } else {
            pad(t, beat, 4, chords[b], 0.05f);
            bassBar(t, beat, chords[b], 0.3f);
        }
        beatBar(t, beat, b >= 1, b == 3, rng);
        if (b == 0) crash(t, 0, 0.3f, rng);
    }
    // The final chord: held, with a crash, a last kick, and the pad ringing out.
    crash(t, 16, 0.35f, rng);
    kick(t, 16, 1.0f);
    bass(t, 16, 6, 38, 0.35f);
    pad(t, 16, 8, D, 0.06f);
    std::vector<Note> tune = phrase(0, {{.5f, 74}, {.5f, 78}, {1, 81}, {2, 86},
                                        {1, 83}, {.5f, 86}, {.5f, 83}, {2, 79},
                                        {1, 76}, {.5f, 79}, {.5f, 83}, {1, 81}, {1, 85},
                                        {.75f, 86}, {.25f, 85}, {.75f, 83}, {.25f, 85}, {2, 81},
                                        {6, 86}});
    for (const Note& n : tune) lead(t, n, 0.22f, 0.05f, 3.5f);
    for (const Note& n : phrase(16, {{6, 78}})) lead(t, n, 0.12f, -0.3f, 2.5f);  // a third below
    echo(t, sec(0.75f), 0.3f, 0.25f, 3000);
    // Fade the last bar so the tune ends in silence.
    size_t fade = (size_t)(BAR * RATE);
    for (size_t i = 0; i < fade; i++) {
        float k = (float)i / fade;
        t.l[t.size() - 1 - i] *= k;
        t.r[t.size() - 1 - i] *= k;
    }
    finish(t, 0.89f);
    return t;
}

}  // namespace

void musicFiles(std::vector<SoundFile>& out) {
    out.push_back({"Sounds/iintro.mp3", [](const std::string& f) { return encodeMP3(f, fanfare()); }});
    out.push_back({"Sounds/intro.mp3", [](const std::string& f) { return encodeMP3(f, menuTune()); }});
}

}  // namespace gen

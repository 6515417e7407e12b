// The generated sounds and music, loaded the game's way and measured.

#include <gtest/gtest.h>
#include <sndfile.h>

#include <cmath>
#include <string>
#include <vector>

#include "audio/fsound.h"
#include "datagen/content.h"
#include "support/bvtest_fixtures.h"

namespace {

const std::string kSounds = std::string(BV_GAME_DIR) + "/Data/Sounds/";

struct Decoded {
    std::vector<float> mono;  // channels averaged
    int rate = 0, channels = 0;
};

Decoded decode(const std::string& path) {
    Decoded d;
    SF_INFO info = {};
    SNDFILE* f = sf_open(path.c_str(), SFM_READ, &info);
    EXPECT_NE(f, nullptr) << path << ": " << sf_strerror(nullptr);
    if (!f) return d;
    std::vector<float> frames((size_t)info.frames * info.channels);
    sf_readf_float(f, frames.data(), info.frames);
    sf_close(f);
    d.rate = info.samplerate;
    d.channels = info.channels;
    d.mono.resize((size_t)info.frames);
    for (size_t i = 0; i < d.mono.size(); i++) {
        float s = 0;
        for (int c = 0; c < info.channels; c++) s += frames[i * info.channels + c];
        d.mono[i] = s / info.channels;
    }
    return d;
}

// The jump from the last sample back to the first, against the sound's own
// steps: a seamless loop's join is no larger than its ordinary steps.
// (No sound of ours has sudden steps either: every attack is ramped.)
void expectSeamless(const std::vector<float>& v, const std::string& name) {
    ASSERT_GT(v.size(), 100u);
    std::vector<float> steps;
    for (size_t i = 1; i < v.size(); i++) steps.push_back(std::fabs(v[i] - v[i - 1]));
    std::sort(steps.begin(), steps.end());
    float join = std::fabs(v.front() - v.back());
    float typical = steps[(size_t)(steps.size() * 0.99)];
    EXPECT_LE(join, 2 * typical) << name << ": the loop point jumps " << join << ", 99% of steps are below " << typical;
    EXPECT_LE(join, steps.back()) << name << ": the join is no bigger than the sound's biggest step";
}

const char* kAll[] = {"Engine.wav", "Tire.wav", "Collission.wav", "Broll.wav", "Bclick.wav",
                      "Btype.wav",  "Bdecinc.wav", "iintro.mp3", "intro.mp3"};

TEST(ContentSounds, EverySoundLoadsThroughTheSoundLibrary) {
    bvtest::SoundCapture capture;
    ASSERT_TRUE(FSOUND_Init(44100, 32, 0));
    for (const char* name : kAll) {
        unsigned int mode = std::string(name).find(".mp3") != std::string::npos ? 0x8000a : 0x80009;
        FSOUND_SAMPLE* s = FSOUND_Sample_Load(FSOUND_FREE, (kSounds + name).c_str(), mode, 0);
        EXPECT_NE(s, nullptr) << name;
    }
    FSOUND_Close();
}

TEST(ContentSounds, EffectsAreMono22050AndPeaksStayBelowClipping) {
    for (const char* name : kAll) {
        Decoded d = decode(kSounds + name);
        float peak = 0;
        for (float s : d.mono) peak = std::max(peak, std::fabs(s));
        EXPECT_LT(peak, 0.95f) << name;
        EXPECT_GT(peak, 0.2f) << name << " is audible";
        if (std::string(name).find(".wav") != std::string::npos) {
            EXPECT_EQ(d.rate, gen::kSoundRate) << name;
            EXPECT_EQ(d.channels, 1) << name;
        }
    }
}

TEST(ContentSounds, EngineAndTyreLoopsJoinWithoutAClick) {
    Decoded engine = decode(kSounds + "Engine.wav");
    EXPECT_EQ(engine.mono.size() % gen::kEnginePeriod, 0u) << "whole periods";
    expectSeamless(engine.mono, "Engine.wav");
    expectSeamless(decode(kSounds + "Tire.wav").mono, "Tire.wav");
}

TEST(ContentSounds, EngineTicksOverAtItsPeriodAtTheDrivingCodesBaseFrequency) {
    Decoded d = decode(kSounds + "Engine.wav");
    ASSERT_FALSE(d.mono.empty());
    // Circular autocorrelation: the strongest repeat between 5 ms and 40 ms.
    const size_t n = d.mono.size();
    int best = 0;
    double bestValue = -1e30;
    for (int lag = 110; lag < 880; lag++) {
        double s = 0;
        for (size_t i = 0; i < n; i++) s += (double)d.mono[i] * d.mono[(i + lag) % n];
        if (s > bestValue) bestValue = s, best = lag;
    }
    EXPECT_EQ(best, gen::kEnginePeriod);
    // Played at 22000 Hz, the driving code's frequency at rest, that is a tick-over of about 61 Hz.
    double hz = 22000.0 / best;
    EXPECT_NEAR(hz, 61.1, 0.5);
}

TEST(ContentSounds, TunesHaveTheirLengthsAndTheMenuTuneLoops) {
    Decoded start = decode(kSounds + "iintro.mp3");
    Decoded menu = decode(kSounds + "intro.mp3");
    ASSERT_GT(start.rate, 0);
    ASSERT_GT(menu.rate, 0);
    double a = (double)start.mono.size() / start.rate, b = (double)menu.mono.size() / menu.rate;
    EXPECT_GE(a, 8.0);
    EXPECT_LE(a, 15.0);
    EXPECT_GE(b, 30.0);
    EXPECT_LE(b, 60.0);
    // Whole bars at 128 beats a minute: the loop is as long as it was composed.
    EXPECT_NEAR(b, 20 * 4 * 60.0 / 128, 0.01);
    expectSeamless(menu.mono, "intro.mp3");
    // The start-up tune ends in silence.
    float tail = 0;
    for (size_t i = start.mono.size() - start.rate / 20; i < start.mono.size(); i++)
        tail = std::max(tail, std::fabs(start.mono[i]));
    EXPECT_LT(tail, 0.02f);
}

}  // namespace

// The race's sounds through a pause, judged by what OpenAL Soft actually
// plays (the wave-file backend's capture).

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "audio/fsound.h"
#include "scene/pause.h"
#include "shell/keyboard.h"
#include "support/bvtest_fixtures.h"

using namespace bvtest;

namespace {

class PauseSoundTest : public ::testing::Test {
protected:
    void SetUp() override {
        writeTone(scratch.path() + "/engine.wav", 440, 0.5);
        writeTone(scratch.path() + "/tyre.wav", 1000, 0.5);
        writeTone(scratch.path() + "/long.wav", 660, 4.0);
        keyboard.init();
        racepause.init();
        ASSERT_TRUE(FSOUND_Init(44100, 32, 0));
    }
    void TearDown() override { racepause.init(); }
    FSOUND_SAMPLE* load(const std::string& name, unsigned int mode) {
        return FSOUND_Sample_Load(FSOUND_FREE, (scratch.path() + "/" + name).c_str(), mode, 0);
    }
    // The mixer runs on for that long, in the capture's own time.
    double play(double seconds) {
        double from = capture.seconds();
        if (!capture.until(from + seconds)) ADD_FAILURE() << "the mixer stopped at " << capture.seconds() << " s";
        return from;
    }
    ScratchDir scratch;
    SoundCapture capture;
};

TEST_F(PauseSoundTest, EverySoundStopsWhereItWasAndPlaysOnFromThere) {
    int engine = FSOUND_PlaySound(FSOUND_FREE, load("engine.wav", FSOUND_LOOP_NORMAL));
    int once = FSOUND_PlaySound(FSOUND_FREE, load("long.wav", FSOUND_LOOP_OFF));
    // The tyres' loop, paused by its kart while it does not slide.
    int tyre = FSOUND_PlaySound(FSOUND_FREE, load("tyre.wav", FSOUND_LOOP_NORMAL));
    FSOUND_SetPaused(tyre, 1);
    ASSERT_GE(engine, 0);
    ASSERT_GE(once, 0);
    play(0.6);

    racepause.hold();
    EXPECT_TRUE(FSOUND_GetPaused(engine));
    EXPECT_TRUE(FSOUND_GetPaused(once));
    const unsigned int at = FSOUND_GetCurrentPosition(once);
    EXPECT_GT(at, 0u);
    const double pausedFrom = play(1.5);
    EXPECT_EQ(FSOUND_GetCurrentPosition(once), at);
    EXPECT_TRUE(FSOUND_IsPlaying(once));

    racepause.resume();
    EXPECT_FALSE(FSOUND_GetPaused(engine));
    EXPECT_FALSE(FSOUND_GetPaused(once));
    EXPECT_TRUE(FSOUND_GetPaused(tyre));  // still its kart's to start
    const double resumedFrom = play(1.0);
    EXPECT_GT(FSOUND_GetCurrentPosition(once), at);
    // The four-second sound has 3.4 s left, not 1.9 s: it has lost nothing to the pause.
    EXPECT_TRUE(FSOUND_IsPlaying(once));
    const double end = capture.seconds();
    FSOUND_Close();

    int channels = 0, rate = 0;
    std::vector<float> frames = capture.read(&channels, &rate);
    // The mixer's latency: what was changed at a moment of the capture is heard a little later.
    EXPECT_LT(rms(frames, channels, 0, rate, pausedFrom + 0.3, pausedFrom + 1.4), 0.001);
    EXPECT_GT(rms(frames, channels, 0, rate, resumedFrom + 0.3, end), 0.05);
}

TEST_F(PauseSoundTest, StartingTheRaceOverPlaysThePausedSoundsAgain) {
    int engine = FSOUND_PlaySound(FSOUND_FREE, load("engine.wav", FSOUND_LOOP_NORMAL));
    play(0.3);
    racepause.hold();
    EXPECT_TRUE(FSOUND_GetPaused(engine));
    play(0.3);
    racepause.init();  // as a restart or leaving the race does
    EXPECT_FALSE(racepause.paused);
    EXPECT_FALSE(FSOUND_GetPaused(engine));
    const double from = play(0.8);
    FSOUND_Close();
    int channels = 0, rate = 0;
    std::vector<float> frames = capture.read(&channels, &rate);
    EXPECT_GT(rms(frames, channels, 0, rate, from + 0.3, from + 0.8), 0.05);
}

}  // namespace

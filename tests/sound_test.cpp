// The sound adapter, judged by what OpenAL Soft actually plays: every test
// captures the mix through the wave-file backend and measures it.

#include <gtest/gtest.h>
#include <sndfile.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "audio/fsound.h"
#include "support/bvtest_fixtures.h"

using namespace bvtest;

namespace {

struct Captured {
    std::vector<float> frames;
    int channels = 0;
    int rate = 0;
    double level(int channel, double from, double to) const { return rms(frames, channels, channel, rate, from, to); }
    double pitch(int channel, double from, double to) const {
        return zeroCrossingHz(frames, channels, channel, rate, from, to);
    }
};

class SoundTest : public ::testing::Test {
protected:
    void SetUp() override {
        tone = scratch.path() + "/tone.wav";
        writeTone(tone, 440, 0.5);
        ASSERT_TRUE(FSOUND_Init(44100, 32, 0));
    }
    // Lets the mixer run on for a while, counted in the capture's own time
    // from the device's opening: whatever is changed next is heard from
    // there on, however the machine's load holds the mixer back or hurries it.
    void play(double seconds) {
        heard += seconds;
        if (!capture.until(heard)) ADD_FAILURE() << "the mixer stopped at " << capture.seconds() << " s";
    }
    Captured finish() {
        FSOUND_Close();
        Captured c;
        c.frames = capture.read(&c.channels, &c.rate);
        return c;
    }
    ScratchDir scratch;
    SoundCapture capture;
    std::string tone;
    double heard = 0;
};

TEST_F(SoundTest, OneShotPlaysAndEnds) {
    FSOUND_SAMPLE* s = FSOUND_Sample_Load(FSOUND_FREE, tone.c_str(), FSOUND_LOOP_OFF, 0);
    ASSERT_NE(s, nullptr);
    int ch = FSOUND_PlaySound(FSOUND_FREE, s);
    ASSERT_GE(ch, 0);
    EXPECT_TRUE(FSOUND_IsPlaying(ch));
    play(0.9);
    EXPECT_FALSE(FSOUND_IsPlaying(ch));
    Captured c = finish();
    ASSERT_EQ(c.channels, 2);
    EXPECT_GT(c.level(0, 0.1, 0.3), 0.05);
    EXPECT_NEAR(c.pitch(0, 0.1, 0.4), 440, 15);
    // After the half-second tone has run out: silence.
    EXPECT_LT(c.level(0, 0.75, 0.85), 0.001);
}

TEST_F(SoundTest, LoopKeepsPlaying) {
    FSOUND_SAMPLE* s = FSOUND_Sample_Load(FSOUND_FREE, tone.c_str(), FSOUND_LOOP_NORMAL, 0);
    int ch = FSOUND_PlaySound(FSOUND_FREE, s);
    play(1.3);
    EXPECT_TRUE(FSOUND_IsPlaying(ch));
    Captured c = finish();
    EXPECT_GT(c.level(0, 1.0, 1.2), 0.05);
}

TEST_F(SoundTest, VolumeZeroIsSilentAnd255Loud) {
    FSOUND_SAMPLE* s = FSOUND_Sample_Load(FSOUND_FREE, tone.c_str(), FSOUND_LOOP_NORMAL, 0);
    int ch = FSOUND_PlaySound(FSOUND_FREE, s);
    FSOUND_SetVolume(ch, 0);
    play(0.5);
    FSOUND_SetVolume(ch, 255);
    play(0.5);
    Captured c = finish();
    EXPECT_LT(c.level(0, 0.1, 0.4), 0.001);
    EXPECT_GT(c.level(0, 0.65, 0.95), 0.1);
}

TEST_F(SoundTest, PanZeroIsLeftOnly) {
    FSOUND_SAMPLE* s = FSOUND_Sample_Load(FSOUND_FREE, tone.c_str(), FSOUND_LOOP_NORMAL, 0);
    int ch = FSOUND_PlaySound(FSOUND_FREE, s);
    FSOUND_SetPan(ch, 0);
    play(0.6);
    Captured c = finish();
    double left = c.level(0, 0.2, 0.5), right = c.level(1, 0.2, 0.5);
    EXPECT_GT(left, 0.1);
    EXPECT_LT(right, 0.01 * left);
}

TEST_F(SoundTest, PanCentreIsBalanced) {
    FSOUND_SAMPLE* s = FSOUND_Sample_Load(FSOUND_FREE, tone.c_str(), FSOUND_LOOP_NORMAL, 0);
    int ch = FSOUND_PlaySound(FSOUND_FREE, s);
    FSOUND_SetPan(ch, 128);
    play(0.6);
    Captured c = finish();
    EXPECT_NEAR(c.level(0, 0.2, 0.5), c.level(1, 0.2, 0.5), 0.01);
}

TEST_F(SoundTest, DoublingFrequencyDoublesPitch) {
    FSOUND_SAMPLE* s = FSOUND_Sample_Load(FSOUND_FREE, tone.c_str(), FSOUND_LOOP_NORMAL, 0);
    int ch = FSOUND_PlaySound(FSOUND_FREE, s);
    FSOUND_SetFrequency(ch, 22050);
    play(0.5);
    FSOUND_SetFrequency(ch, 44100);
    play(0.5);
    Captured c = finish();
    double low = c.pitch(0, 0.1, 0.45), high = c.pitch(0, 0.6, 0.95);
    EXPECT_NEAR(low, 440, 15);
    EXPECT_NEAR(high / low, 2.0, 0.06);
}

TEST_F(SoundTest, PauseStopsOutputButNotTheChannel) {
    FSOUND_SAMPLE* s = FSOUND_Sample_Load(FSOUND_FREE, tone.c_str(), FSOUND_LOOP_NORMAL, 0);
    int ch = FSOUND_PlaySound(FSOUND_FREE, s);
    play(0.4);
    FSOUND_SetPaused(ch, 1);
    play(0.5);
    EXPECT_TRUE(FSOUND_IsPlaying(ch));
    FSOUND_SetPaused(ch, 0);
    play(0.4);
    Captured c = finish();
    EXPECT_GT(c.level(0, 0.1, 0.3), 0.1);
    EXPECT_LT(c.level(0, 0.55, 0.8), 0.001);
    EXPECT_GT(c.level(0, 1.0, 1.2), 0.1);
}

TEST_F(SoundTest, StopAllEndsEveryChannel) {
    FSOUND_SAMPLE* s = FSOUND_Sample_Load(FSOUND_FREE, tone.c_str(), FSOUND_LOOP_NORMAL, 0);
    int a = FSOUND_PlaySound(FSOUND_FREE, s);
    int b = FSOUND_PlaySound(FSOUND_FREE, s);
    ASSERT_NE(a, b);
    play(0.3);
    EXPECT_TRUE(FSOUND_StopSound(FSOUND_ALL));
    EXPECT_FALSE(FSOUND_IsPlaying(a));
    EXPECT_FALSE(FSOUND_IsPlaying(b));
    play(0.4);
    Captured c = finish();
    EXPECT_GT(c.level(0, 0.05, 0.25), 0.05);
    EXPECT_LT(c.level(0, 0.45, 0.65), 0.001);
}

TEST_F(SoundTest, MasterVolumeScalesEverything) {
    FSOUND_SAMPLE* s = FSOUND_Sample_Load(FSOUND_FREE, tone.c_str(), FSOUND_LOOP_NORMAL, 0);
    FSOUND_PlaySound(FSOUND_FREE, s);
    play(0.5);
    FSOUND_SetSFXMasterVolume(64);
    play(0.5);
    Captured c = finish();
    double ratio = c.level(0, 0.65, 0.95) / c.level(0, 0.1, 0.4);
    EXPECT_NEAR(ratio, 64.0 / 255.0, 0.03);
}

TEST_F(SoundTest, PositionAdvancesInSamples) {
    FSOUND_SAMPLE* s = FSOUND_Sample_Load(FSOUND_FREE, tone.c_str(), FSOUND_LOOP_OFF, 0);
    int ch = FSOUND_PlaySound(FSOUND_FREE, s);
    play(0.1);
    unsigned int first = FSOUND_GetCurrentPosition(ch);
    play(0.1);
    unsigned int second = FSOUND_GetCurrentPosition(ch);
    // Counted in the sample's own frames: the half-second tone holds 11025.
    EXPECT_GT(first, 0u);
    EXPECT_GT(second, first);
    EXPECT_LE(second, 11025u);
    finish();
}

TEST_F(SoundTest, Mp3Decodes) {
    // libsndfile writes the MP3 too, so this needs nothing beyond our own stack.
    std::string mp3 = scratch.path() + "/tone.mp3";
    SF_INFO info = {};
    info.samplerate = 44100;
    info.channels = 1;
    info.format = SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III;
    SNDFILE* f = sf_open(mp3.c_str(), SFM_WRITE, &info);
    ASSERT_NE(f, nullptr) << sf_strerror(nullptr);
    std::vector<short> pcm(44100);
    for (size_t i = 0; i < pcm.size(); i++) pcm[i] = (short)(12000 * std::sin(2 * M_PI * 330 * (double)i / 44100));
    sf_write_short(f, pcm.data(), (sf_count_t)pcm.size());
    sf_close(f);

    FSOUND_SAMPLE* s = FSOUND_Sample_Load(FSOUND_FREE, mp3.c_str(), FSOUND_LOOP_OFF, 0);
    ASSERT_NE(s, nullptr);
    FSOUND_PlaySound(FSOUND_FREE, s);
    play(0.6);
    Captured c = finish();
    EXPECT_NEAR(c.pitch(0, 0.15, 0.5), 330, 12);
}

TEST_F(SoundTest, MissingAndUndecodableFilesGiveNoSample) {
    EXPECT_EQ(FSOUND_Sample_Load(FSOUND_FREE, "no-such-file.wav", FSOUND_LOOP_OFF, 0), nullptr);
    std::string junk = scratch.path() + "/junk.wav";
    writeFile(junk, "RIFF this is not a wave file at all");
    EXPECT_EQ(FSOUND_Sample_Load(FSOUND_FREE, junk.c_str(), FSOUND_LOOP_OFF, 0), nullptr);
    finish();
}

TEST_F(SoundTest, BadHandlesAreHarmless) {
    EXPECT_EQ(FSOUND_PlaySound(FSOUND_FREE, nullptr), -1);
    auto* bogus = reinterpret_cast<FSOUND_SAMPLE*>(0x1234);
    EXPECT_EQ(FSOUND_PlaySound(FSOUND_FREE, bogus), -1);
    FSOUND_Sample_Free(bogus);
    for (int ch : {-7, -1, 32, 99999}) {
        EXPECT_FALSE(FSOUND_StopSound(ch));
        EXPECT_FALSE(FSOUND_IsPlaying(ch));
        EXPECT_EQ(FSOUND_GetCurrentPosition(ch), 0u);
        EXPECT_FALSE(FSOUND_SetVolume(ch, 100));
        EXPECT_FALSE(FSOUND_SetFrequency(ch, 100));
        EXPECT_FALSE(FSOUND_SetPan(ch, 100));
        EXPECT_FALSE(FSOUND_SetPaused(ch, 1));
    }
    finish();
}

// A handle names one playing of one sound: once its channel has been given
// another sound, the old handle neither sees, stops, mutes nor pauses it.
TEST_F(SoundTest, AnOldHandleNeverReachesTheChannelsNextSound) {
    FSOUND_SAMPLE* s = FSOUND_Sample_Load(FSOUND_FREE, tone.c_str(), FSOUND_LOOP_NORMAL, 0);
    ASSERT_NE(s, nullptr);
    int first = FSOUND_PlaySound(FSOUND_FREE, s);
    ASSERT_GE(first, 0);
    ASSERT_TRUE(FSOUND_StopSound(first));
    EXPECT_FALSE(FSOUND_IsPlaying(first));
    // The first free channel is the one just stopped.
    int second = FSOUND_PlaySound(FSOUND_FREE, s);
    ASSERT_GE(second, 0);
    EXPECT_NE(second, first);
    EXPECT_TRUE(FSOUND_IsPlaying(second));
    EXPECT_FALSE(FSOUND_IsPlaying(first));
    EXPECT_EQ(FSOUND_GetCurrentPosition(first), 0u);
    EXPECT_FALSE(FSOUND_StopSound(first));
    EXPECT_FALSE(FSOUND_SetVolume(first, 0));
    EXPECT_FALSE(FSOUND_SetPaused(first, 1));
    EXPECT_FALSE(FSOUND_SetFrequency(first, 100));
    EXPECT_FALSE(FSOUND_SetPan(first, 0));
    // A handle nobody has set reaches nothing either.
    EXPECT_FALSE(FSOUND_StopSound(-1));
    EXPECT_FALSE(FSOUND_SetVolume(-1, 0));
    play(0.6);
    EXPECT_TRUE(FSOUND_IsPlaying(second));
    EXPECT_GT(FSOUND_GetCurrentPosition(second), 0u);
    Captured c = finish();
    // Heard the whole time, centred and at full volume.
    EXPECT_GT(c.level(0, 0.1, 0.5), 0.05);
    EXPECT_GT(c.level(1, 0.1, 0.5), 0.05);
}

// A handle that still holds its sound can start another on its channel.
TEST_F(SoundTest, APlayingHandleCanBeGivenANewSound) {
    FSOUND_SAMPLE* s = FSOUND_Sample_Load(FSOUND_FREE, tone.c_str(), FSOUND_LOOP_NORMAL, 0);
    int first = FSOUND_PlaySound(FSOUND_FREE, s);
    ASSERT_GE(first, 0);
    int second = FSOUND_PlaySound(first, s);
    ASSERT_GE(second, 0);
    EXPECT_NE(second, first);
    EXPECT_EQ(second & 0xFFF, first & 0xFFF);  // the same channel
    EXPECT_FALSE(FSOUND_IsPlaying(first));
    EXPECT_TRUE(FSOUND_IsPlaying(second));
    EXPECT_EQ(FSOUND_PlaySound(first, s), -1);  // the old handle is gone for good
    finish();
}

// The mix's headroom, heard at the output's own sample type (float, where
// nothing clamps the sum on the way), as a sound server gets it.
class SoundMixTest : public ::testing::Test {
protected:
    SoundMixTest() : capture(std::string("float32")) {}
    void SetUp() override {
        loud = scratch.path() + "/loud.wav";
        writeTone(loud, 440, 0.5, 22050, 0.9);
        tone = scratch.path() + "/tone.wav";
        writeTone(tone, 440, 0.5);
        ASSERT_TRUE(FSOUND_Init(44100, 32, 0));
    }
    void play(double seconds) {
        heard += seconds;
        if (!capture.until(heard)) ADD_FAILURE() << "the mixer stopped at " << capture.seconds() << " s";
    }
    Captured finish() {
        FSOUND_Close();
        Captured c;
        c.frames = capture.read(&c.channels, &c.rate);
        return c;
    }
    // The largest sample of either side in [from, to) seconds.
    static double peak(const Captured& c, double from, double to) {
        double p = 0;
        for (size_t i = (size_t)(from * c.rate) * c.channels; i < (size_t)(to * c.rate) * c.channels && i < c.frames.size();
             i++)
            p = std::max(p, (double)std::fabs(c.frames[i]));
        return p;
    }
    static int atFullScale(const Captured& c) {
        int n = 0;
        for (float v : c.frames)
            if (std::fabs(v) >= 32767.0 / 32768.0) n++;
        return n;
    }
    ScratchDir scratch;
    SoundCapture capture;
    std::string loud, tone;
    double heard = 0;
};

TEST_F(SoundMixTest, SixLoudLoopsInStepNeverReachFullScale) {
    FSOUND_SAMPLE* s = FSOUND_Sample_Load(FSOUND_FREE, loud.c_str(), FSOUND_LOOP_NORMAL, 0);
    ASSERT_NE(s, nullptr);
    for (int pan : {128, 128, 128, 128, 0, 40}) {
        int ch = FSOUND_PlaySound(FSOUND_FREE, s);
        ASSERT_GE(ch, 0);
        FSOUND_SetPan(ch, pan);
    }
    play(1.0);
    Captured c = finish();
    ASSERT_EQ(c.channels, 2);
    // Left: four at the centre and two far over, 0.9 each: more than three
    // times full scale, all in step.
    EXPECT_EQ(atFullScale(c), 0);
    EXPECT_LT(peak(c, 0, 1.5), 0.96);
    // Turned down as far as it must be, and no further.
    EXPECT_GT(peak(c, 0.2, 0.9), 0.85);
}

TEST_F(SoundMixTest, WhatFitsUnderTheCeilingPlaysUntouched) {
    FSOUND_SAMPLE* s = FSOUND_Sample_Load(FSOUND_FREE, loud.c_str(), FSOUND_LOOP_NORMAL, 0);
    int ch = FSOUND_PlaySound(FSOUND_FREE, s);
    FSOUND_SetPan(ch, 0);
    play(0.6);
    Captured c = finish();
    // Hard left at full volume: the tone's own 0.9, a sine's root mean square.
    EXPECT_NEAR(peak(c, 0.1, 0.5), 0.9, 0.01);
    EXPECT_NEAR(c.level(0, 0.1, 0.5), 0.9 / std::sqrt(2.0), 0.01);
}

TEST_F(SoundMixTest, RoomComesBackWhenTheOthersStop) {
    FSOUND_SAMPLE* s = FSOUND_Sample_Load(FSOUND_FREE, loud.c_str(), FSOUND_LOOP_NORMAL, 0);
    int lone = FSOUND_PlaySound(FSOUND_FREE, s);
    FSOUND_SetPan(lone, 0);
    std::vector<int> others;
    for (int i = 0; i < 5; i++) others.push_back(FSOUND_PlaySound(FSOUND_FREE, s));
    play(0.5);
    for (int ch : others) FSOUND_StopSound(ch);
    play(0.6);
    Captured c = finish();
    EXPECT_EQ(atFullScale(c), 0);
    EXPECT_NEAR(peak(c, 0.7, 1.0), 0.9, 0.01);
}

TEST_F(SoundMixTest, AOneShotGivesItsRoomBackWhenItEnds) {
    FSOUND_SAMPLE* tune = FSOUND_Sample_Load(FSOUND_FREE, loud.c_str(), FSOUND_LOOP_NORMAL, 0);
    FSOUND_SAMPLE* click = FSOUND_Sample_Load(FSOUND_FREE, tone.c_str(), FSOUND_LOOP_OFF, 0);
    int ch = FSOUND_PlaySound(FSOUND_FREE, tune);
    FSOUND_SetPan(ch, 0);
    // The half-second tone on top of it needs room while it plays.
    FSOUND_SetPan(FSOUND_PlaySound(FSOUND_FREE, click), 0);
    play(0.8);
    // The game asks after its channels every frame.
    EXPECT_TRUE(FSOUND_IsPlaying(ch));
    play(0.4);
    Captured c = finish();
    EXPECT_EQ(atFullScale(c), 0);
    EXPECT_LT(peak(c, 0.1, 0.4), 0.96);
    EXPECT_NEAR(peak(c, 0.9, 1.15), 0.9, 0.01);
}

// A program that ends with its sound still open, as the game does: the
// device is closed on the way out, so OpenAL Soft has nothing to complain of
// on the terminal, and the capture is a whole wave file whose sizes are true.
TEST(SoundAtExit, AProgramEndingWithItsSoundOpenClosesItQuietly) {
    ScratchDir scratch;
    SoundCapture capture;
    const std::string tone = scratch.path() + "/tone.wav", errors = scratch.path() + "/stderr.txt";
    writeTone(tone, 440, 0.5);
    fflush(nullptr);
    pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        if (!freopen(errors.c_str(), "w", stderr)) _exit(3);
        if (!FSOUND_Init(44100, 32, 0)) _exit(4);
        FSOUND_PlaySound(FSOUND_FREE, FSOUND_Sample_Load(FSOUND_FREE, tone.c_str(), FSOUND_LOOP_NORMAL, 0));
        if (!capture.until(0.3)) _exit(5);
        exit(0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
    ASSERT_EQ(WEXITSTATUS(status), 0);
    const std::string said = readFile(errors);
    EXPECT_EQ(said.find("not closed"), std::string::npos) << said;
    const std::string wav = readFile(capture.file());
    ASSERT_GE(wav.size(), 44u);
    uint32_t riffsize;  // little-endian, as the machine
    memcpy(&riffsize, wav.data() + 4, sizeof riffsize);
    EXPECT_EQ(riffsize, wav.size() - 8);
    int channels = 0, rate = 0;
    std::vector<float> frames = capture.read(&channels, &rate);
    ASSERT_EQ(channels, 2);
    EXPECT_GT(rms(frames, channels, 0, rate, 0.05, 0.25), 0.05);
}

TEST(SoundWithoutInit, EveryCallFailsQuietly) {
    EXPECT_EQ(FSOUND_Sample_Load(FSOUND_FREE, "anything.wav", FSOUND_LOOP_OFF, 0), nullptr);
    EXPECT_EQ(FSOUND_PlaySound(FSOUND_FREE, nullptr), -1);
    EXPECT_FALSE(FSOUND_StopSound(FSOUND_ALL));
    EXPECT_FALSE(FSOUND_IsPlaying(0));
    EXPECT_FALSE(FSOUND_SetVolume(0, 1));
    EXPECT_FALSE(FSOUND_SetPaused(FSOUND_ALL, 1));
    FSOUND_SetSFXMasterVolume(10);
    FSOUND_Sample_Free(nullptr);
    FSOUND_Close();
}

TEST(SoundWithoutDevice, InitFailsWhenNoDeviceOpens) {
    // A backend list with nothing usable in it: no device can open.
    ScratchDir scratch;
    writeFile("alsoft.conf", "[general]\ndrivers=none-such\n");
    setenv("ALSOFT_CONF", (scratch.path() + "/alsoft.conf").c_str(), 1);
    EXPECT_FALSE(FSOUND_Init(44100, 32, 0));
    EXPECT_EQ(FSOUND_PlaySound(FSOUND_FREE, nullptr), -1);
}

}  // namespace

// Karts on the starting grid: places, colours, counters, skid-mark rings and
// the three sound channels that init() prepares.

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <unistd.h>

#include "kart_fixtures.h"

using namespace kartfix;

namespace {

class KartGrid : public KartTest {};

}  // namespace

TEST_F(KartGrid, StaggeredGridInTwoColumns) {
    loadTrack("oval", Circuit().file(100));
    startRace();
    for (unsigned int i = 0; i < GOKART_NKARTS; i++) {
        EXPECT_FLOAT_EQ(gokart[i].px, i % 2 ? 28.49f : 26.01f) << i;
        EXPECT_FLOAT_EQ(gokart[i].pz, 20.0f - 2.728f * (float)i) << i;
        EXPECT_EQ(gokart[i].ay, 0.0f);
        EXPECT_EQ(gokart[i].may, 0.0f);
        EXPECT_EQ(gokart[i].ID, i);
    }
    // Kart 6: 20 - 12 * 1.364, on the left column.
    EXPECT_NEAR(gokart[6].pz, 3.632f, 1e-5);
    EXPECT_FLOAT_EQ(gokart[6].px, 26.01f);
}

TEST_F(KartGrid, KartsBeyondTheRaceAreStillPlaced) {
    config.ngokarts = 1;
    loadTrack("oval", Circuit().file(100));
    for (unsigned int i = 1; i < GOKART_NKARTS; i++) {
        gokart[i].px = 99;
        gokart[i].pz = 99;
    }
    startRace();
    for (unsigned int i = 1; i < GOKART_NKARTS; i++) {
        EXPECT_NE(gokart[i].px, 99.0f);
        EXPECT_FLOAT_EQ(gokart[i].pz, 20.0f - 2.728f * (float)i);
    }
}

TEST_F(KartGrid, CheckpointStartsTwoBeforeTheEnd) {
    loadTrack("oval", Circuit().file(100));
    startRace();
    for (const sGokart& k : gokart) EXPECT_EQ(k.checkpoint, 98);
}

TEST_F(KartGrid, CheckpointStartIsEightBits) {
    loadTrack("long", Circuit().file(300));
    ASSERT_EQ(track.nLRpoints, 300u);
    startRace();
    EXPECT_EQ(gokart[0].checkpoint, 298 % 256);
}

TEST_F(KartGrid, PlayerColourAndOpponentsFromRand) {
    config.player1color = 5;
    loadTrack("oval", Circuit().file(100));
    gokartstaticdata.init();
    srand(1234);
    int expected[GOKART_NKARTS];
    for (unsigned int i = 1; i < GOKART_NKARTS; i++) expected[i] = rand() % 24;
    srand(1234);
    for (unsigned char i = 0; i < GOKART_NKARTS; i++) gokart[i].init(i);
    EXPECT_EQ(gokart[0].R, 196);
    EXPECT_EQ(gokart[0].G, 255);
    EXPECT_EQ(gokart[0].B, 0);
    for (unsigned int i = 1; i < GOKART_NKARTS; i++) {
        EXPECT_EQ(gokart[i].R, gokartstaticdata.palette[expected[i]][0]) << i;
        EXPECT_EQ(gokart[i].G, gokartstaticdata.palette[expected[i]][1]) << i;
        EXPECT_EQ(gokart[i].B, gokartstaticdata.palette[expected[i]][2]) << i;
    }
}

TEST_F(KartGrid, LapTimeReadsMinusZeroBeforeTheFirstLap) {
    loadTrack("oval", Circuit().file(100));
    startRace();
    char text[32];
    snprintf(text, sizeof text, "%.2f", gokart[0].currentlaptime);
    EXPECT_STREQ(text, "-0.00");
    EXPECT_EQ(gokart[0].currentlaptime, -0.00123f);
    EXPECT_EQ(gokart[0].lap, 0);
    EXPECT_FALSE(gokart[0].thislapcounted);
    EXPECT_EQ(gokart[0].lapstart, CLOCK0);
    EXPECT_EQ(gokart[0].last_aimove, CLOCK0);
    for (float t : gokart[0].laptime) EXPECT_EQ(t, 0.0f);
    // Rolling towards the line changes nothing until the lap starts (the
    // start is given at once, so that the kart does roll).
    runOutStartClock();
    gokart[0].kUP = true;
    for (int i = 0; i < 30; i++) frame();
    ASSERT_EQ(gokart[0].lap, 0);
    snprintf(text, sizeof text, "%.2f", gokart[0].currentlaptime);
    EXPECT_STREQ(text, "-0.00");
}

TEST_F(KartGrid, ResetClearsStateButKeepsTheSlide) {
    loadTrack("oval", Circuit().file(100));
    startRace();
    sGokart& k = gokart[3];
    k.slidediff = 33;
    k.ups = 12;
    k.ay = 40;
    k.sw_ay = 10;
    k.pedal_up = 45;
    k.head_ax = 3;
    k.lap = 7;
    k.laptime[4] = 21.5f;
    k.kUP = true;
    k.placement = 0.75f;
    k.lfSlide[998].a[1] = 0.1f;
    k.rrSlide[5].x[3] = 4;
    k.CURRENTslide = 17;
    k.newSlide = false;
    k.DELAYslide = 0.5f;
    bvclock_override = CLOCK0 + 5000000;
    k.init(3);
    EXPECT_EQ(k.slidediff, 33.0f);
    EXPECT_EQ(k.ups, 0.0f);
    EXPECT_EQ(k.ay, 0.0f);
    EXPECT_EQ(k.sw_ay, 0.0f);
    EXPECT_EQ(k.pedal_up, 0.0f);
    EXPECT_EQ(k.head_ax, 0.0f);
    EXPECT_EQ(k.lap, 0);
    EXPECT_EQ(k.laptime[4], 0.0f);
    EXPECT_FALSE(k.kUP);
    EXPECT_EQ(k.placement, 0.5f);
    EXPECT_EQ(k.placementdelay, 0.0f);
    EXPECT_TRUE(k.checkcol);
    EXPECT_EQ(k.lfSlide[998].a[1], 0.0f);
    EXPECT_EQ(k.rrSlide[5].x[3], 0.0f);
    EXPECT_EQ(k.CURRENTslide, 0u);
    EXPECT_TRUE(k.newSlide);
    EXPECT_EQ(k.DELAYslide, 0.0f);
    EXPECT_EQ(k.lapstart, CLOCK0 + 5000000);
}

TEST_F(KartGrid, SkillAndDriverFromTheSettings) {
    config.aiskill = 2;
    config.nhumanplayers = 1;
    loadTrack("oval", Circuit().file(100));
    startRace();
    for (const sGokart& k : gokart) EXPECT_EQ(k.skill, 2u);
    // init() is stricter than move(): kart 1 is not yet the computer's.
    EXPECT_FALSE(gokart[0].aidriver);
    EXPECT_FALSE(gokart[1].aidriver);
    EXPECT_TRUE(gokart[2].aidriver);
    gokart[1].move();
    EXPECT_TRUE(gokart[1].aidriver);
}

TEST_F(KartGrid, SoundChannelsStartSilentAndAreReused) {
    for (const char* s : {"Collission", "Engine", "Tire"})
        bvtest::writeTone(std::string("Data/Sounds/") + s + ".wav", 440, 0.2);
    bvtest::SoundCapture capture;
    ASSERT_TRUE(FSOUND_Init(44100, 32, 0));
    loadTrack("oval", Circuit().file(100));
    startRace();
    ASSERT_TRUE(capture.until(capture.seconds() + 0.4));
    int engines[GOKART_NKARTS], tyres[GOKART_NKARTS];
    for (unsigned int i = 0; i < GOKART_NKARTS; i++) {
        EXPECT_FALSE(FSOUND_IsPlaying(gokart[i].CHANNEL_collission)) << i;
        EXPECT_TRUE(FSOUND_IsPlaying(gokart[i].CHANNEL_engine)) << i;
        EXPECT_TRUE(FSOUND_IsPlaying(gokart[i].CHANNEL_tire)) << i;
        engines[i] = gokart[i].CHANNEL_engine;
        tyres[i] = gokart[i].CHANNEL_tire;
        for (unsigned int j = 0; j < i; j++) {
            EXPECT_NE(engines[i], engines[j]);
            EXPECT_NE(tyres[i], tyres[j]);
        }
    }
    // A restarted race keeps the loops that still play.
    for (unsigned char i = 0; i < GOKART_NKARTS; i++) gokart[i].init(i);
    for (unsigned int i = 0; i < GOKART_NKARTS; i++) {
        EXPECT_EQ(gokart[i].CHANNEL_engine, engines[i]);
        EXPECT_EQ(gokart[i].CHANNEL_tire, tyres[i]);
    }
    ASSERT_TRUE(capture.until(std::max(0.6, capture.seconds() + 0.3)));
    FSOUND_Close();
    std::vector<float> frames;
    int channels = 0, rate = 0;
    frames = capture.read(&channels, &rate);
    ASSERT_GT(rate, 0);
    // Fourteen loops play, all of them at volume 0.
    EXPECT_LT(bvtest::rms(frames, channels, 0, rate, 0.05, 0.6), 0.001);
    EXPECT_LT(bvtest::rms(frames, channels, 1, rate, 0.05, 0.6), 0.001);
}

// Every race starts with all sounds stopped and every kart record reset; the
// records still hold the handles of the grid before, whose channels the
// karts reset before them have just been given again. The game's start-up
// tune holds the first channel when the first grid is laid, so each kart's
// handles then sit one channel along from where the race gives them out.
TEST_F(KartGrid, ARaceStartedAfterAllSoundsStoppedGivesEveryKartItsOwnLoops) {
    for (const char* s : {"Collission", "Engine", "Tire"})
        bvtest::writeTone(std::string("Data/Sounds/") + s + ".wav", 440, 0.2);
    bvtest::writeTone("Data/Sounds/tune.wav", 330, 0.5);
    bvtest::SoundCapture capture;
    ASSERT_TRUE(FSOUND_Init(44100, 32, 0));
    FSOUND_SAMPLE* tune = FSOUND_Sample_Load(FSOUND_FREE, "Data/Sounds/tune.wav", FSOUND_LOOP_NORMAL, 0);
    ASSERT_GE(FSOUND_PlaySound(FSOUND_FREE, tune), 0);
    loadTrack("oval", Circuit().file(100));
    startRace();
    for (int race = 0; race < 3; race++) {
        FSOUND_StopSound(FSOUND_ALL);
        for (unsigned char i = 0; i < GOKART_NKARTS; i++) gokart[i].init(i);
        for (unsigned int i = 0; i < GOKART_NKARTS; i++) {
            EXPECT_FALSE(FSOUND_IsPlaying(gokart[i].CHANNEL_collission)) << "race " << race << ", kart " << i;
            EXPECT_TRUE(FSOUND_IsPlaying(gokart[i].CHANNEL_engine)) << "race " << race << ", kart " << i;
            EXPECT_TRUE(FSOUND_IsPlaying(gokart[i].CHANNEL_tire)) << "race " << race << ", kart " << i;
            for (unsigned int j = 0; j < i; j++) {
                EXPECT_NE(gokart[i].CHANNEL_engine, gokart[j].CHANNEL_engine);
                EXPECT_NE(gokart[i].CHANNEL_tire, gokart[j].CHANNEL_tire);
            }
        }
    }
    FSOUND_Close();
}

TEST_F(KartGrid, FreeDoesNothing) {
    loadTrack("oval", Circuit().file(100));
    startRace();
    gokart[2].ups = 3;
    gokart[2].free();
    EXPECT_EQ(gokart[2].ups, 3.0f);
    EXPECT_FLOAT_EQ(gokart[2].px, 26.01f);
}

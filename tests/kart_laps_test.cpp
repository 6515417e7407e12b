// Checkpoints and laps: the sensor point, the nearest barrier point and its
// tie rules, the lap latch, lap times from the clock, the 8-bit counters and
// the lateral line of human karts.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>

#include "kart_fixtures.h"

using namespace kartfix;

namespace {

class KartLaps : public KartTest {
protected:
    // Puts kart k with its sensor (nose) on the middle of pair i, at rest, facing -z.
    void atPair(sGokart& k, unsigned int i) {
        k.ups = 0;
        k.ay = k.may = 0;
        k.px = (track.Lpoint[i].x + track.Rpoint[i].x) / 2;
        k.pz = (track.Lpoint[i].z + track.Rpoint[i].z) / 2 + gokartstaticdata.chasisfront;
    }
    // One frame of kart 0 alone, standing where it was put.
    void step(sGokart& k) {
        tick();
        k.move();
        k.ups = 0;
    }
};

int file(float world) {
    return (int)std::lround(world / 0.125f) + 256;
}

}  // namespace

TEST_F(KartLaps, SensorIsTheNoseOneFrameAhead) {
    loadTrack("oval", Circuit().file(100));
    startRace();
    sGokart& k = gokart[0];
    k.px = 1;
    k.pz = 2;
    k.ay = 90;
    k.ups = 6;  // 0.1 per frame
    k.getcheckpoint();
    EXPECT_NEAR(k.sensor_x, 1 - 0.1f - 1.364f, 1e-5);
    EXPECT_NEAR(k.sensor_z, 2.0f, 1e-5);
    k.ay = 0;
    k.getcheckpoint();
    EXPECT_NEAR(k.sensor_x, 1.0f, 1e-5);
    EXPECT_NEAR(k.sensor_z, 2 - 0.1f - 1.364f, 1e-5);
}

TEST_F(KartLaps, NearestPointTiesKeepTheEarlierCandidate) {
    // Sensor at the world origin (file 256 256); right point 2 and left
    // point 5 both exactly 2 units away, everything else farther.
    loadTrack("ties", pairsFile({{100, 100, 140, 100},
                                 {100, 160, 140, 160},
                                 {300, 300, 256, 272},
                                 {400, 400, 440, 400},
                                 {400, 460, 440, 460},
                                 {272, 256, 480, 480}}));
    startRace();
    sGokart& k = gokart[0];
    k.px = 0;
    k.pz = 1.364f;
    k.ay = 0;
    k.ups = 0;
    EXPECT_EQ(k.getcheckpoint(), 2u);
    // Nudged towards left point 5, it wins.
    k.px = 0.01f;
    EXPECT_EQ(k.getcheckpoint(), 5u);
}

TEST_F(KartLaps, LeftBeforeRightAtTheSameIndex) {
    loadTrack("ties", pairsFile({{100, 100, 140, 100}, {240, 256, 272, 256}, {400, 400, 440, 400}}));
    startRace();
    sGokart& k = gokart[0];
    k.px = 0;
    k.pz = 1.364f;
    k.ay = 0;
    EXPECT_EQ(k.getcheckpoint(), 1u);
    // More than 99 units from every point: 0.
    k.px = 200;
    EXPECT_EQ(k.getcheckpoint(), 0u);
}

TEST_F(KartLaps, CrossingTheLineStartsLapOneAndItsTimer) {
    loadTrack("oval", Circuit().file(100));
    startRace();
    sGokart& k = gokart[0];
    k.kUP = true;
    long counted = -1;
    for (int i = 0; i < 600 && counted < 0; i++) {
        frame();
        if (k.lap == 1) counted = frames;
        if (counted < 0) {
            EXPECT_EQ(k.lap, 0);
            EXPECT_EQ(k.currentlaptime, -0.00123f);
        }
    }
    ASSERT_GT(counted, 0);
    EXPECT_EQ(k.checkpoint, 0);
    EXPECT_TRUE(k.thislapcounted);
    EXPECT_EQ(k.lapstart, CLOCK0);  // still the grid's
    frame();
    // The frame after the count closes the latch and starts the timer.
    EXPECT_EQ(k.lap, 1);
    EXPECT_FALSE(k.thislapcounted);
    EXPECT_EQ(k.lapstart, bvclock());
    for (float t : k.laptime) EXPECT_EQ(t, 0.0f);
    frame();
    EXPECT_NEAR(k.currentlaptime, 1.0f / 60, 1e-6);
    frame();
    EXPECT_NEAR(k.currentlaptime, 2.0f / 60, 1e-6);
}

TEST_F(KartLaps, LapTimesComeFromTheClock) {
    config.nhumanplayers = 0;
    loadTrack("oval", Circuit().file(100));
    startRace();
    sGokart& k = gokart[0];
    long started[8] = {0};
    int lap = 0;
    while (frames < 60 * 60 && lap < 4) {
        frame();
        ASSERT_LE(k.lap, lap + 1);
        if (k.lap != lap) {
            lap = k.lap;
            started[lap] = frames + 1;  // the timer starts on the next frame
        }
    }
    ASSERT_GE(lap, 4);
    frame();
    // The first lap, from the grid to the line, is never timed.
    EXPECT_EQ(k.laptime[0], 0.0f);
    for (int n = 1; n <= 3; n++) {
        EXPECT_NEAR(k.laptime[n], (started[n + 1] - started[n]) / 60.0f, 1e-4) << n;
        EXPECT_GT(k.laptime[n], 5.0f);
    }
    for (int n = 4; n < 99; n++) EXPECT_EQ(k.laptime[n], 0.0f);
}

TEST_F(KartLaps, BackwardsOverTheLineCountsNoLap) {
    loadTrack("oval", Circuit().file(100));
    startRace();
    sGokart& k = gokart[0];
    // Past the line on lap 1, turned round, driving back over it.
    k.px = 27.25f;
    k.pz = -4;
    k.ay = k.may = 180;
    k.lap = 1;
    k.checkpoint = (unsigned char)k.getcheckpoint();
    ASSERT_GE(k.checkpoint, 2);
    unsigned char start = k.checkpoint;
    k.kUP = true;
    for (int i = 0; i < 180; i++) {
        drive(k);
        EXPECT_EQ(k.lap, 1);
        EXPECT_EQ(k.checkpoint, start);
    }
    ASSERT_GT(k.pz, 8.0f);  // well behind the line now
    // Turned round again and driven forwards over the line it is counted.
    k.ay = k.may = 0;
    k.checkpoint = (unsigned char)k.getcheckpoint();
    for (int i = 0; i < 120 && k.lap == 1; i++) drive(k);
    EXPECT_EQ(k.lap, 2);
}

TEST_F(KartLaps, TwoPointJumpStallsTheCount) {
    loadTrack("oval", Circuit().file(100));
    startRace();
    sGokart& k = gokart[0];
    k.checkpoint = 3;
    atPair(k, 5);
    step(k);
    EXPECT_EQ(k.checkpoint, 3);
    atPair(k, 6);
    step(k);
    EXPECT_EQ(k.checkpoint, 3);
    atPair(k, 4);
    step(k);
    EXPECT_EQ(k.checkpoint, 4);
    atPair(k, 5);
    step(k);
    EXPECT_EQ(k.checkpoint, 5);
}

TEST_F(KartLaps, LapNinetyNineIsStoredAndLapHundredIsNot) {
    loadTrack("oval", Circuit().file(100));
    startRace();
    sGokart& k = gokart[0];
    k.laptime[98] = 7;
    k.lap = 99;
    k.checkpoint = 99;
    k.lapstart = CLOCK0;
    atPair(k, 0);
    step(k);
    EXPECT_EQ(k.lap, 100);
    step(k);
    EXPECT_FALSE(k.thislapcounted);
    EXPECT_EQ(k.laptime[98], 7.0f);
    for (int n = 0; n < 98; n++) EXPECT_EQ(k.laptime[n], 0.0f);

    k.lap = 98;
    k.checkpoint = 99;
    atPair(k, 0);
    step(k);
    EXPECT_EQ(k.lap, 99);
    time_t begun = k.lapstart;
    step(k);
    EXPECT_FLOAT_EQ(k.laptime[98], (float)(bvclock() - begun) / 1000000);
    EXPECT_GT(k.laptime[98], 0.0f);
}

TEST_F(KartLaps, LapCounterWrapsAfter255) {
    loadTrack("oval", Circuit().file(100));
    startRace();
    sGokart& k = gokart[0];
    k.lap = 255;
    k.checkpoint = 99;
    atPair(k, 0);
    step(k);
    EXPECT_EQ(k.lap, 0);
    EXPECT_TRUE(k.thislapcounted);
}

TEST_F(KartLaps, MoreThan256PointsNeverCountALap) {
    config.nhumanplayers = 0;
    loadTrack("long", Circuit().file(300));
    startRace();
    unsigned int highest = 0;
    for (int i = 0; i < 60 * 60; i++) {
        frame();
        EXPECT_EQ(gokart[0].lap, 0);
        unsigned int c = gokart[0].getcheckpoint();
        if (c > highest) highest = c;
    }
    // The kart did go round: it passed every part of the track.
    EXPECT_GE(highest, 290u);
    EXPECT_GT(gokart[0].ups, 5.0f);
}

TEST_F(KartLaps, TwoHundredFiftyPointsStillCount) {
    config.nhumanplayers = 0;
    loadTrack("long", Circuit().file(250));
    startRace();
    for (int i = 0; i < 60 * 60; i++) frame();
    EXPECT_GE(gokart[0].lap, 2);
}

TEST_F(KartLaps, HumanKartsTakeTheLineTheyDriveOn) {
    loadTrack("oval", Circuit().file(100));
    startRace();
    sGokart& k = gokart[0];
    k.placement = 0.5f;
    k.px = 25;
    k.pz = -5;
    drive(k);
    EXPECT_EQ(k.placement, 0.25f);
    k.px = 29.5f;
    drive(k);
    EXPECT_EQ(k.placement, 0.75f);
    // A computer kart keeps its own.
    config.nhumanplayers = 0;
    k.placement = 0.6f;
    k.px = 25;
    drive(k);
    EXPECT_EQ(k.placement, 0.6f);
}

TEST_F(KartLaps, EqualDistancesGiveTheMiddleLine) {
    // A symmetric straight: left x = -2, right x = +2 at every point.
    std::vector<std::array<int, 4>> pairs;
    for (int i = 0; i < 16; i++) {
        int z = 400 - i * 16;
        pairs.push_back({file(-2), z, file(2), z});
    }
    loadTrack("straight", pairsFile(pairs));
    startRace();
    sGokart& k = gokart[0];
    k.px = 0;
    k.pz = 0;
    k.placement = 0.25f;
    unsigned int c = k.getcheckpoint();
    unsigned int n = (c + 1) % track.nLRpoints;
    // The separation of equal coordinates moved the points symmetrically or
    // not at all; only then are the sums equal.
    float dL = std::hypot(track.Lpoint[c].x, track.Lpoint[c].z) + std::hypot(track.Lpoint[n].x, track.Lpoint[n].z);
    float dR = std::hypot(track.Rpoint[c].x, track.Rpoint[c].z) + std::hypot(track.Rpoint[n].x, track.Rpoint[n].z);
    drive(k);
    if (dL == dR)
        EXPECT_EQ(k.placement, 0.5f);
    else
        EXPECT_EQ(k.placement, dR > dL ? 0.25f : 0.75f);
}

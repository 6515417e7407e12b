// The computer driver: how often it decides, where it looks, which line it
// takes, its lapses, the wrap of its wheel and its throttle.

#include <gtest/gtest.h>

#include <cmath>

#include "kart_fixtures.h"

using namespace kartfix;

namespace {

class KartDriver : public KartTest {
protected:
    void SetUp() override {
        KartTest::SetUp();
        config.nhumanplayers = 0;
        config.ngokarts = 1;
        config.aiskill = 0;
        config.aiawakeness[0] = 0;
        config.aistupidity[0] = 0;
        config.aiguts[0] = 100;
        loadTrack("oval", Circuit().file(100));
        startRace();
    }
    // One decision of kart k alone, on the next frame's clock.
    void decide(sGokart& k) {
        tick();
        k.think();
    }
    // The heading from kart k to the aim point of track pair t.
    float headingTo(const sGokart& k, unsigned int t) const {
        float x = track.Lpoint[t].x + (track.Rpoint[t].x - track.Lpoint[t].x) * k.placement;
        float z = track.Lpoint[t].z + (track.Rpoint[t].z - track.Lpoint[t].z) * k.placement;
        float h = 57.29577951f * std::atan((k.px - x) / (k.pz - z));
        if (z > k.pz) h += 180;
        return h;
    }
    sGokart& k = gokart[0];
};

}  // namespace

TEST_F(KartDriver, AwakenessZeroDecidesEveryFrame) {
    for (int i = 0; i < 120; i++) {
        k.kUP = false;
        decide(k);
        EXPECT_EQ(k.last_aimove, bvclock());
        EXPECT_TRUE(k.kUP);
    }
}

TEST_F(KartDriver, AwakenessOneSecondHoldsTheThrottle) {
    config.aiawakeness[0] = 1000000;
    config.aiguts[0] = 60;
    int decisions = 0;
    float top = 0;
    for (int i = 0; i < 60 * 6; i++) {
        tick();
        time_t before = k.last_aimove;
        bool throttle = k.kUP;
        k.think();
        if (k.last_aimove != before) {
            decisions++;
            EXPECT_EQ(frames % 60, 0) << frames;
        } else {
            EXPECT_EQ(k.kUP, throttle);
        }
        k.move();
        if (k.ups > top) top = k.ups;
    }
    EXPECT_EQ(decisions, 6);
    // Held for a whole second, the throttle carries it well past 15.
    EXPECT_GT(top, 15.5f);
}

TEST_F(KartDriver, GutsSixtyStopsAcceleratingAtFifteen) {
    config.aiguts[0] = 60;
    float top = 0;
    bool coasted = false, pressedAgain = false;
    float previous = 0;
    for (int i = 0; i < 60 * 20; i++) {
        frame();
        if (k.ups > top) top = k.ups;
        if (top >= 15 && !k.kUP) {
            EXPECT_GE(previous, 15.0f);
            if (k.ups < previous) coasted = true;
        }
        if (coasted && k.kUP) pressedAgain = true;
        previous = k.ups;
    }
    EXPECT_GE(top, 15.0f);
    EXPECT_LE(top, 15.0f + 20.0f / 60 / (15 / 2.5f + 1));
    EXPECT_TRUE(coasted);
    EXPECT_TRUE(pressedAgain);
}

TEST_F(KartDriver, ThrottleRule) {
    k.kDOWN = k.kLEFT = k.kRIGHT = true;
    k.ups = -0.2f;
    decide(k);
    EXPECT_FALSE(k.kUP);
    EXPECT_FALSE(k.kDOWN);
    EXPECT_FALSE(k.kLEFT);
    EXPECT_FALSE(k.kRIGHT);
    k.ups = -0.05f;
    decide(k);
    EXPECT_TRUE(k.kUP);
    config.aiguts[0] = 60;
    k.ups = 15;
    decide(k);
    EXPECT_FALSE(k.kUP);
    k.ups = 14.99f;
    decide(k);
    EXPECT_TRUE(k.kUP);
}

TEST_F(KartDriver, StupidityNinetyNineNeverSteers) {
    config.aistupidity[0] = 99;
    k.ay = 30;  // the road ahead is well off the nose
    for (int i = 0; i < 1000; i++) {
        decide(k);
        ASSERT_EQ(k.sw_ay, 0.0f) << i;
    }
    config.aistupidity[0] = 98;
    bool steered = false;
    for (int i = 0; i < 1000 && !steered; i++) {
        decide(k);
        steered = k.sw_ay != 0;
    }
    EXPECT_TRUE(steered);
}

TEST_F(KartDriver, SteersTowardsTheAimPoint) {
    k.ay = 30;
    k.ups = 0;
    unsigned int t = (k.getcheckpoint() + 1) % track.nLRpoints;
    float h = headingTo(k, t);
    decide(k);
    EXPECT_NEAR(k.sw_ay, (h - 30) * 25 / 60, 1e-3);
    EXPECT_LT(k.sw_ay, -5.0f);  // back to the right, towards the road
}

TEST_F(KartDriver, LooksFurtherAheadTheFasterItGoes) {
    const float speeds[4] = {10, 16, 21, 26};
    for (int extra = 0; extra < 4; extra++) {
        k.px = 26.01f;
        k.pz = 12;
        k.ay = 0;
        k.sw_ay = 0;
        k.ups = speeds[extra];
        unsigned int c = k.getcheckpoint();
        unsigned int t = (c + 1 + extra) % track.nLRpoints;
        float h = headingTo(k, t), nearer = headingTo(k, (t + track.nLRpoints - 1) % track.nLRpoints);
        ASSERT_GT(std::fabs(h - nearer) * 25 / 60, 0.05f);
        decide(k);
        EXPECT_NEAR(k.sw_ay, h * 25 / 60, 1e-3) << speeds[extra];
    }
}

TEST_F(KartDriver, AimHeadingTakesTheShortWayRound) {
    // On the bottom straight, driving +x, with the aim point up and ahead:
    // atan gives a heading between 180 and 270 and the kart's heading is
    // below -90, so the raw difference is more than 180.
    k.px = 0;
    k.pz = 22;
    k.ay = -130;
    k.ups = 0;
    unsigned int t = (k.getcheckpoint() + 1) % track.nLRpoints;
    float h = headingTo(k, t);
    ASSERT_GT(h - k.ay, 180.0f);
    decide(k);
    EXPECT_NEAR(k.sw_ay, ((h - 360) - -130) * 25 / 60, 1e-3);
    EXPECT_LT(std::fabs(k.sw_ay), 180 * 25 / 60.0f);
}

TEST_F(KartDriver, WheelWrapsByHalfATurn) {
    config.aistupidity[0] = 99;
    k.sw_ay = 190;
    decide(k);
    EXPECT_FLOAT_EQ(k.sw_ay, 10.0f);
    k.sw_ay = -185;
    decide(k);
    EXPECT_FLOAT_EQ(k.sw_ay, -5.0f);
    k.sw_ay = 170;
    decide(k);
    EXPECT_FLOAT_EQ(k.sw_ay, 170.0f);
}

TEST_F(KartDriver, AloneItSettlesOnTheMiddleLine) {
    decide(k);
    EXPECT_EQ(k.placement, 0.5f);
    k.placement = 0.75f;
    for (int i = 0; i < 200; i++) decide(k);
    EXPECT_LE(std::fabs(k.placement - 0.5f), 0.5f / 60 + 1e-6f);
    k.placement = 0.2f;
    for (int i = 0; i < 200; i++) decide(k);
    EXPECT_LE(std::fabs(k.placement - 0.5f), 0.5f / 60 + 1e-6f);
    // Driving: still the middle after a lap alone.
    k.placement = 0.5f;
    for (int i = 0; i < 60 * 20; i++) frame();
    EXPECT_EQ(k.placement, 0.5f);
}

TEST_F(KartDriver, PassesAKartThatKeepsLeftOnTheRight) {
    config.ngokarts = 2;
    k.checkpoint = 20;
    gokart[1].checkpoint = 23;
    gokart[1].placement = 0.25f;
    for (int i = 0; i < 100; i++) decide(k);
    EXPECT_GE(k.placement, 0.7f);
    EXPECT_LT(k.placement, 0.7f + 0.5f / 60);
    gokart[1].placement = 0.75f;
    for (int i = 0; i < 100; i++) decide(k);
    EXPECT_LE(k.placement, 0.3f);
    EXPECT_GT(k.placement, 0.3f - 0.5f / 60);
}

TEST_F(KartDriver, OnlyKartsFromOneBehindToNineAheadCount) {
    config.ngokarts = 2;
    k.checkpoint = 20;
    k.placement = 0.5f;
    gokart[1].placement = 0.25f;
    gokart[1].checkpoint = 30;  // ten ahead: out of sight
    decide(k);
    EXPECT_EQ(k.placement, 0.5f);
    gokart[1].checkpoint = 18;  // two behind
    decide(k);
    EXPECT_EQ(k.placement, 0.5f);
    gokart[1].checkpoint = 19;  // one behind
    decide(k);
    EXPECT_FLOAT_EQ(k.placement, 0.5f + 0.5f / 60);
    k.placement = 0.5f;
    gokart[1].checkpoint = 29;  // nine ahead
    decide(k);
    EXPECT_FLOAT_EQ(k.placement, 0.5f + 0.5f / 60);
}

TEST_F(KartDriver, TheNearestKartAheadWinsAndTheFirstOnATie) {
    config.ngokarts = 3;
    k.checkpoint = 20;
    k.placement = 0.5f;
    gokart[1].checkpoint = 25;
    gokart[1].placement = 0.75f;
    gokart[2].checkpoint = 22;
    gokart[2].placement = 0.25f;
    decide(k);
    EXPECT_FLOAT_EQ(k.placement, 0.5f + 0.5f / 60);  // kart 2 is nearer: keeps left
    k.placement = 0.5f;
    gokart[1].checkpoint = 22;
    decide(k);
    EXPECT_FLOAT_EQ(k.placement, 0.5f - 0.5f / 60);  // a tie: kart 1 found first, keeps right
}

TEST_F(KartDriver, PlacementDelayHoldsTheLine) {
    config.ngokarts = 2;
    k.checkpoint = 20;
    gokart[1].checkpoint = 22;
    gokart[1].placement = 0.25f;
    k.placementdelay = 0.01f;
    decide(k);
    EXPECT_EQ(k.placement, 0.5f);
    EXPECT_FLOAT_EQ(k.placementdelay, 0.01f - 0.1f / 60);
    while (k.placementdelay > 0) decide(k);
    decide(k);
    EXPECT_EQ(k.placementdelay, 0.0f);
    EXPECT_GT(k.placement, 0.5f);
}

TEST_F(KartDriver, WaitsWhileNotAwake) {
    config.aiawakeness[0] = 1000000;
    k.kUP = false;
    k.kLEFT = true;
    decide(k);
    EXPECT_FALSE(k.kUP);
    EXPECT_TRUE(k.kLEFT);
    EXPECT_EQ(k.last_aimove, CLOCK0);
}

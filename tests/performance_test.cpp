// The frame-rate meter that every motion in the game is divided by.

#include <gtest/gtest.h>

#include <GL/gl.h>
#include <SDL/SDL.h>

#include <cmath>

#include "assets/font.h"
#include "shell/bvconfig.h"
#include "shell/performance.h"
#include "support/bvtest_fixtures.h"

using namespace bvtest;

namespace {

class MeterTest : public ::testing::Test {
protected:
    void SetUp() override {
        config.maxfps = 200;
        performance.fps = 999;
        performance.pps = 1;
        performance.polygons = 0;
        performance.softfps = 1;
        performance.softpps = 1;
        performance.savenext = true;
        performance.tick = 1000;
    }
};

TEST_F(MeterTest, TwoSecondFrameGivesOne) {
    performance.refresh(3000);
    EXPECT_FLOAT_EQ(performance.fps, 1.0f);
    EXPECT_EQ(performance.tick, 3000u);
}

TEST_F(MeterTest, TenMillisecondsGiveAHundred) {
    performance.refresh(1010);
    EXPECT_FLOAT_EQ(performance.fps, 100.0f);
}

TEST_F(MeterTest, SoftRateIsCappedAtMaxfps) {
    unsigned int now = 1000;
    for (int i = 0; i < 2000; i++) {
        now += 2;
        performance.refresh(now);
    }
    EXPECT_FLOAT_EQ(performance.fps, 500.0f);
    EXPECT_FLOAT_EQ(performance.softfps, 200.0f);
}

TEST_F(MeterTest, SoftRateFollowsWithItsFilter) {
    performance.softfps = 50;
    performance.refresh(1010);  // 100 fps
    EXPECT_FLOAT_EQ(performance.softfps, 50 + (100 - 50) * 10 / 100.0f);
}

TEST_F(MeterTest, DiscardnextKeepsThePreviousRateOnce) {
    performance.refresh(1010);
    performance.discardnext();
    EXPECT_FALSE(performance.savenext);
    performance.refresh(1510);  // a 500 ms screenshot frame
    EXPECT_FLOAT_EQ(performance.fps, 100.0f);
    EXPECT_EQ(performance.tick, 1510u);
    EXPECT_TRUE(performance.savenext);
    performance.refresh(1530);
    EXPECT_FLOAT_EQ(performance.fps, 50.0f);
}

TEST_F(MeterTest, ZeroMillisecondFrameStaysPositiveAndFinite) {
    performance.refresh(1000);
    EXPECT_TRUE(std::isfinite(performance.fps));
    EXPECT_GT(performance.fps, 0.0f);
    EXPECT_FLOAT_EQ(performance.fps, 2000.0f);
    EXPECT_TRUE(std::isfinite(performance.softfps));
}

TEST_F(MeterTest, PolygonsPerSecondAndReset) {
    performance.polygons = 300;
    performance.refresh(1010);
    EXPECT_FLOAT_EQ(performance.pps, 30000.0f);
    EXPECT_EQ(performance.polygons, 0u);
}

TEST_F(MeterTest, InitStartsAt999) {
    performance.init();
    EXPECT_FLOAT_EQ(performance.fps, 999.0f);
    EXPECT_FLOAT_EQ(performance.softfps, 1.0f);
    EXPECT_TRUE(performance.savenext);
}

TEST_F(MeterTest, LimiterHookLimitsNothing) {
    performance.refresh(1001);
    performance.dropfps(30);
    performance.refresh(1002);
    EXPECT_FLOAT_EQ(performance.fps, 1000.0f);
}

TEST(WallClock, CountsMicrosecondsOfRealTime) {
    long a = bvclock();
    SDL_Delay(50);
    long b = bvclock();
    EXPECT_EQ(BV_CLOCKS_PER_SEC, 1000000);
    EXPECT_GE(b - a, 50000);
    EXPECT_LT(b - a, 2000000);
}

// The counter: off, number only, number and bar.
TEST(Counter, BarLengthAndColoursFollowTheSmoothedRate) {
    ScratchDir dir;
    openWindow(400, 300);
    fontFNT.init("Courier", 8);
    config.maxfps = 200;
    performance.softfps = 100;  // q = 0.5
    for (unsigned int mode : {0u, 1u, 2u}) {
        config.frameratecounter = mode;
        glClearColor(0, 0, 1, 1);
        glClear(GL_COLOR_BUFFER_BIT);
        performance.display();
        Pixel left = readPixel(2, 20), mid = readPixel(198, 20), past = readPixel(202, 20);
        Pixel digit = readPixel(300, 200);
        bool text = false;
        for (int x = 6; x < 30; x++)
            for (int y = 6; y < 18; y++) {
                Pixel p = readPixel(x, y);
                if (p.r == 255 && p.g == 255 && p.b == 255) text = true;
            }
        EXPECT_EQ(digit.b, 255);
        if (mode < 2) {
            EXPECT_EQ(left.b, 255) << mode;
            EXPECT_EQ(mid.b, 255) << mode;
        } else {
            EXPECT_NEAR(left.r, 255, 3);  // red at the left edge
            EXPECT_NEAR(left.g, 0, 3);
            EXPECT_EQ(left.b, 0);
            EXPECT_NEAR(mid.r, 128, 3);  // (1 - q, q, 0) at the right end
            EXPECT_NEAR(mid.g, 127, 3);
            EXPECT_EQ(past.b, 255);
            EXPECT_EQ(readPixel(100, 22).b, 255);  // 22 pixels high
        }
        EXPECT_EQ(text, mode > 0) << mode;
    }
}

// The console can set the ceiling to 0: the rate shown is held at 0, which
// is its ceiling, and the bar is drawn full as at any rate at its ceiling,
// not from a division by zero.
TEST(Counter, ACeilingOfZeroShowsAFullBar) {
    ScratchDir dir;
    openWindow(400, 300);
    fontFNT.init("Courier", 8);
    config.maxfps = 0;
    config.frameratecounter = 2;
    performance.softfps = 60;
    performance.fps = 60;
    performance.savenext = false;
    performance.refresh(performance.tick);
    EXPECT_EQ(performance.softfps, 0.0f);
    glClearColor(0, 0, 1, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    performance.display();
    Pixel left = readPixel(2, 20), right = readPixel(397, 20);
    EXPECT_NEAR(left.r, 255, 3);
    EXPECT_EQ(left.b, 0);
    EXPECT_NEAR(right.r, 0, 3);  // (1 - q, q, 0) with q = 1 at the right end
    EXPECT_NEAR(right.g, 255, 3);
    EXPECT_EQ(right.b, 0);
}

}  // namespace

// Mouse deltas and recentring, and the joystick's delta interface.

#include <gtest/gtest.h>

#include "shell/bvconfig.h"
#include "shell/joystick.h"
#include "shell/mouse.h"
#include "support/bvtest_fixtures.h"

using namespace bvtest;

namespace {

TEST(Mouse, FirstDeltaIsTheCentresDistanceFromTheCorner) {
    openWindow(640, 480);
    mouse.init();
    EXPECT_EQ(mouse.x, 320u);
    EXPECT_EQ(mouse.y, 240u);
    EXPECT_FALSE(mouse.lb);
    mouse.refresh(false);
    EXPECT_EQ(mouse.deltax, 320);
    EXPECT_EQ(mouse.deltay, 240);
}

TEST(Mouse, InTheMenuThePointerMovesFreely) {
    openWindow(640, 480);
    mouse.init();
    mouse.refresh(false);
    mouse.x = 400;
    mouse.y = 100;
    mouse.refresh(false);
    EXPECT_EQ(mouse.deltax, 80);
    EXPECT_EQ(mouse.deltay, -140);
    EXPECT_EQ(mouse.x, 400u);
    mouse.refresh(false);
    EXPECT_EQ(mouse.deltax, 0);
}

TEST(Mouse, RacingTwelvePixelsRightGiveTwelveAndTheCentreAgain) {
    openWindow(640, 480);
    mouse.init();
    mouse.refresh(true);
    mouse.x = 332;  // what the motion event stores
    mouse.refresh(true);
    EXPECT_EQ(mouse.deltax, 12);
    EXPECT_EQ(mouse.deltay, 0);
    EXPECT_EQ(mouse.x, 320u);
    EXPECT_EQ(mouse.ox, 320u);
    mouse.refresh(true);
    EXPECT_EQ(mouse.deltax, 0);
}

TEST(Mouse, ResizeMovesTheCentreOfTheNextWarp) {
    openWindow(640, 480);
    mouse.init();
    config.width = 800;
    config.height = 600;
    mouse.refresh(true);
    EXPECT_EQ(mouse.x, 400u);
    EXPECT_EQ(mouse.y, 300u);
}

TEST(Joystick, WithoutADeviceDeltasStayZeroAfterTheFirst) {
    openWindow(640, 480);
    joystick.init();
    EXPECT_EQ(joystick.x, 320u);
    joystick.refresh();
    EXPECT_EQ(joystick.deltax, 320);
    EXPECT_EQ(joystick.deltay, 240);
    joystick.refresh();
    EXPECT_EQ(joystick.deltax, 0);
    EXPECT_EQ(joystick.deltay, 0);
}

}  // namespace

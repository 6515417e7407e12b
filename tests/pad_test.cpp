// The pad in the race frame, fed through the joystick's seams: its first two
// buttons are player 1's pedals, waiting for the start like the arrows, and a
// pad at rest neither steers nor drives. Time is simulated: every frame is
// 1/30 s of the start clock.

#include <gtest/gtest.h>

#include <GL/gl.h>
#include <SDL/SDL.h>

#include <filesystem>
#include <string>

#include "assets/font.h"
#include "frontend/menu.h"
#include "kart/gokart.h"
#include "scene/scene.h"
#include "shell/blackbox.h"
#include "shell/bvconfig.h"
#include "shell/joystick.h"
#include "shell/keyboard.h"
#include "shell/main.h"
#include "shell/mouse.h"
#include "shell/performance.h"
#include "support/bvtest_fixtures.h"
#include "support/race_scene.h"
#include "track/track.h"

namespace {

namespace fs = std::filesystem;

class PadTest : public bvtest::RaceSceneTest {
protected:
    void SetUp() override {
        copyGameData();
        openGame(640, 480);
        if (HasFatalFailure()) return;
        config.ngokarts = 1;
        config.nhumanplayers = 1;
        readyGame();
        joystick.init();
        ASSERT_EQ(joystick.device, nullptr) << "a joystick is plugged in; these tests feed their own";
        initScene();
    }
    // Where kart 1 is and how fast it goes, after a race driven by `drive`
    // (called before every frame) up to `seconds`.
    struct State {
        float px, pz, ups, pedal_up, pedal_down;
    };
    template <class F> State race(double seconds, F drive) {
        restart();
        while ((double)frames / 30 < seconds) {
            drive((double)frames / 30);
            frame();
        }
        const sGokart& k = gokart[0];
        return {k.px, k.pz, k.ups, k.pedal_up, k.pedal_down};
    }
};

TEST_F(PadTest, TheFirstButtonWaitsForTheStartThenAcceleratesLikeTheUpArrow) {
    restart();
    joystick.buttons(true, false);
    until(1.95);
    EXPECT_FALSE(gokart[0].kUP);
    EXPECT_FLOAT_EQ(gokart[0].ups, 0);
    until(2.5);
    EXPECT_TRUE(gokart[0].kUP);
    EXPECT_FALSE(gokart[0].kDOWN);
    EXPECT_GT(gokart[0].ups, 0);
}

TEST_F(PadTest, TheSecondButtonBrakesLikeTheDownArrow) {
    restart();
    joystick.buttons(false, true);
    until(1.95);
    EXPECT_FALSE(gokart[0].kDOWN);
    until(2.5);
    EXPECT_TRUE(gokart[0].kDOWN);
    EXPECT_FALSE(gokart[0].kUP);
    joystick.buttons(true, false);
    until(4);
    float fast = gokart[0].ups;
    ASSERT_GT(fast, 1);
    joystick.buttons(false, true);
    frame();
    EXPECT_FALSE(gokart[0].kUP);
    EXPECT_TRUE(gokart[0].kDOWN);
    until(4.5);
    EXPECT_LT(gokart[0].ups, fast);
    joystick.buttons(false, false);
    frame();
    EXPECT_FALSE(gokart[0].kUP);
    EXPECT_FALSE(gokart[0].kDOWN);
}

// The same race with the arrows and with the buttons ends in the same place.
TEST_F(PadTest, ARaceOnTheButtonsIsTheRaceOnTheArrows) {
    auto phases = [](double t, bool* up, bool* down) {
        *up = t < 4 || t >= 5;
        *down = t >= 4 && t < 5;
    };
    State arrows = race(6, [&](double t) {
        bool up, down;
        phases(t, &up, &down);
        keyboard.key[SDLK_UP] = up;
        keyboard.key[SDLK_DOWN] = down;
    });
    keyboard.key[SDLK_UP] = keyboard.key[SDLK_DOWN] = false;
    State pad = race(6, [&](double t) {
        bool up, down;
        phases(t, &up, &down);
        joystick.buttons(up, down);
    });
    EXPECT_GT(arrows.ups, 1);
    EXPECT_FLOAT_EQ(pad.px, arrows.px);
    EXPECT_FLOAT_EQ(pad.pz, arrows.pz);
    EXPECT_FLOAT_EQ(pad.ups, arrows.ups);
    EXPECT_FLOAT_EQ(pad.pedal_up, arrows.pedal_up);
    EXPECT_FLOAT_EQ(pad.pedal_down, arrows.pedal_down);
}

// With joystick steering on, a pad left at rest slightly off its centre
// neither turns the wheel nor creeps off the grid; its buttons drive.
TEST_F(PadTest, WithJoystickSteeringAPadAtRestStaysStillAndItsButtonsDrive) {
    config.joysticksteering = 1;
    ASSERT_EQ(config.joystickdeadzone, 8u);
    restart();
    float px = gokart[0].px, pz = gokart[0].pz;
    joystick.axes(1500, -2200);
    joystick.buttons(true, false);
    until(1.95);
    EXPECT_FLOAT_EQ(gokart[0].sw_ay, 0);
    EXPECT_FLOAT_EQ(gokart[0].ups, 0);
    EXPECT_FLOAT_EQ(gokart[0].px, px);
    EXPECT_FLOAT_EQ(gokart[0].pz, pz);
    until(2.5);
    joystick.buttons(false, false);
    frame();
    EXPECT_FLOAT_EQ(gokart[0].sw_ay, 0);
    until(3.5);
    joystick.buttons(true, false);
    float coasting = gokart[0].ups;
    until(5);
    EXPECT_GT(gokart[0].ups, coasting + 1);
    float fast = gokart[0].ups;
    joystick.buttons(false, true);
    until(6);
    EXPECT_LT(gokart[0].ups, fast - 1);
    EXPECT_FLOAT_EQ(gokart[0].sw_ay, 0);
}

// The stick still steers and drives once pushed past the zone.
TEST_F(PadTest, WithJoystickSteeringTheStickPastTheZoneSteersAndDrives) {
    config.joysticksteering = 1;
    restart();
    joystick.axes(-20000, -32000);
    until(3);
    EXPECT_GT(gokart[0].sw_ay, 0);
    EXPECT_GT(gokart[0].ups, 0);
}

}  // namespace

// The race frame with the game's own content in a real window: who drives
// which kart, the countdown, leaving a race, and what each view shows.
// Time is simulated: every frame is 1/30 s of the start clock.

#include <gtest/gtest.h>

#include <GL/gl.h>
#include <SDL/SDL.h>

#include <filesystem>
#include <functional>
#include <vector>

#include "assets/font.h"
#include "frontend/menu.h"
#include "kart/gokart.h"
#include "scene/camera.h"
#include "scene/scene.h"
#include "shell/blackbox.h"
#include "shell/bvconfig.h"
#include "shell/keyboard.h"
#include "shell/main.h"
#include "shell/mouse.h"
#include "shell/performance.h"
#include "support/bvtest_fixtures.h"
#include "support/race_scene.h"
#include "track/track.h"

namespace {

namespace fs = std::filesystem;

const int W = 640, H = 480;

struct Colour {
    int r, g, b;
};
const Colour CYAN = {0, 255, 255}, MAGENTA = {255, 0, 255}, YELLOW = {255, 255, 0}, BLUE = {0, 0, 255},
             RED = {255, 0, 0};

class SceneTest : public bvtest::RaceSceneTest {
protected:
    void SetUp() override {
        copyGameData();
        // Plain pictures where the tests look: a plain sky, the dial, and
        // the gloves and wheel grip, the sleeves and the helmet.
        solid("Sky.tga", {110, 110, 140});
        solid("Hud.tga", {255, 128, 0}, 255);  // an orange found nowhere else
        solid("Needle.tga", {0, 0, 0}, 0);
        solid("Tyre.tga", CYAN);
        solid("Suit.tga", MAGENTA);
        solid("Helmet.tga", YELLOW);
        openGame(W, H);
        if (HasFatalFailure()) return;
        config.player1color = 0;  // red
        config.ngokarts = 1;
        config.nhumanplayers = 1;
        readyGame();
        initScene();
    }
    void solid(const std::string& file, Colour c, int a = -1) {
        bvtest::writeSolidTGA("Data/Textures/" + file, 8, 8, c.r, c.g, c.b, a);
    }

    std::vector<unsigned char> pixels() {
        std::vector<unsigned char> p(W * H * 3);
        glPixelStorei(GL_PACK_ALIGNMENT, 1);
        glReadPixels(0, 0, W, H, GL_RGB, GL_UNSIGNED_BYTE, p.data());
        return p;
    }
    // Pixels in the region (fractions of the window, from the bottom left) that pass.
    int count(double x0, double x1, double y0, double y1, const std::function<bool(int, int, int)>& f) {
        std::vector<unsigned char> p = pixels();
        int n = 0;
        for (int y = (int)(y0 * H); y < (int)(y1 * H); y++)
            for (int x = (int)(x0 * W); x < (int)(x1 * W); x++) {
                const unsigned char* q = &p[(y * W + x) * 3];
                if (f(q[0], q[1], q[2])) n++;
            }
        return n;
    }
    static bool red(int r, int g, int b) { return r > 200 && g < 60 && b < 60; }
    // Light and neutral: the sky is a darker blue-grey.
    static bool white(int r, int g, int b) {
        return std::min(r, std::min(g, b)) > 170 && std::max(r, std::max(g, b)) - std::min(r, std::min(g, b)) < 25;
    }
    static std::function<bool(int, int, int)> hue(Colour c) {
        // Lit and shaded, but of that hue: the channels that are 0 stay well below the others.
        return [c](int r, int g, int b) {
            int hi = std::max(r, std::max(g, b));
            if (hi < 60) return false;
            auto off = [hi](int v, int want) { return want ? v > hi * 0.7 : v < hi * 0.3; };
            return off(r, c.r) && off(g, c.g) && off(b, c.b);
        };
    }
    // The width, in pixels, of the red start text in the middle of the picture; 0 when there is none.
    int startTextWidth() {
        std::vector<unsigned char> p = pixels();
        int lo = W, hi = -1;
        for (int y = (int)(0.45 * H); y < (int)(0.6 * H); y++)
            for (int x = (int)(0.25 * W); x < (int)(0.75 * W); x++) {
                const unsigned char* q = &p[(y * W + x) * 3];
                if (red(q[0], q[1], q[2])) {
                    lo = std::min(lo, x);
                    hi = std::max(hi, x);
                }
            }
        return hi < 0 ? 0 : hi - lo + 1;
    }
    void selectMode(unsigned int mode) {
        keyboard.key['1' + mode] = true;
        frame();
        keyboard.key['1' + mode] = false;
        ASSERT_EQ(camera.mode, mode);
    }
};

TEST_F(SceneTest, WithoutHumansTheComputerDrivesKartZeroOnceTheStartClockPassesTwo) {
    config.nhumanplayers = 0;
    config.ngokarts = 2;
    restart();
    float px = gokart[0].px, pz = gokart[0].pz;
    keyboard.key[273] = true;  // up
    keyboard.key[276] = true;  // left
    until(1.95);
    EXPECT_FLOAT_EQ(gokart[0].px, px);
    EXPECT_FLOAT_EQ(gokart[0].pz, pz);
    EXPECT_FLOAT_EQ(gokart[0].ups, 0);
    EXPECT_FALSE(gokart[0].kLEFT);
    EXPECT_FALSE(gokart[0].kUP);
    until(4);
    EXPECT_GT(gokart[0].ups, 0.5f);
    EXPECT_GT(gokart[1].ups, 0.5f);
    EXPECT_FALSE(gokart[0].kLEFT);  // the keys never reach it
    EXPECT_LT(gokart[0].pz, pz);
}

TEST_F(SceneTest, PlayerOneWaitsForTheStartButSteers) {
    restart();
    keyboard.key[273] = true;
    keyboard.key[276] = true;
    until(1.95);
    EXPECT_FLOAT_EQ(gokart[0].ups, 0);
    EXPECT_FALSE(gokart[0].kUP);
    EXPECT_TRUE(gokart[0].kLEFT);
    EXPECT_GT(gokart[0].sw_ay, 0);
    until(2.5);
    EXPECT_TRUE(gokart[0].kUP);
    EXPECT_GT(gokart[0].ups, 0);
}

TEST_F(SceneTest, PlayerTwoCanAccelerateDuringTheCountdown) {
    config.nhumanplayers = 2;
    config.ngokarts = 3;
    restart();
    keyboard.key['i'] = true;
    keyboard.key[273] = true;
    until(1.5);
    EXPECT_GT(gokart[1].ups, 0.5f);
    EXPECT_FLOAT_EQ(gokart[0].ups, 0);
    EXPECT_FLOAT_EQ(gokart[2].ups, 0);  // the computer waits too
    keyboard.key['i'] = false;
    keyboard.key['j'] = true;
    frame();
    EXPECT_TRUE(gokart[1].kLEFT);
    EXPECT_FALSE(gokart[1].kUP);
}

TEST_F(SceneTest, CountdownShowsOneTwoThreeGoThenNothingAndTheClockStopsAtFour) {
    config.player1color = 16;  // blue: red is the countdown's
    restart();
    until(0.5);
    int one = startTextWidth();
    EXPECT_GT(one, 0);
    until(1.5);
    int two = startTextWidth();
    EXPECT_GT(two, 0);
    until(2.5);
    EXPECT_GT(startTextWidth(), 0);
    until(3.5);
    int go = startTextWidth();
    EXPECT_GT(go, 2 * one);  // "GO!" is three characters
    until(3.95);
    EXPECT_GT(startTextWidth(), 2 * one);
    until(4.05);
    EXPECT_EQ(startTextWidth(), 0);
    float frozen = t;
    EXPECT_GE(frozen, 4.0f);
    EXPECT_LT(frozen, 4.05f);
    until(9);
    EXPECT_FLOAT_EQ(t, frozen);
    EXPECT_EQ(startTextWidth(), 0);
}

TEST_F(SceneTest, EscapeLeavesTheRaceAndTheNextRaceCountsDownFromOne) {
    config.player1color = 16;
    menu.m = MENU_RACING;
    restart();
    keyboard.key[273] = true;
    until(3.5);
    float pz = gokart[0].pz;
    ASSERT_LT(pz, 19.0f);  // driving
    SDL_ShowCursor(0);
    keyboard.key[27] = true;
    frame();
    keyboard.key[27] = false;
    keyboard.key[273] = false;
    EXPECT_EQ(menu.m, MENU_ENTER);
    EXPECT_EQ(SDL_ShowCursor(-1), 1);
    EXPECT_FLOAT_EQ(t, 0);
    EXPECT_FLOAT_EQ(gokart[0].pz, 20.0f);  // back on the grid
    EXPECT_FLOAT_EQ(gokart[0].ups, 0);
    EXPECT_EQ(camera.mode, CAMERA_CHASE);

    // The race button starts the next race: the countdown starts again at "1".
    frames = 0;
    bvclock_override = CLOCK0;
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    resizeGLwindow3D();
    menu.m = MENU_RACESTART;
    menu.display();  // the race-start frame draws nothing
    EXPECT_EQ(menu.m, MENU_RACING);
    EXPECT_EQ(SDL_ShowCursor(-1), 0);
    frame();
    int one = startTextWidth();
    EXPECT_GT(one, 0);
    until(3.5);
    EXPECT_GT(startTextWidth(), 2 * one);
}

TEST_F(SceneTest, ChaseViewShowsThePlayersKartInTheLowerMiddleInItsColour) {
    restart();
    until(1);
    EXPECT_GT(count(0.3, 0.7, 0.05, 0.45, hue(RED)), 2000);
    // In blue it is blue.
    config.player1color = 16;
    restart();
    until(1);
    EXPECT_GT(count(0.3, 0.7, 0.05, 0.45, hue(BLUE)), 2000);
    EXPECT_LT(count(0.3, 0.7, 0.05, 0.45, hue(RED)), 300);
    // The helmet is seen from behind.
    EXPECT_GT(count(0.3, 0.7, 0.2, 0.6, hue(YELLOW)), 50);
}

TEST_F(SceneTest, DriversViewShowsWheelAndHandsButNoHelmet) {
    restart();
    selectMode(CAMERA_DRIVER);
    until(1);
    EXPECT_GT(count(0.25, 0.75, 0, 0.6, hue(CYAN)), 300);     // wheel rim, grip and gloves
    EXPECT_GT(count(0, 1, 0, 0.6, hue(MAGENTA)), 300);        // sleeves
    EXPECT_EQ(count(0, 1, 0, 1, hue(YELLOW)), 0);              // no helmet of one's own
}

TEST_F(SceneTest, TheDialShowsInTheDriversViewOnlyAndTheRaceTextsInEveryView) {
    restart();
    const double dx = 1.23 / 1.33, dy = 0.1;
    auto orange = [](int r, int g, int b) { return r > 200 && g > 90 && g < 160 && b < 60; };
    auto dial = [&] { return count(dx - 0.03, dx + 0.03, dy - 0.03, dy + 0.03, orange); };
    for (unsigned int mode = 0; mode < 5; mode++) {
        selectMode(mode);
        until((double)frames / 30 + 1);  // the eased views settle
        if (mode == CAMERA_DRIVER)
            EXPECT_GT(dial(), 100) << "mode " << mode;
        else
            EXPECT_EQ(dial(), 0) << "mode " << mode;
        EXPECT_GT(count(0, 0.2, 0.94, 1, white), 10) << "lap, mode " << mode;
        EXPECT_GT(count(0.35, 0.65, 0.94, 1, white), 10) << "time, mode " << mode;
        EXPECT_GT(count(0.75, 1, 0.94, 1, white), 10) << "record, mode " << mode;
    }
    config.hud = 0;
    selectMode(CAMERA_DRIVER);
    EXPECT_EQ(dial(), 0);
}

TEST_F(SceneTest, ResetPutsTheLightAndCameraBack) {
    camera.mode = CAMERA_FREE;
    camera.px = 0;
    LightPosition[0] = 7;
    restart();
    EXPECT_FLOAT_EQ(LightAmbient[0], 0.125f);
    EXPECT_FLOAT_EQ(LightDiffuse[1], 1);
    EXPECT_FLOAT_EQ(LightPosition[0], -500);
    EXPECT_FLOAT_EQ(LightPosition[1], 750);
    EXPECT_FLOAT_EQ(LightPosition[2], -200);
    EXPECT_FLOAT_EQ(LightPosition[3], 1);
    EXPECT_EQ(camera.mode, CAMERA_CHASE);
    EXPECT_FLOAT_EQ(camera.px, 26.01f);
    EXPECT_FLOAT_EQ(camera.pz, 22.0f);
    EXPECT_TRUE(glIsEnabled(GL_LIGHT0));
    GLfloat clear[4];
    glGetFloatv(GL_COLOR_CLEAR_VALUE, clear);
    EXPECT_NEAR(clear[0], 0.525f, 1e-6);
    EXPECT_NEAR(clear[2], 0.5f, 1e-6);
}

TEST_F(SceneTest, F12WritesAScreenshotEveryFrameItIsHeldAndKeepsTheFrameOutOfTheRate) {
    restart();
    until(0.5);
    config.nScreenshots = 0;
    keyboard.key[293] = true;
    frame();
    EXPECT_TRUE(bvtest::fileExists("Data/Screenshots/shot000.tga"));
    EXPECT_FALSE(performance.savenext);
    frame();
    EXPECT_TRUE(bvtest::fileExists("Data/Screenshots/shot001.tga"));
    keyboard.key[293] = false;
    performance.savenext = true;
    frame();
    EXPECT_FALSE(bvtest::fileExists("Data/Screenshots/shot002.tga"));
    EXPECT_TRUE(performance.savenext);
}

TEST_F(SceneTest, TheConsoleCommandResetStartsTheRaceAgain) {
    restart();
    keyboard.key[273] = true;
    until(3);
    ASSERT_LT(gokart[0].pz, 20.0f);
    config.runfnc("reset");
    EXPECT_FLOAT_EQ(t, 0);
    EXPECT_FLOAT_EQ(gokart[0].pz, 20.0f);
}

}  // namespace

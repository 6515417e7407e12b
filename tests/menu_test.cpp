// The front end's buttons and the race-setup form: where a button counts as
// under the mouse, how it lights up and when it reports a press, and what
// the form's name field and arrows do to the race setup.

#include <gtest/gtest.h>

#include <GL/gl.h>

#include <cstring>
#include <filesystem>
#include <string>

#include "assets/font.h"
#include "frontend/highscore.h"
#include "frontend/menu.h"
#include "kart/gokart.h"
#include "scene/ghost.h"
#include "shell/blackbox.h"
#include "shell/bvconfig.h"
#include "shell/main.h"
#include "shell/mouse.h"
#include "shell/performance.h"
#include "support/bvtest_fixtures.h"
#include "track/track.h"

namespace {

// Puts the mouse on a point of the screen given in the menu's unit coordinates.
void at(float ux, float uy) {
    mouse.x = (unsigned int)(ux * config.width + 0.5f);
    mouse.y = (unsigned int)(config.height - uy * config.height + 0.5f);
}

class Button : public ::testing::Test {
protected:
    void SetUp() override {
        config.width = 1024;
        config.height = 512;
        mouse.lb = false;
        b.init(false, "", 0.5f, 0.5f, 0.25f, 0.5f, 0, MENU_STAY);
    }
    sMenuButton b;
};

TEST_F(Button, TheBorderCountsAsOver) {
    // Left edge x = 0.375, right 0.625, bottom y = 0.25, top 0.75.
    mouse.y = 256;
    mouse.x = 384;
    EXPECT_TRUE(b.hit());
    mouse.x = 383;
    EXPECT_FALSE(b.hit());
    mouse.x = 640;
    EXPECT_TRUE(b.hit());
    mouse.x = 641;
    EXPECT_FALSE(b.hit());
    mouse.x = 512;
    mouse.y = 128;  // window rows count down: this is the top edge
    EXPECT_TRUE(b.hit());
    mouse.y = 127;
    EXPECT_FALSE(b.hit());
    mouse.y = 384;
    EXPECT_TRUE(b.hit());
    mouse.y = 385;
    EXPECT_FALSE(b.hit());
}

TEST_F(Button, KeepsItsRelativePlaceAtOtherWindowSizes) {
    config.width = 2048;
    config.height = 1024;
    mouse.x = 768;
    mouse.y = 512;
    EXPECT_TRUE(b.hit());
    mouse.x = 767;
    EXPECT_FALSE(b.hit());
    config.width = 400;
    config.height = 300;
    mouse.x = 150;
    mouse.y = 75;
    EXPECT_TRUE(b.hit());
    mouse.y = 74;
    EXPECT_FALSE(b.hit());
}

// Drawn for real: three quarters bright, full bright under the mouse, in the
// same part of the window whatever its size.
class ButtonDrawn : public ::testing::TestWithParam<std::pair<int, int>> {};

TEST_P(ButtonDrawn, LightsUpUnderTheMouse) {
    bvtest::ScratchDir dir;
    auto [w, h] = GetParam();
    bvtest::openWindow(w, h);
    sMenuButton b;
    b.init(false, "", 0.25f, 0.75f, 0.2f, 0.2f, 0, MENU_STAY);
    auto frame = [&] {
        glClearColor(0, 0, 0, 1);
        glClear(GL_COLOR_BUFFER_BIT);
        resizeGLwindow2D(1, 1);
        bool pressed = b.draw();
        glFinish();
        return pressed;
    };
    mouse.lb = true;
    at(0.9f, 0.1f);
    EXPECT_FALSE(frame());
    EXPECT_NEAR(bvtest::readPixel(w / 4, h * 3 / 4).r, 191, 2);
    EXPECT_EQ(bvtest::readPixel(w / 4, h / 4).r, 0);
    at(0.3f, 0.8f);
    EXPECT_TRUE(frame());
    EXPECT_EQ(bvtest::readPixel(w / 4, h * 3 / 4).r, 255);
    // The rectangle spans 0.15 to 0.35 of the width.
    EXPECT_EQ(bvtest::readPixel((int)(w * 0.16), h * 3 / 4).r, 255);
    EXPECT_EQ(bvtest::readPixel((int)(w * 0.14), h * 3 / 4).r, 0);
    EXPECT_EQ(bvtest::readPixel(w / 4, (int)(h * 0.63)).r, 0);
    EXPECT_EQ(bvtest::readPixel(w / 4, (int)(h * 0.67)).r, 255);
}

INSTANTIATE_TEST_SUITE_P(Sizes, ButtonDrawn,
                         ::testing::Values(std::make_pair(1024, 768), std::make_pair(320, 240),
                                           std::make_pair(800, 300)));

TEST_F(Button, TypeOneIsPressedByHoveringTypeZeroOnlyWithTheMouseButton) {
    bvtest::ScratchDir dir;
    bvtest::openWindow(64, 64);
    sMenuButton hover;
    hover.init(false, "", 0.5f, 0.5f, 0.5f, 0.5f, 1, MENU_STAY);
    b.init(false, "", 0.5f, 0.5f, 0.5f, 0.5f, 0, MENU_ABOUT);
    resizeGLwindow2D(1, 1);
    at(0.5f, 0.5f);
    mouse.lb = false;
    EXPECT_TRUE(hover.draw());
    EXPECT_FALSE(b.draw());
    mouse.lb = true;
    EXPECT_TRUE(hover.draw());
    EXPECT_TRUE(b.draw());
    at(0.9f, 0.9f);
    EXPECT_FALSE(hover.draw());
    EXPECT_FALSE(b.draw());
}

// The menu as the game runs it, on a 1024 x 768 window without sound.
class Menu : public ::testing::Test {
protected:
    void SetUp() override {
        for (const char* d : {"Data/Highscore", "Data/Ghosts", "Data/Tracks", "Data/GUI"})
            std::filesystem::create_directories(d);
        blackbox.init("Data/blackbox.bvd", false);
        config.init("Data/config.bvd");
        bvtest::openWindow(1024, 768);
        config.soundeffects = 0;
        config.music = 0;
        config.PATH[0] = 0;
        performance.fps = 60;
        track.ntracks = 3;
        strcpy(track.trackname[0], "alpha");
        strcpy(track.trackname[1], "bravo");
        strcpy(track.trackname[2], "charlie");
        config.track = 0;
        for (unsigned int i = 0; i < GOKART_NCOLORS; i++) {
            gokartstaticdata.palette[i][0] = (unsigned char)(10 * i);
            gokartstaticdata.palette[i][1] = (unsigned char)(10 * i + 1);
            gokartstaticdata.palette[i][2] = (unsigned char)(10 * i + 2);
        }
        menu.init();
        menu.m = MENU_MAIN;
        mouse.lb = false;
        at(0.02f, 0.98f);  // empty space
    }
    void TearDown() override { menu.free(); }
    void frame(int n = 1) {
        for (int i = 0; i < n; i++) {
            glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
            menu.display();
        }
    }
    void press(const sMenuButton& b) {
        at(b.x, b.y);
        mouse.lb = true;
        frame();
        mouse.lb = false;
        menu.delay = 0;
    }
    void type(unsigned int key) {
        menu.key = key;
        frame();
    }
    bvtest::ScratchDir dir;
};

TEST_F(Menu, EntryGoesOnToTheMainScreenInTheSameFrame) {
    menu.m = MENU_ENTER;
    frame();
    EXPECT_EQ(menu.m, MENU_MAIN);
}

TEST_F(Menu, HoldingTheMouseOnALargeButtonKeepsSettingTheSameState) {
    at(menu.aboutB.x, menu.aboutB.y);
    mouse.lb = true;
    frame();
    EXPECT_EQ(menu.m, MENU_ABOUT);
    for (int i = 0; i < 3; i++) {
        menu.m = MENU_MAIN;
        frame();
        EXPECT_EQ(menu.m, MENU_ABOUT);
    }
    at(menu.quitB.x, menu.quitB.y);
    menu.m = MENU_MAIN;
    frame();
    EXPECT_EQ(menu.m, MENU_QUIT);
}

TEST_F(Menu, BackClearsTheMouseButtonSoTheMainScreenIgnoresThePress) {
    // Back lies over Quit on the main screen.
    ASSERT_TRUE(menu.quitB.hit() == false);
    for (unsigned int screen : {MENU_ABOUT, MENU_CREDITS, MENU_RECORDS}) {
        menu.m = screen;
        at(menu.backB.x, menu.backB.y);
        ASSERT_TRUE(menu.quitB.hit());
        mouse.lb = true;
        frame();
        EXPECT_EQ(menu.m, MENU_MAIN);
        EXPECT_FALSE(mouse.lb);
        frame(3);
        EXPECT_EQ(menu.m, MENU_MAIN);
    }
}

TEST_F(Menu, ASubScreenStaysUntilBack) {
    menu.m = MENU_CREDITS;
    at(menu.backB.x, menu.backB.y);
    frame(5);
    EXPECT_EQ(menu.m, MENU_CREDITS);
    at(menu.aboutB.x, menu.aboutB.y);
    mouse.lb = true;
    frame();
    EXPECT_EQ(menu.m, MENU_CREDITS);
}

TEST_F(Menu, TheRaceButtonStartsTheRaceOnTheNextFrame) {
    press(menu.raceB);
    EXPECT_EQ(menu.m, MENU_RACESTART);
    frame();
    EXPECT_EQ(menu.m, MENU_RACING);
    frame();
    EXPECT_EQ(menu.m, MENU_RACING);
}

TEST_F(Menu, TrackPlusOnTheLastTrackSavesThenWrapsToTheFirst) {
    config.track = 2;
    strcpy(highscore.laprecord_name[0], "OLDTRACK");
    highscore.laprecord_time[0] = 31.25f;
    ghost.bestTime = 31.25f;
    ghost.nRecs[1] = 2;
    bvtest::writeFile("Data/Highscore/alpha.txt", "ZED 12.500000\n");
    press(menu.trackIncB);
    EXPECT_EQ(config.track, 0u);
    // The old track's table and ghost went to its own files...
    EXPECT_EQ(bvtest::lines(bvtest::readFile("Data/Highscore/charlie.txt"))[0], "OLDTRACK 31.250000");
    EXPECT_EQ(bvtest::lines(bvtest::readFile("Data/Ghosts/charlie.txt")).size(), 7u);
    // ...and the new track's were read.
    EXPECT_STREQ(highscore.laprecord_name[0], "ZED");
    EXPECT_EQ(highscore.laprecord_time[0], 12.5f);
    EXPECT_EQ(ghost.nRecs[1], 0);
    EXPECT_FALSE(bvtest::fileExists("Data/Highscore/alpha.txt.tmp"));
}

TEST_F(Menu, TrackMinusOnTheFirstTrackWrapsToTheLast) {
    press(menu.trackDecB);
    EXPECT_EQ(config.track, 2u);
    EXPECT_TRUE(bvtest::fileExists("Data/Highscore/alpha.txt"));
    press(menu.trackDecB);
    EXPECT_EQ(config.track, 1u);
}

TEST_F(Menu, OpponentsMinusAtOneKartWrapsToSix) {
    config.ngokarts = 1;
    press(menu.opponentsDecB);
    EXPECT_EQ(config.ngokarts, 6u);
    press(menu.opponentsDecB);
    EXPECT_EQ(config.ngokarts, 5u);
    config.ngokarts = 6;
    press(menu.opponentsIncB);
    EXPECT_EQ(config.ngokarts, 1u);
}

TEST_F(Menu, HoldingAnArrowRepeatsAfterItsDelay) {
    config.ngokarts = 1;
    at(menu.opponentsIncB.x, menu.opponentsIncB.y);
    mouse.lb = true;
    frame();
    EXPECT_EQ(config.ngokarts, 2u);
    EXPECT_EQ(menu.delay, 0.5f);
    // Half a second at four a second is an eighth: 7.5 frames at 60 a second.
    frame(7);
    EXPECT_EQ(config.ngokarts, 2u);
    frame(2);
    EXPECT_EQ(config.ngokarts, 3u);
}

TEST_F(Menu, ColourWrapsBothWaysAndPaintsKartZero) {
    config.player1color = 0;
    press(menu.player1colorDecB);
    EXPECT_EQ(config.player1color, 23u);
    EXPECT_EQ(gokart[0].R, 230);
    EXPECT_EQ(gokart[0].G, 231);
    EXPECT_EQ(gokart[0].B, 232);
    press(menu.player1colorIncB);
    EXPECT_EQ(config.player1color, 0u);
    EXPECT_EQ(gokart[0].R, 0);
    press(menu.player1colorIncB);
    EXPECT_EQ(gokart[0].B, 12);
}

TEST_F(Menu, DifficultyWrapsBothWays) {
    config.aiskill = 0;
    press(menu.difficultyDecB);
    EXPECT_EQ(config.aiskill, 2u);
    press(menu.difficultyIncB);
    EXPECT_EQ(config.aiskill, 0u);
    press(menu.difficultyIncB);
    EXPECT_EQ(config.aiskill, 1u);
}

TEST_F(Menu, TypedLettersBecomeCapitalsOnlyOverTheNameField) {
    strcpy(config.player1name, "");
    type('a');
    EXPECT_STREQ(config.player1name, "");
    EXPECT_EQ(menu.key, 0u);
    at(menu.player1nameB.x, menu.player1nameB.y);
    type('a');
    type('n');
    type(SDLK_SPACE);
    type('n');
    EXPECT_STREQ(config.player1name, "ANN");
    EXPECT_EQ(menu.key, 0u);
    type(SDLK_BACKSPACE);
    EXPECT_STREQ(config.player1name, "AN");
}

TEST_F(Menu, AThirteenthCharacterIsIgnored) {
    strcpy(config.player1name, "ABCDEFGHIJK");
    at(menu.player1nameB.x, menu.player1nameB.y);
    type('l');
    EXPECT_STREQ(config.player1name, "ABCDEFGHIJKL");
    type('m');
    EXPECT_STREQ(config.player1name, "ABCDEFGHIJKL");
}

TEST_F(Menu, BackspaceOnAnEmptyNameDoesNothing) {
    strcpy(config.player1name, "");
    at(menu.player1nameB.x, menu.player1nameB.y);
    type(SDLK_BACKSPACE);
    EXPECT_STREQ(config.player1name, "");
}

TEST_F(Menu, TheNameCursorBlinksOnlyOverTheField) {
    frame();
    EXPECT_EQ(menu.cursor_delay, 0.0f);
    at(menu.player1nameB.x, menu.player1nameB.y);
    frame();
    EXPECT_EQ(menu.cursor_delay, 1.0f);
    frame(15);
    EXPECT_NEAR(menu.cursor_delay, 0.5f, 1e-4);
    at(0.02f, 0.98f);
    frame();
    EXPECT_EQ(menu.cursor_delay, 0.0f);
}

TEST_F(Menu, TheTurntableTurnsFifteenDegreesASecond) {
    frame(60);
    EXPECT_NEAR(menu.r, 15.0f, 1e-3);
}

}  // namespace

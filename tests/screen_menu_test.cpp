// The race-setup screen with the game's own content and a loaded race, as
// the race scene leaves things at start-up: both previews turn, and the texts
// of the form are drawn.

#include <gtest/gtest.h>

#include <GL/gl.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "assets/font.h"
#include "frontend/highscore.h"
#include "frontend/menu.h"
#include "kart/gokart.h"
#include "scene/camera.h"
#include "shell/blackbox.h"
#include "shell/bvconfig.h"
#include "shell/main.h"
#include "shell/mouse.h"
#include "shell/performance.h"
#include "support/bvtest_fixtures.h"
#include "track/track.h"

namespace fs = std::filesystem;

namespace {

class ScreenMenu : public ::testing::Test {
protected:
    void SetUp() override {
        fs::remove_all("Data");
        fs::copy(std::string(BV_GAME_DIR) + "/Data", "Data", fs::copy_options::recursive);
        blackbox.init("Data/blackbox.bvd", false);
        ASSERT_TRUE(config.init("Data/config.bvd"));
        config.soundeffects = 0;
        config.music = 0;
        bvtest::openWindow(1024, 768);
        initGL();
        fontTGA.init("Arial", 0.75f);
        menu.init();
        track.init(0.125f);
        camera.init(1, 26.01f, 1.5f, 22.0f, 0, 0, 0, 55);
        gokartstaticdata.init();
        track.load();
        for (unsigned char i = 0; i < GOKART_NKARTS; i++) gokart[i].init(i);
        performance.fps = 30;
        mouse.x = 300;
        mouse.y = 40;
        mouse.lb = false;
    }
    // What the game's shutdown gives back of the same.
    void TearDown() override {
        track.free();
        for (unsigned char i = 0; i < GOKART_NKARTS; i++) gokart[i].free();
        gokartstaticdata.free();
        gokartstaticdata.freeKept();
        menu.free();
        fontTGA.free();
        blackbox.free();
    }
    void frame() {
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
        resizeGLwindow3D();
        menu.display();
        glFinish();
    }
    // A hash of a block of the back buffer around a point in unit
    // coordinates; unsigned, so that it wraps instead of overflowing.
    unsigned long block(float ux, float uy) {
        unsigned long sum = 0;
        for (int dy = -40; dy <= 40; dy += 8)
            for (int dx = -60; dx <= 60; dx += 8) {
                bvtest::Pixel p = bvtest::readPixel((int)(ux * 1024) + dx, (int)(uy * 768) + dy);
                sum = sum * 31 + p.r * 65536 + p.g * 256 + p.b;
            }
        return sum;
    }
    bvtest::ScratchDir dir;
};

TEST_F(ScreenMenu, BothPreviewsTurn) {
    frame();
    unsigned long kart0 = block(0.601f, 0.401f), track0 = block(0.824f, 0.401f);
    // A quarter turn later.
    for (int i = 0; i < 180; i++) menu.r += 0.5f;
    frame();
    EXPECT_NE(block(0.601f, 0.401f), kart0);
    EXPECT_NE(block(0.824f, 0.401f), track0);
    if (const char* shot = getenv("BV_MENU_SHOT")) {
        SDL_GL_SwapBuffers();
        bvtest::run(std::string("import -window root ") + shot);
    }
}

TEST_F(ScreenMenu, TheColourNameFollowsTheArrows) {
    config.player1color = 0;
    frame();
    unsigned long name0 = block(0.5925f, 0.280292f);
    mouse.x = (unsigned int)(0.688f * 1024);
    mouse.y = (unsigned int)(768 - 0.280292f * 768);
    mouse.lb = true;
    frame();
    mouse.lb = false;
    EXPECT_EQ(config.player1color, 1u);
    EXPECT_NE(block(0.5925f, 0.280292f), name0);
}

// The opponents shown are the karts of the race less the player's own: one
// kart alone shows "0", drawn just as the text "0" is over the background.
TEST_F(ScreenMenu, TheOpponentCountIsTheKartsLessOne) {
    auto region = [] {
        std::vector<int> v;
        for (int y = 300; y < 325; y++)  // rows from the bottom, around y = 0.595
            for (int x = 752; x < 806; x++) v.push_back(bvtest::readPixel(x, 768 - y).r);
        return v;
    };
    auto reference = [&](const char* text) {
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        resizeGLwindow2D(1, 1);
        glColor3f(1, 1, 1);
        glEnable(GL_TEXTURE_2D);
        glBindTexture(GL_TEXTURE_2D, menu.tgaMenu);
        unitquad(0, 0, 1, 1);
        glDisable(GL_TEXTURE_2D);
        fontTGA.out(0.75f, 0.595f, 1, 1, 1, FONT_ALIGN_CENTER, 0.025f, "%s", text);
        glFinish();
        return region();
    };
    config.ngokarts = 1;
    frame();
    std::vector<int> shown = region();
    EXPECT_EQ(shown, reference("0"));
    EXPECT_NE(shown, reference("1"));
    config.ngokarts = 6;
    frame();
    EXPECT_EQ(region(), reference("5"));
}

}  // namespace

namespace {

// The window's pixels, rows from the bottom.
std::vector<unsigned char> readWindow() {
    std::vector<unsigned char> rgb(1024 * 768 * 3);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, 1024, 768, GL_RGB, GL_UNSIGNED_BYTE, rgb.data());
    return rgb;
}

// Every line of the Credits list is written on the panel of its picture:
// each row the screen's texts change crosses the panel (its dark blue just
// inside its left edge, where the valley shows outside it), and no text
// reaches the panel's sides.
TEST_F(ScreenMenu, EveryCreditsLineStandsOnThePanel) {
    menu.m = MENU_CREDITS;
    frame();
    const std::vector<unsigned char> screen = readWindow();
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    resizeGLwindow2D(1, 1);
    glColor3f(1, 1, 1);
    glEnable(GL_TEXTURE_2D);
    glBindTexture(GL_TEXTURE_2D, menu.tgaCredits);
    unitquad(0, 0, 1, 1);
    glDisable(GL_TEXTURE_2D);
    glFinish();
    const std::vector<unsigned char> picture = readWindow();

    auto isPanel = [&](int x, int y) {
        const unsigned char* p = &picture[(y * 1024 + x) * 3];
        return p[0] < 80 && p[1] < 80 && p[2] < 100 && p[2] >= p[1] && p[2] >= p[0];
    };
    int written = 0, offPanel = 0, lowest = 768;
    // Left of x 215 stands the back button, drawn over the picture.
    for (int y = 0; y < 768; y++)
        for (int x = 215; x < 1024; x++) {
            const unsigned char* s = &screen[(y * 1024 + x) * 3];
            const unsigned char* p = &picture[(y * 1024 + x) * 3];
            if (abs(s[0] - p[0]) + abs(s[1] - p[1]) + abs(s[2] - p[2]) < 60) continue;
            written++;
            lowest = std::min(lowest, y);
            if (!isPanel(232, y) || x < 232 || x > 792) offPanel++;
        }
    // The list reaches far down the screen: 26 lines, the last at y 0.15.
    EXPECT_GT(written, 5000);
    EXPECT_LT(lowest, 130);
    EXPECT_EQ(offPanel, 0) << "of " << written << " written pixels; lowest row " << lowest;
}

}  // namespace

// The rescue keys in the race frame, with the game's own content in a real
// window: Backspace for player 1, u for player 2, once a press, never for a
// computer kart and never from the menus. Time is simulated: every frame is
// 1/30 s of the start clock.

#include <gtest/gtest.h>

#include <GL/gl.h>
#include <SDL/SDL.h>

#include <cmath>
#include <filesystem>

#include "assets/font.h"
#include "frontend/menu.h"
#include "kart/gokart.h"
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

class SceneRescue : public bvtest::RaceSceneTest {
protected:
    void SetUp() override {
        copyGameData();
        openGame(160, 120);
        if (HasFatalFailure()) return;
        config.ngokarts = 3;
        config.nhumanplayers = 1;
        readyGame();
        initScene();
    }
    // One frame of the game as the menu shows a race, one thirtieth of a second after the last.
    void frame() override {
        nextFrame();
        menu.display();
        glFinish();
    }
    void restart() override {
        menu.m = MENU_RACING;
        RaceSceneTest::restart();
    }
    // Kart k half way round its lap, put down somewhere far from the pair
    // it last reached, moving.
    static void midLap(sGokart& k, unsigned int c) {
        const unsigned int n = track.pairs(), far = (c + n / 2) % n;
        k.px = (track.Lpoint[far].x + track.Rpoint[far].x) / 2;
        k.pz = (track.Lpoint[far].z + track.Rpoint[far].z) / 2;
        k.ups = 5;
        k.lap = 1;
        k.checkpoint = (unsigned char)c;
        k.thislapcounted = false;
    }
    // How far kart k stands from the middle of pair c.
    static double fromPair(const sGokart& k, unsigned int c) {
        return std::hypot(k.px - (track.Lpoint[c].x + track.Rpoint[c].x) / 2,
                          k.pz - (track.Lpoint[c].z + track.Rpoint[c].z) / 2);
    }
};

TEST_F(SceneRescue, BackspaceRescuesPlayerOneOnceAPress) {
    restart();
    until(2.5);
    const unsigned int c = 30;
    midLap(gokart[0], c);
    ASSERT_GT(fromPair(gokart[0], c), 20);
    keyboard.key[SDLK_BACKSPACE] = true;
    frame();
    EXPECT_LT(fromPair(gokart[0], c), 2.0);
    EXPECT_EQ(gokart[0].ups, 0);
    EXPECT_EQ(gokart[0].checkpoint, c);
    EXPECT_EQ(gokart[0].lap, 1);

    // Held down, it lets the kart drive off.
    keyboard.key[SDLK_UP] = true;
    until(4.5);
    keyboard.key[SDLK_UP] = false;
    EXPECT_GT(fromPair(gokart[0], c), 5.0);
    EXPECT_GT(gokart[0].ups, 1);

    // Let go and pressed again: back once more.
    keyboard.key[SDLK_BACKSPACE] = false;
    frame();
    EXPECT_GT(fromPair(gokart[0], c), 5.0);
    keyboard.key[SDLK_BACKSPACE] = true;
    frame();
    keyboard.key[SDLK_BACKSPACE] = false;
    const unsigned int now = gokart[0].checkpoint;
    EXPECT_LT(fromPair(gokart[0], now), 2.0);
    EXPECT_EQ(gokart[0].ups, 0);
}

TEST_F(SceneRescue, UIsPlayerTwosKeyAndNeitherKeyMovesAComputerKart) {
    config.nhumanplayers = 2;
    restart();
    until(2.5);
    midLap(gokart[0], 20);
    midLap(gokart[1], 40);
    midLap(gokart[2], 60);
    keyboard.key[SDLK_u] = true;
    frame();
    keyboard.key[SDLK_u] = false;
    EXPECT_LT(fromPair(gokart[1], 40), 2.0);
    EXPECT_GT(fromPair(gokart[0], 20), 20);
    EXPECT_GT(fromPair(gokart[2], 60), 20);

    // With one human, u is nobody's and Backspace only player 1's.
    config.nhumanplayers = 1;
    restart();
    until(2.5);
    midLap(gokart[1], 40);
    midLap(gokart[2], 60);
    keyboard.key[SDLK_u] = true;
    keyboard.key[SDLK_BACKSPACE] = true;
    frame();
    keyboard.key[SDLK_u] = false;
    keyboard.key[SDLK_BACKSPACE] = false;
    EXPECT_GT(fromPair(gokart[1], 40), 20);
    EXPECT_GT(fromPair(gokart[2], 60), 20);
}

TEST_F(SceneRescue, TheMenusDoNotRescue) {
    restart();
    until(2.5);
    midLap(gokart[0], 30);
    const float px = gokart[0].px, pz = gokart[0].pz;
    for (unsigned int m : {MENU_MAIN, MENU_ABOUT, MENU_ENTER}) {
        menu.m = m;
        keyboard.key[SDLK_BACKSPACE] = true;
        frame();
        keyboard.key[SDLK_BACKSPACE] = false;
        frame();
        EXPECT_EQ(gokart[0].px, px) << "menu " << m;
        EXPECT_EQ(gokart[0].pz, pz) << "menu " << m;
    }
    // Back in the race, the same press does.
    menu.m = MENU_RACING;
    keyboard.key[SDLK_BACKSPACE] = true;
    frame();
    keyboard.key[SDLK_BACKSPACE] = false;
    EXPECT_LT(fromPair(gokart[0], 30), 2.0);
}

}  // namespace

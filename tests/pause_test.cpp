// Holding a race still (P, the window losing the keyboard) and starting it
// over (Delete), with the game's own content in a real window. Time is
// simulated: every frame is 1/30 s of the race clock.

#include <gtest/gtest.h>

#include <GL/gl.h>
#include <SDL/SDL.h>

#include <cmath>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "assets/font.h"
#include "frontend/highscore.h"
#include "frontend/menu.h"
#include "kart/gokart.h"
#include "scene/camera.h"
#include "scene/ghost.h"
#include "scene/pause.h"
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

const int W = 320, H = 240;

class PauseTest : public bvtest::RaceSceneTest {
protected:
    void SetUp() override {
        copyGameData();
        // A plain sky, darker than the white texts.
        bvtest::writeSolidTGA("Data/Textures/Sky.tga", 8, 8, 110, 110, 140);
        openGame(W, H);
        if (HasFatalFailure()) return;
        config.frameratecounter = 0;
        config.ngokarts = 1;
        config.nhumanplayers = 0;  // the computer drives kart 0: the same laps every time
        readyGame();
        initScene();
        menu.m = MENU_RACING;
    }
    // A fresh race as the menu starts one, the computer's choices the same each time.
    void restart() override {
        srand(7);
        RaceSceneTest::restart();
    }
    // One frame with the key down, and released after it.
    void press(unsigned int sym) {
        keyboard.key[sym] = true;
        frame();
        keyboard.key[sym] = false;
    }
    // Frames until kart 0 has driven its first whole lap; its time, or -1.
    float firstLap(const std::function<void()>& midway = nullptr) {
        bool done = false;
        while (gokart[0].laptime[1] == 0 && frames < 30 * 300) {
            frame();
            if (midway && !done && gokart[0].lap == 1 && gokart[0].currentlaptime > 10) {
                done = true;
                midway();
            }
        }
        return gokart[0].laptime[1] == 0 ? -1 : gokart[0].laptime[1];
    }

    std::vector<unsigned char> pixels() {
        std::vector<unsigned char> p(W * H * 3);
        glPixelStorei(GL_PACK_ALIGNMENT, 1);
        glReadPixels(0, 0, W, H, GL_RGB, GL_UNSIGNED_BYTE, p.data());
        return p;
    }
    // White pixels in the middle of the picture, where the pause shows its texts.
    int whiteInMiddle() {
        std::vector<unsigned char> p = pixels();
        int n = 0;
        for (int y = (int)(0.55 * H); y < (int)(0.8 * H); y++)
            for (int x = (int)(0.1 * W); x < (int)(0.9 * W); x++) {
                const unsigned char* q = &p[(y * W + x) * 3];
                if (std::min(q[0], std::min(q[1], q[2])) > 200) n++;
            }
        return n;
    }
    static SDL_Event active(int gain, int state) {
        SDL_Event e = {};
        e.type = SDL_ACTIVEEVENT;
        e.active.gain = (Uint8)gain;
        e.active.state = (Uint8)state;
        return e;
    }
};

TEST_F(PauseTest, ALapWithAFiveSecondPauseTakesTheSameTimeToTheFrame) {
    restart();
    const float plain = firstLap();
    ASSERT_GT(plain, 0) << "the computer never finished a lap";
    const long plainFrames = frames;
    const float plainX = gokart[0].px, plainZ = gokart[0].pz;

    restart();
    float px = 0, pz = 0, shown = 0;
    long pausedFrames = 0;
    const float paused = firstLap([&] {
        press(SDLK_p);
        ASSERT_TRUE(racepause.paused);
        px = gokart[0].px;
        pz = gokart[0].pz;
        shown = gokart[0].currentlaptime;
        for (int i = 0; i < 5 * 30; i++) frame();
        // The frame that resumes drives on: the race stood for these frames.
        pausedFrames = 1 + 5 * 30;
        // Nothing moved and the lap's clock stood.
        EXPECT_EQ(gokart[0].px, px);
        EXPECT_EQ(gokart[0].pz, pz);
        EXPECT_EQ(gokart[0].currentlaptime, shown);
        press(SDLK_p);
        EXPECT_FALSE(racepause.paused);
    });
    printf("lap without a pause %.6f s (%ld frames), with a 5 s pause %.6f s (%ld frames)\n", plain, plainFrames,
           paused, frames);
    // The clock is read in whole microseconds, so the two may differ by one.
    EXPECT_NEAR(paused, plain, 2e-6);
    // The very same lap, frame for frame.
    EXPECT_EQ(gokart[0].px, plainX);
    EXPECT_EQ(gokart[0].pz, plainZ);
    // The lap took exactly the frames of the pause longer on the wall clock.
    EXPECT_EQ(frames, plainFrames + pausedFrames);
}

TEST_F(PauseTest, TheCountdownWaitsAndAHeldKeyTogglesOnce) {
    restart();
    until(1.5);
    const float t0 = t;
    keyboard.key[SDLK_p] = true;
    for (int i = 0; i < 60; i++) frame();  // held for two seconds
    keyboard.key[SDLK_p] = false;
    EXPECT_TRUE(racepause.paused);
    EXPECT_FLOAT_EQ(t, t0);
    for (int i = 0; i < 30; i++) frame();
    EXPECT_FLOAT_EQ(t, t0);
    press(SDLK_p);
    EXPECT_FALSE(racepause.paused);
    for (int i = 0; i < 15; i++) frame();
    EXPECT_NEAR(t, t0 + 0.5, 0.04);
}

TEST_F(PauseTest, ThePausedFrameStandsStillAndSaysPaused) {
    config.ghost = 1;
    restart();
    until(6);
    frame();
    const int before = whiteInMiddle();
    press(SDLK_p);
    std::vector<unsigned char> first = pixels();
    const int during = whiteInMiddle();
    for (int i = 0; i < 10; i++) frame();
    EXPECT_TRUE(pixels() == first) << "the paused picture changed";
    EXPECT_GT(during, before + 100) << "no PAUSED in the middle of the picture";
    press(SDLK_p);
    frame();
    EXPECT_LT(whiteInMiddle(), before + 50);
    EXPECT_FALSE(pixels() == first);
}

TEST_F(PauseTest, LosingTheKeyboardOrBeingMinimisedPausesAndOnlyPResumes) {
    restart();
    until(5);
    bool done = false;
    // The mouse leaving the window does not.
    handleEvent(active(0, SDL_APPMOUSEFOCUS), done);
    EXPECT_FALSE(racepause.paused);
    handleEvent(active(0, SDL_APPINPUTFOCUS), done);
    EXPECT_TRUE(racepause.paused);
    const float pz = gokart[0].pz;
    frame();
    handleEvent(active(1, SDL_APPINPUTFOCUS), done);
    frame();
    EXPECT_TRUE(racepause.paused);  // the focus coming back does not resume
    EXPECT_EQ(gokart[0].pz, pz);
    press(SDLK_p);
    EXPECT_FALSE(racepause.paused);
    frame();
    EXPECT_NE(gokart[0].pz, pz);

    handleEvent(active(0, SDL_APPACTIVE), done);  // minimised
    EXPECT_TRUE(racepause.paused);
    press(SDLK_p);
    EXPECT_FALSE(racepause.paused);

    // Outside a race nothing is paused.
    menu.m = MENU_MAIN;
    handleEvent(active(0, SDL_APPINPUTFOCUS | SDL_APPACTIVE), done);
    EXPECT_FALSE(racepause.paused);
    EXPECT_FALSE(done);
}

TEST_F(PauseTest, TheFirstFrameAfterALongPausedFrameMovesTheKartsByOneFrame) {
    config.frameratecounter = 1;
    restart();
    unsigned int ms = 1000;
    auto timed = [&](unsigned int step) {
        ms += step;
        performance.refresh(ms);
        frame();
    };
    while (frames < 30 * 8) timed(33);
    float pz = gokart[0].pz, px = gokart[0].px;
    timed(33);
    const float stride = std::hypot(gokart[0].pz - pz, gokart[0].px - px);
    const float fps = performance.fps, meter = performance.softfps;
    ASSERT_GT(stride, 0.05f);
    keyboard.key[SDLK_p] = true;
    timed(33);
    keyboard.key[SDLK_p] = false;
    ASSERT_TRUE(racepause.paused);
    timed(33);
    timed(5000);  // a paused frame held up for five seconds (a minimised window)
    timed(33);
    pz = gokart[0].pz;
    px = gokart[0].px;
    keyboard.key[SDLK_p] = true;
    timed(33);
    keyboard.key[SDLK_p] = false;
    ASSERT_FALSE(racepause.paused);
    EXPECT_NEAR(performance.fps, fps, 0.5f);
    EXPECT_NEAR(performance.softfps, meter, 1.0f);
    EXPECT_NEAR(std::hypot(gokart[0].pz - pz, gokart[0].px - px), stride, stride * 0.2f);
}

TEST_F(PauseTest, DeleteStartsTheRaceOverAndThrowsTheLapInProgressAway) {
    config.ghost = 1;
    const std::string records = "Data/Highscore/" + std::string(track.trackname[config.track]) + ".txt";
    const std::string ghostfile = ghost.file();
    const bool hadRecords = fs::exists(records), hadGhost = fs::exists(ghostfile);
    const std::string recordsBefore = hadRecords ? bvtest::readFile(records) : "";
    const std::string ghostBefore = hadGhost ? bvtest::readFile(ghostfile) : "";
    const float record = highscore.laprecord_time[0];
    restart();
    while (!(gokart[0].lap == 1 && gokart[0].currentlaptime > 10) && frames < 30 * 200) frame();
    ASSERT_EQ(gokart[0].lap, 1);
    ASSERT_GT(ghost.nRecs[0], 0);

    keyboard.key[SDLK_DELETE] = true;
    frame();
    EXPECT_EQ(gokart[0].lap, 0);
    EXPECT_LT(t, 0.1f);  // the countdown from its start
    EXPECT_FLOAT_EQ(gokart[0].pz, 20.0f);  // on the grid
    // The recording holds the new race's first frame, on the grid, and nothing of the lap.
    EXPECT_EQ(ghost.nRecs[0], 1);
    EXPECT_FLOAT_EQ(ghost.pz[0][0], 20.0f);
    for (int i = 0; i < 30; i++) frame();  // held: the race starts over once
    keyboard.key[SDLK_DELETE] = false;
    EXPECT_GT(t, 0.9f);

    // The next pass over the line starts lap 1 afresh; nothing was timed.
    while (gokart[0].lap == 0 && frames < 30 * 300) frame();
    for (int i = 0; i < 30; i++) frame();
    EXPECT_EQ(gokart[0].lap, 1);
    EXPECT_EQ(gokart[0].laptime[1], 0);
    EXPECT_EQ(highscore.laprecord_time[0], record);
    EXPECT_EQ(highscore.thisnewrecorddelay, 0);
    EXPECT_EQ(fs::exists(records), hadRecords);
    EXPECT_EQ(fs::exists(ghostfile), hadGhost);
    if (hadRecords) {
        EXPECT_EQ(bvtest::readFile(records), recordsBefore);
    }
    if (hadGhost) {
        EXPECT_EQ(bvtest::readFile(ghostfile), ghostBefore);
    }
}

TEST_F(PauseTest, DeleteAndEscapeLeaveTheGameUnpaused) {
    restart();
    until(5);
    press(SDLK_p);
    ASSERT_TRUE(racepause.paused);
    press(SDLK_DELETE);
    EXPECT_FALSE(racepause.paused);
    EXPECT_EQ(gokart[0].lap, 0);
    until(frames / 30.0 + 3);
    EXPECT_GT(gokart[0].ups, 0.5f);  // racing again after the countdown

    press(SDLK_p);
    ASSERT_TRUE(racepause.paused);
    press(SDLK_ESCAPE);
    EXPECT_EQ(menu.m, MENU_ENTER);
    EXPECT_FALSE(racepause.paused);
}

}  // namespace

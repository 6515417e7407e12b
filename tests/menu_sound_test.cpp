// What the race-setup screen plays: typing, the hover sound only when the
// mouse comes from empty space, and the hand-over from the start-up tune to
// the menu tune.

#include <gtest/gtest.h>

#include <SDL/SDL.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cstring>
#include <filesystem>
#include <string>
#include <thread>

#include "audio/fsound.h"
#include "frontend/highscore.h"
#include "frontend/menu.h"
#include "shell/blackbox.h"
#include "shell/bvconfig.h"
#include "shell/mouse.h"
#include "shell/performance.h"
#include "support/bvtest_fixtures.h"
#include "track/track.h"

namespace {

void at(float ux, float uy) {
    mouse.x = (unsigned int)(ux * config.width + 0.5f);
    mouse.y = (unsigned int)(config.height - uy * config.height + 0.5f);
}

class MenuSound : public ::testing::Test {
protected:
    void SetUp() override {
        std::filesystem::create_directories("Data/Sounds");
        blackbox.init("Data/blackbox.bvd", false);
        config.init("Data/config.bvd");
        bvtest::openWindow(1024, 768);
        config.PATH[0] = 0;
        config.soundvolume = 255;
        config.musicvolume = 255;
        config.music = 0;
        performance.fps = 60;
        track.ntracks = 1;
        strcpy(track.trackname[0], "alpha");
        for (const char* s : {"Broll", "Bclick", "Btype", "Bdecinc"})
            bvtest::writeTone(std::string("Data/Sounds/") + s + ".wav", 440, 2.0);
        // Long tunes, so that they are still playing whenever we look.
        bvtest::writeTone("Data/Sounds/iintro.mp3", 330, 30.0);
        bvtest::writeTone("Data/Sounds/intro.mp3", 550, 30.0);
        ASSERT_TRUE(FSOUND_Init(44100, 32, 0));
    }
    void TearDown() override {
        menu.free();
        FSOUND_Close();
    }
    void start() {
        menu.init();
        menu.m = MENU_MAIN;
        mouse.lb = false;
        at(0.02f, 0.98f);
        frame();
        FSOUND_StopSound(FSOUND_ALL);
    }
    static int playing() {
        int n = 0;
        for (int c = 0; c < 32; c++) n += FSOUND_IsPlaying(c) ? 1 : 0;
        return n;
    }
    void frame() { menu.display(); }
    bvtest::SoundCapture capture;
    bvtest::ScratchDir dir;
};

TEST_F(MenuSound, TypingClicksButBackspaceOnAnEmptyNameIsSilent) {
    start();
    strcpy(config.player1name, "");
    at(menu.player1nameB.x, menu.player1nameB.y);
    frame();
    FSOUND_StopSound(FSOUND_ALL);
    menu.key = SDLK_BACKSPACE;
    frame();
    EXPECT_EQ(playing(), 0);
    EXPECT_STREQ(config.player1name, "");
    menu.key = SDLK_SPACE;
    frame();
    EXPECT_EQ(playing(), 0);
    EXPECT_STREQ(config.player1name, "");
    menu.key = 'q';
    frame();
    EXPECT_EQ(playing(), 1);
    EXPECT_STREQ(config.player1name, "Q");
    FSOUND_StopSound(FSOUND_ALL);
    menu.key = SDLK_BACKSPACE;
    frame();
    EXPECT_EQ(playing(), 1);
    EXPECT_STREQ(config.player1name, "");
}

TEST_F(MenuSound, AThirteenthCharacterMakesNoSound) {
    start();
    strcpy(config.player1name, "ABCDEFGHIJKL");
    at(menu.player1nameB.x, menu.player1nameB.y);
    frame();
    FSOUND_StopSound(FSOUND_ALL);
    menu.key = 'm';
    frame();
    EXPECT_EQ(playing(), 0);
}

TEST_F(MenuSound, HoverSoundOnlyWhenComingFromEmptySpace) {
    start();
    EXPECT_EQ(playing(), 0);
    at(menu.aboutB.x, menu.aboutB.y);
    frame();
    EXPECT_EQ(playing(), 1);
    FSOUND_StopSound(FSOUND_ALL);
    frame();
    EXPECT_EQ(playing(), 0);
    // Straight from one button onto another: silent.
    at(menu.trackIncB.x, menu.trackIncB.y);
    frame();
    EXPECT_EQ(playing(), 0);
    at(menu.player1nameB.x, menu.player1nameB.y);
    frame();
    EXPECT_EQ(playing(), 0);
    at(0.02f, 0.98f);
    frame();
    at(menu.opponentsDecB.x, menu.opponentsDecB.y);
    frame();
    EXPECT_EQ(playing(), 1);
}

TEST_F(MenuSound, TheTrackArrowClicksBeforeTheNewTrackLoads) {
    std::filesystem::create_directories("Data/Highscore");
    std::filesystem::create_directories("Data/Ghosts");
    track.ntracks = 2;
    strcpy(track.trackname[1], "bravo");
    config.track = 0;
    // The new track's record table is a pipe: loading it waits until the pipe
    // is opened at our end, and that is when we listen.
    ASSERT_EQ(mkfifo("Data/Highscore/bravo.txt", 0644), 0);
    start();
    at(menu.trackIncB.x, menu.trackIncB.y);
    frame();  // the hover sound comes and goes
    FSOUND_StopSound(FSOUND_ALL);
    std::atomic<int> duringLoad{-1};
    std::thread table([&duringLoad] {
        int fd = -1;
        for (int i = 0; i < 1000 && fd < 0; i++) {
            fd = open("Data/Highscore/bravo.txt", O_WRONLY | O_NONBLOCK);
            if (fd < 0) usleep(10000);
        }
        if (fd < 0) return;
        duringLoad = playing();
        const char text[] = "ZED 12.5\n";
        EXPECT_EQ(write(fd, text, sizeof text - 1), (ssize_t)(sizeof text - 1));
        close(fd);
    });
    mouse.lb = true;
    frame();
    mouse.lb = false;
    table.join();
    EXPECT_EQ(config.track, 1u);
    EXPECT_STREQ(highscore.laprecord_name[0], "ZED");
    EXPECT_EQ(duringLoad, 1) << "the click waited for the track";
}

TEST_F(MenuSound, TheMenuTuneWaitsWhileTheStartUpTuneIsPastItsOpening) {
    config.music = 1;
    menu.init();
    menu.m = MENU_MAIN;
    at(0.02f, 0.98f);
    ASSERT_TRUE(FSOUND_IsPlaying(menu.splashmusic));
    // Let the start-up tune run beyond position 2500.
    for (int i = 0; i < 500 && FSOUND_GetCurrentPosition(menu.splashmusic) <= 2500; i++) usleep(10000);
    ASSERT_GT(FSOUND_GetCurrentPosition(menu.splashmusic), 2500u);
    menu.menumusic = -1;
    frame();
    frame();
    EXPECT_TRUE(FSOUND_IsPlaying(menu.splashmusic));
    EXPECT_FALSE(FSOUND_IsPlaying(menu.menumusic));
    // Once it is over, the menu tune takes over for good.
    FSOUND_StopSound(menu.splashmusic);
    frame();
    int tune = menu.menumusic;
    EXPECT_TRUE(FSOUND_IsPlaying(tune));
    EXPECT_EQ(playing(), 1);
    frame();
    EXPECT_EQ(menu.menumusic, tune);
}

TEST_F(MenuSound, AStartUpTuneNotYetPastItsOpeningIsNotCut) {
    // A quick start reaches the first menu frame before the mixer has played
    // 2500 positions of the start-up tune: it has not come round yet.
    config.music = 1;
    menu.init();
    menu.m = MENU_MAIN;
    at(0.02f, 0.98f);
    FSOUND_SetPaused(menu.splashmusic, 1);
    ASSERT_LE(FSOUND_GetCurrentPosition(menu.splashmusic), 2500u);
    ASSERT_TRUE(FSOUND_IsPlaying(menu.splashmusic));
    int fanfare = menu.splashmusic;
    frame();
    frame();
    EXPECT_TRUE(FSOUND_IsPlaying(fanfare));
    EXPECT_EQ(menu.splashmusic, fanfare);
    EXPECT_EQ(playing(), 1);
    EXPECT_FALSE(FSOUND_IsPlaying(menu.menumusic));
}

TEST_F(MenuSound, AStartUpTuneBackAtItsOpeningGivesWayAtOnce) {
    config.music = 1;
    menu.init();
    menu.m = MENU_MAIN;
    at(0.02f, 0.98f);
    for (int i = 0; i < 500 && FSOUND_GetCurrentPosition(menu.splashmusic) <= 2500; i++) usleep(10000);
    ASSERT_GT(FSOUND_GetCurrentPosition(menu.splashmusic), 2500u);
    menu.menumusic = -1;
    frame();
    ASSERT_TRUE(FSOUND_IsPlaying(menu.splashmusic));
    // It comes round: the same tune on the same channel, from its start.
    int again = FSOUND_PlaySound(menu.splashmusic, menu.iintro);
    ASSERT_GE(again, 0);
    menu.splashmusic = again;
    FSOUND_SetPaused(menu.splashmusic, 1);
    ASSERT_LE(FSOUND_GetCurrentPosition(menu.splashmusic), 2500u);
    frame();
    // The start-up tune was stopped and its channel went to the menu tune.
    EXPECT_EQ(playing(), 1);
    EXPECT_TRUE(FSOUND_IsPlaying(menu.menumusic));
    EXPECT_GE(menu.menumusic, 0);
}

TEST_F(MenuSound, NoTuneWhenMusicIsOff) {
    start();
    frame();
    EXPECT_EQ(playing(), 0);
}

}  // namespace

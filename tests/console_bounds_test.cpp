// Whatever number the console gives a variable, the game stays inside its
// tables: every registered variable in turn, typed in as a player types it
// (F1, "set name value", Return) into the game's own loop, with each of a
// row of values from 0 to the largest the console can store; for each one a
// race starts, runs with all karts sliding (so that skid marks are laid and
// closed) under the chase and the driver's camera, and the menu is shown.
// The sanitizer build stops the program at the first read past a table,
// division by zero or float conversion out of range; in the ordinary build a
// detail level far past its tables or no skid-mark slots at all crash it.

#include <gtest/gtest.h>

#include <GL/gl.h>
#include <SDL/SDL.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "assets/font.h"
#include "frontend/menu.h"
#include "kart/gokart.h"
#include "scene/camera.h"
#include "scene/lensflare.h"
#include "scene/scene.h"
#include "shell/blackbox.h"
#include "shell/bvconfig.h"
#include "shell/keyboard.h"
#include "shell/main.h"
#include "shell/performance.h"
#include "support/bvtest_fixtures.h"

namespace {

namespace fs = std::filesystem;

const long CLOCK0 = 1000000000L;

// From nothing to the console's largest: the edges of the tables (3 detail
// levels and difficulties, 7 karts, 24 colours), far past them, the largest
// 16-bit number and what a value of -1 turns into.
const char* const VALUES[] = {"0", "1", "2", "3", "5", "99", "65535", "4294967295"};

// The variables are shared out among this many test programs, each starting
// the game once, so that no one of them runs long.
const int SHARES = 4;

// The settings of the shipped file with everything at its highest and the
// mouse steering (so that its sensitivity is used), in a 640x480 window.
const char* const SETTINGS =
    "resolution 0\ncolourdepth 1\nviewdistance 3\ndetail 2\nkartshadows 3\ntrackshadows 1\n"
    "soundeffects 1\nsoundvolume 100\nmusic 1\nmusicvolume 80\nbrightness 0\nmousesteering 1\n"
    "mousesensitivity 4\njoysticksteering 0\nlensflare 1\nskidmarks 1\n";

class ConsoleBounds : public ::testing::TestWithParam<int> {
protected:
    void SetUp() override {
        // No sound card on a test machine: OpenAL Soft's null device mixes and plays nowhere.
        setenv("ALSOFT_DRIVERS", "null", 0);
        fs::path game = fs::path(BV_GAME_DIR) / "Data";
        fs::create_directories("Data");
        for (const char* d : {"Ads", "Fonts", "GUI", "Models", "Sounds", "Textures", "Tracks"})
            fs::create_directory_symlink(game / d, fs::path("Data") / d);
        for (const char* d : {"Ghosts", "Highscore", "Screenshots"}) fs::create_directories(fs::path("Data") / d);
        std::ofstream("Data/config.bvd") << SETTINGS;
        startup();
        bvclock_override = CLOCK0;
        // What the settings file has no line for: the fullest race there is.
        config.ngokarts = CONFIG_MAXGOKARTS;
        config.frameratecounter = 2;
        config.ghost = 1;
        pressKey(SDLK_F1);
    }
    // What the game's shutdown gives back, without its saving and exit.
    void TearDown() override {
        bvclock_override = -1;
        killScene();
        lensflare.free();
        menu.free();
        fontFNT.free();
        fontTGA.free();
        blackbox.free();
    }

    bvtest::ScratchDir dir;

    static void pressKey(unsigned int sym) {
        SDL_Event e = {};
        e.type = SDL_KEYDOWN;
        e.key.state = SDL_PRESSED;
        e.key.keysym.sym = (SDLKey)sym;
        ASSERT_EQ(SDL_PushEvent(&e), 0) << "the event queue is full";
    }
    // A console line as typed: letters, digits and blanks, then Return. The
    // next pass of the loop takes it in.
    static void type(const std::string& line) {
        for (char c : line) pressKey((unsigned char)c);
        pressKey(SDLK_RETURN);
    }
    void pass() {
        bool done = false;
        looppass(done);
        ASSERT_FALSE(done);
        ASSERT_NE(menu.m, (unsigned int)MENU_QUIT);
    }
    // Every kart sliding 30 degrees off its heading: a slide that opens new
    // skid marks, or one that closes the marks it opened.
    static void slideAll(bool opening) {
        for (sGokart& k : gokart) {
            k.ups = 12;
            k.may = k.ay + 30;
            k.newSlide = opening;
            if (!opening) k.DELAYslide = 0;
        }
    }

    // One value from the console: a race started with it, driven, seen from
    // two cameras, and the menu.
    void tryValue(unsigned int var, const char* value) {
        const std::string name = config.varN[var];
        SCOPED_TRACE("set " + name + " " + value);
        menu.m = MENU_RACESTART;  // what the race button does
        type("set " + name + " " + value);
        type("cmd reset");
        ASSERT_NO_FATAL_FAILURE(pass());

        // What the console stored: the value, as far as the rules let it be.
        unsigned int expected = (unsigned int)strtoul(value, nullptr, 10);
        if (name == "ngokarts" && expected > CONFIG_MAXGOKARTS) expected = CONFIG_MAXGOKARTS;
        if (name == "nslides" && expected > CONFIG_MAXSLIDES) expected = CONFIG_MAXSLIDES;
        EXPECT_EQ(*config.varP[var], expected);
        ASSERT_EQ(menu.m, (unsigned int)MENU_RACING);

        // Past the start, so that the computer drivers drive.
        bvclock_override += 3 * BV_CLOCKS_PER_SEC;
        camera.mode = CAMERA_CHASE;
        slideAll(true);
        ASSERT_NO_FATAL_FAILURE(pass());
        bvclock_override += BV_CLOCKS_PER_SEC / 30;
        camera.mode = CAMERA_DRIVER;
        slideAll(false);
        ASSERT_NO_FATAL_FAILURE(pass());
        ASSERT_EQ(menu.m, (unsigned int)MENU_RACING);

        menu.m = MENU_ENTER;  // what Escape does
        ASSERT_NO_FATAL_FAILURE(pass());
        ASSERT_EQ(menu.m, (unsigned int)MENU_MAIN);
    }
};

TEST_P(ConsoleBounds, EveryVariableTakesAnyValueInARaceAndTheMenu) {
    ASSERT_GE(config.nVar, 26u);
    int tried = 0;
    for (unsigned int var = GetParam(); var < config.nVar; var += SHARES) {
        const unsigned int before = *config.varP[var];
        for (const char* value : VALUES) {
            ASSERT_NO_FATAL_FAILURE(tryValue(var, value));
            tried++;
        }
        // Back as it was, the way it was changed.
        menu.m = MENU_RACESTART;
        type("set " + std::string(config.varN[var]) + " " + std::to_string(before));
        ASSERT_NO_FATAL_FAILURE(pass());
        EXPECT_EQ(*config.varP[var], before);
    }
    EXPECT_GT(tried, 0);
}

INSTANTIATE_TEST_SUITE_P(Variables, ConsoleBounds, ::testing::Range(0, SHARES));

}  // namespace

// Each way of drawing a frame with less work draws the very same picture:
// the game's own start-up, content and loop body, one race (six computer
// karts, every effect at its highest) and the menu, stepped at a sixtieth of
// a second a frame from the same start, once with a shortcut and once
// without; the read-back windows must be identical to the last bit. A screen
// test: the splash case reads what the X screen shows, so these run alone.

#include <gtest/gtest.h>

#include <GL/gl.h>
#include <SDL/SDL.h>

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "frontend/menu.h"
#include "assets/font.h"
#include "kart/gokart.h"
#include "scene/camera.h"
#include "scene/lensflare.h"
#include "scene/scene.h"
#include "shell/blackbox.h"
#include "shell/bvconfig.h"
#include "shell/main.h"
#include "shell/performance.h"
#include "support/bvtest_fixtures.h"
#include "track/track.h"

namespace {

namespace fs = std::filesystem;

const long CLOCK0 = 1000000000L;

// Karts off the grid (2.5 s) and racing.
const int RACE_FRAMES = 150;
const int MENU_FRAMES = 20;
// The race under other settings: two thirds of a second on the grid.
const int CONDITION_FRAMES = 40;
// With the shadow projectors every shadow triangle is drawn on its own, with its lines.
const int PROJECTOR_FRAMES = 4;

class FrameShortcuts : public ::testing::Test {
protected:
    void SetUp() override {
        // No sound card on a test machine: OpenAL Soft's null device mixes and plays nowhere.
        setenv("ALSOFT_DRIVERS", "null", 0);
        fs::path game = fs::path(BV_GAME_DIR) / "Data";
        fs::create_directories("Data");
        for (const char* d : {"Ads", "Fonts", "GUI", "Models", "Sounds", "Textures"})
            fs::create_directory_symlink(game / d, fs::path("Data") / d);
        if (withTracks)
            fs::create_directory_symlink(game / "Tracks", "Data/Tracks");
        else
            fs::create_directories("Data/Tracks");
        for (const char* d : {"Ghosts", "Highscore", "Screenshots"}) fs::create_directories(fs::path("Data") / d);
        fs::copy_file(game / "config.bvd", "Data/config.bvd");
        startup();
    }
    // What the game's shutdown gives back, without its saving and exit.
    void TearDown() override {
        bvclock_override = -1;
        solid();
        shortcuts = sShortcuts();
        killScene();
        lensflare.free();
        menu.free();
        fontFNT.free();
        fontTGA.free();
        blackbox.free();
    }

    // The heaviest race: six computer karts, every effect at its highest.
    void startRace() {
        for (unsigned int i = 0; i < track.ntracks && i < TRACK_MAXNAMES; i++)
            if (std::string(track.trackname[i]) == "Quarry") config.track = i;
        ASSERT_EQ(std::string(track.trackname[config.track]), "Quarry");
        track.load();
        config.ngokarts = 6;
        config.nhumanplayers = 0;
        config.shadows = 3;
        config.trackshadows = 1;
        config.lensflare = 1;
        config.skidmarks = 1;
        config.fog = 1;
        config.lod = 2;
        menu.m = MENU_RACING;
    }
    // From the same start every time: clock, random numbers, karts, camera, turntables.
    void restart() {
        bvclock_override = CLOCK0;
        srand(1);
        menu.r = 0;
        if (menu.m == MENU_RACING) {
            resetScene();
            camera.mode = view;
        }
        step = 0;
    }
    // `frames` passes of the loop body at a sixtieth of a second each; the window then.
    std::vector<unsigned char> run(int frames) {
        restart();
        for (int i = 0; i < frames; i++) {
            bvclock_override = CLOCK0 + ++step * BV_CLOCKS_PER_SEC / 60;
            performance.fps = 60;
            drawGL();
            if (i + 1 < frames) SDL_GL_SwapBuffers();
        }
        glFinish();
        std::vector<unsigned char> p(config.width * config.height * 3);
        glPixelStorei(GL_PACK_ALIGNMENT, 1);
        glReadPixels(0, 0, config.width, config.height, GL_RGB, GL_UNSIGNED_BYTE, p.data());
        return p;
    }
    // Kept in the build tree for a person to look at, as TGA.
    void keep(const std::vector<unsigned char>& rgb, const std::string& how) {
        const ::testing::TestInfo* info = ::testing::UnitTest::GetInstance()->current_test_info();
        std::string folder = std::string(BV_GAME_DIR) + "/../tests/shortcut_shots";
        fs::create_directories(folder);
        std::vector<unsigned char> bgr = rgb;
        for (size_t i = 0; i + 2 < bgr.size(); i += 3) std::swap(bgr[i], bgr[i + 2]);
        bvtest::writeTGA(folder + "/" + info->name() + "-" + how + ".tga", config.width, config.height, 24, bgr);
    }
    // The picture with every shortcut, and without the one named.
    void expectSamePicture(bool sShortcuts::*which, int frames) {
        sShortcuts plainWay;
        plainWay.*which = false;
        expectSamePicture(plainWay, frames);
    }
    void expectSamePicture(const sShortcuts& plainWay, int frames) {
        shortcuts = sShortcuts();
        std::vector<unsigned char> fast = run(frames);
        shortcuts = plainWay;
        std::vector<unsigned char> plain = run(frames);
        shortcuts = sShortcuts();
        keep(fast, "fast");
        keep(plain, "plain");
        expectSame(fast, plain);
    }
    void expectSame(const std::vector<unsigned char>& fast, const std::vector<unsigned char>& plain) {
        ASSERT_EQ(fast.size(), plain.size());
        size_t differ = 0;
        for (size_t i = 0; i < fast.size(); i++) differ += fast[i] != plain[i];
        EXPECT_EQ(differ, 0u) << "channels that differ, of " << fast.size();
        // A picture, not an empty window: both ways drew something.
        size_t lit = 0;
        for (unsigned char c : fast) lit += c > 16;
        EXPECT_GT(lit, fast.size() / litShare);
    }

    // Each shortcut that changes how a frame is drawn off in turn, and all of
    // them off at once, against the picture with every one of them on.
    void expectSamePictureWithoutEachShortcut(int frames) {
        struct Way {
            const char* name;
            bool sShortcuts::*which;
        };
        const Way ways[] = {{"brightness", &sShortcuts::brightness}, {"sky", &sShortcuts::sky},
                            {"road", &sShortcuts::road},             {"shadowscissor", &sShortcuts::shadowscissor},
                            {"previews", &sShortcuts::previews},     {"all", nullptr}};
        shortcuts = sShortcuts();
        std::vector<unsigned char> fast = run(frames);
        keep(fast, "fast");
        for (const Way& way : ways) {
            SCOPED_TRACE(way.name);
            sShortcuts plainWay;
            if (way.which)
                plainWay.*way.which = false;
            else
                plainWay = everyFrameShortcutOff();
            shortcuts = plainWay;
            std::vector<unsigned char> plain = run(frames);
            shortcuts = sShortcuts();
            keep(plain, std::string("plain-") + way.name);
            expectSame(fast, plain);
        }
    }

    // Every shortcut that changes how a race or menu frame is drawn, all off
    // at once: together they draw what the game drew before any of them.
    static sShortcuts everyFrameShortcutOff() {
        sShortcuts plain;
        plain.brightness = plain.sky = plain.previews = plain.road = plain.shadowscissor = false;
        return plain;
    }

    // The same in the driver's, trackside and high views (the chase view is the race's own).
    void expectSamePictureInTheOtherViews(bool sShortcuts::*which) {
        for (unsigned int mode : {CAMERA_DRIVER, CAMERA_TRACKSIDE, CAMERA_HIGH}) {
            SCOPED_TRACE(mode);
            view = mode;
            expectSamePicture(which, RACE_FRAMES / 2);
        }
    }

    bvtest::ScratchDir dir;
    long step = 0;
    unsigned int view = CAMERA_CHASE;
    bool withTracks = true;
    // At least this part of the window's channels is lit in a picture: less
    // in wireframe, and without a track, whose sky is fogged to black.
    size_t litShare = 4;
};

// The same game with an empty Data/Tracks: no track is loaded, and a race is
// the karts under the sky with no ground.
class FrameShortcutsWithoutATrack : public FrameShortcuts {
protected:
    FrameShortcutsWithoutATrack() {
        withTracks = false;
        litShare = 200;
    }
    void startRace() {
        ASSERT_EQ(track.ntracks, 0u);
        ASSERT_EQ(track.LIST_ground, 0u) << "no ground without a track";
        config.ngokarts = 6;
        config.nhumanplayers = 0;
        config.shadows = 3;
        config.trackshadows = 1;
        config.lensflare = 1;
        config.skidmarks = 1;
        config.fog = 1;
        config.lod = 2;
        menu.m = MENU_RACING;
    }
};

TEST_F(FrameShortcuts, BrightnessAtZeroIsLeftOutOfTheRace) {
    ASSERT_EQ(config.gammacorrection, 0u);
    startRace();
    expectSamePicture(&sShortcuts::brightness, RACE_FRAMES);
}

TEST_F(FrameShortcuts, BrightnessAtZeroIsLeftOutOfTheMenu) {
    ASSERT_EQ(config.gammacorrection, 0u);
    expectSamePicture(&sShortcuts::brightness, MENU_FRAMES);
}

TEST_F(FrameShortcuts, TheSkyDrawnAroundTheGroundLooksAsTheSkyDrawnUnderIt) {
    startRace();
    expectSamePicture(&sShortcuts::sky, RACE_FRAMES);
}

TEST_F(FrameShortcuts, TheSkyDrawnAroundTheGroundLooksTheSameInEveryView) {
    startRace();
    expectSamePictureInTheOtherViews(&sShortcuts::sky);
}

TEST_F(FrameShortcuts, TheRoadDrawnBeforeTheDirtLooksAsTheRoadDrawnOverIt) {
    startRace();
    expectSamePicture(&sShortcuts::road, RACE_FRAMES);
}

TEST_F(FrameShortcuts, TheRoadDrawnBeforeTheDirtLooksTheSameInEveryView) {
    startRace();
    expectSamePictureInTheOtherViews(&sShortcuts::road);
}

TEST_F(FrameShortcuts, TheGroundsDarkerPassesKeptToTheShadowsLookAsDrawnOverTheWholeWindow) {
    startRace();
    expectSamePicture(&sShortcuts::shadowscissor, RACE_FRAMES);
}

TEST_F(FrameShortcuts, TheGroundsDarkerPassesKeptToTheShadowsLookTheSameInEveryView) {
    startRace();
    expectSamePictureInTheOtherViews(&sShortcuts::shadowscissor);
}

TEST_F(FrameShortcuts, TheGroundsDarkerPassesKeptToTheShadowsLookTheSameInTheMenu) {
    expectSamePicture(&sShortcuts::shadowscissor, MENU_FRAMES);
}

// The scissor rectangle after a frame, cut to the window: x0, y0, x1, y1.
std::array<int, 4> shadowsRectangle() {
    GLint box[4];
    glGetIntegerv(GL_SCISSOR_BOX, box);
    return {std::max(box[0], 0), std::max(box[1], 0), std::min(box[0] + box[2], (int)config.width),
            std::min(box[1] + box[3], (int)config.height)};
}

// How many pixels the shadows marked in the stencil, and how many of them
// lie outside the rectangle.
std::pair<size_t, size_t> markedOutside(const std::array<int, 4>& r) {
    std::vector<unsigned char> stencil(config.width * config.height);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, config.width, config.height, GL_STENCIL_INDEX, GL_UNSIGNED_BYTE, stencil.data());
    size_t marked = 0, outside = 0;
    for (int y = 0; y < (int)config.height; y++)
        for (int x = 0; x < (int)config.width; x++)
            if (stencil[y * config.width + x] & 1) {
                marked++;
                outside += x < r[0] || y < r[1] || x >= r[2] || y >= r[3];
            }
    return {marked, outside};
}

TEST_F(FrameShortcuts, TheShadowsRectangleHoldsEveryShadowAndLeavesOutTheSky) {
    startRace();
    for (unsigned int mode : {CAMERA_CHASE, CAMERA_DRIVER, CAMERA_TRACKSIDE, CAMERA_HIGH}) {
        SCOPED_TRACE(mode);
        view = mode;
        run(RACE_FRAMES / 2);
        std::array<int, 4> r = shadowsRectangle();
        auto [marked, outside] = markedOutside(r);
        EXPECT_GT(marked, 1000u);
        EXPECT_EQ(outside, 0u) << r[0] << " " << r[1] << " " << r[2] << " " << r[3];
        if (mode == CAMERA_CHASE) {
            EXPECT_LT(r[3], (int)config.height * 3 / 4) << "the sky is in it";
        }
    }
}

TEST_F(FrameShortcuts, TheShadowsRectangleOfOneKartIsSmall) {
    startRace();
    config.ngokarts = 1;
    config.trackshadows = 0;
    run(RACE_FRAMES);
    std::array<int, 4> r = shadowsRectangle();
    auto [marked, outside] = markedOutside(r);
    EXPECT_GT(marked, 1000u);
    EXPECT_EQ(outside, 0u);
    EXPECT_GT((r[2] - r[0]) * (r[3] - r[1]), 0);
    EXPECT_LT((r[2] - r[0]) * (r[3] - r[1]), (int)(config.width * config.height / 4))
        << r[0] << " " << r[1] << " " << r[2] << " " << r[3];
}

TEST_F(FrameShortcuts, NoShadowsRectangleInTheMenu) {
    run(2);
    std::array<int, 4> r = shadowsRectangle();
    EXPECT_TRUE(r[2] <= r[0] || r[3] <= r[1]) << r[0] << " " << r[1] << " " << r[2] << " " << r[3];
    // Without the shortcut the darker passes may shade anywhere.
    shortcuts.shadowscissor = false;
    run(2);
    shortcuts = sShortcuts();
    r = shadowsRectangle();
    EXPECT_EQ(r[0], 0);
    EXPECT_EQ(r[1], 0);
    EXPECT_EQ(r[2], (int)config.width);
    EXPECT_EQ(r[3], (int)config.height);
}

TEST_F(FrameShortcuts, EveryShortcutTogetherLooksAsNoneInTheRace) {
    startRace();
    expectSamePicture(everyFrameShortcutOff(), RACE_FRAMES);
}

TEST_F(FrameShortcuts, EveryShortcutTogetherLooksAsNoneInTheMenu) {
    expectSamePicture(everyFrameShortcutOff(), MENU_FRAMES);
}

TEST_F(FrameShortcuts, PreviewsCopiedInTheDriverLookAsPreviewsReadBackAndUploaded) {
    expectSamePicture(&sShortcuts::previews, MENU_FRAMES);
}

// The About, Credits and Records backdrops are loaded with everything else
// at start-up, each with its line in the log, right after the main menu's;
// opening their screens loads nothing more, and each shows what was loaded.
TEST_F(FrameShortcuts, TheScreensBackdropsAreLoadedAtStartUpAndOpeningThemLoadsNothing) {
    const std::string log = bvtest::readFile("Data/blackbox.bvd");
    size_t at = log.find("Loading texture f : Data/GUI/main.tga [OK]\n");
    ASSERT_NE(at, std::string::npos) << log;
    for (const char* name : {"about", "credits", "records"}) {
        std::string line = std::string("Loading texture f : Data/GUI/") + name + ".tga [OK]\n";
        size_t next = log.find(line, at);
        EXPECT_NE(next, std::string::npos) << line << log;
        EXPECT_EQ(log.find(line), log.rfind(line)) << "loaded once: " << line;
        if (next != std::string::npos) at = next;
    }
    EXPECT_LT(at, log.find("Loading texture f : Data/GUI/aboutB.tga")) << "before the buttons";

    const unsigned int screens[3] = {MENU_ABOUT, MENU_CREDITS, MENU_RECORDS};
    const unsigned int held[3] = {menu.tgaAbout, menu.tgaCredits, menu.tgaRecords};
    for (unsigned int texture : held) EXPECT_TRUE(texture != 0 && glIsTexture(texture));
    std::vector<unsigned char> shown[3];
    for (int i = 0; i < 3; i++) {
        SCOPED_TRACE(screens[i]);
        menu.m = MENU_MAIN;
        run(2);
        menu.m = screens[i];
        shown[i] = run(3);
        EXPECT_EQ(menu.m, screens[i]);
        keep(shown[i], std::to_string(i));
        size_t lit = 0;
        for (unsigned char c : shown[i]) lit += c > 16;
        EXPECT_GT(lit, shown[i].size() / 4) << "the backdrop is on show";
    }
    menu.m = MENU_MAIN;
    run(1);
    EXPECT_TRUE(shown[0] != shown[1] && shown[1] != shown[2] && shown[0] != shown[2]);
    const unsigned int after[3] = {menu.tgaAbout, menu.tgaCredits, menu.tgaRecords};
    for (int i = 0; i < 3; i++) {
        EXPECT_EQ(after[i], held[i]) << "the same picture, held throughout";
        EXPECT_TRUE(glIsTexture(after[i]));
    }
    EXPECT_EQ(bvtest::readFile("Data/blackbox.bvd"), log) << "nothing loaded as the screens opened";
}

// Without a track there is no ground to draw the sky around: the sky is
// drawn all the same, as it is without the shortcut.
TEST_F(FrameShortcutsWithoutATrack, TheSkyIsDrawnWithoutAGround) {
    startRace();
    expectSamePicture(&sShortcuts::sky, CONDITION_FRAMES);
}

TEST_F(FrameShortcutsWithoutATrack, EachShortcutLooksAsTheRaceWithoutIt) {
    startRace();
    expectSamePictureWithoutEachShortcut(CONDITION_FRAMES);
}

TEST_F(FrameShortcutsWithoutATrack, EachShortcutLooksAsTheMenuWithoutIt) {
    expectSamePictureWithoutEachShortcut(MENU_FRAMES);
}

// The lines from the light past each shadow are drawn before the ground: the
// ground covers those below the horizon, and those above stay over the sky.
TEST_F(FrameShortcuts, TheShadowProjectorsAboveTheHorizonStayOverTheSky) {
    startRace();
    config.shadowprojectors = 1;
    expectSamePicture(&sShortcuts::sky, PROJECTOR_FRAMES);
}

TEST_F(FrameShortcuts, EachShortcutLooksAsTheRaceWithoutItWithShadowProjectors) {
    startRace();
    config.shadowprojectors = 1;
    expectSamePictureWithoutEachShortcut(PROJECTOR_FRAMES);
}

// In wireframe a pixel where several of the dirt's lines meet shows the last
// one drawn over it.
TEST_F(FrameShortcuts, TheGroundInWireframeLooksAsWithoutTheSkyShortcut) {
    startRace();
    wireframe();
    litShare = 200;
    expectSamePicture(&sShortcuts::sky, CONDITION_FRAMES);
}

TEST_F(FrameShortcuts, EachShortcutLooksAsTheRaceWithoutItInWireframe) {
    startRace();
    wireframe();
    litShare = 200;
    expectSamePictureWithoutEachShortcut(CONDITION_FRAMES);
}

TEST_F(FrameShortcuts, EachShortcutLooksAsTheMenuWithoutItInWireframe) {
    wireframe();
    litShare = 200;
    expectSamePictureWithoutEachShortcut(MENU_FRAMES);
}

TEST_F(FrameShortcuts, EachShortcutLooksAsTheRaceWithoutItWithFogOff) {
    startRace();
    config.fog = 0;
    expectSamePictureWithoutEachShortcut(CONDITION_FRAMES);
}

TEST_F(FrameShortcuts, EachShortcutLooksAsTheMenuWithoutItWithFogOff) {
    config.fog = 0;
    expectSamePictureWithoutEachShortcut(MENU_FRAMES);
}

TEST_F(FrameShortcuts, EachShortcutLooksAsTheRaceWithoutItWithTheBrightnessUp) {
    startRace();
    config.gammacorrection = 30;
    expectSamePictureWithoutEachShortcut(CONDITION_FRAMES);
}

TEST_F(FrameShortcuts, EachShortcutLooksAsTheMenuWithoutItWithTheBrightnessUp) {
    config.gammacorrection = 30;
    expectSamePictureWithoutEachShortcut(MENU_FRAMES);
}

TEST_F(FrameShortcuts, EachShortcutLooksAsTheRaceWithoutItAtTheLowestDetail) {
    startRace();
    config.lod = 0;
    expectSamePictureWithoutEachShortcut(CONDITION_FRAMES);
}

TEST_F(FrameShortcuts, EachShortcutLooksAsTheMenuWithoutItAtTheLowestDetail) {
    config.lod = 0;
    expectSamePictureWithoutEachShortcut(MENU_FRAMES);
}

// The start-up in a child process (a process starts up once), with or
// without the splash shortcut: what the screen shows across the loading bar
// when loading is done, then the first menu frame, written to a file.
std::string startupPicture(bool fast, const std::string& out) {
    pid_t pid = fork();
    if (pid == 0) {
        shortcuts.splash = fast;
        startup();
        std::ofstream f(out, std::ios::binary);
        for (int x = 0; x < 1024; x += 3) {
            bvtest::Pixel p = bvtest::screenPixel(x, (int)(0.1525 * 768));
            f << (char)p.r << (char)p.g << (char)p.b;
        }
        // The loop body's drawing at a fixed rate: the previews turn by the frame rate.
        performance.fps = 60;
        drawGL();
        glFinish();
        std::vector<unsigned char> p(config.width * config.height * 3);
        glPixelStorei(GL_PACK_ALIGNMENT, 1);
        glReadPixels(0, 0, config.width, config.height, GL_RGB, GL_UNSIGNED_BYTE, p.data());
        f.write((const char*)p.data(), (std::streamsize)p.size());
        f.close();
        _exit(f ? 0 : 1);
    }
    int status = 0;
    waitpid(pid, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    return bvtest::readFile(out);
}

TEST(SplashShortcut, TheSplashDrawnOnlyWhenTheBarGrowsEndsAsTheSplashDrawnForEveryFile) {
    bvtest::ScratchDir dir;
    setenv("ALSOFT_DRIVERS", "null", 0);
    fs::path game = fs::path(BV_GAME_DIR) / "Data";
    fs::create_directories("Data");
    for (const char* d : {"Ads", "Fonts", "GUI", "Models", "Sounds", "Textures", "Tracks"})
        fs::create_directory_symlink(game / d, fs::path("Data") / d);
    for (const char* d : {"Ghosts", "Highscore", "Screenshots"}) fs::create_directories(fs::path("Data") / d);
    fs::copy_file(game / "config.bvd", "Data/config.bvd");
    std::string plain = startupPicture(false, "plain.rgb");
    std::string fast = startupPicture(true, "fast.rgb");
    ASSERT_GT(plain.size(), 1024u * 768 * 3);
    ASSERT_EQ(plain.size(), fast.size());
    const size_t bar = (1024 + 2) / 3 * 3;
    EXPECT_TRUE(plain.compare(0, bar, fast, 0, bar) == 0) << "the loading bar on the screen differs";
    EXPECT_TRUE(plain.compare(bar, std::string::npos, fast, bar, std::string::npos) == 0)
        << "the first menu frame differs";
}

}  // namespace

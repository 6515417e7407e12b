// A race driven through the real binary: the player holds the throttle and
// takes screenshots with F12, as a person at the keyboard would.

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <thread>

#include "support/bvtest.h"

using namespace bvtest;
namespace fs = std::filesystem;

namespace {

void copyGameData(const ScratchDir& dir) {
    fs::remove_all(dir.path() + "/Data");
    fs::copy(std::string(BV_GAME_DIR) + "/Data", dir.path() + "/Data", fs::copy_options::recursive);
    fs::remove(dir.path() + "/Data/blackbox.bvd");
    fs::remove(dir.path() + "/Data/gencon.bvd");
    writeFile(dir.path() + "/Data/config.bvd", readFile(std::string(BV_SOURCE_DIR) + "/data/config.bvd"));
}

void sleep(double seconds) {
    std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
}

// Holds F12 until the game has written the file: a tap could come and go
// between two frames.
bool screenshot(const std::string& file) {
    run("xdotool keydown F12");
    bool written = false;
    for (int i = 0; i < 100 && !written; i++) {
        sleep(0.05);
        written = fileExists(file) && fs::file_size(file) == 18 + 1024 * 768 * 3;
    }
    run("xdotool keyup F12");
    return written;
}

struct Shot {
    std::string data;
    // Blue, green, red of a pixel, x and y from the bottom left, in fractions.
    int b(double x, double y) const { return at(x, y, 0); }
    int g(double x, double y) const { return at(x, y, 1); }
    int r(double x, double y) const { return at(x, y, 2); }
    int at(double x, double y, int c) const {
        size_t px = (size_t)(x * 1023), py = (size_t)(y * 767);
        return (unsigned char)data[18 + (py * 1024 + px) * 3 + c];
    }
    // Pixels of the region that the test counts.
    template <class F>
    int count(double x0, double x1, double y0, double y1, F f) const {
        int n = 0;
        for (double y = y0; y < y1; y += 1 / 767.0)
            for (double x = x0; x < x1; x += 1 / 1023.0)
                if (f(r(x, y), g(x, y), b(x, y))) n++;
        return n;
    }
};

int redKart(const Shot& s) {
    return s.count(0.3, 0.7, 0.05, 0.4, [](int r, int g, int b) { return r > 150 && g < 60 && b < 60; });
}

// The dark chequers and posts of the finish gantry where its beam crosses
// the picture above the start straight.
int gantry(const Shot& s) {
    return s.count(0.35, 0.75, 0.88, 0.95, [](int r, int g, int b) { return r < 60 && g < 60 && b < 60; });
}

std::string shotName(int i) {
    char name[64];
    snprintf(name, sizeof name, "Data/Screenshots/shot%03d.tga", i);
    return name;
}

// Holding F12 writes a picture every frame: the next press starts after the
// last of them.
int nextShot() {
    int i = 0;
    while (fileExists(shotName(i))) i++;
    return i;
}

TEST(E2ERace, HoldingTheThrottleDrivesTheKartPastTheFinishGantry) {
    ScratchDir dir;
    copyGameData(dir);
    GameProcess game(dir.path(), {"ALSOFT_CONF=" + waveConf(dir.path())});
    ASSERT_NE(game.window(), 0ul) << game.output();
    // The race button of the main menu, held for a few frames as a hand does.
    sleep(3);
    run("xdotool mousemove --sync 888 676 mousedown 1 sleep 0.4 mouseup 1 mousemove --sync 300 40");

    // On the grid, once the race is on and the chase view has settled behind
    // the kart (the first frame after loading swings it about).
    int tries = 0;
    Shot before;
    for (; tries < 40; tries++) {
        std::string name = shotName(nextShot());
        ASSERT_TRUE(screenshot(name));
        before.data = readFile(name);
        if (redKart(before) > 1500 && gantry(before) > 2000) break;
        sleep(0.25);
    }
    ASSERT_LT(tries, 40) << "the race never showed the kart on the grid";

    run("xdotool keydown Up");
    sleep(7);
    run("xdotool keyup Up");
    sleep(0.5);  // for the last frames of the F12 press to land
    std::string name = shotName(nextShot());
    ASSERT_TRUE(screenshot(name));
    Shot after{readFile(name)};
    game.closeWindow();
    EXPECT_EQ(game.wait(), 0);

    // The chase view keeps the red kart in the lower middle.
    EXPECT_GT(redKart(after), 1500);
    // The gantry that stood ahead of the grid is behind the kart now.
    EXPECT_LT(gantry(after), 200);

    std::string log = readFile("Data/blackbox.bvd");
    EXPECT_NE(log.find("Saving screenshot [OK]"), std::string::npos) << log;
    EXPECT_EQ(log.find(" [  ]"), std::string::npos) << log;
}

}  // namespace

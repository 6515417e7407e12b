#ifndef BV_TESTS_KART_FIXTURES_H
#define BV_TESTS_KART_FIXTURES_H

// Circuits, stand-in kart content and a race-frame driver shared by the
// kart_* test programs. Races run on simulated time: the frame rate is fixed
// and the clock is stepped by one frame at a time.

#include <SDL/SDL.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "kart/gokart.h"
#include "scene/scene.h"
#include "shell/blackbox.h"
#include "shell/bvconfig.h"
#include "shell/keyboard.h"
#include "shell/performance.h"
#include "support/bvtest_fixtures.h"
#include "track/track.h"

namespace kartfix {

struct Pt {
    double x, z;
};

// A world coordinate as a track-file value at the scale of 0.125.
inline int fileValue(double w) {
    return (int)std::lround(w / 0.125) + 256;
}

// The centre line of our test circuit: a rounded rectangle driven
// anticlockwise seen from above. Its start straight runs towards -z along
// x = 27.25, right through the fixed starting grid, and the finish line is at
// z = 2.5. Corners have radius `radius`; the road is 2 * half wide.
struct Circuit {
    double xr = 27.25, xl = -24, zt = -24, zb = 24, radius = 10, half = 3.5, finish = 2.5;

    double length() const {
        return 2 * (zb - zt - 2 * radius) + 2 * (xr - xl - 2 * radius) + 2 * M_PI * radius;
    }
    // Point and direction at distance s along the centre line from the finish.
    void at(double s, Pt* p, Pt* dir) const {
        s = std::fmod(s, length());
        if (s < 0) s += length();
        struct Piece {
            double len;
            bool arc;
            Pt a;  // start of a straight or centre of an arc
            Pt d;  // direction of a straight or start angle of an arc (d.x)
        };
        const double r = radius, q = M_PI / 2 * r;
        const Piece pieces[9] = {
            {finish - (zt + r), false, {xr, finish}, {0, -1}},
            {q, true, {xr - r, zt + r}, {0, 0}},
            {xr - xl - 2 * r, false, {xr - r, zt}, {-1, 0}},
            {q, true, {xl + r, zt + r}, {M_PI / 2, 0}},
            {zb - zt - 2 * r, false, {xl, zt + r}, {0, 1}},
            {q, true, {xl + r, zb - r}, {M_PI, 0}},
            {xr - xl - 2 * r, false, {xl + r, zb}, {1, 0}},
            {q, true, {xr - r, zb - r}, {3 * M_PI / 2, 0}},
            {zb - r - finish, false, {xr, zb - r}, {0, -1}},
        };
        for (const Piece& piece : pieces) {
            if (s <= piece.len || &piece == &pieces[8]) {
                if (!piece.arc) {
                    *p = {piece.a.x + piece.d.x * s, piece.a.z + piece.d.z * s};
                    *dir = piece.d;
                } else {
                    // Angle measured from +x towards -z; turning left means
                    // the angle grows.
                    double a = piece.d.x + s / r;
                    *p = {piece.a.x + r * std::cos(a), piece.a.z - r * std::sin(a)};
                    *dir = {-std::sin(a), -std::cos(a)};
                }
                return;
            }
            s -= piece.len;
        }
    }
    // The track file with n left/right pairs, pair 0 on the finish line.
    std::string file(unsigned int n, int fog = 80) const {
        std::string text = "0 0\n" + std::to_string(fog) + "\n";
        for (unsigned int i = 0; i < n; i++) {
            Pt p, d;
            at(length() * i / n, &p, &d);
            Pt left = {d.z, -d.x};  // a quarter turn anticlockwise of the direction
            text += "LR " + std::to_string(fileValue(p.x + left.x * half)) + " " +
                    std::to_string(fileValue(p.z + left.z * half)) + " " +
                    std::to_string(fileValue(p.x - left.x * half)) + " " +
                    std::to_string(fileValue(p.z - left.z * half)) + "\n";
        }
        for (unsigned int i = 0; i < n; i += 4) {
            Pt p, d;
            at(length() * i / n, &p, &d);
            text += "C " + std::to_string(fileValue(p.x)) + " " + std::to_string(fileValue(p.z)) + "\n";
        }
        return text;
    }
};

// The pairs of a track file, written point by point in file units.
inline std::string pairsFile(const std::vector<std::array<int, 4>>& pairs) {
    std::string text = "0 0\n80\n";
    for (const auto& p : pairs)
        text += "LR " + std::to_string(p[0]) + " " + std::to_string(p[1]) + " " + std::to_string(p[2]) + " " +
                std::to_string(p[3]) + "\n";
    return text;
}

// The scene's race clock starts when the race is reset; simulated frames
// step the kart clock by exactly one frame each.
class KartTest : public ::testing::Test {
protected:
    static constexpr long CLOCK0 = 1000000000L;

    void SetUp() override {
        for (const char* d : {"Data/Tracks", "Data/Models", "Data/Textures", "Data/Sounds"})
            std::filesystem::create_directories(d);
        blackbox.init("Data/blackbox.bvd", false);
        config.init("Data/config.bvd");
        bvtest::openWindow(64, 64);
        config.mousesteering = 0;
        config.joysticksteering = 0;
        config.soundeffects = 0;
        config.ngokarts = 1;
        config.nhumanplayers = 1;
        performance.fps = 60;
        bvclock_override = CLOCK0;
        startClock();
    }
    // The kart data is given back whole, as the game's shutdown does.
    void TearDown() override {
        gokartstaticdata.free();
        gokartstaticdata.freeKept();
        bvclock_override = -1;
    }

    // Writes a track file and loads it the way the scene does.
    void loadTrack(const std::string& name, const std::string& contents) {
        bvtest::writeFile("Data/Tracks/" + name + ".txt", contents);
        selectTrack(name);
    }
    void selectTrack(const std::string& name) {
        track.init(0.125f);
        int found = -1;
        for (unsigned int i = 0; i < track.ntracks; i++)
            if (name == track.trackname[i]) found = (int)i;
        ASSERT_GE(found, 0) << name;
        config.track = (unsigned int)found;
        track.load();
    }
    // Kart data and all seven karts on the grid, as the scene's set-up and reset do.
    void startRace() {
        gokartstaticdata.init();
        for (unsigned char i = 0; i < GOKART_NKARTS; i++) gokart[i].init(i);
        startClock();
    }
    // The race clock at its start, and the scene's start clock with it (as
    // the scene's reset sets it); no key held.
    void startClock() {
        frames = 0;
        ::s = ::e = CLOCK0;
        ::t = 0;
        for (unsigned int p = 0; p < 2; p++)
            for (unsigned int c = 0; c < 4; c++) {
                keyboard.key[KEYS[p][c]] = false;
                left[p][c] = false;
            }
    }
    // The race already under way: the start clock has run out, so player 1's
    // pedals count from the next frame on, and the computer's drivers drive.
    void runOutStartClock() {
        ::s = CLOCK0 - 4 * BV_CLOCKS_PER_SEC;
        ::t = 4;
    }
    double raceTime() const { return frames / (double)fps(); }
    int fps() const { return (int)performance.fps; }
    void tick() {
        frames++;
        bvclock_override = CLOCK0 + (long)(frames * 1000000LL / fps());
    }
    // One race frame's simulation, run by the scene itself. A command the
    // test has put into a human kart is a key its player holds from then on;
    // the kart gets it when the scene reads the keys, so player 1's pedals
    // wait for the start as in a race.
    void frame() {
        tick();
        holdKeys();
        raceStep();
        for (unsigned int p = 0; p < 2; p++)
            for (unsigned int c = 0; c < 4; c++) left[p][c] = *command(gokart[p], c);
    }
    // A lone kart's own frame: its outline, then its move.
    void drive(sGokart& k, int n = 1) {
        for (int i = 0; i < n; i++) {
            tick();
            k.colide();
            k.move();
        }
    }

    bvtest::ScratchDir dir;
    long frames = 0;

private:
    // Each human player's keys as the scene reads them: left, right, up, down.
    static constexpr int KEYS[2][4] = {{SDLK_LEFT, SDLK_RIGHT, SDLK_UP, SDLK_DOWN}, {'j', 'l', 'i', 'k'}};
    static bool* command(sGokart& k, unsigned int c) {
        bool* commands[4] = {&k.kLEFT, &k.kRIGHT, &k.kUP, &k.kDOWN};
        return commands[c];
    }
    // What the test changed in a human kart's commands since the last frame
    // goes to its player's key, and the kart has back what the race left in it.
    void holdKeys() {
        for (unsigned int p = 0; p < 2 && p < config.nhumanplayers; p++)
            for (unsigned int c = 0; c < 4; c++) {
                bool* k = command(gokart[p], c);
                if (*k == left[p][c]) continue;
                keyboard.key[KEYS[p][c]] = *k;
                *k = left[p][c];
            }
    }
    // The commands the last frame left in karts 0 and 1.
    bool left[2][4] = {};
};

// On the test circuit's start straight, whose right barrier is the line
// x = 30.75 with its normal pointing back across the road (-x).
class BarrierTest : public KartTest {
protected:
    void SetUp() override {
        KartTest::SetUp();
        loadTrack("oval", Circuit().file(100));
        startRace();
    }
    sGokart& k = gokart[0];
};

}  // namespace kartfix

#endif

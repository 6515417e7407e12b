#ifndef BV_TESTS_EFFECTS_FIXTURES_H
#define BV_TESTS_EFFECTS_FIXTURES_H

// Shared by the shadow, skid-mark and lens-flare tests: the generated kart
// content made available to a scratch directory, and pictures kept for a
// person to look at.

#include <GL/gl.h>

#include <filesystem>
#include <string>
#include <vector>

#include "shell/blackbox.h"
#include "shell/bvconfig.h"
#include "shell/main.h"
#include "support/bvtest_fixtures.h"
#include "support/glreads.h"

namespace effects {

namespace fs = std::filesystem;

// The game's own models and pictures, as the build generated them, seen from
// the scratch directory's Data/ (which stays ours to write in).
inline bool linkGameContent() {
    fs::path game = fs::path(BV_GAME_DIR) / "Data";
    if (!fs::exists(game / "Models") || !fs::exists(game / "Textures")) return false;
    fs::create_directories("Data");
    for (const char* d : {"Models", "Textures", "Sounds", "Tracks", "Ads"})
        if (fs::exists(game / d) && !fs::exists(fs::path("Data") / d))
            fs::create_directory_symlink(game / d, fs::path("Data") / d);
    return true;
}

// The game's window with its own GL state, on the built-in settings (there
// is no settings file in the scratch directory) and without sound. The
// ground's shading goes through glColor with lighting on, so initGL matters.
inline void openGameWindow(int width, int height) {
    blackbox.init("Data/blackbox.bvd", false);
    config.init("Data/config.bvd");
    bvtest::openWindow(width, height);
    config.soundeffects = 0;
    initGL();
}

using bvtest::frame;

// Keeps what the test saw, as TGA, beside the other tests' pictures.
inline void keepShot(const std::string& name) {
    bvtest::keepShot("effects_shots", name);
}

// Mean of the three colour channels over a square of pixels round (x, y).
inline double brightnessAround(int x, int y, int r) {
    double sum = 0;
    int n = 0;
    for (int dy = -r; dy <= r; dy++)
        for (int dx = -r; dx <= r; dx++) {
            bvtest::Pixel p = bvtest::readPixel(x + dx, y + dy);
            sum += p.r + p.g + p.b;
            n += 3;
        }
    return sum / n;
}

}  // namespace effects

#endif

// The evening sky over the race: from the starting grid of every shipped
// track, in every view, the sky above the horizon shows its gradient and its
// clouds through the track's fog instead of a flat grey band.

#include <gtest/gtest.h>

#include <GL/gl.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "assets/font.h"
#include "frontend/menu.h"
#include "kart/gokart.h"
#include "scene/camera.h"
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

const int W = 640, H = 480;
const unsigned int NVIEWS = 5;

// What the upper quarter of a picture is like.
struct SkyBand {
    double spread = 0;   // standard deviation of the brightness
    double offFog = 0;   // share of pixels well away from the fog colour
};

class ContentSky : public bvtest::RaceSceneTest {
protected:
    void SetUp() override {
        copyGameData();
        openGame(W, H);
        if (HasFatalFailure()) return;
        config.ngokarts = 6;
        config.nhumanplayers = 1;
        // The race texts stand in the upper quarter: only the sky is measured.
        config.hud = 0;
        readyGame();
    }
    // The race on `name` as the menu starts it, standing on the grid.
    void startOn(const std::string& name) {
        bool found = false;
        for (unsigned int i = 0; i < track.ntracks; i++)
            if (name == track.trackname[i]) {
                config.track = i;
                found = true;
            }
        ASSERT_TRUE(found) << name;
        if (!scene) {
            initScene();
            scene = true;
        } else {
            track.load();
        }
        restart();
        frame();
    }
    // Back on the grid in the view `mode`, once the eased views have settled
    // and before the start releases the karts.
    void selectView(unsigned int mode) {
        restart();
        keyboard.key['1' + mode] = true;
        frame();
        keyboard.key['1' + mode] = false;
        while (frames < 20) frame();
        ASSERT_EQ(camera.mode, mode);
    }

    SkyBand upperQuarter(const std::string& keep) {
        std::vector<unsigned char> p(W * H * 3);
        glPixelStorei(GL_PACK_ALIGNMENT, 1);
        glReadPixels(0, 0, W, H, GL_RGB, GL_UNSIGNED_BYTE, p.data());
        if (!keep.empty()) {
            std::vector<unsigned char> bgr = p;
            for (size_t i = 0; i < bgr.size(); i += 3) std::swap(bgr[i], bgr[i + 2]);
            std::string dir = std::string(BV_GAME_DIR) + "/../tests/sky_shots";
            fs::create_directories(dir);
            bvtest::writeTGA(dir + "/" + keep + ".tga", W, H, 24, bgr);
        }
        const double fog[3] = {FogColor[0] * 255.0, FogColor[1] * 255.0, FogColor[2] * 255.0};
        double sum = 0, sum2 = 0;
        int n = 0, off = 0;
        for (int y = H * 3 / 4; y < H; y++)
            for (int x = 0; x < W; x++) {
                const unsigned char* q = &p[(y * W + x) * 3];
                double v = (q[0] + q[1] + q[2]) / 3.0;
                sum += v;
                sum2 += v * v;
                n++;
                double d = 0;
                for (int c = 0; c < 3; c++) d = std::max(d, std::fabs(q[c] - fog[c]));
                if (d > 20) off++;
            }
        SkyBand band;
        double mean = sum / n;
        band.spread = std::sqrt(std::max(0.0, sum2 / n - mean * mean));
        band.offFog = (double)off / n;
        return band;
    }

    bool scene = false;
};

const char* const TRACKS[] = {"Harbour", "Millbrook", "Pinewood", "Quarry", "Riverside"};
const char* const VIEWS[NVIEWS] = {"driver", "chase", "trackside", "high", "free"};

TEST_F(ContentSky, TheEveningSkyShowsAboveTheGridOfEveryTrackInEveryView) {
    for (const char* name : TRACKS) {
        startOn(name);
        for (unsigned int mode = 0; mode < NVIEWS; mode++) {
            selectView(mode);
            SkyBand band = upperQuarter(std::string(name) + "_" + VIEWS[mode]);
            std::printf("%-10s %-9s spread %5.1f off the fog %4.2f\n", name, VIEWS[mode], band.spread, band.offFog);
            EXPECT_GT(band.spread, 6.0) << name << " in the " << VIEWS[mode] << " view";
            EXPECT_GT(band.offFog, 0.5) << name << " in the " << VIEWS[mode] << " view";
        }
    }
}

TEST_F(ContentSky, ASkyOfTheFogsColourIsSeenAsFlat) {
    // The measure itself: the same view under a plain sky of the fog's colour fails it.
    bvtest::writeSolidTGA("Data/Textures/Sky.tga", 8, 8, 134, 134, 128);
    startOn("Riverside");
    selectView(CAMERA_CHASE);
    SkyBand band = upperQuarter("");
    std::printf("flat sky: spread %5.1f off the fog %4.2f\n", band.spread, band.offFog);
    EXPECT_LT(band.offFog, 0.5);
}

}  // namespace

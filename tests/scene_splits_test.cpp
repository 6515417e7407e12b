// Split times in the race frame with the game's own content: kart 0, driven
// by the arrow keys the test presses, races a best lap kept in the track's
// ghost file, and the split appears under the lap time in green or red,
// whether the ghost kart is drawn or not, standing still in a pause; never
// before the first timed lap, nor after a restart.

#include <gtest/gtest.h>

#include <GL/gl.h>
#include <SDL/SDL.h>

#include <cmath>
#include <filesystem>
#include <string>
#include <vector>

#include "assets/font.h"
#include "frontend/menu.h"
#include "kart/gokart.h"
#include "scene/ghost.h"
#include "scene/pause.h"
#include "scene/scene.h"
#include "scene/splits.h"
#include "shell/angles.h"
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

class SceneSplits : public bvtest::RaceSceneTest {
protected:
    void SetUp() override {
        copyGameData();
        fs::create_directories("Data/Ghosts");
        openGame(W, H);
        if (HasFatalFailure()) return;
        config.ngokarts = 1;
        config.nhumanplayers = 1;
        readyGame();
        initScene();
    }
    // A best lap in the track's ghost file: the middle of the road from the
    // last pair round to it again, `seconds` long; read as a race on the
    // track reads it.
    void bestLap(float seconds) {
        const unsigned int n = track.pairs(), per = 3;
        std::string text = std::to_string(seconds) + "\n";
        for (unsigned int i = 0; i < n * per; i++) {
            unsigned int a = (n - 1 + i / per) % n, b = (a + 1) % n;
            float f = (float)(i % per) / per;
            float ax = (track.Lpoint[a].x + track.Rpoint[a].x) / 2, az = (track.Lpoint[a].z + track.Rpoint[a].z) / 2;
            float bx = (track.Lpoint[b].x + track.Rpoint[b].x) / 2, bz = (track.Lpoint[b].z + track.Rpoint[b].z) / 2;
            float heading = (float)(atan2(-(bx - ax), -(bz - az)) * DEG_PER_RAD);
            text += std::to_string(ax + (bx - ax) * f) + "\n" + std::to_string(az + (bz - az) * f) + "\n" +
                    std::to_string(heading) + "\n";
        }
        bvtest::writeFile(ghost.file(), text);
        ghost.init();
        ASSERT_EQ(ghost.nRecs[1], (int)(n * per));
    }

    // The arrow keys: throttle, and steering for the middle of the road a
    // few pairs ahead; off the throttle in a hard turn.
    void press() {
        const sGokart& k = gokart[0];
        const unsigned int n = track.pairs();
        unsigned int t = (k.checkpoint + 6) % n;
        float tx = (track.Lpoint[t].x + track.Rpoint[t].x) / 2, tz = (track.Lpoint[t].z + track.Rpoint[t].z) / 2;
        float e = (float)(atan2(-(tx - k.px), -(tz - k.pz)) * DEG_PER_RAD) - k.ay;
        while (e > 180) e -= 360;
        while (e < -180) e += 360;
        keyboard.key[SDLK_LEFT] = e > 2;
        keyboard.key[SDLK_RIGHT] = e < -2;
        keyboard.key[SDLK_UP] = std::fabs(e) < 20 || k.ups < 8;
    }
    // One race frame, one thirtieth of a second after the last.
    void frame() override {
        press();
        RaceSceneTest::frame();
    }
    // Pixels of the split's colours under the lap time: {red, green}.
    std::vector<int> under() {
        std::vector<unsigned char> p(W * H * 3);
        glPixelStorei(GL_PACK_ALIGNMENT, 1);
        glReadPixels(0, 0, W, H, GL_RGB, GL_UNSIGNED_BYTE, p.data());
        int red = 0, green = 0;
        for (int y = (int)(0.9 * H); y < (int)(0.955 * H); y++)
            for (int x = (int)(0.35 * W); x < (int)(0.65 * W); x++) {
                const unsigned char* q = &p[(y * W + x) * 3];
                if (q[0] > 150 && q[0] > q[1] + 100 && q[0] > q[2] + 100) red++;
                if (q[1] > 150 && q[1] > q[0] + 100 && q[1] > q[2] + 100) green++;
            }
        return {red, green};
    }
    // Race until the first split of the first timed lap is on screen;
    // nothing is shown on the way there.
    std::vector<int> raceToFirstSplit() {
        while (splits.delay <= 0 && frames < 30 * 90) {
            frame();
            if (splits.delay <= 0) {
                EXPECT_EQ(under(), (std::vector<int>{0, 0})) << "frame " << frames;
            }
        }
        EXPECT_GT(splits.delay, 0);
        EXPECT_EQ(gokart[0].lap, 1);
        EXPECT_EQ(gokart[0].checkpoint, splitcheckpoint(1, track.pairs()));
        std::vector<int> seen = under();
        printf("split %+.2f after %.1f s of race: %d red and %d green pixels under the lap time\n", splits.shown,
               frames / 30.0, seen[0], seen[1]);
        return seen;
    }
};

TEST_F(SceneSplits, AheadOfASlowBestTheSplitIsGreenWithTheGhostDrawnOrNot) {
    bestLap(90);  // no record is slower than 99
    for (int drawn : {0, 1}) {
        SCOPED_TRACE(drawn);
        config.ghost = drawn;
        restart();
        std::vector<int> seen = raceToFirstSplit();
        EXPECT_GT(seen[1], 15);
        EXPECT_EQ(seen[0], 0);
        EXPECT_LT(splits.shown, -1);
    }
}

TEST_F(SceneSplits, BehindAFastBestTheSplitIsRedAPauseHoldsItAndARestartTakesItAway) {
    bestLap(6);
    config.ghost = 1;
    restart();
    std::vector<int> seen = raceToFirstSplit();
    EXPECT_GT(seen[0], 15);
    EXPECT_EQ(seen[1], 0);
    EXPECT_GT(splits.shown, 0.1f);
    // Paused (P) for five seconds: the split stays, its time standing still.
    const float left = splits.delay;
    keyboard.key['p'] = true;
    frame();
    keyboard.key['p'] = false;
    ASSERT_TRUE(racepause.paused);
    for (int i = 0; i < 150; i++) frame();
    EXPECT_FLOAT_EQ(splits.delay, left);
    EXPECT_GT(under()[0], 15);
    keyboard.key['p'] = true;
    frame();
    keyboard.key['p'] = false;
    frame();
    ASSERT_FALSE(racepause.paused);
    EXPECT_LT(splits.delay, left);
    // Restarted with the split on screen: gone at once, and nothing until
    // the first split of a lap begun after the restart.
    restart();
    frame();
    EXPECT_EQ(under(), (std::vector<int>{0, 0}));
    raceToFirstSplit();
}

TEST_F(SceneSplits, WithoutABestLapNothingIsShown) {
    config.ghost = 1;
    ASSERT_FALSE(ghost.bestTime < 99);
    restart();
    while (!(gokart[0].lap == 1 && gokart[0].checkpoint > splitcheckpoint(1, track.pairs())) && frames < 30 * 90) {
        frame();
        ASSERT_EQ(under(), (std::vector<int>{0, 0})) << "frame " << frames;
        ASSERT_LE(splits.delay, 0);
    }
    EXPECT_EQ(gokart[0].lap, 1);
}

}  // namespace

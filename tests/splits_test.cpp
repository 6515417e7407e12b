// Split times: the best lap's time at each split worked out from the ghost's
// samples, against the times the game's own lap counting gives a kart carried
// round our test circuit at an uneven pace; and the texts and their colours.

#include <gtest/gtest.h>

#include <GL/gl.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "assets/font.h"
#include "frontend/highscore.h"
#include "kart_fixtures.h"
#include "scene/ghost.h"
#include "scene/splits.h"
#include "shell/angles.h"

using namespace kartfix;

namespace {

class Splits : public KartTest {
protected:
    static constexpr unsigned int PAIRS = 100;

    void SetUp() override {
        KartTest::SetUp();
        std::filesystem::create_directories("Data/Highscore");
        std::filesystem::create_directories("Data/Ghosts");
        loadTrack("splitring", Circuit().file(PAIRS));
        startRace();
        ghost.badone();
    }

    // Kart 0 carried along the centre line, `s` from the finish, at `v` units a second.
    void place(double s, double v) {
        Pt p, d;
        Circuit().at(s, &p, &d);
        sGokart& k = gokart[0];
        k.px = (float)p.x;
        k.pz = (float)p.z;
        k.ay = (float)(atan2(-d.x, -d.z) * DEG_PER_RAD);
        k.ups = (float)v;
    }
    // The pace: faster and slower three times a lap, a little faster each
    // lap, and still for the first second.
    double pace(double s) const {
        if (raceTime() < 1) return 0;
        return slow * (1 + 0.03 * gokart[0].lap) * (15 + 6 * sin(2 * M_PI * 3 * s / Circuit().length()));
    }
    // One frame as a race runs it: the lap counting sees where the last frame
    // left the kart, the kart moves on, the ghost records it.
    void carry() {
        tick();
        sGokart& k = gokart[0];
        unsigned char before = k.checkpoint;
        k.countlaps();
        if (k.checkpoint != before && k.lap >= 1 && k.lap < 8) reached[k.lap][k.checkpoint] = k.currentlaptime;
        s += pace(s) / fps();
        place(s, pace(s));
        ghost.record();
    }
    // Until the lap `lap` has been closed.
    void carryTo(int lap) {
        while (!(gokart[0].lap == lap && !gokart[0].thislapcounted) && frames < 100000) carry();
        ASSERT_EQ(gokart[0].lap, lap);
    }
    // The best lap's splits, worked out from its samples.
    std::vector<float> derived() {
        float t[SPLITS_N];
        splitsfromsamples(ghost.px[1], ghost.pz[1], ghost.ay[1], ghost.nRecs[1], ghost.bestTime, performance.fps, t);
        return std::vector<float>(t, t + SPLITS_N);
    }
    void expectSplitsOf(int lap, double within) {
        ASSERT_FLOAT_EQ(ghost.bestTime, gokart[0].laptime[lap]);
        std::vector<float> t = derived();
        for (unsigned int k = 1; k <= SPLITS_N; k++) {
            unsigned int c = splitcheckpoint(k, PAIRS);
            ASSERT_TRUE(reached[lap][c] > 0) << k;
            EXPECT_NEAR(t[k - 1], reached[lap][c], within) << "lap " << lap << ", split " << k << " at " << fps();
            worst = std::max(worst, std::fabs(t[k - 1] - reached[lap][c]));
        }
    }

    double s = -17.5;  // the grid
    double slow = 1;
    float reached[8][PAIRS] = {};
    float worst = 0;
};

TEST_F(Splits, TheSplitPairsCutTheLapInTenths) {
    std::vector<unsigned int> c;
    for (unsigned int k = 1; k <= SPLITS_N; k++) c.push_back(splitcheckpoint(k, 100));
    EXPECT_EQ(c, (std::vector<unsigned int>{10, 20, 30, 40, 50, 60, 70, 80, 90}));
    EXPECT_EQ(splitcheckpoint(1, 37), 4u);
    EXPECT_EQ(splitcheckpoint(9, 37), 33u);
}

// A record on the first lap has been recording since the grid; the second
// lap's since the first was closed. Both meet the kart's own checkpoint
// times within a sample period, whatever frame rate the period comes of.
TEST_F(Splits, FromTheGridOrFromTheLineTheSamplesGiveTheCheckpointTimes) {
    for (float rate : {60.0f, 30.0f, 45.0f, 100.0f, 144.0f}) {
        SCOPED_TRACE(rate);
        performance.fps = rate;
        for (unsigned char i = 0; i < GOKART_NKARTS; i++) gokart[i].init(i);
        frames = 0;
        // Each rate's first lap is a new record again.
        for (float& t : highscore.laprecord_time) t = 99;
        ghost.badone();
        s = -17.5;
        place(s, 0);
        for (auto& lap : reached)
            for (float& t : lap) t = 0;
        carryTo(2);
        // From the grid: a second still, and the run to the line.
        ASSERT_GT(ghost.nRecs[1], ghost.bestTime * 30 * fps() / (30 + fps()) + 5);
        // Fewer seconds a sample than the true period: the grid's are counted in.
        expectSplitsOf(1, ghost.bestTime / ghost.nRecs[1]);
        // The second lap is faster: the new best, recorded from the line.
        carryTo(3);
        const double period = ghost.bestTime / ghost.nRecs[1];
        expectSplitsOf(2, period);
        printf("at %3.0f frames a second (a sample every %.4f s): %.4f s at most\n", rate, period, worst);
        worst = 0;
    }
}

TEST_F(Splits, ARecordingBegunInTheLapGivesNoSplits) {
    carryTo(2);
    ASSERT_GT(derived()[0], 0);
    // Kart 0's recording restarts whenever any kart closes a lap: here in the
    // middle of kart 0's second lap, which becomes the best.
    while (gokart[0].checkpoint < 40) carry();
    ghost.badone();
    carryTo(3);
    ASSERT_FLOAT_EQ(ghost.bestTime, gokart[0].laptime[2]);
    for (float t : derived()) EXPECT_LT(t, 0);
}

TEST_F(Splits, ARecordingCutShortGivesNoSplits) {
    // A first lap so slow that its samples fill the recording before its end.
    slow = 0.2;
    carryTo(2);
    ASSERT_EQ(ghost.nRecs[1], GHOST_MAXRECS);
    for (float t : derived()) EXPECT_LT(t, 0);
    // The same samples, one fewer, would give splits: the size alone tells.
    float t[SPLITS_N];
    EXPECT_TRUE(splitsfromsamples(ghost.px[1], ghost.pz[1], ghost.ay[1], GHOST_MAXRECS - 1, ghost.bestTime, 60, t));
}

TEST_F(Splits, TheTextsSayAheadInGreenBehindInRedAndEvenInWhite) {
    char text[32];
    float r, g, b;
    sSplits::format(-0.42f, text, sizeof text, &r, &g, &b);
    EXPECT_STREQ(text, "-0.42");
    EXPECT_EQ((std::vector<float>{r, g, b}), (std::vector<float>{0, 1, 0}));
    sSplits::format(0.31f, text, sizeof text, &r, &g, &b);
    EXPECT_STREQ(text, "+0.31");
    EXPECT_EQ((std::vector<float>{r, g, b}), (std::vector<float>{1, 0, 0}));
    sSplits::format(12.345f, text, sizeof text, &r, &g, &b);
    EXPECT_STREQ(text, "+12.35");
    for (float even : {0.0f, 0.004f, -0.004f}) {
        sSplits::format(even, text, sizeof text, &r, &g, &b);
        EXPECT_STREQ(text, "0.00") << even;
        EXPECT_EQ((std::vector<float>{r, g, b}), (std::vector<float>{1, 1, 1}));
    }
    sSplits::format(-0.006f, text, sizeof text, &r, &g, &b);
    EXPECT_STREQ(text, "-0.01");
    EXPECT_EQ(g, 1);
}

// The texture font with a plain white glyph picture: every letter a block in
// the text's own colour, found under the lap time.
class SplitsDrawn : public ::testing::Test {
protected:
    static constexpr int W = 400, H = 300;
    void SetUp() override {
        std::filesystem::create_directories("Data/Fonts");
        bvtest::writeSolidTGA("Data/Fonts/Plain.tga", 64, 64, 255, 255, 255, 255);
        blackbox.init("Data/blackbox.bvd", false);
        bvtest::openWindow(W, H);
        fontTGA.init("Plain", 0.75f);
        performance.fps = 60;
        splits = sSplits();
        splits.init();
    }
    void TearDown() override { fontTGA.free(); }
    // The colour most pixels under the lap time have that are not the background.
    std::vector<int> under() {
        glClearColor(0, 0, 0, 1);
        glClear(GL_COLOR_BUFFER_BIT);
        splits.draw();
        glFinish();
        int red = 0, green = 0, white = 0;
        for (int y = (int)(0.9 * H); y < (int)(0.955 * H); y++)
            for (int x = (int)(0.4 * W); x < (int)(0.6 * W); x++) {
                bvtest::Pixel p = bvtest::readPixel(x, y);
                if (p.r > 200 && p.g < 50 && p.b < 50) red++;
                if (p.g > 200 && p.r < 50 && p.b < 50) green++;
                if (p.r > 200 && p.g > 200 && p.b > 200) white++;
            }
        return {red, green, white};
    }
    bvtest::ScratchDir dir;
};

TEST_F(SplitsDrawn, AheadIsGreenBehindIsRedForTwoSecondsOfRaceTime) {
    EXPECT_EQ(under(), (std::vector<int>{0, 0, 0}));
    splits.shown = -0.42f;
    splits.delay = 2;
    std::vector<int> seen = under();
    EXPECT_GT(seen[1], 100);
    EXPECT_EQ(seen[0], 0);
    splits.shown = 0.31f;
    seen = under();
    EXPECT_GT(seen[0], 100);
    EXPECT_EQ(seen[1], 0);
    // Drawing does not run the time down; the race's frames do.
    for (int i = 0; i < 200; i++) under();
    EXPECT_FLOAT_EQ(splits.delay, 2);
    config.nhumanplayers = 1;
    int frames = 0;
    while (under()[0] > 0 && frames < 1000) {
        splits.update();
        frames++;
    }
    EXPECT_NEAR(frames, 120, 1);
}

// Ten pairs down a straight along -z, one every 2 units, and a kart carried
// one unit a sample facing down the road, but for a spin between samples 6
// and 7 from -90 to exactly +90. Half a turn apart the heading is taken
// forwards, through 0, so between those samples the sensor looks down the
// road and finds pair 3 an eighth of the way; taken backwards, through -180,
// it would look back and find it only at sample 7.
TEST(SplitsHeadings, HalfATurnBetweenSamplesIsTakenForwards) {
    const unsigned int oldpairs = track.nLRpoints;
    const float oldfront = gokartstaticdata.chasisfront;
    track.nLRpoints = 10;
    for (unsigned int i = 0; i < 10; i++) track.Lpoint[i] = {0, -2.0f * (float)i};
    gokartstaticdata.chasisfront = 1.364f;
    const int n = 21;
    float px[n], pz[n], ay[n];
    for (int i = 0; i < n; i++) {
        px[i] = 0;
        pz[i] = 1.7f - (float)i;
        ay[i] = 0;
    }
    ay[6] = -90;
    ay[7] = 90;
    const float fps = 30, period = 0.1f;
    float t[SPLITS_N];
    ASSERT_TRUE(splitsfromsamples(px, pz, ay, n, period * ((float)n - 0.5f) + 0.5f / fps, fps, t));
    EXPECT_NEAR(t[2], 6.125f * period + 1 / fps, 1e-4);
    EXPECT_NEAR(t[3], 7.5f * period + 1 / fps, 1e-4);  // pair 4 half a sample on
    track.nLRpoints = oldpairs;
    gokartstaticdata.chasisfront = oldfront;
}

}  // namespace

// Split times raced with the game's own physics: kart 0, a human kart driven
// by keys the test presses, sets a best lap on our test circuit, and the next
// laps are compared with it split by split. What the splits show is checked
// against the times kart 0's own checkpoint reached the split pairs in the
// best lap, measured as it was driven.

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <map>
#include <vector>

#include "frontend/highscore.h"
#include "kart_fixtures.h"
#include "scene/ghost.h"
#include "scene/splits.h"
#include "shell/angles.h"

using namespace kartfix;

namespace {

// What the splits put on screen, and when.
struct Shown {
    int lap;
    unsigned int checkpoint;
    float difference;
};

class KartSplits : public KartTest {
protected:
    static constexpr unsigned int PAIRS = 100;

    void SetUp() override {
        KartTest::SetUp();
        std::filesystem::create_directories("Data/Highscore");
        std::filesystem::create_directories("Data/Ghosts");
        strcpy(config.player1name, "SPLITTY");
        config.aiskill = 2;
    }
    void begin() {
        loadTrack("splitring", Circuit().file(PAIRS));
        startRace();
        // The driver below steers from the first frame; on the grid that
        // would turn the kart off its line before the pedals count.
        runOutStartClock();
        // As the race's reset does.
        ghost.badone();
        splits.init();
    }

    // The driver: throttle up to a cruising speed well below the top, so
    // that after a brake the kart is soon back to its pace; steering for the
    // middle of the road a few pairs ahead; braking while `brake` says so.
    void press(bool brake) {
        sGokart& k = gokart[0];
        unsigned int t = (k.checkpoint + 5) % PAIRS;
        float tx = (track.Lpoint[t].x + track.Rpoint[t].x) / 2, tz = (track.Lpoint[t].z + track.Rpoint[t].z) / 2;
        float h = (float)(atan2(-(tx - k.px), -(tz - k.pz)) * DEG_PER_RAD);
        float e = h - k.ay;
        while (e > 180) e -= 360;
        while (e < -180) e += 360;
        k.kLEFT = e > 2;
        k.kRIGHT = e < -2;
        // Off the throttle where the road turns hard.
        k.kUP = !brake && std::fabs(e) < 20 && k.ups < 17;
        k.kDOWN = brake;
    }

    // One race frame as the scene runs it: the karts move, the splits look at
    // kart 0, the ghost records it.
    void raceFrame(bool brake = false) {
        press(brake);
        unsigned char before = gokart[0].checkpoint;
        frame();
        ghost.record();
        const sGokart& k = gokart[0];
        if (k.checkpoint != before && k.lap >= 1) reached[k.lap][k.checkpoint] = k.currentlaptime;
        if (splits.delay == 2) shown.push_back({k.lap, k.checkpoint, splits.shown});
    }

    // Race until kart 0's lap `lap` has been closed; `brake` says in which
    // frames of which laps it brakes.
    template <typename Brake>
    void raceTo(int lap, Brake brake) {
        while (!(gokart[0].lap == lap && !gokart[0].thislapcounted) && frames < 60L * 300) raceFrame(brake());
        ASSERT_EQ(gokart[0].lap, lap);
    }

    // The samples of a lap span it at an even pace.
    double period() const { return ghost.bestTime / ghost.nRecs[1]; }

    std::map<int, std::map<unsigned int, float>> reached;  // lap, checkpoint: its lap time then
    std::vector<Shown> shown;

    // The splits shown in lap `lap`, in order, and the lap's end shown as the next began.
    std::vector<float> splitsOf(int lap) const {
        std::vector<float> v;
        for (const Shown& s : shown)
            if (s.lap == lap && s.checkpoint != 0) v.push_back(s.difference);
        return v;
    }
    float lapEndOf(int lap) const {
        for (const Shown& s : shown)
            if (s.lap == lap + 1 && s.checkpoint == 0) return s.difference;
        return NAN;
    }
    // What kart 0's checkpoint says, lap against lap, at split k.
    float truth(int lap, int best, unsigned int k) {
        unsigned int c = splitcheckpoint(k, PAIRS);
        EXPECT_TRUE(reached[lap].count(c) && reached[best].count(c)) << "split " << k;
        return reached[lap][c] - reached[best][c];
    }
    // Each split of `lap` against the same split of `best`, within one sample
    // period of the best lap.
    void expectAgainst(int lap, int best, double period) {
        std::vector<float> v = splitsOf(lap);
        ASSERT_EQ(v.size(), SPLITS_N) << "lap " << lap;
        for (unsigned int k = 1; k <= SPLITS_N; k++)
            EXPECT_NEAR(v[k - 1], truth(lap, best, k), period) << "lap " << lap << " split " << k;
        EXPECT_NEAR(lapEndOf(lap), gokart[0].laptime[lap] - gokart[0].laptime[best], 1e-4) << "lap " << lap;
    }
};

TEST_F(KartSplits, BrakingInTheSixthTenthLosesFromThereOnAgainstTheBestLap) {
    begin();
    // Two laps at the driver's pace: the second, flying all the way, is the best.
    raceTo(3, [] { return false; });
    ASSERT_LT(gokart[0].laptime[2], gokart[0].laptime[1]);
    ASSERT_FLOAT_EQ(ghost.bestTime, gokart[0].laptime[2]);
    const double period = ghost.bestTime / ghost.nRecs[1];
    ASSERT_GT(period, 0.04);  // three frames at 60 a second
    ASSERT_LT(period, 0.06);
    // The third: on the brakes for a third of a second once past the fifth split.
    long braking = 0;
    raceTo(4, [&] {
        if (gokart[0].checkpoint < splitcheckpoint(5, PAIRS) || braking >= 20) return false;
        braking++;
        return true;
    });
    ASSERT_EQ(braking, 20);
    const float loss = gokart[0].laptime[3] - gokart[0].laptime[2];
    ASSERT_GT(loss, 0.2f);

    std::vector<float> v = splitsOf(3);
    ASSERT_EQ(v.size(), SPLITS_N);
    for (unsigned int k = 1; k <= 5; k++) EXPECT_NEAR(v[k - 1], 0, period) << "split " << k;
    for (unsigned int k = 6; k <= SPLITS_N; k++) {
        EXPECT_GT(v[k - 1], 0.2f) << "split " << k;
        EXPECT_NEAR(v[k - 1], truth(3, 2, k), period) << "split " << k;
    }
    // Back to its pace before the seventh: from there on the loss stands.
    for (unsigned int k = 7; k <= SPLITS_N; k++) EXPECT_NEAR(v[k - 1], loss, period) << "split " << k;
    EXPECT_NEAR(lapEndOf(3), loss, 1e-4);
    printf("splits of the slow lap:");
    for (float d : v) printf(" %+.3f", d);
    printf("; lap %+.3f; sample period %.4f\n", lapEndOf(3), period);
}

TEST_F(KartSplits, ARecordFromTheGridIsTimedFromTheLineAndANewBestTakesOverAtTheNextLap) {
    begin();
    // Nothing before there is a best: the grid, the first lap.
    raceTo(2, [] { return false; });
    EXPECT_TRUE(shown.empty());
    // The first lap is the record; its recording began on the grid.
    ASSERT_FLOAT_EQ(ghost.bestTime, gokart[0].laptime[1]);
    const double period1 = ghost.bestTime / ghost.nRecs[1];  // less than the true one: more samples than the lap
    raceTo(3, [] { return false; });
    // The flying second lap, ahead all the way, is the new best...
    ASSERT_LT(gokart[0].laptime[2], gokart[0].laptime[1] - 0.3f);
    expectAgainst(2, 1, 2 * period1);
    EXPECT_LT(splitsOf(2)[0], -0.1f);
    // ...which the third lap meets, while the end of the second was measured
    // against the first.
    ASSERT_FLOAT_EQ(ghost.bestTime, gokart[0].laptime[2]);
    raceTo(4, [] { return false; });
    expectAgainst(3, 2, ghost.bestTime / ghost.nRecs[1]);
}

TEST_F(KartSplits, NothingIsShownWithoutABestLap) {
    // The highscore keeps every lap out of the ghost: none is the best.
    begin();
    for (float& t : highscore.laprecord_time) t = 1;
    raceTo(4, [] { return false; });
    EXPECT_FLOAT_EQ(ghost.bestTime, 99);
    EXPECT_TRUE(shown.empty());
}

TEST_F(KartSplits, NothingIsShownWhenTheComputerDrivesKartZero) {
    begin();
    raceTo(3, [] { return false; });
    ASSERT_FALSE(shown.empty());
    shown.clear();
    config.nhumanplayers = 0;
    raceTo(5, [] { return false; });
    EXPECT_TRUE(shown.empty());
}

}  // namespace

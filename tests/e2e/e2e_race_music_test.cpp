// What a player hears of the races themselves: the shipped solo race has its
// engine from the countdown's first frame, rising as the kart gets going, and
// the menu tune comes back after every race left with Escape, whatever the
// race was.

#include <gtest/gtest.h>

#include <cstdio>

#include "e2e/e2e_fixtures.h"

using namespace e2e;

namespace {

// Louder than this over half a second is heard; a silent mix is 0.
const double kHeard = 0.005;

// The engine's pitch over the half second before `at`, as upward zero crossings.
double pitch(const Sound& heard, double at) {
    return heard.crossings(at - 0.5, at);
}

TEST(E2eRaceMusic, ASoloRaceIsHeardFromTheCountdownAndTheEngineRisesWithSpeed) {
    Game game;  // the shipped setup: the player alone on the first track
    ASSERT_TRUE(game.atMenu()) << game.process().output();
    ASSERT_TRUE(game.startRace());
    double start = game.soundSeconds();
    ASSERT_TRUE(game.countdownOver());
    double off = game.soundSeconds();
    ASSERT_GT(off - start, 2);

    // On the grid: the engine idles, heard through the whole countdown.
    Sound grid = game.sound();
    for (int i = 0; start + 0.5 * (i + 1) <= off; i++)
        EXPECT_GT(grid.rms(start + 0.5 * i, start + 0.5 * (i + 1)), kHeard)
            << "silence " << 0.5 * i << " s into the countdown";
    double idle = pitch(grid, off);
    ASSERT_GT(idle, 0);

    // Full throttle until the engine has risen well above its idle: a
    // moment that comes sooner or later with the frame rate, never on a
    // game whose engine does not follow the kart's speed.
    game.keyDown("Up");
    double risen = -1, fast = 0;
    bool rose = waitFor(
        [&] {
            double now = game.soundSeconds();
            if (now - off < 1) return false;
            Sound heard = game.sound();
            fast = pitch(heard, now);
            if (fast > idle * 1.3 && heard.rms(now - 0.5, now) > kHeard) risen = now;
            return risen > 0;
        },
        60, 0.25);
    game.keyUp("Up");
    printf("engine %.0f crossings/s idle, %.0f at speed (%.1f s after the start)\n", idle, fast, risen - off);
    EXPECT_TRUE(rose) << "the engine never rose above its idle: " << fast << " against " << idle;

    // Heard all the way from the grid to speed.
    Sound heard = game.sound();
    const double until = rose ? risen : heard.seconds();
    for (int i = 0; off + 0.5 * (i + 1) <= until; i++)
        EXPECT_GT(heard.rms(off + 0.5 * i, off + 0.5 * (i + 1)), kHeard) << "silence " << 0.5 * i << " s after the start";

    ASSERT_TRUE(game.escape());
    ASSERT_EQ(game.close(), 0) << game.process().output();
}

// Ten races in a row, alone, with five opponents, and restarted from the
// console; after each, Escape, and the menu tune plays again from its start.
TEST(E2eRaceMusic, TheMenuTuneComesBackAfterEveryRace) {
    Game game;
    ASSERT_TRUE(game.atMenu()) << game.process().output();
    Sound tune = readSound(game.path("Data/Sounds/intro.mp3"));
    ASSERT_GT(tune.seconds(), 4);
    const Sound opening = tune.part(0.5, 2.5);

    for (int race = 0; race < 10; race++) {
        SCOPED_TRACE("race " + std::to_string(race + 1));
        // Races 1-3 alone, 4-7 with five opponents, 8-10 alone again.
        if (race == 3) {
            ASSERT_TRUE(game.step(menu::kOpponentsDecX, menu::kOpponentsY));  // none round to five
        }
        if (race == 7) {
            ASSERT_TRUE(game.step(menu::kOpponentsIncX, menu::kOpponentsY));  // five round to none
        }
        ASSERT_TRUE(game.startRace());
        double start = game.soundSeconds();
        // Every other race is started again from the console before it is left.
        if (race % 2) {
            ASSERT_TRUE(game.countdownOver());
            game.console("cmd reset");
            ASSERT_TRUE(race::redWritingSeen()) << "the reset race has no countdown";
        }
        ASSERT_TRUE(waitFor([&] { return game.soundSeconds() > start + 1; }, 60, 0.1));
        double inRace = game.soundSeconds();
        EXPECT_GT(game.sound().rms(inRace - 0.5, inRace), kHeard) << "the race is not heard";

        ASSERT_TRUE(game.escape());
        double back = game.soundSeconds();
        double score = 0, at = -1;
        bool heard = waitFor(
            [&] {
                double now = game.soundSeconds();
                if (now < back + opening.seconds() + 1) return false;
                score = match(game.sound(), back, now, opening, &at);
                return score > 0.7;
            },
            60, 1);
        printf("race %d: menu tune %.2f, %.1f s after Escape\n", race + 1, score, at - back);
        EXPECT_TRUE(heard) << "no menu tune after the race (best match " << score << ")";
    }
    ASSERT_TRUE(game.press(menu::kQuitX, menu::kQuitY));
    ASSERT_EQ(game.process().wait(60), 0) << game.process().output();
}

}  // namespace

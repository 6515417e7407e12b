// A player pauses a race with P while driving: the picture stands still with
// "PAUSED" over it and the race falls silent; P again and the kart drives
// and is heard on; Delete starts the race over from the countdown.

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "e2e/e2e_fixtures.h"

using namespace e2e;

namespace {

// Where "PAUSED" and the line under it are written, across the middle.
const Box kPauseTexts = {250, 170, 524, 140};

TEST(E2ePause, PStopsThePictureAndTheSoundPAgainGoesOnDeleteStartsOver) {
    Game game;
    ASSERT_TRUE(game.atMenu()) << game.process().output();
    ASSERT_TRUE(game.startRace());
    ASSERT_TRUE(game.countdownOver());

    game.keyDown("Up");
    ASSERT_TRUE(waitFor([] { return race::gantry(grab()) < 300; }, 120, 0.1)) << "the player did not leave the grid";
    const int whiteDriving = menu::white(grab(kPauseTexts), kPauseTexts);

    // Paused with the accelerator still down.
    game.tap("p");
    ASSERT_TRUE(waitFor([&] { return menu::white(grab(kPauseTexts), kPauseTexts) > whiteDriving + 400; }, 60, 0.1))
        << "no PAUSED";
    rest(0.3);
    const double pausedFrom = game.soundSeconds();
    const Picture standing = grab();
    ASSERT_TRUE(waitFor([&] { return game.soundSeconds() > pausedFrom + 2; }, 120, 0.1)) << "the mixer stopped";
    const double pausedTo = game.soundSeconds();
    const Picture stillStanding = grab();
    EXPECT_EQ(stillStanding.changed(standing), 0) << "the paused picture moved";
    if (const char* keep = getenv("BV_E2E_PICTURES")) standing.save(std::string(keep) + "/paused.ppm");

    game.tap("p");
    ASSERT_TRUE(waitFor([&] { return menu::white(grab(kPauseTexts), kPauseTexts) < whiteDriving + 100; }, 60, 0.1))
        << "PAUSED stayed";
    const double resumedFrom = game.soundSeconds();
    EXPECT_TRUE(waitFor([&] { return grab().changed(standing) > 2000; }, 60, 0.1)) << "the race did not go on";
    ASSERT_TRUE(waitFor([&] { return game.soundSeconds() > resumedFrom + 2; }, 120, 0.1)) << "the mixer stopped";
    const double resumedTo = game.soundSeconds();
    game.keyUp("Up");

    // Delete: back on the grid, the countdown from "1".
    game.tap("Delete");
    EXPECT_TRUE(race::redWritingSeen()) << "no countdown after Delete";
    EXPECT_TRUE(game.onTheGrid()) << "not back on the grid";
    ASSERT_TRUE(game.countdownOver());

    ASSERT_TRUE(game.escape());
    ASSERT_TRUE(game.press(menu::kQuitX, menu::kQuitY));
    ASSERT_EQ(game.process().wait(60), 0) << game.process().output();

    Sound sound = game.sound();
    // What the mixer had taken before the pause is heard a moment into it.
    const double silent = sound.rms(pausedFrom + 0.3, pausedTo);
    const double driving = sound.rms(resumedFrom + 0.5, resumedTo);
    printf("paused %.1f s: rms %.5f; driving on %.1f s: rms %.4f\n", pausedTo - pausedFrom - 0.3, silent,
           resumedTo - resumedFrom - 0.5, driving);
    EXPECT_LT(silent, 0.001);
    EXPECT_GT(driving, 0.02);
}

}  // namespace

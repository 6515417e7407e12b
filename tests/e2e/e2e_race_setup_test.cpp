// A race set up with the mouse and driven with the arrow keys: the player
// types a name, picks a colour, a track, five opponents and the hard
// difficulty, races off the grid hearing the engine rise and the tyres squeal
// in a slide, leaves with Escape, starts again from a fresh countdown, and
// quits from the menu, which keeps the setup for the next start.

#include <gtest/gtest.h>

#include <cstdio>

#include "e2e/e2e_fixtures.h"

using namespace e2e;

namespace {

TEST(E2eRaceSetup, SetUpByMouseRacedWithArrowsLeftWithEscapeRestartedAndKept) {
    Game game;  // red, no opponents, easy, the first track
    ASSERT_TRUE(game.atMenu()) << game.process().output();

    // The name: the mouse over the field, the old name rubbed out, a new one
    // typed, a letter a frame.
    game.moveUnit(menu::kNameX, menu::kNameY);
    ASSERT_TRUE(game.menuFrames(2));
    for (int i = 0; i < 7; i++) {
        game.tap("BackSpace", 0.05);
        ASSERT_TRUE(game.menuFrames(2));
    }
    game.moveUnit(0.3, 0.95);
    ASSERT_TRUE(waitFor([] { return menu::white(grab(menu::kName), menu::kName) < 5; }, 10)) << "name not rubbed out";
    game.moveUnit(menu::kNameX, menu::kNameY);
    ASSERT_TRUE(game.menuFrames(2));
    for (const char* letter : {"a", "d", "a"}) {
        game.tap(letter, 0.05);
        ASSERT_TRUE(game.menuFrames(2));
    }
    game.moveUnit(0.3, 0.95);
    EXPECT_TRUE(waitFor([] { return menu::white(grab(menu::kName), menu::kName) > 20; }, 10)) << "no name shown";

    // Colour, track, opponents and difficulty: one arrow step each, each
    // showing its new value.
    Picture before = grab();
    ASSERT_TRUE(game.step(menu::kColourIncX, menu::kArrowsLowY));
    Picture after = grab();
    EXPECT_GT(after.difference(before, menu::kKartPreview), 3) << "the kart preview keeps its colour";
    ASSERT_TRUE(game.step(menu::kTrackIncX, menu::kArrowsLowY));
    ASSERT_TRUE(game.menuFrames(3));
    Picture track = grab();
    EXPECT_FALSE(track.same(after, menu::kTrack)) << "the track's name did not change";
    ASSERT_TRUE(game.step(menu::kOpponentsDecX, menu::kOpponentsY));  // from none round to five
    Picture opponents = grab();
    EXPECT_FALSE(opponents.same(track, menu::kOpponents));
    ASSERT_TRUE(game.step(menu::kDifficultyDecX, menu::kDifficultyY));  // from easy round to hard
    Picture difficulty = grab();
    EXPECT_FALSE(difficulty.same(opponents, menu::kDifficulty));

    // The race: the countdown, the kart on the grid, then off with the throttle.
    ASSERT_TRUE(game.startRace());
    ASSERT_TRUE(race::redWritingSeen()) << "no countdown";
    double start = game.soundSeconds();
    Picture grid;
    ASSERT_TRUE(game.onTheGrid(&grid)) << "the race never showed the kart on the grid";
    ASSERT_TRUE(game.countdownOver());

    // Off the grid with the throttle: until the gantry is behind the kart,
    // however many frames that takes on this machine. The screen is looked
    // at straight away, so that the picture is the kart just past the gantry
    // on the straight, not wherever it had got to by the time a screenshot
    // was written.
    game.keyDown("Up");
    Picture driving;
    bool left = waitFor(
        [&] {
            driving = grab();
            return race::gantry(driving) < 300;
        },
        120, 0.02);
    double fast = game.soundSeconds();
    Sound tyre = readSound(game.path("Data/Sounds/Tire.wav"));
    const double straight = heardLoop(game.sound(), fast - 1, fast, tyre);
    // Into the first bend, which turns left, hard: steered until the tyres
    // are heard clearly above what the straight had of them (a game that
    // never slides the kart runs out of time here).
    double turn = game.soundSeconds();
    game.keyDown("Left");
    double slid = turn;
    double squeal = 0;
    bool squealed = waitFor(
        [&] {
            slid = game.soundSeconds();
            squeal = slid > turn + 1 ? heardLoop(game.sound(), slid - 1, slid, tyre) : 0;
            return squeal > straight + 0.3;
        },
        30, 0.2);
    game.keyUp("Left");
    game.keyUp("Up");
    printf("tyres %.2f over the last second of the turn, %.1f s into it\n", squeal, slid - turn);

    // The kart is where the chase view keeps it, smaller than on the grid
    // (the view falls back at speed, the further the quicker the frames), and
    // clear of the gantry.
    printf("kart %d on the grid, %d past the gantry (%.2f); gantry %d on the grid, %d past it\n", race::kart(grid),
           race::kart(driving), (double)race::kart(driving) / race::kart(grid), race::gantry(grid),
           race::gantry(driving));
    EXPECT_TRUE(left) << "the kart did not leave the grid";
    EXPECT_GT(race::kart(driving), race::kart(grid) / 4) << "the chase view lost the kart";
    EXPECT_LT(race::gantry(driving), 300) << "the kart did not leave the grid";

    // Escape, and a second race from a fresh countdown with the kart back on
    // the grid.
    ASSERT_TRUE(game.escape()) << "Escape did not lead back to the menu";
    ASSERT_TRUE(game.startRace());
    EXPECT_TRUE(race::redWritingSeen()) << "the second race has no countdown";
    Picture again;
    EXPECT_TRUE(game.onTheGrid(&again)) << "the second race does not start on the grid";
    ASSERT_TRUE(game.escape());

    // Quit from the menu.
    ASSERT_TRUE(game.press(menu::kQuitX, menu::kQuitY));
    ASSERT_EQ(game.process().wait(60), 0) << game.process().output();

    // What was heard: the engine higher at speed than on the grid, and the
    // tyres' squeal in the slide, not on the straight.
    Sound heard = game.sound();
    ASSERT_GT(heard.seconds(), slid);
    // The engines start up with the race's first frames, all still on the grid.
    double idle = heard.part(start, fast).onset(0.05);
    ASSERT_GE(idle, 0) << "no engine on the grid";
    idle += start + 0.2;
    double idleHz = heard.crossings(idle, idle + 0.5), fastHz = heard.crossings(fast - 1, fast);
    double slide = heardLoop(heard, turn, slid, tyre);
    printf("engine %.4f rms idling, %.0f -> %.0f crossings/s; tyres %.2f straight, %.2f sliding\n",
           heard.rms(idle, idle + 0.5), idleHz, fastHz, straight, slide);
    EXPECT_GT(heard.rms(idle, idle + 0.5), 0.005) << "no engine on the grid";
    EXPECT_GT(fastHz, idleHz * 1.3) << "the engine does not rise with speed";
    EXPECT_TRUE(squealed) << "no tyre squeal in the slide";
    // The player's own engine sounds beside the squeal, about as loud, so
    // the squeal is not all that is heard in the slide.
    EXPECT_GT(slide, 0.35) << "no tyre squeal in the slide";
    EXPECT_GT(slide, straight + 0.2) << "the tyres squeal on the straight as much as in the slide";

    // A clean log, the screenshots in it, and the setup kept.
    std::string log = game.log();
    std::vector<std::string> l = bvtest::lines(log);
    ASSERT_GE(l.size(), 2u);
    EXPECT_EQ(l[l.size() - 2], " everything went smooth! :)") << log;
    EXPECT_NE(log.find("Saving screenshot [OK]"), std::string::npos);
    std::vector<std::string> setup = bvtest::lines(bvtest::readFile(game.path("Data/gencon.bvd")));
    ASSERT_EQ(setup.size(), 6u);
    EXPECT_EQ(setup[0], "ADA");
    EXPECT_EQ(setup[1], "1");  // one colour on from red
    EXPECT_EQ(setup[2], "6");  // the player and five opponents
    EXPECT_EQ(setup[3], "2");  // hard
    EXPECT_EQ(setup[4], "1");  // the second track
}

}  // namespace

// A race of the game's own content in a real window, run frame by frame on a simulated clock.
#ifndef BV_TESTS_SUPPORT_RACE_SCENE_H
#define BV_TESTS_SUPPORT_RACE_SCENE_H

#include <gtest/gtest.h>

#include "support/bvtest_fixtures.h"

namespace bvtest {

// Every frame is a thirtieth of a second of the clock, which stands at
// CLOCK0 when a race starts. A test's SetUp copies the content, opens the
// game, changes what settings it likes, readies the game and sets up the
// scene; TearDown tears the scene down.
class RaceSceneTest : public ::testing::Test {
protected:
    static constexpr long CLOCK0 = 1000000000L;

    // The game's generated Data/ in the scratch directory, with the settings
    // file the game ships and no record of the content's generation.
    static void copyGameData();
    // The settings read, sound off, and the game's window (width x height)
    // with its GL state.
    static void openGame(unsigned int width, unsigned int height);
    // Keyboard, mouse, the frame clock at 30 frames a second from CLOCK0,
    // the font, the menu and the track list: the game as the menu is about to
    // start a race.
    static void readyGame();
    void TearDown() override;

    // One race frame, one thirtieth of a second after the last.
    virtual void frame();
    // The clock a frame on, and the window cleared for the race's view.
    void nextFrame();
    // Frames until the start clock has passed `seconds`.
    void until(double seconds);
    // A fresh race as the menu starts one, with the clock restarting here.
    virtual void restart();

    ScratchDir dir;
    long frames = 0;
};

}  // namespace bvtest

#endif

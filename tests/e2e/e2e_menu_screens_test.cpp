// The menu's three sub-screens: About, Credits and Records each open from
// their button and Back returns to the race setup, without the press going
// on to the Quit button that lies under Back.

#include <gtest/gtest.h>

#include "e2e/e2e_fixtures.h"

using namespace e2e;

namespace {

TEST(E2eMenuScreens, AboutCreditsAndRecordsOpenAndGoBack) {
    Game game;
    ASSERT_TRUE(game.atMenu()) << game.process().output();
    Picture title = grab(menu::kPanelTitle);
    const double large[3][2] = {{0.14, 0.72}, {0.161, 0.622}, {0.175, 0.535}};
    for (auto& b : large) {
        ASSERT_TRUE(game.press(b[0], b[1])) << b[1];
        EXPECT_FALSE(menu::shown(grab())) << b[1] << ": still the race setup";
        // Back lies over Quit.
        game.press(0.1275, 0.118);
        EXPECT_TRUE(waitFor([&] { return grab(menu::kPanelTitle).same(title, menu::kPanelTitle); }, 30)) << b[1];
        EXPECT_LT(game.process().wait(0.5), 0) << "the game ended";
    }
    ASSERT_EQ(game.close(), 0);
}

}  // namespace

// Two players on one keyboard: the console switches the second player on,
// and j, l, i, k drive the second kart while the first stays where it is.

#include <gtest/gtest.h>

#include "e2e/e2e_fixtures.h"

using namespace e2e;

namespace {

TEST(E2eTwoPlayers, IJKLDriveTheSecondKartAndLeaveTheFirstOnTheGrid) {
    Options two;
    two.gencon = "unnamed\n0\n2\n0\n0\n10784\n";  // two karts
    Game game(two);
    ASSERT_TRUE(game.atMenu()) << game.process().output();
    game.console("set nhumanplayers 2");
    ASSERT_TRUE(game.startRace());
    ASSERT_TRUE(game.onTheGrid()) << game.process().output();

    // Watch the second kart, as its player would: it stands on the grid too.
    game.console("set gokartfocus 1");
    Picture second;
    ASSERT_TRUE(waitFor([&] { return race::gantry(second = game.screenshot()) > 1500; }, 60, 0.5))
        << "the second kart is not on the grid";

    // i is its throttle (no waiting for the start light), l and j its steering.
    game.keyDown("i");
    bool away = waitFor([&] { return race::gantry(game.screenshot()) < 300; }, 90, 0.5);
    game.keyDown("l");
    rest(1);
    game.keyUp("l");
    game.keyUp("i");
    EXPECT_TRUE(away) << "i did not drive the second kart off the grid";

    // The first kart did not move.
    game.console("set gokartfocus 0");
    EXPECT_TRUE(game.onTheGrid()) << "the first kart left the grid";

    ASSERT_EQ(game.close(), 0);
    std::string log = game.log();
    EXPECT_NE(log.find("SET nhumanplayers 2"), std::string::npos) << log;
    EXPECT_EQ(log.find(" [  ]"), std::string::npos) << log;
}

}  // namespace

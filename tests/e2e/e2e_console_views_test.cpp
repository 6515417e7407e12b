// What the console and the view keys change in the picture of a race: a
// player on the grid, the kart standing still, so that any change in the
// picture is the one the player asked for.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <string>

#include "e2e/e2e_fixtures.h"

using namespace e2e;

namespace {

const Box kWhole = {0, 0, 1024, 768};
const Box kSky = {0, 30, 1024, 120};
const Box kRoadLeft = {0, 450, 300, 300};

// Where the countdown writes is left out: its numbers change by themselves.
int changed(const Picture& a, const Picture& b, const Box& box) {
    return a.changed(b, box, race::kCountdown);
}

Picture settled(Game& game) {
    return game.still(race::kCountdown);
}

class E2eRace : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(game.atMenu()) << game.process().output();
        ASSERT_TRUE(game.startRace());
        ASSERT_TRUE(game.onTheGrid());
    }
    Game game;  // alone on the first track
};

TEST_F(E2eRace, TheConsoleTurnsFogOffDrawsWireframeAndResetsTheRace) {
    // After the start, from the driver's seat: the one view that stands still
    // however slowly the game draws.
    ASSERT_TRUE(game.countdownOver());
    game.tap("1");
    Picture still = settled(game);
    ASSERT_FALSE(still.empty());
    Picture control = settled(game);
    printf("pixels changed between two still pictures: %d\n", changed(still, control, kWhole));
    ASSERT_LT(changed(still, control, kWhole), 50) << "the picture moves by itself";

    game.console("set fog 0");
    Picture clear = settled(game);
    ASSERT_FALSE(clear.empty());
    Rgb foggy = still.mean(kSky), bare = clear.mean(kSky);
    printf("sky with fog %.0f %.0f %.0f, without %.0f %.0f %.0f\n", foggy.r, foggy.g, foggy.b, bare.r, bare.g, bare.b);
    EXPECT_GT(still.difference(clear, kSky), 4) << "the fog did not lift";

    game.console("cmd wireframe");
    Picture wire = settled(game);
    ASSERT_FALSE(wire.empty());
    printf("fog difference %.1f; wireframe changed %d\n", still.difference(clear, kSky), changed(clear, wire, kRoadLeft));
    // The road becomes lines over the grey of the empty screen.
    EXPECT_GT(changed(clear, wire, kRoadLeft), 300 * 300 / 4) << "no wireframe";
    game.console("cmd solid");
    Picture solid = settled(game);
    ASSERT_FALSE(solid.empty());
    printf("solid changed %d\n", changed(clear, solid, kWhole));
    EXPECT_LT(changed(clear, solid, kWhole), 200) << "solid did not bring the picture back";

    // Off the grid, then the reset puts the kart back with a fresh countdown.
    game.keyDown("Up");
    ASSERT_TRUE(waitFor([&] { return race::gantry(game.screenshot()) < 300; }, 60, 0.5)) << "the kart did not leave";
    game.keyUp("Up");
    game.console("cmd reset");
    EXPECT_TRUE(race::redWritingSeen()) << "no countdown after the reset";
    EXPECT_TRUE(game.onTheGrid()) << "the reset did not bring the kart back to the grid";

    ASSERT_EQ(game.close(), 0);
    std::string log = game.log();
    for (const char* line : {"SET fog 0", "CMD wireframe", "CMD solid", "CMD reset"})
        EXPECT_NE(log.find(line), std::string::npos) << line << " not in the log:\n" << log;
    EXPECT_EQ(log.find(" [  ]"), std::string::npos) << log;
}

TEST_F(E2eRace, EveryViewKeyGivesItsOwnPicture) {
    // Chase view to begin with; then driver's, trackside, high follow and the
    // free view moved upwards with r, and back to the chase.
    std::vector<std::pair<std::string, Picture>> views;
    Picture chase = game.screenshot();
    ASSERT_FALSE(chase.empty());
    views.push_back({"chase", chase});
    const std::pair<const char*, const char*> keys[] = {{"1", "driver"}, {"3", "trackside"}, {"4", "high"}, {"5", "free"}};
    for (const auto& k : keys) {
        Picture before = grab();
        game.keyDown(k.first);
        bool moved = waitFor([&] { return changed(grab(), before, kWhole) > 1000; }, 30, 0.1);
        game.keyUp(k.first);
        if (std::string(k.second) == "free") {
            // The free view starts where the last view left the eye: a player
            // moves it, upwards here.
            game.keyDown("r");
            moved = waitFor([&] { return changed(grab(), before, kWhole) > 20000; }, 60, 0.1);
            game.keyUp("r");
        }
        EXPECT_TRUE(moved) << k.second << " view: the picture did not change";
        // The following views may swing about their place when frames are
        // slow; any one picture of them tells them apart.
        Picture p = game.screenshot();
        ASSERT_FALSE(p.empty()) << k.second;
        views.push_back({k.second, p});
    }
    game.tap("2");
    EXPECT_TRUE(game.onTheGrid()) << "2 does not bring the chase view back";

    int least = 1 << 30;
    for (size_t i = 0; i < views.size(); i++)
        for (size_t j = i + 1; j < views.size(); j++) least = std::min(least, changed(views[i].second, views[j].second, kWhole));
    printf("the two views most alike differ in %d pixels\n", least);
    for (size_t i = 0; i < views.size(); i++)
        for (size_t j = i + 1; j < views.size(); j++)
            EXPECT_GT(changed(views[i].second, views[j].second, kWhole), 20000)
                << views[i].first << " and " << views[j].first << " views look alike";
    ASSERT_EQ(game.close(), 0);
}

}  // namespace

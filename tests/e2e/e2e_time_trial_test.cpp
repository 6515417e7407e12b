// A time trial alone on the shortest circuit: the lap sets the track record,
// "NEW RECORD!" shows, the record and the ghost lap are written, and the next
// start of the game fills its loading bar and shows the ghost on the grid.
// The computer drives the kart (no human players, through the console): a
// whole lap by arrow keys at a software renderer's frame rate would take a
// person, and this test, too long.

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "e2e/e2e_fixtures.h"

using namespace e2e;
namespace fs = std::filesystem;

namespace {

const char* kTrack = "Riverside";

// The grid from the driver's seat, a view that does not swing about however
// slowly the game draws, at rest but for the countdown.
bool fromTheSeat(Game& game, Picture* shot) {
    if (!game.onTheGrid()) return false;
    game.tap("1");
    *shot = game.still(race::kCountdown);
    return !shot->empty();
}

// Below the top line, whose record differs between the runs.
int changed(const Picture& a, const Picture& b) {
    return a.changed(b, {0, 24, 1024, 744}, race::kCountdown);
}

TEST(E2eTimeTrial, ARecordLapWritesRecordAndGhostAndTheNextRunShowsTheGhost) {
    Options solo;
    // Alone, hard, in orange: the announcement is the only pure red.
    solo.gencon = "TIM\n1\n1\n2\n0\n10784\n";
    solo.track = kTrack;
    std::string record, ghost, gencon;
    Picture grid;
    {
        Game game(solo);
        ASSERT_TRUE(game.atMenu()) << game.process().output();
        game.console("set ghost 1");
        ASSERT_TRUE(game.startRace());
        ASSERT_TRUE(fromTheSeat(game, &grid));
        ASSERT_TRUE(game.countdownOver());
        Picture control = game.still(race::kCountdown);
        ASSERT_FALSE(control.empty());
        printf("pixels changed on the grid by the countdown's end: %d\n", changed(grid, control));
        ASSERT_LT(changed(grid, control), 300) << "the grid does not stand still";
        game.tap("2");  // the chase view, to watch the lap

        // The computer takes the wheel; the first pass over the line starts
        // the timed lap, the second ends it with the track's first record.
        // Where it gets stuck against a barrier, the player starts again, as
        // a person would, with a reset from the console.
        game.console("set nhumanplayers 0");
        bool announced = false;
        for (int attempt = 0; attempt < 4 && !announced; attempt++) {
            if (attempt > 0) {
                if (const char* keep = getenv("BV_E2E_PICTURES"))
                    grab().save(std::string(keep) + "/stuck" + std::to_string(attempt) + ".ppm");
                game.console("cmd reset");
            }
            announced = waitFor([] { return race::newRecord(grab()); }, 90, 0.05);
        }
        EXPECT_TRUE(announced) << "no NEW RECORD! after a lap";
        if (announced) {
            EXPECT_TRUE(race::newRecord(game.screenshot())) << "NEW RECORD! is not in the screenshot";
        }
        ASSERT_TRUE(game.escape());
        ASSERT_EQ(game.close(), 0);
        record = bvtest::readFile(game.path(std::string("Data/Highscore/") + kTrack + ".txt"));
        ghost = bvtest::readFile(game.path(std::string("Data/Ghosts/") + kTrack + ".txt"));
        gencon = bvtest::readFile(game.path("Data/gencon.bvd"));
        std::string log = game.log();
        EXPECT_NE(log.find("SET nhumanplayers 0"), std::string::npos) << log;
    }

    // The record: the player's name first, with a lap time under the 99 of
    // an empty table; the ghost: that time, then x, z and heading per sample.
    std::vector<std::string> table = bvtest::lines(record);
    ASSERT_EQ(table.size(), 10u) << record;
    char name[32] = "";
    float time = 0;
    ASSERT_EQ(sscanf(table[0].c_str(), "%31s %f", name, &time), 2);
    EXPECT_STREQ(name, "TIM");
    EXPECT_GT(time, 1);
    EXPECT_LT(time, 99);
    EXPECT_EQ(table[9], "nobody 99.000000");
    std::vector<std::string> samples = bvtest::lines(ghost);
    ASSERT_GT(samples.size(), 30u);
    EXPECT_EQ((samples.size() - 1) % 3, 0u);
    EXPECT_FLOAT_EQ(std::stof(samples[0]), time);
    printf("record lap %.2f s, ghost of %zu samples\n", time, (samples.size() - 1) / 3);

    // The next start, with what the first one left: the loading bar fills,
    // and with the ghost switched on it stands out on the grid.
    Options next = solo;
    next.gencon = gencon;
    next.files = {{std::string("Data/Highscore/") + kTrack + ".txt", record},
                  {std::string("Data/Ghosts/") + kTrack + ".txt", ghost}};
    Game game(next);
    ASSERT_TRUE(game.started()) << game.process().output();
    int most = -1;
    ASSERT_TRUE(waitFor(
        [&] {
            Picture p = grab();
            most = std::max(most, loadingSegments(p));
            return menu::shown(p);
        },
        240, 0.05));
    EXPECT_GE(most, 5) << "the loading bar did not fill";
    ASSERT_TRUE(game.atMenu());
    game.console("set ghost 1");
    ASSERT_TRUE(game.startRace());
    // The ghost sets off at once, and it may not stand still long enough
    // for two pictures to agree: the first from the seat will do.
    ASSERT_TRUE(game.onTheGrid());
    game.tap("1");
    Picture withGhost = game.screenshot();
    ASSERT_FALSE(withGhost.empty());
    printf("pixels changed by the ghost: %d\n", changed(grid, withGhost));
    if (const char* keep = getenv("BV_E2E_PICTURES")) {
        grid.save(std::string(keep) + "/noghost.ppm");
        withGhost.save(std::string(keep) + "/ghost.ppm");
    }
    EXPECT_GT(changed(grid, withGhost), 300) << "no ghost on the grid";
    ASSERT_EQ(game.close(), 0);
}

}  // namespace

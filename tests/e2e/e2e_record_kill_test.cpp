// A record survives the game being killed: a solo lap on the shortest circuit
// sets the track record, and one second after "NEW RECORD!" shows the game is
// killed with SIGKILL (no shutdown, no saves at exit). The next start shows
// the record on the Records screen and the ghost on the grid. The computer
// drives the kart, as in the time trial.

#include <gtest/gtest.h>

#include <signal.h>

#include <cstdio>
#include <cstdlib>

#include "e2e/e2e_fixtures.h"

using namespace e2e;

namespace {

const char* kTrack = "Riverside";
const double kRecordsX = 0.175, kRecordsY = 0.535;  // the Records button
const double kBackX = 0.1275, kBackY = 0.118;
// The table of the Records screen: its rows, below the title.
const Box kTable = {100, 150, 824, 500};

bool fromTheSeat(Game& game, Picture* shot) {
    if (!game.onTheGrid()) return false;
    game.tap("1");
    *shot = game.still(race::kCountdown);
    return !shot->empty();
}

// The Records screen of a game at its menu, then back to the race setup.
Picture recordsScreen(Game& game) {
    if (!game.press(kRecordsX, kRecordsY)) return Picture();
    // The table written: two looks a moment apart agree on it.
    Picture shot = grab(), last;
    bool drawn = waitFor(
        [&] {
            last = shot;
            rest(0.3);
            shot = grab();
            return !menu::shown(shot) && shot.same(last, kTable);
        },
        60, 0);
    game.press(kBackX, kBackY);
    return drawn ? shot : Picture();
}

TEST(E2eRecordKill, KilledASecondAfterNewRecordTheNextStartHasTheRecordAndTheGhost) {
    Options solo;
    solo.gencon = "TIM\n1\n1\n2\n0\n10784\n";
    solo.track = kTrack;

    std::string record, ghost;
    Picture grid, emptyTable;
    {
        Game game(solo);
        ASSERT_TRUE(game.atMenu()) << game.process().output();
        // The Records screen without a record, to tell one from it later.
        emptyTable = recordsScreen(game);
        ASSERT_FALSE(emptyTable.empty());
        ASSERT_TRUE(game.atMenu());
        game.console("set ghost 1");
        ASSERT_TRUE(game.startRace());
        ASSERT_TRUE(fromTheSeat(game, &grid));
        ASSERT_TRUE(game.countdownOver());
        game.tap("2");
        game.console("set nhumanplayers 0");
        bool announced = false;
        for (int attempt = 0; attempt < 4 && !announced; attempt++) {
            if (attempt > 0) game.console("cmd reset");
            announced = waitFor([] { return race::newRecord(grab()); }, 90, 0.05);
        }
        ASSERT_TRUE(announced) << "no NEW RECORD! after a lap";
        if (const char* keep = getenv("BV_E2E_PICTURES")) grab().save(std::string(keep) + "/announced.ppm");
        rest(1.0);
        ASSERT_EQ(kill(game.process().pid(), SIGKILL), 0);
        game.process().wait(10);
        record = bvtest::readFile(game.path(std::string("Data/Highscore/") + kTrack + ".txt"));
        ghost = bvtest::readFile(game.path(std::string("Data/Ghosts/") + kTrack + ".txt"));
        EXPECT_FALSE(bvtest::fileExists(game.path(std::string("Data/Highscore/") + kTrack + ".txt.tmp")));
        EXPECT_FALSE(bvtest::fileExists(game.path(std::string("Data/Ghosts/") + kTrack + ".txt.tmp")));
    }

    // On disk despite the kill: the player's lap at the top, the ghost's lap.
    std::vector<std::string> table = bvtest::lines(record);
    ASSERT_EQ(table.size(), 10u) << record;
    char name[32] = "";
    float time = 0;
    ASSERT_EQ(sscanf(table[0].c_str(), "%31s %f", name, &time), 2);
    EXPECT_STREQ(name, "TIM");
    EXPECT_LT(time, 99);
    std::vector<std::string> samples = bvtest::lines(ghost);
    ASSERT_GT(samples.size(), 30u);
    EXPECT_FLOAT_EQ(std::stof(samples[0]), time);

    // The next start, from what the killed game left on disk.
    Options next = solo;
    next.files = {{std::string("Data/Highscore/") + kTrack + ".txt", record},
                  {std::string("Data/Ghosts/") + kTrack + ".txt", ghost}};
    Game game(next);
    ASSERT_TRUE(game.atMenu()) << game.process().output();
    Picture withRecord = recordsScreen(game);
    ASSERT_FALSE(withRecord.empty());
    int rows = withRecord.changed(emptyTable, kTable, {0, 0, 0, 0});
    printf("pixels of the Records screen changed by the record: %d\n", rows);
    EXPECT_GT(rows, 50) << "the Records screen does not show the record";
    game.console("set ghost 1");
    ASSERT_TRUE(game.startRace());
    ASSERT_TRUE(game.onTheGrid());
    game.tap("1");
    Picture withGhost = game.screenshot();
    ASSERT_FALSE(withGhost.empty());
    if (const char* keep = getenv("BV_E2E_PICTURES")) {
        emptyTable.save(std::string(keep) + "/records-empty.ppm");
        withRecord.save(std::string(keep) + "/records-kept.ppm");
        grid.save(std::string(keep) + "/grid-noghost.ppm");
        withGhost.save(std::string(keep) + "/grid-ghost.ppm");
    }
    int ghostPixels = withGhost.changed(grid, {0, 24, 1024, 744}, race::kCountdown);
    printf("pixels changed by the ghost: %d\n", ghostPixels);
    EXPECT_GT(ghostPixels, 300) << "no ghost on the grid";
    ASSERT_EQ(game.close(), 0);
}

}  // namespace

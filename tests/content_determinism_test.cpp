// The generator makes the same bytes every time. How long it takes is no test's
// business: a loaded machine or a sanitizer build may take twice as long.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "support/bvtest_fixtures.h"

namespace fs = std::filesystem;

TEST(ContentDeterminism, TwoRunsGiveIdenticalBytes) {
    bvtest::ScratchDir scratch;
    std::string mine = scratch.path() + "/Data";
    std::string command = std::string(BV_DATAGEN_BINARY) + " " + mine + " " + BV_SOURCE_DIR + "/data > /dev/null";
    ASSERT_EQ(system(command.c_str()), 0);

    // Compared with the build's own run into the game directory.
    const fs::path theirs = fs::path(BV_GAME_DIR) / "Data";
    int files = 0;
    for (const auto& entry : fs::recursive_directory_iterator(mine)) {
        if (!entry.is_regular_file()) continue;
        fs::path rel = fs::relative(entry.path(), mine);
        ASSERT_TRUE(fs::exists(theirs / rel)) << rel;
        EXPECT_TRUE(bvtest::readFile(entry.path()) == bvtest::readFile(theirs / rel)) << rel << " differs";
        files++;
    }
    EXPECT_GT(files, 60);
    for (const char* dir : {"Screenshots", "Highscore", "Ghosts", "Ads"}) EXPECT_TRUE(fs::is_directory(fs::path(mine) / dir)) << dir;
    EXPECT_EQ(bvtest::readFile(mine + "/config.bvd"), bvtest::readFile(std::string(BV_SOURCE_DIR) + "/data/config.bvd"));
}

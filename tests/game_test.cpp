// The real game binary, started the way a player starts it.

#include <gtest/gtest.h>

#include <filesystem>
#include <regex>

#include "support/bvtest_fixtures.h"

using namespace bvtest;
namespace fs = std::filesystem;

namespace {

const std::regex kDate(R"( [A-Z][a-z]{2} [A-Z][a-z]{2} [ 0-9]\d \d\d:\d\d:\d\d \d{4})");

// A scratch copy of the game directory's Data/ with a chosen settings file.
void copyGameData(const ScratchDir& dir) {
    fs::remove_all(dir.path() + "/Data");
    fs::copy(std::string(BV_GAME_DIR) + "/Data", dir.path() + "/Data", fs::copy_options::recursive);
    fs::remove(dir.path() + "/Data/blackbox.bvd");
    fs::remove(dir.path() + "/Data/gencon.bvd");
}

std::string settings(bool sound) {
    std::string text = readFile(std::string(BV_SOURCE_DIR) + "/data/config.bvd");
    if (!sound) text = std::regex_replace(text, std::regex(R"((soundeffects\S*) 1)"), "$1 0");
    return text;
}

TEST(Game, WithoutSettingsItSaysBadConfigAndEndsWithStatusZero) {
    ScratchDir dir;
    GameProcess game(dir.path());
    EXPECT_EQ(game.wait(), 0);
    EXPECT_EQ(game.output(), "BAD CONFIG: Data/config.bvd");
    std::vector<std::string> l = lines(readFile("Data/blackbox.bvd"));
    ASSERT_EQ(l.size(), 5u);
    EXPECT_EQ(l[2], "Initializing configuration [  ]");
    EXPECT_EQ(l[3], " something went wrong! :(");
    EXPECT_TRUE(std::regex_match(l[4], kDate));
    EXPECT_FALSE(fileExists("Data/gencon.bvd"));
}

TEST(Game, OpensItsWindowAndClosingItEndsSmoothly) {
    ScratchDir dir;
    copyGameData(dir);
    writeFile("Data/config.bvd", settings(true));
    GameProcess game(dir.path(), {"ALSOFT_CONF=" + waveConf(dir.path())});
    ASSERT_NE(game.window(), 0ul) << game.output();
    std::string geometry = run("xdotool getwindowgeometry " + std::to_string(game.window()));
    EXPECT_NE(geometry.find("1024x768"), std::string::npos) << geometry;
    game.closeWindow();
    EXPECT_EQ(game.wait(), 0);

    std::string log = readFile("Data/blackbox.bvd");
    std::vector<std::string> l = lines(log);
    ASSERT_GE(l.size(), 6u);
    EXPECT_NE(log.find("Initialiazing sound [OK]\n"), std::string::npos);
    EXPECT_EQ(log.find(" [  ]"), std::string::npos) << log;
    EXPECT_EQ(l[l.size() - 2], " everything went smooth! :)");
    EXPECT_TRUE(std::regex_match(l.back(), kDate));
    std::vector<std::string> setup = lines(readFile("Data/gencon.bvd"));
    ASSERT_EQ(setup.size(), 6u);
    EXPECT_EQ(setup[0], "unnamed");
    EXPECT_GT(std::stoul(setup[5]), 0ul);  // this run's loaded kilobytes
}

TEST(Game, WithSoundOffTheFailedSoundTaskTurnsTheVerdict) {
    ScratchDir dir;
    copyGameData(dir);
    writeFile("Data/config.bvd", settings(false));
    GameProcess game(dir.path());
    ASSERT_NE(game.window(), 0ul);
    game.closeWindow();
    EXPECT_EQ(game.wait(), 0);
    std::vector<std::string> l = lines(readFile("Data/blackbox.bvd"));
    std::string log = readFile("Data/blackbox.bvd");
    EXPECT_NE(log.find("Initialiazing sound [  ]\n"), std::string::npos);
    EXPECT_EQ(l[l.size() - 2], " something went wrong! :(");
}

TEST(Game, RaceSetupIsReadAtStartAndWrittenBackAtExit) {
    ScratchDir dir;
    copyGameData(dir);
    writeFile("Data/config.bvd", settings(false));
    writeFile("Data/gencon.bvd", "Nigel\n3\n4\n1\n0\n100\n");
    GameProcess game(dir.path());
    ASSERT_NE(game.window(), 0ul);
    game.closeWindow();
    EXPECT_EQ(game.wait(), 0);
    std::vector<std::string> setup = lines(readFile("Data/gencon.bvd"));
    ASSERT_EQ(setup.size(), 6u);
    EXPECT_EQ(setup[0], "Nigel");
    EXPECT_EQ(setup[1], "3");
    EXPECT_EQ(setup[2], "4");
    EXPECT_EQ(setup[3], "1");
    EXPECT_EQ(setup[4], "0");
}

}  // namespace

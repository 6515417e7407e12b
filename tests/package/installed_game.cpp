// The game as a Debian package installs it, played the way a player plays it:
// started by the menu entry's command, the player's folder prepared on the
// first start, a race from the menu, Quit, and the settings program run from
// its installed command. scripts/test-package builds and installs the
// packages (with apt, or unpacked into a scratch root) and runs this with
//   BV_PACKAGE_ROOT   where the packages' files are: empty for the system
//   BV_PACKAGE_HOME   the player's home folder, which outlives the packages

#include <gtest/gtest.h>

#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "e2e/e2e_fixtures.h"
#include "shell/settingslines.h"

using namespace e2e;
using namespace bvtest;
namespace fs = std::filesystem;

namespace {

const std::string kAppId = "org.brontevalle.Brontevalle";

std::string env(const char* name) {
    const char* v = getenv(name);
    return v ? v : "";
}

std::string root() { return env("BV_PACKAGE_ROOT"); }
std::string home() { return env("BV_PACKAGE_HOME"); }
std::string shared() { return root() + "/usr/share/games/brontevalle/Data"; }
std::string player() { return home() + "/.local/share/brontevalle"; }

class Package : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_NE(getenv("DISPLAY"), nullptr) << "the game needs an X display";
        ASSERT_FALSE(home().empty()) << "scripts/test-package runs this, with BV_PACKAGE_HOME set";
        ASSERT_TRUE(fs::is_directory(home())) << home();
    }
    std::vector<std::string> playerEnv() const { return {"HOME=" + home(), "XDG_DATA_HOME="}; }
    ScratchDir scratch;
};

TEST_F(Package, TheMenuEntryStartsTheGameWhichRacesAndQuits) {
    const std::string entry = root() + "/usr/share/applications/" + kAppId + ".desktop";
    ASSERT_TRUE(fileExists(entry)) << entry;
    const std::string exec = execOf(entry);
    EXPECT_EQ(exec, "/usr/games/brontevalle");
    ASSERT_FALSE(fileExists(player())) << "the player's folder is made by the first start";

    Game game(Installed{root() + exec, player(), playerEnv(), scratch.path()});
    ASSERT_TRUE(game.atMenu()) << readFile(scratch.path() + "/stdout.txt");

    // The desktop shows and groups the window as the game's.
    unsigned long id = game.process().window();
    std::string props = run("xprop -id " + std::to_string(id) + " WM_NAME WM_CLASS WM_HINTS _NET_WM_ICON");
    EXPECT_NE(props.find("WM_NAME(STRING) = \"Brontevalle\""), std::string::npos) << props;
    EXPECT_NE(props.find("WM_CLASS(STRING) = \"brontevalle\", \"brontevalle\""), std::string::npos) << props;
    EXPECT_NE(readFile(entry).find("StartupWMClass=brontevalle\n"), std::string::npos);
    // SDL 1.2 gives the icon as a bitmap in the hints, SDL 2 as pixels.
    EXPECT_TRUE(props.find("bitmap id # to use for icon") != std::string::npos ||
                props.find("_NET_WM_ICON(CARDINAL) = ") != std::string::npos)
        << props;

    ASSERT_TRUE(game.startRace());
    ASSERT_TRUE(game.countdownOver());
    game.keyDown("Up");
    rest(2);
    game.keyUp("Up");
    ASSERT_TRUE(game.escape());
    ASSERT_TRUE(game.press(menu::kQuitX, menu::kQuitY));
    EXPECT_EQ(game.process().wait(60), 0);

    // The player's folder: own settings and folders, links to the shared content.
    const std::string data = player() + "/Data";
    EXPECT_FALSE(fs::is_symlink(data + "/config.bvd"));
    EXPECT_EQ(readFile(data + "/config.bvd"), readFile(shared() + "/config.bvd"));
    for (const char* d : {"Highscore", "Ghosts", "Screenshots"}) {
        EXPECT_TRUE(fs::is_directory(data + "/" + d)) << d;
        EXPECT_FALSE(fs::is_symlink(data + "/" + d)) << d;
    }
    ASSERT_TRUE(fs::is_symlink(data + "/GUI"));
    EXPECT_EQ(fs::read_symlink(data + "/GUI"), fs::canonical(shared() + "/GUI"));
    std::string log = readFile(data + "/blackbox.bvd");
    EXPECT_NE(log.find("Data/GUI/t.tga [OK]"), std::string::npos) << log;
    EXPECT_EQ(log.find(" [  ]"), std::string::npos) << log;
    EXPECT_NE(log.find("everything went smooth"), std::string::npos) << log;
    EXPECT_EQ(lines(readFile(data + "/gencon.bvd")).size(), 6u);
    // The race and the exit wrote only into the player's folder.
    for (const char* f : {"blackbox.bvd", "gencon.bvd", "Highscore", "Ghosts", "Screenshots"})
        EXPECT_FALSE(fileExists(shared() + "/" + f)) << f;
}

TEST_F(Package, TheSettingsProgramRunsFromItsInstalledCommand) {
    const std::string entry = root() + "/usr/share/applications/" + kAppId + ".Config.desktop";
    ASSERT_TRUE(fileExists(entry)) << entry;
    EXPECT_EQ(execOf(entry), "/usr/games/brontevalle-config");
    // A player of its own: the first start of the settings program prepares the folder too.
    const std::string own = scratch.path() + "/home";
    fs::create_directories(own);
    std::string out;
    const std::string command = "env HOME='" + own + "' XDG_DATA_HOME= '" + root() + "/usr/games/brontevalle-config'";
    ASSERT_EQ(shell(command + " --show", &out), 0) << out;
    EXPECT_EQ(lines(out).size(), (size_t)bvlines::kCount) << out;
    EXPECT_NE(out.find("resolution=2 "), std::string::npos) << out;
    EXPECT_EQ(readFile(own + "/.local/share/brontevalle/Data/config.bvd"), readFile(shared() + "/config.bvd"));
    ASSERT_EQ(shell(command + " --help", &out), 0) << out;
    EXPECT_NE(out.find("--show"), std::string::npos) << out;
}

}  // namespace

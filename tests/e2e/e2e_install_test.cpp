// The installation for a Linux desktop: installed into a scratch prefix, the
// desktop entries validate, the launcher prepares the player's own folder on
// the first start and runs the game from it, the installed settings program
// edits that folder's settings, and records outlive a reinstall and an
// uninstall.

#include <gtest/gtest.h>

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "settingsfile.h"
#include "support/bvtest_fixtures.h"

using namespace bvtest;
namespace fs = std::filesystem;

namespace {

const std::string kManifest = std::string(BV_BUILD_DIR) + "/install_manifest.txt";
const std::string kAppId = "org.brontevalle.Brontevalle";

// The installed game started the way the desktop starts it: the entry's
// command with the player's environment. The launcher replaces itself with
// the game, so the process is the game's.
class InstalledGame {
public:
    InstalledGame(const std::string& command, const std::vector<std::string>& env, const std::string& out) {
        pid_ = fork();
        if (pid_ == 0) {
            int fd = open(out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
            dup2(fd, 1);
            dup2(fd, 2);
            if (chdir("/") != 0) _exit(127);  // wherever the menu starts it
            setenv("SDL_VIDEODRIVER", "x11", 1);
            for (const std::string& e : env) putenv(strdup(e.c_str()));
            execl(command.c_str(), command.c_str(), (char*)nullptr);
            _exit(127);
        }
    }
    ~InstalledGame() {
        if (pid_ > 0 && status_ < 0) {
            kill(pid_, SIGKILL);
            waitpid(pid_, nullptr, 0);
        }
    }
    unsigned long window() {
        for (int i = 0; i < 300 && status_ < 0; i++) {
            std::string ids = run("xdotool search --onlyvisible --pid " + std::to_string(pid_) +
                                  " --classname brontevalle 2>/dev/null");
            if (!ids.empty()) return std::stoul(ids);
            reap();
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
        return 0;
    }
    int wait() {
        for (int i = 0; i < 400 && status_ < 0; i++) {
            reap();
            if (status_ < 0) std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
        return status_;
    }

private:
    void reap() {
        int st;
        if (waitpid(pid_, &st, WNOHANG) == pid_) status_ = WIFEXITED(st) ? WEXITSTATUS(st) : 128 + WTERMSIG(st);
    }
    int pid_ = -1;
    int status_ = -1;
};

class Installation : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_NE(getenv("DISPLAY"), nullptr) << "the game needs an X display (make test starts Xvfb)";
        // Installing writes the build tree's manifest; keep a developer's own.
        hadManifest_ = fileExists(kManifest);
        if (hadManifest_) manifest_ = readFile(kManifest);
        prefix = dir.path() + "/prefix with space";
        home = dir.path() + "/home";
        fs::create_directories(home);
        install();
    }
    void TearDown() override {
        if (hadManifest_) writeFile(kManifest, manifest_);
        else fs::remove(kManifest);
    }
    void install() {
        std::string out;
        ASSERT_EQ(shell("cmake --install " + std::string(BV_BUILD_DIR) + " --prefix '" + prefix + "'", &out), 0) << out;
        ourManifest = readFile(kManifest);
    }
    void uninstall() {
        writeFile(dir.path() + "/manifest.txt", ourManifest);
        std::string out;
        ASSERT_EQ(shell("cmake -DMANIFEST='" + dir.path() + "/manifest.txt' -P " + BV_SOURCE_DIR +
                            "/config/install/uninstall.cmake",
                        &out),
                  0)
            << out;
    }
    std::vector<std::string> env() const {
        return {"HOME=" + home, "ALSOFT_CONF=" + waveConf(dir.path()), "XDG_DATA_HOME="};
    }
    // Starts the game from the desktop entry's command, sees its window and
    // closes it; returns the exit status.
    int playOnce() {
        std::string command = execOf(prefix + "/share/applications/" + kAppId + ".desktop");
        EXPECT_EQ(command, prefix + "/bin/brontevalle");
        InstalledGame game(command, env(), dir.path() + "/game-output.txt");
        unsigned long id = game.window();
        EXPECT_NE(id, 0ul) << readFile(dir.path() + "/game-output.txt");
        if (!id) return -1;
        std::string geometry = run("xdotool getwindowgeometry " + std::to_string(id));
        EXPECT_NE(geometry.find("1024x768"), std::string::npos) << geometry;
        props = run("xprop -id " + std::to_string(id) + " WM_NAME WM_CLASS WM_HINTS _NET_WM_ICON");
        EXPECT_TRUE(closeWindow(id)) << "no X display to close the window through";
        return game.wait();
    }
    std::string player() const { return home + "/.local/share/brontevalle"; }

    ScratchDir dir;
    std::string prefix, home, ourManifest;
    std::string props;  // the last window's name, class and icon, as xprop shows them

private:
    bool hadManifest_ = false;
    std::string manifest_;
};

TEST_F(Installation, PutsEverythingInItsPlace) {
    for (const char* f : {"bin/brontevalle", "bin/brontevalle-config", "libexec/brontevalle/brontevalle",
                          "libexec/brontevalle/brontevalle-config", "share/brontevalle/Data/config.bvd",
                          "share/brontevalle/Data/GUI/t.tga", "share/applications/org.brontevalle.Brontevalle.desktop",
                          "share/applications/org.brontevalle.Brontevalle.Config.desktop",
                          "share/metainfo/org.brontevalle.Brontevalle.metainfo.xml",
                          "share/man/man6/brontevalle.6", "share/man/man6/brontevalle-config.6",
                          "share/icons/hicolor/512x512/apps/brontevalle.png",
                          "share/icons/hicolor/256x256/apps/brontevalle.png",
                          "share/icons/hicolor/128x128/apps/brontevalle.png",
                          "share/icons/hicolor/64x64/apps/brontevalle.png",
                          "share/icons/hicolor/48x48/apps/brontevalle.png"})
        EXPECT_TRUE(fileExists(prefix + "/" + f)) << f;
    // The manual names where this installation's shared content is.
    EXPECT_NE(readFile(prefix + "/share/man/man6/brontevalle.6").find(prefix + "/share/brontevalle/Data/"),
              std::string::npos);
    EXPECT_EQ(readFile(prefix + "/bin/brontevalle").rfind("#!/bin/sh", 0), 0u);  // the launcher, not the game
    EXPECT_EQ(readFile(prefix + "/share/brontevalle/Data/config.bvd"),
              readFile(std::string(BV_SOURCE_DIR) + "/data/config.bvd"));
    // Nothing a run in the build tree writes is shipped.
    for (const char* f : {"blackbox.bvd", "gencon.bvd", "Highscore", "Ghosts", "Screenshots"})
        EXPECT_FALSE(fileExists(prefix + "/share/brontevalle/Data/" + f)) << f;
    std::string png = readFile(prefix + "/share/icons/hicolor/256x256/apps/brontevalle.png");
    ASSERT_GT(png.size(), 24u);
    EXPECT_EQ(png.substr(1, 3), "PNG");
    EXPECT_EQ((unsigned char)png[18], 1u);  // 256 wide: 0x00000100
    EXPECT_EQ((unsigned char)png[19], 0u);
}

TEST_F(Installation, DesktopEntriesValidateAndNameTheLaunchers) {
    for (const char* entry : {"brontevalle", "brontevalle-config"}) {
        std::string file = prefix + "/share/applications/" + kAppId +
                           (std::string(entry) == "brontevalle" ? "" : ".Config") + ".desktop";
        std::string out;
        EXPECT_EQ(shell("desktop-file-validate '" + file + "'", &out), 0) << out;
        EXPECT_EQ(out, "") << out;  // not even a hint
        EXPECT_EQ(execOf(file), prefix + "/bin/" + entry);
        EXPECT_NE(readFile(file).find("Icon=brontevalle\n"), std::string::npos);
        EXPECT_NE(readFile(file).find(std::string("StartupWMClass=") + entry + "\n"), std::string::npos);
    }
}

TEST_F(Installation, TheSoftwareCentresDescriptionValidates) {
    std::string out;
    std::string file = prefix + "/share/metainfo/" + kAppId + ".metainfo.xml";
    EXPECT_EQ(shell("appstreamcli validate --no-net '" + file + "'", &out), 0) << out;
    EXPECT_EQ(out.find("\nE: "), std::string::npos) << out;
    EXPECT_EQ(out.find("\nW: "), std::string::npos) << out;
    EXPECT_EQ(out.rfind("E: ", 0), std::string::npos) << out;
    EXPECT_EQ(out.rfind("W: ", 0), std::string::npos) << out;
    std::string xml = readFile(file);
    EXPECT_NE(xml.find("<id>" + kAppId + "</id>"), std::string::npos);
    EXPECT_NE(xml.find("<launchable type=\"desktop-id\">" + kAppId + ".desktop</launchable>"), std::string::npos);
    // Every screenshot it names is one of ours, in the source tree.
    size_t at = 0;
    int shots = 0;
    while ((at = xml.find("/screenshots/", at)) != std::string::npos) {
        size_t end = xml.find('<', at);
        std::string name = xml.substr(at + 13, end - at - 13);
        EXPECT_TRUE(fileExists(std::string(BV_SOURCE_DIR) + "/config/screenshots/" + name)) << name;
        at = end;
        shots++;
    }
    EXPECT_EQ(shots, 3);
}

TEST_F(Installation, TheManualPagesReadWithoutWarnings) {
    for (const char* page : {"brontevalle", "brontevalle-config"}) {
        std::string out;
        std::string file = prefix + "/share/man/man6/" + page + ".6";
        EXPECT_EQ(shell("LC_ALL=C.UTF-8 MANWIDTH=80 man --warnings -E UTF-8 -l '" + file + "' 2>&1 >/dev/null", &out), 0);
        EXPECT_EQ(out, "") << page << ": " << out;
        ASSERT_EQ(shell("LC_ALL=C.UTF-8 MANWIDTH=80 man -l '" + file + "' 2>/dev/null", &out), 0);
        for (const char* section : {"NAME", "SYNOPSIS", "DESCRIPTION", "EXIT STATUS", "SEE ALSO"})
            EXPECT_NE(out.find(std::string("\n") + section + "\n"), std::string::npos) << page << ": " << section;
    }
    // The settings program's --help and its manual give the same options.
    std::string help, manual;
    ASSERT_EQ(shell("'" + prefix + "/libexec/brontevalle/brontevalle-config' --help", &help), 0);
    ASSERT_EQ(shell("LC_ALL=C.UTF-8 MANWIDTH=200 man -l '" + prefix + "/share/man/man6/brontevalle-config.6' 2>/dev/null",
                    &manual),
              0);
    manual = manual.substr(manual.find("\nOPTIONS\n"));
    manual = manual.substr(0, manual.find("\nSETTINGS\n"));
    for (const char* option : {"--file", "--show", "--set", "--game", "--help"}) {
        EXPECT_NE(help.find(option), std::string::npos) << option;
        EXPECT_NE(manual.find(option), std::string::npos) << option;
    }
}

TEST_F(Installation, TheFirstStartPreparesThePlayersFolderAndTheGameRunsFromIt) {
    ASSERT_FALSE(fileExists(player()));
    EXPECT_EQ(playOnce(), 0);
    // The window carries the game's name and icon, and the class of its menu entry.
    EXPECT_NE(props.find("WM_NAME(STRING) = \"Brontevalle\""), std::string::npos) << props;
    EXPECT_NE(props.find("WM_CLASS(STRING) = \"brontevalle\", \"brontevalle\""), std::string::npos) << props;
    EXPECT_TRUE(props.find("bitmap id # to use for icon") != std::string::npos ||
                props.find("_NET_WM_ICON(CARDINAL) = ") != std::string::npos)
        << props;
    const std::string data = player() + "/Data";
    EXPECT_EQ(readFile(data + "/config.bvd"), readFile(std::string(BV_SOURCE_DIR) + "/data/config.bvd"));
    EXPECT_FALSE(fs::is_symlink(data + "/config.bvd"));
    for (const char* d : {"Highscore", "Ghosts", "Screenshots"}) {
        EXPECT_TRUE(fs::is_directory(data + "/" + d)) << d;
        EXPECT_FALSE(fs::is_symlink(data + "/" + d)) << d;
    }
    ASSERT_TRUE(fs::is_symlink(data + "/GUI"));
    EXPECT_EQ(fs::read_symlink(data + "/GUI"), fs::canonical(prefix + "/share/brontevalle/Data/GUI"));
    // The game ran there: its log and race setup are the player's, and it read
    // the shared pictures through the links.
    std::string log = readFile(data + "/blackbox.bvd");
    EXPECT_NE(log.find("Initializing configuration [OK]"), std::string::npos) << log;
    EXPECT_NE(log.find("Data/GUI/t.tga [OK]"), std::string::npos) << log;
    EXPECT_EQ(log.find(" [  ]"), std::string::npos) << log;
    EXPECT_NE(log.find("everything went smooth"), std::string::npos) << log;
    EXPECT_EQ(lines(readFile(data + "/gencon.bvd")).size(), 6u);
    EXPECT_FALSE(fileExists(prefix + "/share/brontevalle/Data/blackbox.bvd"));
}

TEST_F(Installation, TheFolderFollowsXdgDataHome) {
    std::string xdg = dir.path() + "/xdg";
    std::string out;
    ASSERT_EQ(shell("env HOME='" + home + "' XDG_DATA_HOME='" + xdg + "' '" + prefix +
                        "/bin/brontevalle-config' --show",
                    &out),
              0)
        << out;
    EXPECT_TRUE(fileExists(xdg + "/brontevalle/Data/config.bvd"));
    EXPECT_FALSE(fileExists(player()));
}

TEST_F(Installation, TheInstalledSettingsProgramEditsThePlayersSettings) {
    std::string out;
    std::string config = "env HOME='" + home + "' XDG_DATA_HOME= '" + prefix + "/bin/brontevalle-config'";
    ASSERT_EQ(shell(config + " --set music=0 resolution=800x600", &out), 0) << out;
    std::string mine = readFile(player() + "/Data/config.bvd");
    bvset::Values want = bvset::defaults();
    want[0] = 1;
    want[8] = 0;
    EXPECT_EQ(mine, bvset::format(want));
    EXPECT_EQ(readFile(prefix + "/share/brontevalle/Data/config.bvd"),
              readFile(std::string(BV_SOURCE_DIR) + "/data/config.bvd"));
    ASSERT_EQ(shell(config + " --show", &out), 0);
    EXPECT_NE(out.find("resolution=1 "), std::string::npos) << out;
    // A value out of range: refused, the player's file as it was.
    EXPECT_EQ(shell(config + " --set musicvolume=140", &out), 2);
    EXPECT_EQ(readFile(player() + "/Data/config.bvd"), mine);
    // The game starts with them: 800x600.
    std::string command = execOf(prefix + "/share/applications/" + kAppId + ".desktop");
    InstalledGame game(command, env(), dir.path() + "/game-output.txt");
    unsigned long id = game.window();
    ASSERT_NE(id, 0ul) << readFile(dir.path() + "/game-output.txt");
    std::string geometry = run("xdotool getwindowgeometry " + std::to_string(id));
    EXPECT_NE(geometry.find("800x600"), std::string::npos) << geometry;
    EXPECT_TRUE(closeWindow(id)) << "no X display to close the window through";
    EXPECT_EQ(game.wait(), 0);
}

TEST_F(Installation, RecordsAndSettingsOutliveAReinstallAndAnUninstall) {
    ASSERT_EQ(playOnce(), 0);
    const std::string data = player() + "/Data";
    writeFile(data + "/Highscore/Valley.txt", "Nigel 61.25\n");
    writeFile(data + "/Ghosts/Valley.txt", "0 0 0\n");
    writeFile(data + "/Screenshots/shot000.tga", "picture");
    std::string out;
    ASSERT_EQ(shell("env HOME='" + home + "' XDG_DATA_HOME= '" + prefix + "/bin/brontevalle-config' --set detail=0",
                    &out),
              0)
        << out;
    const std::string settings = readFile(data + "/config.bvd");

    install();  // a reinstall over the old one
    ASSERT_EQ(playOnce(), 0);
    EXPECT_EQ(readFile(data + "/Highscore/Valley.txt"), "Nigel 61.25\n");
    EXPECT_EQ(readFile(data + "/Ghosts/Valley.txt"), "0 0 0\n");
    EXPECT_EQ(readFile(data + "/Screenshots/shot000.tga"), "picture");
    EXPECT_EQ(readFile(data + "/config.bvd"), settings);  // copied once, never again

    uninstall();
    EXPECT_FALSE(fileExists(prefix + "/bin/brontevalle"));
    EXPECT_FALSE(fileExists(prefix + "/libexec/brontevalle"));
    EXPECT_FALSE(fileExists(prefix + "/share/brontevalle"));
    EXPECT_FALSE(fileExists(prefix + "/share/applications/" + kAppId + ".desktop"));
    EXPECT_FALSE(fileExists(prefix + "/share/metainfo/" + kAppId + ".metainfo.xml"));
    EXPECT_FALSE(fileExists(prefix + "/share/man/man6/brontevalle.6"));
    EXPECT_EQ(readFile(data + "/Highscore/Valley.txt"), "Nigel 61.25\n");
    EXPECT_EQ(readFile(data + "/Ghosts/Valley.txt"), "0 0 0\n");
    EXPECT_EQ(readFile(data + "/config.bvd"), settings);

    // Installed again elsewhere: the links follow the new place, the records stay.
    prefix = dir.path() + "/elsewhere";
    install();
    ASSERT_EQ(playOnce(), 0);
    EXPECT_EQ(fs::read_symlink(data + "/GUI"), fs::canonical(prefix + "/share/brontevalle/Data/GUI"));
    EXPECT_EQ(readFile(data + "/Highscore/Valley.txt"), "Nigel 61.25\n");
    EXPECT_NE(readFile(data + "/blackbox.bvd").find("everything went smooth"), std::string::npos);
}

}  // namespace

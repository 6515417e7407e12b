// The settings window on the X screen: it shows the file's values, and what is
// changed with the keyboard (Alt and the underlined letter of each setting:
// a list or a number takes the focus, a switch flips)
// lands in the file on Save and nowhere on Cancel.

#include <gtest/gtest.h>

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
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

// The settings program in its window, started like a player would start it.
class SettingsWindow {
public:
    explicit SettingsWindow(const std::vector<std::string>& args) {
        err_ = fs::current_path().string() + "/config-stderr.txt";
        pid_ = fork();
        if (pid_ == 0) {
            int fd = open(err_.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
            dup2(fd, 2);
            setenv("NO_AT_BRIDGE", "1", 1);  // no accessibility bus on a test screen
            setenv("GDK_BACKEND", "x11", 1);
            std::vector<char*> argv = {const_cast<char*>("brontevalle-config")};
            for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
            argv.push_back(nullptr);
            execv(BV_CONFIG_BINARY, argv.data());
            _exit(127);
        }
    }
    ~SettingsWindow() {
        if (pid_ > 0 && status_ < 0) {
            kill(pid_, SIGKILL);
            waitpid(pid_, nullptr, 0);
        }
    }
    // The window's id once it is on the screen and drawn, 0 if it never comes.
    std::string window() {
        for (int i = 0; i < 200 && id_.empty(); i++) {
            std::string ids = run("xdotool search --onlyvisible --pid " + std::to_string(pid_) +
                                  " --name 'Brontevalle configuration' 2>/dev/null");
            if (!ids.empty()) id_ = ids.substr(0, ids.find('\n'));
            else std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
        if (!id_.empty()) {
            // Until the first frame is drawn the keys have nowhere to go.
            std::this_thread::sleep_for(std::chrono::milliseconds(700));
            run("xdotool windowfocus --sync " + id_ + " 2>/dev/null");
        }
        return id_;
    }
    // Keys as a player types them, one after another.
    void keys(const std::string& keys) {
        for (size_t start = 0; start < keys.size();) {
            size_t end = keys.find(' ', start);
            if (end == std::string::npos) end = keys.size();
            run("xdotool key --clearmodifiers " + keys.substr(start, end - start));
            std::this_thread::sleep_for(std::chrono::milliseconds(150));
            start = end + 1;
        }
    }
    int wait(double seconds = 20) {
        auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
        while (status_ < 0 && std::chrono::steady_clock::now() < end) {
            int st;
            if (waitpid(pid_, &st, WNOHANG) == pid_) status_ = WIFEXITED(st) ? WEXITSTATUS(st) : 128 + WTERMSIG(st);
            else std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
        return status_;
    }
    std::string errors() const { return readFile(err_); }

private:
    int pid_ = -1;
    int status_ = -1;
    std::string id_, err_;
};

// A screenshot of the whole screen in the build tree, to look at.
void screenshot(const std::string& name) {
    std::string dir = std::string(BV_BUILD_DIR) + "/screenshots";
    fs::create_directories(dir);
    run("import -window root " + dir + "/" + name + " 2>/dev/null");
}

// Values unlike the shipped ones in every entry a test looks at.
bvset::Values unusual() {
    return {4, 0, 1, 0, 1, 0, 1, 55, 0, 30, 20, 1, 9, 1, 0, 1};
}

std::vector<int> numbers(const std::string& text) {
    std::vector<int> v;
    for (const std::string& line : lines(text)) v.push_back(std::stoi(line.substr(line.rfind(' ') + 1)));
    return v;
}

class ScreenSettingsWindow : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_NE(getenv("DISPLAY"), nullptr) << "window tests need an X display (make test starts Xvfb)";
        writeFile("Data/config.bvd", bvset::format(unusual()));
    }
    ScratchDir dir;
};

TEST_F(ScreenSettingsWindow, ShowsTheFilesValuesAndSavingThemUnchangedKeepsThem) {
    SettingsWindow w({});
    ASSERT_FALSE(w.window().empty()) << w.errors();
    screenshot("settings-window.png");
    // Had any widget shown something else than the file holds, saving would write it.
    w.keys("alt+s");
    EXPECT_EQ(w.wait(), 0);
    EXPECT_EQ(readFile("Data/config.bvd"), bvset::format(unusual()));
}

TEST_F(ScreenSettingsWindow, ChangesMadeInTheWindowLandInTheFile) {
    SettingsWindow w({});
    ASSERT_FALSE(w.window().empty()) << w.errors();
    // resolution one step down the list, the effects volume to full, the
    // sensitivity one up (it can only be reached while mouse steering is on),
    // mouse steering off, the track shadows on (Alt and a switch's letter
    // flips the switch)
    w.keys("alt+r Down alt+u End alt+n Up alt+g alt+t");
    screenshot("settings-window-changed.png");
    w.keys("alt+s");
    ASSERT_EQ(w.wait(), 0);
    std::vector<int> v = numbers(readFile("Data/config.bvd"));
    bvset::Values want = unusual();
    want[0] = 5;
    want[7] = 100;
    want[11] = 0;
    want[5] = 1;
    want[12] = 10;
    ASSERT_EQ(v.size(), (size_t)bvset::kCount);
    for (int i = 0; i < 16; i++) EXPECT_EQ(v[i], want[i]) << bvset::settings()[i].name;
}

// A file from before the joystick's dead zone: the window offers the zone at
// 8 %, beside joystick steering, and saving writes it as the seventeenth line.
TEST_F(ScreenSettingsWindow, ASixteenLineFileGainsTheDeadZoneOnSave) {
    std::string text = bvset::format(unusual());
    text = text.substr(0, text.find("joystickdeadzone"));
    writeFile("Data/config.bvd", text);
    ASSERT_EQ(lines(text).size(), 16u);
    SettingsWindow w({});
    ASSERT_FALSE(w.window().empty()) << w.errors();
    screenshot("settings-window-deadzone.png");
    w.keys("alt+s");
    ASSERT_EQ(w.wait(), 0);
    EXPECT_EQ(readFile("Data/config.bvd"), text + "joystickdeadzone(percent) 8\n");
}

TEST_F(ScreenSettingsWindow, TheDeadZoneIsChangedInTheWindow) {
    SettingsWindow w({});
    ASSERT_FALSE(w.window().empty()) << w.errors();
    // joystick steering off (it is on in the file): the zone dims; on again,
    // and the zone to its widest
    w.keys("alt+j");
    screenshot("settings-window-deadzone-dimmed.png");
    w.keys("alt+j alt+z End");
    screenshot("settings-window-deadzone-changed.png");
    w.keys("alt+s");
    ASSERT_EQ(w.wait(), 0);
    std::vector<int> v = numbers(readFile("Data/config.bvd"));
    bvset::Values want = unusual();
    want[16] = 30;
    ASSERT_EQ(v.size(), 17u);
    for (int i = 0; i < 17; i++) EXPECT_EQ(v[i], want[i]) << bvset::settings()[i].name;
}

TEST_F(ScreenSettingsWindow, CancelLeavesTheFileUntouched) {
    for (const char* close : {"alt+c", "Escape"}) {
        struct stat before, after;
        ASSERT_EQ(stat("Data/config.bvd", &before), 0);
        SettingsWindow w({});
        ASSERT_FALSE(w.window().empty()) << w.errors();
        w.keys(std::string("alt+r Down alt+u Home ") + close);
        EXPECT_EQ(w.wait(), 0) << close;
        EXPECT_EQ(readFile("Data/config.bvd"), bvset::format(unusual())) << close;
        ASSERT_EQ(stat("Data/config.bvd", &after), 0);
        EXPECT_EQ(before.st_ino, after.st_ino) << close;
        EXPECT_EQ(before.st_mtim.tv_nsec, after.st_mtim.tv_nsec) << close;
    }
}

TEST_F(ScreenSettingsWindow, AnUnreadableFileIsReportedAndTheShippedValuesOffered) {
    fs::remove("Data/config.bvd");
    SettingsWindow w({"--file", "Data/config.bvd"});
    ASSERT_FALSE(w.window().empty()) << w.errors();
    screenshot("settings-window-missing-file.png");
    w.keys("alt+s");
    ASSERT_EQ(w.wait(), 0);
    EXPECT_NE(w.errors().find("No such file"), std::string::npos) << w.errors();
    EXPECT_EQ(readFile("Data/config.bvd"), readFile(std::string(BV_SOURCE_DIR) + "/data/config.bvd"));
}

TEST_F(ScreenSettingsWindow, PlaySavesAndStartsTheGameWhereItsDataIs) {
    std::string game = dir.path() + "/fake-game";
    writeFile(game, "#!/bin/sh\npwd > " + dir.path() + "/started\n");
    ASSERT_EQ(chmod(game.c_str(), 0755), 0);
    fs::create_directories("elsewhere");
    fs::current_path("elsewhere");
    SettingsWindow w({"--file", dir.path() + "/Data/config.bvd", "--game", game});
    ASSERT_FALSE(w.window().empty()) << w.errors();
    w.keys("alt+i alt+p");
    ASSERT_EQ(w.wait(), 0) << w.errors();
    fs::current_path(dir.path());
    for (int i = 0; i < 100 && !fileExists("started"); i++) std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_EQ(readFile("started"), dir.path() + "\n");
    EXPECT_EQ(numbers(readFile("Data/config.bvd"))[15], 0);  // skid marks switched off, and saved
}

TEST(ScreenSettingsWindowAlone, WithoutADisplayItSaysSoAndTheCommandLineStillWorks) {
    ScratchDir dir;
    writeFile("Data/config.bvd", bvset::format(unusual()));
    std::string out = run("env -u DISPLAY -u WAYLAND_DISPLAY " + std::string(BV_CONFIG_BINARY) + " 2>&1; echo status $?");
    EXPECT_NE(out.find("no display"), std::string::npos) << out;
    EXPECT_NE(out.find("status 1"), std::string::npos) << out;
    out = run("env -u DISPLAY " + std::string(BV_CONFIG_BINARY) + " --show");
    EXPECT_NE(out.find("resolution=4 "), std::string::npos) << out;
}

}  // namespace

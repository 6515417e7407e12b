// brontevalle-config without a window: --show, --set and the file it writes,
// read back by the game's own settings reader.

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/wait.h>

#include <filesystem>
#include <string>

#include "settingsfile.h"
#include "shell/blackbox.h"
#include "shell/bvconfig.h"
#include "support/bvtest_fixtures.h"

using namespace bvtest;
namespace fs = std::filesystem;

namespace {

struct Result {
    int status;
    std::string out, err;
};

// Runs the settings program with arguments (already quoted for the shell).
Result settingsProgram(const std::string& args) {
    std::string err = fs::current_path().string() + "/stderr.txt";
    std::string command = std::string(BV_CONFIG_BINARY) + " " + args + " 2>" + err;
    Result r;
    FILE* p = popen(command.c_str(), "r");
    char buf[4096];
    size_t n;
    while ((n = fread(buf, 1, sizeof buf, p)) > 0) r.out.append(buf, n);
    int st = pclose(p);
    r.status = WIFEXITED(st) ? WEXITSTATUS(st) : -1;
    r.err = readFile(err);
    return r;
}

const char* kNames[16] = {"resolution",   "colourdepth",  "viewdistance", "detail",        "kartshadows",
                          "trackshadows", "soundeffects", "soundvolume",  "music",         "musicvolume",
                          "brightness",   "mousesteering", "mousesensitivity", "joysticksteering", "lensflare",
                          "skidmarks"};
const int kShipped[16] = {2, 1, 3, 2, 3, 1, 1, 100, 1, 80, 0, 0, 4, 0, 1, 1};
const int kMin[16] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0};
const int kMax[16] = {5, 1, 3, 2, 3, 1, 1, 100, 1, 100, 100, 1, 20, 1, 1, 1};

std::string shipped() {
    return readFile(std::string(BV_SOURCE_DIR) + "/data/config.bvd");
}

// The numbers of the file, in order, read independently of the program.
std::vector<int> numbers(const std::string& text) {
    std::vector<int> v;
    for (const std::string& line : lines(text)) v.push_back(std::stoi(line.substr(line.rfind(' ') + 1)));
    return v;
}

class SettingsCli : public ::testing::Test {
protected:
    void SetUp() override { writeFile("Data/config.bvd", shipped()); }
    ScratchDir dir;
};

TEST_F(SettingsCli, ShowPrintsTheSixteenSettingsInTheGamesOrder) {
    Result r = settingsProgram("--show");
    ASSERT_EQ(r.status, 0) << r.err;
    std::vector<std::string> l = lines(r.out);
    ASSERT_EQ(l.size(), (size_t)bvset::kCount) << r.out;
    for (int i = 0; i < 16; i++)
        EXPECT_EQ(l[i].substr(0, l[i].find(' ')), std::string(kNames[i]) + "=" + std::to_string(kShipped[i]));
    EXPECT_NE(l[0].find("1024x768"), std::string::npos);
    EXPECT_NE(l[4].find("full"), std::string::npos);
    EXPECT_NE(l[9].find("80%"), std::string::npos);
    EXPECT_NE(l[11].find("off"), std::string::npos);
}

TEST_F(SettingsCli, SetsEachOfTheSixteenAndLeavesTheOthers) {
    for (int i = 0; i < 16; i++) {
        int value = kShipped[i] == kMax[i] ? kMin[i] : kMax[i];
        Result r = settingsProgram("--set " + std::string(kNames[i]) + "=" + std::to_string(value));
        ASSERT_EQ(r.status, 0) << kNames[i] << ": " << r.err;
        std::vector<int> v = numbers(readFile("Data/config.bvd"));
        ASSERT_EQ(v.size(), (size_t)bvset::kCount);
        for (int k = 0; k < 16; k++) EXPECT_EQ(v[k], k == i ? value : kShipped[k]) << kNames[i] << " entry " << k;
        EXPECT_NE(settingsProgram("--show").out.find(std::string(kNames[i]) + "=" + std::to_string(value) + " "),
                  std::string::npos);
        writeFile("Data/config.bvd", shipped());
    }
}

TEST_F(SettingsCli, SavingTheShippedValuesGivesTheShippedFile) {
    // A round trip through the program changes nothing a player wrote by hand
    // in the sample: labels, order and values are the same.
    ASSERT_EQ(settingsProgram("--set music=1").status, 0);
    EXPECT_EQ(readFile("Data/config.bvd"), shipped());
    EXPECT_EQ(bvset::format(bvset::defaults()), shipped());
}

TEST_F(SettingsCli, SeveralAtOnceAndStepsByName) {
    Result r = settingsProgram("--set resolution=1600x1200 colourdepth=16 kartshadows=blobs viewdistance=short music=off "
                      "lensflare=on");
    ASSERT_EQ(r.status, 0) << r.err;
    std::vector<int> v = numbers(readFile("Data/config.bvd"));
    EXPECT_EQ(v[0], 5);
    EXPECT_EQ(v[1], 0);
    EXPECT_EQ(v[4], 1);
    EXPECT_EQ(v[2], 0);
    EXPECT_EQ(v[8], 0);
    EXPECT_EQ(v[14], 1);
}

TEST_F(SettingsCli, RefusesEveryValueOutsideItsRangeAndKeepsTheFile) {
    for (int i = 0; i < 16; i++) {
        for (int bad : {kMax[i] + 1, kMin[i] - 1}) {
            Result r = settingsProgram("--set " + std::string(kNames[i]) + "=" + std::to_string(bad));
            EXPECT_EQ(r.status, 2) << kNames[i] << "=" << bad;
            std::string range = std::to_string(kMin[i]) + ".." + std::to_string(kMax[i]);
            EXPECT_NE(r.err.find(kNames[i]), std::string::npos) << r.err;
            EXPECT_NE(r.err.find(range), std::string::npos) << r.err;
            EXPECT_EQ(readFile("Data/config.bvd"), shipped());
        }
    }
}

TEST_F(SettingsCli, OneBadValueRefusesTheWholeCommand) {
    struct stat before, after;
    ASSERT_EQ(stat("Data/config.bvd", &before), 0);
    Result r = settingsProgram("--set music=0 soundvolume=101");
    EXPECT_EQ(r.status, 2);
    EXPECT_NE(r.err.find("allowed: 0..100"), std::string::npos) << r.err;
    EXPECT_EQ(readFile("Data/config.bvd"), shipped());
    ASSERT_EQ(stat("Data/config.bvd", &after), 0);
    EXPECT_EQ(before.st_ino, after.st_ino);  // not even rewritten
    for (const char* bad : {"resolution=1280", "resolution=big", "nosuch=1", "music", "soundvolume=", "detail=2x"}) {
        Result b = settingsProgram(std::string("--set '") + bad + "'");
        EXPECT_EQ(b.status, 2) << bad;
        EXPECT_FALSE(b.err.empty()) << bad;
        EXPECT_EQ(readFile("Data/config.bvd"), shipped()) << bad;
    }
    EXPECT_NE(settingsProgram("--set nosuch=1").err.find("skidmarks"), std::string::npos);
    EXPECT_EQ(settingsProgram("--set").status, 2);
}

TEST_F(SettingsCli, WritesThroughATemporaryFileAndKeepsThePermissions) {
    ASSERT_EQ(chmod("Data/config.bvd", 0640), 0);
    struct stat before, after;
    ASSERT_EQ(stat("Data/config.bvd", &before), 0);
    ASSERT_EQ(settingsProgram("--set detail=0").status, 0);
    ASSERT_EQ(stat("Data/config.bvd", &after), 0);
    // A new file renamed into place, not the old one rewritten in place.
    EXPECT_NE(before.st_ino, after.st_ino);
    EXPECT_EQ(after.st_mode & 0777, 0640u);
    int files = 0;
    for (const auto& e : fs::directory_iterator("Data"))
        if (e.is_regular_file()) files++;
    EXPECT_EQ(files, 1);  // no temporary left behind
}

TEST_F(SettingsCli, AnotherFileByPath) {
    fs::create_directories("elsewhere");
    writeFile("elsewhere/my.bvd", shipped());
    ASSERT_EQ(settingsProgram("--file elsewhere/my.bvd --set brightness=40").status, 0);
    EXPECT_EQ(numbers(readFile("elsewhere/my.bvd"))[10], 40);
    EXPECT_EQ(readFile("Data/config.bvd"), shipped());
    EXPECT_NE(settingsProgram("--file elsewhere/my.bvd --show").out.find("brightness=40 "), std::string::npos);
}

TEST_F(SettingsCli, AMissingFileIsReportedAndSetStartsFromTheShippedValues) {
    fs::remove("Data/config.bvd");
    Result r = settingsProgram("--show");
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.err.find("Data/config.bvd"), std::string::npos) << r.err;
    EXPECT_TRUE(r.out.empty());
    r = settingsProgram("--set skidmarks=0");
    EXPECT_EQ(r.status, 0);
    EXPECT_NE(r.err.find("cannot read"), std::string::npos);
    std::vector<int> v = numbers(readFile("Data/config.bvd"));
    for (int k = 0; k < 16; k++) EXPECT_EQ(v[k], k == 15 ? 0 : kShipped[k]);
    r = settingsProgram("--file nowhere/Data/config.bvd --set skidmarks=0");
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.err.find("nowhere/Data/config.bvd"), std::string::npos) << r.err;
}

TEST_F(SettingsCli, ReadsAShortFileTheWayTheGameDoes) {
    // Eleven entries: the rest repeat the last number read.
    std::string text;
    for (int i = 0; i < 11; i++) text += "x " + std::to_string(i == 10 ? 1 : kShipped[i]) + "\n";
    writeFile("Data/config.bvd", text);
    Result r = settingsProgram("--show");
    ASSERT_EQ(r.status, 0);
    EXPECT_NE(r.err.find("only 11 of the 16"), std::string::npos) << r.err;
    std::vector<std::string> l = lines(r.out);
    ASSERT_EQ(l.size(), (size_t)bvset::kCount);
    for (int i = 11; i < 16; i++) EXPECT_EQ(l[i].substr(0, l[i].find(' ')), std::string(kNames[i]) + "=1");
    blackbox.init("Data/blackbox.bvd", false);
    ASSERT_TRUE(config.init("Data/config.bvd"));
    EXPECT_EQ(config.mousesteering, 1u);
    EXPECT_EQ(config.mousesensitivity, 1u);
    EXPECT_EQ(config.skidmarks, 1u);
}

TEST_F(SettingsCli, ValuesOutsideTheRangeAreShownAsTheGameUsesThem) {
    std::string text = shipped();
    text.replace(text.find(") 2\n"), 4, ") 7\n");
    writeFile("Data/config.bvd", text);
    Result r = settingsProgram("--show");
    ASSERT_EQ(r.status, 0);
    EXPECT_NE(r.out.find("resolution=7"), std::string::npos);
    EXPECT_NE(r.out.find("1024x768"), std::string::npos);
}

// The shipped file without its seventeenth line: a file from before the
// joystick's dead zone.
std::string sixteenLines() {
    std::string text = shipped();
    size_t cut = text.find("joystickdeadzone");
    return cut == std::string::npos ? text : text.substr(0, cut);
}

TEST_F(SettingsCli, ASixteenLineFileShowsTheDeadZoneAtEightAndIsComplete) {
    writeFile("Data/config.bvd", sixteenLines());
    ASSERT_EQ(lines(readFile("Data/config.bvd")).size(), 16u);
    Result r = settingsProgram("--show");
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.err, "");
    std::vector<std::string> l = lines(r.out);
    ASSERT_EQ(l.size(), 17u) << r.out;
    EXPECT_EQ(l[16].substr(0, l[16].find(' ')), "joystickdeadzone=8");
    EXPECT_NE(l[16].find("8%"), std::string::npos) << l[16];
}

TEST_F(SettingsCli, SettingASixteenLineFileWritesTheSeventeenth) {
    writeFile("Data/config.bvd", sixteenLines());
    ASSERT_EQ(settingsProgram("--set brightness=40").status, 0);
    std::string text = readFile("Data/config.bvd");
    std::vector<int> v = numbers(text);
    ASSERT_EQ(v.size(), 17u);
    for (int k = 0; k < 16; k++) EXPECT_EQ(v[k], k == 10 ? 40 : kShipped[k]) << kNames[k];
    EXPECT_EQ(lines(text)[16], "joystickdeadzone(percent) 8");
}

TEST_F(SettingsCli, SetsTheDeadZoneAndLeavesTheOthers) {
    Result r = settingsProgram("--set joystickdeadzone=21");
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out, "joystickdeadzone=21 (21%)\n");
    std::vector<int> v = numbers(readFile("Data/config.bvd"));
    ASSERT_EQ(v.size(), 17u);
    for (int k = 0; k < 16; k++) EXPECT_EQ(v[k], kShipped[k]) << kNames[k];
    EXPECT_EQ(v[16], 21);
    EXPECT_NE(settingsProgram("--show").out.find("joystickdeadzone=21 "), std::string::npos);
    for (int edge : {0, 30}) {
        ASSERT_EQ(settingsProgram("--set joystickdeadzone=" + std::to_string(edge)).status, 0);
        EXPECT_EQ(numbers(readFile("Data/config.bvd"))[16], edge);
    }
}

TEST_F(SettingsCli, RefusesADeadZoneOutsideZeroToThirtyAndKeepsTheFile) {
    for (const char* bad : {"31", "-1", "100", "soft"}) {
        Result r = settingsProgram(std::string("--set joystickdeadzone=") + bad);
        EXPECT_EQ(r.status, 2) << bad;
        EXPECT_NE(r.err.find("joystickdeadzone"), std::string::npos) << r.err;
        EXPECT_NE(r.err.find("0..30"), std::string::npos) << r.err;
        EXPECT_EQ(readFile("Data/config.bvd"), shipped()) << bad;
    }
}

TEST_F(SettingsCli, ADeadZoneOutsideTheRangeIsShownAsTheGameUsesIt) {
    writeFile("Data/config.bvd", sixteenLines() + "joystickdeadzone(percent) 45\n");
    Result r = settingsProgram("--show");
    ASSERT_EQ(r.status, 0);
    EXPECT_NE(r.out.find("joystickdeadzone=45 "), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("the game takes it as 30%"), std::string::npos) << r.out;
    blackbox.init("Data/blackbox.bvd", false);
    ASSERT_TRUE(config.init("Data/config.bvd"));
    EXPECT_EQ(config.joystickdeadzone, 30u);
    writeFile("Data/config.bvd", sixteenLines() + "joystickdeadzone(percent) -3\n");
    EXPECT_NE(settingsProgram("--show").out.find("the game takes it as 0%"), std::string::npos);
    ASSERT_TRUE(config.init("Data/config.bvd"));
    EXPECT_EQ(config.joystickdeadzone, 0u);
}

// What the game makes of what the program writes, through the game's reader.
class SettingsRoundTrip : public SettingsCli {
protected:
    void SetUp() override {
        SettingsCli::SetUp();
        blackbox.init("Data/blackbox.bvd", false);
    }
    void set(const std::string& assignments) {
        Result r = settingsProgram("--set " + assignments);
        ASSERT_EQ(r.status, 0) << r.err;
        ASSERT_TRUE(config.init("Data/config.bvd"));
    }
};

TEST_F(SettingsRoundTrip, Resolutions) {
    const unsigned w[6] = {640, 800, 1024, 1152, 1280, 1600}, h[6] = {480, 600, 768, 864, 960, 1200};
    for (int i = 0; i < 6; i++) {
        set("resolution=" + std::to_string(i));
        EXPECT_EQ(config.width, w[i]);
        EXPECT_EQ(config.height, h[i]);
    }
}

// The program's names of the resolutions are the windows the game opens.
TEST_F(SettingsRoundTrip, EachResolutionsNameIsTheWindowTheGameOpens) {
    for (int i = 0; i < 6; i++) {
        std::string name = bvset::meaning(0, i);
        set("resolution=" + name);
        EXPECT_EQ(std::to_string(config.width) + "x" + std::to_string(config.height), name);
    }
}

TEST_F(SettingsRoundTrip, DepthAndViewDistance) {
    set("colourdepth=16");
    EXPECT_EQ(config.depth, 16u);
    set("colourdepth=1");
    EXPECT_EQ(config.depth, 32u);
    const float range[4] = {30, 45, 60, 150};
    for (int i = 0; i < 4; i++) {
        set("viewdistance=" + std::to_string(i));
        for (int k = 0; k < 3; k++) EXPECT_FLOAT_EQ(config.LOrange[k], range[i]);
    }
}

TEST_F(SettingsRoundTrip, VolumesArePercentagesAndBrightnessQuarters) {
    set("soundvolume=100 musicvolume=50 brightness=10");
    EXPECT_EQ(config.soundvolume, 255u);
    EXPECT_EQ(config.musicvolume, 127u);
    EXPECT_EQ(config.gammacorrection, 2u);
    set("soundvolume=0 musicvolume=100 brightness=100");
    EXPECT_EQ(config.soundvolume, 0u);
    EXPECT_EQ(config.musicvolume, 255u);
    EXPECT_EQ(config.gammacorrection, 25u);
    set("soundvolume=37");
    EXPECT_EQ(config.soundvolume, 94u);  // 94.35 truncated
}

TEST_F(SettingsRoundTrip, EveryOtherSettingLandsInItsField) {
    set("detail=0 kartshadows=2 trackshadows=0 soundeffects=0 music=0 mousesteering=1 mousesensitivity=13 "
        "joysticksteering=1 lensflare=0 skidmarks=0");
    EXPECT_EQ(config.lod, 0u);
    EXPECT_EQ(config.shadows, 2u);
    EXPECT_EQ(config.trackshadows, 0u);
    EXPECT_EQ(config.soundeffects, 0u);
    EXPECT_EQ(config.music, 0u);
    EXPECT_EQ(config.mousesteering, 1u);
    EXPECT_EQ(config.mousesensitivity, 13u);
    EXPECT_EQ(config.joysticksteering, 1u);
    EXPECT_EQ(config.lensflare, 0u);
    EXPECT_EQ(config.skidmarks, 0u);
    // and what was not touched keeps the shipped values
    EXPECT_EQ(config.width, 1024u);
    EXPECT_EQ(config.soundvolume, 255u);
    EXPECT_EQ(config.musicvolume, 204u);
}

TEST_F(SettingsRoundTrip, TheDeadZoneReachesTheGame) {
    for (int percent : {0, 13, 30}) {
        set("joystickdeadzone=" + std::to_string(percent));
        EXPECT_EQ(config.joystickdeadzone, (unsigned int)percent);
        EXPECT_EQ(config.skidmarks, 1u);
    }
}

TEST(SettingsCliHelp, HelpNamesTheOptions) {
    Result r = settingsProgram("--help");
    EXPECT_EQ(r.status, 0);
    for (const char* option : {"--show", "--set", "--file", "--help", "arrow keys"})
        EXPECT_NE(r.out.find(option), std::string::npos) << option;
    EXPECT_EQ(settingsProgram("--bogus").status, 2);
}

}  // namespace

// The settings file, the remembered race setup and the console registries.

#include <gtest/gtest.h>

#include <GL/gl.h>

#include <string>

#include "shell/blackbox.h"
#include "shell/bvconfig.h"
#include "shell/main.h"
#include "assets/texture.h"
#include "support/bvtest_fixtures.h"

using namespace bvtest;

namespace {

std::string settings(const int v[16]) {
    static const char* labels[16] = {"resolution", "depth",  "view",       "detail",      "shadows",    "trackshadows",
                                     "sound",      "volume", "music",      "musicvolume", "brightness", "mouse",
                                     "sensitivity", "joystick", "lensflare", "skidmarks"};
    std::string text;
    for (int i = 0; i < 16; i++) text += std::string(labels[i]) + " " + std::to_string(v[i]) + "\n";
    return text;
}

const int kDefaults[16] = {2, 1, 3, 2, 3, 1, 1, 100, 1, 80, 0, 0, 4, 0, 1, 1};

class ConfigTest : public ::testing::Test {
protected:
    void SetUp() override { blackbox.init("Data/blackbox.bvd", false); }
    bool load(const std::string& text) {
        writeFile("Data/config.bvd", text);
        return config.init("Data/config.bvd");
    }
    bool loadWith(int position, int value) {
        int v[16];
        for (int i = 0; i < 16; i++) v[i] = kDefaults[i];
        v[position - 1] = value;
        return load(settings(v));
    }
    std::string log() { return readFile("Data/blackbox.bvd"); }
    ScratchDir dir;
};

TEST_F(ConfigTest, MissingSettingsFileFails) {
    EXPECT_FALSE(config.init("Data/config.bvd"));
    EXPECT_NE(log().find("Initializing configuration [  ]\n"), std::string::npos);
    EXPECT_FALSE(blackbox.status);
}

TEST_F(ConfigTest, ShippedSampleFileReadsAsWanted) {
    writeFile("Data/config.bvd", readFile(std::string(BV_SOURCE_DIR) + "/data/config.bvd"));
    ASSERT_TRUE(config.init("Data/config.bvd"));
    EXPECT_EQ(config.width, 1024u);
    EXPECT_EQ(config.height, 768u);
    EXPECT_EQ(config.depth, 32u);
    EXPECT_FLOAT_EQ(config.LOrange[0], 150.0f);
    EXPECT_EQ(config.soundeffects, 1u);
    EXPECT_EQ(config.soundvolume, 255u);
    // The arrow keys only steer with mouse steering off.
    EXPECT_EQ(config.mousesteering, 0u);
    EXPECT_NE(log().find("Initializing configuration [OK]\n"), std::string::npos);
}

TEST_F(ConfigTest, ResolutionIndexSevenKeeps1024x768AndZeroGives640x480) {
    ASSERT_TRUE(loadWith(1, 7));
    EXPECT_EQ(config.width, 1024u);
    EXPECT_EQ(config.height, 768u);
    ASSERT_TRUE(loadWith(1, 0));
    EXPECT_EQ(config.width, 640u);
    EXPECT_EQ(config.height, 480u);
}

TEST_F(ConfigTest, EveryResolution) {
    const unsigned int w[6] = {640, 800, 1024, 1152, 1280, 1600}, h[6] = {480, 600, 768, 864, 960, 1200};
    for (int i = 0; i < 6; i++) {
        ASSERT_TRUE(loadWith(1, i));
        EXPECT_EQ(config.width, w[i]);
        EXPECT_EQ(config.height, h[i]);
    }
    ASSERT_TRUE(loadWith(1, -1));
    EXPECT_EQ(config.width, 1024u);
}

TEST_F(ConfigTest, DepthAndViewDistance) {
    ASSERT_TRUE(loadWith(2, 0));
    EXPECT_EQ(config.depth, 16u);
    ASSERT_TRUE(loadWith(2, 5));
    EXPECT_EQ(config.depth, 32u);
    const float range[5] = {30.0f, 45.0f, 60.0f, 150.0f, 150.0f};
    for (int v = 0; v < 5; v++) {
        ASSERT_TRUE(loadWith(3, v));
        for (int i = 0; i < 3; i++) EXPECT_FLOAT_EQ(config.LOrange[i], range[v]);
    }
}

TEST_F(ConfigTest, SoundVolumePercentages) {
    ASSERT_TRUE(loadWith(8, 100));
    EXPECT_EQ(config.soundvolume, 255u);
    ASSERT_TRUE(loadWith(8, 50));
    EXPECT_EQ(config.soundvolume, 127u);
    ASSERT_TRUE(loadWith(10, 100));
    EXPECT_EQ(config.musicvolume, 255u);
    ASSERT_TRUE(loadWith(10, 50));
    EXPECT_EQ(config.musicvolume, 127u);
}

// Neither clamped to 0..255 nor sent through an int, which a billion per cent
// would overflow: the 64-bit truncation's low 32 bits.
TEST_F(ConfigTest, VolumesOutsideTheirPercentagesWrapUnclamped) {
    ASSERT_TRUE(loadWith(8, 200));
    EXPECT_EQ(config.soundvolume, 510u);
    ASSERT_TRUE(loadWith(10, -100));
    EXPECT_EQ(config.musicvolume, 4294967041u);
    ASSERT_TRUE(loadWith(8, 1000000000));
    EXPECT_EQ(config.soundvolume, 2549999872u);
    ASSERT_TRUE(loadWith(10, -1000000000));
    EXPECT_EQ(config.musicvolume, 1744967424u);
}

TEST_F(ConfigTest, GammaIsAQuarter) {
    ASSERT_TRUE(loadWith(11, 10));
    EXPECT_EQ(config.gammacorrection, 2u);
}

TEST_F(ConfigTest, PlainEntriesAreTakenAsTheyAre) {
    const int v[16] = {2, 1, 3, 1, 2, 0, 1, 40, 0, 20, 0, 1, 9, 1, 0, 1};
    ASSERT_TRUE(load(settings(v)));
    EXPECT_EQ(config.lod, 1u);
    EXPECT_EQ(config.shadows, 2u);
    EXPECT_EQ(config.trackshadows, 0u);
    EXPECT_EQ(config.soundeffects, 1u);
    EXPECT_EQ(config.music, 0u);
    EXPECT_EQ(config.mousesteering, 1u);
    EXPECT_EQ(config.mousesensitivity, 9u);
    EXPECT_EQ(config.joysticksteering, 1u);
    EXPECT_EQ(config.lensflare, 0u);
    EXPECT_EQ(config.skidmarks, 1u);
}

TEST_F(ConfigTest, EntriesAreTakenByPositionNotLabel) {
    ASSERT_TRUE(load("skidmarks 0\nanything 0\n"));
    EXPECT_EQ(config.width, 640u);
    EXPECT_EQ(config.depth, 16u);
}

TEST_F(ConfigTest, ShortFileRepeatsTheLastValue) {
    ASSERT_TRUE(load("resolution 1\ndepth 1\nview 2\ndetail 1\n"));
    EXPECT_EQ(config.lod, 1u);
    EXPECT_EQ(config.shadows, 1u);
    EXPECT_EQ(config.trackshadows, 1u);
    EXPECT_EQ(config.soundvolume, 2u);  // 1 * 2.55
    EXPECT_EQ(config.gammacorrection, 0u);
    EXPECT_EQ(config.skidmarks, 1u);
}

TEST_F(ConfigTest, BuiltInDefaultsOfFieldsTheFileDoesNotSet) {
    ASSERT_TRUE(loadWith(1, 2));
    EXPECT_EQ(config.fullscreen, 1u);
    EXPECT_EQ(config.maxfps, 200u);
    EXPECT_EQ(config.texturefilter, 2u);
    EXPECT_EQ(config.fog, 1u);
    EXPECT_EQ(config.hud, 1u);
    EXPECT_EQ(config.nslides, 128u);
    EXPECT_EQ(config.ngokarts, 1u);
    EXPECT_EQ(config.zdepth, 16u);
    EXPECT_STREQ(config.player1name, "unnamed");
    EXPECT_STREQ(config.aiskillstring[1], "medium");
    EXPECT_EQ(config.aiguts[2], 100u);
    EXPECT_EQ(config.aistupidity[0], 15u);
    EXPECT_EQ(config.aiawakeness[1], 10u);
    EXPECT_FLOAT_EQ(config.HIrange[0], -1.0f);
    EXPECT_FLOAT_EQ(config.MErange[2], 20.0f);
    EXPECT_EQ(config.totalsize, 31225639ul);
    EXPECT_EQ(config.loaded, 0ul);
}

TEST_F(ConfigTest, RegistersTwentySixVariablesAndThreeCommandsInOrder) {
    ASSERT_TRUE(loadWith(1, 2));
    ASSERT_EQ(config.nVar, 26u);
    ASSERT_EQ(config.nFnc, 3u);
    EXPECT_STREQ(config.varN[0], "gammacorrection");
    EXPECT_STREQ(config.varN[17], "ngokarts");
    EXPECT_STREQ(config.varN[24], "0bighead");
    EXPECT_EQ(config.varP[25], &config.CHEAT_0toviksface);
    EXPECT_STREQ(config.fncN[0], "wireframe");
    EXPECT_STREQ(config.fncN[2], "reset");
}

TEST_F(ConfigTest, SetvarFoundAndNotFound) {
    ASSERT_TRUE(loadWith(1, 2));
    config.setvar("fog", 0);
    EXPECT_EQ(config.fog, 0u);
    config.setvar("Fog", 1);
    EXPECT_EQ(config.fog, 0u);
    config.setvar("lod", 4294967295u);
    EXPECT_EQ(config.getvar("lod"), 4294967295u);
    EXPECT_EQ(config.getvar("nothing"), 0u);
    std::string l = log();
    EXPECT_NE(l.find("SET fog 0 [OK]\n"), std::string::npos);
    EXPECT_NE(l.find("SET Fog 1 [  ]\n"), std::string::npos);
    EXPECT_NE(l.find("SET lod -1 [OK]\n"), std::string::npos);
    EXPECT_TRUE(blackbox.status);
}

TEST_F(ConfigTest, CheckvarsClampsKartsAndSlides) {
    ASSERT_TRUE(loadWith(1, 2));
    config.setvar("ngokarts", 9);
    EXPECT_EQ(config.ngokarts, 6u);
    EXPECT_NE(log().find("SET ngokarts 9 [OK]\n"), std::string::npos);
    config.setvar("nslides", 5000);
    EXPECT_EQ(config.nslides, 998u);
    config.setvar("ngokarts", 3);
    EXPECT_EQ(config.ngokarts, 3u);
}

int calls = 0;
void countingCommand() { calls++; }

TEST_F(ConfigTest, RunfncFoundAndNotFound) {
    ASSERT_TRUE(loadWith(1, 2));
    config.addfnc("count", countingCommand);
    config.runfnc("count");
    config.runfnc("COUNT");
    EXPECT_EQ(calls, 1);
    std::string l = log();
    EXPECT_NE(l.find("CMD count [OK]\n"), std::string::npos);
    EXPECT_NE(l.find("CMD COUNT [  ]\n"), std::string::npos);
    EXPECT_TRUE(blackbox.status);
}

TEST_F(ConfigTest, RegistriesStopAtNinetyNine) {
    ASSERT_TRUE(loadWith(1, 2));
    static unsigned int extra[100];
    for (int i = 0; i < 100; i++) config.addvar(("v" + std::to_string(i)).c_str(), &extra[i]);
    EXPECT_EQ(config.nVar, 99u);
    config.setvar("v72", 5);
    EXPECT_EQ(extra[72], 5u);
    config.setvar("v73", 5);  // the 100th registration was ignored
    EXPECT_EQ(extra[73], 0u);
    for (int i = 0; i < 100; i++) config.addfnc(("f" + std::to_string(i)).c_str(), countingCommand);
    EXPECT_EQ(config.nFnc, 99u);
}

TEST_F(ConfigTest, LongNamesAreCutToTheField) {
    ASSERT_TRUE(loadWith(1, 2));
    static unsigned int field;
    std::string name(40, 'x');
    config.addvar(name.c_str(), &field);
    EXPECT_EQ(std::string(config.varN[26]), std::string(31, 'x'));
}

TEST_F(ConfigTest, RaceSetupIsReadAfterTheSettings) {
    writeFile("Data/gencon.bvd", "Ayrton\n5\n4\n2\n3\n777\n");
    ASSERT_TRUE(loadWith(1, 2));
    EXPECT_STREQ(config.player1name, "Ayrton");
    EXPECT_EQ(config.player1color, 5u);
    EXPECT_EQ(config.ngokarts, 4u);
    EXPECT_EQ(config.aiskill, 2u);
    EXPECT_EQ(config.track, 3u);
    EXPECT_EQ(config.totalsize, 777ul);
}

TEST_F(ConfigTest, MissingRaceSetupKeepsDefaultsSilently) {
    ASSERT_TRUE(loadWith(1, 2));
    EXPECT_STREQ(config.player1name, "unnamed");
    EXPECT_TRUE(blackbox.status);
    EXPECT_EQ(lines(log()).size(), 3u);
}

TEST_F(ConfigTest, SaveWritesSixLinesWithLoadedAsTheLast) {
    ASSERT_TRUE(loadWith(1, 2));
    snprintf(config.player1name, sizeof config.player1name, "Mika");
    config.player1color = 7;
    config.ngokarts = 6;
    config.aiskill = 1;
    config.track = 2;
    config.loaded = 1234;
    config.save();
    EXPECT_EQ(readFile("Data/gencon.bvd"), "Mika\n7\n6\n1\n2\n1234\n");
    EXPECT_FALSE(fileExists("Data/gencon.bvd.tmp"));
}

TEST_F(ConfigTest, SavedLoadedCalibratesTheNextStart) {
    ASSERT_TRUE(loadWith(1, 2));
    config.loaded = 4321;
    config.save();
    ASSERT_TRUE(loadWith(1, 2));
    EXPECT_EQ(config.totalsize, 4321ul);
    EXPECT_EQ(config.loaded, 0ul);
}

TEST_F(ConfigTest, NameWithABlankIsSavedWholeButReadBackToTheBlank) {
    ASSERT_TRUE(loadWith(1, 2));
    snprintf(config.player1name, sizeof config.player1name, "Lewis H");
    config.save();
    EXPECT_EQ(lines(readFile("Data/gencon.bvd"))[0], "Lewis H");
    ASSERT_TRUE(loadWith(1, 2));
    EXPECT_STREQ(config.player1name, "Lewis");
    // The rest of the line is then taken as numbers: "H" reads as nothing.
}

TEST_F(ConfigTest, UnwritableRaceSetupIsSkippedSilently) {
    ASSERT_TRUE(loadWith(1, 2));
    snprintf(config.PATH, sizeof config.PATH, "no/such/dir/");
    config.save();
    EXPECT_FALSE(fileExists("no/such/dir/Data/gencon.bvd"));
    EXPECT_TRUE(blackbox.status);
}

TEST_F(ConfigTest, OutOfRangeRaceSetupIsBroughtBackInRange) {
    writeFile("Data/gencon.bvd", "Max\n99\n40\n7\n1\n500\n");
    ASSERT_TRUE(loadWith(1, 2));
    EXPECT_EQ(config.player1color, 0u);
    EXPECT_EQ(config.ngokarts, 1u);
    EXPECT_EQ(config.aiskill, 0u);
    EXPECT_EQ(config.track, 1u);
    EXPECT_NE(log().find("Reading race setup Data/gencon.bvd : values out of range, defaults used [  ]\n"),
              std::string::npos);
}

TEST_F(ConfigTest, GarbageSettingsNeverOverrun) {
    // The over-long label is read in 255-character pieces, so the first number
    // read is a piece of the label: nothing, and the shared value stays 0.
    ASSERT_TRUE(load(std::string(5000, 'A') + " 1\n" + std::string(3000, '9')));
    EXPECT_EQ(config.width, 640u);
}

// The joystick's dead zone is a seventeenth line that older files lack.
TEST_F(ConfigTest, SixteenLinesLeaveTheDeadZoneAtEightPercent) {
    ASSERT_TRUE(load(settings(kDefaults)));
    EXPECT_EQ(config.joystickdeadzone, 8u);
    EXPECT_EQ(config.skidmarks, 1u);
    writeFile("Data/config.bvd", readFile(std::string(BV_SOURCE_DIR) + "/data/config.bvd"));
    ASSERT_TRUE(config.init("Data/config.bvd"));
    EXPECT_EQ(config.joystickdeadzone, 8u);
}

TEST_F(ConfigTest, TheSeventeenthLineIsTheDeadZone) {
    for (int percent : {0, 1, 17, 30}) {
        ASSERT_TRUE(load(settings(kDefaults) + "joystickdeadzone(percent) " + std::to_string(percent) + "\n"));
        EXPECT_EQ(config.joystickdeadzone, (unsigned int)percent);
        EXPECT_EQ(config.skidmarks, 1u);
        EXPECT_EQ(config.width, 1024u);
    }
}

// Like the settings program's window shows it: the nearer end of 0..30.
TEST_F(ConfigTest, ADeadZoneOutsideItsRangeIsTheNearerEnd) {
    ASSERT_TRUE(load(settings(kDefaults) + "joystickdeadzone 31\n"));
    EXPECT_EQ(config.joystickdeadzone, 30u);
    ASSERT_TRUE(load(settings(kDefaults) + "joystickdeadzone 5000000\n"));
    EXPECT_EQ(config.joystickdeadzone, 30u);
    ASSERT_TRUE(load(settings(kDefaults) + "joystickdeadzone -1\n"));
    EXPECT_EQ(config.joystickdeadzone, 0u);
    ASSERT_TRUE(load(settings(kDefaults) + "joystickdeadzone soft\n"));
    EXPECT_EQ(config.joystickdeadzone, 8u);
}

// A short file repeats its last number for the sixteen, never for the dead zone.
TEST_F(ConfigTest, AShortFileDoesNotRepeatIntoTheDeadZone) {
    ASSERT_TRUE(load("resolution 1\ndepth 1\nview 2\ndetail 20\n"));
    EXPECT_EQ(config.skidmarks, 20u);
    EXPECT_EQ(config.joystickdeadzone, 8u);
    ASSERT_TRUE(load(""));
    EXPECT_EQ(config.skidmarks, 0u);
    EXPECT_EQ(config.joystickdeadzone, 8u);
}

TEST_F(ConfigTest, AMissingFileLeavesTheDeadZoneAtEightPercent) {
    config.joystickdeadzone = 0;
    EXPECT_FALSE(config.init("Data/config.bvd"));
    EXPECT_EQ(config.joystickdeadzone, 8u);
}

TEST(FileSize, CountsOneMoreThanTheLengthInKilobytes) {
    ScratchDir dir;
    writeFile("empty", "");
    writeFile("k1023", std::string(1023, 'a'));
    writeFile("k1024", std::string(1024, 'a'));
    writeFile("k2047", std::string(2047, 'a'));
    EXPECT_EQ(qbGetFileSize("empty"), 0u);
    EXPECT_EQ(qbGetFileSize("k1023"), 1u);
    EXPECT_EQ(qbGetFileSize("k1024"), 1u);
    EXPECT_EQ(qbGetFileSize("k2047"), 2u);
    EXPECT_EQ(qbGetFileSize("missing"), 0u);
    EXPECT_EQ(qbGetFileSize("Data"), 0u);
}

}  // namespace

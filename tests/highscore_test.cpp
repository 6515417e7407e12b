// The lap-record table: which laps enter it and where, whose name they carry,
// when the ghost keeps the lap and when "NEW RECORD!" shows, and the file.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "frontend/highscore.h"
#include "kart/gokart.h"
#include "scene/ghost.h"
#include "shell/blackbox.h"
#include "shell/bvconfig.h"
#include "shell/performance.h"
#include "shell/safesave.h"
#include "support/bvtest_fixtures.h"
#include "track/track.h"

namespace {

class Highscore : public ::testing::Test {
protected:
    void SetUp() override {
        std::filesystem::create_directories("Data/Highscore");
        std::filesystem::create_directories("Data/Ghosts");
        blackbox.init("Data/blackbox.bvd", false);
        config.PATH[0] = 0;
        strcpy(track.trackname[0], "oval");
        track.ntracks = 1;
        config.track = 0;
        strcpy(config.player1name, "ANNA");
        performance.fps = 60;
        highscore.init();
        ghost.badone();
        ghost.nRecs[1] = 0;
        ghost.bestTime = 99.0f;
    }
    // A lap of `time` seconds finished by kart `kart`.
    void lap(unsigned int kart, float time) {
        gokart[kart].currentlaptime = time;
        highscore.checkfornewrecord(kart);
    }
    // A recording under way, so that we can see whether the ghost kept it,
    // dropped it or was left alone.
    void recording(int samples) {
        ghost.nRecs[0] = samples;
        ghost.mRec = 2;
        ghost.timer[1] = 0.5f;
    }
    void table(std::initializer_list<float> times) {
        unsigned int i = 0;
        for (float t : times) {
            snprintf(highscore.laprecord_name[i], 32, "OLD%u", i);
            highscore.laprecord_time[i++] = t;
        }
    }
    bvtest::ScratchDir dir;
};

TEST_F(Highscore, MissingFileIsTenNobodies) {
    for (unsigned int i = 0; i < 10; i++) {
        EXPECT_STREQ(highscore.laprecord_name[i], "nobody");
        EXPECT_EQ(highscore.laprecord_time[i], 99.0f);
    }
    EXPECT_EQ(highscore.thisnewrecorddelay, 0.0f);
}

TEST_F(Highscore, EmptyTableTakesALapJustUnder99AtTheTop) {
    recording(40);
    lap(0, 98.99f);
    EXPECT_EQ(highscore.laprecord_time[0], 98.99f);
    EXPECT_STREQ(highscore.laprecord_name[0], "ANNA");
    EXPECT_EQ(highscore.laprecord_time[1], 99.0f);
    EXPECT_STREQ(highscore.laprecord_name[1], "nobody");
    EXPECT_EQ(highscore.thisnewrecorddelay, 3.0f);
    // The ghost kept the lap just driven.
    EXPECT_EQ(ghost.nRecs[1], 40);
    EXPECT_EQ(ghost.bestTime, 98.99f);
}

TEST_F(Highscore, ALapOfExactly99IsNotRecorded) {
    recording(40);
    lap(0, 99.0f);
    for (unsigned int i = 0; i < 10; i++) {
        EXPECT_STREQ(highscore.laprecord_name[i], "nobody");
        EXPECT_EQ(highscore.laprecord_time[i], 99.0f);
    }
    EXPECT_EQ(highscore.thisnewrecorddelay, 0.0f);
    // The recording starts again for the next lap.
    EXPECT_EQ(ghost.nRecs[0], 0);
    EXPECT_EQ(ghost.mRec, 0);
    EXPECT_EQ(ghost.nRecs[1], 0);
}

TEST_F(Highscore, ASlowComputerLapRestartsThePlayersRecording) {
    table({40, 41, 42, 43, 44, 45, 46, 47, 48, 49});
    recording(40);
    lap(3, 60.0f);
    EXPECT_EQ(ghost.nRecs[0], 0);
    EXPECT_EQ(highscore.laprecord_time[9], 49.0f);
}

TEST_F(Highscore, AComputerRecordIsCPUWithoutAnnouncementOrGhost) {
    table({50, 51, 52});
    recording(40);
    ghost.nRecs[1] = 7;
    lap(2, 45.5f);
    EXPECT_STREQ(highscore.laprecord_name[0], "CPU");
    EXPECT_EQ(highscore.laprecord_time[0], 45.5f);
    EXPECT_STREQ(highscore.laprecord_name[1], "OLD0");
    EXPECT_EQ(highscore.thisnewrecorddelay, 0.0f);
    EXPECT_EQ(ghost.nRecs[0], 40);
    EXPECT_EQ(ghost.mRec, 2);
    EXPECT_EQ(ghost.nRecs[1], 7);
}

TEST_F(Highscore, AHumanLapInFourthPlaceDropsTheRecordingQuietly) {
    table({40, 41, 42, 43, 44});
    recording(40);
    ghost.nRecs[1] = 7;
    lap(0, 42.5f);
    EXPECT_STREQ(highscore.laprecord_name[3], "ANNA");
    EXPECT_EQ(highscore.laprecord_time[3], 42.5f);
    EXPECT_STREQ(highscore.laprecord_name[4], "OLD3");
    EXPECT_EQ(highscore.laprecord_time[5], 44.0f);
    EXPECT_EQ(highscore.thisnewrecorddelay, 0.0f);
    EXPECT_EQ(ghost.nRecs[0], 0);  // badone
    EXPECT_EQ(ghost.mRec, 0);
    EXPECT_EQ(ghost.nRecs[1], 7);  // the old best lap stays
}

TEST_F(Highscore, AnEqualTimeGoesBelowTheOlderRecord) {
    table({40, 50, 60});
    lap(0, 50.0f);
    EXPECT_STREQ(highscore.laprecord_name[1], "OLD1");
    EXPECT_STREQ(highscore.laprecord_name[2], "ANNA");
    EXPECT_EQ(highscore.laprecord_time[2], 50.0f);
    EXPECT_STREQ(highscore.laprecord_name[3], "OLD2");
    lap(0, 40.0f);
    EXPECT_STREQ(highscore.laprecord_name[0], "OLD0");
    EXPECT_STREQ(highscore.laprecord_name[1], "ANNA");
    EXPECT_EQ(highscore.thisnewrecorddelay, 0.0f);
}

TEST_F(Highscore, TenBetterLapsLeaveOnlyTheNewLaps) {
    table({30, 31, 32, 33, 34, 35, 36, 37, 38, 39});
    for (int i = 0; i < 10; i++) lap(1 + i % 5, 29.0f - i);
    for (unsigned int i = 0; i < 10; i++) {
        EXPECT_STREQ(highscore.laprecord_name[i], "CPU");
        EXPECT_EQ(highscore.laprecord_time[i], 20.0f + i);
    }
}

TEST_F(Highscore, SavesTenLinesAndReadsThemBack) {
    table({40.25f, 41.5f});
    highscore.save();
    std::string text = bvtest::readFile("Data/Highscore/oval.txt");
    std::string expected = "OLD0 40.250000\nOLD1 41.500000\n";
    for (int i = 0; i < 8; i++) expected += "nobody 99.000000\n";
    EXPECT_EQ(text, expected);
    EXPECT_FALSE(bvtest::fileExists("Data/Highscore/oval.txt.tmp"));
    highscore.init();
    EXPECT_STREQ(highscore.laprecord_name[1], "OLD1");
    EXPECT_EQ(highscore.laprecord_time[1], 41.5f);
    EXPECT_STREQ(highscore.laprecord_name[2], "nobody");
}

TEST_F(Highscore, AShortFileLeavesTheRestAtTheDefaults) {
    bvtest::writeFile("Data/Highscore/oval.txt", "BEN 33.5\nCPU 34.25\n");
    highscore.init();
    EXPECT_STREQ(highscore.laprecord_name[0], "BEN");
    EXPECT_EQ(highscore.laprecord_time[1], 34.25f);
    EXPECT_STREQ(highscore.laprecord_name[2], "nobody");
    EXPECT_EQ(highscore.laprecord_time[9], 99.0f);
}

TEST_F(Highscore, AFailedSaveKeepsTheOldFileAndSaysSo) {
    bvtest::writeFile("Data/Highscore/oval.txt", "BEN 33.500000\n");
    // The temporary file cannot be made where a directory stands.
    std::filesystem::create_directories("Data/Highscore/oval.txt.tmp");
    table({20});
    highscore.save();
    EXPECT_EQ(bvtest::readFile("Data/Highscore/oval.txt"), "BEN 33.500000\n");
    std::string log = bvtest::readFile("Data/blackbox.bvd");
    EXPECT_NE(log.find("Saving Data/Highscore/oval.txt"), std::string::npos) << log;
    EXPECT_FALSE(blackbox.status);
}

TEST_F(Highscore, TheAnnouncementLastsThreeSeconds) {
    bvtest::openWindow(64, 64);
    lap(0, 50.0f);
    ASSERT_EQ(highscore.thisnewrecorddelay, 3.0f);
    performance.fps = 50;
    for (int i = 0; i < 149; i++) highscore.dispifnewrecord();
    EXPECT_GT(highscore.thisnewrecorddelay, 0.0f);
    highscore.dispifnewrecord();
    highscore.dispifnewrecord();
    EXPECT_LE(highscore.thisnewrecorddelay, 0.0f);
    float left = highscore.thisnewrecorddelay;
    highscore.dispifnewrecord();
    EXPECT_EQ(highscore.thisnewrecorddelay, left);
}

TEST_F(Highscore, ALapThatEntersTheTableIsOnDiskWithoutWaitingForTheTrackToChange) {
    recording(40);
    lap(0, 50.0f);
    lap(3, 60.0f);
    finishsaves();
    std::vector<std::string> l = bvtest::lines(bvtest::readFile("Data/Highscore/oval.txt"));
    ASSERT_EQ(l.size(), 10u);
    EXPECT_EQ(l[0], "ANNA 50.000000");
    EXPECT_EQ(l[1], "CPU 60.000000");
    EXPECT_EQ(bvtest::lines(bvtest::readFile("Data/Ghosts/oval.txt")).size(), 1u + 3 * 40);
}

TEST_F(Highscore, ASaveTheWriterCouldNotMakeIsLoggedAsAFailure) {
    std::filesystem::remove_all("Data/Highscore");
    lap(0, 50.0f);
    finishsaves();
    EXPECT_NE(bvtest::readFile("Data/blackbox.bvd").find("Saving Data/Highscore/oval.txt [  ]"), std::string::npos);
    EXPECT_FALSE(blackbox.status);
    EXPECT_TRUE(bvtest::fileExists("Data/Ghosts/oval.txt"));
}

}  // namespace

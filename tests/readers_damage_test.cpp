// Inputs that once made a reader run into undefined behaviour (the sanitizer
// and fuzz builds stop on it), kept in fuzz/regressions/ where every fuzz run
// tries them again, and what the readers make of them now.

#include <gtest/gtest.h>

#include <cfloat>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>

#include "frontend/highscore.h"
#include "kart/gokart.h"
#include "scene/ghost.h"
#include "scene/camera.h"
#include "shell/blackbox.h"
#include "shell/keyboard.h"
#include "shell/bvconfig.h"
#include "support/bvtest_fixtures.h"
#include "track/track.h"

using bvtest::ScratchDir;

namespace {

std::string regression(const std::string& target, const std::string& name) {
    return std::string(BV_SOURCE_DIR) + "/fuzz/regressions/" + target + "/" + name;
}

// A percentage near the top of int is more than an int once multiplied by
// 2.55; it is truncated through 64 bits and wraps into the unsigned field.
TEST(ReadersDamage, HugeVolumePercentagesWrapInsteadOfOverflowing) {
    ScratchDir dir;
    blackbox.init("Data/blackbox.bvd", false);
    std::string path = regression("settings", "huge-percentages");
    ASSERT_TRUE(bvtest::fileExists(path));
    ASSERT_TRUE(config.init(path.c_str()));
    // 2000000000 * 2.55 in single precision is 5099999744; less 2^32.
    EXPECT_EQ(config.soundvolume, 805032448u);
    // -5099999744 plus twice 2^32.
    EXPECT_EQ(config.musicvolume, 3489934848u);
    // The entries after the short file's end repeat its last value.
    EXPECT_EQ(config.gammacorrection, (unsigned int)(-2000000000 / 4));
}

TEST(ReadersDamage, OrdinaryVolumePercentagesAreUnchanged) {
    ScratchDir dir;
    blackbox.init("Data/blackbox.bvd", false);
    bvtest::writeFile("Data/config.bvd",
                      "a 2 b 1 c 3 d 2 e 1 f 1 g 1 soundvolume 100 i 1 musicvolume 50 k 0 l 0 m 4 n 0 o 1 p 1\n");
    ASSERT_TRUE(config.init("Data/config.bvd"));
    EXPECT_EQ(config.soundvolume, 255u);
    EXPECT_EQ(config.musicvolume, 127u);
}

// Grid coordinates at the ends of int: the grid centre is taken off in 64 bits.
TEST(ReadersDamage, CoordinatesAtTheEndsOfIntLandFarOutOnTheirOwnSide) {
    ScratchDir dir;
    blackbox.init("Data/blackbox.bvd", false);
    FILE* f = fopen(regression("track", "coordinates-at-the-ends-of-int").c_str(), "r");
    ASSERT_NE(f, nullptr);
    track.trackscale = 0.125f;
    track.nAds = 0;
    track.parse(f, "Data/Tracks/ends.txt");
    fclose(f);
    ASSERT_EQ(track.nLRpoints, 1u);
    EXPECT_FLOAT_EQ(track.Lpoint[0].x, -268435488.0f);  // (-2147483648 - 256) / 8
    EXPECT_FLOAT_EQ(track.Rpoint[0].x, 268435424.0f);   // (2147483647 - 256) / 8, rounded to a float
    ASSERT_EQ(track.nCpoints, 1u);
    EXPECT_FLOAT_EQ(track.Cpoint[0].x, -268435488.0f);
    EXPECT_FLOAT_EQ(track.Cpoint[0].z, -19.5f);
    ASSERT_EQ(track.nMiscobjects, 1u);
    EXPECT_LT(track.miscobject[0].x, -268435000.0f);
    EXPECT_FLOAT_EQ(track.miscobject[0].z, 5.5f);
    EXPECT_NE(bvtest::readFile("Data/blackbox.bvd").find("Loading track [OK]"), std::string::npos);
}

// The reading half needs no window: the same code the game runs, on any file.
TEST(ReadersDamage, TrackTextIsReadWithoutAWindow) {
    ScratchDir dir;
    blackbox.init("Data/blackbox.bvd", false);
    bvtest::writeFile("Data/t.txt", "0 0 80 LR 100 100 120 100 C 110 100 O 5 150 150");
    FILE* f = fopen("Data/t.txt", "r");
    ASSERT_NE(f, nullptr);
    track.trackscale = 0.125f;
    track.parse(f, "Data/t.txt");
    fclose(f);
    EXPECT_FLOAT_EQ(track.fogdensity, 0.08f);
    EXPECT_FLOAT_EQ(track.Lpoint[0].x, -19.5f + 0.01f);  // its own predecessor: moved apart
    EXPECT_FLOAT_EQ(track.Rpoint[0].z, -19.5f - 0.01f);
    EXPECT_FLOAT_EQ(track.Cpoint[0].x, -18.25f);
    EXPECT_EQ(track.typeMiscobject[0], 5u);
    EXPECT_FLOAT_EQ(track.barrier_width, 0.25f);
}

TEST(ReadersDamage, NoTracksFolderGivesAnEmptyListAndAFailedLine) {
    ScratchDir dir;
    blackbox.init("Data/blackbox.bvd", false);
    std::filesystem::remove_all("Data/Tracks");
    bvtest::openWindow(64, 48);
    config.track = 3;
    track.init(0.125f);
    EXPECT_EQ(track.ntracks, 0u);
    EXPECT_EQ(config.track, 0u);
    EXPECT_NE(bvtest::readFile("Data/blackbox.bvd").find("Listing tracks : no tracks in Data/Tracks [  ]\n"),
              std::string::npos);
    track.free();
}

// The settings file's detail entry is taken as it is written; the kart's view
// distance and detail bands come from three-entry tables all the same.
TEST(ReadersDamage, DetailPastTheTablesSeesAndDrawsLikeTheHighest) {
    ScratchDir dir;
    blackbox.init("Data/blackbox.bvd", false);
    bvtest::writeFile("Data/config.bvd", "a 2 b 1 c 3 detail 7 e 1 f 1 g 0 h 100 i 0 j 100 k 0 l 0 m 4 n 0 o 1 p 1\n");
    ASSERT_TRUE(config.init("Data/config.bvd"));
    ASSERT_EQ(config.lod, 7u);
    keyboard.init();
    camera.init(1, 0, 1, 0, 0, 0, 0, 55);  // an eye a unit above the ground, looking along -z
    config.LOrange[0] = config.LOrange[1] = 1;
    config.LOrange[2] = 1000;
    gokart[0].px = 0;
    gokart[0].pz = -10;
    gokart[0].ay = 0;
    gokart[0].isinview();
    EXPECT_GT(gokart[0].inviewDist, 1.0f);
    EXPECT_TRUE(gokart[0].inviewG);
    config.LOrange[2] = 1;
    gokart[0].isinview();
    EXPECT_FALSE(gokart[0].inviewG);
}

// Numbers at the ends of float are read as they are; saving them back once cut
// a sample's three lines short (they shared one 64-byte line), so the file
// written lost its numbers and line breaks. Each number now has a line of its
// own room.
TEST(ReadersDamage, GhostNumbersAtTheFloatLimitAreSavedWhole) {
    ScratchDir dir;
    blackbox.init("Data/blackbox.bvd", false);
    std::filesystem::create_directories("Data/Ghosts");
    std::string path = regression("ghost", "numbers-at-the-float-limit");
    ASSERT_TRUE(bvtest::fileExists(path));
    std::string original = bvtest::readFile(path);
    bvtest::writeFile("Data/Ghosts/limit.txt", original);
    config.PATH[0] = 0;
    strcpy(track.trackname[0], "limit");
    config.track = 0;
    ghost.init();
    ASSERT_EQ(ghost.nRecs[1], 2);
    EXPECT_EQ(ghost.bestTime, FLT_MAX);
    EXPECT_EQ(ghost.px[1][0], -FLT_MAX);
    EXPECT_EQ(ghost.pz[1][0], FLT_MAX);
    EXPECT_EQ(ghost.ay[1][0], -1e38f);
    EXPECT_EQ(ghost.ay[1][1], 7.5f);

    ghost.save();
    std::vector<std::string> l = bvtest::lines(bvtest::readFile("Data/Ghosts/limit.txt"));
    ASSERT_EQ(l.size(), 1u + 3 * 2);
    EXPECT_EQ(l[1], "-340282346638528859811704183484516925440.000000");
    EXPECT_EQ(l[3], "-99999996802856924650656260769173209088.000000");
    EXPECT_EQ(l[6], "7.500000");
    ghost.init();
    ASSERT_EQ(ghost.nRecs[1], 2);
    EXPECT_EQ(ghost.px[1][0], -FLT_MAX);
    EXPECT_EQ(ghost.pz[1][1], 6.5f);
}

// A name longer than its field is read in pieces: the first 31 characters
// make one entry, whose time then fails to read and stays 99, and the rest of
// the name starts the next entry. Nothing runs past a field.
TEST(ReadersDamage, ARecordNameLongerThanItsFieldIsSplitNeverOverrun) {
    ScratchDir dir;
    blackbox.init("Data/blackbox.bvd", false);
    std::filesystem::create_directories("Data/Highscore");
    bvtest::writeFile("Data/Highscore/long.txt",
                      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmn 33.5\nBEN 34.25\n");
    config.PATH[0] = 0;
    strcpy(track.trackname[0], "long");
    config.track = 0;
    highscore.init();
    EXPECT_STREQ(highscore.laprecord_name[0], "ABCDEFGHIJKLMNOPQRSTUVWXYZabcde");
    EXPECT_EQ(highscore.laprecord_time[0], 99.0f);
    EXPECT_STREQ(highscore.laprecord_name[1], "fghijklmn");
    EXPECT_EQ(highscore.laprecord_time[1], 33.5f);
    EXPECT_STREQ(highscore.laprecord_name[2], "BEN");
    EXPECT_STREQ(highscore.laprecord_name[3], "nobody");
}

// A word where a number should be stops the reading for good: every read
// after it fails without moving on, so the count runs up to the cap and the
// samples from there keep the kart's place, where init put them.
TEST(ReadersDamage, AWordInAGhostFileLeavesTheRestOfTheLapAtTheKart) {
    ScratchDir dir;
    blackbox.init("Data/blackbox.bvd", false);
    std::filesystem::create_directories("Data/Ghosts");
    bvtest::writeFile("Data/Ghosts/word.txt", "41.5\n1\n2\n3\n4\n5\nsix\n7\n8\n9\n");
    config.PATH[0] = 0;
    strcpy(track.trackname[0], "word");
    config.track = 0;
    gokart[0].px = 26;
    gokart[0].pz = 22;
    gokart[0].ay = 90;
    ghost.init();
    EXPECT_EQ(ghost.bestTime, 41.5f);
    EXPECT_EQ(ghost.nRecs[1], GHOST_MAXRECS - 1);
    EXPECT_EQ(ghost.px[1][0], 1.0f);
    EXPECT_EQ(ghost.ay[1][0], 3.0f);
    EXPECT_EQ(ghost.pz[1][1], 5.0f);
    EXPECT_EQ(ghost.ay[1][1], 90.0f);
    EXPECT_EQ(ghost.px[1][500], 26.0f);
    EXPECT_EQ(ghost.pz[1][998], 22.0f);
}

}  // namespace

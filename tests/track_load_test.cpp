// The track list, reading track files, and the geometry built from them:
// separated points, barrier normals, running texture coordinates, bounds.

#include <gtest/gtest.h>

#include <dirent.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <set>

#include "track_fixtures.h"

using namespace trackfix;
using bvtest::ScratchDir;

namespace {

class TrackLoad : public ::testing::Test {
protected:
    void SetUp() override {
        blackbox.init("Data/blackbox.bvd", false);
        bvtest::openWindow(64, 48);
    }
    // Whatever a test made, lists and textures go back before the window does.
    void TearDown() override { track.free(); }

    // Loads text as the only track, with init's textures and models left out.
    void loadText(const std::string& text) {
        writeTrack("test", text);
        track.trackscale = 0.125f;
        strcpy(track.trackname[0], "test");
        track.ntracks = 1;
        config.track = 0;
        track.load();
    }

    std::string log() { return bvtest::readFile("Data/blackbox.bvd"); }

    ScratchDir dir;
};

TEST_F(TrackLoad, NamesOfThreeOrMoreCharactersAreTracksWhateverTheExtension) {
    writeTrack("ab", "0 0 0\n");
    writeTrack("abc", "0 0 0\n");
    bvtest::writeFile("Data/Tracks/notes.doc", "not a track at all\n");
    config.track = 5;
    track.init(0.125f);
    ASSERT_EQ(track.ntracks, 2u);
    std::set<std::string> names = {track.trackname[0], track.trackname[1]};
    EXPECT_EQ(names, (std::set<std::string>{"abc", "notes"}));
    EXPECT_EQ(config.track, 0u);  // past the list: back to the first track
    EXPECT_FLOAT_EQ(track.trackscale, 0.125f);
    track.free();
}

TEST_F(TrackLoad, TracksAreListedInDirectoryOrder) {
    for (const char* name : {"zeta", "alpha", "mmm", "beta"}) writeTrack(name, "0 0 0\n");
    std::vector<std::string> order;
    DIR* d = opendir("Data/Tracks/.");
    while (dirent* e = readdir(d))
        if (strlen(e->d_name) > 4) order.push_back(std::string(e->d_name, strcspn(e->d_name, ".")));
    closedir(d);
    track.init(0.125f);
    ASSERT_EQ(track.ntracks, order.size());
    for (size_t i = 0; i < order.size(); i++) EXPECT_EQ(track.trackname[i], order[i]);
    track.free();
}

TEST_F(TrackLoad, MoreThan99TracksAreCutOffWithAFailedLine) {
    for (int i = 0; i < 105; i++) writeTrack("track" + std::to_string(i), "0 0 0\n");
    track.init(0.125f);
    EXPECT_EQ(track.ntracks, 99u);
    std::string text = log();
    size_t count = 0;
    for (size_t at = text.find("more than 99 tracks"); at != std::string::npos;
         at = text.find("more than 99 tracks", at + 1))
        count++;
    EXPECT_EQ(count, 6u) << text;
    EXPECT_NE(text.find(".txt ignored [  ]"), std::string::npos) << text;
    track.free();
}

TEST_F(TrackLoad, AnOverlongNameIsPassedOver) {
    writeTrack(std::string(40, 'x'), "0 0 0\n");
    writeTrack("fine", "0 0 0\n");
    track.init(0.125f);
    ASSERT_EQ(track.ntracks, 1u);
    EXPECT_STREQ(track.trackname[0], "fine");
    EXPECT_NE(log().find("name too long"), std::string::npos);
    track.free();
}

TEST_F(TrackLoad, InitLoadsTheSharedTexturesAdvertsAndModels) {
    writeData(true);
    writeTrack("circle", circleTrack());
    config.texturefilter = 2;
    track.init(0.125f);
    EXPECT_NE(track.dirtTexture[3], 0u);
    EXPECT_NE(track.roadTexture[0], 0u);
    EXPECT_NE(track.fenceTexture, 0u);
    EXPECT_NE(track.natureTexture[4], 0u);
    EXPECT_NE(track.finishTexture, 0u);
    EXPECT_EQ(track.nAds, 2u);
    EXPECT_NE(track.adTexture[1], 0u);
    EXPECT_EQ(track.miscobjectPTR[0], &track.barrel3DS);
    EXPECT_EQ(track.miscobjectPTR[5], &track.nature3DS);
    EXPECT_EQ(track.miscobjectPTR[7], &track.ad3DS);
    EXPECT_EQ(track.miscobjectPTR[11], &track.sign43DS);
    EXPECT_EQ(track.miscobjectPTR[12], nullptr);
    EXPECT_NE(track.finish3DS.LIST, 0u);
    EXPECT_GT(track.sign43DS.g_3DModel.numOfObjects, 0);
    // The fence and the plants are sharp whatever the setting; the rest follow it.
    GLint filter = 0;
    glBindTexture(GL_TEXTURE_2D, track.fenceTexture);
    glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, &filter);
    EXPECT_EQ(filter, GL_NEAREST);
    glBindTexture(GL_TEXTURE_2D, track.natureTexture[2]);
    glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, &filter);
    EXPECT_EQ(filter, GL_NEAREST);
    glBindTexture(GL_TEXTURE_2D, track.roadTexture[0]);
    glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, &filter);
    EXPECT_EQ(filter, GL_LINEAR);
    EXPECT_EQ(config.texturefilter, 2u);
    EXPECT_EQ(log().find(" [  ]"), std::string::npos) << log();

    unsigned int road = track.roadTexture[0], list = track.finish3DS.LIST;
    config.track = 0;
    track.load();
    unsigned int ground = track.LIST_ground;
    EXPECT_TRUE(glIsList(ground));
    track.free();
    EXPECT_FALSE(glIsTexture(road));
    EXPECT_FALSE(glIsList(list));
    EXPECT_FALSE(glIsList(ground));
    EXPECT_EQ(track.LIST_ground, 0u);
}

TEST_F(TrackLoad, TheExampleFileGivesItsFogPointsAndPlant) {
    loadText("0 0 80 LR 100 100 120 100 C 110 100 O 5 150 150");
    EXPECT_FLOAT_EQ(track.fogdensity, 0.08f);
    EXPECT_EQ(track.whichDirt, 0u);
    EXPECT_EQ(track.whichRoad, 0u);
    ASSERT_EQ(track.nLRpoints, 1u);
    ASSERT_EQ(track.nCpoints, 1u);
    ASSERT_EQ(track.nMiscobjects, 1u);
    EXPECT_FLOAT_EQ(track.Cpoint[0].x, -18.25f);
    EXPECT_FLOAT_EQ(track.Cpoint[0].z, -19.5f);
    EXPECT_EQ(track.typeMiscobject[0], 5u);
    EXPECT_FLOAT_EQ(track.miscobject[0].x, -13.25f);
    EXPECT_FLOAT_EQ(track.miscobject[0].z, -13.25f);
    // A single pair is its own predecessor, so separating equal coordinates
    // moves it off itself by a hundredth: left outwards, right inwards.
    EXPECT_FLOAT_EQ(track.Lpoint[0].x, -19.5f + 0.01f);
    EXPECT_FLOAT_EQ(track.Lpoint[0].z, -19.5f + 0.01f);
    EXPECT_FLOAT_EQ(track.Rpoint[0].x, -17.0f - 0.01f);
    EXPECT_FLOAT_EQ(track.Rpoint[0].z, -19.5f - 0.01f);
    // The closing copy was taken before that move.
    EXPECT_FLOAT_EQ(track.Lpoint[1].x, -19.5f);
    EXPECT_FLOAT_EQ(track.Lpoint[1].z, -19.5f);
    EXPECT_FLOAT_EQ(track.Rpoint[1].x, -17.0f);
    EXPECT_NE(log().find("Loading track [OK]\n"), std::string::npos) << log();
}

TEST_F(TrackLoad, TheFogIsHandedToOpenGL) {
    loadText("2 0 35 LR 100 100 120 100");
    EXPECT_EQ(track.whichDirt, 2u);
    EXPECT_FLOAT_EQ(track.fogdensity, 0.035f);
    float colour[4], density = 0, start = 0, end = 0;
    GLint mode = 0;
    glGetFloatv(GL_FOG_COLOR, colour);
    glGetFloatv(GL_FOG_DENSITY, &density);
    glGetFloatv(GL_FOG_START, &start);
    glGetFloatv(GL_FOG_END, &end);
    glGetIntegerv(GL_FOG_MODE, &mode);
    EXPECT_FLOAT_EQ(colour[0], 0.525f);
    EXPECT_FLOAT_EQ(colour[2], 0.5f);
    EXPECT_FLOAT_EQ(FogColor[1], 0.525f);
    EXPECT_FLOAT_EQ(FogColor[3], 1.0f);
    EXPECT_FLOAT_EQ(density, 0.035f);
    EXPECT_FLOAT_EQ(start, 45.0f);
    EXPECT_FLOAT_EQ(end, 50.0f);
    EXPECT_EQ(mode, GL_EXP);
    EXPECT_FLOAT_EQ(track.barrier_width, 0.25f);
    EXPECT_FLOAT_EQ(track.barrier_height, 0.25f);
}

TEST_F(TrackLoad, AMissingFileLeavesTheTrackAsItWas) {
    loadText("0 0 80 LR 100 100 120 100 LR 100 120 120 120 C 110 100");
    unsigned int ground = track.LIST_ground;
    strcpy(track.trackname[0], "gone");
    track.load();
    EXPECT_NE(log().find("Loading track [  ]\n"), std::string::npos) << log();
    EXPECT_EQ(track.nLRpoints, 2u);
    EXPECT_EQ(track.nCpoints, 1u);
    EXPECT_EQ(track.LIST_ground, ground);
    EXPECT_FALSE(blackbox.status);
}

TEST_F(TrackLoad, With100PairsPoint0IsComparedWithPoint95) {
    // Point 0 shares its x with point 95 only.
    std::string text = "0 0 0\n";
    for (int i = 0; i < 100; i++) {
        int x = (i == 0 || i == 95) ? 100 : 200 + i, z = 10 + i * 3;
        text += "LR " + std::to_string(x) + " " + std::to_string(z) + " " + std::to_string(x + 20) + " " +
                std::to_string(z) + "\n";
    }
    loadText(text);
    ASSERT_EQ(track.nLRpoints, 100u);
    EXPECT_FLOAT_EQ(track.Lpoint[0].x, (100 - 256) * 0.125f + 0.01f);
    EXPECT_FLOAT_EQ(track.Rpoint[0].x, (120 - 256) * 0.125f - 0.01f);
    EXPECT_FLOAT_EQ(track.Lpoint[95].x, (100 - 256) * 0.125f);
}

TEST_F(TrackLoad, With100PairsPoint0IsNotComparedWithTheLastPoint) {
    std::string text = "0 0 0\n";
    for (int i = 0; i < 100; i++) {
        int x = (i == 0 || i == 99) ? 100 : 200 + i, z = 10 + i * 3;
        text += "LR " + std::to_string(x) + " " + std::to_string(z) + " " + std::to_string(x + 20) + " " +
                std::to_string(z) + "\n";
    }
    loadText(text);
    EXPECT_FLOAT_EQ(track.Lpoint[0].x, (100 - 256) * 0.125f);
    EXPECT_FLOAT_EQ(track.Rpoint[0].x, (120 - 256) * 0.125f);
}

TEST_F(TrackLoad, With64PairsPoint0IsComparedWithPoint63) {
    std::string text = "0 0 0\n";
    for (int i = 0; i < 64; i++) {
        int x = (i == 0 || i == 63) ? 100 : 200 + i, z = 10 + i * 3;
        text += "LR " + std::to_string(x) + " " + std::to_string(z) + " " + std::to_string(x + 20) + " " +
                std::to_string(z) + "\n";
    }
    loadText(text);
    ASSERT_EQ(track.nLRpoints, 64u);
    EXPECT_FLOAT_EQ(track.Lpoint[0].x, (100 - 256) * 0.125f + 0.01f);
    EXPECT_FLOAT_EQ(track.Rpoint[0].x, (120 - 256) * 0.125f - 0.01f);
}

TEST_F(TrackLoad, NeighboursSharingAnXAreMovedApartByAHundredth) {
    // Four pairs, so that point 0's predecessor (4294967295 mod 4) is point 3.
    loadText("0 0 0\nLR 100 100 300 100\nLR 100 120 300 120\nLR 150 140 350 130\nLR 200 110 400 105\n");
    EXPECT_FLOAT_EQ(track.Lpoint[0].x, (100 - 256) * 0.125f);
    // The second left point has the first one's x: +0.01 on the left, -0.01 on the right.
    EXPECT_FLOAT_EQ(track.Lpoint[1].x, (100 - 256) * 0.125f + 0.01f);
    EXPECT_FLOAT_EQ(track.Rpoint[1].x, (300 - 256) * 0.125f - 0.01f);
    EXPECT_FLOAT_EQ(track.Lpoint[1].z, (120 - 256) * 0.125f);
    EXPECT_FLOAT_EQ(track.Lpoint[2].x, (150 - 256) * 0.125f);
}

TEST_F(TrackLoad, AnUnknownWordIsSkippedOnItsOwnAndSoAreTheNumbersAfterIt) {
    loadText("0 0 80\n# 5 6 7\nLR 100 100 120 100\n# a comment LR 110 110 130 110 12\nC 110 100\n");
    ASSERT_EQ(track.nLRpoints, 2u);
    ASSERT_EQ(track.nCpoints, 1u);
    EXPECT_FLOAT_EQ(track.Rpoint[1].x, (130 - 256) * 0.125f);
    EXPECT_FLOAT_EQ(track.Cpoint[0].x, -18.25f);
    EXPECT_FLOAT_EQ(track.Cpoint[0].z, -19.5f);
}

TEST_F(TrackLoad, NoPairsGiveNoBarrierAndTheStartNormals) {
    loadText("0 0 10 C 110 100 C 120 100");
    EXPECT_EQ(track.nLRpoints, 0u);
    EXPECT_EQ(track.nCpoints, 2u);
    EXPECT_FLOAT_EQ(track.LNpoint[0].x, 1.0f);
    EXPECT_FLOAT_EQ(track.RNpoint[0].x, -1.0f);
    EXPECT_FLOAT_EQ(track.LTcoord[0], 0.0f);
    EXPECT_TRUE(glIsList(track.LIST_ground));
    EXPECT_TRUE(glIsList(track.LIST_fences));
    EXPECT_FALSE(track.check(-100, -100, 100, 100));
}

TEST_F(TrackLoad, OnePairRunsFromItselfToItself) {
    loadText("0 0 10 LR 100 100 120 100");
    ASSERT_EQ(track.nLRpoints, 1u);
    EXPECT_FLOAT_EQ(track.LNpoint[0].x, 1.0f);
    EXPECT_FLOAT_EQ(track.LNpoint[0].z, 0.0f);
    EXPECT_FLOAT_EQ(track.LNpoint[1].x, 1.0f);
    EXPECT_FLOAT_EQ(track.RNpoint[1].x, -1.0f);
    // From point 0 to itself, then from the moved point 0 to the closing copy.
    EXPECT_FLOAT_EQ(track.LTcoord[0], 0.0f);
    EXPECT_NEAR(track.LTcoord[1], std::sqrt(2.0f) * 0.01f, 1e-5f);
}

TEST_F(TrackLoad, TextureCoordinatesRunAlongTheBarrierFromTheWrappedPredecessor) {
    // Four pairs on a square: point 0's predecessor is 4294967295 mod 4 = 3.
    loadText("0 0 0\nLR 100 100 80 100\nLR 100 60 80 60\nLR 140 60 160 60\nLR 140 100 160 100\n");
    ASSERT_EQ(track.nLRpoints, 4u);
    auto length = [](sTrackPoint a, sTrackPoint b) { return std::hypot(a.x - b.x, a.z - b.z); };
    float sum = length(track.Lpoint[3], track.Lpoint[0]);
    EXPECT_FLOAT_EQ(track.LTcoord[0], sum);
    EXPECT_GT(track.LTcoord[0], 4.9f);
    for (unsigned int i = 1; i <= 4; i++) {
        sum += length(track.Lpoint[i - 1], track.Lpoint[i]);
        EXPECT_NEAR(track.LTcoord[i], sum, 1e-4f) << i;
    }
    float rsum = length(track.Rpoint[3], track.Rpoint[0]);
    EXPECT_FLOAT_EQ(track.RTcoord[0], rsum);
}

TEST_F(TrackLoad, OnARoundCircuitEveryNormalIsAUnitVectorPointingAtTheRoad) {
    loadText(circleTrack());
    ASSERT_EQ(track.nLRpoints, 64u);
    for (unsigned int i = 0; i <= track.nLRpoints; i++) {
        const sTrackPoint &L = track.Lpoint[i], &R = track.Rpoint[i];
        const sTrackPoint &LN = track.LNpoint[i], &RN = track.RNpoint[i];
        EXPECT_NEAR(std::hypot(LN.x, LN.z), 1.0f, 1e-5f) << i;
        EXPECT_NEAR(std::hypot(RN.x, RN.z), 1.0f, 1e-5f) << i;
        // Towards the other barrier, and nearly straight across the road.
        float dx = R.x - L.x, dz = R.z - L.z, width = std::hypot(dx, dz);
        EXPECT_GT((LN.x * dx + LN.z * dz) / width, 0.95f) << "left normal " << i;
        EXPECT_GT(-(RN.x * dx + RN.z * dz) / width, 0.95f) << "right normal " << i;
    }
    EXPECT_FLOAT_EQ(track.LNpoint[64].x, track.LNpoint[0].x);
    EXPECT_FLOAT_EQ(track.RNpoint[64].z, track.RNpoint[0].z);
}

TEST_F(TrackLoad, AClockwiseCircuitKeepsItsNormalsTurnedTheSameWay) {
    // The same circle, mirrored: the start now runs towards +z and the
    // continuity flip has to carry point 0's orientation all the way round.
    std::string text = "0 0 0\n";
    for (int i = 0; i < 48; i++) {
        double a = 2 * M_PI * i / 48;
        auto p = [&](double r) {
            return std::to_string((int)std::lround(256 + r * std::cos(a))) + " " +
                   std::to_string((int)std::lround(256 + r * std::sin(a)));
        };
        text += "LR " + p(200) + " " + p(230) + "\n";
    }
    loadText(text);
    ASSERT_EQ(track.nLRpoints, 48u);
    for (unsigned int i = 1; i < track.nLRpoints; i++) {
        const sTrackPoint &N = track.LNpoint[i], &P = track.LNpoint[i - 1];
        EXPECT_GT(N.x * P.x + N.z * P.z, 0.8f) << i;
    }
}

TEST_F(TrackLoad, AFileLongerThanTheRecordIsReadUpToItsLimits) {
    std::string text = "0 0 0\n";
    for (int i = 0; i < 1200; i++) {
        double a = 2 * M_PI * i / 1200;
        text += "LR " + std::to_string(256 + (int)std::lround(200 * std::cos(a))) + " " +
                std::to_string(256 - (int)std::lround(200 * std::sin(a))) + " " +
                std::to_string(256 + (int)std::lround(230 * std::cos(a))) + " " +
                std::to_string(256 - (int)std::lround(230 * std::sin(a))) + "\n";
        text += "C " + std::to_string(i % 512) + " " + std::to_string(i / 512) + "\n";
    }
    for (int i = 0; i < 300; i++) text += "O " + std::to_string(i % 5) + " " + std::to_string(i) + " 7\n";
    track.init(0.125f);  // the models' lists, even though their files are missing
    loadText(text);
    EXPECT_EQ(track.nLRpoints, 999u);
    EXPECT_EQ(track.nCpoints, 999u);
    EXPECT_EQ(track.nMiscobjects, 256u);
    EXPECT_FLOAT_EQ(track.Cpoint[998].x, (998 % 512 - 256) * 0.125f);
    EXPECT_FLOAT_EQ(track.miscobject[255].x, (255 - 256) * 0.125f);
    EXPECT_EQ(track.typeMiscobject[255], 0u);
    std::string text2 = log();
    EXPECT_NE(text2.find("Loading track Data/Tracks/test.txt : more than 999 barrier pairs, 201 ignored [  ]"),
              std::string::npos)
        << text2;
    EXPECT_NE(text2.find("Loading track Data/Tracks/test.txt : more than 999 centre points, 201 ignored [  ]"),
              std::string::npos);
    EXPECT_NE(text2.find("Loading track Data/Tracks/test.txt : more than 256 objects, 44 ignored [  ]"),
              std::string::npos);
    EXPECT_FALSE(blackbox.status);
    // The closing copy and the extra normal sit in the record's last slot.
    EXPECT_FLOAT_EQ(track.LNpoint[999].x, track.LNpoint[0].x);
    EXPECT_GT(track.LTcoord[999], track.LTcoord[998]);
    // Visibility and drawing stay inside the arrays as well.
    placeCamera(0, 30, 0, -89, 0);
    config.lod = 2;
    config.LOrange[2] = 300;
    while (glGetError() != GL_NO_ERROR) {}
    track.isinview();
    track.drawObjects();
    EXPECT_EQ(glGetError(), (GLenum)GL_NO_ERROR);
}

TEST_F(TrackLoad, ObjectsOfUnknownTypeAndBoardsWithoutAdvertsAreSkipped) {
    track.nAds = 0;
    loadText("0 0 0\nO 12 100 100\nO -1 100 100\nO 7 120 120\nO 11 130 130\nO 0 140 140\n");
    ASSERT_EQ(track.nMiscobjects, 2u);
    EXPECT_EQ(track.typeMiscobject[0], 11u);
    EXPECT_EQ(track.typeMiscobject[1], 0u);
    EXPECT_FLOAT_EQ(track.miscobject[1].x, (140 - 256) * 0.125f);
    std::string text = log();
    EXPECT_NE(text.find("2 objects of unknown type (0 to 11) ignored [  ]"), std::string::npos) << text;
    EXPECT_NE(text.find("1 advertising boards without advertisements ignored [  ]"), std::string::npos) << text;

    track.nAds = 3;
    loadText("0 0 0\nO 7 120 120\n");
    ASSERT_EQ(track.nMiscobjects, 1u);
    EXPECT_EQ(track.typeMiscobject[0], 7u);
}

TEST_F(TrackLoad, AGroundOrRoadPastItsTableFallsBackToTheFirst) {
    loadText("7 3 0 LR 100 100 120 100");
    EXPECT_EQ(track.whichDirt, 0u);
    EXPECT_EQ(track.whichRoad, 0u);
    EXPECT_NE(log().find("ground 7 does not exist, 0 used [  ]"), std::string::npos) << log();
    EXPECT_NE(log().find("road 3 does not exist, 0 used [  ]"), std::string::npos) << log();
}

TEST_F(TrackLoad, MoreThan99AdvertisingPicturesAreCutOff) {
    std::filesystem::create_directories("Data/Ads");
    for (int i = 0; i < 101; i++) bvtest::writeSolidTGA("Data/Ads/ad" + std::to_string(i) + ".tga", 2, 2, 9, 9, 9);
    bvtest::writeSolidTGA("Data/Ads/x", 2, 2, 9, 9, 9);  // two characters or fewer: not a picture
    track.init(0.125f);
    EXPECT_EQ(track.nAds, 99u);
    for (unsigned int i = 0; i < 99; i++) EXPECT_NE(track.adTexture[i], 0u) << i;
    std::string text = log();
    EXPECT_NE(text.find("Loading advertisements : more than 99 pictures, Data/Ads/"), std::string::npos) << text;
    track.free();
    EXPECT_EQ(track.nAds, 0u);
}

}  // namespace

// The ghost kart: the recording clock, playback between samples, the lap
// kept or dropped, the file, and when it is drawn at all.

#include <gtest/gtest.h>

#include <GL/gl.h>

#include <cmath>
#include <cstring>
#include <filesystem>
#include <string>

#include "kart/gokart.h"
#include "scene/ghost.h"
#include "shell/blackbox.h"
#include "shell/bvconfig.h"
#include "shell/performance.h"
#include "support/bvtest_fixtures.h"
#include "track/track.h"

namespace {

class Ghost : public ::testing::Test {
protected:
    void SetUp() override {
        std::filesystem::create_directories("Data/Ghosts");
        blackbox.init("Data/blackbox.bvd", false);
        config.PATH[0] = 0;
        strcpy(track.trackname[0], "oval");
        track.ntracks = 1;
        config.track = 0;
        performance.fps = 60;
        gokart[0].px = 1;
        gokart[0].pz = 2;
        gokart[0].ay = 3;
        ghost.init();
    }
    // Kart 0 at a new place every frame while the ghost records.
    void recordFrames(int n) {
        for (int i = 0; i < n; i++) {
            gokart[0].px = (float)frame;
            gokart[0].pz = (float)-frame;
            gokart[0].ay = 0;
            frame++;
            ghost.record();
        }
    }
    void playback(std::initializer_list<float> headings) {
        int i = 0;
        for (float a : headings) {
            ghost.px[1][i] = 10.0f * i;
            ghost.pz[1][i] = -4.0f * i;
            ghost.ay[1][i++] = a;
        }
        ghost.nRecs[1] = i;
        ghost.mRec = 0;
        ghost.timer[1] = 0;
    }
    bvtest::ScratchDir dir;
    int frame = 0;
};

TEST_F(Ghost, WithoutAFileThereIsNoGhostAndEverySampleIsTheKart) {
    EXPECT_EQ(ghost.nRecs[1], 0);
    EXPECT_EQ(ghost.nRecs[0], 0);
    EXPECT_EQ(ghost.bestTime, 99.0f);
    EXPECT_EQ(ghost.timer[0], 1.0f);
    EXPECT_EQ(ghost.timer[1], 0.0f);
    EXPECT_EQ(ghost.px[1][999], 1.0f);
    EXPECT_EQ(ghost.pz[1][500], 2.0f);
    EXPECT_EQ(ghost.ay[1][0], 3.0f);
}

TEST_F(Ghost, AFrameEitherAdvancesTheClockOrTakesASample) {
    // At 60 frames a second: a sample, then two frames of clock, and so on.
    recordFrames(1);
    EXPECT_EQ(ghost.nRecs[0], 1);
    EXPECT_EQ(ghost.px[0][0], 0.0f);
    recordFrames(2);
    EXPECT_EQ(ghost.nRecs[0], 1);
    recordFrames(1);
    EXPECT_EQ(ghost.nRecs[0], 2);
    EXPECT_EQ(ghost.px[0][1], 3.0f);
    EXPECT_EQ(ghost.pz[0][1], -3.0f);
    recordFrames(300 - 4);
    EXPECT_EQ(ghost.nRecs[0], 100);
}

TEST_F(Ghost, ALapLongerThanAThousandSamplesKeepsItsFirstThousand) {
    performance.fps = 30;  // a sample every second frame
    recordFrames(2500);
    EXPECT_EQ(ghost.nRecs[0], 1000);
    EXPECT_EQ(ghost.px[0][999], 1998.0f);
    gokart[0].currentlaptime = 80.0f;
    ghost.goodone();
    EXPECT_EQ(ghost.nRecs[1], 1000);
    EXPECT_EQ(ghost.nRecs[0], 0);
    EXPECT_EQ(ghost.bestTime, 80.0f);
    EXPECT_EQ(ghost.px[1][999], 1998.0f);
    // Playback runs to the last sample and waits there.
    for (int i = 0; i < 2500; i++) ghost.draw();
    EXPECT_EQ(ghost.mRec, 999);
    EXPECT_GE(ghost.timer[1], 1.0f);
    float x, z, a;
    ghost.pose(&x, &z, &a);
    EXPECT_EQ(ghost.mRec, 999);
    ghost.draw();
    EXPECT_EQ(ghost.mRec, 999);
}

TEST_F(Ghost, PlaybackInterpolatesPositionAndTurnsTheShortWay) {
    playback({170, -170, -10, 10, 100});
    ghost.timer[1] = 0.25f;
    float x, z, a;
    ghost.pose(&x, &z, &a);
    EXPECT_FLOAT_EQ(x, 2.5f);
    EXPECT_FLOAT_EQ(z, -1.0f);
    EXPECT_FLOAT_EQ(a, 175.0f);  // not 85: across +-180, not through 0
    ghost.mRec = 1;
    ghost.timer[1] = 0.5f;
    ghost.pose(&x, &z, &a);
    EXPECT_FLOAT_EQ(a, -90.0f);
    ghost.mRec = 2;
    ghost.pose(&x, &z, &a);
    EXPECT_FLOAT_EQ(a, 0.0f);
    // Back the other way across 180.
    playback({-170, 170});
    ghost.timer[1] = 0.5f;
    ghost.pose(&x, &z, &a);
    EXPECT_FLOAT_EQ(a, -180.0f);
    // The last sample leads to the first.
    playback({10, 20, 30});
    ghost.mRec = 2;
    ghost.timer[1] = 0.5f;
    ghost.pose(&x, &z, &a);
    EXPECT_FLOAT_EQ(x, 10.0f);
    EXPECT_FLOAT_EQ(a, 20.0f);
}

// Samples exactly half a turn apart: the ghost turns forwards through +180,
// where wrapping the difference into [-180, 180) would turn it backwards.
TEST_F(Ghost, HalfATurnBetweenSamplesTurnsForwards) {
    playback({-90, 90});
    ghost.timer[1] = 0.5f;
    float x, z, a;
    ghost.pose(&x, &z, &a);
    EXPECT_EQ(a, 0.0f);
    playback({90, -90});
    ghost.timer[1] = 0.5f;
    ghost.pose(&x, &z, &a);
    EXPECT_EQ(a, 0.0f);  // -180 is short enough: backwards
}

TEST_F(Ghost, PlaybackKeepsThePaceOfTheRecording) {
    playback({0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
    // A new sample every third frame at 60 frames a second, as recorded.
    for (int i = 0; i < 2; i++) ghost.draw();
    EXPECT_EQ(ghost.mRec, 0);
    ghost.draw();
    EXPECT_EQ(ghost.mRec, 1);
    for (int i = 0; i < 3 * 5; i++) ghost.draw();
    EXPECT_EQ(ghost.mRec, 6);
}

TEST_F(Ghost, BadoneDropsTheRecordingAndRestartsPlayback) {
    playback({0, 0, 0, 0});
    recordFrames(10);
    ghost.mRec = 3;
    ghost.timer[1] = 0.7f;
    ghost.badone();
    EXPECT_EQ(ghost.nRecs[0], 0);
    EXPECT_EQ(ghost.mRec, 0);
    EXPECT_EQ(ghost.timer[0], 1.0f);
    EXPECT_EQ(ghost.timer[1], 0.0f);
    EXPECT_EQ(ghost.nRecs[1], 4);
}

TEST_F(Ghost, SavesOnePlusThreeLinesASampleAndReadsThemBack) {
    playback({12.3456789f, -170.25f, 0.5f});
    ghost.px[1][1] = -31.0000004f;
    ghost.bestTime = 48.5f;
    ghost.save();
    std::string text = bvtest::readFile("Data/Ghosts/oval.txt");
    std::vector<std::string> l = bvtest::lines(text);
    ASSERT_EQ(l.size(), 1u + 3 * 3);
    EXPECT_EQ(l[0], "48.500000");
    EXPECT_EQ(l[1], "0.000000");
    EXPECT_EQ(l[3], "12.345679");
    EXPECT_EQ(l[4], "-31.000000");
    EXPECT_FALSE(bvtest::fileExists("Data/Ghosts/oval.txt.tmp"));

    ghost.init();
    EXPECT_EQ(ghost.nRecs[1], 3);
    EXPECT_EQ(ghost.bestTime, 48.5f);
    EXPECT_NEAR(ghost.ay[1][0], 12.345679, 1e-6);
    EXPECT_NEAR(ghost.px[1][1], -31.0, 1e-6);
    EXPECT_NEAR(ghost.pz[1][2], -8.0, 1e-6);
    EXPECT_NEAR(ghost.ay[1][1], -170.25, 1e-6);
    // A second save of what was read writes the same file.
    ghost.save();
    EXPECT_EQ(bvtest::readFile("Data/Ghosts/oval.txt"), text);
}

TEST_F(Ghost, AFileWithOnlyTheBestTimeGivesNoGhost) {
    bvtest::writeFile("Data/Ghosts/oval.txt", "48.500000\n");
    ghost.init();
    EXPECT_EQ(ghost.bestTime, 48.5f);
    EXPECT_EQ(ghost.nRecs[1], 0);
    ghost.draw();
    EXPECT_EQ(ghost.mRec, 0);
}

TEST_F(Ghost, AnEmptyFileLeavesMinusOneSamples) {
    bvtest::writeFile("Data/Ghosts/oval.txt", "");
    ghost.init();
    EXPECT_EQ(ghost.nRecs[1], -1);
    EXPECT_EQ(ghost.bestTime, 99.0f);
}

TEST_F(Ghost, AFailedSaveKeepsTheOldFileAndSaysSo) {
    bvtest::writeFile("Data/Ghosts/oval.txt", "40.000000\n");
    std::filesystem::create_directories("Data/Ghosts/oval.txt.tmp");
    playback({1, 2});
    ghost.save();
    EXPECT_EQ(bvtest::readFile("Data/Ghosts/oval.txt"), "40.000000\n");
    EXPECT_NE(bvtest::readFile("Data/blackbox.bvd").find("Saving Data/Ghosts/oval.txt"), std::string::npos);
}

// The ghost seen from above: a white square standing in for its kart model,
// in front of the eye on black.
class GhostDrawn : public Ghost {
protected:
    void SetUp() override {
        Ghost::SetUp();
        bvtest::openWindow(64, 64);
        gokartstaticdata.wheelradius = 0.11f;
        unsigned int list = glGenLists(1);
        glNewList(list, GL_COMPILE);
        glBegin(GL_QUADS);
        glVertex3f(-1, 0, -1);
        glVertex3f(-1, 0, 1);
        glVertex3f(1, 0, 1);
        glVertex3f(1, 0, -1);
        glEnd();
        glEndList();
        gokartstaticdata.SLOgokart3DS.LIST = list;
        playback({0, 0, 0});
        for (int i = 0; i < 3; i++) ghost.px[1][i] = ghost.pz[1][i] = 0;
        config.ghost = 1;
    }
    int centre() {
        glClearColor(0, 0, 0, 1);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        glDisable(GL_DEPTH_TEST);
        glDisable(GL_CULL_FACE);
        glDisable(GL_LIGHTING);
        glDisable(GL_TEXTURE_2D);
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        glOrtho(-2, 2, -2, 2, -10, 10);
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        glRotatef(90, 1, 0, 0);  // look down on the ground
        ghostframe();
        glFinish();
        return bvtest::readPixel(32, 32).r;
    }
};

TEST_F(GhostDrawn, HalfTransparentWithOneKart) {
    config.ngokarts = 1;
    int r = centre();
    EXPECT_NEAR(r, 128, 3);
    EXPECT_EQ(ghost.nRecs[0], 1);
}

TEST_F(GhostDrawn, RecordedButNotDrawnWithTwoKarts) {
    config.ngokarts = 2;
    EXPECT_EQ(centre(), 0);
    EXPECT_EQ(ghost.nRecs[0], 1);
    config.ngokarts = 6;
    EXPECT_EQ(centre(), 0);
}

TEST_F(GhostDrawn, NotDrawnWhenSwitchedOff) {
    config.ngokarts = 1;
    config.ghost = 0;
    EXPECT_EQ(centre(), 0);
}

}  // namespace

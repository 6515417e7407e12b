// The race camera: modes, field of view, distances and the visible cone.

#include <gtest/gtest.h>

#include <GL/gl.h>

#include <cmath>

#include "scene/camera.h"
#include "shell/bvconfig.h"
#include "shell/keyboard.h"
#include "support/bvtest.h"

namespace {

class CameraTest : public ::testing::Test {
protected:
    void SetUp() override {
        keyboard.init();
        config.CHEAT_0bighead = 0;
        camera.init(1, 0, 0, 0, 0, 0, 0, 55);
    }
};

TEST_F(CameraTest, InitStartsTheChaseViewAsTheRaceDoes) {
    camera.Nmodes = 77;
    camera.ignoreisinview = true;
    camera.init(1, 26.01f, 1.5f, 22.0f, 0, 0, 0, 55);
    EXPECT_EQ(camera.mode, 1u);
    EXPECT_FLOAT_EQ(camera.axmargin, 35);
    EXPECT_FLOAT_EQ(camera.aymargin, 45);
    EXPECT_FLOAT_EQ(camera.ox, 26.01f);
    EXPECT_FLOAT_EQ(camera.oz, 22.0f);
    EXPECT_FLOAT_EQ(camera.fov, 55);
    EXPECT_FALSE(camera.setmodedelay);
    EXPECT_FALSE(camera.ignoreisinview);
    EXPECT_EQ(camera.Nmodes, 77u);
}

TEST_F(CameraTest, NearPointIsAlwaysVisibleEvenBehind) {
    EXPECT_FLOAT_EQ(camera.isinview(0, 0, 2.7f), 1.0f);   // behind the eye
    EXPECT_FLOAT_EQ(camera.isinview(0, 0, -2.7f), 1.0f);
    EXPECT_FLOAT_EQ(camera.isinview(0, 0, 2.76f), -1.0f);  // behind, just past the near rule
}

TEST_F(CameraTest, AnswerIsTheDistanceInsideTheCone) {
    EXPECT_FLOAT_EQ(camera.isinview(0, 0, -10), 10.0f);
    EXPECT_FLOAT_EQ(camera.isinview(3, 0, -4), 5.0f);
    EXPECT_FLOAT_EQ(camera.distance(3, 0, -4), 5.0f);
    EXPECT_FLOAT_EQ(camera.isinview(0, 0, 10), -1.0f);      // behind
    EXPECT_FLOAT_EQ(camera.isinview(-20, 0, -10), -1.0f);   // heading 63 degrees off
    EXPECT_FLOAT_EQ(camera.isinview(0, 0.5f, -10), -1.0f);  // above the eye: pitch below -90
    EXPECT_FLOAT_EQ(camera.isinview(0, -5, -10), camera.distance(0, -5, -10));  // pitch -63.4 is outside
}

TEST_F(CameraTest, PitchConeIsStrict) {
    camera.ax = -45;
    // A point 10 ahead and 10 below: pitch exactly -45 +/- 0, inside.
    EXPECT_GT(camera.isinview(0, -10, -10), 0.0f);
    // Straight-down-ish: pitch -80, outside -80..-10 strictly.
    camera.ax = -45;
    float h = 10.0f * tanf(10.0f / 57.29577951f);
    EXPECT_FLOAT_EQ(camera.isinview(0, -10, -h), -1.0f);
}

TEST_F(CameraTest, SecondHeadingComparisonCoversTheWrap) {
    camera.ay = -170;
    // Heading 175: atan = -5 degrees with the point at larger z.
    float x = -10.0f * tanf(5.0f / 57.29577951f);
    float d = camera.isinview(x, 0, 10);
    EXPECT_NEAR(d, std::sqrt(x * x + 100.0f), 1e-4);
    camera.ay = 100;
    // Heading 150: atan = -30 with z larger.
    float x2 = -10.0f * tanf(30.0f / 57.29577951f);
    EXPECT_FLOAT_EQ(camera.isinview(x2, 0, 10), -1.0f);
}

TEST_F(CameraTest, PreviewAnswersSixWithoutLooking) {
    camera.ignoreisinview = true;
    EXPECT_FLOAT_EQ(camera.isinview(0, 0, 100), 6.0f);
    EXPECT_FLOAT_EQ(camera.isinview(0, 0, 0.1f), 6.0f);
    EXPECT_FLOAT_EQ(camera.distance(500, 0, 0), 6.0f);
}

TEST_F(CameraTest, CycleKeyAdvancesOncePerPressAndWraps) {
    camera.mode = 3;
    camera.setmode();  // key up: latch armed
    keyboard.key[67] = true;
    camera.setmode();
    EXPECT_EQ(camera.mode, 4u);
    camera.setmode();
    camera.setmode();
    EXPECT_EQ(camera.mode, 4u);  // held: no more
    keyboard.key[67] = false;
    camera.setmode();
    keyboard.key[67] = true;
    camera.setmode();
    EXPECT_EQ(camera.mode, 0u);  // 4 wraps to 0
}

TEST_F(CameraTest, LowerCaseCDoesNotCycle) {
    camera.setmode();
    keyboard.key['c'] = true;
    camera.setmode();
    EXPECT_EQ(camera.mode, 1u);
}

TEST_F(CameraTest, LowestHeldDigitWins) {
    keyboard.key['5'] = true;
    keyboard.key['3'] = true;
    camera.setmode();
    EXPECT_EQ(camera.mode, 2u);
    keyboard.key['1'] = true;
    camera.setmode();
    EXPECT_EQ(camera.mode, 0u);
}

TEST_F(CameraTest, SetmodeRemembersThePositionBeforeTheStep) {
    camera.px = 5;
    camera.py = 6;
    camera.pz = 7;
    camera.setmode();
    EXPECT_FLOAT_EQ(camera.ox, 5);
    EXPECT_FLOAT_EQ(camera.oy, 6);
    EXPECT_FLOAT_EQ(camera.oz, 7);
}

TEST_F(CameraTest, BigHeadNarrowsOnlyTheDriversView) {
    config.CHEAT_0bighead = 1;
    keyboard.key['1'] = true;
    camera.setmode();
    EXPECT_EQ(camera.mode, 0u);
    EXPECT_FLOAT_EQ(camera.fov, 27.5f);
    keyboard.key['1'] = false;
    keyboard.key['2'] = true;
    camera.setmode();
    EXPECT_FLOAT_EQ(camera.fov, 55.0f);
    config.CHEAT_0bighead = 0;
    keyboard.key['2'] = false;
    keyboard.key['1'] = true;
    camera.setmode();
    EXPECT_FLOAT_EQ(camera.fov, 55.0f);
}

TEST_F(CameraTest, HeadingConvention) {
    // The heading from a kart towards the camera is the one that turns the
    // camera back onto the kart: a camera 5 behind (+z) looks along -z, 0.
    EXPECT_FLOAT_EQ(cameraheading(0, -5, 0, 0), 0.0f);
    EXPECT_FLOAT_EQ(cameraheading(0, 5, 0, 0), 180.0f);
    EXPECT_NEAR(cameraheading(0, 0, 5, 5), 45.0f, 1e-4);  // camera to the right and behind: looks half left
    EXPECT_NEAR(cameraheading(0, 0, 5, -5), 135.0f, 1e-4);
    EXPECT_NEAR(cameraheading(0, 0, -5, -5), 225.0f, 1e-4);  // the range runs to 270, not 180
}

TEST(CameraTransform, RotatesThenMovesIntoTheEye) {
    bvtest::ScratchDir dir;
    bvtest::openWindow(64, 64);
    camera.init(1, 10, 2, 30, 0, 90, 0, 55);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    camera.transform();
    GLfloat m[16];
    glGetFloatv(GL_MODELVIEW_MATRIX, m);
    // A point 5 to the eye's left (heading 90 looks along -x) lands straight ahead.
    float x = 5, y = 2, z = 30;
    float ex = m[0] * x + m[4] * y + m[8] * z + m[12];
    float ez = m[2] * x + m[6] * y + m[10] * z + m[14];
    EXPECT_NEAR(ex, 0, 1e-4);
    EXPECT_NEAR(ez, -5, 1e-4);
}

}  // namespace

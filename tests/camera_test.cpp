// The race camera: modes, field of view, distances and the visible cone.

#include <gtest/gtest.h>

#include <GL/gl.h>

#include <cmath>

#include "kart/gokart.h"
#include "scene/camera.h"
#include "shell/bvconfig.h"
#include "shell/keyboard.h"
#include "shell/mouse.h"
#include "shell/performance.h"
#include "track/track.h"
#include "support/bvtest_fixtures.h"

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

// ---------------------------------------------------------------------------
// The camera step of each mode.

const float DEG = 57.29577951f;

class CameraStepTest : public ::testing::Test {
protected:
    void SetUp() override {
        keyboard.init();
        mouse.init();
        mouse.deltax = mouse.deltay = 0;
        kart = sGokart();
        kart.px = 10;
        kart.pz = 20;
        camera.init(1, 0, 0, 0, 0, 0, 0, 55);
        camera_lag = 0;
        track.nCpoints = 0;
    }
    void step(unsigned int mode, float fps) {
        performance.fps = fps;
        camera.mode = mode;
        camera.follow(camera, kart);
    }
    sGokart kart;
};

TEST_F(CameraStepTest, ChaseViewEasesTwoBehindAndOneAndAHalfUp) {
    kart.ay = 90;
    camera.px = 0;
    camera.py = 0;
    camera.pz = 0;
    camera.ax = 0;
    camera.ay = 0;
    camera.az = 10;
    step(CAMERA_CHASE, 20);  // follow factor 10 / 20: half way
    // Target (10 + 2 sin 90, 1.5, 20 + 2 cos 90) = (12, 1.5, 20), pitch -15, heading 90.
    EXPECT_NEAR(camera.px, 6, 1e-4);
    EXPECT_NEAR(camera.py, 0.75f, 1e-5);
    EXPECT_NEAR(camera.pz, 10, 1e-4);
    EXPECT_NEAR(camera.ax, -7.5f, 1e-5);
    EXPECT_NEAR(camera.ay, 45, 1e-4);
    EXPECT_NEAR(camera.az, 5, 1e-5);
    step(CAMERA_CHASE, 10);  // factor 1: all the way
    EXPECT_NEAR(camera.px, 12, 1e-4);
    EXPECT_NEAR(camera.pz, 20, 1e-4);
    EXPECT_NEAR(camera.ax, -15, 1e-5);
    EXPECT_NEAR(camera.ay, 90, 1e-4);
}

TEST_F(CameraStepTest, ASlowFrameTakesTheEyeToItsTargetAndNoFurther) {
    kart.ay = 90;
    camera.ay = 0;
    step(CAMERA_CHASE, 1);  // 10 / 1 would carry the eye ten times past
    EXPECT_NEAR(camera.px, 12, 1e-4);
    EXPECT_NEAR(camera.py, 1.5f, 1e-5);
    EXPECT_NEAR(camera.pz, 20, 1e-4);
    EXPECT_NEAR(camera.ax, -15, 1e-5);
    EXPECT_NEAR(camera.ay, 90, 1e-4);
    camera.px = camera.pz = 0;
    camera.py = 3;
    step(CAMERA_HIGH, 2);  // 5 / 2 likewise
    EXPECT_NEAR(camera.px, 1, 1e-5);
    EXPECT_NEAR(camera.pz, 2, 1e-5);
}

TEST_F(CameraStepTest, HeadingTurnsTheShortWayAndWrapsOnce) {
    kart.ay = -170;
    camera.ay = 170;
    step(CAMERA_CHASE, 20);
    // 170 + (-340 + 360) / 2 = 180, which wraps to -180.
    EXPECT_NEAR(camera.ay, -180, 1e-4);
    kart.ay = 170;
    camera.ay = -170;
    step(CAMERA_CHASE, 40);
    // -170 + (340 - 360) / 4 = -175.
    EXPECT_NEAR(camera.ay, -175, 1e-4);
}

// Exactly half a turn away the eased heading goes forwards (+180), where
// wrapping the difference into [-180, 180) would send it backwards.
TEST_F(CameraStepTest, HalfATurnAwayTheHeadingEasesForwards) {
    kart.ay = 90;
    camera.ay = -90;
    step(CAMERA_CHASE, 20);  // half way: -90 + 180 / 2
    EXPECT_EQ(camera.ay, 0.0f);
    kart.ay = -90;
    camera.ay = 90;
    step(CAMERA_CHASE, 20);  // -180 is short enough: 90 - 180 / 2
    EXPECT_EQ(camera.ay, 0.0f);
}

TEST_F(CameraStepTest, DriversViewSitsInTheSeatTurnedWithWheelAndSway) {
    kart.px = 0;
    kart.pz = 0;
    kart.ay = 30;
    kart.sw_ay = 10;
    kart.ups = 5;
    kart.head_viewax = 2;
    kart.head_ax = 1;
    kart.slidediff = 0;  // no sway step
    camera_lag = 0.1f;
    step(CAMERA_DRIVER, 60);
    EXPECT_NEAR(camera.px, -0.37f * sinf(30 / DEG), 1e-5);
    EXPECT_FLOAT_EQ(camera.py, 0.8f);
    EXPECT_NEAR(camera.pz, -0.37f * cosf(30 / DEG), 1e-5);
    EXPECT_NEAR(camera.ay, 30 + 0.01f + 5, 1e-4);
    EXPECT_NEAR(camera.az, -1, 1e-5);
    EXPECT_NEAR(camera.ax, 2 + 1 - 15 + 0.1f, 1e-5);
    EXPECT_FLOAT_EQ(camera_lag, 0.1f);
}

TEST_F(CameraStepTest, SwayIsClampedAndThePitchTakesTheNewSway) {
    kart.ups = 0;
    kart.slidediff = 1000;  // a step of 0.1 / 50 * 1000 = 2 per frame
    camera_lag = 0;
    bool sawUp = false, sawDown = false;
    for (int i = 0; i < 40; i++) {
        float before = camera_lag;
        step(CAMERA_DRIVER, 1);
        EXPECT_TRUE(camera_lag == 0.125f || camera_lag == -0.125f) << camera_lag;
        sawUp = sawUp || camera_lag == 0.125f;
        sawDown = sawDown || camera_lag == -0.125f;
        EXPECT_NEAR(camera.ay, before / 10, 1e-6);  // heading: the sway before the step
        EXPECT_NEAR(camera.ax, -15 + camera_lag, 1e-6);  // pitch: the sway after it
    }
    EXPECT_TRUE(sawUp && sawDown);
}

TEST_F(CameraStepTest, TracksideStandsOnTheNearestCentrePointAimedAtTheKart) {
    track.nCpoints = 3;
    track.Cpoint[0] = {0, 0};
    track.Cpoint[1] = {10, 0};
    track.Cpoint[2] = {20, 0};
    kart.px = 11;
    kart.pz = 3;
    step(CAMERA_TRACKSIDE, 60);
    EXPECT_FLOAT_EQ(camera.px, 10);
    EXPECT_FLOAT_EQ(camera.py, 1.25f);
    EXPECT_FLOAT_EQ(camera.pz, 0);
    EXPECT_NEAR(camera.ax, atanf(sqrtf(10) / 1.25f) * DEG - 90, 1e-4);
    EXPECT_NEAR(camera.ay, cameraheading(11, 3, 10, 0) - 360, 1e-4);  // 198.4 wraps
    EXPECT_FLOAT_EQ(camera.az, 0);
    // The camera looks at the kart: it is dead ahead in the cone.
    EXPECT_GT(camera.isinview(11, 0, 3), 0);
}

TEST_F(CameraStepTest, TracksideTakesTheFirstOfTwoEquallyNearPoints) {
    track.nCpoints = 2;
    track.Cpoint[0] = {5, 0};
    track.Cpoint[1] = {15, 0};
    kart.px = 10;
    kart.pz = 0.5f;
    step(CAMERA_TRACKSIDE, 60);
    EXPECT_FLOAT_EQ(camera.px, 5);
}

TEST_F(CameraStepTest, TracksideFartherThan99SitsOnCentrePointZero) {
    track.nCpoints = 3;
    track.Cpoint[0] = {200, 0};
    track.Cpoint[1] = {150, 0};
    track.Cpoint[2] = {109.5f, 20};  // 99.5 from the kart
    kart.px = 10;
    kart.pz = 20;
    step(CAMERA_TRACKSIDE, 60);
    EXPECT_FLOAT_EQ(camera.px, 200);
    EXPECT_FLOAT_EQ(camera.pz, 0);
    EXPECT_FLOAT_EQ(camera.py, 1.25f);
    // At 98.5 the point is taken.
    track.Cpoint[2] = {108.5f, 20};
    step(CAMERA_TRACKSIDE, 60);
    EXPECT_FLOAT_EQ(camera.px, 108.5f);
}

TEST_F(CameraStepTest, HighFollowDriftsAfterTheKartThreeUp) {
    camera.px = 0;
    camera.py = 3;
    camera.pz = 0;
    kart.px = 10;
    kart.pz = 10;
    step(CAMERA_HIGH, 5);  // factor 1
    EXPECT_NEAR(camera.px, 1, 1e-5);
    EXPECT_NEAR(camera.pz, 1, 1e-5);
    EXPECT_FLOAT_EQ(camera.py, 3);
    EXPECT_NEAR(camera.ax, atanf((sqrtf(200) + 0.123456789f) / 3) * DEG - 90, 1e-4);
    EXPECT_NEAR(camera.ay, cameraheading(10, 10, 0, 0) - 360, 1e-4);  // 225 wraps to -135
}

TEST_F(CameraStepTest, HighFollowLevelWithTheKartIsNudged) {
    camera.px = 0;
    camera.py = 3;
    camera.pz = 5;
    kart.px = 10;
    kart.pz = 5;
    step(CAMERA_HIGH, 10);  // factor 0.5
    // The nudge moves pz to 5.123456789; the ease then goes half way to 5.
    EXPECT_NEAR(camera.pz, 5 + 0.123456789f / 2, 1e-5);
    EXPECT_FALSE(std::isnan(camera.ay));
    EXPECT_NEAR(camera.ay, cameraheading(10, 5, 0, 5.123456789f) / 2, 1e-3);
}

TEST_F(CameraStepTest, FreeViewMovesWithTheKeysAndTurnsWithTheMouse) {
    camera.px = 0;
    camera.py = 2;
    camera.pz = 0;
    camera.ay = 90;  // looking along -x
    camera.az = 7;
    keyboard.key['w'] = true;
    keyboard.key['s'] = true;  // w wins
    keyboard.key['r'] = true;
    step(CAMERA_FREE, 5);  // 5 / fps = 1 unit
    EXPECT_NEAR(camera.px, -1, 1e-5);
    EXPECT_NEAR(camera.pz, 0, 1e-5);
    EXPECT_NEAR(camera.py, 2.4f, 1e-5);
    EXPECT_FLOAT_EQ(camera.az, 0);
    keyboard.key['w'] = keyboard.key['s'] = keyboard.key['r'] = false;
    keyboard.key['a'] = true;
    keyboard.key['f'] = true;
    step(CAMERA_FREE, 5);
    // a: (-cos ay, 0, +sin ay): a step along +z, to the eye's left.
    EXPECT_NEAR(camera.px, -1, 1e-5);
    EXPECT_NEAR(camera.pz, 1, 1e-5);
    EXPECT_NEAR(camera.py, 2.0f, 1e-5);
    keyboard.key['a'] = keyboard.key['f'] = false;
    keyboard.key['d'] = true;
    step(CAMERA_FREE, 5);
    EXPECT_NEAR(camera.pz, 0, 1e-5);
    keyboard.key['d'] = false;
    camera.ax = 0;
    mouse.deltax = 20;
    mouse.deltay = -40;
    step(CAMERA_FREE, 5);
    EXPECT_NEAR(camera.ay, 89, 1e-5);
    EXPECT_NEAR(camera.ax, 2, 1e-5);
    // The kart does not pull a free camera.
    EXPECT_NEAR(camera.px, -1, 1e-5);
    EXPECT_NEAR(camera.pz, 0, 1e-5);
}

TEST_F(CameraStepTest, WrapCorrectsOnceOnly) {
    camera.ax = 175;
    camera.ay = 179;
    mouse.deltay = -200;   // ax 185 -> -175
    mouse.deltax = -10000;  // ay 679 -> 319, one correction only
    step(CAMERA_FREE, 60);
    EXPECT_NEAR(camera.ax, -175, 1e-4);
    EXPECT_NEAR(camera.ay, 319, 1e-3);
}

}  // namespace

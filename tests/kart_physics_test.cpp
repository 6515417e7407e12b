// Driving physics of one kart, frame by frame at a fixed 60 frames per
// second: pedals and speed, resistance, steering, the slide, barrier bounces,
// wheels and the driver's head.

#include <gtest/gtest.h>

#include <cmath>

#include "kart_fixtures.h"
#include "shell/joystick.h"
#include "shell/mouse.h"

using namespace kartfix;

namespace {

// Open ground: no track loaded, so nothing to hit.
class KartPhysics : public KartTest {
protected:
    void SetUp() override {
        KartTest::SetUp();
        gokartstaticdata.init();
        gokart[0].init(0);
        gokart[0].px = 0;
        gokart[0].pz = 0;
    }
    sGokart& k = gokart[0];
};

}  // namespace

TEST_F(KartPhysics, ThrottleFromRest) {
    k.kUP = true;
    drive(k);
    // The pull uses the pedal as it was before this frame: none yet.
    EXPECT_EQ(k.ups, 0.0f);
    EXPECT_EQ(k.pedal_up, 3.0f);
    drive(k);
    EXPECT_NEAR(k.ups, 20.0 / 45 * 3 / 60 - 1.25 / 60, 1e-6);
    drive(k, 12);
    EXPECT_EQ(k.pedal_up, 42.0f);
    drive(k);  // 15 frames: a quarter of a second
    EXPECT_EQ(k.pedal_up, 45.0f);
    drive(k, 30);
    EXPECT_EQ(k.pedal_up, 45.0f);

    // One frame's pull at top speed: 20 / 60 / (25 / 2.5 + 1).
    const float increment = 20.0f / 60 / 11;
    float top = 0, previous = k.ups;
    for (int i = 0; i < 60 * 40; i++) {
        drive(k);
        // Never more than this frame's pull, which weakens with speed.
        EXPECT_LE(k.ups, previous + 20.0f / 60 / (previous / 2.5f + 1) + 1e-5f);
        if (k.ups > top) top = k.ups;
        previous = k.ups;
    }
    EXPECT_GT(top, 24.99f);
    EXPECT_LE(top, 25.0f + increment);
    EXPECT_GT(k.ups, 24.9f);
    // Straight ahead all the way, towards -z.
    EXPECT_FLOAT_EQ(k.px, 0.0f);
    EXPECT_LT(k.pz, -700.0f);
}

TEST_F(KartPhysics, ReleasingEverythingAtLowSpeedStopsExactly) {
    // The snap: below 1.5 * 1.25 / 60 = 0.03125 with no throttle.
    k.ups = 0.06f;
    drive(k);
    EXPECT_NEAR(k.ups, 0.06 - 1.25 / 60, 1e-6);
    drive(k);
    EXPECT_EQ(k.ups, 0.0f);

    k.ups = 2;
    float z = k.pz;
    int frames = 0;
    while (k.ups != 0 && frames < 1000) {
        drive(k);
        EXPECT_GE(k.ups, 0.0f);
        frames++;
    }
    EXPECT_EQ(k.ups, 0.0f);
    EXPECT_LT(frames, 100);
    z = k.pz;
    drive(k, 60);
    EXPECT_EQ(k.ups, 0.0f);
    EXPECT_EQ(k.pz, z);
}

TEST_F(KartPhysics, BrakeAtRestStaysAtRest) {
    k.kDOWN = true;
    for (int i = 0; i < 120; i++) {
        drive(k);
        EXPECT_EQ(k.ups, 0.0f);
    }
    EXPECT_EQ(k.px, 0.0f);
    EXPECT_EQ(k.pz, 0.0f);
    EXPECT_GE(k.pedal_down, 45.0f);
}

TEST_F(KartPhysics, BrakingNeverReverses) {
    k.kUP = true;
    drive(k, 300);
    ASSERT_GT(k.ups, 10.0f);
    k.kUP = false;
    k.kDOWN = true;
    float z = k.pz;
    for (int i = 0; i < 600; i++) {
        drive(k);
        EXPECT_GE(k.ups, 0.0f);
        EXPECT_LE(k.pz, z);  // facing -z: never back
        z = k.pz;
    }
    EXPECT_EQ(k.ups, 0.0f);
}

TEST_F(KartPhysics, BrakePedalSlowsByItsTravel) {
    k.ups = 10;
    k.pedal_down = 45;
    k.kDOWN = true;
    drive(k);
    EXPECT_NEAR(k.ups, 10 - 22.0 / 60 - 1.25 / 60, 1e-5);
}

TEST_F(KartPhysics, KeysSteerAtTheirRatesAndTestBeforeTheStep) {
    k.kLEFT = true;
    drive(k);
    EXPECT_EQ(k.sw_ay, 0.75f);
    drive(k, 59);
    EXPECT_EQ(k.sw_ay, 45.0f);
    drive(k, 10);
    EXPECT_EQ(k.sw_ay, 45.0f);
    // The limit is a test, not a clamp: one step may overshoot.
    k.sw_ay = 44.9f;
    drive(k);
    EXPECT_FLOAT_EQ(k.sw_ay, 45.65f);
    k.kLEFT = false;
    k.kRIGHT = true;
    k.sw_ay = -44.5f;
    drive(k);
    EXPECT_FLOAT_EQ(k.sw_ay, -45.25f);
    drive(k);
    EXPECT_FLOAT_EQ(k.sw_ay, -45.25f);
    // Let go: back to the middle at 90 per second, then snapped.
    k.kRIGHT = false;
    k.sw_ay = 10;
    drive(k);
    EXPECT_FLOAT_EQ(k.sw_ay, 8.5f);
    k.sw_ay = -2;
    drive(k);
    EXPECT_EQ(k.sw_ay, 0.0f);
    k.sw_ay = 1.4f;
    drive(k);
    EXPECT_EQ(k.sw_ay, 0.0f);
}

TEST_F(KartPhysics, SevenAndAHalfDegreesPerFrame) {
    k.sw_ay = 45;
    k.kLEFT = true;
    float previous = k.ay;
    for (int i = 0; i < 20; i++) {
        k.ups = 10 + 1.25f / 60;  // 10 once the rolling resistance is taken
        drive(k);
        float change = k.ay - previous;
        if (change < -180) change += 360;
        EXPECT_NEAR(change, 7.5f, 1e-4) << i;
        EXPECT_GE(k.ay, -180.0f);
        EXPECT_LT(k.ay, 180.0f);
        previous = k.ay;
    }
}

TEST_F(KartPhysics, MouseSteersTheFocusedHumanKart) {
    config.mousesteering = 1;
    config.mousesensitivity = 4;
    mouse.deltax = 100;
    drive(k);
    EXPECT_FLOAT_EQ(k.sw_ay, -4.0f);
    mouse.deltax = -3000;
    drive(k);
    EXPECT_EQ(k.sw_ay, 45.0f);
    // The mouse wins over the keys.
    k.kRIGHT = true;
    mouse.deltax = 0;
    drive(k);
    EXPECT_EQ(k.sw_ay, 45.0f);
    // Not for a kart the camera does not follow.
    config.gokartfocus = 1;
    k.kRIGHT = false;
    drive(k);
    EXPECT_FLOAT_EQ(k.sw_ay, 43.5f);
}

TEST_F(KartPhysics, JoystickSteersAndWorksThePedals) {
    config.joysticksteering = 1;
    joystick.x = 0;  // full left
    joystick.y = 0;  // full throttle
    drive(k);
    EXPECT_FLOAT_EQ(k.sw_ay, 15.0f);  // (45 - 0) * 20 / 60
    // The stick sets the pedal to 15 and the pull uses that; with no
    // throttle key the pedal then also returns by one frame's 3 degrees, and
    // the resistance takes its share (the snap leaves 0.09 alone).
    EXPECT_FLOAT_EQ(k.pedal_up, 12.0f);
    EXPECT_EQ(k.pedal_down, 0.0f);
    EXPECT_NEAR(k.ups, 20.0 / 45 * 15 / 60 - 1.25 / 60, 1e-5);
    joystick.x = 32000;
    joystick.y = 64000;  // full brake
    float ups = k.ups;
    drive(k);
    EXPECT_FLOAT_EQ(k.sw_ay, 15.0f + (0 - 15.0f) * 20 / 60);
    EXPECT_EQ(k.pedal_up, 0.0f);
    EXPECT_LT(k.ups, ups);
}

TEST_F(KartPhysics, TravelFollowsTheHeadingWithGrip) {
    k.may = 20;
    k.ups = 10 + 1.25f / 60;
    drive(k);
    EXPECT_NEAR(k.may, 20 - 20 * 5.0 / 60, 1e-4);
    EXPECT_NEAR(k.slidediff, 20.0f, 1e-4);
    EXPECT_NEAR(k.ups, 10.0f, 1e-4);
    // The kart moves along the travel direction, not along its nose.
    EXPECT_NEAR(k.px, -std::sin(k.may / 57.29577951) * 10 / 60, 1e-5);
    EXPECT_NEAR(k.pz, -std::cos(k.may / 57.29577951) * 10 / 60, 1e-5);
    EXPECT_LT(k.px, -0.05f);
    EXPECT_EQ(k.opx, 0.0f);
    EXPECT_EQ(k.opz, 0.0f);
    EXPECT_EQ(k.ocosay, 1.0f);
    EXPECT_EQ(k.osinay, 0.0f);
    EXPECT_NEAR(k.oaydiff, 20.0f, 1e-4);
}

TEST_F(KartPhysics, BigSlidesBrake) {
    k.may = 40;
    k.ups = 10 + 1.25f / 60;
    drive(k);
    EXPECT_NEAR(k.ups, 10 - 2 * 10.0 / 60, 1e-4);
    EXPECT_NEAR(k.slidediff, 40.0f, 1e-4);

    k.ay = 0;
    k.may = 47;
    k.ups = 10 + 1.25f / 60;
    drive(k);
    EXPECT_NEAR(k.ups, 10 - 5 * 10.0 / 60, 1e-4);

    k.ay = 0;
    k.may = 120;
    k.ups = 10 + 1.25f / 60;
    drive(k);
    EXPECT_EQ(k.slidediff, 50.0f);

    k.ay = 0;
    k.may = 30;
    k.ups = 10 + 1.25f / 60;
    drive(k);
    EXPECT_NEAR(k.ups, 10.0f, 1e-4);
}

TEST_F(KartPhysics, SlideTakesTheShortWayRound) {
    k.ay = 170;
    k.may = -170;  // 20 degrees away, across the wrap
    k.ups = 0;
    drive(k);
    EXPECT_NEAR(k.slidediff, 20.0f, 1e-3);
    EXPECT_NEAR(k.may, -170 - 20 * 5.0 / 60, 1e-3);
}

TEST_F(KartPhysics, AckermannWheels) {
    const double R = 360.0 / 45 / 6.283185307, t = 0.375, wb = 1.2;
    const double aL = 57.29577951 * std::atan(wb / (R - t)), aR = 57.29577951 * std::atan(wb / (R + t));
    k.sw_ay = 45;
    k.kLEFT = true;
    drive(k);  // at rest: the steer alone turns the wheels' spin
    EXPECT_NEAR(k.lfw_ay, aL, 1e-3);
    EXPECT_NEAR(k.rfw_ay, aR, 1e-3);
    EXPECT_GT(k.lfw_ay, k.rfw_ay);  // the inner wheel steers more
    EXPECT_NEAR(k.lfw_ax, -aL / 360 * 180, 1e-3);
    EXPECT_NEAR(k.rfw_ax, aR / 360 * 180, 1e-3);
    EXPECT_EQ(k.lrw_ax, 0.0f);

    // Rolling: each wheel spins by its own path round the turn; the right
    // front takes (R + t)(R - t), not (R + t) squared.
    float lf = k.lfw_ax, rf = k.rfw_ax;
    k.ups = 3 + 1.25f / 60;  // 3 per second after resistance
    drive(k);
    const double s = 3.0 / 60, W = 360 / 0.69115037 * s, C = 6.283185307 * R;
    const double CL = 6.283185307 * std::sqrt((R - t) * (R - t) + wb * wb);
    const double CR = 6.283185307 * std::sqrt((R + t) * (R - t) + wb * wb);
    const double CRsquare = 6.283185307 * std::sqrt((R + t) * (R + t) + wb * wb);
    EXPECT_NEAR(k.lfw_ax - lf, W * CL / C, 1e-3);
    EXPECT_NEAR(k.rfw_ax - rf, W * CR / C, 1e-3);
    EXPECT_GT(std::fabs(W * CRsquare / C - W * CR / C), 0.5);
    EXPECT_NEAR(k.lrw_ax, W * 6.283185307 * (R - t) / C, 1e-3);
    EXPECT_NEAR(k.rrw_ax, W * 6.283185307 * (R + t) / C, 1e-3);

    // Steering right the radius is negative and the subtraction turns the
    // spin forward again; the left wheel is now the outer one.
    k.init(0);
    k.px = k.pz = 0;
    k.sw_ay = -45;
    k.kRIGHT = true;
    drive(k);
    lf = k.lfw_ax;
    rf = k.rfw_ax;
    k.ups = 3 + 1.25f / 60;
    drive(k);
    const double Rr = -R;
    EXPECT_NEAR(k.lfw_ax - lf, W * 6.283185307 * std::sqrt((Rr - t) * (Rr - t) + wb * wb) / (6.283185307 * R),
                1e-3);
    EXPECT_NEAR(k.rfw_ax - rf, W * 6.283185307 * std::sqrt((Rr + t) * (Rr - t) + wb * wb) / (6.283185307 * R),
                1e-3);
    EXPECT_GT(k.lfw_ax - lf, k.rfw_ax - rf);
}

TEST_F(KartPhysics, StraightAheadTheWheelsRollAlike) {
    k.ups = 6 + 1.25f / 60;
    drive(k);
    // 0.1 units: 360 / 0.69115037 * 0.1 degrees of spin at a 9999-unit radius.
    const double W = 360 / 0.69115037 * 0.1;
    EXPECT_NEAR(k.lrw_ax, W * (9999 - 0.375) / 9999, 1e-3);
    EXPECT_NEAR(k.rrw_ax, W * (9999 + 0.375) / 9999, 1e-3);
    EXPECT_NEAR(k.lfw_ax, k.rfw_ax, 0.01);
}

TEST_F(KartPhysics, AnglesAreBroughtBackOncePerFrame) {
    k.lrw_ax = 179.9f;
    k.ups = 6 + 1.25f / 60;
    drive(k);
    EXPECT_LT(k.lrw_ax, -100.0f);
    // Far out of range: one correction only.
    k.ups = 0;
    k.rrw_ax = 900;
    drive(k);
    EXPECT_FLOAT_EQ(k.rrw_ax, 540.0f);
    k.rrw_ax = -900;
    drive(k);
    EXPECT_FLOAT_EQ(k.rrw_ax, -540.0f);
}

TEST_F(KartPhysics, HeadNodsWithAccelerationWithinFiveDegrees) {
    k.kUP = true;
    drive(k);
    EXPECT_EQ(k.head_axs, 0.0f);  // no speed gained yet
    drive(k);
    float gain = k.ups;  // from 0
    float axs = gain * 2000 / 60;
    axs -= axs * 20 / 60;
    EXPECT_NEAR(k.head_axs, axs, 1e-5);
    EXPECT_NEAR(k.head_ax, axs * 2.5f / 60, 1e-6);
    EXPECT_GT(k.head_ax, 0.0f);
    k.head_axs = 100000;
    drive(k);
    EXPECT_EQ(k.head_ax, 5.0f);
    k.head_axs = -100000;
    drive(k);
    EXPECT_EQ(k.head_ax, -5.0f);
}

TEST_F(KartPhysics, HeadSpringStepsInOrder) {
    k.head_ax = 1;
    k.head_axs = 2;
    k.ups = 0;
    drive(k);
    // No change of speed: damping, then the spring, then the step.
    float axs = 2 - 2 * 20.0f / 60;
    axs -= 1 * 20.0f / 60;
    EXPECT_NEAR(k.head_axs, axs, 1e-5);
    EXPECT_NEAR(k.head_ax, 1 + axs * 2.5f / 60, 1e-5);
}

// On the test circuit's start straight, against its right barrier.
using KartBarrier = BarrierTest;

TEST_F(KartBarrier, HeadOnMirrorsTheTravel) {
    k.px = 29.75f;
    k.pz = -5;
    k.ay = k.may = -30;  // nose towards +x, into the right barrier
    k.ups = 5;
    k.colide();
    bool hit = false;
    for (int i = 0; i < 8; i++) hit = hit || track.check(k.colx[i], k.colz[i], k.colx[(i + 1) % 8], k.colz[(i + 1) % 8]);
    ASSERT_TRUE(hit);
    k.move();
    EXPECT_FALSE(track.lasthitL);
    unsigned int i = track.lasthit, j = (i + 1) % track.nLRpoints;
    float nx = (track.RNpoint[i].x + track.RNpoint[j].x) / 2, nz = (track.RNpoint[i].z + track.RNpoint[j].z) / 2;
    ASSERT_NEAR(nx, -1.0f, 1e-3);
    ASSERT_NEAR(nz, 0.0f, 1e-2);
    // Wall angle 90 (along -x), d = -30 - 90 = -120: mirrored to 390, then
    // the grip pulls 60 of the 420 - 360 towards the heading: 385 = 25.
    EXPECT_NEAR(k.may, 25.0f, 0.1f);
    bool anyEdge = false;
    for (bool c : k.col) anyEdge = anyEdge || c;
    EXPECT_TRUE(anyEdge);
    // It travels back across the road.
    EXPECT_LT(k.px, 29.75f);
}

TEST_F(KartBarrier, ShallowTouchGoesAlongTheNormal) {
    k.px = 30.45f;
    k.pz = -5;
    k.ay = k.may = 60;  // pointing away from the barrier; the right rear corner touches it
    k.ups = 5;
    k.colide();
    ASSERT_GT(k.colx[4], 30.75f);
    ASSERT_LT(k.colx[0], 30.75f);
    k.move();
    EXPECT_FALSE(track.lasthitL);
    // d = 60 - 90 = -30: the travel becomes the wall normal, 90, and the
    // grip pulls 30 * 5 / 60 of it back towards the heading.
    EXPECT_NEAR(k.may, 87.5f, 0.1f);
}

TEST_F(KartBarrier, LeftBarrierToo) {
    k.px = 24.75f;
    k.pz = -5;
    k.ay = k.may = 30;  // nose towards -x, into the left barrier at x = 23.75
    k.ups = 5;
    k.colide();
    k.move();
    EXPECT_TRUE(track.lasthitL);
    // Wall angle 270 (along +x): d = 30 - 270 = -240 = 120, mirrored to
    // 270 - 120 + 180 = 330, and the grip pulls 300 = -60 of it: 335 = -25.
    EXPECT_NEAR(k.may, -25.0f, 0.1f);
}

TEST_F(KartBarrier, AHeadingRunAwayToBillionsStillBounces) {
    // Without the shortcut this bounce never ends: -3.6e12 + 360 is -3.6e12.
    k.px = 29.75f;
    k.pz = -5;
    k.ay = k.may = -30;  // into the right barrier, as head on
    k.ups = 5;
    k.colide();
    k.ay = -3.6e12f;
    bool hit = false;
    for (int i = 0; i < 8; i++) hit = hit || track.check(k.colx[i], k.colz[i], k.colx[(i + 1) % 8], k.colz[(i + 1) % 8]);
    ASSERT_TRUE(hit);
    k.move();
    EXPECT_TRUE(std::isfinite(k.may));
}

TEST_F(KartBarrier, OpenRoadHitsNothing) {
    k.px = 27.25f;
    k.pz = -5;
    k.ay = k.may = 0;
    k.ups = 5;
    k.colide();
    k.move();
    for (bool c : k.col) EXPECT_FALSE(c);
    EXPECT_NEAR(k.may, 0.0f, 1e-6);
}

// Karts touching karts: the eight-point outline, the x-only crossing test,
// which edge is flagged, and how move() reacts.

#include <gtest/gtest.h>

#include <cmath>

#include "kart_fixtures.h"

using namespace kartfix;

namespace {

class KartCollide : public KartTest {
protected:
    void SetUp() override {
        KartTest::SetUp();
        gokartstaticdata.init();
        for (unsigned char i = 0; i < GOKART_NKARTS; i++) gokart[i].init(i);
    }
    void place(unsigned int i, float x, float z, float ay) {
        gokart[i].px = x;
        gokart[i].pz = z;
        gokart[i].ay = gokart[i].may = ay;
    }
};

// Proper crossing of two segments, for comparison.
bool crosses(float ax, float az, float bx, float bz, float cx, float cz, float dx, float dz) {
    auto side = [](float px, float pz, float qx, float qz, float rx, float rz) {
        return (qx - px) * (rz - pz) - (qz - pz) * (rx - px);
    };
    float d1 = side(cx, cz, dx, dz, ax, az), d2 = side(cx, cz, dx, dz, bx, bz);
    float d3 = side(ax, az, bx, bz, cx, cz), d4 = side(ax, az, bx, bz, dx, dz);
    return ((d1 > 0) != (d2 > 0)) && ((d3 > 0) != (d4 > 0));
}

int firstTouchingEdge(const sGokart& a, const sGokart& b) {
    for (int i = 0; i < 8; i++)
        for (int j = 0; j < 8; j++)
            if (crosses(a.colx[i], a.colz[i], a.colx[(i + 1) % 8], a.colz[(i + 1) % 8], b.colx[j], b.colz[j],
                        b.colx[(j + 1) % 8], b.colz[(j + 1) % 8]))
                return i;
    return -1;
}

}  // namespace

TEST_F(KartCollide, OutlineFollowsPositionAndHeading) {
    place(0, 2, 3, 0);
    gokart[0].colide();
    const float F = 1.364f, W = 1.24f;
    EXPECT_FLOAT_EQ(gokart[0].colx[0], 2 - (W - 0.25f) / 2);
    EXPECT_FLOAT_EQ(gokart[0].colz[0], 3 - (F + 0.03f));
    EXPECT_FLOAT_EQ(gokart[0].colx[1], 2 + (W - 0.25f) / 2);
    EXPECT_FLOAT_EQ(gokart[0].colx[3], 2 + (W + 0.025f) / 2);
    EXPECT_FLOAT_EQ(gokart[0].colz[3], 3 - F / 2);
    EXPECT_FLOAT_EQ(gokart[0].colz[4], 3 + 0.17f);
    EXPECT_FLOAT_EQ(gokart[0].colx[5], 2 - (W + 0.025f) / 2);
    EXPECT_FLOAT_EQ(gokart[0].colz[7], 3 - (F - 0.1f));
    // A quarter turn left: the nose points to -x and the right side to -z.
    place(0, 0, 0, 90);
    gokart[0].colide();
    EXPECT_NEAR(gokart[0].colx[0], -(F + 0.03f), 1e-5);
    EXPECT_NEAR(gokart[0].colz[0], (W - 0.25f) / 2, 1e-5);
    EXPECT_NEAR(gokart[0].colz[3], -(W + 0.025f) / 2, 1e-5);
    EXPECT_NEAR(gokart[0].colx[4], 0.17f, 1e-5);
}

TEST_F(KartCollide, SideBySideFlagsTheFirstEdgeOfEach) {
    config.ngokarts = 2;
    place(0, 0, 0, 10);
    place(1, 1.0f, 0.3f, 10);
    gokart[0].colide();
    gokart[1].colide();
    gokart[0].colide();  // now against kart 1's current outline
    int expected0 = firstTouchingEdge(gokart[0], gokart[1]);
    int expected1 = firstTouchingEdge(gokart[1], gokart[0]);
    ASSERT_GE(expected0, 1);  // kart 0's right side...
    ASSERT_LE(expected0, 3);
    ASSERT_GE(expected1, 0);  // ...and kart 1 against kart 0
    for (int i = 0; i < 8; i++) {
        EXPECT_EQ(gokart[0].col[i], i == expected0) << i;
        EXPECT_EQ(gokart[1].col[i], i == expected1) << i;
    }
    EXPECT_EQ(gokart[0].colg, 1);
    EXPECT_EQ(gokart[1].colg, 0);
}

TEST_F(KartCollide, NoTouchLeavesOwnID) {
    config.ngokarts = 2;
    place(0, 0, 0, 10);
    place(1, 3, 0, 10);
    gokart[1].colide();
    gokart[0].colide();
    for (bool c : gokart[0].col) EXPECT_FALSE(c);
    EXPECT_EQ(gokart[0].colg, 0);
}

TEST_F(KartCollide, AKartAloneNeverCollides) {
    config.ngokarts = 2;
    place(0, 0, 0, 10);
    place(1, 0.5f, 0.2f, 10);
    gokart[1].colide();
    config.ngokarts = 1;
    gokart[0].colide();
    for (bool c : gokart[0].col) EXPECT_FALSE(c);
    EXPECT_EQ(gokart[0].colg, 0);
}

TEST_F(KartCollide, KartsOutsideTheRaceAreIgnored) {
    config.ngokarts = 3;
    place(0, 0, 0, 10);
    place(1, 10, 0, 10);
    place(2, 0.5f, 0.2f, 10);
    gokart[2].colide();
    gokart[1].colide();
    gokart[0].colide();
    ASSERT_EQ(gokart[0].colg, 2);
    config.ngokarts = 2;
    gokart[0].colide();
    for (bool c : gokart[0].col) EXPECT_FALSE(c);
    EXPECT_EQ(gokart[0].colg, 0);
}

TEST_F(KartCollide, ParallelEdgesNeverCollide) {
    config.ngokarts = 2;
    place(1, 5, 5, 0);
    gokart[1].colide();
    // The middle of kart 1's nose edge, exactly on it.
    float z = gokart[1].colz[0];
    EXPECT_EQ(gokart[0].colgokart(4.8f, z, 5.2f, z), 0);
    // Tilted the least bit, the same segment crosses it.
    EXPECT_EQ(gokart[0].colgokart(4.8f, z - 0.01f, 5.2f, z + 0.01f), 1);
}

TEST_F(KartCollide, OnlyXIsCompared) {
    config.ngokarts = 2;
    place(1, 5, 5, 30);
    gokart[1].colide();
    // A segment whose line would cross kart 1's nose far beyond its end:
    // outside the edge's x range, so no hit, although z is never compared.
    EXPECT_EQ(gokart[0].colgokart(0, 0, 1, 0.5f), 0);
    // Through the middle of the kart: a hit.
    EXPECT_EQ(gokart[0].colgokart(3, 4.3f, 7, 4.4f), 1);
}

TEST_F(KartCollide, TouchPushesAwayAndHalvesTheSpeed) {
    config.ngokarts = 2;
    place(0, 0, 0, 10);
    place(1, 1.0f, 0.3f, 10);
    gokart[0].ups = 10 + 1.25f / 60;
    gokart[1].colide();
    gokart[0].colide();
    ASSERT_EQ(gokart[0].colg, 1);
    gokart[0].move();
    // Straight away from kart 1: heading atan(1 / 0.3) = 73.3 (towards -x);
    // the slide of 63.3 then brakes by 5 per second and the grip pulls the
    // travel 63.3 * 5 / 60 back towards the heading.
    float travel = 57.29577951f * std::atan(1.0f / 0.3f);
    EXPECT_NEAR(gokart[0].ups, 5.0f - 5 * 5.0f / 60, 1e-3);
    EXPECT_NEAR(gokart[0].may, travel - (travel - gokart[0].ay) * 5 / 60, 0.05);
    EXPECT_LT(gokart[0].px, 0.0f);
    // Below a quarter unit per second the speed is left alone.
    place(0, 0, 0, 10);
    gokart[0].ups = 0.2f + 1.25f / 60;
    gokart[0].colide();
    gokart[0].move();
    EXPECT_NEAR(gokart[0].ups, 0.2f - 0.2f * 5 / 60, 1e-4);
}

TEST_F(KartCollide, NoReactionWhenCollisionsAreOff) {
    config.ngokarts = 2;
    place(0, 0, 0, 10);
    place(1, 1.0f, 0.3f, 10);
    gokart[0].ups = 10 + 1.25f / 60;
    gokart[0].checkcol = false;
    gokart[1].colide();
    gokart[0].colide();
    gokart[0].move();
    EXPECT_NEAR(gokart[0].ups, 10.0f, 1e-4);
    EXPECT_NEAR(gokart[0].may, 10.0f, 1e-4);
}

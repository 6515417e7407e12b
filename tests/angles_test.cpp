// The angle helpers against the forms they replaced, bit for bit.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include "shell/angles.h"

namespace {

uint32_t bits(float v) {
    uint32_t b;
    std::memcpy(&b, &v, sizeof b);
    return b;
}

// Keeps the compiler from folding the written-out forms at compile time,
// where it might round differently from the library at run time.
float opaque(float v) {
    volatile float x = v;
    return x;
}

// Values from all over the float line: small, large, the boundaries and
// their neighbours, and a spread of ordinary ones.
std::vector<float> samples() {
    std::vector<float> v = {0.0f, -0.0f, 1.0f, -1.0f, 180.0f, -180.0f, 360.0f, -360.0f, 539.0f, -539.0f,
                            90.0f, -90.0f, 1e-30f, -1e-30f, 1e30f, -1e30f,
                            std::numeric_limits<float>::denorm_min(), std::numeric_limits<float>::max(),
                            std::numeric_limits<float>::infinity(), -std::numeric_limits<float>::infinity()};
    for (float b : {180.0f, -180.0f, 0.0f, 360.0f, -360.0f}) {
        float up = b, down = b;
        for (int i = 0; i < 8; i++) {
            up = std::nextafter(up, 1e9f);
            down = std::nextafter(down, -1e9f);
            v.push_back(up);
            v.push_back(down);
        }
    }
    uint32_t state = 12345;
    for (int i = 0; i < 20000; i++) {
        state = state * 1664525u + 1013904223u;
        v.push_back(((float)(state >> 8) / 16777216.0f - 0.5f) * 1080.0f);
    }
    return v;
}

TEST(Angles, Wrap180IsTheOneCorrectionWrittenOut) {
    for (float a : samples()) {
        float x = opaque(a);
        float written = x;
        if (written >= 180)
            written -= 360;
        else if (written < -180)
            written += 360;
        ASSERT_EQ(bits(wrap180(x)), bits(written)) << a;
    }
}

TEST(Angles, Wrap180TakesHalfATurnForwardBackButLeavesItBackward) {
    EXPECT_EQ(wrap180(180.0f), -180.0f);
    EXPECT_EQ(wrap180(-180.0f), -180.0f);
    EXPECT_EQ(wrap180(std::nextafter(-180.0f, -1e9f)), std::nextafter(-180.0f, -1e9f) + 360);
    EXPECT_EQ(wrap180(std::nextafter(180.0f, 0.0f)), std::nextafter(180.0f, 0.0f));
    EXPECT_TRUE(std::isnan(wrap180(std::numeric_limits<float>::quiet_NaN())));
}

TEST(Angles, AtandegWithAFactorIsAtanfTimesTheFactor) {
    std::vector<float> v = samples();
    for (size_t i = 0; i + 1 < v.size(); i += 2) {
        float dx = opaque(v[i]), dz = opaque(v[i + 1]);
        float written = atanf(dx / dz) * DEG_PER_RAD_F;
        float helper = atandeg(dx, dz, DEG_PER_RAD_F);
        if (std::isnan(written)) {
            ASSERT_TRUE(std::isnan(helper)) << dx << " / " << dz;
            continue;
        }
        ASSERT_EQ(bits(helper), bits(written)) << dx << " / " << dz;
        float kart = atanf(dx / dz) * KART_DEG_PER_RAD;
        ASSERT_EQ(bits(atandeg(dx, dz, KART_DEG_PER_RAD)), bits(kart)) << dx << " / " << dz;
    }
}

TEST(Angles, AtandegWithoutAFactorIsTheDoublePath) {
    std::vector<float> v = samples();
    for (size_t i = 0; i + 1 < v.size(); i += 2) {
        float dx = opaque(v[i]), dz = opaque(v[i + 1]);
        float written = (float)(DEG_PER_RAD * atan((double)(dx / dz)));
        float helper = atandeg(dx, dz);
        if (std::isnan(written)) {
            ASSERT_TRUE(std::isnan(helper)) << dx << " / " << dz;
            continue;
        }
        ASSERT_EQ(bits(helper), bits(written)) << dx << " / " << dz;
    }
}

// The two paths are not one: somewhere they differ in the last place, which
// is why each caller keeps its own.
TEST(Angles, TheFloatAndDoublePathsDifferSomewhere) {
    std::vector<float> v = samples();
    int differ = 0;
    for (size_t i = 0; i + 1 < v.size(); i += 2) {
        float dx = opaque(v[i]), dz = opaque(v[i + 1]);
        if (std::isfinite(dx / dz) && bits(atandeg(dx, dz)) != bits(atandeg(dx, dz, DEG_PER_RAD_F))) differ++;
    }
    EXPECT_GT(differ, 0);
}

TEST(Angles, HeadingsAtTheBoundaries) {
    EXPECT_EQ(atandeg(0.0f, 1.0f, DEG_PER_RAD_F), 0.0f);
    EXPECT_EQ(atandeg(1.0f, 0.0f, DEG_PER_RAD_F), atanf(INFINITY) * DEG_PER_RAD_F);
    EXPECT_EQ(atandeg(-1.0f, 0.0f), (float)(DEG_PER_RAD * atan(-INFINITY)));
    EXPECT_NEAR(atandeg(1.0f, 1.0f), 45.0f, 1e-5f);
}

}  // namespace

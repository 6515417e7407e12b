// The speed dial: a blue dial with a needle whose lower half is green and
// whose upper half is see-through, so the green half shows where it points.

#include <gtest/gtest.h>

#include <GL/gl.h>

#include <cmath>
#include <filesystem>
#include <vector>

#include "assets/texture.h"
#include "kart/gokart.h"
#include "shell/blackbox.h"
#include "shell/bvconfig.h"
#include "support/bvtest_fixtures.h"

namespace {

// 500 pixels to the unit: the overlay is 1.33 units wide.
const int W = 665, H = 500;
const float CX = 1.23f * 500, CY = 0.1f * 500;

class HudTest : public ::testing::Test {
protected:
    void SetUp() override {
        std::filesystem::create_directories("Data/Textures");
        bvtest::writeSolidTGA("Data/Textures/Hud.tga", 64, 64, 0, 0, 255, 255);
        std::vector<unsigned char> needle;
        for (int y = 0; y < 64; y++)
            for (int x = 0; x < 64; x++) {
                bool lower = y < 32;  // the first rows are the bottom of the picture
                needle.insert(needle.end(), {0, (unsigned char)(lower ? 255 : 0), 0, (unsigned char)(lower ? 255 : 0)});
            }
        bvtest::writeTGA("Data/Textures/Needle.tga", 64, 64, 32, needle);
        blackbox.init("Data/blackbox.bvd", false);
        bvtest::openWindow(W, H);
        floadTextureTGA("Data/Textures/Hud.tga", &gokartstaticdata.hudTexture);
        floadTextureTGA("Data/Textures/Needle.tga", &gokartstaticdata.needleTexture);
        kart = sGokart();
    }

    bool greenAt(float angle) {
        float r = 0.06f * 500;
        bvtest::Pixel p = bvtest::readPixel((int)lroundf(CX + r * cosf(angle / 57.29578f)),
                                            (int)lroundf(CY + r * sinf(angle / 57.29578f)));
        EXPECT_TRUE(p.g > 128 || p.b > 128) << "neither needle nor dial at " << angle;
        return p.g > 128;
    }

    // The needle's green half is centred on `pointing` (degrees, counter-clockwise from +x).
    void expectNeedle(float pointing, float ups) {
        kart.ups = ups;
        glClearColor(0, 0, 0, 1);
        glClear(GL_COLOR_BUFFER_BIT);
        kart.drawhud();
        glFinish();
        for (float off : {0.0f, 45.0f, -45.0f, 78.0f, -78.0f})
            EXPECT_TRUE(greenAt(pointing + off)) << "ups " << ups << ", " << off << " from the needle";
        for (float off : {102.0f, -102.0f, 135.0f, -135.0f, 180.0f})
            EXPECT_FALSE(greenAt(pointing + off)) << "ups " << ups << ", " << off << " from the needle";
    }

    bvtest::ScratchDir dir;
    sGokart kart;
};

TEST_F(HudTest, AtRestTheNeedleIsUnturned) {
    expectNeedle(-90, 0);
}

TEST_F(HudTest, AtTwelveAndAHalfItIsTurned160DegreesClockwise) {
    expectNeedle(-90 - 160, 12.5f);
}

TEST_F(HudTest, ReverseSpeedTurnsItTheSameWay) {
    expectNeedle(-90 - 160, -12.5f);
}

TEST_F(HudTest, AboveTwentyFiveItPassesThe320DegreeMark) {
    expectNeedle(-90 - 384, 30);  // not held at 320
}

TEST_F(HudTest, TheDialSitsInTheLowerRightCorner) {
    glClearColor(0, 0, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    kart.drawhud();
    glFinish();
    const float h = 0.09049479f * 500;
    bvtest::Pixel inside = bvtest::readPixel((int)(CX + h - 3), (int)(CY + h - 3));
    EXPECT_GT(inside.b, 200);
    EXPECT_LT(inside.b, 240);  // slightly see-through: 0.9 of the dial's blue
    bvtest::Pixel outside = bvtest::readPixel((int)(CX + h + 3), (int)(CY + h + 3));
    EXPECT_EQ(outside.b, 0);
    outside = bvtest::readPixel((int)(CX - h - 3), (int)CY);
    EXPECT_EQ(outside.b, 0);
}

}  // namespace

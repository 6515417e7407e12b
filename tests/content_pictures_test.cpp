// The generated pictures as the game loads them, and as the generator wrote them.

#include <gtest/gtest.h>

#include <GL/gl.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <set>
#include <string>

#include "assets/texture.h"
#include "datagen/content.h"
#include "shell/blackbox.h"
#include "shell/bvconfig.h"
#include "support/bvtest_fixtures.h"
#include "support/decode.h"
#include "writers/tga.h"

namespace {

const std::string kGame = BV_GAME_DIR;

sTGAImage decodeBytes(const std::vector<unsigned char>& bytes) {
    sTGAImage image{};
    FILE* f = fmemopen((void*)bytes.data(), bytes.size(), "rb");
    EXPECT_NE(f, nullptr);
    EXPECT_EQ(decodeTGA(f, &image), TGA_OK);
    fclose(f);
    return image;
}

using bvtest::decodeFile;

// The decoder's pixels (bottom row first, RGB(A)) against the generator's (top row first, RGBA).
::testing::AssertionResult samePixels(const sTGAImage& img, const bvw::RGBA8Image& want, int bpp) {
    if ((int)img.width != want.width || (int)img.height != want.height || (int)img.bpp != bpp)
        return ::testing::AssertionFailure() << "size or depth differs";
    const int step = bpp / 8;
    for (int y = 0; y < want.height; y++)
        for (int x = 0; x < want.width; x++) {
            const unsigned char* got = img.data + ((size_t)(want.height - 1 - y) * want.width + x) * step;
            const unsigned char* exp = &want.pixels[((size_t)y * want.width + x) * 4];
            if (memcmp(got, exp, step) != 0)
                return ::testing::AssertionFailure() << "pixel (" << x << ", " << y << ") from the top differs";
        }
    return ::testing::AssertionSuccess();
}

bool powerOfTwo(unsigned int v) {
    return v && !(v & (v - 1));
}

TEST(ContentPictures, WriterRoundTripsThroughTheGamesDecoderInBothEncodingsAndDepths) {
    bvw::RGBA8Image img;
    // Rows that end inside a packet's reach; the pixel count is a multiple of
    // eight, as in every picture of ours (the game's decoder stops on that).
    img.width = 40;
    img.height = 11;
    img.pixels.resize(40 * 11 * 4);
    for (size_t i = 0; i < img.pixels.size(); i++) img.pixels[i] = (unsigned char)((i / 4) % 7 < 3 ? 200 : i * 13);
    for (int bpp : {24, 32})
        for (bool rle : {false, true}) {
            std::vector<unsigned char> bytes = bvw::encodeTGA(img, bpp, rle);
            EXPECT_EQ(bytes[2], rle ? 10 : 2);
            EXPECT_EQ(bytes[16], bpp);
            EXPECT_EQ(bytes[17] & 0x20, 0) << "bottom-left origin";
            sTGAImage got = decodeBytes(bytes);
            EXPECT_TRUE(samePixels(got, img, bpp)) << bpp << " bits, rle " << rle;
            free(got.data);
        }
}

TEST(ContentPictures, EveryFileDecodesToThePixelsTheGeneratorMade) {
    std::set<std::pair<int, bool>> kinds;
    for (const gen::Picture& p : gen::allPictures()) {
        std::string path = kGame + "/Data/" + p.path;
        std::string bytes = bvtest::readFile(path);
        ASSERT_GT(bytes.size(), 18u) << path;
        EXPECT_EQ((unsigned char)bytes[2], p.rle ? 10 : 2) << path;
        EXPECT_EQ((unsigned char)bytes[16], p.bpp) << path;
        sTGAImage img = decodeFile(path);
        EXPECT_TRUE(powerOfTwo(img.width) && powerOfTwo(img.height)) << path << " " << img.width << "x" << img.height;
        EXPECT_TRUE(samePixels(img, p.make(), p.bpp)) << path;
        free(img.data);
        kinds.insert({p.bpp, p.rle});
    }
    EXPECT_EQ(kinds.size(), 4u) << "raw and run-length pictures, of 24 and of 32 bits";
}

// Sizes and depths the game's drawing relies on; alpha where it blends or alpha-tests.
struct Expect {
    const char* path;
    unsigned int width, height, bpp;
};
const Expect kExpected[] = {
    {"Fonts/Arial.tga", 1024, 1024, 32},     {"GUI/t.tga", 1024, 1024, 24},
    {"GUI/0.tga", 32, 32, 32},               {"GUI/1.tga", 32, 32, 32},
    {"GUI/main.tga", 1024, 1024, 24},        {"GUI/about.tga", 1024, 1024, 24},
    {"GUI/credits.tga", 1024, 1024, 24},     {"GUI/records.tga", 1024, 1024, 24},
    {"GUI/aboutB.tga", 256, 64, 32},         {"GUI/creditsB.tga", 256, 64, 32},
    {"GUI/recordsB.tga", 256, 64, 32},       {"GUI/raceB.tga", 256, 64, 32},
    {"GUI/quitB.tga", 128, 64, 32},          {"GUI/backB.tga", 256, 64, 32},
    {"GUI/decB.tga", 32, 32, 32},            {"GUI/incB.tga", 32, 32, 32},
    {"Textures/Tdirt1.tga", 256, 256, 24},   {"Textures/Tdirt2.tga", 256, 256, 24},
    {"Textures/Tdirt3.tga", 256, 256, 24},   {"Textures/Tdirt4.tga", 256, 256, 24},
    {"Textures/Troad1.tga", 256, 256, 24},   {"Textures/Tgrass.tga", 256, 256, 32},
    {"Textures/Tfront.tga", 128, 128, 24},   {"Textures/Tback.tga", 128, 128, 24},
    {"Textures/Ttop.tga", 128, 128, 24},     {"Textures/Tfence.tga", 128, 128, 32},
    {"Textures/Nature1.tga", 256, 256, 32},  {"Textures/Nature2.tga", 256, 256, 32},
    {"Textures/Nature3.tga", 256, 256, 32},  {"Textures/Nature4.tga", 256, 256, 32},
    {"Textures/Nature5.tga", 256, 256, 32},  {"Textures/Pole.tga", 128, 128, 32},
    {"Textures/Finish.tga", 256, 128, 32},   {"Textures/Cshadowmap.tga", 128, 128, 32},
    {"Textures/Hud.tga", 256, 256, 32},      {"Textures/Needle.tga", 256, 256, 32},
    {"Textures/Shadowmap.tga", 64, 128, 32}, {"Textures/Fwshadowmap.tga", 32, 64, 32},
    {"Textures/Skid.tga", 64, 64, 32},       {"Textures/Dheadtv.tga", 128, 128, 24},
    {"Textures/Flare0.tga", 128, 128, 24},   {"Textures/Flare1.tga", 256, 256, 32},
    {"Textures/Sky.tga", 512, 256, 24},      {"Textures/Kartpaint.tga", 256, 256, 24},
};

TEST(ContentPictures, SizesDepthsAndAlphaAsTheGameUsesThem) {
    for (const Expect& e : kExpected) {
        sTGAImage img = decodeFile(kGame + "/Data/" + e.path);
        ASSERT_NE(img.data, nullptr) << e.path;
        EXPECT_EQ(img.width, e.width) << e.path;
        EXPECT_EQ(img.height, e.height) << e.path;
        EXPECT_EQ(img.bpp, e.bpp) << e.path;
        if (img.bpp == 32) {
            unsigned int solid = 0;
            for (size_t i = 3; i < img.size; i += 4) {
                solid += img.data[i] == 255;
            }
            // Finish is an opaque banner kept in 32 bits; every other picture's alpha is used.
            if (std::string(e.path) != "Textures/Finish.tga") {
                EXPECT_LT(solid, img.width * img.height) << e.path << " has transparency";
            }
        }
        free(img.data);
    }
}

TEST(ContentPictures, PlantsAreEitherSolidOrClearForTheAlphaTest) {
    for (int i = 1; i <= 5; i++) {
        std::string path = kGame + "/Data/Textures/Nature" + std::to_string(i) + ".tga";
        sTGAImage img = decodeFile(path);
        ASSERT_NE(img.data, nullptr);
        unsigned int solid = 0, other = 0;
        for (size_t k = 3; k < img.size; k += 4) {
            solid += img.data[k] == 255;
            other += img.data[k] != 0 && img.data[k] != 255;
        }
        EXPECT_EQ(other, 0u) << path;
        EXPECT_GT(solid, img.width * img.height / 10) << path << " has a plant on it";
        EXPECT_EQ(img.data[3], 0) << path << ": the bottom-left corner is clear ground";
        free(img.data);
    }
}

TEST(ContentPictures, TheLoadingBarsPlaceOnTheSplashIsClear) {
    sTGAImage img = decodeFile(kGame + "/Data/GUI/t.tga");
    ASSERT_NE(img.data, nullptr);
    // The segments span x 0.414..0.563 and y 0.145..0.160 (from the bottom):
    // the picture there is one calm dark slot, not busy art.
    unsigned int x0 = (unsigned int)(0.42 * img.width), x1 = (unsigned int)(0.56 * img.width);
    unsigned int y0 = (unsigned int)(0.145 * img.height), y1 = (unsigned int)(0.16 * img.height);
    int lo = 255, hi = 0;
    for (unsigned int y = y0; y <= y1; y++)
        for (unsigned int x = x0; x <= x1; x++) {
            const unsigned char* p = img.data + ((size_t)y * img.width + x) * 3;
            int v = std::max(p[0], std::max(p[1], p[2]));
            lo = std::min(lo, v);
            hi = std::max(hi, v);
        }
    EXPECT_LT(hi, 80) << "dark";
    EXPECT_LT(hi - lo, 40) << "even";
    free(img.data);
}

TEST(ContentPictures, TheAboutKeyCapsStandClearOfTheTextLines) {
    sTGAImage img = decodeFile(kGame + "/Data/GUI/about.tga");
    ASSERT_NE(img.data, nullptr);
    // The game writes its widest line, "Mouse left/right or", across x
    // 0.39..0.61 around y 0.34 (from the bottom), and the heading and key
    // names above it inside the same span: the picture holds no light key cap there.
    int light = 0;
    for (float line : {0.57f, 0.54f, 0.47f, 0.44f, 0.37f, 0.34f, 0.31f}) {
        unsigned int y0 = (unsigned int)((line - 0.012f) * img.height), y1 = (unsigned int)((line + 0.012f) * img.height);
        for (unsigned int y = y0; y <= y1; y++)
            for (unsigned int x = (unsigned int)(0.39 * img.width); x <= (unsigned int)(0.61 * img.width); x++) {
                const unsigned char* p = img.data + ((size_t)y * img.width + x) * 3;
                if (std::min(p[0], std::min(p[1], p[2])) > 150) light++;
            }
    }
    EXPECT_EQ(light, 0);
    free(img.data);
}

TEST(ContentPictures, TheDialsScaleStartsWhereTheNeedleRests) {
    // The needle turns clockwise from its rest; the dial's zero tick must sit there.
    sTGAImage needle = decodeFile(kGame + "/Data/Textures/Needle.tga");
    ASSERT_NE(needle.data, nullptr);
    double sx = 0, sy = 0, n = 0;
    for (unsigned int y = 0; y < needle.height; y++)
        for (unsigned int x = 0; x < needle.width; x++) {
            double dx = x + 0.5 - needle.width / 2.0, dy = y + 0.5 - needle.height / 2.0;
            if (std::hypot(dx, dy) < 40) continue;  // the hub
            unsigned char a = needle.data[((size_t)y * needle.width + x) * 4 + 3];
            sx += dx * a, sy += dy * a, n += a;
        }
    ASSERT_GT(n, 0);
    // Screen angle clockwise from twelve o'clock (rows run upward in the decoded data).
    double rest = std::atan2(sx, sy) * 180 / M_PI;
    if (rest < 0) rest += 360;
    EXPECT_NEAR(rest, 200, 3);
    free(needle.data);
}

class ContentTextures : public ::testing::Test {
protected:
    void SetUp() override {
        log = scratch.path() + "/log.txt";
        blackbox.init(log.c_str(), false);
        bvtest::openWindow(320, 240);
        snprintf(config.PATH, sizeof config.PATH, "%s/", BV_GAME_DIR);
    }
    bvtest::ScratchDir scratch;
    std::string log;
};

TEST_F(ContentTextures, EveryPictureLoadsThroughTheGamesLoader) {
    std::vector<std::string> paths;
    for (const gen::Picture& p : gen::allPictures()) paths.push_back("Data/" + p.path);
    for (const std::string& path : paths) {
        unsigned int tex = 0;
        EXPECT_EQ(floadTextureTGA(path.c_str(), &tex), 1) << path;
        EXPECT_NE(tex, 0u) << path;
        GLint w = 0;
        glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &w);
        EXPECT_GT(w, 0) << path;
        freeTexture(&tex);
    }
    blackbox.free();
    std::string text = bvtest::readFile(log);
    for (const std::string& path : paths)
        EXPECT_NE(text.find("Loading texture f : " + path + " [OK]"), std::string::npos) << path;
}

}  // namespace

// Bitmap text from the X font and blended text from the glyph picture.

#include <gtest/gtest.h>

#include <GL/gl.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "assets/font.h"
#include "shell/blackbox.h"
#include "shell/bvconfig.h"
#include "support/bvtest_fixtures.h"

using namespace bvtest;

namespace {

class FontTest : public ::testing::Test {
protected:
    void SetUp() override {
        blackbox.init("Data/blackbox.bvd", false);
        openWindow(400, 400);
        glClearColor(0, 0, 0, 1);
        glClear(GL_COLOR_BUFFER_BIT);
    }
    std::vector<unsigned char> frame() {
        std::vector<unsigned char> p(400 * 400 * 3);
        glPixelStorei(GL_PACK_ALIGNMENT, 1);
        glReadPixels(0, 0, 400, 400, GL_RGB, GL_UNSIGNED_BYTE, p.data());
        return p;
    }
    static bool blank(const std::vector<unsigned char>& p) {
        for (unsigned char c : p)
            if (c) return false;
        return true;
    }
    ScratchDir dir;
};

// The glyph quads fontTGA draws, in window pixels, with their texture
// coordinates. Feedback reports every quad as its two triangles.
struct Quad {
    float minx = 1e9f, maxx = -1e9f, miny = 1e9f, maxy = -1e9f;
    float smin = 1e9f, smax = -1e9f, tmin = 1e9f, tmax = -1e9f;
    float cx() const { return (minx + maxx) / 2; }
};

std::vector<Quad> feedback(void (*draw)()) {
    std::vector<GLfloat> buffer(200000);
    glFeedbackBuffer((GLsizei)buffer.size(), GL_3D_COLOR_TEXTURE, buffer.data());
    glRenderMode(GL_FEEDBACK);
    draw();
    int n = glRenderMode(GL_RENDER);
    std::vector<Quad> quads;
    int triangles = 0;
    // Each vertex: x, y, z, r, g, b, a, s, t, r, q.
    for (int i = 0; i < n;) {
        if (buffer[i++] != GL_POLYGON_TOKEN) break;
        int count = (int)buffer[i++];
        if (triangles++ % 2 == 0) quads.emplace_back();
        Quad& q = quads.back();
        for (int v = 0; v < count; v++, i += 11) {
            q.minx = std::min(q.minx, buffer[i]);
            q.maxx = std::max(q.maxx, buffer[i]);
            q.miny = std::min(q.miny, buffer[i + 1]);
            q.maxy = std::max(q.maxy, buffer[i + 1]);
            q.smin = std::min(q.smin, buffer[i + 7]);
            q.smax = std::max(q.smax, buffer[i + 7]);
            q.tmin = std::min(q.tmin, buffer[i + 8]);
            q.tmax = std::max(q.tmax, buffer[i + 8]);
        }
    }
    return quads;
}

TEST_F(FontTest, GoGlyphCentresAfterCentring) {
    fontTGA.spacing = 0.75f;
    fontTGA.tga = 0;
    glDisable(GL_CULL_FACE);
    std::vector<Quad> q = feedback([] { fontTGA.out(0.5f, 0.5f, 1, 0, 0, FONT_ALIGN_CENTER, 0.05f, "GO!"); });
    ASSERT_EQ(q.size(), 3u);
    for (int k = 1; k <= 3; k++) {
        float expected = (0.5f - 0.05625f + 0.0375f * k) * 400;
        EXPECT_NEAR(q[k - 1].cx(), expected, 0.01f) << k;
    }
    // Half-width size/1.2, half-height size.
    EXPECT_NEAR(q[0].minx, (0.5f - 0.05625f + 0.0375f - 0.05f / 1.2f) * 400, 0.01f);
    EXPECT_NEAR(q[0].maxx, (0.5f - 0.05625f + 0.0375f + 0.05f / 1.2f) * 400, 0.01f);
    EXPECT_NEAR(q[0].maxy, 0.55f * 400, 0.01f);
    EXPECT_NEAR(q[0].miny, 0.45f * 400, 0.01f);
    // 'G' is 71: column 7, row 4 from the top.
    EXPECT_FLOAT_EQ(q[0].smin, 7 * 0.0625f);
    EXPECT_FLOAT_EQ(q[0].smax, 8 * 0.0625f);
    EXPECT_FLOAT_EQ(q[0].tmax, 1 - 4 * 0.0625f);
    EXPECT_FLOAT_EQ(q[0].tmin, 1 - 5 * 0.0625f);
}

TEST_F(FontTest, LeftAndRightAlignmentOfTheGlyphFont) {
    fontTGA.spacing = 0.75f;
    std::vector<Quad> left = feedback([] { fontTGA.out(0.2f, 0.5f, 1, 1, 1, FONT_ALIGN_LEFT, 0.1f, "ab"); });
    std::vector<Quad> right = feedback([] { fontTGA.out(0.2f, 0.5f, 1, 1, 1, FONT_ALIGN_RIGHT, 0.1f, "ab"); });
    ASSERT_EQ(left.size(), 2u);
    ASSERT_EQ(right.size(), 2u);
    EXPECT_NEAR(left[0].cx(), (0.2f + 0.075f) * 400, 0.01f);  // one advance right of x
    EXPECT_NEAR(right[0].cx(), (0.2f - 2 * 0.075f + 0.075f) * 400, 0.01f);
}

TEST_F(FontTest, HighCharacterCodesPickCellsOutsideTheGrid) {
    fontTGA.spacing = 0.75f;
    std::vector<Quad> q = feedback([] { fontTGA.out(0.5f, 0.5f, 1, 1, 1, FONT_ALIGN_LEFT, 0.1f, "\xC8"); });
    ASSERT_EQ(q.size(), 1u);
    // 200 as a signed byte is -56: column -8, row -3.
    EXPECT_FLOAT_EQ(q[0].smin, -8 * 0.0625f);
    EXPECT_FLOAT_EQ(q[0].tmax, 1 + 3 * 0.0625f);
}

TEST_F(FontTest, EmptyTextDrawsNothingWithEitherFont) {
    fontFNT.init("Courier", 8);
    fontTGA.spacing = 0.75f;
    fontTGA.out(0.5f, 0.5f, 1, 1, 1, FONT_ALIGN_CENTER, 0.2f, "%s", "");
    fontFNT.out(10, 10, 1, 1, 1, FONT_ALIGN_LEFT, "%s", "");
    fontFNT.out(10, 10, 1, 1, 1, FONT_ALIGN_LEFT, nullptr);
    EXPECT_TRUE(blank(frame()));
}

TEST_F(FontTest, BitmapTextIsDrawnAtItsRasterPosition) {
    fontFNT.init("Courier", 8);
    fontFNT.out(100, 200, 1, 1, 1, FONT_ALIGN_LEFT, "%s", "WWW");
    std::vector<unsigned char> p = frame();
    int minx = 400, miny = 400, maxx = -1;
    for (int y = 0; y < 400; y++)
        for (int x = 0; x < 400; x++)
            if (p[3 * (y * 400 + x)]) {
                minx = std::min(minx, x);
                maxx = std::max(maxx, x);
                miny = std::min(miny, y);
            }
    EXPECT_GE(minx, 100);
    EXPECT_LE(minx, 102);
    EXPECT_GE(miny, 197);  // descent below the baseline is small
    EXPECT_LE(miny, 201);
    EXPECT_GT(maxx, 112);  // three characters wide
}

TEST_F(FontTest, BitmapRightAlignmentDrawsExactlyWhereLeftDoes) {
    fontFNT.init("Courier", 8);
    EXPECT_EQ(fontFNT.size, 0u);
    fontFNT.out(50, 50, 1, 1, 1, FONT_ALIGN_LEFT, "score %d", 42);
    std::vector<unsigned char> left = frame();
    glClear(GL_COLOR_BUFFER_BIT);
    fontFNT.out(50, 50, 1, 1, 1, FONT_ALIGN_RIGHT, "score %d", 42);
    std::vector<unsigned char> right = frame();
    EXPECT_FALSE(blank(left));
    EXPECT_EQ(left, right);
    glClear(GL_COLOR_BUFFER_BIT);
    fontFNT.out(50, 50, 1, 1, 1, FONT_ALIGN_CENTER, "score %d", 42);
    EXPECT_EQ(frame(), left);
}

TEST_F(FontTest, OverlongTextIsCutNotOverrun) {
    fontFNT.init("Courier", 8);
    fontTGA.spacing = 0.75f;
    std::string text(1000, 'x');
    fontFNT.out(0, 0, 1, 1, 1, FONT_ALIGN_LEFT, "%s", text.c_str());
    std::vector<Quad> q = feedback([] {
        std::string t(1000, 'y');
        fontTGA.out(0.1f, 0.5f, 1, 1, 1, FONT_ALIGN_LEFT, 0.003f, "%s", t.c_str());
    });
    EXPECT_EQ(q.size(), 255u);
}

TEST_F(FontTest, GlyphPictureComesFromTheFontsFolder) {
    std::filesystem::create_directories("Data/Fonts");
    writeSolidTGA("Data/Fonts/Test.tga", 16, 16, 255, 255, 255, 255);
    fontTGA.init("Test", 0.5f);
    EXPECT_FLOAT_EQ(fontTGA.spacing, 0.5f);
    EXPECT_NE(fontTGA.tga, 0u);
    EXPECT_NE(readFile("Data/blackbox.bvd").find("Loading texture f : Data/Fonts/Test.tga [OK]\n"),
              std::string::npos);
    fontTGA.out(0.5f, 0.5f, 0, 1, 0, FONT_ALIGN_CENTER, 0.1f, "I");
    Pixel p = readPixel(200, 200);
    EXPECT_EQ(p.g, 255);
    EXPECT_EQ(p.r, 0);
}

}  // namespace

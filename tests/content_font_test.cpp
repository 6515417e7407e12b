// The generated texture font: its cells, and how the game's own text drawing
// puts the menu's and the race's texts onto the generated menu picture.

#include <gtest/gtest.h>

#include <GL/gl.h>
#include <SDL/SDL.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "assets/font.h"
#include "assets/texture.h"
#include "datagen/content.h"
#include "shell/blackbox.h"
#include "shell/bvconfig.h"
#include "shell/main.h"
#include "support/bvtest_fixtures.h"
#include "support/decode.h"
#include "writers/tga.h"

namespace {

const std::string kData = std::string(BV_GAME_DIR) + "/Data/";

using bvtest::decodeFile;

// Alpha of the atlas at column x and row y counted from the top of the picture.
unsigned char alphaAt(const sTGAImage& img, unsigned int x, unsigned int y) {
    unsigned int row = img.height - 1 - y;  // the file's first row is the bottom
    return img.data[((size_t)row * img.width + x) * 4 + 3];
}

TEST(ContentFont, IsA16By16GridOfWhiteGlyphsWithCoverageInAlpha) {
    sTGAImage img = decodeFile(kData + "Fonts/Arial.tga");
    ASSERT_NE(img.data, nullptr);
    EXPECT_EQ(img.width, 16u * gen::kFontCell);
    EXPECT_EQ(img.height, 16u * gen::kFontCell);
    EXPECT_EQ(img.bpp, 32u);
    bool partial = false;
    for (size_t i = 0; i < (size_t)img.width * img.height; i++) {
        const unsigned char* p = img.data + i * 4;
        ASSERT_EQ(p[0] + p[1] + p[2], 3 * 255) << "every pixel is white; the shape is all in alpha";
        if (p[3] > 0 && p[3] < 255) partial = true;
    }
    EXPECT_TRUE(partial) << "edges are anti-aliased";
    free(img.data);
}

TEST(ContentFont, EveryPrintableGlyphLiesInsideItsCell) {
    sTGAImage img = decodeFile(kData + "Fonts/Arial.tga");
    ASSERT_NE(img.data, nullptr);
    const unsigned int cell = img.width / 16;
    for (int c = 0; c < 256; c++) {
        unsigned int cx = (c % 16) * cell, cy = (c / 16) * cell;
        unsigned int ink = 0, border = 0;
        for (unsigned int y = 0; y < cell; y++)
            for (unsigned int x = 0; x < cell; x++) {
                unsigned char a = alphaAt(img, cx + x, cy + y);
                if (!a) continue;
                ink++;
                // Two pixels all round stay empty, so that neither the quad's
                // edge nor the smaller mipmaps pick up a neighbour's ink.
                if (x < 2 || y < 2 || x >= cell - 2 || y >= cell - 2) border++;
            }
        if (c > 32 && c < 127)
            EXPECT_GT(ink, 20u) << "glyph " << c << " '" << (char)c << "' is drawn";
        else
            EXPECT_EQ(ink, 0u) << "cell " << c << " holds no printable character and stays empty";
        EXPECT_EQ(border, 0u) << "glyph " << c << " '" << (char)c << "' touches its cell's edge";
    }
    free(img.data);
}

TEST(ContentFont, GlyphsShareOneBaselineAndFitThePenAdvance) {
    sTGAImage img = decodeFile(kData + "Fonts/Arial.tga");
    ASSERT_NE(img.data, nullptr);
    const unsigned int cell = img.width / 16;
    auto box = [&](int c, unsigned int& x0, unsigned int& x1, unsigned int& y1) {
        unsigned int cx = (c % 16) * cell, cy = (c / 16) * cell;
        x0 = cell, x1 = 0, y1 = 0;
        for (unsigned int y = 0; y < cell; y++)
            for (unsigned int x = 0; x < cell; x++)
                if (alphaAt(img, cx + x, cy + y) > 64) {
                    x0 = std::min(x0, x);
                    x1 = std::max(x1, x + 1);
                    y1 = std::max(y1, y + 1);
                }
    };
    unsigned int x0, x1, base;
    box('H', x0, x1, base);
    for (int c : {'A', 'E', 'Z', 'a', 'm', 'x', '1', '4'}) {
        unsigned int bottom;
        box(c, x0, x1, bottom);
        EXPECT_NEAR((int)bottom, (int)base, 1) << "'" << (char)c << "' stands on the baseline";
    }
    // The pen moves 0.75 * size while a cell is 2 * size / 1.2 wide: 0.45 of a cell.
    for (int c = 33; c < 127; c++) {
        box(c, x0, x1, base);
        EXPECT_LE(x1 - x0, (unsigned int)(0.45 * cell)) << "'" << (char)c << "' is no wider than the pen's step";
        EXPECT_NEAR((x0 + x1) / 2.0, cell / 2.0, 1.5) << "'" << (char)c << "' is centred in its cell";
    }
    free(img.data);
}

// ---- drawn by the game ----

struct Screen {
    std::vector<unsigned char> rgb;
    int at(int x, int y, int k) const { return rgb[((size_t)y * 1024 + x) * 3 + k]; }
};

Screen grab() {
    Screen s;
    s.rgb.resize(1024 * 768 * 3);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, 1024, 768, GL_RGB, GL_UNSIGNED_BYTE, s.rgb.data());
    return s;
}

void texturedQuad(unsigned int tex, float x0, float y0, float x1, float y1, float brightness = 1) {
    glEnable(GL_TEXTURE_2D);
    glBindTexture(GL_TEXTURE_2D, tex);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glColor4f(brightness, brightness, brightness, 1);
    glBegin(GL_QUADS);
    glTexCoord2f(0, 0); glVertex2f(x0, y0);
    glTexCoord2f(1, 0); glVertex2f(x1, y0);
    glTexCoord2f(1, 1); glVertex2f(x1, y1);
    glTexCoord2f(0, 1); glVertex2f(x0, y1);
    glEnd();
    glDisable(GL_BLEND);
    glDisable(GL_TEXTURE_2D);
}

class ContentText : public ::testing::Test {
protected:
    void SetUp() override {
        bvtest::openWindow(1024, 768);
        snprintf(config.PATH, sizeof config.PATH, "%s/", BV_GAME_DIR);
        config.texturefilter = 2;
        fontTGA.init("Arial", 0.75f);
        ASSERT_NE(fontTGA.tga, 0u);
        floadTextureTGA("Data/GUI/main.tga", &background);
        ASSERT_NE(background, 0u);
    }
    void drawBackground() {
        glClearColor(0, 0, 0, 1);
        glClear(GL_COLOR_BUFFER_BIT);
        resizeGLwindow2D(1, 1);
        texturedQuad(background, 0, 0, 1, 1);
    }
    unsigned int background = 0;
};

// Each text of the race-setup screen, where the menu writes it, and the frame
// of the picture it has to land in (layout pixels, y from the top).
struct MenuText {
    float x, y, size;
    unsigned int align;
    const char* text;
    float left, top, right, bottom;
};
const MenuText kMenuTexts[] = {
    {0.6175f, 0.722f, 0.025f, FONT_ALIGN_LEFT, "MMMMMMMMMMMM_", 627, 198, 909, 229},  // longest name and cursor
    {0.77f, 0.659f, 0.025f, FONT_ALIGN_CENTER, "medium", 720, 248, 882, 278},
    {0.75f, 0.595f, 0.025f, FONT_ALIGN_CENTER, "5", 752, 298, 812, 328},
    {0.5925f, 0.280292f, 0.02f, FONT_ALIGN_CENTER, "turquoise", 541, 539, 690, 566},
    {0.8175f, 0.280292f, 0.02f, FONT_ALIGN_CENTER, "brontevall", 769, 539, 918, 566},
    {0.0975f, 0.84f, 0.01f, FONT_ALIGN_CENTER, "v1.02b3", 66, 115, 134, 131},
};

TEST_F(ContentText, MenuTextsLandInsideTheFramesOfTheMenuPicture) {
    drawBackground();
    Screen plain = grab();
    for (const MenuText& t : kMenuTexts) {
        drawBackground();
        fontTGA.out(t.x, t.y, 1, 1, 1, t.align, t.size, "%s", t.text);
        Screen with = grab();
        int changed = 0, outside = 0;
        for (int y = 0; y < 768; y++)
            for (int x = 0; x < 1024; x++) {
                int d = 0;
                for (int k = 0; k < 3; k++) d = std::max(d, std::abs(with.at(x, y, k) - plain.at(x, y, k)));
                if (d < 48) continue;
                changed++;
                float top = 767 - y;  // layout rows count from the top
                if (x < t.left || x > t.right || top < t.top || top > t.bottom) outside++;
            }
        EXPECT_GT(changed, 20) << t.text << " is visible";
        EXPECT_EQ(outside, 0) << t.text << " stays inside its frame";
    }
}

// The whole screen as the menu will draw it, plus the race texts, saved into
// the build tree for a look: build/content-check/text.tga.
TEST_F(ContentText, PreviewOfTheMenuAndRaceTexts) {
    // Loaded first: every load redraws the loading screen.
    unsigned int buttons[8] = {};
    const char* names[] = {"aboutB", "creditsB", "recordsB", "raceB", "quitB", "decB", "incB", "backB"};
    texture_wrap = false;
    for (int i = 0; i < 8; i++) floadTextureTGA((std::string("Data/GUI/") + names[i] + ".tga").c_str(), &buttons[i]);
    texture_wrap = true;
    drawBackground();
    struct B {
        int tex;
        float x, y, w, h;
    } placed[] = {{0, 0.14f, 0.72f, 158, 49},        {1, 0.161f, 0.622f, 200, 49},      {2, 0.175f, 0.535f, 229, 36},
                  {3, 0.8675f, 0.12f, 161, 41},      {4, 0.115f, 0.109f, 111, 47},      {5, 0.515f, 0.280292f, 20, 26},
                  {6, 0.688f, 0.280292f, 20, 26},    {5, 0.737f, 0.280292f, 20, 26},    {6, 0.9105f, 0.280292f, 20, 26},
                  {5, 0.69f, 0.6565f, 20, 26},       {6, 0.875f, 0.6565f, 20, 26},      {5, 0.7225f, 0.5925f, 20, 26},
                  {6, 0.8025f, 0.5925f, 20, 26}};
    resizeGLwindow2D(1, 1);
    for (const B& b : placed) {
        float w = b.w / 1024, h = b.h / 768;
        texturedQuad(buttons[b.tex], b.x - w / 2, b.y - h / 2, b.x + w / 2, b.y + h / 2, b.tex == 1 ? 1.0f : 0.75f);
    }
    fontTGA.out(0.6175f, 0.722f, 1, 1, 1, FONT_ALIGN_LEFT, 0.025f, "%s_", "ANNA-LENA");
    fontTGA.out(0.77f, 0.659f, 1, 1, 1, FONT_ALIGN_CENTER, 0.025f, "%s", "medium");
    fontTGA.out(0.75f, 0.595f, 1, 1, 1, FONT_ALIGN_CENTER, 0.025f, "%d", 5);
    fontTGA.out(0.5925f, 0.280292f, 1, 1, 1, FONT_ALIGN_CENTER, 0.02f, "%s", "turquoise");
    fontTGA.out(0.8175f, 0.280292f, 1, 1, 1, FONT_ALIGN_CENTER, 0.02f, "%s", "valley");
    fontTGA.out(0.0975f, 0.84f, 1, 1, 1, FONT_ALIGN_CENTER, 0.01f, "v1.02b3");
    fontTGA.out(0.02f, 0.97f, 1, 1, 0, FONT_ALIGN_LEFT, 0.025f, "lap: %d  time: %.2f  record: %.2f", 3, 42.17f, 39.80f);
    fontTGA.out(0.5f, 0.5f, 1, 0, 0, FONT_ALIGN_CENTER, 0.03f, "NEW RECORD!");
    fontTGA.out(0.5f, 0.03f, 1, 1, 1, FONT_ALIGN_CENTER, 0.015f, "The quick brown fox jumps over the lazy dog 0123456789");

    Screen s = grab();
    bvw::RGBA8Image shot;
    shot.width = 1024;
    shot.height = 768;
    shot.pixels.resize(1024 * 768 * 4);
    for (int y = 0; y < 768; y++)
        for (int x = 0; x < 1024; x++)
            for (int k = 0; k < 4; k++)
                shot.pixels[((size_t)(767 - y) * 1024 + x) * 4 + k] = k < 3 ? (unsigned char)s.at(x, y, k) : 255;
    std::string dir = std::string(BV_GAME_DIR) + "/../content-check";
    std::filesystem::create_directories(dir);
    EXPECT_TRUE(bvw::writeTGA(dir + "/text.tga", shot, 24, false));
}

}  // namespace

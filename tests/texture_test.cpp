// TGA pictures into textures, and screenshots out of the frame buffer.

#include <gtest/gtest.h>

#include <GL/gl.h>

#include <filesystem>
#include <string>
#include <vector>

#include "assets/texture.h"
#include "shell/blackbox.h"
#include "shell/bvconfig.h"
#include "support/bvtest_fixtures.h"

using namespace bvtest;

namespace {

typedef std::vector<unsigned char> Bytes;

std::string header(unsigned char idlength, unsigned char type, unsigned int w, unsigned int h, unsigned char bpp,
                   unsigned char descriptor = 0) {
    std::string s(18, '\0');
    s[0] = (char)idlength;
    s[2] = (char)type;
    s[12] = (char)(w % 256);
    s[13] = (char)(w / 256);
    s[14] = (char)(h % 256);
    s[15] = (char)(h / 256);
    s[16] = (char)bpp;
    s[17] = (char)descriptor;
    return s;
}

std::string bytes(const Bytes& b) {
    return std::string(b.begin(), b.end());
}

class TextureTest : public ::testing::Test {
protected:
    void SetUp() override {
        blackbox.init("Data/blackbox.bvd", false);
        openWindow(64, 64);
        config.texturefilter = 2;
        config.PATH[0] = 0;
        texture_wrap = true;
    }
    // Level 0 of the texture, as RGBA.
    Bytes pixels(unsigned int tex, int* w = nullptr, int* h = nullptr, GLint* format = nullptr) {
        glBindTexture(GL_TEXTURE_2D, tex);
        GLint width, height, internal;
        glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &width);
        glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_HEIGHT, &height);
        glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_INTERNAL_FORMAT, &internal);
        Bytes out((size_t)width * height * 4);
        glPixelStorei(GL_PACK_ALIGNMENT, 1);
        glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, out.data());
        if (w) *w = width;
        if (h) *h = height;
        if (format) *format = internal;
        return out;
    }
    unsigned int load(const std::string& name, const std::string& contents) {
        writeFile(name, contents);
        unsigned int tex = 0;
        EXPECT_EQ(floadTextureTGA(name.c_str(), &tex), 1) << name;
        return tex;
    }
    std::string log() { return readFile("Data/blackbox.bvd"); }
    ScratchDir dir;
};

TEST_F(TextureTest, Raw24BitIsRGBWithRedAndBlueInPlace) {
    // Blue, green, red in the file: a red pixel and a blue one, 2x1.
    unsigned int tex = load("a.tga", header(0, 2, 2, 1, 24) + bytes({0, 0, 255, 255, 0, 0}));
    GLint format;
    Bytes p = pixels(tex, nullptr, nullptr, &format);
    EXPECT_EQ(format, GL_RGB);
    EXPECT_EQ(Bytes(p.begin(), p.begin() + 8), Bytes({255, 0, 0, 255, 0, 0, 255, 255}));
    EXPECT_NE(log().find("Loading texture f : a.tga [OK]\n"), std::string::npos);
}

TEST_F(TextureTest, Raw32BitIsRGBAWithRedAndBlueInPlace) {
    unsigned int tex = load("a.tga", header(0, 2, 2, 1, 32) + bytes({0, 0, 255, 128, 255, 0, 0, 64}));
    GLint format;
    Bytes p = pixels(tex, nullptr, nullptr, &format);
    EXPECT_EQ(format, GL_RGBA);
    EXPECT_EQ(Bytes(p.begin(), p.begin() + 8), Bytes({255, 0, 0, 128, 0, 0, 255, 64}));
}

TEST_F(TextureTest, RunLengthDecodesRawAndRunPackets) {
    // 4x2: a run of five green, then three raw pixels.
    std::string data = bytes({128 + 4, 0, 255, 0, 2, 255, 0, 0, 0, 0, 255, 9, 9, 9});
    unsigned int tex = load("rle.tga", header(0, 10, 4, 2, 24) + data);
    Bytes p = pixels(tex);
    for (int i = 0; i < 5; i++) EXPECT_EQ(Bytes(p.begin() + 4 * i, p.begin() + 4 * i + 3), Bytes({0, 255, 0})) << i;
    EXPECT_EQ(Bytes(p.begin() + 20, p.begin() + 23), Bytes({0, 0, 255}));
    EXPECT_EQ(Bytes(p.begin() + 24, p.begin() + 27), Bytes({255, 0, 0}));
    EXPECT_EQ(Bytes(p.begin() + 28, p.begin() + 31), Bytes({9, 9, 9}));
}

TEST_F(TextureTest, RunLengthStopsAtTheRoundedDownPixelCount) {
    // 2x2 is four pixels, rounded down to a multiple of eight: none. Decoding
    // stops at the first packet boundary, so only the first pixel arrives.
    std::string data;
    for (int i = 0; i < 4; i++) data += bytes({0, 200, 200, 200});
    unsigned int tex = load("rle.tga", header(0, 10, 2, 2, 24) + data);
    Bytes p = pixels(tex);
    EXPECT_EQ(p[0], 200);
    EXPECT_EQ(p[4], 0);
    EXPECT_EQ(p[12], 0);
    // 4x4 (sixteen) decodes all four packets of four pixels.
    data.clear();
    for (int i = 0; i < 4; i++) data += bytes({128 + 3, 0, 0, (unsigned char)(50 * (i + 1))});
    tex = load("rle16.tga", header(0, 10, 4, 4, 24) + data);
    p = pixels(tex);
    EXPECT_EQ(p[4 * 15], 200);
}

TEST_F(TextureTest, RunLengthPacketIsNeverCutShortButNeverWritesPastTheImage) {
    // 2x2 with one run of 128 pixels: the packet runs far past the image.
    unsigned int tex = load("rle.tga", header(0, 10, 2, 2, 32) + bytes({255, 1, 2, 3, 4}));
    Bytes p = pixels(tex);
    EXPECT_EQ(Bytes(p.begin() + 12, p.begin() + 16), Bytes({3, 2, 1, 4}));
}

TEST_F(TextureTest, TypeTenWithAnImageIdIsReadRaw) {
    // ID length 1: not the run-length template, so the bytes after the header
    // are pixels as they stand (the ID byte included).
    unsigned int tex = load("id.tga", header(1, 10, 2, 1, 24) + bytes({7, 10, 20, 30, 40, 50, 60}));
    Bytes p = pixels(tex);
    EXPECT_EQ(Bytes(p.begin(), p.begin() + 8), Bytes({20, 10, 7, 255, 50, 40, 30, 255}));
}

TEST_F(TextureTest, GreyAndRunLengthColourMappedTypesAreReadRaw) {
    for (unsigned char type : {3, 9}) {
        unsigned int tex = load("t.tga", header(0, type, 1, 1, 24) + bytes({1, 2, 3}));
        Bytes p = pixels(tex);
        EXPECT_EQ(Bytes(p.begin(), p.begin() + 3), Bytes({3, 2, 1})) << (int)type;
    }
}

TEST_F(TextureTest, TopLeftOriginIsShownUpsideDown) {
    // Descriptor bit 5 says the first row is the top one; it is ignored, so the
    // first row of the file (red) is still texture row 0, the bottom.
    unsigned int tex = load("tl.tga", header(0, 2, 1, 2, 24, 0x20) + bytes({0, 0, 255, 255, 0, 0}));
    Bytes p = pixels(tex);
    EXPECT_EQ(p[0], 255);
    EXPECT_EQ(p[4 + 2], 255);
}

TEST_F(TextureTest, FiltersAndEdges) {
    std::string picture = header(0, 2, 1, 1, 24) + bytes({1, 2, 3});
    auto params = [&](unsigned int filter) {
        config.texturefilter = filter;
        unsigned int tex = load("f.tga", picture);
        glBindTexture(GL_TEXTURE_2D, tex);
        GLint mag, min, s, t;
        glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, &mag);
        glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, &min);
        glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, &s);
        glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, &t);
        return std::vector<GLint>{mag, min, s, t};
    };
    EXPECT_EQ(params(0), (std::vector<GLint>{GL_NEAREST, GL_NEAREST, GL_REPEAT, GL_REPEAT}));
    EXPECT_EQ(params(1), (std::vector<GLint>{GL_LINEAR, GL_LINEAR, GL_REPEAT, GL_REPEAT}));
    EXPECT_EQ(params(2), (std::vector<GLint>{GL_LINEAR, GL_LINEAR_MIPMAP_NEAREST, GL_REPEAT, GL_REPEAT}));
    EXPECT_EQ(params(5), params(2));
    texture_wrap = false;
    EXPECT_EQ(params(2)[2], GL_CLAMP);
    EXPECT_EQ(params(2)[3], GL_CLAMP);
}

TEST_F(TextureTest, MipmapsAreAlwaysBuilt) {
    config.texturefilter = 0;
    std::string data;
    for (int i = 0; i < 16; i++) data += bytes({0, 0, 255});
    unsigned int tex = load("m.tga", header(0, 2, 4, 4, 24) + data);
    glBindTexture(GL_TEXTURE_2D, tex);
    GLint w = 0;
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 2, GL_TEXTURE_WIDTH, &w);
    EXPECT_EQ(w, 1);
}

TEST_F(TextureTest, MissingFileSaysNotFoundAndLeavesTheHandle) {
    unsigned int tex = 77;
    testing::internal::CaptureStdout();
    EXPECT_EQ(floadTextureTGA("Data/Textures/none.tga", &tex), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "NOT FOUND: Data/Textures/none.tga\n");
    EXPECT_EQ(tex, 77u);
    EXPECT_NE(log().find("Loading texture f : Data/Textures/none.tga [  ]\n"), std::string::npos);
}

TEST_F(TextureTest, PathPrefixIsPrependedButNotLogged) {
    std::filesystem::create_directories("base/Data");
    writeFile("base/Data/p.tga", header(0, 2, 1, 1, 24) + bytes({1, 2, 3}));
    snprintf(config.PATH, sizeof config.PATH, "base/");
    unsigned int tex = 0;
    EXPECT_EQ(floadTextureTGA("Data/p.tga", &tex), 1);
    EXPECT_NE(log().find("Loading texture f : Data/p.tga [OK]\n"), std::string::npos);
}

TEST_F(TextureTest, LoadingBarCountsTheFileBeforeItIsOpened) {
    config.loaded = 0;
    config.totalsize = 1000;
    std::string data(3000, '\x40');
    load("big.tga", header(0, 2, 32, 32, 24) + data);
    EXPECT_EQ(config.loaded, 2ul);  // (3018 + 1) >> 10
}

TEST_F(TextureTest, TruncatedDataIsPaddedWithBlack) {
    unsigned int tex = load("short.tga", header(0, 2, 2, 2, 24) + bytes({10, 20, 30}));
    Bytes p = pixels(tex);
    EXPECT_EQ(Bytes(p.begin(), p.begin() + 3), Bytes({30, 20, 10}));
    EXPECT_EQ(Bytes(p.begin() + 4, p.begin() + 7), Bytes({0, 0, 0}));
    EXPECT_EQ(Bytes(p.begin() + 12, p.begin() + 15), Bytes({0, 0, 0}));
}

TEST_F(TextureTest, TruncatedRunLengthStreamKeepsWhatWasDecoded) {
    unsigned int tex = load("short.tga", header(0, 10, 4, 4, 24) + bytes({128 + 1, 5, 6, 7, 128}));
    Bytes p = pixels(tex);
    EXPECT_EQ(Bytes(p.begin() + 4, p.begin() + 7), Bytes({7, 6, 5}));
    EXPECT_EQ(p[8], 0);
    EXPECT_NE(log().find("Loading texture f : short.tga [OK]\n"), std::string::npos);
}

TEST_F(TextureTest, MalformedHeadersAreRejectedWithAFailedLine) {
    const std::pair<const char*, std::string> bad[] = {
        {"truncated.tga", std::string("\0\0\2\0\0", 5)},
        {"sixteen.tga", header(0, 2, 2, 2, 16) + bytes({1, 2, 3, 4, 5, 6, 7, 8})},
        {"empty.tga", header(0, 2, 0, 0, 24)},
        {"huge.tga", header(0, 2, 65535, 65535, 32) + bytes({1, 2, 3, 4})},
        {"wide.tga", header(0, 10, 8193, 1, 24) + bytes({1, 2, 3, 4})},
    };
    for (const auto& [name, contents] : bad) {
        writeFile(name, contents);
        unsigned int tex = 0;
        EXPECT_EQ(floadTextureTGA(name, &tex), 0) << name;
        EXPECT_EQ(tex, 0u) << name;
        EXPECT_NE(log().find(std::string("Loading texture f : ") + name + " (not a 24- or 32-bit picture of sensible size) [  ]\n"),
                  std::string::npos)
            << name;
    }
    EXPECT_FALSE(blackbox.status);
}

TEST_F(TextureTest, FreeDeletesTheTextureAndLeavesTheName) {
    unsigned int tex = load("a.tga", header(0, 2, 1, 1, 24) + bytes({1, 2, 3}));
    EXPECT_TRUE(glIsTexture(tex));
    freeTexture(&tex);
    EXPECT_FALSE(glIsTexture(tex));
    EXPECT_NE(tex, 0u);
}

TEST_F(TextureTest, ScreenshotNumbering) {
    const std::pair<unsigned int, const char*> cases[] = {
        {0, "shot000.tga"}, {9, "shot009.tga"}, {42, "shot042.tga"}, {99, "shot099.tga"}, {100, "shot100.tga"},
        {1234, "shot1234.tga"}};
    for (const auto& [number, name] : cases) {
        config.nScreenshots = number;
        EXPECT_EQ(fsaveTGA(), 1);
        EXPECT_TRUE(fileExists(std::string("Data/Screenshots/") + name)) << name;
        EXPECT_EQ(config.nScreenshots, number + 1);
    }
}

TEST_F(TextureTest, ScreenshotPassesOverNumbersWhoseFileExists) {
    writeFile("Data/Screenshots/shot007.tga", "OLD7");
    config.nScreenshots = 7;
    EXPECT_EQ(fsaveTGA(), 1);
    EXPECT_EQ(readFile("Data/Screenshots/shot007.tga"), "OLD7");
    EXPECT_TRUE(fileExists("Data/Screenshots/shot008.tga"));
    EXPECT_EQ(config.nScreenshots, 9u);
    // A run of taken numbers, and the counting goes on from where it stood.
    writeFile("Data/Screenshots/shot009.tga", "OLD9");
    writeFile("Data/Screenshots/shot010.tga", "OLD10");
    EXPECT_EQ(fsaveTGA(), 1);
    EXPECT_EQ(readFile("Data/Screenshots/shot009.tga"), "OLD9");
    EXPECT_EQ(readFile("Data/Screenshots/shot010.tga"), "OLD10");
    EXPECT_TRUE(fileExists("Data/Screenshots/shot011.tga"));
    EXPECT_EQ(config.nScreenshots, 12u);
    // A number below the counter is never gone back to.
    EXPECT_FALSE(fileExists("Data/Screenshots/shot000.tga"));
}

TEST_F(TextureTest, ASecondSessionKeepsTheFirstSessionsScreenshots) {
    glClearColor(0, 0, 1, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    config.nScreenshots = 0;
    EXPECT_EQ(fsaveTGA(), 1);
    EXPECT_EQ(fsaveTGA(), 1);
    std::string first = readFile("Data/Screenshots/shot000.tga");
    config.nScreenshots = 0;  // the next start counts from 0 again
    glClearColor(1, 0, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    EXPECT_EQ(fsaveTGA(), 1);
    EXPECT_EQ(readFile("Data/Screenshots/shot000.tga"), first);
    EXPECT_TRUE(fileExists("Data/Screenshots/shot002.tga"));
    EXPECT_NE(readFile("Data/Screenshots/shot002.tga"), first);
    EXPECT_EQ(config.nScreenshots, 3u);
}

TEST_F(TextureTest, ScreenshotWithoutItsFolderFailsButUsesUpItsNumber) {
    std::filesystem::remove_all("Data/Screenshots");
    config.nScreenshots = 0;
    EXPECT_EQ(fsaveTGA(), 0);
    EXPECT_EQ(fsaveTGA(), 0);
    EXPECT_EQ(config.nScreenshots, 2u);
    std::vector<std::string> l = lines(log());
    EXPECT_EQ(l[l.size() - 1], "Saving screenshot [OK]");
    EXPECT_EQ(l[l.size() - 2], "Saving screenshot [OK]");
    EXPECT_TRUE(blackbox.status);
}

TEST_F(TextureTest, ScreenshotLoadsBackWithTheSamePixels) {
    // An odd width, so rows are not a multiple of four bytes.
    glViewport(0, 0, 33, 17);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(0, 33, 0, 17, -1, 1);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glDisable(GL_DEPTH_TEST);
    glClearColor(0, 0, 1, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    glColor3f(1, 0, 0);
    glRectf(0, 0, 10, 5);
    glColor3f(0, 1, 0);
    glRectf(20, 10, 33, 17);
    config.nScreenshots = 5;
    ASSERT_EQ(fsaveTGA(), 1);
    std::string file = readFile("Data/Screenshots/shot005.tga");
    ASSERT_EQ(file.size(), 18u + 33 * 17 * 3);
    EXPECT_EQ(file.substr(0, 12), std::string("\0\0\2\0\0\0\0\0\0\0\0\0", 12));
    EXPECT_EQ(file.substr(12, 6), std::string("\x21\0\x11\0\x18\0", 6));

    // Decoded the way the loader decodes it, pixel for pixel.
    FILE* f = fopen("Data/Screenshots/shot005.tga", "rb");
    sTGAImage image;
    ASSERT_EQ(decodeTGA(f, &image), TGA_OK);
    fclose(f);
    auto at = [&](int x, int y) {
        unsigned char* q = image.data + 3 * (y * 33 + x);
        return Bytes(q, q + 3);
    };
    EXPECT_EQ(at(0, 0), Bytes({255, 0, 0}));
    EXPECT_EQ(at(9, 4), Bytes({255, 0, 0}));
    EXPECT_EQ(at(10, 4), Bytes({0, 0, 255}));
    EXPECT_EQ(at(32, 16), Bytes({0, 255, 0}));
    EXPECT_EQ(at(20, 10), Bytes({0, 255, 0}));
    EXPECT_EQ(at(19, 10), Bytes({0, 0, 255}));
    free(image.data);

    // And through the texture loader, at a size GLU keeps as it is.
    glViewport(0, 0, 32, 16);
    ASSERT_EQ(fsaveTGA(), 1);
    unsigned int tex = 0;
    ASSERT_EQ(floadTextureTGA("Data/Screenshots/shot006.tga", &tex), 1);
    int w, h;
    Bytes p = pixels(tex, &w, &h);
    ASSERT_EQ(w, 32);
    ASSERT_EQ(h, 16);
    EXPECT_EQ(Bytes(p.begin(), p.begin() + 3), Bytes({255, 0, 0}));
    EXPECT_EQ(Bytes(p.begin() + 4 * (15 * 32 + 31), p.begin() + 4 * (15 * 32 + 31) + 3), Bytes({0, 255, 0}));
    EXPECT_EQ(Bytes(p.begin() + 4 * (5 * 32 + 12), p.begin() + 4 * (5 * 32 + 12) + 3), Bytes({0, 0, 255}));
}

}  // namespace

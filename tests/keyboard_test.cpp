// Key states and the F1 console.

#include <gtest/gtest.h>

#include <GL/gl.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "assets/font.h"
#include "shell/blackbox.h"
#include "shell/bvconfig.h"
#include "shell/keyboard.h"
#include "shell/main.h"
#include "support/bvtest_fixtures.h"

using namespace bvtest;

namespace {

const unsigned int F1 = 282, RETURN = 13, BACKSPACE = 8, SPACE = 32, UP = 273;

class ConsoleTest : public ::testing::Test {
protected:
    void SetUp() override {
        blackbox.init("Data/blackbox.bvd", false);
        writeFile("Data/config.bvd", readFile(std::string(BV_SOURCE_DIR) + "/data/config.bvd"));
        ASSERT_TRUE(config.init("Data/config.bvd"));
        keyboard.init();
        keyboard.buf(F1);
    }
    void type(const std::string& text) {
        for (char c : text) keyboard.buf((unsigned char)c);
    }
    std::string word(int line, int w) {
        return std::string(keyboard.buffer[line][w], strnlen(keyboard.buffer[line][w], 32));
    }
    ScratchDir dir;
};

TEST_F(ConsoleTest, F1TogglesTheConsole) {
    EXPECT_TRUE(keyboard.console);
    keyboard.buf(F1);
    EXPECT_FALSE(keyboard.console);
    type("set");
    EXPECT_EQ(word(0, 0), "");
}

TEST_F(ConsoleTest, SetFogZeroThenReturn) {
    type("set fog 0");
    EXPECT_EQ(word(0, 0), "SET");
    EXPECT_EQ(word(0, 1), "fog");
    EXPECT_EQ(word(0, 2), "0");
    keyboard.buf(RETURN);
    EXPECT_EQ(config.fog, 0u);
    EXPECT_NE(readFile("Data/blackbox.bvd").find("SET fog 0 [OK]\n"), std::string::npos);
    EXPECT_EQ(word(0, 0), "");
    EXPECT_EQ(word(1, 0), "SET");
    EXPECT_EQ(keyboard.nt, 0u);
    EXPECT_EQ(keyboard.nc, 0u);
}

TEST_F(ConsoleTest, CmdRunsACommand) {
    type("cmd solid");
    keyboard.buf(RETURN);
    EXPECT_NE(readFile("Data/blackbox.bvd").find("CMD solid [OK]\n"), std::string::npos);
}

TEST_F(ConsoleTest, UnknownVerbIsIgnoredWithoutALine) {
    std::string before = readFile("Data/blackbox.bvd");
    type("get fog");
    keyboard.buf(RETURN);
    EXPECT_EQ(readFile("Data/blackbox.bvd"), before);
    EXPECT_EQ(word(1, 0), "GET");
}

TEST_F(ConsoleTest, SpaceInTheThirdWordDoesNothing) {
    type("set a b c d");
    EXPECT_EQ(keyboard.nt, 2u);
    EXPECT_EQ(word(0, 2), "bcd");
}

TEST_F(ConsoleTest, ThirtyTwoCharactersFreezeBackspaceUntilReturn) {
    type("set ");
    type(std::string(32, 'x'));
    EXPECT_EQ(keyboard.nc, 32u);
    keyboard.buf(BACKSPACE);
    keyboard.buf('y');
    keyboard.buf(SPACE);
    EXPECT_EQ(keyboard.nc, 32u);
    EXPECT_EQ(keyboard.nt, 1u);
    EXPECT_EQ(word(0, 1), std::string(32, 'x'));
    keyboard.buf(RETURN);
    EXPECT_EQ(keyboard.nc, 0u);
    EXPECT_NE(readFile("Data/blackbox.bvd").find("SET " + std::string(32, 'x') + " 0 [  ]\n"), std::string::npos);
}

TEST_F(ConsoleTest, BackspaceWalksBackAcrossWords) {
    type("set fo");
    keyboard.buf(BACKSPACE);
    EXPECT_EQ(word(0, 1), "f");
    keyboard.buf(BACKSPACE);
    EXPECT_EQ(keyboard.nt, 1u);
    EXPECT_EQ(keyboard.nc, 0u);
    keyboard.buf(BACKSPACE);
    EXPECT_EQ(keyboard.nt, 0u);
    EXPECT_EQ(keyboard.nc, 3u);
    keyboard.buf(BACKSPACE);
    EXPECT_EQ(word(0, 0), "SE");
}

TEST_F(ConsoleTest, UpArrowRecallsTheLastLine) {
    type("set lod 1");
    keyboard.buf(RETURN);
    keyboard.buf(UP);
    EXPECT_EQ(word(0, 0), "SET");
    EXPECT_EQ(word(0, 1), "lod");
    EXPECT_EQ(word(0, 2), "1");
    EXPECT_EQ(keyboard.nt, 2u);
    EXPECT_EQ(keyboard.nc, 1u);

    keyboard.buf(RETURN);
    type("cmd reset");
    keyboard.buf(RETURN);
    keyboard.buf(UP);
    EXPECT_EQ(keyboard.nt, 1u);
    EXPECT_EQ(keyboard.nc, 5u);
    EXPECT_EQ(word(2, 0), "SET");
}

TEST_F(ConsoleTest, UpArrowWithEmptyHistoryDoesNothing) {
    keyboard.buf(UP);
    EXPECT_EQ(word(0, 0), "");
    EXPECT_EQ(keyboard.nc, 0u);
}

TEST_F(ConsoleTest, EmptyReturnPushesAnEmptyLine) {
    type("set fog 1");
    keyboard.buf(RETURN);
    keyboard.buf(RETURN);
    EXPECT_EQ(word(1, 0), "");
    EXPECT_EQ(word(2, 0), "SET");
}

TEST_F(ConsoleTest, DigitAsFirstVerbCharacterBecomesAControlCharacter) {
    type("1");
    EXPECT_EQ(keyboard.buffer[0][0][0], '1' - 32);
    EXPECT_EQ(keyboard.buffer[0][0][0], 17);
}

TEST_F(ConsoleTest, NamesBeginningWithADigitWork) {
    type("set 0bighead 1");
    keyboard.buf(RETURN);
    EXPECT_EQ(config.CHEAT_0bighead, 1u);
}

TEST_F(ConsoleTest, NegativeValueWrapsAndEmptyValueIsZero) {
    type("set lod -1");
    keyboard.buf(RETURN);
    EXPECT_EQ(config.lod, 4294967295u);
    type("set lod");
    keyboard.buf(RETURN);
    EXPECT_EQ(config.lod, 0u);
}

// The console drawn over a black frame: strip, red verb, green name, white value.
TEST_F(ConsoleTest, DrawsItsWordsAtTheirPlaces) {
    openWindow(640, 480);
    fontFNT.init("Courier", 8);
    type("set fog 25");
    glClearColor(0, 0, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    keyboard.display();

    // Looks along the text line for a pixel of exactly this colour in [x0, x1).
    auto found = [](int x0, int x1, int r, int g, int b) {
        for (int x = x0; x < x1; x++)
            for (int y = 480 - 50; y < 480 - 36; y++) {
                Pixel p = readPixel(x, y);
                if (std::abs(p.r - r) <= 1 && std::abs(p.g - g) <= 1 && std::abs(p.b - b) <= 1) return true;
            }
        return false;
    };
    EXPECT_TRUE(found(6, 14, 127, 127, 127));     // ">"
    EXPECT_TRUE(found(16, 46, 255, 0, 0));        // "SET" at 16
    EXPECT_FALSE(found(56, 86, 255, 0, 0));
    EXPECT_TRUE(found(56, 86, 0, 255, 0));        // "fog" at 10*3+26 = 56
    EXPECT_FALSE(found(16, 46, 0, 255, 0));
    EXPECT_TRUE(found(96, 116, 255, 255, 255));   // "25" at 10*(3+3)+36 = 96
    EXPECT_FALSE(found(56, 86, 255, 255, 255));
    // The cursor after "25": (10*3+26) + (10*3+10) + 10*2 = 116.
    EXPECT_TRUE(found(116, 126, 127, 127, 127));
    EXPECT_FALSE(found(126, 200, 127, 127, 127));
}

TEST_F(ConsoleTest, ClosedConsoleDrawsNothing) {
    openWindow(320, 240);
    fontFNT.init("Courier", 8);
    keyboard.buf(F1);
    glClearColor(0.2f, 0.4f, 0.6f, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    keyboard.display();
    Pixel p = readPixel(100, 230);
    EXPECT_EQ(p.r, 51);
    EXPECT_EQ(p.g, 102);
}

TEST_F(ConsoleTest, StripDarkensTheTopFiftySixPixelsToHalf) {
    openWindow(320, 240);
    fontFNT.init("Courier", 8);
    glClearColor(1, 1, 1, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    keyboard.display();
    EXPECT_NEAR(readPixel(300, 239).r, 128, 1);
    EXPECT_NEAR(readPixel(300, 240 - 56).r, 128, 1);
    EXPECT_EQ(readPixel(300, 240 - 57).r, 255);
}

}  // namespace

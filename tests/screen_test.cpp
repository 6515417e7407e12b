// What the window shows on the X screen after a buffer swap: the loading bar.

#include <gtest/gtest.h>

#include <string>

#include "assets/texture.h"
#include "shell/blackbox.h"
#include "shell/bvconfig.h"
#include "shell/main.h"
#include "support/bvtest_fixtures.h"

using namespace bvtest;

namespace {

const char* kSettings = "resolution 2\ndepth 1\nview 3\ndetail 2\nshadows 3\ntrackshadows 1\nsound 1\n"
                        "volume 100\nmusic 1\nmusicvolume 80\nbrightness 0\nmouse 0\nsensitivity 4\n"
                        "joystick 0\nlensflare 1\nskidmarks 1\n";

// The loading bar needs the window: it draws and swaps for every file.
TEST(LoadingBar, RaceSetupEndingInZeroMakesTotalsizeOne) {
    ScratchDir dir;
    blackbox.init("Data/blackbox.bvd", false);
    writeFile("Data/config.bvd", kSettings);
    writeFile("Data/gencon.bvd", "Kimi\n0\n1\n0\n0\n0\n");
    ASSERT_TRUE(config.init("Data/config.bvd"));
    EXPECT_EQ(config.totalsize, 0ul);
    openWindow();
    writeFile("Data/k3", std::string(3 * 1024, 'x'));
    config.disploaded("Data/k3");
    EXPECT_EQ(config.totalsize, 1ul);
    EXPECT_EQ(config.loaded, 3ul);
}

TEST(LoadingBar, FilledSegmentsFollowLoadedOverTotal) {
    ScratchDir dir;
    blackbox.init("Data/blackbox.bvd", false);
    writeFile("Data/config.bvd", kSettings);
    ASSERT_TRUE(config.init("Data/config.bvd"));
    openWindow(1024, 768);
    // A black splash, blue empty segments, red filled ones.
    writeSolidTGA("t.tga", 4, 4, 0, 0, 0);
    writeSolidTGA("0.tga", 4, 4, 0, 0, 255, 255);
    writeSolidTGA("1.tga", 4, 4, 255, 0, 0, 255);
    floadTextureTGA("t.tga", &splash_t);
    floadTextureTGA("0.tga", &splash_0);
    floadTextureTGA("1.tga", &splash_1);
    config.totalsize = 20;
    config.loaded = 0;
    writeFile("Data/k7", std::string(7 * 1024, 'x'));
    config.disploaded("Data/k7");  // 7 of 20: three segments filled
    auto segment = [](int i) { return screenPixel((int)((0.421 + 0.015 * i) * 1024), (int)(0.1525 * 768)); };
    EXPECT_EQ(segment(0).r, 255);
    EXPECT_EQ(segment(2).r, 255);
    EXPECT_EQ(segment(3).r, 0);
    EXPECT_EQ(segment(3).b, 255);
    EXPECT_EQ(segment(9).b, 255);
    EXPECT_EQ(segment(10).b, 0);
    // Not capped: 22 of 20 fills eleven, the last one right of the bar.
    config.disploaded("Data/k7");
    config.disploaded("Data/k7");
    config.disploaded("Data/k7");
    EXPECT_EQ(config.loaded, 28ul);
    EXPECT_EQ(segment(10).r, 255);
    EXPECT_EQ(segment(13).r, 255);
    EXPECT_EQ(segment(14).r, 0);
}

}  // namespace

// The start-up splash with our own pictures, as a player sees it.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "assets/texture.h"
#include "shell/blackbox.h"
#include "shell/bvconfig.h"
#include "shell/main.h"
#include "support/bvtest_fixtures.h"

using namespace bvtest;

namespace {

TEST(Splash, OurPictureWithTheBarHalfFilled) {
    ScratchDir dir;
    std::filesystem::copy(std::string(BV_GAME_DIR) + "/Data/GUI", "Data/GUI");
    blackbox.init("Data/blackbox.bvd", false);
    openWindow(1024, 768);
    ASSERT_EQ(floadTextureTGA("Data/GUI/t.tga", &splash_t), 1);
    ASSERT_EQ(floadTextureTGA("Data/GUI/0.tga", &splash_0), 1);
    ASSERT_EQ(floadTextureTGA("Data/GUI/1.tga", &splash_1), 1);
    config.loaded = 0;
    config.totalsize = 10;
    writeFile("Data/k5", std::string(5 * 1024, 'x'));
    config.disploaded("Data/k5");
    // A filled segment and an empty one differ; the picture is not blank.
    Pixel filled = screenPixel((int)((0.421 + 0.015 * 2) * 1024), (int)(0.1525 * 768));
    Pixel empty = screenPixel((int)((0.421 + 0.015 * 7) * 1024), (int)(0.1525 * 768));
    EXPECT_NE(filled.r + filled.g + filled.b, empty.r + empty.g + empty.b);
    Pixel title = screenPixel(512, 600), corner = screenPixel(10, 10);
    EXPECT_FALSE(title.r == corner.r && title.g == corner.g && title.b == corner.b);
    // Kept in the build tree for a person to look at.
    std::string shot = std::string(BV_GAME_DIR) + "/../content-check/splash.png";
    std::filesystem::create_directories(std::string(BV_GAME_DIR) + "/../content-check");
    run("import -window root " + shot);
}

}  // namespace

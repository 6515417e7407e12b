// The race test fixture: the game's content copied, the game opened and readied, frames on a simulated clock.
#include "support/race_scene.h"

#include <GL/gl.h>

#include <filesystem>
#include <string>

#include "assets/font.h"
#include "frontend/menu.h"
#include "scene/scene.h"
#include "shell/blackbox.h"
#include "shell/bvconfig.h"
#include "shell/keyboard.h"
#include "shell/main.h"
#include "shell/mouse.h"
#include "shell/performance.h"
#include "track/track.h"

namespace bvtest {

namespace fs = std::filesystem;

void RaceSceneTest::copyGameData() {
    fs::remove_all("Data");
    fs::copy(std::string(BV_GAME_DIR) + "/Data", "Data", fs::copy_options::recursive);
    fs::remove("Data/gencon.bvd");
    writeFile("Data/config.bvd", readFile(std::string(BV_SOURCE_DIR) + "/data/config.bvd"));
}

void RaceSceneTest::openGame(unsigned int width, unsigned int height) {
    blackbox.init("Data/blackbox.bvd", false);
    ASSERT_TRUE(config.init("Data/config.bvd"));
    config.soundeffects = 0;
    openWindow(width, height);
    initGL();
}

void RaceSceneTest::readyGame() {
    keyboard.init();
    mouse.init();
    performance.init();
    performance.fps = 30;
    bvclock_override = CLOCK0;
    fontTGA.init("Arial", 0.75f);
    menu.init();
    track.init(0.125f);
}

void RaceSceneTest::TearDown() {
    bvclock_override = -1;
    killScene();
}

void RaceSceneTest::frame() {
    nextFrame();
    drawScene();
    glFinish();
}

void RaceSceneTest::nextFrame() {
    frames++;
    bvclock_override = CLOCK0 + frames * 1000000L / 30;
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
    resizeGLwindow3D();
}

void RaceSceneTest::until(double seconds) {
    while ((double)frames / 30 < seconds) frame();
}

void RaceSceneTest::restart() {
    frames = 0;
    bvclock_override = CLOCK0;
    resetScene();
}

}  // namespace bvtest

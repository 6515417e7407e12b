// The event and frame loop, fed with real SDL events in a real window.

#include <gtest/gtest.h>

#include <GL/gl.h>
#include <SDL/SDL.h>

#include "assets/font.h"
#include "frontend/menu.h"
#include "shell/blackbox.h"
#include "shell/bvconfig.h"
#include "shell/keyboard.h"
#include "shell/main.h"
#include "shell/mouse.h"
#include "shell/performance.h"
#include "support/bvtest_fixtures.h"

using namespace bvtest;

namespace {

SDL_Event keyEvent(Uint8 type, unsigned int sym) {
    SDL_Event e = {};
    e.type = type;
    e.key.keysym.sym = (SDLKey)sym;
    return e;
}

class LoopTest : public ::testing::Test {
protected:
    void SetUp() override {
        openWindow(320, 240);
        keyboard.init();
        menu.init();
        mouse.init();
        settlePointer();
        performance.init();
        fontFNT.init("Courier", 8);
    }
    // The pointer warp of mouse.init comes back from the X server as a motion
    // of its own, at the server's pace: on a freshly started server it can
    // land among a test's own events. Wait a moment for it and drop it.
    static void settlePointer() {
        SDL_Event e;
        for (int tries = 0; tries < 30; tries++) {
            SDL_PumpEvents();
            while (SDL_PollEvent(&e))
                if (e.type == SDL_MOUSEMOTION && (unsigned)e.motion.x == mouse.x && (unsigned)e.motion.y == mouse.y) return;
            SDL_Delay(10);
        }
    }
    ScratchDir dir;
    bool done = false;
};

TEST_F(LoopTest, KeyDownSetsAndKeyUpClears) {
    handleEvent(keyEvent(SDL_KEYDOWN, SDLK_UP), done);
    EXPECT_TRUE(keyboard.key[SDLK_UP]);
    handleEvent(keyEvent(SDL_KEYUP, SDLK_UP), done);
    EXPECT_FALSE(keyboard.key[SDLK_UP]);
}

TEST_F(LoopTest, KeyWithTheConsoleOpenFeedsTheConsoleOnly) {
    handleEvent(keyEvent(SDL_KEYDOWN, SDLK_LEFT), done);  // held as the console opens
    handleEvent(keyEvent(SDL_KEYDOWN, SDLK_F1), done);
    EXPECT_TRUE(keyboard.console);
    handleEvent(keyEvent(SDL_KEYDOWN, SDLK_s), done);
    EXPECT_FALSE(keyboard.key[SDLK_s]);
    EXPECT_EQ(keyboard.buffer[0][0][0], 'S');
    handleEvent(keyEvent(SDL_KEYUP, SDLK_LEFT), done);
    EXPECT_FALSE(keyboard.key[SDLK_LEFT]);
}

TEST_F(LoopTest, MenuKeyIsStoredOnlyOnTheMainScreen) {
    menu.m = MENU_ABOUT;
    handleEvent(keyEvent(SDL_KEYDOWN, SDLK_a), done);
    EXPECT_EQ(menu.key, 0u);
    menu.m = MENU_MAIN;
    handleEvent(keyEvent(SDL_KEYDOWN, SDLK_b), done);
    EXPECT_EQ(menu.key, (unsigned int)SDLK_b);
}

TEST_F(LoopTest, MouseMotionAndButtons) {
    SDL_Event e = {};
    e.type = SDL_MOUSEMOTION;
    e.motion.x = 17;
    e.motion.y = 33;
    handleEvent(e, done);
    EXPECT_EQ(mouse.x, 17u);
    EXPECT_EQ(mouse.y, 33u);
    e.type = SDL_MOUSEBUTTONDOWN;
    e.button.button = SDL_BUTTON_RIGHT;
    handleEvent(e, done);
    EXPECT_TRUE(mouse.lb);
    EXPECT_FALSE(mouse.rb);
    e.type = SDL_MOUSEBUTTONUP;
    handleEvent(e, done);
    EXPECT_FALSE(mouse.lb);
}

TEST_F(LoopTest, AKeyTappedBetweenTwoFramesIsDownForOneFrame) {
    SDL_Event down = keyEvent(SDL_KEYDOWN, SDLK_UP), up = keyEvent(SDL_KEYUP, SDLK_UP);
    SDL_PushEvent(&down);
    SDL_PushEvent(&up);
    pumpEvents(done);
    EXPECT_TRUE(keyboard.key[SDLK_UP]);
    pumpEvents(done);
    EXPECT_FALSE(keyboard.key[SDLK_UP]);
}

TEST_F(LoopTest, AKeyHeldOverFramesIsReleasedInTheFrameItIsLetGo) {
    SDL_Event down = keyEvent(SDL_KEYDOWN, SDLK_UP), up = keyEvent(SDL_KEYUP, SDLK_UP);
    SDL_PushEvent(&down);
    pumpEvents(done);
    EXPECT_TRUE(keyboard.key[SDLK_UP]);
    SDL_PushEvent(&up);
    pumpEvents(done);
    EXPECT_FALSE(keyboard.key[SDLK_UP]);
}

TEST_F(LoopTest, AQuickClickStaysOnTheButtonForOneFrameAndTheMouseMovesOnAfter) {
    SDL_Event e = {};
    e.type = SDL_MOUSEMOTION;
    e.motion.x = 100;
    e.motion.y = 50;
    SDL_PushEvent(&e);
    e = {};
    e.type = SDL_MOUSEBUTTONDOWN;
    SDL_PushEvent(&e);
    e.type = SDL_MOUSEBUTTONUP;
    SDL_PushEvent(&e);
    e = {};
    e.type = SDL_MOUSEMOTION;
    e.motion.x = 7;
    e.motion.y = 9;
    SDL_PushEvent(&e);
    pumpEvents(done);
    EXPECT_TRUE(mouse.lb);
    EXPECT_EQ(mouse.x, 100u);
    EXPECT_EQ(mouse.y, 50u);
    pumpEvents(done);
    EXPECT_FALSE(mouse.lb);
    EXPECT_EQ(mouse.x, 7u);
    EXPECT_EQ(mouse.y, 9u);
}

TEST_F(LoopTest, QuitEventEndsTheLoop) {
    SDL_Event e = {};
    e.type = SDL_QUIT;
    SDL_PushEvent(&e);
    EXPECT_EQ(mainloop(), 1ul);
}

TEST_F(LoopTest, QuitInTheMenuDrawsOneFurtherFrame) {
    menu.m = MENU_QUIT;
    EXPECT_EQ(mainloop(), 1ul);
}

TEST_F(LoopTest, ResizeChangesTheSizeKeptInMemory) {
    SDL_Event e = {};
    e.type = SDL_VIDEORESIZE;
    e.resize.w = 500;
    e.resize.h = 400;
    handleEvent(e, done);
    EXPECT_EQ(config.width, 500u);
    EXPECT_EQ(config.height, 400u);
    GLint viewport[4];
    glGetIntegerv(GL_VIEWPORT, viewport);
    EXPECT_EQ(viewport[2], 500);
    EXPECT_EQ(viewport[3], 400);
    EXPECT_FALSE(done);
}

TEST_F(LoopTest, GammaTwentyFiveBrightensEveryPixelByAQuarter) {
    config.gammacorrection = 25;
    // The race-start frame is the one frame in which the menu draws nothing.
    menu.m = MENU_RACESTART;
    drawGL();
    for (int x : {0, 160, 319})
        for (int y : {0, 120, 239}) {
            Pixel p = readPixel(x, y);
            EXPECT_NEAR(p.r, 64, 1);
            EXPECT_NEAR(p.g, 64, 1);
            EXPECT_NEAR(p.b, 64, 1);
        }
    config.gammacorrection = 0;
    menu.m = MENU_RACESTART;
    glClearColor(0, 0, 0, 1);  // the race start set the race's sky grey
    drawGL();
    EXPECT_EQ(readPixel(160, 120).r, 0);
}

TEST_F(LoopTest, MenuEntryMovesOnToTheMainState) {
    EXPECT_EQ(menu.m, MENU_ENTER);
    bool d = false;
    looppass(d);
    EXPECT_EQ(menu.m, MENU_MAIN);
    EXPECT_FALSE(d);
}

TEST(Window, OpensWithDoubleBufferDepthAndStencil) {
    ScratchDir dir;
    openWindow(640, 480);
    EXPECT_EQ(surface->w, 640);
    EXPECT_EQ(surface->h, 480);
    EXPECT_TRUE(surface->flags & SDL_OPENGL);
    int stencil = 0, doublebuffer = 0;
    SDL_GL_GetAttribute(SDL_GL_STENCIL_SIZE, &stencil);
    SDL_GL_GetAttribute(SDL_GL_DOUBLEBUFFER, &doublebuffer);
    EXPECT_GE(stencil, 8);
    EXPECT_EQ(doublebuffer, 1);
}

TEST(Window, InitGLSetsTheFixedStateAndLogsSoundOff) {
    ScratchDir dir;
    blackbox.init("Data/blackbox.bvd", false);
    openWindow(320, 240);
    config.soundeffects = 0;
    initGL();
    EXPECT_TRUE(glIsEnabled(GL_DEPTH_TEST));
    EXPECT_TRUE(glIsEnabled(GL_CULL_FACE));
    EXPECT_TRUE(glIsEnabled(GL_COLOR_MATERIAL));
    EXPECT_FALSE(glIsEnabled(GL_ALPHA_TEST));
    EXPECT_FALSE(glIsEnabled(GL_TEXTURE_GEN_S));
    GLint v;
    glGetIntegerv(GL_DEPTH_FUNC, &v);
    EXPECT_EQ(v, GL_LEQUAL);
    glGetIntegerv(GL_ALPHA_TEST_FUNC, &v);
    EXPECT_EQ(v, GL_NOTEQUAL);
    glGetIntegerv(GL_FRONT_FACE, &v);
    EXPECT_EQ(v, GL_CCW);
    glGetTexGeniv(GL_S, GL_TEXTURE_GEN_MODE, &v);
    EXPECT_EQ(v, GL_SPHERE_MAP);
    EXPECT_NE(readFile("Data/blackbox.bvd").find("Initialiazing sound [  ]\n"), std::string::npos);
    EXPECT_FALSE(blackbox.status);
}

TEST(Window, ProjectionsAndPolygonModes) {
    ScratchDir dir;
    openWindow(400, 300);
    resizeGLwindow2D(1, 1);
    EXPECT_FALSE(glIsEnabled(GL_DEPTH_TEST));
    GLfloat m[16];
    glGetFloatv(GL_PROJECTION_MATRIX, m);
    EXPECT_FLOAT_EQ(m[0], 2.0f);   // ortho 0..1
    EXPECT_FLOAT_EQ(m[12], -1.0f);
    resizeGLwindow3D();
    EXPECT_TRUE(glIsEnabled(GL_DEPTH_TEST));
    wireframe();
    GLint modes[2];
    glGetIntegerv(GL_POLYGON_MODE, modes);
    EXPECT_EQ(modes[0], GL_LINE);
    solid();
    glGetIntegerv(GL_POLYGON_MODE, modes);
    EXPECT_EQ(modes[0], GL_FILL);
}

TEST(Window, RendererInfoWritesDriverAndExtensions) {
    ScratchDir dir;
    blackbox.init("Data/blackbox.bvd", false);
    openWindow(320, 240);
    blackbox.rendererInfo();
    std::vector<std::string> l = lines(readFile("Data/blackbox.bvd"));
    ASSERT_GT(l.size(), 6u);
    EXPECT_NE(l[3].find(" v"), std::string::npos);
    EXPECT_EQ(l[4], " --------");
    EXPECT_EQ(l.back(), " --------");
    EXPECT_EQ(l[5].substr(0, 4), " GL_");
}

}  // namespace

// The effects in a race frame of their own, on a shipped circuit with three
// karts: the frame's steps from the view transform to the lens flare, in
// order, for a person to look at and for the state each step leaves behind.

#include <gtest/gtest.h>

#include <GL/gl.h>
#include <GL/glu.h>

#include "effects_fixtures.h"
#include "kart/gokart.h"
#include "scene/camera.h"
#include "scene/lensflare.h"
#include "scene/scene.h"
#include "scene/shader.h"
#include "shell/blackbox.h"
#include "shell/bvconfig.h"
#include "shell/main.h"
#include "shell/performance.h"
#include "track/track.h"

namespace {

const int W = 320, H = 240;

class EffectsFrame : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(effects::linkGameContent());
        effects::openGameWindow(W, H);
        config.fog = 0;
        config.mousesteering = 0;
        config.joysticksteering = 0;
        config.ngokarts = 3;
        LightPosition[0] = -500;
        LightPosition[1] = 750;
        LightPosition[2] = -200;
        LightPosition[3] = 1;
        track.init(0.125f);
        config.track = 0;
        track.load();
        gokartstaticdata.init();
        for (unsigned char i = 0; i < GOKART_NKARTS; i++) gokart[i].init(i);
        lensflare.init();
    }
    void TearDown() override {
        lensflare.free();
        gokartstaticdata.free();
        gokartstaticdata.freeKept();
        track.free();
        blackbox.free();
    }
    bvtest::ScratchDir dir;
};

// Steps 7 to 20 of the race frame, without the ghost and the head-up display.
void raceFrame() {
    resizeGLwindow3D();
    setRaceLight();
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
    glPushMatrix();
    camera.transform();
    track.isinview();
    for (unsigned int i = 0; i < config.ngokarts; i++) gokart[i].isinview();
    track.castshadow();
    if (config.shadows)
        for (unsigned int i = 0; i < config.ngokarts; i++) gokart[i].castshadow();
    glEnable(GL_LIGHTING);
    placeRaceLight();
    glCallList(track.LIST_ground);
    glDisable(GL_LIGHTING);
    track.drawshadowmap();
    for (unsigned int i = 0; i < config.ngokarts; i++)
        if (!config.shadows || gokart[i].doshadowmap) gokart[i].drawshadowmap();
    if (config.skidmarks)
        for (unsigned int i = 0; i < config.ngokarts; i++) gokart[i].drawslides();
    glEnable(GL_LIGHTING);
    for (unsigned int i = 0; i < config.ngokarts; i++) gokart[i].draw();
    track.drawObjects();
    glDisable(GL_LIGHTING);
    if (config.lensflare) lensflare.calc();
    lensflare.drawsun();
    glPopMatrix();
    if (config.lensflare) lensflare.draw();
    glFinish();
}

}  // namespace

TEST_F(EffectsFrame, ShadowsSkidMarksAndTheSunOnTheGrid) {
    // Kart 0 has slid about before the picture.
    sGokart& k = gokart[0];
    performance.fps = 60;
    k.kUP = true;
    for (int i = 0; i < 180; i++) k.move();
    k.kLEFT = true;
    for (int i = 0; i < 60; i++) k.move();
    k.kUP = k.kLEFT = false;
    // Behind and above the grid, looking along it.
    camera = {};
    camera.fov = 55;
    camera.axmargin = 35;
    camera.aymargin = 45;
    camera.mode = CAMERA_CHASE;
    camera.px = camera.ox = gokart[1].px + 1;
    camera.py = camera.oy = 3;
    camera.pz = camera.oz = gokart[2].pz + 5;
    camera.ax = -20;
    camera.ay = 10;
    config.LOrange[0] = config.LOrange[1] = config.LOrange[2] = 60;
    config.trackshadows = 1;
    config.skidmarks = 1;
    config.lensflare = 1;
    for (unsigned int level : {0u, 3u}) {
        config.shadows = level;
        raceFrame();
        effects::keepShot("race_frame_shadows_" + std::to_string(level));
    }
    // What the frame leaves for the overlays that follow it.
    EXPECT_TRUE(glIsEnabled(GL_DEPTH_TEST));
    EXPECT_FALSE(glIsEnabled(GL_STENCIL_TEST));
    EXPECT_FALSE(glIsEnabled(GL_BLEND));
    EXPECT_FALSE(glIsEnabled(GL_TEXTURE_2D));
    EXPECT_FALSE(glIsEnabled(GL_LIGHTING));
    GLboolean mask[4];
    glGetBooleanv(GL_COLOR_WRITEMASK, mask);
    EXPECT_TRUE(mask[0] && mask[1] && mask[2] && mask[3]);
    // The karts are in the picture and cast at least some stencil shadow.
    EXPECT_TRUE(gokart[1].inviewG);
    EXPECT_FALSE(gokart[1].doshadowmap);
    // Kart 0 left marks behind it.
    float sum = 0;
    for (unsigned int i = 0; i < config.nslides; i++) sum += gokart[0].lfSlide[i].a[1];
    EXPECT_GT(sum, 0.3f);
}

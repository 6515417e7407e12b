// The sun and its lens flare: how much of the sun the depth buffer says is
// in sight, how the brightness carries from frame to frame, and what the
// flare adds to the picture.

#include <gtest/gtest.h>

#include <GL/gl.h>
#include <GL/glu.h>

#include <cmath>
#include <filesystem>
#include <vector>

#include "scene/camera.h"
#include "scene/lensflare.h"
#include "scene/shader.h"
#include "shell/bvconfig.h"
#include "shell/main.h"
#include "support/bvtest_fixtures.h"
#include "effects_fixtures.h"

using bvtest::ScratchDir;

namespace {

const int W = 160, H = 120;

class Flare : public ::testing::Test {
protected:
    void SetUp() override {
        bvtest::openWindow(W, H);
        LightPosition[0] = -500;
        LightPosition[1] = 750;
        LightPosition[2] = -200;
        LightPosition[3] = 1;
        camera = {};
        camera.fov = 55;
        lensflare.brightness = 0;
        lensflare.readblock = true;
    }
    ScratchDir dir;
};

// The eye at the origin looking along (dx, dy, dz), set up the way the race
// frame does it: the camera's angles, then the view transform.
void look(float dx, float dy, float dz) {
    camera.px = camera.py = camera.pz = 0;
    camera.ay = atan2f(dx, dz) * 57.29577951f + 180;
    camera.ax = atan2f(dy, sqrtf(dx * dx + dz * dz)) * 57.29577951f;
    camera.az = 0;
    resizeGLwindow3D();
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    camera.transform();
}

void lookAtSun() { look(-50, 75, -20); }

void clearAll() {
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LEQUAL);
    glClearColor(0.3f, 0.3f, 0.3f, 1);
    glClearDepth(1);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
}

// Sets the depth of a block of pixels without drawing anything.
void depthBlock(int x, int y, int w, int h, double depth) {
    glEnable(GL_SCISSOR_TEST);
    glScissor(x, y, w, h);
    glClearDepth(depth);
    glClear(GL_DEPTH_BUFFER_BIT);
    glClearDepth(1);
    glDisable(GL_SCISSOR_TEST);
}

}  // namespace

TEST_F(Flare, TheSunStraightAheadSitsAtTheCentre) {
    clearAll();
    lookAtSun();
    lensflare.calc();
    EXPECT_NEAR(lensflare.sx, 0, 1e-4);
    EXPECT_NEAR(lensflare.sy, 0, 1e-4);
    EXPECT_LT(lensflare.sz, 1);
    // All 81 samples see it: 0.81, times the gain 0.9 at the centre.
    EXPECT_NEAR(lensflare.brightness, 0.729, 1e-4);
}

TEST_F(Flare, BrightnessCarriesOverAndSettlesNear729AtTheCentre) {
    lensflare.brightness = 1;
    clearAll();
    lookAtSun();
    lensflare.calc();
    EXPECT_NEAR(lensflare.brightness, (1 + 0.81) * 0.9, 1e-4);
    for (int frame = 0; frame < 300; frame++) {
        clearAll();
        lookAtSun();
        lensflare.calc();
    }
    EXPECT_NEAR(lensflare.brightness, 7.29, 0.01);
}

TEST_F(Flare, TheSunBehindTheEyeGivesNoFlare) {
    lensflare.brightness = 5;
    clearAll();
    look(50, -75, 20);
    // Even where its projection lands inside the window, nothing counts.
    lensflare.calc();
    EXPECT_EQ(lensflare.brightness, 0.0f);
    lensflare.brightness = 5;
    clearAll();
    look(50, -75, 20);
    GLdouble mv[16], pr[16];
    GLint vp[4];
    glGetDoublev(GL_MODELVIEW_MATRIX, mv);
    glGetDoublev(GL_PROJECTION_MATRIX, pr);
    glGetIntegerv(GL_VIEWPORT, vp);
    double x, y, z;
    gluProject(-50, 75, -20, mv, pr, vp, &x, &y, &z);
    EXPECT_GT(z, 1.0);  // deeper than anything the depth buffer holds
}

TEST_F(Flare, AHiddenCentreWinsOverTheSamplesAroundIt) {
    lensflare.brightness = 5;
    clearAll();
    lookAtSun();
    // One pixel in front of the sun's middle; the other 80 samples are clear.
    depthBlock(W / 2, H / 2, 1, 1, 0.5);
    lensflare.calc();
    EXPECT_EQ(lensflare.brightness, 0.0f);
    // A pixel beside the middle only takes its own sample away.
    lensflare.brightness = 0;
    clearAll();
    lookAtSun();
    depthBlock(W / 2 + 1, H / 2, 1, 1, 0.5);
    lensflare.calc();
    // Samples are W / 300 apart, closer than a pixel: that pixel holds several.
    int covered = 0;
    for (int i = -4; i <= 4; i++)
        for (int j = -4; j <= 4; j++)
            covered += (int)(W / 2 + i * W / 300.0) == W / 2 + 1 && (int)(H / 2 + j * H / 300.0) == H / 2;
    EXPECT_EQ(covered, 6);
    EXPECT_NEAR(lensflare.brightness, (81 - covered) * 0.01 * 0.9, 1e-4);
}

TEST_F(Flare, OneReadOfTheBlockGivesWhatPixelByPixelReadsGive) {
    // A depth buffer of patches just in front of and just behind the sun's depth.
    auto scene = []() {
        clearAll();
        unsigned int seed = 7;
        for (int y = 0; y < H; y += 2)
            for (int x = 0; x < W; x += 3) {
                seed = seed * 1103515245u + 12345u;
                double d = 0.99 + (seed >> 16) % 1000 / 100000.0;
                depthBlock(x, y, 3, 2, d);
            }
    };
    // Straight at the sun, and turned so that the sun sits at the edges and
    // corners, part of its samples outside the window.
    const float turns[][2] = {{0, 0}, {27, 0}, {-27.5f, 0}, {0, 21}, {0, -21.3f}, {27.2f, 20.8f}, {5, -3}};
    int differentSamples = 0;
    for (const auto& t : turns) {
        float results[2][3];
        for (int block = 0; block < 2; block++) {
            scene();
            lookAtSun();
            glMatrixMode(GL_MODELVIEW);
            glLoadIdentity();
            glRotatef(t[1], 1, 0, 0);
            glRotatef(t[0], 0, 1, 0);
            glRotatef(-camera.ax, 1, 0, 0);
            glRotatef(-camera.ay, 0, 1, 0);
            lensflare.brightness = 2;
            lensflare.readblock = block == 1;
            lensflare.calc();
            results[block][0] = (float)lensflare.sx;
            results[block][1] = (float)lensflare.sy;
            results[block][2] = lensflare.brightness;
        }
        EXPECT_EQ(results[0][0], results[1][0]) << t[0] << " " << t[1];
        EXPECT_EQ(results[0][1], results[1][1]) << t[0] << " " << t[1];
        EXPECT_EQ(results[0][2], results[1][2]) << t[0] << " " << t[1];
        // Not every patch hides the sun, nor does every one show it.
        if (results[0][2] != 0 && std::fabs(results[0][2] - (2 + 0.81f) * 0.9f) > 1e-3) differentSamples++;
    }
    EXPECT_GT(differentSamples, 0);
}

namespace {

double meanBrightness() {
    std::vector<unsigned char> p(W * H * 3);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, W, H, GL_RGB, GL_UNSIGNED_BYTE, p.data());
    double sum = 0;
    for (unsigned char c : p) sum += c;
    return sum / p.size();
}

std::vector<unsigned char> picture() {
    std::vector<unsigned char> p(W * H * 3);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, W, H, GL_RGB, GL_UNSIGNED_BYTE, p.data());
    return p;
}

// A race frame's end: the scene (a wall in front of everything when covered),
// the sun, and with the flare on its measurement and its drawing.
void frame(bool covered, bool flare) {
    clearAll();
    glPushMatrix();
    lookAtSun();
    if (covered) {
        // A wall two metres ahead, across the whole view.
        glPushMatrix();
        glLoadIdentity();
        glColor3f(0.2f, 0.4f, 0.2f);
        glDisable(GL_CULL_FACE);
        glBegin(GL_QUADS);
        glVertex3f(-10, -10, -2);
        glVertex3f(10, -10, -2);
        glVertex3f(10, 10, -2);
        glVertex3f(-10, 10, -2);
        glEnd();
        glPopMatrix();
    }
    if (flare) lensflare.calc();
    lensflare.drawsun();
    glPopMatrix();
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    if (flare) lensflare.draw();
    glFinish();
}

}  // namespace

TEST_F(Flare, TheFlareBrightensTheFrameOnlyWhenTheSunShows) {
    std::filesystem::create_directories("Data/Textures");
    bvtest::writeSolidTGA("Data/Textures/Flare0.tga", 8, 8, 255, 255, 200);
    bvtest::writeSolidTGA("Data/Textures/Flare1.tga", 8, 8, 255, 255, 255, 60);
    lensflare.init();
    ASSERT_NE(lensflare.flareTexture[0], 0u);
    ASSERT_NE(lensflare.flareTexture[1], 0u);
    glDepthFunc(GL_LEQUAL);

    // The game culls back faces; the sun faces the eye.
    glEnable(GL_CULL_FACE);
    clearAll();
    double sky = meanBrightness();
    frame(false, false);
    double sunOnly = meanBrightness();
    EXPECT_GT(effects::brightnessAround(W / 2, H / 2, 2), 200);
    EXPECT_GT(sunOnly, sky);
    for (int i = 0; i < 20; i++) frame(false, true);
    double withFlare = meanBrightness();
    EXPECT_GT(lensflare.brightness, 5);
    EXPECT_GT(withFlare, sunOnly + 20);
    // Every quarter of the picture is lit by the hexagons, none by the glow alone.
    for (int qx : {W / 4, 3 * W / 4})
        for (int qy : {H / 4, 3 * H / 4}) EXPECT_GT(effects::brightnessAround(qx, qy, 0), 180) << qx << " " << qy;
    effects::keepShot("lensflare_in_view");

    frame(true, false);
    std::vector<unsigned char> wall = picture();
    effects::keepShot("lensflare_covered");
    for (int i = 0; i < 20; i++) frame(true, true);
    EXPECT_EQ(lensflare.brightness, 0.0f);
    EXPECT_EQ(picture(), wall);
    lensflare.free();
}

TEST_F(Flare, EachFlareIsAClosedHexagon) {
    lensflare.sx = 0.2;
    lensflare.sy = -0.1;
    lensflare.brightness = 2;
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    GLfloat buffer[4096];
    glFeedbackBuffer(4096, GL_2D, buffer);
    glRenderMode(GL_FEEDBACK);
    lensflare.flare(0.5f, 0.25f, 1, 0.6f, 0.6f);
    int n = glRenderMode(GL_RENDER);
    // A fan of the centre and seven rim vertices: six triangles.
    std::vector<std::vector<float>> tris;
    for (int i = 0; i < n;) {
        ASSERT_EQ((int)buffer[i], GL_POLYGON_TOKEN);
        ASSERT_EQ((int)buffer[i + 1], 3);
        tris.push_back(std::vector<float>(buffer + i + 2, buffer + i + 8));
        i += 8;
    }
    ASSERT_EQ(tris.size(), 6u);
    // The last rim vertex comes back to the first, straight above the centre.
    auto win = [](float v, int size) { return (v + 1) / 2 * size; };
    const float cx = win(0.5f * 0.2f, W), top = win(-0.05f + 0.25f * 2, H);
    EXPECT_NEAR(tris[0][2], cx, 1e-3);
    EXPECT_NEAR(tris[0][3], top, 1e-3);
    EXPECT_NEAR(tris[5][4], cx, 1e-3);
    EXPECT_NEAR(tris[5][5], top, 1e-3);
}

TEST_F(Flare, APictureWithTheGamesOwnSprites) {
    // For a person to look at: the sun up and to the left, the flare
    // strung out across the middle towards the lower right.
    ASSERT_TRUE(effects::linkGameContent());
    lensflare.init();
    ASSERT_NE(lensflare.flareTexture[0], 0u);
    glEnable(GL_CULL_FACE);
    auto frame = [&]() {
        clearAll();
        lookAtSun();
        // Eyes lower and to the right of the sun.
        camera.ax -= 14;
        camera.ay -= 20;
        glLoadIdentity();
        glRotatef(-camera.ax, 1, 0, 0);
        glRotatef(-camera.ay, 0, 1, 0);
        lensflare.calc();
        lensflare.drawsun();
        glLoadIdentity();
        lensflare.draw();
        glFinish();
    };
    for (int i = 0; i < 20; i++) frame();
    effects::keepShot("lensflare_sprites");
    EXPECT_LT(lensflare.sx, -0.2);
    EXPECT_GT(lensflare.sy, 0.2);
    EXPECT_GT(lensflare.brightness, 0.5f);
    // The glow is brightest round the sun.
    int sunx = (int)((lensflare.sx + 1) / 2 * W), suny = (int)((lensflare.sy + 1) / 2 * H);
    EXPECT_GT(effects::brightnessAround(sunx, suny, 1), effects::brightnessAround(W - 3, 3, 1) + 20);
    lensflare.free();
}

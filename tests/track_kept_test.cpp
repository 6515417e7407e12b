// What the track draws in a way a tidier version would not, kept on purpose
// and pinned here: a roadside object's shadow is cast half a turn round from
// the object as it is drawn.

#include <gtest/gtest.h>

#include <GL/gl.h>
#include <GL/glu.h>

#include "scene/shader.h"
#include "track_fixtures.h"

using namespace trackfix;
using bvtest::ScratchDir;

namespace {

const int W = 160, H = 120;

class TrackKept : public ::testing::Test {
protected:
    void SetUp() override {
        openShadowWindow(W, H);
        writeData(true);
        // The first sign is a block standing off its own centre, 1 to 2
        // towards +x, so that a half turn about the centre moves it to -x.
        w::Model m;
        int mat = m.material("Paint", 255, 255, 255, "barrel.tga");
        box(m, "Block", mat, 1, 0.4f, 1);
        for (auto& v : m.objects.back().verts) v[0] += 1.5f;
        w::write3DS(m, "Data/Models/sign1.3DS");
        // Object 0, turned by 0, alone in the middle of the map, far from the
        // barriers, the gantry and the stands.
        Circle c;
        c.objects = 0;
        writeTrack("one", circleTrack(c) + "O 8 256 256\n");
        track.init(0.125f);
        track.load();
        // Straight above the object: every shadow falls under what casts it.
        LightPosition[0] = 0;
        LightPosition[1] = 1000;
        LightPosition[2] = 0;
        LightPosition[3] = 1;
    }
    void TearDown() override { track.free(); }

    // Looking straight down on the middle of the map, 8 by 6 world units.
    static void topView() {
        glViewport(0, 0, W, H);
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        glOrtho(-4, 4, -3, 3, -50, 50);
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        glRotatef(90, 1, 0, 0);
    }
    // The window pixel under the ground point (x, z).
    static void pixelAt(float x, float z, int& px, int& py) {
        double model[16], projection[16], wx, wy, wz;
        int viewport[4];
        glGetDoublev(GL_MODELVIEW_MATRIX, model);
        glGetDoublev(GL_PROJECTION_MATRIX, projection);
        glGetIntegerv(GL_VIEWPORT, viewport);
        gluProject(x, 0, z, model, projection, viewport, &wx, &wy, &wz);
        px = (int)wx;
        py = (int)wy;
    }
    static int stencilAt(float x, float z) {
        int px, py;
        pixelAt(x, z, px, py);
        unsigned char s = 0;
        glReadPixels(px, py, 1, 1, GL_STENCIL_INDEX, GL_UNSIGNED_BYTE, &s);
        return s;
    }
    static bool blueAt(float x, float z) {
        int px, py;
        pixelAt(x, z, px, py);
        unsigned char c[3] = {0, 0, 0};
        glPixelStorei(GL_PACK_ALIGNMENT, 1);
        glReadPixels(px, py, 1, 1, GL_RGB, GL_UNSIGNED_BYTE, c);
        return c[2] > 150 && c[0] < 80 && c[1] < 100;
    }

    ScratchDir dir;
};

TEST_F(TrackKept, AnObjectsShadowLiesHalfATurnRoundFromTheObject) {
    ASSERT_EQ(track.nMiscobjects, 1u);
    ASSERT_EQ(track.typeMiscobject[0], 8u);
    ASSERT_FLOAT_EQ(track.miscobject[0].x, 0);
    ASSERT_FLOAT_EQ(track.miscobject[0].z, 0);
    camera.ignoreisinview = true;
    track.isinview();
    ASSERT_TRUE(track.inviewMiscObject[0]);

    // Drawn, the block stands on the +x side of the object's place.
    topView();
    glClearColor(0, 0, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
    glDisable(GL_LIGHTING);
    glDisable(GL_FOG);
    track.drawObjects();
    glFinish();
    EXPECT_TRUE(blueAt(1.5f, 0));
    EXPECT_FALSE(blueAt(-1.5f, 0));

    // Its shadow, with the light straight above, marks the -x side instead.
    config.trackshadows = 1;
    config.shadows = 1;
    topView();
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
    stencilCleared();
    track.castshadow();
    glFinish();
    EXPECT_NE(stencilAt(-1.5f, 0), 0);
    EXPECT_EQ(stencilAt(1.5f, 0), 0);
    EXPECT_EQ(stencilAt(0, 2.5f), 0);
}

}  // namespace

// Kart shadows: which shadow each kart gets by the shadows setting and its
// distance, that the stencil shadow of every part lies where the light
// throws the drawn part, and the ground under a kart in a real frame.

#include <gtest/gtest.h>

#include <GL/gl.h>
#include <GL/glu.h>

#include <cmath>
#include <vector>

#include "effects_fixtures.h"
#include "kart/gokart.h"
#include "scene/camera.h"
#include "scene/shader.h"
#include "shell/blackbox.h"
#include "shell/bvconfig.h"
#include "shell/main.h"
#include "track/track.h"

using bvtest::ScratchDir;

namespace {

const int W = 240, H = 240;

class KartShadow : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(effects::linkGameContent());
        effects::openGameWindow(W, H);
        config.lod = 2;
        config.LOrange[0] = config.LOrange[1] = config.LOrange[2] = 60;
        config.shadowprojectors = 0;
        config.gokartfocus = 0;
        setLight(-500, 750, -200);
        camera = {};
        camera.mode = CAMERA_CHASE;
        camera.fov = 55;
        gokartstaticdata.init();
        for (unsigned char i = 0; i < GOKART_NKARTS; i++) gokart[i].init(i);
    }
    void TearDown() override {
        gokartstaticdata.free();
        gokartstaticdata.freeKept();
        blackbox.free();
    }
    static void setLight(float x, float y, float z) {
        LightPosition[0] = x;
        LightPosition[1] = y;
        LightPosition[2] = z;
        LightPosition[3] = 1;
    }
    ScratchDir dir;
};

int faces(const s3DS& m) {
    int n = 0;
    for (int o = 0; o < m.g_3DModel.numOfObjects; o++) n += m.g_3DModel.pObject[o].numOfFaces;
    return n;
}

// The triangles one castshadow sends, counted from GL feedback.
int castTriangles(sGokart& k) {
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(-2000, 2000, -2000, 2000, -2000, 2000);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    static std::vector<GLfloat> buffer(1 << 20);
    glFeedbackBuffer((GLsizei)buffer.size(), GL_3D, buffer.data());
    glRenderMode(GL_FEEDBACK);
    k.castshadow();
    int n = glRenderMode(GL_RENDER);
    EXPECT_GE(n, 0) << "feedback buffer too small";
    int triangles = 0;
    for (int i = 0; i < n;) {
        int token = (int)buffer[i];
        if (token == GL_POLYGON_TOKEN) {
            int count = (int)buffer[i + 1];
            EXPECT_EQ(count, 3);
            triangles++;
            i += 2 + count * 3;
        } else if (token == GL_LINE_TOKEN || token == GL_LINE_RESET_TOKEN) {
            i += 1 + 2 * 3;
        } else if (token == GL_POINT_TOKEN) {
            i += 1 + 3;
        } else {
            i += 2;  // pass-through tokens carry one value
        }
    }
    return triangles;
}

// What the parts of a kart add up to.
int allParts() {
    const sGokartStaticData& s = gokartstaticdata;
    return faces(s.LOplastic3DS) + faces(s.LOchasis3DS) + 2 * faces(s.LOfrontwheel3DS) +
           2 * faces(s.LOrearwheel3DS) + 2 * faces(s.LOpedal3DS) + faces(s.LOsteeringwheel3DS) +
           faces(s.LObody3DS) + 2 * faces(s.LOfoot3DS) + faces(s.LOhead3DS) + 2 * faces(s.LOarmu3DS) +
           2 * faces(s.LOarmd3DS);
}

void seenAt(sGokart& k, float d) {
    k.inviewG = true;
    k.inviewDist = d;
}

}  // namespace

TEST_F(KartShadow, SettingTwoNearGivesOneStencilShadowAndNoBlob) {
    config.shadows = 2;
    sGokart& k = gokart[0];
    ASSERT_GT(faces(gokartstaticdata.SLOgokart3DS), 0);
    seenAt(k, config.MErange[2] - 0.5f);
    k.doshadowmap = true;
    EXPECT_EQ(castTriangles(k), faces(gokartstaticdata.SLOgokart3DS));
    EXPECT_FALSE(k.doshadowmap);
    // Near enough for full detail makes no difference at this setting.
    seenAt(k, 1);
    EXPECT_EQ(castTriangles(k), faces(gokartstaticdata.SLOgokart3DS));
    // Beyond the middle range: the blob.
    seenAt(k, config.MErange[2] + 0.5f);
    EXPECT_EQ(castTriangles(k), 0);
    EXPECT_TRUE(k.doshadowmap);
}

TEST_F(KartShadow, SettingThreeCastsEveryPartNearAndTheSimpleKartFurther) {
    config.shadows = 3;
    sGokart& k = gokart[0];
    seenAt(k, config.HIrange[2] - 0.5f);
    k.doshadowmap = true;
    EXPECT_EQ(castTriangles(k), allParts());
    EXPECT_FALSE(k.doshadowmap);
    seenAt(k, config.HIrange[2] + 0.5f);
    EXPECT_EQ(castTriangles(k), faces(gokartstaticdata.SLOgokart3DS));
    EXPECT_FALSE(k.doshadowmap);
    seenAt(k, config.MErange[2] + 0.5f);
    EXPECT_EQ(castTriangles(k), 0);
    EXPECT_TRUE(k.doshadowmap);
}

TEST_F(KartShadow, TheDriversOwnViewCastsNoRearWheelsBodyOrHead) {
    config.shadows = 3;
    const sGokartStaticData& s = gokartstaticdata;
    const int hidden = 2 * faces(s.LOrearwheel3DS) + faces(s.LObody3DS) + faces(s.LOhead3DS);
    ASSERT_GT(faces(s.LOrearwheel3DS), 0);
    ASSERT_GT(faces(s.LObody3DS), 0);
    ASSERT_GT(faces(s.LOhead3DS), 0);
    seenAt(gokart[0], 2);
    seenAt(gokart[1], 2);
    camera.mode = CAMERA_DRIVER;
    EXPECT_EQ(castTriangles(gokart[0]), allParts() - hidden);
    // Another kart, or the same one from another camera, casts whole.
    EXPECT_EQ(castTriangles(gokart[1]), allParts());
    camera.mode = CAMERA_CHASE;
    EXPECT_EQ(castTriangles(gokart[0]), allParts());
    config.gokartfocus = 1;
    camera.mode = CAMERA_DRIVER;
    EXPECT_EQ(castTriangles(gokart[0]), allParts());
    EXPECT_EQ(castTriangles(gokart[1]), allParts() - hidden);
}

TEST_F(KartShadow, SettingsZeroAndOneGiveTheBlobAndAKartOutOfSightKeepsItsChoice) {
    for (unsigned int level : {0u, 1u}) {
        config.shadows = level;
        sGokart& k = gokart[0];
        seenAt(k, 1);
        k.doshadowmap = false;
        EXPECT_EQ(castTriangles(k), 0);
        EXPECT_TRUE(k.doshadowmap) << level;
    }
    // Out of sight nothing changes, whatever the setting.
    config.shadows = 3;
    sGokart& k = gokart[2];
    k.inviewG = false;
    k.inviewDist = 1;
    k.doshadowmap = true;
    EXPECT_EQ(castTriangles(k), 0);
    EXPECT_TRUE(k.doshadowmap);
    k.doshadowmap = false;
    EXPECT_EQ(castTriangles(k), 0);
    EXPECT_FALSE(k.doshadowmap);
}

namespace {

// Straight down on the kart from above: an orthographic view of the ground
// `half` metres round (cx, cz).
void topView(float cx, float cz, float half) {
    bvtest::topView(W, H, cx, cz, half, half, 1000);
}

std::vector<unsigned char> stencil() {
    return bvtest::stencil(W, H);
}

// Marks bit 2 of the stencil where the light throws the kart as drawn: the
// drawing itself squashed onto the ground by the planar projection matrix.
void trueShadow(sGokart& k) {
    const float lx = LightPosition[0], ly = LightPosition[1], lz = LightPosition[2];
    const GLfloat m[16] = {ly, 0, 0, 0, -lx, 0, -lz, -1, 0, 0, ly, 0, 0, 0, 0, ly};
    glEnable(GL_STENCIL_TEST);
    glStencilMask(2);
    glStencilFunc(GL_ALWAYS, 2, 2);
    glStencilOp(GL_KEEP, GL_KEEP, GL_REPLACE);
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_CULL_FACE);
    glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_FALSE);
    glPushMatrix();
    glMultMatrixf(m);
    k.draw();
    glPopMatrix();
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    glStencilMask(0xff);
    glDisable(GL_STENCIL_TEST);
    glEnable(GL_DEPTH_TEST);
}

struct Overlap {
    int cast = 0, drawn = 0, both = 0;
    double iou() const { return both / (double)(cast + drawn - both); }
};

Overlap overlap() {
    Overlap o;
    for (unsigned char v : stencil()) {
        bool c = v & 1, d = v & 2;
        o.cast += c;
        o.drawn += d;
        o.both += c && d;
    }
    return o;
}

// A kart with every part turned some way: steering, pedals, head, wheels.
void pose(sGokart& k, float ay) {
    k.px = 3;
    k.pz = -2;
    k.ay = ay;
    k.sw_ay = 20;
    k.lfw_ay = 14;
    k.rfw_ay = 11;
    k.lfw_ax = 40;
    k.rfw_ax = 75;
    k.lrw_ax = 130;
    k.rrw_ax = 10;
    k.pedal_up = 20;
    k.pedal_down = 0;
    k.head_ax = -5;
    k.head_viewax = 10;
    seenAt(k, 2);
}

}  // namespace

TEST_F(KartShadow, EveryPartsShadowLiesWhereTheLightThrowsThePart) {
    // A low light, so that the shadows are long and a part cast the wrong
    // way round falls well away from where it should.
    sGokart& k = gokart[0];
    for (float ay : {0.0f, 30.0f, -120.0f}) {
        for (unsigned int level : {3u, 2u}) {
            config.shadows = level;
            pose(k, ay);
            setLight(k.px - 6, 4, k.pz - 3);
            topView(k.px + 2, k.pz + 1, 5);
            glClearStencil(0);
            glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
            // The arms hold the wheel the way the last drawing solved them.
            glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_FALSE);
            k.draw();
            glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
            k.castshadow();
            trueShadow(k);
            glFinish();
            Overlap o = overlap();
            printf("heading %g shadows %u: cast %d drawn %d overlap %.3f\n", ay, level, o.cast, o.drawn, o.iou());
            EXPECT_GT(o.drawn, 1000) << ay;
            // Exact parts match closely; the one-piece kart is a simpler shape.
            EXPECT_GT(o.iou(), level == 3 ? 0.9 : 0.7) << "heading " << ay << " shadows " << level << ": cast "
                                                         << o.cast << " drawn " << o.drawn << " both " << o.both;
        }
    }
}

namespace {

// A grey ground drawn the way the ground list draws it: half as bright where
// the stencil is marked.
void ground(float cx, float cz) {
    glEnable(GL_STENCIL_TEST);
    glStencilOp(GL_KEEP, GL_KEEP, GL_KEEP);
    glDisable(GL_CULL_FACE);
    for (int pass = 0; pass < 2; pass++) {
        glStencilFunc(pass == 0 ? GL_EQUAL : GL_NOTEQUAL, 1, 1);
        float c = pass == 0 ? 0.35f : 0.7f;
        glColor3f(c, c, c);
        glBegin(GL_QUADS);
        glVertex3f(cx - 50, 0, cz - 50);
        glVertex3f(cx - 50, 0, cz + 50);
        glVertex3f(cx + 50, 0, cz + 50);
        glVertex3f(cx + 50, 0, cz - 50);
        glEnd();
    }
    glDisable(GL_STENCIL_TEST);
}

}  // namespace

TEST_F(KartShadow, PicturesOfEachSettingUnderALowLight) {
    // For a person to look at: the kart drawn over its shadow at each setting.
    sGokart& k = gokart[0];
    for (unsigned int level : {0u, 1u, 2u, 3u}) {
        config.shadows = level;
        pose(k, 30);
        setLight(k.px - 6, 4, k.pz - 3);
        camera.px = k.px + 1.5f;
        camera.py = 2.5f;
        camera.pz = k.pz + 2.5f;
        resizeGLwindow3D();
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        gluLookAt(camera.px, camera.py, camera.pz, k.px + 1, 0, k.pz, 0, 1, 0);
        float lp[4] = {LightPosition[0], LightPosition[1], LightPosition[2], 1};
        glLightfv(GL_LIGHT0, GL_POSITION, lp);
        glEnable(GL_LIGHT0);
        glEnable(GL_DEPTH_TEST);
        glClearStencil(0);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
        glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_FALSE);
        k.draw();
        glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
        glClear(GL_DEPTH_BUFFER_BIT);
        if (level) k.castshadow();
        ground(k.px, k.pz);
        if (!level || k.doshadowmap) k.drawshadowmap();
        glFinish();
        // Something darker than the lit ground, at every setting.
        std::vector<unsigned char> p = effects::frame();
        int dark = 0;
        for (size_t i = 0; i < p.size(); i += 3)
            if (p[i] < 150 && p[i] > 20) dark++;
        glEnable(GL_LIGHTING);
        glEnable(GL_CULL_FACE);
        k.draw();
        glDisable(GL_LIGHTING);
        glFinish();
        effects::keepShot("kart_shadows_" + std::to_string(level));
        EXPECT_GT(dark, 200) << level;
    }
}

namespace {

// Mean brightness of the ground round a kart, from a world-space grid of
// points seen through the frame's matrices.
double groundUnder(const sGokart& k) {
    GLdouble mv[16], pr[16];
    GLint vp[4];
    glGetDoublev(GL_MODELVIEW_MATRIX, mv);
    glGetDoublev(GL_PROJECTION_MATRIX, pr);
    glGetIntegerv(GL_VIEWPORT, vp);
    std::vector<unsigned char> p = effects::frame();
    double sum = 0;
    int n = 0;
    for (float dz = -1.3f; dz <= 0.2f; dz += 0.05f)
        for (float dx = -0.5f; dx <= 1.0f; dx += 0.05f) {
            double x, y, z;
            gluProject(k.px + dx, 0, k.pz + dz, mv, pr, vp, &x, &y, &z);
            int ix = (int)x, iy = (int)y;
            if (ix < 0 || iy < 0 || ix >= W || iy >= H) continue;
            const unsigned char* c = &p[(iy * W + ix) * 3];
            sum += c[0] + c[1] + c[2];
            n++;
        }
    EXPECT_GT(n, 500);
    return n ? sum / n / 3 : 0;
}

}  // namespace

TEST_F(KartShadow, TheGroundUnderAKartIsDarkerWithShadowsInARealFrame) {
    // A shipped circuit, the kart on its grid, the frame's steps in order
    // without the karts themselves, so that the ground stays in sight.
    track.init(0.125f);
    ASSERT_GT(track.ntracks, 0u);
    config.track = 0;
    config.fog = 0;
    config.trackshadows = 0;
    track.load();
    ASSERT_GT(track.nLRpoints, 0u);
    sGokart& k = gokart[0];
    k.init(0);
    auto frame = [&](int level) {
        config.shadows = level < 0 ? 0 : (unsigned int)level;
        camera.px = camera.ox = k.px;
        camera.py = camera.oy = 4;
        camera.pz = camera.oz = k.pz - 0.5f;
        camera.ax = -90;
        camera.ay = camera.az = 0;
        camera.axmargin = 35;
        camera.aymargin = 45;
        camera.ignoreisinview = true;
        camera.mode = CAMERA_CHASE;
        resizeGLwindow3D();
        glClearColor(0.525f, 0.525f, 0.5f, 1);
        glClearStencil(0);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
        float ambient[4] = {0.125f, 0.125f, 0.125f, 1}, diffuse[4] = {1, 1, 1, 1};
        glLightfv(GL_LIGHT0, GL_AMBIENT, ambient);
        glLightfv(GL_LIGHT0, GL_DIFFUSE, diffuse);
        glEnable(GL_LIGHT0);
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        glPushMatrix();
        glRotatef(-camera.ax, 1, 0, 0);
        glRotatef(-camera.az, 0, 0, 1);
        glRotatef(-camera.ay, 0, 1, 0);
        glTranslatef(-camera.px, -camera.py, -camera.pz);
        track.isinview();
        k.isinview();
        // Track shadows are off: the track would cast here, and draw its
        // shadow maps after the ground.
        if (config.shadows) k.castshadow();
        glEnable(GL_LIGHTING);
        glLightfv(GL_LIGHT0, GL_POSITION, LightPosition);
        glCallList(track.LIST_ground);
        glDisable(GL_LIGHTING);
        // Level -1 is no kart shadow at all.
        if (level >= 0 && (!config.shadows || k.doshadowmap)) k.drawshadowmap();
        glFinish();
        double b = groundUnder(k);
        glPopMatrix();
        return b;
    };
    double bare = frame(-1);
    effects::keepShot("ground_no_shadow");
    EXPECT_GT(bare, 30);
    for (int level : {1, 2, 3, 0}) {
        double shaded = frame(level);
        effects::keepShot("ground_shadows_" + std::to_string(level));
        EXPECT_LT(shaded, bare - 4) << "shadows " << level << ": " << shaded << " against " << bare;
    }
    track.free();
}

TEST_F(KartShadow, TheBlobIsDrawnWhetherTheKartIsSeenOrNot) {
    sGokart& k = gokart[3];
    pose(k, 45);
    k.inviewG = false;
    ASSERT_NE(gokartstaticdata.shadowmapTexture, 0u);
    topView(k.px, k.pz, 3);
    glClearColor(0.8f, 0.8f, 0.8f, 1);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
    const double before = effects::brightnessAround(W / 2, H / 2, 3);
    k.drawshadowmap();
    glFinish();
    effects::keepShot("kart_blob");
    // Under the middle of the chassis, half a metre ahead of the rear axle.
    GLdouble mv[16], pr[16];
    GLint vp[4];
    glGetDoublev(GL_MODELVIEW_MATRIX, mv);
    glGetDoublev(GL_PROJECTION_MATRIX, pr);
    glGetIntegerv(GL_VIEWPORT, vp);
    const float a = k.ay / 57.29577951f;
    double x, y, z;
    gluProject(k.px - sinf(a) * 0.6f, 0, k.pz - cosf(a) * 0.6f, mv, pr, vp, &x, &y, &z);
    EXPECT_LT(effects::brightnessAround((int)x, (int)y, 2), before - 30);
    // Well away from the kart the ground is as it was.
    gluProject(k.px + 2, 0, k.pz + 2, mv, pr, vp, &x, &y, &z);
    EXPECT_NEAR(effects::brightnessAround((int)x, (int)y, 2), before, 1);
    EXPECT_TRUE(glIsEnabled(GL_DEPTH_TEST));
    EXPECT_FALSE(glIsEnabled(GL_BLEND));
    EXPECT_FALSE(glIsEnabled(GL_TEXTURE_2D));
}

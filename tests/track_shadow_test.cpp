// Track shadows: the gantry, objects, barriers and camera stands marking the
// stencil for the ground list, the TV cameras following the kart, plant
// shadows and the pictures under the stands, by the two shadow settings.

#include <gtest/gtest.h>

#include <cmath>

#include "effects_fixtures.h"
#include "kart/gokart.h"
#include "scene/shader.h"
#include "track_fixtures.h"

using namespace trackfix;
using bvtest::ScratchDir;

namespace {

const int W = 160, H = 120;

class TrackShadow : public ::testing::Test {
protected:
    void SetUp() override {
        // The game's GL state: the ground's shading goes through glColor
        // with lighting on.
        openShadowWindow(W, H);
        config.gokartfocus = 0;
        LightPosition[0] = -500;
        LightPosition[1] = 750;
        LightPosition[2] = -200;
        LightPosition[3] = 1;
        writeData(true);
        writeTrack("circle", circleTrack() + "O 5 445 200\n");
        track.init(0.125f);
        track.load();
    }
    void TearDown() override { track.free(); }
    ScratchDir dir;
};

// Every point, segment and object counts as seen.
void seeEverything() {
    placeCamera(0, 75, 0, -90, 0);
    camera.ignoreisinview = true;
    track.isinview();
}

// Half of the centre points in view, the other half not.
void seeEveryOther() {
    seeEverything();
    for (unsigned int i = 0; i < track.nCpoints; i++) track.inviewCpoint[i] = i % 2 == 0;
}

int stencilMarks() {
    std::vector<unsigned char> s(W * H);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, W, H, GL_STENCIL_INDEX, GL_UNSIGNED_BYTE, s.data());
    int n = 0;
    for (unsigned char v : s) n += v != 0;
    return n;
}

// The frame's steps for the track: view and light, visibility, casting,
// the ground, the shadow maps.
void shadowFrame(bool maps = true) {
    raceView();
    track.isinview();
    track.castshadow();
    glEnable(GL_LIGHTING);
    glCallList(track.LIST_ground);
    glDisable(GL_LIGHTING);
    if (maps) track.drawshadowmap();
    glFinish();
}

}  // namespace

TEST_F(TrackShadow, WithoutTrackShadowsTheCamerasAreNeverAimed) {
    seeEverything();
    ASSERT_GT(track.nCpoints, 4u);
    for (unsigned int i = 0; i < track.nCpoints; i++) track.camera_ax[i] = track.camera_ay[i] = 123;
    gokart[0].px = 5;
    gokart[0].pz = 5;
    config.trackshadows = 0;
    config.shadows = 3;
    raceView();
    track.castshadow();
    glFinish();
    for (unsigned int i = 0; i < track.nCpoints; i++) {
        EXPECT_EQ(track.camera_ax[i], 123.0f) << i;
        EXPECT_EQ(track.camera_ay[i], 123.0f) << i;
    }
    EXPECT_EQ(stencilMarks(), 0);
    // With track shadows on they follow the kart.
    config.trackshadows = 1;
    track.castshadow();
    for (unsigned int i = 0; i < track.nCpoints; i++) EXPECT_NE(track.camera_ay[i], 123.0f) << i;
}

TEST_F(TrackShadow, TheCamerasAimAtTheFollowedKart) {
    seeEveryOther();
    for (unsigned int i = 0; i < track.nCpoints; i++) track.camera_ax[i] = track.camera_ay[i] = 123;
    config.trackshadows = 1;
    config.shadows = 0;
    config.gokartfocus = 2;
    gokart[2].px = 3;
    gokart[2].pz = -1;
    track.castshadow();
    int beyond = 0, before = 0;
    for (unsigned int i = 0; i < track.nCpoints; i++) {
        if (!track.inviewCpoint[i]) {
            EXPECT_EQ(track.camera_ay[i], 123.0f);
            continue;
        }
        double dx = track.Cpoint[i].x - 3, dz = track.Cpoint[i].z - (-1);
        double ax = atan(sqrt(dx * dx + dz * dz) / 1.2) * 57.29577951 - 90;
        double ay = atan(dx / dz) * 57.29577951;
        if (-1 > track.Cpoint[i].z) {
            ay += 180;
            beyond++;
        } else {
            before++;
        }
        EXPECT_NEAR(track.camera_ax[i], ax, 1e-3) << i;
        EXPECT_NEAR(track.camera_ay[i], ay, 1e-3) << i;
    }
    EXPECT_GT(beyond, 0);
    EXPECT_GT(before, 0);
}

TEST_F(TrackShadow, StandPicturesBySetting) {
    config.trackshadows = 1;
    // 0: cleared for every point in view, the others keep theirs.
    seeEveryOther();
    for (unsigned int i = 0; i < track.nCpoints; i++) track.doCshadowmap[i] = true;
    config.shadows = 0;
    track.castshadow();
    for (unsigned int i = 0; i < track.nCpoints; i++) EXPECT_EQ(track.doCshadowmap[i], i % 2 != 0) << i;
    // 1: set for every point in view.
    for (unsigned int i = 0; i < track.nCpoints; i++) track.doCshadowmap[i] = false;
    config.shadows = 1;
    track.castshadow();
    for (unsigned int i = 0; i < track.nCpoints; i++) EXPECT_EQ(track.doCshadowmap[i], i % 2 == 0) << i;
    // 2: left as they were, whatever they were.
    for (unsigned int i = 0; i < track.nCpoints; i++) track.doCshadowmap[i] = i % 3 == 0;
    config.shadows = 2;
    track.castshadow();
    for (unsigned int i = 0; i < track.nCpoints; i++) EXPECT_EQ(track.doCshadowmap[i], i % 3 == 0) << i;
}

TEST_F(TrackShadow, AFreshTrackHasNoStandPictures) {
    for (unsigned int i = 0; i < track.nCpoints; i++) EXPECT_FALSE(track.doCshadowmap[i]) << i;
}

namespace {

// Window position of a world point through the current matrices.
void toWindow(float x, float y, float z, int& wx, int& wy) {
    GLdouble mv[16], pr[16];
    GLint vp[4];
    glGetDoublev(GL_MODELVIEW_MATRIX, mv);
    glGetDoublev(GL_PROJECTION_MATRIX, pr);
    glGetIntegerv(GL_VIEWPORT, vp);
    double a, b, c;
    gluProject(x, y, z, mv, pr, vp, &a, &b, &c);
    wx = (int)a;
    wy = (int)b;
}

double brightnessAt(float x, float z) {
    int wx, wy;
    toWindow(x, 0, z, wx, wy);
    EXPECT_TRUE(wx >= 2 && wy >= 2 && wx < W - 2 && wy < H - 2) << x << " " << z;
    return effects::brightnessAround(wx, wy, 1);
}

}  // namespace

TEST_F(TrackShadow, StandsCastAtSettingTwoAndShowPicturesAtOne) {
    config.trackshadows = 1;
    // Straight down on the first centre point.
    const sTrackPoint c = track.Cpoint[0];
    placeCamera(c.x, 6, c.z, -90, 0);
    camera.ignoreisinview = true;
    // The stand stands 1.2 high: its shadow leans away from the light by
    // about 1.2 * 500 / 750 in x.
    const float sx = c.x + 0.45f, sz = c.z + 0.15f;
    config.shadows = 0;
    shadowFrame();
    double none = brightnessAt(sx, sz), nonePicture = brightnessAt(c.x, c.z),
           lightSide = brightnessAt(c.x - 0.45f, c.z - 0.15f);
    EXPECT_EQ(stencilMarks(), 0);
    config.shadows = 1;
    shadowFrame();
    keepShot("stand_shadows_1");
    EXPECT_LT(brightnessAt(c.x, c.z), nonePicture - 10) << "the picture under the stand";
    config.shadows = 2;
    for (unsigned int i = 0; i < track.nCpoints; i++) track.doCshadowmap[i] = false;
    shadowFrame();
    keepShot("stand_shadows_2");
    EXPECT_LT(brightnessAt(sx, sz), none - 10) << "the stand's own shadow";
    EXPECT_NEAR(brightnessAt(c.x - 0.45f, c.z - 0.15f), lightSide, 1);
}

TEST_F(TrackShadow, ABarrierThrowsItsShadowAwayFromTheLight) {
    config.trackshadows = 1;
    config.shadows = 1;
    // The outer barrier by the start straight runs nearly along -z at x =
    // 28.75 to 29.0; the light is far off towards -x.
    const sTrackPoint P = track.Rpoint[1], N = track.RNpoint[1];
    ASSERT_GT(P.x, 25);
    ASSERT_LT(N.x, -0.9f);  // normals point at the road
    auto at = [&](float out) { return brightnessAt(P.x - N.x * out, P.z - N.z * out); };
    placeCamera(P.x, 3, P.z, -90, 0);
    camera.ignoreisinview = true;
    config.trackshadows = 0;
    shadowFrame();
    const float outer = 0.25f;
    double awayLit = at(outer + 0.08f), towardLit = at(-0.3f), farLit = at(outer + 0.6f);
    config.trackshadows = 1;
    shadowFrame();
    keepShot("barrier_shadow");
    // Up to 0.25 * 500 / 750 beyond the outer face, in shadow.
    EXPECT_LT(at(outer + 0.08f), awayLit * 0.7);
    // Nothing on the side of the light, nor further out.
    EXPECT_NEAR(at(-0.3f), towardLit, 1);
    EXPECT_NEAR(at(outer + 0.6f), farLit, 1);
}

TEST_F(TrackShadow, APlantLaysItsPictureDownAwayFromTheLight) {
    config.trackshadows = 1;
    config.shadows = 0;
    // The plant added at (23.625, -7).
    const float px = 23.625f, pz = -7;
    unsigned int plant = 999;
    for (unsigned int i = 0; i < track.nMiscobjects; i++)
        if (track.typeMiscobject[i] == TRACK_PLANT && fabsf(track.miscobject[i].x - px) < 0.01f &&
            fabsf(track.miscobject[i].z - pz) < 0.01f)
            plant = i;
    ASSERT_NE(plant, 999u);
    placeCamera(px + 0.7f, 5, pz, -90, 0);
    camera.ignoreisinview = true;
    // The 2-high picture falls about 2 * 530 / 750 long, away from (-500, -200).
    float dx = px + 500, dz = pz + 200, d = sqrtf(dx * dx + dz * dz);
    float ux = dx / d, uz = dz / d;
    config.trackshadows = 0;
    shadowFrame();
    double lit = brightnessAt(px + ux * 0.7f, pz + uz * 0.7f), back = brightnessAt(px - ux * 0.7f, pz - uz * 0.7f);
    config.trackshadows = 1;
    shadowFrame();
    keepShot("plant_shadow");
    EXPECT_EQ(stencilMarks(), 0);
    EXPECT_LT(brightnessAt(px + ux * 0.7f, pz + uz * 0.7f), lit * 0.7);
    EXPECT_NEAR(brightnessAt(px - ux * 0.7f, pz - uz * 0.7f), back, 1);
}

TEST_F(TrackShadow, GantryAndObjectsMarkTheStencilOnlyWithShadowsOn) {
    config.trackshadows = 1;
    placeCamera(26.9f, 12, 2.5f, -90, 0);
    camera.ignoreisinview = true;
    config.shadows = 0;
    shadowFrame(false);
    EXPECT_EQ(stencilMarks(), 0);
    config.shadows = 1;
    shadowFrame(false);
    keepShot("gantry_shadow");
    EXPECT_GT(stencilMarks(), 200);
}

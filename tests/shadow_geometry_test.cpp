// Planar shadows: triangles thrown from the light onto the ground into the
// stencil buffer or drawn as textured shapes, and where a model's vertices
// go on their way there.

#include <gtest/gtest.h>

#include <GL/gl.h>

#include <cmath>
#include <filesystem>

#include "assets/3ds.h"
#include "scene/shader.h"
#include "shell/bvconfig.h"
#include "support/bvtest_fixtures.h"
#include "support/glreads.h"
#include "writers/writer3ds.h"

using bvtest::Pixel;
using bvtest::readPixel;
using bvtest::ScratchDir;
namespace w = writer3ds;

namespace {

const int SIZE = 64;
const float HALF = 8;  // the views show -8..8 in both directions

// Looking straight down on the ground: window x grows with world x, window y
// with -z.
void topView() {
    bvtest::topView(SIZE, SIZE, 0, 0, HALF, HALF, 1000);
    glClearColor(0.2f, 0.2f, 0.2f, 1);
    glClearStencil(0);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
}

int wx(float x) { return (int)((x + HALF) / (2 * HALF) * SIZE); }
int wz(float z) { return (int)((-z + HALF) / (2 * HALF) * SIZE); }

int stencilAt(float x, float z) {
    unsigned char s = 0;
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(wx(x), wz(z), 1, 1, GL_STENCIL_INDEX, GL_UNSIGNED_BYTE, &s);
    return s;
}

class Shadows : public ::testing::Test {
protected:
    void SetUp() override { bvtest::openWindow(SIZE, SIZE); }
    ScratchDir dir;
};

}  // namespace

TEST_F(Shadows, ATriangleMarksTheStencilWhereTheLightThrowsIt) {
    topView();
    // Halfway up to the light, the shadow is the triangle scaled by two about
    // the point below the light.
    castShadow(1, 5, -1, 3, 5, -1, 1, 5, -3, 0, 0, 10, 0);
    glFinish();
    EXPECT_EQ(stencilAt(3.3f, -3.3f), 1);
    EXPECT_EQ(stencilAt(2.3f, -5.0f), 1);
    EXPECT_EQ(stencilAt(1.5f, -1.5f), 0);  // under the triangle itself the light still shines
    EXPECT_EQ(stencilAt(-3, 3), 0);
    // Only the stencil: the picture is as it was.
    Pixel p = readPixel(wx(3.3f), wz(-3.3f));
    EXPECT_EQ(p.r, 51);
    EXPECT_EQ(p.g, 51);
    EXPECT_EQ(p.b, 51);
    // What the frame draws next finds the depth test and culling on, the stencil test off.
    EXPECT_TRUE(glIsEnabled(GL_DEPTH_TEST));
    EXPECT_TRUE(glIsEnabled(GL_CULL_FACE));
    EXPECT_FALSE(glIsEnabled(GL_STENCIL_TEST));
    GLboolean mask[4];
    glGetBooleanv(GL_COLOR_WRITEMASK, mask);
    EXPECT_TRUE(mask[0] && mask[1] && mask[2] && mask[3]);
}

TEST_F(Shadows, AShadowIsMarkedEvenUnderWhatIsAlreadyDrawn) {
    topView();
    // A roof above the ground already fills the depth buffer there.
    glEnable(GL_DEPTH_TEST);
    glColor3f(1, 1, 1);
    glBegin(GL_QUADS);
    glVertex3f(-8, 50, -8);
    glVertex3f(-8, 50, 8);
    glVertex3f(8, 50, 8);
    glVertex3f(8, 50, -8);
    glEnd();
    castShadow(1, 5, -1, 3, 5, -1, 1, 5, -3, 0, 0, 10, 0);
    glFinish();
    EXPECT_EQ(stencilAt(3.3f, -3.3f), 1);
}

TEST_F(Shadows, AVertexAsHighAsTheLightGoesToInfinity) {
    float x = 1, z = 2;
    shadowpoint(x, 750, z, 0, -500, 750, -200);
    EXPECT_TRUE(std::isinf(x));
    EXPECT_TRUE(std::isinf(z));
    // The light where the race keeps it is far above anything on the track.
    x = 1;
    z = 2;
    shadowpoint(x, 3, z, 0, -500, 750, -200);
    EXPECT_TRUE(std::isfinite(x));
    EXPECT_NEAR(x, 1 - 3.0 / 747 * (-501), 1e-4);
    EXPECT_NEAR(z, 2 - 3.0 / 747 * (-202), 1e-4);
    // Onto a ground that is not at 0.
    x = 2;
    z = -2;
    shadowpoint(x, 6, z, 1, 0, 11, 0);
    EXPECT_FLOAT_EQ(x, 4);
    EXPECT_FLOAT_EQ(z, -4);
}

namespace {

// Looking along -z at the x-y plane: window x grows with world x, y with height.
void frontView() {
    glViewport(0, 0, SIZE, SIZE);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(-10, 10, -10, 10, -1000, 1000);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glClearColor(0, 0, 0.5f, 1);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
}

// Whether a white pixel is within one pixel of world (x, y) in the front view.
bool whiteNear(float x, float y) {
    int cx = (int)((x + 10) / 20 * SIZE), cy = (int)((y + 10) / 20 * SIZE);
    for (int dy = -1; dy <= 1; dy++)
        for (int dx = -1; dx <= 1; dx++) {
            Pixel p = readPixel(cx + dx, cy + dy);
            if (p.r == 255 && p.g == 255 && p.b == 255) return true;
        }
    return false;
}

int whitePixels() {
    int n = 0;
    for (int y = 0; y < SIZE; y++)
        for (int x = 0; x < SIZE; x++) {
            Pixel p = readPixel(x, y);
            if (p.r == 255 && p.g == 255 && p.b == 255) n++;
        }
    return n;
}

}  // namespace

TEST_F(Shadows, ProjectorsShowTheThreeRaysToTheLight) {
    const float lx = 8, ly = 8;
    // Ground at -8; the vertices' shadows fall at x = -7, -4 and 0.
    float gx[3] = {-7, -4, 0};
    auto shadowOf = [&](float target, float y) {
        // The vertex at height y whose shadow lands at target.
        float k = (y + 8) / (ly - y);
        return (target + k * lx) / (1 + k);
    };
    float x1 = shadowOf(gx[0], -6), x2 = shadowOf(gx[1], -6), x3 = shadowOf(gx[2], -5);
    for (unsigned int projectors : {1u, 0u}) {
        config.shadowprojectors = projectors;
        frontView();
        castShadow(x1, -6, 0, x2, -6, 0, x3, -5, 0, -8, lx, ly, 0);
        glFinish();
        for (int i = 0; i < 3; i++) {
            float mx = (gx[i] + lx) / 2, my = (-8 + ly) / 2;
            EXPECT_EQ(whiteNear(mx, my), projectors == 1) << "ray " << i << " projectors " << projectors;
        }
        if (projectors)
            EXPECT_GT(whitePixels(), 3 * 30);
        else
            EXPECT_EQ(whitePixels(), 0);
    }
}

TEST(ShadowPlacement, EachStepAgainstHandWorkedVertices) {
    // (p, q, r) = (1, 2, 3), 30 degrees at 57.3 degrees per radian.
    tVector3 v = {1, 2, 3};
    tVector3 s0 = shadowplace(v, 0, 0, 0, 30, 0, 0, 0, 3, 3);
    EXPECT_NEAR(s0.x, 1.0, 1e-5);
    EXPECT_NEAR(s0.y, 3.5980673, 1e-5);
    EXPECT_NEAR(s0.z, -0.2321896, 1e-5);
    tVector3 s1 = shadowplace(v, 0, 0, 0, 0, 30, 0, 3, 1, 3);
    EXPECT_NEAR(s1.x, 0.1338885, 1e-5);
    EXPECT_NEAR(s1.y, 3.0, 1e-5);
    EXPECT_NEAR(s1.z, 2.2320560, 1e-5);
    tVector3 s2 = shadowplace(v, 0, 0, 0, 0, 0, 30, 3, 3, 2);
    EXPECT_NEAR(s2.x, -0.6338551, 1e-5);
    EXPECT_NEAR(s2.y, 3.0981007, 1e-5);
    EXPECT_NEAR(s2.z, 2.0, 1e-5);
    // Roll, pitch, heading in that order, then the move.
    tVector3 c = shadowplace(v, 10, 20, 30, -50, 200, 30, 2, 0, 1);
    EXPECT_NEAR(c.x, 10 + 0.6548243, 1e-5);
    EXPECT_NEAR(c.y, 20 + 0.4595670, 1e-5);
    EXPECT_NEAR(c.z, 30 + 3.6551338, 1e-5);
    // The order counts.
    tVector3 d = shadowplace(v, 10, 20, 30, -50, 200, 30, 1, 0, 2);
    EXPECT_GT(std::fabs(d.x - c.x) + std::fabs(d.z - c.z), 0.1);
}

TEST(ShadowPlacement, NoStepsMeansTheMoveAlone) {
    tVector3 v = {1, 2, 3};
    // Angles are ignored without their steps; the stored q becomes world z.
    tVector3 s = shadowplace(v, 3, 4, 5, 40, 50, 60, 3, 3, 3);
    EXPECT_FLOAT_EQ(s.x, 4);
    EXPECT_FLOAT_EQ(s.y, 7);
    EXPECT_FLOAT_EQ(s.z, 7);
    tVector3 t = shadowplace(v, 3, 4, 5, 40, 50, 60, 7, 99, 4);
    EXPECT_FLOAT_EQ(t.x, 4);
    EXPECT_FLOAT_EQ(t.y, 7);
    EXPECT_FLOAT_EQ(t.z, 7);
}

TEST(ShadowPlacement, TheHeadingStepPlusAHalfTurnCastsWhereTheModelIsDrawn) {
    // Drawing turns the file's z-up model to y-up and then about the vertical.
    for (float a : {0.0f, 35.0f, 120.0f, -75.0f}) {
        tVector3 v = {0.7f, -1.3f, 0.4f};
        float c = cosf(a / 57.3f), s = sinf(a / 57.3f);
        // glRotatef(a, 0, 1, 0) of the drawn point (p, r, -q).
        float X = v.x, Z = -v.y;
        float dx = X * c + Z * s, dz = -X * s + Z * c;
        tVector3 w = shadowplace(v, 5, 1, -2, 0, a + 180, 0, 3, 1, 3);
        // At 57.3 degrees to the radian the half turn falls short by 0.013 degrees.
        EXPECT_NEAR(w.x, 5 + dx, 1e-3) << a;
        EXPECT_NEAR(w.y, 1 + v.z, 1e-4) << a;
        EXPECT_NEAR(w.z, -2 + dz, 1e-3) << a;
        // Without the half turn it is another place altogether.
        tVector3 u = shadowplace(v, 5, 1, -2, 0, a, 0, 3, 1, 3);
        EXPECT_GT(std::fabs(u.x - w.x) + std::fabs(u.z - w.z), 0.5) << a;
    }
}

namespace {

// A flat square of side 2 lying at height h in the game (file z is up).
void writeSquare(const std::string& path, float h, bool uv) {
    w::Model m;
    int mat = uv ? m.material("Pic", 255, 255, 255, "pic.tga") : -1;
    w::Object& o = m.object("Square", mat);
    if (uv) {
        o.vertex(-1, -1, h, 0, 0);
        o.vertex(1, -1, h, 1, 0);
        o.vertex(1, 1, h, 1, 1);
        o.vertex(-1, 1, h, 0, 1);
    } else {
        o.vertex(-1, -1, h);
        o.vertex(1, -1, h);
        o.vertex(1, 1, h);
        o.vertex(-1, 1, h);
    }
    o.quad(0, 1, 2, 3);
    w::write3DS(m, path);
}

// A 2 x 2 texture: red at (0, 0), blue elsewhere, sampled without blending.
unsigned int cornerTexture() {
    unsigned int t;
    glGenTextures(1, &t);
    glBindTexture(GL_TEXTURE_2D, t);
    unsigned char px[12] = {255, 0, 0, 0, 0, 255, 0, 0, 255, 0, 0, 255};
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGB, 2, 2, 0, GL_RGB, GL_UNSIGNED_BYTE, px);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    return t;
}

}  // namespace

TEST_F(Shadows, AModelIsCastFaceByFaceWhereItIsPlaced) {
    std::filesystem::create_directories("Data/Models");
    writeSquare("Data/Models/square.3DS", 1, false);
    s3DS square = {};
    square.load("Data/Models/square.3DS", "NO_LOAD");
    ASSERT_EQ(square.g_3DModel.numOfObjects, 1);
    topView();
    // Light straight above (3, 3, 3): the square's shadow is the square at
    // (3, 3) grown by 1000 / 999, stored q giving world z.
    square.castshadow(0, 3, 1000, 3, 3, 0, 3, 50, 60, 70, 3, 3, 3);
    glFinish();
    EXPECT_EQ(stencilAt(3, 3), 1);
    EXPECT_EQ(stencilAt(3.8f, 3.8f), 1);
    EXPECT_EQ(stencilAt(2.2f, 2.2f), 1);
    EXPECT_EQ(stencilAt(4.3f, 3), 0);
    EXPECT_EQ(stencilAt(0, 0), 0);
    square.free();
}

TEST_F(Shadows, AMaskWithoutTextureCoordinatesTakesTheCornerOfThePicture) {
    std::filesystem::create_directories("Data/Models");
    writeSquare("Data/Models/plain.3DS", 1, false);
    s3DS square = {};
    square.load("Data/Models/plain.3DS", "NO_LOAD");
    ASSERT_FALSE(square.g_3DModel.pObject[0].bHasTexture);
    topView();
    unsigned int t = cornerTexture();
    glEnable(GL_TEXTURE_2D);
    glColor3f(1, 1, 1);
    square.castshadowmask(0, 0, 1000, 0, 0, 0, 0, 0, 0, 0, 3, 3, 3);
    glDisable(GL_TEXTURE_2D);
    glFinish();
    for (float x : {-0.8f, 0.0f, 0.8f}) {
        Pixel p = readPixel(wx(x), wz(x));
        EXPECT_EQ(p.r, 255) << x;
        EXPECT_EQ(p.b, 0) << x;
    }
    EXPECT_EQ(readPixel(wx(3), wz(3)).r, 51);  // outside the shadow
    EXPECT_TRUE(glIsEnabled(GL_CULL_FACE));
    glDeleteTextures(1, &t);
    square.free();
}

TEST_F(Shadows, AMaskCarriesTheModelsOwnTextureCoordinates) {
    std::filesystem::create_directories("Data/Models");
    writeSquare("Data/Models/pic.3DS", 1, true);
    s3DS square = {};
    square.load("Data/Models/pic.3DS", "NO_LOAD");
    ASSERT_TRUE(square.g_3DModel.pObject[0].bHasTexture);
    topView();
    unsigned int t = cornerTexture();
    glEnable(GL_TEXTURE_2D);
    glColor3f(1, 1, 1);
    square.castshadowmask(0, 0, 1000, 0, 0, 0, 0, 0, 0, 0, 3, 3, 3);
    glDisable(GL_TEXTURE_2D);
    glFinish();
    // Texture (0, 0) is at file (-1, -1), which is world (-1, z = -1).
    Pixel low = readPixel(wx(-0.5f), wz(-0.5f));
    EXPECT_EQ(low.r, 255);
    EXPECT_EQ(low.b, 0);
    Pixel high = readPixel(wx(0.5f), wz(0.5f));
    EXPECT_EQ(high.r, 0);
    EXPECT_EQ(high.b, 255);
    glDeleteTextures(1, &t);
    square.free();
}

TEST(ShadowVolume, SidesReachTwiceAsFarFromTheLight) {
    bvtest::openWindow(SIZE, SIZE);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(-100, 100, -100, 100, -1000, 1000);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    GLfloat buffer[256];
    glFeedbackBuffer(256, GL_3D, buffer);
    glRenderMode(GL_FEEDBACK);
    castVolumetricShadow(1, 1, 0, 3, 1, 0, 1, 3, 0, 0, 0, 10, 0);
    int n = glRenderMode(GL_RENDER);
    // Three triangles: a token, a count and three vertices of three values each.
    ASSERT_EQ(n, 3 * (2 + 9));
    for (int t = 0; t < 3; t++) EXPECT_EQ(buffer[t * 11 + 1], 3.0f);
    // The first from the light through the far points of the first edge,
    // (2, -8) and (6, -8), in window coordinates of the 64-pixel view.
    auto win = [](float v) { return (v + 100) / 200 * SIZE; };
    EXPECT_NEAR(buffer[2], win(0), 1e-3);
    EXPECT_NEAR(buffer[3], win(10), 1e-3);
    EXPECT_NEAR(buffer[5], win(2), 1e-3);
    EXPECT_NEAR(buffer[6], win(-8), 1e-3);
    EXPECT_NEAR(buffer[8], win(6), 1e-3);
    EXPECT_NEAR(buffer[9], win(-8), 1e-3);
}

// Display-list models in the game's real window: colours, textures, borrowed
// textures, the turn from the files' z-up axes, and the log lines of loading.

#include <gtest/gtest.h>

#include <GL/gl.h>
#include <GL/glu.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "models_fixtures.h"
#include "shell/blackbox.h"
#include "shell/bvconfig.h"

using namespace models;
using bvtest::Pixel;
using bvtest::readPixel;
using bvtest::ScratchDir;

namespace {

const int SIZE = 64;

// A flat quad in the file's x-z plane, which the turn makes the game's x-y plane.
void addPanel(w::Object& o, float x0, float x1, float z0, float z1, bool uv) {
    if (uv) {
        o.vertex(x0, 0, z0, 0, 0);
        o.vertex(x1, 0, z0, 1, 0);
        o.vertex(x1, 0, z1, 1, 1);
        o.vertex(x0, 0, z1, 0, 1);
    } else {
        o.vertex(x0, 0, z0);
        o.vertex(x1, 0, z0);
        o.vertex(x1, 0, z1);
        o.vertex(x0, 0, z1);
    }
    o.quad(0, 1, 2, 3);
}

// Left panel red, right panel blue, neither textured.
w::Model pairModel() {
    w::Model m;
    int red = m.material("Red", 200, 30, 30);
    int blue = m.material("Blue", 30, 40, 210);
    addPanel(m.object("Left", red), -1.8f, -0.2f, -1, 1, false);
    addPanel(m.object("Right", blue), 0.2f, 1.8f, -1, 1, false);
    return m;
}

// Left panel plain green, right panel textured with sign.tga.
w::Model signModel() {
    w::Model m;
    int green = m.material("Green", 20, 180, 40);
    int sign = m.material("Sign", 255, 255, 255, "sign.tga");
    addPanel(m.object("Plain", green), -1.8f, -0.2f, -1, 1, false);
    addPanel(m.object("Board", sign), 0.2f, 1.8f, -1, 1, true);
    return m;
}

void writeTGA(const std::string& path, int w, int h, unsigned char r, unsigned char g, unsigned char b) {
    std::string data("\0\0\2\0\0\0\0\0\0\0\0\0", 12);
    data += (char)(w & 255);
    data += (char)(w >> 8);
    data += (char)(h & 255);
    data += (char)(h >> 8);
    data += (char)24;
    data += (char)0;
    for (int i = 0; i < w * h; i++) {
        data += (char)b;
        data += (char)g;
        data += (char)r;
    }
    bvtest::writeFile(path, data);
}

class ModelsDraw : public ::testing::Test {
protected:
    void SetUp() override {
        std::filesystem::create_directories("Data/Models");
        std::filesystem::create_directories("Data/Textures");
        blackbox.init("Data/blackbox.bvd", false);
        bvtest::openWindow(width(), height());
        writeTGA("Data/Textures/sign.tga", 8, 8, 255, 220, 0);
        ASSERT_TRUE(w::write3DS(pairModel(), "Data/Models/pair.3DS"));
        ASSERT_TRUE(w::write3DS(signModel(), "Data/Models/sign.3DS"));
    }

    // Loading draws the loading bar; afterwards we look straight down -z at
    // the square -2..2 with nothing but plain colours.
    void view() {
        glViewport(0, 0, SIZE, SIZE);
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        glOrtho(-2, 2, -2, 2, -10, 10);
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        glDisable(GL_LIGHTING);
        glDisable(GL_DEPTH_TEST);
        glDisable(GL_CULL_FACE);
        glDisable(GL_TEXTURE_2D);
        glDisable(GL_BLEND);
        glClearColor(0, 0, 0, 1);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    }

    virtual int width() const { return SIZE; }
    virtual int height() const { return SIZE; }

    std::string log() { return bvtest::readFile("Data/blackbox.bvd"); }

    ScratchDir dir;
};

::testing::AssertionResult near(Pixel p, int r, int g, int b, int tolerance = 2) {
    if (std::abs(p.r - r) <= tolerance && std::abs(p.g - g) <= tolerance && std::abs(p.b - b) <= tolerance)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "pixel (" << p.r << ", " << p.g << ", " << p.b << "), wanted (" << r
                                         << ", " << g << ", " << b << ")";
}

}  // namespace

TEST_F(ModelsDraw, UntexturedMaterialsShowTheirOwnColours) {
    s3DS model = {};
    model.load("Data/Models/pair.3DS", "Data/Textures/");
    model.initlist(true, true);
    view();
    glColor3ub(0, 255, 0);
    model.drawlist();
    glFinish();
    EXPECT_TRUE(near(readPixel(16, 32), 200, 30, 30));
    EXPECT_TRUE(near(readPixel(48, 32), 30, 40, 210));
    EXPECT_TRUE(near(readPixel(32, 32), 0, 0, 0));
    EXPECT_TRUE(near(readPixel(16, 60), 0, 0, 0));
    EXPECT_NE(log().find("Loading model f : Data/Models/pair.3DS [OK]\n"), std::string::npos) << log();
    model.free();
}

TEST_F(ModelsDraw, WithoutBindColoursTheCallersColourShows) {
    s3DS model = {};
    model.load("Data/Models/pair.3DS", "Data/Textures/");
    model.initlist(false, true);
    view();
    glColor3ub(0, 255, 0);
    model.drawlist();
    glFinish();
    EXPECT_TRUE(near(readPixel(16, 32), 0, 255, 0));
    EXPECT_TRUE(near(readPixel(48, 32), 0, 255, 0));
    // The same list takes whatever colour is current when it is replayed.
    view();
    glColor3ub(255, 0, 255);
    model.drawlist();
    glFinish();
    EXPECT_TRUE(near(readPixel(16, 32), 255, 0, 255));
    model.free();
}

TEST_F(ModelsDraw, TexturesAreLoadedAndBound) {
    s3DS model = {};
    model.load("Data/Models/sign.3DS", "Data/Textures/");
    EXPECT_EQ(model.Texture[0], 0u);
    EXPECT_NE(model.Texture[1], 0u);
    EXPECT_EQ(model.g_3DModel.pMaterials[0].texureId, 0);
    EXPECT_EQ(model.g_3DModel.pMaterials[1].texureId, 1);
    std::string text = log();
    EXPECT_NE(text.find("Loading model f : Data/Models/sign.3DS [OK]\n"), std::string::npos) << text;
    EXPECT_NE(text.find("Loading texture f : Data/Textures/sign.tga [OK]\n"), std::string::npos) << text;

    model.initlist(true, true);
    view();
    glColor3ub(255, 0, 0);
    model.drawlist();
    glFinish();
    EXPECT_TRUE(near(readPixel(16, 32), 20, 180, 40));  // material colour
    EXPECT_TRUE(near(readPixel(48, 32), 255, 220, 0));  // white times the picture
    // Binding textures leaves texturing off behind it.
    EXPECT_FALSE(glIsEnabled(GL_TEXTURE_2D));

    unsigned int list = model.LIST, texture = model.Texture[1];
    model.free();
    EXPECT_FALSE(glIsList(list));
    EXPECT_FALSE(glIsTexture(texture));
    EXPECT_EQ(model.g_3DModel.numOfObjects, 0);
    model.free();  // a second free finds nothing to release
}

TEST_F(ModelsDraw, WithoutBindTexturesTheCallersTextureStateStays) {
    s3DS model = {};
    model.load("Data/Models/sign.3DS", "Data/Textures/");
    model.initlist(false, false);
    view();
    glColor3ub(255, 255, 255);
    glEnable(GL_TEXTURE_2D);
    glBindTexture(GL_TEXTURE_2D, model.Texture[1]);
    model.drawlist();
    glFinish();
    EXPECT_TRUE(glIsEnabled(GL_TEXTURE_2D));
    // The caller's texture covers the plain object too (its coordinates are all 0).
    EXPECT_TRUE(near(readPixel(16, 32), 255, 220, 0));
    EXPECT_TRUE(near(readPixel(48, 32), 255, 220, 0));
    glDisable(GL_TEXTURE_2D);
    model.free();
}

TEST_F(ModelsDraw, NoLoadLoadsNoTexturesButNumbersTheMaterials) {
    s3DS model = {};
    model.load("Data/Models/sign.3DS", "NO_LOAD");
    for (unsigned int i = 0; i < MAX_3DSTEXTURES; i++) EXPECT_EQ(model.Texture[i], 0u) << i;
    ASSERT_EQ(model.g_3DModel.numOfMaterials, 2);
    EXPECT_EQ(model.g_3DModel.pMaterials[0].texureId, 0);
    EXPECT_EQ(model.g_3DModel.pMaterials[1].texureId, 1);
    std::string text = log();
    EXPECT_NE(text.find("Loading model f : Data/Models/sign.3DS [OK]\n"), std::string::npos) << text;
    EXPECT_EQ(text.find("Loading texture"), std::string::npos) << text;
    EXPECT_TRUE(blackbox.status);
    model.free();
}

TEST_F(ModelsDraw, BorrowedTexturesFollowTheirOwner) {
    s3DS owner = {}, borrower = {};
    owner.load("Data/Models/sign.3DS", "Data/Textures/");
    borrower.load("Data/Models/sign.3DS", "NO_LOAD");
    owner.initlist(false, true);
    borrower.initlistExtTextures(false, true, &owner);
    view();
    glColor3ub(255, 255, 255);
    borrower.drawlist();
    glFinish();
    EXPECT_TRUE(near(readPixel(48, 32), 255, 220, 0));

    // Freeing the borrower releases none of the owner's textures.
    unsigned int texture = owner.Texture[1];
    borrower.free();
    EXPECT_TRUE(glIsTexture(texture));
    borrower.load("Data/Models/sign.3DS", "NO_LOAD");
    borrower.initlistExtTextures(false, true, &owner);

    // Once the owner is gone the borrower's faces are no longer textured.
    owner.free();
    view();
    glColor3ub(255, 0, 255);
    borrower.drawlist();
    glFinish();
    Pixel p = readPixel(48, 32);
    EXPECT_FALSE(near(p, 255, 220, 0, 30));
    EXPECT_TRUE(near(p, 255, 0, 255));
    borrower.free();
}

TEST_F(ModelsDraw, FileZUpBecomesGameYUp) {
    w::Model m;
    int white = m.material("White", 255, 255, 255);
    w::Object& o = m.object("Marker", white);
    o.vertex(0, 0, 1);  // the point we follow
    o.vertex(0.3f, 0, 1.4f);
    o.vertex(-0.3f, 0, 1.4f);
    o.face(0, 1, 2);
    ASSERT_TRUE(w::write3DS(m, "Data/Models/marker.3DS"));
    s3DS model = {};
    model.load("Data/Models/marker.3DS", "NO_LOAD");
    model.initlist(true, false);
    view();

    // Where the vertices land on the screen, from the GL pipeline itself.
    GLfloat feedback[64];
    glFeedbackBuffer(64, GL_3D, feedback);
    glRenderMode(GL_FEEDBACK);
    model.drawlist();
    int n = glRenderMode(GL_RENDER);
    ASSERT_GE(n, 11);
    ASSERT_EQ(feedback[0], (GLfloat)GL_POLYGON_TOKEN);
    ASSERT_EQ(feedback[1], 3.f);
    // Game (0, 1, 0) in the -2..2 view: column 32, row 48, depth halfway.
    EXPECT_NEAR(feedback[2], 32.f, 1e-3);
    EXPECT_NEAR(feedback[3], 48.f, 1e-3);
    EXPECT_NEAR(feedback[4], 0.5f, 1e-5);

    // And on the screen: above the centre, not at it.
    model.drawlist();
    glFinish();
    EXPECT_TRUE(near(readPixel(32, 52), 255, 255, 255));
    EXPECT_TRUE(near(readPixel(32, 32), 0, 0, 0));
    model.free();
}

TEST_F(ModelsDraw, MissingModelIsReportedAndDrawsNothing) {
    s3DS model = {};
    testing::internal::CaptureStdout();
    model.load("Data/Models/nowhere.3DS", "Data/Textures/");
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_NE(out.find("NOT FOUND: Data/Models/nowhere.3DS\n"), std::string::npos) << out;
    EXPECT_NE(log().find("Loading model f : Data/Models/nowhere.3DS [  ]\n"), std::string::npos) << log();
    EXPECT_FALSE(blackbox.status);
    model.initlist(true, true);
    EXPECT_NE(model.LIST, 0u);
    view();
    model.drawlist();
    glFinish();
    for (int y = 4; y < SIZE; y += 8)
        for (int x = 4; x < SIZE; x += 8) ASSERT_TRUE(near(readPixel(x, y), 0, 0, 0)) << x << "," << y;
    model.free();
}

TEST_F(ModelsDraw, ConfigPathIsPrefixed) {
    std::filesystem::create_directories("Elsewhere/Data/Models");
    std::filesystem::create_directories("Elsewhere/Data/Textures");
    std::filesystem::copy_file("Data/Models/sign.3DS", "Elsewhere/Data/Models/sign.3DS");
    std::filesystem::copy_file("Data/Textures/sign.tga", "Elsewhere/Data/Textures/sign.tga");
    std::filesystem::remove("Data/Textures/sign.tga");
    snprintf(config.PATH, sizeof config.PATH, "Elsewhere/");
    s3DS model = {};
    model.load("Data/Models/sign.3DS", "Data/Textures/");
    EXPECT_EQ(model.g_3DModel.numOfObjects, 2);
    EXPECT_NE(model.Texture[1], 0u);
    EXPECT_NE(log().find("Loading model f : Data/Models/sign.3DS [OK]"), std::string::npos) << log();
    model.free();
    config.PATH[0] = 0;
}

TEST_F(ModelsDraw, MissingTextureLeavesItsEntryEmpty) {
    std::filesystem::remove("Data/Textures/sign.tga");
    s3DS model = {};
    testing::internal::CaptureStdout();
    model.load("Data/Models/sign.3DS", "Data/Textures/");
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(model.Texture[1], 0u);
    EXPECT_NE(log().find("Loading model f : Data/Models/sign.3DS [OK]"), std::string::npos);
    EXPECT_NE(log().find("Loading texture f : Data/Textures/sign.tga [  ]"), std::string::npos) << log();
    model.initlist(true, true);
    view();
    model.drawlist();
    glFinish();
    // Drawn white, untextured.
    EXPECT_TRUE(near(readPixel(48, 32), 255, 255, 255));
    model.free();
}

TEST_F(ModelsDraw, MoreThanNinetyNineMaterialsAreRefused) {
    w::Model m;
    for (int i = 0; i < 100; i++) m.material("M" + std::to_string(i), 255, (unsigned char)i, 0);
    addPanel(m.object("Panel", 99), -1, 1, -1, 1, false);
    ASSERT_TRUE(w::write3DS(m, "Data/Models/many.3DS"));
    s3DS model = {};
    model.load("Data/Models/many.3DS", "Data/Textures/");
    EXPECT_EQ(model.g_3DModel.numOfObjects, 0);
    EXPECT_EQ(model.g_3DModel.numOfMaterials, 0);
    EXPECT_TRUE(model.g_3DModel.pObject.empty());
    EXPECT_NE(log().find("Loading model f : Data/Models/many.3DS (more than 99 materials) [  ]"), std::string::npos)
        << log();
    EXPECT_FALSE(blackbox.status);
    model.initlist(true, true);
    view();
    model.drawlist();
    glFinish();
    EXPECT_TRUE(near(readPixel(32, 32), 0, 0, 0));
    model.free();

    // Ninety-nine are fine.
    m.materials.pop_back();
    m.objects[0].material = 98;
    ASSERT_TRUE(w::write3DS(m, "Data/Models/many.3DS"));
    s3DS fine = {};
    fine.load("Data/Models/many.3DS", "Data/Textures/");
    EXPECT_EQ(fine.g_3DModel.numOfMaterials, 99);
    fine.initlist(true, true);
    view();
    fine.drawlist();
    glFinish();
    EXPECT_TRUE(near(readPixel(32, 32), 255, 98, 0));
    fine.free();
}

TEST_F(ModelsDraw, DamagedModelIsReportedAndDrawsNothing) {
    std::string bytes = bvtest::readFile("Data/Models/pair.3DS");
    bvtest::writeFile("Data/Models/pair.3DS", bytes.substr(0, bytes.size() / 2));
    s3DS model = {};
    testing::internal::CaptureStdout();
    model.load("Data/Models/pair.3DS", "Data/Textures/");
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_NE(out.find("NOT FOUND: Data/Models/pair.3DS"), std::string::npos);
    EXPECT_NE(log().find("Loading model f : Data/Models/pair.3DS [  ]"), std::string::npos);
    EXPECT_EQ(model.g_3DModel.numOfObjects, 0);
    model.initlist(true, true);
    view();
    model.drawlist();
    glFinish();
    EXPECT_TRUE(near(readPixel(16, 32), 0, 0, 0));
    model.free();
}

// A small scene of a generated model, lit and in perspective, the way the game
// shows its karts. Set BV_MODELS_SHOT to a file name to keep the picture (PPM).
class ModelsScene : public ModelsDraw {
protected:
    int width() const override { return 320; }
    int height() const override { return 240; }
};

TEST_F(ModelsScene, GeneratedModelInPerspective) {
    w::Model m = sampleModel();
    m.materials[1].texture = "sign.tga";
    ASSERT_TRUE(w::write3DS(m, "Data/Models/sample.3DS"));
    s3DS model = {};
    model.load("Data/Models/sample.3DS", "Data/Textures/");
    model.initlist(true, true);

    const int W = 320, H = 240;
    glViewport(0, 0, W, H);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    gluPerspective(45, (double)W / H, 0.1, 300);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    gluLookAt(4, 3.5, 6, 0, 1, 0, 0, 1, 0);
    glClearColor(0.35f, 0.55f, 0.85f, 1);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glEnable(GL_DEPTH_TEST);
    glEnable(GL_CULL_FACE);
    glEnable(GL_LIGHTING);
    glEnable(GL_LIGHT0);
    glEnable(GL_COLOR_MATERIAL);
    glEnable(GL_NORMALIZE);
    GLfloat ambient[] = {0.3f, 0.3f, 0.3f, 1}, diffuse[] = {0.9f, 0.9f, 0.9f, 1}, position[] = {3, 8, 5, 0};
    glLightfv(GL_LIGHT0, GL_AMBIENT, ambient);
    glLightfv(GL_LIGHT0, GL_DIFFUSE, diffuse);
    glLightfv(GL_LIGHT0, GL_POSITION, position);
    model.drawlist();
    glFinish();

    std::vector<unsigned char> pixels((size_t)W * H * 3);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, W, H, GL_RGB, GL_UNSIGNED_BYTE, pixels.data());
    int sky = 0, reddish = 0, yellowish = 0;
    for (size_t i = 0; i < pixels.size(); i += 3) {
        int r = pixels[i], g = pixels[i + 1], b = pixels[i + 2];
        if (std::abs(r - 89) < 3 && std::abs(g - 140) < 3 && std::abs(b - 217) < 3)
            sky++;
        else if (r > 2 * g && r > 2 * b)
            reddish++;
        else if (r > 150 && g > 120 && b < 60)
            yellowish++;
    }
    EXPECT_GT(sky, W * H / 2);
    EXPECT_GT(reddish, 2000);   // the box
    EXPECT_GT(yellowish, 200);  // the textured board on top of it

    if (const char* keep = getenv("BV_MODELS_SHOT")) {
        std::ofstream out(keep, std::ios::binary);
        out << "P6\n" << W << " " << H << "\n255\n";
        for (int y = H - 1; y >= 0; y--) out.write((const char*)&pixels[(size_t)y * W * 3], W * 3);
    }
    model.free();
}

// The roadside models, the finish gantry, the TV camera and stand, and the
// sky, as the track and the scene place and draw them.
//
// Set BV_SHOTS to a directory to keep the pictures (binary PPM).

#include <gtest/gtest.h>

#include <GL/glu.h>

#include <cstdlib>
#include <map>

#include "kartmodels_fixtures.h"
#include "shell/main.h"

using namespace kartmodels;

namespace {

const int W = 480, H = 360;

class KartModelsScenery : public ::testing::Test {
protected:
    void SetUp() override {
        blackbox.init("Data/blackbox.bvd", false);
        bvtest::openWindow(W, H);
        initGL();
        writeModelsAndPictures();
    }
    void TearDown() override {
        for (auto& m : models) m.second.free();
    }

    // Loaded and compiled with the flags the track and the scene use.
    s3DS& model(const std::string& name) {
        auto it = models.find(name);
        if (it != models.end()) return it->second;
        s3DS& m = models[name];
        m = {};
        m.load(modelPath(name).c_str(), "Data/Textures/");
        if (name == "sky")
            m.initlist(true, true);
        else if (name == "adboard" || name == "nature")
            m.initlist(false, false);
        else
            m.initlist(false, true);
        return m;
    }

    void look(float x, float y, float z, float ay, float ax, float r, float g, float b) {
        glViewport(0, 0, W, H);
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        gluPerspective(55, (double)W / H, 0.1, 300);
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        glRotatef(-ax, 1, 0, 0);
        glRotatef(-ay, 0, 1, 0);
        glTranslatef(-x, -y, -z);
        glClearColor(r, g, b, 1);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        glDisable(GL_LIGHTING);
        glDisable(GL_TEXTURE_2D);
        glDisable(GL_FOG);
        glEnable(GL_DEPTH_TEST);  // the loading bar leaves it off
    }

    std::vector<unsigned char> grab(const std::string& shot) {
        glFinish();
        std::vector<unsigned char> px(W * H * 3);
        glPixelStorei(GL_PACK_ALIGNMENT, 1);
        glReadPixels(0, 0, W, H, GL_RGB, GL_UNSIGNED_BYTE, px.data());
        if (const char* dir = std::getenv("BV_SHOTS")) {
            std::string data = "P6\n" + std::to_string(W) + " " + std::to_string(H) + "\n255\n";
            for (int y = H - 1; y >= 0; y--) data.append((const char*)&px[y * W * 3], W * 3);
            bvtest::writeFile(std::string(dir) + "/" + shot + ".ppm", data);
        }
        return px;
    }

    std::map<std::string, s3DS> models;
    bvtest::ScratchDir dir;
};

const char* const ROADSIDE[] = {"barrel", "barrelt", "container", "barrel2", "barrel2t", "nature",
                                "container2", "ad", "sign1", "sign2", "sign3", "sign4"};

}  // namespace

TEST_F(KartModelsScenery, RoadsideModelsStandOnTheGroundAboutTheirOrigin) {
    for (const char* name : ROADSIDE) {
        Box b = bounds(model(name));
        EXPECT_NEAR(b.lo.y, 0, 0.005f) << name;
        EXPECT_GT(b.hi.y, 0.5f) << name;
        EXPECT_LT(b.hi.y, 5.0f) << name;
        // Turned about the vertical through the origin, so the origin is inside.
        EXPECT_TRUE(b.contains({0, b.lo.y, 0}, 0.35f)) << name;
    }
    for (const char* name : {"tfinish", "camerastand"}) EXPECT_NEAR(bounds(model(name)).lo.y, 0, 0.005f) << name;
    // Drums and containers of their real sizes.
    EXPECT_NEAR(bounds(model("barrel")).hi.y, 0.88f, 0.01f);
    EXPECT_NEAR(bounds(model("container")).hi.y, 2.59f, 0.01f);
    EXPECT_NEAR(bounds(model("barrelt")).hi.y, 0.604f, 0.01f);  // lying on its side
}

TEST_F(KartModelsScenery, TheCameraSitsOnItsStand) {
    Box stand = bounds(model("camerastand"));
    EXPECT_NEAR(stand.hi.y, 1.2f, 0.002f);
    Box camera = bounds(model("camera"));
    EXPECT_NEAR(camera.lo.y, 0, 0.002f);  // the pivot is at the bottom of the pan head
    EXPECT_LT(std::fabs(camera.lo.x + camera.hi.x), 0.1f);
    // The lens looks along -z, where a heading of 0 looks.
    Box lens = bounds(model("camera"), nullptr, "Lens"), body = bounds(model("camera"), nullptr, "Body");
    EXPECT_LT(lens.lo.z, body.lo.z - 0.1f);
}

// The trackside view stands its eye 0.05 above the head's pivot and looks
// where the head is aimed: no part of the head may come into that picture.
TEST_F(KartModelsScenery, TheTracksideEyeSeesNothingOfTheCameraItStandsIn) {
    const float eyeY = 0.05f, nearPlane = 0.1f;
    // Half the view's height and width as slopes, the height a little
    // generous: the eye and the head aim from 1.25 and 1.2.
    const float up = 0.6f, side = 0.7f;
    int seen = 0;
    for (const t3DObject& o : model("camera").g_3DModel.pObject)
        for (int i = 0; i < o.numOfVerts; i++) {
            Vec p = gameAxes(o.pVerts[i]);
            float depth = -p.z;
            if (depth < nearPlane) continue;
            if (std::fabs(p.y - eyeY) < up * depth && std::fabs(p.x) < side * depth) seen++;
        }
    EXPECT_EQ(seen, 0);
}

TEST_F(KartModelsScenery, ThePlantIsOneUprightQuadFacingPlusZ) {
    const t3DModel& m = model("nature").g_3DModel;
    ASSERT_EQ(m.numOfObjects, 1);
    const t3DObject& o = m.pObject[0];
    EXPECT_EQ(o.numOfFaces, 2);
    EXPECT_TRUE(o.bHasTexture);  // so that it carries texture coordinates
    Box b = bounds(model("nature"));
    EXPECT_NEAR(b.lo.x, -b.hi.x, 0.001f);
    EXPECT_NEAR(b.lo.z, 0, 0.001f);
    EXPECT_NEAR(b.hi.z, 0, 0.001f);
    float umin = 9, umax = -9, vmin = 9, vmax = -9;
    for (int i = 0; i < o.numOfVerts; i++) {
        umin = std::min(umin, o.pTexVerts[i].x), umax = std::max(umax, o.pTexVerts[i].x);
        vmin = std::min(vmin, o.pTexVerts[i].y), vmax = std::max(vmax, o.pTexVerts[i].y);
        Vec n = gameAxes(o.pNormals[i]);
        EXPECT_NEAR(n.z, 1, 0.001f);
        // The picture stands upright: v grows with height.
        Vec p = gameAxes(o.pVerts[i]);
        EXPECT_NEAR(o.pTexVerts[i].y, (p.y - b.lo.y) / (b.hi.y - b.lo.y), 0.001f);
    }
    EXPECT_EQ(umin, 0);
    EXPECT_EQ(umax, 1);
    EXPECT_EQ(vmin, 0);
    EXPECT_EQ(vmax, 1);
}

TEST_F(KartModelsScenery, TheAdvertisementFillsTheBoardInsideItsStand) {
    const t3DModel& m = model("adboard").g_3DModel;
    for (const t3DObject& o : m.pObject) {
        EXPECT_TRUE(o.bHasTexture);
        for (int i = 0; i < o.numTexVertex; i++) {
            EXPECT_TRUE(o.pTexVerts[i].x == 0 || o.pTexVerts[i].x == 1);
            EXPECT_TRUE(o.pTexVerts[i].y == 0 || o.pTexVerts[i].y == 1);
        }
    }
    Box board = bounds(model("adboard")), stand = bounds(model("ad"));
    EXPECT_GT(board.lo.y, 0.2f);
    EXPECT_GT(board.lo.x, stand.lo.x);
    EXPECT_LT(board.hi.x, stand.hi.x);
    EXPECT_LT(board.hi.y, stand.hi.y);
    // Both faces read the right way round: seen from the front, u grows to the
    // right (+x); seen from behind, to the left.
    ASSERT_GT(m.numOfObjects, 0);
    const t3DObject& o = m.pObject[0];
    for (int i = 0; i < o.numOfVerts; i++) {
        Vec p = gameAxes(o.pVerts[i]), n = gameAxes(o.pNormals[i]);
        bool right = p.x > 0;
        EXPECT_EQ(o.pTexVerts[i].x == 1, n.z > 0 ? right : !right) << i;
    }
}

TEST_F(KartModelsScenery, TheFinishGantrySpansTheStartingGrid) {
    // The gantry stands at x = 27.25; the grid's two columns of 1.24-wide
    // karts are centred 1.24 either side of it and must pass under it.
    Box frame = bounds(model("tfinish"), nullptr, "Frame");
    float gridHalfWidth = 1.24f + 0.62f;
    // The posts are the frame's outermost parts; the beam runs between them.
    EXPECT_LT(frame.lo.x, -gridHalfWidth - 2.0f);
    EXPECT_GT(frame.hi.x, gridHalfWidth + 2.0f);
    const t3DModel& m = model("tfinish").g_3DModel;
    for (const t3DObject& o : m.pObject)
        for (int i = 0; i < o.numOfVerts; i++) {
            Vec p = gameAxes(o.pVerts[i]);
            // Nothing hangs lower than 3.5 over the lane the karts drive in.
            if (std::fabs(p.x) < gridHalfWidth + 1.5f) {
                EXPECT_GT(p.y, 3.5f) << o.strName;
            }
        }
}

TEST_F(KartModelsScenery, TheSkyDomeIsInsideTheFarPlaneFromAnywhereOnTheTrack) {
    const t3DModel& m = model("sky").g_3DModel;
    float nearest = 1e9f, farthest = 0, inner = 1e9f;
    for (const t3DObject& o : m.pObject)
        for (int i = 0; i < o.numOfVerts; i++) {
            Vec p = gameAxes(o.pVerts[i]);
            // The horizon and the skirt below it show the bottom row of the picture.
            if (p.y <= 0.001f) {
                EXPECT_NEAR(o.pTexVerts[i].y, 0, 1e-6f);
            }
            for (float x : {-34.0f, 0.0f, 34.0f})
                for (float z : {-34.0f, 0.0f, 34.0f}) {
                    float d = length3(p, {x, 1.5f, z});
                    farthest = std::max(farthest, d);
                    if (p.y >= 0) nearest = std::min(nearest, d);
                }
            if (p.y >= 0) inner = std::min(inner, length3(p, {0, 0, 0}));
        }
    EXPECT_LT(farthest, 290.0f);
    // Beyond all of the ground (its corners are 48 out), and near enough
    // everywhere for the evening to show through the track's fog.
    EXPECT_GT(inner, 48.5f);
    EXPECT_GT(nearest, 30.0f);
    EXPECT_LT(nearest, 60.0f);
    EXPECT_LT(bounds(model("sky")).lo.y, -30.0f);  // closed well under the ground
}

TEST_F(KartModelsScenery, TheSkyCoversEveryViewAndMeetsTheFogAtTheHorizon) {
    // A sky picture from the fog colour at the bottom to blue at the top.
    std::vector<unsigned char> px;
    for (int y = 0; y < 64; y++)
        for (int x = 0; x < 4; x++) {
            float t = y / 63.0f;
            px.push_back((unsigned char)(128 + t * (230 - 128)));  // blue
            px.push_back((unsigned char)(134 + t * (150 - 134)));  // green
            px.push_back((unsigned char)(134 + t * (60 - 134)));   // red
        }
    bvtest::writeTGA("Data/Textures/Sky.tga", 4, 64, 24, px);
    s3DS& sky = model("sky");
    int views = 0;
    for (float x : {-32.0f, 0.0f, 32.0f})
        for (float z : {-32.0f, 32.0f})
            for (float heading : {0.0f, 90.0f, 180.0f, 270.0f})
                for (float pitch : {-30.0f, 0.0f, 60.0f}) {
                    look(x, 1.5f, z, heading, pitch, 1, 0, 1);  // magenta shows a hole
                    glDisable(GL_DEPTH_TEST);
                    sky.drawlist();
                    glEnable(GL_DEPTH_TEST);
                    std::vector<unsigned char> shot = grab(views++ == 0 ? "sky" : "sky_other");
                    int holes = 0;
                    for (int i = 0; i < W * H; i++)
                        if (shot[i * 3] > 200 && shot[i * 3 + 1] < 50 && shot[i * 3 + 2] > 200) holes++;
                    ASSERT_EQ(holes, 0) << "from (" << x << ", " << z << ") heading " << heading << " pitch "
                                        << pitch;
                    if (pitch == 0) {
                        // Level view: the horizon across the middle is the fog colour.
                        bvtest::Pixel h = bvtest::readPixel(W / 2, H / 2 - 2);
                        EXPECT_NEAR(h.r, 134, 8);
                        EXPECT_NEAR(h.g, 134, 8);
                        EXPECT_NEAR(h.b, 128, 8);
                    }
                    if (pitch == 60) {
                        bvtest::Pixel up = bvtest::readPixel(W / 2, H - 2);
                        EXPECT_GT(up.b, up.r + 80);
                    }
                }
}

TEST_F(KartModelsScenery, TheRoadsideAsTheTrackDrawsIt) {
    // Distinct pictures so that each model shows its own surfaces.
    bvtest::writeSolidTGA("Data/Textures/Barrel.tga", 8, 8, 200, 40, 30);
    bvtest::writeSolidTGA("Data/Textures/Barrel2.tga", 8, 8, 40, 70, 200);
    bvtest::writeSolidTGA("Data/Textures/Container.tga", 8, 8, 60, 140, 90);
    bvtest::writeSolidTGA("Data/Textures/Wood.tga", 8, 8, 150, 110, 60);
    bvtest::writeSolidTGA("Data/Textures/Metal.tga", 8, 8, 170, 170, 175);
    bvtest::writeSolidTGA("Data/Textures/Stone.tga", 8, 8, 120, 120, 110);
    bvtest::writeSolidTGA("Data/Textures/Tyre.tga", 8, 8, 25, 25, 25);
    bvtest::writeSolidTGA("Data/Textures/Finish.tga", 8, 8, 240, 240, 240);
    std::vector<unsigned char> signs;
    for (int y = 0; y < 8; y++)
        for (int x = 0; x < 8; x++) {
            // Quarters: bottom left blue, bottom right green, top left red, top right yellow.
            bool top = y >= 4, right = x >= 4;
            unsigned char r = top ? 230 : 0, g = right ? 220 : 0, b = (!top && !right) ? 230 : 0;
            signs.push_back(b), signs.push_back(g), signs.push_back(r);
        }
    bvtest::writeTGA("Data/Textures/Signs.tga", 8, 8, 24, signs);
    GLfloat ambient[] = {0.3f, 0.3f, 0.3f, 1}, diffuse[] = {1, 1, 1, 1};
    const char* row[] = {"barrel", "barrelt", "barrel2", "barrel2t", "container2", "camerastand",
                         "sign1",  "sign2",   "sign3",   "sign4",    "ad",         "container"};
    // Loading shows the loading bar, so everything is loaded before drawing.
    for (const char* name : row) model(name);
    for (const char* name : {"adboard", "camera", "tfinish", "nature"}) model(name);
    look(0, 2.2f, 9.0f, 0, -8, 0.525f, 0.525f, 0.5f);
    GLfloat pos[] = {-500, 750, 200, 1};
    glLightfv(GL_LIGHT0, GL_AMBIENT, ambient);
    glLightfv(GL_LIGHT0, GL_DIFFUSE, diffuse);
    glLightfv(GL_LIGHT0, GL_POSITION, pos);
    glEnable(GL_LIGHT0);
    glEnable(GL_LIGHTING);
    glColor3f(1, 1, 1);
    for (int i = 0; i < 12; i++) {
        glPushMatrix();
        glTranslatef(-4.5f + (i % 6) * 1.8f, 0, i < 6 ? 3.0f : -1.0f);
        if (std::string(row[i]) == "container") glTranslatef(2.0f, 0, -2.5f);
        model(row[i]).drawlist();
        if (std::string(row[i]) == "ad") {
            glEnable(GL_TEXTURE_2D);
            glBindTexture(GL_TEXTURE_2D, model("sign1").Texture[0]);
            model("adboard").drawlist();
            glDisable(GL_TEXTURE_2D);
        }
        if (std::string(row[i]) == "camerastand") {
            glTranslatef(0, 1.2f, 0);
            glRotatef(-20, 0, 1, 0);
            model("camera").drawlist();
        }
        glPopMatrix();
    }
    std::vector<unsigned char> shot = grab("roadside");
    // Close up, the first sign shows the top left quarter of the sign picture.
    look(0, 0.75f, 2.0f, 0, 0, 0.525f, 0.525f, 0.5f);
    glColor3f(1, 1, 1);
    model("sign1").drawlist();
    std::vector<unsigned char> close = grab("sign1");
    int red = 0;
    for (int i = 0; i < W * H; i++) red += close[i * 3] > 200 && close[i * 3 + 1] < 40 && close[i * 3 + 2] < 40;
    EXPECT_GT(red, W * H / 10);
    auto count = [&](bool (*is)(int, int, int)) {
        int n = 0;
        for (int i = 0; i < W * H; i++)
            if (is(shot[i * 3], shot[i * 3 + 1], shot[i * 3 + 2])) n++;
        return n;
    };
    EXPECT_GT(count([](int r, int g, int b) { return r > 60 && r > 3 * g && r > 3 * b; }), 1000);  // drums, signs
    EXPECT_GT(count([](int r, int g, int b) { return b > 60 && b > 2 * r && b > g + 40; }), 1000);  // blue drums
    EXPECT_GT(count([](int r, int g, int b) { return g > 50 && g > r + 30 && g > b + 15; }), 1000);  // container
    EXPECT_GT(count([](int r, int g, int b) { return r > 60 && g > 60 && b < r / 3; }), 300);          // sign quarters

    // The gantry and a plant, the plant turned to the camera as the track does.
    look(0, 1.6f, 12.0f, 0, 5, 0.525f, 0.525f, 0.5f);
    glEnable(GL_LIGHTING);
    glColor3f(1, 1, 1);
    model("tfinish").drawlist();
    glDisable(GL_LIGHTING);
    glEnable(GL_TEXTURE_2D);
    glBindTexture(GL_TEXTURE_2D, model("barrel2").Texture[0]);
    glPushMatrix();
    glTranslatef(3, 0, -6);
    glRotatef(0, 0, 1, 0);
    model("nature").drawlist();
    glPopMatrix();
    glDisable(GL_TEXTURE_2D);
    shot = grab("gantry");
    EXPECT_GT(count([](int r, int g, int b) { return b > 60 && b > 2 * r && b > g + 40; }), 1000);  // the plant
    EXPECT_GT(count([](int r, int g, int b) { return r > 200 && g > 200 && b > 200; }), 1000);     // the banner
}

// Drawing a kart: which parts, where, at which level of detail, and the arms
// that reach for the steering wheel.
//
// Every part model here is one small marked triangle whose texture
// coordinates name the part and its level of detail; GL feedback then tells
// which models the kart drew, in which order, and where each one landed.

#include <gtest/gtest.h>

#include <GL/gl.h>
#include <GL/glu.h>

#include <cmath>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "kart/gokart.h"
#include "scene/camera.h"
#include "shell/blackbox.h"
#include "shell/bvconfig.h"
#include "shell/main.h"
#include "support/bvtest_fixtures.h"
#include "writers/writer3ds.h"

namespace {

namespace fs = std::filesystem;
namespace w = writer3ds;

// In the order the kart draws them.
enum Part { PLASTIC, BODY, FOOT, HEAD, ARMU, ARMD, CHASIS, FRONTWHEEL, PEDAL, REARWHEEL, STEERINGWHEEL };
const char* const PARTNAMES[] = {"plastic", "body",      "foot",  "head",      "armu",         "armd",
                                 "chasis",  "frontwheel", "pedal", "rearwheel", "steeringwheel"};
enum Level { LO, ME, HI };
const char* const LEVELNAMES[] = {"LO", "ME", "HI"};

struct Drawn {
    int part, level;
    float win[3][3];  // window x, y, z of the triangle's three corners
};

class KartDrawTest : public ::testing::Test {
protected:
    void SetUp() override {
        fs::create_directories("Data/Models");
        fs::create_directories("Data/Textures");
        bvtest::writeSolidTGA("Data/Textures/mark.tga", 8, 8, 255, 255, 255);
        bvtest::writeSolidTGA("Data/Textures/Dheadtv.tga", 8, 8, 255, 0, 255);
        for (int p = 0; p < 11; p++)
            for (int l = 0; l < 3; l++) {
                w::Model m;
                int mat = m.material("Mark", 255, 255, 255, "mark.tga");
                w::Object& o = m.object("Mark", mat);
                float u = p + 0.25f, v = l + 0.25f;
                // File axes, z up: corners at the origin, 0.1 along x and 0.1 up.
                o.vertex(0, 0, 0, u, v);
                o.vertex(0.1f, 0, 0, u, v);
                o.vertex(0, 0, 0.1f, u, v);
                o.face(0, 1, 2);
                w::write3DS(m, std::string("Data/Models/") + LEVELNAMES[l] + PARTNAMES[p] + ".3DS");
            }
        blackbox.init("Data/blackbox.bvd", false);
        config.init("Data/config.bvd");
        bvtest::openWindow(200, 200);
        config.lod = 1;
        config.HIrange[1] = 10;
        config.MErange[1] = 20;
        config.LOrange[1] = 30;
        config.gokartfocus = 0;
        config.CHEAT_0bighead = 0;
        config.CHEAT_0toviksface = 0;
        gokartstaticdata.init();

        // The eye 3 behind and 2 above the kart, looking down at it.
        camera.init(CAMERA_CHASE, 0, 2, 3, -30, 0, 0, 55);
        kart = sGokart();
        kart.ID = 0;
        kart.R = 0;
        kart.G = 0;
        kart.B = 255;
        kart.inviewG = true;
        kart.inviewDist = 5;
    }
    void TearDown() override {
        gokartstaticdata.free();
        gokartstaticdata.freeKept();
    }

    void view() {
        resizeGLwindow3D();
        glDisable(GL_CULL_FACE);
        glDisable(GL_LIGHTING);
        camera.transform();
    }

    std::vector<Drawn> feedback() {
        view();
        std::vector<GLfloat> buf(1 << 16);
        glFeedbackBuffer((GLsizei)buf.size(), GL_3D_COLOR_TEXTURE, buf.data());
        glRenderMode(GL_FEEDBACK);
        kart.draw();
        int n = glRenderMode(GL_RENDER);
        std::vector<Drawn> out;
        const int stride = 3 + 4 + 4;
        for (int i = 0; i < n;) {
            if (buf[i] != GL_POLYGON_TOKEN) {
                ADD_FAILURE() << "unexpected feedback token " << buf[i];
                break;
            }
            int count = (int)buf[i + 1];
            EXPECT_EQ(count, 3);
            Drawn d;
            const GLfloat* v = &buf[i + 2];
            d.part = (int)v[7];
            d.level = (int)v[8];
            for (int k = 0; k < 3 && k < count; k++)
                for (int c = 0; c < 3; c++) d.win[k][c] = v[k * stride + c];
            out.push_back(d);
            i += 2 + count * stride;
        }
        return out;
    }

    // Where a part's triangle belongs: the kart's own placement, then the
    // part's, then the model's turn from z-up to y-up.
    void expectAt(const Drawn& d, const std::function<void()>& place, const char* what) {
        view();
        glTranslatef(kart.px, gokartstaticdata.wheelradius, kart.pz);
        glRotatef(kart.ay, 0, 1, 0);
        place();
        glRotatef(-90, 1, 0, 0);
        GLdouble mv[16], pr[16];
        GLint vp[4];
        glGetDoublev(GL_MODELVIEW_MATRIX, mv);
        glGetDoublev(GL_PROJECTION_MATRIX, pr);
        glGetIntegerv(GL_VIEWPORT, vp);
        const double corners[3][3] = {{0, 0, 0}, {0.1, 0, 0}, {0, 0, 0.1}};
        for (int k = 0; k < 3; k++) {
            GLdouble x, y, z;
            gluProject(corners[k][0], corners[k][1], corners[k][2], mv, pr, vp, &x, &y, &z);
            EXPECT_NEAR(d.win[k][0], x, 0.02) << what << " corner " << k;
            EXPECT_NEAR(d.win[k][1], y, 0.02) << what << " corner " << k;
        }
    }

    std::vector<int> parts(const std::vector<Drawn>& drawn) {
        std::vector<int> p;
        for (const Drawn& d : drawn) p.push_back(d.part);
        return p;
    }

    bvtest::ScratchDir dir;
    sGokart kart;
};

const std::vector<int> ALLPARTS = {PLASTIC,    BODY,       FOOT,  FOOT,  HEAD,      ARMU,      ARMD,         ARMU, ARMD,
                                   CHASIS,     FRONTWHEEL, FRONTWHEEL, PEDAL, PEDAL, REARWHEEL, REARWHEEL, STEERINGWHEEL};

TEST_F(KartDrawTest, EveryPartInItsPlaceAndOrder) {
    kart.px = 1;
    kart.pz = -2;
    kart.ay = 20;
    kart.sw_ay = 10;
    kart.pedal_up = 30;
    kart.pedal_down = 10;
    kart.head_ax = 5;
    kart.head_viewax = 3;
    kart.lfw_ax = 40;
    kart.rfw_ax = 50;
    kart.lfw_ay = 12;
    kart.rfw_ay = 14;
    kart.lrw_ax = 60;
    kart.rrw_ax = 70;
    std::vector<Drawn> d = feedback();
    ASSERT_EQ(parts(d), ALLPARTS);
    const sGokartStaticData& s = gokartstaticdata;
    const sGokart& k = kart;
    expectAt(d[0], [] {}, "plastic");
    expectAt(d[1], [] {}, "body");
    expectAt(d[2], [&] { glTranslatef(-0.15f, 0.05f, -1.12f); glRotatef(-10 / 1.25f - 25, 1, 0, 0); }, "left foot");
    expectAt(d[3], [&] { glTranslatef(0.15f, 0.05f, -1.12f); glRotatef(-30 / 1.25f - 25, 1, 0, 0); }, "right foot");
    expectAt(d[4], [&] { glTranslatef(0, 0.55f, -0.37f); glRotatef(5, 0, 1, 0); glRotatef(8, 1, 0, 0); }, "head");
    expectAt(d[5], [&] { glTranslatef(-0.175f, 0.5f, -0.35f); glRotatef(k.larmuay, 0, 1, 0); glRotatef(k.larmuax, 1, 0, 0); }, "left upper arm");
    expectAt(d[6], [&] { glTranslatef(k.larmdpx, k.larmdpy, k.larmdpz); glRotatef(k.larmday, 0, 1, 0); glRotatef(k.larmdax, 1, 0, 0); }, "left forearm");
    expectAt(d[7], [&] { glTranslatef(0.175f, 0.5f, -0.35f); glRotatef(k.rarmuay, 0, 1, 0); glRotatef(k.rarmuax, 1, 0, 0); }, "right upper arm");
    expectAt(d[8], [&] { glTranslatef(k.rarmdpx, k.rarmdpy, k.rarmdpz); glRotatef(k.rarmday, 0, 1, 0); glRotatef(k.rarmdax, 1, 0, 0); }, "right forearm");
    expectAt(d[9], [] {}, "chassis");
    expectAt(d[10], [&] { glTranslatef(-s.wheeltrack, 0, -s.wheelbase); glRotatef(12, 0, 1, 0); glRotatef(-40, 1, 0, 0); }, "left front wheel");
    expectAt(d[11], [&] { glTranslatef(s.wheeltrack, 0, -s.wheelbase); glRotatef(180, 0, 1, 0); glRotatef(14, 0, 1, 0); glRotatef(50, 1, 0, 0); }, "right front wheel");
    expectAt(d[12], [&] { glTranslatef(-0.15f, 0, -1.2f); glRotatef(-10, 1, 0, 0); }, "left pedal");
    expectAt(d[13], [&] { glTranslatef(0.15f, 0, -1.2f); glRotatef(-30, 1, 0, 0); }, "right pedal");
    expectAt(d[14], [&] { glTranslatef(-s.wheeltrack, 0, 0); glRotatef(-60, 1, 0, 0); }, "left rear wheel");
    expectAt(d[15], [&] { glTranslatef(s.wheeltrack, 0, 0); glRotatef(180, 0, 1, 0); glRotatef(70, 1, 0, 0); }, "right rear wheel");
    expectAt(d[16], [&] { glTranslatef(0, 0.4f, -0.85f); glRotatef(-50, 1, 0, 0); glRotatef(18, 0, 0, 1); }, "steering wheel");
}

TEST_F(KartDrawTest, InTheDriversOwnViewHeadAndRearWheelsAreLeftOut) {
    camera.mode = CAMERA_DRIVER;
    std::vector<int> own = {PLASTIC, BODY,       FOOT,       FOOT,  ARMU,  ARMD, ARMU,
                            ARMD,    CHASIS,     FRONTWHEEL, FRONTWHEEL, PEDAL, PEDAL, STEERINGWHEEL};
    EXPECT_EQ(parts(feedback()), own);
    // Someone else's kart seen from the driver's seat is whole.
    kart.ID = 1;
    EXPECT_EQ(parts(feedback()), ALLPARTS);
    // So is one's own from any other view.
    kart.ID = 0;
    camera.mode = CAMERA_TRACKSIDE;
    EXPECT_EQ(parts(feedback()), ALLPARTS);
}

TEST_F(KartDrawTest, AKartOutOfViewDrawsNothing) {
    kart.inviewG = false;
    EXPECT_TRUE(feedback().empty());
}

TEST_F(KartDrawTest, DetailLevelsSwitchTogetherAtStrictBoundaries) {
    auto levels = [&](float d) {
        kart.inviewDist = d;
        std::vector<Drawn> drawn = feedback();
        EXPECT_EQ(drawn.size(), ALLPARTS.size());
        int level = drawn.empty() ? -1 : drawn[0].level;
        for (const Drawn& x : drawn) EXPECT_EQ(x.level, level) << "distance " << d;
        return level;
    };
    EXPECT_EQ(levels(1), HI);
    EXPECT_EQ(levels(std::nextafter(10.0f, 0.0f)), HI);
    EXPECT_EQ(levels(10), ME);  // exactly HIrange: the tests are strict
    EXPECT_EQ(levels(std::nextafter(20.0f, 0.0f)), ME);
    EXPECT_EQ(levels(20), LO);
    EXPECT_EQ(levels(29.9f), LO);
    // The tables are read at the configured level.
    config.lod = 2;
    config.HIrange[2] = 2;
    config.MErange[2] = 4;
    config.LOrange[2] = 8;
    EXPECT_EQ(levels(3), ME);
}

TEST_F(KartDrawTest, VisibilityTakesThePointHalfTheChassisFrontAheadAndIsStrictAtTheRange) {
    camera.init(CAMERA_FREE, 0, 2, 8, -10, 0, 0, 55);
    kart.px = 0.5f;
    kart.pz = -1;
    kart.ay = 30;
    float half = gokartstaticdata.chasisfront / 2;
    float expected = camera.isinview(0.5f - sinf(30 / 57.3f) * half, 0.2f, -1 - cosf(30 / 57.3f) * half);
    ASSERT_GT(expected, 2.75f);
    kart.isinview();
    EXPECT_FLOAT_EQ(kart.inviewDist, expected);
    EXPECT_TRUE(kart.inviewG);
    config.LOrange[1] = expected;
    kart.isinview();
    EXPECT_FALSE(kart.inviewG);
    config.LOrange[1] = std::nextafter(expected, 100.0f);
    kart.isinview();
    EXPECT_TRUE(kart.inviewG);
    // Behind the eye: not in view.
    kart.pz = 20;
    kart.isinview();
    EXPECT_FLOAT_EQ(kart.inviewDist, -1);
    EXPECT_FALSE(kart.inviewG);
}

TEST_F(KartDrawTest, ThePreviewSeesEveryKartAtDistanceSix) {
    camera.ignoreisinview = true;
    kart.pz = 500;  // far behind: the preview does not look
    config.LOrange[1] = 6;
    kart.isinview();
    EXPECT_FLOAT_EQ(kart.inviewDist, 6.0f);
    EXPECT_FALSE(kart.inviewG);  // LOrange 6 hides the preview kart
    config.LOrange[1] = 6.5f;
    kart.isinview();
    EXPECT_TRUE(kart.inviewG);
    // At distance 6 the kart is drawn at the detail of distance 6.
    config.HIrange[1] = 6;
    config.MErange[1] = 6.2f;
    kart.pz = 0;
    std::vector<Drawn> d = feedback();
    ASSERT_FALSE(d.empty());
    EXPECT_EQ(d[0].level, ME);
    config.HIrange[1] = 6.1f;
    d = feedback();
    ASSERT_FALSE(d.empty());
    EXPECT_EQ(d[0].level, HI);
}

TEST_F(KartDrawTest, BigHeadDoublesTheHead) {
    kart.sw_ay = 0;
    config.CHEAT_0bighead = 1;
    std::vector<Drawn> d = feedback();
    ASSERT_EQ(parts(d), ALLPARTS);
    expectAt(d[4], [&] { glTranslatef(0, 0.55f, -0.37f); glRotatef(0, 0, 1, 0); glScalef(2, 2, 2); }, "big head");
    // Nothing else grows.
    expectAt(d[1], [] {}, "body");
}

// The head's triangle as it lands on screen, filled: its middle pixel.
bvtest::Pixel headPixel(const Drawn& head) {
    float x = (head.win[0][0] + head.win[1][0] + head.win[2][0]) / 3;
    float y = (head.win[0][1] + head.win[1][1] + head.win[2][1]) / 3;
    return bvtest::readPixel((int)x, (int)y);
}

TEST_F(KartDrawTest, FaceCheatPaintsTheHeadWithTheFaceAndBothCheatsTogether) {
    // A close look at the head alone.
    camera.init(CAMERA_FREE, 0.03f, 0.72f, 0.3f, 0, 0, 0, 55);
    kart.inviewDist = 1;
    auto drawHead = [&](const char* what) {
        std::vector<Drawn> d = feedback();
        Drawn head{-1, -1, {}};
        for (const Drawn& x : d)
            if (x.part == HEAD) head = x;
        EXPECT_EQ(head.part, HEAD) << what;
        view();
        glClearColor(0, 0, 0, 1);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        kart.draw();
        glFinish();
        return head;
    };
    Drawn plain = drawHead("plain");
    bvtest::Pixel p = headPixel(plain);
    EXPECT_EQ(p.r, 255);
    EXPECT_EQ(p.g, 255);  // the head's own white picture
    EXPECT_EQ(p.b, 255);

    config.CHEAT_0toviksface = 1;
    Drawn face = drawHead("face");
    p = headPixel(face);
    EXPECT_EQ(p.r, 255);
    EXPECT_EQ(p.g, 0);  // the face picture
    EXPECT_EQ(p.b, 255);
    EXPECT_NEAR(face.win[1][0] - face.win[0][0], plain.win[1][0] - plain.win[0][0], 0.05);

    config.CHEAT_0bighead = 1;
    Drawn both = drawHead("both");
    p = headPixel(both);
    EXPECT_EQ(p.g, 0);
    EXPECT_EQ(p.r, 255);
    // Twice as wide on screen, give or take the perspective of a bigger head.
    float ratio = (both.win[1][0] - both.win[0][0]) / (plain.win[1][0] - plain.win[0][0]);
    EXPECT_GT(ratio, 1.8f);
    EXPECT_LT(ratio, 2.2f);
}

// ---------------------------------------------------------------------------
// The arm solver, worked through in double precision.

struct Arm {
    double uax, uay, dax, day, dpx, dpy, dpz;
};

Arm solve(double sw, double side, double U, double L) {
    const double k = 57.29577951;
    double theta = sw * 1.8 / 57.3, phi = -50 / 57.3;
    double gx = side * 0.133 * cos(theta) - 0.065 * sin(theta);
    double gy = side * 0.133 * sin(theta) + 0.065 * cos(theta);
    double hx = gx, hy = -0.033 * sin(phi) + gy * cos(phi) + 0.4, hz = 0.033 * cos(phi) + gy * sin(phi) - 0.85;
    double sx = side * 0.175, dx = sx - hx, dz = -0.35 - hz, dh = sqrt(dx * dx + dz * dz);
    double c = (U * U + dh * dh - L * L) / (2 * U * dh);
    c = c > 1 ? 1 : (c < -1 ? -1 : c);
    Arm a;
    double bend = acos(c) * 57.3;
    a.uay = (side < 0 ? bend : -bend) + (dz >= 0 ? 0 : 180) + atan(dx / dz) * 57.3;
    double cz = cos(a.uay / 57.3) * dz;
    a.uax = (cz >= 0 ? 0 : 180) - atan((0.5 - hy) / cz) * 57.3;
    a.dpx = sx - sin(a.uay / k) * U * cos(a.uax / k);
    a.dpy = sin(a.uax / k) * U + 0.5;
    a.dpz = -0.35 - cos(a.uay / k) * U * cos(a.uax / k);
    double ex = a.dpx - hx, ey = a.dpy - hy, ez = a.dpz - hz, de = sqrt(ex * ex + ez * ez);
    a.day = (ez >= 0 ? 0 : 180) + atan(ex / ez) * k;
    a.dax = (de >= 0 ? 0 : 180) - atan(ey / de) * k;
    return a;
}

void expectArm(const Arm& a, float uax, float uay, float dax, float day, float dpx, float dpy, float dpz,
               const std::string& what) {
    EXPECT_NEAR(uax, a.uax, 0.01) << what;
    EXPECT_NEAR(uay, a.uay, 0.01) << what;
    EXPECT_NEAR(dax, a.dax, 0.01) << what;
    EXPECT_NEAR(day, a.day, 0.01) << what;
    EXPECT_NEAR(dpx, a.dpx, 1e-4) << what;
    EXPECT_NEAR(dpy, a.dpy, 1e-4) << what;
    EXPECT_NEAR(dpz, a.dpz, 1e-4) << what;
}

TEST_F(KartDrawTest, ArmsReachForTheTurnedWheel) {
    const double U = gokartstaticdata.overarmslaengde, L = gokartstaticdata.underarmslaengde;
    for (float sw : {0.0f, 25.0f, -40.0f}) {
        kart.sw_ay = sw;
        feedback();
        std::string what = "wheel at " + std::to_string(sw);
        const sGokart& k = kart;
        expectArm(solve(sw, -1, U, L), k.larmuax, k.larmuay, k.larmdax, k.larmday, k.larmdpx, k.larmdpy, k.larmdpz,
                  "left, " + what);
        expectArm(solve(sw, +1, U, L), k.rarmuax, k.rarmuay, k.rarmdax, k.rarmday, k.rarmdpx, k.rarmdpy, k.rarmdpz,
                  "right, " + what);
        // The elbow is one upper arm away from the shoulder.
        double ex = k.larmdpx + 0.175, ey = k.larmdpy - 0.5, ez = k.larmdpz + 0.35;
        EXPECT_NEAR(sqrt(ex * ex + ey * ey + ez * ez), U, 1e-4) << what;
    }
    // With the wheel straight the arms mirror each other.
    kart.sw_ay = 0;
    feedback();
    EXPECT_NEAR(kart.rarmdpx, -kart.larmdpx, 1e-5);
    EXPECT_NEAR(kart.rarmuay, -kart.larmuay, 1e-3);
    EXPECT_NEAR(kart.rarmdpy, kart.larmdpy, 1e-5);
}

TEST_F(KartDrawTest, AGripOutOfReachStillGivesAnArm) {
    gokartstaticdata.overarmslaengde = 0.05f;
    gokartstaticdata.underarmslaengde = 0.05f;
    kart.sw_ay = 30;
    feedback();
    for (float v : {kart.larmuax, kart.larmuay, kart.larmdax, kart.larmday, kart.larmdpx, kart.larmdpy, kart.larmdpz,
                    kart.rarmuax, kart.rarmuay, kart.rarmdax, kart.rarmday, kart.rarmdpx, kart.rarmdpy, kart.rarmdpz})
        EXPECT_TRUE(std::isfinite(v));
    expectArm(solve(30, -1, 0.05, 0.05), kart.larmuax, kart.larmuay, kart.larmdax, kart.larmday, kart.larmdpx,
              kart.larmdpy, kart.larmdpz, "left, out of reach");
}

TEST_F(KartDrawTest, ArmsKeepTheirLastPoseOutOfView) {
    kart.sw_ay = 20;
    feedback();
    float uay = kart.larmuay;
    kart.sw_ay = -20;
    kart.inviewG = false;
    feedback();
    EXPECT_FLOAT_EQ(kart.larmuay, uay);
}

}  // namespace

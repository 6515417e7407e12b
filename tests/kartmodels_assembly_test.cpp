// The kart assembled from its parts in a real window, the way the kart drawing
// places them: wheels on the ground, hands on the rim, feet on the pedals,
// every part touching the rest, and what the views from the front, side, top
// and driver's seat show.
//
// Set BV_SHOTS to a directory to keep the pictures (binary PPM).

#include <gtest/gtest.h>

#include <GL/glu.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>

#include "kartmodels_fixtures.h"
#include "shell/main.h"

using namespace kartmodels;

namespace {

const float WHEELRADIUS = 0.11f, WHEELTRACK = 0.375f, WHEELBASE = 1.2f;
const float UPPERARM = 0.3f, FOREARM = 0.33f;
const int W = 480, H = 360;

enum Part { ARMD, ARMU, BODY, CHASIS, FOOT, FRONTWHEEL, HEAD, PEDAL, PLASTIC, REARWHEEL, STEERINGWHEEL };

// What the drawing reads from a kart record.
struct Kart {
    unsigned char R = 255, G = 0, B = 0;
    float sw_ay = 0, lfw_ax = 0, rfw_ax = 0, lfw_ay = 0, rfw_ay = 0, lrw_ax = 0, rrw_ax = 0;
    float pedal_up = 0, pedal_down = 0, head_ax = 0, head_viewax = 0;
    bool driversOwn = false;  // the focused kart seen from the driver's seat: no head, no rear wheels
};

// One drawn part and the modelview matrix it was drawn with.
struct Placed {
    std::string name;
    Part part;
    float m[16];
};

struct Pictures {
    unsigned char suit[3] = {40, 60, 200}, helmet[3] = {240, 220, 20}, tyre[3] = {25, 25, 25},
                  metal[3] = {150, 150, 150}, paint[3] = {255, 255, 255};
};

class KartModelsAssembly : public ::testing::Test {
protected:
    void SetUp() override {
        blackbox.init("Data/blackbox.bvd", false);
        bvtest::openWindow(W, H);
        initGL();  // the game's GL state: colour material, back faces culled
        writeModelsAndPictures();
        // Plain pictures of telling colours over the grey stand-ins.
        Pictures p;
        bvtest::writeSolidTGA("Data/Textures/Suit.tga", 8, 8, p.suit[0], p.suit[1], p.suit[2]);
        bvtest::writeSolidTGA("Data/Textures/Helmet.tga", 8, 8, p.helmet[0], p.helmet[1], p.helmet[2]);
        bvtest::writeSolidTGA("Data/Textures/Tyre.tga", 8, 8, p.tyre[0], p.tyre[1], p.tyre[2]);
        bvtest::writeSolidTGA("Data/Textures/Metal.tga", 8, 8, p.metal[0], p.metal[1], p.metal[2]);
        bvtest::writeSolidTGA("Data/Textures/Kartpaint.tga", 8, 8, p.paint[0], p.paint[1], p.paint[2]);
        // As the kart data loads them: LO with its pictures, ME and HI borrowing.
        for (int part = 0; part < 11; part++) {
            for (int level = 0; level < 3; level++) {
                s3DS& m = parts[part][level];
                m = {};
                std::string name = std::string(modelgen::KART_LEVELS[level]) + modelgen::KART_PARTS[part];
                m.load(modelPath(name).c_str(), level == 0 ? "Data/Textures/" : "NO_LOAD");
                if (level == 0)
                    m.initlist(false, true);
                else
                    m.initlistExtTextures(false, true, &parts[part][0]);
            }
        }
    }
    void TearDown() override {
        for (int part = 0; part < 11; part++)
            for (int level = 2; level >= 0; level--) parts[part][level].free();
    }

    // The kart drawing, step by step, at the origin facing -z; with `placed`
    // given, every part's matrix is kept as well.
    void drawKart(const Kart& k, int level, std::vector<Placed>* placed = nullptr) {
        auto draw = [&](Part p, const char* name) {
            if (placed) {
                Placed x{name, p, {}};
                glGetFloatv(GL_MODELVIEW_MATRIX, x.m);
                placed->push_back(x);
            }
            parts[p][level].drawlist();
        };
        glPushMatrix();
        glTranslatef(0, WHEELRADIUS, 0);
        glColor3ub(k.R, k.G, k.B);
        draw(PLASTIC, "plastic");
        glColor3ub(255, 255, 255);
        draw(BODY, "body");
        glPushMatrix();
        glTranslatef(-0.15f, 0.05f, -1.12f);
        glRotatef(-k.pedal_down / 1.25f - 25, 1, 0, 0);
        draw(FOOT, "left foot");
        glPopMatrix();
        glPushMatrix();
        glTranslatef(0.15f, 0.05f, -1.12f);
        glRotatef(-k.pedal_up / 1.25f - 25, 1, 0, 0);
        draw(FOOT, "right foot");
        glPopMatrix();
        glColor3ub(255, 255, 255);
        if (!k.driversOwn) {
            glPushMatrix();
            glTranslatef(0, 0.55f, -0.37f);
            glRotatef(k.sw_ay / 2, 0, 1, 0);
            glRotatef(k.head_viewax + k.head_ax, 1, 0, 0);
            draw(HEAD, "head");
            glPopMatrix();
        }
        for (int side = -1; side <= 1; side += 2) {
            Arm a = solveArm(k.sw_ay, side);
            glPushMatrix();
            glTranslatef(0.175f * side, 0.5f, -0.35f);
            glRotatef(a.uay, 0, 1, 0);
            glRotatef(a.uax, 1, 0, 0);
            draw(ARMU, side < 0 ? "left upper arm" : "right upper arm");
            glPopMatrix();
            glPushMatrix();
            glTranslatef(a.ex, a.ey, a.ez);
            glRotatef(a.day, 0, 1, 0);
            glRotatef(a.dax, 1, 0, 0);
            draw(ARMD, side < 0 ? "left forearm" : "right forearm");
            glPopMatrix();
        }
        glColor3ub(255, 255, 255);
        draw(CHASIS, "chassis");
        glPushMatrix();
        glTranslatef(-WHEELTRACK, 0, -WHEELBASE);
        glRotatef(k.lfw_ay, 0, 1, 0);
        glRotatef(-k.lfw_ax, 1, 0, 0);
        draw(FRONTWHEEL, "left front wheel");
        glPopMatrix();
        glPushMatrix();
        glTranslatef(WHEELTRACK, 0, -WHEELBASE);
        glRotatef(180, 0, 1, 0);
        glRotatef(k.rfw_ay, 0, 1, 0);
        glRotatef(k.rfw_ax, 1, 0, 0);
        draw(FRONTWHEEL, "right front wheel");
        glPopMatrix();
        glPushMatrix();
        glTranslatef(-0.15f, 0, -1.2f);
        glRotatef(-k.pedal_down, 1, 0, 0);
        draw(PEDAL, "left pedal");
        glPopMatrix();
        glPushMatrix();
        glTranslatef(0.15f, 0, -1.2f);
        glRotatef(-k.pedal_up, 1, 0, 0);
        draw(PEDAL, "right pedal");
        glPopMatrix();
        if (!k.driversOwn) {
            glPushMatrix();
            glTranslatef(-WHEELTRACK, 0, 0);
            glRotatef(-k.lrw_ax, 1, 0, 0);
            draw(REARWHEEL, "left rear wheel");
            glPopMatrix();
            glPushMatrix();
            glTranslatef(WHEELTRACK, 0, 0);
            glRotatef(180, 0, 1, 0);
            glRotatef(k.rrw_ax, 1, 0, 0);
            draw(REARWHEEL, "right rear wheel");
            glPopMatrix();
        }
        glPushMatrix();
        glTranslatef(0, 0.4f, -0.85f);
        glRotatef(-50, 1, 0, 0);
        glRotatef(k.sw_ay * 1.8f, 0, 0, 1);
        draw(STEERINGWHEEL, "steering wheel");
        glPopMatrix();
        glPopMatrix();
    }

    // The two-bone arm solver of the kart drawing; side -1 left, +1 right.
    struct Arm {
        float uay, uax, day, dax, ex, ey, ez;
    };
    static Arm solveArm(float sw_ay, int side) {
        const float k = 57.29577951f;
        float th = sw_ay * 1.8f / 57.3f, ph = -50 / 57.3f;
        float px = 0.133f * side, py = 0.065f;
        float gx = px * std::cos(th) - py * std::sin(th), gy = px * std::sin(th) + py * std::cos(th);
        float hx = gx, hy = -0.033f * std::sin(ph) + gy * std::cos(ph) + 0.4f,
              hz = 0.033f * std::cos(ph) + gy * std::sin(ph) - 0.85f;
        float sx = 0.175f * side, sz = -0.35f;
        float dx = sx - hx, dz = sz - hz, dh = std::sqrt(dx * dx + dz * dz);
        float c = (UPPERARM * UPPERARM + dh * dh - FOREARM * FOREARM) / (2 * UPPERARM * dh);
        c = std::max(-1.0f, std::min(1.0f, c));
        Arm a;
        a.uay = (side < 0 ? 1 : -1) * std::acos(c) * 57.3f + (dz >= 0 ? 0 : 180) + std::atan(dx / dz) * 57.3f;
        float cc = std::cos(a.uay / 57.3f) * dz;
        a.uax = (cc >= 0 ? 0 : 180) - std::atan((0.5f - hy) / cc) * 57.3f;
        a.ex = sx - std::sin(a.uay / k) * UPPERARM * std::cos(a.uax / k);
        a.ey = std::sin(a.uax / k) * UPPERARM + 0.5f;
        a.ez = sz - std::cos(a.uay / k) * UPPERARM * std::cos(a.uax / k);
        float ex = a.ex - hx, ey = a.ey - hy, ez = a.ez - hz, de = std::sqrt(ex * ex + ez * ez);
        a.day = (ez >= 0 ? 0 : 180) + std::atan(ex / ez) * k;
        a.dax = (de >= 0 ? 0 : 180) - std::atan(ey / de) * k;
        return a;
    }

    // Where every part goes for this pose, the kart at the world origin.
    std::vector<Placed> place(const Kart& k, int level) {
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        std::vector<Placed> placed;
        drawKart(k, level, &placed);
        return placed;
    }

    // A camera like the game's: heading ay about y (0 looks along -z), pitch ax.
    void look(float x, float y, float z, float ay, float ax) {
        glViewport(0, 0, W, H);
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        gluPerspective(55, (double)W / H, 0.1, 300);
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        glRotatef(-ax, 1, 0, 0);
        glRotatef(-ay, 0, 1, 0);
        glTranslatef(-x, -y, -z);
        glClearColor(0.525f, 0.525f, 0.5f, 1);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        glEnable(GL_DEPTH_TEST);
        glDisable(GL_BLEND);
        glDisable(GL_TEXTURE_2D);
        // The race's light: fixed in the world, far up and to the left.
        GLfloat ambient[] = {0.125f, 0.125f, 0.125f, 1}, diffuse[] = {1, 1, 1, 1}, pos[] = {-500, 750, -200, 1};
        glLightfv(GL_LIGHT0, GL_AMBIENT, ambient);
        glLightfv(GL_LIGHT0, GL_DIFFUSE, diffuse);
        glLightfv(GL_LIGHT0, GL_POSITION, pos);
        glEnable(GL_LIGHT0);
        glEnable(GL_LIGHTING);
        // A patch of ground for the kart to stand on.
        glDisable(GL_LIGHTING);
        glColor3ub(90, 120, 70);
        glBegin(GL_QUADS);
        glVertex3f(-3, 0, 3);
        glVertex3f(3, 0, 3);
        glVertex3f(3, 0, -4);
        glVertex3f(-3, 0, -4);
        glEnd();
        glEnable(GL_LIGHTING);
    }

    // Counts the pixels matching `is` and keeps the picture when asked to.
    int count(const std::string& shot, const std::function<bool(int, int, int)>& is) {
        glFinish();
        std::vector<unsigned char> px(W * H * 3);
        glPixelStorei(GL_PACK_ALIGNMENT, 1);
        glReadPixels(0, 0, W, H, GL_RGB, GL_UNSIGNED_BYTE, px.data());
        if (const char* dir = std::getenv("BV_SHOTS")) {
            std::string data = "P6\n" + std::to_string(W) + " " + std::to_string(H) + "\n255\n";
            for (int y = H - 1; y >= 0; y--) data.append((const char*)&px[y * W * 3], W * 3);
            bvtest::writeFile(std::string(dir) + "/" + shot + ".ppm", data);
        }
        int n = 0;
        for (int i = 0; i < W * H; i++)
            if (is(px[i * 3], px[i * 3 + 1], px[i * 3 + 2])) n++;
        return n;
    }

    s3DS parts[11][3];
    bvtest::ScratchDir dir;
};

// The inverse of a rigid GL matrix applied to a point: world to the part's frame.
Vec toLocal(const float* m, Vec p) {
    Vec d = {p.x - m[12], p.y - m[13], p.z - m[14]};
    return {m[0] * d.x + m[1] * d.y + m[2] * d.z, m[4] * d.x + m[5] * d.y + m[6] * d.z,
            m[8] * d.x + m[9] * d.y + m[10] * d.z};
}

const Placed& find(const std::vector<Placed>& placed, const std::string& name) {
    for (const Placed& p : placed)
        if (p.name == name) return p;
    throw std::runtime_error("no part " + name);
}

bool suitBlue(int r, int g, int b) { return b > 60 && b > r + 40 && b > g + 30; }
bool paintRed(int r, int g, int b) { return r > 80 && r > 2 * g + 30 && r > 2 * b + 30; }
bool helmetYellow(int r, int g, int b) { return r > 80 && g > 70 && b < r / 2 && b < g / 2; }

}  // namespace

TEST_F(KartModelsAssembly, WheelsStandOnTheGroundAndNothingElseReachesIt) {
    for (int level = 0; level < 3; level++) {
        Kart k;
        std::vector<Placed> placed = place(k, level);
        ASSERT_EQ(placed.size(), 17u);
        for (const Placed& p : placed) {
            Box b = bounds(parts[p.part][level], p.m);
            if (p.part == FRONTWHEEL || p.part == REARWHEEL)
                EXPECT_NEAR(b.lo.y, 0, 0.002f) << level << " " << p.name;
            else
                EXPECT_GT(b.lo.y, 0.02f) << level << " " << p.name;
        }
        // The wheels stand where the kart's constants put them.
        Box lr = bounds(parts[REARWHEEL][level], find(placed, "left rear wheel").m);
        Box rr = bounds(parts[REARWHEEL][level], find(placed, "right rear wheel").m);
        Box lf = bounds(parts[FRONTWHEEL][level], find(placed, "left front wheel").m);
        Box rf = bounds(parts[FRONTWHEEL][level], find(placed, "right front wheel").m);
        EXPECT_NEAR(lr.hi.x, -0.375f, 0.002f);
        EXPECT_NEAR(rr.lo.x, 0.375f, 0.002f);
        EXPECT_NEAR(rr.hi.x, 0.565f, 0.002f);
        EXPECT_NEAR(lf.hi.x, -0.375f, 0.002f);
        EXPECT_NEAR(rf.hi.x, 0.485f, 0.002f);
        EXPECT_NEAR((lf.lo.z + lf.hi.z) / 2, -1.2f, 0.002f);
        EXPECT_NEAR((rr.lo.z + rr.hi.z) / 2, 0, 0.002f);
    }
}

TEST_F(KartModelsAssembly, HandsHoldTheRimWhereverTheWheelIsTurned) {
    for (int level = 0; level < 3; level++)
        for (float sw : {-45.0f, -30.0f, -10.0f, 0.0f, 10.0f, 30.0f, 45.0f}) {
            Kart k;
            k.sw_ay = sw;
            std::vector<Placed> placed = place(k, level);
            const Placed& wheel = find(placed, "steering wheel");
            Box glove = bounds(parts[ARMD][level], nullptr, "Glove");
            for (int side = -1; side <= 1; side += 2) {
                // The grip point on the rim's centre line, in the wheel's own plane.
                Vec grip = apply(wheel.m, {0.133f * side, 0.065f, 0});
                const Placed& arm = find(placed, side < 0 ? "left forearm" : "right forearm");
                Vec inHand = toLocal(arm.m, grip);
                EXPECT_TRUE(glove.contains(inHand, 0.004f))
                    << "level " << level << " steering " << sw << " side " << side << ": grip at (" << inHand.x << ", "
                    << inHand.y << ", " << inHand.z << ") in the forearm's frame";
                // The elbow joint: the forearm starts where the upper arm ends.
                const Placed& upper = find(placed, side < 0 ? "left upper arm" : "right upper arm");
                Vec elbow = apply(upper.m, {0, 0, -UPPERARM});
                Vec start = apply(arm.m, {0, 0, 0});
                EXPECT_LT(length3(elbow, start), 0.005f) << level << " " << sw;
            }
        }
}

TEST_F(KartModelsAssembly, FeetRestOnThePedals) {
    for (int level = 0; level < 3; level++)
        for (float travel : {0.0f, 15.0f, 30.0f, 45.0f}) {
            Kart k;
            k.pedal_up = travel;
            k.pedal_down = travel;
            std::vector<Placed> placed = place(k, level);
            for (const char* side : {"left", "right"}) {
                const Placed& pedal = find(placed, std::string(side) + " pedal");
                const Placed& foot = find(placed, std::string(side) + " foot");
                // Points down the middle of the pedal's face, where the sole presses.
                float lean = -25 / 57.29577951f;
                for (float along : {0.02f, 0.07f, 0.12f}) {
                    Vec onFace = {0, along * std::cos(lean) - 0.006f * std::sin(lean),
                                  along * std::sin(lean) + 0.006f * std::cos(lean)};
                    Vec inFoot = toLocal(foot.m, apply(pedal.m, onFace));
                    EXPECT_NEAR(inFoot.z, -0.088f, 0.012f) << level << " " << side << " travel " << travel;
                    EXPECT_GT(inFoot.y, -0.05f) << level << " " << side;
                    EXPECT_LT(inFoot.y, 0.2f) << level << " " << side;
                    EXPECT_LT(std::fabs(inFoot.x), 0.045f) << level << " " << side;
                }
            }
        }
}

TEST_F(KartModelsAssembly, EveryPartTouchesTheRest) {
    for (int level = 0; level < 3; level++)
        for (float sw : {-45.0f, 0.0f, 45.0f}) {
            Kart k;
            k.sw_ay = sw;
            k.pedal_up = 45;
            std::vector<Placed> placed = place(k, level);
            std::vector<Box> boxes;
            for (const Placed& p : placed) boxes.push_back(bounds(parts[p.part][level], p.m));
            // Grow the set of parts joined to the chassis by touching boxes.
            std::vector<bool> joined(placed.size(), false);
            for (size_t i = 0; i < placed.size(); i++) joined[i] = placed[i].part == CHASIS;
            for (bool grew = true; grew;) {
                grew = false;
                for (size_t i = 0; i < placed.size(); i++)
                    for (size_t j = 0; j < placed.size() && !joined[i]; j++)
                        if (joined[j] && boxes[i].overlaps(boxes[j], 0.002f)) joined[i] = grew = true;
            }
            for (size_t i = 0; i < placed.size(); i++)
                EXPECT_TRUE(joined[i]) << "level " << level << " steering " << sw << ": " << placed[i].name;
            // The driver sits on the seat and the head on the neck.
            Box body = boxes[1];
            EXPECT_TRUE(body.overlaps(bounds(parts[CHASIS][level], nullptr, "Seat"), 0.0f)) << level;
            EXPECT_TRUE(bounds(parts[HEAD][level], find(placed, "head").m).overlaps(body, 0.0f)) << level;
        }
}

TEST_F(KartModelsAssembly, TheKartFromFrontSideAndTop) {
    Kart k;
    k.sw_ay = 20;
    for (int level = 0; level < 3; level++) {
        std::string L = modelgen::KART_LEVELS[level];
        look(0, 0.6f, -3.6f, 180, -6);
        drawKart(k, level);
        int paint = count(L + "front", paintRed), suit = count(L + "front", suitBlue),
            helmet = count(L + "front", helmetYellow);
        EXPECT_GT(paint, 500) << L;
        EXPECT_GT(suit, 500) << L;
        EXPECT_GT(helmet, 150) << L;

        look(-2.6f, 0.45f, -0.6f, -90, -2);
        drawKart(k, level);
        EXPECT_GT(count(L + "side", paintRed), 500) << L;
        EXPECT_GT(count(L + "side", suitBlue), 500) << L;

        look(0, 2.8f, -0.6f, 0, -90);
        drawKart(k, level);
        EXPECT_GT(count(L + "top", paintRed), 1000) << L;
        EXPECT_GT(count(L + "top", helmetYellow), 300) << L;

        look(2.3f, 1.3f, -3.0f, 140, -17);
        drawKart(k, level);
        EXPECT_GT(count(L + "threequarter", paintRed), 500) << L;
    }
}

TEST_F(KartModelsAssembly, TheDriverSeesHisHandsOnTheWheelAndNotHisHelmet) {
    // The driver's view: eye 0.8 above the ground, 0.37 ahead of the rear
    // axle, looking 15 degrees down.
    for (float sw : {0.0f, 30.0f}) {
        Kart k;
        k.driversOwn = true;
        k.sw_ay = sw;
        look(0, 0.8f, -0.37f, sw / 2, -15);
        drawKart(k, 2);
        std::string shot = "driver" + std::to_string((int)sw);
        EXPECT_EQ(count(shot, helmetYellow), 0);
        // Arms and gloves in the lower half, the paint of the nose ahead.
        EXPECT_GT(count(shot, suitBlue), 2000);
        EXPECT_GT(count(shot, paintRed), 200);
        EXPECT_GT(count(shot, [](int r, int g, int b) { return r < 60 && g < 60 && b < 60; }), 1000);  // rim, gloves
    }
}

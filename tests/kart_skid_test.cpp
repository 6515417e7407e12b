// Skid marks: when a sliding kart lays them, where their corners go, how
// they fade and share their opacity, the ring's size and wrap, and what
// drawing them shows on the ground.

#include <gtest/gtest.h>

#include <GL/gl.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "effects_fixtures.h"
#include "kart_fixtures.h"

using namespace kartfix;

namespace {

class Skid : public KartTest {
protected:
    void SetUp() override {
        KartTest::SetUp();
        bvtest::writeSolidTGA("Data/Textures/Skid.tga", 8, 8, 0, 0, 0, 255);
        gokartstaticdata.init();
        k.init(0);
        k.px = 0;
        k.pz = 0;
        config.skidmarks = 1;
        config.nslides = 128;
    }
    void TearDown() override {
        gokartstaticdata.free();
        KartTest::TearDown();
    }
    // One frame sliding by `slide` degrees, the kart heading `ay`.
    void slideFrame(float slide, float ay = 0) {
        k.ay = ay;
        k.may = ay + slide;
        k.sw_ay = 0;
        k.ups = 10;
        drive(k);
    }
    sGokart& k = gokart[0];
};

struct Rings {
    std::vector<sSlide> lf, rf, lr, rr;
    explicit Rings(const sGokart& k)
        : lf(k.lfSlide, k.lfSlide + GOKART_NSLIDES),
          rf(k.rfSlide, k.rfSlide + GOKART_NSLIDES),
          lr(k.lrSlide, k.lrSlide + GOKART_NSLIDES),
          rr(k.rrSlide, k.rrSlide + GOKART_NSLIDES) {}
    bool operator==(const Rings& o) const {
        auto same = [](const std::vector<sSlide>& a, const std::vector<sSlide>& b) {
            return memcmp(a.data(), b.data(), a.size() * sizeof(sSlide)) == 0;
        };
        return same(lf, o.lf) && same(rf, o.rf) && same(lr, o.lr) && same(rr, o.rr);
    }
};

}  // namespace

TEST_F(Skid, WithSkidMarksOffNothingIsLaid) {
    config.skidmarks = 0;
    k.lfSlide[3].a[0] = 0.05f;
    k.rrSlide[7].x[2] = 4;
    Rings before(k);
    for (int i = 0; i < 10; i++) slideFrame(50);
    EXPECT_NEAR(k.slidediff, 50, 1e-3);
    EXPECT_TRUE(Rings(k) == before);
    EXPECT_EQ(k.CURRENTslide, 0u);
    EXPECT_TRUE(k.newSlide);
}

TEST_F(Skid, ExactlyFifteenDegreesLaysNoMark) {
    Rings before(k);
    slideFrame(15);
    EXPECT_EQ(k.slidediff, 15.0f);
    EXPECT_TRUE(Rings(k) == before);
    EXPECT_TRUE(k.newSlide);
    EXPECT_EQ(k.DELAYslide, 0.0f);
    // A little more does.
    slideFrame(15.5f);
    EXPECT_FALSE(Rings(k) == before);
    EXPECT_FALSE(k.newSlide);
    EXPECT_NEAR(k.lfSlide[0].a[0], 15.5 / 500, 1e-6);
}

TEST_F(Skid, FiftyDegreesStartsAMarkAtOpacityATenth) {
    const sGokartStaticData& s = gokartstaticdata;
    // Where and how the kart stood before its last move.
    k.opx = 1;
    k.opz = 2;
    k.ocosay = cosf(30 / 57.29577951f);
    k.osinay = sinf(30 / 57.29577951f);
    const float c = k.ocosay, sn = k.osinay;
    slideFrame(50);
    EXPECT_EQ(k.slidediff, 50.0f);
    EXPECT_FALSE(k.newSlide);
    EXPECT_EQ(k.DELAYslide, 1.0f);
    EXPECT_EQ(k.CURRENTslide, 0u);
    const float F = s.chasisfront - s.wheelradius, t = s.wheeltrack;
    struct Expect {
        const sSlide* ring;
        float f, from, to;
    } rings[4] = {{k.lfSlide, F, -(t + s.frontwheelwidth), -t},
                  {k.rfSlide, F, t, t + s.frontwheelwidth},
                  {k.lrSlide, 0, -(t + s.wheelwidth), -t},
                  {k.rrSlide, 0, t, t + s.wheelwidth}};
    for (const Expect& e : rings) {
        const sSlide& m = e.ring[0];
        EXPECT_FLOAT_EQ(m.a[0], 0.1f);
        EXPECT_FLOAT_EQ(m.a[1], 0.1f);
        EXPECT_NEAR(m.x[0], 1 - sn * e.f + c * e.from, 1e-5);
        EXPECT_NEAR(m.z[0], 2 - c * e.f - sn * e.from, 1e-5);
        EXPECT_NEAR(m.x[1], 1 - sn * e.f + c * e.to, 1e-5);
        EXPECT_NEAR(m.z[1], 2 - c * e.f - sn * e.to, 1e-5);
    }

    // The next frame, 1/60 second later, is past the 1/64 second delay and
    // closes the quad where the kart is now, headed as it is at the start of
    // that frame.
    const float px = k.px, pz = k.pz;
    const float hc = cosf(20 / 57.29577951f), hs = sinf(20 / 57.29577951f);
    slideFrame(50, 20);
    EXPECT_TRUE(k.newSlide);
    EXPECT_EQ(k.CURRENTslide, 1u);
    for (const Expect& e : rings) {
        const sSlide& m = e.ring[0];
        EXPECT_NEAR(m.x[2], px - hs * e.f + hc * e.to, 1e-5);
        EXPECT_NEAR(m.z[2], pz - hc * e.f - hs * e.to, 1e-5);
        EXPECT_NEAR(m.x[3], px - hs * e.f + hc * e.from, 1e-5);
        EXPECT_NEAR(m.z[3], pz - hc * e.f - hs * e.from, 1e-5);
        // The start takes the end opacity of the slot before (the last one,
        // still empty); the end this frame's.
        EXPECT_EQ(m.a[0], 0.0f);
        EXPECT_NEAR(m.a[1], k.slidediff / 500, 1e-7);
    }
}

TEST_F(Skid, EachNewMarkFadesTheOlderOnes) {
    k.lfSlide[5].a[0] = 0.05f;
    k.lfSlide[5].a[1] = 0;
    k.rrSlide[6].a[0] = 0.0005f;
    k.rrSlide[6].a[1] = -0.01f;
    k.rfSlide[127].a[1] = 0.02f;
    k.lrSlide[128].a[0] = 0.09f;  // beyond the slots in use
    k.CURRENTslide = 9;
    slideFrame(50);
    const float step = 0.1f / 128;
    EXPECT_FLOAT_EQ(k.lfSlide[5].a[0], 0.05f - step);
    EXPECT_EQ(k.lfSlide[5].a[1], 0.0f);
    EXPECT_FLOAT_EQ(k.rrSlide[6].a[0], 0.0005f - step);  // below zero, and stays there
    EXPECT_EQ(k.rrSlide[6].a[1], -0.01f);
    EXPECT_FLOAT_EQ(k.rfSlide[127].a[1], 0.02f - step);
    EXPECT_EQ(k.lrSlide[128].a[0], 0.09f);
    // The new mark itself is written after the fade.
    EXPECT_FLOAT_EQ(k.lfSlide[9].a[0], 0.1f);
}

TEST_F(Skid, TheSlotBeforeTheFirstWrapsRightOnlyForAPowerOfTwo) {
    for (unsigned int n : {128u, 100u}) {
        config.nslides = n;
        k.init(0);
        k.px = k.pz = 0;
        for (unsigned int i = 0; i < n; i++) {
            k.lfSlide[i].a[1] = 0.001f * i;
            k.rrSlide[i].a[1] = 0.0005f * i;
        }
        // Close a quad in slot 0.
        k.CURRENTslide = 0;
        k.newSlide = false;
        k.DELAYslide = 0;
        slideFrame(50);
        // 0 - 1 in unsigned arithmetic, modulo the ring: 127 of 128, but 95 of 100.
        unsigned int previous = n == 128 ? 127 : 95;
        EXPECT_FLOAT_EQ(k.lfSlide[0].a[0], 0.001f * previous) << n;
        EXPECT_FLOAT_EQ(k.rfSlide[0].a[0], 0.001f * previous) << n;
        EXPECT_FLOAT_EQ(k.lrSlide[0].a[0], 0.001f * previous) << n;
        // The right rear ring reads its own.
        EXPECT_FLOAT_EQ(k.rrSlide[0].a[0], 0.0005f * previous) << n;
        EXPECT_EQ(k.CURRENTslide, 1u);
        // Further on, the slot before is simply the one before.
        k.newSlide = false;
        k.DELAYslide = 0;
        slideFrame(50);
        EXPECT_FLOAT_EQ(k.lfSlide[1].a[0], k.lfSlide[0].a[1]) << n;
    }
}

TEST_F(Skid, TheRingsNeverRunOver) {
    config.setvar("nslides", 5000);
    EXPECT_LE(config.nslides, GOKART_NSLIDES);
    ASSERT_GT(config.nslides, 900u);
    for (unsigned int i = 0; i < 2 * config.nslides + 10; i++) {
        k.newSlide = false;
        k.DELAYslide = 0;
        slideFrame(50);
        ASSERT_LT(k.CURRENTslide, config.nslides);
    }
}

TEST_F(Skid, MarksShowBehindAKartSteeredHardAtSpeed) {
    // Up to speed on open ground, then full lock.
    k.kUP = true;
    drive(k, 180);
    ASSERT_GT(k.ups, 10);
    k.kLEFT = true;
    std::vector<float> xs, zs, ays;
    for (int i = 0; i < 60; i++) {
        drive(k);
        xs.push_back(k.px);
        zs.push_back(k.pz);
        ays.push_back(k.ay);
    }
    ASSERT_GT(k.slidediff, 15);

    const int W = 64, H = 64;
    auto view = [&](float cx, float cz) {
        glViewport(0, 0, W, H);
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        glOrtho(cx - 2, cx + 2, -cz - 2, -cz + 2, -100, 100);
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        glRotatef(90, 1, 0, 0);
        glClearColor(0.6f, 0.6f, 0.6f, 1);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    };
    // Ten frames back, under the left rear wheel.
    const sGokartStaticData& s = gokartstaticdata;
    const int back = 49;
    float a = ays[back] / 57.29577951f, r = -(s.wheeltrack + s.wheelwidth / 2);
    float wx = xs[back] + cosf(a) * r, wz = zs[back] - sinf(a) * r;
    view(wx, wz);
    k.drawslides();
    glFinish();
    effects::keepShot("skid_marks");
    std::vector<unsigned char> p = effects::frame();
    int marked = 0;
    for (size_t i = 0; i < p.size(); i += 3) marked += p[i] < 150;
    EXPECT_GT(marked, 100);
    // The middle of the view is that wheel's track.
    EXPECT_LT(effects::brightnessAround(W / 2, H / 2, 0), 150);
    // State for what follows in the frame.
    EXPECT_TRUE(glIsEnabled(GL_DEPTH_TEST));
    EXPECT_FALSE(glIsEnabled(GL_BLEND));
    EXPECT_FALSE(glIsEnabled(GL_TEXTURE_2D));
}

TEST_F(Skid, AMarkIsClosedNoSoonerThanASixtyFourthOfASecondLater) {
    // At 200 frames a second the delay of 1 falls by 0.32 a frame: three
    // frames leave it above zero, the fourth (1/50 second on) closes the mark.
    performance.fps = 200;
    slideFrame(50);
    EXPECT_FALSE(k.newSlide);
    for (int i = 0; i < 3; i++) {
        sSlide before = k.lfSlide[0];
        slideFrame(50);
        EXPECT_FALSE(k.newSlide) << i;
        EXPECT_EQ(k.CURRENTslide, 0u) << i;
        EXPECT_EQ(memcmp(&before, &k.lfSlide[0], sizeof before), 0) << i;
    }
    slideFrame(50);
    EXPECT_TRUE(k.newSlide);
    EXPECT_EQ(k.CURRENTslide, 1u);
    EXPECT_EQ(k.DELAYslide, 1.0f);
    // At 30 frames a second every frame is past the delay.
    performance.fps = 30;
    slideFrame(50);
    EXPECT_FALSE(k.newSlide);
    slideFrame(50);
    EXPECT_TRUE(k.newSlide);
    EXPECT_EQ(k.CURRENTslide, 2u);
}

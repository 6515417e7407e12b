// A moving kart heard through the mixer: the engine loop gets louder and
// higher as the kart speeds towards the eye, and the tyre loop sounds only
// while the kart slides. These run one frame every 1/60 s of the mixer's own
// time (the capture's length), so that the capture lines up with the
// simulation however busy the machine is.

#include <gtest/gtest.h>

#include <vector>

#include "kart_fixtures.h"
#include "scene/camera.h"

using namespace kartfix;

namespace {

class KartSound : public KartTest {
protected:
    void SetUp() override {
        KartTest::SetUp();
        config.soundeffects = 1;
    }
    // Opens the mixer, loads the kart data and grids the karts.
    void begin() {
        ASSERT_TRUE(FSOUND_Init(44100, 32, 0));
        gokartstaticdata.init();
        for (unsigned char i = 0; i < GOKART_NKARTS; i++) gokart[i].init(i);
        gokart[0].px = 0;
        gokart[0].pz = 0;
        startClock();
        // The throttle and the slides are timed by the test, not by the start.
        runOutStartClock();
    }
    // Where the capture has got to, in seconds.
    double now() const { return capture.seconds(); }
    // One frame of kart 0 on the mixer's beat.
    void realFrame() {
        frame();
        if (!capture.until(frames / 60.0 + 0.2)) ADD_FAILURE() << "the mixer stopped at " << now() << " s";
    }
    void placeCamera(float x, float z) {
        camera.ox = camera.px;
        camera.oy = camera.py;
        camera.oz = camera.pz;
        camera.px = x;
        camera.py = 1.5f;
        camera.pz = z;
        camera.ay = 0;
    }
    struct Captured {
        std::vector<float> frames;
        int channels = 0, rate = 0;
    };
    Captured finish() {
        FSOUND_Close();
        Captured c;
        c.frames = capture.read(&c.channels, &c.rate);
        return c;
    }
    bvtest::SoundCapture capture;
};

}  // namespace

TEST_F(KartSound, EngineGetsLouderAndHigherAsTheKartSpeedsTowardsTheEye) {
    bvtest::writeTone("Data/Sounds/Engine.wav", 200, 0.5);
    ASSERT_NO_FATAL_FAILURE(begin());
    // The eye stands 45 units down the road the kart is about to drive.
    placeCamera(0, -45);
    placeCamera(0, -45);
    // Half a second standing, then full throttle for three.
    double restFrom = now();
    while (frames < 30) realFrame();
    double restTo = now();
    gokart[0].kUP = true;
    while (frames < 30 + 60 * 3) realFrame();
    double end = now();
    ASSERT_GT(gokart[0].ups, 10.0f);
    ASSERT_GT(gokart[0].pz, -30.0f);  // still short of the eye
    Captured c = finish();
    ASSERT_GT(c.rate, 0);
    double quietEarly = bvtest::rms(c.frames, c.channels, 0, c.rate, restFrom + 0.1, restTo);
    double loudLate = bvtest::rms(c.frames, c.channels, 0, c.rate, end - 0.5, end - 0.1);
    double lowEarly = bvtest::zeroCrossingHz(c.frames, c.channels, 0, c.rate, restFrom + 0.1, restTo);
    double highLate = bvtest::zeroCrossingHz(c.frames, c.channels, 0, c.rate, end - 0.5, end - 0.1);
    EXPECT_GT(quietEarly, 0.005);
    EXPECT_GT(loudLate, 1.5 * quietEarly);
    // At rest the engine plays near its own pitch (22000 of 22050).
    EXPECT_NEAR(lowEarly, 200, 40);
    EXPECT_GT(highLate, 1.5 * lowEarly);
}

TEST_F(KartSound, TyresSoundOnlyWhileSliding) {
    bvtest::writeTone("Data/Sounds/Tire.wav", 1000, 0.5);
    ASSERT_NO_FATAL_FAILURE(begin());
    sGokart& k = gokart[0];
    k.kUP = true;
    struct Phase {
        double from, to;
        bool sliding;
    };
    std::vector<Phase> phases;
    auto run = [&](int n, bool left) {
        k.kLEFT = left;
        double from = now();
        bool allSliding = true, noneSliding = true;
        for (int i = 0; i < n; i++) {
            placeCamera(k.px, k.pz + 2);
            realFrame();
            // The first half second settles into the new state.
            if (i > 30) {
                allSliding = allSliding && k.slidediff > 15;
                noneSliding = noneSliding && k.slidediff <= 15;
            }
        }
        if (allSliding || noneSliding) phases.push_back({from + 0.6, now() - 0.1, allSliding});
    };
    run(90, false);  // straight: no slide
    run(90, true);   // hard left at speed: sliding
    k.kUP = false;
    k.kDOWN = true;
    run(90, false);  // straight again, slowing
    Captured c = finish();
    ASSERT_GT(c.rate, 0);
    ASSERT_EQ(phases.size(), 3u);
    ASSERT_FALSE(phases[0].sliding);
    ASSERT_TRUE(phases[1].sliding);
    ASSERT_FALSE(phases[2].sliding);
    for (const Phase& p : phases) {
        double level = bvtest::rms(c.frames, c.channels, 0, c.rate, p.from, p.to);
        if (p.sliding) {
            EXPECT_GT(level, 0.05);
            EXPECT_NEAR(bvtest::zeroCrossingHz(c.frames, c.channels, 0, c.rate, p.from, p.to), 1000, 60);
        } else {
            EXPECT_LT(level, 0.002);
        }
    }
}

TEST_F(KartSound, BarrierAndRearHitsPlayTheCollision) {
    bvtest::writeTone("Data/Sounds/Collission.wav", 500, 0.3);
    bvtest::writeFile("Data/Tracks/oval.txt", Circuit().file(100));
    selectTrack("oval");
    ASSERT_NO_FATAL_FAILURE(begin());
    sGokart& k = gokart[0];
    placeCamera(27, 0);
    // Into the right barrier.
    k.px = 29.75f;
    k.pz = -5;
    k.ay = k.may = -30;
    k.ups = 5;
    k.colide();
    k.move();
    EXPECT_TRUE(FSOUND_IsPlaying(k.CHANNEL_collission));
    // Struck from behind by kart 1, on open road.
    FSOUND_StopSound(FSOUND_ALL);
    config.ngokarts = 2;
    k.px = 27.25f;
    k.pz = -5;
    k.ay = k.may = 0;
    k.ups = 5;
    gokart[1].px = 27.25f;
    gokart[1].pz = -5 + 1.45f;  // its nose just under kart 0's tail, a little askew
    gokart[1].ay = 20;
    gokart[1].colide();
    k.colide();
    ASSERT_TRUE(k.col[4]);
    k.move();
    EXPECT_TRUE(FSOUND_IsPlaying(k.CHANNEL_collission));
    // Without sound effects nothing starts.
    FSOUND_StopSound(FSOUND_ALL);
    config.soundeffects = 0;
    k.px = 27.25f;
    k.pz = -5;
    k.colide();
    k.move();
    EXPECT_FALSE(FSOUND_IsPlaying(k.CHANNEL_collission));
    FSOUND_Close();
}

TEST_F(KartSound, EngineIsPannedToTheKartsSide) {
    bvtest::writeTone("Data/Sounds/Engine.wav", 200, 0.5);
    ASSERT_NO_FATAL_FAILURE(begin());
    // The eye looks along -z; the kart stands 5 units to its right (+x), a
    // hair nearer the eye's back so that the pan works out at full right.
    placeCamera(0, -0.01f);
    placeCamera(0, -0.01f);
    gokart[0].px = 5;
    gokart[0].pz = 0;
    double from = now();
    while (frames < 40) realFrame();
    double to = now();
    Captured c = finish();
    ASSERT_GT(c.rate, 0);
    double left = bvtest::rms(c.frames, c.channels, 0, c.rate, from + 0.2, to);
    double right = bvtest::rms(c.frames, c.channels, 1, c.rate, from + 0.2, to);
    EXPECT_GT(right, 0.05);
    EXPECT_LT(left, 0.1 * right);
}

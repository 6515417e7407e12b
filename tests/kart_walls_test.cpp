// Karts on the shipped circuits stay between the barriers whatever is done
// to them and however slowly the frames come.

#include "kart_fixtures.h"

#include <filesystem>

using namespace kartfix;
namespace fs = std::filesystem;

namespace {

bool insidePolygon(const sTrackPoint* p, unsigned int n, float x, float z) {
    bool in = false;
    for (unsigned int i = 0, j = n - 1; i < n; j = i++)
        if ((p[i].z > z) != (p[j].z > z) &&
            x < (double(p[j].x) - p[i].x) * (double(z) - p[i].z) / (double(p[j].z) - p[i].z) + p[i].x)
            in = !in;
    return in;
}

bool onTrack(float x, float z) {
    return insidePolygon(track.Lpoint, track.nLRpoints, x, z) != insidePolygon(track.Rpoint, track.nLRpoints, x, z);
}

class KartWalls : public KartTest, public ::testing::WithParamInterface<std::tuple<std::string, int>> {
protected:
    void SetUp() override {
        KartTest::SetUp();
        std::string built = std::string(BV_GAME_DIR) + "/Data/Tracks";
        ASSERT_TRUE(fs::exists(built)) << "no generated content in " << built;
        for (const auto& f : fs::directory_iterator(built))
            fs::copy_file(f.path(), "Data/Tracks/" + f.path().filename().string(), fs::copy_options::overwrite_existing);
    }

    // Drives kart 0 alone for a minute of race time at the case's frame
    // rate, the keys set each frame by `keys` from the frame number, and
    // fails at the first frame that ends with the kart off the circuit.
    template <class Keys>
    void driveAMinute(Keys keys) {
        auto [name, rate] = GetParam();
        selectTrack(name);
        startRace();
        performance.fps = (float)rate;
        sGokart& k = gokart[0];
        for (int f = 0; f < rate * 60; f++) {
            keys(k, f, rate);
            drive(k);
            ASSERT_TRUE(onTrack(k.px, k.pz))
                << name << " at " << rate << " fps left the track after " << f << " frames at " << k.px << ", " << k.pz;
        }
    }
};

TEST_P(KartWalls, FlatOutWithoutSteeringNeverLeavesTheTrack) {
    driveAMinute([](sGokart& k, int, int) { k.kUP = true; });
}

// A driver who mashes the keys: throttle, brake and steering change every
// half second in a fixed pseudo-random order.
TEST_P(KartWalls, KeyMashingNeverLeavesTheTrack) {
    unsigned int seed = 12345;
    driveAMinute([&seed](sGokart& k, int f, int rate) {
        if (f % (rate / 2 > 0 ? rate / 2 : 1) != 0) return;
        seed = seed * 1103515245u + 12345u;
        unsigned int keys = seed >> 16;
        k.kUP = (keys & 3) != 0;
        k.kDOWN = (keys & 3) == 0;
        k.kLEFT = (keys & 12) == 4;
        k.kRIGHT = (keys & 12) == 8;
    });
}

INSTANTIATE_TEST_SUITE_P(Shipped, KartWalls,
                         ::testing::Combine(::testing::Values("Harbour", "Millbrook", "Pinewood", "Quarry", "Riverside"),
                                            ::testing::Values(5, 10, 14, 20, 30, 60, 120)));

}  // namespace

// ---- How deep the kart's outline goes into the tyre walls ----

namespace {

// The point of segment a-b nearest to (x, z): its distance.
double segmentDistance(const sTrackPoint& a, const sTrackPoint& b, double x, double z) {
    double ex = double(b.x) - a.x, ez = double(b.z) - a.z, l = ex * ex + ez * ez;
    double t = l > 0 ? ((x - a.x) * ex + (z - a.z) * ez) / l : 0;
    t = t < 0 ? 0 : (t > 1 ? 1 : t);
    return std::hypot(x - (a.x + t * ex), z - (a.z + t * ez));
}

double barrierDistance(double x, double z) {
    double best = 1e30;
    unsigned int n = track.nLRpoints;
    for (unsigned int i = 0; i < n; i++) {
        unsigned int j = (i + 1) % n;
        best = std::min(best, segmentDistance(track.Lpoint[i], track.Lpoint[j], x, z));
        best = std::min(best, segmentDistance(track.Rpoint[i], track.Rpoint[j], x, z));
    }
    return best;
}

// How far the deepest point of the kart's outline lies past a barrier line:
// every edge walked in steps of a few centimetres, and each point off the
// circuit measured to the nearest barrier.
double outlineDepth(sGokart& k) {
    k.colide();
    double reach = 0;
    for (int c = 0; c < 8; c++) reach = std::max(reach, (double)std::hypot(k.colx[c] - k.px, k.colz[c] - k.pz));
    if (barrierDistance(k.px, k.pz) > reach) return 0;
    double deepest = 0;
    for (int c = 0; c < 8; c++) {
        int d = (c + 1) % 8;
        const int steps = 40;
        for (int s = 0; s < steps; s++) {
            double x = k.colx[c] + (k.colx[d] - k.colx[c]) * s / steps;
            double z = k.colz[c] + (k.colz[d] - k.colz[c]) * s / steps;
            if (!onTrack((float)x, (float)z)) deepest = std::max(deepest, barrierDistance(x, z));
        }
    }
    return deepest;
}

// A ring road of radius 25, driven anticlockwise: n pairs, pair 0 where the
// grid's straight x = 27.25 touches it.
std::string ringFile(unsigned int n) {
    const double r = 25, half = 3.5, cx = 27.25 - r, cz = 20;
    auto point = [&](unsigned int i, double radius) {
        double a = 2 * M_PI * i / n;
        return std::to_string(fileValue(cx + radius * std::cos(a))) + " " +
               std::to_string(fileValue(cz - radius * std::sin(a)));
    };
    std::string text = "0 0\n80\n";
    for (unsigned int i = 0; i < n; i++) text += "LR " + point(i, r - half) + " " + point(i, r + half) + "\n";
    for (unsigned int i = 0; i < n; i += 4) text += "C " + point(i, r) + "\n";
    return text;
}

const double ALLOWED_DEPTH = 0.10;

class KartWallDepth : public KartTest, public ::testing::WithParamInterface<std::tuple<std::string, int>> {
protected:
    void SetUp() override {
        KartTest::SetUp();
        auto [name, rate] = GetParam();
        if (name == "Box") {
            loadTrack(name, Circuit().file(96));
        } else if (name == "Ring") {
            loadTrack(name, ringFile(72));
        } else {
            std::string built = std::string(BV_GAME_DIR) + "/Data/Tracks";
            ASSERT_TRUE(fs::exists(built)) << "no generated content in " << built;
            for (const auto& f : fs::directory_iterator(built))
                fs::copy_file(f.path(), "Data/Tracks/" + f.path().filename().string(),
                              fs::copy_options::overwrite_existing);
            selectTrack(name);
        }
        performance.fps = (float)rate;
    }

    // Drives kart 0 alone for `seconds` of race time, the keys set each
    // frame by `keys`, and returns the deepest the outline went.
    template <class Keys>
    double deepest(double seconds, Keys keys) {
        auto [name, rate] = GetParam();
        startRace();
        performance.fps = (float)rate;
        sGokart& k = gokart[0];
        double worst = 0;
        for (int f = 0; f < (int)(rate * seconds); f++) {
            keys(k, f, rate);
            drive(k);
            worst = std::max(worst, outlineDepth(k));
        }
        std::printf("%s at %d fps: deepest %.3f m\n", name.c_str(), rate, worst);
        return worst;
    }
};

TEST_P(KartWallDepth, FlatOutWithoutSteering) {
    EXPECT_LE(deepest(30, [](sGokart& k, int, int) { k.kUP = true; }), ALLOWED_DEPTH);
}

TEST_P(KartWallDepth, KeyMashing) {
    unsigned int seed = 12345;
    EXPECT_LE(deepest(30,
                      [&seed](sGokart& k, int f, int rate) {
                          if (f % (rate / 2 > 0 ? rate / 2 : 1) != 0) return;
                          seed = seed * 1103515245u + 12345u;
                          unsigned int keys = seed >> 16;
                          k.kUP = (keys & 3) != 0;
                          k.kDOWN = (keys & 3) == 0;
                          k.kLEFT = (keys & 12) == 4;
                          k.kRIGHT = (keys & 12) == 8;
                      }),
              ALLOWED_DEPTH);
}

// Throttle held, the wheel swung from lock to lock every `period` seconds.
TEST_P(KartWallDepth, WheelSwungLockToLock) {
    for (double period : {0.15, 0.4, 1.0, 2.5}) {
        double worst = deepest(20, [period](sGokart& k, int f, int rate) {
            k.kUP = true;
            bool left = (int)(f / (period * rate)) % 2 == 0;
            k.kLEFT = left;
            k.kRIGHT = !left;
        });
        EXPECT_LE(worst, ALLOWED_DEPTH) << "wheel swung every " << period << " s";
    }
}

INSTANTIATE_TEST_SUITE_P(Circuits, KartWallDepth,
                         ::testing::Combine(::testing::Values("Harbour", "Millbrook", "Pinewood", "Quarry", "Riverside",
                                                              "Box", "Ring"),
                                            ::testing::Values(10, 12, 25, 60, 120)));

}  // namespace

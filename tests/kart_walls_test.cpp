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

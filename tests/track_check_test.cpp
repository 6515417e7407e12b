// Barrier collision: the slope-intercept crossing test, its borderline
// cases, and segments across and along real and generated circuits.

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>

#include "track_fixtures.h"

using namespace trackfix;
using bvtest::ScratchDir;

namespace {

void setPairs(std::initializer_list<sTrackPoint> left, std::initializer_list<sTrackPoint> right) {
    unsigned int i = 0;
    for (const sTrackPoint& p : left) track.Lpoint[i++] = p;
    track.nLRpoints = i;
    i = 0;
    for (const sTrackPoint& p : right) track.Rpoint[i++] = p;
}

TEST(TrackCheck, NoPairsNeverHit) {
    track.nLRpoints = 0;
    EXPECT_FALSE(track.check(-1000, -1000, 1000, 1000));
    EXPECT_FALSE(track.check(0, 0, 0, 0));
}

TEST(TrackCheck, OnePairIsAPointMetOnlyAtItsExactX) {
    // Each barrier is the segment from the point to itself: dx becomes
    // 0.000001, the slope 0, so the barrier is the line z = 2 held to x = 1.
    setPairs({{1, 2}}, {{50, 60}});
    EXPECT_TRUE(track.check(0, 1, 2, 3));  // crosses z = 2 at x = 1 exactly
    EXPECT_TRUE(track.lasthitL);
    EXPECT_EQ(track.lasthit, 0u);
    EXPECT_FALSE(track.check(0, 0, 4, 3));         // crosses z = 2 at x = 2.67
    EXPECT_FALSE(track.check(0, 1.0001f, 2, 3.0001f));  // crosses a ten-thousandth short of x = 1
}

TEST(TrackCheck, ABarrierWithOneXRegistersOnlyWhenTheCrossingRoundsToIt) {
    // A north-south barrier at x = 0 (and a far one on the right).
    setPairs({{0, 0}, {0, 10}}, {{100, 0}, {101, 50}});
    // Plainly across it at z = 5: the crossing computes as 5 / 10^6, not 0.
    EXPECT_FALSE(track.check(-5, 5, 5, 5));
    // At z = 0 the crossing is exactly 0 and counts.
    EXPECT_TRUE(track.check(-5, 0, 5, 0));
    // A tested segment with x1 = x2 is held to its single x in the same way.
    setPairs({{-5, 3}, {5, 4}}, {{100, 0}, {101, 50}});
    EXPECT_FALSE(track.check(0.5f, -10, 0.5f, 10));
}

TEST(TrackCheck, OnTheTrackIsBetweenTheTwoBarriers) {
    // A square road: the left barrier the outer square, the right the inner.
    setPairs({{-10, -10}, {10, -10}, {10, 10}, {-10, 10}}, {{-5, -5}, {5, -5}, {5, 5}, {-5, 5}});
    EXPECT_TRUE(track.ontrack(-7.5f, 0));
    EXPECT_TRUE(track.ontrack(0, 9.99f));
    EXPECT_FALSE(track.ontrack(0, 0));      // the infield
    EXPECT_FALSE(track.ontrack(0, 10.01f)); // beyond the outer barrier
    EXPECT_FALSE(track.ontrack(30, 0));
    // The other way round, the inner line as the left barrier, is the same road.
    setPairs({{-5, -5}, {5, -5}, {5, 5}, {-5, 5}}, {{-10, -10}, {10, -10}, {10, 10}, {-10, 10}});
    EXPECT_TRUE(track.ontrack(-7.5f, 0));
    EXPECT_FALSE(track.ontrack(0, 0));
    // Two pairs enclose nothing: everywhere is on it.
    setPairs({{0, 0}, {0, 10}}, {{100, 0}, {101, 50}});
    EXPECT_TRUE(track.ontrack(-1000, 7));
}

TEST(TrackCheck, ASegmentEndingOnTheBarrierLineCrossesIt) {
    setPairs({{0, 0}, {10, 10}}, {{100, 0}, {101, 50}});
    EXPECT_TRUE(track.check(5, 0, 2.5f, 2.5f));    // ends on the barrier at (2.5, 2.5)
    EXPECT_FALSE(track.check(5, 0, 2.6f, 2.4f));   // stops short of it
    EXPECT_TRUE(track.check(10, 10, 20, 0));       // starts on the barrier's end point
}

TEST(TrackCheck, AParallelSegmentNeverHitsEvenLyingOnTheBarrier) {
    setPairs({{0, 0}, {10, 10}}, {{100, 0}, {110, 10}});
    EXPECT_FALSE(track.check(2, 2, 4, 4));
    EXPECT_FALSE(track.check(-5, -5, 50, 50));
    EXPECT_TRUE(track.check(2, 2, 4, 4.5f));  // the slightest turn crosses
}

// Left barrier far off at z = -100; right barrier along z = x / 10.
void sixSegments() {
    track.nLRpoints = 8;
    for (unsigned int k = 0; k < 8; k++) {
        track.Lpoint[k] = {10.0f * k, -100.0f - 0.5f * k};
        track.Rpoint[k] = {10.0f * k, 1.0f * k};
    }
}

TEST(TrackCheck, AMissKeepsTheLastHit) {
    sixSegments();
    ASSERT_TRUE(track.check(55, 0, 55.5f, 20));
    EXPECT_EQ(track.lasthit, 5u);
    EXPECT_FALSE(track.lasthitL);
    EXPECT_FALSE(track.check(200, 200, 201, 300));
    EXPECT_EQ(track.lasthit, 5u);
    EXPECT_FALSE(track.lasthitL);
}

TEST(TrackCheck, TheLowerIndexWinsAndAtEqualIndexTheLeftBarrier) {
    track.nLRpoints = 4;
    track.Lpoint[0] = {0, 0};
    track.Lpoint[1] = {1, 0.1f};
    track.Lpoint[2] = {4, 0.3f};
    track.Lpoint[3] = {8, 0.2f};
    track.Rpoint[0] = {0, 5};
    track.Rpoint[1] = {1.5f, 5.2f};
    track.Rpoint[2] = {9, 5.1f};
    track.Rpoint[3] = {12, 5.5f};
    // At x = 2 left segment 1 and right segment 1 are crossed: the left one counts.
    ASSERT_TRUE(track.check(2, -10, 2.2f, 10));
    EXPECT_EQ(track.lasthit, 1u);
    EXPECT_TRUE(track.lasthitL);
    // At x = 5 right segment 1 and left segment 2: the lower index counts.
    ASSERT_TRUE(track.check(5, -10, 5.2f, 10));
    EXPECT_EQ(track.lasthit, 1u);
    EXPECT_FALSE(track.lasthitL);
}

// Across the road at the middle of every segment a segment from just
// outside the left barrier to just outside the right one hits; a shorter one
// in the middle of the road, and one along the middle, touch nothing.
void acrossAndAlong(const std::string& name, bool exactIndex) {
    const unsigned int n = track.nLRpoints;
    ASSERT_GT(n, 2u) << name;
    auto mid = [](sTrackPoint a, sTrackPoint b) { return sTrackPoint{(a.x + b.x) / 2, (a.z + b.z) / 2}; };
    auto lerp = [](sTrackPoint a, sTrackPoint b, float t) {
        return sTrackPoint{a.x + (b.x - a.x) * t, a.z + (b.z - a.z) * t};
    };
    // A vertical tested segment meets a barrier only at one rounded x; nudge it.
    auto skew = [](sTrackPoint& a, sTrackPoint& b) {
        if (std::fabs(b.x - a.x) < 1e-3f) b.x += 0.05f;
    };
    for (unsigned int i = 0; i < n; i++) {
        unsigned int j = (i + 1) % n;
        sTrackPoint L = mid(track.Lpoint[i], track.Lpoint[j]), R = mid(track.Rpoint[i], track.Rpoint[j]);
        float width = std::hypot(R.x - L.x, R.z - L.z);
        float out = 0.1f / width;
        sTrackPoint a = lerp(L, R, -out), b = lerp(L, R, 1 + out);
        skew(a, b);
        EXPECT_TRUE(track.check(a.x, a.z, b.x, b.z)) << name << " across segment " << i;
        if (exactIndex) {
            EXPECT_EQ(track.lasthit, i) << name;
            EXPECT_TRUE(track.lasthitL) << name;
        }
        a = lerp(L, R, 0.2f);
        b = lerp(L, R, 0.8f);
        skew(a, b);
        EXPECT_FALSE(track.check(a.x, a.z, b.x, b.z)) << name << " inside segment " << i;
        a = mid(track.Lpoint[i], track.Rpoint[i]);
        b = mid(track.Lpoint[j], track.Rpoint[j]);
        skew(a, b);
        EXPECT_FALSE(track.check(a.x, a.z, b.x, b.z)) << name << " along segment " << i;
    }
}

class TrackCheckLoaded : public ::testing::Test {
protected:
    void SetUp() override {
        blackbox.init("log.bvd", false);
        bvtest::openWindow(64, 48);
    }
    // Whatever a test made, lists and textures go back before the window does.
    void TearDown() override { track.free(); }
    ScratchDir dir;
};

TEST_F(TrackCheckLoaded, ARoundCircuitIsClosedOnBothSides) {
    writeTrack("circle", circleTrack());
    track.init(0.125f);
    config.track = 0;
    track.load();
    ASSERT_EQ(track.nLRpoints, 64u);
    acrossAndAlong("circle", true);
    // Out of the road at the start straight, sideways through the right barrier.
    EXPECT_TRUE(track.check(27, 0, 30, 0.2f));
    EXPECT_FALSE(track.lasthitL);
    track.free();
}

TEST_F(TrackCheckLoaded, EveryShippedTrackIsClosedOnBothSides) {
    std::string tracks = std::string(BV_GAME_DIR) + "/Data/Tracks";
    ASSERT_TRUE(std::filesystem::is_directory(tracks)) << "no tracks in " << tracks;
    std::filesystem::create_directories("Data/Tracks");
    unsigned int copied = 0;
    for (const auto& entry : std::filesystem::directory_iterator(tracks)) {
        std::filesystem::copy_file(entry.path(), "Data/Tracks/" + entry.path().filename().string());
        copied++;
    }
    ASSERT_GT(copied, 0u) << "no tracks in " << tracks;
    track.init(0.125f);
    ASSERT_GT(track.ntracks, 0u);
    for (unsigned int t = 0; t < track.ntracks; t++) {
        config.track = t;
        track.load();
        acrossAndAlong(track.trackname[t], false);
    }
    track.free();
}

}  // namespace

// The track validator: its reading of the file format, the race rules it
// drives over a track, and the broken tracks it must turn away.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

#include "datagen/trackcheck.h"
#include "datagen/tracks.h"

using trackcheck::Track;

namespace {

// A plain rounded rectangle, centred on the origin, with the start straight
// where the grid and the gantry are.
const char* kOval = R"(
name Oval
ground 0
fog 10
point 27.25 -3.5 7 @start
point 27.25 -7.5 7
point 27.25 -11.5 7
point 27.25 -15.5 7
arc 19.25 -15.5 8 0 -90 7 @top
point 14 -23.5 7
point -14 -23.5 7
point -19.25 -23.5 7
arc -19.25 -15.5 8 -90 -180 7
point -27.25 -10 7
point -27.25 11 7
point -27.25 16.5 7 @down
arc -21.25 22.5 6 180 90 6.5
point -16 28.5 6.5
point 16 28.5 6.5
point 21.25 28.5 6.5 @bottom
arc 21.25 22.5 6 90 0 6.5
point 27.25 20.5 7
point 27.25 16.5 7
point 27.25 12.5 7
point 27.25 8.5 7
point 27.25 4.5 7
point 27.25 0.5 7
camera start+10 left 2
camera top+12 left 2
camera top+40 left 2
camera down-10 left 2
camera down+20 left 2
camera bottom-20 left 2
camera bottom+4 left 2
object ad top+10 left 2
object barrel top+20 left 1
)";

const std::vector<std::string> kAds = {"ad1.tga", "ad2.tga"};

std::string ovalFile() {
    TrackBuild build;
    std::string error;
    EXPECT_TRUE(buildTrack(kOval, "Oval", &build, &error)) << error;
    return build.fileText;
}

// The file as records, to break on purpose.
struct Records {
    std::string header;
    std::vector<std::vector<int>> pairs;
    std::vector<std::string> rest;

    explicit Records(const std::string& text) {
        std::istringstream in(text);
        std::string line;
        int n = 0;
        while (std::getline(in, line)) {
            if (n++ < 2) {
                header += line + "\n";
            } else if (line.rfind("LR ", 0) == 0) {
                std::vector<int> v(4);
                std::sscanf(line.c_str(), "LR %d %d %d %d", &v[0], &v[1], &v[2], &v[3]);
                pairs.push_back(v);
            } else {
                rest.push_back(line);
            }
        }
    }
    std::string text() const {
        std::string t = header;
        for (const auto& p : pairs)
            t += "LR " + std::to_string(p[0]) + " " + std::to_string(p[1]) + " " + std::to_string(p[2]) + " " +
                 std::to_string(p[3]) + "\n";
        for (const auto& r : rest) t += r + "\n";
        return t;
    }
};

bool mentions(const std::vector<std::string>& problems, const std::string& what) {
    for (const std::string& p : problems)
        if (p.find(what) != std::string::npos) return true;
    return false;
}

std::string all(const std::vector<std::string>& problems) {
    std::string s;
    for (const std::string& p : problems) s += "  " + p + "\n";
    return s;
}

}  // namespace

// ---- reading the file the way the game does --------------------------------

TEST(TracksValidator, ReadsTheSampleRecordsInWorldUnits) {
    Track t;
    std::vector<std::string> problems;
    ASSERT_TRUE(trackcheck::parseTrack("0 0 80 LR 100 100 120 100 C 110 100 O 5 150 150", &t, &problems));
    EXPECT_TRUE(problems.empty());
    EXPECT_EQ(t.fog, 80);  // the game's density is 80 / 1000 = 0.08
    EXPECT_FLOAT_EQ(t.fog / 1000.0f, 0.08f);
    ASSERT_EQ(t.left.size(), 1u);
    // A lone pair is its own neighbour (4294967295 mod 1 is 0), so the
    // separation moves it: left up, right down.
    EXPECT_FLOAT_EQ(t.left[0].x, -19.5f + 0.01f);
    EXPECT_FLOAT_EQ(t.left[0].z, -19.5f + 0.01f);
    EXPECT_FLOAT_EQ(t.right[0].x, -17.0f - 0.01f);
    EXPECT_FLOAT_EQ(t.right[0].z, -19.5f - 0.01f);
    Track raw;
    ASSERT_TRUE(trackcheck::parseTrack("0 0 80 C 110 100 O 5 150 150", &raw, &problems));
    ASSERT_EQ(raw.cameras.size(), 1u);
    EXPECT_FLOAT_EQ(raw.cameras[0].x, -18.25f);
    EXPECT_FLOAT_EQ(raw.cameras[0].z, -19.5f);
    ASSERT_EQ(raw.objects.size(), 1u);
    EXPECT_EQ(raw.objects[0].type, 5);
    EXPECT_FLOAT_EQ(raw.objects[0].at.x, -13.25f);
    EXPECT_FLOAT_EQ(raw.objects[0].at.z, -13.25f);
}

TEST(TracksValidator, ReadsTheSamplePairBeforeSeparation) {
    // With two pairs, pair 0's neighbour is pair 1 (4294967295 mod 2), which
    // shares nothing: the values stay (100 - 256) x 0.125 = -19.5 and so on.
    Track t;
    std::vector<std::string> problems;
    ASSERT_TRUE(trackcheck::parseTrack("0 0 80 LR 100 100 120 100 LR 300 300 320 310", &t, &problems));
    EXPECT_FLOAT_EQ(t.left[0].x, -19.5f);
    EXPECT_FLOAT_EQ(t.left[0].z, -19.5f);
    EXPECT_FLOAT_EQ(t.right[0].x, -17.0f);
    EXPECT_FLOAT_EQ(t.right[0].z, -19.5f);
}

TEST(TracksValidator, SkipsUnknownWordsOneByOne) {
    Track t;
    std::vector<std::string> problems;
    ASSERT_TRUE(trackcheck::parseTrack("1 0 20 # 7 8 LR 100 100 120 100 notes C 1 2 LR 300 300 320 310", &t, &problems));
    EXPECT_TRUE(problems.empty()) << all(problems);
    EXPECT_EQ(t.dirt, 1);
    EXPECT_EQ(t.left.size(), 2u);
    EXPECT_EQ(t.cameras.size(), 1u);
}

TEST(TracksValidator, SeparatesEqualNeighboursLeftUpRightDown) {
    Track t;
    std::vector<std::string> problems;
    // Four pairs, so that pair 0 is compared with pair 3 and stays put.
    ASSERT_TRUE(trackcheck::parseTrack(
        "0 0 0 LR 100 100 140 300 LR 100 120 140 320 LR 200 200 240 400 LR 300 50 340 60", &t, &problems));
    EXPECT_FLOAT_EQ(t.left[0].x, -19.5f);
    EXPECT_FLOAT_EQ(t.left[1].x, -19.5f + 0.01f);
    EXPECT_FLOAT_EQ(t.right[1].x, -14.5f - 0.01f);
    EXPECT_FLOAT_EQ(t.left[1].z, -17.0f);
}

TEST(TracksValidator, PairZeroIsComparedThroughTheUnsignedWrap) {
    // With 100 pairs, pair 0 is compared with pair 95 (4294967295 mod 100):
    // make pair 95 share pair 0's x and pair 99 not, and the x moves.
    std::string text = "0 0 0\n";
    for (int i = 0; i < 100; i++) {
        int lx = i == 95 ? 10 : 20 + i, rx = 400 + i;
        text += "LR " + std::to_string(i == 0 ? 10 : lx) + " " + std::to_string(i * 5) + " " + std::to_string(rx) +
                " " + std::to_string(i * 5) + "\n";
    }
    Track t;
    std::vector<std::string> problems;
    ASSERT_TRUE(trackcheck::parseTrack(text, &t, &problems));
    EXPECT_FLOAT_EQ(t.left[0].x, (10 - 256) * 0.125f + 0.01f);

    // With 64 pairs the wrap lands on the last pair, 63.
    text = "0 0 0\n";
    for (int i = 0; i < 64; i++)
        text += "LR " + std::to_string(i == 0 || i == 63 ? 10 : 20 + i) + " " + std::to_string(i * 5) + " 400 " +
                std::to_string(i * 5 + 1) + "\n";
    ASSERT_TRUE(trackcheck::parseTrack(text, &t, &problems));
    EXPECT_FLOAT_EQ(t.left[0].x, (10 - 256) * 0.125f + 0.01f);
}

TEST(TracksValidator, MalformedNumbersAreReported) {
    std::vector<std::string> problems = validateTrack("0 0 10 LR 100 x 120 100", kAds);
    EXPECT_TRUE(mentions(problems, "record LR number 0 has a malformed or missing number")) << all(problems);
    problems = validateTrack("zero 0 10", kAds);
    EXPECT_TRUE(mentions(problems, "does not start with the ground texture number")) << all(problems);
}

// ---- a good track passes -------------------------------------------------

TEST(TracksValidator, AcceptsAPlainCircuit) {
    std::vector<std::string> problems = validateTrack(ovalFile(), kAds);
    EXPECT_TRUE(problems.empty()) << all(problems);
}

TEST(TracksValidator, ThreeLapsOnEachLineAreThreeLapsCounted) {
    Track t;
    std::vector<std::string> problems;
    ASSERT_TRUE(trackcheck::parseTrack(ovalFile(), &t, &problems));
    for (float line : {0.25f, 0.5f, 0.75f}) {
        trackcheck::LineRun run = trackcheck::driveLine(t, line, 3);
        EXPECT_EQ(run.lapsCounted, 3) << line;
        EXPECT_TRUE(run.skips.empty()) << line;
    }
}

TEST(TracksValidator, TheLapIsCountedUnderTheGantry) {
    Track t;
    std::vector<std::string> problems;
    ASSERT_TRUE(trackcheck::parseTrack(ovalFile(), &t, &problems));
    trackcheck::LineRun run = trackcheck::driveLine(t, 0.5f, 1);
    ASSERT_TRUE(run.lapCounted);
    // The last two pairs stand at z 4.5 and 0.5: the count comes in the frame
    // after the sensor, 2.2 ahead of the kart, passes z 2.5.
    EXPECT_NEAR(run.lapCountedAt.x, 27.25f, 0.01f);
    EXPECT_GT(run.lapCountedAt.z, 2.5f);
    EXPECT_LT(run.lapCountedAt.z, 2.5f + 2.2f + 2 * 25.0f / 30.0f);
}

// ---- broken tracks are turned away, with the reason ------------------------

TEST(TracksValidator, RejectsABarrierPointOnTheGrid) {
    Records r(ovalFile());
    // Pull the left point of the pair at z 12.5 onto the grid's left column.
    bool moved = false;
    for (auto& p : r.pairs)
        if (p[1] == 356 && p[0] < 470) p[0] = 466, moved = true;  // x 26.25, z 12.5
    ASSERT_TRUE(moved);
    std::vector<std::string> problems = validateTrack(r.text(), kAds);
    EXPECT_TRUE(mentions(problems, "of the starting grid")) << all(problems);
}

TEST(TracksValidator, RejectsAGridTooNarrowToStartOn) {
    Records r(ovalFile());
    // Squeeze the start straight to 4.5 wide: karts fit, but scrape.
    for (auto& p : r.pairs)
        if (p[0] == 446 && p[2] == 502) p[0] = 456, p[2] = 496;
    std::vector<std::string> problems = validateTrack(r.text(), kAds);
    EXPECT_TRUE(mentions(problems, "kart 0 of the starting grid at (26.01, 20.00) has only 0.37 to the barrier"))
        << all(problems);
}

TEST(TracksValidator, RejectsASkippedPair) {
    Records r(ovalFile());
    // Put an extra pair a fraction behind another on the back straight: the
    // kart meets the second before the first and the count stops there.
    // Two extra pairs 0.25 and 0.5 after one on the back straight (driven
    // towards -x): the middle one's reach is a quarter unit, less than a
    // kart travels in a frame, so the kart goes from the first to the third.
    size_t at = 0;
    for (size_t i = 1; i + 1 < r.pairs.size(); i++)
        if (r.pairs[i][1] == 96 && r.pairs[i + 1][1] == 96 && r.pairs[i][0] < 256) {
            at = i;
            break;
        }
    ASSERT_GT(at, 0u);
    for (int k = 2; k >= 1; k--) {
        std::vector<int> extra = r.pairs[at];
        extra[0] -= 2 * k, extra[2] -= 2 * k;
        r.pairs.insert(r.pairs.begin() + at + 1, extra);
    }
    std::vector<std::string> problems = validateTrack(r.text(), kAds);
    EXPECT_TRUE(mentions(problems, "is skipped")) << all(problems);
    EXPECT_TRUE(mentions(problems, "of 3 laps are counted")) << all(problems);
}

TEST(TracksValidator, RejectsASelfCrossingBarrier) {
    Records r(ovalFile());
    // Fling the left point at z -7.5 of the start straight across the infield
    // and past the far straight's left barrier.
    bool moved = false;
    for (auto& p : r.pairs)
        if (p[0] == 446 && p[1] == 196) p[0] = 40, moved = true;
    ASSERT_TRUE(moved);
    std::vector<std::string> problems = validateTrack(r.text(), kAds);
    EXPECT_TRUE(mentions(problems, "the left barrier crosses itself")) << all(problems);
}

TEST(TracksValidator, RejectsBarriersOnTheWrongSides) {
    Records r(ovalFile());
    for (auto& p : r.pairs) {
        std::swap(p[0], p[2]);
        std::swap(p[1], p[3]);
    }
    std::vector<std::string> problems = validateTrack(r.text(), kAds);
    EXPECT_TRUE(mentions(problems, "the left point is not on the driver's left at")) << all(problems);
}

TEST(TracksValidator, RejectsPairZeroAwayFromTheLine) {
    Records r(ovalFile());
    std::rotate(r.pairs.begin(), r.pairs.begin() + 5, r.pairs.end());
    std::vector<std::string> problems = validateTrack(r.text(), kAds);
    EXPECT_TRUE(mentions(problems, "pair 0")) << all(problems);
    EXPECT_TRUE(mentions(problems, "not at the finish line")) << all(problems);
}

TEST(TracksValidator, RejectsAnObjectOnTheRoad) {
    std::string text = ovalFile() + "O 0 474 200\n";  // a barrel on the start straight
    std::vector<std::string> problems = validateTrack(text, kAds);
    EXPECT_TRUE(mentions(problems, "(barrel) stands on the road at (27.25, -7.00)")) << all(problems);
}

TEST(TracksValidator, RejectsAnObjectInTheBarrier) {
    std::string text = ovalFile() + "O 2 440 200\n";  // a container 0.75 from the barrier
    std::vector<std::string> problems = validateTrack(text, kAds);
    EXPECT_TRUE(mentions(problems, "(container) at (23.00, -7.00) is 0.7")) << all(problems);
    EXPECT_TRUE(mentions(problems, "from the barrier, it needs 2.00"))
        << all(problems);
}

TEST(TracksValidator, RejectsACameraOnTheRoad) {
    std::string text = ovalFile() + "C 474 100\n";
    std::vector<std::string> problems = validateTrack(text, kAds);
    EXPECT_TRUE(mentions(problems, "TV camera 7 stands on the road at (27.25, -19.50)")) << all(problems);
}

TEST(TracksValidator, RejectsBoardsWithoutPictures) {
    std::vector<std::string> problems = validateTrack(ovalFile(), {});
    EXPECT_TRUE(mentions(problems, "is an advertising board but Data/Ads has no pictures")) << all(problems);
}

TEST(TracksValidator, RejectsCoordinatesOffTheGround) {
    std::string text = ovalFile() + "O 5 520 -3\n";
    std::vector<std::string> problems = validateTrack(text, kAds);
    EXPECT_TRUE(mentions(problems, "2 file coordinates lie outside 0..512")) << all(problems);
}

TEST(TracksValidator, RejectsBadHeaderValues) {
    std::string text = ovalFile();
    text.replace(0, text.find('\n'), "4 1");
    std::vector<std::string> problems = validateTrack(text, kAds);
    EXPECT_TRUE(mentions(problems, "ground texture 4 is not one of 0 to 3")) << all(problems);
    EXPECT_TRUE(mentions(problems, "road texture 1 is not 0")) << all(problems);
}

TEST(TracksValidator, RejectsACircuitAwayFromTheOrigin) {
    Records r(ovalFile());
    // Move everything but the start straight 10 units over: still closed,
    // but the menu's turntable would swing it out of the picture.
    for (auto& p : r.pairs)
        if (p[0] < 400) p[0] -= 80, p[2] -= 80;
    std::vector<std::string> problems = validateTrack(r.text(), kAds);
    EXPECT_TRUE(mentions(problems, "is not near the origin")) << all(problems);
}

TEST(TracksValidator, RejectsTooManyPairsForTheEightBitCheckpoint) {
    // 300 pairs round a circle: the kart's checkpoint wraps past 255 and no
    // lap is ever counted, which the simulation sees too.
    std::string text = "0 0 10\n";
    for (int i = 0; i < 300; i++) {
        double a = -i * 2 * 3.14159265358979 / 300;
        text += "LR " + std::to_string((int)std::lround(256 + 180 * std::cos(a))) + " " +
                std::to_string((int)std::lround(256 + 180 * std::sin(a))) + " " +
                std::to_string((int)std::lround(256 + 230 * std::cos(a))) + " " +
                std::to_string((int)std::lround(256 + 230 * std::sin(a))) + "\n";
    }
    std::vector<std::string> problems = validateTrack(text, kAds);
    EXPECT_TRUE(mentions(problems, "300 point pairs: a kart's checkpoint counts only to 255")) << all(problems);
    EXPECT_TRUE(mentions(problems, "on the 0.50 line 0 of 3 laps are counted")) << all(problems);
}

TEST(TracksValidator, RejectsThingsStandingInEachOther) {
    std::string text = ovalFile() + "O 0 300 300\nO 3 300 303\n";
    std::vector<std::string> problems = validateTrack(text, kAds);
    EXPECT_TRUE(mentions(problems, "object 2 (barrel) and object 3 (barrel2) stand in each other at (5.50, 5.50)"))
        << all(problems);
}

namespace {

// A stadium whose straights run along z, `infield` wide between the inner
// (left) barriers, as a track file; the start straight at x > 0 runs to -z.
std::string stadiumFile(float infield) {
    const float w = 7, a = (infield + w) / 2, pi = 3.14159265f;
    std::vector<std::pair<float, float>> centre, tangent;
    for (int k = 0; k < 8; k++) centre.push_back({a, 14 - 4 * k}), tangent.push_back({0, -1});
    for (int k = 0; k < 12; k++) {
        float t = -pi * k / 12;
        centre.push_back({a * std::cos(t), -14 + a * std::sin(t)});
        tangent.push_back({std::sin(t), -std::cos(t)});
    }
    for (int k = 0; k < 8; k++) centre.push_back({-a, -14 + 4 * k}), tangent.push_back({0, 1});
    for (int k = 0; k < 12; k++) {
        float t = pi - pi * k / 12;
        centre.push_back({a * std::cos(t), 14 + a * std::sin(t)});
        tangent.push_back({std::sin(t), -std::cos(t)});
    }
    std::string text = "0 0 10\n";
    auto file = [](float v) { return std::to_string((int)std::lround(v / 0.125f + 256)); };
    for (size_t i = 0; i < centre.size(); i++) {
        // The driver's left, facing along the tangent (tx, tz), is (tz, -tx).
        float lx = tangent[i].second, lz = -tangent[i].first;
        float cx = centre[i].first, cz = centre[i].second;
        text += "LR " + file(cx + lx * w / 2) + " " + file(cz + lz * w / 2) + " " + file(cx - lx * w / 2) + " " +
                file(cz - lz * w / 2) + "\n";
    }
    return text;
}

}  // namespace

TEST(TracksValidator, RoadsideGrassReachingTheOtherStraightIsReported) {
    // 4 between the straights' inner barriers: the 5-unit grass of each lies on the other.
    std::vector<std::string> problems = validateTrack(stadiumFile(4), kAds);
    EXPECT_TRUE(mentions(problems, "the grass beside the left barrier lies on the road")) << problems.size();
    EXPECT_FALSE(mentions(problems, "beside the right barrier"));
    // 8 between them: the grass ends on the infield.
    problems = validateTrack(stadiumFile(8), kAds);
    EXPECT_FALSE(mentions(problems, "grass beside"));
    EXPECT_FALSE(mentions(problems, "dirt beside"));
    Track t;
    std::vector<std::string> unread;
    ASSERT_TRUE(trackcheck::parseTrack(stadiumFile(8), &t, &unread));
    EXPECT_TRUE(trackcheck::roadsideOnRoad(t).empty());
}


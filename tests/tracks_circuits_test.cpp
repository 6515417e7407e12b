// The shipped circuits: generated from data/tracks into a scratch game
// directory, each one read back and put through the validator, and each
// with its own name, shape and character.

#include <gtest/gtest.h>

#include <dirent.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "datagen/trackcheck.h"
#include "datagen/tracks.h"
#include "support/bvtest_fixtures.h"

using namespace bvtest;

namespace {

// The advertising pictures are another part of the generator's work; the
// boards only need some to exist.
const std::vector<std::string> kAds = {"ad1.tga", "ad2.tga", "ad3.tga", "ad4.tga", "ad5.tga"};

std::vector<std::string> trackFiles(const std::string& dir) {
    std::vector<std::string> names;
    if (DIR* d = opendir(dir.c_str())) {
        while (dirent* e = readdir(d)) {
            std::string n = e->d_name;
            if (n != "." && n != "..") names.push_back(n);
        }
        closedir(d);
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::map<std::string, std::string> generated() {
    std::map<std::string, std::string> tracks;
    std::string error;
    EXPECT_TRUE(generateTracks("Data", std::string(BV_SOURCE_DIR) + "/data", &error)) << error;
    for (const std::string& f : trackFiles("Data/Tracks")) tracks[f] = readFile("Data/Tracks/" + f);
    return tracks;
}

trackcheck::Track parsed(const std::string& text) {
    trackcheck::Track t;
    std::vector<std::string> problems;
    EXPECT_TRUE(trackcheck::parseTrack(text, &t, &problems));
    return t;
}

float width(const trackcheck::Track& t, size_t i) {
    return std::hypot(t.left[i].x - t.right[i].x, t.left[i].z - t.right[i].z);
}

}  // namespace

TEST(TracksCircuits, AtLeastFiveTracksWithNamesTheGameOffers) {
    ScratchDir dir;
    auto tracks = generated();
    EXPECT_GE(tracks.size(), 5u);
    for (const auto& [file, text] : tracks) {
        // The game offers a file under the name before its first dot, when
        // that has three characters or more.
        size_t dot = file.find('.');
        EXPECT_GE(dot, 3u) << file;
        EXPECT_EQ(file.substr(dot), ".txt") << file;
        EXPECT_FALSE(text.empty()) << file;
    }
}

TEST(TracksCircuits, EveryShippedTrackPassesTheValidator) {
    ScratchDir dir;
    auto tracks = generated();
    ASSERT_FALSE(tracks.empty());
    for (const auto& [file, text] : tracks) {
        std::vector<std::string> problems = validateTrack(text, kAds);
        std::string all;
        for (const std::string& p : problems) all += "  " + p + "\n";
        EXPECT_TRUE(problems.empty()) << file << ":\n" << all;
    }
}

TEST(TracksCircuits, EveryLineCountsEveryLapOnEveryTrack) {
    ScratchDir dir;
    for (const auto& [file, text] : generated()) {
        trackcheck::Track t = parsed(text);
        for (float line : {0.25f, 0.5f, 0.75f}) {
            trackcheck::LineRun run = trackcheck::driveLine(t, line, 5);
            EXPECT_EQ(run.lapsCounted, 5) << file << " line " << line;
            EXPECT_TRUE(run.skips.empty()) << file << " line " << line << ": " << run.skips.front();
        }
    }
}

TEST(TracksCircuits, TheGridKartsStartAtTheSecondToLastPair) {
    // Every kart starts at checkpoint nLRpoints - 2; on our tracks that pair
    // stands across the start straight at z 4.5, and the last one at z 0.5,
    // so the line at z 2.5 lies between them.
    ScratchDir dir;
    for (const auto& [file, text] : generated()) {
        trackcheck::Track t = parsed(text);
        size_t n = t.left.size();
        ASSERT_GE(n, 8u);
        EXPECT_LT(n, 256u) << file;
        EXPECT_NEAR(t.left[n - 2].z, 4.5f, 0.02f) << file;
        EXPECT_NEAR(t.right[n - 2].z, 4.5f, 0.02f) << file;
        EXPECT_NEAR(t.left[n - 1].z, 0.5f, 0.02f) << file;
        EXPECT_NEAR(t.left[0].z, -3.5f, 0.02f) << file;
        EXPECT_LT(t.left[0].x, trackcheck::kFinishX);
        EXPECT_GT(t.right[0].x, trackcheck::kFinishX);
    }
}

TEST(TracksCircuits, EachHasItsOwnCharacter) {
    ScratchDir dir;
    auto tracks = generated();
    std::set<int> grounds, fogs;
    std::set<size_t> pairCounts;
    for (const auto& [file, text] : tracks) {
        trackcheck::Track t = parsed(text);
        grounds.insert(t.dirt);
        fogs.insert(t.fog);
        pairCounts.insert(t.left.size());

        std::map<int, int> types;
        for (const auto& o : t.objects) types[o.type]++;
        int barrels = types[0] + types[1] + types[3] + types[4];
        int containers = types[2] + types[6];
        int signs = types[8] + types[9] + types[10] + types[11];
        EXPECT_GE(types[5], 3) << file << " has too few plants";
        EXPECT_GE(types[7], 2) << file << " has too few boards";
        EXPECT_GE(barrels, 3) << file << " has too few barrels";
        EXPECT_GE(signs, 1) << file << " has no signs";
        EXPECT_GE(t.cameras.size(), 6u) << file << " has too few TV cameras";
        (void)containers;

        // Roads of different widths: wide where the grid stands, narrower
        // elsewhere.
        float narrowest = 1e9f, widest = 0;
        for (size_t i = 0; i < t.left.size(); i++) {
            narrowest = std::min(narrowest, width(t, i));
            widest = std::max(widest, width(t, i));
        }
        EXPECT_GE(widest - narrowest, 0.9f) << file;
    }
    EXPECT_GE(grounds.size(), 3u);
    EXPECT_EQ(fogs.size(), tracks.size());
    EXPECT_EQ(pairCounts.size(), tracks.size());
}

TEST(TracksCircuits, EveryTrackHasHairpinsOrSweepers) {
    // How sharply the middle of the road turns, measured over the pairs:
    // each circuit has at least one corner of 150 degrees or more taken in
    // one go (a hairpin or a long sweeper), and straights.
    ScratchDir dir;
    for (const auto& [file, text] : generated()) {
        trackcheck::Track t = parsed(text);
        size_t n = t.left.size();
        std::vector<float> heading(n);
        for (size_t i = 0; i < n; i++) {
            size_t j = (i + 1) % n;
            float dx = (t.left[j].x + t.right[j].x - t.left[i].x - t.right[i].x) / 2;
            float dz = (t.left[j].z + t.right[j].z - t.left[i].z - t.right[i].z) / 2;
            heading[i] = std::atan2(dx, dz) * 57.29577951f;
        }
        float longest = 0, run = 0, total = 0;
        int sign = 0;
        for (size_t i = 0; i < n; i++) {
            float d = heading[(i + 1) % n] - heading[i];
            while (d > 180) d -= 360;
            while (d < -180) d += 360;
            total += d;
            int s = d > 2 ? 1 : d < -2 ? -1 : 0;
            if (s != 0 && s == sign) run += std::fabs(d);
            else run = std::fabs(d);
            sign = s;
            longest = std::max(longest, run);
        }
        EXPECT_NEAR(std::fabs(total), 360.0f, 0.5f) << file << ": the circuit turns once round";
        EXPECT_GE(longest, 150.0f) << file;
    }
}

TEST(TracksCircuits, GeneratingTwiceWritesTheSameFiles) {
    ScratchDir dir;
    auto first = generated();
    auto second = generated();
    EXPECT_EQ(first, second);
}

// ---- the generator's own checks on a source ----------------------------

namespace {

const char* kSmall = R"(ground 2
fog 5
point 27.25 -3.5 7
point 27.25 -15.5 7
point 27.25 -19.5 7
arc 19.25 -19.5 8 0 -90 7
point 14 -27.5 7
point -14 -27.5 7
point -19.25 -27.5 7
arc -19.25 -19.5 8 -90 -180 7
point -27.25 -10 7
point -27.25 11 7
point -27.25 16.5 7
arc -21.25 22.5 6 180 90 6.5
point -16 28.5 6.5
point 16 28.5 6.5
point 21.25 28.5 6.5
arc 21.25 22.5 6 90 0 6.5
point 27.25 4.5 7
point 27.25 0.5 7
)";

// The source line number of a statement added after kSmall.
std::string nextLine() {
    int lines = 1;
    for (const char* c = kSmall; *c; c++) lines += *c == '\n';
    return "line " + std::to_string(lines) + ": ";
}

}  // namespace

TEST(TracksCircuits, ControlPointsBecomePairsAndLongSpansAreDivided) {
    TrackBuild build;
    std::string error;
    ASSERT_TRUE(buildTrack(kSmall, "Small", &build, &error)) << error;
    EXPECT_EQ(build.name, "Small");
    trackcheck::Track t = parsed(build.fileText);
    // The first control point is pair 0, at file (446, 228) and (502, 228).
    EXPECT_TRUE(build.fileText.find("2 0\n5\nLR 446 228 502 228\n") == 0) << build.fileText.substr(0, 60);
    // The straight 12-unit span from z -3.5 to -15.5 gets three 4-unit gaps.
    EXPECT_NEAR(t.left[1].z, -7.5f, 0.05f);
    EXPECT_NEAR(t.left[2].z, -11.5f, 0.05f);
    EXPECT_NEAR(t.left[3].z, -15.5f, 0.05f);
    // No gap between pairs is longer than 4 units along the middle.
    for (size_t i = 0; i < t.left.size(); i++) {
        size_t j = (i + 1) % t.left.size();
        float d = std::hypot((t.left[j].x + t.right[j].x - t.left[i].x - t.right[i].x) / 2,
                             (t.left[j].z + t.right[j].z - t.left[i].z - t.right[i].z) / 2);
        EXPECT_LE(d, 4.05f) << i;
    }
}

TEST(TracksCircuits, SourceMistakesAreNamed) {
    TrackBuild build;
    std::string error;
    EXPECT_FALSE(buildTrack(std::string(kSmall) + "object barrel 0 left -3.5\n", "Small", &build, &error));
    EXPECT_EQ(error, nextLine() + "the barrel stands on the road or against the barrier");
    EXPECT_FALSE(buildTrack(std::string(kSmall) + "object crane 0 left 2\n", "Small", &build, &error));
    EXPECT_EQ(error, nextLine() + "unknown object type crane");
    EXPECT_FALSE(buildTrack(std::string(kSmall) + "object sign1 nowhere left 2\n", "Small", &build, &error));
    EXPECT_EQ(error, nextLine() + "unknown place nowhere");
    // Scenery keeps out of a TV camera's view, wherever the camera is written.
    EXPECT_FALSE(buildTrack(std::string(kSmall) + "object barrel 10 left 1.5\ncamera 10 left 3\n", "Small", &build,
                            &error));
    EXPECT_EQ(error, nextLine() + "the barrel stands in front of a TV camera");
    EXPECT_TRUE(buildTrack(std::string(kSmall) + "object barrel 20 left 1.5\ncamera 10 left 3\n", "Small", &build,
                           &error))
        << error;
    EXPECT_FALSE(buildTrack(std::string(kSmall) + "wiggle 3\n", "Small", &build, &error));
    EXPECT_EQ(error, nextLine() + "unknown statement wiggle");
    EXPECT_FALSE(buildTrack(kSmall, "ab", &build, &error));
    EXPECT_EQ(error, "the name \"ab\" is not three to 31 letters, digits, - or _");
    EXPECT_FALSE(buildTrack("ground 5\nfog 1\n", "Small", &build, &error));
    EXPECT_EQ(error, "line 2: the ground texture must be 0 to 3");
}

// A circuit with a tongue: west along the top, a hairpin back east, down
// the middle and round the bottom to the start straight. Its hairpin is
// tightened to `radius`, its lower leg runs at `lowerZ`.
std::string tongue(double radius, double lowerZ) {
    char hairpin[160];
    std::snprintf(hairpin, sizeof hairpin, "arc -20 %.2f %.2f -90 -270 6\npoint -10 %.2f 6\narc -10 %.2f 6 -90 0 6\n",
                  lowerZ - radius, radius, lowerZ, lowerZ + 6);
    return std::string("ground 2\nfog 5\npoint 27.25 -3.5 7\npoint 27.25 -15.5 7\npoint 27.25 -19.5 7\n"
                       "arc 19.25 -19.5 8 0 -90 7\npoint 14 -27.5 7\npoint -14 -27.5 7\n") +
           hairpin + "point -4 11 6\narc 2 16.5 6 180 90 6.5\npoint 16 22.5 6.5\narc 21.25 16.5 6 90 0 6.5\n"
                     "point 27.25 4.5 7\npoint 27.25 0.5 7\n";
}

TEST(TracksCircuits, TheRoadsideGrassOfAHairpinMayNotReachTheOtherLeg) {
    TrackBuild build;
    std::string error;
    // Legs 4.5 apart between their barriers: the 5-unit grass of each lies on the other.
    EXPECT_FALSE(buildTrack(tongue(5.25, -17), "Tongue", &build, &error));
    EXPECT_NE(error.find("the grass beside the left barrier lies on the road"), std::string::npos) << error;
    // Opened up to 6.5 between them, the hairpin builds.
    EXPECT_TRUE(buildTrack(tongue(6.25, -15), "Tongue", &build, &error)) << error;
    EXPECT_TRUE(trackcheck::roadsideOnRoad(parsed(build.fileText)).empty());
}

TEST(TracksCircuits, ScatteredGroupsStayOffTheRoad) {
    TrackBuild build;
    std::string error;
    // A big group thrown right at the barrier: only the plants with room land.
    ASSERT_TRUE(buildTrack(std::string(kSmall) + "group plant 2 left 0.5 12 3\n", "Small", &build, &error)) << error;
    std::vector<std::string> problems = validateTrack(build.fileText + "C 300 300\n", kAds);
    for (const std::string& p : problems) EXPECT_EQ(p.find("object"), std::string::npos) << p;
    EXPECT_GE(build.objects, 1u);
    EXPECT_LE(build.objects, 12u);
}

TEST(TracksCircuits, TheBuildWritesTheTracksIntoTheGameDirectory) {
    // The build runs the content generator before any test, so the game
    // directory holds the same files as a fresh generation.
    std::string dir = std::string(BV_GAME_DIR) + "/Data/Tracks";
    std::vector<std::string> built = trackFiles(dir);
    ASSERT_FALSE(built.empty()) << "no generated content in " << dir;
    ScratchDir scratch;
    auto tracks = generated();
    ASSERT_EQ(built.size(), tracks.size());
    for (const auto& [file, text] : tracks) EXPECT_EQ(readFile(dir + "/" + file), text) << file;
}

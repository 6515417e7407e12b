// What the camera sees of the track: which points, segments and objects
// count as in view, and pictures of whole circuits read back from the window.

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <functional>
#include <set>

#include "track_fixtures.h"

using namespace trackfix;
using bvtest::ScratchDir;

namespace {

// Camera at (0, 1.5, 10) looking along -z, level.
void lookNorth() {
    placeCamera(0, 1.5f, 10, 0, 0);
}

TEST(TrackView, ABarrierSegmentIsInViewWhenEitherEndIs) {
    lookNorth();
    config.lod = 2;
    config.LOrange[2] = 60;
    track.barrier_height = 0.25f;
    track.nLRpoints = 3;
    // Left: segment 0 runs from behind the eye to in front of it.
    track.Lpoint[0] = {0, 20};
    track.Lpoint[1] = {0, 0};
    track.Lpoint[2] = {-1, 30};
    // Right: segment 0 from in front to behind; segment 1 wholly behind.
    track.Rpoint[0] = {2, 0};
    track.Rpoint[1] = {5, 20};
    track.Rpoint[2] = {5, 25};
    track.nCpoints = 0;
    track.nMiscobjects = 0;
    track.isinview();
    EXPECT_TRUE(track.inviewLpoint[0]);
    EXPECT_TRUE(track.inviewLpoint[1]);
    EXPECT_FALSE(track.inviewLpoint[2]);  // from (-1, 30) back to (0, 20): both behind
    EXPECT_TRUE(track.inviewRpoint[0]);
    EXPECT_FALSE(track.inviewRpoint[1]);
    EXPECT_TRUE(track.inviewRpoint[2]);  // closes to point 0, in front
}

// One object, one centre point and one barrier pair at distance d ahead.
void ahead(float d) {
    track.barrier_height = 0.25f;
    track.nMiscobjects = 1;
    track.miscobject[0] = {0, 10 - d};
    track.nCpoints = 1;
    track.Cpoint[0] = {0.5f, 10 - d};
    track.nLRpoints = 2;
    track.Lpoint[0] = {-1, 10 - d};
    track.Lpoint[1] = {-1, 10 - d - 0.5f};
    track.Rpoint[0] = {1, 10 - d};
    track.Rpoint[1] = {1, 10 - d - 0.5f};
}

TEST(TrackView, LoweringTheDetailShortensTheView) {
    lookNorth();
    config.LOrange[0] = 10;
    config.LOrange[1] = 20;
    config.LOrange[2] = 40;
    for (float d : {15.0f, 30.0f}) {
        ahead(d);
        for (unsigned int lod = 0; lod < 3; lod++) {
            config.lod = lod;
            track.isinview();
            bool expected = d + 1 < config.LOrange[lod];
            EXPECT_EQ(track.inviewMiscObject[0], expected) << "distance " << d << " lod " << lod;
            EXPECT_EQ(track.inviewCpoint[0], expected) << "distance " << d << " lod " << lod;
            EXPECT_EQ(track.inviewLpoint[0], expected) << "distance " << d << " lod " << lod;
            EXPECT_EQ(track.inviewRpoint[1], expected) << "distance " << d << " lod " << lod;
        }
    }
}

TEST(TrackView, TheRangeIsAStrictLimit) {
    lookNorth();
    config.lod = 1;
    ahead(15);
    float d = camera.isinview(0, 0.5f, -5);
    config.LOrange[1] = d;
    track.isinview();
    EXPECT_FALSE(track.inviewMiscObject[0]);
    config.LOrange[1] = std::nextafter(d, 100.0f);
    track.isinview();
    EXPECT_TRUE(track.inviewMiscObject[0]);
}

TEST(TrackView, APointNearerThan275IsAlwaysInView) {
    lookNorth();
    config.lod = 0;
    config.LOrange[0] = 30;
    track.nLRpoints = 0;
    track.nCpoints = 0;
    track.nMiscobjects = 3;
    track.miscobject[0] = {0, 11.5f};  // behind the eye, 1.8 away
    track.miscobject[1] = {0, 13.0f};  // behind the eye, 3.2 away
    track.miscobject[2] = {2.5f, 10};  // beside the eye, 2.7 away
    track.isinview();
    EXPECT_FLOAT_EQ(camera.isinview(0, 0.5f, 11.5f), 1.0f);
    EXPECT_TRUE(track.inviewMiscObject[0]);
    EXPECT_FALSE(track.inviewMiscObject[1]);
    EXPECT_TRUE(track.inviewMiscObject[2]);
    // Even with the smallest of view ranges the near answer of 1.0 is inside it.
    config.LOrange[0] = 1.01f;
    track.isinview();
    EXPECT_TRUE(track.inviewMiscObject[0]);
    config.LOrange[0] = 1.0f;
    track.isinview();
    EXPECT_FALSE(track.inviewMiscObject[0]);
}

// ---------------------------------------------------------------------------
// Pictures.

const int W = 320, H = 240;

struct Count {
    std::function<bool(int, int, int)> is;
    const char* what;
};

size_t count(const std::vector<unsigned char>& p, const std::function<bool(int, int, int)>& is) {
    size_t n = 0;
    for (size_t i = 0; i < p.size(); i += 3) n += is(p[i], p[i + 1], p[i + 2]) ? 1 : 0;
    return n;
}

// Distinct colours, each channel cut to 32 steps, that cover at least 0.2 % of the frame.
size_t colours(const std::vector<unsigned char>& p) {
    std::map<int, size_t> seen;
    for (size_t i = 0; i < p.size(); i += 3) seen[(p[i] >> 3) << 10 | (p[i + 1] >> 3) << 5 | p[i + 2] >> 3]++;
    size_t n = 0;
    for (auto& [c, k] : seen) n += k * 500 >= p.size() / 3 ? 1 : 0;
    return n;
}

bool reddish(int r, int g, int b) { return r > 50 && r > 2 * g && r > 2 * b && g < 60; }
bool roadish(int r, int g, int b) { return b > r && b - r < 30 && r > 50 && r < 140 && std::abs(r - g) < 8; }
bool white(int r, int g, int b) { return r > 200 && g > 200 && b > 200; }
bool black(int r, int g, int b) { return r < 40 && g < 40 && b < 40; }
bool bluish(int r, int g, int b) { return b > 80 && b > 2 * r && b > 2 * g; }
bool orange(int r, int g, int b) { return r > 150 && g > 70 && g < r - 50 && b < 40; }
bool plant(int r, int g, int b) { return r < 10 && g > 240 && b > 100 && b < 140; }
// The boards may face away from the light and show in its ambient part only.
bool magenta(int r, int g, int b) { return r > 50 && b > 50 && g < 20 && std::abs(r - b) < 20; }
bool greenish(int r, int g, int b) { return g > 90 && g > r + 40 && g > b + 40 && !plant(r, g, b); }

class TrackDraw : public ::testing::Test {
protected:
    void SetUp() override {
        blackbox.init("log.bvd", false);
        bvtest::openWindow(W, H);
        initGL();
        config.fog = 0;
        config.lod = 2;
        config.LOrange[0] = config.LOrange[1] = config.LOrange[2] = 60;
        config.texturefilter = 2;
    }
    // Whatever a test made, lists and textures go back before the window does.
    void TearDown() override { track.free(); }
    ScratchDir dir;
};

// The round circuit, with a few objects by the start straight to look at.
std::string startStraight() {
    return circleTrack() +
           "O 7 440 230\n"   // advertising board on the left ahead
           "O 0 500 215\n"   // a barrel outside the right barrier
           "O 5 445 200\n";  // a plant on the left
}

TEST_F(TrackDraw, TheStartStraightShowsRoadBarriersFinishLineAndObjects) {
    writeData(true);
    writeTrack("circle", startStraight());
    track.init(0.125f);
    track.load();
    ASSERT_EQ(track.nLRpoints, 64u);
    placeCamera(26.9f, 1.5f, 9, -10, 0);
    drawTrack();
    keepShot("scratch_start");
    std::vector<unsigned char> p = frame();
    size_t total = (size_t)W * H;
    EXPECT_GT(count(p, roadish), total / 10) << "road";
    EXPECT_GT(count(p, reddish), 300u) << "barrier faces";
    EXPECT_GT(count(p, white), 60u) << "finish line, white squares";
    EXPECT_GT(count(p, black), 60u) << "finish line, black squares";
    EXPECT_GT(count(p, orange), 200u) << "finish gantry";
    EXPECT_GT(count(p, bluish), 100u) << "barrel and TV cameras";
    EXPECT_GT(count(p, magenta), 50u) << "advertising board";
    EXPECT_GT(count(p, plant), 50u) << "plant";
    EXPECT_GT(count(p, greenish), 200u) << "grass";
    EXPECT_GE(colours(p), 8u);
    track.free();
}

TEST_F(TrackDraw, FromAboveTheWholeCircuitShows) {
    writeData(true);
    writeTrack("circle", startStraight());
    track.init(0.125f);
    track.load();
    placeCamera(0, 75, 0, -90, 0);
    camera.ignoreisinview = true;
    config.LOrange[2] = 150;
    drawTrack();
    keepShot("scratch_above");
    std::vector<unsigned char> p = frame();
    // A ring of road round the middle of the picture; the matrices are still the frame's.
    for (int k = 0; k < 12; k++) {
        float a = (float)(2 * M_PI * (k + 0.25) / 12), r = 215 * 0.125f;
        float x = (float)(r * std::cos(a)), z = (float)(-r * std::sin(a));
        GLdouble model[16], proj[16], wx, wy, wz;
        GLint view[4];
        glGetDoublev(GL_MODELVIEW_MATRIX, model);
        glGetDoublev(GL_PROJECTION_MATRIX, proj);
        glGetIntegerv(GL_VIEWPORT, view);
        gluProject(x, 0, z, model, proj, view, &wx, &wy, &wz);
        size_t i = ((size_t)wy * W + (size_t)wx) * 3;
        EXPECT_TRUE(roadish(p[i], p[i + 1], p[i + 2]))
            << "road at angle " << k * 30 << ": " << (int)p[i] << "," << (int)p[i + 1] << "," << (int)p[i + 2];
    }
    EXPECT_GT(count(p, roadish), (size_t)W * H / 20);
    EXPECT_GT(count(p, greenish), (size_t)W * H / 20);
    EXPECT_GE(colours(p), 6u);
    track.free();
}

TEST_F(TrackDraw, PlantsFaceTheViewerFromEverySide) {
    writeData(false);
    writeTrack("plant", "0 0 0\nO 5 256 256\n");
    track.init(0.125f);
    track.load();
    ASSERT_EQ(track.nMiscobjects, 1u);
    // From the south, the east, the north and the west, in the free view.
    const float headings[] = {0, 90, 180, -90};
    for (float ay : headings) {
        float rad = ay / 57.29577951f;
        placeCamera(6 * std::sin(rad), 1, 6 * std::cos(rad), 0, ay);
        drawTrack();
        std::vector<unsigned char> p = frame();
        EXPECT_GT(count(p, plant), 500u) << "seen with heading " << ay;
    }
    track.free();
}

TEST_F(TrackDraw, BoardsCarryTheAdvertisementsAndOtherObjectsTheirOwnColours) {
    writeData(true);
    writeTrack("objects", "0 0 0\nO 7 256 240\nO 2 280 240\n");
    track.init(0.125f);
    track.load();
    placeCamera(1.5f, 1.5f, 4, -5, 0);
    drawTrack();
    std::vector<unsigned char> p = frame();
    EXPECT_GT(count(p, magenta), 500u);
    EXPECT_GT(count(p, bluish), 500u);
    // Without advertisements a board is passed over even if one is in the record.
    track.nAds = 0;
    drawTrack();
    p = frame();
    EXPECT_EQ(count(p, magenta), 0u);
    track.free();
}

// The shipped tracks, with the game's own content.
TEST_F(TrackDraw, EveryShippedTrackLooksLikeACircuit) {
    std::string data = std::string(BV_GAME_DIR) + "/Data";
    bool any = std::filesystem::is_directory(data + "/Tracks") && !std::filesystem::is_empty(data + "/Tracks");
    ASSERT_TRUE(any) << "no tracks in " << data << "/Tracks";
    std::filesystem::remove_all("Data");
    std::filesystem::create_directory_symlink(data, "Data");
    track.init(0.125f);
    ASSERT_GT(track.ntracks, 0u);
    for (unsigned int t = 0; t < track.ntracks; t++) {
        config.track = t;
        track.load();
        std::string name = track.trackname[t];
        placeCamera(26.01f, 1.5f, 22.0f, -10, 0);
        drawTrack();
        keepShot("game_" + name + "_start");
        std::vector<unsigned char> p = frame();
        EXPECT_GE(colours(p), 6u) << name;
        placeCamera(0, 75, 0, -90, 0);
        camera.ignoreisinview = true;
        config.LOrange[2] = 150;
        drawTrack();
        keepShot("game_" + name + "_above");
        p = frame();
        EXPECT_GE(colours(p), 6u) << name;
        config.LOrange[2] = 60;
    }
    track.free();
}

}  // namespace

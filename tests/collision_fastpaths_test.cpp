// The barrier and kart collision tests skip what lies clear of a kart; here
// they are held against the plain tests, written out as they always were,
// on the shipped circuits and on awkward numbers: every answer the same, and
// the barrier last hit the same.

#include <gtest/gtest.h>

#include <dirent.h>

#include <cmath>
#include <cstdio>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "kart/gokart.h"
#include "shell/blackbox.h"
#include "shell/bvconfig.h"
#include "track/track.h"

namespace {

// sTrack::check as it has always been: every segment, in order, left then right.
struct PlainResult {
    bool hit;
    unsigned int lasthit;
    bool lasthitL;
};
PlainResult plainCheck(float x1, float z1, float x2, float z2, unsigned int lasthit, bool lasthitL) {
    const float tiny = 0.000001f;
    float dx = x2 - x1;
    if (dx == 0) dx = tiny;
    float a1 = (z2 - z1) / dx;
    float b1 = z1 - a1 * x1;
    float xmin = x1 < x2 ? x1 : x2, xmax = x1 < x2 ? x2 : x1;
    const unsigned int n = track.nLRpoints < TRACK_MAXPOINTS ? track.nLRpoints : TRACK_MAXPOINTS;
    auto crosses = [&](const sTrackPoint& P, const sTrackPoint& Q) {
        float ddx = Q.x - P.x;
        if (ddx == 0) ddx = tiny;
        float a2 = (Q.z - P.z) / ddx;
        float b2 = P.z - a2 * P.x;
        if (a2 == a1) return false;
        float x12 = (b2 - b1) / (a1 - a2);
        float pmin = P.x < Q.x ? P.x : Q.x, pmax = P.x < Q.x ? Q.x : P.x;
        return pmin <= x12 && x12 <= pmax && xmin <= x12 && x12 <= xmax;
    };
    for (unsigned int i = 0; i < n; i++) {
        unsigned int j = (i + 1) % n;
        if (crosses(track.Lpoint[i], track.Lpoint[j])) return {true, i, true};
        if (crosses(track.Rpoint[i], track.Rpoint[j])) return {true, i, false};
    }
    return {false, lasthit, lasthitL};
}

// sGokart::colgokart as it has always been.
unsigned char plainColgokart(const sGokart& self, float x1, float z1, float x2, float z2) {
    float dx = x2 - x1;
    if (dx == 0) dx = 0.000001f;
    float m = (z2 - z1) / dx;
    float xmin = x1 < x2 ? x1 : x2, xmax = x1 < x2 ? x2 : x1;
    unsigned int n = config.ngokarts < GOKART_NKARTS ? config.ngokarts : GOKART_NKARTS;
    for (unsigned int j = 0; j < n; j++) {
        if (j == self.ID) continue;
        const sGokart& other = gokart[j];
        for (int k = 0; k < 8; k++) {
            int b = (k + 1) % 8;
            float xa = other.colx[k], za = other.colz[k], xb = other.colx[b], zb = other.colz[b];
            float dx2 = xb - xa;
            if (dx2 == 0) dx2 = 0.000001f;
            float m2 = (zb - za) / dx2;
            if (m2 == m) continue;
            float xi = ((za - m2 * xa) - (z1 - m * x1)) / (m - m2);
            float lo = xa < xb ? xa : xb, hi = xa < xb ? xb : xa;
            if (xi < lo || xi > hi) continue;
            if (xi < xmin || xi > xmax) continue;
            return (unsigned char)j;
        }
    }
    return self.ID;
}

std::vector<std::string> shippedTracks() {
    std::vector<std::string> files;
    std::string dir = std::string(BV_GAME_DIR) + "/Data/Tracks";
    if (DIR* d = opendir(dir.c_str())) {
        while (dirent* e = readdir(d)) {
            std::string n = e->d_name;
            if (n.size() > 4 && n.substr(n.size() - 4) == ".txt") files.push_back(dir + "/" + n);
        }
        closedir(d);
    }
    return files;
}

// A kart's outline round (x, z) heading `a` degrees, the way colide lays it.
void outline(float x, float z, float a, float* xs, float* zs) {
    const float F = 1.364f, W = 1.24f;
    const float f[8] = {F + 0.03f, F + 0.03f, F - 0.1f, F / 2, -0.17f, -0.17f, F / 2, F - 0.1f};
    const float nose = (W - 0.25f) / 2, side = (W + 0.025f) / 2;
    const float r[8] = {-nose, nose, side, side, side, -side, -side, -side};
    float sa = sinf(a / 57.29578f), ca = cosf(a / 57.29578f);
    for (int i = 0; i < 8; i++) {
        xs[i] = x - sa * f[i] + ca * r[i];
        zs[i] = z - ca * f[i] - sa * r[i];
    }
}

const float NaN = std::numeric_limits<float>::quiet_NaN();
const float INF = std::numeric_limits<float>::infinity();

// Outlines all over the loaded track, most of them across a barrier, and a
// few with numbers no kart should have.
void compareOutlines(std::mt19937& random, int count, long& hits, long& differences) {
    const unsigned int n = track.nLRpoints;
    std::uniform_real_distribution<float> unit(0, 1);
    for (int t = 0; t < count; t++) {
        unsigned int i = (unsigned int)(unit(random) * (float)n) % n;
        const sTrackPoint& p = unit(random) < 0.5f ? track.Lpoint[i] : track.Rpoint[i];
        float xs[8], zs[8];
        outline(p.x + (unit(random) - 0.5f) * 4, p.z + (unit(random) - 0.5f) * 4, unit(random) * 720 - 360, xs, zs);
        if (t % 50 == 7) xs[t % 8] = NaN;
        if (t % 50 == 19) zs[(t + 3) % 8] = NaN;
        if (t % 50 == 23) xs[t % 8] = INF;
        if (t % 50 == 31) {
            for (float& v : xs) v *= 1e30f;
        }
        if (t % 50 == 41) {
            for (int c = 0; c < 8; c++) xs[c] = p.x + 1e-40f * (float)c;  // edges of next to no width
        }

        // The outline checked edge by edge, the plain way.
        track.lasthit = 12345;
        track.lasthitL = true;
        bool plainHit[8], plainAny = false;
        PlainResult last = {false, 12345, true};
        for (int c = 0; c < 8; c++) {
            int d = (c + 1) % 8;
            last = plainCheck(xs[c], zs[c], xs[d], zs[d], last.lasthit, last.lasthitL);
            plainHit[c] = last.hit;
            plainAny = plainAny || last.hit;
        }
        // check itself, edge by edge.
        bool eachHit[8];
        for (int c = 0; c < 8; c++) {
            int d = (c + 1) % 8;
            eachHit[c] = track.check(xs[c], zs[c], xs[d], zs[d]);
        }
        unsigned int eachLast = track.lasthit;
        bool eachLastL = track.lasthitL;
        // And the whole outline at once.
        track.lasthit = 12345;
        track.lasthitL = true;
        bool outlineHit[8];
        bool any = track.checkOutline(xs, zs, 8, outlineHit);

        bool same = any == plainAny && track.lasthit == last.lasthit && track.lasthitL == last.lasthitL &&
                    eachLast == last.lasthit && eachLastL == last.lasthitL;
        for (int c = 0; c < 8; c++) same = same && outlineHit[c] == plainHit[c] && eachHit[c] == plainHit[c];
        if (!same) differences++;
        hits += plainAny;
    }
}

void loadTrackFile(const std::string& path) {
    FILE* f = fopen(path.c_str(), "r");
    ASSERT_NE(f, nullptr) << path;
    track.parse(f, path.c_str());
    fclose(f);
}

}  // namespace

TEST(CollisionFastPaths, BarrierChecksAnswerAsThePlainCheckOnEveryShippedTrack) {
    blackbox.init("/dev/null", false);
    track.trackscale = 0.125f;
    std::vector<std::string> files = shippedTracks();
    ASSERT_FALSE(files.empty()) << "the game's tracks are built with the game";
    std::mt19937 random(7);
    for (const std::string& file : files) {
        loadTrackFile(file);
        ASSERT_GT(track.nLRpoints, 10u);
        long hits = 0, differences = 0;
        compareOutlines(random, 4000, hits, differences);
        EXPECT_GT(hits, 400) << file << ": outlines must cross the barrier";
        EXPECT_LT(hits, 3900) << file << ": and not all of them";
        EXPECT_EQ(differences, 0) << file;
    }
}

TEST(CollisionFastPaths, BarrierChecksAnswerAsThePlainCheckOnAwkwardBarriers) {
    blackbox.init("/dev/null", false);
    std::mt19937 random(11);
    std::uniform_real_distribution<float> unit(0, 1);
    for (int round = 0; round < 20; round++) {
        // A ragged ring, with upright segments, repeated points and (in some
        // rounds) a point that is not a number.
        track.nLRpoints = 40 + round * 7;
        for (unsigned int i = 0; i < track.nLRpoints; i++) {
            float a = 6.2831853f * (float)i / (float)track.nLRpoints;
            float r = 30 + 5 * unit(random);
            track.Lpoint[i] = {r * cosf(a), r * sinf(a)};
            track.Rpoint[i] = {(r + 8) * cosf(a), (r + 8) * sinf(a)};
            if (i % 9 == 4) track.Lpoint[i].x = track.Lpoint[i > 0 ? i - 1 : 0].x;
            if (i % 13 == 5 && i > 0) track.Rpoint[i] = track.Rpoint[i - 1];
        }
        if (round % 4 == 3) track.Rpoint[round].x = NaN;
        long hits = 0, differences = 0;
        compareOutlines(random, 1500, hits, differences);
        EXPECT_GT(hits, 100);
        EXPECT_EQ(differences, 0) << "round " << round;
    }
}

TEST(CollisionFastPaths, KartAgainstKartAnswersAsThePlainTest) {
    config.ngokarts = 6;
    std::mt19937 random(3);
    std::uniform_real_distribution<float> unit(0, 1);
    long hits = 0, differences = 0, tries = 0;
    for (int round = 0; round < 3000; round++) {
        // Six karts close together, some touching, now and then one with
        // numbers no kart should have.
        for (unsigned char j = 0; j < 6; j++) {
            gokart[j].ID = j;
            outline(unit(random) * 6, unit(random) * 6, unit(random) * 360, gokart[j].colx, gokart[j].colz);
        }
        int odd = round % 40;
        if (odd == 1) gokart[2].colx[3] = NaN;
        if (odd == 2) gokart[4].colz[5] = INF;
        if (odd == 3) gokart[1].colx[0] = 1e20f;
        if (odd == 4)
            for (int c = 0; c < 8; c++) gokart[3].colx[c] = 1e-40f * (float)(c % 2);
        if (odd == 5)
            for (int c = 0; c < 8; c++) gokart[5].colx[c] = 2.5f + 1e-7f * (float)c;
        for (unsigned char j = 0; j < 6; j++) {
            const sGokart& k = gokart[j];
            for (int c = 0; c < 8; c++) {
                int d = (c + 1) % 8;
                unsigned char got = gokart[j].colgokart(k.colx[c], k.colz[c], k.colx[d], k.colz[d]);
                unsigned char want = plainColgokart(k, k.colx[c], k.colz[c], k.colx[d], k.colz[d]);
                tries++;
                hits += want != j;
                differences += got != want;
            }
        }
    }
    EXPECT_GT(hits, tries / 20);
    EXPECT_LT(hits, tries - tries / 20);
    EXPECT_EQ(differences, 0);
}

TEST(CollisionFastPaths, ARaceOfKartsCollidesAsThePlainTestWouldHaveIt) {
    gokartstaticdata.chasisfront = 1.364f;
    gokartstaticdata.chasiswidth = 1.24f;
    config.ngokarts = 6;
    std::mt19937 random(5);
    std::uniform_real_distribution<float> unit(0, 1);
    long hits = 0, differences = 0, tries = 0;
    for (int round = 0; round < 3000; round++) {
        for (unsigned char j = 0; j < 6; j++) {
            sGokart& k = gokart[j];
            k.ID = j;
            // Spread wider now and then, so that whole karts are clear of each other.
            float spread = round % 3 == 0 ? 30.0f : 5.0f;
            k.px = unit(random) * spread;
            k.pz = unit(random) * spread;
            k.ay = unit(random) * 720 - 360;
        }
        int odd = round % 30;
        if (odd == 1) gokart[2].px = NaN;
        if (odd == 2) gokart[4].pz = 3e12f;
        if (odd == 3) gokart[1].ay = 1e-40f;  // an edge of next to no width in x
        if (odd == 4) gokart[0].px = -INF;
        // The order of the race frame: each kart lays its outline and tests it
        // against the others as they stand.
        for (unsigned char j = 0; j < 6; j++) {
            sGokart& k = gokart[j];
            k.colide();
            bool want[8] = {};
            unsigned char wantg = k.ID;
            for (int c = 0; c < 8; c++) {
                int d = (c + 1) % 8;
                wantg = plainColgokart(k, k.colx[c], k.colz[c], k.colx[d], k.colz[d]);
                if (wantg != k.ID) {
                    want[c] = true;
                    break;
                }
            }
            bool same = k.colg == wantg;
            for (int c = 0; c < 8; c++) same = same && k.col[c] == want[c];
            tries++;
            hits += wantg != k.ID;
            differences += !same;
        }
    }
    EXPECT_GT(hits, tries / 20);
    EXPECT_LT(hits, tries - tries / 20);
    EXPECT_EQ(differences, 0);
}

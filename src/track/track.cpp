// Stand-in for the track module: lists the tracks, reads a track file's points and pairs, closes and
// separates the barriers, computes their normals, and answers the barrier test.
#include "track/track.h"

#include <dirent.h>

#include <cmath>
#include <cstdio>
#include <cstring>

#include "shell/blackbox.h"
#include "shell/bvconfig.h"

sTrack track;

void sTrack::init(float scale) {
    trackscale = scale;
    ntracks = 0;
    DIR* dir = opendir("Data/Tracks/.");
    if (dir) {
        while (dirent* e = readdir(dir)) {
            if (ntracks >= TRACK_MAXTRACKS) break;
            unsigned int n = 0;
            while (e->d_name[n] && e->d_name[n] != '.' && n < 31) {
                trackname[ntracks][n] = e->d_name[n];
                n++;
            }
            trackname[ntracks][n] = 0;
            if (n > 2) ntracks++;
        }
        closedir(dir);
    }
    if (config.track >= ntracks) config.track = 0;
}

void sTrack::load() {
    char path[512];
    snprintf(path, sizeof path, "%sData/Tracks/%s.txt", config.PATH, config.track < ntracks ? trackname[config.track] : "");
    FILE* f = fopen(path, "r");
    if (!f) {
        blackbox.task("Loading track", false);
        return;
    }
    int dirt = 0, road = 0, fog = 0;
    if (fscanf(f, "%d%d", &dirt, &road) != 2) { /* the defaults stay */ }
    if (fscanf(f, "%d", &fog) != 1) { /* likewise */ }
    whichDirt = (unsigned int)dirt;
    whichRoad = (unsigned int)road;
    fogdensity = (float)(unsigned int)fog / 1000.0f;
    nLRpoints = 0;
    nCpoints = 0;
    auto pair = [&](sTrackPoint* p) {
        int x = 256, z = 256;
        if (fscanf(f, "%d%d", &x, &z) != 2) { /* as far as it got */ }
        if (p) {
            p->x = (float)(x - 256) * trackscale;
            p->z = (float)(z - 256) * trackscale;
        }
    };
    char word[64];
    while (!feof(f)) {
        strcpy(word, "nothing more");
        if (fscanf(f, "%63s", word) != 1) { /* checked below */ }
        if (!strcmp(word, "nothing more")) break;
        if (!strcmp(word, "LR")) {
            bool room = nLRpoints < TRACK_MAXPOINTS - 1;
            pair(room ? &Lpoint[nLRpoints] : nullptr);
            pair(room ? &Rpoint[nLRpoints] : nullptr);
            if (room) nLRpoints++;
        } else if (!strcmp(word, "C")) {
            bool room = nCpoints < TRACK_MAXPOINTS;
            pair(room ? &Cpoint[nCpoints] : nullptr);
            if (room) nCpoints++;
        } else if (!strcmp(word, "O")) {
            int type = 0;
            if (fscanf(f, "%d", &type) != 1) { /* as far as it got */ }
            pair(nullptr);
        }
    }
    blackbox.task("Loading track", true);
    fclose(f);
    if (nLRpoints == 0) return;

    Lpoint[nLRpoints] = Lpoint[0];
    Rpoint[nLRpoints] = Rpoint[0];
    for (unsigned int i = 0; i <= nLRpoints; i++) {
        unsigned int j = (i - 1) % nLRpoints;
        if (Lpoint[i].x == Lpoint[j].x) Lpoint[i].x += 0.01f;
        if (Lpoint[i].z == Lpoint[j].z) Lpoint[i].z += 0.01f;
        if (Rpoint[i].x == Rpoint[j].x) Rpoint[i].x -= 0.01f;
        if (Rpoint[i].z == Rpoint[j].z) Rpoint[i].z -= 0.01f;
    }

    LNpoint[0] = {1, 0};
    RNpoint[0] = {-1, 0};
    auto normal = [&](const sTrackPoint* P, unsigned int i, float sign) {
        unsigned int p = (i - 1) % nLRpoints, q = (i + 1) % nLRpoints;
        float spanz = P[q].z - P[p].z;
        float dx1 = P[i].x - P[p].x, dz1 = P[i].z - P[p].z;
        float dx2 = P[q].x - P[i].x, dz2 = P[q].z - P[i].z;
        if (dx1 == 0) dx1 = 0.1f;
        if (dx2 == 0) dx2 = 0.1f;
        float angle = (float)((atan(dz1 / dx1) + atan(dz2 / dx2)) / 2);
        if (dx1 > 0 && dx2 > 0) angle += 1.570796327f;
        if (dx1 < 0 && dx2 < 0) angle -= 1.570796327f;
        float t = (float)tan(angle);
        float root = (float)sqrt(t * t + 1);
        if (root == 0) root = 0.1f;
        float c = 1 / root;
        if (spanz > 0) sign = -sign;
        return sTrackPoint{sign * c, sign * c * t};
    };
    for (unsigned int i = 1; i < nLRpoints; i++) {
        LNpoint[i] = normal(Lpoint, i, 1);
        if (fabsf(LNpoint[i].x - LNpoint[i - 1].x) > 1 || fabsf(LNpoint[i].z - LNpoint[i - 1].z) > 1) {
            LNpoint[i].x *= -1.0f;
            LNpoint[i].z *= -1.0f;
        }
        RNpoint[i] = normal(Rpoint, i, -1);
        if (fabsf(RNpoint[i].x - RNpoint[i - 1].x) > 1 || fabsf(RNpoint[i].z - RNpoint[i - 1].z) > 1) {
            RNpoint[i].x *= -1.0f;
            RNpoint[i].z *= -1.0f;
        }
    }
    LNpoint[nLRpoints] = LNpoint[0];
    RNpoint[nLRpoints] = RNpoint[0];
}

bool sTrack::check(float x1, float z1, float x2, float z2) {
    float dx = x2 - x1;
    if (dx == 0) dx = 0.000001f;
    float a1 = (z2 - z1) / dx;
    float b1 = z1 - a1 * x1;
    float lo1 = x1 < x2 ? x1 : x2, hi1 = x1 < x2 ? x2 : x1;
    auto crosses = [&](const sTrackPoint& P, const sTrackPoint& Q) {
        float ddx = Q.x - P.x;
        if (ddx == 0) ddx = 0.000001f;
        float a2 = (Q.z - P.z) / ddx;
        float b2 = P.z - a2 * P.x;
        if (a2 == a1) return false;
        float x12 = (b2 - b1) / (a1 - a2);
        float lo2 = P.x < Q.x ? P.x : Q.x, hi2 = P.x < Q.x ? Q.x : P.x;
        return lo2 <= x12 && x12 <= hi2 && lo1 <= x12 && x12 <= hi1;
    };
    unsigned int n = nLRpoints < TRACK_MAXPOINTS ? nLRpoints : TRACK_MAXPOINTS - 1;
    for (unsigned int i = 0; i < n; i++) {
        unsigned int j = (i + 1) % n;
        if (crosses(Lpoint[i], Lpoint[j])) {
            lasthitL = true;
            lasthit = i;
            return true;
        }
        if (crosses(Rpoint[i], Rpoint[j])) {
            lasthitL = false;
            lasthit = i;
            return true;
        }
    }
    return false;
}

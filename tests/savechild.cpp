// The saving half of the save tests, as a program of its own so that it can
// run with a full disk preloaded (shim/failwrite.cpp) or be killed mid-save:
//
//   savechild DIR records|ghost|setup N          save version N once
//   savechild DIR records|ghost|setup N M loop   save N, M, N, M, ... until killed
//
// DIR is a game directory with Data/Highscore and Data/Ghosts. Each version
// is a different file of a different length, so any mix of two shows. Exit
// status 0 when the save went through, 1 when the game reported it failed.

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "frontend/highscore.h"
#include "scene/ghost.h"
#include "shell/blackbox.h"
#include "shell/bvconfig.h"
#include "track/track.h"

namespace {

void records(int version) {
    for (unsigned int i = 0; i < HIGHSCORE_N; i++) {
        // Longer names in every later version, so the files differ in length.
        snprintf(highscore.laprecord_name[i], HIGHSCORE_NAMELENGTH, "V%d%.*s%u", version, version, "XXXXXXXXXX",
                 i);
        highscore.laprecord_time[i] = 30.0f + (float)version + 0.25f * (float)i;
    }
    highscore.save();
}

void ghostlap(int version) {
    // From several kilobytes to the full thousand samples, some 30 kB.
    ghost.nRecs[1] = version % 2 ? GHOST_MAXRECS : 150 * version;
    if (ghost.nRecs[1] > GHOST_MAXRECS) ghost.nRecs[1] = GHOST_MAXRECS;
    ghost.bestTime = 40.0f + (float)version;
    for (int i = 0; i < ghost.nRecs[1]; i++) {
        ghost.px[1][i] = (float)version * 100.0f + (float)i * 0.5f;
        ghost.pz[1][i] = -(float)i * 0.25f;
        ghost.ay[1][i] = (float)((i * 7) % 360) - 180.0f;
    }
    ghost.save();
}

void setup(int version) {
    snprintf(config.player1name, sizeof config.player1name, "DRIVER%.*s", version, "ZZZZZZ");
    config.player1color = (unsigned int)version % 4;
    config.ngokarts = 1 + (unsigned int)version % 6;
    config.aiskill = (unsigned int)version % 3;
    config.track = 0;
    config.loaded = 1000000ul * (unsigned long)version;
    config.save();
}

void save(const std::string& what, int version) {
    if (what == "records")
        records(version);
    else if (what == "ghost")
        ghostlap(version);
    else
        setup(version);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 4 || chdir(argv[1]) != 0) {
        fprintf(stderr, "usage: savechild DIR records|ghost|setup N [M loop]\n");
        return 2;
    }
    blackbox.init("Data/blackbox.bvd", false);
    config.PATH[0] = 0;
    strcpy(track.trackname[0], "oval");
    track.ntracks = 1;
    config.track = 0;
    std::string what = argv[2];
    int first = atoi(argv[3]);
    if (argc >= 6 && std::string(argv[5]) == "loop") {
        int second = atoi(argv[4]);
        // The parent kills us at a random moment from here on.
        fputs("r", stdout);
        fflush(stdout);
        for (long n = 0;; n++) save(what, n % 2 ? second : first);
    }
    save(what, first);
    return blackbox.status ? 0 : 1;
}

// Track files: the reading half of the loader and the barrier collision test
// that drives on what it built.

#include <cstdint>

#include "fuzzinput.h"
#include "shell/blackbox.h"
#include "track/track.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    blackbox.init("/dev/null", false);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static bvfuzz::MemoryFile file;
    file.fill(data, size);
    FILE* f = fopen(file.path(), "r");
    if (!f) return 0;
    track.trackscale = 0.125f;
    // With one advertisement, so that boards are taken and placed too.
    track.nAds = 1;
    track.parse(f, "Data/Tracks/fuzz.txt");
    fclose(f);

    // What the lists, the drawing and the karts index with.
    BVFUZZ_REQUIRE(track.nLRpoints <= TRACK_MAXPOINTS);
    BVFUZZ_REQUIRE(track.nCpoints <= TRACK_MAXPOINTS);
    BVFUZZ_REQUIRE(track.nMiscobjects <= TRACK_MAXOBJECTS);
    BVFUZZ_REQUIRE(track.whichDirt < N_DIRTS);
    BVFUZZ_REQUIRE(track.whichRoad < N_ROADS);
    for (unsigned int i = 0; i < track.nMiscobjects; i++)
        BVFUZZ_REQUIRE(track.typeMiscobject[i] < TRACK_NOBJECTTYPES);

    // A kart crossing the map in both directions and standing still.
    track.check(-40, -40, 40, 40);
    track.check(0, 40, 0, -40);
    track.check(1, 1, 1, 1);
    if (track.nLRpoints > 0) {
        const sTrackPoint& p = track.Lpoint[0];
        const sTrackPoint& q = track.Rpoint[track.nLRpoints - 1];
        track.check(p.x, p.z, q.x, q.z);
    }
    return 0;
}

// A track's ghost lap, Data/Ghosts/<track>.txt, read whenever a track is
// loaded, then played back and written out again.

#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "fuzzinput.h"
#include "kart/gokart.h"
#include "scene/ghost.h"
#include "shell/blackbox.h"
#include "shell/bvconfig.h"
#include "shell/performance.h"
#include "track/track.h"

namespace {

bvfuzz::MemoryFile* input;

// What save() would write: the best time and three lines a sample, each whole.
void requireText() {
    std::string text = ghost.text();
    size_t lines = 0;
    for (char c : text) lines += c == '\n';
    size_t samples = ghost.nRecs[1] > 0 ? (size_t)ghost.nRecs[1] : 0;
    BVFUZZ_REQUIRE(lines == 1 + 3 * samples);
    BVFUZZ_REQUIRE(text.back() == '\n');
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    blackbox.init("/dev/null", false);
    const char* tmp = getenv("TMPDIR");
    std::string pattern = std::string(tmp && *tmp ? tmp : "/tmp") + "/bvfuzz-ghost-XXXXXX";
    if (!mkdtemp(&pattern[0])) abort();
    std::string base = pattern + "/";
    mkdir((base + "Data").c_str(), 0700);
    mkdir((base + "Data/Ghosts").c_str(), 0700);
    input = new bvfuzz::MemoryFile();
    if (symlink(input->path(), (base + "Data/Ghosts/fuzz.txt").c_str()) != 0) abort();
    snprintf(config.PATH, sizeof config.PATH, "%s", base.c_str());
    strcpy(track.trackname[0], "fuzz");
    track.ntracks = 1;
    config.track = 0;
    performance.fps = 30;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    input->fill(data, size);
    ghost.init();

    // Playback indexes its arrays with these: at most the 1000 samples there
    // is room for, and -1 only for an empty file.
    BVFUZZ_REQUIRE(ghost.nRecs[1] >= -1 && ghost.nRecs[1] < GHOST_MAXRECS);
    BVFUZZ_REQUIRE(ghost.nRecs[0] == 0 && ghost.mRec == 0);
    requireText();

    // Every place playback can stand, with the step to the next sample.
    float x, z, heading;
    for (int m = 0; m < ghost.nRecs[1]; m++) {
        ghost.mRec = m;
        ghost.timer[1] = 0.5f;
        ghost.pose(&x, &z, &heading);
    }
    ghost.mRec = 0;
    ghost.timer[1] = 0;

    // A lap recorded over the loaded one, past the cap, then kept.
    for (int i = 0; i < 2 * GHOST_MAXRECS + 10; i++) ghost.record();
    BVFUZZ_REQUIRE(ghost.nRecs[0] == GHOST_MAXRECS);
    ghost.goodone();
    BVFUZZ_REQUIRE(ghost.nRecs[1] == GHOST_MAXRECS);
    requireText();
    return 0;
}

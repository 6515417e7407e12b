// A track's lap records, Data/Highscore/<track>.txt, read whenever a track is
// loaded, then played with: laps offered to the table and the file written back.

#include <sys/stat.h>
#include <unistd.h>

#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "frontend/highscore.h"
#include "fuzzinput.h"
#include "kart/gokart.h"
#include "scene/ghost.h"
#include "shell/blackbox.h"
#include "shell/bvconfig.h"
#include "track/track.h"

namespace {

bvfuzz::MemoryFile* input;

// Every name is one word ending inside its field.
void requireNames() {
    for (unsigned int i = 0; i < HIGHSCORE_N; i++) {
        const char* name = highscore.laprecord_name[i];
        const void* end = memchr(name, 0, HIGHSCORE_NAMELENGTH);
        BVFUZZ_REQUIRE(end != nullptr);
        for (const char* c = name; *c; c++) BVFUZZ_REQUIRE(!isspace((unsigned char)*c));
    }
}

// What save() would write: ten whole lines, whatever the numbers.
void requireText() {
    std::string text = highscore.text();
    size_t lines = 0;
    for (char c : text) lines += c == '\n';
    BVFUZZ_REQUIRE(lines == HIGHSCORE_N);
    BVFUZZ_REQUIRE(!text.empty() && text.back() == '\n');
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    blackbox.init("/dev/null", false);
    // The record file is found by its track's name under config.PATH; here
    // that name is a link to the in-memory input.
    const char* tmp = getenv("TMPDIR");
    std::string pattern = std::string(tmp && *tmp ? tmp : "/tmp") + "/bvfuzz-highscore-XXXXXX";
    if (!mkdtemp(&pattern[0])) abort();
    std::string base = pattern + "/";
    mkdir((base + "Data").c_str(), 0700);
    mkdir((base + "Data/Highscore").c_str(), 0700);
    input = new bvfuzz::MemoryFile();
    if (symlink(input->path(), (base + "Data/Highscore/fuzz.txt").c_str()) != 0) abort();
    snprintf(config.PATH, sizeof config.PATH, "%s", base.c_str());
    strcpy(track.trackname[0], "fuzz");
    track.ntracks = 1;
    config.track = 0;
    // The longest name the menu lets a player type.
    strcpy(config.player1name, "ABCDEFGHIJKL");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    input->fill(data, size);
    highscore.init();
    BVFUZZ_REQUIRE(highscore.thisnewrecorddelay == 0);
    requireNames();
    requireText();

    // Laps from both kinds of driver moving the table about, as a race does;
    // the names are copied from entry to entry as they go down.
    ghost.badone();
    const float laps[] = {45.0f, 0.0f, 98.5f, -1.0f};
    for (unsigned int i = 0; i < sizeof laps / sizeof laps[0]; i++) {
        gokart[i % 2].currentlaptime = laps[i];
        highscore.checkfornewrecord(i % 2);
        requireNames();
    }
    requireText();
    return 0;
}

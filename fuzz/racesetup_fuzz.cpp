// The remembered race setup, Data/gencon.bvd, read at start after the settings.

#include <sys/stat.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "fuzzinput.h"
#include "shell/blackbox.h"
#include "shell/bvconfig.h"

namespace {

// The race setup is found by its fixed name under config.PATH, so it needs a
// directory of its own; the settings beside it are the shipped ones.
std::string base;
bvfuzz::MemoryFile* settings;

const char kSettings[] =
    "resolution 2\ncolordepth 1\nviewdistance 2\nlevelofdetail 2\nshadows 1\ntrackshadows 1\n"
    "soundeffects 0\nsoundvolume 100\nmusic 0\nmusicvolume 100\ngamma 0\nmousesteering 1\n"
    "mousesensitivity 4\njoysticksteering 0\nlensflare 1\nskidmarks 1\n";

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    blackbox.init("/dev/null", false);
    const char* tmp = getenv("TMPDIR");
    std::string pattern = std::string(tmp && *tmp ? tmp : "/tmp") + "/bvfuzz-racesetup-XXXXXX";
    if (!mkdtemp(&pattern[0])) abort();
    base = pattern + "/";
    mkdir((base + "Data").c_str(), 0700);
    settings = new bvfuzz::MemoryFile();
    settings->fill((const uint8_t*)kSettings, sizeof kSettings - 1);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string path = base + "Data/gencon.bvd";
    FILE* f = fopen(path.c_str(), "wb");
    if (!f) abort();
    if (size && fwrite(data, 1, size, f) != size) abort();
    fclose(f);

    snprintf(config.PATH, sizeof config.PATH, "%s", base.c_str());
    BVFUZZ_REQUIRE(config.init(settings->path()));

    // The menu indexes its palette, field size and difficulty names with these.
    BVFUZZ_REQUIRE(config.player1color < CONFIG_NCOLORS);
    BVFUZZ_REQUIRE(config.ngokarts >= 1 && config.ngokarts <= CONFIG_MAXGOKARTS);
    BVFUZZ_REQUIRE(config.aiskill <= 2);
    BVFUZZ_REQUIRE(memchr(config.player1name, 0, sizeof config.player1name) != nullptr);
    BVFUZZ_REQUIRE(strchr(config.player1name, ' ') == nullptr);
    return 0;
}

// The settings file, Data/config.bvd, as the start-up reads it.

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "fuzzinput.h"
#include "shell/blackbox.h"
#include "shell/bvconfig.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    blackbox.init("/dev/null", false);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static bvfuzz::MemoryFile file;
    // No race setup beside it: only the settings are under test here.
    strcpy(config.PATH, "/nonexistent/");
    bool ok = config.init(file.fill(data, size));
    BVFUZZ_REQUIRE(ok);

    // The window is opened with these, whatever the file said.
    static const unsigned int widths[] = {640, 800, 1024, 1152, 1280, 1600};
    bool known = false;
    for (unsigned int w : widths) known = known || w == config.width;
    BVFUZZ_REQUIRE(known);
    BVFUZZ_REQUIRE(config.depth == 16 || config.depth == 32);
    BVFUZZ_REQUIRE(config.LOrange[0] >= 30.0f && config.LOrange[0] <= 150.0f);
    BVFUZZ_REQUIRE(config.nVar == 26 && config.nFnc == 3);
    BVFUZZ_REQUIRE(memchr(config.player1name, 0, sizeof config.player1name) != nullptr);
    return 0;
}

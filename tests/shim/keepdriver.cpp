// Linked into the game of the sanitizer build only: keeps Mesa's software GL
// driver loaded until the process ends.
//
// The driver keeps a few records of its own for its whole life (tests/lsan.supp
// names it), and the game's shutdown closes the X display, on which Mesa
// unloads the driver. The leak checker runs after that, finds the records
// with no module left to name them by, and cannot tell them from ours. Opened
// here once more with RTLD_NODELETE, the driver stays mapped to the end, so
// its records are still named after it.

#include <dlfcn.h>

namespace {

__attribute__((constructor)) void keepDriver() {
    // Nothing to keep when the machine draws with another driver.
    dlopen(BV_DRI_DIR "/swrast_dri.so", RTLD_LAZY | RTLD_NODELETE);
}

}  // namespace

// brontevalle-config: the player's settings, in a window or from the command line.

#include <gtk/gtk.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "cli.h"
#include "window.h"

namespace fs = std::filesystem;

namespace {

const char kHelp[] =
    "Usage: brontevalle-config [--file PATH] [--game PROGRAM]\n"
    "       brontevalle-config [--file PATH] --show\n"
    "       brontevalle-config [--file PATH] --set NAME=VALUE...\n"
    "\n"
    "Changes the settings of Brontevalle. Without --show or --set it opens a window.\n"
    "\n"
    "  --file PATH      the settings file (default: Data/config.bvd below the current\n"
    "                   directory, where the game reads it)\n"
    "  --show           print the settings, NAME=VALUE and what the value means\n"
    "  --set NAME=VALUE change settings; a value out of range changes nothing and\n"
    "                   ends with status 2. Steps may be given by name, e.g.\n"
    "                   resolution=1280x960, kartshadows=blobs, music=off\n"
    "  --game PROGRAM   what the window's Play button starts (default: brontevalle\n"
    "                   in the directory that holds the settings file's Data/)\n"
    "  --help           this text\n"
    "\n"
    "With mouse steering on, the arrow keys no longer steer kart 1.\n";

int usage(const char* problem) {
    fprintf(stderr, "brontevalle-config: %s\nTry 'brontevalle-config --help'.\n", problem);
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    std::string file = "Data/config.bvd", game;
    bool show = false, set = false;
    std::vector<std::string> assignments;
    for (int i = 1; i < argc; i++) {
        std::string a = argv[i];
        if (a == "--help" || a == "-h") {
            fputs(kHelp, stdout);
            return 0;
        } else if (a == "--file" || a == "--game") {
            if (i + 1 >= argc) return usage((a + " needs a value").c_str());
            (a == "--file" ? file : game) = argv[++i];
        } else if (a == "--show") {
            show = true;
        } else if (a == "--set") {
            set = true;
            while (i + 1 < argc && strncmp(argv[i + 1], "--", 2) != 0) assignments.push_back(argv[++i]);
        } else {
            return usage(("unknown argument '" + a + "'").c_str());
        }
    }
    if (show && set) return usage("--show and --set do not go together");
    if (set) return bvset::set(file, assignments, stdout, stderr);
    if (show) return bvset::show(file, stdout, stderr);

    // The game's directory is the one that holds Data/.
    fs::path dir = fs::absolute(file).lexically_normal().parent_path().parent_path();
    if (game.empty()) game = (dir / "brontevalle").string();
    g_set_prgname("brontevalle-config");
    if (!gtk_init_check(&argc, &argv)) {
        fprintf(stderr, "brontevalle-config: no display for the window; --show and --set work without one\n");
        return 1;
    }
    return runWindow(fs::absolute(file).lexically_normal().string(), game, dir.string());
}

// The harness's scenarios (the menu, the floors, every race and view) and the scratch game directory each runs in.

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "frametime.h"

namespace frametime {

namespace {

std::string gameDir() {
    const char* d = getenv("BV_GAME_DIR");
    return d && *d ? d : BV_GAME_DIR;
}

// The shipped tracks, by the names of their files, in name order.
std::vector<std::string> shippedTracks() {
    std::vector<std::string> names;
    std::string dir = gameDir() + "/Data/Tracks";
    if (DIR* d = opendir(dir.c_str())) {
        while (dirent* e = readdir(d)) {
            std::string n = e->d_name;
            size_t dot = n.find('.');
            if (dot == std::string::npos || dot <= 2 || n.substr(dot) != ".txt") continue;
            names.push_back(n.substr(0, dot));
        }
        closedir(d);
    }
    std::sort(names.begin(), names.end());
    return names;
}

const char* CAMERA_NAMES[5] = {"driver", "chase", "trackside", "high", "free"};

// A scratch game directory: the game's content linked, its settings copied,
// and empty folders for what the game writes.
std::string scratchGame() {
    char templ[] = "/tmp/brontevalle-frametime-XXXXXX";
    if (!mkdtemp(templ)) {
        perror("frametime: mkdtemp");
        exit(2);
    }
    std::string dir = templ;
    std::string data = gameDir() + "/Data";
    mkdir((dir + "/Data").c_str(), 0755);
    for (const char* sub : {"Ads", "Fonts", "GUI", "Models", "Sounds", "Textures", "Tracks"}) {
        std::string from = data + "/" + sub;
        if (symlink(from.c_str(), (dir + "/Data/" + sub).c_str()) != 0) perror("frametime: symlink");
    }
    for (const char* sub : {"Ghosts", "Highscore", "Screenshots"}) mkdir((dir + "/Data/" + sub).c_str(), 0755);
    std::ifstream in(data + "/config.bvd", std::ios::binary);
    std::ofstream out(dir + "/Data/config.bvd", std::ios::binary);
    out << in.rdbuf();
    return dir;
}

}  // namespace

std::vector<Scenario> scenarios() {
    std::vector<Scenario> all;
    for (int f : {3, 2}) {
        Scenario s;
        s.name = f == 3 ? "floor3d" : "floor2d";
        s.floor = f;
        all.push_back(s);
    }
    Scenario menuScenario;
    menuScenario.name = "menu";
    all.push_back(menuScenario);
    std::vector<std::string> tracks = shippedTracks();
    for (const std::string& t : tracks)
        for (bool fx : {false, true})
            for (unsigned int k : {1u, 3u, 6u}) {
                Scenario s;
                s.name = "race-" + t + "-" + std::to_string(k) + (fx ? "-max" : "-off");
                s.race = true;
                s.track = t;
                s.karts = k;
                s.effects = fx;
                all.push_back(s);
            }
    // The heaviest race again with the race stepped at a sixtieth of a
    // second a frame: where frames are slow, the real-time race sends the
    // computer drivers through the barriers (see kart_from_barrier_m) and
    // the eye then looks at empty ground; stepped, they stay on the circuit.
    for (const std::string& t : tracks) {
        Scenario s;
        s.name = "race60-" + t + "-6-max";
        s.race = true;
        s.track = t;
        s.karts = 6;
        s.effects = true;
        s.stepped = true;
        all.push_back(s);
    }
    // Every view, in the heaviest race on the first track.
    for (int c = 0; c < 5; c++) {
        Scenario s;
        s.name = std::string("camera-") + CAMERA_NAMES[c];
        s.race = true;
        s.track = tracks.empty() ? "" : tracks[0];
        s.karts = 6;
        s.effects = true;
        s.camera = c;
        all.push_back(s);
    }
    return all;
}

void removeScratch(const std::string& dir) {
    std::string cmd = "rm -rf '" + dir + "'";
    if (system(cmd.c_str()) != 0) fprintf(stderr, "frametime: could not remove %s\n", dir.c_str());
}

// The scratch game directory becomes the working directory; sound goes to
// OpenAL Soft's null device.
std::string enterScratchGame() {
    // A player has a sound card; a build machine under Xvfb has none, and
    // without one the game would load and mix nothing. OpenAL Soft's null
    // device mixes like a card does and plays to nowhere.
    setenv("ALSOFT_DRIVERS", "null", 0);
    std::string dir = scratchGame();
    if (chdir(dir.c_str()) != 0) {
        perror("frametime: chdir");
        return "";
    }
    setenv("SDL_VIDEODRIVER", "x11", 1);
    return dir;
}

}  // namespace frametime

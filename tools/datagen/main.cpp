// datagen: makes the game's content into a Data/ directory.
//
//   datagen <Data directory> <source data directory>
//
// Pictures, sounds and music are generated from fixed seeds (two runs give the
// same bytes); the hand-written settings file is copied from the source directory.

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>
#include <system_error>

#include "datagen/content.h"
#include "datagen/models.h"
#include "datagen/tracks.h"

namespace fs = std::filesystem;

int main(int argc, char** argv) {
    if (argc != 3) {
        fprintf(stderr, "usage: datagen <Data directory> <source data directory>\n");
        return 2;
    }
    const fs::path data = argv[1], source = argv[2];
    auto start = std::chrono::steady_clock::now();
    std::error_code ec;
    for (const char* d : {"Screenshots", "Highscore", "Ghosts", "Ads", "Fonts", "GUI", "Textures", "Sounds", "Tracks", "Models"}) {
        fs::create_directories(data / d, ec);
        if (ec) {
            fprintf(stderr, "datagen: cannot create %s: %s\n", (data / d).c_str(), ec.message().c_str());
            return 1;
        }
    }

    int failures = 0;
    for (const gen::Picture& p : gen::allPictures()) {
        fs::path file = data / p.path;
        if (!bvw::writeTGA(file.string(), p.make(), p.bpp, p.rle)) {
            fprintf(stderr, "datagen: cannot write %s\n", file.c_str());
            failures++;
        }
    }
    for (const gen::SoundFile& s : gen::allSounds()) {
        fs::path file = data / s.path;
        if (!s.write(file.string())) {
            fprintf(stderr, "datagen: cannot write %s\n", file.c_str());
            failures++;
        }
    }
    std::string error;
    if (!generateModels(data.string(), &error)) {
        fprintf(stderr, "datagen: %s\n", error.c_str());
        failures++;
    }
    if (!generateTracks(data.string(), source.string(), &error)) {
        fprintf(stderr, "datagen: %s\n", error.c_str());
        failures++;
    }
    fs::copy_file(source / "config.bvd", data / "config.bvd", fs::copy_options::overwrite_existing, ec);
    if (ec) {
        fprintf(stderr, "datagen: cannot copy the settings file: %s\n", ec.message().c_str());
        failures++;
    }

    double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    printf("datagen: content written to %s in %.1f s%s\n", data.c_str(), seconds, failures ? " WITH ERRORS" : "");
    return failures ? 1 : 0;
}

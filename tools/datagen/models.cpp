// The list of generated models, and each one built and written as a .3DS file.

#include "datagen/models.h"

#include <filesystem>

#include "datagen/models_kart_internal.h"

namespace modelgen {

const char* const KART_PARTS[11] = {"armd", "armu",      "body", "chasis",    "foot",         "frontwheel",
                                    "head", "pedal",     "plastic", "rearwheel", "steeringwheel"};
const char* const KART_LEVELS[3] = {"LO", "ME", "HI"};

namespace {

const char* const SCENERY[] = {"tfinish", "camera",  "camerastand", "adboard", "barrel", "barrelt",
                               "container", "barrel2", "barrel2t", "nature", "container2", "ad",
                               "sign1",   "sign2",   "sign3",       "sign4"};

}  // namespace

std::vector<std::string> modelNames() {
    std::vector<std::string> names;
    for (const char* part : KART_PARTS)
        for (const char* level : KART_LEVELS) names.push_back(std::string(level) + part);
    names.push_back("SLOgokart");
    for (const char* name : SCENERY) names.push_back(name);
    names.push_back("sky");
    return names;
}

bool buildModel(const std::string& name, writer3ds::Model* model) {
    if (name == "SLOgokart") {
        *model = kartSilhouette();
        return true;
    }
    if (name == "sky") {
        *model = skyDome();
        return true;
    }
    for (int level = 0; level < 3; level++) {
        const std::string prefix = KART_LEVELS[level];
        if (name.compare(0, prefix.size(), prefix) != 0) continue;
        for (const char* part : KART_PARTS)
            if (name.substr(prefix.size()) == part) {
                *model = kartPart(part, level);
                return true;
            }
    }
    for (const char* s : SCENERY)
        if (name == s) {
            *model = scenery(name);
            return true;
        }
    return false;
}

}  // namespace modelgen

bool generateModels(const std::string& dataDir, std::string* error) {
    const std::string dir = dataDir + "/Models";
    std::error_code ec;
    std::filesystem::create_directories(dir, ec);
    for (const std::string& name : modelgen::modelNames()) {
        writer3ds::Model model;
        modelgen::buildModel(name, &model);
        std::string problem = writer3ds::check(model);
        const std::string path = dir + "/" + name + ".3DS";
        if (problem.empty() && !writer3ds::write3DS(model, path)) problem = "cannot write " + path;
        if (!problem.empty()) {
            if (error) *error = name + ": " + problem;
            return false;
        }
    }
    return true;
}

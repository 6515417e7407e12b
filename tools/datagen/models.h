#ifndef BV_TOOLS_DATAGEN_MODELS_H
#define BV_TOOLS_DATAGEN_MODELS_H

// The game's meshes, made by code: the kart's parts at three levels of detail
// and its one-piece silhouette, the roadside models, the finish gantry, the TV
// camera and its stand, and the sky dome. Each becomes Models/<name>.3DS below
// the data directory.

#include <string>
#include <vector>

#include "writers/writer3ds.h"

namespace modelgen {

// The kart's body parts in the order the kart data loads them, and the three
// prefixes of their levels of detail, lowest first.
extern const char* const KART_PARTS[11];
extern const char* const KART_LEVELS[3];

// Every model file name without its ".3DS" extension.
std::vector<std::string> modelNames();

// The model of that name; false for a name we do not make.
bool buildModel(const std::string& name, writer3ds::Model* model);

}  // namespace modelgen

// Writes every model to dataDir/Models/<name>.3DS, making the folder if need
// be. False with a reason in *error (when given) if a model cannot be written.
bool generateModels(const std::string& dataDir, std::string* error);

#endif

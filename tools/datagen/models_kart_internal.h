#ifndef BV_TOOLS_DATAGEN_MODELS_KART_INTERNAL_H
#define BV_TOOLS_DATAGEN_MODELS_KART_INTERNAL_H

// The model makers behind generateModels, one per family of models.

#include <string>

#include "datagen/models_mesh.h"

namespace modelgen {

// part: one of KART_PARTS; level 0 LO, 1 ME, 2 HI.
writer3ds::Model kartPart(const std::string& part, int level);
writer3ds::Model kartSilhouette();
// The roadside models, finish gantry, TV camera and its stand, by file name;
// an empty model for a name that is not one of them.
writer3ds::Model scenery(const std::string& name);
writer3ds::Model skyDome();

}  // namespace modelgen

#endif

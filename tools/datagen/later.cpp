// Content that is not generated yet: the lists stay empty until their modules land.

#include "datagen/content.h"

namespace gen {
void soundFiles(std::vector<SoundFile>&) {}
void musicFiles(std::vector<SoundFile>&) {}
}  // namespace gen

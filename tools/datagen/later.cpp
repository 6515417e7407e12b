// Content that is not generated yet: the lists stay empty until their modules land.

#include "datagen/content.h"

namespace gen {
void kartPictures(std::vector<Picture>&) {}
void modelPictures(std::vector<Picture>&) {}
void adPictures(std::vector<Picture>&) {}
void soundFiles(std::vector<SoundFile>&) {}
void musicFiles(std::vector<SoundFile>&) {}
}  // namespace gen

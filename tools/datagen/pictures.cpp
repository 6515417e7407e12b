// Every picture and every sound file the generator makes, one list of each.

#include "datagen/content.h"

namespace gen {

std::vector<Picture> allPictures() {
    std::vector<Picture> out;
    fontPictures(out);
    guiPictures(out);
    trackPictures(out);
    kartPictures(out);
    modelPictures(out);
    adPictures(out);
    return out;
}

std::vector<SoundFile> allSounds() {
    std::vector<SoundFile> out;
    soundFiles(out);
    musicFiles(out);
    return out;
}

}  // namespace gen

// Loading a sound file by name, logged like the textures and models.

#include "audio/sample.h"

#include <string>

#include "shell/blackbox.h"
#include "shell/bvconfig.h"

FSOUND_SAMPLE* loadSample(const char* file, unsigned int mode) {
    std::string path = std::string(config.PATH) + file;
    FSOUND_SAMPLE* sample = FSOUND_Sample_Load(FSOUND_FREE, path.c_str(), mode, 0);
    std::string message = std::string("Loading soundeffects f : ") + file;
    blackbox.task(message.c_str(), sample != nullptr);
    config.disploaded(message.c_str());
    return sample;
}

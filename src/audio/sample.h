#ifndef BV_AUDIO_SAMPLE_H
#define BV_AUDIO_SAMPLE_H

// Sound files from the game's folder, loaded the way every asset is: a task
// in the event log and a line on the loading screen, whether or not it worked.

#include "audio/fsound.h"

// file is relative to the game's folder, extension included ("Data/Sounds/Tire.wav");
// mode takes FSOUND_Sample_Load's flags. Gives nullptr when the file cannot be read.
FSOUND_SAMPLE* loadSample(const char* file, unsigned int mode);

#endif

#ifndef BV_CONFIG_WINDOW_H
#define BV_CONFIG_WINDOW_H

#include <string>

// Opens the settings window on the file and runs until it is closed. game is
// the program the Play button starts, in the directory that holds Data/.
// Returns the exit status.
int runWindow(const std::string& file, const std::string& game, const std::string& gameDir);

#endif

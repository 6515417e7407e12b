// The game's entry point; everything it runs is in the core library.

#include "shell/main.h"

// Painted by our icon painter when the game is built (config/icon.cpp).
extern const int bvWindowIconSize;
extern const unsigned char bvWindowIcon[];

// Arguments are ignored: everything the game needs is under Data/.
int main(int, char**) {
    windowIconPixels = bvWindowIcon;
    windowIconSize = bvWindowIconSize;
    gamemain();
}

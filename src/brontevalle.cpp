// The game's entry point; everything it runs is in the core library.

#include "shell/main.h"

// Arguments are ignored: everything the game needs is under Data/.
int main(int, char**) {
    gamemain();
}

#include "shell/main.h"

// Arguments are ignored: everything the game needs is under Data/.
int main(int, char**) {
    gamemain();
}

// Mouse position and buttons, and the steering deltas made from them.

#include "shell/mouse.h"

#include <SDL/SDL.h>

#include "shell/bvconfig.h"

void sMouse::init() {
    lb = false;
    rb = false;
    x = config.width / 2;
    y = config.height / 2;
    deltax = 0;
    deltay = 0;
    SDL_WarpMouse((Uint16)x, (Uint16)y);
}

void sMouse::refresh(bool recentre) {
    deltax = (int)(x - ox);
    deltay = (int)(y - oy);
    ox = x;
    oy = y;
    if (recentre) {
        x = ox = config.width / 2;
        y = oy = config.height / 2;
        SDL_WarpMouse((Uint16)x, (Uint16)y);
    }
}

#include "shell/joystick.h"

#include "shell/bvconfig.h"

void sJoystick::init() {
    x = config.width / 2;
    y = config.height / 2;
    deltax = 0;
    deltay = 0;
    device = nullptr;
    if (SDL_InitSubSystem(SDL_INIT_JOYSTICK) == 0 && SDL_NumJoysticks() > 0) device = SDL_JoystickOpen(0);
}

void sJoystick::refresh() {
    if (device) {
        SDL_JoystickUpdate();
        x = (unsigned int)(32000 + SDL_JoystickGetAxis(device, 0));
        y = (unsigned int)(32000 + SDL_JoystickGetAxis(device, 1));
    }
    deltax = (int)(x - ox);
    deltay = (int)(y - oy);
    ox = x;
    oy = y;
}

// The first joystick's two axes as steering deltas.

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

// The driving code expects 0..64000 around the centre 32000; SDL reaches
// 768 further below and 767 further above.
static unsigned int stick(int axis) {
    int v = 32000 + axis;
    return (unsigned int)(v < 0 ? 0 : v > 64000 ? 64000 : v);
}

void sJoystick::axes(int axisx, int axisy) {
    x = stick(axisx);
    y = stick(axisy);
}

void sJoystick::refresh() {
    if (device) {
        SDL_JoystickUpdate();
        axes(SDL_JoystickGetAxis(device, 0), SDL_JoystickGetAxis(device, 1));
    }
    deltax = (int)(x - ox);
    deltay = (int)(y - oy);
    ox = x;
    oy = y;
}

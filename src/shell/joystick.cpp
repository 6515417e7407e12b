// The first joystick's two axes as steering deltas, and its first two buttons.

#include "shell/joystick.h"

#include "shell/bvconfig.h"
#include "shell/settingslines.h"

void sJoystick::init() {
    x = config.width / 2;
    y = config.height / 2;
    deltax = 0;
    deltay = 0;
    firstbutton = false;
    secondbutton = false;
    device = nullptr;
    if (SDL_InitSubSystem(SDL_INIT_JOYSTICK) == 0 && SDL_NumJoysticks() > 0) device = SDL_JoystickOpen(0);
}

// The driving code expects 0..64000 around the centre 32000; SDL reaches
// 768 further below and 767 further above. A pad at rest seldom reads exactly
// 0, so the `dead` units either side of the centre are the centre, and the
// rest of the travel is stretched so that the stop is still the stop.
static unsigned int stick(int axis, int dead) {
    int v = 32000 + axis;
    v = v < 0 ? 0 : v > 64000 ? 64000 : v;
    if (dead <= 0) return (unsigned int)v;
    int off = v - 32000;
    int far = off < 0 ? -off : off;
    if (far <= dead) return 32000;
    far = (int)((long long)(far - dead) * 32000 / (32000 - dead));
    return (unsigned int)(32000 + (off < 0 ? -far : far));
}

void sJoystick::axes(int axisx, int axisy) {
    // The settings file keeps the percentage within its range; whatever else
    // sets the field, a zone of the whole travel would leave nothing to stretch.
    unsigned int percent = config.joystickdeadzone;
    const unsigned int most = (unsigned int)bvlines::kLines[bvlines::JOYSTICKDEADZONE].max;
    if (percent > most) percent = most;
    int dead = (int)(percent * 32000 / 100);
    x = stick(axisx, dead);
    y = stick(axisy, dead);
}

void sJoystick::buttons(bool first, bool second) {
    firstbutton = first;
    secondbutton = second;
}

float sJoystick::pedal(bool up, bool down) const {
    if (up && firstbutton) return 45;
    if (down && secondbutton) return -45;
    return -((float)y / 32000.0f - 1) * 45;
}

void sJoystick::refresh() {
    if (device) {
        SDL_JoystickUpdate();
        axes(SDL_JoystickGetAxis(device, 0), SDL_JoystickGetAxis(device, 1));
        int n = SDL_JoystickNumButtons(device);
        buttons(n > 0 && SDL_JoystickGetButton(device, 0), n > 1 && SDL_JoystickGetButton(device, 1));
    }
    deltax = (int)(x - ox);
    deltay = (int)(y - oy);
    ox = x;
    oy = y;
}

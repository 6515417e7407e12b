#ifndef BV_SHELL_JOYSTICK_H
#define BV_SHELL_JOYSTICK_H

#include <SDL/SDL.h>

// Joystick steering with the mouse's delta interface. When SDL reports a
// device, the first one is opened and its first two axes drive x and y
// around 32000, the centre the steering expects; without one the deltas stay 0.
struct sJoystick {
    unsigned int x, y;
    unsigned int ox, oy;
    int deltax, deltay;
    SDL_Joystick* device;

    void init();
    void refresh();
    // Takes one reading of the first two axes (SDL's -32768..32767) as x and y,
    // kept within 0..64000 so that a stick pushed to its stop cannot wrap.
    void axes(int axisx, int axisy);
};

extern sJoystick joystick;

#endif

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
};

extern sJoystick joystick;

#endif

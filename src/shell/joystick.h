#ifndef BV_SHELL_JOYSTICK_H
#define BV_SHELL_JOYSTICK_H

#include <SDL/SDL.h>

// Joystick steering with the mouse's delta interface. When SDL reports a
// device, the first one is opened and its first two axes drive x and y
// around 32000, the centre the steering expects; without one the deltas stay 0.
// Its first two buttons (A and B on a usual pad) are player 1's pedals.
struct sJoystick {
    unsigned int x, y;
    unsigned int ox, oy;
    int deltax, deltay;
    bool firstbutton, secondbutton;      // held this frame
    SDL_Joystick* device;

    void init();
    void refresh();
    // Takes one reading of the first two axes (SDL's -32768..32767) as x and y,
    // kept within 0..64000 so that a stick pushed to its stop cannot wrap.
    // Within config.joystickdeadzone percent of the travel around the centre a
    // reading is the centre; the travel beyond is stretched to the full range.
    void axes(int axisx, int axisy);
    // Takes one reading of the first two buttons.
    void buttons(bool first, bool second);
    // The pedal the stick's y stands for, -45 full brake .. 45 full throttle.
    // A held button whose pedal the kart may use (up, down: its kUP, kDOWN,
    // which wait for the start) is the whole pedal.
    float pedal(bool up, bool down) const;
};

extern sJoystick joystick;

#endif

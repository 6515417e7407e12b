#ifndef BV_SHELL_MOUSE_H
#define BV_SHELL_MOUSE_H

// Pointer position and buttons (written by the event loop) turned into
// per-frame deltas for mouse steering; pinned to the window centre in a race.
struct sMouse {
    bool lb;
    bool rb;
    unsigned int x, y;
    unsigned int ox, oy;
    int deltax, deltay;

    void init();
    void refresh(bool recentre);
};

extern sMouse mouse;

#endif

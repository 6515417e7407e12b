#ifndef BV_SCENE_PAUSE_H
#define BV_SCENE_PAUSE_H

// The race held still (P, or the window losing the keyboard or being
// minimised) and the race started over (Delete).

#include <SDL/SDL.h>

// As many channels as the sound adapter can open.
const int PAUSE_NCHANNELS = 256;

struct sPause {
    bool paused = false;
    long since = 0;        // bvclock() when the race stopped
    bool pheld = false;    // P was down at the last look: a held key acts once
    bool delheld = false;  // and Delete
    // The channels that were sounding when the race stopped: they, and only
    // they, play on from where they were (the tyres' loop may be paused by the
    // kart itself, and must stay so).
    int stopped[PAUSE_NCHANNELS];
    int nstopped = 0;

    // A race that runs, its sounds playing as they were. Keys already down
    // count as seen, so a key held through a restart does not act again.
    void init();
    // Stops the race's clocks and sounds; nothing when it is already paused.
    void hold();
    // Shifts every clock of the race by the time it stood, so that lap times
    // come out as if there had been no pause, and plays the sounds on.
    void resume();
    // P toggles; Delete starts the race over. Before anything moves in a frame.
    void keys();
    // What this paused frame leaves of the frame clock: the frame rate stays
    // the race's, whatever length the paused frames have.
    void rest();
    // "PAUSED" and how to go on, over the race as it stood.
    void draw() const;
};

extern sPause racepause;

// A focus change that stops a race: the keyboard gone elsewhere, or the
// window minimised. The mouse leaving the window is not one.
bool losesRace(const SDL_ActiveEvent& active);

#endif

#ifndef BV_SCENE_GHOST_H
#define BV_SCENE_GHOST_H

// The ghost kart: the path of kart 0 recorded every lap, the best lap played
// back half-transparent, and kept per track in Data/Ghosts/<track>.txt.

#include <string>

const int GHOST_MAXRECS = 1000;

struct sGhost {
    // [0] the lap being recorded, [1] the best lap being played back.
    float px[2][GHOST_MAXRECS];
    float pz[2][GHOST_MAXRECS];
    float ay[2][GHOST_MAXRECS];
    float timer[2];
    float bestTime;
    int nRecs[2];
    int mRec;

    void init();
    void record();
    void draw();
    // The ghost where it stands, without playing on.
    void show() const;
    void goodone();
    void badone();
    void save();
    // The ghost file's text for the best lap, as save() writes it.
    std::string text() const;
    // Where save() writes it: Data/Ghosts/<track>.txt.
    std::string file() const;
    // Where playback stands between its current sample and the next.
    void pose(float* x, float* z, float* heading) const;
};

extern sGhost ghost;

// The race frame's part of the ghost: record kart 0 always; show the best lap
// only when the ghost is switched on and kart 0 races alone.
void ghostframe();

#endif

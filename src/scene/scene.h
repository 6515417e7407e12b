#ifndef BV_SCENE_SCENE_H
#define BV_SCENE_SCENE_H

// The race scene: set up once, reset for every race, one race frame per call.

#include <ctime>

#include "assets/3ds.h"

void initScene();
void resetScene();
void drawScene();
void killScene();

// The race frame's simulation, everything before the eye is placed: the start
// clock, the rescue keys, the karts (their collisions, the players' keys with
// player 1's pedals waiting for the start, and moves, then the computer's
// drivers, who wait too) and the splits. drawScene runs it on every frame
// that is not paused; tests run it to drive a race without drawing one.
void raceStep();

// Light 0 of the race as every race begins (its place given under the
// matrix of the moment), and the grey the frame is cleared to.
void setRaceLight();
// Light 0's place given again under the view, so that it stays put in the world.
void placeRaceLight();

// Light 0 of the race; the position is in the world, w = 1.
extern float LightAmbient[4];
extern float LightDiffuse[4];
extern float LightPosition[4];
// The fog's colour; the track sets it when it loads.
extern float FogColor[4];

// The start clock: bvclock() readings at the race start and latest, and the
// seconds between them, which stop counting at 4.
extern time_t s;
extern time_t e;
extern float t;

extern s3DS sky3DS;

// Ways of drawing a frame with less work and the very same picture; each
// can be turned off, so that a test can draw a frame both ways and compare.
struct sShortcuts {
    // The brightness overlay only when it adds something.
    bool brightness = true;
    // The sky only where the ground's dirt has not covered it, drawn right after it
    // (when there is a ground, the shadow projectors are off and polygons are filled).
    bool sky = true;
    // The menu's previews copied to their textures inside the driver, not read back and uploaded.
    bool previews = true;
    // The loading splash drawn and shown again only when its bar has grown.
    bool splash = true;
    // The road drawn before the ground's dirt, marking the stencil, so that
    // the dirt under it is never shaded (with the sky shortcut only).
    bool road = true;
    // The ground's darker passes kept to the rectangle the stencil shadows lie in.
    bool shadowscissor = true;
};
extern sShortcuts shortcuts;

// Told the name of each drawing step of a frame as it begins, when set (the
// frame-time harness counts and times the steps with it); never set in a game.
extern void (*frameStepHook)(const char* step);
inline void frameStep(const char* step) {
    if (frameStepHook) frameStepHook(step);
}

#endif

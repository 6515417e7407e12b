#ifndef BV_SCENE_SCENE_H
#define BV_SCENE_SCENE_H

// The race scene: set up once, reset for every race, one race frame per call.
void initScene();
void resetScene();
void drawScene();
void killScene();

// The fog's colour; the track sets it when it loads.
extern float FogColor[4];

#endif

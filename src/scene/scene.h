#ifndef BV_SCENE_SCENE_H
#define BV_SCENE_SCENE_H

// The race scene: set up once, reset for every race, one race frame per call.
void initScene();
void resetScene();
void drawScene();
void killScene();

#endif

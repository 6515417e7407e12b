#include "scene/scene.h"

// The race itself arrives with the track and the karts; until then a race has
// nothing to set up, reset or draw.
void initScene() {}
void resetScene() {}
void drawScene() {}
void killScene() {}

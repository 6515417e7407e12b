#include "scene/scene.h"

#include "track/track.h"

// The race itself arrives with the karts; until then a race has nothing to set
// up, reset or draw. What the start-up loaded for the track is given back here,
// where the scene's end gives back everything a race uses.
void initScene() {}
void resetScene() {}
void drawScene() {}
void killScene() {
    track.free();
}

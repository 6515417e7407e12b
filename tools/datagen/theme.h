#ifndef BV_DATAGEN_THEME_H
#define BV_DATAGEN_THEME_H

// The game's look shared by the splash and the menus: an evening valley with
// a circuit winding through it, and chequered racing stripes.

#include "datagen/canvas.h"

namespace gen {

Canvas valleyScene(int w, int h, unsigned seed);
void checkerStripe(Canvas& c, float x0, float y0, float x1, float y1, float cell);

}  // namespace gen

#endif

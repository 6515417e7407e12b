#ifndef BV_TRACK_TRACKPARTS_H
#define BV_TRACK_TRACKPARTS_H

// What the track's own files share and nothing outside them needs: the
// roadside's layout, the fixed turns and heights of the roadside furniture,
// and the small steps of laying out the ground, the fences and the barriers.

#include <GL/gl.h>

#include "track/track.h"

namespace trackparts {

// How the roadside is laid out outwards from each barrier line, in world
// units: the barrier itself, a strip of bare dirt the karts throw up, grass
// that fades in and out again, and the spectators' fence in the grass.
const float DIRT_BAND = 0.75f;
const float GRASS_IN = 0.75f;
const float GRASS_FULL = 1.5f;
const float GRASS_LAST = 3.75f;
const float GRASS_OUT = 5.0f;
const float FENCE_OFFSET = 3.0f;
const float FENCE_HEIGHT = 1.2f;
const float POLE_HEIGHT = 1.35f;
const float POLE_HALFWIDTH = 0.05f;
// World units per repeat of the ground-level pictures.
const float GROUND_REPEAT = 2.5f;
const float FENCE_REPEAT = 1.2f;

// Each TV camera stand is turned by its centre point's index times this many
// degrees, each roadside object by its index times OBJECT_TURN: a fixed
// scatter, the same in every frame, in the drawing and in the shadows.
const unsigned int STAND_TURN = 76;
const unsigned int OBJECT_TURN = 35;

// The camera's head sits this high on its stand: drawn there, cast from
// there, and aimed at the followed kart from there. The aim divides in
// double; the placing takes the float of the same figure.
constexpr double CAMERA_HEIGHT = 1.2;
constexpr float CAMERA_HEIGHT_F = (float)CAMERA_HEIGHT;
static_assert(CAMERA_HEIGHT_F == 1.2f, "the float of the head's height is the float literal");

// The point p moved outwards from the road by d (normals point at the road).
inline sTrackPoint outwards(const sTrackPoint& p, const sTrackPoint& n, float d) {
    return {p.x - n.x * d, p.z - n.z * d};
}

inline void vertex(const sTrackPoint& p, float y) {
    glVertex3f(p.x, y, p.z);
}

}  // namespace trackparts

#endif

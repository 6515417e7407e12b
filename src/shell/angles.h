#ifndef BV_SHELL_ANGLES_H
#define BV_SHELL_ANGLES_H

#include <cmath>

// The turn and the degree. Headings, pitches and rolls are kept in degrees
// throughout; the maths library wants radians. Header only, so that the
// content generator shares these figures with the game.

constexpr double TWOPI = 6.283185307;
constexpr double PI = 3.141592654;  // rounded on its own: not TWOPI / 2 in the last digit

// Degrees per radian, in two figures on purpose. Whether a kart is in view,
// how it is drawn (the driver's arms, every model's cast shadow) and how it
// bounces off a barrier were tuned with the rounded 57.3; everything else
// uses the exact figure. Making them one would move karts and shadows.
constexpr double DEG_PER_RAD = 57.29577951;
constexpr float DEG_PER_RAD_F = 57.29577951f;  // the same figure for float arithmetic
constexpr float KART_DEG_PER_RAD = 57.3f;

// The angle whose tangent is dx / dz, in degrees: the heading of the way
// (dx, dz) from +z, only half a turn wide (atan, not atan2), so callers that
// need the other half add 180 where dz < 0. The quotient is taken in float;
// without a factor the rest is worked out in double with the exact figure,
// with one in float throughout with the caller's factor. The two round
// differently in the last place, and each caller keeps the one it was tuned
// with.
inline float atandeg(float dx, float dz) { return (float)(DEG_PER_RAD * std::atan((double)(dx / dz))); }
inline float atandeg(float dx, float dz, float factor) { return std::atan(dx / dz) * factor; }

// An angle at most a turn out brought into [-180, 180) by one turn.
inline float wrap180(float a) {
    if (a >= 180) return a - 360;
    if (a < -180) return a + 360;
    return a;
}

#endif

#ifndef BV_SHELL_ANGLES_H
#define BV_SHELL_ANGLES_H

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

#endif

#ifndef BV_SHELL_KARTFACTS_H
#define BV_SHELL_KARTFACTS_H

// Facts of the kart that other parts have to agree with: the settings (which
// may not include the kart), the content generator that builds tracks round
// the kart, and the kart itself. Header only, so that all of them read the
// same figures and a change to the kart cannot leave the others behind.

namespace kartfacts {

constexpr float kChasisWidth = 1.24f;   // sGokartStaticData::chasiswidth
constexpr float kChasisFront = 1.364f;  // sGokartStaticData::chasisfront
constexpr float kTopSpeed = 25.0f;      // sGokartStaticData::topspeed, units per second
constexpr float kAcceleration = 20.0f;  // sGokartStaticData::acceleration

// The most karts a race takes, the player's included.
constexpr unsigned int kMaxRacers = 6;
// Kart records: one more than the largest field. Every record is set up and
// put on the grid at each start, racing or not, each drawing its colour from
// rand(); the spare one stands on the grid, and the camera can be sent to it.
constexpr unsigned int kKarts = kMaxRacers + 1;

// Entries of the kart palette, the colours a kart can be given.
constexpr unsigned int kColours = 24;

// Skid-mark slots in each wheel's ring.
constexpr unsigned int kSlideSlots = 999;

// The most barrier pairs a track can have: a kart's checkpoint, the number of
// the last pair it reached, is 8-bit (sGokart::checkpoint).
constexpr unsigned int kMaxPairs = 255;

}  // namespace kartfacts

#endif

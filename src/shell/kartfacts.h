#ifndef BV_SHELL_KARTFACTS_H
#define BV_SHELL_KARTFACTS_H

// Facts of the kart that the content generator has to build its tracks
// round. Header only, so that the generator and the game read the same
// figures and a change to the kart cannot leave the tracks behind.

namespace kartfacts {

constexpr float kChasisWidth = 1.24f;   // sGokartStaticData::chasiswidth
constexpr float kChasisFront = 1.364f;  // sGokartStaticData::chasisfront

}  // namespace kartfacts

#endif

#ifndef BV_SHELL_TRACKFACTS_H
#define BV_SHELL_TRACKFACTS_H

// Facts of the circuit that the content generator has to build its tracks
// round. Header only, so that the generator and the game read the same
// figures and a track file cannot be made for a game that reads it otherwise.

namespace trackfacts {

// World units per track-file unit.
constexpr float kTrackScale = 0.125f;

// The finish gantry spans the start straight at x = 218 in the track file's
// units (kTrackScale times that in the world) and z = 2.5 in the world: the
// grid, the finish line and the gantry's model are all placed from it.
constexpr float kGantryX = 218;
constexpr float kGantryZ = 2.5f;

// Roadside object types run from 0 to this - 1.
constexpr unsigned int kObjectTypes = 12;

}  // namespace trackfacts

#endif

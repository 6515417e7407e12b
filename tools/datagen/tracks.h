#ifndef BV_DATAGEN_TRACKS_H
#define BV_DATAGEN_TRACKS_H

// The circuits. Each is drawn in a small source file under data/tracks/: a
// closed centre line of control points with road widths, through which a
// spline is laid, and the scenery placed along it. From that we write the
// game's track file: the barrier point pairs, the TV camera points and the
// roadside objects, on the file's integer grid.
//
// Source file, one statement a line, "#" starts a comment, lengths in world
// units (a kart is 1.24 wide), x and z as in the game (the karts leave the
// grid towards -z):
//
//   name NAME                      the track's name (default: the file's name)
//   about TEXT...                  one line of what the circuit is like
//   ground N                       ground texture 0..3
//   fog N                          fog density in thousandths
//   point X Z WIDTH [@LABEL]       a control point of the centre line
//   arc CX CZ R A0 A1 WIDTH [@LABEL]
//                                  control points round a circle from angle A0
//                                  to A1 (degrees, 0 along +x, 90 along +z),
//                                  at most 30 degrees apart
//   camera PLACE SIDE OFFSET       a TV camera stand
//   object TYPE PLACE SIDE OFFSET  one roadside object
//   row TYPE PLACE PLACE EVERY SIDE OFFSET
//                                  objects every EVERY units between two places
//   group TYPE PLACE SIDE OFFSET COUNT SPREAD
//                                  COUNT objects scattered within SPREAD of a spot
//   at TYPE X Z                    an object at a fixed place
//
// The control points are listed in the driving direction; the first is pair 0.
// PLACE is a label or a control point's index, optionally followed by +D or -D:
// D units further along the centre line or back. SIDE is left or right (as
// the driver sees it) and OFFSET the distance of the object's middle from the
// barrier line, outwards. TYPE is one of barrel, barrelt, container, barrel2,
// barrel2t, plant, container2, ad, sign1, sign2, sign3, sign4.

#include <string>
#include <vector>

struct TrackBuild {
    std::string name;
    std::string about;
    std::string fileText;  // the track file, ready to write
    float length = 0;      // of the centre line, world units
    unsigned pairs = 0, cameras = 0, objects = 0;
};

// Builds one track from its source text; `fallbackName` names it when the
// source does not. On failure returns false with the reason in `error`.
bool buildTrack(const std::string& sourceText, const std::string& fallbackName, TrackBuild* out, std::string* error);

// Writes dataDir/Tracks/<name>.txt for every sourceDir/tracks/*.track.
bool generateTracks(const std::string& dataDir, const std::string& sourceDir, std::string* error);

#endif

#ifndef BV_DATAGEN_TRACKCHECK_H
#define BV_DATAGEN_TRACKCHECK_H

// The track validator: reads a track file the way the game reads it (with its
// own parser, so that it checks the file and not our generator's intentions)
// and drives the checkpoint and lap rules over it to prove that a race on it
// works: the grid is on the road, the barriers are sane, nothing stands on
// the road, and every lap driven is a lap counted.

#include <string>
#include <vector>

#include "shell/kartfacts.h"
#include "shell/trackfacts.h"

namespace trackcheck {

// Fixed facts of the game that a track has to fit, read from the game's own
// headers.
const float kTrackScale = trackfacts::kTrackScale;  // world units per file unit
const float kChasisWidth = kartfacts::kChasisWidth;
const float kChasisFront = kartfacts::kChasisFront;
const float kTopSpeed = kartfacts::kTopSpeed;       // units per second
const float kFinishX = trackfacts::kGantryX * kTrackScale;  // the finish gantry stands at (27.25, 2.5)
const float kFinishZ = trackfacts::kGantryZ;
const int kGridKarts = (int)kartfacts::kKarts;      // every kart is put on the grid, racing or not
const int kMaxPairs = (int)kartfacts::kMaxPairs;    // the kart's checkpoint is 8-bit
const int kObjectTypes = (int)trackfacts::kObjectTypes;
// The trackside view looks out of a TV camera at the road: this far in front
// of it, between it and the barrier, no scenery may stand.
const float kCameraClearView = 3.0f;

struct Point {
    float x = 0, z = 0;
};

struct Object {
    int type = 0;
    Point at;
};

// A track file as the game holds it after loading: world coordinates, the
// barrier lines with neighbouring equal coordinates already separated.
struct Track {
    int dirt = -1, road = -1, fog = -1;
    std::vector<Point> left, right, cameras;
    std::vector<Object> objects;
    // Raw file values, for the range checks.
    std::vector<int> fileValues;
};

// Even-odd rule: whether p lies inside the closed line through the points of
// `ring`. One rule for the generator (in double), the validator and the plots.
template <typename P>
bool insideRing(const P& p, const std::vector<P>& ring) {
    bool in = false;
    for (size_t i = 0, j = ring.size() - 1; i < ring.size(); j = i++) {
        const P& a = ring[i];
        const P& b = ring[j];
        if ((a.z > p.z) != (b.z > p.z) && p.x < (b.x - a.x) * (p.z - a.z) / (b.z - a.z) + a.x) in = !in;
    }
    return in;
}

// Reads the text as the game's loader does: three numbers, then records
// "LR lx lz rx rz", "C x z" and "O type x z"; any other word is skipped on
// its own. Problems (a missing header, a malformed number) are appended to
// `problems`; returns false when the file cannot be read as a track at all.
bool parseTrack(const std::string& text, Track* track, std::vector<std::string>* problems);

// Name of a roadside object type, as used in messages and in our sources;
// "unknown" outside 0..11.
const char* objectTypeName(int type);
// Type number of a name, or -1.
int objectTypeByName(const std::string& name);
// Distance an object of this type keeps from the barrier lines, so that no
// part of it reaches into the barrier or over the road; -1 for a TV camera stand.
float objectRoom(int type);

// The ground the game lays outside each barrier line, from the line outwards
// along the barrier's normals: a band of dirt, then grass out to this far.
const float kDirtBand = 0.75f;
const float kGrassOut = 5.0f;
// The unit normals of one barrier line (pointing at the road), worked out as
// the game does when it loads a track: the mean direction of the segments
// either side, turned to agree with the normal before, from a fixed normal
// across the start straight at pair 0.
std::vector<Point> barrierNormals(const std::vector<Point>& line, bool left);
// Every place where that dirt or grass lies on the road (of any stretch),
// one sentence per barrier and kind of ground, naming the first pair.
std::vector<std::string> roadsideOnRoad(const Track& track);

// How a kart following one lateral line at top speed fares with the lap rule.
struct LineRun {
    int lapsDriven = 0;
    int lapsCounted = 0;
    std::vector<std::string> skips;  // one message per skipped pair
    bool lapCounted = false;          // where the first lap of a driving lap was counted
    Point lapCountedAt;
};
// Drives `laps` laps on the line `placement` (0 the left barrier, 1 the right)
// at top speed and 30 frames per second, with the checkpoint rule and the lap
// latch exactly as the kart applies them.
LineRun driveLine(const Track& track, float placement, int laps);

}  // namespace trackcheck

// Every problem found in a track file, each a sentence naming the problem and
// where it is; empty when the track is fit to race on. `adPictures` are the
// names of the pictures in Data/Ads, which the advertising boards draw.
std::vector<std::string> validateTrack(const std::string& trackFileText, const std::vector<std::string>& adPictures);

#endif

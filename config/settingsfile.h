#ifndef BV_CONFIG_SETTINGSFILE_H
#define BV_CONFIG_SETTINGSFILE_H

// The player's settings file, Data/config.bvd, as the settings program sees it:
// "label value" entries that the game takes by position, sixteen that every
// file holds and the later ones that older files lack. Kept apart
// from the window so that the command line and the tests use the same rules.

#include <array>
#include <string>

#include "shell/settingslines.h"

namespace bvset {

const int kCount = bvlines::kCount;
const int kRequired = bvlines::kRequired;

using Kind = bvlines::Kind;
using Setting = bvlines::Line;
using bvlines::nsteps;

// The settings in the order the game reads them.
const std::array<Setting, kCount>& settings();
// Index of a setting by name, or -1.
int find(const std::string& name);

using Values = std::array<int, kCount>;
Values defaults();

// What a value means, e.g. "1024x768", "on", "80%"; for a value outside the
// range, what the game makes of it.
std::string meaning(int index, int value);
bool inRange(int index, int value);
// The value as the game uses it, brought inside this program's range: what a
// widget shows for a value some other editor put in the file.
int normalised(int index, int value);
// "0..5 (0=640x480, 1=800x600, ...)"
std::string allowed(int index);

// Parses "NAME=VALUE"; a Choice also takes a step name ("1280x960", "full")
// and a Switch "on"/"off". On failure returns false with a message naming the
// allowed range.
bool parseAssignment(const std::string& text, int* index, int* value, std::string* error);

struct ReadResult {
    bool ok = false;      // the file could be opened
    std::string error;    // why not
    int entries = 0;      // entries that held a number; a file of the first sixteen alone is complete
    Values values{};
};

// Reads the file the way the game does: each entry a word and a decimal
// number, by position; a short or damaged file repeats the last number read
// for the first sixteen, and a line added later that it lacks is its shipped value.
ReadResult read(const std::string& path);

// Writes all the labelled lines into a temporary file beside path, then
// renames it over path, so the game never sees half a file.
bool write(const std::string& path, const Values& values, std::string* error);

// The file's text for these values.
std::string format(const Values& values);

}  // namespace bvset

#endif

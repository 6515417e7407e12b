#ifndef BV_SHELL_SETTINGSLINES_H
#define BV_SHELL_SETTINGSLINES_H

// The player's settings file, Data/config.bvd: sixteen "label value" lines,
// taken by position, and a seventeenth that older files do not have. The game
// reads it and the settings program writes it; this is the one description of
// the lines and of what their values stand for.

#include <array>

namespace bvlines {

enum class Kind {
    Choice,  // one of a few named steps, stored as the step's index
    Switch,  // 0 off, 1 on
    Range,   // a number between min and max
};

const int kMaxSteps = 6;

struct Line {
    const char* name;   // as typed after the settings program's --set, e.g. "soundvolume"
    const char* label;  // the word written in the file (the game ignores it)
    const char* title;  // what the settings window calls it
    Kind kind;
    int min, max;
    int fallback;                    // the shipped value
    const char* steps[kMaxSteps];    // names of the steps of a Choice or Switch, min first
    const char* unit;                // after a Range value, e.g. "%"
    const char* hint;                // a sentence for the window, or nullptr
};

const int kCount = 17;
// Every file holds the first sixteen; a short one repeats its last number for
// those it lacks. The lines after them were added later: a file without one
// means its shipped value, never a repeated number.
const int kRequired = 16;

// The lines in the order of the file.
enum Index {
    RESOLUTION,
    COLOURDEPTH,
    VIEWDISTANCE,
    DETAIL,
    KARTSHADOWS,
    TRACKSHADOWS,
    SOUNDEFFECTS,
    SOUNDVOLUME,
    MUSIC,
    MUSICVOLUME,
    BRIGHTNESS,
    MOUSESTEERING,
    MOUSESENSITIVITY,
    JOYSTICKSTEERING,
    LENSFLARE,
    SKIDMARKS,
    JOYSTICKDEADZONE,
};

// The window of each resolution step, and how far ahead the track is drawn at
// each view-distance step.
inline constexpr unsigned int kWidth[6] = {640, 800, 1024, 1152, 1280, 1600};
inline constexpr unsigned int kHeight[6] = {480, 600, 768, 864, 960, 1200};
inline constexpr float kViewRange[4] = {30.0f, 45.0f, 60.0f, 150.0f};

// The labels are those of the shipped sample file, so that saving the shipped
// values gives back the shipped file.
inline constexpr std::array<Line, kCount> kLines = {{
    {"resolution", "resolution(0=640x480,1=800x600,2=1024x768,3=1152x864,4=1280x960,5=1600x1200)",
     "Screen resolution", Kind::Choice, 0, 5, 2,
     {"640x480", "800x600", "1024x768", "1152x864", "1280x960", "1600x1200"}, "", nullptr},
    {"colourdepth", "colourdepth(0=16bit,1=32bit)", "Colour depth", Kind::Choice, 0, 1, 1, {"16 bits", "32 bits"}, "",
     nullptr},
    {"viewdistance", "viewdistance(0=short,1=medium,2=long,3=full)", "View distance", Kind::Choice, 0, 3, 3,
     {"short", "medium", "long", "full"}, "", "How far ahead the track is drawn."},
    {"detail", "detail(0=low,1=medium,2=high)", "Detail level", Kind::Choice, 0, 2, 2, {"low", "medium", "high"}, "",
     nullptr},
    {"kartshadows", "kartshadows(0=off,1=blobs,2=simple,3=full)", "Kart shadows", Kind::Choice, 0, 3, 3,
     {"off", "blobs", "simple", "full"}, "", nullptr},
    {"trackshadows", "trackshadows(0=off,1=on)", "Track shadows", Kind::Switch, 0, 1, 1, {"off", "on"}, "", nullptr},
    {"soundeffects", "soundeffects(0=off,1=on)", "Sound effects", Kind::Switch, 0, 1, 1, {"off", "on"}, "", nullptr},
    {"soundvolume", "soundvolume(percent)", "Sound effects volume", Kind::Range, 0, 100, 100, {}, "%", nullptr},
    {"music", "music(0=off,1=on)", "Music", Kind::Switch, 0, 1, 1, {"off", "on"}, "", nullptr},
    {"musicvolume", "musicvolume(percent)", "Music volume", Kind::Range, 0, 100, 80, {}, "%", nullptr},
    {"brightness", "brightness(0-100)", "Brightness", Kind::Range, 0, 100, 0, {}, "",
     "Lightens the whole picture; 0 leaves it as drawn."},
    {"mousesteering", "mousesteering(0=off,1=on;the_arrow_keys_steer_only_when_off)", "Mouse steering", Kind::Switch,
     0, 1, 0, {"off", "on"}, "",
     "With mouse steering on, the arrow keys no longer steer kart 1: steer with the mouse."},
    {"mousesensitivity", "mousesensitivity", "Mouse sensitivity", Kind::Range, 1, 20, 4, {}, "",
     "How far a mouse movement turns the wheel."},
    {"joysticksteering", "joysticksteering(0=off,1=on)", "Joystick steering", Kind::Switch, 0, 1, 0, {"off", "on"}, "",
     nullptr},
    {"lensflare", "lensflare(0=off,1=on)", "Lens flare", Kind::Switch, 0, 1, 1, {"off", "on"}, "", nullptr},
    {"skidmarks", "skidmarks(0=off,1=on)", "Skid marks", Kind::Switch, 0, 1, 1, {"off", "on"}, "", nullptr},
    {"joystickdeadzone", "joystickdeadzone(percent)", "Joystick dead zone", Kind::Range, 0, 30, 8, {}, "%",
     "How far the stick moves from the centre before it steers or drives."},
}};

// How many named steps a line has (none for a Range).
constexpr int nsteps(const Line& line) {
    return line.kind == Kind::Range ? 0 : line.max - line.min + 1;
}

static_assert(JOYSTICKDEADZONE == kRequired && JOYSTICKDEADZONE + 1 == kCount, "the added line follows the sixteen");
static_assert(kLines[RESOLUTION].max + 1 == 6 && kLines[VIEWDISTANCE].max + 1 == 4,
              "every resolution and view-distance step has its value");

}  // namespace bvlines

#endif

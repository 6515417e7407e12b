#ifndef BV_TESTS_E2E_E2E_FIXTURES_H
#define BV_TESTS_E2E_E2E_FIXTURES_H

// What the end-to-end scenarios share: a fresh game directory with the real
// binary running in it, a player's hands on the X server's keyboard and mouse
// (XTest, as xdotool does it), and a player's eyes and ears: the X screen,
// the game's own screenshots, the files it writes and the sound it plays.
//
// With BV_E2E_PICTURES set to a directory, a scenario leaves there what it
// saw and heard (grid pictures, the game's screenshots, the captured sound),
// for whoever has to find out why it failed.

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "support/bvtest_fixtures.h"

namespace e2e {

// A rectangle of the 1024 x 768 window (which sits at the screen's origin, as
// there is no window manager), top-left origin, in pixels.
struct Box {
    int x, y, w, h;
};
// The box of half-size hw x hh round a point given in the menu's unit
// coordinates (x from the left, y from the bottom).
Box unitBox(double cx, double cy, double hw, double hh);

struct Rgb {
    double r, g, b;
};

// An RGB picture, rows from the top.
class Picture {
public:
    int width = 0, height = 0;
    std::vector<unsigned char> rgb;

    bool empty() const { return rgb.empty(); }
    Rgb mean(const Box& b) const;
    // Mean absolute difference of the channels, 0..255, over the box.
    double difference(const Picture& other, const Box& b) const;
    // Pixels of the box for which f(r, g, b) holds.
    int count(const Box& b, const std::function<bool(int, int, int)>& f) const;
    bool same(const Picture& other, const Box& b) const { return difference(other, b) == 0; }
    // Pixels of the box that differ clearly from the other picture's, but for
    // those in `except`.
    int changed(const Picture& other, const Box& b = {0, 0, 1024, 768}, const Box& except = {0, 0, 0, 0}) const;
    // For a failing test's reader: a PPM file.
    void save(const std::string& path) const;
};

// What the X screen shows in the box (the whole screen by default).
Picture grab(const Box& b = {0, 0, 1024, 768});
// A screenshot the game wrote (24-bit TGA, first row at the bottom).
Picture readTGA(const std::string& path);

// The captured sound: the wave file OpenAL Soft writes, read as mono.
struct Sound {
    int rate = 0;
    std::vector<float> mono;
    double seconds() const { return rate ? (double)mono.size() / rate : 0; }
    Sound part(double from, double to) const;
    // The same sound at another sample rate (linear interpolation).
    Sound resampled(int newRate) const;
    // When it is first louder than the level, in seconds; -1 if never.
    double onset(float level = 0.01f) const;
    double rms(double from, double to) const;
    // Upward zero crossings per second.
    double crossings(double from, double to) const;
    // Mean power at the given frequencies (Goertzel), relative to the window's
    // total power.
    double tone(double from, double to, const std::vector<double>& hertz) const;
};
// Reads a WAV file even while it is still being written, or when the writer
// never went back to fill in its sizes.
Sound readWav(const std::string& path);
// The same file's samples as the sound card gets them, every channel of every
// frame in turn, not mixed down: for judging how near full scale it comes.
std::vector<float> readWavSamples(const std::string& path, int* channels = nullptr, int* rate = nullptr);
// How clearly a looping sound (one turn of the loop in `loop`) is heard
// between from and to seconds: the best match() of any of its eighths.
double heardLoop(const Sound& hay, double from, double to, const Sound& loop);
// A sound file of the game's, decoded (libsndfile), mixed to mono.
Sound readSound(const std::string& path);
// How well the sound `needle` matches `hay` at its best offset between from
// and to seconds (normalised correlation of both, low-passed to a few kHz):
// 1 for the same signal at any level. The offset found goes to *at.
double match(const Sound& hay, double from, double to, const Sound& needle, double* at = nullptr);

// Polls until f() holds; false if it never does within the time.
bool waitFor(const std::function<bool()>& f, double seconds, double poll = 0.05);
void rest(double seconds);

struct Options {
    // The remembered race setup to start from; empty for none (a first start).
    std::string gencon = "unnamed\n0\n1\n0\n0\n10784\n";
    // Lines replacing those of the shipped settings that start with the same label.
    std::vector<std::string> settings;
    // The track to start on, by name (its number depends on the order in
    // which the directory lists the tracks); empty to keep the setup's.
    std::string track;
    // Files of an earlier run to put in place: path below the game directory, contents.
    std::vector<std::pair<std::string, std::string>> files;
};

// An installed game, started by its command the way the desktop's menu starts
// it: from the root folder, with the player's environment.
struct Installed {
    std::string command;
    // The player's folder the launcher prepares and runs the game in.
    std::string folder;
    std::vector<std::string> env;
    // Where the game's output and its sound go.
    std::string scratch;
};

// The real game in a fresh copy of the game directory, and the player at it.
class Game {
public:
    explicit Game(const Options& options = Options());
    explicit Game(const Installed& installed);
    ~Game();

    // The folder the game runs in, whose Data/ it reads and writes.
    const std::string& dir() const { return dir_ ? dir_->path() : folder_; }
    std::string path(const std::string& relative) const { return dir() + "/" + relative; }
    std::string log() const;
    bvtest::GameProcess& process() { return *process_; }

    // The window is up (false if it never came).
    bool started(double seconds = 120);
    // The race-setup screen is up, with the name and the opponents written
    // and both previews turning.
    bool atMenu(double seconds = 180);
    // Waits until the game has drawn n more menu frames (the previews turn
    // every frame); false when it stops drawing.
    bool menuFrames(int n, double seconds = 30);

    // Hands.
    void move(int x, int y);
    void moveUnit(double ux, double uy);
    void buttonDown();
    void buttonUp();
    void keyDown(const std::string& keysym);
    void keyUp(const std::string& keysym);
    // A key pressed and let go again after the game has drawn a frame or two,
    // so that it cannot fall between two frames.
    void tap(const std::string& keysym, double hold = 0.3);
    // Types text letter by letter into whatever has the focus.
    void type(const std::string& text, double perKey = 0.05);

    // One click on a menu arrow at (ux, uy): the arrow steps once.
    bool step(double ux, double uy);
    // A large menu button (RACE!, Quit, ...): held until the screen changes.
    bool press(double ux, double uy, double seconds = 60);
    // RACE! and wait for the countdown's first frame; then until "GO!" is gone.
    bool startRace(double seconds = 120);
    bool countdownOver(double seconds = 120);
    // F1, the line, Return, F1 again.
    void console(const std::string& line);
    // In a race: screenshots until the kart stands still on the grid under
    // the finish gantry (the chase view swings about for its first frames);
    // false if it does not within the time.
    bool onTheGrid(Picture* shot = nullptr, double seconds = 120);
    // Screenshots until two in a row agree but for the box `except`: the view
    // has come to rest. Empty if it does not within the time.
    Picture still(const Box& except = {0, 0, 0, 0}, double seconds = 120);
    // Holds Escape until the race-setup screen is back.
    bool escape();
    // Holds F12 until the game has written the next screenshot; empty if it
    // does not (it may be at a slow frame of the sanitizer build on a busy
    // machine, so the time is generous) or the game has ended.
    Picture screenshot(double seconds = 120);
    int screenshotsTaken() const;

    // Seconds of sound the game has played so far (the capture's length).
    double soundSeconds() const;
    Sound sound() const;

    // Closes the window as a window manager would, and waits for the end.
    int close(double seconds = 60);

private:
    std::unique_ptr<bvtest::ScratchDir> dir_;
    std::string folder_;
    std::unique_ptr<bvtest::GameProcess> process_;
    unsigned long window_ = 0;
};

// The menu's places, in unit coordinates and window boxes.
namespace menu {
const double kRaceX = 0.8675, kRaceY = 0.12;
const double kQuitX = 0.115, kQuitY = 0.109;
const double kNameX = 0.75, kNameY = 0.722;
const double kColourDecX = 0.515, kColourIncX = 0.688, kArrowsLowY = 0.280292;
const double kTrackDecX = 0.737, kTrackIncX = 0.9105;
const double kDifficultyDecX = 0.69, kDifficultyIncX = 0.875, kDifficultyY = 0.6565;
const double kOpponentsDecX = 0.7225, kOpponentsIncX = 0.8025, kOpponentsY = 0.5925;
const Box kName = {635, 198, 270, 32};
const Box kDifficulty = {725, 248, 126, 28};
const Box kOpponents = {752, 297, 54, 28};
const Box kColour = {545, 541, 143, 24};
const Box kTrack = {770, 541, 136, 24};
const Box kPanelTitle = {505, 155, 200, 35};  // "RACE SETUP", only on the main screen
// The two turntable previews, inside their frames.
const Box kKartPreview = {530, 400, 170, 120};
const Box kTrackPreview = {760, 400, 170, 120};
// Pixels of the box that are near white: the menu's texts.
int white(const Picture& p, const Box& b);
// The race-setup screen: white writing in the panel's title, the name field
// and the opponents' field (and not a white screen).
bool shown(const Picture& p);
}  // namespace menu

// The race's places.
namespace race {
// Where "1", "2", "3" and "GO!" are written, red, above the kart, with their
// softened edges: "GO!" reaches from x 475 to 572 and y 357 to 399, and the
// box leaves some eight pixels round that.
const Box kCountdown = {440, 336, 144, 72};
const Box kTopLine = {0, 0, 1024, 24};  // lap, time and record
const Box kLowerMiddle = {307, 461, 410, 230};  // where the chase view keeps the kart
const Box kCentre = {412, 334, 200, 100};  // "NEW RECORD!"
int red(const Picture& p, const Box& b);
// The player's kart where the chase view keeps it: the colourful pixels
// (paint, helmet, overalls) among the grey of the road.
int kart(const Picture& p);
// The dark chequers and posts of the finish gantry where its beam crosses
// the picture above the start straight.
int gantry(const Picture& p);
// The red "1" of a fresh countdown (or any red writing in the middle).
bool redWritingSeen(double seconds = 60);
// "NEW RECORD!": red writing across the middle, left and right of where the
// countdown writes.
bool newRecord(const Picture& p);
}  // namespace race

// The splash screen's loading bar: how many of its ten segments are filled,
// or -1 when the screen shows no such bar.
int loadingSegments(const Picture& p);

}  // namespace e2e

#endif

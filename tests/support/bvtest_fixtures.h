#ifndef BV_TESTS_SUPPORT_BVTEST_FIXTURES_H
#define BV_TESTS_SUPPORT_BVTEST_FIXTURES_H

// Shared helpers of the test programs: a scratch game directory, a real GL
// window, captured sound, and small file utilities.

#include <string>
#include <vector>

namespace bvtest {

// A fresh directory with an empty Data/ tree that becomes the working directory
// for the life of the object (the game reads and writes relative to it).
class ScratchDir {
public:
    ScratchDir();
    ~ScratchDir();
    const std::string& path() const { return path_; }

private:
    std::string path_;
    std::string previous_;
};

std::string readFile(const std::string& path);
void writeFile(const std::string& path, const std::string& contents);
bool fileExists(const std::string& path);
std::vector<std::string> lines(const std::string& text);

// Opens the game's own window (SDL, Mesa GL, 8-bit stencil) at width x height,
// windowed, after filling `config` with its built-in defaults.
void openWindow(unsigned int width = 320, unsigned int height = 240);

// An RGB pixel of the back buffer, x and y from the bottom left.
struct Pixel {
    int r, g, b;
};
Pixel readPixel(int x, int y);
// An RGB pixel of what the window shows on the X screen, x and y from the
// bottom left as in GL: what a player sees after a buffer swap.
Pixel screenPixel(int x, int y);

// Makes OpenAL Soft write everything it plays into a WAV file instead of a
// sound card. Call before FSOUND_Init; read the capture after FSOUND_Close.
// The samples are 16-bit integers unless sampleType says otherwise
// ("float32": what the output runs at when nothing is configured).
class SoundCapture {
public:
    explicit SoundCapture(const std::string& sampleType = "int16");
    ~SoundCapture();
    const std::string& file() const { return wav_; }
    // Interleaved stereo frames, -1..1.
    std::vector<float> read(int* channels = nullptr, int* rate = nullptr) const;
    // Seconds of sound written so far: the mixer's own clock, which runs on
    // however busy the machine is (0 before the device opens).
    double seconds() const;
    // Waits until the capture holds that many seconds of sound; false if the
    // mixer does not get there within the limit (a hung mixer).
    bool until(double seconds, double limit = 60) const;

private:
    std::string dir_, wav_;
};

// Writes an uncompressed TGA: header type 2, pixels as given (blue, green,
// red[, alpha]), first row at the bottom.
void writeTGA(const std::string& path, unsigned int width, unsigned int height, unsigned int bpp,
              const std::vector<unsigned char>& pixels);
// A width x height picture of one colour (r, g, b, a).
void writeSolidTGA(const std::string& path, unsigned int width, unsigned int height, int r, int g, int b,
                   int a = -1);

// Writes a mono 16-bit WAV of a sine tone.
void writeTone(const std::string& path, double hertz, double seconds, int rate = 22050, double amplitude = 0.5);

// Root-mean-square level of one channel of interleaved frames in [from, to) seconds.
double rms(const std::vector<float>& frames, int channels, int channel, int rate, double from, double to);
// Dominant frequency of one channel by counting upward zero crossings.
double zeroCrossingHz(const std::vector<float>& frames, int channels, int channel, int rate, double from,
                      double to);

// The real game binary, started in a directory of our choosing with its
// standard output in a file.
class GameProcess {
public:
    // env: extra "NAME=value" entries. program: what to start instead of the
    // game built here (an installed launcher), with its output in `out`
    // rather than in dir.
    GameProcess(const std::string& dir, const std::vector<std::string>& env = {}, const std::string& program = "",
                const std::string& out = "");
    ~GameProcess();
    // The game's top-level X window, waiting for it to appear; 0 if it never does.
    unsigned long window(double seconds = 20);
    // What a window manager does when the player clicks the close button.
    void closeWindow();
    // Exit status, or -1 when it has not ended within the time (it runs on;
    // the destructor kills a game that is still running).
    int wait(double seconds = 20);
    std::string output() const;
    int pid() const { return pid_; }

private:
    void start();
    std::string dir_;
    std::vector<std::string> env_;
    std::string program_;
    int pid_ = -1;
    int status_ = -1;
    int restarts_ = 0;
    std::string out_;
};

// What a window manager does when the player clicks the close button of the
// window `id`; false when there is no X display to send it through.
bool closeWindow(unsigned long id);

// Runs a shell command and returns its standard output.
std::string run(const std::string& command);
// Runs a shell command with its standard error joined to its output; its
// exit status, or -1 if it did not exit. The output goes to *out when asked for.
int shell(const std::string& command, std::string* out = nullptr);
// The command line of a desktop entry's Exec key, without its quotes.
std::string execOf(const std::string& desktopFile);

// An alsoft.conf in dir sending all sound to dir/capture.wav; returns its path.
std::string waveConf(const std::string& dir);

}  // namespace bvtest

#endif

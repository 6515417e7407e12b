#include "support/bvtest_fixtures.h"

#include <gtest/gtest.h>
#include <sndfile.h>
#include <unistd.h>

#include <GL/gl.h>
#include <SDL/SDL.h>
#include <SDL/SDL_syswm.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <thread>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "shell/blackbox.h"
#include "shell/bvconfig.h"
#include "shell/main.h"
#include "shell/safesave.h"

namespace fs = std::filesystem;

namespace bvtest {

ScratchDir::ScratchDir() {
    char templ[] = "/tmp/brontevalle-test-XXXXXX";
    path_ = mkdtemp(templ);
    previous_ = fs::current_path();
    for (const char* d : {"Data", "Data/Screenshots", "Data/Highscore", "Data/Ghosts"})
        fs::create_directories(path_ + "/" + d);
    fs::current_path(path_);
}

ScratchDir::~ScratchDir() {
    // A record saved on the writer thread lands here, not wherever we go next.
    finishsaves();
    fs::current_path(previous_);
    std::error_code ec;
    fs::remove_all(path_, ec);
}

std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

void writeFile(const std::string& path, const std::string& contents) {
    std::ofstream out(path, std::ios::binary);
    out << contents;
}

bool fileExists(const std::string& path) {
    return fs::exists(path);
}

std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> out;
    std::stringstream s(text);
    std::string line;
    while (std::getline(s, line)) out.push_back(line);
    return out;
}

void openWindow(unsigned int width, unsigned int height) {
    ASSERT_NE(getenv("DISPLAY"), nullptr) << "GL tests need an X display (make test starts Xvfb)";
    config.width = width;
    config.height = height;
    config.depth = 32;
    config.fullscreen = 0;
    if (blackbox.file[0] == 0) blackbox.init("/dev/null", false);
    // Xvfb accepts connections between requests; while another test process
    // keeps it busy its queue can be full and a connection is refused
    // (EAGAIN). A person's X server would let us in a moment later, so do we.
    // Only X11 will do: SDL would otherwise settle for a text-mode driver.
    setenv("SDL_VIDEODRIVER", "x11", 1);
    for (int attempt = 0; attempt < 50 && SDL_Init(SDL_INIT_VIDEO) < 0; attempt++) SDL_Delay(100);
    ASSERT_TRUE(createGLwindow());
}

Pixel readPixel(int x, int y) {
    unsigned char p[3];
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(x, y, 1, 1, GL_RGB, GL_UNSIGNED_BYTE, p);
    return {p[0], p[1], p[2]};
}

Pixel screenPixel(int x, int y) {
    glFinish();
    SDL_SysWMinfo info;
    SDL_VERSION(&info.version);
    if (SDL_GetWMInfo(&info) <= 0) return {-1, -1, -1};
    info.info.x11.lock_func();
    Display* display = info.info.x11.display;
    XSync(display, False);
    XImage* image = XGetImage(display, info.info.x11.window, x, (int)config.height - 1 - y, 1, 1, AllPlanes, ZPixmap);
    info.info.x11.unlock_func();
    if (!image) return {-1, -1, -1};
    unsigned long p = XGetPixel(image, 0, 0);
    XDestroyImage(image);
    return {(int)((p >> 16) & 0xff), (int)((p >> 8) & 0xff), (int)(p & 0xff)};
}

SoundCapture::SoundCapture(const std::string& sampleType) {
    char templ[] = "/tmp/brontevalle-sound-XXXXXX";
    dir_ = mkdtemp(templ);
    wav_ = dir_ + "/capture.wav";
    std::string conf = dir_ + "/alsoft.conf";
    writeFile(conf, "[general]\ndrivers=wave\nfrequency=44100\nchannels=stereo\nsample-type=" + sampleType + "\n"
                    "[wave]\nfile=" + wav_ + "\n");
    setenv("ALSOFT_CONF", conf.c_str(), 1);
}

SoundCapture::~SoundCapture() {
    std::error_code ec;
    fs::remove_all(dir_, ec);
}

std::vector<float> SoundCapture::read(int* channels, int* rate) const {
    SF_INFO info = {};
    SNDFILE* f = sf_open(wav_.c_str(), SFM_READ, &info);
    std::vector<float> frames;
    if (!f) return frames;
    frames.resize((size_t)info.frames * info.channels);
    sf_readf_float(f, frames.data(), info.frames);
    sf_close(f);
    if (channels) *channels = info.channels;
    if (rate) *rate = info.samplerate;
    return frames;
}

double SoundCapture::seconds() const {
    std::ifstream in(wav_, std::ios::binary);
    std::string head(4096, '\0');
    in.read(&head[0], (std::streamsize)head.size());
    head.resize((size_t)in.gcount());
    auto le = [&](size_t at, int bytes) {
        unsigned int v = 0;
        for (int i = bytes - 1; i >= 0; i--) v = v << 8 | (unsigned char)head[at + i];
        return v;
    };
    if (head.size() < 12 || head.compare(0, 4, "RIFF") != 0) return 0;
    unsigned int bytesPerSecond = 0;
    for (size_t at = 12; at + 8 <= head.size();) {
        unsigned int size = le(at + 4, 4);
        if (head.compare(at, 4, "fmt ") == 0 && at + 20 <= head.size()) bytesPerSecond = le(at + 16, 4);
        if (head.compare(at, 4, "data") == 0) {
            if (!bytesPerSecond) return 0;
            std::error_code ec;
            double bytes = (double)fs::file_size(wav_, ec) - (double)(at + 8);
            return ec || bytes < 0 ? 0 : bytes / bytesPerSecond;
        }
        at += 8 + size + (size & 1);
    }
    return 0;
}

bool SoundCapture::until(double target, double limit) const {
    auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(limit);
    while (seconds() < target) {
        if (std::chrono::steady_clock::now() >= end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

void writeTGA(const std::string& path, unsigned int width, unsigned int height, unsigned int bpp,
              const std::vector<unsigned char>& pixels) {
    std::string data(12, '\0');
    data[2] = 2;
    data += (char)(width % 256);
    data += (char)(width / 256);
    data += (char)(height % 256);
    data += (char)(height / 256);
    data += (char)bpp;
    data += (char)0;
    data.append(pixels.begin(), pixels.end());
    writeFile(path, data);
}

void writeSolidTGA(const std::string& path, unsigned int width, unsigned int height, int r, int g, int b, int a) {
    std::vector<unsigned char> pixels;
    for (unsigned int i = 0; i < width * height; i++) {
        pixels.push_back((unsigned char)b);
        pixels.push_back((unsigned char)g);
        pixels.push_back((unsigned char)r);
        if (a >= 0) pixels.push_back((unsigned char)a);
    }
    writeTGA(path, width, height, a >= 0 ? 32 : 24, pixels);
}

void writeTone(const std::string& path, double hertz, double seconds, int rate, double amplitude) {
    SF_INFO info = {};
    info.samplerate = rate;
    info.channels = 1;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    SNDFILE* f = sf_open(path.c_str(), SFM_WRITE, &info);
    ASSERT_NE(f, nullptr) << sf_strerror(nullptr);
    std::vector<short> pcm((size_t)(seconds * rate));
    for (size_t i = 0; i < pcm.size(); i++)
        pcm[i] = (short)(32767 * amplitude * std::sin(2 * M_PI * hertz * (double)i / rate));
    sf_write_short(f, pcm.data(), (sf_count_t)pcm.size());
    sf_close(f);
}

double rms(const std::vector<float>& frames, int channels, int channel, int rate, double from, double to) {
    size_t a = (size_t)(from * rate), b = (size_t)(to * rate);
    size_t n = frames.size() / channels;
    if (b > n) b = n;
    double sum = 0;
    size_t count = 0;
    for (size_t i = a; i < b; i++, count++) sum += (double)frames[i * channels + channel] * frames[i * channels + channel];
    return count ? std::sqrt(sum / count) : 0;
}

double zeroCrossingHz(const std::vector<float>& frames, int channels, int channel, int rate, double from,
                      double to) {
    size_t a = (size_t)(from * rate), b = (size_t)(to * rate);
    size_t n = frames.size() / channels;
    if (b > n) b = n;
    int crossings = 0;
    for (size_t i = a + 1; i < b; i++)
        if (frames[(i - 1) * channels + channel] < 0 && frames[i * channels + channel] >= 0) crossings++;
    return b > a ? crossings / ((double)(b - a) / rate) : 0;
}

std::string run(const std::string& command) {
    std::string out;
    FILE* p = popen(command.c_str(), "r");
    if (!p) return out;
    char buf[4096];
    size_t n;
    while ((n = fread(buf, 1, sizeof buf, p)) > 0) out.append(buf, n);
    pclose(p);
    return out;
}

int shell(const std::string& command, std::string* out) {
    std::string text;
    FILE* p = popen((command + " 2>&1").c_str(), "r");
    if (!p) return -1;
    char buf[4096];
    size_t n;
    while ((n = fread(buf, 1, sizeof buf, p)) > 0) text.append(buf, n);
    int st = pclose(p);
    if (out) *out = text;
    return WIFEXITED(st) ? WEXITSTATUS(st) : -1;
}

std::string execOf(const std::string& desktopFile) {
    for (const std::string& line : lines(readFile(desktopFile)))
        if (line.rfind("Exec=", 0) == 0) {
            std::string exec = line.substr(5);
            exec.erase(std::remove(exec.begin(), exec.end(), '"'), exec.end());
            return exec;
        }
    return "";
}

std::string waveConf(const std::string& dir) {
    std::string conf = dir + "/alsoft.conf";
    writeFile(conf, "[general]\ndrivers=wave\n[wave]\nfile=" + dir + "/capture.wav\n");
    return conf;
}

GameProcess::GameProcess(const std::string& dir, const std::vector<std::string>& env, const std::string& program,
                         const std::string& out)
    : dir_(dir), env_(env), program_(program.empty() ? BV_GAME_BINARY : program), out_(out.empty() ? dir + "/stdout.txt" : out) {
    start();
}

void GameProcess::start() {
    const std::string& dir = dir_;
    const std::vector<std::string>& env = env_;
    status_ = -1;
    pid_ = fork();
    if (pid_ == 0) {
        if (chdir(dir.c_str()) != 0) _exit(127);
        int fd = open(out_.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        dup2(fd, 1);
        int null = open("/dev/null", O_WRONLY);
        dup2(null, 2);
        setenv("SDL_VIDEODRIVER", "x11", 1);
        for (const std::string& e : env) putenv(strdup(e.c_str()));
        execl(program_.c_str(), program_ == BV_GAME_BINARY ? "brontevalle" : program_.c_str(), (char*)nullptr);
        _exit(127);
    }
}

GameProcess::~GameProcess() {
    if (pid_ > 0 && status_ < 0) {
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
    }
}

unsigned long GameProcess::window(double seconds) {
    auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    while (std::chrono::steady_clock::now() < end) {
        std::string ids = run("xdotool search --onlyvisible --pid " + std::to_string(pid_) +
                              " --classname brontevalle 2>/dev/null");
        if (!ids.empty()) return std::stoul(ids);
        int st;
        if (waitpid(pid_, &st, WNOHANG) == pid_) {
            status_ = WIFEXITED(st) ? WEXITSTATUS(st) : 128 + WTERMSIG(st);
            // A busy Xvfb can refuse a connection for a moment (see openWindow):
            // start again, as a player would.
            if (status_ == 1 && output().find("Video initialization failed") != std::string::npos && restarts_++ < 20) {
                std::this_thread::sleep_for(std::chrono::milliseconds(200));
                start();
                continue;
            }
            return 0;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    return 0;
}

void GameProcess::closeWindow() {
    unsigned long id = window();
    if (id) bvtest::closeWindow(id);
}

bool closeWindow(unsigned long id) {
    Display* display = XOpenDisplay(nullptr);
    if (!display) return false;
    XEvent event = {};
    event.xclient.type = ClientMessage;
    event.xclient.window = id;
    event.xclient.message_type = XInternAtom(display, "WM_PROTOCOLS", False);
    event.xclient.format = 32;
    event.xclient.data.l[0] = (long)XInternAtom(display, "WM_DELETE_WINDOW", False);
    event.xclient.data.l[1] = CurrentTime;
    XSendEvent(display, id, False, NoEventMask, &event);
    XFlush(display);
    XCloseDisplay(display);
    return true;
}

int GameProcess::wait(double seconds) {
    if (status_ >= 0) return status_;
    // Looks at least once, so that wait(0) tells whether it has ended by now.
    auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    for (;;) {
        int st;
        if (waitpid(pid_, &st, WNOHANG) == pid_) {
            status_ = WIFEXITED(st) ? WEXITSTATUS(st) : 128 + WTERMSIG(st);
            return status_;
        }
        if (std::chrono::steady_clock::now() >= end) return -1;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
}

std::string GameProcess::output() const {
    return readFile(out_);
}

}  // namespace bvtest

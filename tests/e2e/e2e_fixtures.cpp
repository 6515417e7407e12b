#include "e2e/e2e_fixtures.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/XTest.h>
#include <sndfile.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <thread>

namespace fs = std::filesystem;

namespace e2e {

namespace {

// One connection for the player's eyes and hands, kept for the whole program.
Display* display() {
    static Display* d = nullptr;
    if (!d) {
        // A busy Xvfb can refuse a connection for a moment; a person would try again.
        for (int attempt = 0; attempt < 100 && !(d = XOpenDisplay(nullptr)); attempt++) rest(0.1);
    }
    return d;
}

double now() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

Box clip(const Picture& p, const Box& b) {
    int x0 = std::max(0, b.x), y0 = std::max(0, b.y);
    int x1 = std::min(p.width, b.x + b.w), y1 = std::min(p.height, b.y + b.h);
    return {x0, y0, std::max(0, x1 - x0), std::max(0, y1 - y0)};
}

unsigned int le(const std::string& s, size_t at, int bytes) {
    unsigned int v = 0;
    for (int i = bytes - 1; i >= 0; i--) v = v << 8 | (unsigned char)s[at + i];
    return v;
}

// The lay-out of a WAV file's samples, from its header.
struct WavFormat {
    int channels = 0, rate = 0, bits = 0;
    bool floating = false;
    size_t data = 0;  // offset of the first sample
};

WavFormat wavFormat(const std::string& head) {
    WavFormat f;
    if (head.size() < 12 || head.compare(0, 4, "RIFF") != 0 || head.compare(8, 4, "WAVE") != 0) return f;
    size_t at = 12;
    while (at + 8 <= head.size()) {
        std::string id = head.substr(at, 4);
        unsigned int size = le(head, at + 4, 4);
        if (id == "fmt " && at + 8 + 16 <= head.size()) {
            unsigned int tag = le(head, at + 8, 2);
            f.channels = (int)le(head, at + 10, 2);
            f.rate = (int)le(head, at + 12, 4);
            f.bits = (int)le(head, at + 22, 2);
            // WAVE_FORMAT_EXTENSIBLE names the real format in its sub-format.
            if (tag == 0xfffe && at + 8 + 26 <= head.size()) tag = le(head, at + 8 + 24, 2);
            f.floating = tag == 3;
        } else if (id == "data") {
            f.data = at + 8;
            return f;
        }
        at += 8 + size + (size & 1);
    }
    return f;
}

std::vector<float> downsample(const Sound& s, int factor) {
    std::vector<float> out(s.mono.size() / factor);
    for (size_t i = 0; i < out.size(); i++) {
        float sum = 0;
        for (int j = 0; j < factor; j++) sum += s.mono[i * factor + j];
        out[i] = sum / factor;
    }
    return out;
}

}  // namespace

void rest(double seconds) {
    std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
}

bool waitFor(const std::function<bool()>& f, double seconds, double poll) {
    double end = now() + seconds;
    while (now() < end) {
        if (f()) return true;
        rest(poll);
    }
    return f();
}

Box unitBox(double cx, double cy, double hw, double hh) {
    return {(int)std::lround((cx - hw) * 1024), (int)std::lround((1 - cy - hh) * 768), (int)std::lround(2 * hw * 1024),
            (int)std::lround(2 * hh * 768)};
}

// ---- pictures ----

Rgb Picture::mean(const Box& box) const {
    Box b = clip(*this, box);
    double r = 0, g = 0, bl = 0;
    for (int y = b.y; y < b.y + b.h; y++)
        for (int x = b.x; x < b.x + b.w; x++) {
            const unsigned char* p = &rgb[((size_t)y * width + x) * 3];
            r += p[0];
            g += p[1];
            bl += p[2];
        }
    double n = (double)b.w * b.h;
    if (n == 0) return {0, 0, 0};
    return {r / n, g / n, bl / n};
}

double Picture::difference(const Picture& other, const Box& box) const {
    if (other.width != width || other.height != height) return 255;
    Box b = clip(*this, box);
    double sum = 0;
    for (int y = b.y; y < b.y + b.h; y++)
        for (int x = b.x; x < b.x + b.w; x++)
            for (int c = 0; c < 3; c++) {
                size_t i = ((size_t)y * width + x) * 3 + c;
                sum += std::abs((int)rgb[i] - (int)other.rgb[i]);
            }
    double n = 3.0 * b.w * b.h;
    return n ? sum / n : 0;
}

int Picture::changed(const Picture& other, const Box& box, const Box& except) const {
    if (other.width != width || other.height != height) return box.w * box.h;
    Box b = clip(*this, box);
    int n = 0;
    for (int y = b.y; y < b.y + b.h; y++)
        for (int x = b.x; x < b.x + b.w; x++) {
            if (x >= except.x && x < except.x + except.w && y >= except.y && y < except.y + except.h) continue;
            size_t i = ((size_t)y * width + x) * 3;
            int d = 0;
            for (int c = 0; c < 3; c++) d += std::abs((int)rgb[i + c] - (int)other.rgb[i + c]);
            if (d > 30) n++;
        }
    return n;
}

int Picture::count(const Box& box, const std::function<bool(int, int, int)>& f) const {
    Box b = clip(*this, box);
    int n = 0;
    for (int y = b.y; y < b.y + b.h; y++)
        for (int x = b.x; x < b.x + b.w; x++) {
            const unsigned char* p = &rgb[((size_t)y * width + x) * 3];
            if (f(p[0], p[1], p[2])) n++;
        }
    return n;
}

void Picture::save(const std::string& path) const {
    std::ofstream out(path, std::ios::binary);
    out << "P6\n" << width << " " << height << "\n255\n";
    out.write((const char*)rgb.data(), (std::streamsize)rgb.size());
}

Picture grab(const Box& b) {
    Picture p;
    Display* d = display();
    if (!d) return p;
    XImage* image = XGetImage(d, DefaultRootWindow(d), b.x, b.y, (unsigned)b.w, (unsigned)b.h, AllPlanes, ZPixmap);
    if (!image) return p;
    // Pictures keep whole-screen coordinates: a grabbed box sits where it is
    // on the screen, in a picture of the screen's size.
    p.width = b.x + b.w;
    p.height = b.y + b.h;
    p.rgb.assign((size_t)p.width * p.height * 3, 0);
    for (int y = 0; y < b.h; y++)
        for (int x = 0; x < b.w; x++) {
            unsigned long v = XGetPixel(image, x, y);
            unsigned char* q = &p.rgb[((size_t)(b.y + y) * p.width + b.x + x) * 3];
            q[0] = (unsigned char)(v >> 16);
            q[1] = (unsigned char)(v >> 8);
            q[2] = (unsigned char)v;
        }
    XDestroyImage(image);
    return p;
}

Picture readTGA(const std::string& path) {
    Picture p;
    std::string data = bvtest::readFile(path);
    if (data.size() < 18 || data[2] != 2 || (unsigned char)data[16] != 24) return p;
    int w = (int)le(data, 12, 2), h = (int)le(data, 14, 2);
    if (data.size() < 18 + (size_t)w * h * 3) return p;
    p.width = w;
    p.height = h;
    p.rgb.resize((size_t)w * h * 3);
    for (int y = 0; y < h; y++)
        for (int x = 0; x < w; x++) {
            const char* s = &data[18 + ((size_t)(h - 1 - y) * w + x) * 3];
            unsigned char* q = &p.rgb[((size_t)y * w + x) * 3];
            q[0] = (unsigned char)s[2];
            q[1] = (unsigned char)s[1];
            q[2] = (unsigned char)s[0];
        }
    return p;
}

int menu::white(const Picture& p, const Box& b) {
    return p.count(b, [](int r, int g, int bl) { return r > 200 && g > 200 && bl > 200; });
}

bool menu::shown(const Picture& p) {
    auto writing = [&](const Box& b, int least) {
        int n = white(p, b);
        return n > least && n < b.w * b.h / 2;
    };
    return writing(kPanelTitle, 50) && writing(kName, 20) && writing(kOpponents, 10);
}

int race::red(const Picture& p, const Box& b) {
    // The writing is pure red; lit and fogged red paint never quite is.
    return p.count(b, [](int r, int g, int bl) { return r > 220 && g < 30 && bl < 30; });
}

int loadingSegments(const Picture& p) {
    // Ten squares 15.36 pixels apart on one row near the bottom: each either
    // the empty slot (dark blue-grey) or filled (orange).
    int filled = 0;
    for (int i = 0; i < 10; i++) {
        int cx = (int)std::lround((0.421 + 0.015 * i) * 1024);
        Rgb c = p.mean({cx - 4, 648, 8, 6});
        bool orange = c.r > c.b + 60 && c.r > 120;
        bool slot = c.b > c.r + 8 && c.b < 140;
        if (!orange && !slot) return -1;
        if (orange) filled++;
    }
    return filled;
}

int race::kart(const Picture& p) {
    return p.count(kLowerMiddle,
                   [](int r, int g, int b) { return std::max(r, std::max(g, b)) - std::min(r, std::min(g, b)) > 80; });
}

int race::gantry(const Picture& p) {
    // Dark even through a foggy track's haze.
    return p.count({358, 38, 410, 54}, [](int r, int g, int b) { return r < 80 && g < 80 && b < 80; });
}

bool race::redWritingSeen(double seconds) {
    return waitFor([] { return red(grab(kCountdown), kCountdown) > 20; }, seconds, 0.02);
}

bool race::newRecord(const Picture& p) {
    // Wider than anything the countdown writes: "NEW RECORD!" runs from x 400
    // to 639, "GO!" only from 475 to 572, and a reset brings "GO!" back.
    return red(p, {392, 345, 48, 60}) > 10 && red(p, {584, 345, 60, 60}) > 10;
}

// ---- sound ----

double Sound::rms(double from, double to) const {
    size_t a = (size_t)std::max(0.0, from * rate), b = std::min(mono.size(), (size_t)std::max(0.0, to * rate));
    double sum = 0;
    for (size_t i = a; i < b; i++) sum += (double)mono[i] * mono[i];
    return b > a ? std::sqrt(sum / (double)(b - a)) : 0;
}

double Sound::crossings(double from, double to) const {
    size_t a = (size_t)std::max(0.0, from * rate), b = std::min(mono.size(), (size_t)std::max(0.0, to * rate));
    int n = 0;
    for (size_t i = a + 1; i < b; i++)
        if (mono[i - 1] < 0 && mono[i] >= 0) n++;
    return b > a ? n / ((double)(b - a) / rate) : 0;
}

double Sound::tone(double from, double to, const std::vector<double>& hertz) const {
    // Short blocks, so that a tone that wavers stays inside one frequency
    // step for a block.
    const size_t block = (size_t)(rate * 0.05);
    size_t a = (size_t)std::max(0.0, from * rate), b = std::min(mono.size(), (size_t)std::max(0.0, to * rate));
    double tonal = 0, total = 0;
    for (size_t start = a; start + block <= b; start += block) {
        double energy = 0;
        for (size_t i = start; i < start + block; i++) energy += (double)mono[i] * mono[i];
        double best = 0;
        for (double f : hertz) {
            double w = 2 * std::cos(2 * M_PI * f / rate), s1 = 0, s2 = 0;
            for (size_t i = start; i < start + block; i++) {
                double s = mono[i] + w * s1 - s2;
                s2 = s1;
                s1 = s;
            }
            // |X|^2 of a sinusoid of amplitude A over N samples is (A N / 2)^2;
            // its energy is A^2 N / 2.
            double power = s1 * s1 + s2 * s2 - w * s1 * s2;
            best = std::max(best, 2 * power / (double)block);
        }
        tonal += best;
        total += energy;
    }
    return total > 0 ? tonal / total : 0;
}

Sound Sound::part(double from, double to) const {
    Sound s;
    s.rate = rate;
    size_t a = std::min(mono.size(), (size_t)std::max(0.0, from * rate));
    size_t b = std::min(mono.size(), (size_t)std::max(0.0, to * rate));
    if (b > a) s.mono.assign(mono.begin() + (long)a, mono.begin() + (long)b);
    return s;
}

Sound Sound::resampled(int newRate) const {
    Sound s;
    s.rate = newRate;
    if (!rate || mono.empty()) return s;
    size_t n = (size_t)((double)mono.size() * newRate / rate);
    s.mono.resize(n);
    for (size_t i = 0; i < n; i++) {
        double at = (double)i * rate / newRate;
        size_t k = (size_t)at;
        double f = at - (double)k;
        float a = mono[std::min(k, mono.size() - 1)], b = mono[std::min(k + 1, mono.size() - 1)];
        s.mono[i] = (float)(a + (b - a) * f);
    }
    return s;
}

double Sound::onset(float level) const {
    for (size_t i = 0; i < mono.size(); i++)
        if (std::fabs(mono[i]) > level) return (double)i / rate;
    return -1;
}

std::vector<float> readWavSamples(const std::string& path, int* channels, int* rate) {
    std::vector<float> samples;
    std::string data = bvtest::readFile(path);
    WavFormat f = wavFormat(data.substr(0, 4096));
    if (!f.data || f.channels <= 0 || (f.bits != 16 && f.bits != 32)) return samples;
    if (channels) *channels = f.channels;
    if (rate) *rate = f.rate;
    size_t bytes = (size_t)f.bits / 8, frame = bytes * (size_t)f.channels;
    size_t frames = (data.size() - f.data) / frame;
    samples.resize(frames * (size_t)f.channels);
    for (size_t i = 0; i < samples.size(); i++) {
        const char* p = &data[f.data + i * bytes];
        if (f.floating) {
            memcpy(&samples[i], p, 4);
        } else {
            samples[i] = (float)(int16_t)le(data, f.data + i * bytes, 2) / 32768.0f;
        }
    }
    return samples;
}

Sound readWav(const std::string& path) {
    Sound s;
    int channels = 0;
    std::vector<float> samples = readWavSamples(path, &channels, &s.rate);
    if (samples.empty()) return s;
    size_t frames = samples.size() / (size_t)channels;
    s.mono.resize(frames);
    for (size_t i = 0; i < frames; i++) {
        float sum = 0;
        for (int c = 0; c < channels; c++) sum += samples[i * channels + c];
        s.mono[i] = sum / (float)channels;
    }
    return s;
}

Sound readSound(const std::string& path) {
    Sound s;
    SF_INFO info = {};
    SNDFILE* f = sf_open(path.c_str(), SFM_READ, &info);
    if (!f) return s;
    std::vector<float> frames((size_t)info.frames * info.channels);
    sf_count_t n = sf_readf_float(f, frames.data(), info.frames);
    sf_close(f);
    s.rate = info.samplerate;
    s.mono.resize((size_t)n);
    for (size_t i = 0; i < (size_t)n; i++) {
        float sum = 0;
        for (int c = 0; c < info.channels; c++) sum += frames[i * info.channels + c];
        s.mono[i] = sum / (float)info.channels;
    }
    return s;
}

double match(const Sound& hay, double from, double to, const Sound& needle, double* at) {
    if (hay.rate <= 0 || hay.rate != needle.rate) return 0;
    const int factor = std::max(1, hay.rate / 5500);
    const double rate = (double)hay.rate / factor;
    std::vector<float> h = downsample(hay, factor), n = downsample(needle, factor);
    size_t a = (size_t)std::max(0.0, from * rate), b = (size_t)std::max(0.0, to * rate);
    if (n.empty() || h.size() < n.size()) return 0;
    b = std::min(b, h.size() - n.size());
    double nn = 0;
    for (float v : n) nn += (double)v * v;
    // Energy of each window of the hay, by prefix sums.
    std::vector<double> prefix(h.size() + 1, 0);
    for (size_t i = 0; i < h.size(); i++) prefix[i + 1] = prefix[i] + (double)h[i] * h[i];
    double best = 0;
    size_t bestAt = a;
    for (size_t o = a; o < b; o++) {
        double hh = prefix[o + n.size()] - prefix[o];
        if (hh <= 0) continue;
        double dot = 0;
        for (size_t i = 0; i < n.size(); i++) dot += (double)h[o + i] * n[i];
        double c = dot / std::sqrt(hh * nn);
        if (c > best) {
            best = c;
            bestAt = o;
        }
    }
    if (best <= 0) return 0;
    // The blocks of the coarse search fall anywhere across the sound's
    // samples; at the best place found, find the very sample at full rate.
    const std::vector<float>& H = hay.mono;
    const std::vector<float>& N = needle.mono;
    double full = 0, fullAt = (double)bestAt / rate;
    double NN = 0;
    for (float v : N) NN += (double)v * v;
    size_t first = bestAt * factor >= (size_t)2 * factor ? (bestAt - 2) * factor : 0;
    for (size_t o = first; o <= (bestAt + 2) * factor && o + N.size() <= H.size(); o++) {
        double dot = 0, hh = 0;
        for (size_t i = 0; i < N.size(); i++) {
            dot += (double)H[o + i] * N[i];
            hh += (double)H[o + i] * H[o + i];
        }
        if (hh <= 0 || NN <= 0) continue;
        double c = dot / std::sqrt(hh * NN);
        if (c > full) {
            full = c;
            fullAt = (double)o / hay.rate;
        }
    }
    if (at) *at = full > best ? fullAt : (double)bestAt / rate;
    return std::max(best, full);
}

double heardLoop(const Sound& hay, double from, double to, const Sound& loop) {
    Sound l = loop.rate == hay.rate ? loop : loop.resampled(hay.rate);
    double best = 0, eighth = l.seconds() / 8;
    for (int i = 0; i < 8; i++) best = std::max(best, match(hay, from, to, l.part(i * eighth, (i + 1) * eighth)));
    return best;
}

// ---- the game ----

Game::Game(const Options& options) {
    dir_ = std::make_unique<bvtest::ScratchDir>();
    const std::string data = dir() + "/Data";
    fs::remove_all(data);
    fs::copy(std::string(BV_GAME_DIR) + "/Data", data, fs::copy_options::recursive);
    // A fresh game directory: nothing of an earlier run.
    for (const char* f : {"blackbox.bvd", "gencon.bvd"}) fs::remove(data + "/" + f);
    for (const char* d : {"Highscore", "Ghosts", "Screenshots"}) {
        fs::remove_all(data + "/" + d);
        fs::create_directories(data + "/" + d);
    }
    std::string settings;
    for (const std::string& line : bvtest::lines(bvtest::readFile(std::string(BV_SOURCE_DIR) + "/data/config.bvd"))) {
        std::string out = line;
        for (const std::string& s : options.settings) {
            std::string label = s.substr(0, s.find(' '));
            if (line.compare(0, label.size(), label) == 0 && line.size() > label.size() &&
                (line[label.size()] == '(' || line[label.size()] == ' '))
                out = s;
        }
        settings += out + "\n";
    }
    bvtest::writeFile(data + "/config.bvd", settings);
    std::string gencon = options.gencon;
    if (!options.track.empty() && !gencon.empty()) {
        // The game numbers the tracks in the order the directory lists them.
        int index = 0, found = -1;
        for (auto& e : fs::directory_iterator(data + "/Tracks")) {
            std::string name = e.path().filename().string();
            std::string stem = name.substr(0, name.find('.'));
            if (stem.size() <= 2) continue;
            if (stem == options.track) found = index;
            index++;
        }
        std::vector<std::string> l = bvtest::lines(gencon);
        if (found >= 0 && l.size() > 4) {
            l[4] = std::to_string(found);
            gencon.clear();
            for (const std::string& line : l) gencon += line + "\n";
        }
    }
    if (!gencon.empty()) bvtest::writeFile(data + "/gencon.bvd", gencon);
    for (const auto& f : options.files) bvtest::writeFile(dir() + "/" + f.first, f.second);
    process_ = std::make_unique<bvtest::GameProcess>(dir(), std::vector<std::string>{"ALSOFT_CONF=" + bvtest::waveConf(dir())});
}

Game::Game(const Installed& installed) : folder_(installed.folder) {
    std::vector<std::string> env = installed.env;
    env.push_back("ALSOFT_CONF=" + bvtest::waveConf(installed.scratch));
    process_ = std::make_unique<bvtest::GameProcess>("/", env, installed.command, installed.scratch + "/stdout.txt");
}

Game::~Game() {
    if (const char* keep = getenv("BV_E2E_PICTURES")) {
        std::error_code ec;
        fs::copy_file(dir() + "/capture.wav", std::string(keep) + "/capture.wav", fs::copy_options::overwrite_existing, ec);
        fs::copy(dir() + "/Data/Screenshots", std::string(keep) + "/shots", fs::copy_options::overwrite_existing | fs::copy_options::recursive, ec);
    }
    Display* d = display();
    // Let go of anything still held, for the next scenario's sake.
    if (d) {
        XTestFakeButtonEvent(d, 1, False, 0);
        for (const char* k : {"Up", "Down", "Left", "Right", "F12", "Escape", "i", "j", "k", "l"}) keyUp(k);
        XSync(d, False);
    }
    if (process_ && process_->wait(0.1) < 0) {
        process_->closeWindow();
        process_->wait(20);
    }
}

std::string Game::log() const {
    return bvtest::readFile(dir() + "/Data/blackbox.bvd");
}

bool Game::started(double seconds) {
    window_ = process_->window(seconds);
    if (!window_) return false;
    Display* d = display();
    XSetInputFocus(d, window_, RevertToPointerRoot, CurrentTime);
    XSync(d, False);
    return true;
}

bool Game::menuFrames(int n, double seconds) {
    Picture last = grab(menu::kKartPreview);
    int seen = 0;
    double end = now() + seconds;
    while (seen < n && now() < end) {
        Picture p = grab(menu::kKartPreview);
        if (!p.same(last, menu::kKartPreview)) {
            seen++;
            last = p;
        } else {
            rest(0.002);
        }
    }
    return seen >= n;
}

bool Game::atMenu(double seconds) {
    if (!window_ && !started(seconds)) return false;
    return waitFor([&] { return menu::shown(grab()); }, seconds, 0.2) && menuFrames(3);
}

void Game::move(int x, int y) {
    Display* d = display();
    XTestFakeMotionEvent(d, -1, x, y, 0);
    XSync(d, False);
}

void Game::moveUnit(double ux, double uy) {
    move((int)std::lround(ux * 1024), (int)std::lround((1 - uy) * 768));
}

void Game::buttonDown() {
    Display* d = display();
    XTestFakeButtonEvent(d, 1, True, 0);
    XSync(d, False);
}

void Game::buttonUp() {
    Display* d = display();
    XTestFakeButtonEvent(d, 1, False, 0);
    XSync(d, False);
}

static unsigned int keycode(const std::string& keysym) {
    return XKeysymToKeycode(display(), XStringToKeysym(keysym.c_str()));
}

void Game::keyDown(const std::string& keysym) {
    XTestFakeKeyEvent(display(), keycode(keysym), True, 0);
    XSync(display(), False);
}

void Game::keyUp(const std::string& keysym) {
    XTestFakeKeyEvent(display(), keycode(keysym), False, 0);
    XSync(display(), False);
}

void Game::tap(const std::string& keysym, double hold) {
    keyDown(keysym);
    rest(hold);
    keyUp(keysym);
}

void Game::type(const std::string& text, double perKey) {
    for (char c : text) {
        std::string name = c == ' ' ? "space" : std::string(1, c);
        tap(name, perKey);
        rest(perKey);
    }
}

bool Game::step(double ux, double uy) {
    // An arrow stays deaf for up to a quarter of a second after a step, its
    // own or another's.
    rest(0.3);
    moveUnit(ux, uy);
    if (!menuFrames(1)) return false;
    // A quick click: the game sees the button down for exactly one frame
    // however its frames fall, and so the arrow steps once.
    buttonDown();
    rest(0.01);
    buttonUp();
    bool ok = menuFrames(2);
    moveUnit(0.3, 0.95);
    return ok && menuFrames(2);
}

bool Game::press(double ux, double uy, double seconds) {
    Picture before = grab(menu::kPanelTitle);
    moveUnit(ux, uy);
    menuFrames(1, 5);
    buttonDown();
    bool changed = waitFor(
        [&] { return process_->wait(0) >= 0 || grab(menu::kPanelTitle).difference(before, menu::kPanelTitle) > 5; },
        seconds);
    moveUnit(0.3, 0.95);
    buttonUp();
    return changed;
}

bool Game::startRace(double seconds) {
    if (!press(menu::kRaceX, menu::kRaceY, seconds)) return false;
    // The race is on when the top line shows lap, time and record in white
    // over the sky.
    return waitFor([&] { return menu::white(grab(race::kTopLine), race::kTopLine) > 100; }, seconds, 0.1);
}

bool Game::countdownOver(double seconds) {
    // "1", "2", "3" and "GO!" follow each other without a gap; when the red
    // has gone for a second, the start is behind us.
    double end = now() + seconds;
    double clear = -1;
    while (now() < end) {
        bool red = race::red(grab(race::kCountdown), race::kCountdown) > 20;
        if (red)
            clear = -1;
        else if (clear < 0)
            clear = now();
        else if (now() - clear > 1.0)
            return true;
        rest(0.05);
    }
    return false;
}

void Game::console(const std::string& line) {
    tap("F1", 0.1);
    rest(0.1);
    type(line);
    tap("Return", 0.1);
    rest(0.1);
    tap("F1", 0.1);
    rest(0.2);
}

bool Game::onTheGrid(Picture* shot, double seconds) {
    // However many pictures that takes: a slow machine draws the swing of
    // the view in fewer, longer frames, a quick one in many short ones.
    double end = now() + seconds;
    for (int tries = 0; now() < end; tries++) {
        Picture p = screenshot();
        if (p.empty()) return false;
        if (const char* keep = getenv("BV_E2E_PICTURES"))
            p.save(std::string(keep) + "/grid" + std::to_string(tries) + ".ppm");
        if (race::kart(p) > 5000 && race::gantry(p) > 1500) {
            if (shot) *shot = p;
            return true;
        }
        rest(0.2);
    }
    return false;
}

Picture Game::still(const Box& except, double seconds) {
    double end = now() + seconds;
    Picture last = screenshot();
    while (!last.empty() && now() < end) {
        rest(0.3);
        Picture now = screenshot();
        if (now.empty()) break;
        if (now.changed(last, {0, 0, 1024, 768}, except) < 100) return now;
        last = now;
    }
    return Picture();
}

bool Game::escape() {
    keyDown("Escape");
    bool back = waitFor([] { return menu::shown(grab()); }, 60, 0.1);
    keyUp("Escape");
    return back && menuFrames(3);
}

int Game::screenshotsTaken() const {
    int n = 0;
    for (auto& e : fs::directory_iterator(dir() + "/Data/Screenshots"))
        if (e.path().extension() == ".tga") n++;
    return n;
}

Picture Game::screenshot(double seconds) {
    int n = screenshotsTaken();
    char name[64];
    snprintf(name, sizeof name, "/Data/Screenshots/shot%03d.tga", n);
    std::string file = dir() + name;
    const size_t full = 18 + 1024 * 768 * 3;
    keyDown("F12");
    bool written = waitFor(
        [&] { return (fs::exists(file) && fs::file_size(file) == full) || process_->wait(0) >= 0; }, seconds, 0.02);
    keyUp("F12");
    written = written && fs::exists(file) && fs::file_size(file) == full;
    if (!written) {
        fprintf(stderr, "%s: no screenshot %s\n", process_->wait(0) >= 0 ? "the game has ended" : "the game is running",
                file.c_str());
        return Picture();
    }
    // Holding F12 writes a picture every frame; let the last of them land.
    int before;
    do {
        before = screenshotsTaken();
        rest(0.3);
    } while (screenshotsTaken() != before);
    return readTGA(file);
}

double Game::soundSeconds() const {
    std::string file = dir() + "/capture.wav";
    std::ifstream in(file, std::ios::binary);
    std::string head(4096, '\0');
    in.read(&head[0], (std::streamsize)head.size());
    head.resize((size_t)in.gcount());
    WavFormat f = wavFormat(head);
    if (!f.data || !f.rate) return 0;
    std::error_code ec;
    double size = (double)fs::file_size(file, ec);
    return (size - (double)f.data) / ((double)f.channels * f.bits / 8 * f.rate);
}

Sound Game::sound() const {
    return readWav(dir() + "/capture.wav");
}

int Game::close(double seconds) {
    process_->closeWindow();
    return process_->wait(seconds);
}

}  // namespace e2e

// The frame-time harness: the game's own start-up and loop body (events,
// meters, drawGL, swap) in its real 1024x768 window with its real Data/, timed
// frame by frame in the menu and in races driven by the computer.
//
//   frametime --list
//   frametime --scenario NAME [--warmup N] [--frames N] [--fixed]
//       one scenario in this process; prints one "RESULT {json}" line
//   frametime --steps NAME [--warmup N]
//       after the warm-up, one frame of the scenario step by step: for each
//       drawing step the fragments it shaded and its time, one "STEP {json}" line each
//   frametime --all [--warmup N] [--frames N] [--sim FILE] [--markdown FILE] [--json FILE]
//       every scenario, each in a fresh process of its own (start-up time and
//       peak memory belong to a process), then the report
//   --without NAME[,NAME...] draws without those shortcuts (brightness, sky, ...)
//       to measure what each one pays
//   --raw FILE keeps each scenario's result line; --from FILE writes the
//       report from such a file instead of measuring again
//
// The game directory is $BV_GAME_DIR or the build's own. The harness works
// in a scratch copy of its settings so the player's files stay untouched.

#include <GL/gl.h>
#include <GL/glext.h>
#include <SDL/SDL.h>
#include <dirent.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fstream>
#include <functional>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "frontend/menu.h"
#include "kart/gokart.h"
#include "scene/camera.h"
#include "scene/scene.h"
#include "shell/joystick.h"
#include "shell/mouse.h"
#include "shell/performance.h"
#include "shell/bvconfig.h"
#include "shell/main.h"
#include "track/track.h"

namespace {

double monotonic() {
    timespec ts;
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return (double)ts.tv_sec + ts.tv_nsec * 1e-9;
}

double processtime() {
    timespec ts;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &ts);
    return (double)ts.tv_sec + ts.tv_nsec * 1e-9;
}

std::string gameDir() {
    const char* d = getenv("BV_GAME_DIR");
    return d && *d ? d : BV_GAME_DIR;
}

// The shipped tracks, by the names of their files, in name order.
std::vector<std::string> shippedTracks() {
    std::vector<std::string> names;
    std::string dir = gameDir() + "/Data/Tracks";
    if (DIR* d = opendir(dir.c_str())) {
        while (dirent* e = readdir(d)) {
            std::string n = e->d_name;
            size_t dot = n.find('.');
            if (dot == std::string::npos || dot <= 2 || n.substr(dot) != ".txt") continue;
            names.push_back(n.substr(0, dot));
        }
        closedir(d);
    }
    std::sort(names.begin(), names.end());
    return names;
}

const char* CAMERA_NAMES[5] = {"driver", "chase", "trackside", "high", "free"};

struct Scenario {
    std::string name;
    bool race = false;
    std::string track;
    unsigned int karts = 0;
    bool effects = false;
    int camera = CAMERA_CHASE;
    // Simulated at a sixtieth of a second a frame whatever the frame took.
    bool stepped = false;
    // 2 or 3: not the game's frame but the least a menu (2) or race (3) frame
    // must draw, in the game's window with the game's state.
    int floor = 0;
};

std::vector<Scenario> scenarios() {
    std::vector<Scenario> all;
    for (int f : {3, 2}) {
        Scenario s;
        s.name = f == 3 ? "floor3d" : "floor2d";
        s.floor = f;
        all.push_back(s);
    }
    Scenario menuScenario;
    menuScenario.name = "menu";
    all.push_back(menuScenario);
    std::vector<std::string> tracks = shippedTracks();
    for (const std::string& t : tracks)
        for (bool fx : {false, true})
            for (unsigned int k : {1u, 3u, 6u}) {
                Scenario s;
                s.name = "race-" + t + "-" + std::to_string(k) + (fx ? "-max" : "-off");
                s.race = true;
                s.track = t;
                s.karts = k;
                s.effects = fx;
                all.push_back(s);
            }
    // The heaviest race again with the race stepped at a sixtieth of a
    // second a frame: where frames are slow, the real-time race sends the
    // computer drivers through the barriers (see kart_from_barrier_m) and
    // the eye then looks at empty ground; stepped, they stay on the circuit.
    for (const std::string& t : tracks) {
        Scenario s;
        s.name = "race60-" + t + "-6-max";
        s.race = true;
        s.track = t;
        s.karts = 6;
        s.effects = true;
        s.stepped = true;
        all.push_back(s);
    }
    // Every view, in the heaviest race on the first track.
    for (int c = 0; c < 5; c++) {
        Scenario s;
        s.name = std::string("camera-") + CAMERA_NAMES[c];
        s.race = true;
        s.track = tracks.empty() ? "" : tracks[0];
        s.karts = 6;
        s.effects = true;
        s.camera = c;
        all.push_back(s);
    }
    return all;
}

// A scratch game directory: the game's content linked, its settings copied,
// and empty folders for what the game writes.
std::string scratchGame() {
    char templ[] = "/tmp/brontevalle-frametime-XXXXXX";
    if (!mkdtemp(templ)) {
        perror("frametime: mkdtemp");
        exit(2);
    }
    std::string dir = templ;
    std::string data = gameDir() + "/Data";
    mkdir((dir + "/Data").c_str(), 0755);
    for (const char* sub : {"Ads", "Fonts", "GUI", "Models", "Sounds", "Textures", "Tracks"}) {
        std::string from = data + "/" + sub;
        if (symlink(from.c_str(), (dir + "/Data/" + sub).c_str()) != 0) perror("frametime: symlink");
    }
    for (const char* sub : {"Ghosts", "Highscore", "Screenshots"}) mkdir((dir + "/Data/" + sub).c_str(), 0755);
    std::ifstream in(data + "/config.bvd", std::ios::binary);
    std::ofstream out(dir + "/Data/config.bvd", std::ios::binary);
    out << in.rdbuf();
    return dir;
}

void removeScratch(const std::string& dir) {
    std::string cmd = "rm -rf '" + dir + "'";
    if (system(cmd.c_str()) != 0) fprintf(stderr, "frametime: could not remove %s\n", dir.c_str());
}

double percentile(std::vector<double> v, double p) {
    if (v.empty()) return 0;
    std::sort(v.begin(), v.end());
    double rank = p * (double)(v.size() - 1);
    size_t lo = (size_t)rank;
    size_t hi = lo + 1 < v.size() ? lo + 1 : lo;
    return v[lo] + (v[hi] - v[lo]) * (rank - (double)lo);
}

// Polygons that reach the rasteriser in one frame of the loop, counted by
// running that frame in GL feedback mode: after culling and clipping, quads
// and polygons as Mesa hands them on. The frame is run (and simulated) like
// any other, only nothing is drawn.
long countPolygons(const std::function<void()>& frame) {
    std::vector<GLfloat> buffer(1 << 22);
    for (int attempt = 0; attempt < 4; attempt++) {
        glFeedbackBuffer((GLsizei)buffer.size(), GL_2D, buffer.data());
        glRenderMode(GL_FEEDBACK);
        frame();
        GLint n = glRenderMode(GL_RENDER);
        if (n < 0) {
            buffer.resize(buffer.size() * 4);
            continue;
        }
        long polygons = 0;
        for (GLint i = 0; i < n;) {
            GLint token = (GLint)buffer[i++];
            switch (token) {
            case GL_POLYGON_TOKEN: {
                GLint k = (GLint)buffer[i++];
                i += 2 * k;
                polygons++;
                break;
            }
            case GL_POINT_TOKEN:
            case GL_BITMAP_TOKEN:
            case GL_DRAW_PIXEL_TOKEN:
            case GL_COPY_PIXEL_TOKEN:
                i += 2;
                break;
            case GL_LINE_TOKEN:
            case GL_LINE_RESET_TOKEN:
                i += 4;
                break;
            case GL_PASS_THROUGH_TOKEN:
                i += 1;
                break;
            default:
                return -1;
            }
        }
        return polygons;
    }
    return -1;
}

const long CLOCK0 = 1000000000L;

// One frame; apart and never inlined, so that callgrind can be told to count
// inside it only (--toggle-collect=*benchFrame*).
__attribute__((noinline)) void benchFrame(bool fixed, long& step, bool& done) {
    if (!fixed) {
        looppass(done);
        return;
    }
    bvclock_override = CLOCK0 + ++step * BV_CLOCKS_PER_SEC / 60;
    SDL_Event event;
    while (SDL_PollEvent(&event)) handleEvent(event, done);
    joystick.refresh();
    mouse.refresh(menu.m == MENU_RACING);
    performance.fps = 60;
    drawGL();
    glFlush();
    SDL_GL_SwapBuffers();
}

// The least a frame can draw. The 3D floor: the clear, one textured quad over
// the whole window in perspective under the track's exponential fog (the
// ground's own picture, filtered as every game texture is), the swap. The 2D
// floor: the clear, the menu's backdrop over the whole window, the swap.
void floorFrame(int kind) {
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
    glColor3f(1, 1, 1);
    glEnable(GL_TEXTURE_2D);
    if (kind == 3) {
        resizeGLwindow3D();
        glEnable(GL_FOG);
        glBindTexture(GL_TEXTURE_2D, track.dirtTexture[track.whichDirt % N_DIRTS]);
        // A plane 2 units from the eye, tilted by 30 degrees: it fills the view.
        glRotatef(30, 1, 0, 0);
        glBegin(GL_QUADS);
        glTexCoord2f(0, 0);
        glVertex3f(-10, -10, -2);
        glTexCoord2f(8, 0);
        glVertex3f(10, -10, -2);
        glTexCoord2f(8, 8);
        glVertex3f(10, 10, -2);
        glTexCoord2f(0, 8);
        glVertex3f(-10, 10, -2);
        glEnd();
        glDisable(GL_FOG);
    } else {
        resizeGLwindow2D(1, 1);
        glBindTexture(GL_TEXTURE_2D, menu.tgaMenu);
        unitquad(0, 0, 1, 1);
    }
    glDisable(GL_TEXTURE_2D);
    glFlush();
    SDL_GL_SwapBuffers();
}

// ---- fragments and time of each drawing step ----

// The fragments a step shaded: those that passed its own stencil and depth
// tests (GL_SAMPLES_PASSED) and, where the driver counts them, the fragment
// shader's invocations, covered pixels or not.
struct StepMeter {
    PFNGLGENQUERIESPROC genQueries = nullptr;
    PFNGLBEGINQUERYPROC beginQuery = nullptr;
    PFNGLENDQUERYPROC endQuery = nullptr;
    PFNGLGETQUERYOBJECTUIVPROC queryResult = nullptr;
    bool statistics = false;
    GLuint queries[2] = {0, 0};
    bool open = false;
    std::string step;
    double t0 = 0;
    std::vector<std::string> lines;
    std::string scenario;
};
StepMeter meter;

void closeStep() {
    if (!meter.open) return;
    meter.endQuery(GL_SAMPLES_PASSED);
    if (meter.statistics) meter.endQuery(GL_FRAGMENT_SHADER_INVOCATIONS_ARB);
    glFinish();
    double ms = (monotonic() - meter.t0) * 1000;
    GLuint samples = 0, invocations = 0;
    meter.queryResult(meter.queries[0], GL_QUERY_RESULT, &samples);
    if (meter.statistics) meter.queryResult(meter.queries[1], GL_QUERY_RESULT, &invocations);
    char line[512];
    snprintf(line, sizeof line,
             "STEP {\"scenario\": \"%s\", \"step\": \"%s\", \"fragments\": %u, \"invocations\": %ld, \"ms\": %.3f}",
             meter.scenario.c_str(), meter.step.c_str(), samples, meter.statistics ? (long)invocations : -1L, ms);
    meter.lines.push_back(line);
    meter.open = false;
}

void stepHook(const char* step) {
    closeStep();
    if (!step) return;
    glFinish();
    meter.step = step;
    meter.t0 = monotonic();
    meter.beginQuery(GL_SAMPLES_PASSED, meter.queries[0]);
    if (meter.statistics) meter.beginQuery(GL_FRAGMENT_SHADER_INVOCATIONS_ARB, meter.queries[1]);
    meter.open = true;
}

// One frame with every step counted and timed apart; the last step ends with the swap.
void measureSteps(const std::string& scenario, const std::function<void()>& frame) {
    meter.genQueries = (PFNGLGENQUERIESPROC)SDL_GL_GetProcAddress("glGenQueries");
    meter.beginQuery = (PFNGLBEGINQUERYPROC)SDL_GL_GetProcAddress("glBeginQuery");
    meter.endQuery = (PFNGLENDQUERYPROC)SDL_GL_GetProcAddress("glEndQuery");
    meter.queryResult = (PFNGLGETQUERYOBJECTUIVPROC)SDL_GL_GetProcAddress("glGetQueryObjectuiv");
    if (!meter.genQueries || !meter.beginQuery || !meter.endQuery || !meter.queryResult) {
        fprintf(stderr, "frametime: no occlusion queries in this GL\n");
        return;
    }
    const char* ext = (const char*)glGetString(GL_EXTENSIONS);
    meter.statistics = ext && strstr(ext, "GL_ARB_pipeline_statistics_query");
    meter.genQueries(2, meter.queries);
    meter.scenario = scenario;
    frameStepHook = stepHook;
    frame();
    closeStep();
    frameStepHook = nullptr;
    for (const std::string& l : meter.lines) printf("%s\n", l.c_str());
}

// ---- one scenario in this process ----

// The scratch game directory becomes the working directory; sound goes to
// OpenAL Soft's null device.
std::string enterScratchGame() {
    // A player has a sound card; a build machine under Xvfb has none, and
    // without one the game would load and mix nothing. OpenAL Soft's null
    // device mixes like a card does and plays to nowhere.
    setenv("ALSOFT_DRIVERS", "null", 0);
    std::string dir = scratchGame();
    if (chdir(dir.c_str()) != 0) {
        perror("frametime: chdir");
        return "";
    }
    setenv("SDL_VIDEODRIVER", "x11", 1);
    return dir;
}

// The race of the scenario, started as the menu starts one.
bool startRace(const Scenario& sc, bool& done) {
    unsigned int index = TRACK_MAXNAMES;
    for (unsigned int i = 0; i < track.ntracks; i++)
        if (sc.track == track.trackname[i]) index = i;
    if (index == TRACK_MAXNAMES) {
        fprintf(stderr, "frametime: no track %s\n", sc.track.c_str());
        return false;
    }
    if (index != config.track) {
        config.track = index;
        track.load();
    }
    config.ngokarts = sc.karts;
    config.nhumanplayers = 0;
    const unsigned int fx = sc.effects ? 1 : 0;
    config.shadows = sc.effects ? 3 : 0;
    config.trackshadows = fx;
    config.lensflare = fx;
    config.skidmarks = fx;
    config.fog = fx;
    config.lod = sc.effects ? 2 : 0;
    menu.m = MENU_RACESTART;
    looppass(done);  // the race-start frame
    camera.mode = (unsigned int)sc.camera;
    return true;
}

struct Measured {
    std::vector<double> wall, cpu;
    double rssfile = 0, rssanon = 0, peak = 0;
};

Measured measureFrames(int frames, const std::function<void()>& pass) {
    Measured m;
    m.wall.reserve((size_t)frames);
    m.cpu.reserve((size_t)frames);
    double w0 = monotonic(), c0 = processtime();
    for (int i = 0; i < frames; i++) {
        pass();
        double w1 = monotonic(), c1 = processtime();
        m.wall.push_back(w1 - w0);
        m.cpu.push_back(c1 - c0);
        w0 = w1;
        c0 = c1;
    }
    rusage ru;
    getrusage(RUSAGE_SELF, &ru);
    m.peak = (double)ru.ru_maxrss / 1024.0;
    // What the resident set is made of at the end: mapped files (the GL
    // driver and its compiler are most of them) and the process's own memory.
    if (FILE* status = fopen("/proc/self/status", "r")) {
        char line[256];
        while (fgets(line, sizeof line, status)) {
            if (strncmp(line, "RssFile:", 8) == 0) m.rssfile = atof(line + 8) / 1024;
            if (strncmp(line, "RssAnon:", 8) == 0) m.rssanon = atof(line + 8) / 1024;
        }
        fclose(status);
    }
    return m;
}

// How far the followed kart is from the nearest barrier point at the
// end: a kart that has broken out of the circuit leaves the eye looking
// at empty ground, and such frames cost far less than racing ones.
double kartFromBarrier(const Scenario& sc) {
    double away = -1;
    if (!sc.race) return away;
    const sGokart& k = gokart[followedKart()];
    for (unsigned int i = 0; i < track.nLRpoints && i < TRACK_MAXPOINTS; i++)
        for (const sTrackPoint& p : {track.Lpoint[i], track.Rpoint[i]}) {
            double d = std::hypot((double)p.x - k.px, (double)p.z - k.pz);
            if (away < 0 || d < away) away = d;
        }
    return away;
}

void printResult(const Scenario& sc, int frames, const Measured& m, long polygons, double away, double startup) {
    double median = percentile(m.wall, 0.5);
    double cpusum = 0;
    for (double c : m.cpu) cpusum += c;
    printf("RESULT {\"scenario\": \"%s\", \"frames\": %d, \"median_fps\": %.2f, \"median_ms\": %.3f, "
           "\"p1_ms\": %.3f, \"p99_ms\": %.3f, \"cpu_ms_per_frame\": %.3f, \"polygons\": %ld, "
           "\"peak_rss_mb\": %.1f, \"rss_file_mb\": %.1f, \"rss_anon_mb\": %.1f, \"kart_from_barrier_m\": %.1f, \"startup_s\": %.3f}\n",
           sc.name.c_str(), frames, median > 0 ? 1.0 / median : 0.0, median * 1000, percentile(m.wall, 0.01) * 1000,
           percentile(m.wall, 0.99) * 1000, frames ? cpusum / frames * 1000 : 0.0, polygons, m.peak, m.rssfile,
           m.rssanon, away, startup);
    fflush(stdout);
}

int runScenario(const Scenario& sc, int warmup, int frames, double t0, bool fixed, bool steps) {
    std::string dir = enterScratchGame();
    if (dir.empty()) return 2;

    // Start-up exactly as the game does it, up to its first menu frame on screen.
    startup();
    bool done = false;
    looppass(done);
    glFinish();
    double firstframe = monotonic();

    if (sc.race && !startRace(sc, done)) return 2;

    // With --fixed, each frame is the loop body with the frame rate held at 60
    // and the clock stepped by a sixtieth of a second, so that two builds
    // draw the very same frames (for instruction counts under callgrind,
    // which runs far slower than real time).
    long step = 0;
    std::function<void()> pass = [&]() { benchFrame(fixed, step, done); };
    if (sc.floor) pass = [&]() { floorFrame(sc.floor); };
    if (fixed) {
        bvclock_override = CLOCK0;
        if (sc.race) resetScene();  // the race's clock starts on the stepped clock
    }

    // Warm-up: the frames asked for, and in a real-time race at least until
    // the karts are off the grid, so that every measured frame is one of racing.
    for (int i = 0; i < warmup || (sc.race && (!fixed || sc.stepped) && t <= 2.5f); i++) pass();

    if (steps) {
        measureSteps(sc.name, pass);
    } else {
        Measured m = measureFrames(frames, pass);
        // The counted frame is a frame like the measured ones (a stepped one in a stepped race).
        long polygons = countPolygons(pass);
        printResult(sc, frames, m, polygons, kartFromBarrier(sc), t0 > 0 ? firstframe - t0 : -1.0);
    }
    fflush(stdout);
    if (chdir("/") != 0) { /* nothing to do */ }
    removeScratch(dir);
    // Leave without the game's shutdown: it would save settings into the scratch copy we just removed.
    SDL_Quit();
    _exit(0);
}

// ---- the report ----

struct Result {
    std::map<std::string, double> num;
    std::string scenario;
    std::string step;  // a STEP line's
    bool ok = false;
};

// A RESULT line, or with kind "STEP" a step's line.
Result parseResult(const std::string& line, const char* kind = "RESULT") {
    Result r;
    std::string head = std::string(kind) + " {";
    size_t p = line.find(head);
    if (p == std::string::npos) return r;
    std::string body = line.substr(p + head.size());
    size_t i = 0;
    while ((i = body.find('"', i)) != std::string::npos) {
        size_t j = body.find('"', i + 1);
        if (j == std::string::npos) break;
        std::string key = body.substr(i + 1, j - i - 1);
        size_t colon = body.find(':', j);
        if (colon == std::string::npos) break;
        size_t v = colon + 1;
        while (v < body.size() && body[v] == ' ') v++;
        if (v < body.size() && body[v] == '"') {
            size_t e = body.find('"', v + 1);
            if (key == "scenario") r.scenario = body.substr(v + 1, e - v - 1);
            if (key == "step") r.step = body.substr(v + 1, e - v - 1);
            i = e + 1;
        } else {
            r.num[key] = strtod(body.c_str() + v, nullptr);
            i = v;
        }
    }
    r.ok = !r.scenario.empty();
    return r;
}

// The child's RESULT line, or with steps its STEP lines, one a line.
std::string runChild(const char* self, const std::string& name, int warmup, int frames, bool steps = false) {
    int fds[2];
    if (pipe(fds) != 0) return "";
    double t0 = monotonic();
    pid_t pid = fork();
    if (pid == 0) {
        dup2(fds[1], 1);
        close(fds[0]);
        close(fds[1]);
        char t0s[64], ws[32], fs[32];
        snprintf(t0s, sizeof t0s, "%.9f", t0);
        snprintf(ws, sizeof ws, "%d", warmup);
        snprintf(fs, sizeof fs, "%d", frames);
        execl(self, self, steps ? "--steps" : "--scenario", name.c_str(), "--warmup", ws, "--frames", fs, "--t0", t0s,
              (char*)nullptr);
        _exit(127);
    }
    close(fds[1]);
    std::string out;
    char buf[4096];
    ssize_t n;
    while ((n = read(fds[0], buf, sizeof buf)) > 0) out.append(buf, (size_t)n);
    close(fds[0]);
    int status = 0;
    waitpid(pid, &status, 0);
    std::istringstream lines(out);
    std::string line, kept;
    while (std::getline(lines, line)) {
        if (!steps && line.rfind("RESULT ", 0) == 0) return line;
        if (steps && line.rfind("STEP ", 0) == 0) kept += line + "\n";
    }
    return kept;
}

// The Google Benchmark results, from its JSON output: name, time per
// iteration in its unit, and the counters.
struct SimResult {
    std::string name;
    double cpu = 0;
    std::string unit;
    std::map<std::string, double> counters;
};

std::vector<SimResult> readSim(const std::string& path) {
    std::vector<SimResult> out;
    std::ifstream in(path);
    std::string line;
    bool inBenchmarks = false;
    SimResult cur;
    auto value = [](const std::string& l) {
        size_t c = l.find(':');
        std::string v = l.substr(c + 1);
        while (!v.empty() && (v.back() == ',' || v.back() == ' ')) v.pop_back();
        size_t s = v.find_first_not_of(' ');
        return s == std::string::npos ? std::string() : v.substr(s);
    };
    static const char* skip[] = {"family_index", "per_family_instance_index", "run_name", "run_type",
                                 "repetitions", "repetition_index", "threads", "iterations", "real_time",
                                 "aggregate_name", "aggregate_unit", "error_occurred", "error_message"};
    while (std::getline(in, line)) {
        if (line.find("\"benchmarks\"") != std::string::npos) inBenchmarks = true;
        if (!inBenchmarks) continue;
        size_t q = line.find('"');
        if (line.find('{') != std::string::npos && q == std::string::npos) cur = SimResult();
        if (line.find('}') != std::string::npos && !cur.name.empty()) {
            out.push_back(cur);
            cur = SimResult();
            continue;
        }
        if (q == std::string::npos) continue;
        size_t q2 = line.find('"', q + 1);
        std::string key = line.substr(q + 1, q2 - q - 1);
        std::string v = value(line);
        if (key == "name") {
            cur.name = v.substr(1, v.size() - 2);
        } else if (key == "cpu_time") {
            cur.cpu = strtod(v.c_str(), nullptr);
        } else if (key == "time_unit") {
            cur.unit = v.substr(1, v.size() - 2);
        } else if (key != "benchmarks") {
            bool skipped = false;
            for (const char* s : skip) skipped = skipped || key == s;
            if (!skipped && !v.empty() && v[0] != '"') cur.counters[key] = strtod(v.c_str(), nullptr);
        }
    }
    return out;
}

std::string fmt(const char* f, double v) {
    char b[64];
    snprintf(b, sizeof b, f, v);
    return b;
}

std::string machine() {
    std::string cpu = "unknown processor";
    std::ifstream in("/proc/cpuinfo");
    std::string line;
    while (std::getline(in, line))
        if (line.rfind("model name", 0) == 0) {
            cpu = line.substr(line.find(':') + 2);
            break;
        }
    return cpu + ", " + std::to_string(sysconf(_SC_NPROCESSORS_ONLN)) + " processors online";
}

std::string renderer(const char* self) {
    // The renderer string, from a child that opens the window (this process stays free of GL).
    std::string cmd = std::string(self) + " --renderer 2>/dev/null";
    FILE* p = popen(cmd.c_str(), "r");
    if (!p) return "unknown";
    char buf[512] = "";
    if (!fgets(buf, sizeof buf, p)) buf[0] = 0;
    pclose(p);
    std::string s = buf;
    while (!s.empty() && (s.back() == '\n' || s.back() == '\r')) s.pop_back();
    return s.empty() ? "unknown" : s;
}

// What one run measured, and what the report says of it.
struct Report {
    std::vector<Result> results;
    std::vector<Result> steps;  // the step lines, both scenarios
    std::vector<SimResult> sim;
    std::string when, rendererName;
    double load = 0;
    int warmup = 0, frames = 0;
    double startup = 0;
    // The largest peak resident set of any scenario above floor3d's, and whose.
    double peakAboveFloor = 0;
    std::string peakScenario;
    const Result* floor3d = nullptr;
    const Result* floor2d = nullptr;
};

bool isRace(const std::string& name) {
    return name.rfind("race", 0) == 0 || name.rfind("camera-", 0) == 0;
}

// A row's median frame as a multiple of the median floor frame of the same run.
double ratio(const Report& rep, const Result& r, const char* what = "median_ms") {
    const Result* f = isRace(r.scenario) ? rep.floor3d : r.scenario == "menu" ? rep.floor2d : nullptr;
    if (r.scenario == "floor3d" || r.scenario == "floor2d") f = &r;
    if (!f || f->num.at("median_ms") <= 0) return -1;
    return r.num.at(what) / f->num.at("median_ms");
}

std::string ratioText(double x) {
    return x < 0 ? std::string("-") : fmt("%.2fx", x);
}

// The floors, the median start-up and the largest peak memory above the floor's.
void summarise(Report& rep) {
    char when[64];
    time_t now = time(nullptr);
    strftime(when, sizeof when, "%Y-%m-%d %H:%M UTC", gmtime(&now));
    rep.when = when;
    double loadavg[3] = {0, 0, 0};
    rep.load = getloadavg(loadavg, 3) < 0 ? -1 : loadavg[0];
    std::vector<double> startups;
    for (const Result& r : rep.results) {
        auto st = r.num.find("startup_s");
        if (st != r.num.end() && st->second > 0) startups.push_back(st->second);
        if (r.scenario == "floor3d") rep.floor3d = &r;
        if (r.scenario == "floor2d") rep.floor2d = &r;
    }
    // The game at rest already holds most of its memory in the GL driver, so
    // what a scenario costs is what it holds beyond the floor of the same run.
    rep.peakAboveFloor = -1;
    if (rep.floor3d)
        for (const Result& r : rep.results) {
            double above = r.num.at("peak_rss_mb") - rep.floor3d->num.at("peak_rss_mb");
            if (above > rep.peakAboveFloor) {
                rep.peakAboveFloor = above;
                rep.peakScenario = r.scenario;
            }
        }
    rep.startup = percentile(startups, 0.5);
}

void writeIntro(std::ostream& out, const Report& rep) {
    out << "# Performance\n\n";
    out << "Written by `make bench` from what it measured on " << rep.when << ": " << machine()
        << ", GL renderer " << rep.rendererName << ", 1024x768 window";
    // The harness itself keeps two processors busy, so a load much above the
    // processor count means other work ran alongside.
    const bool loaded = rep.load > 1.5 * std::max(1L, sysconf(_SC_NPROCESSORS_ONLN));
    out << ". Load average at the end of the run: " << fmt("%.2f", rep.load)
        << (loaded ? ". Other work ran alongside, so frame times are noisy; "
                   : ". Little else ran alongside (the harness itself counts towards the load); ")
        << "medians and percentiles are over "
        << rep.frames << " frames after " << rep.warmup
        << " warm-up frames (in a race, at least until the karts are off the grid), each scenario in a "
           "fresh process of the harness (`bench/frametime.cpp`), which runs the game's own start-up and "
           "loop body on the shipped settings but for those a scenario names. Sound plays to OpenAL Soft's "
           "null device (`ALSOFT_DRIVERS=null` unless set otherwise), which mixes like a sound card.\n\n"
           "Frame budgets are ratios to a floor measured in the same run, so that they hold on a "
           "machine of any speed and under any load that stays the same through the run: "
           "`floor3d` is the least a race frame must draw (the clear, one textured quad over the "
           "whole window in perspective under the track's exponential fog, the swap), `floor2d` the "
           "least a menu frame must draw (the clear, the menu's backdrop over the whole window, the "
           "swap), each in the game's own window with the game's own state.\n\n";
}

void writeBudgets(std::ostream& out, const Report& rep) {
    out << "## Budgets\n\n| Budget | Target | Measured | Met |\n|---|---|---|---|\n";
    auto row = [&](const std::string& what, const std::string& target, const std::string& got, bool met) {
        out << "| " << what << " | " << target << " | " << got << " | " << (met ? "yes" : "**no**") << " |\n";
    };
    const Result* heavy = nullptr;
    const Result* worst = nullptr;
    for (const Result& r : rep.results) {
        if (r.scenario == "race60-Quarry-6-max") heavy = &r;
        else if (isRace(r.scenario) && ratio(rep, r) >= 0 && (!worst || ratio(rep, r) > ratio(rep, *worst)))
            worst = &r;
        if (r.scenario == "menu") {
            double x = ratio(rep, r);
            row("menu with both previews, median frame / floor2d", "<= 1.5x",
                ratioText(x) + fmt(" (%.2f ms", r.num.at("median_ms")) +
                    (rep.floor2d ? fmt(" / %.2f ms)", rep.floor2d->num.at("median_ms")) : std::string(")")),
                x >= 0 && x <= 1.5);
        }
    }
    if (heavy) {
        double x = ratio(rep, *heavy), p = ratio(rep, *heavy, "p99_ms");
        std::string floor = rep.floor3d ? fmt(" / %.2f ms)", rep.floor3d->num.at("median_ms")) : std::string(")");
        row("race60-Quarry-6-max (6 karts, every effect at its highest), median frame / floor3d", "<= 2.0x",
            ratioText(x) + fmt(" (%.2f ms", heavy->num.at("median_ms")) + floor, x >= 0 && x <= 2.0);
        row("same race, 99th percentile frame / floor3d", "<= 3.0x",
            ratioText(p) + fmt(" (%.2f ms", heavy->num.at("p99_ms")) + floor, p >= 0 && p <= 3.0);
    }
    if (worst)
        row("every other race and view, median frame / floor3d (slowest: " + worst->scenario + ")", "<= 2.0x",
            ratioText(ratio(rep, *worst)), ratio(rep, *worst) <= 2.0);
    row("start-up to the first menu frame (median over all runs)", "<= 1.0 s", fmt("%.3f s", rep.startup),
        rep.startup <= 1.0);
    if (rep.floor3d)
        row("peak resident memory above floor3d's (largest: " + rep.peakScenario + ")", "<= 20 MB",
            fmt("%+.1f MB", rep.peakAboveFloor) + fmt(" (floor3d %.1f MB)", rep.floor3d->num.at("peak_rss_mb")),
            rep.peakAboveFloor <= 20);
}

void writeFrameTable(std::ostream& out, const Report& rep) {
    out << "\n## Frame times\n\n"
           "Frame time is wall time from one pass of the loop body to the next. Processor time is the "
           "whole process's (the game's thread and Mesa's rasteriser threads). Polygons: those that "
           "reach the rasteriser in one frame, counted by running one further frame in GL feedback "
           "mode (after culling and clipping). Peak memory: the process's peak resident set before that "
           "frame. Start-up: from just before the process is started to the first menu frame finished. "
           "Ratio: the median frame over the median frame of the floor of the same run (floor3d for "
           "races and views, floor2d for the menu).\n\n";
    out << "| Scenario | Median (ms) | Ratio to floor | Median fps | 1% frame (ms) | 99% frame (ms) | CPU per frame (ms) | "
           "Polygons | Peak RSS (MB) | Above floor3d (MB) | of it files / own at the end (MB) | Kart from barrier (m) | Start-up (s) |\n"
           "|---|---|---|---|---|---|---|---|---|---|---|---|---|\n";
    for (const Result& r : rep.results) {
        out << "| " << r.scenario << " | " << fmt("%.2f", r.num.at("median_ms")) << " | " << ratioText(ratio(rep, r))
            << " | " << fmt("%.1f", r.num.at("median_fps")) << " | " << fmt("%.2f", r.num.at("p1_ms")) << " | "
            << fmt("%.2f", r.num.at("p99_ms")) << " | " << fmt("%.2f", r.num.at("cpu_ms_per_frame")) << " | "
            << fmt("%.0f", r.num.at("polygons")) << " | " << fmt("%.1f", r.num.at("peak_rss_mb")) << " | "
            << (rep.floor3d ? fmt("%+.1f", r.num.at("peak_rss_mb") - rep.floor3d->num.at("peak_rss_mb"))
                            : std::string("-"))
            << " | "
            << fmt("%.1f", r.num.at("rss_file_mb")) << " / " << fmt("%.1f", r.num.at("rss_anon_mb")) << " | "
            << (r.num.count("kart_from_barrier_m") && r.num.at("kart_from_barrier_m") >= 0
                    ? fmt("%.1f", r.num.at("kart_from_barrier_m"))
                    : std::string("-"))
            << " | " << fmt("%.3f", r.num.at("startup_s")) << " |\n";
    }
    out << "\nScenario names: `race-<track>-<karts>-<effects>`, every kart driven by the computer; `off` is "
           "kart shadows 0, track shadows 0, lens flare 0, skid marks 0, fog 0, detail 0; `max` is kart "
           "shadows 3, track shadows 1, lens flare 1, skid marks 1, fog 1, detail 2. `camera-<view>` is "
           "the 6-kart `max` race on the first track in that view. `race60-<track>-6-max` is that race with "
           "the race clock and the frame rate the karts move by held at a sixtieth of a second a frame "
           "(the loop body otherwise as the game's), so that the karts race on the circuit however "
           "slow the frames are. Kart from barrier: how far the followed kart ended from the nearest "
           "barrier point; tens of metres means it had left the circuit and the view was mostly empty "
           "ground.\n";
}

void writeStepTables(std::ostream& out, const Report& rep) {
    if (rep.steps.empty()) return;
    out << "\n## Where the pixels go\n\n"
           "One frame of each scenario after its warm-up, drawn step by step (`frametime --steps NAME`): "
           "the fragments each step shaded that passed its own stencil and depth tests (an occlusion "
           "query, `GL_SAMPLES_PASSED`, around the step), that count over the 786,432 pixels of the "
           "window, the fragment shader's invocations where the driver counts them "
           "(`GL_ARB_pipeline_statistics_query`; - where it does not), and the step's time with the "
           "rasteriser finished before and after it (so the steps add up to more than a frame). The "
           "last step ends with the swap.\n";
    std::string current;
    for (const Result& r : rep.steps) {
        if (r.scenario != current) {
            current = r.scenario;
            out << "\n### " << current << "\n\n| Step | Fragments | Fragments / 786,432 | Shader invocations | ms |\n"
                   "|---|---|---|---|---|\n";
        }
        double inv = r.num.count("invocations") ? r.num.at("invocations") : -1;
        out << "| " << r.step << " | " << fmt("%.0f", r.num.at("fragments")) << " | "
            << fmt("%.2f", r.num.at("fragments") / 786432.0) << " | " << (inv < 0 ? std::string("-") : fmt("%.0f", inv))
            << " | " << fmt("%.2f", r.num.at("ms")) << " |\n";
    }
}

void writeSimulation(std::ostream& out, const std::vector<SimResult>& sim) {
    if (sim.empty()) return;
    out << "\n## Simulation\n\nGoogle Benchmark (`bench/sim_bench.cpp`), processor time per "
           "iteration. An iteration of `BM_KartFrame` and `BM_Karts` is one frame of `colide`, "
           "`think` and `move` for each kart (at 60 frames per simulated second), on a shipped "
           "track or on a ring of 32 to 255 barrier pairs; `BM_TrackCheck` and `BM_GetCheckpoint` take "
           "the segments and positions of a kart's first simulated minute on that track in turn.\n\n| Benchmark | Time | Counters |\n|---|---|---|\n";
    for (const SimResult& s : sim) {
        out << "| " << s.name << " | " << fmt("%.3f", s.cpu) << " " << s.unit << " | ";
        bool first = true;
        for (const auto& c : s.counters) {
            out << (first ? "" : ", ") << c.first << " " << fmt("%g", c.second);
            first = false;
        }
        auto karts = s.counters.find("karts");
        if (karts != s.counters.end() && karts->second > 0)
            out << ", per kart " << fmt("%.3f", s.cpu / karts->second) << " " << s.unit;
        out << " |\n";
    }
}

void writeJson(const std::string& path, const Report& rep) {
    std::ofstream js(path);
    js << "{\n  \"measured\": \"" << rep.when << "\",\n  \"machine\": \"" << machine() << "\",\n  \"renderer\": \""
       << rep.rendererName << "\",\n  \"load_average\": " << fmt("%.2f", rep.load)
       << ",\n  \"warmup_frames\": " << rep.warmup << ",\n  \"frames\": " << rep.frames
       << ",\n  \"startup_median_s\": " << fmt("%.3f", rep.startup) << ",\n  \"scenarios\": [\n";
    for (size_t i = 0; i < rep.results.size(); i++) {
        const Result& r = rep.results[i];
        js << "    {\"scenario\": \"" << r.scenario << "\"";
        for (const auto& n : r.num) js << ", \"" << n.first << "\": " << fmt("%.3f", n.second);
        double x = ratio(rep, r);
        if (x >= 0) js << ", \"ratio_to_floor\": " << fmt("%.3f", x);
        js << "}" << (i + 1 < rep.results.size() ? "," : "") << "\n";
    }
    js << "  ],\n  \"steps\": [\n";
    for (size_t i = 0; i < rep.steps.size(); i++) {
        const Result& r = rep.steps[i];
        js << "    {\"scenario\": \"" << r.scenario << "\", \"step\": \"" << r.step << "\"";
        for (const auto& n : r.num) js << ", \"" << n.first << "\": " << fmt("%.3f", n.second);
        js << "}" << (i + 1 < rep.steps.size() ? "," : "") << "\n";
    }
    js << "  ],\n  \"simulation\": [\n";
    for (size_t i = 0; i < rep.sim.size(); i++) {
        js << "    {\"name\": \"" << rep.sim[i].name << "\", \"cpu_time\": " << fmt("%.3f", rep.sim[i].cpu)
           << ", \"time_unit\": \"" << rep.sim[i].unit << "\"";
        for (const auto& c : rep.sim[i].counters) js << ", \"" << c.first << "\": " << fmt("%g", c.second);
        js << "}" << (i + 1 < rep.sim.size() ? "," : "") << "\n";
    }
    js << "  ]\n}\n";
}

void writeReport(Report& rep, const std::string& md, const std::string& json) {
    summarise(rep);
    std::ofstream out(md);
    writeIntro(out, rep);
    writeBudgets(out, rep);
    writeFrameTable(out, rep);
    writeStepTables(out, rep);
    writeSimulation(out, rep.sim);
    out << "\n";
    std::ifstream notes(std::string(BV_SOURCE_DIR) + "/bench/PERFORMANCE-notes.md");
    if (notes) out << notes.rdbuf();
    writeJson(json, rep);
}

int usage() {
    fprintf(stderr,
            "usage: frametime --list | --scenario NAME [--warmup N] [--frames N] | --steps NAME [--warmup N] |\n"
            "       --all [--only TEXT] [--warmup N] [--frames N] [--sim FILE] [--markdown FILE] [--json FILE]\n"
            "             [--raw FILE | --from FILE]\n");
    return 2;
}

struct Options {
    std::string scenario, sim, markdown = "PERFORMANCE.md", json = "performance.json", only, raw, from;
    int warmup = 60, frames = 300;
    double t0 = -1;
    bool all = false, list = false, fixed = false, steps = false, renderer = false, bad = false;
    std::string without;
};

// --without: the shortcuts named are turned off; false when a name is unknown.
bool turnOff(const std::string& names) {
    std::istringstream in(names);
    std::string name;
    while (std::getline(in, name, ',')) {
        if (name == "brightness") shortcuts.brightness = false;
        else if (name == "sky") shortcuts.sky = false;
        else if (name == "previews") shortcuts.previews = false;
        else if (name == "splash") shortcuts.splash = false;
        else if (name == "road") shortcuts.road = false;
        else if (name == "shadowscissor") shortcuts.shadowscissor = false;
        else return false;
    }
    return true;
}

Options parseOptions(int argc, char** argv) {
    Options o;
    for (int i = 1; i < argc; i++) {
        std::string a = argv[i];
        auto next = [&]() -> std::string { return i + 1 < argc ? argv[++i] : ""; };
        if (a == "--scenario") o.scenario = next();
        else if (a == "--steps") o.scenario = next(), o.steps = true;
        else if (a == "--warmup") o.warmup = atoi(next().c_str());
        else if (a == "--frames") o.frames = atoi(next().c_str());
        else if (a == "--t0") o.t0 = strtod(next().c_str(), nullptr);
        else if (a == "--sim") o.sim = next();
        else if (a == "--markdown") o.markdown = next();
        else if (a == "--json") o.json = next();
        else if (a == "--only") o.only = next();
        else if (a == "--raw") o.raw = next();
        else if (a == "--from") o.from = next();
        else if (a == "--all") o.all = true;
        else if (a == "--fixed") o.fixed = true;
        else if (a == "--list") o.list = true;
        else if (a == "--renderer") o.renderer = true;
        else if (a == "--without") o.bad = !turnOff(next()) || o.bad;
        else o.bad = true;
    }
    if (o.frames < 1) o.frames = 1;
    if (o.warmup < 0) o.warmup = 0;
    return o;
}

int printRenderer() {
    setenv("SDL_VIDEODRIVER", "x11", 1);
    if (SDL_Init(SDL_INIT_VIDEO) < 0) return 1;
    SDL_GL_SetAttribute(SDL_GL_DOUBLEBUFFER, 1);
    if (!SDL_SetVideoMode(64, 64, 32, SDL_OPENGL)) return 1;
    printf("%s\n", (const char*)glGetString(GL_RENDERER));
    SDL_Quit();
    return 0;
}

// The scenarios whose single frame is taken apart step by step.
const char* STEP_SCENARIOS[2] = {"race60-Quarry-6-max", "menu"};

// Every scenario in a child of its own (or the lines of an earlier run); the number that failed.
int measureAll(const Options& o, const std::vector<Scenario>& all, const char* self, Report& rep) {
    int failed = 0;
    std::ofstream rawOut;
    if (!o.raw.empty()) rawOut.open(o.raw);
    for (const Scenario& s : all) {
        if (!o.only.empty() && s.name.find(o.only) == std::string::npos) continue;
        fprintf(stderr, "frametime: %s ...", s.name.c_str());
        std::string line = runChild(self, s.name, o.warmup, o.frames);
        Result r = parseResult(line);
        if (rawOut) rawOut << line << std::endl;
        if (!r.ok) {
            fprintf(stderr, " failed\n");
            failed++;
            continue;
        }
        fprintf(stderr, " %.1f fps median, 99%% %.2f ms\n", r.num["median_fps"], r.num["p99_ms"]);
        rep.results.push_back(r);
    }
    for (const char* name : STEP_SCENARIOS) {
        if (all.empty() || (!o.only.empty() && std::string(name).find(o.only) == std::string::npos)) continue;
        fprintf(stderr, "frametime: steps of %s\n", name);
        std::istringstream lines(runChild(self, name, o.warmup, 1, true));
        std::string line;
        while (std::getline(lines, line)) {
            Result r = parseResult(line, "STEP");
            if (rawOut) rawOut << line << std::endl;
            if (r.ok) rep.steps.push_back(r);
        }
    }
    return failed;
}

// The report again from the results of an earlier run.
void readEarlierRun(const std::string& from, Report& rep) {
    std::ifstream in(from);
    std::string line;
    while (std::getline(in, line)) {
        Result r = parseResult(line);
        if (r.ok) rep.results.push_back(r);
        Result st = parseResult(line, "STEP");
        if (st.ok) rep.steps.push_back(st);
    }
}

}  // namespace

int main(int argc, char** argv) {
    Options o = parseOptions(argc, argv);
    if (o.bad) return usage();
    if (o.renderer) return printRenderer();
    std::vector<Scenario> all = scenarios();
    if (o.list) {
        for (const Scenario& s : all) printf("%s\n", s.name.c_str());
        return 0;
    }
    if (!o.scenario.empty()) {
        for (const Scenario& s : all)
            if (s.name == o.scenario) return runScenario(s, o.warmup, o.frames, o.t0, o.fixed || s.stepped, o.steps);
        fprintf(stderr, "frametime: no scenario %s (see --list)\n", o.scenario.c_str());
        return 2;
    }
    if (!o.all) return usage();

    char self[4096];
    ssize_t n = readlink("/proc/self/exe", self, sizeof self - 1);
    if (n <= 0) return 2;
    self[n] = 0;
    Report rep;
    if (!o.from.empty()) {
        readEarlierRun(o.from, rep);
        all.clear();
    }
    int failed = measureAll(o, all, self, rep);
    if (!o.sim.empty()) rep.sim = readSim(o.sim);
    rep.rendererName = renderer(self);
    rep.warmup = o.warmup;
    rep.frames = o.frames;
    writeReport(rep, o.markdown, o.json);
    fprintf(stderr, "frametime: wrote %s and %s\n", o.markdown.c_str(), o.json.c_str());
    return failed ? 1 : 0;
}

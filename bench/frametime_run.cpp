// One scenario in this process: the game's start-up, the warm-up, then the frames timed, counted and reported.

#include <GL/gl.h>
#include <SDL/SDL.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <functional>
#include <string>
#include <vector>

#include "frametime.h"
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

namespace frametime {

double monotonic() {
    timespec ts;
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return (double)ts.tv_sec + ts.tv_nsec * 1e-9;
}

double percentile(std::vector<double> v, double p) {
    if (v.empty()) return 0;
    std::sort(v.begin(), v.end());
    double rank = p * (double)(v.size() - 1);
    size_t lo = (size_t)rank;
    size_t hi = lo + 1 < v.size() ? lo + 1 : lo;
    return v[lo] + (v[hi] - v[lo]) * (rank - (double)lo);
}

namespace {

double processtime() {
    timespec ts;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &ts);
    return (double)ts.tv_sec + ts.tv_nsec * 1e-9;
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

}  // namespace

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

}  // namespace frametime

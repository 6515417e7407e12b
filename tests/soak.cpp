// A long computer race with every effect at its highest, driven through the
// game's own start-up and frame loop: the camera goes round its five views,
// the race is left for the menu and started again now and then, and every
// frame is checked for GL errors. Resident memory is sampled twice a second;
// after the warm-up (the first minute, and the menu, a return to it, a second
// race and every view seen at least once) it may not grow by more than the
// limit.
//
//   soak [--seconds N] [--frames N] [--warmup S] [--limit-kb K]
//        [--camera-seconds S] [--race-seconds S] [--report-seconds S] GAMEDIR
//
// GAMEDIR is a built game directory; its Data/ is copied into a scratch
// directory, so the player's records and settings are never touched.
// --frames ends after that many frames instead of after a time (for a short
// run under valgrind). Exit status 0 when clean, 1 on any finding; a crash
// ends it with the signal.

#include <GL/gl.h>
#include <SDL/SDL.h>
#include <unistd.h>

#include <malloc.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "frontend/menu.h"
#include "kart/gokart.h"
#include "scene/camera.h"
#include "shell/bvconfig.h"
#include "shell/main.h"
#include "shell/performance.h"

namespace fs = std::filesystem;

namespace {

// The scratch copy of the game is removed however the soak ends, short of a crash.
std::string scratchdir;
void removescratch() {
    if (scratchdir.empty()) return;
    std::error_code ec;
    fs::remove_all(scratchdir, ec);
}

struct Options {
    double seconds = 1800;
    long frames = -1;
    double warmup = 60;
    long limitkb = 1024;
    double cameraseconds = 10;
    double raceseconds = 300;
    double reportseconds = 60;
    std::string gamedir;
};

// The lowest resolution (llvmpipe pays for every pixel), everything else at
// its highest, sound on.
const char kSettings[] =
    "resolution 0\ncolourdepth 1\nviewdistance 3\ndetail 2\nkartshadows 3\ntrackshadows 1\n"
    "soundeffects 1\nsoundvolume 100\nmusic 1\nmusicvolume 80\nbrightness 0\nmousesteering 0\n"
    "mousesensitivity 4\njoysticksteering 0\nlensflare 1\nskidmarks 1\n";

long residentkb() {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line))
        if (line.compare(0, 6, "VmRSS:") == 0) return std::atol(line.c_str() + 6);
    return -1;
}

const char* glname(GLenum e) {
    switch (e) {
    case GL_INVALID_ENUM: return "GL_INVALID_ENUM";
    case GL_INVALID_VALUE: return "GL_INVALID_VALUE";
    case GL_INVALID_OPERATION: return "GL_INVALID_OPERATION";
    case GL_STACK_OVERFLOW: return "GL_STACK_OVERFLOW";
    case GL_STACK_UNDERFLOW: return "GL_STACK_UNDERFLOW";
    case GL_OUT_OF_MEMORY: return "GL_OUT_OF_MEMORY";
    default: return "unknown";
    }
}

void pushkey(Uint8 type, SDLKey sym) {
    SDL_Event e = {};
    e.type = type;
    e.key.state = type == SDL_KEYDOWN ? SDL_PRESSED : SDL_RELEASED;
    e.key.keysym.sym = sym;
    SDL_PushEvent(&e);
}

bool parse(int argc, char** argv, Options* o) {
    for (int i = 1; i < argc; i++) {
        std::string a = argv[i];
        bool more = i + 1 < argc;
        if (a == "--seconds" && more)
            o->seconds = atof(argv[++i]);
        else if (a == "--frames" && more)
            o->frames = atol(argv[++i]);
        else if (a == "--warmup" && more)
            o->warmup = atof(argv[++i]);
        else if (a == "--limit-kb" && more)
            o->limitkb = atol(argv[++i]);
        else if (a == "--camera-seconds" && more)
            o->cameraseconds = atof(argv[++i]);
        else if (a == "--race-seconds" && more)
            o->raceseconds = atof(argv[++i]);
        else if (a == "--report-seconds" && more)
            o->reportseconds = atof(argv[++i]);
        else if (a[0] != '-' && o->gamedir.empty())
            o->gamedir = a;
        else
            return false;
    }
    return !o->gamedir.empty();
}

}  // namespace

int main(int argc, char** argv) {
    Options o;
    if (!parse(argc, argv, &o)) {
        fprintf(stderr, "usage: soak [--seconds N] [--frames N] [--warmup S] [--limit-kb K] "
                        "[--camera-seconds S] [--race-seconds S] [--report-seconds S] GAMEDIR\n");
        return 2;
    }
    if (!getenv("DISPLAY")) {
        fprintf(stderr, "soak: no display (run it under scripts/with-xvfb)\n");
        return 2;
    }
    // No sound card on a build machine: OpenAL Soft mixes into nothing, but
    // the game's sound code runs all the same.
    setenv("ALSOFT_DRIVERS", "null", 0);

    const char* tmp = getenv("TMPDIR");
    std::string scratch = std::string(tmp && *tmp ? tmp : "/tmp") + "/bvsoak-XXXXXX";
    if (!mkdtemp(&scratch[0])) {
        perror("soak: mkdtemp");
        return 2;
    }
    scratchdir = scratch;
    std::atexit(removescratch);
    std::error_code ec;
    fs::copy(fs::path(o.gamedir) / "Data", fs::path(scratch) / "Data", fs::copy_options::recursive, ec);
    if (ec || chdir(scratch.c_str()) != 0) {
        fprintf(stderr, "soak: cannot copy %s/Data to %s: %s\n", o.gamedir.c_str(), scratch.c_str(),
                ec.message().c_str());
        return 2;
    }
    fs::remove("Data/gencon.bvd", ec);
    std::ofstream(std::string("Data/config.bvd")) << kSettings;

    startup();
    // What the settings file has no word for: these are console variables.
    config.fog = 1;
    config.lod = 2;
    config.nhumanplayers = 0;
    config.ngokarts = 6;
    config.checkvars();
    // Not counted: Mesa's glXUseXFont, which the bitmap font is made with,
    // raises GL_OUT_OF_MEMORY while it turns the "fixed" X font into lists.
    while (GLenum e = glGetError()) printf("soak: %s during start-up (not counted)\n", glname(e));

    using clock = std::chrono::steady_clock;
    const auto start = clock::now();
    auto since = [&](clock::time_point t) { return std::chrono::duration<double>(clock::now() - t).count(); };

    long frames = 0, glerrors = 0, racestarts = 0, lostkarts = 0, lostraces = 0;
    double lostsince = -1;
    struct Place {
        float px, pz, ay, ups, sw_ay, slidediff;
    } before[GOKART_NKARTS] = {};
    // Memory in use swings by megabytes from frame to frame with what the
    // renderer has to draw; what a leak raises is the floor under the swings.
    // So the judgement compares the lowest resident size of the minute after
    // the warm-up with the lowest of the last minute (of the two halves of
    // what follows the warm-up, for a run shorter than three minutes).
    long rssstart = residentkb(), rssend = 0, rsshigh = 0;
    std::vector<std::pair<double, long>> samples;
    double lastsample = -1, lastreport = 0, lastcamera = 0, racestarted = 0;
    // Memory is judged from the end of the warm-up: its time gone by, and
    // everything the run goes through seen at least once (the menu, a race
    // left for it and a race started again, every view), however few
    // frames a slow machine has drawn by then. -1 until then.
    double warmedup = -1;
    unsigned int viewsseen = 0;
    long menureturns = 0;
    unsigned int view = CAMERA_CHASE;
    bool keyheld = false, done = false;
    double racelength = o.raceseconds < 40 ? o.raceseconds : 40;

    // The game opens on its menu; a player looks at it a moment before the
    // race button. The first race is left early, so that the menu, a race
    // start and a return to the menu have all been seen before the first
    // minute is out and memory is judged.
    bool inmenu = true;
    double menuentered = 0;
    printf("soak: %s for %s, RSS at start %ld kB\n", scratch.c_str(),
           o.frames >= 0 ? (std::to_string(o.frames) + " frames").c_str()
                         : (std::to_string((long)o.seconds) + " s").c_str(),
           rssstart);
    fflush(stdout);

    while (!done) {
        double now = since(start);
        if (o.frames >= 0 ? frames >= o.frames : now >= o.seconds) break;

        // A key is down for exactly one frame, as a player's tap is.
        if (keyheld) {
            for (int k = 0; k < 5; k++) pushkey(SDL_KEYUP, (SDLKey)(SDLK_1 + k));
            pushkey(SDL_KEYUP, SDLK_ESCAPE);
            keyheld = false;
        } else if (inmenu && now - menuentered >= 3) {
            // The race button's doing.
            menu.m = MENU_RACESTART;
            inmenu = false;
            racestarted = now;
            racestarts++;
        } else if (!inmenu && (now - racestarted >= racelength || (lostsince >= 0 && now - lostsince >= 2))) {
            // Also when the karts have been lost for a while: a race without
            // karts would leave their drawing, shadows and skid marks untried.
            if (now - racestarted < racelength) lostraces++;
            lostsince = -1;
            pushkey(SDL_KEYDOWN, SDLK_ESCAPE);
            keyheld = true;
            inmenu = true;
            menuentered = now;
            menureturns++;
            racelength = o.raceseconds;
        } else if (!inmenu && now - lastcamera >= o.cameraseconds) {
            view = (view + 1) % 5;
            pushkey(SDL_KEYDOWN, (SDLKey)(SDLK_1 + view));
            keyheld = true;
            lastcamera = now;
        }

        looppass(done);
        frames++;
        if (menu.m == MENU_RACING && camera.mode < 32) viewsseen |= 1u << camera.mode;
        if (warmedup < 0 && now >= o.warmup && racestarts >= 2 && menureturns >= 1 && viewsseen == 31) {
            warmedup = now;
            printf("soak: warmed up at %.0f s, after %ld frames\n", now, frames);
            fflush(stdout);
        }
        while (GLenum e = glGetError()) {
            glerrors++;
            if (glerrors <= 20)
                fprintf(stderr, "soak: %s in frame %ld (menu state %u, view %u)\n", glname(e), frames, menu.m,
                        camera.mode);
        }

        // Not a failure of its own, but worth knowing: a kart whose place is no
        // longer a number is drawn nowhere and followed by a blind camera.
        for (unsigned int i = 0; i < config.ngokarts && i < GOKART_NKARTS; i++) {
            const sGokart& k = gokart[i];
            if (std::isfinite(k.px) && std::isfinite(k.pz) && std::isfinite(k.ay)) {
                before[i] = {k.px, k.pz, k.ay, k.ups, k.sw_ay, k.slidediff};
                continue;
            }
            if (lostsince < 0 && menu.m == MENU_RACING) lostsince = now;
            if (lostkarts++ < 5) {
                const Place& b = before[i];
                printf("soak: kart %u is at no place (not a number) in frame %ld at %.1f fps; the frame before "
                       "it was at (%g, %g) heading %g, speed %g, steering %g, slide %g\n",
                       i, frames, performance.fps, b.px, b.pz, b.ay, b.ups, b.sw_ay, b.slidediff);
            }
        }

        if (now - lastsample >= 0.5) {
            lastsample = now;
            // Free memory the allocator still holds would count as resident:
            // handed back first, what remains is memory in use.
            malloc_trim(0);
            rssend = residentkb();
            if (warmedup >= 0) {
                samples.push_back({now, rssend});
                if (rssend > rsshigh) rsshigh = rssend;
            }
        }
        if (now - lastreport >= o.reportseconds) {
            lastreport = now;
            // The heap beside the resident size tells our allocations from the
            // renderer's compiled code and the allocator's own keeping.
            struct mallinfo2 heap = mallinfo2();
            printf("soak: %4.0f s, %ld frames, RSS %ld kB, heap in use %zu kB, %ld GL errors, race %ld, lap %d, "
                   "kart 0 at (%.1f, %.1f), view %u\n",
                   now, frames, rssend, heap.uordblks / 1024, glerrors, racestarts, gokart[0].lap, gokart[0].px,
                   gokart[0].pz, camera.mode);
            fflush(stdout);
        }
    }

    double seconds = since(start);
    printf("soak: %ld frames in %.0f s (%.1f a second), %ld races (%ld of them left early, their karts lost), "
           "%ld GL errors, %ld kart-frames at no place\n",
           frames, seconds, frames / seconds, racestarts, lostraces, glerrors, lostkarts);
    bool failed = glerrors > 0 || done;
    if (done) printf("soak: the game asked to quit on its own\n");
    double measured = samples.empty() ? 0 : samples.back().first - warmedup;
    if (measured >= 30) {
        double window = measured >= 120 ? 60 : measured / 2;
        long first = -1, last = -1;
        for (const auto& [t, rss] : samples) {
            if (t < warmedup + window && (first < 0 || rss < first)) first = rss;
            if (t >= samples.back().first - window && (last < 0 || rss < last)) last = rss;
        }
        long growth = last - first;
        printf("soak: RSS at start %ld kB; lowest in the %.0f s after the first %.0f s %ld kB, lowest in the last "
               "%.0f s %ld kB, highest after the first %.0f s %ld kB; growth %ld kB (limit %ld kB)\n",
               rssstart, window, warmedup, first, window, last, warmedup, rsshigh, growth, o.limitkb);
        if (growth > o.limitkb) failed = true;
    } else {
        printf("soak: RSS at start %ld kB, at the end %ld kB (too short to judge growth)\n", rssstart, rssend);
        // A timed run long enough to judge that never got through its
        // warm-up has judged nothing: that is a finding, not a pass.
        if (o.frames < 0 && o.seconds >= o.warmup + 30) {
            printf("soak: the warm-up never ended (races %ld, returns to the menu %ld, views seen %#x)\n", racestarts,
                   menureturns, viewsseen);
            failed = true;
        }
    }
    fflush(stdout);
    if (failed) {
        printf("soak: FAILED\n");
        fflush(stdout);
        removescratch();
        _exit(1);
    }
    printf("soak: clean; leaving through the game's own shutdown\n");
    fflush(stdout);
    // Ends the process with status 0 once everything is released.
    shutdown();
}

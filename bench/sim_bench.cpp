// What the race costs the processor apart from drawing: one frame of
// colide + think + move for the karts on each shipped track, the barrier test
// and the nearest barrier point on their own, the kart's models read from
// disk, and how each grows with the barrier pairs of a track (rings of 32 to
// 255 pairs) and with the karts of a race (1 to 6).
//
// Runs in a scratch directory that sees the built game's Data/ ($BV_GAME_DIR
// or the build's own), in a small window of its own: the kart's content
// loads into GL like the game's does. Time is simulated at 60 frames a second.

#include <benchmark/benchmark.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "assets/3ds.h"
#include "kart/gokart.h"
#include "shell/blackbox.h"
#include "shell/bvconfig.h"
#include "shell/main.h"
#include "shell/performance.h"
#include "track/track.h"

namespace {

const long CLOCK0 = 1000000000L;
const int FPS = 60;
long simframe = 0;

std::string scratch;
std::vector<std::string> shipped;

std::string gameDir() {
    const char* d = getenv("BV_GAME_DIR");
    return d && *d ? d : BV_GAME_DIR;
}

bool setUp() {
    char templ[] = "/tmp/brontevalle-simbench-XXXXXX";
    if (!mkdtemp(templ)) return false;
    scratch = templ;
    std::string data = gameDir() + "/Data";
    mkdir((scratch + "/Data").c_str(), 0755);
    for (const char* sub : {"Ads", "Models", "Sounds", "Textures", "Tracks"})
        if (symlink((data + "/" + sub).c_str(), (scratch + "/Data/" + sub).c_str()) != 0) return false;
    for (const char* sub : {"Ghosts", "Highscore"}) mkdir((scratch + "/Data/" + sub).c_str(), 0755);
    if (chdir(scratch.c_str()) != 0) return false;

    blackbox.init("/dev/null", false);
    config.init("Data/config.bvd");  // there is none: the built-in settings
    config.width = config.height = 64;
    config.depth = 32;
    config.fullscreen = 0;
    config.soundeffects = 0;
    setenv("SDL_VIDEODRIVER", "x11", 1);
    if (!createGLwindow()) return false;
    track.init(0.125f);
    gokartstaticdata.init();
    for (unsigned int i = 0; i < track.ntracks; i++) shipped.push_back(track.trackname[i]);
    std::sort(shipped.begin(), shipped.end());
    return !shipped.empty();
}

void tearDown() {
    if (chdir("/") != 0) return;
    std::string cmd = "rm -rf '" + scratch + "'";
    if (system(cmd.c_str()) != 0) fprintf(stderr, "sim_bench: could not remove %s\n", scratch.c_str());
}

void loadShipped(const std::string& name) {
    std::string path = "Data/Tracks/" + name + ".txt";
    FILE* f = fopen(path.c_str(), "r");
    if (!f) return;
    track.parse(f, path.c_str());
    fclose(f);
}

// A ring of `pairs` barrier pairs, 8 wide, through the starting grid and
// driven the way the grid faces.
void loadRing(int pairs) {
    const double R = 40, cx = 27.25 - R, cz = 12, half = 4;
    auto v = [](double w) { return std::to_string((long)std::lround(w / 0.125) + 256); };
    std::string text = "0 0\n12\n";
    for (int i = 0; i < pairs; i++) {
        double a = 2 * M_PI * i / pairs;
        double c = std::cos(a), s = std::sin(a);
        text += "LR " + v(cx + (R - half) * c) + " " + v(cz - (R - half) * s) + " " + v(cx + (R + half) * c) +
                " " + v(cz - (R + half) * s) + "\n";
    }
    for (int i = 0; i < 8; i++) {
        double a = 2 * M_PI * i / 8;
        text += "C " + v(cx + R * std::cos(a)) + " " + v(cz - R * std::sin(a)) + "\n";
    }
    FILE* f = fmemopen(&text[0], text.size(), "r");
    if (!f) return;
    track.parse(f, "ring");
    fclose(f);
}

void startRace(unsigned int karts) {
    config.ngokarts = karts;
    config.nhumanplayers = 0;
    performance.fps = FPS;
    simframe = 0;
    bvclock_override = CLOCK0;
    srand(1);
    for (unsigned char i = 0; i < GOKART_NKARTS; i++) gokart[i].init(i);
}

// One race frame of the simulation, in the order the race frame runs it.
void simulate(unsigned int karts) {
    simframe++;
    bvclock_override = CLOCK0 + simframe * 1000000L / FPS;
    for (unsigned int i = 0; i < karts; i++) gokart[i].colide();
    for (unsigned int i = 0; i < karts; i++) {
        gokart[i].think();
        gokart[i].move();
    }
}

// Where a kart drives in the first minute of a race on the loaded track: its
// eight collision edges and its position each frame.
struct Sample {
    float x1, z1, x2, z2;
    float px, pz, ay, ups;
};
std::vector<Sample> drive() {
    std::vector<Sample> out;
    startRace(1);
    for (int f = 0; f < 60 * FPS; f++) {
        simulate(1);
        const sGokart& k = gokart[0];
        for (int i = 0; i < 8; i++) {
            int j = (i + 1) % 8;
            out.push_back({k.colx[i], k.colz[i], k.colx[j], k.colz[j], k.px, k.pz, k.ay, k.ups});
        }
    }
    return out;
}

void kartFrames(benchmark::State& state, unsigned int karts) {
    startRace(karts);
    for (auto _ : state) {
        simulate(karts);
        // Back to the grid once a simulated race of five minutes is over, so
        // that a long run measures racing and not a kart stuck somewhere.
        if (simframe >= 5 * 60 * FPS) {
            state.PauseTiming();
            startRace(karts);
            state.ResumeTiming();
        }
    }
    state.counters["karts"] = karts;
    state.counters["pairs"] = track.nLRpoints;
}

void checks(benchmark::State& state) {
    std::vector<Sample> samples = drive();
    size_t i = 0;
    long hits = 0;
    for (auto _ : state) {
        const Sample& s = samples[i];
        hits += track.check(s.x1, s.z1, s.x2, s.z2);
        if (++i == samples.size()) i = 0;
    }
    benchmark::DoNotOptimize(hits);
    state.counters["pairs"] = track.nLRpoints;
}

void checkpoints(benchmark::State& state) {
    std::vector<Sample> samples = drive();
    size_t i = 0;
    unsigned long sum = 0;
    sGokart& k = gokart[0];
    for (auto _ : state) {
        const Sample& s = samples[i];
        k.px = s.px;
        k.pz = s.pz;
        k.ay = s.ay;
        k.ups = s.ups;
        sum += k.getcheckpoint();
        i += 8;
        if (i >= samples.size()) i = 0;
    }
    benchmark::DoNotOptimize(sum);
    state.counters["pairs"] = track.nLRpoints;
}

void BM_Import3DS_Kart(benchmark::State& state) {
    static const char* parts[11] = {"armd",  "armu",  "body",    "chasis",      "foot",         "frontwheel",
                                    "head",  "pedal", "plastic", "rearwheel",   "steeringwheel"};
    std::vector<std::string> files;
    for (const char* level : {"LO", "ME", "HI"})
        for (const char* p : parts) files.push_back(std::string("Data/Models/") + level + p + ".3DS");
    files.push_back("Data/Models/SLOgokart.3DS");
    long faces = 0;
    for (auto _ : state) {
        faces = 0;
        for (const std::string& file : files) {
            t3DModel model;
            CLoad3DS reader;
            if (!reader.Import3DS(&model, file.c_str())) state.SkipWithError("import failed");
            for (int o = 0; o < model.numOfObjects; o++) faces += model.pObject[o].numOfFaces;
            Free3DModel(&model);
        }
    }
    state.counters["files"] = (double)files.size();
    state.counters["faces"] = (double)faces;
}

void registerAll() {
    for (const std::string& name : shipped) {
        benchmark::RegisterBenchmark(("BM_KartFrame/" + name).c_str(), [name](benchmark::State& st) {
            loadShipped(name);
            kartFrames(st, 1);
        })->Unit(benchmark::kNanosecond);
    }
    for (const std::string& name : shipped)
        benchmark::RegisterBenchmark(("BM_TrackCheck/" + name).c_str(), [name](benchmark::State& st) {
            loadShipped(name);
            checks(st);
        });
    for (const std::string& name : shipped)
        benchmark::RegisterBenchmark(("BM_GetCheckpoint/" + name).c_str(), [name](benchmark::State& st) {
            loadShipped(name);
            checkpoints(st);
        });
    for (int pairs : {32, 64, 128, 255}) {
        std::string p = std::to_string(pairs);
        benchmark::RegisterBenchmark(("BM_KartFrameRing/" + p).c_str(), [pairs](benchmark::State& st) {
            loadRing(pairs);
            kartFrames(st, 1);
        });
        benchmark::RegisterBenchmark(("BM_TrackCheckRing/" + p).c_str(), [pairs](benchmark::State& st) {
            loadRing(pairs);
            checks(st);
        });
        benchmark::RegisterBenchmark(("BM_GetCheckpointRing/" + p).c_str(), [pairs](benchmark::State& st) {
            loadRing(pairs);
            checkpoints(st);
        });
    }
    // The karts of a race, on the largest shipped track.
    std::string largest = shipped[0];
    unsigned int most = 0;
    for (const std::string& name : shipped) {
        loadShipped(name);
        if (track.nLRpoints > most) {
            most = track.nLRpoints;
            largest = name;
        }
    }
    for (unsigned int karts = 1; karts <= 6; karts++)
        benchmark::RegisterBenchmark(("BM_Karts/" + std::to_string(karts) + "/" + largest).c_str(),
                                     [largest, karts](benchmark::State& st) {
                                         loadShipped(largest);
                                         kartFrames(st, karts);
                                     });
    benchmark::RegisterBenchmark("BM_Import3DS_Kart", BM_Import3DS_Kart)->Unit(benchmark::kMicrosecond);
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (!setUp()) {
        fprintf(stderr, "sim_bench: could not open a window or find the game's Data/ under %s\n",
                gameDir().c_str());
        tearDown();
        return 1;
    }
    registerAll();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    tearDown();
    SDL_Quit();
    return 0;
}

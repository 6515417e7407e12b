// What a lap that sets a record costs its frame: the record table and the
// ghost of a full lap are saved the moment the lap enters the table, their
// texts made in the frame and written (and flushed to disk) by the writer
// thread. Compared with the same lap offered to a table it does not enter,
// which saves nothing, and with both files written in the frame itself.
//
// Runs in a scratch directory below $TMPDIR (or /tmp): point TMPDIR at the
// disk the game lives on to measure that disk.

#include <benchmark/benchmark.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>

#include "frontend/highscore.h"
#include "kart/gokart.h"
#include "scene/ghost.h"
#include "shell/blackbox.h"
#include "shell/bvconfig.h"
#include "shell/safesave.h"
#include "track/track.h"

namespace {

std::string scratch;

bool setUp() {
    const char* tmp = getenv("TMPDIR");
    std::string templ = std::string(tmp && *tmp ? tmp : "/tmp") + "/brontevalle-recordbench-XXXXXX";
    if (!mkdtemp(&templ[0])) return false;
    scratch = templ;
    if (chdir(templ.c_str()) != 0) return false;
    for (const char* d : {"Data", "Data/Highscore", "Data/Ghosts"}) mkdir(d, 0755);
    blackbox.init("/dev/null", false);
    config.PATH[0] = 0;
    strcpy(track.trackname[0], "oval");
    track.ntracks = 1;
    config.track = 0;
    strcpy(config.player1name, "ANNA");
    return true;
}

// A whole recorded lap, as long as the ghost can hold.
void fullRecording() {
    ghost.badone();
    ghost.nRecs[0] = GHOST_MAXRECS;
    for (int i = 0; i < GHOST_MAXRECS; i++) {
        ghost.px[0][i] = 123.456f + i;
        ghost.pz[0][i] = -654.321f - i;
        ghost.ay[0][i] = -179.5f + i % 360;
    }
}

void BM_LapThatSetsARecord(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        // The last lap's files on disk, and a fresh table, so that every lap
        // is the track's first record.
        finishsaves();
        remove("Data/Highscore/oval.txt");
        remove("Data/Ghosts/oval.txt");
        highscore.init();
        fullRecording();
        gokart[0].currentlaptime = 10.0f;
        state.ResumeTiming();
        highscore.checkfornewrecord(0);
    }
    finishsaves();
    state.counters["ghostsamples"] = ghost.nRecs[1];
}
BENCHMARK(BM_LapThatSetsARecord)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(300);

// What the writer thread takes off that frame: both files written and
// flushed to disk as the save at a track change does it.
void BM_WritingTheRecordAndGhostInTheFrame(benchmark::State& state) {
    highscore.init();
    fullRecording();
    gokart[0].currentlaptime = 10.0f;
    highscore.checkfornewrecord(0);
    finishsaves();
    for (auto _ : state) {
        highscore.save();
        ghost.save();
    }
}
BENCHMARK(BM_WritingTheRecordAndGhostInTheFrame)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(300);

void BM_LapThatEntersNothing(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        highscore.init();
        fullRecording();
        gokart[0].currentlaptime = 99.5f;
        state.ResumeTiming();
        highscore.checkfornewrecord(0);
    }
}
BENCHMARK(BM_LapThatEntersNothing)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(300);

}  // namespace

int main(int argc, char** argv) {
    if (!setUp()) {
        fprintf(stderr, "record_bench: no scratch directory\n");
        return 1;
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    std::error_code ec;
    std::filesystem::remove_all(scratch, ec);
    return 0;
}

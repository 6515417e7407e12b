// What the frame-time harness's files share: a scenario, a result line, the report, and the steps between them.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "scene/camera.h"

namespace frametime {

// Seconds on the monotonic clock.
double monotonic();

// ---- scenarios and the scratch game (frametime_scenarios.cpp) ----

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

std::vector<Scenario> scenarios();
std::string enterScratchGame();
void removeScratch(const std::string& dir);

// ---- what one frame draws, counted (frametime_steps.cpp) ----

long countPolygons(const std::function<void()>& frame);
void measureSteps(const std::string& scenario, const std::function<void()>& frame);

// ---- one scenario in this process (frametime_run.cpp) ----

double percentile(std::vector<double> v, double p);
int runScenario(const Scenario& sc, int warmup, int frames, double t0, bool fixed, bool steps);

// ---- the report (frametime_report.cpp) ----

struct Result {
    std::map<std::string, double> num;
    std::string scenario;
    std::string step;  // a STEP line's
    bool ok = false;
};

// The Google Benchmark results, from its JSON output: name, time per
// iteration in its unit, and the counters.
struct SimResult {
    std::string name;
    double cpu = 0;
    std::string unit;
    std::map<std::string, double> counters;
};

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

Result parseResult(const std::string& line, const char* kind = "RESULT");
std::vector<SimResult> readSim(const std::string& path);
std::string renderer(const char* self);
void writeReport(Report& rep, const std::string& md, const std::string& json);

}  // namespace frametime

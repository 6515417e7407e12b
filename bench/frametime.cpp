// The harness's command line and main: the options, and for --all each scenario in a child process of its own.
//
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
#include <SDL/SDL.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "frametime.h"
#include "scene/scene.h"

using namespace frametime;

namespace {

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

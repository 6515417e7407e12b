// The report of a run: the result lines read back, the budgets and tables written as markdown, and the same in JSON.

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "frametime.h"

namespace frametime {

// A RESULT line, or with kind "STEP" a step's line.
Result parseResult(const std::string& line, const char* kind) {
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

namespace {

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

}  // namespace

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

}  // namespace frametime

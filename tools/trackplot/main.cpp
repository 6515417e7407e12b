// Draws every circuit from above into OUTDIR/<name>.ppm, seen as in the game
// from high up (x to the right, z downwards), and prints what the validator
// says about it.
//
//   trackplot SOURCEDIR OUTDIR
//
// Road grey, left barrier red, right barrier blue, the far edge of the
// roadside grass light green, pair lines faint, pair 0 yellow and the two
// pairs behind it orange, the grid karts white, TV cameras cyan, plants
// green, barrels orange, containers steel blue, boards magenta, signs yellow,
// and the place where the lap is counted on the middle line as a red cross. The faint circle is what the menu's turntable keeps in view.

#include <dirent.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "datagen/trackcheck.h"
#include "datagen/tracks.h"

namespace {

using trackcheck::Point;

const int kSize = 816;           // pixels across
const float kPerUnit = 1.5f;     // pixels per file unit
const float kOrigin = -16;       // file coordinate at the image's left and top edge

struct Image {
    std::vector<unsigned char> rgb = std::vector<unsigned char>(kSize * kSize * 3, 0);
    void set(int x, int y, int r, int g, int b) {
        if (x < 0 || y < 0 || x >= kSize || y >= kSize) return;
        unsigned char* p = &rgb[(y * kSize + x) * 3];
        p[0] = (unsigned char)r, p[1] = (unsigned char)g, p[2] = (unsigned char)b;
    }
    void blend(int x, int y, int r, int g, int b, float a) {
        if (x < 0 || y < 0 || x >= kSize || y >= kSize) return;
        unsigned char* p = &rgb[(y * kSize + x) * 3];
        p[0] = (unsigned char)(p[0] + (r - p[0]) * a);
        p[1] = (unsigned char)(p[1] + (g - p[1]) * a);
        p[2] = (unsigned char)(p[2] + (b - p[2]) * a);
    }
    bool save(const std::string& path) const {
        std::ofstream out(path, std::ios::binary);
        out << "P6\n" << kSize << " " << kSize << "\n255\n";
        out.write((const char*)rgb.data(), (std::streamsize)rgb.size());
        return (bool)out;
    }
};

float px(float worldX) { return (worldX / trackcheck::kTrackScale + 256 - kOrigin) * kPerUnit; }

void line(Image& im, Point a, Point b, int r, int g, int bl, float alpha = 1, int thick = 1) {
    float x0 = px(a.x), y0 = px(a.z), x1 = px(b.x), y1 = px(b.z);
    int steps = (int)std::max(std::fabs(x1 - x0), std::fabs(y1 - y0)) + 1;
    for (int i = 0; i <= steps; i++) {
        float t = (float)i / steps;
        int x = (int)std::lround(x0 + (x1 - x0) * t), y = (int)std::lround(y0 + (y1 - y0) * t);
        for (int dx = 0; dx < thick; dx++)
            for (int dy = 0; dy < thick; dy++) im.blend(x + dx, y + dy, r, g, bl, alpha);
    }
}

void dot(Image& im, Point p, float radiusWorld, int r, int g, int b, bool square = false) {
    float cx = px(p.x), cy = px(p.z), rad = radiusWorld / trackcheck::kTrackScale * kPerUnit;
    for (int y = (int)(cy - rad - 1); y <= (int)(cy + rad + 1); y++)
        for (int x = (int)(cx - rad - 1); x <= (int)(cx + rad + 1); x++) {
            float dx = x - cx, dy = y - cy;
            if (square ? (std::fabs(dx) <= rad && std::fabs(dy) <= rad) : dx * dx + dy * dy <= rad * rad)
                im.set(x, y, r, g, b);
        }
}

void draw(const trackcheck::Track& t, const std::string& path) {
    Image im;
    static const int ground[4][3] = {{120, 104, 78}, {150, 132, 96}, {96, 110, 70}, {128, 120, 112}};
    const int* g = ground[t.dirt >= 0 && t.dirt < 4 ? t.dirt : 0];
    for (int y = 0; y < kSize; y++)
        for (int x = 0; x < kSize; x++) {
            Point p{((x + 0.5f) / kPerUnit + kOrigin - 256) * trackcheck::kTrackScale,
                    ((y + 0.5f) / kPerUnit + kOrigin - 256) * trackcheck::kTrackScale};
            bool grid = std::fabs(p.x) <= 34 && std::fabs(p.z) <= 34;
            bool road = !t.left.empty() && trackcheck::insideRing(p, t.left) != trackcheck::insideRing(p, t.right);
            if (road) im.set(x, y, 70, 70, 74);
            else if (grid) im.set(x, y, g[0], g[1], g[2]);
            else im.set(x, y, 20, 20, 28);
            // A 4-unit chequer to judge sizes by.
            if (!road && grid && ((int)std::floor(p.x / 4) + (int)std::floor(p.z / 4)) % 2 == 0)
                im.blend(x, y, 0, 0, 0, 0.06f);
        }
    // The part of the ground that the menu's turntable keeps in view.
    for (int a = 0; a < 720; a++) {
        float r = 17.5f, an = a * 3.14159265f / 360;
        dot(im, {r * std::cos(an), r * std::sin(an)}, 0.05f, 255, 255, 255);
    }
    const size_t n = t.left.size();
    for (size_t i = 0; i < n; i++) {
        bool special = i == 0 || i + 1 == n || i + 2 == n;
        int r = i == 0 ? 255 : special ? 255 : 200, gg = i == 0 ? 230 : special ? 150 : 200, b = special ? 0 : 200;
        line(im, t.left[i], t.right[i], r, gg, b, special ? 1.0f : 0.25f);
    }
    // The far edge of the grass the game lays outside each barrier.
    for (int side = 0; side < 2; side++) {
        const std::vector<Point>& P = side == 0 ? t.left : t.right;
        const std::vector<Point> N = trackcheck::barrierNormals(P, side == 0);
        auto edge = [&](size_t i) {
            return Point{P[i].x - N[i].x * trackcheck::kGrassOut, P[i].z - N[i].z * trackcheck::kGrassOut};
        };
        for (size_t i = 0; i < n; i++) line(im, edge(i), edge((i + 1) % n), 120, 230, 90, 0.7f);
    }
    for (size_t i = 0; i < n; i++) {
        line(im, t.left[i], t.left[(i + 1) % n], 230, 40, 40, 1, 2);
        line(im, t.right[i], t.right[(i + 1) % n], 50, 90, 240, 1, 2);
    }
    // Finish line and grid.
    line(im, {trackcheck::kFinishX - 4, trackcheck::kFinishZ}, {trackcheck::kFinishX + 4, trackcheck::kFinishZ}, 255,
         255, 255, 0.6f);
    for (int id = 0; id < trackcheck::kGridKarts; id++) {
        float x = trackcheck::kFinishX - trackcheck::kChasisWidth + 2 * trackcheck::kChasisWidth * (id % 2);
        float z = 20.0f - 2 * id * trackcheck::kChasisFront;
        Point c[4] = {{x - 0.63f, z - 1.39f}, {x + 0.63f, z - 1.39f}, {x + 0.63f, z + 0.17f}, {x - 0.63f, z + 0.17f}};
        const float a = id < (int)kartfacts::kMaxRacers ? 1.0f : 0.4f;  // the spare kart fainter
        for (int k = 0; k < 4; k++) line(im, c[k], c[(k + 1) % 4], 255, 255, 255, a);
    }
    for (const trackcheck::Object& o : t.objects) {
        switch (o.type) {
            case 5: dot(im, o.at, 0.55f, 40, 170, 50); break;
            case 2: case 6: dot(im, o.at, 1.2f, 90, 120, 160, true); break;
            case 7: dot(im, o.at, 0.8f, 230, 60, 220, true); break;
            case 8: case 9: case 10: case 11: dot(im, o.at, 0.45f, 250, 230, 40, true); break;
            default: dot(im, o.at, 0.4f, 255, 140, 20); break;
        }
    }
    for (const Point& c : t.cameras) dot(im, c, 0.5f, 60, 230, 240, true);
    trackcheck::LineRun run = trackcheck::driveLine(t, 0.5f, 1);
    if (run.lapCounted) {
        Point p = run.lapCountedAt;
        line(im, {p.x - 0.8f, p.z - 0.8f}, {p.x + 0.8f, p.z + 0.8f}, 255, 0, 0, 1, 2);
        line(im, {p.x - 0.8f, p.z + 0.8f}, {p.x + 0.8f, p.z - 0.8f}, 255, 0, 0, 1, 2);
    }
    im.save(path);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: trackplot SOURCEDIR OUTDIR\n");
        return 2;
    }
    const std::string from = std::string(argv[1]) + "/tracks";
    std::vector<std::string> files;
    if (DIR* dir = opendir(from.c_str())) {
        while (dirent* e = readdir(dir)) {
            std::string f = e->d_name;
            if (f.size() > 6 && f.compare(f.size() - 6, 6, ".track") == 0) files.push_back(f);
        }
        closedir(dir);
    }
    std::sort(files.begin(), files.end());
    int bad = 0;
    for (const std::string& f : files) {
        std::ifstream in(from + "/" + f);
        std::stringstream text;
        text << in.rdbuf();
        TrackBuild build;
        std::string error;
        if (!buildTrack(text.str(), f.substr(0, f.size() - 6), &build, &error)) {
            std::printf("%s: %s\n", f.c_str(), error.c_str());
            bad++;
            continue;
        }
        trackcheck::Track t;
        std::vector<std::string> problems;
        trackcheck::parseTrack(build.fileText, &t, &problems);
        draw(t, std::string(argv[2]) + "/" + build.name + ".ppm");
        problems = validateTrack(build.fileText, {"ad1.tga"});
        std::printf("%-12s %3u pairs %6.1f long %2u cameras %3u objects  %s\n", build.name.c_str(), build.pairs,
                    build.length, build.cameras, build.objects, build.about.c_str());
        for (const std::string& p : problems) std::printf("    %s\n", p.c_str());
        if (!problems.empty()) bad++;
    }
    return bad ? 1 : 0;
}

// Lays a centripetal Catmull-Rom spline through a track's control points,
// samples it into barrier point pairs and places the scenery along it.
//
// The sampling keeps every control point as a pair, so a source can pin pairs
// exactly where the race rules want them (the pairs either side of the finish
// line), and subdivides each span by its length and its turn: long gaps on
// the straights, short ones round the hairpins, where the barriers must look
// round and the checkpoint rule must not jump a pair.

#include "datagen/tracks.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <map>
#include <sstream>

#include "datagen/trackcheck.h"

namespace {

const double kScale = trackfacts::kTrackScale;  // world units per file unit
const double kMaxSpacing = 4.0;      // longest gap between pairs
const double kMaxTurn = 20.0;        // most a span between pairs may turn, degrees
const double kMinBarrierGap = 1.1;   // shortest barrier segment a subdivision may make
const int kDenseSteps = 64;          // spline evaluation steps per span
const double kPi = 3.14159265358979;

struct V2 {
    double x = 0, z = 0;
};
V2 operator+(V2 a, V2 b) { return {a.x + b.x, a.z + b.z}; }
V2 operator-(V2 a, V2 b) { return {a.x - b.x, a.z - b.z}; }
V2 operator*(V2 a, double k) { return {a.x * k, a.z * k}; }
double length(V2 a) { return std::sqrt(a.x * a.x + a.z * a.z); }

struct Control {
    V2 p;
    double width = 0;
};

struct Decoration {
    int line = 0;
    std::string kind;  // camera, object, row, group, at
    std::vector<std::string> args;
};

int fileValue(double w) { return (int)std::lround(w / kScale + 256.0); }
double worldValue(int v) { return (v - 256) * kScale; }

// Centripetal Catmull-Rom between p1 and p2 at u in [0, 1]: no cusps or loops
// where control points bunch up at a corner.
V2 catmullRom(V2 p0, V2 p1, V2 p2, V2 p3, double u) {
    auto knot = [](double t, V2 a, V2 b) { return t + std::max(1e-6, std::sqrt(length(b - a))); };
    double t0 = 0, t1 = knot(t0, p0, p1), t2 = knot(t1, p1, p2), t3 = knot(t2, p2, p3);
    double t = t1 + (t2 - t1) * u;
    V2 a1 = p0 * ((t1 - t) / (t1 - t0)) + p1 * ((t - t0) / (t1 - t0));
    V2 a2 = p1 * ((t2 - t) / (t2 - t1)) + p2 * ((t - t1) / (t2 - t1));
    V2 a3 = p2 * ((t3 - t) / (t3 - t2)) + p3 * ((t - t2) / (t3 - t2));
    V2 b1 = a1 * ((t2 - t) / (t2 - t0)) + a2 * ((t - t0) / (t2 - t0));
    V2 b2 = a2 * ((t3 - t) / (t3 - t1)) + a3 * ((t - t1) / (t3 - t1));
    return b1 * ((t2 - t) / (t2 - t1)) + b2 * ((t - t1) / (t2 - t1));
}

// The closed centre line, densely evaluated, with lengths along it.
class CentreLine {
public:
    explicit CentreLine(const std::vector<Control>& c) : controls_(c) {
        const size_t m = c.size();
        for (size_t i = 0; i < m; i++) {
            spanStart_.push_back(total_);
            V2 p0 = c[(i + m - 1) % m].p, p1 = c[i].p, p2 = c[(i + 1) % m].p, p3 = c[(i + 2) % m].p;
            for (int k = 0; k < kDenseSteps; k++) {
                V2 a = catmullRom(p0, p1, p2, p3, (double)k / kDenseSteps);
                V2 b = catmullRom(p0, p1, p2, p3, (double)(k + 1) / kDenseSteps);
                points_.push_back(a);
                along_.push_back(total_);
                total_ += length(b - a);
            }
        }
        spanStart_.push_back(total_);
        points_.push_back(c[0].p);
        along_.push_back(total_);
    }

    double total() const { return total_; }
    size_t spans() const { return controls_.size(); }
    double spanStart(size_t i) const { return spanStart_[i]; }
    double spanLength(size_t i) const { return spanStart_[i + 1] - spanStart_[i]; }

    double wrap(double s) const {
        s = std::fmod(s, total_);
        return s < 0 ? s + total_ : s;
    }

    V2 position(double s) const {
        s = wrap(s);
        size_t k = std::upper_bound(along_.begin(), along_.end(), s) - along_.begin();
        k = std::min(std::max<size_t>(k, 1), along_.size() - 1) - 1;
        double len = along_[k + 1] - along_[k];
        double u = len > 0 ? (s - along_[k]) / len : 0;
        return points_[k] + (points_[k + 1] - points_[k]) * u;
    }

    // Unit direction of travel.
    V2 tangent(double s) const {
        V2 d = position(s + 0.05) - position(s - 0.05);
        return d * (1.0 / length(d));
    }

    // The driver's left, facing along the tangent.
    V2 leftward(double s) const {
        V2 t = tangent(s);
        return {t.z, -t.x};
    }

    double width(double s) const {
        s = wrap(s);
        size_t i = std::upper_bound(spanStart_.begin(), spanStart_.end(), s) - spanStart_.begin() - 1;
        i = std::min(i, controls_.size() - 1);
        double u = spanLength(i) > 0 ? (s - spanStart_[i]) / spanLength(i) : 0;
        u = u * u * (3 - 2 * u);
        double w0 = controls_[i].width, w1 = controls_[(i + 1) % controls_.size()].width;
        return w0 + (w1 - w0) * u;
    }

    // Length of the shorter of the two barriers over [s0, s1].
    double innerLength(double s0, double s1) const {
        double left = 0, right = 0;
        const int steps = 32;
        V2 pl, pr;
        for (int k = 0; k <= steps; k++) {
            double s = s0 + (s1 - s0) * k / steps;
            V2 c = position(s), l = leftward(s) * (width(s) / 2);
            V2 nl = c + l, nr = c - l;
            if (k > 0) left += length(nl - pl), right += length(nr - pr);
            pl = nl, pr = nr;
        }
        return std::min(left, right);
    }

    // How far the direction of travel turns over [s0, s1], degrees.
    double turn(double s0, double s1) const {
        double sum = 0;
        const int steps = 32;
        V2 prev = tangent(s0);
        for (int k = 1; k <= steps; k++) {
            V2 t = tangent(s0 + (s1 - s0) * k / steps);
            sum += std::fabs(std::atan2(prev.x * t.z - prev.z * t.x, prev.x * t.x + prev.z * t.z));
            prev = t;
        }
        return sum * 180.0 / kPi;
    }

private:
    std::vector<Control> controls_;
    std::vector<V2> points_;
    std::vector<double> along_;
    std::vector<double> spanStart_;
    double total_ = 0;
};

// The barrier lines in world units as the file will hold them, for keeping
// the scenery off the road and out of the barriers.
struct Barriers {
    std::vector<V2> left, right;

    static double distance(V2 p, const std::vector<V2>& ring) {
        double best = 1e9;
        for (size_t i = 0; i < ring.size(); i++) {
            V2 a = ring[i], b = ring[(i + 1) % ring.size()];
            V2 d = b - a;
            double len2 = d.x * d.x + d.z * d.z;
            double t = len2 > 0 ? std::max(0.0, std::min(1.0, ((p.x - a.x) * d.x + (p.z - a.z) * d.z) / len2)) : 0;
            best = std::min(best, length(a + d * t - p));
        }
        return best;
    }
    bool onRoad(V2 p) const { return trackcheck::insideRing(p, left) != trackcheck::insideRing(p, right); }
    double clearance(V2 p) const { return std::min(distance(p, left), distance(p, right)); }
};

bool parseNumber(const std::string& word, double* value) {
    char* end = nullptr;
    *value = std::strtod(word.c_str(), &end);
    return !word.empty() && *end == '\0' && std::isfinite(*value);
}

bool validName(const std::string& name) {
    if (name.size() < 3 || name.size() > 31) return false;
    for (char ch : name)
        if (!std::isalnum((unsigned char)ch) && ch != '_' && ch != '-') return false;
    return true;
}

struct Builder {
    std::string name, about;
    int ground = -1, fog = -1;
    std::vector<Control> controls;
    std::map<std::string, size_t> labels;
    std::vector<Decoration> decorations;
    std::string error;

    bool fail(int line, const std::string& what) {
        error = "line " + std::to_string(line) + ": " + what;
        return false;
    }

    bool label(int line, const std::vector<std::string>& w, size_t at, size_t index) {
        if (w.size() <= at) return true;
        if (w.size() > at + 1 || w[at].size() < 2 || w[at][0] != '@') return fail(line, "expected @label at the end");
        std::string l = w[at].substr(1);
        if (labels.count(l)) return fail(line, "label " + l + " is used twice");
        for (char ch : l)
            if (!std::isalnum((unsigned char)ch)) return fail(line, "a label is letters and digits only");
        labels[l] = index;
        return true;
    }

    bool addControl(V2 p, double width) {
        // An arc that starts where the previous point ended must not repeat it.
        if (!controls.empty() && length(controls.back().p - p) < 0.01) {
            controls.back().width = width;
            return false;
        }
        controls.push_back({p, width});
        return true;
    }

    bool parse(const std::string& text) {
        std::istringstream in(text);
        std::string raw;
        int line = 0;
        while (std::getline(in, raw)) {
            line++;
            size_t hash = raw.find('#');
            if (hash != std::string::npos) raw.erase(hash);
            std::istringstream words(raw);
            std::vector<std::string> w;
            for (std::string word; words >> word;) w.push_back(word);
            if (w.empty()) continue;
            const std::string& key = w[0];
            std::vector<double> num;
            auto numbers = [&](size_t from, size_t count) {
                num.clear();
                for (size_t i = from; i < from + count; i++) {
                    double v;
                    if (i >= w.size() || !parseNumber(w[i], &v)) return false;
                    num.push_back(v);
                }
                return true;
            };
            if (key == "name") {
                if (w.size() != 2) return fail(line, "name takes one word");
                name = w[1];
            } else if (key == "about") {
                about = raw.substr(raw.find("about") + 5);
                about.erase(0, about.find_first_not_of(" \t"));
                about.erase(about.find_last_not_of(" \t\r") + 1);
            } else if (key == "ground" || key == "fog") {
                if (w.size() != 2 || !numbers(1, 1) || num[0] != std::floor(num[0]))
                    return fail(line, key + " takes one whole number");
                (key == "ground" ? ground : fog) = (int)num[0];
            } else if (key == "point") {
                if (!numbers(1, 3) || num[2] <= 0) return fail(line, "point takes x, z and a positive width");
                addControl({num[0], num[1]}, num[2]);
                if (!label(line, w, 4, controls.size() - 1)) return false;
            } else if (key == "arc") {
                if (!numbers(1, 6) || num[2] <= 0 || num[5] <= 0)
                    return fail(line, "arc takes centre x and z, radius, two angles and a positive width");
                double a0 = num[3], a1 = num[4];
                int steps = std::max(1, (int)std::ceil(std::fabs(a1 - a0) / 30.0 - 1e-9));
                size_t first = controls.size();
                for (int k = 0; k <= steps; k++) {
                    double a = (a0 + (a1 - a0) * k / steps) * kPi / 180.0;
                    bool added = addControl({num[0] + num[2] * std::cos(a), num[1] + num[2] * std::sin(a)}, num[5]);
                    if (k == 0 && !added) first = controls.size() - 1;
                }
                if (!label(line, w, 7, first)) return false;
            } else if (key == "camera" || key == "object" || key == "row" || key == "group" || key == "at") {
                decorations.push_back({line, key, std::vector<std::string>(w.begin() + 1, w.end())});
            } else {
                return fail(line, "unknown statement " + key);
            }
        }
        if (ground < 0 || ground > 3) return fail(line, "the ground texture must be 0 to 3");
        if (fog < 0) return fail(line, "the fog is missing");
        if (controls.size() < 4) return fail(line, "a circuit needs at least four control points");
        return true;
    }

    // Where a place names on the centre line, as a length along it.
    bool place(const CentreLine& centre, int line, const std::string& text, double* s) {
        size_t sign = text.find_first_of("+-", 1);
        std::string base = text.substr(0, sign);
        double offset = 0;
        if (sign != std::string::npos && !parseNumber(text.substr(sign), &offset))
            return fail(line, "bad distance in place " + text);
        size_t index;
        if (!base.empty() && std::all_of(base.begin(), base.end(), ::isdigit)) {
            index = (size_t)std::stoul(base);
            if (index >= controls.size()) return fail(line, "there is no control point " + base);
        } else if (labels.count(base)) {
            index = labels[base];
        } else {
            return fail(line, "unknown place " + text);
        }
        *s = centre.wrap(centre.spanStart(index) + offset);
        return true;
    }

    bool side(int line, const std::string& text, double* sign) {
        if (text == "left") *sign = 1;
        else if (text == "right") *sign = -1;
        else return fail(line, "side must be left or right, not " + text);
        return true;
    }

    bool type(int line, const std::string& text, int* t) {
        *t = trackcheck::objectTypeByName(text);
        if (*t < 0) return fail(line, "unknown object type " + text);
        return true;
    }
};

// A small deterministic generator, so that every build scatters alike.
struct Scatter {
    unsigned long state;
    explicit Scatter(unsigned long seed) : state(seed * 2654435761ul + 12345) {}
    double next() {
        state = state * 6364136223846793005ull + 1442695040888963407ull;
        return (double)((state >> 33) & 0xFFFFFF) / (double)0x1000000;
    }
};

unsigned long hashText(const std::string& s) {
    unsigned long h = 5381;
    for (char ch : s) h = h * 33 + (unsigned char)ch;
    return h;
}

// Pairs: every control point, and even subdivisions of each span.
std::vector<double> pairStations(const CentreLine& centre) {
    std::vector<double> stations;
    for (size_t i = 0; i < centre.spans(); i++) {
        double s0 = centre.spanStart(i), len = centre.spanLength(i);
        int k = std::max({1, (int)std::ceil(len / kMaxSpacing - 1e-6),
                          (int)std::ceil(centre.turn(s0, s0 + len) / kMaxTurn - 1e-6)});
        // Round a tight corner the inner barrier is much shorter than the
        // middle of the road. Points crowded there would each be the nearest
        // to a kart for less than a frame's travel, and the kart would miss
        // them: the corner is drawn a little coarser instead.
        k = std::max(1, std::min(k, (int)std::floor(centre.innerLength(s0, s0 + len) / kMinBarrierGap)));
        for (int j = 0; j < k; j++) stations.push_back(s0 + len * j / k);
    }
    return stations;
}

// The barrier pairs at the stations, as "LR" records on the file grid, and
// the barrier lines as the game will see them.
bool writePairs(const CentreLine& centre, const std::vector<double>& stations, std::ostream& file, Barriers* barriers,
                std::string* error) {
    for (size_t i = 0; i < stations.size(); i++) {
        double s = stations[i];
        V2 c = centre.position(s), l = centre.leftward(s);
        double half = centre.width(s) / 2;
        int v[4] = {fileValue(c.x + l.x * half), fileValue(c.z + l.z * half), fileValue(c.x - l.x * half),
                    fileValue(c.z - l.z * half)};
        for (int x : v)
            if (x < 0 || x > 512) {
                char at[64];
                std::snprintf(at, sizeof at, " (%.2f, %.2f)", c.x, c.z);
                *error = "pair " + std::to_string(i) + at + " falls off the ground grid";
                return false;
            }
        file << "LR " << v[0] << " " << v[1] << " " << v[2] << " " << v[3] << "\n";
        barriers->left.push_back({worldValue(v[0]), worldValue(v[1])});
        barriers->right.push_back({worldValue(v[2]), worldValue(v[3])});
    }
    return true;
}

// The scenery of a source, placed along its centre line. Positions are worked
// out in world units and then put on the file grid, and checked there, where
// the game will see them.
struct Scenery {
    Builder& b;
    const CentreLine& centre;
    const Barriers& barriers;
    std::string* error;
    std::ostringstream cameras, objects;
    unsigned nCameras = 0, nObjects = 0;
    std::vector<std::pair<V2, int>> placed;
    // Scenery may not stand close in front of a TV camera, between it and
    // the barrier: the trackside view looks out of the camera at the road.
    // The cameras are placed first so that the scenery can keep clear of them.
    std::vector<V2> cameraAt;

    // The statement being placed, for its messages, and its numbers.
    const Decoration* d = nullptr;
    std::vector<double> num;

    Scenery(Builder& b, const CentreLine& centre, const Barriers& barriers, std::string* error)
        : b(b), centre(centre), barriers(barriers), error(error) {}

    static V2 snap(V2 p) { return V2{worldValue(fileValue(p.x)), worldValue(fileValue(p.z))}; }

    bool clear(V2 p, int type) const {
        if (fileValue(p.x) < 0 || fileValue(p.x) > 512 || fileValue(p.z) < 0 || fileValue(p.z) > 512) return false;
        p = snap(p);
        return !barriers.onRoad(p) && barriers.clearance(p) >= trackcheck::objectRoom(type) + 0.05;
    }
    V2 beside(double s, double sign, double offset) const {
        return centre.position(s) + centre.leftward(s) * (sign * (centre.width(s) / 2 + offset));
    }
    bool blocksACamera(V2 p) const {
        p = snap(p);
        for (V2 c : cameraAt)
            if (length(c - p) < trackcheck::kCameraClearView && barriers.clearance(p) < barriers.clearance(c)) return true;
        return false;
    }
    void emit(V2 p, int type) {
        if (type < 0) {
            cameras << "C " << fileValue(p.x) << " " << fileValue(p.z) << "\n";
            nCameras++;
            placed.push_back({snap(p), type});
        } else {
            objects << "O " << type << " " << fileValue(p.x) << " " << fileValue(p.z) << "\n";
            nObjects++;
            placed.push_back({snap(p), type});
        }
    }

    bool fail(const std::string& what) {
        *error = "line " + std::to_string(d->line) + ": " + what;
        return false;
    }
    bool need(size_t count, const char* usage) {
        if (d->args.size() != count) return fail(d->kind + " takes " + usage);
        return true;
    }
    bool numbers(std::initializer_list<size_t> at) {
        num.clear();
        for (size_t i : at) {
            double v;
            if (!parseNumber(d->args[i], &v)) return fail("bad number " + d->args[i]);
            num.push_back(v);
        }
        return true;
    }
    bool report() {
        if (!b.error.empty()) *error = b.error;
        return false;
    }

    // The cameras first, then everything else in the order written.
    bool placeAll() {
        std::vector<const Decoration*> order;
        for (const Decoration& dec : b.decorations)
            if (dec.kind == "camera") order.push_back(&dec);
        for (const Decoration& dec : b.decorations)
            if (dec.kind != "camera") order.push_back(&dec);
        for (const Decoration* dp : order) {
            d = dp;
            bool ok = d->kind == "camera" ? camera()
                      : d->kind == "object" ? object()
                      : d->kind == "row"    ? row()
                      : d->kind == "group"  ? group()
                                            : at();
            if (!ok) return false;
        }
        return true;
    }

    bool camera() {
        const std::vector<std::string>& a = d->args;
        double s = 0, sign = 0;
        if (!need(3, "a place, a side and an offset") || !b.place(centre, d->line, a[0], &s) ||
            !b.side(d->line, a[1], &sign) || !numbers({2}))
            return report();
        V2 p = beside(s, sign, num[0]);
        if (!clear(p, -1)) return fail("the camera stands on the road or against the barrier");
        emit(p, -1);
        cameraAt.push_back(snap(p));
        return true;
    }

    bool object() {
        const std::vector<std::string>& a = d->args;
        int type = -1;
        double s = 0, sign = 0;
        if (!need(4, "a type, a place, a side and an offset") || !b.type(d->line, a[0], &type) ||
            !b.place(centre, d->line, a[1], &s) || !b.side(d->line, a[2], &sign) || !numbers({3}))
            return report();
        V2 p = beside(s, sign, num[0]);
        if (!clear(p, type)) return fail("the " + a[0] + " stands on the road or against the barrier");
        if (blocksACamera(p)) return fail("the " + a[0] + " stands in front of a TV camera");
        emit(p, type);
        return true;
    }

    bool row() {
        const std::vector<std::string>& a = d->args;
        int type = -1;
        double s = 0, s2 = 0, sign = 0;
        if (!need(6, "a type, two places, a spacing, a side and an offset") || !b.type(d->line, a[0], &type) ||
            !b.place(centre, d->line, a[1], &s) || !b.place(centre, d->line, a[2], &s2) ||
            !b.side(d->line, a[4], &sign) || !numbers({3, 5}))
            return report();
        if (num[0] <= 0) return fail("the spacing of a row must be positive");
        double span = centre.wrap(s2 - s);
        for (double t = 0; t <= span + 1e-6; t += num[0]) {
            V2 p = beside(s + t, sign, num[1]);
            if (!clear(p, type)) return fail("a " + a[0] + " of the row stands on the road or against the barrier");
            if (blocksACamera(p)) continue;  // a gap in the row for the camera's view
            emit(p, type);
        }
        return true;
    }

    bool group() {
        const std::vector<std::string>& a = d->args;
        int type = -1;
        double s = 0, sign = 0;
        if (!need(6, "a type, a place, a side, an offset, a count and a spread") || !b.type(d->line, a[0], &type) ||
            !b.place(centre, d->line, a[1], &s) || !b.side(d->line, a[2], &sign) || !numbers({3, 4, 5}))
            return report();
        V2 spot = beside(s, sign, num[0]);
        int want = (int)num[1], got = 0;
        Scatter rnd(hashText(b.name) + (unsigned long)d->line);
        for (int attempt = 0; attempt < want * 30 && got < want; attempt++) {
            double a0 = rnd.next() * 2 * kPi, r = num[2] * std::sqrt(rnd.next());
            V2 p = spot + V2{std::cos(a0) * r, std::sin(a0) * r};
            bool crowded = false;
            for (const auto& other : placed)
                if (length(other.first - snap(p)) < 0.9) crowded = true;
            if (crowded || !clear(p, type) || blocksACamera(p)) continue;
            emit(p, type);
            got++;
        }
        if (got == 0) return fail("no room for any of the group");
        return true;
    }

    bool at() {
        const std::vector<std::string>& a = d->args;
        int type = -1;
        if (!need(3, "a type, x and z") || !b.type(d->line, a[0], &type) || !numbers({1, 2})) return report();
        V2 p{num[0], num[1]};
        if (!clear(p, type)) return fail("the " + a[0] + " stands on the road or against the barrier");
        if (blocksACamera(p)) return fail("the " + a[0] + " stands in front of a TV camera");
        emit(p, type);
        return true;
    }
};

// The game lays dirt and grass outside both barriers; on a tight hairpin or
// where two stretches run close, that ground must not reach the road of the
// other stretch, or it paints over it.
bool roadsideOffTheRoad(const std::string& fileText, std::string* error) {
    trackcheck::Track laid;
    std::vector<std::string> unread;
    if (!trackcheck::parseTrack(fileText, &laid, &unread) && !unread.empty()) {
        *error = unread[0];
        return false;
    }
    std::vector<std::string> overRoad = trackcheck::roadsideOnRoad(laid);
    if (!overRoad.empty()) {
        *error = overRoad[0] + ": the stretches are too close together";
        return false;
    }
    return true;
}

}  // namespace

bool buildTrack(const std::string& sourceText, const std::string& fallbackName, TrackBuild* out, std::string* error) {
    Builder b;
    if (!b.parse(sourceText)) {
        *error = b.error;
        return false;
    }
    if (b.name.empty()) b.name = fallbackName;
    if (!validName(b.name)) {
        *error = "the name \"" + b.name + "\" is not three to 31 letters, digits, - or _";
        return false;
    }

    CentreLine centre(b.controls);
    std::vector<double> stations = pairStations(centre);
    std::ostringstream file;
    file << b.ground << " 0\n" << b.fog << "\n";
    Barriers barriers;
    if (!writePairs(centre, stations, file, &barriers, error)) return false;
    Scenery scenery(b, centre, barriers, error);
    if (!scenery.placeAll()) return false;
    file << scenery.cameras.str() << scenery.objects.str();
    if (!roadsideOffTheRoad(file.str(), error)) return false;

    out->name = b.name;
    out->about = b.about;
    out->fileText = file.str();
    out->length = (float)centre.total();
    out->pairs = (unsigned)stations.size();
    out->cameras = scenery.nCameras;
    out->objects = scenery.nObjects;
    return true;
}

bool generateTracks(const std::string& dataDir, const std::string& sourceDir, std::string* error) {
    const std::string from = sourceDir + "/tracks";
    std::vector<std::string> sources;
    if (DIR* dir = opendir(from.c_str())) {
        while (dirent* e = readdir(dir)) {
            std::string f = e->d_name;
            if (f.size() > 6 && f.compare(f.size() - 6, 6, ".track") == 0) sources.push_back(f);
        }
        closedir(dir);
    } else {
        *error = "cannot read " + from;
        return false;
    }
    std::sort(sources.begin(), sources.end());
    if (sources.empty()) {
        *error = "no track sources in " + from;
        return false;
    }

    const std::string to = dataDir + "/Tracks";
    for (size_t slash = 1; slash != std::string::npos; slash = to.find('/', slash + 1))
        mkdir(to.substr(0, slash).c_str(), 0755);
    mkdir(to.c_str(), 0755);
    std::vector<std::string> names;
    for (const std::string& f : sources) {
        std::ifstream in(from + "/" + f, std::ios::binary);
        std::stringstream text;
        text << in.rdbuf();
        TrackBuild track;
        std::string why;
        if (!in || !buildTrack(text.str(), f.substr(0, f.size() - 6), &track, &why)) {
            *error = from + "/" + f + ": " + (in ? why : "cannot be read");
            return false;
        }
        if (std::find(names.begin(), names.end(), track.name) != names.end()) {
            *error = from + "/" + f + ": a second track named " + track.name;
            return false;
        }
        names.push_back(track.name);
        std::ofstream outFile(to + "/" + track.name + ".txt", std::ios::binary | std::ios::trunc);
        outFile << track.fileText;
        if (!outFile.flush()) {
            *error = "cannot write " + to + "/" + track.name + ".txt";
            return false;
        }
    }
    return true;
}

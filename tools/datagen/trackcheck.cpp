// The track validator. Everything here is measured in world units, after the
// same conversion and point separation that the game applies when it loads a
// track, because that is what the karts race on.

#include "datagen/trackcheck.h"

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <sstream>

#include "shell/angles.h"

namespace trackcheck {

namespace {

const float kFps = 30.0f;
const float kAcceleration = kartfacts::kAcceleration;
// Room a grid kart needs between its outline and either barrier, so that a
// start with six karts side by side does not begin with a scrape.
const float kGridRoom = 0.5f;
// Narrowest road we race on: two karts side by side with a little air.
const float kMinRoadWidth = 3.5f;
// How far the middle of the circuit may lie from the origin: the menu turns
// the track about the origin, and an off-centre circuit swings out of view.
const float kMaxOffCentre = 4.0f;
// Every part of the road has a TV camera within this distance, so that the
// trackside view never films from across the map.
const float kMaxCameraDistance = 24.0f;
// Closest two roadside things may stand, middle to middle.
const float kMinSpacing = 0.9f;


std::string format(const char* fmt, ...) __attribute__((format(printf, 1, 2)));
std::string format(const char* fmt, ...) {
    char buffer[512];
    va_list args;
    va_start(args, fmt);
    std::vsnprintf(buffer, sizeof buffer, fmt, args);
    va_end(args);
    return buffer;
}

bool parseInt(const std::string& word, int* value) {
    if (word.empty()) return false;
    char* end = nullptr;
    long v = std::strtol(word.c_str(), &end, 10);
    if (*end != '\0' || v < -1000000 || v > 1000000) return false;
    *value = (int)v;
    return true;
}

float world(int v) { return (float)(v - 256) * kTrackScale; }

// ---- plane geometry ------------------------------------------------------

double cross(double ax, double az, double bx, double bz) { return ax * bz - az * bx; }

// Whether segments ab and cd share a point (touching and overlapping count).
bool segmentsMeet(Point a, Point b, Point c, Point d) {
    double d1 = cross(b.x - a.x, b.z - a.z, c.x - a.x, c.z - a.z);
    double d2 = cross(b.x - a.x, b.z - a.z, d.x - a.x, d.z - a.z);
    double d3 = cross(d.x - c.x, d.z - c.z, a.x - c.x, a.z - c.z);
    double d4 = cross(d.x - c.x, d.z - c.z, b.x - c.x, b.z - c.z);
    if (((d1 > 0 && d2 < 0) || (d1 < 0 && d2 > 0)) && ((d3 > 0 && d4 < 0) || (d3 < 0 && d4 > 0))) return true;
    auto onSegment = [](Point p, Point q, Point r) {  // r on pq, given collinear
        return std::min(p.x, q.x) <= r.x && r.x <= std::max(p.x, q.x) && std::min(p.z, q.z) <= r.z &&
               r.z <= std::max(p.z, q.z);
    };
    if (d1 == 0 && onSegment(a, b, c)) return true;
    if (d2 == 0 && onSegment(a, b, d)) return true;
    if (d3 == 0 && onSegment(c, d, a)) return true;
    if (d4 == 0 && onSegment(c, d, b)) return true;
    return false;
}

double distanceToSegment(Point p, Point a, Point b) {
    double dx = b.x - a.x, dz = b.z - a.z;
    double len2 = dx * dx + dz * dz;
    double t = len2 > 0 ? ((p.x - a.x) * dx + (p.z - a.z) * dz) / len2 : 0;
    t = std::max(0.0, std::min(1.0, t));
    double ex = a.x + t * dx - p.x, ez = a.z + t * dz - p.z;
    return std::sqrt(ex * ex + ez * ez);
}

double distanceToRing(Point p, const std::vector<Point>& ring) {
    double best = 1e9;
    for (size_t i = 0; i < ring.size(); i++) best = std::min(best, distanceToSegment(p, ring[i], ring[(i + 1) % ring.size()]));
    return best;
}

// The road is what lies between the two barrier lines: inside exactly one of them.
bool onRoad(const Track& t, Point p) { return insideRing(p, t.left) != insideRing(p, t.right); }

double distanceToBarriers(const Track& t, Point p) { return std::min(distanceToRing(p, t.left), distanceToRing(p, t.right)); }

// ---- the kart's rules ----------------------------------------------------

// The outline the kart collides with: nose, right side, tail, left side.
void kartOutline(float px, float pz, float ay, Point out[8]) {
    const float F = kChasisFront, W = kChasisWidth;
    const float f[8] = {F + 0.03f, F + 0.03f, F - 0.1f, F / 2, -0.17f, -0.17f, F / 2, F - 0.1f};
    const float r[8] = {-(W - 0.25f) / 2, (W - 0.25f) / 2, (W + 0.025f) / 2, (W + 0.025f) / 2,
                        (W + 0.025f) / 2, -(W + 0.025f) / 2, -(W + 0.025f) / 2, -(W + 0.025f) / 2};
    float s = std::sin(ay / DEG_PER_RAD_F), c = std::cos(ay / DEG_PER_RAD_F);
    for (int i = 0; i < 8; i++) out[i] = Point{px - s * f[i] + c * r[i], pz - c * f[i] - s * r[i]};
}

// Index of the barrier point nearest to the sensor, left before right, lower
// index first, nothing beyond 99 units.
unsigned nearestPoint(const Track& t, Point sensor) {
    float best = 99.0f;
    unsigned result = 0;
    for (unsigned i = 0; i < t.left.size(); i++) {
        float dl = std::sqrt((t.left[i].x - sensor.x) * (t.left[i].x - sensor.x) +
                             (t.left[i].z - sensor.z) * (t.left[i].z - sensor.z));
        if (dl < best) best = dl, result = i;
        float dr = std::sqrt((t.right[i].x - sensor.x) * (t.right[i].x - sensor.x) +
                             (t.right[i].z - sensor.z) * (t.right[i].z - sensor.z));
        if (dr < best) best = dr, result = i;
    }
    return result;
}

// The checkpoint and lap state of one kart, advanced once per frame.
struct LapState {
    unsigned n = 0;
    uint8_t checkpoint = 0;
    int lap = 0;
    bool latched = false;

    explicit LapState(unsigned pairs) : n(pairs), checkpoint((uint8_t)(pairs - 2)) {}

    // Returns true in the frame that counts a lap.
    bool step(unsigned c) {
        if (c == (unsigned)checkpoint + 1) {
            checkpoint = (uint8_t)c;
        } else if (checkpoint != 0 || !latched) {
            if (checkpoint >= n - 1 && !latched) {
                checkpoint = 0;
                lap++;
                latched = true;
                return true;
            }
        } else {
            latched = false;
        }
        return false;
    }
};

// The grid place of kart `id`: two columns either side of the finish gantry,
// staggered backwards from z = 20.
void gridPlace(int id, float* px, float* pz) {
    *px = kFinishX - kChasisWidth + 2 * kChasisWidth * (float)(id % 2);
    *pz = 20.0f - 2 * (float)id * kChasisFront;
}

std::string where(Point p) { return format("(%.2f, %.2f)", p.x, p.z); }

}  // namespace

std::vector<Point> barrierNormals(const std::vector<Point>& P, bool left) {
    const unsigned n = (unsigned)P.size();
    std::vector<Point> N(n);
    if (n == 0) return N;
    N[0] = left ? Point{1.0f, 0.0f} : Point{-1.0f, 0.0f};
    for (unsigned i = 1; i < n; i++) {
        unsigned p = (i - 1) % n, q = (i + 1) % n;
        float spandz = P[q].z - P[p].z;
        float dx1 = P[i].x - P[p].x, dz1 = P[i].z - P[p].z;
        float dx2 = P[q].x - P[i].x, dz2 = P[q].z - P[i].z;
        if (dx1 == 0) dx1 = 0.1f;
        if (dx2 == 0) dx2 = 0.1f;
        float angle = (std::atan(dz1 / dx1) + std::atan(dz2 / dx2)) / 2;
        if (dx1 > 0 && dx2 > 0) angle += 1.570796327f;
        if (dx1 < 0 && dx2 < 0) angle -= 1.570796327f;
        float t = std::tan(angle);
        float root = std::sqrt(t * t + 1);
        if (root == 0) root = 0.1f;
        float c = 1 / root;
        bool negate = left ? spandz > 0 : !(spandz > 0);
        N[i] = negate ? Point{-c, -c * t} : Point{c, c * t};
        if (std::fabs(N[i].x - N[i - 1].x) > 1 || std::fabs(N[i].z - N[i - 1].z) > 1) N[i] = Point{-N[i].x, -N[i].z};
    }
    return N;
}

std::vector<std::string> roadsideOnRoad(const Track& t) {
    std::vector<std::string> problems;
    const unsigned n = (unsigned)t.left.size();
    if (n < 3) return problems;
    // Samples over each piece of band between two pairs, a little off the
    // barrier line itself (which is the road's edge), out to the grass's end.
    const int along = 6;
    const float across[] = {0.1f, 0.4f, kDirtBand, 1.1f, 1.5f, 2.0f, 2.5f, 3.0f, 3.5f, 4.0f, 4.5f, kGrassOut};
    for (int side = 0; side < 2; side++) {
        const std::vector<Point>& P = side == 0 ? t.left : t.right;
        const std::vector<Point> N = barrierNormals(P, side == 0);
        unsigned count[2] = {0, 0}, first[2] = {0, 0};
        Point firstAt[2];
        for (unsigned i = 0; i < n; i++) {
            unsigned j = (i + 1) % n;
            bool found[2] = {false, false};
            for (float d : across)
                for (int k = 0; k <= along; k++) {
                    float u = (float)k / along;
                    Point a{P[i].x - N[i].x * d, P[i].z - N[i].z * d}, b{P[j].x - N[j].x * d, P[j].z - N[j].z * d};
                    Point s{a.x + (b.x - a.x) * u, a.z + (b.z - a.z) * u};
                    int kind = d <= kDirtBand ? 0 : 1;
                    if (found[kind] || !onRoad(t, s)) continue;
                    found[kind] = true;
                    if (count[kind]++ == 0) first[kind] = i, firstAt[kind] = s;
                }
        }
        for (int kind = 0; kind < 2; kind++)
            if (count[kind])
                problems.push_back(format("the %s beside the %s barrier lies on the road at %u pairs, first at pair %u "
                                          "near %s",
                                          kind == 0 ? "dirt" : "grass", side == 0 ? "left" : "right", count[kind],
                                          first[kind], where(firstAt[kind]).c_str()));
    }
    return problems;
}

const char* objectTypeName(int type) {
    static const char* names[kObjectTypes] = {"barrel", "barrelt", "container", "barrel2", "barrel2t", "plant",
                                              "container2", "ad",   "sign1",     "sign2",   "sign3",    "sign4"};
    return type >= 0 && type < kObjectTypes ? names[type] : "unknown";
}

int objectTypeByName(const std::string& name) {
    for (int i = 0; i < kObjectTypes; i++)
        if (name == objectTypeName(i)) return i;
    return -1;
}

float objectRoom(int type) {
    switch (type) {
        case 2:  // the containers are the bulkiest things beside the road
        case 6:
            return 2.0f;
        case 7:  // a board is wide even when turned edge-on
            return 1.4f;
        case 5:  // a plant billboard turns with the camera
            return 0.8f;
        case 8:
        case 9:
        case 10:
        case 11:
            return 0.8f;
        case -1:  // TV camera stand
            return 0.8f;
        default:  // barrels
            return 0.6f;
    }
}

bool parseTrack(const std::string& text, Track* t, std::vector<std::string>* problems) {
    *t = Track();
    std::istringstream in(text);
    std::vector<std::string> words;
    for (std::string w; in >> w;) words.push_back(w);

    size_t at = 0;
    int header[3];
    const char* headerNames[3] = {"ground texture", "road texture", "fog"};
    for (int i = 0; i < 3; i++) {
        if (at >= words.size() || !parseInt(words[at], &header[i])) {
            problems->push_back(format("the file does not start with the %s number", headerNames[i]));
            return false;
        }
        at++;
    }
    t->dirt = header[0];
    t->road = header[1];
    t->fog = header[2];

    auto readInts = [&](const std::string& keyword, int count, int* out) {
        for (int i = 0; i < count; i++) {
            if (at >= words.size() || !parseInt(words[at], &out[i])) {
                problems->push_back(format("record %s number %zu has a malformed or missing number", keyword.c_str(),
                                           keyword == "LR"  ? t->left.size()
                                           : keyword == "C" ? t->cameras.size()
                                                            : t->objects.size()));
                return false;
            }
            at++;
        }
        return true;
    };

    while (at < words.size()) {
        const std::string word = words[at++];
        int v[4];
        if (word == "LR") {
            if (!readInts(word, 4, v)) continue;
            t->fileValues.insert(t->fileValues.end(), v, v + 4);
            t->left.push_back(Point{world(v[0]), world(v[1])});
            t->right.push_back(Point{world(v[2]), world(v[3])});
        } else if (word == "C") {
            if (!readInts(word, 2, v)) continue;
            t->fileValues.insert(t->fileValues.end(), v, v + 2);
            t->cameras.push_back(Point{world(v[0]), world(v[1])});
        } else if (word == "O") {
            if (!readInts(word, 3, v)) continue;
            t->fileValues.insert(t->fileValues.end(), v + 1, v + 3);
            t->objects.push_back(Object{v[0], Point{world(v[1]), world(v[2])}});
        }
        // Any other word is skipped on its own, as the game does.
    }

    // Neighbouring barrier points that share an x or a z are moved apart by
    // 0.01, the left ones up and the right ones down, over the closing copy
    // of pair 0 too; the neighbour of pair 0 is found with an unsigned wrap.
    const uint32_t n = (uint32_t)t->left.size();
    if (n > 0) {
        std::vector<Point> L = t->left, R = t->right;
        L.push_back(L[0]);
        R.push_back(R[0]);
        for (uint32_t i = 0; i <= n; i++) {
            uint32_t j = (i - 1u) % n;
            if (L[i].x == L[j].x) L[i].x += 0.01f;
            if (L[i].z == L[j].z) L[i].z += 0.01f;
            if (R[i].x == R[j].x) R[i].x -= 0.01f;
            if (R[i].z == R[j].z) R[i].z -= 0.01f;
        }
        L.pop_back();
        R.pop_back();
        t->left = L;
        t->right = R;
    }
    return true;
}

LineRun driveLine(const Track& t, float placement, int laps) {
    LineRun run;
    run.lapsDriven = laps;
    const unsigned n = (unsigned)t.left.size();
    if (n < 4) return run;

    std::vector<Point> path(n);
    std::vector<double> along(n + 1, 0.0);
    for (unsigned i = 0; i < n; i++)
        path[i] = Point{t.left[i].x + (t.right[i].x - t.left[i].x) * placement,
                        t.left[i].z + (t.right[i].z - t.left[i].z) * placement};
    for (unsigned i = 0; i < n; i++) {
        Point a = path[i], b = path[(i + 1) % n];
        along[i + 1] = along[i] + std::hypot(b.x - a.x, b.z - a.z);
    }
    const double perimeter = along[n];
    if (perimeter <= 0) return run;

    const float step = kTopSpeed / kFps;
    LapState state(n);
    // Start on the line at pair n - 3, just behind the kart's first checkpoint.
    double s = along[n - 3];
    const long frames = (long)std::ceil(perimeter * laps / step);
    unsigned segment = n - 3;
    std::vector<bool> reported(n, false);
    bool latchReported = false;
    for (long f = 0; f < frames; f++) {
        double local = std::fmod(s, perimeter);
        while (!(along[segment] <= local && local < along[segment + 1])) segment = (segment + 1) % n;
        Point a = path[segment], b = path[(segment + 1) % n];
        double len = along[segment + 1] - along[segment];
        double u = (local - along[segment]) / len;
        Point pos{(float)(a.x + (b.x - a.x) * u), (float)(a.z + (b.z - a.z) * u)};
        float dx = (float)((b.x - a.x) / len), dz = (float)((b.z - a.z) / len);
        Point sensor{pos.x + dx * (step + kChasisFront), pos.z + dz * (step + kChasisFront)};

        unsigned c = nearestPoint(t, sensor);
        unsigned before = state.checkpoint;
        bool latched = state.latched;
        if (before < n - 1 && c != before && c != before + 1) {
            unsigned ahead = (c + n - before) % n;
            if (ahead >= 2 && ahead < n / 2 && !reported[before + 1]) {
                reported[before + 1] = true;
                run.skips.push_back(format("on the %.2f line pair %u is skipped near %s", placement, before + 1,
                                           where(pos).c_str()));
            }
        }
        if (before == 0 && latched && c == 1 && !latchReported) {
            latchReported = true;
            run.skips.push_back(format("on the %.2f line pair 1 comes too soon after the lap is counted, near %s",
                                       placement, where(pos).c_str()));
        }
        if (state.step(c)) {
            run.lapsCounted++;
            if (!run.lapCounted) {
                run.lapCounted = true;
                run.lapCountedAt = pos;
            }
        }
        s += step;
    }
    return run;
}

}  // namespace trackcheck

using namespace trackcheck;

namespace {

typedef std::vector<std::string> Problems;

// The header: ground, road and fog within what the game has.
void checkHeader(const Track& t, Problems& problems) {
    if (t.dirt < 0 || t.dirt > 3) problems.push_back(format("ground texture %d is not one of 0 to 3", t.dirt));
    if (t.road != 0) problems.push_back(format("road texture %d is not 0, the only road texture", t.road));
    if (t.fog < 0 || t.fog > 100) problems.push_back(format("fog %d is outside 0 to 100", t.fog));
}

// Sizes the game's record and the kart's 8-bit checkpoint can hold, and
// everything on the ground grid, which the file's 0..512 spans.
void checkSizes(const Track& t, Problems& problems) {
    const unsigned n = (unsigned)t.left.size();
    if (n < 8) problems.push_back(format("only %u point pairs: too few for a circuit", n));
    if (n > (unsigned)kMaxPairs) problems.push_back(format("%u point pairs: a kart's checkpoint counts only to 255", n));
    if (t.cameras.empty()) problems.push_back("no centre-line points for the TV cameras");
    if (t.cameras.size() > 999) problems.push_back(format("%zu centre-line points: more than 999", t.cameras.size()));
    if (t.objects.size() > 256) problems.push_back(format("%zu roadside objects: more than 256", t.objects.size()));

    int outside = 0;
    for (int v : t.fileValues)
        if (v < 0 || v > 512) outside++;
    if (outside) problems.push_back(format("%d file coordinates lie outside 0..512, off the ground grid", outside));
}

// No repeated points, the left line on the driver's left, and a road wide
// enough to race on.
void checkBarrierPoints(const Track& t, Problems& problems) {
    const unsigned n = (unsigned)t.left.size();
    for (unsigned i = 0; i < n; i++) {
        unsigned j = (i + 1) % n;
        if (t.left[i].x == t.left[j].x && t.left[i].z == t.left[j].z)
            problems.push_back(format("left points %u and %u coincide", i, j));
        if (t.right[i].x == t.right[j].x && t.right[i].z == t.right[j].z)
            problems.push_back(format("right points %u and %u coincide", i, j));
    }
    int wrongSide = 0, narrow = 0;
    unsigned firstWrong = 0, firstNarrow = 0;
    for (unsigned i = 0; i < n; i++) {
        unsigned p = (i + n - 1) % n, q = (i + 1) % n;
        float mx = (t.left[q].x + t.right[q].x - t.left[p].x - t.right[p].x) / 2;
        float mz = (t.left[q].z + t.right[q].z - t.left[p].z - t.right[p].z) / 2;
        // Facing along (mx, mz) the driver's left is (mz, -mx).
        float side = (t.left[i].x - t.right[i].x) * mz - (t.left[i].z - t.right[i].z) * mx;
        if (side <= 0 && wrongSide++ == 0) firstWrong = i;
        float width = std::hypot(t.left[i].x - t.right[i].x, t.left[i].z - t.right[i].z);
        if (width < kMinRoadWidth && narrow++ == 0) firstNarrow = i;
    }
    if (wrongSide)
        problems.push_back(format("the left point is not on the driver's left at %d pairs, first at pair %u", wrongSide,
                                  firstWrong));
    if (narrow)
        problems.push_back(format("the road is narrower than %.1f at %d pairs, first at pair %u", kMinRoadWidth, narrow,
                                  firstNarrow));
}

// Neither barrier crosses itself nor the other; true when one does.
bool checkCrossings(const Track& t, Problems& problems) {
    const unsigned n = (unsigned)t.left.size();
    bool crossed = false;
    auto selfCrossings = [&](const std::vector<Point>& ring, const char* name) {
        for (unsigned i = 0; i < n; i++)
            for (unsigned j = i + 2; j < n; j++) {
                if (i == 0 && j == n - 1) continue;  // neighbours through the closing segment
                if (segmentsMeet(ring[i], ring[(i + 1) % n], ring[j], ring[(j + 1) % n])) {
                    problems.push_back(format("the %s barrier crosses itself: segment %u meets segment %u near %s", name,
                                              i, j, where(ring[i]).c_str()));
                    crossed = true;
                    return;
                }
            }
    };
    selfCrossings(t.left, "left");
    selfCrossings(t.right, "right");
    for (unsigned i = 0; i < n && !crossed; i++)
        for (unsigned j = 0; j < n; j++)
            if (segmentsMeet(t.left[i], t.left[(i + 1) % n], t.right[j], t.right[(j + 1) % n])) {
                problems.push_back(format("the left barrier segment %u crosses the right barrier segment %u near %s", i,
                                          j, where(t.left[i]).c_str()));
                crossed = true;
                break;
            }
    return crossed;
}

// Roughly centred, for the menu's turntable.
void checkCentred(const Track& t, Problems& problems) {
    const unsigned n = (unsigned)t.left.size();
    float minX = 1e9f, maxX = -1e9f, minZ = 1e9f, maxZ = -1e9f;
    for (unsigned i = 0; i < n; i++)
        for (const Point& p : {t.left[i], t.right[i]}) {
            minX = std::min(minX, p.x), maxX = std::max(maxX, p.x);
            minZ = std::min(minZ, p.z), maxZ = std::max(maxZ, p.z);
        }
    Point centre{(minX + maxX) / 2, (minZ + maxZ) / 2};
    if (std::hypot(centre.x, centre.z) > kMaxOffCentre)
        problems.push_back(format("the circuit's middle %s is not near the origin, so the menu's turntable swings it "
                                  "out of view",
                                  where(centre).c_str()));
}

// Pair 0 sits just past the finish line, across the start straight.
void checkPairZero(const Track& t, Problems& problems) {
    const Point& L0 = t.left[0];
    const Point& R0 = t.right[0];
    if (!(L0.x < kFinishX && kFinishX < R0.x && L0.z <= kFinishZ && R0.z <= kFinishZ && L0.z >= kFinishZ - 8 &&
          R0.z >= kFinishZ - 8))
        problems.push_back(format("pair 0 %s-%s is not across the start straight just past the finish line at z %.1f",
                                  where(L0).c_str(), where(R0).c_str(), kFinishZ));
}

// The grid: every kart on the road with room to spare, and each counts its
// first lap when it drives off straight ahead.
void checkGrid(const Track& t, Problems& problems) {
    const unsigned n = (unsigned)t.left.size();
    for (int id = 0; id < kGridKarts; id++) {
        float px, pz;
        gridPlace(id, &px, &pz);
        Point outline[8];
        kartOutline(px, pz, 0, outline);
        double room = 1e9;
        bool off = false;
        for (const Point& p : outline) {
            room = std::min(room, distanceToBarriers(t, p));
            if (!onRoad(t, p)) off = true;
        }
        if (off) {
            problems.push_back(format("kart %d of the starting grid at %s is not on the road", id, where({px, pz}).c_str()));
            continue;
        }
        if (room < kGridRoom)
            problems.push_back(format("kart %d of the starting grid at %s has only %.2f to the barrier", id,
                                      where({px, pz}).c_str(), room));

        LapState state(n);
        float ups = 0;
        bool stayedOnRoad = true;
        for (int frame = 0; frame < 300 && !(state.lap == 1 && !state.latched); frame++) {
            Point sensor{px, pz - ups / kFps - kChasisFront};
            state.step(nearestPoint(t, sensor));
            ups = std::min(kTopSpeed, ups + kAcceleration / kFps / (ups / 2.5f + 1));
            pz -= ups / kFps;
            kartOutline(px, pz, 0, outline);
            for (const Point& p : outline)
                if (!onRoad(t, p)) stayedOnRoad = false;
            if (!stayedOnRoad) break;
        }
        if (!stayedOnRoad)
            problems.push_back(format("kart %d leaves the road driving straight off the grid, at %s", id,
                                      where({px, pz}).c_str()));
        else if (state.lap != 1 || state.latched)
            problems.push_back(format("kart %d of the starting grid does not count its first lap", id));
    }
}

// Every lap driven on each of the three lines the karts drive counts.
void checkLaps(const Track& t, Problems& problems) {
    for (float line : {0.25f, 0.5f, 0.75f}) {
        LineRun run = driveLine(t, line, 3);
        for (const std::string& s : run.skips) problems.push_back(s);
        if (run.lapsCounted != run.lapsDriven)
            problems.push_back(format("on the %.2f line %d of %d laps are counted", line, run.lapsCounted, run.lapsDriven));
        if (line == 0.5f && run.lapCounted &&
            (std::fabs(run.lapCountedAt.z - kFinishZ) > 2.0f || std::fabs(run.lapCountedAt.x - kFinishX) > 3.0f))
            problems.push_back(format("laps are counted at %s, not at the finish line (%.2f, %.2f)",
                                      where(run.lapCountedAt).c_str(), kFinishX, kFinishZ));
    }
}

// Roadside objects stand off the road, clear of the barriers and out from
// under the gantry; boards need pictures to show.
void checkObjects(const Track& t, const std::vector<std::string>& adPictures, Problems& problems) {
    for (size_t i = 0; i < t.objects.size(); i++) {
        const Object& o = t.objects[i];
        if (o.type < 0 || o.type >= kObjectTypes) {
            problems.push_back(format("object %zu has the unknown type %d", i, o.type));
            continue;
        }
        if (o.type == 7 && adPictures.empty())
            problems.push_back(format("object %zu is an advertising board but Data/Ads has no pictures", i));
        if (onRoad(t, o.at)) {
            problems.push_back(format("object %zu (%s) stands on the road at %s", i, objectTypeName(o.type),
                                      where(o.at).c_str()));
            continue;
        }
        double room = distanceToBarriers(t, o.at);
        double needed = objectRoom(o.type);
        if (room < needed)
            problems.push_back(format("object %zu (%s) at %s is %.2f from the barrier, it needs %.2f", i,
                                      objectTypeName(o.type), where(o.at).c_str(), room, needed));
        if (std::fabs(o.at.z - kFinishZ) < 1.5f && std::fabs(o.at.x - kFinishX) < 6.0f)
            problems.push_back(format("object %zu (%s) stands under the finish gantry", i, objectTypeName(o.type)));
    }
}

// Every TV camera off the road, clear of the barrier and with a clear view.
void checkCameras(const Track& t, Problems& problems) {
    for (size_t i = 0; i < t.cameras.size(); i++) {
        const Point& c = t.cameras[i];
        if (onRoad(t, c))
            problems.push_back(format("TV camera %zu stands on the road at %s", i, where(c).c_str()));
        else if (distanceToBarriers(t, c) < objectRoom(-1))
            problems.push_back(format("TV camera %zu at %s stands against the barrier", i, where(c).c_str()));
        // The trackside view looks out of the camera at the road: nothing
        // may stand close in front of it, between it and the barrier.
        const double room = distanceToBarriers(t, c);
        for (size_t j = 0; j < t.objects.size(); j++) {
            const Point& o = t.objects[j].at;
            if (std::hypot(o.x - c.x, o.z - c.z) < kCameraClearView && distanceToBarriers(t, o) < room)
                problems.push_back(format("object %zu (%s) stands in front of TV camera %zu at %s", j,
                                          objectTypeName(t.objects[j].type), i, where(c).c_str()));
        }
    }
}

// Nothing stands inside anything else: the scenery and the camera stands
// keep a little space between them.
void checkSpacing(const Track& t, Problems& problems) {
    std::vector<std::pair<Point, std::string>> things;
    for (size_t i = 0; i < t.objects.size(); i++)
        things.push_back({t.objects[i].at, format("object %zu (%s)", i, objectTypeName(t.objects[i].type))});
    for (size_t i = 0; i < t.cameras.size(); i++) things.push_back({t.cameras[i], format("TV camera %zu", i)});
    for (size_t i = 0; i < things.size(); i++)
        for (size_t j = i + 1; j < things.size(); j++)
            if (std::hypot(things[i].first.x - things[j].first.x, things[i].first.z - things[j].first.z) < kMinSpacing)
                problems.push_back(format("%s and %s stand in each other at %s", things[i].second.c_str(),
                                          things[j].second.c_str(), where(things[i].first).c_str()));
}

// Every part of the road has a TV camera near enough to film it.
void checkCameraCoverage(const Track& t, Problems& problems) {
    const unsigned n = (unsigned)t.left.size();
    for (unsigned i = 0; i < n && !t.cameras.empty(); i++) {
        Point mid{(t.left[i].x + t.right[i].x) / 2, (t.left[i].z + t.right[i].z) / 2};
        double best = 1e9;
        for (const Point& c : t.cameras) best = std::min(best, (double)std::hypot(c.x - mid.x, c.z - mid.z));
        if (best > kMaxCameraDistance) {
            problems.push_back(format("no TV camera within %.0f of pair %u", kMaxCameraDistance, i));
            break;
        }
    }
}

}  // namespace

std::vector<std::string> validateTrack(const std::string& text, const std::vector<std::string>& adPictures) {
    std::vector<std::string> problems;
    Track t;
    if (!parseTrack(text, &t, &problems)) return problems;
    checkHeader(t, problems);
    checkSizes(t, problems);
    if (t.left.size() < 4) return problems;
    checkBarrierPoints(t, problems);
    bool crossed = checkCrossings(t, problems);
    checkCentred(t, problems);
    checkPairZero(t, problems);
    // A self-crossing barrier makes "between the barriers" meaningless; stop here.
    if (crossed) return problems;
    // The dirt and grass outside the barriers stay off the road.
    for (const std::string& s : roadsideOnRoad(t)) problems.push_back(s);
    checkGrid(t, problems);
    checkLaps(t, problems);
    checkObjects(t, adPictures, problems);
    checkCameras(t, problems);
    checkSpacing(t, problems);
    checkCameraCoverage(t, problems);
    return problems;
}

// Seeded noise for the generator: value noise, fractal sums and cells.

#include "datagen/noise.h"

#include <cmath>

namespace gen {

float Rng::gauss() {
    float s = 0;
    for (int i = 0; i < 6; i++) s += uniform();
    return (s - 3.0f) * 1.41421356f;
}

static std::uint32_t mixbits(std::uint32_t h) {
    h ^= h >> 16;
    h *= 0x7feb352du;
    h ^= h >> 15;
    h *= 0x846ca68bu;
    h ^= h >> 16;
    return h;
}

float hash01(int x, int y, std::uint32_t seed) {
    std::uint32_t h = mixbits((std::uint32_t)x * 0x8da6b343u ^ mixbits((std::uint32_t)y * 0xd8163841u ^ seed * 0xcb1ab31fu));
    return (h >> 8) * (1.0f / 16777216.0f);
}

static int wrap(int v, int period) {
    if (period <= 0) return v;
    v %= period;
    return v < 0 ? v + period : v;
}

float valueNoise(float x, float y, int period, std::uint32_t seed) {
    float fx = std::floor(x), fy = std::floor(y);
    int ix = (int)fx, iy = (int)fy;
    float tx = x - fx, ty = y - fy;
    tx = tx * tx * tx * (tx * (tx * 6 - 15) + 10);
    ty = ty * ty * ty * (ty * (ty * 6 - 15) + 10);
    int x0 = wrap(ix, period), x1 = wrap(ix + 1, period), y0 = wrap(iy, period), y1 = wrap(iy + 1, period);
    float a = hash01(x0, y0, seed), b = hash01(x1, y0, seed), c = hash01(x0, y1, seed), d = hash01(x1, y1, seed);
    return (a + (b - a) * tx) + ((c + (d - c) * tx) - (a + (b - a) * tx)) * ty;
}

float fbm(float x, float y, int octaves, int period, std::uint32_t seed, float gain) {
    float sum = 0, amp = 1, norm = 0;
    for (int o = 0; o < octaves; o++) {
        sum += amp * valueNoise(x, y, period, seed + (std::uint32_t)o * 101u);
        norm += amp;
        amp *= gain;
        x *= 2;
        y *= 2;
        if (period > 0) period *= 2;
    }
    return sum / norm;
}

float cellular(float x, float y, int period, std::uint32_t seed, std::uint32_t* id) {
    int ix = (int)std::floor(x), iy = (int)std::floor(y);
    float best = 1e9f;
    for (int dy = -1; dy <= 1; dy++)
        for (int dx = -1; dx <= 1; dx++) {
            int cx = wrap(ix + dx, period), cy = wrap(iy + dy, period);
            float px = ix + dx + hash01(cx, cy, seed), py = iy + dy + hash01(cx, cy, seed + 17u);
            float d = std::hypot(px - x, py - y);
            if (d < best) {
                best = d;
                if (id) *id = (std::uint32_t)(cx * 7919 + cy * 104729);
            }
        }
    return best;
}

float cellEdge(float x, float y, int period, std::uint32_t seed) {
    int ix = (int)std::floor(x), iy = (int)std::floor(y);
    float f1 = 1e9f, f2 = 1e9f;
    float p1x = 0, p1y = 0, p2x = 0, p2y = 0;
    for (int dy = -2; dy <= 2; dy++)
        for (int dx = -2; dx <= 2; dx++) {
            int cx = wrap(ix + dx, period), cy = wrap(iy + dy, period);
            float px = ix + dx + hash01(cx, cy, seed), py = iy + dy + hash01(cx, cy, seed + 17u);
            float d = std::hypot(px - x, py - y);
            if (d < f1) {
                f2 = f1; p2x = p1x; p2y = p1y;
                f1 = d; p1x = px; p1y = py;
            } else if (d < f2) {
                f2 = d; p2x = px; p2y = py;
            }
        }
    // Distance to the bisector of the two nearest points.
    float mx = (p1x + p2x) / 2, my = (p1y + p2y) / 2, nx = p2x - p1x, ny = p2y - p1y;
    float len = std::hypot(nx, ny);
    return len > 0 ? std::fabs((x - mx) * nx + (y - my) * ny) / len : 0;
}

}  // namespace gen

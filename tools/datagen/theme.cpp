// The evening valley and racing stripes behind the splash and the menus.

#include "datagen/theme.h"

#include "datagen/noise.h"

namespace gen {

namespace {

// The picture's scale against the 1024 x 768 it was drawn for.
struct Frame {
    int w, h;
    unsigned seed;
    float sy, sxk;
    Frame(int w, int h, unsigned seed) : w(w), h(h), seed(seed), sy(h / 768.0f), sxk(w / 1024.0f) {}
};

// Night blue overhead to a warm haze at the horizon, a low sun, thin clouds.
void valleySky(Canvas& c, const Frame& f) {
    const unsigned seed = f.seed;
    const float sy = f.sy, sxk = f.sxk;
    const float horizon = 430 * sy;
    const float sunx = (620 + (seed % 5) * 60) * sxk, suny = 330 * sy;
    c.fillWith([&](float x, float y) {
        float t = clamp01(y / horizon);
        Color sky = t < 0.55f ? mix(rgb(0x141d45), rgb(0x3f4f8e), t / 0.55f)
                              : mix(rgb(0x3f4f8e), rgb(0xf2a15a), smooth(0.55f, 1.0f, t));
        float d = std::hypot(x - sunx, (y - suny) * 1.3f);
        sky = mix(sky, rgb(0xffd890), 0.55f * std::exp(-d / (140 * sxk)));
        float cl = fbm(x / (260 * sxk), y / (38 * sy), 5, 0, seed + 3);
        float band = smooth(0.52f, 0.78f, cl) * (1 - smooth(0.75f, 0.98f, t)) * smooth(0.08f, 0.3f, t);
        Color cloud = mix(rgb(0x8d7fb5), rgb(0xffc08a), t);
        sky = mix(sky, cloud, 0.6f * band);
        return sky;
    });
    c.circle(sunx, suny, 34 * sxk, rgb(0xfff1c8, 0.9f));
}

// Three ranges of hills, far ones hazy and blue, near ones green.
void valleyHills(Canvas& c, const Frame& f) {
    const unsigned seed = f.seed;
    const float sy = f.sy, sxk = f.sxk;
    struct Range {
        float base, amp, scale;
        Color top, bottom;
        unsigned s;
    };
    Range ranges[] = {{405, 150, 230, rgb(0x6d6fa8), rgb(0x9c8bb0), seed + 10},
                      {445, 55, 210, rgb(0x4a6a78), rgb(0x7a8a80), seed + 20},
                      {500, 45, 160, rgb(0x3d6b3a), rgb(0x2c5230), seed + 30}};
    for (const Range& r : ranges) {
        c.paintAll([&](float x, float y) {
            float n = fbm(x / (r.scale * sxk), 0.5f, 4, 0, r.s);
            if (r.amp > 100) n = 1 - std::fabs(2 * n - 1);  // the far range: sharp peaks
            float ridge = (r.base - r.amp * n) * sy;
            float k = cover(ridge - y);
            if (k <= 0) return Color{0, 0, 0, 0};
            float tex = fbm(x / (18 * sxk), y / (12 * sy), 3, 0, r.s + 1);
            Color col = mix(r.top, r.bottom, clamp01((y - ridge) / (120 * sy)));
            col = scaled(col, 0.9f + 0.2f * tex);
            if (r.amp > 100) col = mix(col, rgb(0xe8b08a), 0.45f * smooth(300 * sy, 405 * sy, y));  // haze
            return withAlpha(col, k);
        });
    }
}

// Cypresses along the nearest ridge.
void valleyCypresses(Canvas& c, const Frame& f) {
    const int w = f.w;
    const unsigned seed = f.seed;
    const float sy = f.sy, sxk = f.sxk;
    Rng rng(seed + 40);
    for (int i = 0; i < 14; i++) {
        float x = rng.range(0, (float)w), hgt = rng.range(40, 85) * sy, wid = hgt * 0.16f;
        float base = (500 - 45 * fbm(x / (160 * sxk), 0.5f, 4, 0, seed + 30)) * sy + 12 * sy;
        c.paint(x - wid - 2, base - hgt - 2, x + wid + 2, base + 2, [&](float px, float py) {
            float v = (py - (base - hgt)) / hgt;  // 0 at the tip, 1 at the foot
            float half = wid * std::sqrt(clamp01(v)) * (1.1f - 0.5f * v * v);
            float d = std::fabs(px - x) - half;
            float k = cover(d) * cover(py - base);
            float shade = px < x ? 0.85f : 0.6f;
            return withAlpha(scaled(rgb(0x1f3b22), shade), k);
        });
    }
}

// The foreground meadow.
void valleyMeadow(Canvas& c, const Frame& f) {
    const unsigned seed = f.seed;
    const float sy = f.sy, sxk = f.sxk;
    const float ground = 540 * sy;
    c.paintAll([&](float x, float y) {
        float k = cover(ground + 12 * sy * std::sin(x / (170 * sxk)) - y);
        if (k <= 0) return Color{0, 0, 0, 0};
        float n = fbm(x / (40 * sxk), y / (14 * sy), 4, 0, seed + 50);
        Color grass = mix(rgb(0x4e8a34), rgb(0x2f5e25), clamp01((y - ground) / (220 * sy)));
        return withAlpha(scaled(grass, 0.8f + 0.35f * n), k);
    });
}

// The circuit winding across the meadow, with kerbs.
void valleyRoad(Canvas& c, const Frame& f) {
    const unsigned seed = f.seed;
    const float sy = f.sy, sxk = f.sxk;
    auto roadCentre = [&](float x) {
        return (640 + 55 * std::sin(x / (190 * sxk) + 0.8f + seed % 3) + 20 * std::sin(x / (73 * sxk))) * sy;
    };
    c.paintAll([&](float x, float y) {
        float yc = roadCentre(x);
        float slope = (roadCentre(x + 1) - roadCentre(x - 1)) / 2;
        float d = std::fabs(y - yc) / std::sqrt(1 + slope * slope);
        float half = (24 + 18 * clamp01((y - 560 * sy) / (200 * sy))) * sy;
        if (d > half + 8 * sy + 1) return Color{0, 0, 0, 0};
        float along = x / (16 * sxk);
        if (d > half) {  // kerb
            bool red = ((int)std::floor(along)) % 2 == 0;
            return withAlpha(red ? rgb(0xd42a20) : rgb(0xf2efe6), cover(d - half - 8 * sy));
        }
        float n = hash01((int)x, (int)y, seed + 60);
        Color asphalt = scaled(rgb(0x4a4c52), 0.85f + 0.25f * n);
        if (d < 1.2f * sy && ((int)std::floor(along / 2)) % 2 == 0) asphalt = rgb(0xe8e4d8);
        return asphalt;
    });
}

void valleyVignette(Canvas& c, const Frame& f) {
    const int w = f.w, h = f.h;
    c.paintAll([&](float x, float y) {
        float dx = (x / w - 0.5f) * 2, dy = (y / h - 0.5f) * 2;
        return Color{0, 0, 0, 0.45f * smooth(0.6f, 1.6f, dx * dx + dy * dy)};
    });
}

}  // namespace

Canvas valleyScene(int w, int h, unsigned seed) {
    Canvas c(w, h);
    const Frame f(w, h, seed);
    valleySky(c, f);
    valleyHills(c, f);
    valleyCypresses(c, f);
    valleyMeadow(c, f);
    valleyRoad(c, f);
    valleyVignette(c, f);
    return c;
}

void checkerStripe(Canvas& c, float x0, float y0, float x1, float y1, float cell) {
    c.box(x0 - 1, y0 - 1, x1 + 1, y1 + 1, {0, 0, 0, 0.5f});
    c.paint(x0, y0, x1, y1, [&](float x, float y) {
        if (x < x0 || x > x1 || y < y0 || y > y1) return Color{0, 0, 0, 0};
        int i = (int)std::floor((x - x0) / cell), j = (int)std::floor((y - y0) / cell);
        float fade = smooth(0, 40, x - x0) * smooth(0, 40, x1 - x);
        return (i + j) % 2 ? Color{0.05f, 0.05f, 0.07f, 0.9f * fade} : Color{0.97f, 0.97f, 0.95f, 0.9f * fade};
    });
}

}  // namespace gen

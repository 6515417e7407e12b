// The circuit's textures: grounds, asphalt, grass, barrier faces, fence,
// roadside plants, grid marks, the finish chequer and the camera stand's shadow.
// Ground and barrier textures repeat seamlessly in both directions.

#include <cstdio>

#include "datagen/canvas.h"
#include "datagen/content.h"
#include "datagen/noise.h"
#include "datagen/text.h"

namespace gen {

namespace {

const float TAU = 6.28318531f;

// Tileable fbm over a square texture of side n: `cells` lattice cells across.
float tfbm(float x, float y, int n, int cells, unsigned seed, int octaves = 5) {
    return fbm(x / n * cells, y / n * cells, octaves, cells, seed);
}

// Stones scattered over a tileable ground: a cellular pattern with rounded pebbles.
Color pebbles(float x, float y, int n, int cells, unsigned seed, Color base, Color stone, float amount) {
    std::uint32_t id = 0;
    float d = cellular(x / n * cells, y / n * cells, cells, seed, &id);
    float size = 0.18f + 0.22f * hash01((int)id, 3, seed);
    bool present = hash01((int)id, 7, seed) < amount;
    if (!present) return base;
    float k = smooth(size, size - 0.06f, d);
    float shade = 0.75f + 0.5f * hash01((int)id, 11, seed);
    // A little light from the upper left on every stone.
    return mix(base, scaled(stone, shade * (1.15f - 0.6f * d / size)), k);
}

bvw::RGBA8Image dirt(int kind) {
    const int n = 256;
    Canvas c(n, n);
    c.fillWith([&](float x, float y) {
        float big = tfbm(x, y, n, 4, 100 + kind);
        float fine = tfbm(x, y, n, 32, 200 + kind, 3);
        switch (kind) {
        case 0: {  // dark brown earth with small stones
            Color base = mix(rgb(0x5a4030), rgb(0x7b5a3e), big);
            base = scaled(base, 0.85f + 0.3f * fine);
            return pebbles(x, y, n, 24, 300, base, rgb(0x8d8272), 0.35f);
        }
        case 1: {  // pale gravel
            Color base = mix(rgb(0x9c8f78), rgb(0xc2b59a), big);
            base = scaled(base, 0.8f + 0.35f * fine);
            Color g = pebbles(x, y, n, 40, 310, base, rgb(0xb8b0a2), 0.8f);
            return pebbles(x, y, n, 14, 320, g, rgb(0x9a8f80), 0.25f);
        }
        case 2: {  // dry meadow: straw and green over earth
            Color earth = mix(rgb(0x6b5535), rgb(0x8a7045), fine);
            float straw = tfbm(x, y * 0.25f, n, 48, 330, 3);
            Color grass = mix(rgb(0x7b8a3a), rgb(0xb5a25a), straw);
            Color mixed = mix(earth, scaled(grass, 0.8f + 0.3f * fine), smooth(0.3f, 0.6f, big + 0.2f * straw));
            return scaled(mixed, 0.85f + 0.3f * hash01((int)x, (int)y, 331));
        }
        default: {  // red clay, dried into cracks
            Color base = mix(rgb(0x8a4a2c), rgb(0xb0653c), big);
            base = scaled(base, 0.88f + 0.22f * fine);
            // Cracks along cell borders, wobbled a little so they do not run straight.
            float wx = x + 6 * (tfbm(x, y, n, 8, 341, 2) - 0.5f), wy = y + 6 * (tfbm(x, y, n, 8, 342, 2) - 0.5f);
            float e = cellEdge(wx / n * 5, wy / n * 5, 5, 340) * n / 5;
            float crack = smooth(1.6f, 0.3f, e);
            return mix(base, rgb(0x3c2014), 0.7f * crack);
        }
        }
    });
    return c.toRGBA8();
}

bvw::RGBA8Image road() {
    const int n = 256;
    Canvas c(n, n);
    c.fillWith([&](float x, float y) {
        float patch = tfbm(x, y, n, 3, 400);
        float grain = hash01((int)x, (int)y, 401);
        Color base = mix(rgb(0x4b4d52), rgb(0x5d5f63), patch);
        base = scaled(base, 0.82f + 0.3f * grain);
        // Bright stone chips in the mix, and darker tar where the surface was repaired.
        if (hash01((int)x, (int)y, 402) > 0.985f) base = rgb(0x9a9a98);
        float tar = smooth(0.62f, 0.7f, tfbm(x, y, n, 5, 403));
        return mix(base, rgb(0x2c2d31), 0.6f * tar);
    });
    return c.toRGBA8();
}

bvw::RGBA8Image grass() {
    const int n = 256;
    Canvas c(n, n);
    c.fillWith([&](float x, float y) {
        float clump = tfbm(x, y, n, 6, 500);
        float alpha = 0.55f + 0.45f * smooth(0.35f, 0.65f, clump);
        return withAlpha(scaled(mix(rgb(0x3e7a2a), rgb(0x69a23c), clump), 0.85f), alpha);
    });
    // Blades: short strokes that wrap round the edges.
    Rng rng(501);
    for (int i = 0; i < 2600; i++) {
        float x = rng.range(0, n), y = rng.range(0, n), len = rng.range(5, 12), lean = rng.range(-0.5f, 0.5f);
        Color col = mix(rgb(0x4f8f2e), rgb(0xa4c95a), rng.uniform());
        for (int dx = -1; dx <= 1; dx++)
            for (int dy = -1; dy <= 1; dy++) {
                float ox = x + dx * n, oy = y + dy * n;
                if (ox < -20 || ox > n + 20 || oy < -20 || oy > n + 20) continue;
                c.line(ox, oy, ox + lean * len, oy - len, 1.3f, withAlpha(col, 0.9f));
            }
    }
    return c.toRGBA8();
}

// Tyres in a wall seen from the side: rows of rounded flanks, alternately painted.
bvw::RGBA8Image tyreWall(bool painted) {
    const int n = 128;
    Canvas c(n, n, rgb(0x111114));
    for (int row = 0; row < 2; row++)
        for (int i = -1; i < 3; i++) {
            float cx = (i + 0.5f + (row ? 0.5f : 0)) * n / 2, cy = (row + 0.5f) * n / 2;
            bool white = painted && ((i + row) % 2 + 2) % 2 == 0;
            Color body = painted ? (white ? rgb(0xe8e6e0) : rgb(0xc8281e)) : rgb(0x262629);
            for (int wrapx = -1; wrapx <= 1; wrapx++) {
                float x0 = cx - n / 4.0f + 1 + wrapx * n, x1 = cx + n / 4.0f - 1 + wrapx * n;
                float y0 = cy - n / 4.0f + 2, y1 = cy + n / 4.0f - 2;
                c.paint(x0, y0, x1, y1, [&](float x, float y) {
                    float d = sdBox(x, y, (x0 + x1) / 2, (y0 + y1) / 2, (x1 - x0) / 2, (y1 - y0) / 2, 14);
                    float round = 1 - std::pow(std::fabs(y - (y0 + y1) / 2) / ((y1 - y0) / 2), 2.0f);
                    Color col = scaled(body, 0.55f + 0.55f * round);
                    // Tread grooves on the unpainted rubber.
                    if (!painted && ((int)(x / 3)) % 2 == 0) col = scaled(col, 0.85f);
                    return withAlpha(col, cover(d));
                });
            }
        }
    return c.toRGBA8();
}

bvw::RGBA8Image tyreTops() {
    const int n = 128;
    Canvas c(n, n, rgb(0x1a1a1c));
    for (int i = 0; i < 2; i++)
        for (int j = -1; j <= 2; j++) {
            float cx = (i + 0.5f) * n / 2, cy = (j + 0.5f) * n / 2;
            bool white = ((i + j) % 2 + 2) % 2 == 0;
            Color paint = white ? rgb(0xe8e6e0) : rgb(0xc8281e);
            c.circle(cx, cy, n / 4.0f - 1, scaled(paint, 0.9f));
            c.ring(cx, cy, n / 4.0f - 7, 5, scaled(paint, 0.7f));
            c.circle(cx, cy, n / 8.0f, rgb(0x0a0a0b));  // the hole
        }
    return c.toRGBA8();
}

bvw::RGBA8Image fence() {
    const int n = 128;
    Canvas c(n, n, {0.5f, 0.55f, 0.55f, 0});
    // Chain-link: two families of diagonal wires, eight diamonds across.
    c.paintAll([&](float x, float y) {
        float u = (x + y) / n * 8, v = (x - y) / n * 8;
        float du = std::fabs(u - std::round(u)) * n / 8 / 1.414f, dv = std::fabs(v - std::round(v)) * n / 8 / 1.414f;
        float d = std::min(du, dv) - 0.9f;
        float shine = 0.75f + 0.25f * std::sin(u * TAU * 0.5f);
        return withAlpha(scaled(rgb(0xb8c0c4), shine), d < 0 ? 1.0f : 0.0f);
    });
    // Top and bottom rails.
    c.box(0, 0, n, 5, rgb(0x8c9498));
    c.box(0, n - 5, n, n, rgb(0x8c9498));
    return c.toRGBA8(rgb(0xb8c0c4, 0));
}

// ---- plants: binary alpha, because the game alpha-tests them without blending ----

struct Leafy {
    Canvas c;
    explicit Leafy(int n) : c(n, n) {}
    // A clump of leaves lit from the upper left.
    void blob(Rng& rng, float cx, float cy, float rx, float ry, Color dark, Color light, int leaves, float leaf) {
        for (int i = 0; i < leaves; i++) {
            float a = rng.range(0, TAU), r = std::sqrt(rng.uniform());
            float x = cx + std::cos(a) * r * rx, y = cy + std::sin(a) * r * ry;
            float lit = clamp01(0.5f - 0.5f * ((x - cx) / rx + (y - cy) / ry) * 0.7f + rng.range(-0.2f, 0.2f));
            c.circle(x, y, leaf * rng.range(0.7f, 1.2f), mix(dark, light, lit));
        }
    }
};

bvw::RGBA8Image finishPlant(Canvas& c) {
    // Hard edges: any coverage becomes a solid pixel or nothing.
    for (size_t i = 0; i < (size_t)c.w * c.h; i++) {
        float* q = &c.p[i * 4];
        if (q[3] >= 0.5f) {
            for (int k = 0; k < 3; k++) q[k] /= q[3];
            q[3] = 1;
        } else {
            q[0] = q[1] = q[2] = q[3] = 0;
        }
    }
    return c.toRGBA8();
}

bvw::RGBA8Image plant(int kind) {
    const int n = 256;
    Leafy l(n);
    Canvas& c = l.c;
    Rng rng(600 + kind);
    switch (kind) {
    case 0:  // cypress: a tall dark flame
        c.box(124, 220, 132, 255, rgb(0x4a3220));
        for (int i = 0; i < 900; i++) {
            float t = rng.uniform();  // 0 top, 1 bottom
            float y = 8 + t * 222, half = 36 * std::sqrt(t) * (1.15f - 0.55f * t * t);
            float x = 128 + rng.range(-1, 1) * half;
            float lit = clamp01(0.55f - (x - 128) / 80 + rng.range(-0.25f, 0.25f));
            c.circle(x, y, rng.range(3, 6), mix(rgb(0x12301a), rgb(0x3f6e35), lit));
        }
        break;
    case 1: {  // broad-leaved tree: a trunk with branches and three crowns
        c.polygon({116, 255, 140, 255, 134, 150, 122, 150}, rgb(0x5a3f2a));
        c.line(128, 170, 84, 110, 7, rgb(0x5a3f2a));
        c.line(130, 160, 176, 104, 7, rgb(0x5a3f2a));
        l.blob(rng, 128, 80, 70, 60, rgb(0x1f4a1c), rgb(0x7fb048), 700, 7);
        l.blob(rng, 80, 112, 44, 36, rgb(0x1f4a1c), rgb(0x6fa040), 300, 7);
        l.blob(rng, 178, 108, 44, 38, rgb(0x1f4a1c), rgb(0x6fa040), 300, 7);
        break;
    }
    case 2:  // fir: tiers of drooping boughs
        c.box(123, 200, 133, 255, rgb(0x4a3220));
        for (int tier = 0; tier < 8; tier++) {
            float top = 6 + tier * 26, width = 14 + tier * 13;
            std::vector<float> tri = {128, top, 128 + width, top + 50, 128 - width, top + 50};
            c.polygon(tri, rgb(0x15351f));
            std::vector<float> lit = {128, top + 3, 128 - width + 6, top + 46, 124, top + 42};
            c.polygon(lit, rgb(0x2d5a32));
        }
        break;
    case 3:  // flowering oleander bush
        l.blob(rng, 128, 190, 110, 60, rgb(0x1d4420), rgb(0x5a9040), 1400, 6);
        for (int i = 0; i < 160; i++) {
            float a = rng.range(0, TAU), r = std::sqrt(rng.uniform());
            float x = 128 + std::cos(a) * r * 100, y = 190 + std::sin(a) * r * 52;
            c.circle(x, y, rng.range(2.5f, 4.5f), mix(rgb(0xe0407a), rgb(0xffb0d0), rng.uniform()));
        }
        c.box(60, 246, 196, 256, rgb(0x2a3a1c));
        break;
    default:  // reeds and tall grass
        for (int i = 0; i < 220; i++) {
            float x = rng.range(40, 216), hgt = rng.range(90, 230), lean = rng.range(-40, 40);
            Color col = mix(rgb(0x4f7a2a), rgb(0xc9c070), rng.uniform() * 0.7f);
            c.line(x, 255, x + lean, 255 - hgt, rng.range(2, 3.5f), col);
            if (rng.uniform() < 0.18f)  // seed heads
                c.line(x + lean, 255 - hgt, x + lean * 1.08f, 255 - hgt - 16, 6, rgb(0x7a5a32));
        }
        break;
    }
    return finishPlant(c);
}

bvw::RGBA8Image gridMark() {
    // A painted starting-grid bracket, worn by tyres; blended at half strength.
    const int n = 128;
    Canvas c(n, n);
    c.box(10, 10, 118, 22, {1, 1, 1, 1});
    c.box(10, 10, 22, 118, {1, 1, 1, 1});
    c.box(106, 10, 118, 118, {1, 1, 1, 1});
    for (size_t i = 0; i < (size_t)n * n; i++) {
        float x = (float)(i % n), y = (float)(i / n);
        float wear = smooth(0.35f, 0.7f, fbm(x / 10, y / 10, 3, 0, 700));
        for (int k = 0; k < 4; k++) c.p[i * 4 + k] *= 0.55f + 0.45f * wear;
    }
    return c.toRGBA8({1, 1, 1, 0});
}

bvw::RGBA8Image chequer() {
    const int n = 256;
    Canvas c(n, n / 2);
    c.fillWith([&](float x, float y) {
        int i = (int)(x / 32), j = (int)(y / 32);
        float cloth = 0.9f + 0.1f * std::sin(x / n * TAU * 2) + 0.05f * hash01((int)x, (int)y, 800);
        Color col = (i + j) % 2 ? rgb(0x141416) : rgb(0xf4f4f0);
        return withAlpha(scaled(col, cloth), 1);
    });
    return c.toRGBA8();
}

bvw::RGBA8Image standShadow() {
    // Seen from above: a square platform on four legs, all softened.
    const int n = 128;
    Canvas shape(n, n);
    shape.box(34, 34, 94, 94, {0, 0, 0, 1}, 6);
    for (int k = 0; k < 4; k++) shape.circle(k % 2 ? 100 : 28, k / 2 ? 100 : 28, 8, {0, 0, 0, 1});
    Mask m = shape.alphaMask().blurred(10);
    Canvas c(n, n);
    c.drawMask(m, 0, 0, {0, 0, 0, 0.75f});
    return c.toRGBA8({0, 0, 0, 0});
}

}  // namespace

void trackPictures(std::vector<Picture>& out) {
    for (int i = 0; i < 4; i++)
        out.push_back({"Textures/Tdirt" + std::to_string(i + 1) + ".tga", 24, false, [i] { return dirt(i); }});
    out.push_back({"Textures/Troad1.tga", 24, false, road});
    out.push_back({"Textures/Tgrass.tga", 32, false, grass});
    out.push_back({"Textures/Tfront.tga", 24, true, [] { return tyreWall(true); }});
    out.push_back({"Textures/Tback.tga", 24, true, [] { return tyreWall(false); }});
    out.push_back({"Textures/Ttop.tga", 24, true, tyreTops});
    out.push_back({"Textures/Cshadowmap.tga", 32, true, standShadow});
    out.push_back({"Textures/Tfence.tga", 32, true, fence});
    for (int i = 0; i < 5; i++)
        out.push_back({"Textures/Nature" + std::to_string(i + 1) + ".tga", 32, true, [i] { return plant(i); }});
    out.push_back({"Textures/Pole.tga", 32, true, gridMark});
    out.push_back({"Textures/Finish.tga", 32, true, chequer});
}

}  // namespace gen

// Textures for the models: the sky dome, the kart and its driver, and the
// materials of the roadside scenery. The kart paint is light grey and white
// because the game tints it with the kart's colour.

#include <cstdio>

#include "datagen/canvas.h"
#include "datagen/content.h"
#include "datagen/noise.h"
#include "datagen/text.h"
#include "datagen/theme.h"

namespace gen {

namespace {

const float TAU = 6.28318531f;

float tfbm(float x, float y, int w, int h, int cells, unsigned seed, int octaves = 5) {
    return fbm(x / w * cells, y / h * cells * h / w, octaves, cells, seed);
}

bvw::RGBA8Image sky() {
    // Wrapped round a dome: u goes round the horizon (seamless), v from the
    // horizon (bottom row) up to the zenith (top row). The evening of the
    // splash and the menus: night blue overhead, dusk blue, a warm band low
    // down and lilac-to-peach clouds. The eye on the track sees mostly the
    // lowest third of the dome, so the colours change there; the track's fog
    // is laid over all of it, so they are stronger than the menu's, and the
    // bottom row is the fog's own colour, where the ground fades into it.
    const int w = 512, h = 256;
    const Color fog = rgb(0x86867f);
    Canvas c(w, h);
    c.fillWith([&](float x, float y) {
        float up = 1 - y / h;  // 0 horizon, 1 zenith
        Color col = mix(rgb(0xffc070), rgb(0xf08a48), smooth(0.0f, 0.06f, up));
        col = mix(col, rgb(0x3848b8), smooth(0.05f, 0.22f, up));
        col = mix(col, rgb(0x101848), smooth(0.2f, 0.75f, up));
        // Long low clouds, lilac in the blue, lit peach underneath nearer the sun's glow.
        float cloud = fbm(x / w * 8, y / h * 9, 6, 8, 1000);
        float amount = smooth(0.45f, 0.62f, cloud) * smooth(0.025f, 0.06f, up) * (1 - smooth(0.3f, 0.6f, up));
        Color cl = mix(rgb(0xffb88a), rgb(0x7050b0), smooth(0.04f, 0.16f, up));
        cl = mix(cl, rgb(0xffd8b0), 0.6f * smooth(0.55f, 0.75f, cloud) * (1 - smooth(0.1f, 0.25f, up)));
        col = mix(col, cl, 0.9f * amount);
        return mix(fog, col, smooth(0.0f, 0.03f, up));
    });
    return c.toRGBA8();
}

bvw::RGBA8Image kartPaint() {
    const int n = 256;
    Canvas c(n, n, rgb(0xf2f2f2));
    // Panel seams and a racing stripe in a darker grey that the tint keeps.
    c.box(0, 104, n, 152, rgb(0xbdbdbd));
    c.box(0, 112, n, 144, rgb(0xe0e0e0));
    for (int i = 0; i < 4; i++) c.box(i * 64.0f, 0, i * 64.0f + 2, n, rgb(0xc8c8c8));
    // A number disc.
    c.circle(192, 56, 34, rgb(0xffffff));
    c.ring(192, 56, 34, 4, rgb(0x303030));
    drawText(c, SANS_BOLD, 40, 192, 71, "7", rgb(0x202020), CENTER);
    drawFancyText(c, SANS_OBLIQUE_BOLD, 30, 64, 216, "BV", rgb(0xffffff), rgb(0xd0d0d0), rgb(0x303030), 2, CENTER, 1, 0,
                  0, 0);
    c.paintAll([&](float x, float y) { return Color{0, 0, 0, 0.05f * hash01((int)x, (int)y, 1010)}; });
    return c.toRGBA8();
}

bvw::RGBA8Image suit() {
    const int n = 256;
    Canvas c(n, n, rgb(0x1c3c8c));
    c.box(0, 96, n, 160, rgb(0xf0f0f0));
    c.box(0, 108, n, 148, rgb(0xff8a1a));
    // Quilted fabric.
    c.paintAll([&](float x, float y) {
        float q = 0.5f + 0.5f * std::sin(x / n * TAU * 16) * std::sin(y / n * TAU * 16);
        return Color{0, 0, 0, 0.12f * q};
    });
    drawText(c, SANS_BOLD, 22, 64, 40, "VOLTARO", rgb(0xffffff), CENTER);
    drawText(c, SANS_BOLD, 22, 192, 220, "GRANITO", rgb(0xffd040), CENTER);
    return c.toRGBA8();
}

bvw::RGBA8Image helmet() {
    const int n = 256;
    Canvas c(n, n, rgb(0xf4f4f4));
    // Round the helmet (u): flames from the front.
    c.paintAll([&](float x, float y) {
        float flame = 80 + 40 * std::sin(x / n * TAU * 6) + 20 * std::sin(x / n * TAU * 13);
        float k = cover(y - (n - flame));
        return withAlpha(mix(rgb(0xffd02a), rgb(0xe0301a), clamp01((y - (n - flame)) / 60)), k);
    });
    c.box(0, 60, n, 76, rgb(0x202a4a));
    c.box(0, 0, n, 40, rgb(0x202a4a));  // the visor band
    c.box(0, 6, n, 14, rgb(0x5a7ab0, 0.8f));
    return c.toRGBA8();
}

bvw::RGBA8Image tyre() {
    const int n = 128;
    Canvas c(n, n, rgb(0x1b1b1d));
    c.paintAll([&](float x, float y) {
        // Chevron tread across the width (u), repeating round the wheel (v).
        float v = y / n * 16 + std::fabs(x / n - 0.5f) * 2;
        float groove = std::fabs(v - std::round(v));
        float edge = smooth(0.06f, 0.12f, std::fabs(x / n - 0.5f) * 2 - 0.72f);
        return Color{0.05f, 0.05f, 0.055f, (groove < 0.12f ? 0.9f : 0.0f) * (1 - edge)};
    });
    return c.toRGBA8();
}

bvw::RGBA8Image metal() {
    const int n = 128;
    Canvas c(n, n);
    c.fillWith([&](float x, float y) {
        float brushed = valueNoise(x / 40, y * 1.5f, 0, 1100);
        float spots = tfbm(x, y, n, n, 4, 1101);
        return scaled(rgb(0xa8adb5), 0.82f + 0.18f * brushed + 0.1f * spots);
    });
    return c.toRGBA8();
}

bvw::RGBA8Image wood() {
    const int n = 256;
    Canvas c(n, n);
    c.fillWith([&](float x, float y) {
        int plank = (int)(y / 32);
        float grain = tfbm(x * 0.25f, y * 4, n, n, 4, 1200 + plank, 4);
        float rings = 0.5f + 0.5f * std::sin((x / n * 6 + grain * 3 + plank) * TAU);
        Color col = mix(rgb(0x8a5a32), rgb(0xb88050), rings * 0.6f + 0.2f * hash01(plank, 0, 1201));
        if (std::fmod(y, 32.0f) < 2) col = rgb(0x3a2412);
        return col;
    });
    return c.toRGBA8();
}

bvw::RGBA8Image stone() {
    const int n = 256;
    Canvas c(n, n, rgb(0x6e6a62));
    // Irregular courses of dressed stone with mortar between.
    for (int row = 0; row < 8; row++) {
        float x = -hash01(row, 0, 1300) * 60;
        while (x < n) {
            float wdt = 40 + 40 * hash01((int)x, row, 1301);
            float shade = 0.8f + 0.3f * hash01((int)x, row, 1302);
            Color base = scaled(mix(rgb(0xb8ad98), rgb(0x9a9488), hash01((int)x, row, 1303)), shade);
            for (int wrap = 0; wrap <= 1; wrap++) {
                float ox = x + wrap * n;
                c.paint(ox, row * 32.0f, ox + wdt, row * 32.0f + 32, [&](float px, float py) {
                    float d = sdBox(px, py, ox + wdt / 2, row * 32.0f + 16, wdt / 2 - 2, 14, 4);
                    float t = fbm(px / 9, py / 9, 3, 0, 1304);
                    return withAlpha(scaled(base, 0.85f + 0.3f * t), cover(d));
                });
            }
            x += wdt;
        }
    }
    return c.toRGBA8();
}

bvw::RGBA8Image tribune() {
    // A grandstand seen from the track: rows of seats with a crowd.
    const int n = 256;
    Canvas c(n, n, rgb(0x8a8d92));
    Rng rng(1400);
    for (int row = 0; row < 8; row++) {
        float y = row * 32.0f;
        c.box(0, y + 24, n, y + 32, rgb(0x5c6066));
        for (int seat = 0; seat < 16; seat++) {
            float x = seat * 16.0f;
            c.box(x + 2, y + 10, x + 14, y + 24, row % 2 ? rgb(0x1e5ab4) : rgb(0xe0a020), 3);
            if (rng.uniform() < 0.7f) {  // a spectator
                Color shirt = mix(rgb(0xd03020), rgb(0x20a050), rng.uniform());
                shirt = mix(shirt, rgb(0xf0f0f0), rng.uniform() * 0.5f);
                c.box(x + 3, y + 12, x + 13, y + 26, shirt, 4);
                c.circle(x + 8, y + 8, 4.5f, mix(rgb(0xf0c8a0), rgb(0x6a4a30), rng.uniform()));
            }
        }
    }
    return c.toRGBA8();
}

// A drum's side: u round the drum, v up it. The steel drum rusts, the
// plastic one only fades.
bvw::RGBA8Image drum(unsigned body, unsigned hoop, float rusty, unsigned seed) {
    const int w = 128, h = 256;
    Canvas c(w, h);
    c.fillWith([&](float x, float y) {
        float round = 0.75f + 0.25f * std::cos(x / w * TAU);
        Color col = y < 40 || y > 216 ? rgb(0xf0f0f0) : rgb(body);
        if (std::fabs(y - 86) < 4 || std::fabs(y - 170) < 4) col = rgb(hoop);
        float rust = smooth(0.62f, 0.75f, fbm(x / 20, y / 20, 4, 0, seed));
        return scaled(mix(col, rgb(0x7a4a2a), rusty * rust), round);
    });
    return c.toRGBA8();
}

bvw::RGBA8Image barrel() {
    return drum(0xb42a1e, 0x862018, 0.7f, 1500);
}

bvw::RGBA8Image barrel2() {
    return drum(0x1e6ab4, 0x184e86, 0.15f, 1510);
}

bvw::RGBA8Image container() {
    const int n = 256;
    Canvas c(n, n);
    c.fillWith([&](float x, float y) {
        float rib = 0.8f + 0.2f * std::cos(x / n * TAU * 16);
        float dirt = fbm(x / 30, y / 30, 4, 0, 1600);
        Color col = scaled(rgb(0xb8402a), rib * (0.85f + 0.2f * dirt));
        return mix(col, rgb(0x5a3a2a), 0.4f * smooth(0.7f, 1.0f, y / n) * dirt);
    });
    drawText(c, SANS_BOLD, 26, 128, 60, "BRONTE FREIGHT", rgb(0xf0f0e8, 0.9f), CENTER);
    return c.toRGBA8();
}

bvw::RGBA8Image concrete() {
    const int n = 256;
    Canvas c(n, n);
    c.fillWith([&](float x, float y) {
        float t = tfbm(x, y, n, n, 8, 1700);
        float g = hash01((int)x, (int)y, 1701);
        return scaled(rgb(0xa9a69e), 0.8f + 0.2f * t + 0.08f * g);
    });
    return c.toRGBA8();
}

// Direction boards for the four sign models: left and right chevrons, a
// distance marker and a slow-down board.
bvw::RGBA8Image sign(int kind) {
    const int w = 256, h = 128;
    Canvas c(w, h, rgb(0xf4f4f0));
    c.frame(6, 6, w - 6, h - 6, 8, rgb(0xd02a1a), 6);
    if (kind < 2) {
        for (int i = 0; i < 3; i++) {
            float x = 60 + i * 60;
            std::vector<float> chev = {x, 20, x + 36, 64, x, 108, x - 22, 108, x + 14, 64, x - 22, 20};
            if (kind == 0)
                for (size_t k = 0; k < chev.size(); k += 2) chev[k] = w - chev[k];
            c.polygon(chev, rgb(0x1a1a1a));
        }
    } else if (kind == 2) {
        drawText(c, SANS_BOLD, 84, w / 2.0f, 96, "100", rgb(0x1a1a1a), CENTER);
    } else {
        drawText(c, SANS_BOLD, 62, w / 2.0f, 88, "SLOW", rgb(0xd02a1a), CENTER, 1, 4);
    }
    return c.toRGBA8();
}

// The faces of the four sign models share one picture, a quarter each:
// chevrons left and right on top, a tall distance board and a round speed
// sign below.
bvw::RGBA8Image signs() {
    // The canvas counts rows from the picture's bottom edge up.
    const int n = 256, q = 128;
    Canvas c(n, n, rgb(0x6a6a6a));
    for (int k = 0; k < 2; k++) {
        float x0 = k * q, y0 = q;
        c.box(x0 + 4, y0 + 4, x0 + q - 4, y0 + q - 4, rgb(0xf4f4f0), 6);
        c.frame(x0 + 4, y0 + 4, x0 + q - 4, y0 + q - 4, 6, rgb(0xd02a1a), 6);
        for (int i = 0; i < 2; i++) {
            float x = x0 + 40 + i * 38;
            std::vector<float> chev = {x, y0 + 24, x + 24, y0 + 64, x, y0 + 104, x - 14, y0 + 104, x + 10, y0 + 64,
                                       x - 14, y0 + 24};
            if (k == 0)
                for (size_t j = 0; j < chev.size(); j += 2) chev[j] = 2 * x0 + q - chev[j];
            c.polygon(chev, rgb(0x1a1a1a));
        }
    }
    c.box(28, 4, q - 28, q - 4, rgb(0xf4f4f0), 4);
    c.frame(28, 4, q - 28, q - 4, 5, rgb(0x1a1a1a), 4);
    for (int bar = 0; bar < 3; bar++) c.box(40, 20 + bar * 34.0f, q - 40, 40 + bar * 34.0f, rgb(0xd02a1a));
    c.circle(q + 64, 64, 58, rgb(0xf4f4f0));
    c.ring(q + 64, 64, 58, 12, rgb(0xd02a1a));
    drawText(c, SANS_BOLD, 48, q + 64.0f, 82.0f, "30", rgb(0x1a1a1a), CENTER);
    return c.toRGBA8();
}

}  // namespace

void modelPictures(std::vector<Picture>& out) {
    out.push_back({"Textures/Sky.tga", 24, false, sky});
    out.push_back({"Textures/Kartpaint.tga", 24, true, kartPaint});
    out.push_back({"Textures/Suit.tga", 24, false, suit});
    out.push_back({"Textures/Helmet.tga", 24, true, helmet});
    out.push_back({"Textures/Tyre.tga", 24, true, tyre});
    out.push_back({"Textures/Metal.tga", 24, false, metal});
    out.push_back({"Textures/Wood.tga", 24, false, wood});
    out.push_back({"Textures/Stone.tga", 24, false, stone});
    out.push_back({"Textures/Tribune.tga", 24, true, tribune});
    out.push_back({"Textures/Barrel.tga", 24, false, barrel});
    out.push_back({"Textures/Barrel2.tga", 24, false, barrel2});
    out.push_back({"Textures/Signs.tga", 24, true, signs});
    out.push_back({"Textures/Container.tga", 24, false, container});
    out.push_back({"Textures/Concrete.tga", 24, false, concrete});
    for (int i = 0; i < 4; i++)
        out.push_back({"Textures/Sign" + std::to_string(i + 1) + ".tga", 24, true, [i] { return sign(i); }});
}

}  // namespace gen

// Advertising boards for made-up sponsors.

#include "datagen/canvas.h"
#include "datagen/content.h"
#include "datagen/noise.h"
#include "datagen/text.h"

namespace gen {

namespace {

const int W = 512, H = 128;

struct Board {
    const char* file;
    const char* name;
    const char* line;
    int top, bottom, ink, accent;
    FontFace face;
    int icon;
};

const Board kBoards[] = {
    {"Ads/voltaro.tga", "VOLTARO", "batteries that go the distance", 0x161616, 0x2a2a2a, 0xffd21e, 0xffffff,
     SANS_OBLIQUE_BOLD, 0},
    {"Ads/nonnailde.tga", "Nonna Ilde", "fresh pasta since 1931", 0xfbf3e0, 0xeadcb8, 0xb0261c, 0x2d7a34, SERIF_BOLD, 1},
    {"Ads/granito.tga", "GRANITO", "tyres with a grip on life", 0x2b2f36, 0x15181c, 0xff8a1a, 0xd8dce2, SANS_BOLD, 2},
    {"Ads/zefiro.tga", "zefiro", "the fizzy mountain breeze", 0x1a8ad8, 0x0c4a9a, 0xffffff, 0xbff0ff,
     SANS_OBLIQUE_BOLD, 3},
    {"Ads/lumaca.tga", "LUMACA OIL", "slow to wear, quick to race", 0x2e6a2a, 0x163a16, 0xf4f0c8, 0xffd24a, SANS_BOLD,
     4},
    {"Ads/bruma.tga", "Cantina Bruma", "wines of the valley", 0x5a1426, 0x2e0812, 0xf2d7a0, 0xe0b060, SERIF_BOLD, 5},
};

void icon(Canvas& c, int kind, float cx, float cy, Color ink, Color accent) {
    switch (kind) {
    case 0:  // lightning bolt
        c.polygon({cx + 10, cy - 44, cx - 22, cy + 6, cx - 2, cy + 6, cx - 12, cy + 44, cx + 22, cy - 8, cx + 2, cy - 8},
                  ink);
        break;
    case 1:  // a wheat ear
        c.line(cx, cy + 44, cx, cy - 40, 4, accent);
        for (int i = 0; i < 5; i++) {
            float y = cy - 30 + i * 14;
            c.polygon({cx, y, cx - 16, y - 12, cx - 4, y + 6}, ink);
            c.polygon({cx, y, cx + 16, y - 12, cx + 4, y + 6}, ink);
        }
        break;
    case 2:  // a tyre
        c.circle(cx, cy, 42, rgb(0x0c0c0e));
        c.ring(cx, cy, 34, 6, rgb(0x2c2c30));
        c.circle(cx, cy, 20, accent);
        c.circle(cx, cy, 8, rgb(0x2c2c30));
        break;
    case 3:  // breeze: three swooshes
        for (int i = 0; i < 3; i++) {
            float y = cy - 24 + i * 24;
            c.paint(cx - 46, y - 12, cx + 46, y + 12, [&](float x, float yy) {
                float curve = y + 8 * std::sin((x - cx) / 14 + i);
                return withAlpha(ink, cover(std::fabs(yy - curve) - 3));
            });
        }
        break;
    case 4:  // a snail
        c.box(cx - 44, cy + 22, cx + 40, cy + 36, accent, 7);
        c.circle(cx - 4, cy, 30, ink);
        c.ring(cx - 4, cy, 18, 6, accent);
        c.circle(cx - 4, cy, 6, accent);
        c.line(cx + 34, cy + 24, cx + 44, cy - 8, 5, accent);
        break;
    default:  // a bunch of grapes
        for (int i = 0; i < 4; i++)
            for (int j = 0; j <= 3 - i; j++) c.circle(cx - (3 - i) * 9 + j * 18, cy - 16 + i * 17, 9, accent);
        c.line(cx, cy - 26, cx + 8, cy - 44, 4, ink);
        break;
    }
}

bvw::RGBA8Image board(const Board& b) {
    Canvas c(W, H);
    c.gradientBox(0, 0, W, H, rgb(b.top), rgb(b.bottom));
    c.paintAll([&](float x, float y) { return Color{1, 1, 1, 0.05f * fbm(x / 40, y / 40, 3, 0, 2000)}; });
    icon(c, b.icon, 70, H / 2.0f, rgb(b.ink), rgb(b.accent));
    TextMask probe = renderText(b.face, 64, b.name, 1, 2, 0);
    float scale = std::min(1.0f, 360 / probe.advance);
    drawFancyText(c, b.face, 64 * scale, 300, 76, b.name, rgb(b.ink), scaled(rgb(b.ink), 0.85f), {0, 0, 0, 0.5f}, 2,
                  CENTER, 1, 2, 3, 2);
    drawText(c, SANS, 19, 300, 108, b.line, rgb(b.accent), CENTER);
    c.frame(3, 3, W - 3, H - 3, 6, {1, 1, 1, 0.85f});
    return c.toRGBA8();
}

}  // namespace

void adPictures(std::vector<Picture>& out) {
    for (const Board& b : kBoards) out.push_back({b.file, 24, true, [&b] { return board(b); }});
}

}  // namespace gen

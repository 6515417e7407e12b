// The splash picture, the loading bar segments, the four menu backgrounds and
// the menu buttons. Backgrounds are laid out on a 1024 x 768 screen (positions
// below are pixels of that screen, y from the top) and stored stretched to
// 1024 x 1024; the game stretches them back over the window.

#include <cstdio>

#include "datagen/canvas.h"
#include "datagen/content.h"
#include "datagen/noise.h"
#include "datagen/text.h"
#include "datagen/theme.h"

namespace gen {

namespace {

const int W = 1024, H = 768;

// Unit screen coordinates (y up) of the menu code into layout pixels.
float sx(float x) {
    return x * W;
}
float sy(float y) {
    return (1 - y) * H;
}

bvw::RGBA8Image stored(const Canvas& layout) {
    return layout.resized(1024, 1024).toRGBA8();
}

// ---- splash ----

bvw::RGBA8Image makeSplash() {
    Canvas c = valleyScene(W, H, 11);
    // A darker band behind the title so it reads over the sky.
    c.paintAll([&](float, float y) { return Color{0.02f, 0.03f, 0.08f, 0.45f * smooth(60, 200, y) * (1 - smooth(330, 470, y))}; });
    drawFancyText(c, SANS_OBLIQUE_BOLD, 124, W / 2.0f, 300, "BRONTEVALLE", rgb(0xffe27a), rgb(0xff7a1a), rgb(0x2a0c05),
                  6, CENTER, 0.96f, 2, 10, 6);
    checkerStripe(c, 190, 332, 834, 346, 7);
    drawFancyText(c, SANS_BOLD, 34, W / 2.0f, 392, "K A R T   R A C I N G", rgb(0xffffff), rgb(0xd8e4ff), rgb(0x101830),
                  3, CENTER, 1, 0, 4, 2);
    // The loading bar's slot (segments span x 424..577, y 645..656).
    c.box(410, 634, 590, 668, {0.02f, 0.03f, 0.06f, 0.94f}, 9);
    c.frame(410, 634, 590, 668, 1.5f, {1, 0.85f, 0.6f, 0.55f}, 9);
    drawText(c, SANS_BOLD, 15, W / 2.0f, 624, "LOADING", {1, 1, 1, 0.85f}, CENTER, 1, 3);
    return stored(c);
}

bvw::RGBA8Image makeSegment(bool filled) {
    Canvas c(60, 44);
    if (filled) {
        c.gradientBox(4, 4, 56, 40, rgb(0xffe070), rgb(0xff6a10), 7);
        c.box(10, 8, 50, 17, {1, 1, 1, 0.45f}, 4);
        c.frame(4, 4, 56, 40, 2, rgb(0x5a1800), 7);
    } else {
        c.box(4, 4, 56, 40, {0.15f, 0.18f, 0.26f, 0.85f}, 7);
        c.frame(4, 4, 56, 40, 2, {0.55f, 0.6f, 0.75f, 0.9f}, 7);
    }
    return c.resized(32, 32).toRGBA8();
}

// ---- the main (race setup) screen ----

// A plate under one of the large lettered buttons, centre and size as in the menu code.
void buttonPlate(Canvas& c, float ux, float uy, float bw, float bh, bool accent) {
    float x0 = sx(ux) - bw / 2 - 10, x1 = sx(ux) + bw / 2 + 10;
    float y0 = sy(uy) - bh / 2 - 6, y1 = sy(uy) + bh / 2 + 6;
    Canvas plate((int)(x1 - x0) + 24, (int)(y1 - y0) + 24);
    plate.box(12, 12, x1 - x0 + 12, y1 - y0 + 12, {1, 1, 1, 1}, 12);
    c.shadow(plate.alphaMask(), (int)x0 - 12 + 4, (int)y0 - 12 + 5, 6, {0, 0, 0, 0.55f});
    Color top = accent ? rgb(0x2f7a34, 0.92f) : rgb(0x1d2b4f, 0.85f);
    Color bottom = accent ? rgb(0x164a1c, 0.92f) : rgb(0x0c1428, 0.85f);
    c.gradientBox(x0, y0, x1, y1, top, bottom, 12);
    c.frame(x0, y0, x1, y1, 2, accent ? rgb(0x9dff8a, 0.8f) : rgb(0xffb347, 0.75f), 12);
    c.box(x0 + 6, y0 + 9, x0 + 10, y1 - 9, accent ? rgb(0xc8ffb0) : rgb(0xff9a2e), 2);
}

void panel(Canvas& c, float x0, float y0, float x1, float y1) {
    Canvas shape((int)(x1 - x0) + 40, (int)(y1 - y0) + 40);
    shape.box(20, 20, x1 - x0 + 20, y1 - y0 + 20, {1, 1, 1, 1}, 18);
    c.shadow(shape.alphaMask(), (int)x0 - 20 + 6, (int)y0 - 20 + 8, 10, {0, 0, 0, 0.5f});
    c.gradientBox(x0, y0, x1, y1, rgb(0x16203c, 0.86f), rgb(0x0a0f1e, 0.9f), 18);
    c.frame(x0, y0, x1, y1, 2, rgb(0xffb347, 0.6f), 18);
}

// A field the game writes a value into: an inset box.
void field(Canvas& c, float x0, float y0, float x1, float y1) {
    c.box(x0, y0, x1, y1, rgb(0x050810, 0.85f), 6);
    c.frame(x0, y0, x1, y1, 1.5f, rgb(0x7d8fc4, 0.8f), 6);
    c.box(x0 + 3, y0 + 2, x1 - 3, y0 + 5, {1, 1, 1, 0.06f}, 2);
}

void label(Canvas& c, float x, float y, const std::string& text, Align align = LEFT, float size = 19) {
    drawText(c, SANS_BOLD, size, x + 1.5f, y + 1.5f, text, {0, 0, 0, 0.7f}, align);
    drawText(c, SANS_BOLD, size, x, y, text, rgb(0xffd9a0), align);
}

// A socket for an arrow button centred at unit (ux, uy): 20 x 26 pixels.
void arrowSocket(Canvas& c, float ux, float uy) {
    c.circle(sx(ux), sy(uy), 13, rgb(0x05080f, 0.75f));
    c.ring(sx(ux), sy(uy), 13, 1.5f, rgb(0x7d8fc4, 0.6f));
}

bvw::RGBA8Image makeMain() {
    Canvas c = valleyScene(W, H, 23);
    c.paintAll([&](float, float) { return Color{0.02f, 0.03f, 0.08f, 0.25f}; });

    // Title and the version plate under it (the game writes the version at 100, 123).
    drawFancyText(c, SANS_OBLIQUE_BOLD, 66, 52, 92, "BRONTEVALLE", rgb(0xffe27a), rgb(0xff7a1a), rgb(0x2a0c05), 4, LEFT,
                  0.96f, 1, 6, 4);
    checkerStripe(c, 56, 100, 470, 108, 4);
    c.box(66, 115, 134, 131, rgb(0x05080f, 0.7f), 8);

    // The large buttons: about, credits, records in a column, quit and race at the foot.
    buttonPlate(c, 0.14f, 0.72f, 158, 49, false);
    buttonPlate(c, 0.161f, 0.622f, 200, 49, false);
    buttonPlate(c, 0.175f, 0.535f, 229, 36, false);
    buttonPlate(c, 0.115f, 0.109f, 111, 47, false);
    buttonPlate(c, 0.8675f, 0.12f, 161, 41, true);

    // The race-setup form.
    panel(c, 492, 148, 982, 600);
    drawFancyText(c, SANS_BOLD, 24, 512, 182, "RACE SETUP", rgb(0xffffff), rgb(0xffc070), rgb(0x101830), 2, LEFT, 1, 2, 3,
                  2);
    c.box(512, 190, 962, 192, rgb(0xffb347, 0.5f));

    // Name: the field the game types into (0.75, 0.722), 0.275 x 0.04 of the screen.
    label(c, 512, 221, "Driver");
    field(c, sx(0.75f) - 0.1375f * W, sy(0.722f) - 0.02f * H, sx(0.75f) + 0.1375f * W, sy(0.722f) + 0.02f * H);
    // Difficulty: arrows at 0.69 and 0.875, the text centred at 0.77.
    label(c, 512, 271, "Difficulty");
    field(c, sx(0.69f) + 14, sy(0.6565f) - 15, sx(0.875f) - 14, sy(0.6565f) + 15);
    arrowSocket(c, 0.69f, 0.6565f);
    arrowSocket(c, 0.875f, 0.6565f);
    // Opponents: arrows at 0.7225 and 0.8025, the number centred at 0.75.
    label(c, 512, 320, "Opponents");
    field(c, sx(0.7225f) + 14, sy(0.5925f) - 15, sx(0.8025f) - 14, sy(0.5925f) + 15);
    arrowSocket(c, 0.7225f, 0.5925f);
    arrowSocket(c, 0.8025f, 0.5925f);

    // The two previews, 195 x 145 pixels centred at (0.601, 0.401) and (0.824, 0.401).
    for (float ux : {0.601f, 0.824f}) {
        float x0 = sx(ux) - 97.5f, x1 = sx(ux) + 97.5f, y0 = sy(0.401f) - 72.5f, y1 = sy(0.401f) + 72.5f;
        c.box(x0 - 6, y0 - 6, x1 + 6, y1 + 6, rgb(0x05080f, 0.9f), 8);
        c.box(x0, y0, x1, y1, rgb(0x1a2440));
        c.frame(x0 - 3, y0 - 3, x1 + 3, y1 + 3, 2, rgb(0xffb347, 0.8f), 6);
        for (int k = 0; k < 4; k++) {  // corner ticks
            float cx = k % 2 ? x1 + 3 : x0 - 3, cy = k / 2 ? y1 + 3 : y0 - 3;
            c.circle(cx, cy, 4, rgb(0xffd9a0));
        }
    }
    label(c, sx(0.601f), 372, "Kart", CENTER);
    label(c, sx(0.824f), 372, "Track", CENTER);
    // Colour and track selectors under the previews.
    field(c, sx(0.515f) + 14, sy(0.280292f) - 13, sx(0.688f) - 14, sy(0.280292f) + 13);
    arrowSocket(c, 0.515f, 0.280292f);
    arrowSocket(c, 0.688f, 0.280292f);
    field(c, sx(0.737f) + 14, sy(0.280292f) - 13, sx(0.9105f) - 14, sy(0.280292f) + 13);
    arrowSocket(c, 0.737f, 0.280292f);
    arrowSocket(c, 0.9105f, 0.280292f);
    label(c, sx(0.601f), 590, "colour", CENTER, 14);
    label(c, sx(0.824f), 590, "circuit", CENTER, 14);
    return stored(c);
}

// ---- About, Credits, Records ----

// The panel's foot, lower on the Credits screen, whose list runs further down.
Canvas subScreen(const std::string& title, int seed, float panelBottom = 640) {
    Canvas c = valleyScene(W, H, seed);
    c.paintAll([&](float, float) { return Color{0.02f, 0.03f, 0.08f, 0.35f}; });
    drawFancyText(c, SANS_OBLIQUE_BOLD, 40, 40, 62, "BRONTEVALLE", rgb(0xffe27a), rgb(0xff7a1a), rgb(0x2a0c05), 3, LEFT,
                  0.96f, 1, 4, 3);
    panel(c, 212, 130, 812, panelBottom);
    drawFancyText(c, SANS_BOLD, 40, W / 2.0f, 196, title, rgb(0xffffff), rgb(0xffc070), rgb(0x101830), 3, CENTER, 1, 3,
                  4, 3);
    checkerStripe(c, 362, 210, 662, 218, 4);
    buttonPlate(c, 0.1275f, 0.118f, 136, 36, false);
    return c;
}

// A key cap with an arrow on it, pointing at angle degrees (0 up, clockwise).
void keyCap(Canvas& c, float cx, float cy, float angle) {
    c.box(cx - 17, cy - 15, cx + 17, cy + 19, {0, 0, 0, 0.5f}, 6);
    c.gradientBox(cx - 17, cy - 17, cx + 17, cy + 15, rgb(0xe8ecf5), rgb(0xa9b2c8), 6);
    float a = angle * 3.14159265f / 180, s = std::sin(a), co = std::cos(a);
    auto pt = [&](float u, float v) { return std::vector<float>{cx + u * co - v * s, cy - 1 + u * s + v * co}; };
    std::vector<float> tri;
    for (auto q : {pt(0, -9), pt(8, 5), pt(-8, 5)}) tri.insert(tri.end(), q.begin(), q.end());
    c.polygon(tri, rgb(0x1d2b4f));
}

bvw::RGBA8Image makeAbout() {
    Canvas c = subScreen("ABOUT", 31);
    // Key caps beside the control headings (texts at y 330, 407, 484).
    keyCap(c, 380, sy(0.555f), 0);
    keyCap(c, 644, sy(0.555f), 0);
    keyCap(c, 380, sy(0.455f), 180);
    keyCap(c, 644, sy(0.455f), 180);
    // The steering line is the widest text ("Mouse left/right or", 401 to
    // 623): its caps stand clear of it.
    keyCap(c, 324, sy(0.34f), 270);
    keyCap(c, 362, sy(0.34f), 90);
    keyCap(c, 662, sy(0.34f), 270);
    keyCap(c, 700, sy(0.34f), 90);
    c.box(300, sy(0.255f) - 1, 724, sy(0.255f) + 1, rgb(0xffb347, 0.4f));
    return stored(c);
}

bvw::RGBA8Image makeCredits() {
    // The last tester's line stands at y 0.15 (653 down the screen).
    Canvas c = subScreen("CREDITS", 37, 678);
    c.box(330, sy(0.695f) + 22, 694, sy(0.695f) + 24, rgb(0xffb347, 0.4f));
    return stored(c);
}

bvw::RGBA8Image makeRecords() {
    Canvas c = subScreen("LAP RECORDS", 41);
    label(c, 344, sy(0.65f) - 26, "driver", LEFT, 15);
    label(c, 686, sy(0.65f) - 26, "lap time", RIGHT, 15);
    for (int i = 0; i < 10; i++) {
        float y = sy(0.65f - 0.05f * i);
        c.box(290, y - 16, 706, y + 16, i % 2 ? Color{1, 1, 1, 0.05f} : Color{1, 1, 1, 0.11f}, 6);
        char rank[8];
        snprintf(rank, sizeof rank, "%d", i + 1);
        Color medal = i == 0 ? rgb(0xffd24a) : i == 1 ? rgb(0xd0d6e0) : i == 2 ? rgb(0xd08a4a) : rgb(0x56648a);
        c.circle(312, y, 13, medal);
        drawText(c, SANS_BOLD, 15, 312, y + 5.5f, rank, rgb(0x101830), CENTER);
    }
    return stored(c);
}

// ---- buttons ----

// Letters filling a button of bw x bh screen pixels, stored at sw x sh.
bvw::RGBA8Image lettered(const std::string& text, float bw, float bh, int sw, int sh, bool accent) {
    const float k = 3;  // drawn at three times the screen size, then filtered down
    Canvas c((int)std::lround(bw * k), (int)std::lround(bh * k));
    float px = bh * k * 0.78f;
    TextMask probe = renderText(SANS_BOLD, px, text, 1, 0, 0);
    float widest = bw * k * 0.86f;
    float scaleX = 1;
    if (probe.advance > widest) {
        scaleX = std::max(0.8f, widest / probe.advance);
        if (probe.advance * scaleX > widest) px *= widest / (probe.advance * scaleX);
    }
    FaceMetrics m = faceMetrics(SANS_BOLD, px);
    float baseline = c.h / 2.0f + m.capHeight / 2;
    Color top = accent ? rgb(0xeaffd8) : rgb(0xfff4d6), bottom = accent ? rgb(0x6fe05a) : rgb(0xffa436);
    drawFancyText(c, SANS_BOLD, px, c.w / 2.0f, baseline, text, top, bottom, rgb(0x1a0a04), 2.2f * k, CENTER, scaleX,
                  0, 2 * k, 1.5f * k);
    return c.resized(sw, sh).toRGBA8();
}

bvw::RGBA8Image arrow(bool increment) {
    Canvas c(80, 104);
    std::vector<float> tri = {62, 16, 62, 88, 16, 52};
    Canvas shape(80, 104);
    shape.polygon(tri, {1, 1, 1, 1});
    Mask m = shape.alphaMask();
    Mask outline = m.dilated(7);
    c.drawMask(outline, 0, 0, rgb(0x1a0a04));
    c.paintAll([&](float x, float y) {
        float a = m.at((int)x, (int)y);
        return withAlpha(mix(rgb(0xfff4d6), rgb(0xff8a20), clamp01((y - 16) / 72)), a);
    });
    if (increment) c = c.flippedX();
    return c.resized(32, 32).toRGBA8();
}

}  // namespace

void guiPictures(std::vector<Picture>& out) {
    out.push_back({"GUI/t.tga", 24, true, makeSplash});
    out.push_back({"GUI/0.tga", 32, false, [] { return makeSegment(false); }});
    out.push_back({"GUI/1.tga", 32, false, [] { return makeSegment(true); }});
    out.push_back({"GUI/main.tga", 24, true, makeMain});
    out.push_back({"GUI/about.tga", 24, true, makeAbout});
    out.push_back({"GUI/credits.tga", 24, true, makeCredits});
    out.push_back({"GUI/records.tga", 24, true, makeRecords});
    out.push_back({"GUI/aboutB.tga", 32, true, [] { return lettered("About", 158, 49, 256, 64, false); }});
    out.push_back({"GUI/creditsB.tga", 32, true, [] { return lettered("Credits", 200, 49, 256, 64, false); }});
    out.push_back({"GUI/recordsB.tga", 32, true, [] { return lettered("Records", 229, 36, 256, 64, false); }});
    out.push_back({"GUI/raceB.tga", 32, true, [] { return lettered("RACE!", 161, 41, 256, 64, true); }});
    out.push_back({"GUI/quitB.tga", 32, true, [] { return lettered("Quit", 111, 47, 128, 64, false); }});
    out.push_back({"GUI/backB.tga", 32, true, [] { return lettered("Back", 136, 36, 256, 64, false); }});
    out.push_back({"GUI/decB.tga", 32, false, [] { return arrow(false); }});
    out.push_back({"GUI/incB.tga", 32, false, [] { return arrow(true); }});
}

}  // namespace gen

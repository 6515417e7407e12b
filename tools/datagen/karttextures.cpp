// The kart's own pictures: speed dial and needle, shadow blobs, the tyre mark,
// the cartoon face, and the two lens-flare sprites.

#include <cstdio>

#include "datagen/canvas.h"
#include "datagen/content.h"
#include "datagen/noise.h"
#include "datagen/text.h"

namespace gen {

namespace {

const float PI = 3.14159265f;

// The dial turns the needle clockwise by 320 degrees at 25 units per second
// (90 km/h). Angles here are clockwise from twelve o'clock; the needle rests at
// kRest, just past six, so the scale runs up the left side, over the top and
// ends at 160 degrees, leaving a gap at the bottom.
const float kRest = 200.0f, kSweep = 320.0f, kTopKmh = 90.0f;

void polar(float cx, float cy, float r, float degrees, float& x, float& y) {
    float a = degrees * PI / 180;
    x = cx + r * std::sin(a);
    y = cy - r * std::cos(a);
}

bvw::RGBA8Image hud() {
    const int n = 256;
    const float c = n / 2.0f, R = n / 2.0f - 3;
    Canvas cv(n, n);
    // Bezel, then the face.
    cv.paint(0, 0, n, n, [&](float x, float y) {
        float d = std::hypot(x - c, y - c);
        float k = cover(d - R);
        float lit = 0.5f - 0.5f * ((x - c) + (y - c)) / (1.414f * R);
        return withAlpha(mix(rgb(0x50545c), rgb(0xe6e9ee), lit), k);
    });
    cv.paint(0, 0, n, n, [&](float x, float y) {
        float d = std::hypot(x - c, y - c);
        Color face = mix(rgb(0x232a3c), rgb(0x0b0e16), clamp01(d / (R - 10)));
        return withAlpha(face, cover(d - (R - 9)));
    });
    // Red zone over the last 15 km/h.
    float redFrom = kRest + kSweep * 75 / kTopKmh, redTo = kRest + kSweep;
    cv.paint(0, 0, n, n, [&](float x, float y) {
        float d = std::hypot(x - c, y - c);
        float a = std::atan2(x - c, -(y - c)) * 180 / PI;
        if (a < 0) a += 360;
        float aa = a < kRest ? a + 360 : a;
        bool inside = aa >= redFrom && aa <= redTo;
        float band = cover(std::fabs(d - (R - 20)) - 6);
        return withAlpha(rgb(0xe02a1a), inside ? band : 0.0f);
    });
    // Ticks every 5 km/h, long and numbered every 10.
    for (int kmh = 0; kmh <= (int)kTopKmh; kmh += 5) {
        float a = kRest + kSweep * kmh / kTopKmh;
        bool major = kmh % 10 == 0;
        float x0, y0, x1, y1;
        polar(c, c, R - 12, a, x0, y0);
        polar(c, c, R - (major ? 32 : 24), a, x1, y1);
        cv.line(x0, y0, x1, y1, major ? 4.0f : 2.0f, rgb(0xf4f4f4));
        if (major) {
            char label[8];
            snprintf(label, sizeof label, "%d", kmh);
            float tx, ty;
            polar(c, c, R - 50, a, tx, ty);
            drawText(cv, SANS_BOLD, 19, tx, ty + 7, label, rgb(0xffffff), CENTER);
        }
    }
    drawText(cv, SANS_BOLD, 16, c, c + 40, "km/h", rgb(0xffb347), CENTER);
    drawText(cv, SANS_OBLIQUE_BOLD, 11, c, c - 44, "BRONTEVALLE", {1, 1, 1, 0.45f}, CENTER, 1, 1);
    return cv.toRGBA8();
}

bvw::RGBA8Image needle() {
    const int n = 256;
    const float c = n / 2.0f, R = n / 2.0f - 3;
    Canvas cv(n, n);
    float tx, ty, lx, ly, rx, ry, bx, by;
    polar(c, c, R - 16, kRest, tx, ty);
    polar(c, c, 7, kRest - 90, lx, ly);
    polar(c, c, 7, kRest + 90, rx, ry);
    polar(c, c, 22, kRest + 180, bx, by);
    Canvas shape(n, n);
    shape.polygon({tx, ty, lx, ly, bx, by, rx, ry}, {1, 1, 1, 1});
    cv.shadow(shape.alphaMask(), 3, 4, 3, {0, 0, 0, 0.5f});
    cv.polygon({tx, ty, lx, ly, bx, by, rx, ry}, rgb(0xff3a1a));
    cv.polygon({tx, ty, lx, ly, bx, by}, rgb(0xffa080));  // lit half
    cv.circle(c, c, 13, rgb(0x30343c));
    cv.circle(c, c, 9, rgb(0xbfc4cc));
    cv.circle(c - 2, c - 2, 4, rgb(0xffffff, 0.7f));
    return cv.toRGBA8();
}

bvw::RGBA8Image blob(int w, int h, float insetX, float insetY, float radius, float blur, float strength) {
    Canvas shape(w, h);
    shape.box(insetX, insetY, w - insetX, h - insetY, {0, 0, 0, 1}, radius);
    Canvas out(w, h);
    out.drawMask(shape.alphaMask().blurred(blur), 0, 0, {0, 0, 0, strength});
    return out.toRGBA8({0, 0, 0, 0});
}

bvw::RGBA8Image skid() {
    const int n = 64;
    Canvas c(n, n);
    c.paintAll([&](float x, float y) {
        float u = x / n;
        float edge = smooth(0.0f, 0.12f, u) * smooth(1.0f, 0.88f, u);
        float tread = 0.65f + 0.35f * std::sin(u * PI * 2 * 5);
        float streak = 0.8f + 0.2f * valueNoise(x / 3, y / 16, 0, 900);
        return Color{0.06f, 0.055f, 0.05f, 0.85f * edge * tread * streak};
    });
    return c.toRGBA8({0.06f, 0.055f, 0.05f, 0});
}

bvw::RGBA8Image face() {
    const int n = 128;
    Canvas c(n, n, rgb(0x5a3a22));  // hair all round
    c.paint(0, 0, n, n, [&](float x, float y) {
        float d = std::hypot((x - 64) / 50, (y - 70) / 56) - 1;
        float lit = 0.5f - 0.5f * ((x - 64) / 50 + (y - 70) / 56) * 0.5f;
        return withAlpha(mix(rgb(0xd89a6a), rgb(0xffd0a8), lit), cover(d * 50));
    });
    c.polygon({14, 40, 30, 12, 64, 4, 98, 12, 114, 40, 96, 30, 80, 36, 64, 26, 46, 36, 30, 30}, rgb(0x5a3a22));
    for (float ex : {44.0f, 84.0f}) {
        c.circle(ex, 62, 13, rgb(0xffffff));
        c.ring(ex, 62, 13, 2, rgb(0x3a2a20));
        c.circle(ex + 3, 64, 6, rgb(0x2a5aa0));
        c.circle(ex + 3, 64, 3, rgb(0x000000));
        c.circle(ex + 5, 61, 1.8f, rgb(0xffffff));
        c.line(ex - 12, 44, ex + 10, 41, 4, rgb(0x5a3a22));  // eyebrows
    }
    c.polygon({64, 66, 58, 86, 70, 86}, rgb(0xc07a50));  // nose
    c.paint(30, 88, 98, 116, [&](float x, float y) {
        // A wide grin: the area between two circle arcs.
        float outer = sdCircle(x, y, 64, 76, 28), inner = sdCircle(x, y, 64, 68, 30);
        return withAlpha(rgb(0x8a2a2a), cover(std::max(outer, -inner)));
    });
    c.box(52, 98, 76, 103, rgb(0xffffff), 2);  // teeth
    c.circle(30, 86, 7, rgb(0xff8a8a, 0.45f));
    c.circle(98, 86, 7, rgb(0xff8a8a, 0.45f));
    return c.toRGBA8();
}

bvw::RGBA8Image sun() {
    // Drawn additively: black adds nothing.
    const int n = 128;
    Canvas c(n, n, {0, 0, 0, 1});
    c.fillWith([&](float x, float y) {
        float d = std::hypot(x - 64, y - 64) / 64;
        float a = std::atan2(y - 64, x - 64);
        float rays = 0.5f + 0.5f * std::cos(a * 12) * std::cos(a * 5);
        float v = std::exp(-d * d * 40) + 0.35f * std::exp(-d * 5) + 0.12f * rays * std::exp(-d * 3.5f);
        v *= smooth(1.0f, 0.85f, d);
        return Color{clamp01(v * 1.1f), clamp01(v * 1.0f), clamp01(v * 0.82f), 1};
    });
    return c.toRGBA8();
}

bvw::RGBA8Image glow() {
    const int n = 256;
    Canvas c(n, n);
    c.paintAll([&](float x, float y) {
        float d = std::hypot(x - 128, y - 128) / 128;
        float a = 0.75f * std::exp(-d * d * 6) + 0.12f * std::exp(-std::pow((d - 0.7f) / 0.05f, 2.0f));
        a *= smooth(1.0f, 0.92f, d);
        return Color{1.0f, 0.93f, 0.8f, a};
    });
    return c.toRGBA8({1.0f, 0.93f, 0.8f, 0});
}

}  // namespace

void kartPictures(std::vector<Picture>& out) {
    out.push_back({"Textures/Hud.tga", 32, true, hud});
    out.push_back({"Textures/Needle.tga", 32, true, needle});
    out.push_back({"Textures/Shadowmap.tga", 32, false, [] { return blob(64, 128, 10, 8, 14, 6, 0.8f); }});
    out.push_back({"Textures/Fwshadowmap.tga", 32, false, [] { return blob(32, 64, 5, 6, 8, 3, 0.8f); }});
    out.push_back({"Textures/Skid.tga", 32, false, skid});
    out.push_back({"Textures/Dheadtv.tga", 24, true, face});
    out.push_back({"Textures/Flare0.tga", 24, true, sun});
    out.push_back({"Textures/Flare1.tga", 32, false, glow});
}

}  // namespace gen

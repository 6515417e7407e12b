#ifndef BV_DATAGEN_CANVAS_H
#define BV_DATAGEN_CANVAS_H

// A small painter for the generator: float pixels with premultiplied alpha,
// shapes with analytic anti-aliasing from signed distances, masks for text
// effects, and resampling to the power-of-two sizes the game wants.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "writers/tga.h"

namespace gen {

struct Color {
    float r = 0, g = 0, b = 0, a = 1;
};

inline Color rgb(int hex, float a = 1) {
    return {((hex >> 16) & 255) / 255.0f, ((hex >> 8) & 255) / 255.0f, (hex & 255) / 255.0f, a};
}
inline Color mix(Color p, Color q, float t) {
    return {p.r + (q.r - p.r) * t, p.g + (q.g - p.g) * t, p.b + (q.b - p.b) * t, p.a + (q.a - p.a) * t};
}
inline Color scaled(Color c, float k) {
    return {c.r * k, c.g * k, c.b * k, c.a};
}
inline Color withAlpha(Color c, float a) {
    return {c.r, c.g, c.b, a};
}
inline float clamp01(float v) {
    return v < 0 ? 0 : (v > 1 ? 1 : v);
}
inline float smooth(float e0, float e1, float x) {
    float t = clamp01((x - e0) / (e1 - e0));
    return t * t * (3 - 2 * t);
}
// Coverage of a pixel by a shape whose signed distance (in pixels) is d.
inline float cover(float d) {
    return clamp01(0.5f - d);
}

// Signed distances, negative inside.
inline float sdCircle(float x, float y, float cx, float cy, float r) {
    return std::hypot(x - cx, y - cy) - r;
}
float sdBox(float x, float y, float cx, float cy, float hw, float hh, float radius = 0);
float sdSegment(float x, float y, float ax, float ay, float bx, float by);
// Convex or concave polygon, points in order.
float sdPolygon(float x, float y, const std::vector<float>& xy);

// A coverage mask (0..1), for text and shape effects.
struct Mask {
    int w = 0, h = 0;
    std::vector<float> v;
    Mask() = default;
    Mask(int w_, int h_) : w(w_), h(h_), v((size_t)w_ * h_, 0.0f) {}
    float at(int x, int y) const {
        if (x < 0 || y < 0 || x >= w || y >= h) return 0;
        return v[(size_t)y * w + x];
    }
    float& ref(int x, int y) { return v[(size_t)y * w + x]; }
    Mask blurred(float radius) const;   // three box passes, about a Gaussian
    Mask dilated(float radius) const;   // grows by radius pixels (soft edge)
    Mask shifted(int dx, int dy) const;
    Mask minus(const Mask& o) const;
    void bounds(int& x0, int& y0, int& x1, int& y1) const;  // inked box, x1/y1 exclusive
};

class Canvas {
public:
    int w = 0, h = 0;
    std::vector<float> p;  // premultiplied RGBA, rows from the top

    Canvas() = default;
    Canvas(int width, int height, Color fill = {0, 0, 0, 0});

    Color get(int x, int y) const;  // straight (not premultiplied) colour
    void set(int x, int y, Color c);
    // Source-over of colour c with extra coverage k at one pixel.
    void blend(int x, int y, Color c, float k = 1);

    // Calls f(x, y) at pixel centres inside the box; f returns the colour with
    // its coverage folded into alpha, composited source-over.
    template <typename F>
    void paint(float x0, float y0, float x1, float y1, F f) {
        int ix0 = std::max(0, (int)std::floor(x0)), iy0 = std::max(0, (int)std::floor(y0));
        int ix1 = std::min(w, (int)std::ceil(x1) + 1), iy1 = std::min(h, (int)std::ceil(y1) + 1);
        for (int y = iy0; y < iy1; y++)
            for (int x = ix0; x < ix1; x++) {
                Color c = f(x + 0.5f, y + 0.5f);
                if (c.a > 0) blend(x, y, c, 1);
            }
    }
    template <typename F>
    void paintAll(F f) {
        paint(0, 0, (float)w, (float)h, f);
    }
    // Replaces every pixel with f(x, y) (straight colour).
    template <typename F>
    void fillWith(F f) {
        for (int y = 0; y < h; y++)
            for (int x = 0; x < w; x++) set(x, y, f(x + 0.5f, y + 0.5f));
    }

    void circle(float cx, float cy, float r, Color c);
    void ring(float cx, float cy, float r, float thickness, Color c);
    void box(float x0, float y0, float x1, float y1, Color c, float radius = 0);
    void frame(float x0, float y0, float x1, float y1, float thickness, Color c, float radius = 0);
    void line(float ax, float ay, float bx, float by, float width, Color c);
    void polygon(const std::vector<float>& xy, Color c);
    // Vertical gradient from top colour to bottom colour over a box.
    void gradientBox(float x0, float y0, float x1, float y1, Color top, Color bottom, float radius = 0);

    // Mask composited at (ox, oy) in colour c.
    void drawMask(const Mask& m, int ox, int oy, Color c);
    // A soft drop shadow of a mask.
    void shadow(const Mask& m, int ox, int oy, float blur, Color c);

    void draw(const Canvas& src, int ox, int oy, float opacity = 1);  // source-over
    Canvas resized(int nw, int nh) const;  // tent filter, premultiplied
    Canvas flippedX() const;
    void multiply(float k);               // darkens (or brightens) colour, keeps alpha
    void tint(Color c);                   // multiplies colour by c
    Mask alphaMask() const;

    // Straight RGBA8 rows; fully transparent pixels take the colour `clear`
    // so that filtering at shape edges does not pull in black.
    bvw::RGBA8Image toRGBA8(Color clear) const;
    bvw::RGBA8Image toRGBA8() const;  // clear colour from the nearest inked pixels
};

}  // namespace gen

#endif

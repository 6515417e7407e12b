// The generator's painter: distance-field shapes, masks, and the canvas they paint on.

#include "datagen/canvas.h"

#include <cstring>

namespace gen {

float sdBox(float x, float y, float cx, float cy, float hw, float hh, float radius) {
    float dx = std::fabs(x - cx) - (hw - radius);
    float dy = std::fabs(y - cy) - (hh - radius);
    float ox = std::max(dx, 0.0f), oy = std::max(dy, 0.0f);
    return std::hypot(ox, oy) + std::min(std::max(dx, dy), 0.0f) - radius;
}

float sdSegment(float x, float y, float ax, float ay, float bx, float by) {
    float px = x - ax, py = y - ay, vx = bx - ax, vy = by - ay;
    float len2 = vx * vx + vy * vy;
    float t = len2 > 0 ? clamp01((px * vx + py * vy) / len2) : 0;
    return std::hypot(px - vx * t, py - vy * t);
}

float sdPolygon(float x, float y, const std::vector<float>& xy) {
    size_t n = xy.size() / 2;
    float d = 1e30f;
    bool inside = false;
    for (size_t i = 0, j = n - 1; i < n; j = i++) {
        float xi = xy[2 * i], yi = xy[2 * i + 1], xj = xy[2 * j], yj = xy[2 * j + 1];
        d = std::min(d, sdSegment(x, y, xi, yi, xj, yj));
        if (((yi > y) != (yj > y)) && (x < (xj - xi) * (y - yi) / (yj - yi) + xi)) inside = !inside;
    }
    return inside ? -d : d;
}

// ---- Mask ----

static void boxPass(std::vector<float>& v, int w, int h, int r, bool horizontal) {
    if (r <= 0) return;
    std::vector<float> out(v.size());
    int n = horizontal ? w : h, lines = horizontal ? h : w;
    std::vector<float> line(n);
    for (int l = 0; l < lines; l++) {
        for (int i = 0; i < n; i++) line[i] = horizontal ? v[(size_t)l * w + i] : v[(size_t)i * w + l];
        float sum = 0;
        for (int i = -r; i <= r; i++) sum += (i >= 0 && i < n) ? line[i] : 0;
        for (int i = 0; i < n; i++) {
            float val = sum / (2 * r + 1);
            if (horizontal) out[(size_t)l * w + i] = val; else out[(size_t)i * w + l] = val;
            int add = i + r + 1, sub = i - r;
            sum += (add < n ? line[add] : 0) - (sub >= 0 ? line[sub] : 0);
        }
    }
    v.swap(out);
}

Mask Mask::blurred(float radius) const {
    Mask m = *this;
    int r = (int)std::lround(radius / 1.7f);
    if (r < 1 && radius > 0) r = 1;
    for (int pass = 0; pass < 3; pass++) {
        boxPass(m.v, w, h, r, true);
        boxPass(m.v, w, h, r, false);
    }
    return m;
}

Mask Mask::dilated(float radius) const {
    Mask m(w, h);
    int r = (int)std::ceil(radius);
    for (int y = 0; y < h; y++)
        for (int x = 0; x < w; x++) {
            float best = 0;
            for (int dy = -r; dy <= r && best < 1; dy++)
                for (int dx = -r; dx <= r; dx++) {
                    float a = at(x + dx, y + dy);
                    if (a <= best) continue;
                    float k = clamp01(radius + 0.5f - std::sqrt((float)(dx * dx + dy * dy)));
                    best = std::max(best, a * k);
                }
            m.ref(x, y) = best;
        }
    return m;
}

Mask Mask::shifted(int dx, int dy) const {
    Mask m(w, h);
    for (int y = 0; y < h; y++)
        for (int x = 0; x < w; x++) m.ref(x, y) = at(x - dx, y - dy);
    return m;
}

Mask Mask::minus(const Mask& o) const {
    Mask m = *this;
    for (size_t i = 0; i < v.size(); i++) m.v[i] = clamp01(v[i] - o.v[i]);
    return m;
}

void Mask::bounds(int& x0, int& y0, int& x1, int& y1) const {
    x0 = w; y0 = h; x1 = 0; y1 = 0;
    for (int y = 0; y < h; y++)
        for (int x = 0; x < w; x++)
            if (v[(size_t)y * w + x] > 0) {
                x0 = std::min(x0, x); y0 = std::min(y0, y);
                x1 = std::max(x1, x + 1); y1 = std::max(y1, y + 1);
            }
    if (x1 <= x0) x0 = y0 = x1 = y1 = 0;
}

// ---- Canvas ----

Canvas::Canvas(int width, int height, Color fill) : w(width), h(height), p((size_t)width * height * 4) {
    for (size_t i = 0; i < (size_t)w * h; i++) {
        p[i * 4 + 0] = fill.r * fill.a;
        p[i * 4 + 1] = fill.g * fill.a;
        p[i * 4 + 2] = fill.b * fill.a;
        p[i * 4 + 3] = fill.a;
    }
}

Color Canvas::get(int x, int y) const {
    x = std::clamp(x, 0, w - 1);
    y = std::clamp(y, 0, h - 1);
    const float* q = &p[((size_t)y * w + x) * 4];
    if (q[3] <= 0) return {0, 0, 0, 0};
    return {q[0] / q[3], q[1] / q[3], q[2] / q[3], q[3]};
}

void Canvas::set(int x, int y, Color c) {
    if (x < 0 || y < 0 || x >= w || y >= h) return;
    float* q = &p[((size_t)y * w + x) * 4];
    float a = clamp01(c.a);
    q[0] = c.r * a; q[1] = c.g * a; q[2] = c.b * a; q[3] = a;
}

void Canvas::blend(int x, int y, Color c, float k) {
    if (x < 0 || y < 0 || x >= w || y >= h) return;
    float a = clamp01(c.a * k);
    if (a <= 0) return;
    float* q = &p[((size_t)y * w + x) * 4];
    float inv = 1 - a;
    q[0] = c.r * a + q[0] * inv;
    q[1] = c.g * a + q[1] * inv;
    q[2] = c.b * a + q[2] * inv;
    q[3] = a + q[3] * inv;
}

void Canvas::circle(float cx, float cy, float r, Color c) {
    paint(cx - r - 1, cy - r - 1, cx + r + 1, cy + r + 1,
          [&](float x, float y) { return withAlpha(c, c.a * cover(sdCircle(x, y, cx, cy, r))); });
}

void Canvas::ring(float cx, float cy, float r, float t, Color c) {
    paint(cx - r - t, cy - r - t, cx + r + t, cy + r + t, [&](float x, float y) {
        return withAlpha(c, c.a * cover(std::fabs(sdCircle(x, y, cx, cy, r)) - t / 2));
    });
}

void Canvas::box(float x0, float y0, float x1, float y1, Color c, float radius) {
    float cx = (x0 + x1) / 2, cy = (y0 + y1) / 2, hw = (x1 - x0) / 2, hh = (y1 - y0) / 2;
    paint(x0 - 1, y0 - 1, x1 + 1, y1 + 1,
          [&](float x, float y) { return withAlpha(c, c.a * cover(sdBox(x, y, cx, cy, hw, hh, radius))); });
}

void Canvas::frame(float x0, float y0, float x1, float y1, float t, Color c, float radius) {
    float cx = (x0 + x1) / 2, cy = (y0 + y1) / 2, hw = (x1 - x0) / 2, hh = (y1 - y0) / 2;
    paint(x0 - t - 1, y0 - t - 1, x1 + t + 1, y1 + t + 1, [&](float x, float y) {
        return withAlpha(c, c.a * cover(std::fabs(sdBox(x, y, cx, cy, hw, hh, radius)) - t / 2));
    });
}

void Canvas::line(float ax, float ay, float bx, float by, float width, Color c) {
    float r = width / 2;
    paint(std::min(ax, bx) - r - 1, std::min(ay, by) - r - 1, std::max(ax, bx) + r + 1, std::max(ay, by) + r + 1,
          [&](float x, float y) { return withAlpha(c, c.a * cover(sdSegment(x, y, ax, ay, bx, by) - r)); });
}

void Canvas::polygon(const std::vector<float>& xy, Color c) {
    float x0 = 1e30f, y0 = 1e30f, x1 = -1e30f, y1 = -1e30f;
    for (size_t i = 0; i < xy.size(); i += 2) {
        x0 = std::min(x0, xy[i]); x1 = std::max(x1, xy[i]);
        y0 = std::min(y0, xy[i + 1]); y1 = std::max(y1, xy[i + 1]);
    }
    paint(x0 - 1, y0 - 1, x1 + 1, y1 + 1,
          [&](float x, float y) { return withAlpha(c, c.a * cover(sdPolygon(x, y, xy))); });
}

void Canvas::gradientBox(float x0, float y0, float x1, float y1, Color top, Color bottom, float radius) {
    float cx = (x0 + x1) / 2, cy = (y0 + y1) / 2, hw = (x1 - x0) / 2, hh = (y1 - y0) / 2;
    paint(x0 - 1, y0 - 1, x1 + 1, y1 + 1, [&](float x, float y) {
        Color c = mix(top, bottom, clamp01((y - y0) / (y1 - y0)));
        return withAlpha(c, c.a * cover(sdBox(x, y, cx, cy, hw, hh, radius)));
    });
}

void Canvas::drawMask(const Mask& m, int ox, int oy, Color c) {
    for (int y = 0; y < m.h; y++)
        for (int x = 0; x < m.w; x++) {
            float a = m.v[(size_t)y * m.w + x];
            if (a > 0) blend(ox + x, oy + y, c, a);
        }
}

void Canvas::shadow(const Mask& m, int ox, int oy, float blur, Color c) {
    drawMask(m.blurred(blur), ox, oy, c);
}

void Canvas::draw(const Canvas& src, int ox, int oy, float opacity) {
    for (int y = 0; y < src.h; y++)
        for (int x = 0; x < src.w; x++) {
            int tx = ox + x, ty = oy + y;
            if (tx < 0 || ty < 0 || tx >= w || ty >= h) continue;
            const float* s = &src.p[((size_t)y * src.w + x) * 4];
            float a = s[3] * opacity;
            if (a <= 0) continue;
            float* q = &p[((size_t)ty * w + tx) * 4];
            float inv = 1 - a;
            for (int k = 0; k < 3; k++) q[k] = s[k] * opacity + q[k] * inv;
            q[3] = a + q[3] * inv;
        }
}

// One axis of a separable resample with a tent filter as wide as the scale.
static std::vector<float> resampleAxis(const std::vector<float>& in, int w, int h, int n, bool horizontal) {
    int srcn = horizontal ? w : h;
    int lines = horizontal ? h : w;
    int ow = horizontal ? n : w, oh = horizontal ? h : n;
    std::vector<float> out((size_t)ow * oh * 4, 0.0f);
    float scale = (float)srcn / n;
    float support = std::max(1.0f, scale);
    for (int i = 0; i < n; i++) {
        float centre = (i + 0.5f) * scale;
        int a = (int)std::floor(centre - support), b = (int)std::ceil(centre + support);
        std::vector<std::pair<int, float>> taps;
        float total = 0;
        for (int s = a; s <= b; s++) {
            float wgt = 1 - std::fabs((s + 0.5f - centre) / support);
            if (wgt <= 0) continue;
            taps.push_back({std::clamp(s, 0, srcn - 1), wgt});
            total += wgt;
        }
        for (int l = 0; l < lines; l++) {
            float acc[4] = {0, 0, 0, 0};
            for (auto& t : taps) {
                size_t idx = horizontal ? ((size_t)l * w + t.first) : ((size_t)t.first * w + l);
                for (int k = 0; k < 4; k++) acc[k] += in[idx * 4 + k] * t.second;
            }
            size_t o = horizontal ? ((size_t)l * ow + i) : ((size_t)i * ow + l);
            for (int k = 0; k < 4; k++) out[o * 4 + k] = acc[k] / total;
        }
    }
    return out;
}

Canvas Canvas::resized(int nw, int nh) const {
    Canvas c;
    std::vector<float> a = resampleAxis(p, w, h, nw, true);
    c.p = resampleAxis(a, nw, h, nh, false);
    c.w = nw;
    c.h = nh;
    return c;
}

Canvas Canvas::flippedX() const {
    Canvas c(w, h);
    for (int y = 0; y < h; y++)
        for (int x = 0; x < w; x++)
            memcpy(&c.p[((size_t)y * w + x) * 4], &p[((size_t)y * w + (w - 1 - x)) * 4], 4 * sizeof(float));
    return c;
}

void Canvas::multiply(float k) {
    for (size_t i = 0; i < p.size(); i += 4)
        for (int j = 0; j < 3; j++) p[i + j] *= k;
}

void Canvas::tint(Color c) {
    for (size_t i = 0; i < p.size(); i += 4) {
        p[i] *= c.r; p[i + 1] *= c.g; p[i + 2] *= c.b;
    }
}

Mask Canvas::alphaMask() const {
    Mask m(w, h);
    for (size_t i = 0; i < (size_t)w * h; i++) m.v[i] = p[i * 4 + 3];
    return m;
}

static std::uint8_t byte(float v) {
    return (std::uint8_t)std::lround(clamp01(v) * 255.0f);
}

bvw::RGBA8Image Canvas::toRGBA8(Color clear) const {
    bvw::RGBA8Image img;
    img.width = w;
    img.height = h;
    img.pixels.resize((size_t)w * h * 4);
    for (size_t i = 0; i < (size_t)w * h; i++) {
        const float* q = &p[i * 4];
        std::uint8_t a = byte(q[3]);
        std::uint8_t* o = &img.pixels[i * 4];
        if (a == 0) {
            o[0] = byte(clear.r); o[1] = byte(clear.g); o[2] = byte(clear.b); o[3] = 0;
        } else {
            o[0] = byte(q[0] / q[3]); o[1] = byte(q[1] / q[3]); o[2] = byte(q[2] / q[3]); o[3] = a;
        }
    }
    return img;
}

bvw::RGBA8Image Canvas::toRGBA8() const {
    // The average colour of the inked pixels stands in under transparent ones.
    double s[4] = {0, 0, 0, 0};
    for (size_t i = 0; i < (size_t)w * h; i++)
        for (int k = 0; k < 4; k++) s[k] += p[i * 4 + k];
    Color clear = s[3] > 0 ? Color{float(s[0] / s[3]), float(s[1] / s[3]), float(s[2] / s[3]), 1} : Color{0, 0, 0, 0};
    return toRGBA8(clear);
}

}  // namespace gen

#include "scene/camera.h"

#include <cmath>

float sCamera::distance(float x, float y, float z) {
    if (ignoreisinview) return 6.0f;
    float dx = px - x, dy = py - y, dz = pz - z;
    return std::sqrt(dx * dx + dy * dy + dz * dz);
}

float sCamera::isinview(float x, float y, float z) {
    if (ignoreisinview) return 6.0f;
    float d = distance(x, y, z);
    // Whatever is right beside the eye is drawn, even behind it: a kart we
    // sit in or a barrier we scrape must not blink out.
    if (d < 2.75f) return 1.0f;
    float dx = px - x, dz = pz - z;
    float h = std::sqrt(dx * dx + dz * dz);
    float v = (float)(std::atan(h / (py - y)) * 57.29577951) - 90.0f;
    float a = (float)(std::atan(dx / dz) * 57.29577951);
    if (z > pz) a += 180.0f;
    if (!(ax - axmargin < v && v < ax + axmargin)) return -1.0f;
    // Headings computed here lie in (-90, 270) and ay in [-180, 180), so one
    // turn added covers what the plain comparison misses.
    if (ay - aymargin < a && a < ay + aymargin) return d;
    if (ay + 360.0f - aymargin < a && a < ay + 360.0f + aymargin) return d;
    return -1.0f;
}

#include "scene/camera.h"

#include <GL/gl.h>

#include <cmath>

#include "shell/bvconfig.h"
#include "shell/keyboard.h"

float camera_lag = 0;

static const float DEGREES = 57.29577951f;

float cameraheading(float px, float pz, float qx, float qz) {
    float a = atanf((qx - px) / (qz - pz)) * DEGREES;
    if (pz > qz) a += 180;
    return a;
}

void sCamera::init(unsigned int m, float x, float y, float z, float pitch, float heading, float roll, float view) {
    axmargin = 35;
    aymargin = 45;
    mode = m;
    px = ox = x;
    py = oy = y;
    pz = oz = z;
    ax = pitch;
    ay = heading;
    az = roll;
    fov = view;
    setmodedelay = false;
    ignoreisinview = false;
}

void sCamera::setmode() {
    // 'C' is tested as an upper-case code while the free view's keys are
    // lower case; the mismatch is old and players know the digits anyway.
    if (keyboard.key[67]) {
        if (setmodedelay) {
            setmodedelay = false;
            mode = (mode + 1) % 5;
        }
    } else {
        setmodedelay = true;
    }
    for (unsigned int digit = 0; digit < 5; digit++) {
        if (keyboard.key[49 + digit]) {
            mode = digit;
            break;
        }
    }
    ox = px;
    oy = py;
    oz = pz;
    // The big-head cheat narrows the driver's view so the head fills it.
    fov = config.CHEAT_0bighead && mode == CAMERA_DRIVER ? 27.5f : 55.0f;
}

float sCamera::distance(float x, float y, float z) {
    if (ignoreisinview) return 6.0f;
    float dx = px - x, dy = py - y, dz = pz - z;
    return sqrtf(dx * dx + dy * dy + dz * dz);
}

float sCamera::isinview(float x, float y, float z) {
    if (ignoreisinview) return 6.0f;
    float d = distance(x, y, z);
    if (d < 2.75f) return 1.0f;
    float dx = px - x, dz = pz - z;
    float h = sqrtf(dx * dx + dz * dz);
    float v = atanf(h / (py - y)) * DEGREES - 90;
    float a = atanf((px - x) / (pz - z)) * DEGREES;
    if (z > pz) a += 180;
    if (!(ax - axmargin < v && v < ax + axmargin)) return -1.0f;
    if (ay - aymargin < a && a < ay + aymargin) return d;
    if (ay + 360 - aymargin < a && a < ay + 360 + aymargin) return d;
    return -1.0f;
}

void sCamera::transform() {
    glRotatef(-ax, 1, 0, 0);
    glRotatef(-az, 0, 0, 1);
    glRotatef(-ay, 0, 1, 0);
    glTranslatef(-px, -py, -pz);
}

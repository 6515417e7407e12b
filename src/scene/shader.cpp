// Planar shadows, through the stencil buffer or as textured triangles on the ground.

#include "scene/shader.h"

#include <GL/gl.h>

#include <cmath>

#include "scene/scene.h"
#include "shell/bvconfig.h"

// No guard for a vertex level with the light: the light stays far above
// everything that casts.
void shadowpoint(float& x, float y, float& z, float g, float lx, float ly, float lz) {
    float k = (y - g) / (ly - y);
    x = x - k * (lx - x);
    z = z - k * (lz - z);
}

namespace {

inline void project(float& x, float y, float& z, float g, float lx, float ly, float lz) {
    shadowpoint(x, y, z, g, lx, ly, lz);
}

// Each state change between two triangles makes the driver draw them apart,
// and the rasteriser's cost per draw is far above a triangle's.
bool batching = false;
bool batchopen = false;

// ---- the rectangle the stencil shadows lie in ----

// Larger than any window, so that "everywhere" needs no window size.
const float EVERYWHERE = 16384;

// In window coordinates; empty while x0 > x1.
float markedx0 = -EVERYWHERE, markedy0 = -EVERYWHERE, markedx1 = EVERYWHERE, markedy1 = EVERYWHERE;

// The batch's view of the world: projection times modelview, and the viewport.
float towindow[16];
GLint viewport[4];

void setScissor() {
    if (markedx0 > markedx1 || markedy0 > markedy1) {
        glScissor(0, 0, 0, 0);
        return;
    }
    // A pixel is covered when its centre is inside: two pixels of margin
    // make up for rounding that differs from the rasteriser's.
    auto clampto = [](float v) { return v < -EVERYWHERE ? -EVERYWHERE : v > EVERYWHERE ? EVERYWHERE : v; };
    int x0 = (int)std::floor(clampto(markedx0)) - 2, y0 = (int)std::floor(clampto(markedy0)) - 2;
    int x1 = (int)std::ceil(clampto(markedx1)) + 2, y1 = (int)std::ceil(clampto(markedy1)) + 2;
    if (x0 < 0) x0 = 0;
    if (y0 < 0) y0 = 0;
    glScissor(x0, y0, x1 > x0 ? x1 - x0 : 0, y1 > y0 ? y1 - y0 : 0);
}

void markEverywhere() {
    markedx0 = markedy0 = -EVERYWHERE;
    markedx1 = markedy1 = EVERYWHERE;
}

void readView() {
    GLfloat m[16], p[16];
    glGetFloatv(GL_MODELVIEW_MATRIX, m);
    glGetFloatv(GL_PROJECTION_MATRIX, p);
    glGetIntegerv(GL_VIEWPORT, viewport);
    for (int c = 0; c < 4; c++)
        for (int r = 0; r < 4; r++) {
            float sum = 0;
            for (int k = 0; k < 4; k++) sum += p[k * 4 + r] * m[c * 4 + k];
            towindow[c * 4 + r] = sum;
        }
}

void reachPoint(float cx, float cy, float cw) {
    if (!(cw > 1e-6f)) {
        markEverywhere();
        return;
    }
    float wx = viewport[0] + (cx / cw + 1) * 0.5f * viewport[2];
    float wy = viewport[1] + (cy / cw + 1) * 0.5f * viewport[3];
    if (!std::isfinite(wx) || !std::isfinite(wy)) {
        markEverywhere();
        return;
    }
    markedx0 = std::fmin(markedx0, wx);
    markedx1 = std::fmax(markedx1, wx);
    markedy0 = std::fmin(markedy0, wy);
    markedy1 = std::fmax(markedy1, wy);
}

// A triangle of the batch: the rectangle grows to take in what of it lies
// beyond the near plane, which is all the rasteriser draws of it (the
// shadows of the scenery behind the eye lie partly behind it).
void reach(const float (&x)[3], float y, const float (&z)[3]) {
    const float* t = towindow;
    float c[3][4];
    for (int i = 0; i < 3; i++)
        for (int r = 0; r < 4; r++) c[i][r] = t[r] * x[i] + t[4 + r] * y + t[8 + r] * z[i] + t[12 + r];
    // The near plane: z + w >= 0 in clip coordinates.
    for (int i = 0; i < 3; i++) {
        const float* a = c[i];
        const float* b = c[(i + 1) % 3];
        float da = a[2] + a[3], db = b[2] + b[3];
        if (da >= 0) reachPoint(a[0], a[1], a[3]);
        if ((da >= 0) != (db >= 0)) {
            float f = da / (da - db);
            reachPoint(a[0] + f * (b[0] - a[0]), a[1] + f * (b[1] - a[1]), a[3] + f * (b[3] - a[3]));
        }
    }
}

void stencilOnly() {
    glEnable(GL_STENCIL_TEST);
    glStencilFunc(GL_ALWAYS, 1, 1);
    glStencilOp(GL_KEEP, GL_KEEP, GL_REPLACE);
    glDisable(GL_CULL_FACE);
    glDisable(GL_DEPTH_TEST);
    glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_FALSE);
    glColor3f(0, 0, 0);
}

void colourAgain() {
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    glEnable(GL_DEPTH_TEST);
    glEnable(GL_CULL_FACE);
    glDisable(GL_STENCIL_TEST);
}

}  // namespace

void stencilCleared() {
    if (shortcuts.shadowscissor) {
        markedx0 = markedy0 = EVERYWHERE;
        markedx1 = markedy1 = -EVERYWHERE;
    } else {
        markEverywhere();
    }
    setScissor();
}

void beginShadowBatch() {
    batching = true;
    batchopen = false;
    readView();
}

void endShadowBatch() {
    if (batchopen) {
        glEnd();
        colourAgain();
    }
    batching = false;
    batchopen = false;
    setScissor();
}

void castShadow(float x1, float y1, float z1, float x2, float y2, float z2, float x3, float y3, float z3,
                float groundy, float lx, float ly, float lz) {
    project(x1, y1, z1, groundy, lx, ly, lz);
    project(x2, y2, z2, groundy, lx, ly, lz);
    project(x3, y3, z3, groundy, lx, ly, lz);

    if (batching && !config.shadowprojectors) {
        // The pass is set up by the batch's first triangle only, so that an
        // empty batch leaves the state exactly as it found it.
        if (!batchopen) {
            stencilOnly();
            glBegin(GL_TRIANGLES);
            batchopen = true;
        }
        glVertex3f(x1, groundy, z1);
        glVertex3f(x2, groundy, z2);
        glVertex3f(x3, groundy, z3);
        reach({x1, x2, x3}, groundy, {z1, z2, z3});
        return;
    }

    markEverywhere();
    setScissor();
    stencilOnly();
    glBegin(GL_TRIANGLES);
    glVertex3f(x1, groundy, z1);
    glVertex3f(x2, groundy, z2);
    glVertex3f(x3, groundy, z3);
    glEnd();
    colourAgain();

    if (config.shadowprojectors) {
        glColor3f(1, 1, 1);
        glBegin(GL_LINES);
        glVertex3f(x1, groundy, z1);
        glVertex3f(lx, ly, lz);
        glVertex3f(x2, groundy, z2);
        glVertex3f(lx, ly, lz);
        glVertex3f(x3, groundy, z3);
        glVertex3f(lx, ly, lz);
        glEnd();
    }
}

void castShadowMask(float x1, float y1, float z1, float s1, float t1, float x2, float y2, float z2, float s2,
                    float t2, float x3, float y3, float z3, float s3, float t3, float groundy, float lx, float ly,
                    float lz) {
    project(x1, y1, z1, groundy, lx, ly, lz);
    project(x2, y2, z2, groundy, lx, ly, lz);
    project(x3, y3, z3, groundy, lx, ly, lz);
    glDisable(GL_CULL_FACE);
    glBegin(GL_TRIANGLES);
    glTexCoord2f(s1, t1);
    glVertex3f(x1, groundy, z1);
    glTexCoord2f(s2, t2);
    glVertex3f(x2, groundy, z2);
    glTexCoord2f(s3, t3);
    glVertex3f(x3, groundy, z3);
    glEnd();
    glEnable(GL_CULL_FACE);
}

void castVolumetricShadow(float x1, float y1, float z1, float x2, float y2, float z2, float x3, float y3, float z3,
                          float, float lx, float ly, float lz) {
    float fx[3] = {lx + 2 * (x1 - lx), lx + 2 * (x2 - lx), lx + 2 * (x3 - lx)};
    float fy[3] = {ly + 2 * (y1 - ly), ly + 2 * (y2 - ly), ly + 2 * (y3 - ly)};
    float fz[3] = {lz + 2 * (z1 - lz), lz + 2 * (z2 - lz), lz + 2 * (z3 - lz)};
    glBegin(GL_TRIANGLES);
    for (int e = 0; e < 3; e++) {
        int f = (e + 1) % 3;
        glVertex3f(lx, ly, lz);
        glVertex3f(fx[e], fy[e], fz[e]);
        glVertex3f(fx[f], fy[f], fz[f]);
    }
    glEnd();
}

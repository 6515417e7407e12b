// Planar shadows, through the stencil buffer or as textured triangles on the ground.

#include "scene/shader.h"

#include <GL/gl.h>

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

void beginShadowBatch() {
    batching = true;
    batchopen = false;
}

void endShadowBatch() {
    if (batchopen) {
        glEnd();
        colourAgain();
    }
    batching = false;
    batchopen = false;
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
        return;
    }

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

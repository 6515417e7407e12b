// The sun, how much of it the depth buffer shows, and the flare it throws.

#include "scene/lensflare.h"

#include <GL/gl.h>
#include <GL/glu.h>

#include <cmath>
#include <vector>

#include "assets/texture.h"
#include "shell/angles.h"
#include "scene/camera.h"
#include "scene/shader.h"
#include "shell/main.h"

sLensflare lensflare;

namespace {

// A pixel outside the buffer reads as nothing at all, which counts as covered.
float depthAt(int x, int y) {
    float depth = 0;
    glReadPixels(x, y, 1, 1, GL_DEPTH_COMPONENT, GL_FLOAT, &depth);
    return depth;
}

}  // namespace

void sLensflare::init() {
    floadTextureTGA("Data/Textures/Flare0.tga", &flareTexture[0]);
    floadTextureTGA("Data/Textures/Flare1.tga", &flareTexture[1]);
}

void sLensflare::free() {
    freeTexture(&flareTexture[0]);
    freeTexture(&flareTexture[1]);
}

void sLensflare::calc() {
    GLdouble modelview[16], projection[16];
    GLint viewport[4];
    glGetDoublev(GL_MODELVIEW_MATRIX, modelview);
    glGetDoublev(GL_PROJECTION_MATRIX, projection);
    glGetIntegerv(GL_VIEWPORT, viewport);
    // The sun travels with the eye, so it never comes nearer.
    gluProject(camera.px + LightPosition[0] / 10, camera.py + LightPosition[1] / 10,
               camera.pz + LightPosition[2] / 10, modelview, projection, viewport, &sx, &sy, &sz);
    const double W = viewport[2], H = viewport[3];

    // The samples' pixels, and the depths of the block that holds them read
    // at once: a read-back costs a pipeline stall whatever its size.
    int px[9], py[9];
    bool inx[9], iny[9];
    for (int k = 0; k < 9; k++) {
        double x = sx + (k - 4) * W / 300, y = sy + (k - 4) * H / 300;
        inx[k] = x >= 0 && x <= W;
        iny[k] = y >= 0 && y <= H;
        px[k] = (int)x;
        py[k] = (int)y;
    }
    int x0 = 0, x1 = -1, y0 = 0, y1 = -1;
    std::vector<float> block;
    if (readblock) {
        for (int k = 0; k < 9; k++) {
            if (inx[k] && px[k] < W) {
                if (x1 < x0) x0 = x1 = px[k];
                x0 = px[k] < x0 ? px[k] : x0;
                x1 = px[k] > x1 ? px[k] : x1;
            }
            if (iny[k] && py[k] < H) {
                if (y1 < y0) y0 = y1 = py[k];
                y0 = py[k] < y0 ? py[k] : y0;
                y1 = py[k] > y1 ? py[k] : y1;
            }
        }
        if (x1 >= x0 && y1 >= y0) {
            block.assign((size_t)(x1 - x0 + 1) * (y1 - y0 + 1), 0.0f);
            glPixelStorei(GL_PACK_ALIGNMENT, 1);
            glReadPixels(x0, y0, x1 - x0 + 1, y1 - y0 + 1, GL_DEPTH_COMPONENT, GL_FLOAT, block.data());
        }
    }
    auto sample = [&](int x, int y) -> float {
        if (!readblock) return depthAt(x, y);
        if (x < x0 || x > x1 || y < y0 || y > y1) return 0;
        return block[(size_t)(y - y0) * (x1 - x0 + 1) + (x - x0)];
    };
    for (int i = 0; i < 9; i++)
        for (int j = 0; j < 9; j++)
            if (inx[i] && iny[j] && sample(px[i], py[j]) >= sz) brightness += 0.01f;

    if (sx < 0 || sx > W || sy < 0 || sy > H)
        brightness = 0;
    else if (sz > depthAt((int)sx, (int)sy))
        brightness = 0;

    sx = 2 * sx / W - 1;
    sy = 2 * sy / H - 1;
    brightness = (float)((1.2 - sqrt(sx * sx + sy * sy)) * brightness * 0.75);
}

void sLensflare::drawsun() {
    glEnable(GL_BLEND);
    glBlendFunc(GL_ONE, GL_ONE);
    glEnable(GL_TEXTURE_2D);
    glBindTexture(GL_TEXTURE_2D, flareTexture[0]);
    glColor4f(1, 1, 1, 0.25f);
    glPushMatrix();
    glTranslatef(camera.px + LightPosition[0] / 10, camera.py + LightPosition[1] / 10,
                 camera.pz + LightPosition[2] / 10);
    // Undo the eye's turn, so that the sun faces it.
    glRotatef(camera.ay, 0, 1, 0);
    glRotatef(camera.az, 0, 0, 1);
    glRotatef(camera.ax, 1, 0, 0);
    // A quad in the world, not on the screen, so not unitquad: given with two
    // coordinates instead of three, the driver rounds it differently and the
    // frame changes by a level in places.
    glBegin(GL_QUADS);
    glTexCoord2f(0, 0);
    glVertex3f(-5, -5, 0);
    glTexCoord2f(1, 0);
    glVertex3f(5, -5, 0);
    glTexCoord2f(1, 1);
    glVertex3f(5, 5, 0);
    glTexCoord2f(0, 1);
    glVertex3f(-5, 5, 0);
    glEnd();
    glPopMatrix();
    glDisable(GL_TEXTURE_2D);
    glDisable(GL_BLEND);
}

void sLensflare::draw() {
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glMatrixMode(GL_MODELVIEW);
    glDisable(GL_DEPTH_TEST);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);

    const float x = (float)sx, y = (float)sy;
    glEnable(GL_TEXTURE_2D);
    glBindTexture(GL_TEXTURE_2D, flareTexture[1]);
    glColor4f(1, 1, 1, 0.5f * brightness);
    unitquad(x - 2, y - 2, x + 2, y + 2);
    glDisable(GL_TEXTURE_2D);

    flare(0.6f, 0.3f, 1.0f, 0.6f, 0.6f);
    flare(0.3f, 0.6f, 0.8f, 0.8f, 0.6f);
    flare(-0.1f, 0.4f, 0.6f, 1.0f, 0.6f);
    flare(-0.4f, 0.2f, 0.6f, 0.8f, 0.8f);
    flare(-0.7f, 0.5f, 0.6f, 0.6f, 1.0f);
    flare(-0.9f, 0.5f, 0.8f, 0.6f, 0.8f);

    glDisable(GL_BLEND);
    glEnable(GL_DEPTH_TEST);
}

void sLensflare::flare(float pos, float size, float r, float g, float b) {
    const float cx = pos * (float)sx, cy = pos * (float)sy;
    glBegin(GL_TRIANGLE_FAN);
    glColor4f(1, 1, 1, 0.5f * brightness);
    glVertex2f(cx, cy);
    glColor4f(r, g, b, 0);
    // The angle is kept in single precision and each step taken in double:
    // the seventh vertex then lands just above zero, which closes the
    // hexagon. A step in single precision stops one short and leaves a gap.
    for (float a = (float)TWOPI; a > 0; a = (float)(a - TWOPI / 6))
        glVertex2f(cx + sinf(a) * size * brightness, cy + cosf(a) * size * brightness);
    glEnd();
}

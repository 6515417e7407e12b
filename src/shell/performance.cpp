// The clock, frame timing, the frame rate all motion divides by, and the frame-rate counter.

#include "shell/performance.h"

#include <GL/gl.h>
#include <SDL/SDL.h>

#include <ctime>

#include "assets/font.h"
#include "shell/bvconfig.h"
#include "shell/main.h"

long bvclock_override = -1;

long bvclock() {
    if (bvclock_override >= 0) return bvclock_override;
    timespec ts;
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return (long)ts.tv_sec * BV_CLOCKS_PER_SEC + ts.tv_nsec / 1000;
}

void sPerformance::init() {
    fps = 999;
    pps = 1;
    polygons = 0;
    softfps = 1;
    softpps = 1;
    savenext = true;
    tick = SDL_GetTicks();
}

void sPerformance::discardnext() {
    savenext = false;
}

void sPerformance::refresh() {
    refresh(SDL_GetTicks());
}

void sPerformance::refresh(unsigned int now) {
    if (savenext) {
        // SDL's millisecond ticks can report two frames in the same
        // millisecond; such a frame is taken as lasting half a millisecond
        // (2000 fps), so the rate stays finite and far above any real one.
        unsigned int elapsed = now - tick;
        fps = elapsed == 0 ? 2000.0f : 1.0f / ((float)elapsed / 1000.0f);
    }
    tick = now;
    if (fps < 1) fps = 1;
    softfps += (fps - softfps) * 10 / fps;
    if (softfps < 1) softfps = 1;
    if (softfps > config.maxfps) softfps = (float)config.maxfps;
    savenext = true;
    pps = polygons * fps;
    softpps += (pps - softpps) * 10 / fps;
    polygons = 0;
}

void sPerformance::dropfps(unsigned int) {}

void sPerformance::display() {
    if (config.frameratecounter > 1) {
        resizeGLwindow2D((float)config.width, (float)config.height);
        // A ceiling of 0 holds the rate shown at 0, which is the ceiling
        // reached: the full bar, as any rate at its ceiling draws.
        float q = config.maxfps ? softfps / config.maxfps : 1;
        glBegin(GL_QUADS);
        glColor3f(1, 0, 0);
        glVertex2f(0, 0);
        glColor3f(1 - q, q, 0);
        glVertex2f(config.width * q, 0);
        glVertex2f(config.width * q, 22);
        glColor3f(1, 0, 0);
        glVertex2f(0, 22);
        glEnd();
    }
    if (config.frameratecounter) fontFNT.out(6, 6, 1, 1, 1, FONT_ALIGN_LEFT, "%.0f", softfps);
}

void sPerformance::logResults() {}

// Recording kart 0's laps, and keeping and playing back the best one as the ghost.

#include "scene/ghost.h"

#include <GL/gl.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "kart/gokart.h"
#include "scene/pause.h"
#include "shell/bvconfig.h"
#include "shell/performance.h"
#include "shell/safesave.h"
#include "track/track.h"

sGhost ghost;

std::string sGhost::file() const {
    return std::string("Data/Ghosts/") + track.trackname[config.track] + ".txt";
}

void sGhost::init() {
    for (int i = 0; i < GHOST_MAXRECS; i++) {
        px[1][i] = gokart[0].px;
        pz[1][i] = gokart[0].pz;
        ay[1][i] = gokart[0].ay;
    }
    mRec = 0;
    nRecs[0] = nRecs[1] = 0;
    timer[0] = 1.0f;
    timer[1] = 0;
    bestTime = 99.0f;
    std::string path = std::string(config.PATH) + file();
    FILE* f = fopen(path.c_str(), "rb");
    if (!f) return;
    if (fscanf(f, "%f", &bestTime) != 1) {
        // an empty file keeps 99.0
    }
    int n = 0;
    while (n < GHOST_MAXRECS && !feof(f)) {
        if (fscanf(f, "%f%f%f", &px[1][n], &pz[1][n], &ay[1][n]) != 3) {
            // the read that meets the end of the file is the one dropped below
        }
        n++;
    }
    // The loop only learns of the end by the read that fails there.
    nRecs[1] = n - 1;
    fclose(f);
}

void sGhost::record() {
    if (timer[0] < 1.0f) {
        timer[0] += 30.0f / performance.fps;
    } else if (nRecs[0] <= GHOST_MAXRECS - 1) {
        px[0][nRecs[0]] = gokart[0].px;
        pz[0][nRecs[0]] = gokart[0].pz;
        ay[0][nRecs[0]] = gokart[0].ay;
        timer[0] -= 1.0f;
        nRecs[0]++;
    }
}

void sGhost::pose(float* x, float* z, float* heading) const {
    int m = mRec, n = nRecs[1] > 0 ? (m + 1) % nRecs[1] : m;
    float f = timer[1];
    *x = px[1][m] + (px[1][n] - px[1][m]) * f;
    *z = pz[1][m] + (pz[1][n] - pz[1][m]) * f;
    // Headings jump at +-180; the ghost turns the short way round.
    // Kept: samples exactly half a turn apart turn it forwards (+180), where
    // wrap180 would turn it back; pinned by Ghost.HalfATurnBetweenSamplesTurnsForwards.
    float d = ay[1][n] - ay[1][m];
    if (d > 180)
        *heading = ay[1][m] + (d - 360) * f;
    else if (d < -180)
        *heading = ay[1][m] + (d + 360) * f;
    else
        *heading = ay[1][m] + d * f;
}

void sGhost::draw() {
    show();
    // Same clock as the recording, so the replay keeps the recorded pace.
    if (timer[1] >= 1.0f) {
        if (mRec < nRecs[1] - 1) {
            timer[1] -= 1.0f;
            mRec++;
        }
    } else {
        timer[1] += 30.0f / performance.fps;
    }
}

void sGhost::show() const {
    if (nRecs[1] > 0) {
        float x, z, a;
        pose(&x, &z, &a);
        glEnable(GL_BLEND);
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
        glColor4f(1, 1, 1, 0.5f);
        glPushMatrix();
        glTranslatef(x, gokartstaticdata.wheelradius, z);
        glRotatef(a, 0, 1, 0);
        glCallList(gokartstaticdata.SLOgokart3DS.LIST);
        glPopMatrix();
        glDisable(GL_BLEND);
    }
}

void sGhost::goodone() {
    bestTime = gokart[0].currentlaptime;
    mRec = 0;
    nRecs[1] = nRecs[0];
    for (int i = 0; i < nRecs[1]; i++) {
        px[1][i] = px[0][i];
        pz[1][i] = pz[0][i];
        ay[1][i] = ay[0][i];
    }
    nRecs[0] = 0;
    timer[0] = 1.0f;
    timer[1] = 0;
}

void sGhost::badone() {
    mRec = 0;
    nRecs[0] = 0;
    timer[0] = 1.0f;
    timer[1] = 0;
}

std::string sGhost::text() const {
    std::string text;
    // Room for the longest "%f" there is (a float near its limit has 39
    // digits before the point), so no number read from a file is cut short.
    char line[64];
    snprintf(line, sizeof line, "%f\n", bestTime);
    text += line;
    for (int i = 0; i < nRecs[1] && i < GHOST_MAXRECS; i++) {
        for (float v : {px[1][i], pz[1][i], ay[1][i]}) {
            snprintf(line, sizeof line, "%f\n", v);
            text += line;
        }
    }
    return text;
}

void sGhost::save() {
    savesafely(file(), text());
}

void ghostframe() {
    // A paused race shows the ghost where it stands.
    if (racepause.paused) {
        if (config.ghost && config.ngokarts == 1) ghost.show();
        return;
    }
    ghost.record();
    if (config.ghost && config.ngokarts == 1) ghost.draw();
}

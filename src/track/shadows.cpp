// The track's shadows: the stencil marks of its furniture, the plants' and stands' pictures, and the TV cameras' aim.

#include "track/track.h"

#include <GL/gl.h>

#include <cmath>

#include "kart/gokart.h"
#include "scene/scene.h"
#include "scene/shader.h"
#include "shell/angles.h"
#include "shell/bvconfig.h"
#include "track/trackparts.h"

using namespace trackparts;

void sTrack::castshadow() {
    if (!config.trackshadows) return;
    const float lx = LightPosition[0], ly = LightPosition[1], lz = LightPosition[2];
    const unsigned int nobjects = objects();
    const unsigned int ncentre = centrePoints();
    const unsigned int n = pairs();

    if (config.shadows) {
        finish3DS.castshadow(0, lx, ly, lz, trackscale * TRACK_GANTRY_X, 0, TRACK_GANTRY_Z, 0, 0, 0,
                             STEP_NONE, STEP_NONE, STEP_NONE);

        // Plants shade the ground with their pictures instead (drawshadowmap).
        for (unsigned int i = 0; i < nobjects; i++) {
            if (!inviewMiscObject[i]) continue;
            unsigned int type = typeMiscobject[i];
            if (type == TRACK_PLANT || type >= TRACK_NOBJECTTYPES || !miscobjectPTR[type]) continue;
            // Kept: cast by its own turn, not the turn + 180 that would lay it
            // under the object as drawn, an object's shadow is its half-turned
            // twin; pinned by TrackKept.AnObjectsShadowLiesHalfATurnRoundFromTheObject
            const float x = miscobject[i].x, z = miscobject[i].z, a = (float)(i * OBJECT_TURN);
            miscobjectPTR[type]->castshadow(0, lx, ly, lz, x, 0, z, 0, a, 0, STEP_NONE, STEP_HEADING, STEP_NONE);
            if (type == TRACK_ADBOARD)
                adboard3DS.castshadow(0, lx, ly, lz, x, 0, z, 0, a, 0, STEP_NONE, STEP_HEADING, STEP_NONE);
        }

        // The faces towards and away from the road cast; the top adds nothing
        // that the two faces do not already cover.
        const float h = barrier_height, w = barrier_width;
        auto barrier = [&](const sTrackPoint* P, const sTrackPoint* N, unsigned int i) {
            unsigned int j = (i + 1) % n;
            const sTrackPoint &A = P[i], &B = P[j];
            sTrackPoint A2 = outwards(A, N[i], w), B2 = outwards(B, N[j], w);
            castShadow(B.x, h, B.z, B.x, 0, B.z, A.x, 0, A.z, 0, lx, ly, lz);
            castShadow(B.x, h, B.z, A.x, 0, A.z, A.x, h, A.z, 0, lx, ly, lz);
            castShadow(B2.x, 0, B2.z, B2.x, h, B2.z, A2.x, h, A2.z, 0, lx, ly, lz);
            castShadow(B2.x, 0, B2.z, A2.x, h, A2.z, A2.x, 0, A2.z, 0, lx, ly, lz);
        };
        for (unsigned int i = 0; i < n; i++)
            if (inviewLpoint[i]) barrier(Lpoint, LNpoint, i);
        for (unsigned int i = 0; i < n; i++)
            if (inviewRpoint[i]) barrier(Rpoint, RNpoint, i);
    }

    const sGokart& K = gokart[followedKart()];
    for (unsigned int i = 0; i < ncentre; i++) {
        if (!inviewCpoint[i]) continue;
        const float cx = Cpoint[i].x, cz = Cpoint[i].z;
        float dx = cx - K.px, dz = cz - K.pz;
        // The head's pitch down to the kart divides the distance in double,
        // so it is no heading for atandeg.
        camera_ax[i] = (float)(atan(sqrt(dx * dx + dz * dz) / CAMERA_HEIGHT) * DEG_PER_RAD) - 90;
        camera_ay[i] = atandeg(dx, dz);
        if (K.pz > cz) camera_ay[i] += 180;
        if (config.shadows >= 2) {
            // Turned by a + 180, the stand casts as it is drawn (see s3DS::castshadow).
            camerastand3DS.castshadow(0, lx, ly, lz, cx, 0, cz, 0, (float)(i * STAND_TURN + 180), 0,
                                      STEP_NONE, STEP_HEADING, STEP_NONE);
            camera3DS.castshadow(0, lx, ly, lz, cx, CAMERA_HEIGHT_F, cz, camera_ax[i], camera_ay[i], 0,
                                 STEP_PITCH, STEP_HEADING, STEP_NONE);
        } else {
            doCshadowmap[i] = config.shadows == 1;
        }
    }
}

void sTrack::drawshadowmap() {
    if (!config.trackshadows) return;
    const float lx = LightPosition[0], ly = LightPosition[1], lz = LightPosition[2];
    const unsigned int nobjects = objects();
    const unsigned int ncentre = centrePoints();

    glDisable(GL_DEPTH_TEST);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glEnable(GL_TEXTURE_2D);
    glColor4f(0, 0, 0, 0.5f);

    // A plant's picture, turned to face the light and laid down by it, is its shadow.
    if (miscobjectPTR[TRACK_PLANT]) {
        for (unsigned int i = 0; i < nobjects; i++) {
            if (!inviewMiscObject[i] || typeMiscobject[i] != TRACK_PLANT) continue;
            const float x = miscobject[i].x, z = miscobject[i].z;
            float a = atandeg(lx - x, lz - z);
            if (z > lz) a += 180;
            glBindTexture(GL_TEXTURE_2D, natureTexture[i % N_TREES]);
            miscobjectPTR[TRACK_PLANT]->castshadowmask(0, lx, ly, lz, x, 0, z, 0, a, 0,
                                                       STEP_NONE, STEP_HEADING, STEP_NONE);
        }
    }

    // Whether a stand wants its picture is remembered from when it was last seen.
    glBindTexture(GL_TEXTURE_2D, CshadowmapTexture);
    glColor4f(1, 1, 1, 0.5f);
    for (unsigned int i = 0; i < ncentre; i++) {
        if (!doCshadowmap[i]) continue;
        glPushMatrix();
        glTranslatef(Cpoint[i].x, 0, Cpoint[i].z);
        glRotatef((float)(i * STAND_TURN + 180), 0, 1, 0);
        glBegin(GL_QUADS);
        glTexCoord2f(0, 1);
        glVertex3f(-0.5f, 0, -0.5f);
        glTexCoord2f(0, 0);
        glVertex3f(-0.5f, 0, 0.5f);
        glTexCoord2f(1, 0);
        glVertex3f(0.5f, 0, 0.5f);
        glTexCoord2f(1, 1);
        glVertex3f(0.5f, 0, -0.5f);
        glEnd();
        glPopMatrix();
    }

    glDisable(GL_BLEND);
    glDisable(GL_TEXTURE_2D);
    glEnable(GL_DEPTH_TEST);
}

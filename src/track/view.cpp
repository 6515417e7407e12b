// What the camera sees of the track this frame, and drawing it: gantry, TV cameras, barriers, objects and fences.

#include "track/track.h"

#include <GL/gl.h>

#include "scene/camera.h"
#include "shell/bvconfig.h"
#include "track/trackparts.h"

using namespace trackparts;

namespace {

bool visible(float x, float y, float z) {
    float d = camera.isinview(x, y, z);
    return d > 0 && d < config.LOrange[config.lodlevel()];
}

}  // namespace

void sTrack::isinview() {
    const unsigned int nobjects = objects();
    const unsigned int ncentre = centrePoints();
    const unsigned int n = pairs();
    for (unsigned int i = 0; i < nobjects; i++) inviewMiscObject[i] = visible(miscobject[i].x, 0.5f, miscobject[i].z);
    for (unsigned int i = 0; i < ncentre; i++) inviewCpoint[i] = visible(Cpoint[i].x, 0.6f, Cpoint[i].z);
    // A barrier segment shows when either of its ends does.
    for (unsigned int i = 0; i < n; i++) {
        unsigned int j = (i + 1) % n;
        inviewLpoint[i] = visible(Lpoint[i].x, barrier_height, Lpoint[i].z) ||
                          visible(Lpoint[j].x, barrier_height, Lpoint[j].z);
        inviewRpoint[i] = visible(Rpoint[i].x, barrier_height, Rpoint[i].z) ||
                          visible(Rpoint[j].x, barrier_height, Rpoint[j].z);
    }
}

// The gantry over the finish line, and a TV camera on its stand at every
// centre point in view; the stands are turned by a fixed scatter, the heads
// aim wherever the shadow pass last aimed them.
void sTrack::drawGantryAndCameras(unsigned int ncentre) {
    glColor3f(1, 1, 1);
    glPushMatrix();
    glTranslatef(trackscale * TRACK_GANTRY_X, 0, TRACK_GANTRY_Z);
    finish3DS.drawlist();
    glPopMatrix();

    for (unsigned int i = 0; i < ncentre; i++) {
        if (!inviewCpoint[i]) continue;
        glPushMatrix();
        glTranslatef(Cpoint[i].x, 0, Cpoint[i].z);
        glPushMatrix();
        glRotatef((float)(i * STAND_TURN), 0, 1, 0);
        camerastand3DS.drawlist();
        glPopMatrix();
        glTranslatef(0, CAMERA_HEIGHT_F, 0);
        glRotatef(camera_ay[i], 0, 1, 0);
        glRotatef(camera_ax[i], 1, 0, 0);
        camera3DS.drawlist();
        glPopMatrix();
    }
}

void sTrack::drawObjects() {
    drawGantryAndCameras(centrePoints());
    glEnable(GL_TEXTURE_2D);
    drawBarriers();
    drawRoadsideObjects(objects());
    glCallList(LIST_fences);
}

namespace {

// One corner of a barrier face: where it stands, its texture place and its normal.
struct sFaceCorner {
    sTrackPoint p;
    float y, s, t;
    float nx, ny, nz;
};

// The three faces of the barrier segment from A to B: 0 towards the road,
// 1 away from it (a barrier width further out), 2 the top. Both barriers are
// laid out as the left one; the right barrier faces the road from the other
// side, so it hands the same corners to GL the other way round.
void barrierFace(int face, bool right, const sTrackPoint& A, const sTrackPoint& B, const sTrackPoint& NA,
                 const sTrackPoint& NB, float si, float sj, float w, float h) {
    const sTrackPoint A2 = outwards(A, NA, w), B2 = outwards(B, NB, w);
    sFaceCorner c[4];
    if (face == 0) {
        c[0] = {A, h, si, 1, NA.x, 0, NA.z};
        c[1] = {A, 0, si, 0, NA.x, 0, NA.z};
        c[2] = {B, 0, sj, 0, NB.x, 0, NB.z};
        c[3] = {B, h, sj, 1, NB.x, 0, NB.z};
    } else if (face == 1) {
        c[0] = {A2, 0, si, 0, -NA.x, 0, -NA.z};
        c[1] = {A2, h, si, 1, -NA.x, 0, -NA.z};
        c[2] = {B2, h, sj, 1, -NB.x, 0, -NB.z};
        c[3] = {B2, 0, sj, 0, -NB.x, 0, -NB.z};
    } else {
        c[0] = {A2, h, si, 0, 0, 1, 0};
        c[1] = {A, h, si, 1, 0, 1, 0};
        c[2] = {B, h, sj, 1, 0, 1, 0};
        c[3] = {B2, h, sj, 0, 0, 1, 0};
    }
    // The top keeps its first corner on the inner edge either way.
    static const int leftOrder[4] = {0, 1, 2, 3}, rightSides[4] = {3, 2, 1, 0}, rightTop[4] = {1, 0, 3, 2};
    const int* order = !right ? leftOrder : face < 2 ? rightSides : rightTop;
    for (int k = 0; k < 4; k++) {
        const sFaceCorner& v = c[order[k]];
        glNormal3f(v.nx, v.ny, v.nz);
        glTexCoord2f(v.s, v.t);
        glVertex3f(v.p.x, v.y, v.p.z);
    }
}

}  // namespace

// Barriers, one texture at a time, each segment whose ends are in view.
void sTrack::drawBarriers() {
    const unsigned int n = pairs();
    const float h = barrier_height, w = barrier_width;
    for (int face = 0; face < 3; face++) {
        glBindTexture(GL_TEXTURE_2D, face == 0 ? frontTexture : face == 1 ? backTexture : topTexture);
        glBegin(GL_QUADS);
        for (unsigned int i = 0; i < n; i++) {
            unsigned int j = (i + 1) % n;
            if (inviewLpoint[i])
                barrierFace(face, false, Lpoint[i], Lpoint[j], LNpoint[i], LNpoint[j], LTcoord[i], LTcoord[i + 1], w, h);
            if (inviewRpoint[i])
                barrierFace(face, true, Rpoint[i], Rpoint[j], RNpoint[i], RNpoint[j], RTcoord[i], RTcoord[i + 1], w, h);
        }
        glEnd();
    }
}

// The roadside objects in view; plants and advertisement boards have their pictures.
void sTrack::drawRoadsideObjects(unsigned int nobjects) {
    for (unsigned int i = 0; i < nobjects; i++) {
        if (!inviewMiscObject[i]) continue;
        unsigned int type = typeMiscobject[i];
        if (type >= TRACK_NOBJECTTYPES || !miscobjectPTR[type]) continue;
        if (type == TRACK_PLANT) {
            // Plants are pictures on a single panel, always turned to face the eye.
            glEnable(GL_ALPHA_TEST);
            glDisable(GL_LIGHTING);
            glEnable(GL_TEXTURE_2D);
            glBindTexture(GL_TEXTURE_2D, natureTexture[i % N_TREES]);
            glPushMatrix();
            glTranslatef(miscobject[i].x, 0, miscobject[i].z);
            glRotatef(camera.ay, 0, 1, 0);
            miscobjectPTR[TRACK_PLANT]->drawlist();
            glPopMatrix();
            glEnable(GL_LIGHTING);
            glDisable(GL_ALPHA_TEST);
            continue;
        }
        if (type == TRACK_ADBOARD && nAds == 0) continue;  // no advertisement to put on the board
        glPushMatrix();
        glTranslatef(miscobject[i].x, 0, miscobject[i].z);
        glRotatef((float)(i * OBJECT_TURN), 0, 1, 0);
        miscobjectPTR[type]->drawlist();
        if (type == TRACK_ADBOARD) {
            const unsigned int nads = ads();
            glEnable(GL_TEXTURE_2D);
            glBindTexture(GL_TEXTURE_2D, adTexture[i % nads]);
            adboard3DS.drawlist();
            glDisable(GL_TEXTURE_2D);
        }
        glPopMatrix();
    }
}

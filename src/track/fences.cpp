// The spectators' fence: its wire in a list of its own, its posts among the ground's.

#include "track/track.h"

#include <GL/gl.h>

#include "track/trackparts.h"

using namespace trackparts;

// Fence posts stand up out of the ground; the ground's shadow marks are not theirs.
void sTrack::buildFencePoles(unsigned int n) {
    glColor4f(1, 1, 1, 0.5f);
    glBindTexture(GL_TEXTURE_2D, poleTexture);
    glDisable(GL_STENCIL_TEST);
    glBegin(GL_QUADS);
    for (unsigned int i = 0; i < n; i += 2) {
        for (int side = 0; side < 2; side++) {
            const sTrackPoint* P = side == 0 ? Lpoint : Rpoint;
            const sTrackPoint* N = side == 0 ? LNpoint : RNpoint;
            sTrackPoint foot = outwards(P[i], N[i], FENCE_OFFSET);
            // Two crossed panels, one along the fence and one across it.
            sTrackPoint across = {N[i].x * POLE_HALFWIDTH, N[i].z * POLE_HALFWIDTH};
            sTrackPoint along = {-N[i].z * POLE_HALFWIDTH, N[i].x * POLE_HALFWIDTH};
            for (const sTrackPoint& d : {across, along}) {
                glTexCoord2f(0, 0);
                glVertex3f(foot.x - d.x, 0, foot.z - d.z);
                glTexCoord2f(1, 0);
                glVertex3f(foot.x + d.x, 0, foot.z + d.z);
                glTexCoord2f(1, 1);
                glVertex3f(foot.x + d.x, POLE_HEIGHT, foot.z + d.z);
                glTexCoord2f(0, 1);
                glVertex3f(foot.x - d.x, POLE_HEIGHT, foot.z - d.z);
            }
        }
    }
    glEnd();
    glEnable(GL_STENCIL_TEST);
}

void sTrack::buildFences() {
    if (LIST_fences && glIsList(LIST_fences)) glDeleteLists(LIST_fences, 1);
    LIST_fences = glGenLists(1);
    glNewList(LIST_fences, GL_COMPILE);
    const unsigned int n = nLRpoints;
    glEnable(GL_TEXTURE_2D);
    glEnable(GL_ALPHA_TEST);
    glDisable(GL_CULL_FACE);  // a fence is seen from both sides
    glColor3f(1, 1, 1);
    glNormal3f(0, 1, 0);
    glBindTexture(GL_TEXTURE_2D, fenceTexture);
    if (n > 0) {
        for (int side = 0; side < 2; side++) {
            const sTrackPoint* P = side == 0 ? Lpoint : Rpoint;
            const sTrackPoint* N = side == 0 ? LNpoint : RNpoint;
            const float* T = side == 0 ? LTcoord : RTcoord;
            glBegin(GL_QUAD_STRIP);
            for (unsigned int i = 0; i <= n; i++) {
                sTrackPoint foot = outwards(P[i], N[i], FENCE_OFFSET);
                glTexCoord2f(T[i] / FENCE_REPEAT, 0);
                vertex(foot, 0);
                glTexCoord2f(T[i] / FENCE_REPEAT, 1);
                vertex(foot, FENCE_HEIGHT);
            }
            glEnd();
        }
    }
    glDisable(GL_TEXTURE_2D);
    glEnable(GL_CULL_FACE);
    glDisable(GL_ALPHA_TEST);
    glEndList();
}

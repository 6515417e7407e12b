// The ground's display lists: the dirt, the road, the roadside and the finish line.

#include "track/track.h"

#include <GL/gl.h>

#include <cmath>

#include "track/trackparts.h"

using namespace trackparts;

namespace {

// The finish line: half its depth along the track, and one chequer tile.
const float FINISH_HALFDEPTH = 0.3f;
const float FINISH_TILE = 0.6f;

// Ground pieces are drawn twice, once where a shadow caster has marked the
// stencil (at half brightness) and once everywhere else.
// Only bit 1 is compared; ref 3 lets a marking pass write bit 2 as well.
// The darker pass only shades inside the rectangle the shadows lie in.
template <typename Draw>
void shadowedPasses(float alpha, Draw draw, int ref = 1) {
    glStencilFunc(GL_EQUAL, ref, 1);
    glEnable(GL_SCISSOR_TEST);
    draw(0.5f, alpha);
    glDisable(GL_SCISSOR_TEST);
    glStencilFunc(GL_NOTEQUAL, ref, 1);
    draw(1.0f, alpha);
}

// How every piece of the ground begins: over whatever the depth buffer
// holds, textured, facing up, and through the stencil.
void groundState() {
    glDisable(GL_DEPTH_TEST);
    glEnable(GL_TEXTURE_2D);
    glNormal3f(0, 1, 0);
    glEnable(GL_STENCIL_TEST);
}

// A band outside one barrier line from d0 to d1 outwards, its alpha going
// from a0 to a1: across it the picture repeats with the distance from the
// barrier, along it with the distance driven.
void band(const sTrackPoint* P, const sTrackPoint* N, const float* T, unsigned int n, float d0, float d1, float a0,
          float a1, float shade) {
    glBegin(GL_QUAD_STRIP);
    for (unsigned int i = 0; i <= n; i++) {
        float along = T[i] / GROUND_REPEAT;
        glColor4f(shade, shade, shade, a0);
        glTexCoord2f(along, d0 / GROUND_REPEAT);
        vertex(outwards(P[i], N[i], d0), 0);
        glColor4f(shade, shade, shade, a1);
        glTexCoord2f(along, d1 / GROUND_REPEAT);
        vertex(outwards(P[i], N[i], d1), 0);
    }
    glEnd();
}

}  // namespace

// Six lists: LIST_ground draws the whole ground by calling LIST_ground + 1,
// the plain dirt under everything, and LIST_ground + 2, all that lies on it.
// LIST_ground + 3 is the dirt again, marking where it drew (and drawing only
// where nothing has marked yet), so that a race frame can draw the sky
// between the two halves only where the dirt did not. LIST_ground + 5 is the
// road alone, marking where it drew, for a race frame to draw before the dirt
// so that the dirt under it is never shaded; LIST_ground + 4 is then the rest
// of what lies on the dirt.
void sTrack::buildGround() {
    if (LIST_ground && glIsList(LIST_ground)) glDeleteLists(LIST_ground, 6);
    LIST_ground = glGenLists(6);
    auto compile = [this](unsigned int k, auto build) {
        glNewList(LIST_ground + k, GL_COMPILE);
        build();
        glEndList();
    };
    compile(1, [&] { buildGroundBase(false); });
    compile(2, [&] { buildGroundCover(true); });
    compile(3, [&] { buildGroundBase(true); });
    compile(4, [&] { buildGroundCover(false); });
    compile(5, [&] {
        groundState();
        glDisable(GL_CULL_FACE);
        if (nLRpoints > 0) buildRoad(nLRpoints, true);
    });
    compile(0, [&] {
        glCallList(LIST_ground + 1);
        glCallList(LIST_ground + 2);
    });
}

// The dirt under the whole track, opaque. With mark, every pixel it draws
// gets stencil bit 2 (bit 1 is the shadows'), and it draws only where bit 2
// is still clear: where the road, drawn first, has not covered the window.
void sTrack::buildGroundBase(bool mark) {
    groundState();
    if (mark) {
        glStencilMask(2);
        glStencilOp(GL_KEEP, GL_KEEP, GL_INVERT);
    } else {
        glStencilOp(GL_KEEP, GL_KEEP, GL_KEEP);
    }
    // The ground is seen from above whichever way round a track was drawn.
    glDisable(GL_CULL_FACE);

    glBindTexture(GL_TEXTURE_2D, dirtTexture[whichDirt]);
    // Marking, bits 1 and 2 are compared (bit 2 must be clear) and a pixel
    // drawn has its bit 2 turned on.
    for (int pass = 0; pass < 2; pass++) {
        if (pass == 0) {
            if (mark)
                glStencilFunc(GL_EQUAL, 1, 3);
            else
                glStencilFunc(GL_EQUAL, 1, 1);
            glColor3f(0.5f, 0.5f, 0.5f);
            glEnable(GL_SCISSOR_TEST);
        } else {
            glDisable(GL_SCISSOR_TEST);
            if (mark)
                glStencilFunc(GL_EQUAL, 0, 3);
            else
                glStencilFunc(GL_NOTEQUAL, 1, 1);
            glColor3f(1, 1, 1);
        }
        for (int z = -256; z <= 256; z += 32) {
            glBegin(GL_QUAD_STRIP);
            for (int x = -272; x <= 272; x += 32) {
                glTexCoord2f(x * trackscale / GROUND_REPEAT, (z - 16) * trackscale / GROUND_REPEAT);
                glVertex3f(x * trackscale, 0, (z - 16) * trackscale);
                glTexCoord2f(x * trackscale / GROUND_REPEAT, (z + 16) * trackscale / GROUND_REPEAT);
                glVertex3f(x * trackscale, 0, (z + 16) * trackscale);
            }
            glEnd();
        }
    }
    if (mark) {
        glStencilMask(~0u);
        glStencilOp(GL_KEEP, GL_KEEP, GL_KEEP);
    }
}

// Road, roadside, fence posts and finish line. The state the dirt set up is
// set again first: the sky may have been drawn in between.
void sTrack::buildGroundCover(bool road) {
    groundState();
    glStencilOp(GL_KEEP, GL_KEEP, GL_KEEP);
    glDisable(GL_CULL_FACE);

    const unsigned int n = nLRpoints;
    if (n > 0) {
        if (road) buildRoad(n, false);
        buildRoadside(n);
    } else {
        // As the roadside leaves the state when there is one.
        glEnable(GL_DEPTH_TEST);
        glEnable(GL_BLEND);
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    }
    buildFencePoles(n);
    glBindTexture(GL_TEXTURE_2D, finishTexture);
    if (n > 0) buildFinishLine();

    glDisable(GL_STENCIL_TEST);
    glDisable(GL_BLEND);
    glDisable(GL_TEXTURE_2D);
    glEnable(GL_CULL_FACE);
    glColor4f(1, 1, 1, 1);
}

// The road between the barrier lines: across the road the picture spans
// once, along it it repeats with the distance driven. With mark, every pixel
// it draws gets stencil bit 2, as the dirt's marking pass would give it.
void sTrack::buildRoad(unsigned int n, bool mark) {
    glBindTexture(GL_TEXTURE_2D, roadTexture[whichRoad]);
    if (mark) {
        glStencilMask(2);
        glStencilOp(GL_KEEP, GL_KEEP, GL_REPLACE);
    }
    shadowedPasses(1.0f, [&](float shade, float) {
        glColor3f(shade, shade, shade);
        glBegin(GL_QUAD_STRIP);
        for (unsigned int i = 0; i <= n; i++) {
            float along = (LTcoord[i] + RTcoord[i]) / 2 / GROUND_REPEAT;
            glTexCoord2f(0, along);
            vertex(Lpoint[i], 0);
            glTexCoord2f(1, along);
            vertex(Rpoint[i], 0);
        }
        glEnd();
    }, mark ? 3 : 1);
    if (mark) {
        glStencilMask(~0u);
        glStencilOp(GL_KEEP, GL_KEEP, GL_KEEP);
    }
}

// Dirt along both barriers, then the grass fading in and out beyond it.
void sTrack::buildRoadside(unsigned int n) {
    glEnable(GL_DEPTH_TEST);
    glBindTexture(GL_TEXTURE_2D, dirtTexture[whichDirt]);
    shadowedPasses(1.0f, [&](float shade, float) {
        band(Lpoint, LNpoint, LTcoord, n, 0, DIRT_BAND, 1, 1, shade);
        band(Rpoint, RNpoint, RTcoord, n, 0, DIRT_BAND, 1, 1, shade);
    });

    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glBindTexture(GL_TEXTURE_2D, grassTexture);
    shadowedPasses(1.0f, [&](float shade, float) {
        for (int side = 0; side < 2; side++) {
            const sTrackPoint* P = side == 0 ? Lpoint : Rpoint;
            const sTrackPoint* N = side == 0 ? LNpoint : RNpoint;
            const float* T = side == 0 ? LTcoord : RTcoord;
            band(P, N, T, n, GRASS_IN, GRASS_FULL, 0, 1, shade);
            band(P, N, T, n, GRASS_FULL, GRASS_LAST, 1, 1, shade);
            band(P, N, T, n, GRASS_LAST, GRASS_OUT, 1, 0, shade);
        }
    });
}

// The chequered line across the road under the gantry.
void sTrack::buildFinishLine() {
    sTrackPoint a, b, dir;
    finishLine(a, b, dir);
    float dx = b.x - a.x, dz = b.z - a.z;
    float tiles = std::round(std::sqrt(dx * dx + dz * dz) / FINISH_TILE);
    if (tiles < 1) tiles = 1;
    sTrackPoint back = {dir.x * FINISH_HALFDEPTH, dir.z * FINISH_HALFDEPTH};
    shadowedPasses(0.9f, [&](float shade, float alpha) {
        glColor4f(shade, shade, shade, alpha);
        glBegin(GL_QUADS);
        glTexCoord2f(0, 0);
        glVertex3f(a.x - back.x, 0, a.z - back.z);
        glTexCoord2f(tiles, 0);
        glVertex3f(b.x - back.x, 0, b.z - back.z);
        glTexCoord2f(tiles, 1);
        glVertex3f(b.x + back.x, 0, b.z + back.z);
        glTexCoord2f(0, 1);
        glVertex3f(a.x + back.x, 0, a.z + back.z);
        glEnd();
    });
}

// Where the road crosses the gantry's line z = 2.5, nearest the gantry: the
// left and right barrier points there and the unit direction of the road.
// A track that never passes the gantry gets its line at pair 0.
void sTrack::finishLine(sTrackPoint& a, sTrackPoint& b, sTrackPoint& dir) const {
    const unsigned int n = nLRpoints;
    const float gx = trackscale * TRACK_GANTRY_X, gz = TRACK_GANTRY_Z;
    unsigned int best = 0;
    float bestt = 0, bestd = -1;
    for (unsigned int i = 0; i < n; i++) {
        float z0 = (Lpoint[i].z + Rpoint[i].z) / 2, z1 = (Lpoint[i + 1].z + Rpoint[i + 1].z) / 2;
        if (z0 == z1 || (gz - z0) * (gz - z1) > 0) continue;
        float t = (gz - z0) / (z1 - z0);
        float x0 = (Lpoint[i].x + Rpoint[i].x) / 2, x1 = (Lpoint[i + 1].x + Rpoint[i + 1].x) / 2;
        float d = std::fabs(x0 + (x1 - x0) * t - gx);
        if (bestd < 0 || d < bestd) {
            bestd = d;
            best = i;
            bestt = t;
        }
    }
    unsigned int i = best, j = best + 1;
    a = {Lpoint[i].x + (Lpoint[j].x - Lpoint[i].x) * bestt, Lpoint[i].z + (Lpoint[j].z - Lpoint[i].z) * bestt};
    b = {Rpoint[i].x + (Rpoint[j].x - Rpoint[i].x) * bestt, Rpoint[i].z + (Rpoint[j].z - Rpoint[i].z) * bestt};
    float dx = (Lpoint[j].x + Rpoint[j].x - Lpoint[i].x - Rpoint[i].x) / 2;
    float dz = (Lpoint[j].z + Rpoint[j].z - Lpoint[i].z - Rpoint[i].z) / 2;
    float length = std::sqrt(dx * dx + dz * dz);
    if (length > 0)
        dir = {dx / length, dz / length};
    else
        dir = {0, -1};
}

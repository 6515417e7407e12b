// Skid marks: laying them down in each wheel's ring, and drawing them.

#include "kart/gokart.h"

#include <cmath>
#include <GL/gl.h>

#include "kart/kartshared.h"
#include "shell/angles.h"
#include "shell/bvconfig.h"

namespace {

// One wheel's strip across the ground: how far forward of the rear axle, and
// from where to where sideways (left is negative).
struct sStrip {
    float f, rfrom, rto;
};

void strips(sStrip out[4]) {
    const sGokartStaticData& s = gokartstaticdata;
    const float F = s.chasisfront - s.wheelradius, t = s.wheeltrack;
    out[0] = {F, -(t + s.frontwheelwidth), -t};
    out[1] = {F, t, t + s.frontwheelwidth};
    out[2] = {0, -(t + s.wheelwidth), -t};
    out[3] = {0, t, t + s.wheelwidth};
}

void groundpoint(float px, float pz, float cosa, float sina, float f, float r, float& x, float& z) {
    x = px - sina * f + cosa * r;
    z = pz - cosa * f - sina * r;
}

}  // namespace

// The slots of each wheel's ring in use: the setting, kept to what the ring
// holds. The console can set 0, which keeps no marks as 1 does (the one slot
// is always the one being written, and that is never drawn).
static unsigned int slideslots() {
    const unsigned int n = config.nslides;
    return n == 0 ? 1 : (n < GOKART_NSLIDES ? n : GOKART_NSLIDES);
}

// A new quad starts where the kart was before its last move; the next
// emission, at least 1/64 second later, closes it where the kart is now.
void emitslides(sGokart& k, float ay0) {
    k.DELAYslide = 1.0f;
    const float alpha = k.slidediff / 500;
    const unsigned int n = slideslots();
    sSlide* rings[4] = {k.lfSlide, k.rfSlide, k.lrSlide, k.rrSlide};
    sStrip strip[4];
    strips(strip);
    if (k.newSlide) {
        // Each new mark fades all the older ones a little.
        for (unsigned int i = 0; i < n; i++)
            for (sSlide* ring : rings)
                for (float& a : ring[i].a)
                    if (a > 0) a -= 0.1f / n;
        for (int w = 0; w < 4; w++) {
            sSlide& m = rings[w][k.CURRENTslide];
            groundpoint(k.opx, k.opz, k.ocosay, k.osinay, strip[w].f, strip[w].rfrom, m.x[0], m.z[0]);
            groundpoint(k.opx, k.opz, k.ocosay, k.osinay, strip[w].f, strip[w].rto, m.x[1], m.z[1]);
            m.a[0] = m.a[1] = alpha;
        }
        k.newSlide = false;
    } else {
        const float c = (float)cos(ay0 / DEG_PER_RAD), sn = (float)sin(ay0 / DEG_PER_RAD);
        // Kept: the slot before slot 0 is taken in unsigned arithmetic, which
        // comes to the last slot only when the ring's size is a power of two;
        // pinned by Skid.TheSlotBeforeTheFirstWrapsRightOnlyForAPowerOfTwo
        const unsigned int previous = (k.CURRENTslide - 1u) % n;
        for (int w = 0; w < 4; w++) {
            sSlide& m = rings[w][k.CURRENTslide];
            groundpoint(k.px, k.pz, c, sn, strip[w].f, strip[w].rto, m.x[2], m.z[2]);
            groundpoint(k.px, k.pz, c, sn, strip[w].f, strip[w].rfrom, m.x[3], m.z[3]);
            m.a[0] = (w == 3 ? k.rrSlide : k.lfSlide)[previous].a[1];
            m.a[1] = alpha;
        }
        k.CURRENTslide = (k.CURRENTslide + 1) % n;
        k.newSlide = true;
    }
}

void sGokart::drawslides() {
    const unsigned int n = slideslots();
    const sSlide* rings[4] = {lfSlide, rfSlide, lrSlide, rrSlide};
    glDisable(GL_DEPTH_TEST);
    glEnable(GL_TEXTURE_2D);
    glBindTexture(GL_TEXTURE_2D, gokartstaticdata.skidTexture);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glBegin(GL_QUADS);
    for (unsigned int i = 0; i < n; i++) {
        // The slot being written holds only half a quad.
        if (i == CURRENTslide) continue;
        for (const sSlide* ring : rings) {
            const sSlide& m = ring[i];
            // Faded out at both ends (or never laid): blended at no opacity
            // it would leave every pixel as it was, and most of the ring is
            // like that for most of a race.
            if (m.a[0] <= 0 && m.a[1] <= 0) continue;
            glColor4f(1, 1, 1, m.a[0]);
            glTexCoord2f(0, 0);
            glVertex3f(m.x[0], 0, m.z[0]);
            glTexCoord2f(1, 0);
            glVertex3f(m.x[1], 0, m.z[1]);
            glColor4f(1, 1, 1, m.a[1]);
            glTexCoord2f(1, 1);
            glVertex3f(m.x[2], 0, m.z[2]);
            glTexCoord2f(0, 1);
            glVertex3f(m.x[3], 0, m.z[3]);
        }
    }
    glEnd();
    glDisable(GL_BLEND);
    glDisable(GL_TEXTURE_2D);
    glEnable(GL_DEPTH_TEST);
}

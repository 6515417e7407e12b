// A kart's shadows: cast part by part, the whole kart at once, or the blob under it.

#include "kart/gokart.h"

#include <cmath>
#include <GL/gl.h>

#include "kart/kartshared.h"
#include "scene/camera.h"
#include "scene/shader.h"
#include "shell/angles.h"
#include "shell/bvconfig.h"

namespace {

// The order the parts are cast: the kart, then its driver.
const eMount CASTORDER[NMOUNTS] = {
    MOUNT_PLASTIC, MOUNT_CHASIS, MOUNT_LFRONTWHEEL, MOUNT_RFRONTWHEEL, MOUNT_LREARWHEEL, MOUNT_RREARWHEEL,
    MOUNT_LPEDAL,  MOUNT_RPEDAL, MOUNT_STEERINGWHEEL, MOUNT_BODY,     MOUNT_LFOOT,      MOUNT_RFOOT,
    MOUNT_HEAD,    MOUNT_LARMU, MOUNT_LARMD,         MOUNT_RARMU,    MOUNT_RARMD,
};

// Casts one part of a kart the way draw() places it: at its mounting point in
// the kart's frame, then turned by its turn about the vertical (and half a
// turn more when turned round), its pitch about its own x and its roll about
// its own z; eMirror says how the shadow steps leave it.
void castpart(const sGokart& k, const sMount& m) {
    s3DS& model = gokartstaticdata.*PARTS[m.part].lo;
    float lx, ly, lz;
    mountpoint(m, k, lx, ly, lz);
    float turn = m.turn ? m.turn(k) : 0;
    if (m.turnedround) turn = 180 + turn;
    const float pitch = m.pitch ? m.pitch(k) : 0, roll = m.roll ? m.roll(k) : 0;
    const float a = k.ay / KART_DEG_PER_RAD, c = cosf(a), s = sinf(a);
    const float x = k.px + lx * c + lz * s, y = gokartstaticdata.wheelradius + ly, z = k.pz - lx * s + lz * c;
    const float L0 = LightPosition[0], L1 = LightPosition[1], L2 = LightPosition[2];
    const float heading = k.ay + turn;
    switch (m.mirror) {
    case EXACT:
        model.castshadow(0, L0, L1, L2, x, y, z, 0, heading + 180, 0, STEP_NONE, STEP_HEADING, STEP_NONE);
        break;
    case FRONTBACK:
        model.castshadow(0, L0, L1, L2, x, y, z, -pitch, heading + 180, roll, STEP_ROLL, STEP_PITCH, STEP_HEADING);
        break;
    case SIDEWAYS:
        model.castshadow(0, L0, L1, L2, x, y, z, pitch, heading, -roll, STEP_ROLL, STEP_PITCH, STEP_HEADING);
        break;
    }
}

}  // namespace

void sGokart::castshadow() {
    if (!inviewG) return;
    sGokartStaticData& s = gokartstaticdata;
    const float d = inviewDist;
    doshadowmap = false;
    if (config.shadows >= 3 && d < config.HIrange[config.lodlevel()]) {
        // Unlike in drawing, the driver's own body goes too: he would see its
        // shadow round his feet.
        bool ownview = ID == config.gokartfocus && camera.mode == CAMERA_DRIVER;
        for (eMount i : CASTORDER)
            if (!ownview || KARTPARTS[i].leftout == KEPT) castpart(*this, KARTPARTS[i]);
    } else if (config.shadows > 1 && d < config.MErange[config.lodlevel()]) {
        s.SLOgokart3DS.castshadow(0, LightPosition[0], LightPosition[1], LightPosition[2], px, s.wheelradius, pz, 0,
                                  ay + 180, 0, STEP_NONE, STEP_HEADING, STEP_NONE);
    } else {
        doshadowmap = true;
    }
}

void sGokart::drawshadowmap() {
    const sGokartStaticData& s = gokartstaticdata;
    glDisable(GL_DEPTH_TEST);
    glEnable(GL_TEXTURE_2D);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glColor4f(1, 1, 1, 0.5f);
    glPushMatrix();
    glTranslatef(px, 0, pz);
    glRotatef(ay, 0, 1, 0);

    const float w = s.chasiswidth / 2 + 0.025f, front = -s.chasisfront - 0.05f, back = -s.chasisback + 0.025f;
    glBindTexture(GL_TEXTURE_2D, s.shadowmapTexture);
    glBegin(GL_QUADS);
    glTexCoord2f(0, 1);
    glVertex3f(-w, 0, front);
    glTexCoord2f(0, 0);
    glVertex3f(-w, 0, back);
    glTexCoord2f(1, 0);
    glVertex3f(w, 0, back);
    glTexCoord2f(1, 1);
    glVertex3f(w, 0, front);
    glEnd();

    const float r = s.wheelradius, f = s.frontwheelwidth;
    glBindTexture(GL_TEXTURE_2D, s.fwshadowmapTexture);
    glPushMatrix();
    glTranslatef(-s.wheeltrack, 0, -s.wheelbase);
    glRotatef(lfw_ay, 0, 1, 0);
    glBegin(GL_QUADS);
    glTexCoord2f(0, 1);
    glVertex3f(-f, 0, -r);
    glTexCoord2f(0, 0);
    glVertex3f(-f, 0, r);
    glTexCoord2f(1, 0);
    glVertex3f(0, 0, r);
    glTexCoord2f(1, 1);
    glVertex3f(0, 0, -r);
    glEnd();
    glPopMatrix();
    glPushMatrix();
    glTranslatef(s.wheeltrack, 0, -s.wheelbase);
    glRotatef(rfw_ay, 0, 1, 0);
    glBegin(GL_QUADS);
    glTexCoord2f(0, 1);
    glVertex3f(0, 0, -r);
    glTexCoord2f(0, 0);
    glVertex3f(0, 0, r);
    glTexCoord2f(1, 0);
    glVertex3f(f, 0, r);
    glTexCoord2f(1, 1);
    glVertex3f(f, 0, -r);
    glEnd();
    glPopMatrix();

    glPopMatrix();
    glDisable(GL_BLEND);
    glDisable(GL_TEXTURE_2D);
    glEnable(GL_DEPTH_TEST);
}

// A kart's shadows: cast part by part, the whole kart at once, or the blob under it.

#include "kart/gokart.h"

#include <cmath>
#include <GL/gl.h>

#include "scene/camera.h"
#include "scene/shader.h"
#include "shell/angles.h"
#include "shell/bvconfig.h"


namespace {

// Casts one part of a kart the way draw() places it: at (lx, ly, lz) in the
// kart's frame, then turned by `turn` about the vertical, `pitch` about its
// own x and `roll` about its own z.
//
// The shadow steps mirror an axis each. A part turned only about the
// vertical casts exactly with the heading plus 180. A pitched part takes two
// mirrors, and the two leave the part mirrored about one of its own axes
// whatever we pass: wheels (round about their axle) are left mirrored front
// to back, everything else (feet, pedals, arms, head, steering wheel, all
// much the same left and right) side to side, which keeps each shadow under
// its part.
enum eMirror { EXACT, FRONTBACK, SIDEWAYS };

void castpart(const sGokart& k, s3DS& model, float lx, float ly, float lz, float turn, float pitch, float roll,
              eMirror mirror) {
    const float a = k.ay / KART_DEG_PER_RAD, c = cosf(a), s = sinf(a);
    const float x = k.px + lx * c + lz * s, y = gokartstaticdata.wheelradius + ly, z = k.pz - lx * s + lz * c;
    const float L0 = LightPosition[0], L1 = LightPosition[1], L2 = LightPosition[2];
    const float heading = k.ay + turn;
    switch (mirror) {
    case EXACT:
        model.castshadow(0, L0, L1, L2, x, y, z, 0, heading + 180, 0, 3, 1, 3);
        break;
    case FRONTBACK:
        model.castshadow(0, L0, L1, L2, x, y, z, -pitch, heading + 180, roll, 2, 0, 1);
        break;
    case SIDEWAYS:
        model.castshadow(0, L0, L1, L2, x, y, z, pitch, heading, -roll, 2, 0, 1);
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
        const float t = s.wheeltrack, wb = s.wheelbase;
        castpart(*this, s.LOplastic3DS, 0, 0, 0, 0, 0, 0, EXACT);
        castpart(*this, s.LOchasis3DS, 0, 0, 0, 0, 0, 0, EXACT);
        castpart(*this, s.LOfrontwheel3DS, -t, 0, -wb, lfw_ay, -lfw_ax, 0, FRONTBACK);
        castpart(*this, s.LOfrontwheel3DS, t, 0, -wb, 180 + rfw_ay, rfw_ax, 0, FRONTBACK);
        if (!ownview) {
            castpart(*this, s.LOrearwheel3DS, -t, 0, 0, 0, -lrw_ax, 0, FRONTBACK);
            castpart(*this, s.LOrearwheel3DS, t, 0, 0, 180, rrw_ax, 0, FRONTBACK);
        }
        castpart(*this, s.LOpedal3DS, -0.15f, 0, -1.2f, 0, -pedal_down, 0, SIDEWAYS);
        castpart(*this, s.LOpedal3DS, 0.15f, 0, -1.2f, 0, -pedal_up, 0, SIDEWAYS);
        castpart(*this, s.LOsteeringwheel3DS, 0, 0.4f, -0.85f, 0, -50, sw_ay * 1.8f, SIDEWAYS);
        if (!ownview) castpart(*this, s.LObody3DS, 0, 0, 0, 0, 0, 0, EXACT);
        castpart(*this, s.LOfoot3DS, -0.15f, 0.05f, -1.12f, 0, -pedal_down / 1.25f - 25, 0, SIDEWAYS);
        castpart(*this, s.LOfoot3DS, 0.15f, 0.05f, -1.12f, 0, -pedal_up / 1.25f - 25, 0, SIDEWAYS);
        if (!ownview) castpart(*this, s.LOhead3DS, 0, 0.55f, -0.37f, sw_ay / 2, head_viewax + head_ax, 0, SIDEWAYS);
        castpart(*this, s.LOarmu3DS, -0.175f, 0.5f, -0.35f, larmuay, larmuax, 0, SIDEWAYS);
        castpart(*this, s.LOarmd3DS, larmdpx, larmdpy, larmdpz, larmday, larmdax, 0, SIDEWAYS);
        castpart(*this, s.LOarmu3DS, 0.175f, 0.5f, -0.35f, rarmuay, rarmuax, 0, SIDEWAYS);
        castpart(*this, s.LOarmd3DS, rarmdpx, rarmdpy, rarmdpz, rarmday, rarmdax, 0, SIDEWAYS);
    } else if (config.shadows > 1 && d < config.MErange[config.lodlevel()]) {
        s.SLOgokart3DS.castshadow(0, LightPosition[0], LightPosition[1], LightPosition[2], px, s.wheelradius, pz, 0,
                                  ay + 180, 0, 3, 1, 3);
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

// Seeing and drawing a kart: whether it is in view, its parts, and the arms posed to hold the wheel.

#include "kart/gokart.h"

#include <cmath>
#include <GL/gl.h>

#include "kart/kartshared.h"
#include "scene/camera.h"
#include "shell/angles.h"
#include "shell/bvconfig.h"

void sGokart::isinview() {
    float x = px - sinf(ay / KART_DEG_PER_RAD) * gokartstaticdata.chasisfront / 2;
    float z = pz - cosf(ay / KART_DEG_PER_RAD) * gokartstaticdata.chasisfront / 2;
    inviewDist = camera.isinview(x, 0.2f, z);
    inviewG = inviewDist > 0 && inviewDist < config.LOrange[config.lodlevel()];
}

// Poses one arm so that its hand holds the rim of the turned steering wheel:
// side is -1 for the left arm, +1 for the right one, whose upper arm hangs
// from `shoulder`. The wheel sits on the kart's middle line.
static void solvearm(const sGokart& k, float side, const sMount& shoulder, float U, float L, float& uax,
                     float& uay, float& dax, float& day, float& dpx, float& dpy, float& dpz) {
    const sMount& wheel = KARTPARTS[MOUNT_STEERINGWHEEL];
    float theta = wheel.roll(k) / KART_DEG_PER_RAD;
    float phi = wheel.pitch(k) / KART_DEG_PER_RAD;
    float gx = side * 0.133f * cosf(theta) - 0.065f * sinf(theta);
    float gy = side * 0.133f * sinf(theta) + 0.065f * cosf(theta);
    float hx = gx;
    float hy = -0.033f * sinf(phi) + gy * cosf(phi) + wheel.y;
    float hz = 0.033f * cosf(phi) + gy * sinf(phi) + wheel.z;
    float sx = shoulder.x, sy = shoulder.y, sz = shoulder.z;
    float dx = sx - hx, dz = sz - hz;
    float dh = sqrtf(dx * dx + dz * dz);
    // A grip beyond the arm's reach would give acos a value past +-1.
    float c = (U * U + dh * dh - L * L) / (2 * U * dh);
    if (c > 1) c = 1;
    if (c < -1) c = -1;
    float bend = acosf(c) * KART_DEG_PER_RAD;
    uay = (side < 0 ? bend : -bend) + (dz >= 0 ? 0 : 180) + atandeg(dx, dz, KART_DEG_PER_RAD);
    float cz = cosf(uay / KART_DEG_PER_RAD) * dz;
    uax = (cz >= 0 ? 0 : 180) - atandeg(sy - hy, cz, KART_DEG_PER_RAD);
    dpx = sx - sinf(uay / DEG_PER_RAD_F) * U * cosf(uax / DEG_PER_RAD_F);
    dpy = sinf(uax / DEG_PER_RAD_F) * U + sy;
    dpz = sz - cosf(uay / DEG_PER_RAD_F) * U * cosf(uax / DEG_PER_RAD_F);
    float ex = dpx - hx, ey = dpy - hy, ez = dpz - hz;
    float de = sqrtf(ex * ex + ez * ez);
    day = (ez >= 0 ? 0 : 180) + atandeg(ex, ez, DEG_PER_RAD_F);
    dax = (de >= 0 ? 0 : 180) - atandeg(ey, de, DEG_PER_RAD_F);
}

namespace {

eDetail detail(float d) {
    if (d < config.HIrange[config.lodlevel()]) return DETAIL_HI;
    if (d < config.MErange[config.lodlevel()]) return DETAIL_ME;
    return DETAIL_LO;
}

// Both arms posed so that the hands hold the turned wheel.
void posearms(sGokart& k) {
    const float U = gokartstaticdata.overarmslaengde, L = gokartstaticdata.underarmslaengde;
    solvearm(k, -1, KARTPARTS[MOUNT_LARMU], U, L, k.larmuax, k.larmuay, k.larmdax, k.larmday, k.larmdpx, k.larmdpy,
             k.larmdpz);
    solvearm(k, +1, KARTPARTS[MOUNT_RARMU], U, L, k.rarmuax, k.rarmuay, k.rarmdax, k.rarmday, k.rarmdpx, k.rarmdpy,
             k.rarmdpz);
}

void paint(const sGokart& k, ePaint p) {
    if (p == KARTCOLOUR) glColor3ub(k.R, k.G, k.B);
    if (p == WHITE) glColor3f(1, 1, 1);
}

// The cheats make the head big or put a face on it.
void drawhead(s3DS& head) {
    if (config.CHEAT_0bighead) glScalef(2, 2, 2);
    if (config.CHEAT_0toviksface) {
        glEnable(GL_TEXTURE_2D);
        glBindTexture(GL_TEXTURE_2D, gokartstaticdata.myfaceTexture);
        head.draw(false, false, &gokartstaticdata.LOhead3DS);
        glDisable(GL_TEXTURE_2D);
    } else {
        head.drawlist();
    }
}

void drawpart(const sGokart& k, const sMount& m, s3DS& part) {
    if (inplace(m)) {
        part.drawlist();
        return;
    }
    float x, y, z;
    mountpoint(m, k, x, y, z);
    glPushMatrix();
    glTranslatef(x, y, z);
    if (m.turnedround) glRotatef(180, 0, 1, 0);
    if (m.turn) glRotatef(m.turn(k), 0, 1, 0);
    if (m.pitch) glRotatef(m.pitch(k), 1, 0, 0);
    if (m.roll) glRotatef(m.roll(k), 0, 0, 1);
    if (m.part == PART_HEAD)
        drawhead(part);
    else
        part.drawlist();
    glPopMatrix();
}

}  // namespace

void sGokart::draw() {
    if (!inviewG) return;
    const eDetail level = detail(inviewDist);
    // The driver never sees his own helmet or the wheels behind him.
    const bool ownview = ID == config.gokartfocus && camera.mode == CAMERA_DRIVER;
    posearms(*this);

    glPushMatrix();
    glTranslatef(px, gokartstaticdata.wheelradius, pz);
    glRotatef(ay, 0, 1, 0);
    for (const sMount& m : KARTPARTS) {
        paint(*this, m.paint);
        if (ownview && m.leftout == OWNVIEW) continue;
        drawpart(*this, m, model(m.part, level));
    }
    glPopMatrix();
}

// Seeing and drawing a kart: whether it is in view, its parts, and the arms posed to hold the wheel.

#include "kart/gokart.h"

#include <cmath>
#include <GL/gl.h>

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
// side is -1 for the left arm, +1 for the right one.
static void solvearm(float sw, float side, float U, float L, float& uax, float& uay, float& dax, float& day,
                     float& dpx, float& dpy, float& dpz) {
    float theta = sw * 1.8f / KART_DEG_PER_RAD;
    float phi = -50 / KART_DEG_PER_RAD;
    float gx = side * 0.133f * cosf(theta) - 0.065f * sinf(theta);
    float gy = side * 0.133f * sinf(theta) + 0.065f * cosf(theta);
    float hx = gx;
    float hy = -0.033f * sinf(phi) + gy * cosf(phi) + 0.4f;
    float hz = 0.033f * cosf(phi) + gy * sinf(phi) - 0.85f;
    float sx = side * 0.175f, sy = 0.5f, sz = -0.35f;
    float dx = sx - hx, dz = sz - hz;
    float dh = sqrtf(dx * dx + dz * dz);
    // A grip beyond the arm's reach would give acos a value past +-1.
    float c = (U * U + dh * dh - L * L) / (2 * U * dh);
    if (c > 1) c = 1;
    if (c < -1) c = -1;
    float bend = acosf(c) * KART_DEG_PER_RAD;
    uay = (side < 0 ? bend : -bend) + (dz >= 0 ? 0 : 180) + atanf(dx / dz) * KART_DEG_PER_RAD;
    float cz = cosf(uay / KART_DEG_PER_RAD) * dz;
    uax = (cz >= 0 ? 0 : 180) - atanf((sy - hy) / cz) * KART_DEG_PER_RAD;
    dpx = sx - sinf(uay / DEG_PER_RAD_F) * U * cosf(uax / DEG_PER_RAD_F);
    dpy = sinf(uax / DEG_PER_RAD_F) * U + sy;
    dpz = sz - cosf(uay / DEG_PER_RAD_F) * U * cosf(uax / DEG_PER_RAD_F);
    float ex = dpx - hx, ey = dpy - hy, ez = dpz - hz;
    float de = sqrtf(ex * ex + ez * ez);
    day = (ez >= 0 ? 0 : 180) + atanf(ex / ez) * DEG_PER_RAD_F;
    dax = (de >= 0 ? 0 : 180) - atanf(ey / de) * DEG_PER_RAD_F;
}

namespace {

// The three levels of detail of one part, chosen together for the whole kart.
struct sPartSet {
    s3DS *plastic, *body, *chasis, *frontwheel, *rearwheel, *pedal, *foot, *head, *armu, *armd, *steeringwheel;
};

sPartSet partset(float d) {
    sGokartStaticData& s = gokartstaticdata;
    if (d < config.HIrange[config.lodlevel()])
        return {&s.HIplastic3DS, &s.HIbody3DS, &s.HIchasis3DS, &s.HIfrontwheel3DS, &s.HIrearwheel3DS, &s.HIpedal3DS,
                &s.HIfoot3DS,    &s.HIhead3DS, &s.HIarmu3DS,   &s.HIarmd3DS,       &s.HIsteeringwheel3DS};
    if (d < config.MErange[config.lodlevel()])
        return {&s.MEplastic3DS, &s.MEbody3DS, &s.MEchasis3DS, &s.MEfrontwheel3DS, &s.MErearwheel3DS, &s.MEpedal3DS,
                &s.MEfoot3DS,    &s.MEhead3DS, &s.MEarmu3DS,   &s.MEarmd3DS,       &s.MEsteeringwheel3DS};
    return {&s.LOplastic3DS, &s.LObody3DS, &s.LOchasis3DS, &s.LOfrontwheel3DS, &s.LOrearwheel3DS, &s.LOpedal3DS,
            &s.LOfoot3DS,    &s.LOhead3DS, &s.LOarmu3DS,   &s.LOarmd3DS,       &s.LOsteeringwheel3DS};
}

void drawarm(s3DS* upper, s3DS* fore, float sx, float uay, float uax, float dpx, float dpy, float dpz, float day,
             float dax) {
    glPushMatrix();
    glTranslatef(sx, 0.5f, -0.35f);
    glRotatef(uay, 0, 1, 0);
    glRotatef(uax, 1, 0, 0);
    upper->drawlist();
    glPopMatrix();
    glPushMatrix();
    glTranslatef(dpx, dpy, dpz);
    glRotatef(day, 0, 1, 0);
    glRotatef(dax, 1, 0, 0);
    fore->drawlist();
    glPopMatrix();
}

// Plastic in the kart's colour, the body, and the feet on the pedals.
void drawbody(const sGokart& k, const sPartSet& part) {
    glColor3ub(k.R, k.G, k.B);
    part.plastic->drawlist();
    glColor3f(1, 1, 1);
    part.body->drawlist();

    glPushMatrix();
    glTranslatef(-0.15f, 0.05f, -1.12f);
    glRotatef(-k.pedal_down / 1.25f - 25, 1, 0, 0);
    part.foot->drawlist();
    glPopMatrix();
    glPushMatrix();
    glTranslatef(0.15f, 0.05f, -1.12f);
    glRotatef(-k.pedal_up / 1.25f - 25, 1, 0, 0);
    part.foot->drawlist();
    glPopMatrix();
}

// The head turns with the wheel and nods; the cheats make it big or put a face on it.
void drawhead(const sGokart& k, const sPartSet& part) {
    glPushMatrix();
    glTranslatef(0, 0.55f, -0.37f);
    glRotatef(k.sw_ay / 2, 0, 1, 0);
    glRotatef(k.head_viewax + k.head_ax, 1, 0, 0);
    if (config.CHEAT_0bighead) glScalef(2, 2, 2);
    if (config.CHEAT_0toviksface) {
        glEnable(GL_TEXTURE_2D);
        glBindTexture(GL_TEXTURE_2D, gokartstaticdata.myfaceTexture);
        part.head->draw(false, false, &gokartstaticdata.LOhead3DS);
        glDisable(GL_TEXTURE_2D);
    } else {
        part.head->drawlist();
    }
    glPopMatrix();
}

// Both arms, posed first so that the hands hold the turned wheel.
void drawarms(sGokart& k, const sPartSet& part) {
    const float U = gokartstaticdata.overarmslaengde, L = gokartstaticdata.underarmslaengde;
    solvearm(k.sw_ay, -1, U, L, k.larmuax, k.larmuay, k.larmdax, k.larmday, k.larmdpx, k.larmdpy, k.larmdpz);
    solvearm(k.sw_ay, +1, U, L, k.rarmuax, k.rarmuay, k.rarmdax, k.rarmday, k.rarmdpx, k.rarmdpy, k.rarmdpz);
    drawarm(part.armu, part.armd, -0.175f, k.larmuay, k.larmuax, k.larmdpx, k.larmdpy, k.larmdpz, k.larmday,
            k.larmdax);
    drawarm(part.armu, part.armd, 0.175f, k.rarmuay, k.rarmuax, k.rarmdpx, k.rarmdpy, k.rarmdpz, k.rarmday,
            k.rarmdax);
}

// Front wheels, steered and spinning; the right one is the left one turned round.
void drawfrontwheels(const sGokart& k, const sPartSet& part) {
    const sGokartStaticData& s = gokartstaticdata;
    glPushMatrix();
    glTranslatef(-s.wheeltrack, 0, -s.wheelbase);
    glRotatef(k.lfw_ay, 0, 1, 0);
    glRotatef(-k.lfw_ax, 1, 0, 0);
    part.frontwheel->drawlist();
    glPopMatrix();
    glPushMatrix();
    glTranslatef(s.wheeltrack, 0, -s.wheelbase);
    glRotatef(180, 0, 1, 0);
    glRotatef(k.rfw_ay, 0, 1, 0);
    glRotatef(k.rfw_ax, 1, 0, 0);
    part.frontwheel->drawlist();
    glPopMatrix();
}

void drawpedals(const sGokart& k, const sPartSet& part) {
    glPushMatrix();
    glTranslatef(-0.15f, 0, -1.2f);
    glRotatef(-k.pedal_down, 1, 0, 0);
    part.pedal->drawlist();
    glPopMatrix();
    glPushMatrix();
    glTranslatef(0.15f, 0, -1.2f);
    glRotatef(-k.pedal_up, 1, 0, 0);
    part.pedal->drawlist();
    glPopMatrix();
}

void drawrearwheels(const sGokart& k, const sPartSet& part) {
    const sGokartStaticData& s = gokartstaticdata;
    glPushMatrix();
    glTranslatef(-s.wheeltrack, 0, 0);
    glRotatef(-k.lrw_ax, 1, 0, 0);
    part.rearwheel->drawlist();
    glPopMatrix();
    glPushMatrix();
    glTranslatef(s.wheeltrack, 0, 0);
    glRotatef(180, 0, 1, 0);
    glRotatef(k.rrw_ax, 1, 0, 0);
    part.rearwheel->drawlist();
    glPopMatrix();
}

void drawsteeringwheel(const sGokart& k, const sPartSet& part) {
    glPushMatrix();
    glTranslatef(0, 0.4f, -0.85f);
    glRotatef(-50, 1, 0, 0);
    glRotatef(k.sw_ay * 1.8f, 0, 0, 1);
    part.steeringwheel->drawlist();
    glPopMatrix();
}

}  // namespace

void sGokart::draw() {
    if (!inviewG) return;
    const sPartSet part = partset(inviewDist);
    // The driver never sees his own helmet or the wheels behind him.
    const bool ownview = ID == config.gokartfocus && camera.mode == CAMERA_DRIVER;

    glPushMatrix();
    glTranslatef(px, gokartstaticdata.wheelradius, pz);
    glRotatef(ay, 0, 1, 0);
    drawbody(*this, part);
    glColor3f(1, 1, 1);
    if (!ownview) drawhead(*this, part);
    drawarms(*this, part);
    glColor3f(1, 1, 1);
    part.chasis->drawlist();
    drawfrontwheels(*this, part);
    drawpedals(*this, part);
    if (!ownview) drawrearwheels(*this, part);
    drawsteeringwheel(*this, part);
    glPopMatrix();
}

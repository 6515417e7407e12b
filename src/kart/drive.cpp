// Driving: one move of a kart, its laps, its sounds, its wheels and its driver's nod.

#include "kart/gokart.h"

#include <cmath>

#include "frontend/highscore.h"
#include "kart/kartshared.h"
#include "scene/camera.h"
#include "shell/angles.h"
#include "shell/bvconfig.h"
#include "shell/joystick.h"
#include "shell/main.h"
#include "shell/mouse.h"
#include "shell/performance.h"
#include "track/track.h"

void sGokart::move() {
    const float ups0 = ups, ay0 = ay;
    aidriver = ID >= config.nhumanplayers;
    placeonroad(countlaps());
    const float loudness = playengine();
    steer();
    pedal();
    touchkarts(loudness);
    touchbarriers(loudness);
    const float step = ups / performance.fps;
    turnandslide(step, ay0, loudness);
    advance(step, ay0);
    turnwheels(step);
    wrapangles();
    nodhead(ups0);
}

// Laps. The first pass over the line starts lap 1 and its timer; the
// frame after a lap was counted closes the time of the lap just driven.
unsigned int sGokart::countlaps() {
    if (lap != 0) currentlaptime = (float)(bvclock() - lapstart) / BV_CLOCKS_PER_SEC;
    unsigned int c = getcheckpoint();
    if (c == (unsigned int)checkpoint + 1) {
        checkpoint = (unsigned char)c;
    } else if (checkpoint != 0 || !thislapcounted) {
        if (checkpoint >= track.nLRpoints - 1 && !thislapcounted) {
            checkpoint = 0;
            lap++;
            thislapcounted = true;
        }
    } else {
        thislapcounted = false;
        lapstart = bvclock();
        if (lap >= 2 && lap <= GOKART_NLAPTIMES) {
            laptime[lap - 1] = currentlaptime;
            highscore.checkfornewrecord(ID);
        }
    }
    return c;
}

// A human driver's line across the road, from the barrier he is nearer.
void sGokart::placeonroad(unsigned int c) {
    const unsigned int n = track.pairs();
    if (aidriver || n == 0) return;
    unsigned int next = (c + 1) % n;
    float dL = distance2(track.Lpoint[c].x, track.Lpoint[c].z, px, pz) +
               distance2(track.Lpoint[next].x, track.Lpoint[next].z, px, pz);
    float dR = distance2(track.Rpoint[c].x, track.Rpoint[c].z, px, pz) +
               distance2(track.Rpoint[next].x, track.Rpoint[next].z, px, pz);
    if (dR > dL)
        placement = 0.25f;
    else if (dL > dR)
        placement = 0.75f;
    else
        placement = 0.5f;
}

// Engine: quieter with distance from the eye, higher with speed, and
// shifted by how fast the kart closes on the eye.
float sGokart::playengine() {
    if (!config.soundeffects) return 0;
    float k = 1.0f + 0.125f * distance(px, 0, pz, camera.px, camera.py, camera.pz);
    float b = camera.pz > pz ? 180.0f : 0.0f;
    float q = camera.ay - (b + atandeg(px - camera.px, pz - camera.pz));
    int pan = (int)(128 - 128 * sin(q / DEG_PER_RAD));
    float aheadx = px - (float)sin(may / DEG_PER_RAD) * ups, aheadz = pz - (float)cos(may / DEG_PER_RAD) * ups;
    float D1 = distance(px, 0, pz, camera.ox, camera.oy, camera.oz);
    float D2 = distance(aheadx, 0, aheadz, camera.px, camera.py, camera.pz);
    int frequency = (int)(250 * (D1 - D2)) + (int)fabsf(2500 * ups) + 22000;
    FSOUND_SetFrequency(CHANNEL_engine, frequency);
    FSOUND_SetVolume(CHANNEL_engine, (int)(255 / k));
    FSOUND_SetPan(CHANNEL_collission, pan);
    FSOUND_SetPan(CHANNEL_engine, pan);
    FSOUND_SetPan(CHANNEL_tire, pan);
    return k;
}

// The joystick and the mouse, when they steer, steer the followed human kart.
bool sGokart::followedhuman() const {
    return !aidriver && ID == config.gokartfocus;
}

void sGokart::steer() {
    const sGokartStaticData& s = gokartstaticdata;
    const float fps = performance.fps;
    if (config.joysticksteering && followedhuman()) {
        float target = -((float)joystick.x / 32000.0f - 1) * s.maxturn;
        sw_ay += (target - sw_ay) * 20 / fps;
    } else if (config.mousesteering && followedhuman()) {
        sw_ay -= (float)mouse.deltax * (float)config.mousesensitivity / 100;
        if (sw_ay > s.maxturn) sw_ay = s.maxturn;
        if (sw_ay < -s.maxturn) sw_ay = -s.maxturn;
    } else if (kLEFT) {
        if (sw_ay < s.maxturn) sw_ay += s.turn / fps;
    } else if (kRIGHT) {
        if (sw_ay > -s.maxturn) sw_ay -= s.turn / fps;
    } else {
        if (sw_ay > 0)
            sw_ay -= s.deturn / fps;
        else if (sw_ay < 0)
            sw_ay += s.deturn / fps;
        if (fabsf(sw_ay) < s.deturn / fps) sw_ay = 0;
    }
}

// Pedals and speed. There is no reverse gear: braking only ever slows.
void sGokart::pedal() {
    const sGokartStaticData& s = gokartstaticdata;
    const float fps = performance.fps;
    if (config.joysticksteering && followedhuman()) {
        float y = joystick.pedal(kUP, kDOWN);
        pedal_up += (y - pedal_up) * 20 / fps;
        if (pedal_up < 0) pedal_up = 0;
        pedal_down -= (y + pedal_down) * 20 / fps;
        if (pedal_down < 0) pedal_down = 0;
        if (ups >= 0 && ups < s.topspeed) {
            if (pedal_up <= pedal_down)
                ups -= s.decceleration / 45 * pedal_down / fps;
            else
                ups += (s.acceleration / 45 * pedal_up / fps) / (fabsf(ups) / 2.5f + 1);
        }
    } else if (kUP) {
        // The pull weakens as the kart gets faster.
        if (ups < s.topspeed) ups += (s.acceleration / 45 * pedal_up / fps) / (fabsf(ups) / 2.5f + 1);
        if (pedal_up < 45) pedal_up += 180 / fps;
    } else if (kDOWN) {
        // Two separate tests: a brake that would carry the speed below 0
        // is taken back at once, so braking never turns into reversing.
        float brake = s.decceleration / 45 * pedal_down / fps;
        if (ups > 0) ups -= brake;
        if (ups < 0) ups += brake;
        if (pedal_down < 45) pedal_down += 180 / fps;
    }

    if (ups > 0) ups -= s.resistance / fps;
    if (ups < 0) ups += s.resistance / fps;
    if (!kUP && fabsf(ups) < 1.5f * s.resistance / fps) ups = 0;
    if (!kUP && pedal_up > 0) pedal_up -= 180 / fps;
    if (!kDOWN && pedal_down > 0) pedal_down -= 180 / fps;
}

// The collision sound, louder the faster the kart hits.
void sGokart::playcollision(float loudness) {
    const sGokartStaticData& s = gokartstaticdata;
    if (FSOUND_IsPlaying(CHANNEL_collission)) FSOUND_StopSound(CHANNEL_collission);
    CHANNEL_collission = FSOUND_PlaySound(FSOUND_FREE, s.collission);
    FSOUND_SetVolume(CHANNEL_collission,
                     clampVolume((int)(fabsf(ups + 10) * (255 / (s.topspeed + 10)) / loudness)));
}

// Touching another kart sends this one straight away from it.
void sGokart::touchkarts(float loudness) {
    bool touched = false;
    for (bool hit : col) touched = touched || hit;
    if (!checkcol || !touched || colg >= GOKART_NKARTS) return;
    const sGokart& other = gokart[colg];
    may = atandeg(other.px - px, other.pz - pz) + (other.pz < pz ? 180.0f : 0.0f);
    if (ups > 0.25f) ups /= 2;
    if (col[4] && !col[0] && !col[1] && !col[7] && config.soundeffects) playcollision(loudness);
}

void sGokart::touchbarriers(float loudness) {
    const unsigned int n = track.pairs();
    bool walled = track.checkOutline(colx, colz, 8, col);
    if (!walled || n == 0) return;
    if (config.soundeffects) playcollision(loudness);
    // Bounce off the wall: along its normal when the kart already points
    // away from it, mirrored when it drives into it.
    // Kept: the wall's angle is atan in double times the rounded 57.3, where
    // atandeg would take the exact figure; pinned by
    // KartKept.TheBounceTakesTheWallAngleWithTheRounded573
    unsigned int i = track.lasthit < n ? track.lasthit : 0;
    unsigned int j = (i + 1) % n;
    const sTrackPoint* N = track.lasthitL ? track.LNpoint : track.RNpoint;
    float nx = (N[i].x + N[j].x) / 2, nz = (N[i].z + N[j].z) / 2;
    float w = KART_DEG_PER_RAD * (float)atan(nx / nz) + 180;
    if (nz < 0) w += 180;
    float d = unwind180(ay - w);
    if (fabsf(d) >= 90)
        may = w - d + 180;
    else
        may = w;
}

// Heading, and the slide: the travel direction follows the heading with
// a lag, and a big lag brakes.
void sGokart::turnandslide(float step, float ay0, float loudness) {
    const sGokartStaticData& s = gokartstaticdata;
    const float fps = performance.fps;
    ay += sw_ay * step;
    float d = may - ay;
    if (d < -180 || d > 180) {
        if (d + 360 >= -180 && d + 360 <= 180)
            d += 360;
        else if (d - 360 >= -180 && d - 360 <= 180)
            d -= 360;
        else
            d = 0;
    }
    may -= d * s.grip / fps;
    slidediff = fabsf(d) < 50 ? fabsf(d) : 50;
    if (slidediff > 45)
        ups -= 5 * ups / fps;
    else if (slidediff > 35)
        ups -= 2 * ups / fps;
    if (DELAYslide > 0) DELAYslide -= 64 / fps;
    if (slidediff <= 15) {
        if (config.soundeffects) FSOUND_SetPaused(CHANNEL_tire, 1);
        newSlide = true;
    } else {
        if (config.soundeffects) {
            int volume = clampVolume((int)(slidediff * 5.1f / loudness));
            FSOUND_SetPaused(CHANNEL_tire, 0);
            if (!FSOUND_IsPlaying(CHANNEL_tire)) CHANNEL_tire = FSOUND_PlaySound(FSOUND_FREE, s.tire);
            FSOUND_SetVolume(CHANNEL_tire, volume);
        }
        if ((DELAYslide <= 0 || newSlide) && config.skidmarks) emitslides(*this, ay0);
    }
}

// Along the travel direction, then held on the circuit.
void sGokart::advance(float step, float ay0) {
    opx = px;
    opz = pz;
    ocosay = (float)cos(ay0 / DEG_PER_RAD);
    osinay = (float)sin(ay0 / DEG_PER_RAD);
    oaydiff = slidediff;
    px -= (float)sin(may / DEG_PER_RAD) * step;
    pz -= (float)cos(may / DEG_PER_RAD) * step;
    staybehindbarriers();
}

// Wheels, by Ackermann: the inner front wheel steers more than the outer.
// Kept: the right front wheel's path takes (R + t)(R - t), not (R + t)^2 as
// the left's takes (R - t)^2; pinned by KartPhysics.AckermannWheels
void sGokart::turnwheels(float step) {
    const sGokartStaticData& s = gokartstaticdata;
    const float t = s.wheeltrack, wb = s.wheelbase;
    float R = sw_ay != 0 ? (float)((360 / sw_ay) / TWOPI) : 9999.0f;
    float CL = (float)(TWOPI * sqrt((R - t) * (R - t) + wb * wb));
    float CR = (float)(TWOPI * sqrt((R + t) * (R - t) + wb * wb));
    float aL = atandeg(wb, R - t);
    lfw_ax -= (aL - lfw_ay) / 360 * s.wheelaxperturn;
    lfw_ay = aL;
    float aR = atandeg(wb, R + t);
    rfw_ax -= (rfw_ay - aR) / 360 * s.wheelaxperturn;
    rfw_ay = aR;
    float W = 360 / s.wheelcircumference * step;
    float C = (float)(TWOPI * R);
    if (sw_ay < 0) {
        lfw_ax -= W * CL / C;
        rfw_ax -= W * CR / C;
    } else {
        lfw_ax += W * CL / C;
        rfw_ax += W * CR / C;
    }
    lrw_ax += W * (float)(TWOPI * (R - t)) / C;
    rrw_ax += W * (float)(TWOPI * (R + t)) / C;
}

// One correction a frame brings the angles back into [-180, 180).
void sGokart::wrapangles() {
    for (float* a : {&ay, &may, &lfw_ax, &rfw_ax, &lrw_ax, &rrw_ax}) *a = wrap180(*a);
}

// The driver's head nods with the acceleration, a damped spring.
void sGokart::nodhead(float ups0) {
    const float fps = performance.fps;
    head_axs += (ups - ups0) * 2000 / fps;
    head_axs -= head_axs * 20 / fps;
    head_axs -= head_ax * 20 / fps;
    head_ax += head_axs * 2.5f / fps;
    if (head_ax > 5) head_ax = 5;
    if (head_ax < -5) head_ax = -5;
}

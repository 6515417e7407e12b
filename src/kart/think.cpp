// The computer driver: where to aim, how hard to steer, when to press on.

#include "kart/gokart.h"

#include <cmath>
#include <cstdlib>

#include "shell/angles.h"
#include "shell/bvconfig.h"
#include "shell/main.h"
#include "shell/performance.h"
#include "track/track.h"

void sGokart::think() {
    const sGokartStaticData& s = gokartstaticdata;
    const float fps = performance.fps;
    const unsigned int level = sConfig::skilllevel(skill);

    if ((unsigned int)(bvclock() - last_aimove) < config.aiawakeness[level]) return;
    last_aimove = bvclock();
    kLEFT = kRIGHT = kUP = kDOWN = false;

    const unsigned int n = track.pairs();
    if (n == 0) return;

    // Look further ahead the faster the kart goes.
    unsigned int t = getcheckpoint() + 1;
    if (ups > 15) t++;
    if (ups > 20) t++;
    if (ups > 25) t++;
    t %= n;

    // The line across the track: pass the kart ahead on its free side, back
    // to the middle when the road is clear.
    if (placementdelay > 0) {
        placementdelay -= 0.1f / fps;
    } else {
        placementdelay = 0;
        int ahead = -1, nearest = 10;
        unsigned int karts = racingKarts();
        for (unsigned int j = 0; j < karts; j++) {
            if (j == ID) continue;
            int g = (int)gokart[j].checkpoint - (int)checkpoint;
            if (g >= -1 && g < 10 && g < nearest) {
                nearest = g;
                ahead = (int)j;
            }
        }
        if (ahead < 0) {
            if (placement < 0.5f)
                placement += 0.5f / fps;
            else if (placement > 0.5f)
                placement -= 0.5f / fps;
        } else if (gokart[ahead].placement < 0.5f) {
            if (placement < 0.7f) placement += 0.5f / fps;
        } else {
            if (placement > 0.3f) placement -= 0.5f / fps;
        }
    }

    float aimx = track.Lpoint[t].x + (track.Rpoint[t].x - track.Lpoint[t].x) * placement;
    float aimz = track.Lpoint[t].z + (track.Rpoint[t].z - track.Lpoint[t].z) * placement;
    float h = atandeg(px - aimx, pz - aimz);
    if (aimz > pz) h += 180;
    if (h - ay < -180)
        h += 360;
    else if (h - ay > 180)
        h -= 360;

    // Now and then the driver's attention lapses and the wheel stays put.
    int r = rand() % 100;
    // The wheel closes on the aim by 25 times its gap a second; below 25
    // frames a second that would overshoot the aim, and below 12.5 swing the
    // wheel ever wider, so one frame never turns it past the aim.
    float follow = 25 / fps < 1 ? 25 / fps : 1;
    if (r > (int)config.aistupidity[level]) sw_ay += ((h - ay) - sw_ay) * follow;
    // Kept: a wheel past half a turn is brought back by half a turn, not a
    // whole one; pinned by KartDriver.WheelWrapsByHalfATurn
    if (sw_ay < -180)
        sw_ay += 180;
    else if (sw_ay > 180)
        sw_ay -= 180;

    if (ups >= -0.1f && s.topspeed / 100 * (float)config.aiguts[level] > ups) kUP = true;
}

#ifndef BV_KART_KARTSHARED_H
#define BV_KART_KARTSHARED_H

// What the kart module's own files share and nothing outside it needs: the
// parts' models and where each part sits, small sums, the kart's outline, the
// skid marks' emission.

#include <cmath>

#include "kart/gokart.h"

// The eleven models of a kart's parts, each at three levels of detail, in
// loading order (kart/gokart.cpp).
enum ePart {
    PART_ARMD,
    PART_ARMU,
    PART_BODY,
    PART_CHASIS,
    PART_FOOT,
    PART_FRONTWHEEL,
    PART_HEAD,
    PART_PEDAL,
    PART_PLASTIC,
    PART_REARWHEEL,
    PART_STEERINGWHEEL,
    NPARTS
};

struct sPart {
    const char* name;
    s3DS sGokartStaticData::*lo;
    s3DS sGokartStaticData::*me;
    s3DS sGokartStaticData::*hi;
};

extern const sPart PARTS[NPARTS];

// The level of detail, chosen by distance for the whole kart.
enum eDetail { DETAIL_LO, DETAIL_ME, DETAIL_HI };

inline s3DS& model(ePart p, eDetail level) {
    const sPart& part = PARTS[p];
    return gokartstaticdata.*(level == DETAIL_HI ? part.hi : (level == DETAIL_ME ? part.me : part.lo));
}

// How a part's shadow is cast (kart/shadow.cpp).
//
// The shadow steps mirror an axis each. A part turned only about the
// vertical casts exactly with the heading plus 180. A pitched part takes two
// mirrors, and the two leave the part mirrored about one of its own axes
// whatever we pass: wheels (round about their axle) are left mirrored front
// to back, everything else (feet, pedals, arms, head, steering wheel, all
// much the same left and right) side to side, which keeps each shadow under
// its part.
enum eMirror { EXACT, FRONTBACK, SIDEWAYS };

// When a part is left out: never, in its own driver's view (drawn and cast
// alike), or only its shadow in that view (he would see it round his feet).
enum eLeftOut { KEPT, OWNVIEW, OWNSHADOW };

// The colour set as a part is drawn: as it stands, the kart's, or white.
enum ePaint { ASITIS, KARTCOLOUR, WHITE };

// Where one part of a kart sits and how it turns, in the kart's frame (x to
// the right, y up from the axles, -z ahead). Drawing turns the part by
// turnedround, turn, pitch and roll in that order, each about the axis as
// the ones before left it; the shadow casts it with the same figures.
struct sMount {
    ePart part;
    float x, y, z;
    // Where it sits when that comes from the kart (the wheels from the
    // driving constants, the forearms from the arms' pose); null: x, y, z.
    void (*at)(const sGokart& k, float& x, float& y, float& z);
    bool turnedround;  // half a turn about the vertical first: a right-hand wheel is a left one turned round
    float (*turn)(const sGokart& k);   // about the vertical, degrees; null: none
    float (*pitch)(const sGokart& k);  // about its own x
    float (*roll)(const sGokart& k);   // about its own z
    eMirror mirror;
    eLeftOut leftout;
    ePaint paint;  // set before the part, whether it is then left out or not
};

// The parts in the order they are drawn (kart/parts.cpp).
enum eMount {
    MOUNT_PLASTIC,
    MOUNT_BODY,
    MOUNT_LFOOT,
    MOUNT_RFOOT,
    MOUNT_HEAD,
    MOUNT_LARMU,
    MOUNT_LARMD,
    MOUNT_RARMU,
    MOUNT_RARMD,
    MOUNT_CHASIS,
    MOUNT_LFRONTWHEEL,
    MOUNT_RFRONTWHEEL,
    MOUNT_LPEDAL,
    MOUNT_RPEDAL,
    MOUNT_LREARWHEEL,
    MOUNT_RREARWHEEL,
    MOUNT_STEERINGWHEEL,
    NMOUNTS
};

extern const sMount KARTPARTS[NMOUNTS];

// Drawn where the kart itself is: no offset and no turn of its own.
inline bool inplace(const sMount& m) {
    return !m.at && m.x == 0 && m.y == 0 && m.z == 0 && !m.turnedround && !m.turn && !m.pitch && !m.roll;
}

// Where a part sits for this kart.
inline void mountpoint(const sMount& m, const sGokart& k, float& x, float& y, float& z) {
    if (m.at) {
        m.at(k, x, y, z);
    } else {
        x = m.x;
        y = m.y;
        z = m.z;
    }
}

// Brings an angle into [-180, 180] with as many turns as it takes.
inline float unwind180(float a) {
    // A heading run away to billions (a computer driver's wheel swinging
    // wider each frame at a very low frame rate) would never get there by
    // adding 360s: in single precision the sum stops changing.
    if (fabsf(a) > 3600) a = fmodf(a, 360);
    while (a < -180) a += 360;
    while (a > 180) a -= 360;
    return a;
}

inline float distance(float x1, float y1, float z1, float x2, float y2, float z2) {
    return sqrtf((x2 - x1) * (x2 - x1) + (y2 - y1) * (y2 - y1) + (z2 - z1) * (z2 - z1));
}

inline float distance2(float x1, float z1, float x2, float z2) {
    return sqrtf((x2 - x1) * (x2 - x1) + (z2 - z1) * (z2 - z1));
}

inline int clampVolume(int v) {
    return v < 0 ? 0 : (v > 255 ? 255 : v);
}

// The kart's outline at (px, pz) heading ay: eight corners round the chassis,
// the nose narrower than the sides (kart/collide.cpp).
void outline(float px, float pz, float ay, float* x, float* z);

// Lays the next skid mark of all four wheels (kart/slides.cpp).
void emitslides(sGokart& k, float ay0);

#endif

// The kart: eleven parts at three levels of detail and the one-piece
// silhouette of the ghost.
//
// Every part is modelled in the frame the kart drawing places it in. The kart
// frame has its origin in the middle of the rear axle at wheel-centre height
// (the ground is at y = -0.11), x to the right, y up, the nose towards -z. The
// plastic, chassis and body are drawn at that origin; every other part has a
// pivot of its own, given with it below. The drawing colours everything
// itself (paint in the kart's colour, the rest white), so all detail comes
// from textures; the paint picture is light so that the colour shows.
//
// The ME and HI files draw with the LO file's textures, looked up by material
// number, so the three levels of a part declare the same materials in the same
// order, whether or not a level uses all of them.

#include <cmath>

#include "datagen/models_kart_internal.h"

namespace modelgen {

namespace {

const float WHEEL_RADIUS = 0.11f;
// The tilt of the pedal faces at rest, and the feet's resting turn about x.
const float PEDAL_LEAN = -25.0f;

// Round things get this many sides at each level; ellipsoids this many rings.
int sides(int level, int lo, int me, int hi) { return level == 0 ? lo : level == 1 ? me : hi; }

// --- wheels: the left wheel, from its inner face at x = 0 out to -x, about
// its axle on the x axis. The right wheel is the same model turned 180
// degrees about y; the front wheels steer about the middle of the inner face.
writer3ds::Model wheel(int level, float width, float rimRadius) {
    Builder b;
    int tyre = b.material("Tyre", 30, 30, 30, "Tyre.tga");
    int rim = b.material("Rim", 200, 200, 200, "Metal.tga");
    const float R = WHEEL_RADIUS;
    Mesh& t = b.object("Tyre", tyre);
    t.xf = Xform::alongY({0, 0, 0}, {-1, 0, 0});
    if (level == 0) {
        // Eight sides, with corners at the top, bottom, front and back so
        // that the wheel stands on the ground and keeps its full size.
        lathe(t, byLength({{0, 0, 0, false}, {R, 0, 0, true}, {R, width, 0, true}, {0, width, 0, false}}), 8, 2);
        return b.finish();
    }
    // The tyre: sidewall, rounded shoulder, tread, shoulder, sidewall.
    const float q = 0.022f;
    int steps = level == 1 ? 1 : 3;
    std::vector<P2> p;
    p.push_back({rimRadius, 0, 0, true});
    for (int i = 0; i <= steps; i++) {
        float a = (float)(M_PI / 2) * i / steps;
        p.push_back({R - q + q * std::sin(a), q - q * std::cos(a), 0, false});
    }
    for (int i = 0; i <= steps; i++) {
        float a = (float)(M_PI / 2) * i / steps;
        p.push_back({R - q + q * std::cos(a), width - q + q * std::sin(a), 0, false});
    }
    p.push_back({rimRadius, width, 0, true});
    lathe(t, byLength(p), sides(level, 6, 12, 24), 4);

    // The rim: closed on the inside, dished on the outside with a hub nut.
    Mesh& r = b.object("Rim", rim);
    r.xf = t.xf;
    float lip = 0.012f, dish = level == 1 ? 0.02f : 0.025f;
    std::vector<P2> rp = {{0, 0, 0, false},
                          {rimRadius, 0, 0, true},
                          {rimRadius, width, 0, true},
                          {rimRadius - lip, width, 0, true},
                          {rimRadius - lip, width - dish, 0, true}};
    if (level == 2) {
        rp.push_back({0.03f, width - dish, 0, true});
        rp.push_back({0.03f, width - 0.006f, 0, true});
        rp.push_back({0, width - 0.006f, 0, false});
    } else {
        rp.push_back({0, width - dish, 0, false});
    }
    lathe(r, byLength(rp), sides(level, 6, 12, 24), 1);
    return b.finish();
}

// --- plastic: nose, front panel, side pods and rear bumper, in the kart's
// colour. Together they give the kart its size: 1.24 wide, nose 1.364 ahead
// of the rear axle, tail 0.154 behind it.
writer3ds::Model plastic(int level) {
    Builder b;
    int paint = b.material("Paint", 255, 255, 255, "Kartpaint.tga");
    Mesh& m = b.object("Bodywork", paint);
    const float uv = 2.0f;
    // Front spoiler, ahead of the front wheels; its top falls towards the nose.
    {
        V3 c[8] = {{-0.56f, -0.08f, -1.364f}, {0.56f, -0.08f, -1.364f}, {-0.56f, 0.03f, -1.364f},
                   {0.56f, 0.03f, -1.364f},   {-0.56f, -0.08f, -1.318f}, {0.56f, -0.08f, -1.318f},
                   {-0.56f, 0.06f, -1.318f},  {0.56f, 0.06f, -1.318f}};
        hexa(m, c, uv);
    }
    // Front panel standing on the spoiler, in front of the driver's toes.
    {
        V3 c[8] = {{-0.24f, 0.03f, -1.364f}, {0.24f, 0.03f, -1.364f}, {-0.19f, 0.30f, -1.364f},
                   {0.19f, 0.30f, -1.364f},  {-0.24f, 0.03f, -1.336f}, {0.24f, 0.03f, -1.336f},
                   {-0.19f, 0.30f, -1.342f}, {0.19f, 0.30f, -1.342f}};
        hexa(m, c, uv);
    }
    // Side pods between the wheels, out to the kart's full width.
    for (int side = -1; side <= 1; side += 2) {
        float s = (float)side;
        float in = 0.44f * s, out = 0.62f * s, outTop = 0.60f * s;
        V3 c[8];
        for (int i = 0; i < 8; i++) {
            bool px = (i & 1) != 0, py = (i & 2) != 0, pz = (i & 4) != 0;
            // Corner bit 0 is the +x side: outside for the right pod, inside for the left.
            bool outer = (px == (side > 0));
            float x = outer ? (py ? outTop : out) : in;
            float y = py ? (outer ? 0.05f : 0.075f) : -0.075f;
            float z = pz ? -0.22f : -1.0f;
            c[i] = {x, y, z};
        }
        hexa(m, c, uv);
    }
    // Rear bumper behind the rear wheels.
    box(m, {-0.62f, -0.08f, 0.118f}, {0.62f, 0.05f, 0.154f}, uv);
    if (level > 0) {
        // Its two stays, under the axle to the frame.
        box(m, {-0.26f, -0.07f, 0.0f}, {-0.2f, -0.035f, 0.118f}, uv);
        box(m, {0.2f, -0.07f, 0.0f}, {0.26f, -0.035f, 0.118f}, uv);
    }
    if (level > 1) {
        // Lips along the pods' tops.
        for (float s : {-1.0f, 1.0f}) {
            float a = 0.5f * s, b = 0.6f * s;
            box(m, {std::min(a, b), 0.05f, -0.98f}, {std::max(a, b), 0.085f, -0.24f}, uv);
        }
        // Pod stays to the frame rails.
        for (float z : {-0.85f, -0.35f}) {
            box(m, {-0.44f, -0.06f, z - 0.02f}, {-0.28f, -0.04f, z + 0.02f}, uv);
            box(m, {0.28f, -0.06f, z - 0.02f}, {0.44f, -0.04f, z + 0.02f}, uv);
        }
    }
    return b.finish();
}

// --- chassis: frame, axles, seat, engine, steering column.

// Texture repeats on the chassis's boxes.
const float CHASSIS_UV = 3.0f;

// The steering column runs from behind the wheel's hub down along the
// wheel's axis to the floor ahead of the pedals' pivot.
void steeringColumn(V3& top, V3& foot) {
    const V3 wheelCentre = {0, 0.4f, -0.85f};
    const V3 column = {0, -std::sin(50 * (float)M_PI / 180), -std::cos(50 * (float)M_PI / 180)};
    top = wheelCentre + column * 0.03f;
    foot = wheelCentre + column * 0.45f;
}

// LO: both axles, the column, an engine block and a flat seat.
void roughChassis(Mesh& f, Mesh& s) {
    const float uv = CHASSIS_UV;
    V3 columnTop, columnFoot;
    steeringColumn(columnTop, columnFoot);
    tube(f, {-0.375f, 0, 0}, {0.375f, 0, 0}, 0.025f, 0.025f, 3, false);
    tube(f, {-0.375f, 0, -1.2f}, {0.375f, 0, -1.2f}, 0.02f, 0.02f, 3, false);
    tube(f, columnTop, columnFoot, 0.016f, 0.016f, 3, false);
    box(f, {0.24f, -0.065f, -0.45f}, {0.42f, 0.22f, -0.17f}, uv);
    V3 c[8] = {{-0.18f, -0.065f, -0.24f}, {0.18f, -0.065f, -0.24f}, {-0.18f, 0.40f, -0.17f},
               {0.18f, 0.40f, -0.17f},    {-0.18f, -0.065f, -0.19f}, {0.18f, -0.065f, -0.19f},
               {-0.18f, 0.40f, -0.12f},   {0.18f, 0.40f, -0.12f}};
    hexa(s, c, uv);
}

// The frame rails, narrowing to the nose, and (HI) up to the front axle beam.
void frameRails(Mesh& f, int n, bool fine) {
    const bool caps = fine;
    const float rail = 0.016f;
    for (float x : {-0.28f, 0.28f}) {
        float in = x * 0.72f;
        tube(f, {x, -0.05f, 0.06f}, {x, -0.05f, -1.1f}, rail, rail, n, caps);
        tube(f, {x, -0.05f, -1.1f}, {in, -0.05f, -1.3f}, rail, rail, n, caps);
        // Up to the front axle beam.
        if (fine) tube(f, {x, -0.05f, -1.1f}, {x * 1.18f, -0.03f, -1.2f}, rail, rail, n, caps);
    }
    tube(f, {-0.28f * 0.72f, -0.05f, -1.3f}, {0.28f * 0.72f, -0.05f, -1.3f}, rail, rail, n, caps);
}

void axles(Mesh& f, int n, bool fine) {
    const bool caps = fine;
    const float uv = CHASSIS_UV;
    // Rear axle through both hubs, its two bearings, and the brake disc.
    tube(f, {-0.375f, 0, 0}, {0.375f, 0, 0}, 0.025f, 0.025f, n, true);
    if (fine) {
        box(f, {-0.32f, -0.065f, -0.05f}, {-0.26f, 0.045f, 0.05f}, uv);
        box(f, {0.26f, -0.065f, -0.05f}, {0.32f, 0.045f, 0.05f}, uv);
        tube(f, {-0.12f, 0, 0}, {-0.11f, 0, 0}, 0.08f, 0.08f, n * 2, true);
    }
    // Front axle beam, king pins and stub axles to the wheels' inner faces.
    tube(f, {-0.35f, -0.03f, -1.2f}, {0.35f, -0.03f, -1.2f}, 0.018f, 0.018f, n, caps);
    for (float x : {-0.355f, 0.355f}) {
        tube(f, {x, -0.06f, -1.2f}, {x, 0.05f, -1.2f}, 0.02f, 0.02f, n, caps);
        tube(f, {x, 0, -1.2f}, {x < 0 ? -0.375f : 0.375f, 0, -1.2f}, 0.013f, 0.013f, n, false);
    }
}

// Steering column and its foot; the engine beside the seat: crankcase,
// cylinder, and the exhaust behind.
void columnAndEngine(Mesh& f, int n, bool fine) {
    const float uv = CHASSIS_UV;
    V3 columnTop, columnFoot;
    steeringColumn(columnTop, columnFoot);
    tube(f, columnTop, columnFoot, 0.016f, 0.016f, n, true);
    if (fine) tube(f, columnFoot, {0, -0.065f, columnFoot.z}, 0.012f, 0.012f, n, false);
    box(f, {0.24f, -0.065f, -0.45f}, {0.42f, 0.12f, -0.17f}, uv);
    tube(f, {0.33f, 0.12f, -0.31f}, {0.33f, 0.26f, -0.31f}, 0.07f, 0.06f, n + 2, true);
    tube(f, {0.32f, 0.2f, 0.04f}, {-0.15f, 0.2f, 0.04f}, 0.05f, 0.05f, n + 2, true);
    if (fine) {
        tube(f, {0.33f, 0.2f, -0.24f}, {0.30f, 0.2f, -0.02f}, 0.022f, 0.022f, n, false);
        tube(f, {0.30f, 0.2f, -0.02f}, {0.30f, 0.2f, 0.04f}, 0.022f, 0.022f, n, false);
    }
}

// The seat: a bucket with its back leaning rearwards, and (HI) its sides.
void seat(Mesh& s, bool fine) {
    const float uv = CHASSIS_UV;
    {
        V3 c[8] = {{-0.18f, -0.065f, -0.55f}, {0.18f, -0.065f, -0.55f}, {-0.18f, -0.01f, -0.55f},
                   {0.18f, -0.01f, -0.55f},   {-0.18f, -0.065f, -0.19f}, {0.18f, -0.065f, -0.19f},
                   {-0.18f, -0.01f, -0.19f},  {0.18f, -0.01f, -0.19f}};
        hexa(s, c, uv);
    }
    {
        V3 c[8] = {{-0.18f, -0.01f, -0.24f}, {0.18f, -0.01f, -0.24f}, {-0.18f, 0.40f, -0.17f},
                   {0.18f, 0.40f, -0.17f},   {-0.18f, -0.01f, -0.19f}, {0.18f, -0.01f, -0.19f},
                   {-0.18f, 0.40f, -0.12f},  {0.18f, 0.40f, -0.12f}};
        hexa(s, c, uv);
    }
    for (float x : {-0.2f, 0.18f}) {
        if (!fine) break;
        V3 c[8] = {{x, -0.01f, -0.5f},         {x + 0.02f, -0.01f, -0.5f}, {x, 0.12f, -0.45f},
                   {x + 0.02f, 0.12f, -0.45f}, {x, -0.01f, -0.19f},        {x + 0.02f, -0.01f, -0.19f},
                   {x, 0.3f, -0.16f},          {x + 0.02f, 0.3f, -0.16f}};
        hexa(s, c, uv);
    }
}

writer3ds::Model chassis(int level) {
    Builder b;
    int metal = b.material("Metal", 190, 190, 195, "Metal.tga");
    int rubber = b.material("Rubber", 30, 30, 30, "Tyre.tga");
    Mesh& f = b.object("Frame", metal);
    Mesh& s = b.object("Seat", rubber);
    // Floor tray, the driver sits on it in LO.
    box(f, {-0.28f, -0.075f, -1.25f}, {0.28f, -0.065f, 0.05f}, CHASSIS_UV);
    if (level == 0) {
        roughChassis(f, s);
        return b.finish();
    }
    const int n = sides(level, 3, 4, 10);
    const bool fine = level == 2;
    frameRails(f, n, fine);
    axles(f, n, fine);
    columnAndEngine(f, n, fine);
    seat(s, fine);
    return b.finish();
}

// --- body: the seated driver from the hips to the neck, legs to the ankles
// at (+-0.15, 0.05, -1.12). The arms, feet and head are parts of their own.
writer3ds::Model body(int level) {
    Builder b;
    int suit = b.material("Suit", 40, 60, 160, "Suit.tga");
    Mesh& m = b.object("Driver", suit);
    int n = sides(level, 4, 8, 14);
    // Torso: round in section, flattened front to back.
    m.xf = Xform::translate({0, 0, -0.345f}) * Xform::scale({1, 1, 0.6f});
    std::vector<P2> torso;
    if (level == 0)
        torso = {{0, -0.04f, 0, false}, {0.17f, 0.0f, 0, false}, {0.19f, 0.42f, 0, false},
                 {0.06f, 0.56f, 0, false}, {0.05f, 0.66f, 0, false}, {0, 0.66f, 0, false}};
    else if (level == 1)
        torso = {{0, -0.04f, 0, false},   {0.16f, 0.0f, 0, false},  {0.18f, 0.25f, 0, false},
                 {0.19f, 0.42f, 0, false}, {0.12f, 0.54f, 0, false}, {0.05f, 0.58f, 0, false},
                 {0.05f, 0.66f, 0, false}, {0, 0.66f, 0, false}};
    else
        torso = {{0, -0.04f, 0, false},  {0.12f, -0.03f, 0, false}, {0.165f, 0.02f, 0, false},
                 {0.17f, 0.12f, 0, false}, {0.18f, 0.30f, 0, false}, {0.19f, 0.42f, 0, false},
                 {0.165f, 0.5f, 0, false}, {0.10f, 0.55f, 0, false}, {0.055f, 0.575f, 0, false},
                 {0.05f, 0.66f, 0, false}, {0, 0.66f, 0, false}};
    lathe(m, byLength(torso, 2), n, 2, -90);
    m.xf = Xform::identity();
    // Legs: thigh from the hip to the raised knee, shin down to the ankle.
    for (float s : {-1.0f, 1.0f}) {
        V3 hip = {0.1f * s, 0.07f, -0.40f}, knee = {0.13f * s, 0.2f, -0.78f}, ankle = {0.15f * s, 0.05f, -1.12f};
        if (level == 0) {
            tube(m, hip, knee, 0.07f, 0.056f, 3, false);
            tube(m, knee, ankle, 0.056f, 0.04f, 3, false);
            continue;
        }
        tube(m, hip, knee, 0.07f, 0.056f, n, false, 2);
        tube(m, knee, ankle, 0.052f, 0.04f, n, false, 2);
        ellipsoid(m, knee, {0.056f, 0.056f, 0.056f}, level == 1 ? 6 : 10, level == 1 ? 3 : 6);
    }
    return b.finish();
}

// --- head: a helmet about the neck's pivot at the kart's (0, 0.55, -0.37).
// The helmet picture runs once round from the back (u = 0) past the face
// (u = 0.5), bottom (v = 0) to crown (v = 1); the visor is a dark band of its own.
writer3ds::Model head(int level) {
    Builder b;
    int helmet = b.material("Helmet", 255, 255, 255, "Helmet.tga");
    int visor = b.material("Visor", 20, 20, 30, "Tyre.tga");
    Mesh& h = b.object("Helmet", helmet);
    const V3 centre = {0, 0.14f, -0.01f}, radii = {0.125f, 0.14f, 0.145f};
    int n = sides(level, 5, 12, 20), rings = sides(level, 3, 7, 12);
    ellipsoid(h, centre, radii, n, rings, 1, -90);
    if (level == 0) return b.finish();
    Mesh& v = b.object("Visor", visor);
    v.xf = Xform::translate(centre) * Xform::scale(radii * 1.03f);
    std::vector<P2> band;
    int steps = level == 1 ? 2 : 4;
    for (int i = 0; i <= steps; i++) {
        float phi = -0.1f + 0.55f * i / steps;
        band.push_back({std::cos(phi), std::sin(phi), (float)i / steps, false});
    }
    lathe(v, band, sides(level, 3, 6, 12), 1, 35, 110);
    return b.finish();
}

// --- upper arm: from the shoulder pivot along -z, 0.3 long to the elbow.
writer3ds::Model upperArm(int level) {
    Builder b;
    int suit = b.material("Suit", 40, 60, 160, "Suit.tga");
    Mesh& m = b.object("Upper arm", suit);
    const float U = 0.3f;
    if (level == 0) {
        tube(m, {0, 0, 0.04f}, {0, 0, -U - 0.03f}, 0.05f, 0.042f, 4, true);
        return b.finish();
    }
    int n = sides(level, 4, 8, 14), rings = sides(level, 2, 4, 8);
    ellipsoid(m, {0, 0, 0}, {0.056f, 0.056f, 0.056f}, n, rings);
    tube(m, {0, 0, 0}, {0, 0, -U}, 0.05f, 0.042f, n, false, 2);
    ellipsoid(m, {0, 0, -U}, {0.043f, 0.043f, 0.043f}, n, rings);
    return b.finish();
}

// --- forearm: from the elbow pivot along -z, 0.33 long, the gloved fist
// round its end, where the solver puts the hand 0.033 off the rim.
writer3ds::Model forearm(int level) {
    Builder b;
    int suit = b.material("Suit", 40, 60, 160, "Suit.tga");
    int glove = b.material("Glove", 30, 30, 30, "Tyre.tga");
    Mesh& m = b.object("Forearm", suit);
    Mesh& g = b.object("Glove", glove);
    const float L = 0.33f;
    const V3 fist = {0, -0.005f, -L - 0.012f}, fistSize = {0.046f, 0.052f, 0.064f};
    if (level == 0) {
        tube(m, {0, 0, 0}, {0, 0, -L + 0.03f}, 0.042f, 0.035f, 4, true);
        box(g, fist - fistSize, fist + fistSize, 4);
        return b.finish();
    }
    int n = sides(level, 4, 8, 14);
    tube(m, {0, 0, 0}, {0, 0, -L + 0.03f}, 0.042f, 0.034f, n, level == 2, 2);
    ellipsoid(g, fist, fistSize, n, sides(level, 2, 5, 8));
    // The cuff of the glove.
    tube(g, {0, 0, -L + 0.06f}, {0, 0, -L + 0.005f}, 0.037f, 0.04f, n, level == 2);
    return b.finish();
}

// --- foot: about the ankle pivot, the shoe standing up with its sole facing
// -z 0.088 ahead of the ankle, heel down, toes up. The drawing leans it
// forwards by 25 degrees, onto the pedal face.
writer3ds::Model foot(int level) {
    Builder b;
    int shoe = b.material("Shoe", 30, 30, 30, "Tyre.tga");
    Mesh& m = b.object("Shoe", shoe);
    const float sole = -0.088f;
    if (level == 0) {
        V3 c[8] = {{-0.045f, -0.05f, sole}, {0.045f, -0.05f, sole}, {-0.04f, 0.21f, sole},
                   {0.04f, 0.21f, sole},    {-0.045f, -0.05f, 0.03f}, {0.045f, -0.05f, 0.03f},
                   {-0.04f, 0.21f, -0.03f}, {0.04f, 0.21f, -0.03f}};
        hexa(m, c, 6);
        return b.finish();
    }
    // Sole plate, upper and toe cap.
    box(m, {-0.045f, -0.05f, sole}, {0.045f, 0.2f, sole + 0.012f}, 6);
    V3 c[8] = {{-0.042f, -0.045f, sole + 0.012f}, {0.042f, -0.045f, sole + 0.012f}, {-0.04f, 0.16f, sole + 0.012f},
               {0.04f, 0.16f, sole + 0.012f},     {-0.042f, -0.045f, 0.02f},        {0.042f, -0.045f, 0.02f},
               {-0.038f, 0.16f, -0.035f},         {0.038f, 0.16f, -0.035f}};
    hexa(m, c, 6);
    int n = sides(level, 4, 8, 12), rings = sides(level, 2, 4, 6);
    ellipsoid(m, {0, 0.16f, sole + 0.03f}, {0.04f, 0.045f, 0.03f}, n, rings);
    ellipsoid(m, {0, 0, -0.01f}, {0.045f, 0.05f, 0.045f}, n, rings);
    return b.finish();
}

// --- pedal: about its pivot on the x axis; the face leans forwards by 25
// degrees at rest and the drawing turns it further as it is pressed.
writer3ds::Model pedal(int level) {
    Builder b;
    int metal = b.material("Metal", 190, 190, 195, "Metal.tga");
    Mesh& m = b.object("Pedal", metal);
    m.xf = Xform::rotX(PEDAL_LEAN);
    box(m, {-0.035f, -0.02f, -0.006f}, {0.035f, 0.16f, 0.006f}, 8);
    if (level > 0) {
        // Toe stop at the top and the pivot tube.
        box(m, {-0.035f, 0.15f, 0.006f}, {0.035f, 0.16f, 0.02f}, 8);
        m.xf = Xform::identity();
        tube(m, {-0.04f, 0, 0}, {0.04f, 0, 0}, 0.012f, 0.012f, sides(level, 4, 6, 10), true);
    }
    return b.finish();
}

// --- steering wheel: in its own x-y plane about its centre, the driver on the
// +z side; the rim passes through the grip points 0.148 from the centre.
writer3ds::Model steeringWheel(int level) {
    Builder b;
    int grip = b.material("Grip", 30, 30, 30, "Tyre.tga");
    int metal = b.material("Metal", 190, 190, 195, "Metal.tga");
    Mesh& rim = b.object("Rim", grip);
    Mesh& hub = b.object("Hub", metal);
    const float R = 0.148f, r = 0.016f;
    rim.xf = Xform::rotX(90);
    torus(rim, R, r, sides(level, 8, 16, 32), sides(level, 3, 5, 8), 4);
    if (level == 0) {
        box(hub, {-R, -0.015f, -0.012f}, {R, 0.015f, 0.0f}, 4);
        return b.finish();
    }
    // Hub towards the column, and spokes to three, nine and six o'clock.
    tube(hub, {0, 0, -0.05f}, {0, 0, 0.008f}, 0.032f, 0.036f, sides(level, 4, 8, 16), true);
    box(hub, {-R, -0.014f, -0.012f}, {-0.03f, 0.014f, -0.002f}, 4);
    box(hub, {0.03f, -0.014f, -0.012f}, {R, 0.014f, -0.002f}, 4);
    box(hub, {-0.014f, -R, -0.012f}, {0.014f, -0.03f, -0.002f}, 4);
    return b.finish();
}

}  // namespace

writer3ds::Model kartPart(const std::string& part, int level) {
    if (part == "armd") return forearm(level);
    if (part == "armu") return upperArm(level);
    if (part == "body") return body(level);
    if (part == "chasis") return chassis(level);
    if (part == "foot") return foot(level);
    if (part == "frontwheel") return wheel(level, 0.11f, 0.065f);
    if (part == "head") return head(level);
    if (part == "pedal") return pedal(level);
    if (part == "plastic") return plastic(level);
    if (part == "rearwheel") return wheel(level, 0.19f, 0.07f);
    if (part == "steeringwheel") return steeringWheel(level);
    return writer3ds::Model();
}

// The ghost: one untextured piece, drawn in whatever colour and texture state
// the caller has set, the same size and place as the kart.
writer3ds::Model kartSilhouette() {
    Builder b;
    int ghost = b.material("Ghost", 255, 255, 255, "");
    Mesh& m = b.object("Gokart", ghost);
    box(m, {-0.62f, -0.08f, -1.0f}, {0.62f, 0.07f, -0.22f}, 0);   // pods and floor
    box(m, {-0.56f, -0.08f, -1.364f}, {0.56f, 0.30f, -1.318f}, 0);  // nose and panel
    box(m, {-0.62f, -0.08f, 0.118f}, {0.62f, 0.05f, 0.154f}, 0);    // rear bumper
    box(m, {-0.19f, -0.04f, -0.46f}, {0.19f, 0.66f, -0.23f}, 0);    // driver
    box(m, {-0.125f, 0.55f, -0.525f}, {0.125f, 0.83f, -0.235f}, 0);  // helmet
    box(m, {-0.2f, 0.0f, -1.15f}, {0.2f, 0.25f, -0.46f}, 0);        // legs
    const float R = WHEEL_RADIUS;
    for (float s : {-1.0f, 1.0f}) {
        box(m, {s > 0 ? 0.375f : -0.565f, -R, -R}, {s > 0 ? 0.565f : -0.375f, R, R}, 0);
        box(m, {s > 0 ? 0.375f : -0.485f, -R, -1.2f - R}, {s > 0 ? 0.485f : -0.375f, R, -1.2f + R}, 0);
    }
    return b.finish(false);
}

}  // namespace modelgen

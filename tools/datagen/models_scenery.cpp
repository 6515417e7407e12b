// The roadside models, the finish gantry, the TV camera and its stand, and the
// sky. Real-world sizes in metres, each standing on the ground (y = 0) about
// its own origin, which is where the track puts it; the track turns all but
// the gantry about the vertical axis, so their fronts face +z only until then.
//
// The track draws them in white and binds their textures, so a surface gets
// its look from its picture alone. The advertising board and the plant are
// different: the track binds the advertisement or the plant picture itself,
// so their faces span the whole picture (u, v 0..1) and name a picture only
// so that they carry texture coordinates.

#include <cmath>

#include "datagen/models_kart_internal.h"

namespace modelgen {

namespace {

// A flat quad from four corners counter-clockwise seen from its front, with
// the texture rectangle u0..u1, v0..v1 from its bottom left.
void panel(Mesh& m, V3 a, V3 b, V3 c, V3 d, float u0, float v0, float u1, float v1) {
    uint16_t i = m.vert(a, u0, v0), j = m.vert(b, u1, v0), k = m.vert(c, u1, v1), l = m.vert(d, u0, v1);
    m.quad(i, j, k, l);
}

// A disc facing +z about c, textured by the rectangle u0..u1, v0..v1.
void disc(Mesh& m, V3 c, float radius, int n, float u0, float v0, float u1, float v1) {
    uint16_t centre = m.vert(c, (u0 + u1) / 2, (v0 + v1) / 2);
    uint16_t first = 0;
    for (int i = 0; i <= n; i++) {
        float a = (float)(2 * M_PI) * i / n;
        float x = std::cos(a), y = std::sin(a);
        uint16_t k = m.vert(c + V3{x * radius, y * radius, 0}, u0 + (u1 - u0) * (x + 1) / 2, v0 + (v1 - v0) * (y + 1) / 2);
        if (i == 0) first = k;
    }
    for (int i = 0; i < n; i++) m.tri(centre, (uint16_t)(first + i), (uint16_t)(first + i + 1));
}

// An oil drum standing on its base at the origin: 0.58 across, 0.88 tall,
// with two rolling hoops; the side picture wraps once round, bottom to top.
void steelDrum(Builder& b, const Xform& where) {
    int side = b.material("Drum", 200, 40, 30, "Barrel.tga");
    int lid = b.material("Lid", 190, 190, 195, "Metal.tga");
    Mesh& s = b.object("Drum", side);
    s.xf = where;
    const float R = 0.29f, H = 0.88f;
    std::vector<P2> p = {{R - 0.01f, 0, 0, true}, {R, 0.015f, 0, false}};
    for (float h : {0.29f, 0.59f}) {
        p.push_back({R, h - 0.02f, 0, false});
        p.push_back({R + 0.012f, h, 0, false});
        p.push_back({R, h + 0.02f, 0, false});
    }
    p.push_back({R, H - 0.015f, 0, false});
    p.push_back({R - 0.005f, H, 0, true});
    p.push_back({R - 0.02f, H, 0, true});
    p.push_back({R - 0.02f, H - 0.012f, 0, true});
    lathe(s, byLength(p), 20, 1, -90);
    Mesh& l = b.object("Lid", lid);
    l.xf = where;
    lathe(l, {{R - 0.02f, H - 0.012f, 0, true}, {0, H - 0.012f, 1, false}}, 20, 1);
    lathe(l, {{0, 0, 0, false}, {R - 0.01f, 0, 1, false}}, 20, 1);
    tube(l, {0.15f, H - 0.012f, 0}, {0.15f, H - 0.002f, 0}, 0.025f, 0.025f, 8, true);
}

// A blue plastic drum: 0.56 across, 0.95 tall, two ribs, a rounded shoulder
// and two bungs on top.
void plasticDrum(Builder& b, const Xform& where) {
    int side = b.material("Drum", 40, 70, 200, "Barrel2.tga");
    Mesh& s = b.object("Drum", side);
    s.xf = where;
    const float R = 0.28f, H = 0.95f;
    std::vector<P2> p = {{0, 0, 0, false}, {R - 0.03f, 0, 0, false}, {R, 0.03f, 0, false}};
    for (float h : {0.32f, 0.62f}) {
        p.push_back({R, h - 0.03f, 0, false});
        p.push_back({R - 0.015f, h, 0, false});
        p.push_back({R, h + 0.03f, 0, false});
    }
    p.push_back({R, H - 0.06f, 0, false});
    p.push_back({R - 0.03f, H - 0.01f, 0, false});
    p.push_back({R - 0.06f, H, 0, false});
    p.push_back({0, H, 0, false});
    lathe(s, byLength(p), 20, 1, -90);
    for (float x : {-0.15f, 0.15f}) tube(s, {x, H - 0.002f, 0.05f}, {x, H + 0.02f, 0.05f}, 0.035f, 0.035f, 8, true);
}

// A wooden wedge under a drum lying on its side, so that it cannot roll.
void chock(Mesh& m, float x, float z) {
    V3 c[8] = {{x - 0.08f, 0, z - 0.05f},     {x + 0.08f, 0, z - 0.05f},  {x - 0.08f, 0.0f, z - 0.05f},
               {x + 0.08f, 0.0f, z - 0.05f},  {x - 0.08f, 0, z + 0.05f},  {x + 0.08f, 0, z + 0.05f},
               {x - 0.08f, 0.09f, z + 0.05f}, {x + 0.08f, 0.09f, z + 0.05f}};
    // A wedge is a box whose top front edge sits on the ground: lift that
    // edge a little so that no face collapses.
    c[2].y = c[3].y = 0.01f;
    hexa(m, c, 4);
}

writer3ds::Model barrel(bool plastic, bool tipped) {
    Builder b;
    Xform where = Xform::identity();
    if (tipped) {
        // On its side across x, resting on its hoops, base towards -x.
        float r = plastic ? 0.28f : 0.302f;
        float h = plastic ? 0.95f : 0.88f;
        where = Xform::alongY({-h / 2, r, 0}, {1, 0, 0});
    }
    if (plastic)
        plasticDrum(b, where);
    else
        steelDrum(b, where);
    if (tipped) {
        int wood = b.material("Wood", 150, 110, 60, "Wood.tga");
        Mesh& w = b.object("Chocks", wood);
        float r = plastic ? 0.28f : 0.302f;
        for (float x : {-0.25f, 0.25f}) {
            chock(w, x, r * 0.5f);
            w.xf = Xform::rotY(180);
            chock(w, -x, r * 0.5f);
            w.xf = Xform::identity();
        }
    }
    return b.finish();
}

// A ten-foot steel container, 2.44 wide, 2.59 tall, 2.99 long, doors at +z.
writer3ds::Model container() {
    Builder b;
    int wall = b.material("Container", 180, 80, 40, "Container.tga");
    int metal = b.material("Frame", 190, 190, 195, "Metal.tga");
    Mesh& w = b.object("Walls", wall);
    const float X = 1.22f, Y = 2.59f, Z = 1.495f, f = 0.08f;
    // The side picture covers one wall once; the end walls take the middle of it.
    panel(w, {X, 0, Z}, {X, 0, -Z}, {X, Y, -Z}, {X, Y, Z}, 0, 0, 1, 1);
    panel(w, {-X, 0, -Z}, {-X, 0, Z}, {-X, Y, Z}, {-X, Y, -Z}, 0, 0, 1, 1);
    panel(w, {-X, 0, Z}, {X, 0, Z}, {X, Y, Z}, {-X, Y, Z}, 0.1f, 0, 0.9f, 1);
    panel(w, {X, 0, -Z}, {-X, 0, -Z}, {-X, Y, -Z}, {X, Y, -Z}, 0.1f, 0, 0.9f, 1);
    Mesh& m = b.object("Frame", metal);
    box(m, {-X - 0.01f, Y - f, -Z - 0.01f}, {X + 0.01f, Y, Z + 0.01f}, 1);  // roof and top rails
    box(m, {-X - 0.01f, 0, -Z - 0.01f}, {X + 0.01f, f, Z + 0.01f}, 1);      // bottom rails
    for (float x : {-X, X})
        for (float z : {-Z, Z}) box(m, {x - f / 2 - 0.01f, f, z - f / 2 - 0.01f}, {x + f / 2, Y - f, z + f / 2}, 2);
    // Door bars and handles on the +z end.
    for (float x : {-0.8f, -0.4f, 0.4f, 0.8f}) box(m, {x - 0.025f, f, Z}, {x + 0.025f, Y - f, Z + 0.04f}, 4);
    box(m, {-0.01f, f, Z}, {0.01f, Y - f, Z + 0.03f}, 4);
    return b.finish();
}

// A wooden crate, 1.2 by 1.0 by 1.2, with battens round its edges.
writer3ds::Model crate() {
    Builder b;
    int wood = b.material("Wood", 150, 110, 60, "Wood.tga");
    Mesh& m = b.object("Crate", wood);
    const float X = 0.6f, Y = 1.0f, Z = 0.6f, t = 0.08f, d = 0.02f;
    box(m, {-X, 0, -Z}, {X, Y, Z}, 1);
    for (float x : {-X, X - t}) {
        box(m, {x, 0, Z}, {x + t, Y, Z + d}, 1);
        box(m, {x, 0, -Z - d}, {x + t, Y, -Z}, 1);
    }
    for (float z : {-Z, Z - t}) {
        box(m, {X, 0, z}, {X + d, Y, z + t}, 1);
        box(m, {-X - d, 0, z}, {-X, Y, z + t}, 1);
    }
    for (float y : {0.0f, Y - t}) {
        box(m, {-X, y, Z}, {X, y + t, Z + d}, 1);
        box(m, {-X, y, -Z - d}, {X, y + t, -Z}, 1);
        box(m, {X, y, -Z}, {X + d, y + t, Z}, 1);
        box(m, {-X - d, y, -Z}, {-X, y + t, Z}, 1);
    }
    return b.finish();
}

// Signs: their faces are the four quarters of one picture, Signs.tga, with
// (u, v) from its bottom left: 1 a chevron to the left (top left quarter),
// 2 a chevron to the right (top right), 3 a distance board (bottom left),
// 4 a round sign (bottom right). Faces look towards +z, the backs are plain metal.
writer3ds::Model sign(int which) {
    Builder b;
    int face = b.material("Sign", 255, 255, 255, "Signs.tga");
    int metal = b.material("Metal", 190, 190, 195, "Metal.tga");
    Mesh& f = b.object("Face", face);
    Mesh& m = b.object("Post", metal);
    float u0 = (which == 2 || which == 4) ? 0.5f : 0.0f, v0 = which <= 2 ? 0.5f : 0.0f;
    float u1 = u0 + 0.5f, v1 = v0 + 0.5f;
    const float front = 0.015f;
    if (which <= 2) {
        // A wide, low chevron board on two posts, 1.2 by 0.5, its top at 1.0.
        const float X = 0.6f, y0 = 0.5f, y1 = 1.0f;
        panel(f, {-X, y0, front}, {X, y0, front}, {X, y1, front}, {-X, y1, front}, u0, v0, u1, v1);
        box(m, {-X, y0, -front}, {X, y1, front - 0.003f}, 1);
        for (float x : {-0.42f, 0.42f}) box(m, {x - 0.035f, 0, -front - 0.07f}, {x + 0.035f, y1, -front}, 2);
    } else if (which == 3) {
        // A tall distance board on one post, 0.6 by 1.0, up to 2.0.
        const float X = 0.3f, y0 = 1.0f, y1 = 2.0f;
        panel(f, {-X, y0, front}, {X, y0, front}, {X, y1, front}, {-X, y1, front}, u0, v0, u1, v1);
        box(m, {-X, y0, -front}, {X, y1, front - 0.003f}, 1);
        tube(m, {0, 0, -front - 0.04f}, {0, y1, -front - 0.04f}, 0.04f, 0.04f, 10, true);
    } else {
        // A round sign, 0.8 across, centred 1.9 up on a post.
        const float R = 0.4f, y = 1.9f;
        disc(f, {0, y, front}, R, 24, u0, v0, u1, v1);
        tube(m, {0, y, -front}, {0, y, front - 0.003f}, R, R, 24, true);
        tube(m, {0, 0, -front - 0.04f}, {0, y + 0.1f, -front - 0.04f}, 0.04f, 0.04f, 10, true);
    }
    return b.finish();
}

// The advertising board is two models: `ad`, the stand (posts, rails, feet),
// and `adboard`, the two faces of the 3.0 by 1.0 board inside it.
const float AD_X = 1.5f, AD_Y0 = 0.35f, AD_Y1 = 1.35f, AD_Z = 0.02f;

writer3ds::Model adStand() {
    Builder b;
    int metal = b.material("Metal", 190, 190, 195, "Metal.tga");
    int stone = b.material("Concrete", 160, 160, 150, "Stone.tga");
    Mesh& m = b.object("Stand", metal);
    const float p = 0.08f, z = AD_Z + 0.02f;
    for (float s : {-1.0f, 1.0f}) {
        float x = s * (AD_X + p / 2);
        box(m, {x - p / 2, 0, -z}, {x + p / 2, AD_Y1 + 0.1f, z}, 2);
        // A strut to the ground behind.
        tube(m, {x, AD_Y1 - 0.2f, -z}, {x, 0.05f, -0.7f}, 0.025f, 0.025f, 6, true);
    }
    box(m, {-AD_X, AD_Y0 - 0.04f, -z}, {AD_X, AD_Y0, z}, 2);
    box(m, {-AD_X, AD_Y1, -z}, {AD_X, AD_Y1 + 0.04f, z}, 2);
    Mesh& c = b.object("Feet", stone);
    for (float s : {-1.0f, 1.0f}) box(c, {s * (AD_X + p / 2) - 0.15f, 0, -0.8f}, {s * (AD_X + p / 2) + 0.15f, 0.12f, 0.3f}, 1);
    return b.finish();
}

writer3ds::Model adBoard() {
    Builder b;
    // The track binds the advertisement; this picture is only named.
    int ad = b.material("Advertisement", 255, 255, 255, "Metal.tga");
    Mesh& m = b.object("Board", ad);
    panel(m, {-AD_X, AD_Y0, AD_Z}, {AD_X, AD_Y0, AD_Z}, {AD_X, AD_Y1, AD_Z}, {-AD_X, AD_Y1, AD_Z}, 0, 0, 1, 1);
    // The back reads the right way round from behind.
    panel(m, {AD_X, AD_Y0, -AD_Z}, {-AD_X, AD_Y0, -AD_Z}, {-AD_X, AD_Y1, -AD_Z}, {AD_X, AD_Y1, -AD_Z}, 0, 0, 1, 1);
    return b.finish();
}

// The plant: one upright quad, 3 wide and 4 tall, centred on its origin
// across and standing on the ground, facing +z. The track binds a plant
// picture and turns the quad to face the camera.
writer3ds::Model plant() {
    Builder b;
    int leaf = b.material("Plant", 255, 255, 255, "Nature1.tga");
    Mesh& m = b.object("Billboard", leaf);
    panel(m, {-1.5f, 0, 0}, {1.5f, 0, 0}, {1.5f, 4, 0}, {-1.5f, 4, 0}, 0, 0, 1, 1);
    return b.finish();
}

// The finish gantry over the start straight: posts 9.5 apart on concrete
// feet, a beam 4.0 up with the finish banner on both faces, and the start
// lights under its middle.
writer3ds::Model finishGantry() {
    Builder b;
    int metal = b.material("Metal", 190, 190, 195, "Metal.tga");
    int banner = b.material("Banner", 255, 255, 255, "Finish.tga");
    int stone = b.material("Concrete", 160, 160, 150, "Stone.tga");
    int dark = b.material("Lights", 30, 30, 30, "Tyre.tga");
    const float X = 4.75f, p = 0.125f, y0 = 4.0f, y1 = 4.6f, z = 0.15f;
    Mesh& m = b.object("Frame", metal);
    for (float s : {-1.0f, 1.0f}) box(m, {s * X - p, 0.3f, -p}, {s * X + p, y1 + 0.1f, p}, 1);
    box(m, {-X + p, y0, -z}, {X - p, y1, z}, 1);
    Mesh& f = b.object("Banner", banner);
    const float bx = X - p - 0.05f, e = 0.005f;
    panel(f, {-bx, y0 + 0.03f, z + e}, {bx, y0 + 0.03f, z + e}, {bx, y1 - 0.03f, z + e}, {-bx, y1 - 0.03f, z + e}, 0, 0,
          8, 1);
    panel(f, {bx, y0 + 0.03f, -z - e}, {-bx, y0 + 0.03f, -z - e}, {-bx, y1 - 0.03f, -z - e}, {bx, y1 - 0.03f, -z - e}, 0,
          0, 8, 1);
    Mesh& c = b.object("Feet", stone);
    for (float s : {-1.0f, 1.0f}) box(c, {s * X - 0.4f, 0, -0.4f}, {s * X + 0.4f, 0.3f, 0.4f}, 1);
    Mesh& l = b.object("Lights", dark);
    box(l, {-0.6f, y0 - 0.28f, -0.1f}, {0.6f, y0, 0.1f}, 2);
    for (int i = 0; i < 5; i++) {
        float x = -0.48f + 0.24f * i;
        tube(l, {x, y0 - 0.14f, 0.1f}, {x, y0 - 0.14f, 0.16f}, 0.08f, 0.08f, 12, true);
    }
    return b.finish();
}

// The TV camera head, about its pivot on the stand, the lens looking along
// -z. The trackside view puts the eye just above the pivot, so everything but
// the lens sits behind the pivot and the lens rides high enough to stay out of
// the picture: the viewer looks out from under it, as the operator would.
writer3ds::Model tvCamera() {
    Builder b;
    int metal = b.material("Body", 190, 190, 195, "Metal.tga");
    int dark = b.material("Lens", 30, 30, 30, "Tyre.tga");
    Mesh& m = b.object("Body", metal);
    tube(m, {0, 0, 0}, {0, 0.04f, 0}, 0.05f, 0.04f, 12, true);  // pan head
    box(m, {-0.04f, 0.04f, 0.02f}, {0.04f, 0.12f, 0.12f}, 2);    // mount
    box(m, {-0.11f, 0.12f, 0.04f}, {0.11f, 0.38f, 0.5f}, 3);
    box(m, {-0.02f, 0.38f, 0.1f}, {0.02f, 0.42f, 0.42f}, 6);     // handle
    box(m, {-0.19f, 0.25f, 0.1f}, {-0.11f, 0.35f, 0.26f}, 6);    // viewfinder
    Mesh& d = b.object("Lens", dark);
    tube(d, {0, 0.26f, 0.04f}, {0, 0.26f, -0.2f}, 0.07f, 0.08f, 16, true);
    box(d, {-0.08f, 0.15f, 0.5f}, {0.08f, 0.34f, 0.58f}, 3);    // battery
    return b.finish();
}

// The camera's tripod, its head 1.2 up where the camera's pivot sits.
writer3ds::Model cameraStand() {
    Builder b;
    int metal = b.material("Metal", 190, 190, 195, "Metal.tga");
    Mesh& m = b.object("Tripod", metal);
    const float top = 1.2f;
    tube(m, {0, top - 0.12f, 0}, {0, top, 0}, 0.07f, 0.07f, 12, true);
    tube(m, {0, 0.7f, 0}, {0, top - 0.12f, 0}, 0.022f, 0.022f, 8, true);
    for (int i = 0; i < 3; i++) {
        float a = (float)(M_PI / 2 + i * 2 * M_PI / 3);
        V3 foot = {0.5f * std::cos(a), 0.02f, -0.5f * std::sin(a)};
        V3 hip = {0.05f * std::cos(a), top - 0.1f, -0.05f * std::sin(a)};
        tube(m, hip, foot, 0.02f, 0.015f, 6, true);
        tube(m, {0, 0.7f, 0}, (hip * 0.58f + foot * 0.42f), 0.01f, 0.01f, 5, false);
        box(m, foot - V3{0.03f, 0.02f, 0.03f}, foot + V3{0.03f, 0.0f, 0.03f}, 4);  // rubber foot
    }
    return b.finish();
}

}  // namespace

writer3ds::Model scenery(const std::string& name) {
    if (name == "barrel") return barrel(false, false);
    if (name == "barrelt") return barrel(false, true);
    if (name == "barrel2") return barrel(true, false);
    if (name == "barrel2t") return barrel(true, true);
    if (name == "container") return container();
    if (name == "container2") return crate();
    if (name == "sign1") return sign(1);
    if (name == "sign2") return sign(2);
    if (name == "sign3") return sign(3);
    if (name == "sign4") return sign(4);
    if (name == "ad") return adStand();
    if (name == "adboard") return adBoard();
    if (name == "nature") return plant();
    if (name == "tfinish") return finishGantry();
    if (name == "camera") return tvCamera();
    if (name == "camerastand") return cameraStand();
    return writer3ds::Model();
}

// The sky: a dome of radius 80 about the origin. The ground ends 34 out and
// its corners 48 out, so the dome stands beyond all of it, and from anywhere
// on the track it lies well inside the far plane (300). It is no bigger than
// that because the track's fog is laid over it by its distance from the eye:
// at 80 or so the evening still shows through the fog of every track. It is
// closed below the horizon by a skirt and a floor 40 down, so that no gap
// shows past the edge of the ground. Its faces look inwards. The picture
// wraps once round the horizon; its bottom row (v = 0) is the horizon, which
// should be the fog colour, and its top row the zenith. The skirt keeps the
// horizon row.
writer3ds::Model skyDome() {
    Builder b;
    int sky = b.material("Sky", 255, 255, 255, "Sky.tga");
    Mesh& m = b.object("Sky", sky);
    const float R = 80.0f;
    const int rings = 10;
    std::vector<P2> p;
    p.push_back({0, R, 1, false});
    for (int i = rings - 1; i >= 0; i--) {
        float e = (float)(M_PI / 2) * i / rings;
        p.push_back({R * std::cos(e), R * std::sin(e), (float)i / rings, false});
    }
    p.push_back({R, -40.0f, 0, true});
    p.push_back({0, -40.0f, 0, false});
    lathe(m, p, 32, 1, -90);
    return b.finish();
}

}  // namespace modelgen

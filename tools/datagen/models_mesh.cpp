// The modelling kit: transforms and meshes, built in the game's axes.

#include "datagen/models_mesh.h"

#include <cmath>

#include "shell/angles.h"

namespace modelgen {

namespace {
const float DEG = (float)PI / 180.0f;  // radians per degree
}

V3 operator+(V3 a, V3 b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
V3 operator-(V3 a, V3 b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
V3 operator*(V3 a, float s) { return {a.x * s, a.y * s, a.z * s}; }
float dot(V3 a, V3 b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
V3 cross(V3 a, V3 b) { return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x}; }
float length(V3 a) { return std::sqrt(dot(a, a)); }
V3 normalize(V3 a) {
    float l = length(a);
    return l > 0 ? a * (1.0f / l) : a;
}

Xform Xform::identity() {
    return {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}, {0, 0, 0}};
}

Xform Xform::translate(V3 d) {
    Xform x = identity();
    x.t = d;
    return x;
}

// The same sense of rotation as glRotatef about the positive axis.
Xform Xform::rotX(float degrees) {
    float c = std::cos(degrees * DEG), s = std::sin(degrees * DEG);
    return {{{1, 0, 0}, {0, c, -s}, {0, s, c}}, {0, 0, 0}};
}

Xform Xform::rotY(float degrees) {
    float c = std::cos(degrees * DEG), s = std::sin(degrees * DEG);
    return {{{c, 0, s}, {0, 1, 0}, {-s, 0, c}}, {0, 0, 0}};
}

Xform Xform::rotZ(float degrees) {
    float c = std::cos(degrees * DEG), s = std::sin(degrees * DEG);
    return {{{c, -s, 0}, {s, c, 0}, {0, 0, 1}}, {0, 0, 0}};
}

Xform Xform::scale(V3 s) {
    return {{{s.x, 0, 0}, {0, s.y, 0}, {0, 0, s.z}}, {0, 0, 0}};
}

Xform Xform::alongY(V3 origin, V3 axis) {
    V3 y = normalize(axis);
    V3 helper = std::fabs(y.y) < 0.9f ? V3{0, 1, 0} : V3{1, 0, 0};
    V3 x = normalize(cross(y, helper));
    V3 z = cross(x, y);
    return {{{x.x, y.x, z.x}, {x.y, y.y, z.y}, {x.z, y.z, z.z}}, origin};
}

V3 Xform::apply(V3 p) const {
    return {m[0][0] * p.x + m[0][1] * p.y + m[0][2] * p.z + t.x,
            m[1][0] * p.x + m[1][1] * p.y + m[1][2] * p.z + t.y,
            m[2][0] * p.x + m[2][1] * p.y + m[2][2] * p.z + t.z};
}

Xform Xform::operator*(const Xform& rhs) const {
    Xform r;
    for (int i = 0; i < 3; i++)
        for (int j = 0; j < 3; j++) r.m[i][j] = m[i][0] * rhs.m[0][j] + m[i][1] * rhs.m[1][j] + m[i][2] * rhs.m[2][j];
    r.t = apply(rhs.t);
    return r;
}

uint16_t Mesh::vert(V3 p, float u, float v) {
    verts_.push_back(xf.apply(p));
    uvs_.push_back({u, v});
    return (uint16_t)(verts_.size() - 1);
}

void Mesh::tri(uint16_t a, uint16_t b, uint16_t c) { faces_.push_back({a, b, c}); }

void Mesh::quad(uint16_t a, uint16_t b, uint16_t c, uint16_t d) {
    tri(a, b, c);
    tri(a, c, d);
}

writer3ds::Object Mesh::toObject(bool withUV) const {
    writer3ds::Object o;
    o.name = name_;
    o.material = material_;
    for (size_t i = 0; i < verts_.size(); i++) {
        const V3& p = verts_[i];
        if (withUV)
            o.vertex(p.x, -p.z, p.y, uvs_[i][0], uvs_[i][1]);
        else
            o.vertex(p.x, -p.z, p.y);
    }
    o.faces = faces_;
    return o;
}

int Builder::material(const std::string& name, unsigned char r, unsigned char g, unsigned char b,
                      const std::string& texture) {
    return model_.material(name, r, g, b, texture);
}

Mesh& Builder::object(const std::string& name, int material) {
    meshes_.emplace_back(name, material);
    return meshes_.back();
}

writer3ds::Model Builder::finish(bool withUV) const {
    writer3ds::Model m = model_;
    for (const Mesh& mesh : meshes_)
        if (!mesh.empty()) m.objects.push_back(mesh.toObject(withUV));
    return m;
}

void box(Mesh& mesh, V3 lo, V3 hi, float uvPerMetre) {
    V3 c = (lo + hi) * 0.5f, e = (hi - lo) * 0.5f;
    // Outward normal n and the face's right and up axes, right x up = n.
    static const V3 faces[6][3] = {
        {{1, 0, 0}, {0, 0, -1}, {0, 1, 0}},  {{-1, 0, 0}, {0, 0, 1}, {0, 1, 0}},
        {{0, 1, 0}, {1, 0, 0}, {0, 0, -1}},  {{0, -1, 0}, {1, 0, 0}, {0, 0, 1}},
        {{0, 0, 1}, {1, 0, 0}, {0, 1, 0}},   {{0, 0, -1}, {-1, 0, 0}, {0, 1, 0}},
    };
    auto extent = [&](V3 axis) { return std::fabs(axis.x) * e.x + std::fabs(axis.y) * e.y + std::fabs(axis.z) * e.z; };
    for (const auto& f : faces) {
        V3 n = f[0], a = f[1], b = f[2];
        V3 base = c + n * extent(n);
        V3 A = a * extent(a), B = b * extent(b);
        V3 corner[4] = {base - A - B, base + A - B, base + A + B, base - A + B};
        uint16_t idx[4];
        for (int k = 0; k < 4; k++)
            idx[k] = mesh.vert(corner[k], dot(corner[k], a) * uvPerMetre, dot(corner[k], b) * uvPerMetre);
        mesh.quad(idx[0], idx[1], idx[2], idx[3]);
    }
}

void hexa(Mesh& mesh, const V3 c[8], float uvPerMetre) {
    // Corner numbers of each face, counter-clockwise from outside, and the
    // face's right and up axes for its texture.
    static const int faces[6][4] = {{5, 1, 3, 7}, {0, 4, 6, 2}, {6, 7, 3, 2}, {0, 1, 5, 4}, {4, 5, 7, 6}, {1, 0, 2, 3}};
    static const V3 axes[6][2] = {{{0, 0, -1}, {0, 1, 0}}, {{0, 0, 1}, {0, 1, 0}}, {{1, 0, 0}, {0, 0, -1}},
                                  {{1, 0, 0}, {0, 0, 1}},  {{1, 0, 0}, {0, 1, 0}}, {{-1, 0, 0}, {0, 1, 0}}};
    for (int f = 0; f < 6; f++) {
        uint16_t idx[4];
        for (int k = 0; k < 4; k++) {
            V3 p = c[faces[f][k]];
            idx[k] = mesh.vert(p, dot(p, axes[f][0]) * uvPerMetre, dot(p, axes[f][1]) * uvPerMetre);
        }
        mesh.quad(idx[0], idx[1], idx[2], idx[3]);
    }
}

void lathe(Mesh& mesh, const std::vector<P2>& profile, int segments, float uRepeat, float theta0, float sweep) {
    struct Ring {
        uint16_t first;
        bool pole;
    };
    auto ring = [&](const P2& p) {
        Ring r{0, p.r == 0};
        if (r.pole) {
            r.first = mesh.vert({0, p.h, 0}, 0.5f * uRepeat, p.v);
            return r;
        }
        for (int j = 0; j <= segments; j++) {
            float a = (theta0 + sweep * j / segments) * DEG;
            uint16_t i = mesh.vert({p.r * std::cos(a), p.h, -p.r * std::sin(a)}, uRepeat * j / segments, p.v);
            if (j == 0) r.first = i;
        }
        return r;
    };
    auto band = [&](Ring A, Ring B) {
        if (A.pole && B.pole) return;
        for (int j = 0; j < segments; j++) {
            if (A.pole)
                mesh.tri(A.first, (uint16_t)(B.first + j + 1), (uint16_t)(B.first + j));
            else if (B.pole)
                mesh.tri((uint16_t)(A.first + j), (uint16_t)(A.first + j + 1), B.first);
            else
                mesh.quad((uint16_t)(A.first + j), (uint16_t)(A.first + j + 1), (uint16_t)(B.first + j + 1),
                          (uint16_t)(B.first + j));
        }
    };
    Ring out{0, false};
    for (size_t i = 0; i < profile.size(); i++) {
        Ring in = ring(profile[i]);
        if (i > 0) band(out, in);
        out = (profile[i].sharp && i > 0 && i + 1 < profile.size() && profile[i].r != 0) ? ring(profile[i]) : in;
    }
}

std::vector<P2> byLength(std::vector<P2> profile, float vRepeat) {
    float total = 0;
    for (size_t i = 1; i < profile.size(); i++)
        total += std::hypot(profile[i].r - profile[i - 1].r, profile[i].h - profile[i - 1].h);
    float run = 0;
    for (size_t i = 0; i < profile.size(); i++) {
        if (i > 0) run += std::hypot(profile[i].r - profile[i - 1].r, profile[i].h - profile[i - 1].h);
        profile[i].v = total > 0 ? run / total * vRepeat : 0;
    }
    return profile;
}

void tube(Mesh& mesh, V3 a, V3 b, float ra, float rb, int segments, bool caps, float uRepeat) {
    Xform saved = mesh.xf;
    mesh.xf = saved * Xform::alongY(a, b - a);
    float L = length(b - a);
    std::vector<P2> p;
    if (caps) p.push_back({0, 0, 0, false});
    p.push_back({ra, 0, 0, true});
    p.push_back({rb, L, 0, true});
    if (caps) p.push_back({0, L, 0, false});
    lathe(mesh, byLength(p), segments, uRepeat);
    mesh.xf = saved;
}

void ellipsoid(Mesh& mesh, V3 c, V3 radii, int segments, int rings, float uRepeat, float theta0) {
    Xform saved = mesh.xf;
    mesh.xf = saved * Xform::translate(c) * Xform::scale(radii);
    std::vector<P2> p;
    for (int i = 0; i <= rings; i++) {
        float phi = (-90.0f + 180.0f * i / rings) * DEG;
        float r = (i == 0 || i == rings) ? 0.0f : std::cos(phi);
        p.push_back({r, std::sin(phi), (float)i / rings, false});
    }
    lathe(mesh, p, segments, uRepeat, theta0);
    mesh.xf = saved;
}

void torus(Mesh& mesh, float R, float r, int segments, int sides, float uRepeat) {
    std::vector<P2> p;
    for (int i = 0; i <= sides; i++) {
        float phi = 360.0f * i / sides * DEG;
        p.push_back({R + r * std::cos(phi), r * std::sin(phi), (float)i / sides, false});
    }
    lathe(mesh, p, segments, uRepeat);
}

}  // namespace modelgen

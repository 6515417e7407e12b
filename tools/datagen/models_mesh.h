#ifndef BV_TOOLS_DATAGEN_MODELS_MESH_H
#define BV_TOOLS_DATAGEN_MODELS_MESH_H

// A small modelling kit for the generated meshes. Everything is built in the
// game's own axes (y up, forward is -z, metres) and turned into the 3DS file's
// z-up axes only when written, so the numbers in the model code are the same
// numbers the drawing code uses to place the parts.
//
// The game smooths normals over shared vertices, so a hard edge is made by
// giving each side its own vertices; the primitives below do that where an
// object should look faceted (boxes, caps) and share vertices where it should
// look round. Triangles are counter-clockwise seen from outside: the game
// culls back faces.

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "writers/writer3ds.h"

namespace modelgen {

struct V3 {
    float x, y, z;
};
V3 operator+(V3 a, V3 b);
V3 operator-(V3 a, V3 b);
V3 operator*(V3 a, float s);
float dot(V3 a, V3 b);
V3 cross(V3 a, V3 b);
float length(V3 a);
V3 normalize(V3 a);

// A point of a profile turned about an axis: radius r at height h, with the
// texture coordinate v; a sharp point ends one band and starts the next with
// vertices of its own, so the two bands meet at a hard edge.
struct P2 {
    float r, h, v;
    bool sharp;
};

// An affine map: p' = m * p + t (m row-major). Composition applies the right
// operand first, like glMultMatrix.
struct Xform {
    float m[3][3];
    V3 t;

    static Xform identity();
    static Xform translate(V3 d);
    static Xform rotX(float degrees);
    static Xform rotY(float degrees);
    static Xform rotZ(float degrees);
    static Xform scale(V3 s);
    // Local y along `axis` (any length), the origin at `origin`.
    static Xform alongY(V3 origin, V3 axis);
    V3 apply(V3 p) const;
    Xform operator*(const Xform& rhs) const;
};

// One mesh object under construction, in game axes.
class Mesh {
public:
    Mesh(const std::string& name, int material) : name_(name), material_(material) {}

    // Placement of everything added from now on.
    Xform xf = Xform::identity();

    uint16_t vert(V3 p, float u = 0, float v = 0);
    void tri(uint16_t a, uint16_t b, uint16_t c);
    void quad(uint16_t a, uint16_t b, uint16_t c, uint16_t d);
    size_t triangles() const { return faces_.size(); }
    bool empty() const { return faces_.empty(); }

    // The object in the file's axes: file (x, y, z) = game (x, -z, y).
    writer3ds::Object toObject(bool withUV) const;

private:
    std::string name_;
    int material_;
    std::vector<V3> verts_;
    std::vector<std::array<float, 2>> uvs_;
    std::vector<std::array<uint16_t, 3>> faces_;
};

// A model in the making: materials in a fixed order, then objects.
class Builder {
public:
    int material(const std::string& name, unsigned char r, unsigned char g, unsigned char b,
                 const std::string& texture);
    Mesh& object(const std::string& name, int material);
    // Objects that got no triangles are left out.
    writer3ds::Model finish(bool withUV = true) const;

private:
    writer3ds::Model model_;
    std::deque<Mesh> meshes_;  // a deque keeps earlier objects where they are
};

// --- Primitives: all of them honour mesh.xf. ---

// An axis-aligned box from lo to hi, each face flat, textured by its size
// (uvPerMetre repeats of the picture per metre).
void box(Mesh& mesh, V3 lo, V3 hi, float uvPerMetre);
// A six-faced solid from eight corners, numbered like the corners of an
// axis-aligned box: bit 0 set for the +x side, bit 1 for +y, bit 2 for +z.
// Each face should be flat (or nearly); textured like box().
void hexa(Mesh& mesh, const V3 corners[8], float uvPerMetre);
// The profile turned about the local y axis in `segments` steps, from angle
// theta0 through `sweep` degrees (counter-clockwise seen from +y; angle 0 is
// +x, 90 is -z). A profile point with r = 0 is a pole. u runs 0..uRepeat over
// the sweep. Faces point outwards when the profile climbs in h at r > 0.
void lathe(Mesh& mesh, const std::vector<P2>& profile, int segments, float uRepeat = 1, float theta0 = 0,
           float sweep = 360);
// Fills in v by the length along the profile, 0 to vRepeat.
std::vector<P2> byLength(std::vector<P2> profile, float vRepeat = 1);
// A closed cylinder (or cone) from a to b, radius ra at a and rb at b.
void tube(Mesh& mesh, V3 a, V3 b, float ra, float rb, int segments, bool caps = true, float uRepeat = 1);
// An ellipsoid about c with the half-axes `radii`, `rings` bands pole to pole.
void ellipsoid(Mesh& mesh, V3 c, V3 radii, int segments, int rings, float uRepeat = 1, float theta0 = 0);
// A ring (torus) in the local x-z plane about the origin: centre-line radius
// R, tube radius r.
void torus(Mesh& mesh, float R, float r, int segments, int sides, float uRepeat = 1);

}  // namespace modelgen

#endif

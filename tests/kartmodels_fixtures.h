#ifndef BV_TESTS_KARTMODELS_FIXTURES_H
#define BV_TESTS_KARTMODELS_FIXTURES_H

// Helpers of the kartmodels_* tests: the generated models written into a
// scratch game directory with plain stand-in pictures, and geometry in the
// game's axes (the game turns the files' z-up axes to y-up when drawing).

#include <GL/gl.h>

#include <cmath>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "assets/3ds.h"
#include "datagen/models.h"
#include "shell/blackbox.h"
#include "support/bvtest_fixtures.h"

namespace kartmodels {

struct Vec {
    float x, y, z;
};

// A file vertex in the game's axes: game (x, y, z) = file (x, z, -y).
inline Vec gameAxes(const tVector3& v) { return {v.x, v.z, -v.y}; }

struct Box {
    Vec lo{1e9f, 1e9f, 1e9f}, hi{-1e9f, -1e9f, -1e9f};
    void add(Vec p) {
        lo = {std::min(lo.x, p.x), std::min(lo.y, p.y), std::min(lo.z, p.z)};
        hi = {std::max(hi.x, p.x), std::max(hi.y, p.y), std::max(hi.z, p.z)};
    }
    bool empty() const { return lo.x > hi.x; }
    bool overlaps(const Box& o, float slack) const {
        return lo.x <= o.hi.x + slack && o.lo.x <= hi.x + slack && lo.y <= o.hi.y + slack && o.lo.y <= hi.y + slack &&
               lo.z <= o.hi.z + slack && o.lo.z <= hi.z + slack;
    }
    bool contains(Vec p, float slack = 0) const {
        return p.x >= lo.x - slack && p.x <= hi.x + slack && p.y >= lo.y - slack && p.y <= hi.y + slack &&
               p.z >= lo.z - slack && p.z <= hi.z + slack;
    }
};

inline float length3(Vec a, Vec b) {
    return std::sqrt((a.x - b.x) * (a.x - b.x) + (a.y - b.y) * (a.y - b.y) + (a.z - b.z) * (a.z - b.z));
}

// A column-major GL matrix applied to a point.
inline Vec apply(const float* m, Vec p) {
    return {m[0] * p.x + m[4] * p.y + m[8] * p.z + m[12], m[1] * p.x + m[5] * p.y + m[9] * p.z + m[13],
            m[2] * p.x + m[6] * p.y + m[10] * p.z + m[14]};
}

// Bounding box of a loaded model in the game's axes, of the objects named
// `object` only when given, placed by the GL matrix m when given.
inline Box bounds(const s3DS& model, const float* m = nullptr, const char* object = nullptr) {
    Box b;
    for (const t3DObject& o : model.g_3DModel.pObject) {
        if (object && std::string(o.strName) != object) continue;
        for (int i = 0; i < o.numOfVerts; i++) {
            Vec p = gameAxes(o.pVerts[i]);
            b.add(m ? apply(m, p) : p);
        }
    }
    return b;
}

inline int triangles(const s3DS& model) {
    int n = 0;
    for (const t3DObject& o : model.g_3DModel.pObject) n += o.numOfFaces;
    return n;
}

// Every picture a model names, once.
inline std::set<std::string> textureNames() {
    std::set<std::string> names;
    for (const std::string& name : modelgen::modelNames()) {
        writer3ds::Model m;
        modelgen::buildModel(name, &m);
        for (const auto& mat : m.materials)
            if (!mat.texture.empty()) names.insert(mat.texture);
    }
    return names;
}

// Writes the models into Data/Models of the current directory and a plain
// light grey stand-in for every picture they name.
inline void writeModelsAndPictures() {
    std::filesystem::create_directories("Data/Textures");
    for (const std::string& t : textureNames()) bvtest::writeSolidTGA("Data/Textures/" + t, 8, 8, 200, 200, 200);
    std::string error;
    if (!generateModels("Data", &error)) throw std::runtime_error(error);
}

// Where the game looks for the model of that name.
inline std::string modelPath(const std::string& name) { return "Data/Models/" + name + ".3DS"; }

}  // namespace kartmodels

#endif

#ifndef BV_TESTS_MODELS_FIXTURES_H
#define BV_TESTS_MODELS_FIXTURES_H

// Models and helpers shared by the models_* test programs.

#include <dirent.h>

#include <cmath>
#include <cstring>
#include <string>

#include "assets/3ds.h"
#include "support/bvtest_fixtures.h"
#include "writers/writer3ds.h"

namespace models {

namespace w = writer3ds;

// Three materials (plain red, textured, plain blue) and four objects: a box,
// a textured sign, a wheel-like fan, and an object without a material group.
inline w::Model sampleModel() {
    w::Model m;
    int red = m.material("Red paint", 200, 30, 30);
    int sign = m.material("Sign", 255, 255, 255, "sign.tga");
    int blue = m.material("Blue", 30, 40, 210);

    w::Object& box = m.object("Box", red);
    for (int i = 0; i < 8; i++) box.vertex((i & 1) ? 1.f : -1.f, (i & 2) ? 1.f : -1.f, (i & 4) ? 2.f : 0.f);
    box.quad(0, 2, 3, 1);  // bottom, seen from below
    box.quad(4, 5, 7, 6);  // top
    box.quad(0, 1, 5, 4);
    box.quad(1, 3, 7, 5);
    box.quad(3, 2, 6, 7);
    box.quad(2, 0, 4, 6);

    w::Object& board = m.object("Board", sign);
    board.vertex(-1, 0, 2, 0, 0);
    board.vertex(1, 0, 2, 1, 0);
    board.vertex(1, 0, 3, 1, 1);
    board.vertex(-1, 0, 3, 0, 1);
    board.quad(0, 1, 2, 3);

    w::Object& fan = m.object("Wheel", blue);
    uint16_t centre = fan.vertex(0, -1.5f, 0.5f);
    for (int i = 0; i < 12; i++) {
        float a = (float)(i * 2 * M_PI / 12);
        fan.vertex(0.4f * std::cos(a), -1.5f, 0.5f + 0.4f * std::sin(a));
    }
    for (int i = 0; i < 12; i++) fan.face(centre, (uint16_t)(1 + i), (uint16_t)(1 + (i + 1) % 12));

    w::Object& bare = m.object("Bare");
    bare.vertex(0, 0, 0);
    bare.vertex(1, 0, 0);
    bare.vertex(0, 1, 0);
    bare.face(0, 1, 2);
    return m;
}

// Imports bytes through a file in the working directory.
inline bool importBytes(const std::string& bytes, t3DModel* model, CLoad3DS* reader = nullptr,
                        const std::string& file = "model.3DS") {
    bvtest::writeFile(file, bytes);
    CLoad3DS own;
    return (reader ? reader : &own)->Import3DS(model, file.c_str());
}

inline bool isEmpty(const t3DModel& model) {
    return model.numOfObjects == 0 && model.numOfMaterials == 0 && model.pObject.empty() &&
           model.pMaterials.empty();
}

inline int openFiles() {
    int n = 0;
    DIR* d = opendir("/proc/self/fd");
    if (!d) return -1;
    while (readdir(d)) n++;
    closedir(d);
    return n;
}

inline bool sameBits(float a, float b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

// The normals the way the game first found them: for every vertex, a scan of
// every face. The one-pass accumulation must give exactly these bits.
inline void scanNormals(const t3DObject& object, tVector3* out) {
    std::vector<tVector3> raw(object.numOfFaces);
    for (int i = 0; i < object.numOfFaces; i++) {
        tVector3 p0 = object.pVerts[object.pFaces[i].vertIndex[0]];
        tVector3 p1 = object.pVerts[object.pFaces[i].vertIndex[1]];
        tVector3 p2 = object.pVerts[object.pFaces[i].vertIndex[2]];
        raw[i] = Cross(Vector(p0, p2), Vector(p2, p1));
    }
    for (int i = 0; i < object.numOfVerts; i++) {
        tVector3 vSum = {0, 0, 0};
        int shared = 0;
        for (int j = 0; j < object.numOfFaces; j++) {
            const int* v = object.pFaces[j].vertIndex;
            if (v[0] == i || v[1] == i || v[2] == i) {
                vSum = AddVector(vSum, raw[j]);
                shared++;
            }
        }
        out[i] = Normalize(DivideVectorByScaler(vSum, (float)(-shared)));
    }
}

}  // namespace models

#endif

// The 3DS reader and the 3DS writer: what a model file turns into in memory.

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <random>

#include "models_fixtures.h"

using namespace models;
using bvtest::ScratchDir;

namespace {

const t3DObject* findObject(const t3DModel& model, const char* name) {
    for (const t3DObject& o : model.pObject)
        if (std::strcmp(o.strName, name) == 0) return &o;
    return nullptr;
}

}  // namespace

TEST(ModelsReader, FileNotStartingWithPrimaryChunkIsRefused) {
    ScratchDir dir;
    std::string good = w::bytes(sampleModel());
    std::string bad = good;
    bad[0] = 0x4C;  // 0x4D4C
    t3DModel model;
    EXPECT_FALSE(importBytes(bad, &model));
    EXPECT_TRUE(isEmpty(model));

    // Anything else wrapped as if it were a model.
    EXPECT_FALSE(importBytes(w::chunk(0x3D3D, w::chunk(0x3D3E, w::u32(3))), &model));
    EXPECT_TRUE(isEmpty(model));
}

TEST(ModelsReader, MissingFileIsRefused) {
    ScratchDir dir;
    t3DModel model;
    CLoad3DS reader;
    EXPECT_FALSE(reader.Import3DS(&model, "Data/Models/nothing.3DS"));
    EXPECT_TRUE(isEmpty(model));
}

TEST(ModelsReader, TexturedAndUntexturedMaterials) {
    ScratchDir dir;
    w::Model m = sampleModel();
    // A second object on the textured material.
    w::Object& extra = m.object("Second board", 1);
    extra.vertex(0, 0, 0, 0, 0);
    extra.vertex(1, 0, 0, 1, 0);
    extra.vertex(1, 0, 1, 1, 1);
    extra.face(0, 1, 2);

    t3DModel model;
    ASSERT_TRUE(importBytes(w::bytes(m), &model));
    ASSERT_EQ(model.numOfMaterials, 3);
    EXPECT_STREQ(model.pMaterials[0].strName, "Red paint");
    EXPECT_STREQ(model.pMaterials[0].strFile, "");
    EXPECT_STREQ(model.pMaterials[1].strName, "Sign");
    EXPECT_STREQ(model.pMaterials[1].strFile, "sign.tga");
    EXPECT_STREQ(model.pMaterials[2].strFile, "");
    EXPECT_EQ(model.pMaterials[0].color[0], 200);
    EXPECT_EQ(model.pMaterials[0].color[1], 30);
    EXPECT_EQ(model.pMaterials[0].color[2], 30);
    EXPECT_EQ(model.pMaterials[2].color[2], 210);
    for (const tMaterialInfo& mat : model.pMaterials) {
        EXPECT_EQ(mat.uTile, 0.f);
        EXPECT_EQ(mat.vOffset, 0.f);
        EXPECT_EQ(mat.texureId, 0);  // numbered by the drawable model, not the reader
    }

    const t3DObject* box = findObject(model, "Box");
    const t3DObject* board = findObject(model, "Board");
    const t3DObject* second = findObject(model, "Second board");
    const t3DObject* wheel = findObject(model, "Wheel");
    ASSERT_TRUE(box && board && second && wheel);
    EXPECT_EQ(box->materialID, 0);
    EXPECT_FALSE(box->bHasTexture);
    EXPECT_EQ(board->materialID, 1);
    EXPECT_TRUE(board->bHasTexture);
    EXPECT_EQ(second->materialID, 1);
    EXPECT_TRUE(second->bHasTexture);
    EXPECT_EQ(wheel->materialID, 2);
    EXPECT_FALSE(wheel->bHasTexture);
    Free3DModel(&model);
}

TEST(ModelsReader, ObjectWithoutUvChunkHasNoTextureCoordinates) {
    ScratchDir dir;
    t3DModel model;
    ASSERT_TRUE(importBytes(w::bytes(sampleModel()), &model));
    const t3DObject* box = findObject(model, "Box");
    ASSERT_TRUE(box);
    EXPECT_EQ(box->pTexVerts, nullptr);
    EXPECT_EQ(box->numTexVertex, 0);
    const t3DObject* board = findObject(model, "Board");
    ASSERT_TRUE(board);
    ASSERT_NE(board->pTexVerts, nullptr);
    EXPECT_EQ(board->numTexVertex, 4);
    EXPECT_EQ(board->pTexVerts[2].x, 1.f);
    EXPECT_EQ(board->pTexVerts[2].y, 1.f);
    Free3DModel(&model);
}

TEST(ModelsReader, UnknownMaterialGroupNameKeepsMaterialZero) {
    ScratchDir dir;
    w::Model m;
    m.material("Grass", 10, 200, 10, "grass.tga");
    m.material("Stone", 120, 120, 120);
    w::Object& o = m.object("Rock", 1);
    o.vertex(0, 0, 0);
    o.vertex(1, 0, 0);
    o.vertex(0, 1, 0);
    o.face(0, 1, 2);
    m.materials[1].name = "Stone";  // the group is written with the material's name...
    std::string bytes = w::bytes(m);
    // ...which we then change in the group only: "Stone" becomes "Stony" after the material list.
    size_t at = bytes.rfind("Stone");
    ASSERT_NE(at, std::string::npos);
    bytes.replace(at, 5, "Stony");

    t3DModel model;
    ASSERT_TRUE(importBytes(bytes, &model));
    ASSERT_EQ(model.numOfObjects, 1);
    EXPECT_EQ(model.pObject[0].materialID, 0);
    EXPECT_FALSE(model.pObject[0].bHasTexture);
    Free3DModel(&model);

    // Names match exactly, case included.
    bytes = w::bytes(m);
    at = bytes.rfind("Stone");
    bytes.replace(at, 5, "stone");
    ASSERT_TRUE(importBytes(bytes, &model));
    EXPECT_EQ(model.pObject[0].materialID, 0);
    Free3DModel(&model);
}

TEST(ModelsReader, SeveralGroupsLeaveTheLastMatchAndTextureFlagStays) {
    ScratchDir dir;
    w::Model m;
    m.material("Decal", 255, 255, 255, "decal.tga");
    m.material("Paint", 50, 60, 70);
    w::Object& o = m.object("Panel", 0);
    o.vertex(0, 0, 0);
    o.vertex(1, 0, 0);
    o.vertex(0, 1, 0);
    o.vertex(1, 1, 0);
    o.face(0, 1, 2);
    o.face(1, 3, 2);
    // The face chunk by hand: two groups, "Decal" for face 0 and "Paint" for face 1.
    std::string group1 = w::chunk(w::CHUNK_FACEMATERIAL, w::cstr("Decal") + w::u16(1) + w::u16(0));
    std::string group2 = w::chunk(w::CHUNK_FACEMATERIAL, w::cstr("Paint") + w::u16(1) + w::u16(1));
    std::string faces = w::u16(2) + w::u16(0) + w::u16(1) + w::u16(2) + w::u16(7) + w::u16(1) + w::u16(3) +
                        w::u16(2) + w::u16(7);
    std::string verts = w::u16(4);
    float v[4][3] = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}};
    for (auto& p : v) verts += w::f32(p[0]) + w::f32(p[1]) + w::f32(p[2]);
    std::string object = w::chunk(
        w::CHUNK_OBJECT,
        w::cstr("Panel") + w::chunk(w::CHUNK_MESH, w::chunk(w::CHUNK_VERTICES, verts) +
                                                       w::chunk(w::CHUNK_FACES, faces + group1 + group2)));
    w::Model mats = m;
    mats.objects.clear();
    mats.keyframeBytes = 0;
    std::string head = w::bytes(mats);
    // PRIMARY { VERSION, OBJECTINFO { ... } }: grow both lengths by the object.
    std::string file = head + object;
    uint32_t primary = (uint32_t)file.size();
    file.replace(2, 4, w::u32(primary));
    size_t info = 6 + 10;  // after PRIMARY header and VERSION chunk
    ASSERT_EQ((uint16_t)((unsigned char)file[info] | ((unsigned char)file[info + 1] << 8)), w::CHUNK_OBJECTINFO);
    file.replace(info + 2, 4, w::u32((uint32_t)(file.size() - info)));

    t3DModel model;
    ASSERT_TRUE(importBytes(file, &model));
    ASSERT_EQ(model.numOfObjects, 1);
    EXPECT_EQ(model.pObject[0].materialID, 1);
    EXPECT_TRUE(model.pObject[0].bHasTexture);
    EXPECT_EQ(model.pObject[0].numOfFaces, 2);
    Free3DModel(&model);
}

TEST(ModelsReader, UnusedVertexHasNotANumberNormal) {
    ScratchDir dir;
    w::Model m;
    w::Object& o = m.object("Lonely");
    o.vertex(0, 0, 0);
    o.vertex(1, 0, 0);
    o.vertex(0, 1, 0);
    o.vertex(5, 5, 5);  // used by no face
    o.face(0, 1, 2);
    t3DModel model;
    ASSERT_TRUE(importBytes(w::bytes(m), &model));
    const t3DObject& obj = model.pObject[0];
    EXPECT_TRUE(std::isnan(obj.pNormals[3].x));
    EXPECT_TRUE(std::isnan(obj.pNormals[3].y));
    EXPECT_TRUE(std::isnan(obj.pNormals[3].z));
    EXPECT_FALSE(std::isnan(obj.pNormals[0].z));
    Free3DModel(&model);
}

TEST(ModelsReader, FlatCounterClockwiseQuadHasNormalsUp) {
    ScratchDir dir;
    w::Model m;
    w::Object& o = m.object("Quad");
    o.vertex(0, 0, 0);
    o.vertex(2, 0, 0);
    o.vertex(2, 3, 0);
    o.vertex(0, 3, 0);
    o.quad(0, 1, 2, 3);
    t3DModel model;
    ASSERT_TRUE(importBytes(w::bytes(m), &model));
    const t3DObject& obj = model.pObject[0];
    ASSERT_EQ(obj.numOfVerts, 4);
    for (int i = 0; i < 4; i++) {
        EXPECT_EQ(obj.pNormals[i].x, 0.f) << i;
        EXPECT_EQ(obj.pNormals[i].y, 0.f) << i;
        EXPECT_EQ(obj.pNormals[i].z, 1.f) << i;
    }
    Free3DModel(&model);
}

TEST(ModelsReader, NormalsWeighFacesByArea) {
    ScratchDir dir;
    // Two faces meet at vertex 0: a big one in the x-y plane (normal +z) and a
    // small one in the x-z plane (normal -y). The sum leans towards +z.
    w::Model m;
    w::Object& o = m.object("Hinge");
    o.vertex(0, 0, 0);
    o.vertex(4, 0, 0);
    o.vertex(0, 4, 0);
    o.vertex(0, 0, 1);
    o.face(0, 1, 2);  // (1-0)x(2-0) = (0,0,16)
    o.face(0, 3, 1);  // (3-0)x(1-0) = (0,4,0)
    t3DModel model;
    ASSERT_TRUE(importBytes(w::bytes(m), &model));
    tVector3 n = model.pObject[0].pNormals[0];
    float len = std::sqrt(16.f * 16.f + 4.f * 4.f);
    EXPECT_FLOAT_EQ(n.x, 0);
    EXPECT_FLOAT_EQ(n.y, 4 / len);
    EXPECT_FLOAT_EQ(n.z, 16 / len);
    Free3DModel(&model);
}

TEST(ModelsReader, KeyFrameDataIsSkipped) {
    ScratchDir dir;
    w::Model base = sampleModel();
    base.keyframeBytes = 0;
    t3DModel reference;
    ASSERT_TRUE(importBytes(w::bytes(base), &reference));

    for (uint32_t size : {6u, 64u, 4096u, 4097u, 199999u, 200000u, 200006u, 1500000u}) {
        w::Model m = base;
        m.keyframeBytes = size;
        std::string bytes = w::bytes(m);
        t3DModel model;
        CLoad3DS reader;
        ASSERT_TRUE(importBytes(bytes, &model, &reader)) << size;
        EXPECT_EQ(reader.m_BytesCounted, bytes.size());
        EXPECT_EQ(reader.m_BytesRead, bytes.size());
        ASSERT_EQ(model.numOfObjects, reference.numOfObjects);
        ASSERT_EQ(model.numOfMaterials, reference.numOfMaterials);
        for (int i = 0; i < model.numOfObjects; i++) {
            const t3DObject& a = model.pObject[i];
            const t3DObject& b = reference.pObject[i];
            EXPECT_STREQ(a.strName, b.strName);
            ASSERT_EQ(a.numOfVerts, b.numOfVerts);
            EXPECT_EQ(0, std::memcmp(a.pVerts, b.pVerts, sizeof(tVector3) * a.numOfVerts));
            EXPECT_EQ(0, std::memcmp(a.pNormals, b.pNormals, sizeof(tVector3) * a.numOfVerts));
            ASSERT_EQ(a.numOfFaces, b.numOfFaces);
            EXPECT_EQ(0, std::memcmp(a.pFaces, b.pFaces, sizeof(tFace) * a.numOfFaces));
        }
        Free3DModel(&model);
    }
    Free3DModel(&reference);
}

TEST(ModelsReader, OnePassNormalsEqualTheVertexScanBitForBit) {
    ScratchDir dir;
    std::mt19937 random(20240611);
    std::uniform_real_distribution<float> coord(-50.f, 50.f);
    for (int round = 0; round < 20; round++) {
        w::Model m;
        int objects = 1 + round % 3;
        for (int k = 0; k < objects; k++) {
            w::Object& o = m.object("Mesh" + std::to_string(k));
            int verts = 3 + (int)(random() % 300);
            for (int i = 0; i < verts; i++) o.vertex(coord(random), coord(random), coord(random));
            int faces = (int)(random() % 900);
            std::uniform_int_distribution<int> pick(0, verts - 1);
            for (int f = 0; f < faces; f++) {
                uint16_t a = (uint16_t)pick(random), b = (uint16_t)pick(random), c = (uint16_t)pick(random);
                // Now and then a face that names a vertex twice or three times.
                if (f % 17 == 0) b = a;
                if (f % 29 == 0) c = a;
                if (f % 31 == 0) c = b;
                o.face(a, b, c);
            }
        }
        // A grid, the shape the real models have: many faces sharing each vertex.
        w::Object& grid = m.object("Grid");
        for (int y = 0; y < 20; y++)
            for (int x = 0; x < 20; x++) grid.vertex((float)x, (float)y, 0.3f * std::sin(x * 0.7f + y * 1.3f + round));
        for (int y = 0; y < 19; y++)
            for (int x = 0; x < 19; x++)
                grid.quad((uint16_t)(y * 20 + x), (uint16_t)(y * 20 + x + 1), (uint16_t)((y + 1) * 20 + x + 1),
                          (uint16_t)((y + 1) * 20 + x));

        t3DModel model;
        ASSERT_TRUE(importBytes(w::bytes(m), &model));
        for (const t3DObject& o : model.pObject) {
            std::vector<tVector3> expected(o.numOfVerts);
            scanNormals(o, expected.data());
            for (int i = 0; i < o.numOfVerts; i++) {
                ASSERT_TRUE(sameBits(o.pNormals[i].x, expected[i].x) && sameBits(o.pNormals[i].y, expected[i].y) &&
                            sameBits(o.pNormals[i].z, expected[i].z))
                    << "round " << round << " object " << o.strName << " vertex " << i;
            }
        }
        Free3DModel(&model);
    }
}

TEST(ModelsReader, VectorHelpers) {
    tVector3 a = {1, 2, 3}, b = {4, 6, 8};
    tVector3 d = Vector(a, b);
    EXPECT_EQ(d.x, -3.f);
    EXPECT_EQ(d.y, -4.f);
    EXPECT_EQ(d.z, -5.f);
    tVector3 s = AddVector(a, b);
    EXPECT_EQ(s.z, 11.f);
    tVector3 q = DivideVectorByScaler(b, -2.f);
    EXPECT_EQ(q.x, -2.f);
    EXPECT_EQ(q.z, -4.f);
    tVector3 c = Cross({1, 0, 0}, {0, 1, 0});
    EXPECT_EQ(c.x, 0.f);
    EXPECT_EQ(c.y, 0.f);
    EXPECT_EQ(c.z, 1.f);
    EXPECT_FLOAT_EQ(Mag({3, 4, 12}), 13.f);
    tVector3 n = Normalize({0, 3, 4});
    EXPECT_FLOAT_EQ(n.y, 0.6f);
    EXPECT_FLOAT_EQ(n.z, 0.8f);
}

// ---------------------------------------------------------------------------
// Writer to reader

namespace {

uint16_t le16(const std::string& s, size_t at) {
    return (uint16_t)((unsigned char)s[at] | ((unsigned char)s[at + 1] << 8));
}
uint32_t le32(const std::string& s, size_t at) {
    return le16(s, at) | ((uint32_t)le16(s, at + 2) << 16);
}

// Checks that the sub-chunks of every container exactly fill it; returns the
// number of chunks seen.
int walk(const std::string& s, size_t from, size_t to, int depth) {
    int seen = 0;
    size_t at = from;
    while (at < to) {
        EXPECT_LE(at + 6, to);
        if (at + 6 > to) return seen;
        uint16_t id = le16(s, at);
        uint32_t length = le32(s, at + 2);
        EXPECT_GE(length, 6u);
        EXPECT_LE(at + length, to) << std::hex << id;
        if (at + length > to || length < 6) return seen;
        seen++;
        size_t body = at + 6, end = at + length;
        switch (id) {
        case w::CHUNK_PRIMARY:
        case w::CHUNK_OBJECTINFO:
        case w::CHUNK_MATERIAL:
        case w::CHUNK_MATDIFFUSE:
        case w::CHUNK_MATMAP:
        case w::CHUNK_MESH:
        case w::CHUNK_KEYFRAME:
            if (id == w::CHUNK_KEYFRAME) {
                // header then filler: only the header is a chunk
                seen += 1;
                break;
            }
            seen += walk(s, body, end, depth + 1);
            break;
        case w::CHUNK_OBJECT:
            seen += walk(s, s.find('\0', body) + 1, end, depth + 1);
            break;
        case w::CHUNK_FACES:
            seen += walk(s, body + 2 + 8 * le16(s, body), end, depth + 1);
            break;
        default:
            break;
        }
        at = end;
    }
    EXPECT_EQ(at, to);
    return seen;
}

}  // namespace

TEST(ModelsWriter, ChunkLengthsFillTheirParentsExactly) {
    std::string bytes = w::bytes(sampleModel());
    ASSERT_FALSE(bytes.empty());
    EXPECT_EQ(le16(bytes, 0), w::CHUNK_PRIMARY);
    EXPECT_EQ(le32(bytes, 2), bytes.size());
    EXPECT_GT(walk(bytes, 0, bytes.size(), 0), 30);
}

TEST(ModelsWriter, RoundTripOfManyObjectsAndMaterials) {
    ScratchDir dir;
    w::Model m = sampleModel();
    m.keyframeBytes = 5000;
    ASSERT_TRUE(w::write3DS(m, "Data/round.3DS"));
    std::string bytes = bvtest::readFile("Data/round.3DS");
    EXPECT_EQ(bytes, w::bytes(m));

    t3DModel model;
    CLoad3DS reader;
    ASSERT_TRUE(reader.Import3DS(&model, "Data/round.3DS"));
    // Every byte of the file was read once and accounted for by the chunk counters.
    EXPECT_EQ(reader.m_BytesRead, bytes.size());
    EXPECT_EQ(reader.m_BytesCounted, bytes.size());

    ASSERT_EQ(model.numOfMaterials, (int)m.materials.size());
    ASSERT_EQ(model.pMaterials.size(), m.materials.size());
    for (size_t i = 0; i < m.materials.size(); i++) {
        const tMaterialInfo& got = model.pMaterials[i];
        const w::Material& want = m.materials[i];
        EXPECT_EQ(got.strName, want.name);
        EXPECT_EQ(got.strFile, want.texture);
        EXPECT_EQ(got.color[0], want.r);
        EXPECT_EQ(got.color[1], want.g);
        EXPECT_EQ(got.color[2], want.b);
    }
    ASSERT_EQ(model.numOfObjects, (int)m.objects.size());
    ASSERT_EQ(model.pObject.size(), m.objects.size());
    for (size_t i = 0; i < m.objects.size(); i++) {
        const t3DObject& got = model.pObject[i];
        const w::Object& want = m.objects[i];
        EXPECT_EQ(got.strName, want.name);
        EXPECT_EQ(got.materialID, want.material < 0 ? 0 : want.material);
        EXPECT_EQ(got.bHasTexture, want.material >= 0 && !m.materials[want.material].texture.empty());
        ASSERT_EQ(got.numOfVerts, (int)want.verts.size());
        for (size_t v = 0; v < want.verts.size(); v++) {
            EXPECT_EQ(got.pVerts[v].x, want.verts[v][0]);
            EXPECT_EQ(got.pVerts[v].y, want.verts[v][1]);
            EXPECT_EQ(got.pVerts[v].z, want.verts[v][2]);
            EXPECT_FALSE(std::isnan(got.pNormals[v].x)) << want.name << " " << v;
            float len = std::sqrt(got.pNormals[v].x * got.pNormals[v].x + got.pNormals[v].y * got.pNormals[v].y +
                                  got.pNormals[v].z * got.pNormals[v].z);
            EXPECT_NEAR(len, 1.f, 1e-5f);
        }
        ASSERT_EQ(got.numOfFaces, (int)want.faces.size());
        for (size_t f = 0; f < want.faces.size(); f++)
            for (int k = 0; k < 3; k++) {
                EXPECT_EQ(got.pFaces[f].vertIndex[k], want.faces[f][k]);
                EXPECT_EQ(got.pFaces[f].coordIndex[k], 0);
            }
        ASSERT_EQ(got.numTexVertex, (int)want.uvs.size());
        for (size_t t = 0; t < want.uvs.size(); t++) {
            EXPECT_EQ(got.pTexVerts[t].x, want.uvs[t][0]);
            EXPECT_EQ(got.pTexVerts[t].y, want.uvs[t][1]);
        }
    }
    // The box's top corners lean outwards and up.
    const t3DObject& box = model.pObject[0];
    EXPECT_GT(box.pNormals[7].x, 0);
    EXPECT_GT(box.pNormals[7].y, 0);
    EXPECT_GT(box.pNormals[7].z, 0);
    // The wheel's hub faces -y.
    EXPECT_EQ(model.pObject[2].pNormals[0].y, -1.f);
    Free3DModel(&model);
}

TEST(ModelsWriter, RefusesModelsItCannotWrite) {
    ScratchDir dir;
    w::Model m;
    w::Object& o = m.object("Broken");
    o.vertex(0, 0, 0);
    o.face(0, 0, 1);
    EXPECT_NE(w::check(m), "");
    EXPECT_EQ(w::bytes(m), "");
    EXPECT_FALSE(w::write3DS(m, "Data/broken.3DS"));
    EXPECT_FALSE(bvtest::fileExists("Data/broken.3DS"));

    w::Model uv;
    w::Object& u = uv.object("Uv");
    u.vertex(0, 0, 0, 0, 0);
    u.vertex(1, 0, 0);
    EXPECT_NE(w::check(uv), "");

    w::Model mat;
    mat.object("Orphan", 3);
    EXPECT_NE(w::check(mat), "");

    w::Model big;
    w::Object& b = big.object("Big");
    b.verts.resize(65536);
    EXPECT_NE(w::check(big), "");

    w::Model ok = sampleModel();
    EXPECT_EQ(w::check(ok), "");
    EXPECT_EQ(ok.material("Sign", 0, 0, 0), 1);  // an existing name is found, not added
}

TEST(ModelsReader, OneReaderServesSeveralImports) {
    ScratchDir dir;
    CLoad3DS reader;
    t3DModel a, b;
    ASSERT_TRUE(importBytes(w::bytes(sampleModel()), &a, &reader));
    ASSERT_TRUE(importBytes(w::bytes(sampleModel()), &b, &reader));
    EXPECT_EQ(a.numOfObjects, b.numOfObjects);
    Free3DModel(&a);
    Free3DModel(&b);
}

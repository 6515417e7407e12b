// Damaged and hostile 3DS files: each one ends the import cleanly, with the
// file closed and the model left as it was, and never reads out of bounds.

#include <gtest/gtest.h>

#include "models_fixtures.h"

using namespace models;
using bvtest::ScratchDir;

namespace {

// PRIMARY { VERSION, OBJECTINFO { mesh version, contents } }
std::string wrap(const std::string& contents) {
    return w::chunk(w::CHUNK_PRIMARY, w::chunk(w::CHUNK_VERSION, w::u32(3)) +
                                          w::chunk(w::CHUNK_OBJECTINFO, w::chunk(w::CHUNK_MESHVERSION, w::u32(3)) +
                                                                            contents));
}

std::string vertices(uint16_t count, int actual) {
    std::string body = w::u16(count);
    for (int i = 0; i < actual; i++) body += w::f32((float)i) + w::f32((float)(i % 2)) + w::f32(0);
    return w::chunk(w::CHUNK_VERTICES, body);
}

std::string faces(uint16_t count, const std::vector<std::array<uint16_t, 3>>& list, const std::string& sub = "") {
    std::string body = w::u16(count);
    for (const auto& f : list) body += w::u16(f[0]) + w::u16(f[1]) + w::u16(f[2]) + w::u16(7);
    return w::chunk(w::CHUNK_FACES, body + sub);
}

std::string object(const std::string& name, const std::string& mesh) {
    return w::chunk(w::CHUNK_OBJECT, w::cstr(name) + w::chunk(w::CHUNK_MESH, mesh));
}

// A file that is fine: one triangle.
std::string triangle() {
    return wrap(object("Tri", vertices(3, 3) + faces(1, {{0, 1, 2}})));
}

void expectRefused(const std::string& bytes, const char* what) {
    t3DModel model;
    int files = openFiles();
    EXPECT_FALSE(importBytes(bytes, &model)) << what;
    EXPECT_TRUE(isEmpty(model)) << what;
    EXPECT_EQ(openFiles(), files) << what;
}

void setLength(std::string& bytes, size_t chunkAt, uint32_t length) {
    bytes.replace(chunkAt + 2, 4, w::u32(length));
}

}  // namespace

TEST(ModelsMalformed, HandMadeTriangleIsFine) {
    ScratchDir dir;
    t3DModel model;
    ASSERT_TRUE(importBytes(triangle(), &model));
    ASSERT_EQ(model.numOfObjects, 1);
    EXPECT_EQ(model.pObject[0].numOfFaces, 1);
    Free3DModel(&model);
}

TEST(ModelsMalformed, TruncatedAtEveryByteOffset) {
    ScratchDir dir;
    w::Model m = sampleModel();
    m.keyframeBytes = 40;
    std::string bytes = w::bytes(m);
    ASSERT_LT(bytes.size(), 4000u);
    CLoad3DS reused;  // one reader through all the failures, then a good file
    int files = openFiles();
    for (size_t size = 0; size < bytes.size(); size++) {
        t3DModel model;
        ASSERT_FALSE(importBytes(bytes.substr(0, size), &model, &reused)) << size;
        ASSERT_TRUE(isEmpty(model)) << size;
        ASSERT_LE(reused.m_BytesRead, size);
    }
    EXPECT_EQ(openFiles(), files);
    t3DModel model;
    ASSERT_TRUE(importBytes(bytes, &model, &reused));
    EXPECT_EQ(model.numOfObjects, 4);
    Free3DModel(&model);
    EXPECT_EQ(openFiles(), files);
}

TEST(ModelsMalformed, FailedImportLeavesEarlierContentsAlone) {
    ScratchDir dir;
    t3DModel model;
    ASSERT_TRUE(importBytes(triangle(), &model));
    std::string bytes = w::bytes(sampleModel());
    EXPECT_FALSE(importBytes(bytes.substr(0, bytes.size() - 3), &model));
    ASSERT_EQ(model.numOfObjects, 1);
    ASSERT_EQ(model.pObject.size(), 1u);
    EXPECT_EQ(model.numOfMaterials, 0);
    EXPECT_STREQ(model.pObject[0].strName, "Tri");
    Free3DModel(&model);
}

TEST(ModelsMalformed, ChunkLengthsPointingPastTheEnd) {
    ScratchDir dir;
    std::string good = triangle();

    std::string primary = good;
    setLength(primary, 0, (uint32_t)good.size() + 100);
    expectRefused(primary, "PRIMARY longer than the file");

    primary = good;
    setLength(primary, 0, 0xFFFFFFFFu);
    expectRefused(primary, "PRIMARY of 4 GiB");

    // The vertex chunk claims more than its mesh holds.
    std::string verts = good;
    size_t at = verts.find(w::u16(w::CHUNK_VERTICES) + w::u32(6 + 2 + 36));
    ASSERT_NE(at, std::string::npos);
    setLength(verts, at, 5000);
    expectRefused(verts, "vertex chunk past its parent");
    setLength(verts, at, 0xFFFFFFF0u);
    expectRefused(verts, "vertex chunk of 4 GiB");

    // Lengths shorter than a header would make no progress.
    std::string zero = good;
    setLength(zero, at, 0);
    expectRefused(zero, "chunk of length 0");
    setLength(zero, at, 5);
    expectRefused(zero, "chunk of length 5");
    setLength(zero, 0, 0);
    expectRefused(zero, "PRIMARY of length 0");

    // A key-frame chunk at the end of the file that claims to go on for ever.
    w::Model m = sampleModel();
    m.keyframeBytes = 100;
    std::string keys = w::bytes(m);
    size_t kf = keys.size() - 100;
    ASSERT_EQ((unsigned char)keys[kf + 1], 0xB0);
    setLength(keys, kf, 0x7FFFFFFF);
    expectRefused(keys, "key frames past the end");
    // Same, with PRIMARY agreeing: the file itself is short.
    setLength(keys, 0, (uint32_t)(kf + 0x7FFFFFFF));
    expectRefused(keys, "key frames past the end of the file");

    // An unknown chunk in the middle of the mesh, too long for its parent.
    std::string unknown =
        wrap(object("Tri", vertices(3, 3) + w::chunk(0x4160, std::string(48, '\1')) + faces(1, {{0, 1, 2}})));
    size_t ax = unknown.find(w::u16(0x4160));
    setLength(unknown, ax, 48 + 6 + 100);
    expectRefused(unknown, "unknown chunk past its parent");
}

TEST(ModelsMalformed, CountsLargerThanTheChunk) {
    ScratchDir dir;
    expectRefused(wrap(object("V", vertices(1000, 3) + faces(1, {{0, 1, 2}}))), "vertex count");
    expectRefused(wrap(object("V", vertices(65535, 0))), "vertex count without data");
    expectRefused(wrap(object("F", vertices(3, 3) + faces(500, {{0, 1, 2}}))), "face count");
    std::string uv = w::chunk(w::CHUNK_UV, w::u16(300) + w::f32(0) + w::f32(0));
    expectRefused(wrap(object("U", vertices(3, 3) + uv + faces(1, {{0, 1, 2}}))), "uv count");
    // A count with no room for the count itself.
    expectRefused(wrap(object("E", w::chunk(w::CHUNK_VERTICES, "\1"))), "one-byte vertex chunk");
    expectRefused(wrap(object("E", w::chunk(w::CHUNK_FACES, ""))), "empty face chunk");
    expectRefused(wrap(object("E", w::chunk(w::CHUNK_UV, ""))), "empty uv chunk");
}

TEST(ModelsMalformed, SurplusBytesAfterTheCountedRecordsAreSkipped) {
    ScratchDir dir;
    std::string verts = vertices(3, 4);  // one vertex more than counted
    std::string uv = w::chunk(w::CHUNK_UV, w::u16(3) + std::string(8 * 3 + 5, '\0'));
    t3DModel model;
    CLoad3DS reader;
    std::string bytes = wrap(object("S", verts + uv + faces(1, {{0, 1, 2}})));
    ASSERT_TRUE(importBytes(bytes, &model, &reader));
    EXPECT_EQ(reader.m_BytesCounted, bytes.size());
    EXPECT_EQ(model.pObject[0].numOfVerts, 3);
    EXPECT_EQ(model.pObject[0].numTexVertex, 3);
    EXPECT_EQ(model.pObject[0].numOfFaces, 1);
    Free3DModel(&model);
}

TEST(ModelsMalformed, FaceIndexPastTheVertices) {
    ScratchDir dir;
    expectRefused(wrap(object("I", vertices(3, 3) + faces(2, {{0, 1, 2}, {0, 1, 3}}))), "index 3 of 3");
    expectRefused(wrap(object("I", faces(1, {{0, 1, 2}}))), "faces without vertices");
    expectRefused(wrap(object("I", vertices(3, 3) + faces(1, {{65535, 0, 1}}))), "index 65535");
    // Faces before their vertices are fine as long as the indices fit in the end.
    t3DModel model;
    ASSERT_TRUE(importBytes(wrap(object("I", faces(1, {{0, 1, 2}}) + vertices(3, 3))), &model));
    Free3DModel(&model);
}

TEST(ModelsMalformed, MoreThanNinetyNineMaterialsAreReadByTheReader) {
    // The reader has no table limit; the drawable model refuses them (models_draw_test).
    ScratchDir dir;
    w::Model m;
    for (int i = 0; i < 100; i++) m.material("M" + std::to_string(i), (unsigned char)i, 0, 0);
    w::Object& o = m.object("Last", 99);
    o.vertex(0, 0, 0);
    o.vertex(1, 0, 0);
    o.vertex(0, 1, 0);
    o.face(0, 1, 2);
    t3DModel model;
    ASSERT_TRUE(importBytes(w::bytes(m), &model));
    EXPECT_EQ(model.numOfMaterials, 100);
    EXPECT_EQ(model.pObject[0].materialID, 99);
    Free3DModel(&model);
}

TEST(ModelsMalformed, LongNamesAreCut) {
    ScratchDir dir;
    std::string longMaterial(300, 'm');
    std::string longFile(300, 'f');
    std::string longObject(300, 'o');
    w::Model m;
    m.material("Short", 1, 2, 3);
    m.material(longMaterial, 4, 5, 6, longFile);
    w::Object& o = m.object(longObject, 1);
    o.vertex(0, 0, 0, 0, 0);
    o.vertex(1, 0, 0, 1, 0);
    o.vertex(0, 1, 0, 0, 1);
    o.face(0, 1, 2);
    std::string bytes = w::bytes(m);
    t3DModel model;
    CLoad3DS reader;
    ASSERT_TRUE(importBytes(bytes, &model, &reader));
    EXPECT_EQ(reader.m_BytesCounted, bytes.size());
    EXPECT_EQ(reader.m_BytesRead, bytes.size());
    EXPECT_EQ(std::string(model.pMaterials[1].strName), std::string(254, 'm'));
    EXPECT_EQ(std::string(model.pMaterials[1].strFile), std::string(254, 'f'));
    EXPECT_EQ(std::string(model.pObject[0].strName), std::string(254, 'o'));
    // The group's name is cut the same way, so it still finds its material.
    EXPECT_EQ(model.pObject[0].materialID, 1);
    EXPECT_TRUE(model.pObject[0].bHasTexture);
    // The colour after the long name was read from the right place.
    EXPECT_EQ(model.pMaterials[1].color[0], 4);
    EXPECT_EQ(model.pMaterials[1].color[2], 6);
    Free3DModel(&model);
}

TEST(ModelsMalformed, NamesWithoutTheirZero) {
    ScratchDir dir;
    // The object's name runs to the end of its chunk.
    expectRefused(wrap(w::chunk(w::CHUNK_OBJECT, "nameless")), "object name");
    // The group's name runs to the end of its chunk.
    std::string group = w::chunk(w::CHUNK_FACEMATERIAL, "Paint");
    expectRefused(wrap(object("G", vertices(3, 3) + faces(1, {{0, 1, 2}}, group))), "group name");
    // A material name without a zero is simply the whole chunk.
    std::string mat = w::chunk(w::CHUNK_MATERIAL, w::chunk(w::CHUNK_MATNAME, "Paint"));
    t3DModel model;
    ASSERT_TRUE(importBytes(wrap(mat), &model));
    EXPECT_STREQ(model.pMaterials[0].strName, "Paint");
    Free3DModel(&model);
}

// n chunks of one identifier nested in each other, each starting with extra,
// the innermost holding inner; built front to back in one pass.
std::string nest(uint16_t id, int n, const std::string& extra, const std::string& inner) {
    std::string out;
    out.reserve((6 + extra.size()) * n + inner.size());
    for (int i = 0; i < n; i++)
        out += w::u16(id) + w::u32((uint32_t)((6 + extra.size()) * (n - i) + inner.size())) + extra;
    return out + inner;
}

TEST(ModelsMalformed, DeepNestingEndsCleanly) {
    ScratchDir dir;
    std::string mesh = nest(w::CHUNK_MESH, 200000, "", vertices(3, 3) + faces(1, {{0, 1, 2}}));
    expectRefused(wrap(w::chunk(w::CHUNK_OBJECT, w::cstr("Deep") + mesh)), "nested meshes");
    std::string maps = nest(w::CHUNK_MATMAP, 200000, "", w::chunk(w::CHUNK_MATMAPFILE, w::cstr("x.tga")));
    expectRefused(wrap(w::chunk(w::CHUNK_MATERIAL, maps)), "nested maps");
    std::string infos = nest(w::CHUNK_OBJECTINFO, 200000, w::chunk(w::CHUNK_MESHVERSION, ""), "");
    expectRefused(w::chunk(w::CHUNK_PRIMARY, infos), "nested object infos");

    // A few levels are fine.
    t3DModel model;
    ASSERT_TRUE(importBytes(
        wrap(w::chunk(w::CHUNK_OBJECT, w::cstr("Shallow") +
                                           nest(w::CHUNK_MESH, 8, "", vertices(3, 3) + faces(1, {{0, 1, 2}})))),
        &model));
    EXPECT_EQ(model.pObject[0].numOfFaces, 1);
    Free3DModel(&model);
}

TEST(ModelsMalformed, OddButHarmlessShapes) {
    ScratchDir dir;
    t3DModel model;
    // Nothing but the PRIMARY header.
    ASSERT_TRUE(importBytes(w::chunk(w::CHUNK_PRIMARY, ""), &model));
    EXPECT_TRUE(isEmpty(model));
    // An empty object-info chunk, and an empty diffuse colour.
    ASSERT_TRUE(importBytes(w::chunk(w::CHUNK_PRIMARY, w::chunk(w::CHUNK_OBJECTINFO, "")), &model));
    ASSERT_TRUE(importBytes(wrap(w::chunk(w::CHUNK_MATERIAL, w::chunk(w::CHUNK_MATDIFFUSE, ""))), &model));
    EXPECT_EQ(model.numOfMaterials, 1);
    // A float colour where a byte colour was expected: its first three bytes.
    std::string floats = w::chunk(0x0010, w::f32(1) + w::f32(0) + w::f32(0));
    ASSERT_TRUE(importBytes(wrap(w::chunk(w::CHUNK_MATERIAL, w::chunk(w::CHUNK_MATDIFFUSE, floats))), &model));
    EXPECT_EQ(model.numOfMaterials, 2);
    // Two vertex lists in one object: the second one counts.
    ASSERT_TRUE(importBytes(wrap(object("Twice", vertices(5, 5) + vertices(3, 3) + faces(1, {{0, 1, 2}}))), &model));
    EXPECT_EQ(model.pObject.back().numOfVerts, 3);
    // Bytes after the PRIMARY chunk are not ours.
    ASSERT_TRUE(importBytes(triangle() + "trailing rubbish", &model));
    Free3DModel(&model);
}

TEST(ModelsMalformed, DirectoryInsteadOfFile) {
    ScratchDir dir;
    t3DModel model;
    CLoad3DS reader;
    int files = openFiles();
    EXPECT_FALSE(reader.Import3DS(&model, "Data"));
    EXPECT_TRUE(isEmpty(model));
    EXPECT_EQ(openFiles(), files);
}

TEST(ModelsMalformed, RandomDamageNeverCrashes) {
    ScratchDir dir;
    std::string good = w::bytes(sampleModel());
    uint32_t seed = 12345;
    auto next = [&seed]() {
        seed = seed * 1664525u + 1013904223u;
        return seed >> 8;
    };
    int files = openFiles();
    for (int round = 0; round < 2000; round++) {
        std::string bytes = good;
        int flips = 1 + (int)(next() % 4);
        for (int i = 0; i < flips; i++) bytes[next() % bytes.size()] = (char)next();
        t3DModel model;
        CLoad3DS reader;
        if (importBytes(bytes, &model, &reader)) {
            EXPECT_LE(reader.m_BytesCounted, bytes.size());
            for (const t3DObject& o : model.pObject)
                for (int f = 0; f < o.numOfFaces; f++)
                    for (int k = 0; k < 3; k++) ASSERT_LT(o.pFaces[f].vertIndex[k], o.numOfVerts);
        } else {
            EXPECT_TRUE(isEmpty(model));
        }
        Free3DModel(&model);
    }
    EXPECT_EQ(openFiles(), files);
}

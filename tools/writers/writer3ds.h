#ifndef BV_TOOLS_WRITERS_WRITER3DS_H
#define BV_TOOLS_WRITERS_WRITER3DS_H

// Writes 3D Studio ".3DS" meshes for the game's content: materials with a
// diffuse colour and an optional texture file, and mesh objects with vertices,
// triangles, optional texture coordinates and one material each.
//
// Models are written in the file's own axes: z is up. The game turns them to
// its y-up world when it draws them, so a kart's wheels sit at z = 0 here.
// Triangles are counter-clockwise seen from outside.

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace writer3ds {

struct Material {
    std::string name;
    unsigned char r = 255, g = 255, b = 255;
    std::string texture;  // file name below the game's texture folder, "" for none
};

struct Object {
    std::string name;
    std::vector<std::array<float, 3>> verts;
    std::vector<std::array<uint16_t, 3>> faces;
    std::vector<std::array<float, 2>> uvs;  // empty, or one per vertex
    int material = -1;                      // index into Model::materials, -1 for none

    // Conveniences for generators; both return the index of what they added.
    uint16_t vertex(float x, float y, float z);
    uint16_t vertex(float x, float y, float z, float u, float v);
    size_t face(uint16_t a, uint16_t b, uint16_t c);
    // Two triangles a-b-c and a-c-d of a quad given counter-clockwise.
    void quad(uint16_t a, uint16_t b, uint16_t c, uint16_t d);
};

struct Model {
    std::vector<Material> materials;
    std::vector<Object> objects;

    // Extra chunks a real modeller writes and the game skips: a key-frame
    // chunk of this many bytes in all, header included (0 for none; below its
    // own header's size it is written empty), and per-face smoothing groups.
    uint32_t keyframeBytes = 64;
    bool smoothingGroups = true;

    // Index of the material called name, added with this colour if new.
    int material(const std::string& name, unsigned char r, unsigned char g, unsigned char b,
                 const std::string& texture = "");
    // The new object; the reference lasts until the next object is added.
    Object& object(const std::string& name, int material = -1);
};

// Chunk identifiers the writer uses.
enum : uint16_t {
    CHUNK_PRIMARY = 0x4D4D,
    CHUNK_VERSION = 0x0002,
    CHUNK_COLOR24 = 0x0011,
    CHUNK_LINCOLOR24 = 0x0012,
    CHUNK_PERCENT = 0x0030,
    CHUNK_MASTERSCALE = 0x0100,
    CHUNK_OBJECTINFO = 0x3D3D,
    CHUNK_MESHVERSION = 0x3D3E,
    CHUNK_OBJECT = 0x4000,
    CHUNK_MESH = 0x4100,
    CHUNK_VERTICES = 0x4110,
    CHUNK_FACES = 0x4120,
    CHUNK_FACEMATERIAL = 0x4130,
    CHUNK_UV = 0x4140,
    CHUNK_SMOOTHING = 0x4150,
    CHUNK_LOCALAXES = 0x4160,
    CHUNK_MATNAME = 0xA000,
    CHUNK_MATDIFFUSE = 0xA020,
    CHUNK_MATMAP = 0xA200,
    CHUNK_MATMAPFILE = 0xA300,
    CHUNK_MATERIAL = 0xAFFF,
    CHUNK_KEYFRAME = 0xB000,
    CHUNK_KFHEADER = 0xB00A,
};

// "" when the model can be written, else what is wrong with it (more than
// 65535 vertices or faces in an object, a face index past the vertices, a UV
// list that does not match the vertices, an unknown material index).
std::string check(const Model& model);

// The whole file in memory; empty when check() finds a problem.
std::string bytes(const Model& model);

// Writes the file; false when check() finds a problem or the file cannot be written.
bool write3DS(const Model& model, const std::string& path);

// Building blocks for hand-made (and deliberately damaged) files: one chunk
// from its identifier and payload, and little-endian numbers and strings.
std::string chunk(uint16_t id, const std::string& payload);
std::string u16(uint16_t value);
std::string u32(uint32_t value);
std::string f32(float value);
std::string cstr(const std::string& text);  // with its terminating zero

}  // namespace writer3ds

#endif

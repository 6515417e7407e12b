// Mesh models built up and written as .3DS files.

#include "writers/writer3ds.h"

#include <cstring>
#include <fstream>

namespace writer3ds {

uint16_t Object::vertex(float x, float y, float z) {
    verts.push_back({x, y, z});
    return (uint16_t)(verts.size() - 1);
}

uint16_t Object::vertex(float x, float y, float z, float u, float v) {
    uvs.push_back({u, v});
    return vertex(x, y, z);
}

size_t Object::face(uint16_t a, uint16_t b, uint16_t c) {
    faces.push_back({a, b, c});
    return faces.size() - 1;
}

void Object::quad(uint16_t a, uint16_t b, uint16_t c, uint16_t d) {
    face(a, b, c);
    face(a, c, d);
}

int Model::material(const std::string& name, unsigned char r, unsigned char g, unsigned char b,
                    const std::string& texture) {
    for (size_t i = 0; i < materials.size(); i++)
        if (materials[i].name == name) return (int)i;
    Material m;
    m.name = name;
    m.r = r;
    m.g = g;
    m.b = b;
    m.texture = texture;
    materials.push_back(m);
    return (int)materials.size() - 1;
}

Object& Model::object(const std::string& name, int material) {
    Object o;
    o.name = name;
    o.material = material;
    objects.push_back(o);
    return objects.back();
}

std::string u16(uint16_t value) {
    char b[2] = {(char)(value & 0xFF), (char)(value >> 8)};
    return std::string(b, 2);
}

std::string u32(uint32_t value) {
    return u16((uint16_t)(value & 0xFFFF)) + u16((uint16_t)(value >> 16));
}

std::string f32(float value) {
    uint32_t bits;
    std::memcpy(&bits, &value, 4);
    return u32(bits);
}

std::string cstr(const std::string& text) {
    return text + std::string(1, '\0');
}

std::string chunk(uint16_t id, const std::string& payload) {
    return u16(id) + u32((uint32_t)(payload.size() + 6)) + payload;
}

std::string check(const Model& model) {
    for (const Object& o : model.objects) {
        if (o.verts.size() > 65535) return "object " + o.name + " has more than 65535 vertices";
        if (o.faces.size() > 65535) return "object " + o.name + " has more than 65535 faces";
        if (!o.uvs.empty() && o.uvs.size() != o.verts.size())
            return "object " + o.name + " has " + std::to_string(o.uvs.size()) + " texture coordinates for " +
                   std::to_string(o.verts.size()) + " vertices";
        for (const auto& f : o.faces)
            for (uint16_t i : f)
                if (i >= o.verts.size()) return "object " + o.name + " has a face past its vertices";
        if (o.material < -1 || o.material >= (int)model.materials.size())
            return "object " + o.name + " uses an unknown material";
    }
    return "";
}

static std::string materialChunk(const Material& m) {
    std::string body = chunk(CHUNK_MATNAME, cstr(m.name));
    std::string rgb;
    rgb += (char)m.r;
    rgb += (char)m.g;
    rgb += (char)m.b;
    // Modellers store the colour twice, the second time gamma-corrected.
    body += chunk(CHUNK_MATDIFFUSE, chunk(CHUNK_COLOR24, rgb) + chunk(CHUNK_LINCOLOR24, rgb));
    if (!m.texture.empty())
        body += chunk(CHUNK_MATMAP, chunk(CHUNK_PERCENT, u16(100)) + chunk(CHUNK_MATMAPFILE, cstr(m.texture)));
    return chunk(CHUNK_MATERIAL, body);
}

static std::string objectChunk(const Model& model, const Object& o, bool smoothing) {
    std::string verts = u16((uint16_t)o.verts.size());
    for (const auto& v : o.verts) verts += f32(v[0]) + f32(v[1]) + f32(v[2]);
    std::string mesh = chunk(CHUNK_VERTICES, verts);

    if (!o.uvs.empty()) {
        std::string uv = u16((uint16_t)o.uvs.size());
        for (const auto& t : o.uvs) uv += f32(t[0]) + f32(t[1]);
        mesh += chunk(CHUNK_UV, uv);
    }

    std::string axes;
    const float identity[12] = {1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0};
    for (float f : identity) axes += f32(f);
    mesh += chunk(CHUNK_LOCALAXES, axes);

    std::string faces = u16((uint16_t)o.faces.size());
    for (const auto& f : o.faces) faces += u16(f[0]) + u16(f[1]) + u16(f[2]) + u16(7);
    if (o.material >= 0) {
        std::string group = cstr(model.materials[o.material].name) + u16((uint16_t)o.faces.size());
        for (size_t i = 0; i < o.faces.size(); i++) group += u16((uint16_t)i);
        faces += chunk(CHUNK_FACEMATERIAL, group);
    }
    if (smoothing) {
        std::string groups;
        for (size_t i = 0; i < o.faces.size(); i++) groups += u32(1);
        faces += chunk(CHUNK_SMOOTHING, groups);
    }
    mesh += chunk(CHUNK_FACES, faces);

    return chunk(CHUNK_OBJECT, cstr(o.name) + chunk(CHUNK_MESH, mesh));
}

static std::string keyframeChunk(const Model& model) {
    // A header naming the scene and its length in frames, then filler that
    // stands for the animation tracks.
    std::string body = chunk(CHUNK_KFHEADER, u16(5) + cstr("BRONTEVALLE") + u32(100));
    if (model.keyframeBytes < 6 + body.size()) return chunk(CHUNK_KEYFRAME, "");
    uint32_t filler = model.keyframeBytes - 6 - (uint32_t)body.size();
    std::string pattern;
    for (uint32_t i = 0; i < filler; i++) pattern += (char)(i * 37 + 11);
    return chunk(CHUNK_KEYFRAME, body + pattern);
}

std::string bytes(const Model& model) {
    if (!check(model).empty()) return "";
    std::string info = chunk(CHUNK_MESHVERSION, u32(3));
    for (const Material& m : model.materials) info += materialChunk(m);
    info += chunk(CHUNK_MASTERSCALE, f32(1));
    for (const Object& o : model.objects) info += objectChunk(model, o, model.smoothingGroups);

    std::string body = chunk(CHUNK_VERSION, u32(3)) + chunk(CHUNK_OBJECTINFO, info);
    if (model.keyframeBytes) body += keyframeChunk(model);
    return chunk(CHUNK_PRIMARY, body);
}

bool write3DS(const Model& model, const std::string& path) {
    std::string data = bytes(model);
    if (data.empty()) return false;
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    if (!out) return false;
    out.write(data.data(), (std::streamsize)data.size());
    out.close();
    return (bool)out;
}

}  // namespace writer3ds

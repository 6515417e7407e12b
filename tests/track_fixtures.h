#ifndef BV_TESTS_TRACK_FIXTURES_H
#define BV_TESTS_TRACK_FIXTURES_H

// Track files, a small Data/ tree of plain pictures and box models, and the
// GL set-up of a race frame, shared by the track_* test programs.

#include <GL/gl.h>
#include <GL/glu.h>

#include <cmath>
#include <filesystem>
#include <string>
#include <vector>

#include "scene/camera.h"
#include "scene/scene.h"
#include "shell/blackbox.h"
#include "shell/bvconfig.h"
#include "shell/main.h"
#include "support/bvtest_fixtures.h"
#include "support/glreads.h"
#include "track/track.h"
#include "writers/writer3ds.h"

namespace trackfix {

namespace fs = std::filesystem;
namespace w = writer3ds;

inline void writeTrack(const std::string& name, const std::string& text) {
    fs::create_directories("Data/Tracks");
    bvtest::writeFile("Data/Tracks/" + name + ".txt", text);
}

// A round circuit about the middle of the map, driven anticlockwise seen from
// above with x to the right and z downwards: the start at the east side runs
// towards -z past the finish gantry, left barrier inside, right outside.
struct Circle {
    int points = 64;
    double inner = 200, outer = 230;  // radii in file units
    int objects = 16;
};

inline std::string circleTrack(const Circle& c = Circle()) {
    std::string text = "1 0 10\n";
    auto at = [](double r, double a, char sep) {
        return std::to_string((int)std::lround(256 + r * std::cos(a))) + sep +
               std::to_string((int)std::lround(256 - r * std::sin(a)));
    };
    for (int i = 0; i < c.points; i++) {
        double a = 2 * M_PI * i / c.points;
        text += "LR " + at(c.inner, a, ' ') + " " + at(c.outer, a, ' ') + "\n";
    }
    for (int i = 0; i < c.points; i += 4) {
        double a = 2 * M_PI * (i + 2) / c.points;
        text += "C " + at(c.outer + 14, a, ' ') + "\n";
    }
    // Barrels, containers and signs outside, a plant and an advertising
    // board among them.
    const int types[] = {0, 2, 5, 7, 8, 3, 6, 1, 9, 4, 10, 11};
    for (int i = 0; i < c.objects; i++) {
        double a = 2 * M_PI * (i + 0.5) / c.objects;
        text += "O " + std::to_string(types[i % 12]) + " " + at(c.inner - 12, a, ' ') + "\n";
    }
    return text;
}

// Pictures of one colour each, so that a pixel tells what it shows.
struct Colour {
    int r, g, b;
};
const Colour DIRT = {110, 70, 30};
const Colour ROAD = {80, 80, 90};
const Colour GRASS = {40, 150, 40};
const Colour FRONT = {220, 20, 20};
const Colour BACK = {150, 20, 60};
const Colour TOP = {230, 200, 20};
const Colour POLE = {250, 250, 0};
const Colour BARREL = {20, 40, 230};
const Colour PLANT = {0, 255, 120};
const Colour AD = {255, 0, 255};
const Colour GANTRY = {255, 140, 0};

// A w x d x h box standing on the ground (file axes: z up), one material.
inline void box(w::Model& m, const std::string& name, int material, float w_, float d, float h, float z0 = 0) {
    w::Object& o = m.object(name, material);
    for (int i = 0; i < 8; i++)
        o.vertex((i & 1) ? w_ / 2 : -w_ / 2, (i & 2) ? d / 2 : -d / 2, (i & 4) ? z0 + h : z0, (i & 1) ? 1.f : 0.f,
                 (i & 4) ? 1.f : 0.f);
    o.quad(0, 2, 3, 1);
    o.quad(4, 5, 7, 6);
    o.quad(0, 1, 5, 4);
    o.quad(1, 3, 7, 5);
    o.quad(3, 2, 6, 7);
    o.quad(2, 0, 4, 6);
}

// An upright panel that faces +z in the game (the files are z-up and turned
// to y-up when drawn), textured over its whole area.
inline void panel(w::Model& m, const std::string& name, int material, float w_, float h, float z0,
                  bool twoSided = false) {
    w::Object& o = m.object(name, material);
    o.vertex(-w_ / 2, 0, z0, 0, 0);
    o.vertex(w_ / 2, 0, z0, 1, 0);
    o.vertex(w_ / 2, 0, z0 + h, 1, 1);
    o.vertex(-w_ / 2, 0, z0 + h, 0, 1);
    // Counter-clockwise seen from -y in the file, that is from +z in the game;
    // from behind it is culled unless it is two-sided.
    o.quad(0, 1, 2, 3);
    if (!twoSided) return;
    // The back as an object of its own, so that each side keeps its own normals.
    w::Object& back = m.object(name + "Back", material);
    back.vertex(-w_ / 2, 0, z0, 0, 0);
    back.vertex(w_ / 2, 0, z0, 1, 0);
    back.vertex(w_ / 2, 0, z0 + h, 1, 1);
    back.vertex(-w_ / 2, 0, z0 + h, 0, 1);
    back.quad(0, 3, 2, 1);
}

inline void solid(const std::string& file, Colour c, int a = -1) {
    bvtest::writeSolidTGA("Data/Textures/" + file, 8, 8, c.r, c.g, c.b, a);
}

// Everything init loads, made of plain colours and boxes; advertising
// pictures only when ads is true.
inline void writeData(bool ads = true) {
    fs::create_directories("Data/Textures");
    fs::create_directories("Data/Models");
    fs::create_directories("Data/Tracks");
    for (int i = 1; i <= 4; i++) solid("Tdirt" + std::to_string(i) + ".tga", DIRT);
    solid("Troad1.tga", ROAD);
    solid("Tgrass.tga", GRASS, 255);
    solid("Tfront.tga", FRONT);
    solid("Tback.tga", BACK);
    solid("Ttop.tga", TOP);
    solid("Cshadowmap.tga", {0, 0, 0}, 128);
    // A fence of wire and holes: alternate columns see-through.
    std::vector<unsigned char> fence;
    for (int y = 0; y < 8; y++)
        for (int x = 0; x < 8; x++) {
            bool wire = x % 2 == 0 || y % 4 == 0;
            fence.insert(fence.end(), {200, 200, 200, (unsigned char)(wire ? 255 : 0)});
        }
    bvtest::writeTGA("Data/Textures/Tfence.tga", 8, 8, 32, fence);
    for (int i = 1; i <= 5; i++) solid("Nature" + std::to_string(i) + ".tga", PLANT, 255);
    solid("Pole.tga", POLE);
    // Chequer: black and white squares.
    std::vector<unsigned char> chequer;
    for (int y = 0; y < 8; y++)
        for (int x = 0; x < 8; x++) {
            unsigned char v = ((x / 4 + y / 4) % 2) ? 255 : 0;
            chequer.insert(chequer.end(), {v, v, v});
        }
    bvtest::writeTGA("Data/Textures/Finish.tga", 8, 8, 24, chequer);
    solid("barrel.tga", BARREL);
    solid("gantry.tga", GANTRY);
    if (ads) {
        fs::create_directories("Data/Ads");
        bvtest::writeSolidTGA("Data/Ads/ad1.tga", 8, 8, AD.r, AD.g, AD.b);
        bvtest::writeSolidTGA("Data/Ads/ad2.tga", 8, 8, AD.r, AD.g, AD.b);
    }

    auto textured = [](const std::string& file, const std::string& texture, float w_, float d, float h) {
        w::Model m;
        int mat = m.material("Paint", 255, 255, 255, texture);
        box(m, "Body", mat, w_, d, h);
        w::write3DS(m, "Data/Models/" + file + ".3DS");
    };
    {
        // The gantry: two posts and a beam across the start straight's road.
        w::Model m;
        int mat = m.material("Gantry", 255, 255, 255, "gantry.tga");
        box(m, "PostL", mat, 0.3f, 0.3f, 3);
        for (auto& v : m.objects.back().verts) v[0] -= 2.5f;
        box(m, "PostR", mat, 0.3f, 0.3f, 3);
        for (auto& v : m.objects.back().verts) v[0] += 2.5f;
        box(m, "Beam", mat, 5.3f, 0.3f, 0.5f, 2.6f);
        w::write3DS(m, "Data/Models/tfinish.3DS");
    }
    textured("camerastand", "barrel.tga", 0.2f, 0.2f, 1.2f);
    textured("camera", "barrel.tga", 0.3f, 0.5f, 0.3f);
    for (const char* name : {"barrel", "barrelt", "barrel2", "barrel2t", "container", "container2", "sign1",
                             "sign2", "sign3", "sign4", "ad"})
        textured(name, "barrel.tga", 1.0f, 1.0f, 1.2f);
    {
        w::Model m;
        // A texture of its own gives the panel texture coordinates; the track
        // binds the plant pictures over it.
        int mat = m.material("Leaves", 255, 255, 255, "barrel.tga");
        panel(m, "Plant", mat, 1.5f, 2.0f, 0);
        w::write3DS(m, "Data/Models/nature.3DS");
    }
    {
        w::Model m;
        int mat = m.material("Board", 255, 255, 255, "barrel.tga");
        panel(m, "Board", mat, 1.2f, 0.8f, 1.25f, true);
        w::write3DS(m, "Data/Models/adboard.3DS");
    }
}

// A small window in the game's GL state, for pictures of the track's shadows:
// no fog or sound, the finest detail, everything within 60 of the eye, and
// the shadows cast without the projectors.
inline void openShadowWindow(int w, int h) {
    bvtest::openWindow(w, h);
    config.soundeffects = 0;
    initGL();
    config.fog = 0;
    config.lod = 2;
    config.LOrange[0] = config.LOrange[1] = config.LOrange[2] = 60;
    config.shadowprojectors = 0;
}

// The race frame's light and view, set up by the scene's own steps.
inline void raceView() {
    camera.axmargin = 35;
    camera.aymargin = 45;
    camera.fov = 55;
    resizeGLwindow3D();
    setRaceLight();
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    camera.transform();
    placeRaceLight();
}

// Ground, visibility and objects in the order of the race frame.
inline void drawTrack() {
    raceView();
    track.isinview();
    glEnable(GL_LIGHTING);
    glCallList(track.LIST_ground);
    glDisable(GL_LIGHTING);
    glEnable(GL_LIGHTING);
    track.drawObjects();
    glDisable(GL_LIGHTING);
    glFinish();
}

inline void placeCamera(float px, float py, float pz, float ax, float ay) {
    camera.px = camera.ox = px;
    camera.py = camera.oy = py;
    camera.pz = camera.oz = pz;
    camera.ax = ax;
    camera.ay = ay;
    camera.az = 0;
    camera.axmargin = 35;
    camera.aymargin = 45;
    camera.mode = CAMERA_FREE;
    camera.ignoreisinview = false;
}

using bvtest::frame;

// Keeps what the test saw, as TGA, for a person to look at.
inline void keepShot(const std::string& name) {
    bvtest::keepShot("track_shots", name);
}

}  // namespace trackfix

#endif

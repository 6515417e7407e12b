// The circuit: the track list, loading, geometry, barrier collision and drawing.

#include "track/track.h"

#include <GL/gl.h>
#include <dirent.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

#include "assets/texture.h"
#include "kart/gokart.h"
#include "scene/camera.h"
#include "scene/scene.h"
#include "scene/shader.h"
#include "shell/angles.h"
#include "shell/blackbox.h"
#include "frontend/highscore.h"
#include "scene/ghost.h"
#include "shell/bvconfig.h"

namespace {

// How the roadside is laid out outwards from each barrier line, in world
// units: the barrier itself, a strip of bare dirt the karts throw up, grass
// that fades in and out again, and the spectators' fence in the grass.
const float DIRT_BAND = 0.75f;
const float GRASS_IN = 0.75f;
const float GRASS_FULL = 1.5f;
const float GRASS_LAST = 3.75f;
const float GRASS_OUT = 5.0f;
const float FENCE_OFFSET = 3.0f;
const float FENCE_HEIGHT = 1.2f;
const float POLE_HEIGHT = 1.35f;
const float POLE_HALFWIDTH = 0.05f;
// World units per repeat of the ground-level pictures.
const float GROUND_REPEAT = 2.5f;
const float FENCE_REPEAT = 1.2f;
// The finish line: half its depth along the track, and one chequer tile.
const float FINISH_HALFDEPTH = 0.3f;
const float FINISH_TILE = 0.6f;

void report(const std::string& text) {
    blackbox.task(text.c_str(), false);
    printf("%s\n", text.c_str());
}

// j = (i - 1) mod n with the subtraction done on 32-bit unsigned numbers, so
// that point 0's predecessor is 4294967295 mod n and not always the last point.
unsigned int previous(unsigned int i, unsigned int n) {
    return (uint32_t)((uint32_t)i - 1u) % (uint32_t)n;
}

bool visible(float x, float y, float z) {
    float d = camera.isinview(x, y, z);
    return d > 0 && d < config.LOrange[config.lodlevel()];
}

// The point p moved outwards from the road by d (normals point at the road).
sTrackPoint outwards(const sTrackPoint& p, const sTrackPoint& n, float d) {
    return {p.x - n.x * d, p.z - n.z * d};
}

void vertex(const sTrackPoint& p, float y) {
    glVertex3f(p.x, y, p.z);
}

// Ground pieces are drawn twice, once where a shadow caster has marked the
// stencil (at half brightness) and once everywhere else.
// Only bit 1 is compared; ref 3 lets a marking pass write bit 2 as well.
// The darker pass only shades inside the rectangle the shadows lie in.
template <typename Draw>
void shadowedPasses(float alpha, Draw draw, int ref = 1) {
    glStencilFunc(GL_EQUAL, ref, 1);
    glEnable(GL_SCISSOR_TEST);
    draw(0.5f, alpha);
    glDisable(GL_SCISSOR_TEST);
    glStencilFunc(GL_NOTEQUAL, ref, 1);
    draw(1.0f, alpha);
}

}  // namespace

// ---- the track list, the shared pictures and models, one track's file ----

void sTrack::init(float scale) {
    trackscale = scale;
    listTracks();
    loadTextures();
    loadAds();
    loadModels();
}

// The tracks are the files in Data/Tracks; a name is what comes before the first dot.
void sTrack::listTracks() {
    ntracks = 0;
    if (DIR* dir = opendir("Data/Tracks/.")) {
        while (dirent* entry = readdir(dir)) {
            size_t length = strcspn(entry->d_name, ".");
            if (length <= 2) continue;
            if (length >= TRACK_NAMELENGTH) {
                report(std::string("Listing tracks : name too long, Data/Tracks/") + entry->d_name + " ignored");
                continue;
            }
            if (ntracks >= TRACK_MAXNAMES) {
                report(std::string("Listing tracks : more than 99 tracks, Data/Tracks/") + entry->d_name +
                       " ignored");
                continue;
            }
            memcpy(trackname[ntracks], entry->d_name, length);
            trackname[ntracks][length] = 0;
            ntracks++;
        }
        closedir(dir);
    }
    // Nothing to race on: the game still runs, but the log says why a race would be empty.
    if (ntracks == 0) report("Listing tracks : no tracks in Data/Tracks");
    if (config.track >= ntracks) config.track = 0;
}

void sTrack::loadTextures() {
    char name[64];
    for (unsigned int i = 0; i < N_DIRTS; i++) {
        snprintf(name, sizeof name, "Data/Textures/Tdirt%u.tga", i + 1);
        floadTextureTGA(name, &dirtTexture[i]);
    }
    for (unsigned int i = 0; i < N_ROADS; i++) {
        snprintf(name, sizeof name, "Data/Textures/Troad%u.tga", i + 1);
        floadTextureTGA(name, &roadTexture[i]);
    }
    floadTextureTGA("Data/Textures/Tgrass.tga", &grassTexture);
    floadTextureTGA("Data/Textures/Tfront.tga", &frontTexture);
    floadTextureTGA("Data/Textures/Tback.tga", &backTexture);
    floadTextureTGA("Data/Textures/Ttop.tga", &topTexture);
    floadTextureTGA("Data/Textures/Cshadowmap.tga", &CshadowmapTexture);
    // Fences and plants are cut out by their alpha; filtered, their edges
    // would smear into halos, so they are always loaded sharp.
    unsigned int filter = config.texturefilter;
    config.texturefilter = 0;
    floadTextureTGA("Data/Textures/Tfence.tga", &fenceTexture);
    for (unsigned int i = 0; i < N_TREES; i++) {
        snprintf(name, sizeof name, "Data/Textures/Nature%u.tga", i + 1);
        floadTextureTGA(name, &natureTexture[i]);
    }
    config.texturefilter = filter;
    floadTextureTGA("Data/Textures/Pole.tga", &poleTexture);
    floadTextureTGA("Data/Textures/Finish.tga", &finishTexture);
}

// Every picture in Data/Ads is an advertisement for the boards.
void sTrack::loadAds() {
    nAds = 0;
    if (DIR* dir = opendir("Data/Ads/.")) {
        while (dirent* entry = readdir(dir)) {
            if (strlen(entry->d_name) <= 2) continue;
            std::string path = std::string("Data/Ads/") + entry->d_name;
            if (nAds >= TRACK_MAXADS) {
                report("Loading advertisements : more than 99 pictures, " + path + " ignored");
                continue;
            }
            floadTextureTGA(path.c_str(), &adTexture[nAds]);
            nAds++;
        }
        closedir(dir);
    }
}

void sTrack::loadModels() {
    struct Model {
        s3DS* model;
        const char* file;
        int type;  // roadside object type, -1 for the four placed by the drawing itself
    };
    const Model models[16] = {
        {&finish3DS, "tfinish", -1},       {&camera3DS, "camera", -1},       {&camerastand3DS, "camerastand", -1},
        {&adboard3DS, "adboard", -1},      {&barrel3DS, "barrel", 0},        {&barrelt3DS, "barrelt", 1},
        {&container3DS, "container", 2},   {&barrel23DS, "barrel2", 3},      {&barrel2t3DS, "barrel2t", 4},
        {&nature3DS, "nature", 5},         {&container23DS, "container2", 6}, {&ad3DS, "ad", 7},
        {&sign13DS, "sign1", 8},           {&sign23DS, "sign2", 9},          {&sign33DS, "sign3", 10},
        {&sign43DS, "sign4", 11},
    };
    for (const Model& m : models) {
        std::string path = std::string("Data/Models/") + m.file + ".3DS";
        m.model->load(path.c_str(), "Data/Textures/");
        // The advertising board and the plants take the picture the drawing binds.
        bool owntextures = m.model != &adboard3DS && m.model != &nature3DS;
        m.model->initlist(false, owntextures);
        if (m.type >= 0) miscobjectPTR[m.type] = m.model;
    }
}

void sTrack::load() {
    if (config.track >= TRACK_MAXNAMES) {
        report("Loading track : no such track");
        return;
    }
    highscore.init();
    ghost.init();
    std::string name = std::string("Data/Tracks/") + trackname[config.track] + ".txt";
    std::string path = std::string(config.PATH) + name;
    FILE* f = fopen(path.c_str(), "r");
    if (!f) {
        blackbox.task("Loading track", false);
        return;
    }
    parse(f, name.c_str());
    fclose(f);

    buildGround();
    buildFences();

    FogColor[0] = 0.525f;
    FogColor[1] = 0.525f;
    FogColor[2] = 0.5f;
    FogColor[3] = 1.0f;
    glFogfv(GL_FOG_COLOR, FogColor);
    glFogi(GL_FOG_MODE, GL_EXP);
    glFogf(GL_FOG_DENSITY, fogdensity);
    glHint(GL_FOG_HINT, GL_NICEST);
    glFogf(GL_FOG_START, 45.0f);
    glFogf(GL_FOG_END, 50.0f);
}

void sTrack::parse(FILE* f, const char* filename) {
    const std::string name = filename;
    readHeader(f);
    sDropped dropped;
    readRecords(f, dropped);
    blackbox.task("Loading track", true);
    reportDropped(name, dropped);
    buildGeometry();
    barrier_width = 0.25f;
    barrier_height = 0.25f;
    for (unsigned int i = 0; i < TRACK_MAXPOINTS; i++) doCshadowmap[i] = false;
}

// Ground, road and fog, and no records yet.
void sTrack::readHeader(FILE* f) {
    int dirt = 0, road = 0, fog = 0;
    if (fscanf(f, "%d%d", &dirt, &road) != 2) { /* what was read stays */ }
    if (fscanf(f, "%d", &fog) != 1) { /* likewise */ }
    whichDirt = (unsigned int)dirt;
    whichRoad = (unsigned int)road;
    fogdensity = (float)((unsigned int)fog / 1000.0);
    nLRpoints = 0;
    nCpoints = 0;
    nMiscobjects = 0;
}

// The LR, C and O records up to the end of the file, as far as the record
// holds them; what does not fit or cannot be shown is counted in `dropped`.
void sTrack::readRecords(FILE* f, sDropped& dropped) {
    // Widened before the grid centre is taken off: a damaged file may hold
    // numbers near the ends of int.
    auto world = [this](int v) { return (float)((long long)v - 256) * trackscale; };
    char word[256];
    while (!feof(f)) {
        strcpy(word, "nothing more");
        if (fscanf(f, "%255s", word) != 1) { /* end of file leaves the marker */ }
        if (strcmp(word, "nothing more") == 0) break;
        if (strcmp(word, "LR") == 0) {
            int lx = 256, lz = 256, rx = 256, rz = 256;
            if (fscanf(f, "%d%d", &lx, &lz) != 2) { /* a broken record keeps what it got */ }
            if (fscanf(f, "%d%d", &rx, &rz) != 2) { /* likewise */ }
            if (nLRpoints >= TRACK_MAXPOINTS) {
                dropped.extraLR++;
                continue;
            }
            Lpoint[nLRpoints] = {world(lx), world(lz)};
            Rpoint[nLRpoints] = {world(rx), world(rz)};
            nLRpoints++;
        } else if (strcmp(word, "C") == 0) {
            int x = 256, z = 256;
            if (fscanf(f, "%d%d", &x, &z) != 2) { /* likewise */ }
            if (nCpoints >= TRACK_MAXPOINTS) {
                dropped.extraC++;
                continue;
            }
            Cpoint[nCpoints] = {world(x), world(z)};
            nCpoints++;
        } else if (strcmp(word, "O") == 0) {
            int type = 0, x = 256, z = 256;
            if (fscanf(f, "%d", &type) != 1) { /* likewise */ }
            if (fscanf(f, "%d%d", &x, &z) != 2) { /* likewise */ }
            if (type < 0 || type >= (int)TRACK_NOBJECTTYPES) {
                dropped.badtypes++;
                continue;
            }
            // A board with no advertisement to carry would have no texture to show.
            if (type == (int)TRACK_ADBOARD && nAds == 0) {
                dropped.noads++;
                continue;
            }
            if (nMiscobjects >= TRACK_MAXOBJECTS) {
                dropped.extraO++;
                continue;
            }
            typeMiscobject[nMiscobjects] = (unsigned int)type;
            miscobject[nMiscobjects] = {world(x), world(z)};
            nMiscobjects++;
        }
        // Any other word is passed over on its own.
    }
}

// Says in the log what the file asked for that the track cannot have.
void sTrack::reportDropped(const std::string& name, const sDropped& dropped) {
    if (whichDirt >= N_DIRTS) {
        report("Loading track " + name + " : ground " + std::to_string(whichDirt) + " does not exist, 0 used");
        whichDirt = 0;
    }
    if (whichRoad >= N_ROADS) {
        report("Loading track " + name + " : road " + std::to_string(whichRoad) + " does not exist, 0 used");
        whichRoad = 0;
    }
    if (dropped.extraLR)
        report("Loading track " + name + " : more than 999 barrier pairs, " + std::to_string(dropped.extraLR) + " ignored");
    if (dropped.extraC)
        report("Loading track " + name + " : more than 999 centre points, " + std::to_string(dropped.extraC) + " ignored");
    if (dropped.extraO)
        report("Loading track " + name + " : more than 256 objects, " + std::to_string(dropped.extraO) + " ignored");
    if (dropped.badtypes)
        report("Loading track " + name + " : " + std::to_string(dropped.badtypes) +
               " objects of unknown type (0 to 11) ignored");
    if (dropped.noads)
        report("Loading track " + name + " : " + std::to_string(dropped.noads) +
               " advertising boards without advertisements ignored");
}

// ---- geometry and the display lists ----

void sTrack::buildGeometry() {
    const unsigned int n = nLRpoints;
    // Close both barrier lines with a copy of the first pair.
    Lpoint[n] = Lpoint[0];
    Rpoint[n] = Rpoint[0];

    // Neighbours that share an x or a z would give the collision test a
    // vertical or horizontal segment; a hundredth of a unit keeps them apart.
    if (n > 0) {
        for (unsigned int i = 0; i <= n; i++) {
            unsigned int j = previous(i, n);
            if (Lpoint[i].x == Lpoint[j].x) Lpoint[i].x += 0.01f;
            if (Lpoint[i].z == Lpoint[j].z) Lpoint[i].z += 0.01f;
            if (Rpoint[i].x == Rpoint[j].x) Rpoint[i].x -= 0.01f;
            if (Rpoint[i].z == Rpoint[j].z) Rpoint[i].z -= 0.01f;
        }
    }

    // Normals from the mean direction of the incoming and outgoing segments.
    // The arctangent loses the sense of direction, so each normal is turned to
    // agree with its predecessor, starting from the start straight at point 0.
    LNpoint[0] = {1.0f, 0.0f};
    RNpoint[0] = {-1.0f, 0.0f};
    for (unsigned int i = 1; i < n; i++) {
        unsigned int p = (i - 1) % n, q = (i + 1) % n;
        for (int side = 0; side < 2; side++) {
            const sTrackPoint* P = side == 0 ? Lpoint : Rpoint;
            sTrackPoint* N = side == 0 ? LNpoint : RNpoint;
            float spandz = P[q].z - P[p].z;
            float dx1 = P[i].x - P[p].x, dz1 = P[i].z - P[p].z;
            float dx2 = P[q].x - P[i].x, dz2 = P[q].z - P[i].z;
            if (dx1 == 0) dx1 = 0.1f;
            if (dx2 == 0) dx2 = 0.1f;
            float angle = (std::atan(dz1 / dx1) + std::atan(dz2 / dx2)) / 2;
            if (dx1 > 0 && dx2 > 0) angle += (float)(PI / 2);
            if (dx1 < 0 && dx2 < 0) angle -= (float)(PI / 2);
            float t = std::tan(angle);
            float root = std::sqrt(t * t + 1);
            if (root == 0) root = 0.1f;
            float c = 1 / root;
            bool negate = side == 0 ? spandz > 0 : !(spandz > 0);
            if (negate)
                N[i] = {-c, -c * t};
            else
                N[i] = {c, c * t};
            if (std::fabs(N[i].x - N[i - 1].x) > 1 || std::fabs(N[i].z - N[i - 1].z) > 1) {
                N[i].x *= -1.0f;
                N[i].z *= -1.0f;
            }
        }
    }
    // The drawing reads one normal past the last pair, where the line closes.
    LNpoint[n] = LNpoint[0];
    RNpoint[n] = RNpoint[0];

    // Distance along each barrier, for the textures that run along it.
    LTcoord[0] = RTcoord[0] = 0;
    if (n > 0) {
        float lsum = 0, rsum = 0;
        for (unsigned int i = 0; i <= n; i++) {
            unsigned int j = previous(i, n);
            float dx = Lpoint[i].x - Lpoint[j].x, dz = Lpoint[i].z - Lpoint[j].z;
            lsum += std::sqrt(dx * dx + dz * dz);
            LTcoord[i] = lsum;
            dx = Rpoint[i].x - Rpoint[j].x;
            dz = Rpoint[i].z - Rpoint[j].z;
            rsum += std::sqrt(dx * dx + dz * dz);
            RTcoord[i] = rsum;
        }
    }
}

namespace {

// A band outside one barrier line from d0 to d1 outwards, its alpha going
// from a0 to a1: across it the picture repeats with the distance from the
// barrier, along it with the distance driven.
void band(const sTrackPoint* P, const sTrackPoint* N, const float* T, unsigned int n, float d0, float d1, float a0,
          float a1, float shade) {
    glBegin(GL_QUAD_STRIP);
    for (unsigned int i = 0; i <= n; i++) {
        float along = T[i] / GROUND_REPEAT;
        glColor4f(shade, shade, shade, a0);
        glTexCoord2f(along, d0 / GROUND_REPEAT);
        vertex(outwards(P[i], N[i], d0), 0);
        glColor4f(shade, shade, shade, a1);
        glTexCoord2f(along, d1 / GROUND_REPEAT);
        vertex(outwards(P[i], N[i], d1), 0);
    }
    glEnd();
}

}  // namespace

// Six lists: LIST_ground draws the whole ground by calling LIST_ground + 1,
// the plain dirt under everything, and LIST_ground + 2, all that lies on it.
// LIST_ground + 3 is the dirt again, marking where it drew (and drawing only
// where nothing has marked yet), so that a race frame can draw the sky
// between the two halves only where the dirt did not. LIST_ground + 5 is the
// road alone, marking where it drew, for a race frame to draw before the dirt
// so that the dirt under it is never shaded; LIST_ground + 4 is then the rest
// of what lies on the dirt.
void sTrack::buildGround() {
    if (LIST_ground && glIsList(LIST_ground)) glDeleteLists(LIST_ground, 6);
    LIST_ground = glGenLists(6);
    glNewList(LIST_ground + 1, GL_COMPILE);
    buildGroundBase(false);
    glEndList();
    glNewList(LIST_ground + 2, GL_COMPILE);
    buildGroundCover(true);
    glEndList();
    glNewList(LIST_ground + 3, GL_COMPILE);
    buildGroundBase(true);
    glEndList();
    glNewList(LIST_ground + 4, GL_COMPILE);
    buildGroundCover(false);
    glEndList();
    glNewList(LIST_ground + 5, GL_COMPILE);
    glDisable(GL_DEPTH_TEST);
    glEnable(GL_TEXTURE_2D);
    glNormal3f(0, 1, 0);
    glEnable(GL_STENCIL_TEST);
    glDisable(GL_CULL_FACE);
    if (nLRpoints > 0) buildRoad(nLRpoints, true);
    glEndList();
    glNewList(LIST_ground, GL_COMPILE);
    glCallList(LIST_ground + 1);
    glCallList(LIST_ground + 2);
    glEndList();
}

// The dirt under the whole track, opaque. With mark, every pixel it draws
// gets stencil bit 2 (bit 1 is the shadows'), and it draws only where bit 2
// is still clear: where the road, drawn first, has not covered the window.
void sTrack::buildGroundBase(bool mark) {
    glDisable(GL_DEPTH_TEST);
    glEnable(GL_TEXTURE_2D);
    glNormal3f(0, 1, 0);
    glEnable(GL_STENCIL_TEST);
    if (mark) {
        glStencilMask(2);
        glStencilOp(GL_KEEP, GL_KEEP, GL_INVERT);
    } else {
        glStencilOp(GL_KEEP, GL_KEEP, GL_KEEP);
    }
    // The ground is seen from above whichever way round a track was drawn.
    glDisable(GL_CULL_FACE);

    glBindTexture(GL_TEXTURE_2D, dirtTexture[whichDirt]);
    // Marking, bits 1 and 2 are compared (bit 2 must be clear) and a pixel
    // drawn has its bit 2 turned on.
    for (int pass = 0; pass < 2; pass++) {
        if (pass == 0) {
            if (mark)
                glStencilFunc(GL_EQUAL, 1, 3);
            else
                glStencilFunc(GL_EQUAL, 1, 1);
            glColor3f(0.5f, 0.5f, 0.5f);
            glEnable(GL_SCISSOR_TEST);
        } else {
            glDisable(GL_SCISSOR_TEST);
            if (mark)
                glStencilFunc(GL_EQUAL, 0, 3);
            else
                glStencilFunc(GL_NOTEQUAL, 1, 1);
            glColor3f(1, 1, 1);
        }
        for (int z = -256; z <= 256; z += 32) {
            glBegin(GL_QUAD_STRIP);
            for (int x = -272; x <= 272; x += 32) {
                glTexCoord2f(x * trackscale / 2.5f, (z - 16) * trackscale / 2.5f);
                glVertex3f(x * trackscale, 0, (z - 16) * trackscale);
                glTexCoord2f(x * trackscale / 2.5f, (z + 16) * trackscale / 2.5f);
                glVertex3f(x * trackscale, 0, (z + 16) * trackscale);
            }
            glEnd();
        }
    }
    if (mark) {
        glStencilMask(~0u);
        glStencilOp(GL_KEEP, GL_KEEP, GL_KEEP);
    }
}

// Road, roadside, fence posts and finish line. The state the dirt set up is
// set again first: the sky may have been drawn in between.
void sTrack::buildGroundCover(bool road) {
    glDisable(GL_DEPTH_TEST);
    glEnable(GL_TEXTURE_2D);
    glNormal3f(0, 1, 0);
    glEnable(GL_STENCIL_TEST);
    glStencilOp(GL_KEEP, GL_KEEP, GL_KEEP);
    glDisable(GL_CULL_FACE);

    const unsigned int n = nLRpoints;
    if (n > 0) {
        if (road) buildRoad(n, false);
        buildRoadside(n);
    } else {
        // As the roadside leaves the state when there is one.
        glEnable(GL_DEPTH_TEST);
        glEnable(GL_BLEND);
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    }
    buildFencePoles(n);
    glBindTexture(GL_TEXTURE_2D, finishTexture);
    if (n > 0) buildFinishLine();

    glDisable(GL_STENCIL_TEST);
    glDisable(GL_BLEND);
    glDisable(GL_TEXTURE_2D);
    glEnable(GL_CULL_FACE);
    glColor4f(1, 1, 1, 1);
}

// The road between the barrier lines: across the road the picture spans
// once, along it it repeats with the distance driven. With mark, every pixel
// it draws gets stencil bit 2, as the dirt's marking pass would give it.
void sTrack::buildRoad(unsigned int n, bool mark) {
    glBindTexture(GL_TEXTURE_2D, roadTexture[whichRoad]);
    if (mark) {
        glStencilMask(2);
        glStencilOp(GL_KEEP, GL_KEEP, GL_REPLACE);
    }
    shadowedPasses(1.0f, [&](float shade, float) {
        glColor3f(shade, shade, shade);
        glBegin(GL_QUAD_STRIP);
        for (unsigned int i = 0; i <= n; i++) {
            float along = (LTcoord[i] + RTcoord[i]) / 2 / GROUND_REPEAT;
            glTexCoord2f(0, along);
            vertex(Lpoint[i], 0);
            glTexCoord2f(1, along);
            vertex(Rpoint[i], 0);
        }
        glEnd();
    }, mark ? 3 : 1);
    if (mark) {
        glStencilMask(~0u);
        glStencilOp(GL_KEEP, GL_KEEP, GL_KEEP);
    }
}

// Dirt along both barriers, then the grass fading in and out beyond it.
void sTrack::buildRoadside(unsigned int n) {
    glEnable(GL_DEPTH_TEST);
    glBindTexture(GL_TEXTURE_2D, dirtTexture[whichDirt]);
    shadowedPasses(1.0f, [&](float shade, float) {
        band(Lpoint, LNpoint, LTcoord, n, 0, DIRT_BAND, 1, 1, shade);
        band(Rpoint, RNpoint, RTcoord, n, 0, DIRT_BAND, 1, 1, shade);
    });

    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glBindTexture(GL_TEXTURE_2D, grassTexture);
    shadowedPasses(1.0f, [&](float shade, float) {
        for (int side = 0; side < 2; side++) {
            const sTrackPoint* P = side == 0 ? Lpoint : Rpoint;
            const sTrackPoint* N = side == 0 ? LNpoint : RNpoint;
            const float* T = side == 0 ? LTcoord : RTcoord;
            band(P, N, T, n, GRASS_IN, GRASS_FULL, 0, 1, shade);
            band(P, N, T, n, GRASS_FULL, GRASS_LAST, 1, 1, shade);
            band(P, N, T, n, GRASS_LAST, GRASS_OUT, 1, 0, shade);
        }
    });
}

// Fence posts stand up out of the ground; the ground's shadow marks are not theirs.
void sTrack::buildFencePoles(unsigned int n) {
    glColor4f(1, 1, 1, 0.5f);
    glBindTexture(GL_TEXTURE_2D, poleTexture);
    glDisable(GL_STENCIL_TEST);
    glBegin(GL_QUADS);
    for (unsigned int i = 0; i < n; i += 2) {
        for (int side = 0; side < 2; side++) {
            const sTrackPoint* P = side == 0 ? Lpoint : Rpoint;
            const sTrackPoint* N = side == 0 ? LNpoint : RNpoint;
            sTrackPoint foot = outwards(P[i], N[i], FENCE_OFFSET);
            // Two crossed panels, one along the fence and one across it.
            sTrackPoint across = {N[i].x * POLE_HALFWIDTH, N[i].z * POLE_HALFWIDTH};
            sTrackPoint along = {-N[i].z * POLE_HALFWIDTH, N[i].x * POLE_HALFWIDTH};
            for (const sTrackPoint& d : {across, along}) {
                glTexCoord2f(0, 0);
                glVertex3f(foot.x - d.x, 0, foot.z - d.z);
                glTexCoord2f(1, 0);
                glVertex3f(foot.x + d.x, 0, foot.z + d.z);
                glTexCoord2f(1, 1);
                glVertex3f(foot.x + d.x, POLE_HEIGHT, foot.z + d.z);
                glTexCoord2f(0, 1);
                glVertex3f(foot.x - d.x, POLE_HEIGHT, foot.z - d.z);
            }
        }
    }
    glEnd();
    glEnable(GL_STENCIL_TEST);
}

// The chequered line across the road under the gantry.
void sTrack::buildFinishLine() {
    sTrackPoint a, b, dir;
    finishLine(a, b, dir);
    float dx = b.x - a.x, dz = b.z - a.z;
    float tiles = std::round(std::sqrt(dx * dx + dz * dz) / FINISH_TILE);
    if (tiles < 1) tiles = 1;
    sTrackPoint back = {dir.x * FINISH_HALFDEPTH, dir.z * FINISH_HALFDEPTH};
    shadowedPasses(0.9f, [&](float shade, float alpha) {
        glColor4f(shade, shade, shade, alpha);
        glBegin(GL_QUADS);
        glTexCoord2f(0, 0);
        glVertex3f(a.x - back.x, 0, a.z - back.z);
        glTexCoord2f(tiles, 0);
        glVertex3f(b.x - back.x, 0, b.z - back.z);
        glTexCoord2f(tiles, 1);
        glVertex3f(b.x + back.x, 0, b.z + back.z);
        glTexCoord2f(0, 1);
        glVertex3f(a.x + back.x, 0, a.z + back.z);
        glEnd();
    });
}

// Where the road crosses the gantry's line z = 2.5, nearest the gantry: the
// left and right barrier points there and the unit direction of the road.
// A track that never passes the gantry gets its line at pair 0.
void sTrack::finishLine(sTrackPoint& a, sTrackPoint& b, sTrackPoint& dir) const {
    const unsigned int n = nLRpoints;
    const float gx = trackscale * TRACK_GANTRY_X, gz = TRACK_GANTRY_Z;
    unsigned int best = 0;
    float bestt = 0, bestd = -1;
    for (unsigned int i = 0; i < n; i++) {
        float z0 = (Lpoint[i].z + Rpoint[i].z) / 2, z1 = (Lpoint[i + 1].z + Rpoint[i + 1].z) / 2;
        if (z0 == z1 || (gz - z0) * (gz - z1) > 0) continue;
        float t = (gz - z0) / (z1 - z0);
        float x0 = (Lpoint[i].x + Rpoint[i].x) / 2, x1 = (Lpoint[i + 1].x + Rpoint[i + 1].x) / 2;
        float d = std::fabs(x0 + (x1 - x0) * t - gx);
        if (bestd < 0 || d < bestd) {
            bestd = d;
            best = i;
            bestt = t;
        }
    }
    unsigned int i = best, j = best + 1;
    a = {Lpoint[i].x + (Lpoint[j].x - Lpoint[i].x) * bestt, Lpoint[i].z + (Lpoint[j].z - Lpoint[i].z) * bestt};
    b = {Rpoint[i].x + (Rpoint[j].x - Rpoint[i].x) * bestt, Rpoint[i].z + (Rpoint[j].z - Rpoint[i].z) * bestt};
    float dx = (Lpoint[j].x + Rpoint[j].x - Lpoint[i].x - Rpoint[i].x) / 2;
    float dz = (Lpoint[j].z + Rpoint[j].z - Lpoint[i].z - Rpoint[i].z) / 2;
    float length = std::sqrt(dx * dx + dz * dz);
    if (length > 0)
        dir = {dx / length, dz / length};
    else
        dir = {0, -1};
}

void sTrack::buildFences() {
    if (LIST_fences && glIsList(LIST_fences)) glDeleteLists(LIST_fences, 1);
    LIST_fences = glGenLists(1);
    glNewList(LIST_fences, GL_COMPILE);
    const unsigned int n = nLRpoints;
    glEnable(GL_TEXTURE_2D);
    glEnable(GL_ALPHA_TEST);
    glDisable(GL_CULL_FACE);  // a fence is seen from both sides
    glColor3f(1, 1, 1);
    glNormal3f(0, 1, 0);
    glBindTexture(GL_TEXTURE_2D, fenceTexture);
    if (n > 0) {
        for (int side = 0; side < 2; side++) {
            const sTrackPoint* P = side == 0 ? Lpoint : Rpoint;
            const sTrackPoint* N = side == 0 ? LNpoint : RNpoint;
            const float* T = side == 0 ? LTcoord : RTcoord;
            glBegin(GL_QUAD_STRIP);
            for (unsigned int i = 0; i <= n; i++) {
                sTrackPoint foot = outwards(P[i], N[i], FENCE_OFFSET);
                glTexCoord2f(T[i] / FENCE_REPEAT, 0);
                vertex(foot, 0);
                glTexCoord2f(T[i] / FENCE_REPEAT, 1);
                vertex(foot, FENCE_HEIGHT);
            }
            glEnd();
        }
    }
    glDisable(GL_TEXTURE_2D);
    glEnable(GL_CULL_FACE);
    glDisable(GL_ALPHA_TEST);
    glEndList();
}

// ---- barrier collision ----

namespace {

// Even-odd rule over the closed line through the points.
bool insideline(const sTrackPoint* p, unsigned int n, double x, double z) {
    bool in = false;
    for (unsigned int i = 0, j = n - 1; i < n; j = i++)
        if ((p[i].z > z) != (p[j].z > z) && x < (double(p[j].x) - p[i].x) * (z - p[i].z) / (double(p[j].z) - p[i].z) + p[i].x)
            in = !in;
    return in;
}

// One segment of the kart's, from (x1, z1) to (x2, z2), as a line z = a x + b
// and its span of x.
struct sCheckSegment {
    float x1, z1, a, b, xmin, xmax;
    sCheckSegment(float x1, float z1, float x2, float z2) : x1(x1), z1(z1) {
        float dx = x2 - x1;
        if (dx == 0) dx = 0.000001f;
        a = (z2 - z1) / dx;
        b = z1 - a * x1;
        xmin = x1 < x2 ? x1 : x2;
        xmax = x1 < x2 ? x2 : x1;
    }
};

// Whether the barrier segment P-Q crosses it, within both spans of x.
inline bool crosses(const sCheckSegment& k, const sTrackPoint& P, const sTrackPoint& Q) {
    // The crossing must lie within both segments' spans of x: when the spans
    // do not meet, no crossing can, and the divisions are saved. Most of a
    // track's barrier lies far from any kart.
    if ((P.x < Q.x ? Q.x : P.x) < k.xmin || (P.x < Q.x ? P.x : Q.x) > k.xmax) return false;
    float ddx = Q.x - P.x;
    if (ddx == 0) ddx = 0.000001f;
    float a2 = (Q.z - P.z) / ddx;
    float b2 = P.z - a2 * P.x;
    if (a2 == k.a) return false;  // parallel
    float x12 = (b2 - k.b) / (k.a - a2);
    float pmin = P.x < Q.x ? P.x : Q.x, pmax = P.x < Q.x ? Q.x : P.x;
    return pmin <= x12 && x12 <= pmax && k.xmin <= x12 && x12 <= k.xmax;
}

}  // namespace

bool sTrack::ontrack(float x, float z) const {
    const unsigned int n = pairs();
    if (n < 3) return true;
    // One barrier runs round the other: a point between them is inside
    // exactly one of the two lines.
    return insideline(Lpoint, n, x, z) != insideline(Rpoint, n, x, z);
}

bool sTrack::check(float x1, float z1, float x2, float z2) {
    const sCheckSegment k(x1, z1, x2, z2);
    const unsigned int n = pairs();
    for (unsigned int i = 0; i < n; i++) {
        unsigned int j = (i + 1) % n;
        if (crosses(k, Lpoint[i], Lpoint[j])) {
            lasthitL = true;
            lasthit = i;
            return true;
        }
        if (crosses(k, Rpoint[i], Rpoint[j])) {
            lasthitL = false;
            lasthit = i;
            return true;
        }
    }
    return false;
}

bool sTrack::checkOutline(const float* x, const float* z, unsigned int corners, bool* hit) {
    const unsigned int n = pairs();
    // The outline's span of x (a coordinate that is not a number takes no
    // part: an edge ending in one never crosses anything).
    float lo = INFINITY, hi = -INFINITY;
    for (unsigned int c = 0; c < corners; c++) {
        if (x[c] < lo) lo = x[c];
        if (x[c] > hi) hi = x[c];
    }
    // The barrier segments within that span, in the order check tries them:
    // no other can cross any edge.
    unsigned short near[2 * TRACK_MAXPOINTS];
    unsigned int nnear = 0;
    for (unsigned int i = 0; i < n; i++) {
        unsigned int j = (i + 1) % n;
        for (unsigned int side = 0; side < 2; side++) {
            const sTrackPoint &P = side == 0 ? Lpoint[i] : Rpoint[i], &Q = side == 0 ? Lpoint[j] : Rpoint[j];
            if ((P.x < Q.x ? Q.x : P.x) < lo || (P.x < Q.x ? P.x : Q.x) > hi) continue;
            near[nnear++] = (unsigned short)(2 * i + side);
        }
    }
    bool any = false;
    for (unsigned int c = 0; c < corners; c++) {
        unsigned int d = (c + 1) % corners;
        const sCheckSegment k(x[c], z[c], x[d], z[d]);
        hit[c] = false;
        for (unsigned int m = 0; m < nnear; m++) {
            unsigned int i = near[m] / 2u, j = (i + 1) % n;
            bool left = near[m] % 2u == 0;
            if (left ? crosses(k, Lpoint[i], Lpoint[j]) : crosses(k, Rpoint[i], Rpoint[j])) {
                lasthitL = left;
                lasthit = i;
                hit[c] = true;
                break;
            }
        }
        any = any || hit[c];
    }
    return any;
}

// ---- visibility, drawing and release ----

void sTrack::isinview() {
    const unsigned int nobjects = objects();
    const unsigned int ncentre = centrePoints();
    const unsigned int n = pairs();
    for (unsigned int i = 0; i < nobjects; i++) inviewMiscObject[i] = visible(miscobject[i].x, 0.5f, miscobject[i].z);
    for (unsigned int i = 0; i < ncentre; i++) inviewCpoint[i] = visible(Cpoint[i].x, 0.6f, Cpoint[i].z);
    // A barrier segment shows when either of its ends does.
    for (unsigned int i = 0; i < n; i++) {
        unsigned int j = (i + 1) % n;
        inviewLpoint[i] = visible(Lpoint[i].x, barrier_height, Lpoint[i].z) ||
                          visible(Lpoint[j].x, barrier_height, Lpoint[j].z);
        inviewRpoint[i] = visible(Rpoint[i].x, barrier_height, Rpoint[i].z) ||
                          visible(Rpoint[j].x, barrier_height, Rpoint[j].z);
    }
}

// The gantry over the finish line, and a TV camera on its stand at every
// centre point in view; the stands are turned by a fixed scatter, the heads
// aim wherever the shadow pass last aimed them.
void sTrack::drawGantryAndCameras(unsigned int ncentre) {
    glColor3f(1, 1, 1);
    glPushMatrix();
    glTranslatef(trackscale * TRACK_GANTRY_X, 0, TRACK_GANTRY_Z);
    finish3DS.drawlist();
    glPopMatrix();

    for (unsigned int i = 0; i < ncentre; i++) {
        if (!inviewCpoint[i]) continue;
        glPushMatrix();
        glTranslatef(Cpoint[i].x, 0, Cpoint[i].z);
        glPushMatrix();
        glRotatef((float)(i * 76), 0, 1, 0);
        camerastand3DS.drawlist();
        glPopMatrix();
        glTranslatef(0, 1.2f, 0);
        glRotatef(camera_ay[i], 0, 1, 0);
        glRotatef(camera_ax[i], 1, 0, 0);
        camera3DS.drawlist();
        glPopMatrix();
    }
}

void sTrack::drawObjects() {
    drawGantryAndCameras(centrePoints());
    glEnable(GL_TEXTURE_2D);
    drawBarriers();
    drawRoadsideObjects(objects());
    glCallList(LIST_fences);
}

namespace {

// One corner of a barrier face: where it stands, its texture place and its normal.
struct sFaceCorner {
    sTrackPoint p;
    float y, s, t;
    float nx, ny, nz;
};

// The three faces of the barrier segment from A to B: 0 towards the road,
// 1 away from it (a barrier width further out), 2 the top. Both barriers are
// laid out as the left one; the right barrier faces the road from the other
// side, so it hands the same corners to GL the other way round.
void barrierFace(int face, bool right, const sTrackPoint& A, const sTrackPoint& B, const sTrackPoint& NA,
                 const sTrackPoint& NB, float si, float sj, float w, float h) {
    const sTrackPoint A2 = outwards(A, NA, w), B2 = outwards(B, NB, w);
    sFaceCorner c[4];
    if (face == 0) {
        c[0] = {A, h, si, 1, NA.x, 0, NA.z};
        c[1] = {A, 0, si, 0, NA.x, 0, NA.z};
        c[2] = {B, 0, sj, 0, NB.x, 0, NB.z};
        c[3] = {B, h, sj, 1, NB.x, 0, NB.z};
    } else if (face == 1) {
        c[0] = {A2, 0, si, 0, -NA.x, 0, -NA.z};
        c[1] = {A2, h, si, 1, -NA.x, 0, -NA.z};
        c[2] = {B2, h, sj, 1, -NB.x, 0, -NB.z};
        c[3] = {B2, 0, sj, 0, -NB.x, 0, -NB.z};
    } else {
        c[0] = {A2, h, si, 0, 0, 1, 0};
        c[1] = {A, h, si, 1, 0, 1, 0};
        c[2] = {B, h, sj, 1, 0, 1, 0};
        c[3] = {B2, h, sj, 0, 0, 1, 0};
    }
    // The top keeps its first corner on the inner edge either way.
    static const int leftOrder[4] = {0, 1, 2, 3}, rightSides[4] = {3, 2, 1, 0}, rightTop[4] = {1, 0, 3, 2};
    const int* order = !right ? leftOrder : face < 2 ? rightSides : rightTop;
    for (int k = 0; k < 4; k++) {
        const sFaceCorner& v = c[order[k]];
        glNormal3f(v.nx, v.ny, v.nz);
        glTexCoord2f(v.s, v.t);
        glVertex3f(v.p.x, v.y, v.p.z);
    }
}

}  // namespace

// Barriers, one texture at a time, each segment whose ends are in view.
void sTrack::drawBarriers() {
    const unsigned int n = pairs();
    const float h = barrier_height, w = barrier_width;
    for (int face = 0; face < 3; face++) {
        glBindTexture(GL_TEXTURE_2D, face == 0 ? frontTexture : face == 1 ? backTexture : topTexture);
        glBegin(GL_QUADS);
        for (unsigned int i = 0; i < n; i++) {
            unsigned int j = (i + 1) % n;
            if (inviewLpoint[i])
                barrierFace(face, false, Lpoint[i], Lpoint[j], LNpoint[i], LNpoint[j], LTcoord[i], LTcoord[i + 1], w, h);
            if (inviewRpoint[i])
                barrierFace(face, true, Rpoint[i], Rpoint[j], RNpoint[i], RNpoint[j], RTcoord[i], RTcoord[i + 1], w, h);
        }
        glEnd();
    }
}

// The roadside objects in view; plants and advertisement boards have their pictures.
void sTrack::drawRoadsideObjects(unsigned int nobjects) {
    for (unsigned int i = 0; i < nobjects; i++) {
        if (!inviewMiscObject[i]) continue;
        unsigned int type = typeMiscobject[i];
        if (type >= TRACK_NOBJECTTYPES || !miscobjectPTR[type]) continue;
        if (type == TRACK_PLANT) {
            // Plants are pictures on a single panel, always turned to face the eye.
            glEnable(GL_ALPHA_TEST);
            glDisable(GL_LIGHTING);
            glEnable(GL_TEXTURE_2D);
            glBindTexture(GL_TEXTURE_2D, natureTexture[i % N_TREES]);
            glPushMatrix();
            glTranslatef(miscobject[i].x, 0, miscobject[i].z);
            glRotatef(camera.ay, 0, 1, 0);
            miscobjectPTR[TRACK_PLANT]->drawlist();
            glPopMatrix();
            glEnable(GL_LIGHTING);
            glDisable(GL_ALPHA_TEST);
            continue;
        }
        if (type == TRACK_ADBOARD && nAds == 0) continue;  // no advertisement to put on the board
        glPushMatrix();
        glTranslatef(miscobject[i].x, 0, miscobject[i].z);
        glRotatef((float)(i * 35), 0, 1, 0);
        miscobjectPTR[type]->drawlist();
        if (type == TRACK_ADBOARD) {
            const unsigned int nads = ads();
            glEnable(GL_TEXTURE_2D);
            glBindTexture(GL_TEXTURE_2D, adTexture[i % nads]);
            adboard3DS.drawlist();
            glDisable(GL_TEXTURE_2D);
        }
        glPopMatrix();
    }
}

void sTrack::free() {
    highscore.save();
    ghost.save();
    if (LIST_ground && glIsList(LIST_ground)) glDeleteLists(LIST_ground, 6);
    if (LIST_fences && glIsList(LIST_fences)) glDeleteLists(LIST_fences, 1);
    LIST_ground = LIST_fences = 0;

    unsigned int* textures[] = {&dirtTexture[0], &dirtTexture[1], &dirtTexture[2], &dirtTexture[3],
                                &roadTexture[0], &fenceTexture,   &grassTexture,   &frontTexture,
                                &backTexture,    &topTexture,     &CshadowmapTexture, &natureTexture[0],
                                &natureTexture[1], &natureTexture[2], &natureTexture[3], &natureTexture[4],
                                &poleTexture,    &finishTexture};
    for (unsigned int* t : textures) {
        if (*t) freeTexture(t);
        *t = 0;
    }
    const unsigned int nads = ads();
    for (unsigned int i = 0; i < nads; i++) {
        if (adTexture[i]) freeTexture(&adTexture[i]);
        adTexture[i] = 0;
    }
    nAds = 0;

    s3DS* models[] = {&finish3DS,  &camera3DS,     &camerastand3DS, &adboard3DS, &barrel3DS, &barrelt3DS,
                      &container3DS, &barrel23DS,  &barrel2t3DS,    &nature3DS,  &container23DS, &ad3DS,
                      &sign13DS,   &sign23DS,      &sign33DS,       &sign43DS};
    for (s3DS* m : models) m->free();
}

// ---- shadows ----

void sTrack::castshadow() {
    if (!config.trackshadows) return;
    const float lx = LightPosition[0], ly = LightPosition[1], lz = LightPosition[2];
    const unsigned int nobjects = objects();
    const unsigned int ncentre = centrePoints();
    const unsigned int n = pairs();

    if (config.shadows) {
        finish3DS.castshadow(0, lx, ly, lz, trackscale * TRACK_GANTRY_X, 0, TRACK_GANTRY_Z, 0, 0, 0, 3, 3, 3);

        // Plants shade the ground with their pictures instead (drawshadowmap).
        for (unsigned int i = 0; i < nobjects; i++) {
            if (!inviewMiscObject[i]) continue;
            unsigned int type = typeMiscobject[i];
            if (type == TRACK_PLANT || type >= TRACK_NOBJECTTYPES || !miscobjectPTR[type]) continue;
            const float x = miscobject[i].x, z = miscobject[i].z, a = (float)(i * 35);
            miscobjectPTR[type]->castshadow(0, lx, ly, lz, x, 0, z, 0, a, 0, 3, 1, 3);
            if (type == TRACK_ADBOARD) adboard3DS.castshadow(0, lx, ly, lz, x, 0, z, 0, a, 0, 3, 1, 3);
        }

        // The faces towards and away from the road cast; the top adds nothing
        // that the two faces do not already cover.
        const float h = barrier_height, w = barrier_width;
        auto barrier = [&](const sTrackPoint* P, const sTrackPoint* N, unsigned int i) {
            unsigned int j = (i + 1) % n;
            const sTrackPoint &A = P[i], &B = P[j];
            sTrackPoint A2 = outwards(A, N[i], w), B2 = outwards(B, N[j], w);
            castShadow(B.x, h, B.z, B.x, 0, B.z, A.x, 0, A.z, 0, lx, ly, lz);
            castShadow(B.x, h, B.z, A.x, 0, A.z, A.x, h, A.z, 0, lx, ly, lz);
            castShadow(B2.x, 0, B2.z, B2.x, h, B2.z, A2.x, h, A2.z, 0, lx, ly, lz);
            castShadow(B2.x, 0, B2.z, A2.x, h, A2.z, A2.x, 0, A2.z, 0, lx, ly, lz);
        };
        for (unsigned int i = 0; i < n; i++)
            if (inviewLpoint[i]) barrier(Lpoint, LNpoint, i);
        for (unsigned int i = 0; i < n; i++)
            if (inviewRpoint[i]) barrier(Rpoint, RNpoint, i);
    }

    const sGokart& K = gokart[followedKart()];
    for (unsigned int i = 0; i < ncentre; i++) {
        if (!inviewCpoint[i]) continue;
        const float cx = Cpoint[i].x, cz = Cpoint[i].z;
        float dx = cx - K.px, dz = cz - K.pz;
        camera_ax[i] = (float)(atan(sqrt(dx * dx + dz * dz) / 1.2) * DEG_PER_RAD) - 90;
        camera_ay[i] = (float)(atan(dx / dz) * DEG_PER_RAD);
        if (K.pz > cz) camera_ay[i] += 180;
        if (config.shadows >= 2) {
            camerastand3DS.castshadow(0, lx, ly, lz, cx, 0, cz, 0, (float)(i * 76 + 180), 0, 3, 1, 3);
            camera3DS.castshadow(0, lx, ly, lz, cx, 1.2f, cz, camera_ax[i], camera_ay[i], 0, 0, 1, 3);
        } else {
            doCshadowmap[i] = config.shadows == 1;
        }
    }
}

void sTrack::drawshadowmap() {
    if (!config.trackshadows) return;
    const float lx = LightPosition[0], ly = LightPosition[1], lz = LightPosition[2];
    const unsigned int nobjects = objects();
    const unsigned int ncentre = centrePoints();

    glDisable(GL_DEPTH_TEST);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glEnable(GL_TEXTURE_2D);
    glColor4f(0, 0, 0, 0.5f);

    // A plant's picture, turned to face the light and laid down by it, is its shadow.
    if (miscobjectPTR[TRACK_PLANT]) {
        for (unsigned int i = 0; i < nobjects; i++) {
            if (!inviewMiscObject[i] || typeMiscobject[i] != TRACK_PLANT) continue;
            const float x = miscobject[i].x, z = miscobject[i].z;
            float a = (float)(atan((lx - x) / (lz - z)) * DEG_PER_RAD);
            if (z > lz) a += 180;
            glBindTexture(GL_TEXTURE_2D, natureTexture[i % N_TREES]);
            miscobjectPTR[TRACK_PLANT]->castshadowmask(0, lx, ly, lz, x, 0, z, 0, a, 0, 3, 1, 3);
        }
    }

    // Whether a stand wants its picture is remembered from when it was last seen.
    glBindTexture(GL_TEXTURE_2D, CshadowmapTexture);
    glColor4f(1, 1, 1, 0.5f);
    for (unsigned int i = 0; i < ncentre; i++) {
        if (!doCshadowmap[i]) continue;
        glPushMatrix();
        glTranslatef(Cpoint[i].x, 0, Cpoint[i].z);
        glRotatef((float)(i * 76 + 180), 0, 1, 0);
        glBegin(GL_QUADS);
        glTexCoord2f(0, 1);
        glVertex3f(-0.5f, 0, -0.5f);
        glTexCoord2f(0, 0);
        glVertex3f(-0.5f, 0, 0.5f);
        glTexCoord2f(1, 0);
        glVertex3f(0.5f, 0, 0.5f);
        glTexCoord2f(1, 1);
        glVertex3f(0.5f, 0, -0.5f);
        glEnd();
        glPopMatrix();
    }

    glDisable(GL_BLEND);
    glDisable(GL_TEXTURE_2D);
    glEnable(GL_DEPTH_TEST);
}

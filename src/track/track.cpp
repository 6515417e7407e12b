// The track list, the textures and models all tracks share, one track's file read in, and giving it all back.

#include "track/track.h"

#include <GL/gl.h>
#include <dirent.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "assets/texture.h"
#include "frontend/highscore.h"
#include "scene/ghost.h"
#include "scene/scene.h"
#include "shell/blackbox.h"
#include "shell/bvconfig.h"

namespace {

void report(const std::string& text) {
    blackbox.task(text.c_str(), false);
    printf("%s\n", text.c_str());
}

}  // namespace

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

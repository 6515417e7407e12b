#ifndef BV_TRACK_TRACK_H
#define BV_TRACK_TRACK_H

// The circuit: the list of tracks on disk, the track-independent textures and
// roadside models, one track's points and objects read from its file, the
// geometry and display lists built from them, barrier collision, and drawing.

#include <cstdio>
#include <string>

#include "assets/3ds.h"
#include "shell/trackfacts.h"

const unsigned int N_DIRTS = 4;
const unsigned int N_ROADS = 1;
const unsigned int N_TREES = 5;

// Capacities of the record. A file asking for more is read up to the limit.
const unsigned int TRACK_MAXPOINTS = 999;
const unsigned int TRACK_MAXOBJECTS = 256;
const unsigned int TRACK_MAXNAMES = 99;
const unsigned int TRACK_MAXADS = 99;
const unsigned int TRACK_NAMELENGTH = 32;
// Roadside object types run from 0 to this - 1.
const unsigned int TRACK_NOBJECTTYPES = trackfacts::kObjectTypes;
const unsigned int TRACK_PLANT = 5;
const unsigned int TRACK_ADBOARD = 7;

// The finish gantry, in the track file's units across and the world's along
// (trackfacts.h says why).
const float TRACK_GANTRY_X = trackfacts::kGantryX;
const float TRACK_GANTRY_Z = trackfacts::kGantryZ;

struct sTrackPoint {
    float x, z;
};

// The deepest an outline goes past a barrier line, and which way (a unit
// vector) takes it back out: a corner off the circuit goes back towards the
// nearest barrier point; a barrier point inside the outline, where a corner
// of the wall reaches in across an edge, leaves through the nearest edge.
struct sIntrusion {
    double depth, ux, uz;
};

struct sTrack {
    s3DS finish3DS, camera3DS, camerastand3DS, adboard3DS, barrel3DS, barrelt3DS, container3DS, barrel23DS,
        barrel2t3DS, nature3DS, container23DS, ad3DS, sign13DS, sign23DS, sign33DS, sign43DS;
    unsigned int dirtTexture[N_DIRTS];
    unsigned int roadTexture[N_ROADS];
    unsigned int fenceTexture, grassTexture, frontTexture, backTexture, topTexture, CshadowmapTexture;
    unsigned int natureTexture[N_TREES];
    unsigned int poleTexture, finishTexture;
    unsigned int adTexture[TRACK_MAXADS];
    unsigned int nLRpoints;
    unsigned int nCpoints;
    unsigned int ntracks;
    unsigned int nAds;
    unsigned int lasthit;
    unsigned int whichDirt;
    unsigned int whichRoad;
    bool lasthitL;
    char trackname[TRACK_MAXNAMES][TRACK_NAMELENGTH];
    // The barrier arrays have one entry more than a track may have pairs: the
    // closed lines repeat pair 0 after the last pair.
    sTrackPoint Lpoint[TRACK_MAXPOINTS + 1], Rpoint[TRACK_MAXPOINTS + 1];
    sTrackPoint LNpoint[TRACK_MAXPOINTS + 1], RNpoint[TRACK_MAXPOINTS + 1];
    sTrackPoint Cpoint[TRACK_MAXPOINTS];
    float LTcoord[TRACK_MAXPOINTS + 1], RTcoord[TRACK_MAXPOINTS + 1];
    float camera_ax[TRACK_MAXPOINTS], camera_ay[TRACK_MAXPOINTS];
    float trackscale;
    float barrier_width, barrier_height;
    float fogdensity;
    bool inviewLpoint[TRACK_MAXPOINTS], inviewRpoint[TRACK_MAXPOINTS], inviewCpoint[TRACK_MAXPOINTS],
        doCshadowmap[TRACK_MAXPOINTS];
    bool inviewMiscObject[TRACK_MAXOBJECTS];
    unsigned int nMiscobjects;
    unsigned int typeMiscobject[TRACK_MAXOBJECTS];
    sTrackPoint miscobject[TRACK_MAXOBJECTS];
    s3DS* miscobjectPTR[TRACK_MAXOBJECTS];
    // LIST_ground + 1 to + 5 are the ground's parts (see buildGround).
    unsigned int LIST_ground, LIST_fences;

    // Once per run: the track list, and the textures and models all tracks share.
    void init(float trackscale);
    // Reads Data/Tracks/<trackname[config.track]>.txt and builds what is drawn of it.
    void load();
    // Load's reading half, without OpenGL: the records of an open track file
    // (filename only names it in the log), then closing, separating, normals
    // and texture coordinates.
    void parse(FILE* f, const char* filename);
    // Whether the segment crosses a barrier; lasthit and lasthitL say which one.
    bool check(float x1, float z1, float x2, float z2);
    // Whether the point lies between the two barriers. Without at least three
    // pairs there is no area between them, and every point counts as on it.
    bool ontrack(float x, float z) const;
    // check for every edge of a closed outline, corner c to corner c + 1 and
    // the last back to the first, into hit[c]; lasthit and lasthitL end as
    // that run of checks leaves them. True when any edge crosses. Quicker:
    // the barrier far from the outline is looked at once, not once per edge.
    bool checkOutline(const float* x, const float* z, unsigned int corners, bool* hit);
    // What the karts ask of the barriers (track/barriers.cpp). The barrier
    // point nearest (x, z) into (qx, qz), and its distance; `within` when
    // none is nearer than that.
    double nearestwall(double x, double z, double within, double& qx, double& qz) const;
    // Whether the way from (x1, z1) to (x2, z2) crosses the barriers an odd
    // number of times: from a point on the circuit, whether it ends off it.
    bool oddcrossings(double x1, double z1, double x2, double z2) const;
    // The deepest intrusion of a kart's outline (eight corners, its centre at
    // (cx, cz)) into the barriers.
    sIntrusion deepestintrusion(const float* x, const float* z, float cx, float cz) const;
    // Which objects, centre points and barrier segments the camera sees this frame.
    void isinview();
    // Gantry, TV cameras, barriers, roadside objects and fences.
    void drawObjects();
    // After isinview: marks the stencil where the gantry, the objects, the
    // barriers and (at the highest setting) the camera stands shade the
    // ground, and turns the TV cameras towards the followed kart.
    void castshadow();
    // After the ground: the plants' shadows and the pictures under the camera stands.
    void drawshadowmap();
    // Gives back what init and load made.
    void free();

    // The counts as far as the record's arrays hold them (a damaged record
    // may claim more): barrier pairs, centre points, roadside objects and
    // advertising pictures.
    unsigned int pairs() const { return bounded(nLRpoints, TRACK_MAXPOINTS); }
    unsigned int centrePoints() const { return bounded(nCpoints, TRACK_MAXPOINTS); }
    unsigned int objects() const { return bounded(nMiscobjects, TRACK_MAXOBJECTS); }
    unsigned int ads() const { return bounded(nAds, TRACK_MAXADS); }

private:
    // What a track file asked for that the record cannot take.
    struct sDropped {
        unsigned long extraLR = 0, extraC = 0, extraO = 0, badtypes = 0, noads = 0;
    };
    static unsigned int bounded(unsigned int n, unsigned int most) { return n < most ? n : most; }
    // init's four parts.
    void listTracks();
    void loadTextures();
    void loadAds();
    void loadModels();
    // parse's reading parts.
    void readHeader(FILE* f);
    void readRecords(FILE* f, sDropped& dropped);
    void reportDropped(const std::string& name, const sDropped& dropped);
    // Closing, separating, normals and texture coordinates; the lists are built from them.
    void buildGeometry();
    void buildGround();
    void buildGroundBase(bool mark);
    void buildGroundCover(bool road);
    void buildRoad(unsigned int n, bool mark);
    void buildRoadside(unsigned int n);
    void buildFencePoles(unsigned int n);
    void buildFinishLine();
    void drawGantryAndCameras(unsigned int ncentre);
    void drawBarriers();
    void drawRoadsideObjects(unsigned int nobjects);
    void buildFences();
    void finishLine(sTrackPoint& a, sTrackPoint& b, sTrackPoint& dir) const;
};

extern sTrack track;

#endif

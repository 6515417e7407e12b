// Stand-in for the track module: only the fields, barrier test and file reading the karts need.
#ifndef BV_TRACK_TRACK_H
#define BV_TRACK_TRACK_H

struct sTrackPoint {
    float x, z;
};

// Room for 998 pairs: the closing copy of pair 0 goes after the last one.
const unsigned int TRACK_MAXPOINTS = 999;
const unsigned int TRACK_MAXTRACKS = 99;

struct sTrack {
    unsigned int nLRpoints;
    unsigned int nCpoints;
    unsigned int ntracks;
    unsigned int lasthit;
    unsigned int whichDirt;
    unsigned int whichRoad;
    bool lasthitL;
    char trackname[TRACK_MAXTRACKS][32];
    sTrackPoint Lpoint[TRACK_MAXPOINTS], Rpoint[TRACK_MAXPOINTS];
    sTrackPoint LNpoint[TRACK_MAXPOINTS], RNpoint[TRACK_MAXPOINTS];
    sTrackPoint Cpoint[TRACK_MAXPOINTS];
    float trackscale;
    float fogdensity;

    void init(float trackscale);
    void load();
    bool check(float x1, float z1, float x2, float z2);
};

extern sTrack track;

#endif

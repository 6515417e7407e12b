#ifndef BV_SHELL_BVCONFIG_H
#define BV_SHELL_BVCONFIG_H

// Every setting of the game in one record, plus the console's registries of
// named variables and commands. Reads Data/config.bvd (never writes it) and
// reads and rewrites the remembered race setup Data/gencon.bvd.

#include "shell/kartfacts.h"

const unsigned int CONFIG_MAXVARS = 99;
const unsigned int CONFIG_MAXFNCS = 99;
const unsigned int CONFIG_MAXGOKARTS = kartfacts::kMaxRacers;
// Kept: the setting stops one short of the skid-mark ring, which could use
// every slot; pinned by ConfigTest.CheckvarsClampsKartsAndSlides.
const unsigned int CONFIG_MAXSLIDES = kartfacts::kSlideSlots - 1;
const unsigned int CONFIG_NCOLORS = kartfacts::kColours;
const unsigned int CONFIG_NLODS = 3;     // entries of the range tables
const unsigned int CONFIG_NSKILLS = 3;   // entries of the difficulty tables

struct sConfig {
    char PATH[255];                      // prefix of every Data/ path; empty: the working directory
    char file[255];                      // the settings file read by init
    char varN[CONFIG_MAXVARS][32];       // console variable names, with their fields in varP
    char fncN[CONFIG_MAXFNCS][32];       // console command names, with their functions in fncP
    unsigned int* varP[CONFIG_MAXVARS];
    unsigned int nVar;
    unsigned int nFnc;
    void (*fncP[CONFIG_MAXFNCS])();
    char player1name[32];
    char aiskillstring[CONFIG_NSKILLS][16]; // the difficulties' names: easy, medium, hard
    unsigned long loaded;                // kilobytes loaded so far (the loading bar)
    unsigned long totalsize;             // kilobytes the last start loaded: a full loading bar
    unsigned int width;
    unsigned int height;
    unsigned int depth;                  // colour bits per pixel, 16 or 32
    unsigned int zdepth;                 // depth-buffer bits
    unsigned int fullscreen;
    unsigned int gammacorrection;        // grey added over the picture, percent (the file's brightness / 4)
    unsigned int frameratecounter;       // 1 shows the frame rate, 2 also its bar
    unsigned int frameratelimit;         // asks the frame meter to cap the rate (it does nothing)
    unsigned int maxfps;                 // top of the frame-rate bar, and of the rate it shows
    unsigned int texturefilter;          // 0 nearest, 1 linear, 2 mipmapped
    unsigned int soundeffects;           // sound on at all
    unsigned int soundvolume;            // 0..255
    unsigned int music;                  // menu music on
    unsigned int musicvolume;            // 0..255
    unsigned int lod;                    // detail level 0..2, index of the range tables below
    unsigned int fog;
    unsigned int mousesteering;
    unsigned int joysticksteering;
    unsigned int joystickdeadzone;       // percent of the stick's travel around its centre read as the centre, 0..30
    unsigned int mousesensitivity;       // mouse steering: wheel degrees per 100 pixels
    unsigned int shadows;                // kart shadows: 0 off, 1 blobs, 2 simple, 3 full
    unsigned int trackshadows;           // shadows of roadside objects on the track
    unsigned int shadowprojectors;       // also draw lines from the light past each shadow (a debugging view)
    unsigned int gokartfocus;            // the kart the camera follows
    unsigned int hud;                    // head-up display on
    unsigned int aiskill;                // difficulty 0..2, index of the three tables below
    unsigned int aiguts[CONFIG_NSKILLS];       // computer drivers accelerate up to this percent of top speed
    unsigned int aistupidity[CONFIG_NSKILLS];  // percent of decisions in which the wheel stays put
    unsigned int aiawakeness[CONFIG_NSKILLS];  // least bvclock ticks (microseconds) between decisions
    unsigned int ngokarts;               // karts in the race, the player's included, 1..6
    unsigned int nhumanplayers;          // karts driven from the keyboard: 0, 1 or 2
    unsigned int player1color;           // index into the kart palette
    unsigned int nslides;                // skid marks kept per wheel
    unsigned int track;                  // index into track.trackname
    unsigned int ghost;                  // show the ghost of the best lap
    unsigned int lensflare;
    unsigned int skidmarks;
    unsigned int CHEAT_0bighead;         // console cheat: big heads, narrower driver's view
    unsigned int CHEAT_0toviksface;      // console cheat: the drivers' heads wear the face texture
    unsigned int nScreenshots;           // number of the next screenshot file to try
    float HIrange[CONFIG_NLODS];         // per detail level: nearer than this, the finest model
    float MErange[CONFIG_NLODS];         // ... the middle model
    float LOrange[CONFIG_NLODS];         // ... the coarsest; beyond it, nothing (the view distance)

    bool init(const char* path);
    void addvar(const char* name, unsigned int* field);
    void addfnc(const char* name, void (*fnc)());
    void setvar(const char* name, unsigned int value);
    unsigned int getvar(const char* name);
    void runfnc(const char* name);
    void checkvars();
    void disploaded(const char* file);
    void save();

    // The console stores whatever number it is given, and the settings file
    // does the same for the detail level; the tables these index hold only so
    // many entries. Within a table each answer is the value itself.
    unsigned int lodlevel() const;                      // entry of HIrange, MErange, LOrange: past them, the last
    static unsigned int skilllevel(unsigned int skill); // entry of the difficulty tables: past them, the last
    unsigned int colour() const;                        // player1color's palette entry: past it, the first

private:
    void defaults();
    void registerconsole();
    void applysetting(int line, int v);
    void readRaceSetup();
};

inline unsigned int sConfig::lodlevel() const {
    return lod < CONFIG_NLODS ? lod : CONFIG_NLODS - 1;
}

inline unsigned int sConfig::skilllevel(unsigned int skill) {
    return skill < CONFIG_NSKILLS ? skill : CONFIG_NSKILLS - 1;
}

inline unsigned int sConfig::colour() const {
    return player1color < CONFIG_NCOLORS ? player1color : 0;
}

extern sConfig config;

#endif

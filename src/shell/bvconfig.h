#ifndef BV_SHELL_BVCONFIG_H
#define BV_SHELL_BVCONFIG_H

// Every setting of the game in one record, plus the console's registries of
// named variables and commands. Reads Data/config.bvd (never writes it) and
// reads and rewrites the remembered race setup Data/gencon.bvd.

const unsigned int CONFIG_MAXVARS = 99;
const unsigned int CONFIG_MAXFNCS = 99;
const unsigned int CONFIG_MAXGOKARTS = 6;
const unsigned int CONFIG_MAXSLIDES = 998;
const unsigned int CONFIG_NCOLORS = 24;

struct sConfig {
    char PATH[255];
    char file[255];
    char varN[CONFIG_MAXVARS][32];
    char fncN[CONFIG_MAXFNCS][32];
    unsigned int* varP[CONFIG_MAXVARS];
    unsigned int nVar;
    unsigned int nFnc;
    void (*fncP[CONFIG_MAXFNCS])();
    char player1name[32];
    char aiskillstring[3][16];
    unsigned long loaded;
    unsigned long totalsize;
    unsigned int width;
    unsigned int height;
    unsigned int depth;
    unsigned int zdepth;
    unsigned int fullscreen;
    unsigned int gammacorrection;
    unsigned int frameratecounter;
    unsigned int frameratelimit;
    unsigned int maxfps;
    unsigned int texturefilter;
    unsigned int soundeffects;
    unsigned int soundvolume;
    unsigned int music;
    unsigned int musicvolume;
    unsigned int lod;
    unsigned int fog;
    unsigned int mousesteering;
    unsigned int joysticksteering;
    unsigned int mousesensitivity;
    unsigned int shadows;
    unsigned int trackshadows;
    unsigned int shadowprojectors;
    unsigned int gokartfocus;
    unsigned int hud;
    unsigned int aiskill;
    unsigned int aiguts[3];
    unsigned int aistupidity[3];
    unsigned int aiawakeness[3];
    unsigned int ngokarts;
    unsigned int nhumanplayers;
    unsigned int player1color;
    unsigned int nslides;
    unsigned int track;
    unsigned int ghost;
    unsigned int lensflare;
    unsigned int skidmarks;
    unsigned int CHEAT_0bighead;
    unsigned int CHEAT_0toviksface;
    unsigned int nScreenshots;
    float HIrange[3];
    float MErange[3];
    float LOrange[3];

    bool init(const char* path);
    void addvar(const char* name, unsigned int* field);
    void addfnc(const char* name, void (*fnc)());
    void setvar(const char* name, unsigned int value);
    unsigned int getvar(const char* name);
    void runfnc(const char* name);
    void checkvars();
    void disploaded(const char* file);
    void save();

private:
    void defaults();
    void readRaceSetup();
};

extern sConfig config;

#endif

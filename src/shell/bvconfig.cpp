// Reading the settings and the remembered race setup, and the console's variables and commands.

#include "shell/bvconfig.h"

#include <GL/gl.h>
#include <SDL/SDL.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "scene/scene.h"
#include "shell/blackbox.h"
#include "shell/main.h"
#include "shell/safesave.h"
#include "shell/settingslines.h"

// Copies a name into a fixed field, cutting what does not fit.
static void copyname(char* dst, size_t size, const char* src) {
    size_t n = strnlen(src, size - 1);
    memcpy(dst, src, n);
    dst[n] = 0;
}

// A percentage to 0..255. In single precision 100 * 2.55 rounds to exactly 255;
// in double it would truncate to 254 and full volume could never be reached.
// Truncated through a 64-bit integer, because a damaged file's huge percentage
// does not fit an int.
// Kept: a percentage outside 0..100 is not clamped; the 64-bit truncation
// wraps into unsigned; pinned by ConfigTest.VolumesOutsideTheirPercentagesWrapUnclamped.
static unsigned int percent(int v) {
    return (unsigned int)(long long)((float)v * 2.55f);
}

void sConfig::defaults() {
    copyname(player1name, sizeof player1name, "unnamed");
    width = 1024;
    height = 768;
    depth = 32;
    zdepth = 16;
    fullscreen = 1;
    gammacorrection = 0;
    frameratecounter = 0;
    frameratelimit = 0;
    maxfps = 200;
    texturefilter = 2;
    soundeffects = 1;
    soundvolume = 255;
    music = 1;
    musicvolume = 255;
    lod = 2;
    fog = 1;
    mousesteering = 1;
    mousesensitivity = 4;
    joystickdeadzone = bvlines::kLines[bvlines::JOYSTICKDEADZONE].fallback;
    shadows = 1;
    trackshadows = 1;
    shadowprojectors = 0;
    gokartfocus = 0;
    hud = 1;
    aiskill = 0;
    const unsigned int guts[3] = {60, 80, 100};
    for (int i = 0; i < 3; i++) {
        aiguts[i] = guts[i];
        aistupidity[i] = 15;
        aiawakeness[i] = 10;
    }
    ngokarts = 1;
    nhumanplayers = 1;
    player1color = 0;
    nslides = 128;
    track = 0;
    ghost = 0;
    lensflare = 1;
    skidmarks = 1;
    CHEAT_0bighead = 0;
    CHEAT_0toviksface = 0;
    nScreenshots = 0;
    const float hi[3] = {-1.0f, 2.5f, 10.0f};
    const float me[3] = {5.0f, 7.5f, 20.0f};
    for (int i = 0; i < 3; i++) {
        HIrange[i] = hi[i];
        MErange[i] = me[i];
    }
}

bool sConfig::init(const char* path) {
    copyname(file, sizeof file, path);
    loaded = 0;
    // Only the very first start uses this guess: every later one reads the last
    // run's total back from the race setup. As kilobytes it is some 30 GB, far
    // beyond anything a start loads, so that first loading bar stays empty.
    totalsize = 31225639;
    copyname(aiskillstring[0], sizeof aiskillstring[0], "easy");
    copyname(aiskillstring[1], sizeof aiskillstring[1], "medium");
    copyname(aiskillstring[2], sizeof aiskillstring[2], "hard");
    registerconsole();
    defaults();

    FILE* f = fopen(path, "r");
    if (!f) {
        blackbox.task("Initializing configuration", false);
        return false;
    }
    // Entries are taken by position; the labels are only for the reader's eye.
    // All reads share v, so a short file repeats the last value it held (an
    // empty file therefore reads as all zeros).
    char label[256];
    int v = 0;
    for (int line = 0; line < bvlines::kRequired; line++) {
        if (fscanf(f, "%255s%d", label, &v) != 2) { /* keep v */ }
        applysetting(line, v);
    }
    // Files written before the later lines existed end here: what they lack
    // keeps its shipped value.
    for (int line = bvlines::kRequired; line < bvlines::kCount; line++)
        if (fscanf(f, "%255s%d", label, &v) == 2) applysetting(line, v);
    fclose(f);
    blackbox.task("Initializing configuration", true);

    readRaceSetup();
    return true;
}

// The variables and commands the console knows by name.
void sConfig::registerconsole() {
    nVar = 0;
    nFnc = 0;
    addvar("gammacorrection", &gammacorrection);
    addvar("frameratecounter", &frameratecounter);
    addvar("frameratelimit", &frameratelimit);
    addvar("maxfps", &maxfps);
    addvar("soundvolume", &soundvolume);
    addvar("musicvolume", &musicvolume);
    addvar("lod", &lod);
    addvar("fog", &fog);
    addvar("mousesteering", &mousesteering);
    addvar("joysticksteering", &joysticksteering);
    addvar("mousesensitivity", &mousesensitivity);
    addvar("shadows", &shadows);
    addvar("trackshadows", &trackshadows);
    addvar("shadowprojectors", &shadowprojectors);
    addvar("gokartfocus", &gokartfocus);
    addvar("hud", &hud);
    addvar("aiskill", &aiskill);
    addvar("ngokarts", &ngokarts);
    addvar("nhumanplayers", &nhumanplayers);
    addvar("player1color", &player1color);
    addvar("nslides", &nslides);
    addvar("ghost", &ghost);
    addvar("lensflare", &lensflare);
    addvar("skidmarks", &skidmarks);
    addvar("0bighead", &CHEAT_0bighead);
    addvar("0toviksface", &CHEAT_0toviksface);
    addfnc("wireframe", wireframe);
    addfnc("solid", solid);
    addfnc("reset", resetScene);
}

// One line of the settings file, by its place in the file.
void sConfig::applysetting(int line, int v) {
    using namespace bvlines;
    switch (line) {
    case RESOLUTION: {
        int step = v >= kLines[RESOLUTION].min && v <= kLines[RESOLUTION].max ? v : kLines[RESOLUTION].fallback;
        width = kWidth[step];
        height = kHeight[step];
        break;
    }
    case COLOURDEPTH: depth = v == 0 ? 16 : 32; break;
    case VIEWDISTANCE: {
        // Anything past the steps before full is full.
        float range = v >= 0 && v < kLines[VIEWDISTANCE].max ? kViewRange[v] : kViewRange[kLines[VIEWDISTANCE].max];
        LOrange[0] = LOrange[1] = LOrange[2] = range;
        break;
    }
    case DETAIL: lod = v; break;
    case KARTSHADOWS: shadows = v; break;
    case TRACKSHADOWS: trackshadows = v; break;
    case SOUNDEFFECTS: soundeffects = v; break;
    case SOUNDVOLUME: soundvolume = percent(v); break;
    case MUSIC: music = v; break;
    case MUSICVOLUME: musicvolume = percent(v); break;
    case BRIGHTNESS: gammacorrection = v / 4; break;
    case MOUSESTEERING: mousesteering = v; break;
    case MOUSESENSITIVITY: mousesensitivity = v; break;
    case JOYSTICKSTEERING: joysticksteering = v; break;
    case LENSFLARE: lensflare = v; break;
    case SKIDMARKS: skidmarks = v; break;
    case JOYSTICKDEADZONE: {
        // Brought to the nearer end of its range, as the settings program shows it.
        const Line& l = kLines[JOYSTICKDEADZONE];
        joystickdeadzone = (unsigned int)(v < l.min ? l.min : v > l.max ? l.max : v);
        break;
    }
    }
}

void sConfig::readRaceSetup() {
    std::string path = std::string(PATH) + "Data/gencon.bvd";
    FILE* f = fopen(path.c_str(), "r");
    if (!f) return;
    char name[256];
    if (fscanf(f, "%255s", name) == 1) copyname(player1name, sizeof player1name, name);
    unsigned int* fields[4] = {&player1color, &ngokarts, &aiskill, &track};
    int v;
    for (unsigned int* field : fields)
        if (fscanf(f, "%d", &v) == 1) *field = (unsigned int)v;
    if (fscanf(f, "%d", &v) == 1) totalsize = (unsigned long)(unsigned int)v;
    fclose(f);

    // The menu indexes its palette, field size and difficulty names with these;
    // a damaged file must not send it past the ends of those tables.
    if (player1color >= CONFIG_NCOLORS || ngokarts < 1 || ngokarts > CONFIG_MAXGOKARTS || aiskill > 2) {
        blackbox.task("Reading race setup Data/gencon.bvd : values out of range, defaults used", false);
        if (player1color >= CONFIG_NCOLORS) player1color = 0;
        if (ngokarts < 1 || ngokarts > CONFIG_MAXGOKARTS) ngokarts = 1;
        if (aiskill > 2) aiskill = 0;
    }
}

void sConfig::addvar(const char* name, unsigned int* field) {
    if (nVar >= CONFIG_MAXVARS) return;
    copyname(varN[nVar], sizeof varN[nVar], name);
    varP[nVar] = field;
    nVar++;
}

void sConfig::addfnc(const char* name, void (*fnc)()) {
    if (nFnc >= CONFIG_MAXFNCS) return;
    copyname(fncN[nFnc], sizeof fncN[nFnc], name);
    fncP[nFnc] = fnc;
    nFnc++;
}

void sConfig::setvar(const char* name, unsigned int value) {
    std::string text = std::string("SET ") + name + " " + std::to_string((int)value);
    for (unsigned int i = 0; i < nVar; i++) {
        if (strcmp(varN[i], name) == 0) {
            *varP[i] = value;
            blackbox.consoletask(text.c_str(), true);
            checkvars();
            return;
        }
    }
    blackbox.consoletask(text.c_str(), false);
}

unsigned int sConfig::getvar(const char* name) {
    for (unsigned int i = 0; i < nVar; i++)
        if (strcmp(varN[i], name) == 0) return *varP[i];
    return 0;
}

void sConfig::runfnc(const char* name) {
    std::string text = std::string("CMD ") + name;
    for (unsigned int i = 0; i < nFnc; i++) {
        if (strcmp(fncN[i], name) == 0) {
            fncP[i]();
            blackbox.consoletask(text.c_str(), true);
            return;
        }
    }
    blackbox.consoletask(text.c_str(), false);
}

void sConfig::checkvars() {
    if (ngokarts > CONFIG_MAXGOKARTS) ngokarts = CONFIG_MAXGOKARTS;
    if (nslides > CONFIG_MAXSLIDES) nslides = CONFIG_MAXSLIDES;
}

void sConfig::disploaded(const char* loadedfile) {
    loaded += qbGetFileSize(loadedfile);
    if (totalsize == 0) totalsize = 1;
    // The same picture again is nothing new to see, and drawing it took a
    // third of the start-up: only a new segment of the bar is drawn and shown.
    unsigned long n = loaded * 10 / totalsize;
    if (shortcuts.splash && splashSegmentsShown >= 0 && (unsigned long)splashSegmentsShown == n) return;
    splashSegmentsShown = (long)n;
    splashScreen();
    glEnable(GL_TEXTURE_2D);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glBindTexture(GL_TEXTURE_2D, splash_1);
    glColor3f(1, 1, 1);
    for (unsigned long i = 0; i < n; i++) drawSplashSegment(i);
    glDisable(GL_BLEND);
    glDisable(GL_TEXTURE_2D);
    SDL_GL_SwapBuffers();
}

void sConfig::save() {
    std::string text = std::string(player1name) + "\n";
    for (unsigned int v : {player1color, ngokarts, aiskill, track}) text += std::to_string((int)v) + "\n";
    text += std::to_string(loaded) + "\n";
    // A folder that cannot be written stays quiet; a disk that fills up or
    // fails while writing is worth a line, though the old file is kept.
    savesafely(std::string(PATH) + "Data/gencon.bvd", text, true);
}

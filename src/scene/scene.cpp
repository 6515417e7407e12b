// The race frame, and the race scene's set-up, reset and teardown.

#include "scene/scene.h"

#include <GL/gl.h>
#include <SDL/SDL.h>

#include <string>

#include "assets/font.h"
#include "assets/texture.h"
#include "audio/fsound.h"
#include "frontend/highscore.h"
#include "frontend/menu.h"
#include "kart/gokart.h"
#include "scene/camera.h"
#include "scene/ghost.h"
#include "scene/lensflare.h"
#include "scene/pause.h"
#include "scene/shader.h"
#include "scene/splits.h"
#include "shell/bvconfig.h"
#include "shell/joystick.h"
#include "shell/keyboard.h"
#include "shell/performance.h"
#include "track/track.h"

float LightAmbient[4];
float LightDiffuse[4];
float LightPosition[4];
time_t s;
time_t e;
float t;
s3DS sky3DS;

namespace {

void setLight(float* v, float a, float b, float c, float d) {
    v[0] = a;
    v[1] = b;
    v[2] = c;
    v[3] = d;
}

}  // namespace

void initScene() {
    sky3DS.load("Data/Models/sky.3DS", "Data/Textures/");
    sky3DS.initlist(true, true);
    gokartstaticdata.init();
    std::string file = std::string("Data/Tracks/") + track.trackname[config.track] + ".txt";
    config.disploaded(file.c_str());
    track.load();
    resetScene();
}

void setRaceLight() {
    setLight(LightAmbient, 0.125f, 0.125f, 0.125f, 1);
    setLight(LightDiffuse, 1, 1, 1, 1);
    setLight(LightPosition, -500, 750, -200, 1);
    glLightfv(GL_LIGHT0, GL_AMBIENT, LightAmbient);
    glLightfv(GL_LIGHT0, GL_DIFFUSE, LightDiffuse);
    glLightfv(GL_LIGHT0, GL_POSITION, LightPosition);
    glEnable(GL_LIGHT0);
    glClearColor(0.525f, 0.525f, 0.5f, 1);
}

void placeRaceLight() {
    glLightfv(GL_LIGHT0, GL_POSITION, LightPosition);
}

void resetScene() {
    setRaceLight();
    racepause.init();
    camera.init(CAMERA_CHASE, 26.01f, 1.5f, 22.0f, 0, 0, 0, 55);
    for (unsigned char i = 0; i < GOKART_NKARTS; i++) gokart[i].init(i);
    ghost.badone();
    splits.init();
    s = bvclock();
    e = bvclock();
    t = 0;
}

void (*frameStepHook)(const char* step) = nullptr;
sShortcuts shortcuts;

namespace {

// The start clock stops at 4: it only times the countdown.
void runStartClock() {
    if (t < 4.0f) {
        e = bvclock();
        t = (float)(int)(e - s) / BV_CLOCKS_PER_SEC;
    }
}

void driveKarts(unsigned int n) {
    for (unsigned int i = 0; i < n; i++) gokart[i].colide();
    if (config.nhumanplayers >= 1) {
        gokart[0].kLEFT = keyboard.key[SDLK_LEFT];
        gokart[0].kRIGHT = keyboard.key[SDLK_RIGHT];
        // Steering is free on the grid; the pedals wait for the start.
        if (t > 2.0f) {
            // The pad's first two buttons are these arrows.
            gokart[0].kUP = keyboard.key[SDLK_UP] || joystick.firstbutton;
            gokart[0].kDOWN = keyboard.key[SDLK_DOWN] || joystick.secondbutton;
        }
        gokart[0].move();
    }
    if (config.nhumanplayers > 1) {
        // Player 2 has never waited for the start.
        gokart[1].kLEFT = keyboard.key['j'];
        gokart[1].kRIGHT = keyboard.key['l'];
        gokart[1].kUP = keyboard.key['i'];
        gokart[1].kDOWN = keyboard.key['k'];
        gokart[1].move();
    }
    if (t > 2.0f)
        for (unsigned int i = config.nhumanplayers; i < n; i++) {
            gokart[i].think();
            gokart[i].move();
        }
}

// Backspace, and u for player 2, put a wedged kart back on the road: once a
// press, so that a key held down does not keep the kart from driving off.
bool rescueHeld[2];

void rescueKarts() {
    const int keys[2] = {SDLK_BACKSPACE, SDLK_u};
    for (unsigned int p = 0; p < 2; p++) {
        const bool down = keyboard.key[keys[p]] && p < config.nhumanplayers;
        if (down && !rescueHeld[p]) gokart[p].rescue();
        rescueHeld[p] = down;
    }
}

// The kart the camera follows.
unsigned int aimCamera(const sCamera& target) {
    camera.setmode();
    unsigned int focus = followedKart();
    camera.follow(target, gokart[focus]);
    return focus;
}

// Whether this frame draws the sky around the ground's dirt (below) instead
// of first. That keeps the picture only when there is a ground to draw it
// around; when nothing drawn between the sky and the ground shows, which the
// lines from the light past each shadow do above the horizon; and when the
// dirt covers each pixel once: in wireframe a pixel where several of its
// lines meet would keep the first line's colour instead of the last's.
bool skyAroundGround() {
    if (!shortcuts.sky || !track.LIST_ground || config.shadowprojectors) return false;
    GLint mode[2];
    glGetIntegerv(GL_POLYGON_MODE, mode);
    return mode[0] == GL_FILL && mode[1] == GL_FILL;
}

// The sky is far away everywhere: no depth, and not moved with the eye.
void drawSky(bool aroundGround) {
    if (aroundGround) return;  // drawn with the ground instead
    frameStep("sky");
    glDisable(GL_DEPTH_TEST);
    if (config.fog) glEnable(GL_FOG);
    sky3DS.drawlist();
    if (config.fog) glDisable(GL_FOG);
    glEnable(GL_DEPTH_TEST);
}

// The sky where the dirt under the track left the window empty (stencil bit 2
// clear). Everything the dirt drew is opaque and drawn over the sky anyway,
// and nothing between the two looks at the colours, so the picture is the
// same as with the sky drawn first; the sky's fragments under the dirt,
// most of a race view, are never shaded.
void drawSkyAroundGround() {
    frameStep("sky");
    glDisable(GL_LIGHTING);
    glEnable(GL_CULL_FACE);
    glDisable(GL_DEPTH_TEST);
    glEnable(GL_STENCIL_TEST);
    glStencilFunc(GL_EQUAL, 0, 2);
    glStencilOp(GL_KEEP, GL_KEEP, GL_KEEP);
    sky3DS.drawlist();
    glEnable(GL_LIGHTING);
    frameStep("ground");
}

void castShadows(unsigned int n) {
    track.isinview();
    // Only the karts in this race: the others wait on the grid unseen.
    for (unsigned int i = 0; i < n; i++) gokart[i].isinview();

    frameStep("shadow volumes (stencil only)");
    beginShadowBatch();
    track.castshadow();
    if (config.shadows)
        for (unsigned int i = 0; i < n; i++) gokart[i].castshadow();
    endShadowBatch();
}

// Fog stays on from here to the last thing drawn in the world.
void drawGround(bool skyAround) {
    frameStep("ground");
    glEnable(GL_LIGHTING);
    placeRaceLight();
    if (config.fog) glEnable(GL_FOG);
    if (skyAround) {
        if (shortcuts.road) glCallList(track.LIST_ground + 5);
        glCallList(track.LIST_ground + 3);
        drawSkyAroundGround();
        glCallList(track.LIST_ground + (shortcuts.road ? 4 : 2));
    } else {
        glCallList(track.LIST_ground);
    }
    glDisable(GL_LIGHTING);
}

void drawGroundMarks(unsigned int n) {
    frameStep("ground shadows");
    track.drawshadowmap();
    // With shadows off every kart gets its blob; otherwise only those whose
    // stencil shadow was not cast.
    for (unsigned int i = 0; i < n; i++)
        if (!config.shadows || gokart[i].doshadowmap) gokart[i].drawshadowmap();

    frameStep("skid marks");
    if (config.skidmarks)
        for (unsigned int i = 0; i < n; i++) gokart[i].drawslides();
}

void drawKartsAndScenery(unsigned int n) {
    frameStep("karts");
    glEnable(GL_LIGHTING);
    for (unsigned int i = 0; i < n; i++) gokart[i].draw();

    frameStep("ghost");
    ghostframe();

    frameStep("track objects");
    track.drawObjects();

    glDisable(GL_LIGHTING);
    if (config.fog) glDisable(GL_FOG);
}

void drawWorld(unsigned int n) {
    glPushMatrix();
    camera.transform();
    const bool skyAround = skyAroundGround();
    drawSky(skyAround);
    castShadows(n);
    drawGround(skyAround);
    drawGroundMarks(n);
    drawKartsAndScenery(n);
    frameStep("sun");
    if (config.lensflare) lensflare.calc();
    lensflare.drawsun();
    glPopMatrix();
}

void drawOverlays(unsigned int focus) {
    frameStep("lens flare");
    if (config.lensflare) lensflare.draw();

    frameStep("dial and texts");
    if (config.hud && camera.mode == CAMERA_DRIVER) gokart[focus].drawhud();

    const float recordshown = highscore.thisnewrecorddelay;
    highscore.dispifnewrecord();
    if (racepause.paused) highscore.thisnewrecorddelay = recordshown;  // no clock runs in a pause

    fontTGA.out(0.005f, 0.975f, 1, 1, 1, FONT_ALIGN_LEFT, 0.02f, "lap: %d", gokart[0].lap);
    fontTGA.out(0.5f, 0.975f, 1, 1, 1, FONT_ALIGN_CENTER, 0.02f, "time: %.2f", gokart[0].currentlaptime);
    splits.draw();
    fontTGA.out(0.975f, 0.975f, 1, 1, 1, FONT_ALIGN_RIGHT, 0.02f, "record: %.2f", highscore.laprecord_time[0]);

    // The countdown counts up, and "GO!" comes a second after the karts are off.
    const char* start = t < 1 ? "1" : t < 2 ? "2" : t < 3 ? "3" : t < 4 ? "GO!" : nullptr;
    if (start) fontTGA.out(0.5f, 0.5f, 1, 0, 0, FONT_ALIGN_CENTER, 0.05f, "%s", start);
}

void handleRaceKeys() {
    if (keyboard.key[SDLK_F12]) {
        fsaveTGA();
        performance.discardnext();
    }

    if (keyboard.key[SDLK_ESCAPE]) {
        menu.m = MENU_ENTER;
        if (config.soundeffects) FSOUND_StopSound(FSOUND_ALL);
        SDL_ShowCursor(1);
        resetScene();
    }
}

}  // namespace

void raceStep() {
    runStartClock();
    rescueKarts();
    driveKarts(racingKarts());
    splits.update();
}

void drawScene() {
    const sCamera target = camera;
    const unsigned int n = racingKarts();

    FSOUND_SetSFXMasterVolume((int)config.soundvolume);
    racepause.keys();
    const bool running = !racepause.paused;
    if (running) raceStep();
    unsigned int focus = running ? aimCamera(target) : followedKart();
    drawWorld(n);
    drawOverlays(focus);
    racepause.draw();
    racepause.rest();
    handleRaceKeys();
}

void killScene() {
    track.free();
    for (unsigned int i = 0; i < GOKART_NKARTS; i++) gokart[i].free();
    gokartstaticdata.free();
    gokartstaticdata.freeKept();
    sky3DS.free();
}

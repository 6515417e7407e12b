// Start-up, the event and frame loop, shutdown, and the window helpers.

#include "shell/main.h"

#include <GL/gl.h>
#include <GL/glu.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "assets/font.h"
#include "assets/texture.h"
#include "audio/fsound.h"
#include "frontend/menu.h"
#include "scene/camera.h"
#include "scene/lensflare.h"
#include "scene/pause.h"
#include "scene/scene.h"
#include "scene/shader.h"
#include "shell/blackbox.h"
#include "shell/bvconfig.h"
#include "shell/joystick.h"
#include "shell/keyboard.h"
#include "shell/mouse.h"
#include "shell/performance.h"
#include "shell/trackfacts.h"
#include "track/track.h"

sBlackbox blackbox;
sConfig config;
sKeyboard keyboard;
sPerformance performance;
sMouse mouse;
sJoystick joystick;
sCamera camera;
sTrack track;
float FogColor[4];
sFontFNT fontFNT;
sFontTGA fontTGA;
sMenu menu;
unsigned int splash_t, splash_0, splash_1;
long splashSegmentsShown = -1;
SDL_Surface* surface;
const unsigned char* windowIconPixels;
int windowIconSize;

// The desktop names the window from these: the title bar, the taskbar and
// Alt-Tab show the game's name and icon, and the class, the same as the
// desktop entry's StartupWMClass, lets the dock group the window under the
// game's menu entry. SDL 1.2 and sdl12-compat both take the class from the
// environment, and otherwise from the binary's name, which the tests and
// tools running the game's pieces do not share.
static void nameWindow() {
    SDL_WM_SetCaption("Brontevalle", "Brontevalle");
    if (!windowIconPixels || windowIconSize <= 0) return;
    SDL_Surface* icon = SDL_CreateRGBSurfaceFrom(const_cast<unsigned char*>(windowIconPixels), windowIconSize,
                                                 windowIconSize, 32, windowIconSize * 4, SDL_SwapLE32(0x000000ff),
                                                 SDL_SwapLE32(0x0000ff00), SDL_SwapLE32(0x00ff0000),
                                                 SDL_SwapLE32(0xff000000));
    if (!icon) return;
    SDL_WM_SetIcon(icon, nullptr);
    SDL_FreeSurface(icon);
}

void quit(int status) {
    SDL_Quit();
    exit(status);
}

bool createGLwindow() {
    setenv("SDL_VIDEO_X11_WMCLASS", "brontevalle", 0);
    if (SDL_Init(SDL_INIT_VIDEO) < 0) {
        printf("Video initialization failed : %s\n", SDL_GetError());
        quit(1);
    }
    const SDL_VideoInfo* info = SDL_GetVideoInfo();
    if (!info) {
        printf("Video querry failed : %s\n", SDL_GetError());
        quit(1);
    }
    // SDL_OPENGL | SDL_RESIZABLE | SDL_HWPALETTE, plus the value of
    // SDL_GL_DOUBLEBUFFER (5) added in as if it were a flag: that slip asks for
    // SDL_HWSURFACE | SDL_ASYNCBLIT, and the surface we ask for stays that one.
    Uint32 flags = SDL_OPENGL | SDL_RESIZABLE | SDL_HWPALETTE;
    flags += SDL_GL_DOUBLEBUFFER;
    if (info->blit_hw) flags |= SDL_HWACCEL;
    flags |= info->hw_available ? SDL_HWSURFACE : SDL_SWSURFACE;

    SDL_GL_SetAttribute(SDL_GL_DOUBLEBUFFER, 1);
    // Without asking, Mesa gives no stencil buffer and ground shadows never show.
    SDL_GL_SetAttribute(SDL_GL_STENCIL_SIZE, 8);
    nameWindow();
    surface = SDL_SetVideoMode(config.width, config.height, config.depth, flags);
    if (surface) {
        blackbox.task("Initializing video mode", true);
        if (config.fullscreen) SDL_WM_ToggleFullScreen(surface);
        return true;
    }
    std::string text = std::string("Initializing video mode : ") + SDL_GetError();
    blackbox.task(text.c_str(), false);
    return false;
}

// Only a line in the log: SDL_Quit closes the window on the way out.
void killGLwindow() {
    blackbox.task("Deinitializing video mode", true);
}

void initGL() {
    glClearColor(0, 0, 0, 1);
    glClearDepth(1.0);
    glDepthFunc(GL_LEQUAL);
    glEnable(GL_DEPTH_TEST);
    glHint(GL_PERSPECTIVE_CORRECTION_HINT, GL_NICEST);
    glShadeModel(GL_SMOOTH);
    glEnable(GL_COLOR_MATERIAL);
    glHint(GL_FOG_HINT, GL_NICEST);
    glAlphaFunc(GL_NOTEQUAL, 0);
    glTexGeni(GL_S, GL_TEXTURE_GEN_MODE, GL_SPHERE_MAP);
    glTexGeni(GL_T, GL_TEXTURE_GEN_MODE, GL_SPHERE_MAP);
    glFrontFace(GL_CCW);
    glCullFace(GL_BACK);
    glEnable(GL_CULL_FACE);
    if (config.soundeffects && FSOUND_Init(44100, 32, 0))
        blackbox.task("Initialiazing sound", true);
    else
        blackbox.task("Initialiazing sound", false);
}

void resizeGLwindow2D(float w, float h) {
    glViewport(0, 0, config.width, config.height);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(0, w, 0, h, -1, 1);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glDisable(GL_DEPTH_TEST);
}

void resizeGLwindow3D() {
    glViewport(0, 0, config.width, config.height);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    gluPerspective(camera.fov, (double)config.width / (double)config.height, 0.1, 300.0);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glEnable(GL_DEPTH_TEST);
}

void unitquad(float x0, float y0, float x1, float y1, float top, int first) {
    const float x[4] = {x0, x1, x1, x0}, y[4] = {y0, y0, y1, y1};
    const float s[4] = {0, 1, 1, 0}, t[4] = {0, 0, top, top};
    glBegin(GL_QUADS);
    for (int i = 0; i < 4; i++) {
        const int k = (first + i) % 4;
        glTexCoord2f(s[k], t[k]);
        glVertex2f(x[k], y[k]);
    }
    glEnd();
}

// Segment i of the loading bar; past the tenth it runs on to the right.
void drawSplashSegment(unsigned long i) {
    const float halfwidth = 0.0073242188f;  // 7.5 / 1024
    float x = 0.421f + 0.015f * (float)i;
    unitquad(x - halfwidth, 0.14533854f, x + halfwidth, 0.15966146f);
}

void splashScreen() {
    glClearColor(0, 0, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    resizeGLwindow2D(1, 1);
    glColor3f(1, 1, 1);
    glEnable(GL_TEXTURE_2D);
    glBindTexture(GL_TEXTURE_2D, splash_t);
    unitquad(0, 0, 1, 1);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glBindTexture(GL_TEXTURE_2D, splash_0);
    for (unsigned long i = 0; i < 10; i++) drawSplashSegment(i);
    glDisable(GL_BLEND);
    glDisable(GL_TEXTURE_2D);
}

void drawGL() {
    splashSegmentsShown = -1;
    frameStep("clear");
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
    stencilCleared();
    resizeGLwindow3D();
    menu.display();
    // The brightness correction: an additive grey quad. At 0 it adds nothing
    // to any pixel, and a whole window of blended fragments is a good part of
    // a frame on a software renderer. The 2D projection it sets up stays, as
    // what follows draws in it.
    frameStep("brightness");
    resizeGLwindow2D(1, 1);
    // The colour and blend function are left as the quad leaves them either way.
    float g = config.gammacorrection / 100.0f;
    glBlendFunc(GL_ONE, GL_ONE);
    glColor3f(g, g, g);
    if (g > 0 || !shortcuts.brightness) {
        glEnable(GL_BLEND);
        unitquad(0, 0, 1, 1);
        glDisable(GL_BLEND);
    }
    frameStep("meters and console");
    performance.display();
    keyboard.display();
}

void wireframe() {
    glPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
}

void solid() {
    glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
}

// Counts the reads up to end of file, one more than the file's length, in KiB.
unsigned int qbGetFileSize(const char* path) {
    FILE* f = fopen(path, "rb");
    if (!f) return 0;
    unsigned long count = 1;
    char chunk[65536];
    size_t n;
    while ((n = fread(chunk, 1, sizeof chunk, f)) > 0) count += n;
    fclose(f);
    return (unsigned int)(count >> 10);
}

void startup() {
    config.PATH[0] = 0;
    std::string logpath = std::string(config.PATH) + "Data/blackbox.bvd";
    blackbox.init(logpath.c_str(), false);
    std::string configpath = std::string(config.PATH) + "Data/config.bvd";
    if (!config.init(configpath.c_str())) {
        blackbox.free();
        printf("BAD CONFIG: %s", configpath.c_str());
        fflush(stdout);
        quit(0);
    }
    if (!createGLwindow()) quit(0);
    floadTextureTGA("Data/GUI/t.tga", &splash_t);
    floadTextureTGA("Data/GUI/0.tga", &splash_0);
    floadTextureTGA("Data/GUI/1.tga", &splash_1);
    splashScreen();
    SDL_GL_SwapBuffers();
    splashScreen();
    SDL_GL_SwapBuffers();
    splashSegmentsShown = 0;
    glColor3f(1, 0, 0);
    initGL();
    joystick.init();
    keyboard.init();
    mouse.init();
    performance.init();
    fontFNT.init("Courier", 8);
    fontTGA.init("Arial", 0.75f);
    menu.init();
    track.init(trackfacts::kTrackScale);
    lensflare.init();
    initScene();
    freeTexture(&splash_t);
    freeTexture(&splash_0);
    freeTexture(&splash_1);
}

void handleEvent(const SDL_Event& event, bool& done) {
    switch (event.type) {
    case SDL_ACTIVEEVENT:
        // A race stands still while the player is elsewhere; it waits for P to go on.
        if (menu.m == MENU_RACING && losesRace(event.active)) racepause.hold();
        break;
    case SDL_KEYDOWN: {
        unsigned int sym = event.key.keysym.sym;
        keyboard.buf(sym);
        if (!keyboard.console && sym < KEYBOARD_NKEYS) keyboard.key[sym] = true;
        if (menu.m == MENU_MAIN) menu.key = sym;
        break;
    }
    case SDL_KEYUP: {
        unsigned int sym = event.key.keysym.sym;
        if (sym < KEYBOARD_NKEYS) keyboard.key[sym] = false;
        break;
    }
    case SDL_MOUSEMOTION:
        mouse.x = event.motion.x;
        mouse.y = event.motion.y;
        break;
    case SDL_MOUSEBUTTONDOWN:
        mouse.lb = true;
        break;
    case SDL_MOUSEBUTTONUP:
        mouse.lb = false;
        break;
    case SDL_QUIT:
        done = true;
        break;
    case SDL_VIDEORESIZE:
        config.width = event.resize.w;
        config.height = event.resize.h;
        resizeGLwindow3D();
        break;
    default:
        break;
    }
}

namespace {

// A release that comes in the same pass as its press waits here for the next
// pass, and with it everything queued behind it: otherwise a key tapped or a
// button clicked between two slow frames would never be seen down at all.
SDL_Event heldover;
bool isheldover = false;

// The pass in which each key last went down: a key went down in this pass
// when its entry is this pass's number, so nothing needs clearing per frame.
unsigned int keydownpass[KEYBOARD_NKEYS];
unsigned int pass = 0;

bool releasesPressOfThisPass(const SDL_Event& event, bool buttondown) {
    if (event.type == SDL_KEYUP) {
        unsigned int sym = event.key.keysym.sym;
        return sym < KEYBOARD_NKEYS && keydownpass[sym] == pass;
    }
    return event.type == SDL_MOUSEBUTTONUP && buttondown;
}

}  // namespace

void pumpEvents(bool& done) {
    pass++;  // never 0, the number no key starts with, short of four billion frames
    bool buttondown = false;
    SDL_Event event;
    if (isheldover) {
        isheldover = false;
        handleEvent(heldover, done);
    }
    while (SDL_PollEvent(&event)) {
        if (releasesPressOfThisPass(event, buttondown)) {
            heldover = event;
            isheldover = true;
            return;
        }
        if (event.type == SDL_KEYDOWN && event.key.keysym.sym < KEYBOARD_NKEYS) keydownpass[event.key.keysym.sym] = pass;
        if (event.type == SDL_MOUSEBUTTONDOWN) buttondown = true;
        handleEvent(event, done);
    }
}

void looppass(bool& done) {
    pumpEvents(done);
    if (menu.m == MENU_QUIT) done = true;
    joystick.refresh();
    mouse.refresh(menu.m == MENU_RACING);
    if (config.frameratelimit) performance.dropfps(config.frameratelimit);
    performance.refresh();
    drawGL();
    glFlush();
    SDL_GL_SwapBuffers();
}

unsigned long mainloop() {
    bool done = false;
    unsigned long frames = 0;
    while (!done) {
        looppass(done);
        frames++;
    }
    return frames;
}

void shutdown() {
    performance.logResults();
    killScene();
    lensflare.free();
    menu.free();
    fontFNT.free();
    fontTGA.free();
    config.save();
    blackbox.free();
    quit(0);
}

void gamemain() {
    startup();
    mainloop();
    shutdown();
}

// The front end: the program's top-level state, its screens, buttons, previews and sounds.

#include "frontend/menu.h"

#include <GL/gl.h>
#include <GL/glu.h>
#include <SDL/SDL.h>

#include <cstring>
#include <string>

#include "assets/font.h"
#include "assets/texture.h"
#include "audio/sample.h"
#include "frontend/highscore.h"
#include "kart/gokart.h"
#include "scene/camera.h"
#include "scene/ghost.h"
#include "scene/scene.h"
#include "shell/bvconfig.h"
#include "shell/main.h"
#include "shell/mouse.h"
#include "shell/performance.h"
#include "track/track.h"

// ---- buttons ----

void sMenuButton::init(bool loadtexture, const char* name, float x, float y, float width, float height,
                       unsigned int type, unsigned int whereto) {
    tga = 0;
    if (loadtexture) {
        // Clamped, so that a button's border does not pick up its opposite edge.
        texture_wrap = false;
        std::string path = std::string("Data/GUI/") + name + ".tga";
        floadTextureTGA(path.c_str(), &tga);
        texture_wrap = true;
    }
    this->type = type;
    this->whereto = whereto;
    this->x = x;
    this->y = y;
    this->width = width;
    this->height = height;
}

bool sMenuButton::hit() {
    float mx = (float)mouse.x / (float)config.width;
    // The mouse counts window rows downwards; the menu counts upwards.
    float my = ((float)config.height - (float)mouse.y) / (float)config.height;
    return x - width / 2 <= mx && mx <= x + width / 2 && y - height / 2 <= my && my <= y + height / 2;
}

bool sMenuButton::draw() {
    bool h = hit();
    glEnable(GL_TEXTURE_2D);
    glBindTexture(GL_TEXTURE_2D, tga);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    float c = 0.75f + 0.25f * (float)h;
    glColor4f(c, c, c, 1);
    unitquad(x - width / 2, y - height / 2, x + width / 2, y + height / 2);
    glDisable(GL_BLEND);
    glDisable(GL_TEXTURE_2D);
    if (!h) return false;
    return mouse.lb || type == 1;
}

void sMenuButton::free() {
    freeTexture(&tga);
}

// ---- the menu ----

static void fullscreenquad(unsigned int texture) {
    glColor3f(1, 1, 1);
    glEnable(GL_TEXTURE_2D);
    glBindTexture(GL_TEXTURE_2D, texture);
    unitquad(0, 0, 1, 1);
    glDisable(GL_TEXTURE_2D);
}

int sMenu::play(FSOUND_SAMPLE* sample, unsigned int volume) {
    int channel = FSOUND_PlaySound(FSOUND_FREE, sample);
    FSOUND_SetVolume(channel, (int)volume);
    return channel;
}

void sMenu::init() {
    m = MENU_ENTER;
    r = 0;
    delay = 0;
    key = 0;
    cursor_delay = 0;
    player1nameBhit = trackIncORDecBhit = opponentsIncORDecBhit = player1colorIncORDecBhit =
        difficultyIncORDecBhit = largeBhit = false;

    // A picture that fails to load leaves its handle at 0: drawn untextured.
    tgaMenu = tgaAbout = tgaCredits = tgaRecords = 0;
    floadTextureTGA("Data/GUI/main.tga", &tgaMenu);
    floadTextureTGA("Data/GUI/about.tga", &tgaAbout);
    floadTextureTGA("Data/GUI/credits.tga", &tgaCredits);
    floadTextureTGA("Data/GUI/records.tga", &tgaRecords);

    const float arrowW = 20.0f / 1024, arrowH = 26.0f / 768;
    aboutB.init(true, "aboutB", 0.14f, 0.72f, 158.0f / 1024, 49.0f / 768, 0, MENU_ABOUT);
    creditsB.init(true, "creditsB", 0.161f, 0.622f, 200.0f / 1024, 49.0f / 768, 0, MENU_CREDITS);
    recordsB.init(true, "recordsB", 0.175f, 0.535f, 229.0f / 1024, 36.0f / 768, 0, MENU_RECORDS);
    raceB.init(true, "raceB", 0.8675f, 0.12f, 161.0f / 1024, 41.0f / 768, 0, MENU_RACESTART);
    quitB.init(true, "quitB", 0.115f, 0.109f, 111.0f / 1024, 47.0f / 768, 0, MENU_QUIT);
    player1nameB.init(false, "", 0.75f, 0.722f, 0.275f, 0.04f, 1, MENU_STAY);
    player1colorDecB.init(true, "decB", 0.515f, 0.280292f, arrowW, arrowH, 0, MENU_STAY);
    player1colorIncB.init(true, "incB", 0.688f, 0.280292f, arrowW, arrowH, 0, MENU_STAY);
    trackDecB.init(true, "decB", 0.737f, 0.280292f, arrowW, arrowH, 0, MENU_STAY);
    trackIncB.init(true, "incB", 0.9105f, 0.280292f, arrowW, arrowH, 0, MENU_STAY);
    difficultyDecB.init(true, "decB", 0.69f, 0.6565f, arrowW, arrowH, 0, MENU_STAY);
    difficultyIncB.init(true, "incB", 0.875f, 0.6565f, arrowW, arrowH, 0, MENU_STAY);
    opponentsDecB.init(true, "decB", 0.7225f, 0.5925f, arrowW, arrowH, 0, MENU_STAY);
    opponentsIncB.init(true, "incB", 0.8025f, 0.5925f, arrowW, arrowH, 0, MENU_STAY);
    backB.init(true, "backB", 0.1275f, 0.118f, 136.0f / 1024, 36.0f / 768, 0, MENU_MAIN);

    const unsigned int effect = FSOUND_HW2D | FSOUND_8BITS | FSOUND_LOOP_OFF;
    const unsigned int tune = FSOUND_HW2D | FSOUND_8BITS | FSOUND_LOOP_NORMAL;
    Broll = loadSample("Data/Sounds/Broll.wav", effect);
    Bclick = loadSample("Data/Sounds/Bclick.wav", effect);
    Btype = loadSample("Data/Sounds/Btype.wav", effect);
    Bdecinc = loadSample("Data/Sounds/Bdecinc.wav", effect);
    iintro = loadSample("Data/Sounds/iintro.mp3", tune);
    intro = loadSample("Data/Sounds/intro.mp3", tune);

    FSOUND_SetSFXMasterVolume(255);
    splashmusic = -1;
    menumusic = -1;
    if (config.music) splashmusic = FSOUND_PlaySound(FSOUND_FREE, iintro);
    splashopening = splashmusic >= 0;
    FSOUND_SetVolume(splashmusic, (int)config.musicvolume);

    dynsize = 256;
    dyntexdata = new unsigned char[dynsize * dynsize * 3];
    glGenTextures(2, dyntex);
}

void sMenu::display() {
    switch (m) {
    case MENU_RACESTART:
        FSOUND_StopSound(FSOUND_ALL);
        splashopening = false;
        SDL_ShowCursor(0);
        resetScene();
        m = MENU_RACING;
        return;
    case MENU_RACING:
        drawScene();
        return;
    case MENU_ABOUT:
        about();
        return;
    case MENU_CREDITS:
        credits();
        return;
    case MENU_RECORDS:
        records();
        return;
    case MENU_ENTER: {
        FSOUND_SetSFXMasterVolume(255);
        // The race leaves its own light behind; the previews want the menu's.
        const float ambient[4] = {0.125f, 0.125f, 0.125f, 1};
        const float diffuse[4] = {1, 1, 1, 1};
        for (int i = 0; i < 4; i++) {
            LightAmbient[i] = ambient[i];
            LightDiffuse[i] = diffuse[i];
        }
        glLightfv(GL_LIGHT0, GL_AMBIENT, LightAmbient);
        glLightfv(GL_LIGHT0, GL_DIFFUSE, LightDiffuse);
        glLightfv(GL_LIGHT0, GL_POSITION, LightPosition);
        glEnable(GL_LIGHT0);
        glClearColor(0, 0, 0, 1);
        m = MENU_MAIN;
        mainscreen();
        return;
    }
    default:
        mainscreen();
        return;
    }
}

void sMenu::music() {
    if (!config.music) return;
    // The start-up tune plays to its end once: looping takes its position
    // back to the start, and only then does the menu tune take over. Its
    // opening is not that return, though: the game now loads so quickly that
    // the first menu frame can come before the mixer has played 2500
    // positions of it, and the fanfare was cut before a note was heard.
    bool playing = FSOUND_IsPlaying(splashmusic);
    bool pastopening = playing && FSOUND_GetCurrentPosition(splashmusic) > 2500;
    if (pastopening || !playing) splashopening = false;
    bool splash = pastopening || splashopening;
    if (!splash && !FSOUND_IsPlaying(menumusic)) {
        FSOUND_StopSound(splashmusic);
        menumusic = play(intro, config.musicvolume);
    }
}

void sMenu::hover() {
    bool before = player1nameBhit || trackIncORDecBhit || opponentsIncORDecBhit || player1colorIncORDecBhit ||
                  difficultyIncORDecBhit || largeBhit;
    bool name = player1nameB.hit();
    bool trackh = trackDecB.hit() || trackIncB.hit();
    bool opponents = opponentsDecB.hit() || opponentsIncB.hit();
    bool color = player1colorDecB.hit() || player1colorIncB.hit();
    bool difficulty = difficultyDecB.hit() || difficultyIncB.hit();
    largeBhit = aboutB.hit() || creditsB.hit() || recordsB.hit() || raceB.hit() || quitB.hit();
    bool now = name || trackh || opponents || color || difficulty || largeBhit;
    // Only coming from empty space: sliding from one button to the next is silent.
    if (now && !before) play(Broll, config.soundvolume);
    player1nameBhit = name;
    trackIncORDecBhit = trackh;
    opponentsIncORDecBhit = opponents;
    player1colorIncORDecBhit = color;
    difficultyIncORDecBhit = difficulty;
}

void sMenu::nameentry() {
    if (player1nameBhit && key != 0 && key != SDLK_SPACE) {
        size_t n = strlen(config.player1name);
        if (key == SDLK_BACKSPACE) {
            if (n > 0) {
                config.player1name[n - 1] = 0;
                play(Btype, config.soundvolume);
            }
        } else if (n < MENU_NAMELENGTH) {
            play(Btype, config.soundvolume);
            // Key symbols of letters are lower case; 32 below is the capital.
            config.player1name[n] = (char)(key - 32);
            config.player1name[n + 1] = 0;
        }
    }
    key = 0;
}

void sMenu::arrows() {
    if (delay > 0) delay -= 4.0f / performance.fps;
    if (delay > 0 || !mouse.lb) return;
    const unsigned int ncolors = GOKART_NCOLORS;
    sMenuButton* const order[8] = {&player1colorDecB, &player1colorIncB, &trackDecB,     &trackIncB,
                                   &opponentsDecB,    &opponentsIncB,    &difficultyDecB, &difficultyIncB};
    sMenuButton* pressed = nullptr;
    for (sMenuButton* b : order)
        if (!pressed && b->hit()) pressed = b;
    if (!pressed) return;
    // The click answers the press itself, before a new track takes its time to load.
    play(Bdecinc, config.soundvolume);
    bool colorchange = false;
    if (pressed == &player1colorDecB) {
        config.player1color = config.colour() == 0 ? ncolors - 1 : config.colour() - 1;
        delay = 0.25f;
        colorchange = true;
    } else if (pressed == &player1colorIncB) {
        config.player1color = config.colour() >= ncolors - 1 ? 0 : config.colour() + 1;
        delay = 0.25f;
        colorchange = true;
    } else if (pressed == &trackDecB || pressed == &trackIncB) {
        // The tables on disk belong to the track being left.
        highscore.save();
        ghost.save();
        unsigned int last = track.ntracks > 0 ? track.ntracks - 1 : 0;
        if (pressed == &trackDecB)
            config.track = config.track == 0 ? last : config.track - 1;
        else
            config.track = config.track >= last ? 0 : config.track + 1;
        track.load();
        delay = 1.0f;
    } else if (pressed == &opponentsDecB) {
        config.ngokarts = config.ngokarts <= 1 ? CONFIG_MAXGOKARTS : config.ngokarts - 1;
        delay = 0.5f;
    } else if (pressed == &opponentsIncB) {
        config.ngokarts = config.ngokarts >= CONFIG_MAXGOKARTS ? 1 : config.ngokarts + 1;
        delay = 0.5f;
    } else if (pressed == &difficultyDecB) {
        const unsigned int skill = sConfig::skilllevel(config.aiskill);
        config.aiskill = skill == 0 ? CONFIG_NSKILLS - 1 : skill - 1;
        config.checkvars();
        delay = 0.5f;
    } else {
        const unsigned int skill = sConfig::skilllevel(config.aiskill);
        config.aiskill = skill >= CONFIG_NSKILLS - 1 ? 0 : skill + 1;
        config.checkvars();
        delay = 0.5f;
    }
    if (colorchange) {
        const unsigned char* c = gokartstaticdata.palette[config.colour()];
        gokart[0].R = c[0];
        gokart[0].G = c[1];
        gokart[0].B = c[2];
    }
}

// The corner of the window the preview was drawn in becomes its texture.
// Copied inside the driver: read back and uploaded again it cost a
// conversion each way and a wait for the processor each frame.
void sMenu::readback(unsigned int texture) {
    if (!shortcuts.previews) glReadPixels(0, 0, (int)dynsize, (int)dynsize, GL_RGB, GL_UNSIGNED_BYTE, dyntexdata);
    glBindTexture(GL_TEXTURE_2D, texture);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    if (!shortcuts.previews) {
        glTexImage2D(GL_TEXTURE_2D, 0, 3, (int)dynsize, (int)dynsize, 0, GL_RGB, GL_UNSIGNED_BYTE, dyntexdata);
        return;
    }
    GLint width = 0;
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &width);
    if (width != (GLint)dynsize)
        glTexImage2D(GL_TEXTURE_2D, 0, 3, (int)dynsize, (int)dynsize, 0, GL_RGB, GL_UNSIGNED_BYTE, nullptr);
    glCopyTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 0, 0, (int)dynsize, (int)dynsize);
}

void sMenu::previews() {
    camera.ignoreisinview = true;
    r += 15.0f / performance.fps;

    // The player's kart on its turntable.
    frameStep("kart preview");
    glViewport(0, 0, (int)dynsize, (int)dynsize);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    gluPerspective(camera.fov, 1.344827586, 0.1, 200.0);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glEnable(GL_LIGHTING);
    const float kartlight[4] = {0, 5, 10, 1};
    glLightfv(GL_LIGHT0, GL_POSITION, kartlight);
    glTranslatef(0, -0.1f, -2);
    glRotatef(35, 1, 0, 0);
    glRotatef(r, 0, 1, 0);
    glTranslatef(-gokart[0].px, 0, gokartstaticdata.chasisfront / 2 - gokart[0].pz);
    gokart[0].isinview();
    gokart[0].draw();
    glDisable(GL_LIGHTING);
    readback(dyntex[0]);

    // The selected track, turning the other way under the camera.
    frameStep("track preview");
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glLoadIdentity();
    camera.ay = -r;
    glEnable(GL_LIGHTING);
    glEnable(GL_FOG);
    glTranslatef(0, 5, -25);
    glRotatef(30, 1, 0, 0);
    glRotatef(r, 0, 1, 0);
    const float tracklight[4] = {-500, 750, -200, 1};
    glLightfv(GL_LIGHT0, GL_POSITION, tracklight);
    if (track.LIST_ground) glCallList(track.LIST_ground);
    track.isinview();
    track.drawObjects();
    glDisable(GL_FOG);
    glDisable(GL_LIGHTING);
    readback(dyntex[1]);
}

static void previewquad(unsigned int texture, float cx, float cy) {
    const float hw = 97.5f / 1024, hh = 72.5f / 768;
    glBindTexture(GL_TEXTURE_2D, texture);
    unitquad(cx - hw, cy - hh, cx + hw, cy + hh, 0.99f);
}

void sMenu::mainscreen() {
    music();
    hover();
    nameentry();
    arrows();
    previews();

    frameStep("backdrop");
    resizeGLwindow2D(1, 1);
    fullscreenquad(tgaMenu);
    frameStep("preview pictures");
    glEnable(GL_TEXTURE_2D);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_DST_ALPHA);
    glColor4f(1, 1, 1, 0.75f);
    previewquad(dyntex[0], 0.601f, 0.401f);
    previewquad(dyntex[1], 0.824f, 0.401f);
    glDisable(GL_BLEND);
    glDisable(GL_TEXTURE_2D);

    frameStep("buttons and texts");
    sMenuButton* large[5] = {&aboutB, &creditsB, &recordsB, &raceB, &quitB};
    for (sMenuButton* b : large)
        if (b->draw()) {
            play(Bclick, config.soundvolume);
            m = b->whereto;
        }
    sMenuButton* arrowbuttons[8] = {&player1colorDecB, &player1colorIncB, &trackDecB,      &trackIncB,
                                    &difficultyDecB,   &difficultyIncB,   &opponentsDecB, &opponentsIncB};
    for (sMenuButton* b : arrowbuttons) b->draw();

    if (player1nameBhit) {
        if (cursor_delay > 0)
            cursor_delay -= 2.0f / performance.fps;
        else
            cursor_delay = 1.0f;
    } else {
        cursor_delay = 0;
    }
    fontTGA.out(0.6175f, 0.722f, 1, 1, 1, FONT_ALIGN_LEFT, 0.025f, cursor_delay > 0.5f ? "%s_" : "%s",
                config.player1name);

    fontTGA.out(0.77f, 0.659f, 1, 1, 1, FONT_ALIGN_CENTER, 0.025f, "%s",
                config.aiskillstring[sConfig::skilllevel(config.aiskill)]);
    fontTGA.out(0.75f, 0.595f, 1, 1, 1, FONT_ALIGN_CENTER, 0.025f, "%d", (int)config.ngokarts - 1);
    fontTGA.out(0.5925f, 0.280292f, 1, 1, 1, FONT_ALIGN_CENTER, 0.02f, "%s",
                gokartstaticdata.paletteName[config.colour()]);
    fontTGA.out(0.8175f, 0.280292f, 1, 1, 1, FONT_ALIGN_CENTER, 0.02f, "%s",
                track.trackname[config.track % TRACK_MAXNAMES]);
    fontTGA.out(0.0975f, 0.84f, 1, 1, 1, FONT_ALIGN_CENTER, 0.01f, "v1.02b3");
}

void sMenu::backbutton(unsigned int) {
    bool h = backB.hit();
    if (!largeBhit && h) play(Broll, config.soundvolume);
    largeBhit = h;
    if (backB.draw()) {
        play(Bclick, config.soundvolume);
        // The press would otherwise go on to whatever lies under it on the main screen.
        mouse.lb = false;
        m = backB.whereto;
    }
}

void sMenu::about() {
    resizeGLwindow2D(1, 1);
    fullscreenquad(tgaAbout);
    struct Line {
        float y, size;
        const char* text;
    };
    static const Line lines[] = {
        {0.67f, 0.02f, "Race against up to five computer"},
        {0.64f, 0.02f, "opponents or try to beat the records."},
        {0.57f, 0.0175f, "Accellerate"},
        {0.54f, 0.015f, "Up Arrow"},
        {0.47f, 0.0175f, "Brake"},
        {0.44f, 0.015f, "Down Arrow"},
        {0.37f, 0.0175f, "Steering"},
        {0.34f, 0.015f, "Mouse left/right or"},
        {0.31f, 0.015f, "Left/Right Arrow"},
        {0.22f, 0.015f, "To change the settings, open the Configuration app"},
        {0.19f, 0.015f, "For further information, consult the readme file"},
    };
    for (const Line& l : lines) fontTGA.out(0.5f, l.y, 1, 1, 1, FONT_ALIGN_CENTER, l.size, "%s", l.text);
    backbutton(tgaAbout);
}

void sMenu::credits() {
    resizeGLwindow2D(1, 1);
    fullscreenquad(tgaCredits);
    float y = 0.68f;
    auto line = [&](float step, float size, const char* text) {
        y -= step;
        fontTGA.out(0.5f, y, 1, 1, 1, FONT_ALIGN_CENTER, size, "%s", text);
    };
    line(0, 0.02f, "Brontevalle by Ada Valdoni");
    line(0.05f, 0.015f, "Interface");
    line(0.03f, 0.0125f, "Teo Brambilla");
    line(0.05f, 0.015f, "Thanks to");
    static const char* thanks[5] = {"The Millbrook millers", "Harbour Boat Club", "Pinewood rangers",
                                    "Quarry Works canteen", "Riverside ferrymen"};
    for (int i = 0; i < 5; i++) line(i == 0 ? 0.03f : 0.0175f, 0.012f, thanks[i]);
    line(0.05f, 0.0125f, "Betatesters");
    // Drivers from round the valley, each with the circuit nearest home.
    static const char* testers[16] = {"Lia Fontana, Riverside", "Marco Sassi, Quarry",   "Greta Olmo, Pinewood",
                                      "Ivo Carraro, Millbrook", "Nora Pini, Pinewood",   "Bruno Lago, Harbour",
                                      "Elsa Ponte, Riverside",  "Dario Rocca, Quarry",   "Vera Molino, Millbrook",
                                      "Ugo Riva, Harbour",      "Sofia Bosco, Pinewood", "Piero Cava, Quarry",
                                      "Anna Porto, Harbour",    "Luca Valle, Millbrook", "Irene Abete, Pinewood",
                                      "Tino Barca, Riverside"};
    for (int i = 0; i < 16; i++) line(i == 0 ? 0.025f : 0.015f, 0.01f, testers[i]);
    backbutton(tgaCredits);
}

void sMenu::records() {
    resizeGLwindow2D(1, 1);
    fullscreenquad(tgaRecords);
    for (unsigned int i = 0; i < HIGHSCORE_N; i++) {
        float y = 0.65f - 0.05f * (float)i;
        fontTGA.out(0.335f, y, 1, 1, 1, FONT_ALIGN_LEFT, 0.025f, "%s", highscore.laprecord_name[i]);
        fontTGA.out(0.65f, y, 1, 1, 1, FONT_ALIGN_RIGHT, 0.025f, "%.2f", highscore.laprecord_time[i]);
    }
    backbutton(tgaRecords);
}

void sMenu::free() {
    freeTexture(&tgaMenu);
    freeTexture(&tgaAbout);
    freeTexture(&tgaCredits);
    freeTexture(&tgaRecords);
    tgaMenu = tgaAbout = tgaCredits = tgaRecords = 0;
    sMenuButton* buttons[15] = {&aboutB,           &creditsB,  &recordsB,  &raceB,          &quitB,
                                &player1nameB,     &player1colorDecB, &player1colorIncB, &trackDecB,
                                &trackIncB,        &opponentsDecB,    &opponentsIncB,    &difficultyDecB,
                                &difficultyIncB,   &backB};
    for (sMenuButton* b : buttons) b->free();
    FSOUND_StopSound(FSOUND_ALL);
    FSOUND_SAMPLE** samples[6] = {&Broll, &Bclick, &Btype, &Bdecinc, &iintro, &intro};
    for (FSOUND_SAMPLE** s : samples) {
        FSOUND_Sample_Free(*s);
        *s = nullptr;
    }
    delete[] dyntexdata;
    dyntexdata = nullptr;
    if (dyntex[0]) glDeleteTextures(2, dyntex);
    dyntex[0] = dyntex[1] = 0;
}

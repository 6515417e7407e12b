// Holding a race still and starting it over.

#include "scene/pause.h"

#include "assets/font.h"
#include "audio/fsound.h"
#include "kart/gokart.h"
#include "scene/scene.h"
#include "shell/keyboard.h"
#include "shell/performance.h"

sPause racepause;

void sPause::init() {
    if (paused)
        for (int i = 0; i < nstopped; i++) FSOUND_SetPaused(stopped[i], 0);
    paused = false;
    nstopped = 0;
    pheld = keyboard.key[SDLK_p];
    delheld = keyboard.key[SDLK_DELETE];
}

void sPause::hold() {
    if (paused) return;
    paused = true;
    since = bvclock();
    nstopped = 0;
    for (int c = 0; c < PAUSE_NCHANNELS; c++)
        if (FSOUND_IsPlaying(c) && !FSOUND_GetPaused(c)) {
            FSOUND_SetPaused(c, 1);
            stopped[nstopped++] = c;
        }
}

void sPause::resume() {
    if (!paused) return;
    // Everything timed from a clock reading taken before the pause: the start
    // clock, each lap's start and each computer driver's last decision.
    const long stood = bvclock() - since;
    s += stood;
    e += stood;
    for (sGokart& k : gokart) {
        k.lapstart += stood;
        k.last_aimove += stood;
    }
    for (int i = 0; i < nstopped; i++) FSOUND_SetPaused(stopped[i], 0);
    nstopped = 0;
    paused = false;
}

void sPause::keys() {
    const bool p = keyboard.key[SDLK_p], del = keyboard.key[SDLK_DELETE];
    if (p && !pheld) {
        if (paused)
            resume();
        else
            hold();
    }
    pheld = p;
    if (del && !delheld) resetScene();
    delheld = del;
}

void sPause::rest() {
    if (!paused) return;
    // The frame after a paused one keeps the race's frame rate, so the first
    // frame after the pause moves the karts by one frame, however long the
    // paused frames took; and so they may as well take their time.
    performance.discardnext();
    SDL_Delay(20);
}

void sPause::draw() const {
    if (!paused) return;
    fontTGA.out(0.5f, 0.7f, 1, 1, 1, FONT_ALIGN_CENTER, 0.05f, "PAUSED");
    fontTGA.out(0.5f, 0.63f, 1, 1, 1, FONT_ALIGN_CENTER, 0.02f, "P to resume, Escape to leave the race");
}

bool losesRace(const SDL_ActiveEvent& active) {
    return !active.gain && (active.state & (SDL_APPINPUTFOCUS | SDL_APPACTIVE));
}

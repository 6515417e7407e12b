#include "frontend/menu.h"

#include <SDL/SDL.h>

#include "audio/fsound.h"
#include "scene/scene.h"

void sMenu::init() {
    m = MENU_ENTER;
    key = 0;
}

// Until the menu screens are drawn, entering the menu starts a race on the
// selected track straight away.
void sMenu::display() {
    if (m == MENU_ENTER) m = MENU_RACESTART;
    if (m == MENU_RACESTART) {
        FSOUND_StopSound(FSOUND_ALL);
        SDL_ShowCursor(0);
        resetScene();
        m = MENU_RACING;
    }
    if (m == MENU_RACING) drawScene();
}

void sMenu::free() {}

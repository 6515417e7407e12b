#include "frontend/menu.h"

void sMenu::init() {
    m = MENU_ENTER;
    key = 0;
}

// The menu screens are not drawn yet: entering the menu goes straight on to
// the main state and the frame stays blank under the brightness overlay.
void sMenu::display() {
    if (m == MENU_ENTER) m = MENU_MAIN;
}

void sMenu::free() {}

#ifndef BV_FRONTEND_MENU_H
#define BV_FRONTEND_MENU_H

// The top-level state of the whole program and the screens of the front end.
// State values of `m`.
const unsigned int MENU_ENTER = 0;
const unsigned int MENU_MAIN = 1;
const unsigned int MENU_RACESTART = 2;
const unsigned int MENU_RACING = 3;
const unsigned int MENU_QUIT = 4;
const unsigned int MENU_ABOUT = 5;
const unsigned int MENU_CREDITS = 6;
const unsigned int MENU_RECORDS = 7;

struct sMenu {
    unsigned int m;
    unsigned int key;

    void init();
    void display();
    void free();
};

extern sMenu menu;

#endif

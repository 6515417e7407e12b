#ifndef BV_FRONTEND_MENU_H
#define BV_FRONTEND_MENU_H

// The top-level state of the whole program and the screens of the front end:
// the race-setup form with its live previews, About, Credits and Records.

#include "audio/fsound.h"

// State values of `m`.
const unsigned int MENU_ENTER = 0;
const unsigned int MENU_MAIN = 1;
const unsigned int MENU_RACESTART = 2;
const unsigned int MENU_RACING = 3;
const unsigned int MENU_QUIT = 4;
const unsigned int MENU_ABOUT = 5;
const unsigned int MENU_CREDITS = 6;
const unsigned int MENU_RECORDS = 7;
// The target of buttons that leave the screen as it is.
const unsigned int MENU_STAY = 99;

const unsigned int MENU_NAMELENGTH = 12;

// A textured rectangle in unit screen coordinates (x from the left, y from
// the bottom) that lights up under the mouse and reports presses.
struct sMenuButton {
    unsigned int tga;
    // 0: pressed while a mouse button is held over it; 1: pressed by hovering.
    unsigned int type;
    unsigned int whereto;
    float x, y;
    float width, height;

    void init(bool loadtexture, const char* name, float x, float y, float width, float height, unsigned int type,
              unsigned int whereto);
    bool hit();
    // Draws the button; true in every frame it counts as pressed.
    bool draw();
    void free();
};

struct sMenu {
    unsigned int m;
    unsigned int tgaMenu, tgaAbout, tgaCredits, tgaRecords;
    unsigned int key;
    float r;
    float delay;
    float cursor_delay;
    sMenuButton aboutB, creditsB, recordsB, raceB, quitB, player1nameB, player1colorDecB, player1colorIncB, trackDecB,
        trackIncB, opponentsDecB, opponentsIncB, difficultyDecB, difficultyIncB, backB;
    bool player1nameBhit, trackIncORDecBhit, opponentsIncORDecBhit, player1colorIncORDecBhit, difficultyIncORDecBhit,
        largeBhit;
    int splashmusic, menumusic;
    bool splashopening;  // the start-up tune has started and not yet been heard past its opening
    FSOUND_SAMPLE *Broll, *Bclick, *Btype, *Bdecinc, *iintro, *intro;
    unsigned char* dyntexdata;
    unsigned int dyntex[2];
    unsigned int dynsize;

    void init();
    void display();
    void about();
    void credits();
    void records();
    void free();

private:
    void mainscreen();
    void music();
    void hover();
    void nameentry();
    void arrows();
    void previews();
    void readback(unsigned int texture);
    void backbutton(unsigned int background);
    int play(FSOUND_SAMPLE* sample, unsigned int volume);
};

extern sMenu menu;

#endif

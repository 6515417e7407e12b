#ifndef BV_SHELL_KEYBOARD_H
#define BV_SHELL_KEYBOARD_H

// Key states for the whole game, and the F1 console: a three-word line
// ("SET name value" or "CMD name") with two lines of history.
const unsigned int KEYBOARD_NKEYS = 65536;
const unsigned int CONSOLE_WORDLEN = 32;

struct sKeyboard {
    bool key[KEYBOARD_NKEYS];
    bool console;
    char buffer[3][3][CONSOLE_WORDLEN];
    unsigned int nt;
    unsigned int nc;

    void init();
    void buf(unsigned int sym);
    void process();
    void display();
};

extern sKeyboard keyboard;

#endif

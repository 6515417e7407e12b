// Key states, and the F1 console with its history.

#include "shell/keyboard.h"

#include <GL/gl.h>
#include <SDL/SDL.h>

#include <cstdlib>
#include <cstring>

#include "assets/font.h"
#include "shell/bvconfig.h"
#include "shell/main.h"

// Words are terminated only when shorter than 32 characters.
static unsigned int wordlen(const char* word) {
    return (unsigned int)strnlen(word, CONSOLE_WORDLEN);
}

void sKeyboard::init() {
    console = false;
    for (unsigned int i = 0; i < KEYBOARD_NKEYS; i++) key[i] = false;
    memset(buffer, 0, sizeof buffer);
    nt = 0;
    nc = 0;
}

void sKeyboard::buf(unsigned int sym) {
    if (sym == SDLK_F1) {
        console = !console;
        return;
    }
    if (!console) return;
    if (sym == SDLK_RETURN) {
        process();
        return;
    }
    // A full word ignores every key but F1 and Return, Backspace included.
    if (nc >= CONSOLE_WORDLEN) return;
    char* word = buffer[0][nt];
    if (sym == SDLK_SPACE) {
        if (nt < 2) {
            nt++;
            nc = 0;
        }
    } else if (sym == SDLK_BACKSPACE) {
        if (nc > 0) {
            nc--;
        } else if (nt > 0) {
            nt--;
            nc = wordlen(buffer[0][nt]);
        }
        if (nc < CONSOLE_WORDLEN) buffer[0][nt][nc] = 0;
    } else if (sym == SDLK_UP) {
        if (buffer[1][0][0] != 0) {
            for (unsigned int w = 0; w < 3; w++) {
                memcpy(buffer[0][w], buffer[1][w], CONSOLE_WORDLEN);
                if (buffer[0][w][0] != 0) {
                    nt = w;
                    nc = wordlen(buffer[0][w]);
                }
            }
        }
    } else {
        // SDL reports lower-case letters; taking 32 off makes the verb upper case.
        word[nc] = (char)((sym & 0xff) - (nt == 0 ? 32 : 0));
        nc++;
    }
}

void sKeyboard::process() {
    char word[3][CONSOLE_WORDLEN + 1];
    for (unsigned int w = 0; w < 3; w++) {
        memcpy(word[w], buffer[0][w], CONSOLE_WORDLEN);
        word[w][CONSOLE_WORDLEN] = 0;
    }
    if (strcmp(word[0], "SET") == 0)
        config.setvar(word[1], (unsigned int)atoi(word[2]));
    else if (strcmp(word[0], "CMD") == 0)
        config.runfnc(word[1]);
    memcpy(buffer[2], buffer[1], sizeof buffer[1]);
    memcpy(buffer[1], buffer[0], sizeof buffer[0]);
    memset(buffer[0], 0, sizeof buffer[0]);
    nt = 0;
    nc = 0;
}

void sKeyboard::display() {
    if (!console) return;
    float width = (float)config.width;
    float height = (float)config.height;
    resizeGLwindow2D(width, height);
    glEnable(GL_BLEND);
    glBlendFunc(GL_ONE_MINUS_SRC_ALPHA, GL_SRC_ALPHA);
    glColor4f(0, 0, 0, 0.5f);
    glBegin(GL_QUADS);
    glVertex2f(0, height - 56);
    glVertex2f(width, height - 56);
    glVertex2f(width, height);
    glVertex2f(0, height);
    glEnd();
    glDisable(GL_BLEND);

    for (unsigned int i = 0; i < 3; i++) {
        char word[3][CONSOLE_WORDLEN + 1];
        for (unsigned int w = 0; w < 3; w++) {
            memcpy(word[w], buffer[i][w], CONSOLE_WORDLEN);
            word[w][CONSOLE_WORDLEN] = 0;
        }
        unsigned int y = config.height - 48 + 16 * i;
        unsigned int l0 = wordlen(word[0]);
        unsigned int l1 = wordlen(word[1]);
        fontFNT.out(6, y, 0.5f, 0.5f, 0.5f, FONT_ALIGN_LEFT, ">");
        if (l0) fontFNT.out(16, y, 1, 0, 0, FONT_ALIGN_LEFT, "%s", word[0]);
        if (l1) fontFNT.out(10 * l0 + 26, y, 0, 1, 0, FONT_ALIGN_LEFT, "%s", word[1]);
        if (word[2][0]) fontFNT.out(10 * (l0 + l1) + 36, y, 1, 1, 1, FONT_ALIGN_LEFT, "%s", word[2]);
    }
    unsigned int b = 16;
    if (nt > 0) b = 10 * wordlen(buffer[0][0]) + 26;
    if (nt == 2) b += 10 * wordlen(buffer[0][1]) + 10;
    fontFNT.out(b + 10 * nc, config.height - 48, 0.5f, 0.5f, 0.5f, FONT_ALIGN_LEFT, "_");
}

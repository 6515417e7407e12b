#ifndef BV_ASSETS_FONT_H
#define BV_ASSETS_FONT_H

// Two ways to write text: small fixed-pitch bitmap text in window pixels from
// an X font (console, frame counter), and scalable blended text from a 16x16
// glyph picture in unit-square coordinates (menus, race texts, records).

const unsigned int FONT_ALIGN_LEFT = 0;
const unsigned int FONT_ALIGN_CENTER = 1;
const unsigned int FONT_ALIGN_RIGHT = 2;

// Longest text either font formats; longer texts are cut, never overrun.
const unsigned int FONT_MAXTEXT = 255;

struct sFontFNT {
    unsigned int base;
    unsigned int size;

    void init(const char* fontface, unsigned int size);
    void out(unsigned int x, unsigned int y, float r, float g, float b, unsigned int alignment, const char* fmt, ...)
        __attribute__((format(printf, 8, 9)));
    void free();
};

struct sFontTGA {
    float spacing;
    unsigned int tga;

    void init(const char* file, float spacing);
    void out(float x, float y, float r, float g, float b, unsigned int alignment, float size, const char* fmt, ...)
        __attribute__((format(printf, 9, 10)));
    void free();
};

extern sFontFNT fontFNT;
extern sFontTGA fontTGA;

#endif

#ifndef BV_ASSETS_TEXTURE_H
#define BV_ASSETS_TEXTURE_H

#include <cstdio>

// TGA pictures into mipmapped OpenGL textures, and screenshots out of the frame buffer.

// New textures repeat at their edges while this is true, and clamp otherwise.
extern bool texture_wrap;

extern const unsigned char TGAheader[12];
extern const unsigned char TGArle[12];

// Largest picture side we accept; anything bigger is a damaged header.
const unsigned int TGA_MAXSIDE = 8192;

// A decoded picture, pixels in file order (blue, green, red, alpha already
// swapped to red first), the first row of the file being row 0.
struct sTGAImage {
    unsigned int width;
    unsigned int height;
    unsigned int bpp;
    unsigned int size;      // width * height * bpp / 8
    unsigned char* data;    // malloc'd, zero-filled before reading; free() it
};

enum eTGAResult { TGA_OK = 0, TGA_BADHEADER, TGA_NOMEMORY };

// Reads a whole TGA stream. The game's loader and the tests share this path.
eTGAResult decodeTGA(FILE* fptr, sTGAImage* image);

int floadTextureTGA(const char* file, unsigned int* ptr);
int iloadTextureTGArle(FILE* fptr, unsigned char* data, unsigned int size, unsigned int bpp);
int fsaveTGA();
void freeTexture(unsigned int* ptr);

#endif

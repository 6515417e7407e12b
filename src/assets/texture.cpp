// TGA pictures in and out: decoding, loading into textures, and screenshots.

#include "assets/texture.h"

#include <GL/gl.h>
#include <GL/glu.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <string>

#include "shell/blackbox.h"
#include "shell/bvconfig.h"

bool texture_wrap = true;

const unsigned char TGAheader[12] = {0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0};
const unsigned char TGArle[12] = {0, 0, 10, 0, 0, 0, 0, 0, 0, 0, 0, 0};

int iloadTextureTGArle(FILE* fptr, unsigned char* data, unsigned int size, unsigned int bpp) {
    unsigned int bytespp = bpp / 8;
    if (bytespp < 3 || bytespp > 4) return 0;
    // Rounded down to a multiple of 8 pixels: decoding stops at the first
    // packet boundary on or past it, never inside a packet.
    unsigned int pixelcount = (size / bpp) * 8;
    unsigned int currentpixel = 0;
    unsigned int currentbyte = 0;
    unsigned char pixel[4];

    // A damaged file's last packet may run past the image: such pixels are read but not stored.
    auto put = [&]() {
        if (currentbyte + bytespp <= size) memcpy(data + currentbyte, pixel, bytespp);
        currentbyte += bytespp;
        currentpixel++;
    };
    do {
        int header = fgetc(fptr);
        if (header == EOF) return 0;
        if (header < 128) {
            for (int i = 0; i <= header; i++) {
                if (fread(pixel, 1, bytespp, fptr) != bytespp) return 0;
                put();
            }
        } else {
            if (fread(pixel, 1, bytespp, fptr) != bytespp) return 0;
            for (int i = 0; i < header - 127; i++) put();
        }
    } while (currentpixel < pixelcount);
    return 1;
}

eTGAResult decodeTGA(FILE* fptr, sTGAImage* image) {
    unsigned char compare[12] = {0};
    unsigned char dims[6] = {0};  // width and height, low byte first, then bits per pixel and descriptor
    image->data = nullptr;
    image->width = image->height = image->bpp = image->size = 0;
    if (fread(compare, 1, 12, fptr) != 12 || fread(dims, 1, 6, fptr) != 6) return TGA_BADHEADER;
    image->width = dims[0] + 256u * dims[1];
    image->height = dims[2] + 256u * dims[3];
    image->bpp = dims[4];
    if ((image->bpp != 24 && image->bpp != 32) || image->width == 0 || image->height == 0 ||
        image->width > TGA_MAXSIDE || image->height > TGA_MAXSIDE)
        return TGA_BADHEADER;
    image->size = (image->width * image->height * image->bpp) >> 3;
    // Zeroed, so that a truncated file shows black rather than stale memory.
    image->data = (unsigned char*)calloc(image->size, 1);
    if (!image->data) return TGA_NOMEMORY;

    if (memcmp(compare, TGArle, 12) == 0)
        iloadTextureTGArle(fptr, image->data, image->size, image->bpp);
    else
        (void)!fread(image->data, 1, image->size, fptr);

    unsigned int step = image->bpp / 8;
    for (unsigned int i = 0; i + 2 < image->size; i += step) {
        unsigned char t = image->data[i];
        image->data[i] = image->data[i + 2];
        image->data[i + 2] = t;
    }
    return TGA_OK;
}

int floadTextureTGA(const char* file, unsigned int* ptr) {
    std::string text = std::string("Loading texture f : ") + file;
    std::string path = std::string(config.PATH) + file;
    config.disploaded(path.c_str());

    FILE* fptr = fopen(path.c_str(), "rb");
    if (!fptr) {
        blackbox.task(text.c_str(), false);
        printf("NOT FOUND: %s\n", path.c_str());
        return 0;
    }
    sTGAImage image;
    eTGAResult result = decodeTGA(fptr, &image);
    fclose(fptr);
    if (result != TGA_OK) {
        if (result == TGA_BADHEADER) text += " (not a 24- or 32-bit picture of sensible size)";
        blackbox.task(text.c_str(), false);
        free(image.data);
        return 0;
    }

    GLenum format = image.bpp == 24 ? GL_RGB : GL_RGBA;
    glGenTextures(1, ptr);
    glBindTexture(GL_TEXTURE_2D, *ptr);
    GLint wrap = texture_wrap ? GL_REPEAT : GL_CLAMP;
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, wrap);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, wrap);
    switch (config.texturefilter) {
    case 0:
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        break;
    case 1:
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
        break;
    default:
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_NEAREST);
        break;
    }
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    gluBuild2DMipmaps(GL_TEXTURE_2D, format, image.width, image.height, format, GL_UNSIGNED_BYTE, image.data);
    free(image.data);
    blackbox.task(text.c_str(), true);
    return 1;
}

int fsaveTGA() {
    GLint viewport[4];
    glGetIntegerv(GL_VIEWPORT, viewport);
    unsigned int width = viewport[2];
    unsigned int height = viewport[3];
    unsigned char* pixels = (unsigned char*)malloc((size_t)width * height * 3 + 1);
    if (!pixels) return 0;
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, width, height, GL_BGR, GL_UNSIGNED_BYTE, pixels);

    // Numbers whose file is already there (an earlier session's pictures) are
    // passed over, never written over: "x" opens only a file that is new.
    FILE* f = nullptr;
    do {
        char name[64];
        snprintf(name, sizeof name, "Data/Screenshots/shot%s%s%d.tga", config.nScreenshots <= 99 ? "0" : "",
                 config.nScreenshots <= 9 ? "0" : "", (int)config.nScreenshots);
        config.nScreenshots++;
        f = fopen(name, "wbx");
    } while (!f && errno == EEXIST && config.nScreenshots < (unsigned int)INT_MAX);
    if (!f) {
        blackbox.task("Saving screenshot", true);
        ::free(pixels);
        return 0;
    }
    unsigned char dims[6] = {(unsigned char)(width % 256), (unsigned char)(width / 256),
                             (unsigned char)(height % 256), (unsigned char)(height / 256), 24, 0};
    fwrite(TGAheader, 1, 12, f);
    fwrite(dims, 1, 6, f);
    fwrite(pixels, 1, (size_t)width * height * 3, f);
    fclose(f);
    ::free(pixels);
    blackbox.task("Saving screenshot", true);
    return 1;
}

void freeTexture(unsigned int* ptr) {
    glDeleteTextures(1, ptr);
}

// The bitmap font and the textured font, and the text they write.

#include "assets/font.h"

#include <GL/gl.h>
#include <GL/glx.h>
#include <X11/Xlib.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>

#include "assets/texture.h"
#include "shell/bvconfig.h"
#include "shell/main.h"

void sFontFNT::init(const char*, unsigned int) {
    // Kept: the size argument is dropped, so `size`, which alignment reads,
    // stays 0 and all bitmap text is left-aligned whatever alignment is asked
    // for; pinned by FontTest.BitmapRightAlignmentDrawsExactlyWhereLeftDoes.
    base = glGenLists(96);
    Display* display = XOpenDisplay(nullptr);
    if (!display) {
        printf("no X font available?\n");
        return;
    }
    XFontStruct* font = XLoadQueryFont(display, "mudder");
    if (!font) font = XLoadQueryFont(display, "fixed");
    if (!font) {
        printf("no X font available?\n");
        XCloseDisplay(display);
        return;
    }
    glXUseXFont(font->fid, 32, 96, base);
    XFreeFont(display, font);
    XCloseDisplay(display);
}

void sFontFNT::out(unsigned int x, unsigned int y, float r, float g, float b, unsigned int alignment,
                   const char* fmt, ...) {
    if (!fmt) return;
    char text[FONT_MAXTEXT + 1];
    va_list ap;
    va_start(ap, fmt);
    vsnprintf(text, sizeof text, fmt, ap);
    va_end(ap);
    unsigned int length = (unsigned int)strlen(text);
    if (alignment == FONT_ALIGN_CENTER) x -= length * (unsigned int)(size / 2.0);
    if (alignment == FONT_ALIGN_RIGHT) x -= length * size;

    resizeGLwindow2D((float)config.width, (float)config.height);
    glColor3f(r, g, b);
    glRasterPos2i((GLint)x, (GLint)y);
    glPushAttrib(GL_LIST_BIT);
    glListBase(base - 32);
    glCallLists((GLsizei)length, GL_UNSIGNED_BYTE, text);
    glPopAttrib();
}

void sFontFNT::free() {}

void sFontTGA::init(const char* file, float space) {
    spacing = space;
    std::string path = std::string("Data/Fonts/") + file + ".tga";
    floadTextureTGA(path.c_str(), &tga);
}

void sFontTGA::out(float x, float y, float r, float g, float b, unsigned int alignment, float size,
                   const char* fmt, ...) {
    char text[FONT_MAXTEXT + 1];
    va_list ap;
    va_start(ap, fmt);
    text[0] = 0;
    if (fmt) vsnprintf(text, sizeof text, fmt, ap);
    va_end(ap);
    int n = (int)strlen(text);
    if (alignment == FONT_ALIGN_CENTER) x -= n * size * spacing / 2;
    if (alignment == FONT_ALIGN_RIGHT) x -= n * size * spacing;

    resizeGLwindow2D(1.0f, 1.0f);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glEnable(GL_TEXTURE_2D);
    glBindTexture(GL_TEXTURE_2D, tga);
    glColor3f(r, g, b);
    glPushMatrix();
    glTranslatef(x, y, 0);
    const float half = size / 1.2f;
    for (int i = 0; i < n; i++) {
        glTranslatef(size * spacing, 0, 0);
        // Codes of 128 and above are negative here and pick cells outside the
        // grid, which the repeating texture wraps; only 0..127 mean anything.
        int c = (signed char)text[i];
        float col = (float)(c % 16);
        float row = (float)(c / 16);
        glBegin(GL_QUADS);
        glTexCoord2f(col * 0.0625f, 1 - row * 0.0625f);
        glVertex2f(-half, size);
        glTexCoord2f(col * 0.0625f, 1 - (row + 1) * 0.0625f);
        glVertex2f(-half, -size);
        glTexCoord2f((col + 1) * 0.0625f, 1 - (row + 1) * 0.0625f);
        glVertex2f(half, -size);
        glTexCoord2f((col + 1) * 0.0625f, 1 - row * 0.0625f);
        glVertex2f(half, size);
        glEnd();
    }
    glPopMatrix();
    glDisable(GL_TEXTURE_2D);
    glDisable(GL_BLEND);
}

void sFontTGA::free() {
    freeTexture(&tga);
}

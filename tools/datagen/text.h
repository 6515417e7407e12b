#ifndef BV_DATAGEN_TEXT_H
#define BV_DATAGEN_TEXT_H

// Lettering through FreeType with the DejaVu faces.

#include <string>

#include "datagen/canvas.h"

namespace gen {

enum FontFace { SANS, SANS_BOLD, SANS_CONDENSED_BOLD, SANS_OBLIQUE_BOLD, SERIF_BOLD, MONO_BOLD };

const char* fontFile(FontFace face);

// A line of text as a coverage mask. The mask leaves `pad` pixels around the
// ink box of the pen run; baseline is the mask row of the baseline and
// advance the pen run's width. scaleX squeezes or widens the letters.
struct TextMask {
    Mask mask;
    int baseline = 0;
    float advance = 0;
    int left = 0;  // mask column of the pen's start
};
TextMask renderText(FontFace face, float pixels, const std::string& text, float scaleX = 1, float tracking = 0,
                    int pad = 8);

// Font metrics in pixels at the given size.
struct FaceMetrics {
    float ascender, descender, capHeight, xHeight;
};
FaceMetrics faceMetrics(FontFace face, float pixels);

enum Align { LEFT, CENTER, RIGHT };

// Plain text with its baseline at y.
void drawText(Canvas& c, FontFace face, float pixels, float x, float y, const std::string& text, Color colour,
              Align align = LEFT, float scaleX = 1, float tracking = 0);
// Display lettering: shadow, dark outline, vertical gradient fill. Returns the width.
float drawFancyText(Canvas& c, FontFace face, float pixels, float x, float y, const std::string& text, Color top,
                    Color bottom, Color outline, float outlineWidth, Align align = LEFT, float scaleX = 1,
                    float tracking = 0, float shadowBlur = 4, float shadowOffset = 3);

}  // namespace gen

#endif

// Text set with FreeType into masks for the generated pictures.

#include "datagen/text.h"

#include <ft2build.h>
#include FT_FREETYPE_H

#include <cstdio>
#include <cstdlib>
#include <map>

namespace gen {

namespace {

FT_Library library() {
    static FT_Library lib = nullptr;
    if (!lib && FT_Init_FreeType(&lib) != 0) {
        fprintf(stderr, "datagen: FreeType does not start\n");
        exit(1);
    }
    return lib;
}

FT_Face open(FontFace face) {
    static std::map<int, FT_Face> faces;
    auto it = faces.find(face);
    if (it != faces.end()) return it->second;
    FT_Face f = nullptr;
    if (FT_New_Face(library(), fontFile(face), 0, &f) != 0) {
        fprintf(stderr, "datagen: cannot open the font %s (package fonts-dejavu-core)\n", fontFile(face));
        exit(1);
    }
    faces[face] = f;
    return f;
}

}  // namespace

const char* fontFile(FontFace face) {
    switch (face) {
    case SANS: return "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";
    case SANS_BOLD: return "/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf";
    case SANS_CONDENSED_BOLD: return "/usr/share/fonts/truetype/dejavu/DejaVuSansCondensed-Bold.ttf";
    case SANS_OBLIQUE_BOLD: return "/usr/share/fonts/truetype/dejavu/DejaVuSans-BoldOblique.ttf";
    case SERIF_BOLD: return "/usr/share/fonts/truetype/dejavu/DejaVuSerif-Bold.ttf";
    case MONO_BOLD: return "/usr/share/fonts/truetype/dejavu/DejaVuSansMono-Bold.ttf";
    }
    return "";
}

FaceMetrics faceMetrics(FontFace face, float pixels) {
    FT_Face f = open(face);
    float k = pixels / f->units_per_EM;
    FaceMetrics m{f->ascender * k, f->descender * k, 0.73f * pixels, 0.55f * pixels};
    // Measure H and x for the real cap and x heights.
    FT_Set_Char_Size(f, 0, (FT_F26Dot6)(pixels * 64), 72, 72);
    FT_Set_Transform(f, nullptr, nullptr);
    if (FT_Load_Char(f, 'H', FT_LOAD_NO_HINTING) == 0) m.capHeight = f->glyph->metrics.height / 64.0f;
    if (FT_Load_Char(f, 'x', FT_LOAD_NO_HINTING) == 0) m.xHeight = f->glyph->metrics.height / 64.0f;
    return m;
}

TextMask renderText(FontFace face, float pixels, const std::string& text, float scaleX, float tracking, int pad) {
    FT_Face f = open(face);
    FT_Set_Char_Size(f, 0, (FT_F26Dot6)(pixels * 64), 72, 72);
    FT_Matrix matrix = {(FT_Fixed)(scaleX * 65536), 0, 0, 65536};

    // First pass: the pen run and the ink box; second: the bitmaps.
    struct Placed {
        float x;
        unsigned char ch;
    };
    std::vector<Placed> placed;
    float pen = 0;
    FT_UInt previous = 0;
    for (unsigned char ch : text) {
        FT_UInt index = FT_Get_Char_Index(f, ch);
        if (previous && index && FT_HAS_KERNING(f)) {
            FT_Vector k;
            FT_Get_Kerning(f, previous, index, FT_KERNING_UNFITTED, &k);
            pen += k.x / 64.0f * scaleX;
        }
        placed.push_back({pen, ch});
        FT_Load_Glyph(f, index, FT_LOAD_NO_HINTING);
        pen += f->glyph->advance.x / 64.0f * scaleX + tracking;
        previous = index;
    }
    float ascender = f->size->metrics.ascender / 64.0f, descender = f->size->metrics.descender / 64.0f;
    int width = (int)std::ceil(pen + 2 * pad + pixels * 0.5f);
    int height = (int)std::ceil(ascender - descender + 2 * pad);
    TextMask out;
    out.mask = Mask(width, height);
    out.baseline = pad + (int)std::ceil(ascender);
    out.advance = pen;
    out.left = pad + (int)std::ceil(pixels * 0.25f);
    for (const Placed& g : placed) {
        float fx = out.left + g.x;
        int ix = (int)std::floor(fx);
        FT_Vector delta = {(FT_Pos)((fx - ix) * 64), 0};
        FT_Set_Transform(f, &matrix, &delta);
        if (FT_Load_Char(f, g.ch, FT_LOAD_RENDER | FT_LOAD_NO_HINTING) != 0) continue;
        FT_Bitmap& bm = f->glyph->bitmap;
        int ox = ix + f->glyph->bitmap_left, oy = out.baseline - f->glyph->bitmap_top;
        for (unsigned int r = 0; r < bm.rows; r++)
            for (unsigned int col = 0; col < bm.width; col++) {
                int x = ox + (int)col, y = oy + (int)r;
                if (x < 0 || y < 0 || x >= width || y >= height) continue;
                float a = bm.buffer[r * bm.pitch + col] / 255.0f;
                out.mask.ref(x, y) = std::min(1.0f, out.mask.at(x, y) + a);
            }
    }
    FT_Set_Transform(f, nullptr, nullptr);
    return out;
}

static int alignedLeft(const TextMask& t, float x, Align align) {
    float start = x;
    if (align == CENTER) start = x - t.advance / 2;
    if (align == RIGHT) start = x - t.advance;
    return (int)std::lround(start) - t.left;
}

void drawText(Canvas& c, FontFace face, float pixels, float x, float y, const std::string& text, Color colour,
              Align align, float scaleX, float tracking) {
    TextMask t = renderText(face, pixels, text, scaleX, tracking, 2);
    c.drawMask(t.mask, alignedLeft(t, x, align), (int)std::lround(y) - t.baseline, colour);
}

float drawFancyText(Canvas& c, FontFace face, float pixels, float x, float y, const std::string& text, Color top,
                    Color bottom, Color outline, float outlineWidth, Align align, float scaleX, float tracking,
                    float shadowBlur, float shadowOffset) {
    int pad = (int)std::ceil(outlineWidth + shadowBlur * 2 + shadowOffset + 2);
    TextMask t = renderText(face, pixels, text, scaleX, tracking, pad);
    int ox = alignedLeft(t, x, align), oy = (int)std::lround(y) - t.baseline;
    Mask grown = outlineWidth > 0 ? t.mask.dilated(outlineWidth) : t.mask;
    if (shadowBlur > 0 || shadowOffset > 0)
        c.shadow(grown, ox + (int)shadowOffset, oy + (int)shadowOffset, shadowBlur, {0, 0, 0, 0.6f});
    if (outlineWidth > 0) c.drawMask(grown, ox, oy, outline);
    int x0, y0, x1, y1;
    t.mask.bounds(x0, y0, x1, y1);
    for (int yy = 0; yy < t.mask.h; yy++)
        for (int xx = 0; xx < t.mask.w; xx++) {
            float a = t.mask.at(xx, yy);
            if (a <= 0) continue;
            float k = y1 > y0 ? clamp01((yy - y0) / (float)(y1 - y0)) : 0;
            c.blend(ox + xx, oy + yy, mix(top, bottom, k), a);
        }
    return t.advance;
}

}  // namespace gen

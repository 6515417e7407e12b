// The texture font: a 16 x 16 grid of glyph cells, white with coverage in alpha.
//
// The game draws a glyph cell onto a quad 2*size high and 2*size/1.2 wide and
// moves the pen 0.75*size, which is 0.45 of a cell's width: the text is
// monospaced. On a 4:3 screen the quad comes out 1.11 times wider than the
// square cell, so the letters are drawn 0.9 as wide to look right there, and
// glyphs too wide for the pitch (m, w, M, W, @...) are squeezed to fit it.

#include <cstdio>

#include "datagen/canvas.h"
#include "datagen/content.h"
#include "datagen/text.h"

namespace gen {

namespace {

const float kEm = 45.0f;            // pixels per em inside a 64-pixel cell
const float kAspect = 0.9f;         // horizontal squeeze for the 4:3 quad
const float kPitch = 0.45f * kFontCell;
const float kMaxInk = 0.88f * kPitch;  // widest ink, so neighbours keep a gap

bvw::RGBA8Image makeFont() {
    const int side = 16 * kFontCell;
    Mask atlas(side, side);
    for (int c = 32; c <= 126; c++) {
        std::string s(1, (char)c);
        TextMask t = renderText(SANS, kEm, s, kAspect, 0, 8);
        int x0, y0, x1, y1;
        t.mask.bounds(x0, y0, x1, y1);
        if (x1 - x0 > kMaxInk) {
            t = renderText(SANS, kEm, s, kAspect * kMaxInk / (x1 - x0), 0, 8);
            t.mask.bounds(x0, y0, x1, y1);
        }
        if (x1 <= x0) continue;  // the space
        int cellx = (c % 16) * kFontCell, celly = (c / 16) * kFontCell;
        // Ink centred across the cell; the baseline at the same row in every cell.
        int ox = cellx + (int)std::lround(kFontCell / 2.0f - (x0 + x1) / 2.0f);
        int oy = celly + kFontBaseline - t.baseline;
        for (int y = y0; y < y1; y++)
            for (int x = x0; x < x1; x++) {
                int ax = ox + x, ay = oy + y;
                // Kept inside its own cell whatever the face does.
                if (ax < cellx + kFontMargin || ax >= cellx + kFontCell - kFontMargin || ay < celly + kFontMargin ||
                    ay >= celly + kFontCell - kFontMargin)
                    continue;
                atlas.ref(ax, ay) = t.mask.at(x, y);
            }
    }
    Canvas canvas(side, side);
    canvas.drawMask(atlas, 0, 0, {1, 1, 1, 1});
    return canvas.toRGBA8({1, 1, 1, 0});
}

}  // namespace

void fontPictures(std::vector<Picture>& out) {
    out.push_back({"Fonts/Arial.tga", 32, true, makeFont});
}

}  // namespace gen

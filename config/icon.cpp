// brontevalle-icon: the desktop icon, painted with the content generator's
// painter in the splash picture's colours, saved as a PNG, or as the C++
// source of the game window's own icon.
//
//   brontevalle-icon <file.png> <size>
//   brontevalle-icon --source <file.cpp> <size>

#include <gdk-pixbuf/gdk-pixbuf.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "datagen/canvas.h"
#include "datagen/text.h"
#include "datagen/theme.h"

using namespace gen;

namespace {

// Painted at 256 (the layout's own size) or, for the larger icons, at twice
// that, then scaled: scaling up would blur the letter.
Canvas paint(int S) {
    const float k = S / 256.0f;
    // The evening valley of the splash, cut to a rounded tile.
    Canvas scene = valleyScene(4 * S, 3 * S, 11).resized(S * 4 / 3, S);
    Canvas c(S, S);
    const float r = 44 * k, m = 8 * k;
    c.paintAll([&](float x, float y) {
        float cov = cover(sdBox(x, y, S / 2.0f, S / 2.0f, S / 2.0f - m, S / 2.0f - m, r));
        Color p = scene.get((int)x + S / 6, (int)y);
        return withAlpha(p, cov);
    });
    c.frame(m, m, S - m, S - m, 4 * k, rgb(0x2a0c05, 0.85f), r);
    checkerStripe(c, m + 10 * k, 176 * k, S - m - 10 * k, 192 * k, 8 * k);
    drawFancyText(c, SANS_OBLIQUE_BOLD, 170 * k, S / 2.0f + 4 * k, 158 * k, "B", rgb(0xffe27a), rgb(0xff7a1a),
                  rgb(0x2a0c05), 7 * k, CENTER, 1, 0, 8 * k, 5 * k);
    return c;
}

// The pixels as a C++ array the game is built with, so that its window has
// the icon wherever the game runs from.
bool writeSource(const char* path, const bvw::RGBA8Image& image) {
    FILE* f = fopen(path, "w");
    if (!f) return false;
    fprintf(f, "// Made by brontevalle-icon at build time: the game window's icon, %dx%d RGBA.\n\n", image.width,
            image.height);
    fprintf(f, "extern const int bvWindowIconSize = %d;\n", image.width);
    fprintf(f, "extern const unsigned char bvWindowIcon[] = {");
    for (size_t i = 0; i < image.pixels.size(); i++)
        fprintf(f, "%s%u,", i % 24 ? "" : "\n    ", (unsigned)image.pixels[i]);
    fprintf(f, "\n};\n");
    return fclose(f) == 0;
}

}  // namespace

int main(int argc, char** argv) {
    const bool source = argc == 4 && std::string(argv[1]) == "--source";
    if (source) argv++, argc--;
    if (argc != 3 || atoi(argv[2]) < 16) {
        fprintf(stderr, "usage: brontevalle-icon [--source] <file.png|file.cpp> <size>\n");
        return 2;
    }
    const int size = atoi(argv[2]);
    bvw::RGBA8Image image = paint(size > 256 ? 512 : 256).resized(size, size).toRGBA8();
    if (source) {
        if (writeSource(argv[1], image)) return 0;
        fprintf(stderr, "brontevalle-icon: cannot write %s\n", argv[1]);
        return 1;
    }
    GdkPixbuf* pixbuf = gdk_pixbuf_new_from_data(image.pixels.data(), GDK_COLORSPACE_RGB, TRUE, 8, image.width,
                                                 image.height, image.width * 4, nullptr, nullptr);
    GError* error = nullptr;
    bool ok = gdk_pixbuf_save(pixbuf, argv[1], "png", &error, nullptr);
    g_object_unref(pixbuf);
    if (!ok) {
        fprintf(stderr, "brontevalle-icon: cannot write %s: %s\n", argv[1], error->message);
        g_error_free(error);
        return 1;
    }
    return 0;
}

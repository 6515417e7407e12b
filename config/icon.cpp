// brontevalle-icon: the desktop icon, painted with the content generator's
// painter in the splash picture's colours, saved as a PNG.
//
//   brontevalle-icon <file.png> <size>

#include <gdk-pixbuf/gdk-pixbuf.h>

#include <cstdio>
#include <cstdlib>

#include "datagen/canvas.h"
#include "datagen/text.h"
#include "datagen/theme.h"

using namespace gen;

namespace {

const int S = 256;  // painted at this size, then scaled

Canvas paint() {
    // The evening valley of the splash, cut to a rounded tile.
    Canvas scene = valleyScene(4 * S, 3 * S, 11).resized(S * 4 / 3, S);
    Canvas c(S, S);
    const float r = 44, m = 8;
    c.paintAll([&](float x, float y) {
        float k = cover(sdBox(x, y, S / 2.0f, S / 2.0f, S / 2.0f - m, S / 2.0f - m, r));
        Color p = scene.get((int)x + S / 6, (int)y);
        return withAlpha(p, k);
    });
    c.frame(m, m, S - m, S - m, 4, rgb(0x2a0c05, 0.85f), r);
    checkerStripe(c, m + 10, 176, S - m - 10, 192, 8);
    drawFancyText(c, SANS_OBLIQUE_BOLD, 170, S / 2.0f + 4, 158, "B", rgb(0xffe27a), rgb(0xff7a1a), rgb(0x2a0c05), 7,
                  CENTER, 1, 0, 8, 5);
    return c;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3 || atoi(argv[2]) < 16) {
        fprintf(stderr, "usage: brontevalle-icon <file.png> <size>\n");
        return 2;
    }
    const int size = atoi(argv[2]);
    bvw::RGBA8Image image = paint().resized(size, size).toRGBA8();
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

// TGA files from RGBA pixels, plain or run-length encoded.

#include "writers/tga.h"

#include <cstdio>
#include <cstring>

namespace bvw {

std::vector<std::uint8_t> encodeTGA(const RGBA8Image& image, int bpp, bool rle) {
    const int bytespp = bpp == 32 ? 4 : 3;
    std::vector<std::uint8_t> out = {0, 0, std::uint8_t(rle ? 10 : 2), 0, 0, 0, 0, 0, 0, 0, 0, 0};
    out.push_back(std::uint8_t(image.width & 255));
    out.push_back(std::uint8_t(image.width >> 8));
    out.push_back(std::uint8_t(image.height & 255));
    out.push_back(std::uint8_t(image.height >> 8));
    out.push_back(std::uint8_t(bpp == 32 ? 32 : 24));
    out.push_back(std::uint8_t(bpp == 32 ? 8 : 0));  // alpha bits; origin bottom left

    // File order: the bottom row first, blue-green-red(-alpha) pixels.
    std::vector<std::uint8_t> body;
    body.reserve((size_t)image.width * image.height * bytespp);
    for (int y = image.height - 1; y >= 0; y--) {
        const std::uint8_t* row = &image.pixels[(size_t)y * image.width * 4];
        for (int x = 0; x < image.width; x++) {
            const std::uint8_t* p = row + x * 4;
            body.push_back(p[2]);
            body.push_back(p[1]);
            body.push_back(p[0]);
            if (bytespp == 4) body.push_back(p[3]);
        }
    }
    if (!rle) {
        out.insert(out.end(), body.begin(), body.end());
        return out;
    }

    // Packets never cross a row end, which is what most readers expect; runs of
    // two or more equal pixels become run packets, the rest raw packets.
    const size_t count = (size_t)image.width * image.height;
    auto same = [&](size_t a, size_t b) { return memcmp(&body[a * bytespp], &body[b * bytespp], bytespp) == 0; };
    for (size_t row = 0; row < count; row += image.width) {
        size_t end = row + image.width;
        size_t i = row;
        while (i < end) {
            size_t run = 1;
            while (i + run < end && run < 128 && same(i, i + run)) run++;
            if (run >= 2) {
                out.push_back(std::uint8_t(127 + run));
                out.insert(out.end(), &body[i * bytespp], &body[i * bytespp] + bytespp);
                i += run;
                continue;
            }
            size_t raw = 1;
            while (i + raw < end && raw < 128 && !(i + raw + 1 < end && same(i + raw, i + raw + 1))) raw++;
            out.push_back(std::uint8_t(raw - 1));
            out.insert(out.end(), &body[i * bytespp], &body[(i + raw) * bytespp]);
            i += raw;
        }
    }
    return out;
}

bool writeTGA(const std::string& path, const RGBA8Image& image, int bpp, bool rle) {
    std::vector<std::uint8_t> bytes = encodeTGA(image, bpp, rle);
    FILE* f = fopen(path.c_str(), "wb");
    if (!f) return false;
    bool ok = fwrite(bytes.data(), 1, bytes.size(), f) == bytes.size();
    return fclose(f) == 0 && ok;
}

}  // namespace bvw

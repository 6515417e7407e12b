#ifndef BV_WRITERS_TGA_H
#define BV_WRITERS_TGA_H

#include <cstdint>
#include <string>
#include <vector>

namespace bvw {

// Pixels as the generator draws them: rows from the top of the picture down,
// four bytes per pixel in the order red, green, blue, alpha.
struct RGBA8Image {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> pixels;  // width * height * 4
};

// The TGA bytes of a true-colour picture with the usual bottom-left origin:
// 24 bits drops alpha, 32 bits keeps it (and says so in the descriptor).
// With rle the pixel data is run-length encoded (image type 10), otherwise raw (type 2).
std::vector<std::uint8_t> encodeTGA(const RGBA8Image& image, int bpp, bool rle);

// Writes encodeTGA's bytes to path; false when the file cannot be written.
bool writeTGA(const std::string& path, const RGBA8Image& image, int bpp, bool rle);

}  // namespace bvw

#endif

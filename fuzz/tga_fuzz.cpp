// TGA pictures: the byte decoding the texture loader runs before its upload.

#include <cstdint>
#include <cstdlib>

#include "assets/texture.h"
#include "fuzzinput.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static bvfuzz::MemoryFile file;
    file.fill(data, size);
    FILE* f = fopen(file.path(), "rb");
    if (!f) return 0;
    sTGAImage image;
    eTGAResult result = decodeTGA(f, &image);
    fclose(f);
    if (result == TGA_OK) {
        // What the upload is told it may read.
        BVFUZZ_REQUIRE(image.bpp == 24 || image.bpp == 32);
        BVFUZZ_REQUIRE(image.width >= 1 && image.width <= TGA_MAXSIDE);
        BVFUZZ_REQUIRE(image.height >= 1 && image.height <= TGA_MAXSIDE);
        BVFUZZ_REQUIRE(image.size == image.width * image.height * image.bpp / 8);
        BVFUZZ_REQUIRE(image.data != nullptr);
        volatile unsigned char sink = image.data[0] ^ image.data[image.size - 1];
        (void)sink;
    } else {
        BVFUZZ_REQUIRE(result == TGA_BADHEADER || image.data == nullptr);
    }
    free(image.data);
    return 0;
}

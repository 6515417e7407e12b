// A picture file read by the game's own TGA decoder, the test failing where the decoder does.
#ifndef BV_TESTS_SUPPORT_DECODE_H
#define BV_TESTS_SUPPORT_DECODE_H

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "assets/texture.h"

namespace bvtest {

inline sTGAImage decodeFile(const std::string& path) {
    sTGAImage image{};
    FILE* f = fopen(path.c_str(), "rb");
    EXPECT_NE(f, nullptr) << path;
    if (!f) return image;
    EXPECT_EQ(decodeTGA(f, &image), TGA_OK) << path;
    fclose(f);
    return image;
}

}  // namespace bvtest

#endif

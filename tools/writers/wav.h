#ifndef BV_WRITERS_WAV_H
#define BV_WRITERS_WAV_H

#include <cstdint>
#include <string>
#include <vector>

namespace bvw {

// Canonical 16-bit PCM WAV bytes; samples interleaved when channels is 2.
std::vector<std::uint8_t> encodeWAV(const std::vector<std::int16_t>& samples, int channels, int rate);
bool writeWAV(const std::string& path, const std::vector<std::int16_t>& samples, int channels, int rate);

// -1..1 floats to 16-bit samples, clamped, rounded to nearest.
std::vector<std::int16_t> toPCM16(const std::vector<float>& samples);

}  // namespace bvw

#endif

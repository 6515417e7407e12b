// 16-bit PCM WAV files from samples.

#include "writers/wav.h"

#include <cmath>
#include <cstdio>

namespace bvw {

namespace {
void put16(std::vector<std::uint8_t>& out, unsigned v) {
    out.push_back(std::uint8_t(v & 255));
    out.push_back(std::uint8_t((v >> 8) & 255));
}
void put32(std::vector<std::uint8_t>& out, unsigned long v) {
    put16(out, unsigned(v & 0xffff));
    put16(out, unsigned((v >> 16) & 0xffff));
}
void tag(std::vector<std::uint8_t>& out, const char* t) {
    out.insert(out.end(), t, t + 4);
}
}  // namespace

std::vector<std::uint8_t> encodeWAV(const std::vector<std::int16_t>& samples, int channels, int rate) {
    std::vector<std::uint8_t> out;
    unsigned long data = samples.size() * 2;
    tag(out, "RIFF");
    put32(out, 36 + data);
    tag(out, "WAVE");
    tag(out, "fmt ");
    put32(out, 16);
    put16(out, 1);  // PCM
    put16(out, unsigned(channels));
    put32(out, (unsigned long)rate);
    put32(out, (unsigned long)rate * channels * 2);
    put16(out, unsigned(channels * 2));
    put16(out, 16);
    tag(out, "data");
    put32(out, data);
    for (std::int16_t s : samples) put16(out, (std::uint16_t)s);
    return out;
}

bool writeWAV(const std::string& path, const std::vector<std::int16_t>& samples, int channels, int rate) {
    std::vector<std::uint8_t> bytes = encodeWAV(samples, channels, rate);
    FILE* f = fopen(path.c_str(), "wb");
    if (!f) return false;
    bool ok = fwrite(bytes.data(), 1, bytes.size(), f) == bytes.size();
    return fclose(f) == 0 && ok;
}

std::vector<std::int16_t> toPCM16(const std::vector<float>& samples) {
    std::vector<std::int16_t> out(samples.size());
    for (size_t i = 0; i < samples.size(); i++) {
        float v = samples[i] * 32767.0f;
        if (v > 32767.0f) v = 32767.0f;
        if (v < -32768.0f) v = -32768.0f;
        out[i] = (std::int16_t)std::lround(v);
    }
    return out;
}

}  // namespace bvw

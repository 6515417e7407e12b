#ifndef BV_DATAGEN_NOISE_H
#define BV_DATAGEN_NOISE_H

// Deterministic randomness for the generator: the same seed gives the same
// bytes on every run, so nothing here may depend on the library's distributions.

#include <cstdint>

namespace gen {

class Rng {
public:
    explicit Rng(std::uint64_t seed) : s_(seed * 0x9E3779B97F4A7C15ull + 0x632BE59BD9B4E019ull) {}
    std::uint64_t next() {
        std::uint64_t z = (s_ += 0x9E3779B97F4A7C15ull);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
        return z ^ (z >> 31);
    }
    float uniform() { return (float)((next() >> 40) * (1.0 / 16777216.0)); }  // [0, 1)
    float range(float a, float b) { return a + (b - a) * uniform(); }
    int below(int n) { return (int)(uniform() * n) % n; }
    float gauss();  // about normal, mean 0, deviation 1

private:
    std::uint64_t s_;
};

float hash01(int x, int y, std::uint32_t seed);
// Smooth value noise in 0..1 that repeats every `period` lattice cells (0: never).
float valueNoise(float x, float y, int period, std::uint32_t seed);
// Sum of octaves, each twice the frequency and `gain` the amplitude; 0..1.
float fbm(float x, float y, int octaves, int period, std::uint32_t seed, float gain = 0.5f);
// Distance to the nearest of a repeating grid of jittered points (cellular noise), and the cell id.
float cellular(float x, float y, int period, std::uint32_t seed, std::uint32_t* id = nullptr);
// Distance from the border between the two nearest cells (0 on the border).
float cellEdge(float x, float y, int period, std::uint32_t seed);

}  // namespace gen

#endif

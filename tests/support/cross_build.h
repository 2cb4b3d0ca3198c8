// Digests and pseudo-random numbers that come out the same on every build, for results that
// one build records and another must reproduce.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>

constexpr std::uint64_t kFnv1aStart = 0xcbf29ce484222325u;

// FNV-1a, 64 bits.
inline std::uint64_t Fnv1a(const void* data, std::size_t size, std::uint64_t digest = kFnv1aStart) {
    const auto* bytes = static_cast<const unsigned char*>(data);
    for (std::size_t i = 0; i < size; ++i) digest = (digest ^ bytes[i]) * 0x100000001b3u;
    return digest;
}

// SplitMix64, mapped to numbers by hand: the standard distributions leave their mapping to
// the library.
class SplitMix64 {
public:
    explicit SplitMix64(std::uint64_t seed) : state_(seed) {}

    std::uint64_t Bits() {
        std::uint64_t z = (state_ += 0x9e3779b97f4a7c15u);
        z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9u;
        z = (z ^ (z >> 27)) * 0x94d049bb133111ebu;
        return z ^ (z >> 31);
    }
    // In [0, 1), 53 random bits.
    double Unit() { return static_cast<double>(Bits() >> 11) * 0x1p-53; }
    double Uniform(double lo, double hi) { return lo + (hi - lo) * Unit(); }
    int Integer(int lo, int hi) {
        return lo + static_cast<int>(Bits() % static_cast<std::uint64_t>(hi - lo + 1));
    }
    // Magnitude spread evenly over the binades 2^lo .. 2^hi, either sign.
    double Binades(int lo, int hi, bool negativeToo = true) {
        // One draw per statement: the order of a call's arguments is the compiler's choice.
        const int e = Integer(lo, hi - 1);
        const double v = std::ldexp(1.0 + Unit(), e);
        return negativeToo && (Bits() & 1) ? -v : v;
    }

private:
    std::uint64_t state_;
};

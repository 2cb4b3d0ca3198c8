// Which span fillers the rasterizer runs: plain C++, 4 lanes of SSE2 or 8 lanes of AVX2. All
// three write the same bytes; only their speed differs.
#pragma once

#include <cstdint>

enum class SimdPath : std::uint8_t { Scalar, Sse2, Avx2 };
inline constexpr int kSimdPathCount = 3;
// Indexed by SimdPath; also the values TESSERA_SIMD takes.
inline constexpr const char* kSimdPathNames[kSimdPathCount] = {"scalar", "sse2", "avx2"};

// Whether this build and processor can run `path`.
bool SimdPathSupported(SimdPath path);

// The path new contexts take: the widest the processor has, or the one the environment
// variable TESSERA_SIMD names if it is supported. Decided once, when the module loads.
SimdPath DefaultSimdPath();

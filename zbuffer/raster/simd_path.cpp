// Processor check and the TESSERA_SIMD override, evaluated once at load.
#include "zbuffer/raster/simd_path.h"

#include <cstdlib>
#include <cstring>

namespace {

bool Detect(SimdPath path) {
#if defined(__x86_64__) || defined(__i386__)
    __builtin_cpu_init(); // may run before the runtime's own constructors
    switch (path) {
    case SimdPath::Scalar:
        return true;
    case SimdPath::Sse2:
        return __builtin_cpu_supports("sse2");
    case SimdPath::Avx2:
        return __builtin_cpu_supports("avx2");
    }
    return false;
#else
    return path == SimdPath::Scalar;
#endif
}

// Function statics, so that contexts built during static initialisation see the answer too.
const bool* Supported() {
    static const bool supported[kSimdPathCount] = {Detect(SimdPath::Scalar), Detect(SimdPath::Sse2),
                                                   Detect(SimdPath::Avx2)};
    return supported;
}

SimdPath Choose() {
    const bool* supported = Supported();
    if (const char* forced = std::getenv("TESSERA_SIMD")) {
        for (int i = 0; i < kSimdPathCount; ++i)
            if (std::strcmp(forced, kSimdPathNames[i]) == 0 && supported[i])
                return static_cast<SimdPath>(i);
    }
    for (int i = kSimdPathCount - 1; i > 0; --i)
        if (supported[i]) return static_cast<SimdPath>(i);
    return SimdPath::Scalar;
}

} // namespace

bool SimdPathSupported(SimdPath path) {
    const auto i = static_cast<int>(path);
    return i >= 0 && i < kSimdPathCount && Supported()[i];
}

SimdPath DefaultSimdPath() {
    static const SimdPath chosen = Choose();
    return chosen;
}

namespace {
// Decided when the module loads, not in the middle of the first frame.
[[maybe_unused]] const SimdPath kChosenAtLoad = DefaultSimdPath();
} // namespace

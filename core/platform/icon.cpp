// Icon images: what the platforms share is the pixel rule of monochrome masks.
#include "core/platform/icon.h"

namespace q5plat {
namespace {

// AND 1, XOR 0: transparent; otherwise opaque, white where XOR is set.
[[maybe_unused]] std::uint32_t MaskPixel(bool andBit, bool xorBit) {
    if (andBit && !xorBit) return 0;
    return xorBit ? 0xFFFFFFFFu : 0xFF000000u;
}

[[maybe_unused]] bool MaskBit(const std::uint8_t* mask, std::int32_t stride, std::int32_t x,
                              std::int32_t y) {
    return (mask[y * stride + x / 8] & (0x80 >> (x % 8))) != 0;
}

} // namespace
} // namespace q5plat

#if defined(_WIN32)
#include "core/platform/win32/icon.inc"
#elif defined(__unix__) || defined(__APPLE__)
#include "core/platform/posix/icon.inc"
#else
#error "icons: unknown platform"
#endif

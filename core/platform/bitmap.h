// Device-independent bitmap sections: the colour surfaces the driver renders into.
#pragma once

#include "core/platform/types.h"

namespace q5plat {

// Row stride in bytes of a device-independent bitmap: rows padded to whole 32-bit words.
// Only the low 24 bits of the bit count enter the product.
constexpr std::int32_t DibStride(std::int32_t bitsPerPixel, std::int32_t width) {
    return ((static_cast<std::int32_t>(bitsPerPixel & 0xFFFFFF) * width + 31) / 32) * 4;
}

// A bottom-up 32-bit section of width x height (300 pixels per metre, no colour table) made
// on the screen's device context; null on failure.
q5_HBITMAP CreateDibSection32(std::int32_t width, std::int32_t height);
// The section's pixel memory, read from the bitmap object.
void* DibSectionBits(q5_HBITMAP bitmap);
std::int32_t DibSectionStride(q5_HBITMAP bitmap);
bool DeleteBitmap(q5_HBITMAP bitmap);

} // namespace q5plat

// Nearest-texel fetch of the bound texture, with wrapping, from its 32-bit texels.
#pragma once

#include "zbuffer/raster/fixed_point.h"
#include "zbuffer/raster/raster_context.h"

#include <cstddef>
#include <cstring>

// n mod size for 0 <= n < 2^20 without dividing: the float quotient is off by at most one
// there, and the remainder's range corrects it. Products stay below 2^21, exact in a float.
// A power-of-two size wraps by its mask (size - 1) instead; -1 when there is none.
inline std::int32_t WrapTexelIndex(std::int32_t n, std::int32_t size, float inverse,
                                   std::int32_t mask = -1) {
    if (mask >= 0) return n & mask;
    const auto q = static_cast<std::int32_t>(static_cast<float>(n) * inverse);
    std::int32_t r =
        n - static_cast<std::int32_t>(static_cast<float>(q) * static_cast<float>(size));
    r += r < 0 ? size : 0;
    r -= r >= size ? size : 0;
    return r;
}

// The low 20 integer bits of a 20.12 position.
inline std::int32_t TexelIndexOf(std::int32_t position) {
    return static_cast<std::int32_t>((static_cast<std::uint32_t>(position) >> kTexelFracBits) &
                                     kTexelIndexMask);
}

// The texel at a 20.12 position, row 0 at the top of the image, as 0xAARRGGBB.
inline std::uint32_t FetchTexel(const TexelGrid& g, std::int32_t u, std::int32_t v) {
    const std::int32_t x = WrapTexelIndex(TexelIndexOf(u), g.width, g.inverseWidth, g.widthMask);
    const std::int32_t y = WrapTexelIndex(TexelIndexOf(v), g.height, g.inverseHeight, g.heightMask);
    std::uint32_t texel;
    std::memcpy(&texel, g.top + static_cast<std::ptrdiff_t>(y) * g.pitch + x, sizeof texel);
    return texel;
}

// The bound texture's fetch, for callers that hold the context. Only 32-bit pictures carry
// alpha; 24-bit ones give alpha 0 and 8-bit ones the palette entry's reserved byte.
std::uint32_t FetchBoundTexel(const RasterContext& rc, std::int32_t u, std::int32_t v);

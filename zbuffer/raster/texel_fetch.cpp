// Texel fetches: integer part masked to 20 bits, wrapped only when out of range.
#include "zbuffer/raster/texel_fetch.h"

#include "zbuffer/raster/fixed_point.h"

#include <cstddef>

namespace {

const std::uint8_t* TexelAddress(const RasterContext& rc, std::int32_t u, std::int32_t v) {
    std::uint32_t x = (static_cast<std::uint32_t>(u) >> kTexelFracBits) & kTexelIndexMask;
    std::uint32_t y = (static_cast<std::uint32_t>(v) >> kTexelFracBits) & kTexelIndexMask;
    if (x > static_cast<std::uint32_t>(rc.texMaxX)) x %= static_cast<std::uint32_t>(rc.texWidth);
    if (y > static_cast<std::uint32_t>(rc.texMaxY)) y %= static_cast<std::uint32_t>(rc.texHeight);
    return rc.texRow0 +
           static_cast<std::ptrdiff_t>(rc.texMaxY - static_cast<std::int32_t>(y)) * rc.texPitch +
           static_cast<std::ptrdiff_t>(x) * rc.texelBytes;
}

std::uint32_t LoadBgra(const std::uint8_t* p) {
    return p[0] | static_cast<std::uint32_t>(p[1]) << 8 | static_cast<std::uint32_t>(p[2]) << 16 |
           static_cast<std::uint32_t>(p[3]) << 24;
}

} // namespace

std::uint32_t FetchTexel32(const RasterContext& rc, std::int32_t u, std::int32_t v) {
    return LoadBgra(TexelAddress(rc, u, v));
}

std::uint32_t FetchTexel24(const RasterContext& rc, std::int32_t u, std::int32_t v) {
    const std::uint8_t* p = TexelAddress(rc, u, v);
    return p[0] | static_cast<std::uint32_t>(p[1]) << 8 | static_cast<std::uint32_t>(p[2]) << 16;
}

std::uint32_t FetchTexel8(const RasterContext& rc, std::int32_t u, std::int32_t v) {
    // The palette follows the 40-byte header.
    const std::uint8_t* palette = reinterpret_cast<const std::uint8_t*>(rc.texHeader) + 40;
    return LoadBgra(palette + static_cast<std::size_t>(*TexelAddress(rc, u, v)) * 4);
}

// Nearest-texel fetches of the bound texture, one per texel depth, with wrapping.
#pragma once

#include "zbuffer/raster/raster_context.h"

#include <cstdint>

// Each takes a 20.12 position in texels, row 0 at the top of the image, and returns
// 0xAARRGGBB. Only 32-bit texels carry alpha; 24-bit gives alpha 0 and 8-bit the palette
// entry's reserved byte.
std::uint32_t FetchTexel32(const RasterContext& rc, std::int32_t u, std::int32_t v);
std::uint32_t FetchTexel24(const RasterContext& rc, std::int32_t u, std::int32_t v);
std::uint32_t FetchTexel8(const RasterContext& rc, std::int32_t u, std::int32_t v);

// The bound texture's fetch through the context.
#include "zbuffer/raster/texel_fetch.h"

std::uint32_t FetchBoundTexel(const RasterContext& rc, std::int32_t u, std::int32_t v) {
    return FetchTexel(rc.texels, u, v);
}

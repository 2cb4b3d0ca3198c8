// Point plotting.
#include "zbuffer/raster/point_plot.h"

#include "zbuffer/raster/fixed_point.h"

#include <cstddef>

namespace {

void PlotPixel(RasterContext& rc, std::int32_t column, std::int32_t row, std::int32_t z,
               RgbBytes colour, bool testDepth) {
    if (column < 0 || row < 0 || column >= rc.clipWidth || row >= rc.clipHeight) return;
    std::int32_t* depth = rc.depthBase + static_cast<std::ptrdiff_t>(row) * (rc.depthPitch / 4) +
                          (column - rc.clipMinX);
    if (testDepth && !(z < *depth)) return;
    std::uint8_t* px =
        rc.colourBase +
        static_cast<std::ptrdiff_t>(rc.rowBias + rc.clipMinY - row) * rc.colourPitch +
        static_cast<std::ptrdiff_t>(column - rc.clipMinX) * 4;
    *depth = z;
    px[0] = colour.blue;
    px[1] = colour.green;
    px[2] = colour.red;
    px[3] = kAlphaOpaque;
}

} // namespace

void PlotPoint(RasterContext& rc, const ScreenPoint& p, RgbBytes colour, bool testDepth) {
    const std::int32_t z = p.z + rc.depthBias;
    if (!rc.doubleResolution) {
        // Truncating division: a point just left of column 0 still lands in it.
        PlotPixel(rc, p.x / kSubpixelOne, p.y / kSubpixelOne, z, colour, testDepth);
        return;
    }
    const std::int32_t column = p.x / (kSubpixelOne / 2), row = p.y / (kSubpixelOne / 2);
    for (std::int32_t j = 0; j < 2; ++j)
        for (std::int32_t i = 0; i < 2; ++i)
            PlotPixel(rc, column + i, row + j, z, colour, testDepth);
}

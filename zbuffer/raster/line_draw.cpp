// Line clipping and drawing.
#include "zbuffer/raster/line_draw.h"

#include "zbuffer/raster/edge_setup.h"
#include "zbuffer/raster/fixed_point.h"

#include <cstddef>
#include <cstdlib>

namespace {

struct LineEnd {
    std::int32_t x, y, z;
};

bool WhollyOutside(const RasterContext& rc, const LineEnd& a, const LineEnd& b) {
    return (a.x < 0 && b.x < 0) || (a.y < 0 && b.y < 0) ||
           (a.x >= rc.clipWidth && b.x >= rc.clipWidth) ||
           (a.y >= rc.clipHeight && b.y >= rc.clipHeight);
}

// Moves `moved` onto 0 or limit - 1 along one axis when it lies beyond that bound and `other`
// does not. The second coordinate and depth follow the line, anchored at `other`.
void ClipEnd(LineEnd& moved, const LineEnd& other, std::int32_t LineEnd::*axis,
             std::int32_t LineEnd::*across, std::int32_t limit) {
    std::int32_t target;
    if (moved.*axis >= limit && other.*axis < limit)
        target = limit - 1;
    else if (moved.*axis < 0 && other.*axis >= 0)
        target = 0;
    else
        return;
    const double span = static_cast<double>(moved.*axis) - other.*axis;
    const double along = static_cast<double>(target) - other.*axis;
    moved.*across = static_cast<std::int32_t>(
        other.*across + along * ((static_cast<double>(moved.*across) - other.*across) / span));
    moved.z = static_cast<std::int32_t>(other.z +
                                        along * ((static_cast<double>(moved.z) - other.z) / span));
    moved.*axis = target;
}

// Writes blue, green, red, 255 and the depth where the depth test passes.
inline void LinePixel(std::uint8_t* px, std::int32_t* depth, std::int32_t z, RgbBytes colour,
                      bool alwaysPasses) {
    if (z <= *depth || alwaysPasses) {
        px[0] = colour.blue;
        px[1] = colour.green;
        px[2] = colour.red;
        px[3] = kAlphaOpaque;
        *depth = z;
    }
}

} // namespace

bool ClipLine(const RasterContext& rc, std::int32_t& x0, std::int32_t& y0, std::int32_t& z0,
              std::int32_t& x1, std::int32_t& y1, std::int32_t& z1) {
    LineEnd a{x0, y0, z0}, b{x1, y1, z1};
    if (WhollyOutside(rc, a, b)) return true;
    ClipEnd(a, b, &LineEnd::x, &LineEnd::y, rc.clipWidth);
    ClipEnd(b, a, &LineEnd::x, &LineEnd::y, rc.clipWidth);
    ClipEnd(a, b, &LineEnd::y, &LineEnd::x, rc.clipHeight);
    ClipEnd(b, a, &LineEnd::y, &LineEnd::x, rc.clipHeight);
    x0 = a.x, y0 = a.y, z0 = a.z;
    x1 = b.x, y1 = b.y, z1 = b.z;
    return WhollyOutside(rc, a, b);
}

void DrawLine(RasterContext& rc, const ScreenPoint& from, const ScreenPoint& to, RgbBytes colour) {
    const bool wide = rc.wideLines != 0;
    const std::int32_t unit = wide && rc.doubleResolution ? kSubpixelOne / 2 : kSubpixelOne;
    std::int32_t x0 = from.x / unit, y0 = from.y / unit, z0 = from.z;
    std::int32_t x1 = to.x / unit, y1 = to.y / unit, z1 = to.z;
    if (ClipLine(rc, x0, y0, z0, x1, y1, z1)) return;
    const std::int32_t dx = x1 - x0, dy = y1 - y0;
    if (dx == 0 && dy == 0) return;

    z0 += rc.depthBias;
    z1 += rc.depthBias;
    const bool xMajor = std::abs(dx) >= std::abs(dy);
    const std::int32_t major = xMajor ? std::abs(dx) : std::abs(dy);
    const std::int32_t minor = xMajor ? std::abs(dy) : std::abs(dx);
    const std::int32_t zStep = (z1 - z0) / major, zStepRemainder = (z1 - z0) % major;

    // Walk with pointers: a step down the screen is one pitch lower in colour memory.
    const std::ptrdiff_t depthRow = rc.depthPitch / 4;
    const std::ptrdiff_t colourStepX = dx < 0 ? -4 : 4, depthStepX = dx < 0 ? -1 : 1;
    const std::ptrdiff_t colourStepY = dy < 0 ? rc.colourPitch : -rc.colourPitch;
    const std::ptrdiff_t depthStepY = dy < 0 ? -depthRow : depthRow;
    const std::ptrdiff_t colourMajor = xMajor ? colourStepX : colourStepY;
    const std::ptrdiff_t colourMinor = xMajor ? colourStepY : colourStepX;
    const std::ptrdiff_t depthMajor = xMajor ? depthStepX : depthStepY;
    const std::ptrdiff_t depthMinor = xMajor ? depthStepY : depthStepX;
    const std::int32_t yStep = dy < 0 ? -1 : 1;

    std::uint8_t* px = rc.colourBase +
                       static_cast<std::ptrdiff_t>(rc.rowBias + rc.clipMinY - y0) * rc.colourPitch +
                       static_cast<std::ptrdiff_t>(x0 - rc.clipMinX) * 4;
    std::int32_t* depth =
        rc.depthBase + static_cast<std::ptrdiff_t>(y0) * depthRow + (x0 - rc.clipMinX);
    // The steep neighbour is not checked against the row's end: at the last column it lands in
    // the first pixel of the next memory row, as wide lines always have. Only the ends of the
    // buffers themselves are guarded.
    const std::uint8_t* colourEnd =
        rc.colourBase + static_cast<std::ptrdiff_t>(rc.clipHeight) * rc.colourPitch;
    const std::int32_t* depthEnd =
        rc.depthBase + static_cast<std::ptrdiff_t>(rc.clipHeight) * depthRow;
    const bool alwaysPasses = rc.depthAlwaysPasses != 0;

    std::int32_t y = y0, z = z0, zRemainder = 0, error = -major;
    for (std::int32_t i = 0; i < major; ++i) {
        LinePixel(px, depth, z, colour, alwaysPasses);
        if (wide) {
            if (xMajor) {
                // The scanline below, while it is still inside the bitmap.
                if (y + 1 <= rc.rowBias + rc.clipMinY)
                    LinePixel(px - rc.colourPitch, depth + depthRow, z, colour, alwaysPasses);
            } else if (px + 4 < colourEnd && depth + 1 < depthEnd) {
                LinePixel(px + 4, depth + 1, z, colour, alwaysPasses);
            }
        }
        error += 2 * minor;
        if (error > 0) {
            px += colourMinor;
            depth += depthMinor;
            if (xMajor) y += yStep;
            error -= 2 * major;
        }
        px += colourMajor;
        depth += depthMajor;
        if (!xMajor) y += yStep;
        StepByRemainder(z, zRemainder, zStep, zStepRemainder, major);
    }
}

void DrawBoldLine(RasterContext& rc, const ScreenPoint& from, const ScreenPoint& to,
                  RgbBytes colour) {
    static constexpr std::int32_t kOffsets[3][2] = {{-164, -164}, {32, 32}, {-164, 128}};
    for (const auto& o : kOffsets) {
        const ScreenPoint a{from.x + o[0], from.y + o[1], from.z};
        const ScreenPoint b{to.x + o[0], to.y + o[1], to.z};
        DrawLine(rc, a, b, colour);
    }
}

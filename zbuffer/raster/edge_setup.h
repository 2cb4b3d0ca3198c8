// Polygon edges of the scanline rasterizer: building, colour and texture setup, ordering, and
// the scanline range a polygon covers.
#pragma once

#include "interface/screen_vertex.h"
#include "zbuffer/raster/fixed_point.h"
#include "zbuffer/raster/raster_context.h"

#include <cstdint>

// One non-horizontal polygon edge, walked one scanline at a time.
struct EdgeRecord {
    const ScreenVertex* top;    // end with the smaller y
    const ScreenVertex* bottom; // end with the larger y
    EdgeRecord* next;           // next edge by top y
    std::int32_t z;             // current depth, bias included
    std::int32_t zRemainder;
    std::int32_t zStep;
    std::int32_t zStepRemainder;
    std::int32_t scanlines; // at least 1
    std::int32_t x;         // 16.16
    std::int32_t xStep;
    // 16.16 colour; blended Gouraud drawing premultiplies by opacity, which overflows the
    // signed range, so these wrap as unsigned values.
    std::uint32_t r, g, b;
    std::int32_t rStep, gStep, bStep;
    std::int32_t u, v; // 20.12 texels
    std::int32_t uStep, vStep;
};

// Scanline of a 24.8 screen coordinate (arithmetic shift, so it floors).
inline std::int32_t ScanlineOf(std::int32_t y) {
    return y >> kSubpixelBits;
}

// Colours and texture positions step modulo 2^32: premultiplied colours pass the signed range
// and texture positions span all of it.
inline std::int32_t WrappedDifference(std::uint32_t from, std::uint32_t to) {
    return static_cast<std::int32_t>(to - from);
}
inline void WrappingAdd(std::int32_t& value, std::int32_t step, std::uint32_t times = 1) {
    value = static_cast<std::int32_t>(static_cast<std::uint32_t>(value) +
                                      times * static_cast<std::uint32_t>(step));
}
inline void WrappingAdd(std::uint32_t& value, std::int32_t step, std::uint32_t times = 1) {
    value += times * static_cast<std::uint32_t>(step);
}

// Exact stepping of an integer value by quotient and remainder of a division by `divisor`.
inline void StepByRemainder(std::int32_t& value, std::int32_t& remainder, std::int32_t step,
                            std::int32_t stepRemainder, std::int32_t divisor) {
    value += step;
    remainder += stepRemainder;
    // Masks, not branches: when the remainder leaves its range follows the data.
    const std::int32_t over = -static_cast<std::int32_t>(remainder >= divisor);
    value -= over;
    remainder -= divisor & over;
    const std::int32_t under = -static_cast<std::int32_t>(remainder < 0);
    value += under;
    remainder += divisor & under;
}

// The same as `count` single steps at once. The remainder stays in [0, divisor) after every
// step, so value * divisor + remainder grows by exactly step * divisor + stepRemainder.
inline void StepByRemainder(std::int32_t& value, std::int32_t& remainder, std::int32_t step,
                            std::int32_t stepRemainder, std::int32_t divisor, std::int32_t count) {
    const std::int64_t total = remainder + static_cast<std::int64_t>(count) * stepRemainder;
    std::int64_t carry = total / divisor;
    std::int64_t rest = total % divisor;
    if (rest < 0) {
        --carry;
        rest += divisor;
    }
    value = static_cast<std::int32_t>(static_cast<std::uint32_t>(value) +
                                      static_cast<std::uint32_t>(count) *
                                          static_cast<std::uint32_t>(step) +
                                      static_cast<std::uint32_t>(carry));
    remainder = static_cast<std::int32_t>(rest);
}

// Doubles the vertices in place at double resolution.
void ApplyDoubleResolution(const RasterContext& rc);

enum class PolygonReach {
    NoScanline, // fewer than two edges cross a scanline (told for triangles only)
    NoPixel,    // every span is empty or outside the frame
    Frame,      // may write pixels
};

// What the polygon can reach, from its corners alone, before any edge is built: a triangle with
// all corners in one pixel column, or all beside, above or below the frame, gives no pixel.
PolygonReach ReachOf(const RasterContext& rc);
// The scanlines of a polygon's highest and lowest corners.
struct ScanlineRange {
    std::int32_t top, bottom;
};

// The same for the triangle of three corners; its scanlines come out in `rows` as well.
PolygonReach TriangleReach(const RasterContext& rc, const ScreenVertex& a, const ScreenVertex& b,
                           const ScreenVertex& c, ScanlineRange& rows);

// Fills `edges` (room for vertexCount) with the edges that span at least one scanline, in
// polygon order. Returns how many. Expects 1 <= vertexCount <= kMaxPolygonVertices.
int SetupEdges(const RasterContext& rc, EdgeRecord* edges);

// Colour start and steps; `multiplier` is the opacity for premultiplied drawing, else 1.
void SetupEdgeColours(EdgeRecord* edges, int count, std::uint32_t multiplier);

// Texture start and steps from the vertices' u and v in the bound texture's texels.
void SetupEdgeTexture(const RasterContext& rc, EdgeRecord* edges, int count);

// 20.12 texel position of a texture coordinate, truncated; limited to 2^29 from above only.
std::int32_t TexelPosition(float coordinate, std::int32_t size);

// Links the edges into a list by ascending top y; an edge goes in front of the first listed
// edge whose top is not above its own. Returns the head.
EdgeRecord* SortEdges(EdgeRecord* edges, int count);

// Last scanline to fill. Triangles of two edges and quads leave their shared bottom scanline
// unfilled, so neighbours that share that edge do not both fill it.
std::int32_t LastScanline(const RasterContext& rc, const EdgeRecord* head, int vertexCount,
                          int edgeCount);

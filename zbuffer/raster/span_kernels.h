// The pixel loop of one scanline and what the walk hands over to it, and the sets of span loops
// and polygon walks, one per filler path that runs in lanes.
#pragma once

#include "zbuffer/raster/edge_setup.h"
#include "zbuffer/raster/raster_context.h"
#include "zbuffer/raster/span_fillers.h"

#include <cstddef>
#include <cstdint>

struct ModeTraits {
    bool gouraud;
    bool blended;
    bool textured;
    bool textureAlpha;
};

constexpr ModeTraits TraitsOf(FillMode m) {
    const auto i = static_cast<int>(m);
    const bool textured = i >= static_cast<int>(FillMode::FlatTextured);
    const bool textureAlpha = i >= static_cast<int>(FillMode::FlatTextureAlpha);
    return {i % 2 == 1, textureAlpha || i % 4 >= 2, textured, textureAlpha};
}

// Blended Gouraud colours are premultiplied by opacity on the edges; texture-alpha drawing
// weighs by the texel's alpha instead.
constexpr bool Premultiplied(ModeTraits t) {
    return t.gouraud && t.blended && !t.textureAlpha;
}

// What edge colours are multiplied by.
inline std::uint32_t ColourMultiplier(ModeTraits t, const RasterContext& rc) {
    return Premultiplied(t) ? static_cast<std::uint32_t>(rc.opacity) : 1u;
}

// The polygon's edges with what mode M reads set up, listed by top y; null, with `count`, when
// fewer than two cross a scanline.
template <FillMode M>
EdgeRecord* SetupPolygonEdges(const RasterContext& rc, EdgeRecord* edges, int& count) {
    constexpr ModeTraits T = TraitsOf(M);
    count = SetupEdges(rc, edges);
    if (count < 2) return nullptr;
    if constexpr (T.gouraud) SetupEdgeColours(edges, count, ColourMultiplier(T, rc));
    if constexpr (T.textured) SetupEdgeTexture(rc, edges, count);
    return SortEdges(edges, count);
}

// Values fixed for the whole polygon. Channels are indexed in memory order: blue, green, red.
struct PolygonConstants {
    std::uint32_t flat[3];
    std::uint32_t flatTimesOpacity[3];
    std::uint32_t opacity;
    std::uint32_t inverseOpacity;
    bool depthAlwaysPasses;
    TexelGrid texels;
};

// The visible columns of one span, interpolants at the first of them. Depth steps by quotient
// and remainder of the span's width; colours and texture positions wrap modulo 2^32.
struct SpanRun {
    std::uint8_t* colour;
    std::int32_t* depth;
    std::int32_t count; // at least 1
    std::int32_t room;  // columns from the first to the clip's right end, at least count
    std::int32_t width; // the whole span's, the depth divisor
    std::int32_t z, zRemainder, zStep, zStepRemainder;
    std::uint32_t c[3];
    std::int32_t cStep[3];
    std::int32_t u, v, uStep, vStep;
};

// Steps over `count` columns at once: the left clip.
template <FillMode M> inline void SkipColumns(SpanRun& s, std::int32_t count) {
    constexpr ModeTraits T = TraitsOf(M);
    StepByRemainder(s.z, s.zRemainder, s.zStep, s.zStepRemainder, s.width, count);
    const auto n = static_cast<std::uint32_t>(count);
    if constexpr (T.gouraud) {
        for (int k = 0; k < 3; ++k) WrappingAdd(s.c[k], s.cStep[k], n);
    }
    if constexpr (T.textured) {
        WrappingAdd(s.u, s.uStep, n);
        WrappingAdd(s.v, s.vStep, n);
    }
}

// Where scanlines land in the target, copied out of the context once per polygon so that pixel
// stores, which may alias anything, do not make the walk read it again.
struct SpanTarget {
    std::uint8_t* colourBase;
    std::int32_t* depthBase;
    std::ptrdiff_t colourPitch, depthPitch; // depth in entries
    std::int32_t colourTopRow;              // colour memory row of scanline 0: rowBias + clipMinY
    std::int32_t clipMinX, clipMinY, clipMaxX, clipMaxY;

    static SpanTarget Of(const RasterContext& rc) {
        return {rc.colourBase,
                rc.depthBase,
                rc.colourPitch,
                rc.depthPitch / 4,
                rc.rowBias + rc.clipMinY,
                rc.clipMinX,
                rc.clipMinY,
                rc.clipMaxX,
                rc.clipMaxY};
    }

    // The clip's first column of scanline y, in each buffer.
    std::uint8_t* ColourRow(std::int32_t y) const {
        return colourBase + static_cast<std::ptrdiff_t>(colourTopRow - y) * colourPitch;
    }
    std::int32_t* DepthRow(std::int32_t y) const {
        return depthBase + static_cast<std::ptrdiff_t>(y - clipMinY) * depthPitch;
    }

    // Points `s` at column `firstColumn` of the rows ColourRow and DepthRow give for a scanline.
    void Place(SpanRun& s, std::uint8_t* colourRow, std::int32_t* depthRow,
               std::int32_t firstColumn) const {
        s.colour = colourRow + static_cast<std::ptrdiff_t>(firstColumn - clipMinX) * 4;
        s.depth = depthRow + (firstColumn - clipMinX);
    }
    // The same for scanline y.
    void Place(SpanRun& s, std::int32_t y, std::int32_t firstColumn) const {
        Place(s, ColourRow(y), DepthRow(y), firstColumn);
    }
};

using SpanKernel = void (*)(const PolygonConstants& pc, const SpanRun& run);
// Draws the polygon of rc.vertexList, which reaches the frame; returns what FillPolygon does.
using PolygonWalk = int (*)(RasterContext& rc);
// Draws `count` triangles, corners[3 i .. 3 i + 2] the i-th, in turn; what FillGouraudTriangles
// does.
using TriangleBatch = void (*)(RasterContext& rc, ScreenVertex* const* corners, int count);

struct SpanKernelSet {
    SpanKernel fill[kFillModeCount]; // one span by itself, indexed by FillMode; walks inline it
    PolygonWalk walk[kFillModeCount];
    TriangleBatch gouraudTriangles;
};

inline PolygonConstants ConstantsOf(const RasterContext& rc) {
    PolygonConstants pc;
    const std::uint32_t flat[3] = {rc.flatColour.blue, rc.flatColour.green, rc.flatColour.red};
    pc.opacity = static_cast<std::uint32_t>(rc.opacity);
    pc.inverseOpacity = static_cast<std::uint32_t>(rc.inverseOpacity);
    for (int k = 0; k < 3; ++k) {
        pc.flat[k] = flat[k];
        pc.flatTimesOpacity[k] = flat[k] * pc.opacity;
    }
    pc.depthAlwaysPasses = rc.depthAlwaysPasses != 0;
    pc.texels = rc.texels;
    return pc;
}

// Null where the build has no such path.
const SpanKernelSet* Sse2SpanKernels();
const SpanKernelSet* Avx2SpanKernels();

// Polygon fillers: one template instantiated per mode and a table of the instantiations, so the
// mode is chosen once per polygon and no pixel loop branches on it.
#include "zbuffer/raster/span_fillers.h"

#include "zbuffer/raster/edge_setup.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

namespace {

struct ModeTraits {
    bool gouraud;
    bool blended;
    bool textured;
    bool textureAlpha;
};

constexpr ModeTraits TraitsOf(FillMode m) {
    switch (m) {
    case FillMode::Flat:
        return {false, false, false, false};
    case FillMode::Gouraud:
        return {true, false, false, false};
    case FillMode::FlatBlended:
        return {false, true, false, false};
    case FillMode::GouraudBlended:
        return {true, true, false, false};
    case FillMode::FlatTextured:
        return {false, false, true, false};
    case FillMode::GouraudTextured:
        return {true, false, true, false};
    case FillMode::FlatTexturedBlended:
        return {false, true, true, false};
    case FillMode::GouraudTexturedBlended:
        return {true, true, true, false};
    case FillMode::FlatTextureAlpha:
        return {false, true, true, true};
    case FillMode::GouraudTextureAlpha:
        return {true, true, true, true};
    }
    return {};
}

// Blended Gouraud colours are premultiplied by opacity on the edges; texture-alpha drawing
// weighs by the texel's alpha instead.
constexpr bool Premultiplied(ModeTraits t) {
    return t.gouraud && t.blended && !t.textureAlpha;
}

// Values fixed for the whole polygon. Channels are indexed in memory order: blue, green, red.
struct PolygonConstants {
    std::uint32_t flat[3];
    std::uint32_t flatTimesOpacity[3];
    std::uint32_t opacity;
    std::uint32_t inverseOpacity;
    bool depthAlwaysPasses;
};

// Interpolants along one span, stepped from the left edge's values at its integer column.
struct SpanState {
    std::int32_t width;
    std::int32_t z, zRemainder, zStep, zStepRemainder;
    std::uint32_t c[3];
    std::int32_t cStep[3];
    std::int32_t u, v, uStep, vStep;
};

inline std::uint32_t ColourChannel(std::uint32_t c16) {
    return (c16 >> kEdgeFracBits) & 0xFFFF;
}
inline std::uint32_t TexelChannel(std::uint32_t texel, int k) {
    return (texel >> (8 * k)) & 0xFF;
}

// Alpha of a blended write: the destination's remaining transparency shrinks by the inverse
// opacity.
inline std::uint8_t CoverageAlpha(std::uint32_t dstAlpha, std::uint32_t inverseOpacity) {
    return static_cast<std::uint8_t>((kFullCoverage - (255 - dstAlpha) * inverseOpacity) / 255);
}

// Writes the colour bytes of a pixel that passed the depth test. Returns false when the pixel,
// depth included, is to be left alone (a texel of alpha 0). Untextured blends divide by 256,
// textured ones by 255; the difference decides exact pixel values and is kept.
template <FillMode M>
inline bool ShadePixel(const RasterContext& rc, const PolygonConstants& pc, const SpanState& s,
                       std::uint8_t* px) {
    constexpr ModeTraits T = TraitsOf(M);
    std::uint32_t texel = 0;
    if constexpr (T.textured) texel = rc.sampleTexel(rc, s.u, s.v);

    if constexpr (T.textureAlpha) {
        const std::uint32_t texelAlpha = texel >> 24;
        if (texelAlpha == 0) return false;
        const std::uint32_t a = texelAlpha * pc.opacity / 255;
        for (int k = 0; k < 3; ++k) {
            const std::uint32_t c = T.gouraud ? ColourChannel(s.c[k]) : pc.flat[k];
            const std::uint32_t own = (a * c >> 8) * TexelChannel(texel, k) / 255;
            px[k] = static_cast<std::uint8_t>(a == 255 ? own : px[k] * (255 - a) / 255 + own);
        }
        px[3] = static_cast<std::uint8_t>(a);
        return true;
    } else {
        const std::uint32_t inv = pc.inverseOpacity;
        for (int k = 0; k < 3; ++k) {
            const std::uint32_t dst = px[k];
            std::uint32_t out;
            if constexpr (T.textured && T.blended && T.gouraud)
                out = (ColourChannel(s.c[k]) * TexelChannel(texel, k) / 255 + dst * inv) / 255;
            else if constexpr (T.textured && T.blended)
                out = (pc.flatTimesOpacity[k] * TexelChannel(texel, k) / 255 + dst * inv) / 255;
            else if constexpr (T.textured && T.gouraud)
                out = std::min<std::uint32_t>(TexelChannel(texel, k) * ColourChannel(s.c[k]) >> 8,
                                              255);
            else if constexpr (T.textured)
                out = TexelChannel(texel, k) * pc.flat[k] >> 8;
            else if constexpr (T.blended && T.gouraud)
                out = (ColourChannel(s.c[k]) + dst * inv) / 256;
            else if constexpr (T.blended)
                out = (pc.flatTimesOpacity[k] + dst * inv) / 256;
            else if constexpr (T.gouraud)
                out = ColourChannel(s.c[k]);
            else
                out = pc.flat[k];
            px[k] = static_cast<std::uint8_t>(out);
        }
        if constexpr (T.blended && !(T.textured && T.gouraud))
            px[3] = CoverageAlpha(px[3], inv);
        else
            px[3] = kAlphaOpaque;
        return true;
    }
}

// Steps over `count` columns at once: the left clip.
template <FillMode M> inline void SkipColumns(SpanState& s, std::int32_t count) {
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

template <FillMode M> inline void StepSpan(SpanState& s) {
    constexpr ModeTraits T = TraitsOf(M);
    StepByRemainder(s.z, s.zRemainder, s.zStep, s.zStepRemainder, s.width);
    if constexpr (T.gouraud) {
        for (int k = 0; k < 3; ++k) WrappingAdd(s.c[k], s.cStep[k]);
    }
    if constexpr (T.textured) {
        WrappingAdd(s.u, s.uStep);
        WrappingAdd(s.v, s.vStep);
    }
}

// One scanline between two active edges; the right end column is exclusive.
template <FillMode M>
void FillSpan(const RasterContext& rc, const PolygonConstants& pc, std::int32_t y,
              const EdgeRecord& a, const EdgeRecord& b) {
    constexpr ModeTraits T = TraitsOf(M);
    const EdgeRecord& l = b.x < a.x ? b : a;
    const EdgeRecord& r = b.x < a.x ? a : b;
    const std::int32_t left = l.x >> kEdgeFracBits;
    const std::int32_t right = r.x >> kEdgeFracBits;
    const std::int32_t firstColumn = std::max(left, 0);
    const std::int32_t lastColumn = std::min(right - 1, rc.clipMaxX);
    if (firstColumn > lastColumn) return;

    SpanState s;
    s.width = right - left;
    s.z = l.z;
    s.zRemainder = 0;
    s.zStep = (r.z - l.z) / s.width;
    s.zStepRemainder = (r.z - l.z) % s.width;
    if constexpr (T.gouraud) {
        const std::uint32_t lc[3] = {l.b, l.g, l.r};
        const std::uint32_t rc3[3] = {r.b, r.g, r.r};
        for (int k = 0; k < 3; ++k) {
            s.c[k] = lc[k];
            s.cStep[k] = WrappedDifference(lc[k], rc3[k]) / s.width;
        }
    }
    if constexpr (T.textured) {
        s.u = l.u;
        s.v = l.v;
        s.uStep = WrappedDifference(l.u, r.u) / s.width;
        s.vStep = WrappedDifference(l.v, r.v) / s.width;
    }
    // Columns left of the frame are stepped over, not written: no subpixel prestep.
    if (firstColumn > left) SkipColumns<M>(s, firstColumn - left);

    std::uint8_t* px = rc.colourBase +
                       static_cast<std::ptrdiff_t>(rc.rowBias + rc.clipMinY - y) * rc.colourPitch +
                       static_cast<std::ptrdiff_t>(firstColumn - rc.clipMinX) * 4;
    std::int32_t* depth = rc.depthBase +
                          static_cast<std::ptrdiff_t>(y - rc.clipMinY) * (rc.depthPitch / 4) +
                          (firstColumn - rc.clipMinX);
    for (std::int32_t x = firstColumn; x <= lastColumn; ++x, px += 4, ++depth) {
        if ((s.z <= *depth || pc.depthAlwaysPasses) && ShadePixel<M>(rc, pc, s, px)) *depth = s.z;
        StepSpan<M>(s);
    }
}

template <FillMode M> inline void StepEdge(EdgeRecord& e) {
    constexpr ModeTraits T = TraitsOf(M);
    if constexpr (T.textured) {
        WrappingAdd(e.u, e.uStep);
        WrappingAdd(e.v, e.vStep);
    }
    e.y += kSubpixelOne;
    e.x += e.xStep;
    StepByRemainder(e.z, e.zRemainder, e.zStep, e.zStepRemainder, e.scanlines);
    if constexpr (T.gouraud) {
        WrappingAdd(e.r, e.rStep);
        WrappingAdd(e.g, e.gStep);
        WrappingAdd(e.b, e.bStep);
    }
}

// Steps an edge over `count` scanlines at once.
template <FillMode M> inline void SkipScanlines(EdgeRecord& e, std::int32_t count) {
    constexpr ModeTraits T = TraitsOf(M);
    const auto n = static_cast<std::uint32_t>(count);
    if constexpr (T.textured) {
        WrappingAdd(e.u, e.uStep, n);
        WrappingAdd(e.v, e.vStep, n);
    }
    WrappingAdd(e.y, kSubpixelOne, n);
    WrappingAdd(e.x, e.xStep, n);
    StepByRemainder(e.z, e.zRemainder, e.zStep, e.zStepRemainder, e.scanlines, count);
    if constexpr (T.gouraud) {
        WrappingAdd(e.r, e.rStep, n);
        WrappingAdd(e.g, e.gStep, n);
        WrappingAdd(e.b, e.bStep, n);
    }
}

template <FillMode M> int FillPolygonIn(RasterContext& rc) {
    constexpr ModeTraits T = TraitsOf(M);
    const int vertexCount = rc.vertexCount;
    if (vertexCount <= 0 || vertexCount > kMaxPolygonVertices) return 0;
    EdgeRecord edges[kMaxPolygonVertices];
    const int count = SetupEdges(rc, edges);
    if (count < 2) return 0;
    if constexpr (T.gouraud)
        SetupEdgeColours(edges, count,
                         Premultiplied(T) ? static_cast<std::uint32_t>(rc.opacity) : 1u);
    if constexpr (T.textured) SetupEdgeTexture(rc, edges, count);

    PolygonConstants pc;
    const std::uint32_t flat[3] = {rc.flatColour.blue, rc.flatColour.green, rc.flatColour.red};
    pc.opacity = static_cast<std::uint32_t>(rc.opacity);
    pc.inverseOpacity = static_cast<std::uint32_t>(rc.inverseOpacity);
    for (int k = 0; k < 3; ++k) {
        pc.flat[k] = flat[k];
        pc.flatTimesOpacity[k] = flat[k] * pc.opacity;
    }
    pc.depthAlwaysPasses = rc.depthAlwaysPasses != 0;

    EdgeRecord* head = SortEdges(edges, count);
    EdgeRecord* a = head;
    EdgeRecord* b = head->next;
    EdgeRecord* next = b->next;
    const std::int32_t last = LastScanline(rc, head, vertexCount, count);
    for (std::int32_t y = ScanlineOf(head->top->y); y <= last; ++y) {
        // Above the frame: jump to the scanline where an edge changes hands or the frame
        // begins, whichever comes first.
        if (y < 0) {
            const std::int32_t stop = std::min(
                {ScanlineOf(a->bottom->y), ScanlineOf(b->bottom->y), std::int32_t{-1}, last});
            if (stop > y) {
                SkipScanlines<M>(*a, stop - y);
                SkipScanlines<M>(*b, stop - y);
                y = stop;
            }
        }
        if (y >= 0) FillSpan<M>(rc, pc, y, *a, *b);
        // An edge serves through its bottom scanline, then the next listed edge takes over.
        const std::int32_t nextY = y + 1;
        if (ScanlineOf(a->bottom->y) < nextY) {
            if (!next) break;
            a = next;
            next = next->next;
        }
        if (ScanlineOf(b->bottom->y) < nextY) {
            if (!next) break;
            b = next;
            next = next->next;
        }
        StepEdge<M>(*a);
        StepEdge<M>(*b);
    }
    return 1;
}

using PolygonFiller = int (*)(RasterContext&);

// Indexed by FillMode.
template <std::size_t... I>
constexpr std::array<PolygonFiller, sizeof...(I)> MakeFillerTable(std::index_sequence<I...>) {
    return {&FillPolygonIn<static_cast<FillMode>(I)>...};
}

constexpr auto kFillers = MakeFillerTable(std::make_index_sequence<kFillModeCount>{});
static_assert(kFillers.size() == kFillModeCount);
static_assert(static_cast<int>(FillMode::GouraudTextureAlpha) == kFillModeCount - 1);

} // namespace

int FillPolygon(RasterContext& rc, FillMode mode) {
    return kFillers[static_cast<std::size_t>(mode)](rc);
}

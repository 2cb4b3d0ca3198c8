// Polygon fillers: one template instantiated per mode and a table of the instantiations, so the
// mode is chosen once per polygon and no pixel loop branches on it. The plain walk is here; the
// lane paths walk polygons with their own loops.
#include "zbuffer/raster/span_fillers.h"

#include "zbuffer/raster/edge_setup.h"
#include "zbuffer/raster/span_kernels.h"
#include "zbuffer/raster/texel_fetch.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <utility>

namespace {

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

// Writes the colour bytes of a texture-alpha pixel that passed the depth test. Returns false
// when the pixel, depth included, is to be left alone (a texel of alpha 0).
template <FillMode M>
inline bool ShadeTexelAlphaPixel(const PolygonConstants& pc, const SpanRun& s, std::uint8_t* px) {
    constexpr ModeTraits T = TraitsOf(M);
    const std::uint32_t texel = FetchTexel(pc.texels, s.u, s.v);
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
}

// The pixel that every other mode writes over `dst` (blue in the low byte). Untextured blends
// divide by 256, textured ones by 255; the difference decides exact pixel values and is kept.
template <FillMode M>
inline std::uint32_t PixelValue(const PolygonConstants& pc, const SpanRun& s, std::uint32_t dst) {
    constexpr ModeTraits T = TraitsOf(M);
    std::uint32_t texel = 0;
    if constexpr (T.textured) texel = FetchTexel(pc.texels, s.u, s.v);
    const std::uint32_t inv = pc.inverseOpacity;
    std::uint32_t value = 0;
    for (int k = 0; k < 3; ++k) {
        const std::uint32_t d = (dst >> (8 * k)) & 0xFF;
        std::uint32_t out;
        if constexpr (T.textured && T.blended && T.gouraud)
            out = (ColourChannel(s.c[k]) * TexelChannel(texel, k) / 255 + d * inv) / 255;
        else if constexpr (T.textured && T.blended)
            out = (pc.flatTimesOpacity[k] * TexelChannel(texel, k) / 255 + d * inv) / 255;
        else if constexpr (T.textured && T.gouraud)
            out = std::min<std::uint32_t>(TexelChannel(texel, k) * ColourChannel(s.c[k]) >> 8, 255);
        else if constexpr (T.textured)
            out = TexelChannel(texel, k) * pc.flat[k] >> 8;
        else if constexpr (T.blended && T.gouraud)
            out = (ColourChannel(s.c[k]) + d * inv) / 256;
        else if constexpr (T.blended)
            out = (pc.flatTimesOpacity[k] + d * inv) / 256;
        else if constexpr (T.gouraud)
            out = ColourChannel(s.c[k]);
        else
            out = pc.flat[k];
        value |= (out & 0xFF) << (8 * k);
    }
    const std::uint32_t alpha = T.blended && !(T.textured && T.gouraud)
                                    ? CoverageAlpha(dst >> 24, inv)
                                    : std::uint32_t{kAlphaOpaque};
    return value | alpha << 24;
}

template <FillMode M> inline void StepSpan(SpanRun& s) {
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

// Inlined into the walk; a copy of the run, so that its values stay in registers.
template <FillMode M>
[[gnu::always_inline]] inline void ScalarPixels(const PolygonConstants& pc, SpanRun s) {
    std::uint8_t* px = s.colour;
    std::int32_t* depth = s.depth;
    for (std::int32_t i = 0; i < s.count; ++i, px += 4, ++depth) {
        const bool passes = (s.z <= *depth) | pc.depthAlwaysPasses;
        if constexpr (TraitsOf(M).textureAlpha) {
            if (passes && ShadeTexelAlphaPixel<M>(pc, s, px)) *depth = s.z;
        } else {
            // Whether a pixel passes follows the data, so it picks between the old and the
            // shaded values instead of branching.
            std::uint32_t old;
            std::memcpy(&old, px, sizeof old);
            const std::uint32_t out = passes ? PixelValue<M>(pc, s, old) : old;
            std::memcpy(px, &out, sizeof out);
            *depth = passes ? s.z : *depth;
        }
        StepSpan<M>(s);
    }
}

// One scanline between two active edges; the right end column is exclusive.
template <FillMode M>
void FillSpan(const SpanTarget& target, const PolygonConstants& pc, std::int32_t y,
              const EdgeRecord& a, const EdgeRecord& b) {
    constexpr ModeTraits T = TraitsOf(M);
    const EdgeRecord& l = b.x < a.x ? b : a;
    const EdgeRecord& r = b.x < a.x ? a : b;
    const std::int32_t left = l.x >> kEdgeFracBits;
    const std::int32_t right = r.x >> kEdgeFracBits;
    const std::int32_t firstColumn = std::max(left, 0);
    const std::int32_t lastColumn = std::min(right - 1, target.clipMaxX);
    if (firstColumn > lastColumn) return;

    SpanRun s;
    s.count = lastColumn - firstColumn + 1;
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
    target.Place(s, y, firstColumn);
    ScalarPixels<M>(pc, s);
}

template <FillMode M> inline void StepEdge(EdgeRecord& e) {
    constexpr ModeTraits T = TraitsOf(M);
    if constexpr (T.textured) {
        WrappingAdd(e.u, e.uStep);
        WrappingAdd(e.v, e.vStep);
    }
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
    WrappingAdd(e.x, e.xStep, n);
    StepByRemainder(e.z, e.zRemainder, e.zStep, e.zStepRemainder, e.scanlines, count);
    if constexpr (T.gouraud) {
        WrappingAdd(e.r, e.rStep, n);
        WrappingAdd(e.g, e.gStep, n);
        WrappingAdd(e.b, e.bStep, n);
    }
}

// The plain walk; the lane paths have their own (polygon_walk_lanes.h), which must take the
// same edges in the same order.
template <FillMode M> int WalkPolygon(RasterContext& rc) {
    const int vertexCount = rc.vertexCount;
    EdgeRecord edges[kMaxPolygonVertices];
    int count;
    EdgeRecord* head = SetupPolygonEdges<M>(rc, edges, count);
    if (!head) return 0;
    const PolygonConstants pc = ConstantsOf(rc);
    const SpanTarget target = SpanTarget::Of(rc);

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
        if (y >= 0) FillSpan<M>(target, pc, y, *a, *b);
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

template <FillMode M> int FillPolygonIn(RasterContext& rc, const SpanKernelSet* lanes) {
    if (rc.vertexCount <= 0 || rc.vertexCount > kMaxPolygonVertices) return 0;
    ApplyDoubleResolution(rc);
    const PolygonReach reach = ReachOf(rc);
    if (reach != PolygonReach::Frame) return reach == PolygonReach::NoScanline ? 0 : 1;
    if (lanes) return lanes->walk[static_cast<int>(M)](rc);
    return WalkPolygon<M>(rc);
}

using PolygonFiller = int (*)(RasterContext&, const SpanKernelSet*);

// Indexed by FillMode.
template <std::size_t... I>
constexpr std::array<PolygonFiller, sizeof...(I)> MakeFillerTable(std::index_sequence<I...>) {
    return {&FillPolygonIn<static_cast<FillMode>(I)>...};
}

constexpr auto kFillers = MakeFillerTable(std::make_index_sequence<kFillModeCount>{});
static_assert(kFillers.size() == kFillModeCount);
static_assert(static_cast<int>(FillMode::GouraudTextureAlpha) == kFillModeCount - 1);

// Indexed by SimdPath; the plain path, and a path the processor lacks, have no lanes.
const SpanKernelSet* const kKernelSets[kSimdPathCount] = {
    nullptr, SimdPathSupported(SimdPath::Sse2) ? Sse2SpanKernels() : nullptr,
    SimdPathSupported(SimdPath::Avx2) ? Avx2SpanKernels() : nullptr};

} // namespace

int FillPolygon(RasterContext& rc, FillMode mode) {
    const auto path = static_cast<std::size_t>(rc.simdPath);
    const SpanKernelSet* set = path < kSimdPathCount ? kKernelSets[path] : nullptr;
    const auto m = static_cast<std::size_t>(mode);
    return kFillers[m](rc, set);
}

void FillGouraudTriangles(RasterContext& rc, ScreenVertex* const* corners, int count) {
    const auto path = static_cast<std::size_t>(rc.simdPath);
    const SpanKernelSet* set = path < kSimdPathCount ? kKernelSets[path] : nullptr;
    rc.vertexCount = 3;
    // Doubling moves the corners, which the groups do not.
    if (set && !rc.doubleResolution) {
        set->gouraudTriangles(rc, corners, count);
        return;
    }
    ScreenVertex** const list = rc.vertexList;
    for (int i = 0; i < count; ++i) {
        rc.vertexList = const_cast<ScreenVertex**>(corners + 3 * static_cast<std::ptrdiff_t>(i));
        FillPolygon(rc, FillMode::Gouraud);
    }
    rc.vertexList = list;
}

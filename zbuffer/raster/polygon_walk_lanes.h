// The polygon walk in lanes: a triangle a block of scanlines at a time, one scanline per lane,
// and other polygons along the scalar walk's edge list with an edge's values in one vector.
// Included through triangle_batch_lanes.h by the files that build a lane path; like the span
// loops, everything here has internal linkage.
#pragma once

#include "zbuffer/raster/span_kernels_lanes.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace {

// The walk keeps an edge's x and the values that step by whole additions in one vector, so that
// picking the left edge and taking a span's differences are an operation each. Lanes: x, then
// blue, green, red, then u, v.
typedef std::uint32_t Ve __attribute__((vector_size(32)));
typedef std::int32_t Vh __attribute__((vector_size(16)));
typedef double Vd __attribute__((vector_size(32)));

struct LaneEdge {
    Ve value, step;
    std::int32_t z, zRemainder, zStep, zStepRemainder, scanlines, bottomRow;
};

template <FillMode M> LANES_FN void PackEdge(const EdgeRecord& e, LaneEdge& out) {
    constexpr ModeTraits T = TraitsOf(M);
    out.value = Ve{static_cast<std::uint32_t>(e.x)};
    out.step = Ve{static_cast<std::uint32_t>(e.xStep)};
    if constexpr (T.gouraud) {
        out.value[1] = e.b;
        out.value[2] = e.g;
        out.value[3] = e.r;
        out.step[1] = static_cast<std::uint32_t>(e.bStep);
        out.step[2] = static_cast<std::uint32_t>(e.gStep);
        out.step[3] = static_cast<std::uint32_t>(e.rStep);
    }
    if constexpr (T.textured) {
        out.value[4] = static_cast<std::uint32_t>(e.u);
        out.value[5] = static_cast<std::uint32_t>(e.v);
        out.step[4] = static_cast<std::uint32_t>(e.uStep);
        out.step[5] = static_cast<std::uint32_t>(e.vStep);
    }
    out.z = e.z;
    out.zRemainder = e.zRemainder;
    out.zStep = e.zStep;
    out.zStepRemainder = e.zStepRemainder;
    out.scanlines = e.scanlines;
    out.bottomRow = ScanlineOf(e.bottom->y);
}

LANES_FN void SkipEdge(LaneEdge& e, std::int32_t rows) {
    e.value += static_cast<std::uint32_t>(rows) * e.step;
    StepByRemainder(e.z, e.zRemainder, e.zStep, e.zStepRemainder, e.scanlines, rows);
}

// Four quotients truncated toward zero, exact: every 32-bit numerator is exact in a double, and
// a correctly rounded quotient of such integers never crosses a whole number.
LANES_FN Vh DivideLanes(Vh numerators, std::int32_t divisor) {
    return __builtin_convertvector(
        __builtin_convertvector(numerators, Vd) / static_cast<double>(divisor), Vh);
}

// One scanline between two edges; what FillSpan does, with the edges in lanes.
template <FillMode M>
[[gnu::always_inline]] LANES_FN void LaneScanline(const SpanTarget& target,
                                                  const PolygonConstants& pc, std::int32_t y,
                                                  const LaneEdge& a, const LaneEdge& b) {
    constexpr ModeTraits T = TraitsOf(M);
    const bool swap = static_cast<std::int32_t>(b.value[0]) < static_cast<std::int32_t>(a.value[0]);
    const Ve toB = Ve{} - static_cast<std::uint32_t>(swap);
    const Ve l = (b.value & toB) | (a.value & ~toB);
    const Ve r = (a.value & toB) | (b.value & ~toB);
    const std::int32_t left = static_cast<std::int32_t>(l[0]) >> kEdgeFracBits;
    const std::int32_t right = static_cast<std::int32_t>(r[0]) >> kEdgeFracBits;
    const std::int32_t firstColumn = std::max(left, 0);
    const std::int32_t lastColumn = std::min(right - 1, target.clipMaxX);
    if (firstColumn > lastColumn) return;

    SpanRun s;
    s.count = lastColumn - firstColumn + 1;
    s.room = target.clipMaxX - firstColumn + 1;
    s.width = right - left;
    const std::int32_t lz = swap ? b.z : a.z;
    const std::int32_t dz = (swap ? a.z : b.z) - lz;
    s.z = lz;
    s.zRemainder = 0;
    s.zStep = dz / s.width;
    s.zStepRemainder = dz % s.width;
    const Ve difference = r - l;
    Vh colourSteps{}, textureSteps{};
    if constexpr (T.gouraud)
        colourSteps =
            DivideLanes((Vh)__builtin_shufflevector(difference, difference, 0, 1, 2, 3), s.width);
    if constexpr (T.textured)
        textureSteps =
            DivideLanes((Vh)__builtin_shufflevector(difference, difference, 4, 5, 6, 7), s.width);
    const Ve steps = (Ve)__builtin_shufflevector(colourSteps, textureSteps, 0, 1, 2, 3, 4, 5, 6, 7);
    Ve first = l;
    // Columns left of the frame are stepped over, not written: no subpixel prestep.
    if (firstColumn > left) {
        const std::int32_t skipped = firstColumn - left;
        first += static_cast<std::uint32_t>(skipped) * steps;
        StepByRemainder(s.z, s.zRemainder, s.zStep, s.zStepRemainder, s.width, skipped);
    }
    for (int k = 0; k < 3; ++k) {
        s.c[k] = first[1 + k];
        s.cStep[k] = static_cast<std::int32_t>(steps[1 + k]);
    }
    s.u = static_cast<std::int32_t>(first[4]);
    s.v = static_cast<std::int32_t>(first[5]);
    s.uStep = static_cast<std::int32_t>(steps[4]);
    s.vStep = static_cast<std::int32_t>(steps[5]);
    target.Place(s, y, firstColumn);
    LanePixels<M>(pc, s);
}

typedef double Vdl __attribute__((vector_size(8 * kLanes)));

// a / b truncated toward zero, exact for 32-bit a: see DivideLanes.
LANES_FN Vi TruncatedQuotient(Vi a, Vi b) {
    return __builtin_convertvector(
        __builtin_convertvector(a, Vdl) / __builtin_convertvector(b, Vdl), Vi);
}

// floor(n * m / b) for b > 0 where the product needs up to 48 bits: it is exact in a double,
// the truncated quotient is exact as in DivideLanes, and the remainder, which fits 32 bits,
// comes out right modulo 2^32 and says whether truncation went up.
LANES_FN Vi FloorQuotientOfProduct(Vi n, Vi m, Vi b) {
    const Vdl product = __builtin_convertvector(n, Vdl) * __builtin_convertvector(m, Vdl);
    const Vi q = __builtin_convertvector(product / __builtin_convertvector(b, Vdl), Vi);
    const Vi r = (Vi)((Vu)n * (Vu)m - (Vu)q * (Vu)b);
    return q + (r < 0);
}

// A triangle edge's start and steps, the same in every lane or, for the edge beside the long
// one, that of the upper or the lower edge as each lane's scanline falls.
struct RowEdge {
    Vi top, scanlines, zStep, zStepRemainder;
    Vu x, xStep, z, c[3], cStep[3], u, v, uStep, vStep;
};

// The edge from `top` down to `bottom`, which lie on different scanlines, as SetupEdges and the
// colour and texture setup build it, in every lane. `multiplier` premultiplies the colours.
template <FillMode M>
LANES_FN void TriangleEdge(const RasterContext& rc, const ScreenVertex& top,
                           const ScreenVertex& bottom, std::uint32_t multiplier, RowEdge& out) {
    constexpr ModeTraits T = TraitsOf(M);
    const std::int32_t scanlines = ScanlineOf(bottom.y) - ScanlineOf(top.y);
    const auto fixed = [multiplier](std::uint8_t c) { return (c * multiplier) << kEdgeFracBits; };
    const std::uint32_t from[3] = {fixed(top.blue), fixed(top.green), fixed(top.red)};
    const std::uint32_t to[3] = {fixed(bottom.blue), fixed(bottom.green), fixed(bottom.red)};
    // x and the colours divide in one go.
    const Vh q =
        DivideLanes(Vh{static_cast<std::int32_t>(static_cast<std::uint32_t>(bottom.x - top.x)
                                                 << kEdgeFromSubpixel),
                       WrappedDifference(from[0], to[0]), WrappedDifference(from[1], to[1]),
                       WrappedDifference(from[2], to[2])},
                    scanlines);
    out.top = Vi{} + ScanlineOf(top.y);
    out.scanlines = Vi{} + scanlines;
    out.x = Vu{} + (static_cast<std::uint32_t>(top.x) << kEdgeFromSubpixel);
    out.xStep = Vu{} + static_cast<std::uint32_t>(q[0]);
    out.z = Vu{} + static_cast<std::uint32_t>(top.z + rc.depthBias);
    out.zStep = Vi{} + (bottom.z - top.z) / scanlines;
    out.zStepRemainder = Vi{} + (bottom.z - top.z) % scanlines;
    if constexpr (T.gouraud)
        for (int k = 0; k < 3; ++k) {
            out.c[k] = Vu{} + from[k];
            out.cStep[k] = Vu{} + static_cast<std::uint32_t>(q[1 + k]);
        }
    if constexpr (T.textured) {
        const std::int32_t u = TexelPosition(top.u, rc.texWidth);
        const std::int32_t v = TexelPosition(top.v, rc.texHeight);
        out.u = Vu{} + static_cast<std::uint32_t>(u);
        out.v = Vu{} + static_cast<std::uint32_t>(v);
        out.uStep =
            Vu{} + static_cast<std::uint32_t>(
                       WrappedDifference(u, TexelPosition(bottom.u, rc.texWidth)) / scanlines);
        out.vStep =
            Vu{} + static_cast<std::uint32_t>(
                       WrappedDifference(v, TexelPosition(bottom.v, rc.texHeight)) / scanlines);
    }
}

template <typename V> LANES_FN V Pick(Vi mask, V ifSet, V otherwise) {
    return (V)(((Vi)ifSet & mask) | ((Vi)otherwise & ~mask));
}

template <FillMode M>
LANES_FN void PickEdge(Vi upper, const RowEdge& a, const RowEdge& b, RowEdge& out) {
    constexpr ModeTraits T = TraitsOf(M);
    out.top = Pick(upper, a.top, b.top);
    out.scanlines = Pick(upper, a.scanlines, b.scanlines);
    out.zStep = Pick(upper, a.zStep, b.zStep);
    out.zStepRemainder = Pick(upper, a.zStepRemainder, b.zStepRemainder);
    out.x = Pick(upper, a.x, b.x);
    out.xStep = Pick(upper, a.xStep, b.xStep);
    out.z = Pick(upper, a.z, b.z);
    if constexpr (T.gouraud)
        for (int k = 0; k < 3; ++k) {
            out.c[k] = Pick(upper, a.c[k], b.c[k]);
            out.cStep[k] = Pick(upper, a.cStep[k], b.cStep[k]);
        }
    if constexpr (T.textured) {
        out.u = Pick(upper, a.u, b.u);
        out.v = Pick(upper, a.v, b.v);
        out.uStep = Pick(upper, a.uStep, b.uStep);
        out.vStep = Pick(upper, a.vStep, b.vStep);
    }
}

// An edge's values at each lane's scanline: what stepping it from its top gives, in closed
// form. Depth carries floor(n * step remainder / scanlines) after n steps.
struct RowValues {
    Vu x, z, c[3], u, v;
};

template <FillMode M> LANES_FN void ValuesAt(Vi y, const RowEdge& e, RowValues& out) {
    constexpr ModeTraits T = TraitsOf(M);
    const Vi n = y - e.top;
    const Vu un = (Vu)n;
    out.x = e.x + un * e.xStep;
    out.z = e.z + un * (Vu)e.zStep + (Vu)FloorQuotientOfProduct(n, e.zStepRemainder, e.scanlines);
    if constexpr (T.gouraud)
        for (int k = 0; k < 3; ++k) out.c[k] = e.c[k] + un * e.cStep[k];
    if constexpr (T.textured) {
        out.u = e.u + un * e.uStep;
        out.v = e.v + un * e.vStep;
    }
}

// The spans of a triangle, kLanes scanlines at a time: edges, span ends and steps of the
// scanlines in lanes, then each span's pixels. The scalar walk hands a triangle's edges out so,
// with its vertices from the top down, T, M and B: on three scanlines or more, T-M and T-B, then
// M-B after T-M's bottom scanline, through B's; with T and M, or M and B, on one scanline, the
// two edges to the third vertex, short of their shared bottom scanline. Expects a triangle that
// leaves its scanline.
template <FillMode M>
LANES_FN void TriangleRows(const RasterContext& rc, const SpanTarget& target,
                           const PolygonConstants& pc, const ScreenVertex* const* corners) {
    constexpr ModeTraits T = TraitsOf(M);
    const ScreenVertex* t = corners[0];
    const ScreenVertex* m = corners[1];
    const ScreenVertex* b = corners[2];
    if (m->y < t->y) std::swap(t, m);
    if (b->y < m->y) std::swap(m, b);
    if (m->y < t->y) std::swap(t, m);
    const std::int32_t topRow = ScanlineOf(t->y), middleRow = ScanlineOf(m->y),
                       bottomRow = ScanlineOf(b->y);
    const std::uint32_t multiplier = ColourMultiplier(T, rc);
    // Edges are big: picked by pointer, not copied.
    RowEdge longLanes, upperLanes, lowerLanes, shortLanes;
    const RowEdge* lower = &upperLanes; // never picked unless there is a lower edge
    TriangleEdge<M>(rc, *t, *b, multiplier, longLanes);
    std::int32_t lastRow = bottomRow - 1, upperLast = bottomRow;
    if (middleRow == topRow)
        TriangleEdge<M>(rc, *m, *b, multiplier, upperLanes);
    else
        TriangleEdge<M>(rc, *t, *m, multiplier, upperLanes);
    if (middleRow != topRow && middleRow != bottomRow) {
        TriangleEdge<M>(rc, *m, *b, multiplier, lowerLanes);
        lower = &lowerLanes;
        lastRow = bottomRow;
        upperLast = middleRow;
    }
    lastRow = std::min(lastRow, target.clipMaxY);
    const Vi lanes = (Vi)LaneNumbers();

    for (std::int32_t y0 = std::max(topRow, 0); y0 <= lastRow; y0 += kLanes) {
        const Vi y = y0 + lanes;
        const RowEdge* shortEdge = &upperLanes;
        if (upperLast < y0 + kLanes - 1) {
            PickEdge<M>(y <= upperLast, upperLanes, *lower, shortLanes);
            shortEdge = &shortLanes;
        }
        RowValues a, b;
        ValuesAt<M>(y, *shortEdge, a);
        ValuesAt<M>(y, longLanes, b);
        const Vi swap = (Vi)b.x < (Vi)a.x;
        const Vi left = (Vi)Pick(swap, b.x, a.x) >> kEdgeFracBits;
        const Vi right = (Vi)Pick(swap, a.x, b.x) >> kEdgeFracBits;
        const Vi firstColumn = Pick(left > 0, left, Vi{});
        const Vi lastColumn = Pick(right - 1 < target.clipMaxX, right - 1, Vi{} + target.clipMaxX);
        const Vi drawn = (y <= lastRow) & (firstColumn <= lastColumn);
        const Vi width = Pick(drawn, right - left, Vi{} + 1);
        const Vu lz = Pick(swap, b.z, a.z);
        const Vi dz = (Vi)(Pick(swap, a.z, b.z) - lz);
        const Vi zStep = TruncatedQuotient(dz, width);
        const Vi zStepRemainder = (Vi)((Vu)dz - (Vu)zStep * (Vu)width);
        Vu lc[3], cStep[3];
        if constexpr (T.gouraud)
            for (int k = 0; k < 3; ++k) {
                lc[k] = Pick(swap, b.c[k], a.c[k]);
                cStep[k] = (Vu)TruncatedQuotient((Vi)(Pick(swap, a.c[k], b.c[k]) - lc[k]), width);
            }
        Vu lu, lv, uStep, vStep;
        if constexpr (T.textured) {
            lu = Pick(swap, b.u, a.u);
            lv = Pick(swap, b.v, a.v);
            uStep = (Vu)TruncatedQuotient((Vi)(Pick(swap, a.u, b.u) - lu), width);
            vStep = (Vu)TruncatedQuotient((Vi)(Pick(swap, a.v, b.v) - lv), width);
        }
        const Vi spanCount = Pick(drawn, lastColumn - firstColumn + 1, Vi{});

        const Vf inverseWidth = 1.0f / __builtin_convertvector(width, Vf);
        std::uint8_t* colourRow = target.ColourRow(y0);
        std::int32_t* depthRow = target.DepthRow(y0);

        const int rows = std::min(kLanes, lastRow - y0 + 1);
        for (int k = 0; k < rows;
             ++k, colourRow -= target.colourPitch, depthRow += target.depthPitch) {
            if (spanCount[k] == 0) continue;
            SpanRun s;
            s.count = spanCount[k];
            s.room = target.clipMaxX - firstColumn[k] + 1;
            s.width = width[k];
            s.z = static_cast<std::int32_t>(lz[k]);
            s.zRemainder = 0;
            s.zStep = zStep[k];
            s.zStepRemainder = zStepRemainder[k];
            // Zero where the mode reads none: the pixel loop adds them all the same.
            for (int j = 0; j < 3; ++j) s.c[j] = s.cStep[j] = 0;
            s.u = s.v = s.uStep = s.vStep = 0;
            if constexpr (T.gouraud)
                for (int j = 0; j < 3; ++j) {
                    s.c[j] = lc[j][k];
                    s.cStep[j] = static_cast<std::int32_t>(cStep[j][k]);
                }
            if constexpr (T.textured) {
                s.u = static_cast<std::int32_t>(lu[k]);
                s.v = static_cast<std::int32_t>(lv[k]);
                s.uStep = static_cast<std::int32_t>(uStep[k]);
                s.vStep = static_cast<std::int32_t>(vStep[k]);
            }
            // Columns left of the frame are stepped over, not written: no subpixel prestep.
            if (firstColumn[k] > left[k]) SkipColumns<M>(s, firstColumn[k] - left[k]);
            target.Place(s, colourRow, depthRow, firstColumn[k]);
            LanePixels<M>(pc, s, inverseWidth[k]);
        }
    }
}

// The scanline walk of span_fillers.cpp's WalkPolygon, the same edges taken in the same order
// and stepped by the same sums, with every span in lanes.
template <FillMode M> TESSERA_LANE_TARGET int LaneWalk(RasterContext& rc) {
    const PolygonConstants pc = ConstantsOf(rc);
    const SpanTarget target = SpanTarget::Of(rc);
    const int vertexCount = rc.vertexCount;
    // A triangle that reaches the frame leaves its scanline, so has two edges at least.
    if (vertexCount == 3) {
        TriangleRows<M>(rc, target, pc, rc.vertexList);
        return 1;
    }
    EdgeRecord edges[kMaxPolygonVertices];
    int count;
    const EdgeRecord* head = SetupPolygonEdges<M>(rc, edges, count);
    if (!head) return 0;
    const std::int32_t last = LastScanline(rc, head, vertexCount, count);

    LaneEdge listed[kMaxPolygonVertices];
    int listedCount = 0;
    for (const EdgeRecord* e = head; e; e = e->next) PackEdge<M>(*e, listed[listedCount++]);
    LaneEdge a = listed[0], b = listed[1];
    int next = 2;
    for (std::int32_t y = ScanlineOf(head->top->y); y <= last; ++y) {
        // Above the frame: jump to the scanline where an edge changes hands or the frame
        // begins, whichever comes first.
        if (y < 0) {
            const std::int32_t stop = std::min({a.bottomRow, b.bottomRow, std::int32_t{-1}, last});
            if (stop > y) {
                SkipEdge(a, stop - y);
                SkipEdge(b, stop - y);
                y = stop;
            }
        }
        if (y >= 0) LaneScanline<M>(target, pc, y, a, b);
        // An edge serves through its bottom scanline, then the next listed edge takes over.
        if (a.bottomRow <= y) {
            if (next == listedCount) break;
            a = listed[next++];
        }
        if (b.bottomRow <= y) {
            if (next == listedCount) break;
            b = listed[next++];
        }
        a.value += a.step;
        StepByRemainder(a.z, a.zRemainder, a.zStep, a.zStepRemainder, a.scanlines);
        b.value += b.step;
        StepByRemainder(b.z, b.zRemainder, b.zStep, b.zStepRemainder, b.scanlines);
    }
    return 1;
}

} // namespace

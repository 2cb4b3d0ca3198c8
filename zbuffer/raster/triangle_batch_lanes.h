// Triangles in lanes: a group of short triangles set up one per lane, the values of their spans
// worked out a scanline of every triangle at a time, then each triangle's spans drawn in turn, so
// that every pixel still sees the triangles in the order given. Included by the files that build
// a lane path; everything here has internal linkage.
#pragma once

#include "zbuffer/raster/polygon_walk_lanes.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

namespace {

// Triangles of more scanlines than this in the frame take their own walk: a group runs as many
// scanlines as its tallest triangle.
constexpr int kGroupRows = 16;

// One corner of each lane's triangle; colour bytes blue, green, red from the lowest.
struct LaneCorner {
    Vi x, y, z;
    Vu colour;
};

LANES_FN LaneCorner PickCorner(Vi mask, const LaneCorner& ifSet, const LaneCorner& otherwise) {
    return {Pick(mask, ifSet.x, otherwise.x), Pick(mask, ifSet.y, otherwise.y),
            Pick(mask, ifSet.z, otherwise.z), Pick(mask, ifSet.colour, otherwise.colour)};
}

LANES_FN void SwapWhere(Vi mask, LaneCorner& a, LaneCorner& b) {
    const LaneCorner first = a;
    a = PickCorner(mask, b, a);
    b = PickCorner(mask, first, b);
}

// An edge of each lane's triangle at the group's current scanline, stepped one scanline at a
// time by the sums of the scalar walk.
struct SteppedEdge {
    Vu x, xStep, z, c[3], cStep[3];
    Vi zRemainder, zStep, zStepRemainder, scanlines;
};

// The edge from `from` down to `to` as TriangleEdge builds it, moved to scanline y in closed
// form. Lanes where the two ends share a scanline have no such edge and divide by one.
template <FillMode M>
LANES_FN void EdgeAt(const RasterContext& rc, const LaneCorner& from, const LaneCorner& to, Vi y,
                     SteppedEdge& e) {
    constexpr ModeTraits T = TraitsOf(M);
    const Vi top = from.y >> kSubpixelBits;
    const Vi spanned = (to.y >> kSubpixelBits) - top;
    e.scanlines = Pick(spanned > 0, spanned, Vi{} + 1);
    const Vi n = y - top;
    const Vu un = (Vu)n;
    e.xStep =
        (Vu)TruncatedQuotient((Vi)(((Vu)to.x - (Vu)from.x) << kEdgeFromSubpixel), e.scanlines);
    e.x = ((Vu)from.x << kEdgeFromSubpixel) + un * e.xStep;
    const Vi dz = (Vi)((Vu)to.z - (Vu)from.z);
    e.zStep = TruncatedQuotient(dz, e.scanlines);
    e.zStepRemainder = (Vi)((Vu)dz - (Vu)e.zStep * (Vu)e.scanlines);
    const Vi carry = FloorQuotientOfProduct(n, e.zStepRemainder, e.scanlines);
    e.z = (Vu)from.z + static_cast<std::uint32_t>(rc.depthBias) + un * (Vu)e.zStep + (Vu)carry;
    e.zRemainder = (Vi)(un * (Vu)e.zStepRemainder - (Vu)carry * (Vu)e.scanlines);
    if constexpr (T.gouraud) {
        const std::uint32_t multiplier = ColourMultiplier(T, rc);
        for (int k = 0; k < 3; ++k) {
            const Vu start = (((from.colour >> (8 * k)) & 0xFF) * multiplier) << kEdgeFracBits;
            const Vu end = (((to.colour >> (8 * k)) & 0xFF) * multiplier) << kEdgeFracBits;
            e.cStep[k] = (Vu)TruncatedQuotient((Vi)(end - start), e.scanlines);
            e.c[k] = start + un * e.cStep[k];
        }
    }
}

template <FillMode M> LANES_FN void NextScanline(SteppedEdge& e) {
    constexpr ModeTraits T = TraitsOf(M);
    e.x += e.xStep;
    // StepByRemainder, lane by lane.
    e.z += (Vu)e.zStep;
    e.zRemainder += e.zStepRemainder;
    const Vi over = e.zRemainder >= e.scanlines;
    e.z -= (Vu)over;
    e.zRemainder -= e.scanlines & over;
    const Vi under = e.zRemainder < 0;
    e.z += (Vu)under;
    e.zRemainder += e.scanlines & under;
    if constexpr (T.gouraud)
        for (int k = 0; k < 3; ++k) e.c[k] += e.cStep[k];
}

// The spans of one scanline of every lane's triangle.
struct GroupRow {
    // `block`: lanes whose span, if any, fits one block of columns from its left end, the block
    // in the clip.
    Vi count, firstColumn, left, width, zStep, zStepRemainder, block;
    Vu z, c[3], cStep[3];
    Vf inverseWidth;
};

// Asks for the memory of column x of scanline y in the first n lanes. Nothing is read, so lanes
// past a triangle's scanlines need no branch around them, and offsets that wrap do no harm.
// Inlined early: as a function of its own it has no effect the compiler must keep, and every call
// to it was dropped.
[[gnu::always_inline]] LANES_FN void Prefetch(const SpanTarget& target, Vi y, Vi x, int n) {
    const Vi column = x - target.clipMinX;
    const Vi colour =
        (Vi)((Vu)(target.colourTopRow - y) * static_cast<std::uint32_t>(target.colourPitch) +
             ((Vu)column << 2));
    const Vi depth =
        (Vi)(((Vu)(y - target.clipMinY) * static_cast<std::uint32_t>(target.depthPitch) +
              (Vu)column)
             << 2);
    const auto colourBase = reinterpret_cast<std::uintptr_t>(target.colourBase);
    const auto depthBase = reinterpret_cast<std::uintptr_t>(target.depthBase);
    for (int k = 0; k < n; ++k) {
        __builtin_prefetch(
            reinterpret_cast<const void*>(
                colourBase + static_cast<std::uintptr_t>(static_cast<std::intptr_t>(colour[k]))),
            1);
        __builtin_prefetch(
            reinterpret_cast<const void*>(
                depthBase + static_cast<std::uintptr_t>(static_cast<std::intptr_t>(depth[k]))),
            1);
    }
}

// The spans of a group of triangles, ready to draw.
struct GroupSpans {
    GroupRow rows[kGroupRows];
    Vi firstRow, rowCount;
    int n;
};

// Works out the spans of the `n` (1 to kLanes) triangles of `group` and asks for the memory they
// will write. Each triangle reaches the frame, leaves its scanline and has at most kGroupRows
// scanlines in the frame.
template <FillMode M>
LANES_FN void SetUpGroup(const RasterContext& rc, const SpanTarget& target,
                         const ScreenVertex* const* const* group, int n, GroupSpans& out) {
    constexpr ModeTraits T = TraitsOf(M);
    static_assert(!T.textured, "texture positions are not set up in groups");
    // Lanes past the group repeat its first triangle, drawing nothing.
    const ScreenVertex* const* lanes[kLanes];
#pragma GCC unroll 8
    for (int k = 0; k < kLanes; ++k) lanes[k] = group[k < n ? k : 0];
    LaneCorner corner[3];
#pragma GCC unroll 3
    for (int i = 0; i < 3; ++i)
#pragma GCC unroll 8
        for (int k = 0; k < kLanes; ++k) {
            const ScreenVertex& v = *lanes[k][i];
            corner[i].x[k] = v.x;
            corner[i].y[k] = v.y;
            corner[i].z[k] = v.z;
            corner[i].colour[k] = v.blue | v.green << 8 | v.red << 16;
        }
    // Sorted from the top down as TriangleRows sorts them; equal heights keep their order.
    LaneCorner &t = corner[0], &m = corner[1], &b = corner[2];
    SwapWhere(m.y < t.y, t, m);
    SwapWhere(b.y < m.y, m, b);
    SwapWhere(m.y < t.y, t, m);
    const Vi topRow = t.y >> kSubpixelBits, middleRow = m.y >> kSubpixelBits,
             bottomRow = b.y >> kSubpixelBits;
    // See TriangleRows for the edges a triangle is walked with and where it stops.
    const Vi flatTop = middleRow == topRow;
    const Vi threeEdges = ~flatTop & (middleRow != bottomRow);
    const Vi lastRow = Pick(threeEdges, bottomRow, bottomRow - 1);
    const Vi clippedLast = Pick(lastRow < target.clipMaxY, lastRow, Vi{} + target.clipMaxY);
    const Vi upperLast = Pick(threeEdges, middleRow, bottomRow);
    const Vi y0 = Pick(topRow > 0, topRow, Vi{});
    const Vi inGroup = (Vi)LaneNumbers() < n;
    const Vi spanned = clippedLast - y0 + 1;
    const Vi rows = Pick(inGroup & (spanned > 0), spanned, Vi{});

    SteppedEdge longEdge, upper, lower;
    EdgeAt<M>(rc, t, b, y0, longEdge);
    EdgeAt<M>(rc, PickCorner(flatTop, m, t), PickCorner(flatTop, b, m), y0, upper);
    EdgeAt<M>(rc, m, b, y0, lower);

    out.n = n;
    out.firstRow = y0;
    out.rowCount = rows;
    int groupRows = 0;
    for (int k = 0; k < n; ++k) groupRows = std::max(groupRows, static_cast<int>(rows[k]));
    for (int r = 0; r < groupRows; ++r) {
        const Vi useUpper = (y0 + r) <= upperLast;
        const Vu ax = Pick(useUpper, upper.x, lower.x), az = Pick(useUpper, upper.z, lower.z);
        const Vi swap = (Vi)longEdge.x < (Vi)ax;
        const Vi left = (Vi)Pick(swap, longEdge.x, ax) >> kEdgeFracBits;
        const Vi right = (Vi)Pick(swap, ax, longEdge.x) >> kEdgeFracBits;
        const Vi firstColumn = Pick(left > 0, left, Vi{});
        const Vi lastColumn = Pick(right - 1 < target.clipMaxX, right - 1, Vi{} + target.clipMaxX);
        const Vi drawn = (r < rows) & (firstColumn <= lastColumn);
        GroupRow& row = out.rows[r];
        row.width = Pick(drawn, right - left, Vi{} + 1);
        row.z = Pick(swap, longEdge.z, az);
        const Vi dz = (Vi)(Pick(swap, az, longEdge.z) - row.z);
        row.zStep = TruncatedQuotient(dz, row.width);
        row.zStepRemainder = (Vi)((Vu)dz - (Vu)row.zStep * (Vu)row.width);
        if constexpr (T.gouraud)
            for (int k = 0; k < 3; ++k) {
                const Vu ac = Pick(useUpper, upper.c[k], lower.c[k]);
                row.c[k] = Pick(swap, longEdge.c[k], ac);
                row.cStep[k] = (Vu)TruncatedQuotient((Vi)(Pick(swap, ac, longEdge.c[k]) - row.c[k]),
                                                     row.width);
            }
        row.count = Pick(drawn, lastColumn - firstColumn + 1, Vi{});
        row.block = (lastColumn - firstColumn < kLanes) & (firstColumn == left) &
                    (firstColumn <= target.clipMaxX - (kLanes - 1));
        row.firstColumn = firstColumn;
        row.left = left;
        row.inverseWidth = 1.0f / __builtin_convertvector(row.width, Vf);
        Prefetch(target, y0 + r, firstColumn, n);
        NextScanline<M>(longEdge);
        NextScanline<M>(upper);
        NextScanline<M>(lower);
    }
}

// Lane k's colours of `row` into `s`, and zero texture positions: the pixel loop adds them all.
template <FillMode M> LANES_FN void TakeColours(const GroupRow& row, int k, SpanRun& s) {
    constexpr ModeTraits T = TraitsOf(M);
    for (int j = 0; j < 3; ++j) s.c[j] = s.cStep[j] = 0;
    s.u = s.v = s.uStep = s.vStep = 0;
    if constexpr (T.gouraud)
        for (int j = 0; j < 3; ++j) {
            s.c[j] = row.c[j][k];
            s.cStep[j] = static_cast<std::int32_t>(row.cStep[j][k]);
        }
}

// A span that fits one block, drawn straight from its group's row: LanePixels' last block without
// the hand-over. The block is written back whether or not a pixel passes, which a branch could
// not foretell for small triangles in random depths.
template <FillMode M>
LANES_FN void DrawBlock(const SpanTarget& target, const PolygonConstants& pc, const GroupRow& row,
                        int k, Vi always, std::uint8_t* colourRow, std::int32_t* depthRow) {
    SpanRun s; // its colours and place are all this reads of it
    TakeColours<M>(row, k, s);
    target.Place(s, colourRow, depthRow, row.firstColumn[k]);
    Vu z;
    Vi remainders;
    FirstDepths(static_cast<std::int32_t>(row.z[k]), 0, row.zStep[k], row.zStepRemainder[k],
                row.width[k], row.inverseWidth[k], z, remainders);
    Vu dst;
    Vi depth;
    std::memcpy(&dst, s.colour, sizeof dst);
    std::memcpy(&depth, s.depth, sizeof depth);
    const Vi write = (((Vi)z <= depth) | always) & ((Vi)LaneNumbers() < row.count[k]);
    WriteBlock<M>(pc, s, 0, z, dst, depth, write);
    std::memcpy(s.colour, &dst, sizeof dst);
    std::memcpy(s.depth, &depth, sizeof depth);
}

// Draws what SetUpGroup worked out, triangle after triangle. The spans are worked out and handed
// over as TriangleRows does it, written again: through shared functions the groups drew 5 to
// 10 % slower for the same instructions.
template <FillMode M>
LANES_FN void DrawGroup(const SpanTarget& target, const PolygonConstants& pc,
                        const GroupSpans& group) {
    const Vi always = Vi{} - (pc.depthAlwaysPasses ? 1 : 0);
    for (int k = 0; k < group.n; ++k) {
        std::uint8_t* colourRow = target.ColourRow(group.firstRow[k]);
        std::int32_t* depthRow = target.DepthRow(group.firstRow[k]);
        for (int r = 0; r < group.rowCount[k];
             ++r, colourRow -= target.colourPitch, depthRow += target.depthPitch) {
            const GroupRow& row = group.rows[r];
            if (row.block[k]) {
                DrawBlock<M>(target, pc, row, k, always, colourRow, depthRow);
                continue;
            }
            if (row.count[k] == 0) continue;
            SpanRun s;
            s.count = row.count[k];
            s.room = target.clipMaxX - row.firstColumn[k] + 1;
            s.width = row.width[k];
            s.z = static_cast<std::int32_t>(row.z[k]);
            s.zRemainder = 0;
            s.zStep = row.zStep[k];
            s.zStepRemainder = row.zStepRemainder[k];
            TakeColours<M>(row, k, s);
            if (row.firstColumn[k] > row.left[k])
                SkipColumns<M>(s, row.firstColumn[k] - row.left[k]);
            target.Place(s, colourRow, depthRow, row.firstColumn[k]);
            LanePixels<M>(pc, s, row.inverseWidth[k]);
        }
    }
}

// The triangles one after another as the walk draws each, those short enough kLanes at a time.
// A group is set up while the one before it waits to be drawn, so that the memory it writes has
// arrived by the time it is drawn.
template <FillMode M>
TESSERA_LANE_TARGET void LaneTriangles(RasterContext& rc, ScreenVertex* const* corners, int count) {
    const PolygonConstants pc = ConstantsOf(rc);
    const SpanTarget target = SpanTarget::Of(rc);
    GroupSpans spans[2];
    GroupSpans* waiting = nullptr;
    const ScreenVertex* const* group[kLanes];
    int n = 0;
    const auto setUp = [&] {
        GroupSpans& next = waiting == &spans[0] ? spans[1] : spans[0];
        SetUpGroup<M>(rc, target, group, std::exchange(n, 0), next);
        if (waiting) DrawGroup<M>(target, pc, *waiting);
        waiting = &next;
    };
    const auto drawWaiting = [&] {
        if (n > 0) setUp();
        if (waiting) DrawGroup<M>(target, pc, *std::exchange(waiting, nullptr));
    };
    // The reach test waited on the corners' memory more than it computed.
    constexpr int kCornersAhead = 8;
    for (int i = 0; i < count; ++i) {
        const ScreenVertex* const* v = corners + 3 * static_cast<std::ptrdiff_t>(i);
        if (i + kCornersAhead < count)
            for (int k = 0; k < 3; ++k) __builtin_prefetch(v[3 * kCornersAhead + k]);
        ScanlineRange rows;
        if (TriangleReach(rc, *v[0], *v[1], *v[2], rows) != PolygonReach::Frame) continue;
        if (std::min(rows.bottom, target.clipMaxY) - std::max(rows.top, 0) >= kGroupRows) {
            // Drawn in its place: what waits goes first.
            drawWaiting();
            TriangleRows<M>(rc, target, pc, v);
            continue;
        }
        group[n++] = v;
        if (n == kLanes) setUp();
    }
    drawWaiting();
}

template <std::size_t... I> constexpr SpanKernelSet MakeLaneKernels(std::index_sequence<I...>) {
    return {{&LaneSpan<static_cast<FillMode>(I)>...},
            {&LaneWalk<static_cast<FillMode>(I)>...},
            &LaneTriangles<FillMode::Gouraud>};
}

constexpr SpanKernelSet kLaneKernels = MakeLaneKernels(std::make_index_sequence<kFillModeCount>{});

#undef LANES_FN

} // namespace

// Scanline walk on hand-worked polygons: span ends, clipping, depth stepping and testing; points
// and the back-face rule.
#include "filler_oracle.h"
#include "raster_frame.h"
#include "zbuffer/back_face.h"
#include "zbuffer/raster/edge_setup.h"
#include "zbuffer/raster/point_plot.h"
#include "zbuffer/raster/span_kernels.h"

#include <gtest/gtest.h>

namespace {

constexpr RgbBytes kFlat{10, 20, 30};
constexpr Bgra kFlatBytes{30, 20, 10, 255};

struct WalkCase {
    const char* what;
    std::vector<ScreenVertex> vertices;
    Spans expected;
    bool doubled = false;
};

// The rectangle (3, 2) to (7, 5) with its last corner repeated up to n vertices.
std::vector<ScreenVertex> Corners(std::size_t n) {
    std::vector<ScreenVertex> v = Rect(3, 2, 7, 5).vertices;
    v.resize(n, v.back());
    return v;
}

// Edges step x by a truncated 16.16 quotient from their top vertex; a span covers the integer
// part of its left end up to, but not including, the integer part of its right end.
// clang-format off
const WalkCase kWalks[] = {
    {"x = 3.0 to 7.0 fills 3 to 6; a quad leaves its bottom scanline", Corners(4),
     {{2, 3, 7}, {3, 3, 7}, {4, 3, 7}}},
    {"eight vertices are drawn, to the last scanline", Corners(8),
     {{2, 3, 7}, {3, 3, 7}, {4, 3, 7}, {5, 3, 7}}},
    {"nine vertices draw nothing", Corners(9), {}},
    {"no vertices draw nothing", {}, {}},
    // Right edges 6 -> 8 -> 6 in truncated steps of 2/3: 6, 6.67, 7.33, then 7.99998 on
    // scanline 3, where the first edge still ends, then 7.33, 6.67 and 6.00003.
    {"a pentagon fills its last scanline",
     {Vertex(2, 0), Vertex(6, 0), Vertex(8, 3), Vertex(6, 6), Vertex(2, 6)},
     {{0, 2, 6}, {1, 2, 6}, {2, 2, 7}, {3, 2, 7}, {4, 2, 7}, {5, 2, 6}, {6, 2, 6}}},
    // Two triangles sharing the edge y = 4: only the lower one fills scanline 4.
    {"triangle above a shared edge", {Vertex(4, 0), Vertex(8, 4), Vertex(0, 4)},
     {{1, 3, 5}, {2, 2, 6}, {3, 1, 7}}},
    {"triangle below a shared edge", {Vertex(0, 4), Vertex(8, 4), Vertex(4, 8)},
     {{4, 0, 8}, {5, 1, 7}, {6, 2, 6}, {7, 3, 5}}},
    {"double resolution doubles the vertices", Rect(1, 1, 3, 2).vertices,
     {{2, 2, 6}, {3, 2, 6}}, true},
    {"three vertices on one scanline", {Vertex(1, 3), Vertex(8, 3), Vertex(4, 3)}, {}},
};
// clang-format on

TEST(ScanlineWalk, FillsExactlyTheHandWorkedSpans) {
    for (const WalkCase& c : kWalks) {
        SCOPED_TRACE(c.what);
        RasterFrame f(12, 10);
        f.rc.flatColour = kFlat;
        f.rc.doubleResolution = c.doubled;
        EXPECT_EQ(f.Draw(Polygon(c.vertices)), c.expected.empty() ? 0 : 1);
        EXPECT_EQ(f.WrittenSpans(), c.expected);
        for (const Span& s : c.expected) EXPECT_EQ(f.Pixel(s[2] - 1, s[0]), kFlatBytes);
    }
}

TEST(ScanlineWalk, LeftClipStepsFromTheUnclippedColumn) {
    // The left end at -10.5 px is column -11; the span steps 11 columns before column 0.
    RasterFrame f(12, 6);
    f.Draw(Polygon{Vertex(-10.5, 0, 0, 0), Vertex(5.5, 0, 1600, 160), Vertex(5.5, 4, 1600, 160),
                   Vertex(-10.5, 4, 0, 0)},
           FillMode::Gouraud);
    EXPECT_EQ(f.Depth(0, 1), 1100);
    EXPECT_EQ(f.Pixel(0, 1), (Bgra{0, 0, 110, 255}));
    EXPECT_EQ(f.WrittenSpans(), (Spans{{0, 0, 5}, {1, 0, 5}, {2, 0, 5}, {3, 0, 5}}));
}

TEST(DepthStepping, StepsByQuotientAndRemainderAfterTheBias) {
    // Left edge 0 -> 10 and right edge 11 -> 21 over 3 scanlines; spans 3 wide; bias -2048.
    RasterFrame f(6, 5);
    OffsetDepth(f.rc, 2);
    f.Draw(Polygon{Vertex(0, 0, 0), Vertex(3, 0, 11), Vertex(3, 3, 21), Vertex(0, 3, 10)});
    const std::int32_t expected[3][3] = {{0, 3, 7}, {3, 6, 10}, {6, 9, 13}};
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 3; ++x) EXPECT_EQ(f.Depth(x, y), expected[y][x] - 2048) << x << y;

    // Falling: 10 + (-11 / 3) rounds down through the negative remainder: 10, 6, 2.
    RasterFrame g(6, 3);
    g.Draw(Polygon{Vertex(0, 0, 10), Vertex(3, 0, -1), Vertex(3, 1, -1), Vertex(0, 1, 10)});
    EXPECT_EQ(g.Depth(1, 0), 6);
    EXPECT_EQ(g.Depth(2, 0), 2);
}

TEST(DepthStepping, EdgesCarryTheirRemainderFromScanlineToScanline) {
    // One column under a left edge from 0 to 15 or to -15 over 6 scanlines: steps of 2
    // remainder 3 carry where the remainder reaches 6 (scanlines 2 and 4); steps of -2
    // remainder -3 borrow where it drops below 0 (1, 3 and 5), not where it is 0.
    const struct {
        std::int32_t bottom;
        std::int32_t expected[6];
    } edges[] = {{15, {0, 2, 5, 7, 10, 12}}, {-15, {0, -3, -5, -8, -10, -13}}};
    // The oracle's closed form must come to the same depths as the stepping.
    const auto oracle = [](RasterContext& rc, FillMode m) { return FillPolygonOracle(rc, m); };
    for (const auto fill : {&FillPolygon, +oracle}) {
        for (const auto& e : edges) {
            // Whole, and from 3 scanlines above the frame, which the fast path jumps at once.
            for (const int top : {0, -3}) {
                RasterFrame f(3, 7);
                f.Draw(Polygon{Vertex(0, top, 0), Vertex(1, top, 0), Vertex(1, top + 6, e.bottom),
                               Vertex(0, top + 6, e.bottom)},
                       FillMode::Flat, fill);
                for (int y = std::max(top, 0); y < top + 6; ++y)
                    EXPECT_EQ(f.Depth(0, y), e.expected[y - top]) << e.bottom << " at " << y - top;
            }
        }
    }
}

// Spans in lanes make the depths of a block of columns at once: each column's carry of the
// remainder comes from a float quotient, which for some widths (41 is the first) falls just
// short of a whole multiple. Every width a frame can have, remainders at their ends, a span of
// whole blocks and a rest.
TEST(DepthStepping, LanesCarryTheRemainderAsSteppingDoes) {
    constexpr std::int32_t kColumns = 13;
    for (const SimdPath path : {SimdPath::Sse2, SimdPath::Avx2}) {
        if (!SimdPathSupported(path)) continue;
        const SpanKernelSet& set =
            *(path == SimdPath::Sse2 ? Sse2SpanKernels() : Avx2SpanKernels());
        PolygonConstants pc{};
        pc.depthAlwaysPasses = true;
        std::uint32_t colour[16];
        std::int32_t depth[16];
        for (std::int32_t width = kColumns; width <= 4096; ++width)
            for (const std::int32_t rem : {0, 1, width / 2, width - 1})
                for (const std::int32_t stepRem : {width - rem, -rem, width - 1, 1 - width}) {
                    if (stepRem >= width) continue;
                    SpanRun s{};
                    s.colour = reinterpret_cast<std::uint8_t*>(colour);
                    s.depth = depth;
                    s.count = kColumns;
                    s.room = 16;
                    s.width = width;
                    s.z = -7;
                    s.zRemainder = rem;
                    s.zStep = 5;
                    s.zStepRemainder = stepRem;
                    set.fill[static_cast<int>(FillMode::Flat)](pc, s);
                    std::int32_t z = s.z, r = s.zRemainder;
                    for (int k = 0; k < s.count; ++k) {
                        ASSERT_EQ(depth[k], z) << kSimdPathNames[static_cast<int>(path)]
                                               << " width " << width << " remainder " << rem
                                               << " step remainder " << stepRem << " column " << k;
                        StepByRemainder(z, r, s.zStep, s.zStepRemainder, width);
                    }
                }
    }
}

TEST(DepthTest, EqualDepthOverwritesFartherDoesNotUnlessAlwaysPassing) {
    RasterFrame f(4, 3);
    const auto draw = [&f](std::int32_t z, std::uint8_t grey) {
        f.rc.flatColour = RgbBytes{grey, grey, grey};
        f.Draw(Rect(0, 0, 2, 1, z));
        return f.Pixel(1, 0).b;
    };
    EXPECT_EQ(draw(100, 1), 1);
    EXPECT_EQ(draw(100, 2), 2);
    EXPECT_EQ(draw(101, 3), 2);
    f.rc.depthAlwaysPasses = 1;
    EXPECT_EQ(draw(1000, 4), 4);
    EXPECT_EQ(f.Depth(1, 0), 1000);
}

TEST(Points, LandOnTheTruncatedPixelInsideTheFrameAndTestForStrictlyNearer) {
    RasterFrame f(8, 6);
    // (5.5, 3.2); x = -100 truncates to column 0; the rest lie just outside the frame.
    const ScreenPoint points[] = {{1408, 819, 40}, {-100, 0, 0},    {-256, 0, 0},
                                  {8 * 256, 0, 0}, {0, 6 * 256, 0}, {0, -300, 0}};
    for (const ScreenPoint& p : points) PlotPoint(f.rc, p, kFlat, false);
    EXPECT_EQ(f.WrittenSpans(), (Spans{{0, 0, 1}, {3, 5, 6}}));
    EXPECT_EQ(f.Pixel(5, 3), kFlatBytes);
    // Unlike spans, a tested point needs a nearer depth.
    PlotPoint(f.rc, ScreenPoint{1408, 819, 40}, RgbBytes{1, 1, 1}, true);
    EXPECT_EQ(f.Pixel(5, 3), kFlatBytes);
    PlotPoint(f.rc, ScreenPoint{1408, 819, 39}, RgbBytes{1, 1, 1}, true);
    EXPECT_EQ(f.Pixel(5, 3), (Bgra{1, 1, 1, 255}));
}

TEST(Points, DoubleResolutionPlotsTwoByTwoAfterTheBias) {
    RasterFrame f(16, 10);
    f.rc.doubleResolution = 1;
    f.rc.depthBias = -1024;
    PlotPoint(f.rc, ScreenPoint{1408, 819, 2000}, kFlat, false); // 1408 / 128 = 11
    EXPECT_EQ(f.WrittenSpans(), (Spans{{6, 11, 13}, {7, 11, 13}}));
    EXPECT_EQ(f.Depth(12, 7), 976);
}

bool Passes(ScreenVertex a, ScreenVertex b, ScreenVertex c) {
    const ScreenVertex* v[] = {&a, &b, &c};
    return PassesBackFaceTest(v, 3);
}

TEST(BackFace, ZeroAreaIsDrawnAndLargeAreasDoNotOverflow) {
    EXPECT_TRUE(Passes(Vertex(0, 0), Vertex(5, 5), Vertex(10, 10))) << "zero area is drawn";
    // Products of 1/256-pixel coordinates this large overflow 32 bits.
    EXPECT_FALSE(Passes(Vertex(-30000, -30000), Vertex(30000, -30000), Vertex(30000, 30000)));
}

} // namespace

// Scanline walk: span ends, clipping, the bottom-scanline rule, depth stepping and the depth
// test, checked on small polygons worked out by hand.
#include "raster_frame.h"
#include "zbuffer/polygon_dispatch.h"
#include "zbuffer/span_fillers.h"

#include <gtest/gtest.h>

namespace {

constexpr Bgra kFlatBytes{30, 20, 10, 255};

void UseFlat(RasterContext& rc) {
    rc.flatColour = RgbBytes{10, 20, 30};
}

// Rectangle from (x0, y0) to (x1, y1) in pixels at one depth.
Polygon Rect(double x0, double y0, double x1, double y1, std::int32_t z = 100) {
    return Polygon{Vertex(x0, y0, z), Vertex(x1, y0, z), Vertex(x1, y1, z), Vertex(x0, y1, z)};
}

TEST(SpanEnds, RightColumnIsExclusive) {
    RasterFrame f(12, 8);
    UseFlat(f.rc);
    Polygon p = Rect(3.0, 2.0, 7.0, 5.0);
    p.Use(f.rc);
    ASSERT_EQ(FillPolygon(f.rc, FillMode::Flat), 1);
    for (int x = 3; x <= 6; ++x) EXPECT_EQ(f.Pixel(x, 3), kFlatBytes) << x;
    EXPECT_FALSE(f.Written(2, 3));
    EXPECT_FALSE(f.Written(7, 3));
    EXPECT_EQ(f.Depth(4, 2), 100);
    EXPECT_EQ(f.WrittenCount(), 4 * 3); // scanlines 2, 3, 4
}

TEST(SpanEnds, FractionalEndsUseIntegerParts) {
    RasterFrame f(12, 4);
    UseFlat(f.rc);
    Polygon p = Rect(2.9, 0.0, 5.99, 2.0);
    p.Use(f.rc);
    FillPolygon(f.rc, FillMode::Flat);
    EXPECT_EQ(f.WrittenInRow(0), 3); // columns 2, 3, 4
    EXPECT_TRUE(f.Written(2, 0));
    EXPECT_FALSE(f.Written(5, 0));
}

TEST(SpanEnds, LeftClipStepsFromTheUnclippedColumn) {
    // The left end at -10.5 px is column -11; the span steps 11 columns before column 0.
    RasterFrame f(12, 6);
    Polygon p{Vertex(-10.5, 0, 0, 0), Vertex(5.5, 0, 1600, 160), Vertex(5.5, 4, 1600, 160),
              Vertex(-10.5, 4, 0, 0)};
    p.Use(f.rc);
    FillPolygon(f.rc, FillMode::Gouraud);
    EXPECT_EQ(f.Depth(0, 1), 1100);
    EXPECT_EQ(f.Pixel(0, 1), (Bgra{0, 0, 110, 255}));
    EXPECT_EQ(f.Depth(4, 1), 1500);
    EXPECT_EQ(f.Pixel(4, 1), (Bgra{0, 0, 150, 255}));
    EXPECT_FALSE(f.Written(5, 1));
    EXPECT_EQ(f.WrittenCount(), 5 * 4);
}

TEST(BottomScanline, QuadLeavesItsBottomScanline) {
    RasterFrame f(12, 10);
    UseFlat(f.rc);
    Polygon p = Rect(2, 0, 6, 6);
    p.Use(f.rc);
    FillPolygon(f.rc, FillMode::Flat);
    EXPECT_EQ(f.WrittenInRow(5), 4);
    EXPECT_EQ(f.WrittenInRow(6), 0);
}

TEST(BottomScanline, PentagonFillsItsLastScanline) {
    RasterFrame f(12, 10);
    UseFlat(f.rc);
    Polygon p{Vertex(2, 0), Vertex(6, 0), Vertex(8, 3), Vertex(6, 6), Vertex(2, 6)};
    p.Use(f.rc);
    FillPolygon(f.rc, FillMode::Flat);
    EXPECT_EQ(f.WrittenInRow(6), 4); // columns 2..5
    EXPECT_EQ(f.WrittenInRow(7), 0);
}

TEST(BottomScanline, TrianglesSharingAHorizontalEdgeFillItOnce) {
    RasterFrame upper(10, 10), lower(10, 10);
    UseFlat(upper.rc);
    UseFlat(lower.rc);
    Polygon above{Vertex(4, 0), Vertex(8, 4), Vertex(0, 4)};
    Polygon below{Vertex(0, 4), Vertex(8, 4), Vertex(4, 8)};
    above.Use(upper.rc);
    below.Use(lower.rc);
    FillPolygon(upper.rc, FillMode::Flat);
    FillPolygon(lower.rc, FillMode::Flat);
    EXPECT_EQ(upper.WrittenInRow(3), 6); // columns 1..6 at scanline 3
    EXPECT_EQ(upper.WrittenInRow(4), 0);
    EXPECT_EQ(lower.WrittenInRow(4), 8);
    EXPECT_EQ(lower.WrittenInRow(8), 0);
}

TEST(BottomScanline, ThreeEdgeTriangleDrawsThroughItsBottom) {
    // No horizontal edge: the rule does not apply and the walk runs to the bottom vertex,
    // where the span is empty, so the last filled scanline is the one before it.
    RasterFrame f(12, 12);
    UseFlat(f.rc);
    Polygon p{Vertex(0, 0), Vertex(8, 2), Vertex(0, 8)};
    p.Use(f.rc);
    FillPolygon(f.rc, FillMode::Flat);
    EXPECT_EQ(f.WrittenInRow(0), 0); // both edges start at column 0
    EXPECT_EQ(f.WrittenInRow(2), 8);
    EXPECT_EQ(f.WrittenInRow(7), 1); // right edge at 8 - 5 * 8/6 = 1.33
}

TEST(DegeneratePolygons, DrawNothing) {
    RasterFrame f(10, 10);
    UseFlat(f.rc);
    Polygon flat{Vertex(1, 3), Vertex(8, 3), Vertex(4, 3)};
    flat.Use(f.rc);
    EXPECT_EQ(FillPolygon(f.rc, FillMode::Flat), 0);

    Polygon nine{Vertex(5, 0), Vertex(8, 1), Vertex(9, 4), Vertex(8, 7), Vertex(5, 9),
                 Vertex(2, 8), Vertex(0, 5), Vertex(1, 2), Vertex(3, 0)};
    nine.Use(f.rc);
    EXPECT_EQ(FillPolygon(f.rc, FillMode::Flat), 0);
    EXPECT_EQ(DrawUntexturedPolygon(f.rc, 9, kPolygonFlat), 1);
    f.rc.vertexCount = 0;
    EXPECT_EQ(FillPolygon(f.rc, FillMode::Flat), 0);
    EXPECT_EQ(DrawUntexturedPolygon(f.rc, 0, kPolygonFlat), 1);
    EXPECT_EQ(f.WrittenCount(), 0);

    // Eight vertices are still drawn.
    Polygon eight{Vertex(5, 0), Vertex(8, 1), Vertex(9, 4), Vertex(8, 7),
                  Vertex(5, 9), Vertex(2, 8), Vertex(0, 5), Vertex(1, 2)};
    eight.Use(f.rc);
    EXPECT_EQ(FillPolygon(f.rc, FillMode::Flat), 1);
    EXPECT_GT(f.WrittenCount(), 40);
}

TEST(DepthStepping, EdgesAndSpansStepByQuotientAndRemainder) {
    // Left edge 0 -> 10 and right edge 11 -> 21 over 3 scanlines; spans 3 wide.
    RasterFrame f(6, 5);
    UseFlat(f.rc);
    Polygon p{Vertex(0, 0, 0), Vertex(3, 0, 11), Vertex(3, 3, 21), Vertex(0, 3, 10)};
    p.Use(f.rc);
    FillPolygon(f.rc, FillMode::Flat);
    const std::int32_t expected[3][3] = {{0, 3, 7}, {3, 6, 10}, {6, 9, 13}};
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 3; ++x) EXPECT_EQ(f.Depth(x, y), expected[y][x]) << x << "," << y;
}

TEST(DepthStepping, FallingDepthRoundsDown) {
    RasterFrame f(6, 3);
    UseFlat(f.rc);
    Polygon p{Vertex(0, 0, 10), Vertex(3, 0, -1), Vertex(3, 1, -1), Vertex(0, 1, 10)};
    p.Use(f.rc);
    FillPolygon(f.rc, FillMode::Flat);
    EXPECT_EQ(f.Depth(0, 0), 10);
    EXPECT_EQ(f.Depth(1, 0), 6);
    EXPECT_EQ(f.Depth(2, 0), 2);
}

TEST(DepthStepping, BiasIsAddedBeforeTestAndStore) {
    RasterFrame f(4, 3);
    UseFlat(f.rc);
    OffsetDepth(f.rc, 2); // bias -2048
    Polygon p = Rect(0, 0, 2, 1, 5000);
    p.Use(f.rc);
    FillPolygon(f.rc, FillMode::Flat);
    EXPECT_EQ(f.Depth(1, 0), 5000 - 2048);
}

TEST(DepthTest, EqualDepthOverwritesFartherDoesNot) {
    RasterFrame f(4, 3);
    Polygon p = Rect(0, 0, 2, 1, 100);
    p.Use(f.rc);
    f.rc.flatColour = RgbBytes{1, 1, 1};
    FillPolygon(f.rc, FillMode::Flat);
    f.rc.flatColour = RgbBytes{2, 2, 2};
    FillPolygon(f.rc, FillMode::Flat);
    EXPECT_EQ(f.Pixel(0, 0), (Bgra{2, 2, 2, 255}));

    Polygon farther = Rect(0, 0, 2, 1, 101);
    farther.Use(f.rc);
    f.rc.flatColour = RgbBytes{3, 3, 3};
    FillPolygon(f.rc, FillMode::Flat);
    EXPECT_EQ(f.Pixel(0, 0), (Bgra{2, 2, 2, 255}));
    EXPECT_EQ(f.Depth(0, 0), 100);
}

TEST(DepthTest, AlwaysPassingDepthLetsFartherDrawingWin) {
    RasterFrame f(4, 3);
    Polygon nearer = Rect(0, 0, 2, 1, 10), farther = Rect(0, 0, 2, 1, 1000);
    nearer.Use(f.rc);
    FillPolygon(f.rc, FillMode::Flat);
    f.rc.depthAlwaysPasses = 1;
    f.rc.flatColour = RgbBytes{7, 8, 9};
    farther.Use(f.rc);
    FillPolygon(f.rc, FillMode::Flat);
    EXPECT_EQ(f.Pixel(1, 0), (Bgra{9, 8, 7, 255}));
    EXPECT_EQ(f.Depth(1, 0), 1000);
}

TEST(DepthTest, BlendedDrawingWritesDepth) {
    RasterFrame f(4, 3);
    Polygon back = Rect(0, 0, 2, 1, 1000), front = Rect(0, 0, 2, 1, 10),
            middle = Rect(0, 0, 2, 1, 500);
    back.Use(f.rc);
    f.rc.flatColour = RgbBytes{200, 200, 200};
    FillPolygon(f.rc, FillMode::Flat);
    f.rc.opacity = 128;
    front.Use(f.rc);
    f.rc.flatColour = RgbBytes{0, 0, 0};
    DrawUntexturedPolygon(f.rc, 4, kPolygonFlat | kPolygonBlended);
    const Bgra afterFront = f.Pixel(0, 0);
    EXPECT_EQ(f.Depth(0, 0), 10);
    middle.Use(f.rc);
    f.rc.flatColour = RgbBytes{255, 255, 255};
    DrawUntexturedPolygon(f.rc, 4, kPolygonFlat | kPolygonBlended);
    EXPECT_EQ(f.Pixel(0, 0), afterFront);
    EXPECT_EQ(afterFront, (Bgra{99, 99, 99, 255})); // (200 * 127) / 256
}

TEST(DoubleResolution, DoublesVerticesWhileRasterizing) {
    RasterFrame f(10, 8);
    f.rc.doubleResolution = 1;
    UseFlat(f.rc);
    Polygon p = Rect(1, 1, 3, 2);
    p.Use(f.rc);
    DrawUntexturedPolygon(f.rc, 4, kPolygonFlat);
    EXPECT_EQ(f.WrittenInRow(1), 0);
    EXPECT_EQ(f.WrittenInRow(2), 4); // columns 2..5
    EXPECT_EQ(f.WrittenInRow(3), 4);
    EXPECT_EQ(f.WrittenInRow(4), 0);
    EXPECT_TRUE(f.Written(2, 2));
    EXPECT_TRUE(f.Written(5, 3));
}

} // namespace

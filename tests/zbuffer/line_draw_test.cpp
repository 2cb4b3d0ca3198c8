// Lines: Bresenham steps, exact depth, integer clipping, the wide mode and bold lines.
#include "raster_frame.h"
#include "zbuffer/line_draw.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace {

constexpr RgbBytes kColour{10, 20, 30};
constexpr Bgra kBytes{30, 20, 10, 255};

ScreenPoint At(double x, double y, std::int32_t z = 0) {
    return ScreenPoint{static_cast<std::int32_t>(x * 256), static_cast<std::int32_t>(y * 256), z};
}

std::vector<std::pair<int, int>> WrittenPixels(const RasterFrame& f, int w, int h) {
    std::vector<std::pair<int, int>> out;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            if (f.Written(x, y)) out.emplace_back(x, y);
    return out;
}

using Pixels = std::vector<std::pair<int, int>>;

TEST(Lines, LeaveTheirEndPixel) {
    RasterFrame f(16, 12);
    DrawLine(f.rc, At(0, 0, 0), At(10, 0, 100), kColour);
    for (int x = 0; x < 10; ++x) {
        EXPECT_EQ(f.Pixel(x, 0), kBytes) << x;
        EXPECT_EQ(f.Depth(x, 0), 10 * x);
    }
    EXPECT_FALSE(f.Written(10, 0));
    EXPECT_EQ(f.WrittenCount(), 10);
}

TEST(Lines, StepAlongTheMinorAxisByTheErrorTerm) {
    RasterFrame f(16, 12);
    DrawLine(f.rc, At(0, 0), At(4, 2), kColour);
    EXPECT_EQ(WrittenPixels(f, 16, 12), (Pixels{{0, 0}, {1, 0}, {2, 1}, {3, 1}}));

    RasterFrame steep(16, 12);
    DrawLine(steep.rc, At(0, 0), At(2, 5), kColour);
    EXPECT_EQ(WrittenPixels(steep, 16, 12), (Pixels{{0, 0}, {0, 1}, {1, 2}, {1, 3}, {2, 4}}));
}

TEST(Lines, DepthStepsByQuotientAndRemainder) {
    RasterFrame f(16, 12);
    DrawLine(f.rc, At(0, 0, 0), At(3, 0, 11), kColour);
    EXPECT_EQ(f.Depth(0, 0), 0);
    EXPECT_EQ(f.Depth(1, 0), 3);
    EXPECT_EQ(f.Depth(2, 0), 7);
}

TEST(Lines, EqualDepthOverwritesAndBiasApplies) {
    RasterFrame f(16, 12);
    DrawLine(f.rc, At(0, 1, 50), At(4, 1, 50), RgbBytes{1, 1, 1});
    DrawLine(f.rc, At(0, 1, 50), At(4, 1, 50), kColour);
    EXPECT_EQ(f.Pixel(2, 1), kBytes);
    DrawLine(f.rc, At(0, 1, 51), At(4, 1, 51), RgbBytes{1, 1, 1});
    EXPECT_EQ(f.Pixel(2, 1), kBytes);
    f.rc.depthBias = -2;
    DrawLine(f.rc, At(0, 1, 51), At(4, 1, 51), RgbBytes{1, 1, 1});
    EXPECT_EQ(f.Depth(2, 1), 49);
}

TEST(Lines, ClippedStartTakesTheInterpolatedDepth) {
    RasterFrame f(16, 12);
    DrawLine(f.rc, At(-20, 5, 0), At(20, 5, 400), kColour);
    EXPECT_EQ(f.Depth(0, 5), 200);
    EXPECT_EQ(f.Depth(14, 5), 340);
    EXPECT_FALSE(f.Written(15, 5)); // the clipped end is an end pixel too
    EXPECT_EQ(f.WrittenCount(), 15);
}

TEST(LineClip, MovesEndsOntoTheFrame) {
    RasterFrame f(16, 12);
    std::int32_t x0 = 3, y0 = -6, z0 = 0, x1 = 3, y1 = 6, z1 = 120;
    EXPECT_FALSE(ClipLine(f.rc, x0, y0, z0, x1, y1, z1));
    EXPECT_EQ(y0, 0);
    EXPECT_EQ(z0, 60);
    EXPECT_EQ(y1, 6);
    std::int32_t a = 4, b = 2, c = 0, d = 30, e = 15, g = 260; // beyond the right and bottom
    EXPECT_FALSE(ClipLine(f.rc, a, b, c, d, e, g));
    EXPECT_EQ(d, 15); // x to 15 moves y to 2 + 11 * 0.5 = 7.5, truncated
    EXPECT_EQ(e, 7);
    EXPECT_EQ(g, 110);
}

TEST(LineClip, RejectsLinesOutsideTheFrame) {
    RasterFrame f(16, 12);
    std::int32_t x0 = -5, y0 = 3, z0 = 0, x1 = -1, y1 = 9, z1 = 0;
    EXPECT_TRUE(ClipLine(f.rc, x0, y0, z0, x1, y1, z1));
    // Passes beside the top-left corner: only the clipped ends show it.
    std::int32_t a = -5, b = 3, c = 0, d = 3, e = -5, g = 0;
    EXPECT_TRUE(ClipLine(f.rc, a, b, c, d, e, g));
    DrawLine(f.rc, At(-5, 3), At(3, -5), kColour);
    DrawLine(f.rc, At(2.3, 4.1), At(2.9, 4.8), kColour); // one pixel: zero length
    EXPECT_EQ(f.WrittenCount(), 0);
}

TEST(WideLines, FlatLinesAddTheScanlineBelow) {
    RasterFrame f(16, 12);
    f.rc.wideLines = 1;
    DrawLine(f.rc, At(2, 5), At(8, 5), kColour);
    EXPECT_EQ(f.WrittenInRow(5), 6);
    EXPECT_EQ(f.WrittenInRow(6), 6);
    EXPECT_EQ(f.WrittenCount(), 12);
}

TEST(WideLines, LastScanlineDrawsOneRow) {
    RasterFrame f(16, 12);
    f.rc.wideLines = 1;
    DrawLine(f.rc, At(2, 11), At(8, 11), kColour);
    EXPECT_EQ(f.WrittenInRow(11), 6);
    EXPECT_EQ(f.WrittenCount(), 6);
    EXPECT_TRUE(f.GuardsIntact());
}

TEST(WideLines, SteepNeighbourAtTheLastColumnWrapsToTheNextMemoryRow) {
    // Colour rows are bottom-up, depth rows top-down, so the wrapped neighbour lands on
    // screen row y - 1 in colour and y + 1 in depth.
    RasterFrame f(16, 12);
    f.rc.wideLines = 1;
    DrawLine(f.rc, At(15.5, 2), At(15.5, 6), kColour);
    for (int y = 2; y <= 5; ++y) {
        EXPECT_EQ(f.Pixel(15, y), kBytes);
        EXPECT_EQ(f.Pixel(0, y - 1), kBytes);
        EXPECT_TRUE(f.Written(0, y + 1));
    }
    EXPECT_EQ(f.Pixel(0, 5), Bgra{});
    EXPECT_FALSE(f.Written(0, 2));
}

TEST(WideLines, SteepNeighbourNeverLeavesTheBuffers) {
    RasterFrame f(16, 12);
    f.rc.wideLines = 1;
    DrawLine(f.rc, At(15.5, 0), At(15.5, 12), kColour); // top row: colour would leave
    EXPECT_EQ(f.WrittenInRow(0), 1);
    EXPECT_TRUE(f.GuardsIntact());
    RasterFrame g(16, 12);
    g.rc.wideLines = 1;
    DrawLine(g.rc, At(15.5, 12), At(15.5, 0), kColour); // bottom row: depth would leave
    EXPECT_EQ(g.WrittenInRow(11), 2); // its own pixel and the neighbour of scanline 10
    EXPECT_TRUE(g.GuardsIntact());
}

TEST(WideLines, DoubleResolutionTakesHalfPixelEnds) {
    RasterFrame f(16, 12);
    f.rc.wideLines = 1;
    f.rc.doubleResolution = 1;
    DrawLine(f.rc, At(1, 2), At(4, 2), kColour); // pixels 2..7 of scanline 4
    EXPECT_EQ(f.WrittenInRow(4), 6);
    EXPECT_TRUE(f.Written(2, 4));
    EXPECT_EQ(f.WrittenInRow(5), 6);
}

TEST(BoldLines, DrawThreeOffsetCopies) {
    RasterFrame f(16, 12);
    DrawBoldLine(f.rc, At(4, 4), At(10, 4), kColour);
    EXPECT_EQ(f.WrittenInRow(3), 6); // columns 3..8
    EXPECT_TRUE(f.Written(3, 3));
    EXPECT_EQ(f.WrittenInRow(4), 7); // columns 3..9
    EXPECT_TRUE(f.Written(9, 4));
    EXPECT_EQ(f.WrittenCount(), 13);
}

} // namespace

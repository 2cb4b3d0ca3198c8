// Lines: Bresenham steps, exact depth, integer clipping, the wide mode and bold lines.
#include "raster_frame.h"
#include "zbuffer/line_draw.h"

#include <gtest/gtest.h>

namespace {

constexpr RgbBytes kColour{10, 20, 30};
constexpr Bgra kBytes{30, 20, 10, 255};

ScreenPoint At(double x, double y, std::int32_t z = 0) {
    return ScreenPoint{static_cast<std::int32_t>(x * 256), static_cast<std::int32_t>(y * 256), z};
}

struct LineCase {
    const char* what;
    ScreenPoint from, to;
    Spans expected;
    bool wide = false, doubled = false, bold = false;
};

// Ends truncate to whole pixels (half pixels when wide at double resolution); a line draws
// max(|dx|, |dy|) pixels and leaves its end pixel to the next line.
const LineCase kLines[] = {
    {"flat, end pixel left", At(0, 0), At(10, 0), {{0, 0, 10}}},
    {"minor axis by the error term", At(0, 0), At(4, 2), {{0, 0, 2}, {1, 2, 4}}},
    {"steep", At(0, 0), At(2, 5), {{0, 0, 1}, {1, 0, 1}, {2, 1, 2}, {3, 1, 2}, {4, 2, 3}}},
    {"clipped at both sides", At(-20, 5), At(20, 5), {{5, 0, 15}}},
    {"wholly left of the frame", At(-5, 3), At(-1, 9), {}},
    {"beside the top-left corner", At(-5, 3), At(3, -5), {}},
    {"within one pixel", At(2.3, 4.1), At(2.9, 4.8), {}},
    {"wide adds the scanline below", At(2, 5), At(8, 5), {{5, 2, 8}, {6, 2, 8}}, true},
    {"wide on the last scanline", At(2, 11), At(8, 11), {{11, 2, 8}}, true},
    {"wide, double resolution", At(1, 2), At(4, 2), {{4, 2, 8}, {5, 2, 8}}, true, true},
    // Three copies offset by (-164, -164), (32, 32) and (-164, 128) in 1/256 pixel.
    {"bold", At(4, 4), At(10, 4), {{3, 3, 9}, {4, 3, 10}}, false, false, true},
};

TEST(Lines, DrawExactlyTheHandWorkedPixels) {
    for (const LineCase& c : kLines) {
        SCOPED_TRACE(c.what);
        RasterFrame f(16, 12);
        f.rc.wideLines = c.wide;
        f.rc.doubleResolution = c.doubled;
        (c.bold ? DrawBoldLine : DrawLine)(f.rc, c.from, c.to, kColour);
        EXPECT_EQ(f.WrittenSpans(), c.expected);
        for (const Span& s : c.expected) EXPECT_EQ(f.Pixel(s.first, s.y), kBytes);
        EXPECT_TRUE(f.GuardsIntact());
    }
}

TEST(Lines, DepthStepsByQuotientAndRemainderFromTheClippedStart) {
    RasterFrame f(16, 12);
    DrawLine(f.rc, At(0, 0, 0), At(10, 0, 100), kColour);
    DrawLine(f.rc, At(0, 1, 0), At(3, 1, 11), kColour);
    DrawLine(f.rc, At(-20, 5, 0), At(20, 5, 400), kColour);
    for (int x = 0; x < 10; ++x) EXPECT_EQ(f.Depth(x, 0), 10 * x);
    EXPECT_EQ(f.Depth(1, 1), 3);
    EXPECT_EQ(f.Depth(2, 1), 7);
    EXPECT_EQ(f.Depth(0, 5), 200);
    EXPECT_EQ(f.Depth(14, 5), 340);
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
    std::int32_t p = -5, q = 3, r = 0, s = 3, t = -5, u = 0; // beside the top-left corner
    EXPECT_TRUE(ClipLine(f.rc, p, q, r, s, t, u));
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

} // namespace

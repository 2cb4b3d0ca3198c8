// Lines: Bresenham steps, exact depth, integer clipping, the wide mode and bold lines.
#include "raster_frame.h"
#include "zbuffer/raster/line_draw.h"

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
        for (const Span& s : c.expected) EXPECT_EQ(f.Pixel(s[1], s[0]), kBytes);
        EXPECT_TRUE(f.GuardsIntact());
    }
}

TEST(Lines, DepthStepsFromTheClippedStartAndEqualDepthOverwrites) {
    RasterFrame f(16, 12);
    DrawLine(f.rc, At(0, 1, 0), At(3, 1, 11), kColour);
    DrawLine(f.rc, At(-20, 5, 0), At(20, 5, 400), kColour);
    EXPECT_EQ(f.Depth(1, 1), 3);
    EXPECT_EQ(f.Depth(2, 1), 7);
    EXPECT_EQ(f.Depth(0, 5), 200);
    EXPECT_EQ(f.Depth(14, 5), 340);
    f.rc.depthBias = -2; // the same depths again
    DrawLine(f.rc, At(0, 1, 2), At(3, 1, 13), RgbBytes{1, 1, 1});
    EXPECT_EQ(f.Pixel(2, 1), (Bgra{1, 1, 1, 255}));
}

TEST(LineClip, MovesEndsOntoTheFrame) {
    RasterFrame f(16, 12);
    std::int32_t x0 = 3, y0 = -6, z0 = 0, x1 = 4, y1 = 2, z1 = 0;
    std::int32_t x2 = 30, y2 = 15, z2 = 260, x3 = 3, y3 = 6, z3 = 120;
    EXPECT_FALSE(ClipLine(f.rc, x0, y0, z0, x3, y3, z3)); // from above the top
    EXPECT_EQ(y0, 0);
    EXPECT_EQ(z0, 60);
    EXPECT_FALSE(ClipLine(f.rc, x1, y1, z1, x2, y2, z2)); // beyond the right and the bottom
    EXPECT_EQ(x2, 15); // x to 15 moves y to 2 + 11 * 0.5 = 7.5, truncated
    EXPECT_EQ(y2, 7);
    EXPECT_EQ(z2, 110);
}

TEST(WideLines, SteepNeighbourWrapsAtTheLastColumnButNeverLeavesTheBuffers) {
    // Colour rows are bottom-up and depth rows top-down, so the neighbour of (15, 1) wraps to
    // screen row 0 in colour and row 2 in depth. At the top row the colour neighbour, at the
    // bottom row the depth neighbour would leave its buffer.
    RasterFrame f(16, 12);
    f.rc.wideLines = 1;
    DrawLine(f.rc, At(15.5, 0), At(15.5, 2), kColour);
    DrawLine(f.rc, At(15.5, 12), At(15.5, 10), kColour);
    EXPECT_EQ(f.WrittenSpans(), (Spans{{0, 15, 16}, {1, 15, 16}, {2, 0, 1}, {11, 15, 16}}));
    EXPECT_EQ(f.Pixel(0, 0), kBytes);
    EXPECT_EQ(f.Pixel(0, 2), Bgra{});
    EXPECT_TRUE(f.GuardsIntact());
}

} // namespace

// Point plotting and the back-face rule.
#include "raster_frame.h"
#include "zbuffer/back_face.h"
#include "zbuffer/point_plot.h"

#include <gtest/gtest.h>

namespace {

constexpr RgbBytes kColour{10, 20, 30};
constexpr Bgra kBytes{30, 20, 10, 255};

TEST(Points, LandOnTheTruncatedPixel) {
    RasterFrame f(8, 6);
    PlotPoint(f.rc, ScreenPoint{1408, 819, 40}, kColour, false); // (5.5, 3.2)
    EXPECT_EQ(f.Pixel(5, 3), kBytes);
    EXPECT_EQ(f.Depth(5, 3), 40);
    PlotPoint(f.rc, ScreenPoint{-100, 0, 0}, kColour, false); // truncates to column 0
    EXPECT_TRUE(f.Written(0, 0));
    EXPECT_EQ(f.WrittenCount(), 2);
}

TEST(Points, OutsideTheFrameDrawNothing) {
    RasterFrame f(8, 6);
    PlotPoint(f.rc, ScreenPoint{-256, 0, 0}, kColour, false);
    PlotPoint(f.rc, ScreenPoint{8 * 256, 0, 0}, kColour, false);
    PlotPoint(f.rc, ScreenPoint{0, 6 * 256, 0}, kColour, false);
    PlotPoint(f.rc, ScreenPoint{0, -300, 0}, kColour, false);
    EXPECT_EQ(f.WrittenCount(), 0);
}

TEST(Points, TestedPointsNeedStrictlyNearerDepth) {
    RasterFrame f(8, 6);
    PlotPoint(f.rc, ScreenPoint{256, 256, 100}, kColour, true);
    PlotPoint(f.rc, ScreenPoint{256, 256, 100}, RgbBytes{1, 1, 1}, true);
    EXPECT_EQ(f.Pixel(1, 1), kBytes);
    PlotPoint(f.rc, ScreenPoint{256, 256, 99}, RgbBytes{1, 1, 1}, true);
    EXPECT_EQ(f.Pixel(1, 1), (Bgra{1, 1, 1, 255}));
    PlotPoint(f.rc, ScreenPoint{256, 256, 500}, kColour, false); // untested: always written
    EXPECT_EQ(f.Pixel(1, 1), kBytes);
    EXPECT_EQ(f.Depth(1, 1), 500);
}

TEST(Points, BiasAndDoubleResolution) {
    RasterFrame f(16, 10);
    f.rc.doubleResolution = 1;
    f.rc.depthBias = -1024;
    PlotPoint(f.rc, ScreenPoint{1408, 819, 2000}, kColour, false);
    EXPECT_TRUE(f.Written(11, 6));
    EXPECT_TRUE(f.Written(12, 6));
    EXPECT_TRUE(f.Written(11, 7));
    EXPECT_TRUE(f.Written(12, 7));
    EXPECT_EQ(f.Depth(12, 7), 976);
    EXPECT_EQ(f.WrittenCount(), 4);
}

TEST(BackFace, PositiveAreaIsCulled) {
    ScreenVertex a = Vertex(0, 0), b = Vertex(10, 0), c = Vertex(0, 10);
    const ScreenVertex* clockwise[] = {&a, &b, &c};
    const ScreenVertex* counter[] = {&a, &c, &b};
    EXPECT_FALSE(PassesBackFaceTest(clockwise, 3));
    EXPECT_TRUE(PassesBackFaceTest(counter, 3));
}

TEST(BackFace, ZeroAreaIsDrawn) {
    ScreenVertex a = Vertex(0, 0), b = Vertex(5, 5), c = Vertex(10, 10);
    const ScreenVertex* line[] = {&a, &b, &c};
    EXPECT_TRUE(PassesBackFaceTest(line, 3));
}

TEST(BackFace, AreaIsSummedInSixtyFourBits) {
    // Products of 1/256-pixel coordinates this large overflow 32 bits.
    ScreenVertex a = Vertex(-30000, -30000), b = Vertex(30000, -30000), c = Vertex(30000, 30000);
    const ScreenVertex* clockwise[] = {&a, &b, &c};
    EXPECT_FALSE(PassesBackFaceTest(clockwise, 3));
}

} // namespace

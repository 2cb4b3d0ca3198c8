// IZB's screen-space drawing operations reach the rasterizer through the current surface.
#include <gtest/gtest.h>

#include "zbuffer/izb.h"
#include "zbuffer/raster_context.h"
#include "zbuffer/screen_vertex.h"

namespace {

ScreenVertex At(int x, int y, std::uint8_t red, std::uint8_t green = 0, std::uint8_t blue = 0) {
    ScreenVertex v{};
    v.x = x * 256;
    v.y = y * 256;
    v.z = 100;
    v.red = red;
    v.green = green;
    v.blue = blue;
    return v;
}

class IzbDraw : public ::testing::Test {
protected:
    void SetUp() override {
        driver->Resize(8, 6);
        driver->FrameStep(0);
        driver->ClearFrame(0);
    }
    void TearDown() override { driver->Release(); }

    const std::uint8_t* Pixel(int x, int y) const {
        const SurfaceRecord& s = driver->surface;
        return s.colourBits + (s.H - 1 - y) * s.colourStride + 4 * x;
    }
    int Written() const {
        int n = 0;
        for (std::uint32_t i = 0; i < driver->depthEntryCount; ++i)
            n += driver->surface.depth[i] != 0x7FFFFFFF;
        return n;
    }

    IZB* driver = new IZB();
};

TEST_F(IzbDraw, PolygonFillsItsPixelsAndLeavesTheCallersVertices) {
    const ScreenVertex square[4] = {At(2, 1, 10, 20, 30), At(5, 1, 10, 20, 30),
                                    At(5, 4, 10, 20, 30), At(2, 4, 10, 20, 30)};
    EXPECT_EQ(driver->DrawScreenPolygon(square, 4), 1);
    EXPECT_EQ(Written(), 9) << "columns 2-4 of rows 1-3";
    const std::uint8_t* p = Pixel(3, 2);
    EXPECT_EQ(p[0], 30);
    EXPECT_EQ(p[1], 20);
    EXPECT_EQ(p[2], 10);
    EXPECT_EQ(p[3], 255);
    EXPECT_EQ(driver->surface.depth[2 * 8 + 3], 100);
    EXPECT_EQ(square[1].x, 5 * 256);
    EXPECT_EQ(Pixel(5, 2)[3], 0);
}

TEST_F(IzbDraw, BadVertexCountsDrawNothing) {
    const ScreenVertex many[9] = {At(0, 0, 1), At(7, 0, 1), At(7, 5, 1), At(0, 5, 1), At(0, 0, 1),
                                  At(7, 0, 1), At(7, 5, 1), At(0, 5, 1), At(1, 1, 1)};
    EXPECT_EQ(driver->DrawScreenPolygon(many, 0), 0);
    EXPECT_EQ(driver->DrawScreenPolygon(many, 9), 0);
    EXPECT_EQ(driver->DrawScreenPolygon(nullptr, 3), 0);
    EXPECT_EQ(Written(), 0);
}

TEST_F(IzbDraw, FrameBorderCoversTheEdgesOnly) {
    EXPECT_EQ(driver->DrawFrameBorder(0, 1, 0x0000FF), 1);
    for (int y = 0; y < 6; ++y)
        for (int x = 0; x < 8; ++x) {
            const bool edge = x == 0 || x == 7 || y == 0 || y == 5;
            EXPECT_EQ(Pixel(x, y)[2], edge ? 255 : 0) << x << "," << y;
        }
}

TEST_F(IzbDraw, LinesAndPointsAreDepthTested) {
    const ScreenVertex a = At(1, 2, 200), b = At(6, 2, 200);
    EXPECT_EQ(driver->DrawScreenLine(&a, &b), 1);
    int inRow = 0;
    for (int x = 0; x < 8; ++x) inRow += Pixel(x, 2)[2] == 200;
    EXPECT_GE(inRow, 5);
    EXPECT_EQ(Written(), inRow);

    ScreenVertex p = At(3, 4, 77);
    EXPECT_EQ(driver->DrawPoint(&p), 1);
    EXPECT_EQ(Pixel(3, 4)[2], 77);
    p.z = 100; // points need a strictly nearer depth
    p.red = 5;
    driver->DrawPoint(&p);
    EXPECT_EQ(Pixel(3, 4)[2], 77);
}

} // namespace

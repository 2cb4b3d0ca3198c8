// IZB surfaces and frame phases: sizes, clears, gradient rows, depth fade, 2 x 2 reduction.
#include <gtest/gtest.h>

#include <cstring>

#include "support/recording_view.h"
#include "zbuffer/izb.h"
#include "zbuffer/raster_context.h"

namespace {

constexpr std::int32_t kEmpty = 0x7FFFFFFF;

class IzbFrame : public ::testing::Test {
protected:
    void SetUp() override { driver->Attach(1, &context); }
    void TearDown() override { driver->Release(); }

    // Bytes B, G, R, A of the pixel at screen (x, y).
    const std::uint8_t* Pixel(std::int32_t x, std::int32_t y) {
        const SurfaceRecord& s = driver->surface;
        return s.colourBits + (s.H - 1 - y) * s.colourStride + 4 * x;
    }

    RecordingView view;
    q5_RENDERCONTEXT context{&view};
    IZB* driver = new IZB();
};

TEST_F(IzbFrame, ResizeMakesSurfacesAndIgnoresBadOrSameSizes) {
    driver->Resize(3, 5);
    EXPECT_EQ(driver->GetValue(100, 0), 3);
    EXPECT_EQ(driver->GetValue(101, 0), 5);
    EXPECT_EQ(driver->surface.colourStride, 12);
    EXPECT_EQ(driver->GetValue(103, 0), 60);
    EXPECT_EQ(driver->GetValue(105, 0), 60);
    EXPECT_EQ(driver->GetValue(106, 0), 12);
    EXPECT_EQ(driver->depthEntryCount, 15u);
    const std::int64_t depth = driver->GetValue(104, 0);
    ASSERT_NE(depth, 0);
    // The row offset is scaled by 4 once more than bytes need.
    EXPECT_EQ(driver->GetValue(107, 1), depth + 16 * 3);
    EXPECT_EQ(driver->QueryCaps(11), 0);
    EXPECT_EQ(ModuleRasterContext().colourBase, driver->surface.colourBits);
    EXPECT_EQ(ModuleRasterContext().clipMaxX, 2);
    EXPECT_EQ(ModuleRasterContext().clipMaxY, 4);

    const std::int64_t bits = driver->GetValue(102, 0);
    driver->Resize(0, 10);
    driver->Resize(10, -1);
    driver->Resize(3, 5);
    EXPECT_EQ(driver->GetValue(102, 0), bits);
    EXPECT_EQ(driver->GetValue(100, 0), 3);

    driver->Resize(5, 1);
    EXPECT_EQ(driver->surface.colourStride, 20);
    EXPECT_EQ(driver->GetValue(101, 0), 1);
}

TEST_F(IzbFrame, ClearFillsColourAndEmptiesDepth) {
    driver->Resize(4, 3);
    view.secondBackground = 0x123456;
    driver->MarkId(1);
    driver->ClearFrame(0x123456); // same second colour: solid
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 4; ++x) {
            const std::uint8_t* p = Pixel(x, y);
            EXPECT_EQ(p[0], 0x12);
            EXPECT_EQ(p[1], 0x34);
            EXPECT_EQ(p[2], 0x56);
            EXPECT_EQ(p[3], 0);
        }
    for (std::uint32_t i = 0; i < driver->depthEntryCount; ++i)
        EXPECT_EQ(driver->surface.depth[i], kEmpty);
    EXPECT_EQ(driver->IsIdMarked(1), 0);
}

TEST_F(IzbFrame, GradientRunsFromTopColourToBottomColour) {
    driver->Resize(2, 5);
    view.secondBackground = 0xFF0000; // blue
    driver->ClearFrame(0x0000FF);     // red
    // t = 256 r / 4 = 0, 64, 128, 192, 256; red = (256 - t) 255 / 256, blue = t 255 / 256.
    const int red[5] = {255, 191, 127, 63, 0};
    const int blue[5] = {0, 63, 127, 191, 255};
    for (int r = 0; r < 5; ++r) {
        EXPECT_EQ(Pixel(1, r)[2], red[r]) << r;
        EXPECT_EQ(Pixel(1, r)[0], blue[r]) << r;
        EXPECT_EQ(Pixel(1, r)[1], 0) << r;
    }
}

TEST_F(IzbFrame, TwoRowsAreNeverAGradient) {
    driver->Resize(2, 2);
    view.secondBackground = 0xFF0000;
    driver->ClearFrame(0x0000FF);
    EXPECT_EQ(Pixel(0, 0)[2], 255);
    EXPECT_EQ(Pixel(0, 1)[2], 255);
    EXPECT_EQ(Pixel(0, 1)[0], 0);
}

TEST_F(IzbFrame, DepthFadeBlendsByDepthOncePerFrame) {
    driver->Resize(4, 1);
    driver->ClearFrame(0xC8C8C8); // 200 in every channel
    view.settings.flags = q5_RENDERSETTINGS::kFlagDepthFade;
    view.fade = 0x646464; // 100
    // far = 2048, near = 1024, step = 1024 >> 8 = 4.
    context.depthScale = 2560.0;
    context.depthOffset = 0.0;
    std::int32_t* depth = driver->surface.depth;
    depth[0] = 1000; // nearer than near: untouched
    depth[1] = 1536; // t = 128: halfway
    depth[2] = 3000; // beyond far: t = 256, the fade colour
    depth[3] = kEmpty;
    driver->FrameStep(0);
    driver->FrameStep(3);
    EXPECT_EQ(Pixel(0, 0)[0], 200);
    EXPECT_EQ(Pixel(1, 0)[0], 150);
    EXPECT_EQ(Pixel(2, 0)[1], 100);
    EXPECT_EQ(Pixel(3, 0)[2], 200);
    EXPECT_NE(driver->flags & IZB::kFlagFadeApplied, 0u);
    driver->FrameStep(3);
    EXPECT_EQ(Pixel(1, 0)[0], 150) << "applied at most once a frame";
    driver->FrameStep(0);
    EXPECT_EQ(driver->flags & IZB::kFlagFadeApplied, 0u);
}

TEST_F(IzbFrame, SupersampledFrameReducesTwoByTwoWithTruncation) {
    driver->Resize(2, 1);
    driver->ClearFrame(0);
    const std::uint8_t* fullSize = driver->surface.colourBits;
    driver->FrameStep(4);
    EXPECT_EQ(driver->GetValue(100, 0), 4);
    EXPECT_EQ(driver->GetValue(101, 0), 2);
    EXPECT_EQ(ModuleRasterContext().doubleResolution, 1);
    EXPECT_TRUE(Renderer().supersampleRequest);
    // Destination pixel 0 averages bytes 1, 2, 3, 4 (sum 10 -> 2); pixel 1 averages 255 x 4.
    std::uint8_t* bits = driver->surface.colourBits;
    const std::int32_t stride = driver->surface.colourStride;
    for (int row = 0; row < 2; ++row)
        for (int k = 0; k < 4; ++k) {
            bits[row * stride + k] = static_cast<std::uint8_t>(1 + 2 * row);
            bits[row * stride + 4 + k] = static_cast<std::uint8_t>(2 + 2 * row);
            bits[row * stride + 8 + k] = 255;
            bits[row * stride + 12 + k] = 255;
        }
    driver->FrameStep(5);
    EXPECT_EQ(driver->GetValue(100, 0), 2);
    EXPECT_EQ(driver->surface.colourBits, fullSize) << "the saved surface comes back";
    EXPECT_EQ(ModuleRasterContext().doubleResolution, 0);
    EXPECT_TRUE(Renderer().supersampleRequest) << "kept until phase 6";
    for (int k = 0; k < 4; ++k) {
        EXPECT_EQ(Pixel(0, 0)[k], 2) << k;
        EXPECT_EQ(Pixel(1, 0)[k], 255) << k;
    }
    driver->FrameStep(6);
    EXPECT_FALSE(Renderer().supersampleRequest);
}

TEST_F(IzbFrame, CancelledSupersampledFrameKeepsThePreviousImage) {
    q5_PROGRESS progress;
    progress.abort = true;
    context.progress = &progress;
    driver->Attach(1, &context);
    driver->Resize(2, 2);
    view.secondBackground = 0x0000FF;
    driver->ClearFrame(0x0000FF);
    driver->FrameStep(4);
    std::memset(driver->surface.colourBits, 7, driver->colourSize);
    driver->FrameStep(5);
    EXPECT_EQ(Pixel(0, 0)[2], 255);
    EXPECT_EQ(Pixel(1, 1)[0], 0);
    driver->FrameStep(6);
}

TEST_F(IzbFrame, SupersampleRequestFollowsTheViewsFactor) {
    Renderer().supersampleRequest = false;
    view.supersample = 1.0;
    driver->FrameStep(2);
    EXPECT_FALSE(Renderer().supersampleRequest);
    view.supersample = 2.0;
    driver->FrameStep(2);
    EXPECT_TRUE(Renderer().supersampleRequest);
    driver->FrameStep(6);
}

TEST_F(IzbFrame, EndOfFrameForgetsTheCurrentSurface) {
    driver->Resize(2, 2);
    driver->FrameStep(0);
    EXPECT_NE(ModuleRasterContext().colourBase, nullptr);
    driver->FrameStep(1);
    EXPECT_EQ(ModuleRasterContext().colourBase, nullptr);
    driver->ClearFrame(0); // no current surface: nothing happens
    EXPECT_TRUE(driver->FrameStep(99));
}

} // namespace

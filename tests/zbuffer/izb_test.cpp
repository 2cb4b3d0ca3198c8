// IZB: its numbered parameters and values, marks, surfaces and frame phases, and screen-space
// drawing through the current surface.
#include <gtest/gtest.h>

#include <cstring>

#include "raster_frame.h"
#include "support/test_view.h"
#include "zbuffer/izb.h"

namespace {

class Izb : public ::testing::Test {
protected:
    void SetUp() override { driver->Attach(1, &context); }
    void TearDown() override { driver->Release(); }
    Bgra Pixel(int x, int y) const { return SurfacePixel(SurfaceOf(*driver), x, y); }
    Spans Written() const { return SurfaceSpans(SurfaceOf(*driver)); }

    TestView view;
    q5_RENDERCONTEXT context{&view};
    DriverModule module;
    IZB* driver = new IZB(module);
};

TEST_F(Izb, Params1001And1002AreFlags) {
    for (std::uint64_t value : {0, 5, 0}) {
        EXPECT_EQ(driver->SetParam(1001, value, Q5_VALUE_INT), 1u);
        EXPECT_EQ(driver->GetParam(1001, 0, Q5_VALUE_INT), std::uint64_t{value != 0})
            << "stored inverted, read inverted";
        EXPECT_EQ(driver->SetParam(1002, value, Q5_VALUE_INT), 1u);
        EXPECT_EQ(view.settings.flag1002, value != 0) << "in the context's render settings";
    }
}

TEST_F(Izb, Param1003ClampsIntegersAndEchoesTheArgumentOnIntegerRead) {
    float out = -1.0f, in = 2.5f;
    const auto outArg = reinterpret_cast<std::uint64_t>(&out);
    for (auto [value, stored] : {std::pair{70000, 65535.0f}, std::pair{-5, 0.0f}}) {
        EXPECT_EQ(driver->SetParam(1003, static_cast<std::uint64_t>(value), Q5_VALUE_INT), 1u);
        EXPECT_EQ(driver->GetParam(1003, outArg, Q5_VALUE_FLOATPTR), 1u);
        EXPECT_EQ(out, stored) << value;
    }
    EXPECT_EQ(driver->SetParam(1003, reinterpret_cast<std::uint64_t>(&in), Q5_VALUE_FLOATPTR), 1u);
    driver->GetParam(1003, outArg, Q5_VALUE_FLOATPTR);
    EXPECT_EQ(out, 2.5f);
    EXPECT_EQ(driver->GetParam(1003, 1234, Q5_VALUE_INT), 1234u);
    EXPECT_EQ(driver->SetParam(1003, 1, Q5_VALUE_BOOL), 0u);
    EXPECT_EQ(driver->SetParam(999, 1, Q5_VALUE_INT), 0u);
}

TEST_F(Izb, MarksBelongToTheirDriverAndAClearUnmarksTheAttachedId) {
    IZB* other = new IZB(module);
    constexpr std::uint64_t kId = 0xABCDEF0012345ull;
    driver->MarkId(kId);
    driver->MarkId(1);
    EXPECT_EQ(driver->IsIdMarked(kId), 1);
    EXPECT_EQ(driver->IsIdMarked(kId + 1), 0);
    EXPECT_EQ(other->IsIdMarked(kId), 0) << "another driver keeps its own list";
    other->Release();
    driver->ClearFrame(0);
    EXPECT_EQ(driver->IsIdMarked(1), 1) << "no surface yet: nothing cleared";
    driver->Resize(1, 1);
    driver->ClearFrame(0);
    EXPECT_EQ(driver->IsIdMarked(1), 0) << "the attached id";
    EXPECT_EQ(driver->IsIdMarked(kId), 1);
    driver->MarkId(1);
    EXPECT_EQ(driver->IsIdMarked(1), 1) << "the same node marked again";
}

TEST_F(Izb, ResizeMakesSurfacesAndIgnoresBadOrSameSizes) {
    driver->Resize(3, 5);
    // Width, height, colour size, depth bytes and depth stride.
    const std::pair<int, std::int64_t> values[] = {
        {100, 3}, {101, 5}, {103, 60}, {105, 60}, {106, 12}};
    for (auto [id, value] : values) EXPECT_EQ(driver->GetValue(id, 0), value) << id;
    EXPECT_EQ(driver->QueryCaps(11), 0) << "both surfaces exist";
    // The row offset is scaled by 4 once more than bytes need.
    EXPECT_EQ(driver->GetValue(107, 1), driver->GetValue(104, 0) + 16 * 3);

    const std::int64_t bits = driver->GetValue(102, 0);
    driver->Resize(0, 10);
    driver->Resize(3, 5);
    EXPECT_EQ(driver->GetValue(102, 0), bits);
    EXPECT_EQ(driver->GetValue(100, 0), 3);
}

// Another second colour makes a gradient from top to bottom from three rows on, checked to the
// pixel by render_cli_test's golden images.
TEST_F(Izb, ClearFillsColourOrGradientAndEmptiesDepth) {
    driver->Resize(2, 5);
    view.secondBackground = 0x123456;
    driver->ClearFrame(0x123456);
    for (int i = 0; i < 10; ++i) EXPECT_EQ(Pixel(i % 2, i / 2), (Bgra{0x12, 0x34, 0x56, 0})) << i;
    EXPECT_TRUE(Written().empty()) << "every depth entry empty";
    view.secondBackground = 0xFF0000; // blue
    driver->Resize(2, 2);
    driver->ClearFrame(0x0000FF); // red
    EXPECT_EQ(Pixel(0, 1), (Bgra{0, 0, 255, 0})) << "two rows are never a gradient";
}

TEST_F(Izb, DepthFadeBlendsByDepthOncePerFrame) {
    driver->Resize(4, 1);
    driver->ClearFrame(0xC8C8C8); // 200 in every channel
    view.settings.flags = q5_RENDERSETTINGS::kFlagDepthFade;
    view.fade = 0x646464; // 100
    // far = 2048, near = 1024, step = 1024 >> 8 = 4.
    context.depthScale = 2560.0;
    std::int32_t* depth = SurfaceOf(*driver).depth;
    depth[0] = 1000; // nearer than near: untouched
    depth[1] = 1536; // t = 128: halfway
    depth[2] = 3000; // beyond far: t = 256, the fade colour
    driver->FrameStep(0);
    driver->FrameStep(3);
    const std::uint8_t expected[4] = {200, 150, 100, 200};
    for (int x = 0; x < 4; ++x) EXPECT_EQ(Pixel(x, 0).g, expected[x]) << x;
    driver->FrameStep(3);
    EXPECT_EQ(Pixel(1, 0).g, 150) << "applied at most once a frame";
    driver->FrameStep(0);
    driver->FrameStep(3);
    EXPECT_EQ(Pixel(1, 0).g, 125) << "a new frame fades again";
}

// Alpha, and the surface that comes back, are what the pictures of the golden images miss.
TEST_F(Izb, SupersampledFrameReducesTwoByTwoWithTruncation) {
    view.supersample = 2.0;
    driver->FrameStep(2);
    driver->Resize(2, 1);
    driver->ClearFrame(0);
    const std::uint8_t* fullSize = SurfaceOf(*driver).colourBits;
    driver->FrameStep(4);
    EXPECT_EQ(driver->GetValue(100, 0), 4);
    // Destination pixel 0 averages bytes 1, 2, 3, 4 (sum 10 -> 2); pixel 1 averages 255 x 4.
    std::uint8_t* bits = SurfaceOf(*driver).colourBits;
    const std::int32_t stride = SurfaceOf(*driver).colourStride;
    for (int row = 0; row < 2; ++row) {
        std::memset(bits + row * stride, 1 + 2 * row, 4);
        std::memset(bits + row * stride + 4, 2 + 2 * row, 4);
        std::memset(bits + row * stride + 8, 255, 8);
    }
    driver->FrameStep(5);
    EXPECT_EQ(driver->GetValue(100, 0), 2);
    EXPECT_EQ(SurfaceOf(*driver).colourBits, fullSize) << "the saved surface comes back";
    EXPECT_EQ(Pixel(0, 0), (Bgra{2, 2, 2, 2}));
    EXPECT_EQ(Pixel(1, 0), (Bgra{255, 255, 255, 255}));
    driver->FrameStep(6);
}

// Lines end before their end pixel, in the first vertex's colour.
TEST_F(Izb, SupersampledFrameDoublesPositionsAndWidensLines) {
    driver->Resize(3, 2);
    driver->FrameStep(0);
    driver->FrameStep(4);
    driver->ClearFrame(0);
    const ScreenVertex a = Vertex(0, 0, 100, 200), b = Vertex(1, 0, 100, 10);
    EXPECT_EQ(driver->DrawScreenLine(&a, &b), 1);
    EXPECT_EQ(Written(), (Spans{{0, 0, 2}, {1, 0, 2}}));
    driver->FrameStep(5);
    driver->FrameStep(6);
    driver->ClearFrame(0);
    driver->DrawScreenLine(&a, &b);
    EXPECT_EQ(Written(), (Spans{{0, 0, 1}})) << "back to single size";
    EXPECT_EQ(Pixel(0, 0), (Bgra{0, 0, 200, 255}));
}

TEST_F(Izb, CancelledSupersampledFrameKeepsThePreviousImage) {
    q5_PROGRESS progress;
    progress.abort = true;
    context.progress = &progress;
    driver->Attach(1, &context);
    driver->Resize(2, 2);
    driver->ClearFrame(0x0000FF);
    driver->FrameStep(4);
    std::memset(SurfaceOf(*driver).colourBits, 7, driver->GetValue(103, 0));
    driver->FrameStep(5);
    EXPECT_EQ(Pixel(1, 1), (Bgra{0, 0, 255, 0}));
    driver->FrameStep(6);
}

TEST_F(Izb, PolygonFillsItsPixelsAndLeavesTheCallersVertices) {
    driver->Resize(8, 6);
    driver->ClearFrame(0);
    const ScreenVertex square[9] = {Vertex(2, 1, 100, 10, 20, 30), Vertex(5, 1, 100, 10, 20, 30),
                                    Vertex(5, 4, 100, 10, 20, 30), Vertex(2, 4, 100, 10, 20, 30)};
    EXPECT_EQ(driver->DrawScreenPolygon(square, 0), 0);
    EXPECT_EQ(driver->DrawScreenPolygon(square, 9), 0);
    EXPECT_EQ(driver->DrawScreenPolygon(nullptr, 3), 0);
    EXPECT_EQ(driver->DrawScreenPolygon(square, 4), 1);
    EXPECT_EQ(Written(), (Spans{{1, 2, 5}, {2, 2, 5}, {3, 2, 5}}));
    EXPECT_EQ(Pixel(3, 2), (Bgra{30, 20, 10, 255}));
    EXPECT_EQ(square[1].x, 5 * 256);
}

TEST_F(Izb, FrameBorderCoversTheEdgesOnly) {
    driver->Resize(8, 6);
    driver->ClearFrame(0);
    EXPECT_EQ(driver->DrawFrameBorder(0, 1, 0x0000FF), 1);
    for (int y = 0; y < 6; ++y)
        for (int x = 0; x < 8; ++x)
            EXPECT_EQ(Pixel(x, y).r, x == 0 || x == 7 || y == 0 || y == 5 ? 255 : 0) << x << y;
}

} // namespace

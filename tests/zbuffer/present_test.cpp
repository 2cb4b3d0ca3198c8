// Presentation and overlays: background pictures in the clear, the frame to a real window,
// the copy target, XOR rubber bands and labels.
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <vector>

#include "core/platform/graphics.h"
#include "core/platform/host_window.h"
#include "core/platform/module.h"
#include "raster_frame.h"
#include "support/test_view.h"
#include "zbuffer/izb.h"

namespace {

constexpr std::uint32_t kClear = 0x203040; // red in the low byte
const Bgra kClearPixel{0x20, 0x30, 0x40, 0};
#if defined(_WIN32)
constexpr int kStretchSlack = 1; // the system's stretch may round a boundary the other way
#else
constexpr int kStretchSlack = 0;
#endif

// Picture pixel (x, y from the top): unique per position so a test can tell which one landed.
std::uint32_t Marker(int x, int y) {
    return 0xFF000000u | (static_cast<std::uint32_t>(x & 0xFF) << 16) |
           (static_cast<std::uint32_t>(y & 0xFF) << 8) | static_cast<std::uint32_t>((x >> 8) << 4 | (y >> 8));
}
// Which picture pixel a surface pixel came from; false for the clear colour. Colour bytes only:
// what the fourth byte holds after a system transfer is not ours to fix.
bool SourceOf(Bgra p, int& x, int& y) {
    p.a = 0;
    x = p.r | (p.b >> 4) << 8;
    y = p.g | (p.b & 0xF) << 8;
    return !(p == kClearPixel); // the clear colour's blue byte stands for x >= 512
}

class Present : public ::testing::Test {
protected:
    void SetUp() override {
        view.secondBackground = kClear; // one colour, no gradient
        driver->Attach(1, &context);
    }
    void TearDown() override {
        driver->Release();
        for (TestPicture* p : pictures) p->Release();
    }
    TestPicture& Picture(int w, int h) {
        auto* p = new TestPicture(w, h, 32);
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) p->SetTexel(x, y, Marker(x, y));
        pictures.push_back(p);
        return *p;
    }
    void Frame(int w, int h) {
        driver->Resize(w, h);
        driver->FrameStep(0);
    }
    Bgra Pixel(int x, int y) const { return SurfacePixel(SurfaceOf(*driver), x, y); }

    TestView view;
    q5_RENDERCONTEXT context{&view};
    DriverModule module;
    IZB* driver = new IZB(module);
    std::vector<TestPicture*> pictures;
};

struct BackgroundCase {
    const char* what;
    int pw, ph, W, H, mode;
    double supersample;
    // The picture pixel expected at frame pixel (x, y), or false where the clear colour is.
    std::function<bool(int x, int y, int& sx, int& sy)> expected;
    bool exact; // unscaled transfers give the same pixels everywhere
};

// A smaller picture tiled or centred on the clear colour: the golden background images.
TEST_F(Present, BackgroundPicturesAreStretchedCentredAndTiled) {
    const BackgroundCase cases[] = {
        {"400x300 centred on 200x200 at (-100, -50), not filled", 400, 300, 200, 200, 2, 1.0,
         [](int x, int y, int& sx, int& sy) { return sx = x + 100, sy = y + 50, true; }, true},
        {"mode 130 keeps the low 7 bits: centre", 80, 80, 60, 60, 130, 1.0,
         [](int x, int y, int& sx, int& sy) { return sx = x + 10, sy = y + 10, true; }, true},
        {"stretched 2x: 50x25 on 100x50", 50, 25, 100, 50, 0, 1.0,
         [](int x, int y, int& sx, int& sy) { return sx = x / 2, sy = y / 2, true; }, false},
        {"tiled at the supersampling factor 2: the unscaled tests add a row", 30, 30, 100, 50, 1,
         2.0,
         [](int x, int y, int& sx, int& sy) { return sx = (x % 60) / 2, sy = y / 2, true; },
         false},
    };
    for (const BackgroundCase& c : cases) {
        SCOPED_TRACE(c.what);
        view.supersample = c.supersample;
        context.backgroundMode = c.mode;
        driver->SetBkImage(&Picture(c.pw, c.ph));
        Frame(c.W, c.H);
        driver->ClearFrame(kClear);
        int wrong = 0;
        for (int y = 0; y < c.H; ++y)
            for (int x = 0; x < c.W; ++x) {
                int ex = 0, ey = 0, sx = 0, sy = 0;
                const bool picture = c.expected(x, y, ex, ey);
                const bool landed = SourceOf(Pixel(x, y), sx, sy);
                const int slack = c.exact ? 0 : kStretchSlack;
                const bool ok = picture ? landed && std::abs(sx - ex) <= slack &&
                                              std::abs(sy - ey) <= slack
                                        : !landed;
                if (!ok && wrong++ < 3)
                    ADD_FAILURE() << "pixel " << x << "," << y << " from " << sx << "," << sy
                                  << ", want " << (picture ? "" : "clear, not ") << ex << "," << ey;
            }
        EXPECT_EQ(wrong, 0);
        EXPECT_EQ(SurfaceOf(*driver).depth[0], kDepthEmpty) << "depth cleared after the picture";
    }
}

TEST_F(Present, AStretchCropsToTheCameraRegionWithClampedFloors) {
    // 400x300 picture, 200x150 frame showing a 400x300 region: a one-to-one crop. The source
    // x is a clamped floor, so a region at x 0 still starts one pixel in; past the picture's
    // right edge the source width is cut to what remains, 100 columns stretched onto 200.
    struct {
        float left, top;
        int sx, sy, xDivisor;
    } const cases[] = {{60, 40, 60, 40, 1}, {0, 10, 1, 10, 1}, {300, 0, 300, 1, 2}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << "region at " << c.left << "," << c.top);
        context.backgroundMode = 0;
        context.regionLeft = c.left;
        context.regionTop = c.top;
        context.regionWidth = 400;
        context.regionHeight = 300;
        driver->regionFlag = 1;
        driver->SetBkImage(&Picture(400, 300));
        Frame(200, 150);
        driver->ClearFrame(kClear);
        for (int y = 0; y < 150; y += 7)
            for (int x = 0; x < 200; x += 7) {
                int sx = 0, sy = 0;
                ASSERT_TRUE(SourceOf(Pixel(x, y), sx, sy));
                EXPECT_EQ(sy, c.sy + y);
                EXPECT_NEAR(sx, c.sx + x / c.xDivisor, kStretchSlack * (c.xDivisor - 1))
                    << x << "," << y;
            }
    }
}

// A frame with a pattern on it, presented to a black window, read back from the screen.
class PresentToWindow : public Present {
protected:
    static constexpr int kW = 64, kH = 48;
    void SetUp() override {
        Present::SetUp();
        Frame(kW, kH);
        driver->ClearFrame(kClear);
        const DriverSurface s = SurfaceOf(*driver);
        for (int y = 0; y < kH; ++y)
            for (int x = 0; x < kW; ++x) {
                std::uint8_t* p = s.colourBits + (kH - 1 - y) * s.colourStride + 4 * x;
                p[0] = static_cast<std::uint8_t>(x * 4);
                p[1] = static_cast<std::uint8_t>(y * 5);
                p[2] = 0x80;
            }
        window = q5plat::CreateHostWindow(kW, kH);
        ASSERT_NE(window, nullptr);
    }
    void TearDown() override {
        q5plat::DestroyHostWindow(window);
        Present::TearDown();
    }
    std::vector<std::uint8_t> Read() {
        std::vector<std::uint8_t> pixels;
        int w = 0, h = 0;
        EXPECT_TRUE(q5plat::ReadWindowPixels(window, pixels, w, h) && w == kW && h == kH);
        pixels.resize(kW * kH * 4);
        return pixels;
    }
    // Screen pixels that show the frame; the rest must still be black.
    std::vector<bool> Shown() {
        const std::vector<std::uint8_t> pixels = Read();
        std::vector<bool> shown(kW * kH);
        for (int y = 0; y < kH; ++y)
            for (int x = 0; x < kW; ++x) {
                const std::uint8_t* p = &pixels[(y * kW + x) * 4];
                const Bgra frame = Pixel(x, y);
                const bool isFrame = p[0] == frame.b && p[1] == frame.g && p[2] == frame.r;
                const bool isBlack = p[0] == 0 && p[1] == 0 && p[2] == 0;
                EXPECT_TRUE(isFrame || isBlack) << x << "," << y;
                shown[y * kW + x] = isFrame;
            }
        return shown;
    }
    void PresentSmallRect(q5_URECT rect = {10, 5, 30, 20}) {
        q5_HDC dc = q5plat::AcquireWindowDC(window);
        EXPECT_TRUE(driver->PresentRect(dc, &rect));
        q5plat::ReleaseWindowDC(window, dc);
    }
    q5_HWND window = nullptr;
};

TEST_F(PresentToWindow, ADeepScreenWithoutDrawDibCopiesOnlyTheRectangleAShallowOneAll) {
    module.screenDepth = 32;
    PresentSmallRect();
    const std::vector<bool> shown = Shown();
    for (int y = 0; y < kH; ++y)
        for (int x = 0; x < kW; ++x)
            ASSERT_EQ(shown[y * kW + x], x >= 10 && x < 30 && y >= 5 && y < 20) << x << "," << y;
    module.screenDepth = 16;
    PresentSmallRect();
    for (bool s : Shown()) ASSERT_TRUE(s);
}

TEST_F(PresentToWindow, TheCopyTargetTakesAMatchingFrameTopDownAndIsForgottenEitherWay) {
    TestPicture wrong(kW, kH + 1, 32), right(kW, kH, 32);
    wrong.Fill(0x01010101);
    right.Fill(0x01010101);
    driver->SetCopyTarget(&wrong);
    PresentSmallRect({0, 0, kW, kH});
    EXPECT_EQ(wrong.Row(0)[2], 1) << "a target of another size receives nothing";
    driver->SetCopyTarget(&right);
    PresentSmallRect({0, 0, kW, kH});
    EXPECT_EQ(right.Row(1)[1], 5) << "the frame's top rows are the picture's first";
    EXPECT_EQ(right.Row(kH - 1)[1], (kH - 1) * 5);
    right.Fill(0x01010101);
    PresentSmallRect({0, 0, kW, kH});
    EXPECT_EQ(right.Row(1)[1], 1) << "the target was forgotten";
}

#if defined(_WIN32)
TEST_F(PresentToWindow, DrawDibRedrawsTheWholeFrameForASmallRectangle) {
    q5_HINSTANCE library = q5plat::LoadLibraryA("MSVFW32.DLL", 0);
    ASSERT_NE(library, nullptr);
    const auto proc = [library](const char* name) { return q5plat::GetProcAddress(library, name); };
    module.drawDibOpen = reinterpret_cast<q5_DrawDibOpenFn>(proc("DrawDibOpen"));
    module.drawDibClose = reinterpret_cast<q5_DrawDibCloseFn>(proc("DrawDibClose"));
    module.drawDibDraw = reinterpret_cast<q5_DrawDibDrawFn>(proc("DrawDibDraw"));
    ASSERT_TRUE(module.drawDibOpen && module.drawDibClose && module.drawDibDraw);
    module.drawDib = module.drawDibOpen();
    module.screenDepth = 32;
    PresentSmallRect();
    for (bool s : Shown()) ASSERT_TRUE(s);
    module.drawDibClose(module.drawDib);
    module.drawDib = nullptr;
    q5plat::FreeLibrary(library);
}
#endif

// Lines of every direction drawn over each other, after one drawn twice; the digest was taken
// from the Windows build, so both builds must pick the same pixels (truncated ends, no end
// pixel, white XOR), ties included.
TEST_F(PresentToWindow, XorLinesPickTheSamePixelsOnEveryPlatform) {
    const std::vector<std::uint8_t> black = Read();
    ASSERT_TRUE(driver->DrawXorLine(window, {10.9f, -0.5f}, {40.7f, 30.2f}));
    EXPECT_NE(Read(), black);
    driver->DrawXorLine(window, {10.9f, -0.5f}, {40.7f, 30.2f});
    EXPECT_EQ(Read(), black) << "a line drawn twice leaves the window as it was";
    std::uint32_t state = 12345;
    auto next = [&](int n) {
        state = state * 1664525u + 1013904223u;
        return static_cast<float>((std::uint64_t{state} * n) >> 32);
    };
    for (int i = 0; i < 300; ++i) {
        const float x0 = next(kW), y0 = next(kH), x1 = next(kW), y1 = next(kH);
        driver->DrawXorLine(window, {x0, y0}, {x1, y1});
    }
    std::uint64_t digest = 14695981039346656037ull;
    for (std::uint8_t byte : Read()) digest = (digest ^ byte) * 1099511628211ull;
    EXPECT_EQ(digest, 10163499741948415820ull);
}

// The label's box at its place; render_cli_test checks the label of a whole picture.
TEST_F(Present, ALabelIsTheTextColourInsideTheTextsBox) {
    Frame(120, 40);
    driver->ClearFrame(kClear);
    const DriverSurface s = SurfaceOf(*driver);
    const std::vector<std::uint8_t> cleared(s.colourBits, s.colourBits + s.colourStride * s.H);
    EXPECT_NE(driver->DrawText(5, 6, u"", 0xFFFFFF), 0);
    EXPECT_TRUE(std::equal(cleared.begin(), cleared.end(), s.colourBits))
        << "an empty text draws nothing";
    EXPECT_NE(driver->DrawText(5, 6, u"Tessera 42", 0x00FFFF), 0); // yellow
    const Bgra yellow{0x00, 0xFF, 0xFF, 0};
    int written = 0, exact = 0;
    for (int y = 0; y < 40; ++y)
        for (int x = 0; x < 120; ++x) {
            const Bgra p = Pixel(x, y);
            if (p == kClearPixel) continue;
            ++written;
            exact += p == yellow;
            EXPECT_TRUE(x >= 5 && x < 5 + 92 && y >= 6 && y < 6 + 14) << x << "," << y;
        }
    EXPECT_GT(written, 40) << "the label was drawn";
#if defined(_WIN32)
    EXPECT_GT(exact, written / 4) << "the system may smooth glyph edges into the background";
#else
    EXPECT_EQ(exact, written) << "glyphs are drawn in one colour";
#endif
}

} // namespace

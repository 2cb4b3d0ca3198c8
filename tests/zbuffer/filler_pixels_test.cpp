// Per-pixel colour of every filler on a four-pixel span over a known destination, with the
// expected bytes worked out from the blend formulas (untextured blends divide by 256, textured
// ones by 255).
#include "raster_frame.h"
#include "zbuffer/span_fillers.h"
#include "zbuffer/texture_binding.h"

#include <gtest/gtest.h>

#include <array>

namespace {

constexpr Bgra kDestination{100, 50, 200, 40};

class FillerPixels : public ::testing::Test {
protected:
    FillerPixels() : frame(6, 3, kDestination) {}

    // Scanline 0, columns 0..3. Left vertices red 0, right ones red 64; green 100, blue 7.
    std::array<Bgra, 4> Draw(FillMode mode, std::int32_t opacity = 255) {
        Polygon p{Vertex(0, 0, 50, 0, 100, 7), Vertex(4, 0, 50, 64, 100, 7),
                  Vertex(4, 1, 50, 64, 100, 7), Vertex(0, 1, 50, 0, 100, 7)};
        p.Use(frame.rc);
        frame.rc.opacity = opacity;
        frame.rc.inverseOpacity = 255 - opacity;
        EXPECT_EQ(FillPolygon(frame.rc, mode), 1);
        EXPECT_FALSE(frame.Written(4, 0));
        return {frame.Pixel(0, 0), frame.Pixel(1, 0), frame.Pixel(2, 0), frame.Pixel(3, 0)};
    }

    // A one-texel texture: every position samples it.
    void BindTexel(std::uint32_t texel, int bitCount) {
        picture = std::make_unique<TestPicture>(1, 1, bitCount);
        picture->SetTexel(0, 0, texel);
        material.textures[0] = picture.get();
        BindMaterialTexture(frame.rc, &material, 0);
        ASSERT_NE(frame.rc.sampleTexel, nullptr);
    }

    RasterFrame frame;
    std::unique_ptr<TestPicture> picture;
    q5_MATERIAL material;
};

constexpr std::uint32_t kTexel = 0x003264C8; // red 50, green 100, blue 200

TEST_F(FillerPixels, FlatWritesFlatColourOpaque) {
    frame.rc.flatColour = RgbBytes{1, 20, 30};
    const auto px = Draw(FillMode::Flat);
    for (const Bgra& p : px) EXPECT_EQ(p, (Bgra{30, 20, 1, 255}));
    EXPECT_EQ(frame.Depth(2, 0), 50);
}

TEST_F(FillerPixels, GouraudInterpolatesInSixteenSixteen) {
    const auto px = Draw(FillMode::Gouraud);
    EXPECT_EQ(px[0], (Bgra{7, 100, 0, 255}));
    EXPECT_EQ(px[1], (Bgra{7, 100, 16, 255}));
    EXPECT_EQ(px[3], (Bgra{7, 100, 48, 255}));
}

TEST_F(FillerPixels, FlatBlendedDividesBy256) {
    // Red: (1 * 128 + 200 * 127) / 256 = 99, where a division by 255 would give 100.
    frame.rc.flatColour = RgbBytes{1, 20, 30};
    const auto px = Draw(FillMode::FlatBlended, 128);
    EXPECT_EQ(px[0], (Bgra{64, 34, 99, 147}));
    EXPECT_EQ(px[3], px[0]);
}

TEST_F(FillerPixels, GouraudBlendedUsesPremultipliedColour) {
    const auto px = Draw(FillMode::GouraudBlended, 128);
    EXPECT_EQ(px[0], (Bgra{53, 74, 99, 147}));
    EXPECT_EQ(px[1], (Bgra{53, 74, 107, 147}));
    EXPECT_EQ(px[2], (Bgra{53, 74, 115, 147}));
    EXPECT_EQ(px[3], (Bgra{53, 74, 123, 147}));
}

TEST_F(FillerPixels, GouraudBlendedWrapsAroundAtFullOpacity) {
    // 255 * 255 << 16 no longer fits a signed step: the colour runs the short way round.
    Polygon p{Vertex(0, 0, 50, 0, 100, 7), Vertex(4, 0, 50, 255, 100, 7),
              Vertex(4, 1, 50, 255, 100, 7), Vertex(0, 1, 50, 0, 100, 7)};
    p.Use(frame.rc);
    frame.rc.opacity = 255;
    frame.rc.inverseOpacity = 0;
    FillPolygon(frame.rc, FillMode::GouraudBlended);
    EXPECT_EQ(frame.Pixel(0, 0), (Bgra{6, 99, 0, 255}));
    EXPECT_EQ(frame.Pixel(1, 0), (Bgra{6, 99, 255, 255}));
    EXPECT_EQ(frame.Pixel(2, 0), (Bgra{6, 99, 255, 255}));
    EXPECT_EQ(frame.Pixel(3, 0), (Bgra{6, 99, 254, 255}));
}

TEST_F(FillerPixels, GouraudTexturedModulatesByColour) {
    BindTexel(kTexel, 24);
    const auto px = Draw(FillMode::GouraudTextured);
    EXPECT_EQ(px[0], (Bgra{5, 39, 0, 255}));
    EXPECT_EQ(px[1], (Bgra{5, 39, 3, 255}));
    EXPECT_EQ(px[2], (Bgra{5, 39, 6, 255}));
    EXPECT_EQ(px[3], (Bgra{5, 39, 9, 255}));
}

TEST_F(FillerPixels, FlatTexturedShiftsByEight) {
    BindTexel(kTexel, 24);
    frame.rc.flatColour = RgbBytes{255, 128, 30};
    const auto px = Draw(FillMode::FlatTextured);
    EXPECT_EQ(px[0], (Bgra{23, 50, 49, 255}));
}

TEST_F(FillerPixels, GouraudTexturedBlendedDividesBy255AndStaysOpaque) {
    BindTexel(kTexel, 24);
    const auto px = Draw(FillMode::GouraudTexturedBlended, 128);
    EXPECT_EQ(px[0], (Bgra{52, 44, 99, 255}));
    EXPECT_EQ(px[1], (Bgra{52, 44, 101, 255}));
    EXPECT_EQ(px[2], (Bgra{52, 44, 102, 255}));
    EXPECT_EQ(px[3], (Bgra{52, 44, 104, 255}));
}

TEST_F(FillerPixels, FlatTexturedBlendedTakesCoverageAlpha) {
    BindTexel(kTexel, 24);
    frame.rc.flatColour = RgbBytes{255, 128, 30};
    const auto px = Draw(FillMode::FlatTexturedBlended, 128);
    EXPECT_EQ(px[0], (Bgra{61, 50, 124, 147}));
}

TEST_F(FillerPixels, TextureAlphaBlendsByTexelAlpha) {
    BindTexel(0x80000000 | kTexel, 32);
    frame.rc.flatColour = RgbBytes{255, 128, 30};
    const auto px = Draw(FillMode::FlatTextureAlpha);
    EXPECT_EQ(px[0], (Bgra{60, 49, 123, 128}));
}

TEST_F(FillerPixels, TextureAlphaOfFullTexelReplaces) {
    BindTexel(0xFF000000 | kTexel, 32);
    frame.rc.flatColour = RgbBytes{255, 128, 30};
    const auto px = Draw(FillMode::FlatTextureAlpha);
    EXPECT_EQ(px[0], (Bgra{22, 49, 49, 255}));
}

TEST_F(FillerPixels, GouraudTextureAlphaUsesColourNotPremultiplied) {
    BindTexel(0xFF000000 | kTexel, 32);
    const auto px = Draw(FillMode::GouraudTextureAlpha, 128);
    EXPECT_EQ(px[0], (Bgra{51, 43, 99, 128}));
    EXPECT_EQ(px[3], (Bgra{51, 43, 103, 128}));
}

TEST_F(FillerPixels, TexelOfAlphaZeroLeavesColourAndDepth) {
    BindTexel(kTexel, 32);
    const auto px = Draw(FillMode::GouraudTextureAlpha);
    for (const Bgra& p : px) EXPECT_EQ(p, kDestination);
    EXPECT_EQ(frame.WrittenCount(), 0);
}

TEST_F(FillerPixels, TexelAlphaAboveZeroWritesDepthAtZeroOpacity) {
    BindTexel(0xFF000000 | kTexel, 32);
    const auto px = Draw(FillMode::FlatTextureAlpha, 0);
    EXPECT_EQ(px[0], (Bgra{100, 50, 200, 0}));
    EXPECT_EQ(frame.Depth(0, 0), 50);
}

} // namespace

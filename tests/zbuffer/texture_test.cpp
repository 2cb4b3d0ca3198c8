// Texture binding, texel fetches with wrapping and palettes, and the textured dispatch's
// coordinates.
#include "raster_frame.h"
#include "zbuffer/polygon_dispatch.h"
#include "zbuffer/texture_binding.h"

#include <gtest/gtest.h>

namespace {

constexpr std::int32_t Fixed(double texels) {
    return static_cast<std::int32_t>(texels * 4096);
}

// 64 x 64, 24 bits: blue = column, green = row from the top, red 7.
std::unique_ptr<TestPicture> GridPicture(bool topDown) {
    auto p = std::make_unique<TestPicture>(64, 64, 24, topDown);
    for (int y = 0; y < 64; ++y)
        for (int x = 0; x < 64; ++x) p->SetTexel(x, y, 0x070000u | y << 8 | x);
    return p;
}

class Textures : public ::testing::Test {
protected:
    void Bind(TPicture* picture, int slot = 0) {
        material.textures[slot] = picture;
        BindMaterialTexture(rc, &material, slot);
    }
    RasterContext rc;
    q5_MATERIAL material;
};

TEST_F(Textures, FetchWrapsBeyondTheLastTexel) {
    auto grid = GridPicture(false);
    Bind(grid.get());
    EXPECT_EQ(rc.sampleTexel(rc, Fixed(64.5), Fixed(5.5)), 0x070500u);
    EXPECT_EQ(rc.sampleTexel(rc, Fixed(63.9), Fixed(5.5)), 0x07053Fu);
    EXPECT_EQ(rc.sampleTexel(rc, Fixed(10.2), Fixed(70.0)), 0x07060Au);
    // A negative position masks to 2^20 - 1, which wraps to the last column.
    EXPECT_EQ(rc.sampleTexel(rc, Fixed(-0.5), Fixed(0.0)), 0x07003Fu);
}

TEST_F(Textures, TopDownRowsFetchTheSameImage) {
    auto bottomUp = GridPicture(false), topDown = GridPicture(true);
    Bind(topDown.get());
    EXPECT_EQ(rc.texPitch, -64 * 3);
    EXPECT_EQ(rc.texRow0, static_cast<const std::uint8_t*>(topDown->bits) + 63 * 64 * 3);
    EXPECT_EQ(rc.sampleTexel(rc, Fixed(9), Fixed(41)), 0x072909u);
    q5_MATERIAL other;
    other.textures[0] = bottomUp.get();
    BindMaterialTexture(rc, &other, 0);
    EXPECT_EQ(rc.texPitch, 64 * 3);
    EXPECT_EQ(rc.sampleTexel(rc, Fixed(9), Fixed(41)), 0x072909u);
}

TEST_F(Textures, PaletteEntryComesBackWithItsReservedByte) {
    TestPicture p(3, 2, 8); // rows padded to 4 bytes
    for (int i = 0; i < 6; ++i) {
        p.SetTexel(i % 3, i / 3, static_cast<std::uint32_t>(i));
        p.SetPaletteEntry(i, 0x5A030000u | static_cast<std::uint32_t>(255 - i) << 8 | i * 10);
    }
    Bind(&p);
    EXPECT_TRUE(rc.textureIs8Bit);
    EXPECT_EQ(rc.texelBytes, 1);
    EXPECT_EQ(rc.sampleTexel(rc, Fixed(2.5), Fixed(1.5)), 0x5A03FA32u);
    EXPECT_EQ(rc.sampleTexel(rc, Fixed(0), Fixed(0)), 0x5A03FF00u);
}

TEST_F(Textures, OnlyThirtyTwoBitTexelsCarryAlpha) {
    TestPicture deep(1, 1, 32), shallow(1, 1, 24);
    deep.SetTexel(0, 0, 0x80112233);
    shallow.SetTexel(0, 0, 0x80112233);
    Bind(&deep);
    EXPECT_TRUE(rc.textureIs32Bit);
    EXPECT_EQ(rc.sampleTexel(rc, 0, 0), 0x80112233u);
    q5_MATERIAL other;
    other.textures[0] = &shallow;
    BindMaterialTexture(rc, &other, 0);
    EXPECT_FALSE(rc.textureIs32Bit);
    EXPECT_EQ(rc.sampleTexel(rc, 0, 0), 0x00112233u);
}

TEST_F(Textures, BindingIsKeyedByMaterialAlone) {
    TestPicture diffuse(2, 2, 24), reflection(2, 2, 32);
    material.textures[0] = &diffuse;
    material.textures[3] = &reflection;
    BindMaterialTexture(rc, &material, 0);
    BindMaterialTexture(rc, &material, 3);
    EXPECT_EQ(rc.texelBytes, 3);
    EXPECT_EQ(rc.texRow0, diffuse.bits);
    BindMaterialTexture(rc, nullptr, 0);
    EXPECT_EQ(rc.sampleTexel, nullptr);
    BindMaterialTexture(rc, &material, 3);
    EXPECT_EQ(rc.texelBytes, 4);
}

TEST_F(Textures, PictureWithoutImageBindsNothing) {
    TestPicture empty(2, 2, 24);
    empty.header = nullptr;
    Bind(&empty);
    EXPECT_EQ(rc.boundMaterial, &material);
    EXPECT_EQ(rc.sampleTexel, nullptr);
    EXPECT_EQ(rc.texHeader, nullptr);
    EXPECT_EQ(rc.texRow0, nullptr);
}

TEST_F(Textures, UnsampledDepthsUseTheConvertedCopy) {
    TestPicture raw(2, 2, 32), copy(2, 2, 24), sixteen(2, 2, 16);
    raw.texels32Ready = false;
    raw.convertTo = &copy;
    Bind(&raw);
    EXPECT_EQ(rc.texelBytes, 3);
    EXPECT_EQ(rc.texHeader, copy.header);

    q5_MATERIAL other;
    other.textures[0] = &sixteen;
    BindMaterialTexture(rc, &other, 0);
    EXPECT_EQ(rc.sampleTexel, nullptr); // no copy to be had
}

class TexturedDispatch : public ::testing::Test {
protected:
    TexturedDispatch() : frame(8, 6), picture(4, 4, 24) {
        picture.Fill(0x00FFFFFF);
        material.textures[0] = &picture;
        BindMaterialTexture(frame.rc, &material, 0);
    }
    // Flat-topped, covering scanlines 0..3 from column 0.
    Polygon Triangle(float s0, float t0, float s1, float t1, float s2, float t2) {
        Polygon p{Vertex(0, 0), Vertex(4, 0), Vertex(0, 4)};
        p[0].s = s0, p[0].t = t0, p[1].s = s1, p[1].t = t1, p[2].s = s2, p[2].t = t2;
        return p;
    }
    RasterFrame frame;
    TestPicture picture;
    q5_MATERIAL material;
};

TEST_F(TexturedDispatch, NegativeCoordinatesShiftPastZero) {
    Polygon p = Triangle(-1.0f, 0.0f, -0.5f, 0.5f, -0.75f, 0.25f);
    p.Use(frame.rc);
    EXPECT_EQ(DrawTexturedPolygon(frame.rc, 3, 0), 0);
    EXPECT_FLOAT_EQ(p[0].u, 1.0f); // shifted by ceil(-1) - 1 = -2
    EXPECT_FLOAT_EQ(p[1].u, 1.5f);
    EXPECT_FLOAT_EQ(p[0].v, 1.0f); // v = -t, shifted by -1
    EXPECT_FLOAT_EQ(p[1].v, 0.5f);
}

TEST_F(TexturedDispatch, CoordinatesInTheUnitSquareStay) {
    Polygon p = Triangle(0.25f, -0.5f, 0.75f, -0.25f, 0.5f, -0.3f);
    p.Use(frame.rc);
    DrawTexturedPolygon(frame.rc, 3, 0);
    EXPECT_FLOAT_EQ(p[0].u, 0.25f);
    EXPECT_FLOAT_EQ(p[0].v, 0.5f);
    EXPECT_FLOAT_EQ(p[1].v, 0.25f);
}

TEST_F(TexturedDispatch, LargeCoordinatesShiftDownByWholeUnits) {
    Polygon p = Triangle(2.5f, -0.5f, 3.0f, -0.5f, 2.75f, -0.5f);
    p.Use(frame.rc);
    DrawTexturedPolygon(frame.rc, 3, 0);
    EXPECT_FLOAT_EQ(p[0].u, 0.5f);
    EXPECT_FLOAT_EQ(p[1].u, 1.0f);
    EXPECT_FLOAT_EQ(p[0].v, 0.5f); // v shifts by floor(0.5) = 0
}

TEST_F(TexturedDispatch, TextureMatrixMapsSAndT) {
    material.textureMatrix[0][0] = 2.0f;
    material.textureMatrix[2][0] = 0.25f;
    material.textureMatrix[2][1] = 0.5f;
    Polygon p = Triangle(0.125f, 0.125f, 0.125f, 0.125f, 0.125f, 0.125f);
    p.Use(frame.rc);
    DrawTexturedPolygon(frame.rc, 3, 0);
    EXPECT_FLOAT_EQ(p[2].u, 0.5f);          // 2 * 0.125 + 0.25
    EXPECT_FLOAT_EQ(p[2].v, 1.0f - 0.625f); // -(0.125 + 0.5), shifted by -1
}

TEST_F(TexturedDispatch, BlendedFlatTakesCoverageAlphaGouraudStaysOpaque) {
    Polygon p = Triangle(0, 0, 0, 0, 0, 0);
    p.Use(frame.rc);
    frame.rc.opacity = 128;
    DrawTexturedPolygon(frame.rc, 3, kPolygonFlat | kPolygonBlended);
    EXPECT_EQ(frame.Pixel(1, 1).a, 128); // (65025 - 255 * 127) / 255
    DrawTexturedPolygon(frame.rc, 3, kPolygonBlended);
    EXPECT_EQ(frame.Pixel(1, 1).a, 255);
}

TEST_F(TexturedDispatch, BlendedThirtyTwoBitTexturesUseTexelAlpha) {
    TestPicture clear(1, 1, 32);
    clear.SetTexel(0, 0, 0x00FFFFFF);
    q5_MATERIAL glass;
    glass.textures[0] = &clear;
    BindMaterialTexture(frame.rc, &glass, 0);
    Polygon p = Triangle(0, 0, 0, 0, 0, 0);
    p.Use(frame.rc);
    DrawTexturedPolygon(frame.rc, 3, kPolygonBlended);
    EXPECT_EQ(frame.WrittenCount(), 0);
    DrawTexturedPolygon(frame.rc, 3, 0); // unblended, alpha is not looked at
    EXPECT_GT(frame.WrittenCount(), 0);
}

TEST_F(TexturedDispatch, WithoutATextureNothingIsDrawn) {
    BindMaterialTexture(frame.rc, nullptr, 0);
    Polygon p = Triangle(0, 0, 0, 0, 0, 0);
    p.Use(frame.rc);
    EXPECT_EQ(DrawTexturedPolygon(frame.rc, 3, 0), 0);
    EXPECT_EQ(frame.WrittenCount(), 0);
}

TEST_F(TexturedDispatch, DoubleResolutionIsUndoneAfterwards) {
    frame.rc.doubleResolution = 1;
    Polygon p{Vertex(0.5, 0), Vertex(2, 0), Vertex(0, 1.5)};
    p.Use(frame.rc);
    DrawTexturedPolygon(frame.rc, 3, kPolygonFlat);
    EXPECT_EQ(p[0].x, 128);
    EXPECT_EQ(p[1].x, 512);
    EXPECT_EQ(p[2].y, 384);
    EXPECT_TRUE(frame.Written(3, 0));
}

} // namespace

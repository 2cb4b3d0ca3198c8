// Texturing: binding, texel fetches with wrapping and palettes, the textured dispatch's
// coordinates and blending, sphere-map coordinates.
#include "raster_frame.h"
#include "zbuffer/raster/polygon_dispatch.h"
#include "zbuffer/raster/texel_fetch.h"
#include "zbuffer/raster/texture_binding.h"
#include "zbuffer/shading.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

// 32-bit texels keep their alpha and 24-bit ones have none; an 8-bit texel is its palette
// entry with the reserved byte as alpha; without ready 32-bit texels the converted copy is read.
TEST(TexelFetch, EachBitDepthGivesItsTexel) {
    TestPicture deep(1, 1, 32), shallow(1, 1, 24), raw(2, 2, 32), indexed(3, 2, 8);
    deep.SetTexel(0, 0, 0x80112233);
    shallow.SetTexel(0, 0, 0x80112233);
    raw.texels32Ready = false;
    raw.converted = &shallow;
    // Rows padded to 4 bytes; entry 5 as blue, green, red, reserved after the 40-byte header.
    for (int i = 0; i < 6; ++i) indexed.SetTexel(i % 3, i / 3, static_cast<std::uint32_t>(i));
    const std::uint8_t entry[4] = {0x32, 0xFA, 0x03, 0x5A};
    std::memcpy(reinterpret_cast<std::uint8_t*>(indexed.header) + 40 + 5 * 4, entry, 4);
    const auto fetch = [](TPicture& picture, double u, double v) {
        RasterContext rc;
        q5_MATERIAL material;
        material.textures[0] = &picture;
        BindMaterialTexture(rc, &material, 0);
        return rc.sampleTexel(rc, static_cast<std::int32_t>(u * 4096),
                              static_cast<std::int32_t>(v * 4096));
    };
    EXPECT_EQ(fetch(deep, 0, 0), 0x80112233u);
    EXPECT_EQ(fetch(shallow, 0, 0), 0x00112233u);
    EXPECT_EQ(fetch(raw, 0, 0), 0x00112233u);
    EXPECT_EQ(fetch(indexed, 2.5, 1.5), 0x5A03FA32u);
}

// The reciprocal wrap against the remainder, for every 20-bit index at sizes around powers of two,
// primes, and sizes too large for a float to hold.
TEST(TexelFetch, WrapWithoutDividingMatchesTheRemainder) {
    for (const std::int32_t size : {1, 2, 3, 5, 7, 255, 256, 257, 1000, 4095, 65521, 65537,
                                    (1 << 20) - 1, 1 << 20, (1 << 24) + 1, 2147483647}) {
        const float inverse = 1.0f / static_cast<float>(size);
        for (std::int32_t n = 0; n < (1 << 20); ++n)
            ASSERT_EQ(WrapTexelIndex(n, size, inverse), n % size) << n << " mod " << size;
    }
}

TEST(TextureBinding, IsKeyedByMaterialAlone) {
    RasterContext rc;
    TestPicture diffuse(2, 2, 24), reflection(2, 2, 32);
    q5_MATERIAL material;
    material.textures[kSlotDiffuse] = &diffuse;
    material.textures[kSlotReflection] = &reflection;
    BindMaterialTexture(rc, &material, kSlotDiffuse);
    BindMaterialTexture(rc, &material, kSlotReflection);
    EXPECT_EQ(rc.texHeader, diffuse.header);
    BindMaterialTexture(rc, nullptr, 0);
    BindMaterialTexture(rc, &material, kSlotReflection);
    EXPECT_EQ(rc.texHeader, reflection.header);
}

// On 3 texels, 50000 is the position 614400000, held at 2^29: texel 131072, which wraps to 2.
// -100000 is -1228800000, not held at -2^29: texel -300000, masked 748576, which wraps to 1
// (-2^29 would have given 917504 and 2). Wrapping on textures of every shape either way up is
// in filler_oracle_test.
TEST(TexelChoice, OnlyPositionsAboveTwoToThe29AreLimited) {
    RasterFrame frame{2, 1};
    TestPicture picture(3, 3, 24);
    for (int i = 0; i < 9; ++i) picture.SetTexel(i % 3, i / 3, 0x0F0F0Fu * (i + 1));
    q5_MATERIAL material;
    material.textures[0] = &picture;
    BindMaterialTexture(frame.rc, &material, 0);
    frame.rc.flatColour = RgbBytes{255, 255, 255};
    const auto drawn = [&frame](float u, float v) { // the flat textured filler under white
        Polygon p = Rect(0, 0, 2, 1);
        for (ScreenVertex& c : p.vertices) c.u = u, c.v = v;
        frame.Draw(p, FillMode::FlatTextured);
        return frame.Pixel(1, 0);
    };
    EXPECT_EQ(drawn(-100000, 50000), drawn(0.5f, 0.8f)) << "texel (1, 2)";
    EXPECT_EQ(drawn(50000, -100000), drawn(0.8f, 0.5f)) << "texel (2, 1)";
}

class TexturedDispatch : public ::testing::Test {
protected:
    TexturedDispatch() {
        picture.Fill(0x00FFFFFF);
        material.textures[0] = &picture;
        BindMaterialTexture(frame.rc, &material, 0);
        triangle.Use(frame.rc);
    }
    RasterFrame frame{8, 6};
    TestPicture picture{4, 4, 24};
    q5_MATERIAL material;
    Polygon triangle{Vertex(0, 0), Vertex(4, 0), Vertex(0, 4)}; // 10 pixels on scanlines 0..3
};

TEST_F(TexturedDispatch, CoordinatesAreMappedThenShiftedTowardsTheUnitSquare) {
    // u and v of the corners after drawing, all exact binary fractions.
    const auto uv = [this](const float(&st)[3][2]) {
        for (int i = 0; i < 3; ++i)
            triangle.vertices[i].s = st[i][0], triangle.vertices[i].t = st[i][1];
        DrawTexturedPolygon(frame.rc, 3, 0);
        std::vector<float> out;
        for (const ScreenVertex& v : triangle.vertices) out.insert(out.end(), {v.u, v.v});
        return out;
    };
    // u = s, v = -t; when a minimum leaves [0, 1) both shift, by ceil(min) - 1 below 0 (here
    // u by -2 and v by -1) and by floor(min) otherwise (u by 2, v by 0).
    EXPECT_EQ(uv({{-1, 0}, {-0.5f, 0.5f}, {-0.75f, 0.25f}}),
              (std::vector<float>{1, 1, 1.5f, 0.5f, 1.25f, 0.75f}));
    EXPECT_EQ(uv({{2.5f, -0.5f}, {3, -0.5f}, {2.75f, -0.5f}}),
              (std::vector<float>{0.5f, 0.5f, 1, 0.5f, 0.75f, 0.5f}));
    // The texture matrix first: u = 2s + 0.25, v = -(t + 0.5), and then v shifts by -1.
    material.textureMatrix[0][0] = 2.0f;
    material.textureMatrix[2][0] = 0.25f;
    material.textureMatrix[2][1] = 0.5f;
    EXPECT_EQ(uv({{0.125f, 0.125f}, {0.25f, 0.125f}, {0.125f, 0.25f}}),
              (std::vector<float>{0.5f, 0.375f, 0.75f, 0.375f, 0.5f, 0.25f}));
}

TEST_F(TexturedDispatch, BlendedFlatTakesCoverageAlphaGouraudStaysOpaque) {
    frame.rc.opacity = 128;
    DrawTexturedPolygon(frame.rc, 3, kPolygonFlat | kPolygonBlended);
    EXPECT_EQ(frame.Pixel(1, 1).a, 128); // (65025 - 255 * 127) / 255
    DrawTexturedPolygon(frame.rc, 3, kPolygonBlended);
    EXPECT_EQ(frame.Pixel(1, 1).a, 255);
}

TEST_F(TexturedDispatch, OnlyBlendedThirtyTwoBitTexturesUseTexelAlpha) {
    TestPicture clear(1, 1, 32);
    clear.SetTexel(0, 0, 0x00FFFFFF);
    q5_MATERIAL glass;
    glass.textures[0] = &clear;
    BindMaterialTexture(frame.rc, &glass, 0);
    DrawTexturedPolygon(frame.rc, 3, kPolygonBlended);
    EXPECT_EQ(frame.WrittenCount(), 0);
    DrawTexturedPolygon(frame.rc, 3, 0);
    EXPECT_EQ(frame.WrittenCount(), 10);
}

TEST_F(TexturedDispatch, DoubleResolutionIsUndoneAfterwards) {
    frame.rc.doubleResolution = 1;
    Polygon p{Vertex(0.5, 0), Vertex(2, 0), Vertex(0, 1.5)};
    p.Use(frame.rc);
    DrawTexturedPolygon(frame.rc, 3, kPolygonFlat);
    EXPECT_EQ(p.vertices[0].x, 128);
    EXPECT_EQ(p.vertices[2].y, 384);
    EXPECT_TRUE(frame.Written(3, 0));
}

// Reflections in general are in render_cli_test's demo image; the edge is not.
TEST(SphereMap, AReflectionAlongTheViewIsNotWrappedToZero) {
    const double e[3] = {0, 0, 1}, alongView[3] = {0, 0, 1};
    ScreenVertex v{};
    SetSphereMapCoordinates(v, e, alongView); // s = 0.5 + 0.5
    EXPECT_NEAR(v.s, 1.0, 1e-6);
    EXPECT_NEAR(v.t, 0.0, 1e-6);
}

} // namespace

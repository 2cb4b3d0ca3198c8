// Shading and texturing: texture binding, texel fetches with wrapping and palettes, the
// textured dispatch's coordinates, colour conversion, tint and sphere-map coordinates.
#include "raster_frame.h"
#include "zbuffer/polygon_dispatch.h"
#include "zbuffer/shading.h"
#include "zbuffer/texture_binding.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <deque>

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
    // Each call binds through a new material, since binding the same one again does nothing.
    void Bind(TPicture* picture, int slot = 0) {
        materials.emplace_back().textures[slot] = picture;
        BindMaterialTexture(rc, &materials.back(), slot);
    }
    std::uint32_t Fetch(double u, double v) { return rc.sampleTexel(rc, Fixed(u), Fixed(v)); }
    RasterContext rc;
    std::deque<q5_MATERIAL> materials;
};

TEST_F(Textures, FetchWrapsBeyondTheLastTexelWhicheverWayRowsAreStored) {
    auto bottomUp = GridPicture(false), topDown = GridPicture(true);
    for (TestPicture* grid : {bottomUp.get(), topDown.get()}) {
        SCOPED_TRACE(grid->rowsTopDown ? "top-down" : "bottom-up");
        Bind(grid);
        EXPECT_EQ(Fetch(9, 41), 0x072909u);
        EXPECT_EQ(Fetch(64.5, 5.5), 0x070500u);
        EXPECT_EQ(Fetch(63.9, 5.5), 0x07053Fu);
        EXPECT_EQ(Fetch(10.2, 70.0), 0x07060Au);
        // A negative position masks to 2^20 - 1, which wraps to the last column.
        EXPECT_EQ(Fetch(-0.5, 0.0), 0x07003Fu);
    }
    EXPECT_EQ(rc.texPitch, -64 * 3);
    EXPECT_EQ(rc.texRow0, static_cast<const std::uint8_t*>(topDown->bits) + 63 * 64 * 3);
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
    EXPECT_EQ(Fetch(2.5, 1.5), 0x5A03FA32u);
    EXPECT_EQ(Fetch(0, 0), 0x5A03FF00u);
}

TEST_F(Textures, OnlyThirtyTwoBitTexelsCarryAlphaAndOtherDepthsUseTheConvertedCopy) {
    TestPicture deep(1, 1, 32), shallow(1, 1, 24), raw(2, 2, 32), sixteen(2, 2, 16);
    deep.SetTexel(0, 0, 0x80112233);
    shallow.SetTexel(0, 0, 0x80112233);
    Bind(&deep);
    EXPECT_TRUE(rc.textureIs32Bit);
    EXPECT_EQ(Fetch(0, 0), 0x80112233u);
    Bind(&shallow);
    EXPECT_FALSE(rc.textureIs32Bit);
    EXPECT_EQ(Fetch(0, 0), 0x00112233u);

    raw.texels32Ready = false;
    raw.convertTo = &shallow;
    Bind(&raw);
    EXPECT_EQ(rc.texelBytes, 3);
    EXPECT_EQ(rc.texHeader, shallow.header);
    Bind(&sixteen);
    EXPECT_EQ(rc.sampleTexel, nullptr) << "no copy to be had";
}

TEST_F(Textures, BindingIsKeyedByMaterialAloneAndNeedsAnImage) {
    TestPicture diffuse(2, 2, 24), reflection(2, 2, 32), empty(2, 2, 24);
    q5_MATERIAL material;
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

    empty.header = nullptr;
    Bind(&empty);
    EXPECT_EQ(rc.boundMaterial, &materials.back());
    EXPECT_EQ(rc.sampleTexel, nullptr);
    EXPECT_EQ(rc.texHeader, nullptr);
    EXPECT_EQ(rc.texRow0, nullptr);
}

class TexturedDispatch : public ::testing::Test {
protected:
    TexturedDispatch() : frame(8, 6), picture(4, 4, 24) {
        picture.Fill(0x00FFFFFF);
        material.textures[0] = &picture;
        BindMaterialTexture(frame.rc, &material, 0);
    }
    // Flat-topped, covering scanlines 0..3 from column 0, with s and t per corner.
    Polygon Triangle(const float (&st)[3][2] = {}) {
        Polygon p{Vertex(0, 0), Vertex(4, 0), Vertex(0, 4)};
        for (int i = 0; i < 3; ++i) p[i].s = st[i][0], p[i].t = st[i][1];
        return p;
    }
    RasterFrame frame;
    TestPicture picture;
    q5_MATERIAL material;
};

TEST_F(TexturedDispatch, CoordinatesAreMappedThenShiftedTowardsTheUnitSquare) {
    // u = s, v = -t through the identity matrix; when either minimum leaves [0, 1) both shift,
    // by ceil(min) - 1 below 0 and floor(min) otherwise.
    const struct {
        const char* what;
        float st[3][2], uv[3][2];
        bool scaled = false; // u = 2s + 0.25, v = -(t + 0.5)
    } cases[] = {
        // clang-format off
        {"u in -1 .. -0.5 shifts by -2, v by -1",
         {{-1, 0}, {-0.5f, 0.5f}, {-0.75f, 0.25f}}, {{1, 1}, {1.5f, 0.5f}, {1.25f, 0.75f}}},
        {"inside the unit square nothing moves",
         {{0.25f, -0.5f}, {0.75f, -0.25f}, {0.5f, -0.3f}},
         {{0.25f, 0.5f}, {0.75f, 0.25f}, {0.5f, 0.3f}}},
        {"u from 2.5 shifts by floor(2.5), v by floor(0.5) = 0",
         {{2.5f, -0.5f}, {3, -0.5f}, {2.75f, -0.5f}}, {{0.5f, 0.5f}, {1, 0.5f}, {0.75f, 0.5f}}},
        {"the texture matrix maps s and t first",
         {{0.125f, 0.125f}, {0.125f, 0.125f}, {0.125f, 0.125f}},
         {{0.5f, 0.375f}, {0.5f, 0.375f}, {0.5f, 0.375f}}, true},
        // clang-format on
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        material.textureMatrix[0][0] = c.scaled ? 2.0f : 1.0f;
        material.textureMatrix[2][0] = c.scaled ? 0.25f : 0.0f;
        material.textureMatrix[2][1] = c.scaled ? 0.5f : 0.0f;
        Polygon p = Triangle(c.st);
        p.Use(frame.rc);
        EXPECT_EQ(DrawTexturedPolygon(frame.rc, 3, 0), 0);
        for (int i = 0; i < 3; ++i) {
            EXPECT_FLOAT_EQ(p[i].u, c.uv[i][0]) << "corner " << i;
            EXPECT_FLOAT_EQ(p[i].v, c.uv[i][1]) << "corner " << i;
        }
    }
}

TEST_F(TexturedDispatch, BlendedFlatTakesCoverageAlphaGouraudStaysOpaque) {
    Polygon p = Triangle();
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
    Polygon p = Triangle();
    p.Use(frame.rc);
    DrawTexturedPolygon(frame.rc, 3, kPolygonBlended);
    EXPECT_EQ(frame.WrittenCount(), 0);
    DrawTexturedPolygon(frame.rc, 3, 0); // unblended, alpha is not looked at
    EXPECT_GT(frame.WrittenCount(), 0);

    BindMaterialTexture(frame.rc, nullptr, 0);
    frame.Fill(Bgra{});
    EXPECT_EQ(DrawTexturedPolygon(frame.rc, 3, kPolygonFlat), 0);
    EXPECT_EQ(frame.Pixel(0, 0), Bgra{}) << "without a texture nothing is drawn";
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

std::array<int, 3> Bytes(RgbBytes c) {
    return {c.red, c.green, c.blue};
}

TEST(ColourToBytes, ClampsThenTruncates) {
    EXPECT_EQ(Bytes(ColourToBytes(1.5f, -0.2f, 0.5f)), (std::array{255, 0, 127})); // 127.5
    EXPECT_EQ(Bytes(ColourToBytes(NAN, 0.999f, 0.0f)), (std::array{0, 254, 0}));
}

TEST(TintColour, ScalesEachChannelByItsFactor) {
    const float factors[3] = {0.3f, 0.5f, 2.0f};
    // 1.0 * 0.3 * 255 = 76.5, 0.2 * 0.5 * 255 = 25.5, blue clamped.
    EXPECT_EQ(Bytes(TintColour(RgbBytes{255, 51, 255}, factors)), (std::array{76, 25, 255}));
}

TEST(SphereMap, KnownReflectionsBothAsValuesAndInTheVertex) {
    constexpr double kTolerance = 1e-6;
    const double r = std::sqrt(0.5), e[3] = {0, 0, 1};
    const struct {
        const char* what;
        double n[3];
        float s, t;
    } cases[] = {
        {"reflection along the view: s = 0.5 + 0.5, not wrapped to 0", {0, 0, 1}, 1.0f, 0.0f},
        {"reflection to -e", {1, 0, 0}, 1.0f, 1.0f},
        {"r = (1, 0, 0): atan2(0, -1) / 2pi + 0.25 + 0.5 wraps to 0.25", {r, 0, r}, 0.25f, 0.5f},
        {"r = (0, -1, 0): atan2(-1, 0) / 2pi + 0.25 + 0.5", {0, -r, r}, 0.5f, 0.5f},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        float s = 0, t = 0;
        SphereMapCoordinates(e, c.n, s, t);
        ScreenVertex v{};
        SetSphereMapCoordinates(v, e, c.n);
        EXPECT_NEAR(s, c.s, kTolerance);
        EXPECT_NEAR(t, c.t, kTolerance);
        EXPECT_NEAR(v.s, c.s, kTolerance);
        EXPECT_NEAR(v.t, c.t, kTolerance);
    }
}

} // namespace

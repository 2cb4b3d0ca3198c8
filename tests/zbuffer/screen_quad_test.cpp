// Textured screen quads: opaque quads one step darker, alpha-0 texels skipped, binding dropped
// after every quad.
#include "raster_frame.h"
#include "zbuffer/screen_quad.h"
#include "zbuffer/texture_binding.h"

#include <gtest/gtest.h>

namespace {

// Covers columns 0..3 and scanlines 0..3 of the frame; u and v run 0..1 across it.
q5_SCREENQUAD Quad(const q5_MATERIAL* material, float x = 0, float y = 0, float z = 70) {
    return q5_SCREENQUAD{0,
                         material,
                         {{x, y, z}, {x + 4, y, z}, {x + 4, y + 4, z}, {x, y + 4, z}},
                         {{0, 0}, {1, 0}, {1, 1}, {0, 1}}};
}

TEST(ScreenQuads, OpaqueTexelsComeOutOneStepDarker) {
    RasterFrame f(8, 6);
    TestPicture picture(1, 1, 24);
    picture.SetTexel(0, 0, 0x8001FF); // red 128, green 1, blue 255
    q5_MATERIAL m;
    m.textures[0] = &picture;
    EXPECT_EQ(DrawScreenQuad(f.rc, Quad(&m), ScreenOffset{}), 1);
    EXPECT_EQ(f.WrittenCount(), 16);
    EXPECT_EQ(f.Pixel(3, 3), (Bgra{254, 0, 127, 255}));
    EXPECT_EQ(f.Depth(0, 0), 70);
}

TEST(ScreenQuads, AlphaZeroTexelsLeaveTheirPixels) {
    RasterFrame f(8, 6);
    TestPicture picture(2, 2, 32);
    picture.Fill(0xFF1E140A);
    picture.SetTexel(0, 0, 0x001E140A); // top-left texel transparent
    q5_MATERIAL m;
    m.textures[0] = &picture;
    DrawScreenQuad(f.rc, Quad(&m), ScreenOffset{});
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 2; ++x) EXPECT_FALSE(f.Written(x, y)) << x << "," << y;
    EXPECT_EQ(f.WrittenCount(), 12);
    EXPECT_EQ(f.Pixel(2, 0), (Bgra{9, 19, 29, 255}));
}

TEST(ScreenQuads, BindingIsDroppedAfterEachQuad) {
    RasterFrame f(12, 6);
    TestPicture picture(1, 1, 24);
    picture.SetTexel(0, 0, 0xFFFFFF);
    q5_MATERIAL m;
    m.textures[0] = &picture;
    DrawScreenQuad(f.rc, Quad(&m), ScreenOffset{});
    EXPECT_EQ(f.rc.boundMaterial, nullptr);
    EXPECT_EQ(f.rc.sampleTexel, nullptr);
    DrawScreenQuad(f.rc, Quad(&m, 6), ScreenOffset{});
    EXPECT_EQ(f.WrittenCount(), 32);
}

TEST(ScreenQuads, ScreenOffsetNeedsBothFlags) {
    RasterFrame f(12, 6);
    TestPicture picture(1, 1, 24);
    q5_MATERIAL m;
    m.textures[0] = &picture;
    q5_SCREENQUAD quad = Quad(&m, 6);
    DrawScreenQuad(f.rc, quad, ScreenOffset{true, 2.7f, 0.0f}); // quad does not ask for it
    EXPECT_TRUE(f.Written(6, 0));

    RasterFrame g(12, 6);
    quad.flags = q5_SCREENQUAD::kApplyScreenOffset;
    DrawScreenQuad(g.rc, quad, ScreenOffset{true, 2.7f, 1.0f}); // columns 4..7, scanlines -1..2
    EXPECT_TRUE(g.Written(4, 0));
    EXPECT_FALSE(g.Written(8, 0));
    EXPECT_TRUE(g.Written(7, 2));
    EXPECT_FALSE(g.Written(7, 3));
}

TEST(ScreenQuads, WithoutATextureNothingIsDrawn) {
    RasterFrame f(8, 6);
    q5_MATERIAL m;
    EXPECT_EQ(DrawScreenQuad(f.rc, Quad(&m), ScreenOffset{}), 1);
    EXPECT_EQ(f.WrittenCount(), 0);
}

} // namespace

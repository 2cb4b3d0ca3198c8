// Textured screen quads: one step darker, alpha-0 texels skipped, binding dropped after each.
#include "raster_frame.h"
#include "zbuffer/raster/screen_quad.h"

#include <gtest/gtest.h>

namespace {

class ScreenQuads : public ::testing::Test {
protected:
    ScreenQuads() { m.textures[0] = &opaque; }
    // Covers columns x .. x + 3 and scanlines 0..3; u and v run 0..1 across it.
    void Draw(float x = 0, std::uint32_t flags = 0, ScreenOffset offset = {}) {
        const q5_SCREENQUAD quad{flags,
                                 &m,
                                 {{x, 0, 70}, {x + 4, 0, 70}, {x + 4, 4, 70}, {x, 4, 70}},
                                 {{0, 0}, {1, 0}, {1, 1}, {0, 1}}};
        DrawScreenQuad(f.rc, quad, offset);
    }
    RasterFrame f{12, 6};
    TestPicture opaque{1, 1, 24};
    q5_MATERIAL m;
};

TEST_F(ScreenQuads, OpaqueTexelsComeOutOneStepDarkerAndTheBindingIsDropped) {
    opaque.SetTexel(0, 0, 0x8001FF); // red 128, green 1, blue 255
    Draw();
    EXPECT_EQ(f.Pixel(3, 3), (Bgra{254, 0, 127, 255}));
    EXPECT_EQ(f.Depth(0, 0), 70);
    // Binding is keyed by material: only a dropped binding lets the new picture show.
    TestPicture next(1, 1, 24);
    next.SetTexel(0, 0, 0x0000FF);
    m.textures[0] = &next;
    Draw(6);
    EXPECT_EQ(f.Pixel(6, 0), (Bgra{254, 0, 0, 255}));
}

TEST_F(ScreenQuads, AlphaZeroTexelsLeaveTheirPixels) {
    TestPicture picture(2, 2, 32);
    picture.Fill(0xFF1E140A);
    picture.SetTexel(0, 0, 0x001E140A); // top-left texel transparent
    m.textures[0] = &picture;
    Draw();
    EXPECT_EQ(f.WrittenSpans(), (Spans{{0, 2, 4}, {1, 2, 4}, {2, 0, 4}, {3, 0, 4}}));
    EXPECT_EQ(f.Pixel(2, 0), (Bgra{9, 19, 29, 255}));
}

TEST_F(ScreenQuads, ScreenOffsetNeedsBothFlags) {
    Draw(0, 0, ScreenOffset{true, 2.7f, 1.0f}); // the quad does not ask for it
    Draw(8, q5_SCREENQUAD::kApplyScreenOffset, ScreenOffset{true, 2.7f, 1.0f}); // by (-2, -1)
    EXPECT_EQ(
        f.WrittenSpans(),
        (Spans{{0, 0, 4}, {0, 6, 10}, {1, 0, 4}, {1, 6, 10}, {2, 0, 4}, {2, 6, 10}, {3, 0, 4}}));
}

} // namespace

// Every filler's bytes on a four-pixel span over a known destination, worked out from the blend
// formulas: untextured blends divide by 256, textured ones by 255.
#include "raster_frame.h"
#include "zbuffer/raster/texture_binding.h"

#include <gtest/gtest.h>

namespace {

constexpr Bgra kDestination{100, 50, 200, 40};
constexpr std::uint32_t kTexel = 0x003264C8; // red 50, green 100, blue 200

struct FillerCase {
    const char* name;
    FillMode mode;
    std::int32_t opacity;
    std::uint32_t texel;        // of a one-texel texture, 32-bit in the texture-alpha modes
    RgbBytes flat;              // flatColour
    Bgra expected[4];           // columns 0..3
    std::uint8_t rightRed = 64; // red of the right-hand vertices
};

// Vertices on the left carry red 0, on the right red 64 (Gouraud red runs 0, 16, 32, 48);
// green 100 and blue 7 throughout. Hand-worked, e.g. Gouraud blended at opacity 128, column 1
// red: premultiplied 16 * 128 = 2048, (2048 + 200 * 127) / 256 = 107.
constexpr Bgra kFlatOpaque{30, 20, 1, 255}, kFlatBlend{64, 34, 99, 147}, kFlatTex{23, 50, 49, 255},
    kFlatTexBlend{61, 50, 124, 147}, kHalfAlpha{60, 49, 123, 128}, kNoAlpha{100, 50, 200, 0};
// clang-format off
const FillerCase kCases[] = {
    {"Flat", FillMode::Flat, 255, 0, {1, 20, 30}, {kFlatOpaque, kFlatOpaque, kFlatOpaque, kFlatOpaque}},
    {"Gouraud", FillMode::Gouraud, 255, 0, {}, {{7, 100, 0, 255}, {7, 100, 16, 255}, {7, 100, 32, 255}, {7, 100, 48, 255}}},
    // Red (1 * 128 + 200 * 127) / 256 = 99 where a division by 255 would give 100.
    {"FlatBlended", FillMode::FlatBlended, 128, 0, {1, 20, 30}, {kFlatBlend, kFlatBlend, kFlatBlend, kFlatBlend}},
    {"GouraudBlended", FillMode::GouraudBlended, 128, 0, {}, {{53, 74, 99, 147}, {53, 74, 107, 147}, {53, 74, 115, 147}, {53, 74, 123, 147}}},
    // 255 * 255 << 16 no longer fits a signed step: the colour runs the short way round.
    {"GouraudBlendedWraps", FillMode::GouraudBlended, 255, 0, {}, {{6, 99, 0, 255}, {6, 99, 255, 255}, {6, 99, 255, 255}, {6, 99, 254, 255}}, 255},
    {"GouraudTextured", FillMode::GouraudTextured, 255, kTexel, {}, {{5, 39, 0, 255}, {5, 39, 3, 255}, {5, 39, 6, 255}, {5, 39, 9, 255}}},
    {"FlatTextured", FillMode::FlatTextured, 255, kTexel, {255, 128, 30}, {kFlatTex, kFlatTex, kFlatTex, kFlatTex}},
    {"GouraudTexturedBlended", FillMode::GouraudTexturedBlended, 128, kTexel, {}, {{52, 44, 99, 255}, {52, 44, 101, 255}, {52, 44, 102, 255}, {52, 44, 104, 255}}},
    {"FlatTexturedBlended", FillMode::FlatTexturedBlended, 128, kTexel, {255, 128, 30}, {kFlatTexBlend, kFlatTexBlend, kFlatTexBlend, kFlatTexBlend}},
    {"TextureAlphaHalf", FillMode::FlatTextureAlpha, 255, 0x80000000 | kTexel, {255, 128, 30}, {kHalfAlpha, kHalfAlpha, kHalfAlpha, kHalfAlpha}},
    // Not premultiplied: red 48 at column 3 gives (128 * 48 >> 8) * 50 / 255 + 200 * 127 / 255.
    {"GouraudTextureAlpha", FillMode::GouraudTextureAlpha, 128, 0xFF000000 | kTexel, {}, {{51, 43, 99, 128}, {51, 43, 100, 128}, {51, 43, 102, 128}, {51, 43, 103, 128}}},
    {"TexelAlphaZeroSkipsPixel", FillMode::GouraudTextureAlpha, 255, kTexel, {}, {kDestination, kDestination, kDestination, kDestination}},
    // A texel above alpha 0 writes depth even when opacity 0 makes the written alpha 0.
    {"ZeroOpacityStillWritesDepth", FillMode::FlatTextureAlpha, 0, 0xFF000000 | kTexel, {}, {kNoAlpha, kNoAlpha, kNoAlpha, kNoAlpha}},
};
// clang-format on

class FillerPixels : public ::testing::TestWithParam<FillerCase> {};

TEST_P(FillerPixels, WriteTheTabledBytes) {
    const FillerCase& c = GetParam();
    RasterFrame frame(6, 3, kDestination);
    TestPicture picture(1, 1, c.mode >= FillMode::FlatTextureAlpha ? 32 : 24);
    picture.SetTexel(0, 0, c.texel);
    q5_MATERIAL material;
    material.textures[0] = &picture;
    BindMaterialTexture(frame.rc, &material, 0);
    frame.rc.flatColour = c.flat;
    frame.rc.opacity = c.opacity;
    frame.rc.inverseOpacity = 255 - c.opacity;
    frame.Draw(Polygon{Vertex(0, 0, 50, 0, 100, 7), Vertex(4, 0, 50, c.rightRed, 100, 7),
                       Vertex(4, 1, 50, c.rightRed, 100, 7), Vertex(0, 1, 50, 0, 100, 7)},
               c.mode);
    for (int x = 0; x < 4; ++x) {
        EXPECT_EQ(frame.Pixel(x, 0), c.expected[x]) << "column " << x;
        EXPECT_EQ(frame.Depth(x, 0), c.expected[x] == kDestination ? kDepthEmpty : 50) << x;
    }
}

INSTANTIATE_TEST_SUITE_P(Fillers, FillerPixels, ::testing::ValuesIn(kCases),
                         [](const auto& info) { return std::string(info.param.name); });

} // namespace

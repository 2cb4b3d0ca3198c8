// PNG files, the host's pictures, and reading the driver's frame.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "core/platform/png_codec.h"
#include "host/formats/png_file.h"
#include "host/scene/host_picture.h"

TEST(PngFiles, WrittenPixelsReadBackAndNoTemporaryIsLeft) {
    namespace fs = std::filesystem;
    const fs::path folder = "png_test_out";
    fs::remove_all(folder);
    fs::create_directories(folder);
    Image image;
    image.width = 3;
    image.height = 2;
    image.channels = 4;
    image.pixels = {1,  2,  3,  255, 4,  5,  6,  128, 7,  8,  9,  0,
                    10, 11, 12, 255, 13, 14, 15, 255, 16, 17, 18, 255};
    std::string error;
    ASSERT_TRUE(WritePng((folder / "a.png").string(), image, error)) << error;
    Image back;
    ASSERT_TRUE(ReadPng((folder / "a.png").string(), back, error)) << error;
    EXPECT_EQ(back.width, 3);
    EXPECT_EQ(back.height, 2);
    EXPECT_EQ(back.channels, 4);
    EXPECT_EQ(back.pixels, image.pixels);
    int files = 0;
    for (const auto& entry : fs::directory_iterator(folder)) files += entry.is_regular_file();
    EXPECT_EQ(files, 1);
}

TEST(PngFiles, OpaqueImageReadsBackWithoutAlpha) {
    const std::string file = "png_test_opaque.png";
    Image image;
    image.width = 2;
    image.height = 2;
    image.pixels = {255, 0, 0, 0, 255, 0, 0, 0, 255, 10, 20, 30};
    std::string error;
    ASSERT_TRUE(WritePng(file, image, error)) << error;
    Image back;
    ASSERT_TRUE(ReadPng(file, back, error)) << error;
    EXPECT_EQ(back.channels, 3);
    EXPECT_EQ(back.pixels, image.pixels);
}

TEST(PngFiles, WritingReplacesAnExistingFile) {
    const std::string file = "png_test_replaced.png";
    Image first;
    first.width = first.height = 1;
    first.pixels = {1, 2, 3};
    Image second = first;
    second.pixels = {200, 100, 50};
    std::string error;
    ASSERT_TRUE(WritePng(file, first, error)) << error;
    ASSERT_TRUE(WritePng(file, second, error)) << error;
    Image back;
    ASSERT_TRUE(ReadPng(file, back, error)) << error;
    EXPECT_EQ(back.pixels, second.pixels);
}

TEST(PngFiles, PictureOfAnotherFormatIsRefused) {
    // A complete 1 x 1 bitmap file (a red pixel), which a general image decoder would accept.
    const unsigned char bmp[58] = {
        'B', 'M', 58,  0, 0, 0, 0, 0, 0, 0, 54, 0, 0, 0,       // file header: size 58, pixels at 54
        40,  0,   0,   0, 1, 0, 0, 0, 1, 0, 0,  0,             // info header: 40 bytes, 1 x 1
        1,   0,   24,  0, 0, 0, 0, 0, 4, 0, 0,  0,             // 1 plane, 24 bits, uncompressed
        0,   0,   0,   0, 0, 0, 0, 0, 0, 0, 0,  0, 0, 0, 0, 0, // resolution, palette: none
        0,   0,   255, 0};                                     // blue, green, red, padding
    const std::string file = "png_test_bitmap.png";
    std::ofstream(file, std::ios::binary).write(reinterpret_cast<const char*>(bmp), sizeof bmp);
    Image image;
    std::string error;
    EXPECT_FALSE(ReadPng(file, image, error));
    EXPECT_EQ(error.rfind("cannot read " + file + ": ", 0), 0u) << error;
}

TEST(PngCodec, PaddedRowsAreReadPastTheirPaddingAndOpaqueAlphaIsFull) {
    // 2 x 2, rows 12 bytes apart; the padding bytes must not reach the file.
    const std::uint8_t rows[24] = {1, 2, 3, 0,   4,  5,  6,  9, 77, 77, 77, 77,
                                   7, 8, 9, 128, 10, 11, 12, 0, 77, 77, 77, 77};
    const std::string file = "png_test_padded.png";
    std::string error;
    ASSERT_TRUE(q5plat::EncodePngFile(file.c_str(), rows, 2, 2, 12, false, error)) << error;
    q5plat::PngPixels back;
    ASSERT_TRUE(q5plat::DecodePngFile(file.c_str(), back, error)) << error;
    EXPECT_EQ(back.width, 2);
    EXPECT_EQ(back.height, 2);
    EXPECT_FALSE(back.hasAlpha);
    const std::vector<std::uint8_t> expected = {1, 2, 3, 255, 4,  5,  6,  255,
                                                7, 8, 9, 255, 10, 11, 12, 255};
    EXPECT_EQ(back.bgra, expected);
}

TEST(PngFiles, UnreadableFileIsAnErrorNamingIt) {
    Image image;
    std::string error;
    EXPECT_FALSE(ReadPng("no_such_picture.png", image, error));
    EXPECT_NE(error.find("no_such_picture.png"), std::string::npos);
}

TEST(FrameReadBack, BottomUpBlueGreenRedRowsBecomeTopDownRgb) {
    // 2 x 2 frame, stride 12 (4 bytes of padding): memory row 0 is the bottom screen row.
    const std::uint8_t frame[24] = {
        1, 2, 3, 0,   4,  5,  6,  255, 0, 0, 0, 0, // bottom row: (3,2,1), (6,5,4)
        7, 8, 9, 255, 10, 11, 12, 255, 0, 0, 0, 0, // top row: (9,8,7), (12,11,10)
    };
    const Image image = ImageFromFrame(frame, 2, 2, 12);
    const std::vector<std::uint8_t> expected = {9, 8, 7, 12, 11, 10, 3, 2, 1, 6, 5, 4};
    EXPECT_EQ(image.channels, 3);
    EXPECT_EQ(image.pixels, expected);
}

TEST(HostPictures, RgbPixelsAreStoredBottomUpAsBlueGreenRed) {
    const std::uint8_t rgb[2 * 2 * 3] = {10, 20, 30, 40, 50, 60, 70, 80, 90, 100, 110, 120};
    HostPicture* p = HostPicture::FromPixels(2, 2, 3, rgb);
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(p->header->biBitCount, 24);
    EXPECT_EQ(p->header->biWidth, 2);
    EXPECT_FALSE(p->rowsTopDown);
    // 24-bit rows of 2 pixels are padded to 8 bytes; the stored first row is the image's last.
    const auto* bits = static_cast<const std::uint8_t*>(p->bits);
    EXPECT_EQ(bits[0], 90);
    EXPECT_EQ(bits[2], 70);
    EXPECT_EQ(bits[8], 30);
    EXPECT_EQ(bits[11], 60);
    EXPECT_EQ(p->Release(), 0u);
}

TEST(HostPictures, AlphaMakesA32BitPictureWhoseTexelsAreReady) {
    const std::uint8_t rgba[4] = {1, 2, 3, 4};
    HostPicture* p = HostPicture::FromPixels(1, 1, 4, rgba);
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(p->header->biBitCount, 32);
    EXPECT_TRUE(p->texels32Ready);
    const auto* bits = static_cast<const std::uint8_t*>(p->bits);
    EXPECT_EQ(bits[0], 3);
    EXPECT_EQ(bits[3], 4);
    p->Release();
    EXPECT_EQ(HostPicture::Create(0, 5, 24), nullptr);
    EXPECT_EQ(HostPicture::Create(5, 5, 16), nullptr);
}

// PNG files and the host's pictures.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "host/formats/png_file.h"
#include "host/scene/host_picture.h"

TEST(PngFiles, PixelsReadBackWithAlphaOnlyWhenWrittenAndNoTemporaryIsLeft) {
    namespace fs = std::filesystem;
    const fs::path folder = "png_test_out";
    fs::remove_all(folder);
    fs::create_directories(folder);
    Image rgba{3, 2, 4, {1,  2,  3,  255, 4,  5,  6,  128, 7,  8,  9,  0,
                         10, 11, 12, 255, 13, 14, 15, 255, 16, 17, 18, 255}};
    Image rgb{2, 1, 3, {255, 0, 0, 10, 20, 30}};
    std::string error;
    for (const Image* image : {&rgba, &rgb}) {
        const std::string file = (folder / std::to_string(image->channels)).string() + ".png";
        ASSERT_TRUE(WritePng(file, *image, error)) << error;
        Image back;
        ASSERT_TRUE(ReadPng(file, back, error)) << error;
        EXPECT_EQ(back.width, image->width);
        EXPECT_EQ(back.height, image->height);
        EXPECT_EQ(back.channels, image->channels);
        EXPECT_EQ(back.pixels, image->pixels);
    }
    int files = 0;
    for (const auto& entry : fs::directory_iterator(folder)) files += entry.is_regular_file();
    EXPECT_EQ(files, 2);
}

TEST(PngFiles, PictureOfAnotherFormatIsRefused) {
    // A complete 1 x 1 bitmap file (a red pixel), which a general image decoder would accept:
    // file header (size 58, pixels at 54), info header (40 bytes, 1 x 1, 1 plane, 24 bits,
    // uncompressed, 4 bytes of pixels, no palette), then blue, green, red and padding.
    unsigned char bmp[58] = {'B', 'M', 58, 0, 0, 0, 0, 0, 0, 0,  54, 0, 0, 0, 40, 0, 0, 0, 1,
                             0,   0,   0,  1, 0, 0, 0, 1, 0, 24, 0,  0, 0, 0, 0,  4, 0, 0, 0};
    bmp[56] = 255;
    const std::string file = "png_test_bitmap.png";
    std::ofstream(file, std::ios::binary).write(reinterpret_cast<const char*>(bmp), sizeof bmp);
    Image image;
    std::string error;
    EXPECT_FALSE(ReadPng(file, image, error));
    EXPECT_EQ(error.rfind("cannot read " + file + ": ", 0), 0u) << error;
}

TEST(HostPictures, PixelsAreStoredBottomUpAsBlueGreenRed) {
    const std::uint8_t rgb[2 * 2 * 3] = {10, 20, 30, 40, 50, 60, 70, 80, 90, 100, 110, 120};
    HostPicture* p = HostPicture::FromPixels(2, 2, 3, rgb);
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(p->header->biBitCount, 24);
    // 24-bit rows of 2 pixels are padded to 8 bytes; the stored first row is the image's last.
    const auto* bits = static_cast<const std::uint8_t*>(p->bits);
    EXPECT_EQ(bits[0], 90);
    EXPECT_EQ(bits[2], 70);
    EXPECT_EQ(bits[8], 30);
    EXPECT_EQ(bits[11], 60);
    EXPECT_EQ(p->Release(), 0u);
}

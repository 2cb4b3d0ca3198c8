// PNG reading and writing with libpng's simplified interface.
#include "host/formats/png_file.h"

#include <png.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <random>

namespace {

std::string Reason(const png_image& image) {
    return image.message[0] != 0 ? image.message : "unknown libpng failure";
}

// Same folder as the target, so the final rename does not cross file systems.
std::string TemporaryName(const std::string& path) {
    std::random_device seed;
    char suffix[32];
    std::snprintf(suffix, sizeof suffix, ".tmp%08x", static_cast<unsigned>(seed()));
    return path + suffix;
}

} // namespace

bool ReadPng(const std::string& path, Image& image, std::string& error) {
    png_image png;
    std::memset(&png, 0, sizeof png);
    png.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_file(&png, path.c_str())) {
        error = "cannot read " + path + ": " + Reason(png);
        return false;
    }
    const bool alpha = (png.format & PNG_FORMAT_FLAG_ALPHA) != 0;
    png.format = alpha ? PNG_FORMAT_RGBA : PNG_FORMAT_RGB;
    image.width = static_cast<std::int32_t>(png.width);
    image.height = static_cast<std::int32_t>(png.height);
    image.channels = alpha ? 4 : 3;
    image.pixels.assign(PNG_IMAGE_SIZE(png), 0);
    if (!png_image_finish_read(&png, nullptr, image.pixels.data(), 0, nullptr)) {
        error = "cannot read " + path + ": " + Reason(png);
        png_image_free(&png);
        return false;
    }
    return true;
}

bool WritePng(const std::string& path, const Image& image, std::string& error) {
    if (image.width < 1 || image.height < 1 ||
        image.pixels.size() <
            static_cast<std::size_t>(image.width) * image.height * image.channels) {
        error = "cannot write " + path + ": the image is empty";
        return false;
    }
    png_image png;
    std::memset(&png, 0, sizeof png);
    png.version = PNG_IMAGE_VERSION;
    png.width = static_cast<png_uint_32>(image.width);
    png.height = static_cast<png_uint_32>(image.height);
    png.format = image.channels == 4 ? PNG_FORMAT_RGBA : PNG_FORMAT_RGB;

    const std::string temporary = TemporaryName(path);
    const bool written =
        png_image_write_to_file(&png, temporary.c_str(), 0, image.pixels.data(), 0, nullptr) != 0;
    std::error_code ec;
    if (!written) {
        error = "cannot write " + path + ": " + Reason(png);
        std::filesystem::remove(temporary, ec);
        return false;
    }
    std::filesystem::rename(temporary, path, ec);
    if (ec) {
        error = "cannot write " + path + ": " + ec.message();
        std::filesystem::remove(temporary, ec);
        return false;
    }
    return true;
}

Image ImageFromFrame(const std::uint8_t* bits, std::int32_t width, std::int32_t height,
                     std::int32_t stride) {
    Image image;
    image.width = width;
    image.height = height;
    image.channels = 3;
    image.pixels.resize(static_cast<std::size_t>(width) * height * 3);
    std::uint8_t* out = image.pixels.data();
    for (std::int32_t y = 0; y < height; ++y) {
        const std::uint8_t* row = bits + static_cast<std::ptrdiff_t>(height - 1 - y) * stride;
        for (std::int32_t x = 0; x < width; ++x, out += 3) {
            out[0] = row[4 * x + 2];
            out[1] = row[4 * x + 1];
            out[2] = row[4 * x + 0];
        }
    }
    return image;
}

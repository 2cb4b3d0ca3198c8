// PNG reading and writing over the platform's PNG codec.
#include "host/formats/png_file.h"

#include <cstdio>
#include <filesystem>
#include <random>

#include "core/platform/png_codec.h"

namespace {

// Same folder as the target, so the final rename does not cross file systems.
std::string TemporaryName(const std::string& path) {
    std::random_device seed;
    char suffix[32];
    std::snprintf(suffix, sizeof suffix, ".tmp%08x", static_cast<unsigned>(seed()));
    return path + suffix;
}

} // namespace

bool ReadPng(const std::string& path, Image& image, std::string& error) {
    q5plat::PngPixels png;
    if (!q5plat::DecodePngFile(path.c_str(), png, error)) {
        error = "cannot read " + path + ": " + error;
        return false;
    }
    image.width = png.width;
    image.height = png.height;
    image.channels = png.hasAlpha ? 4 : 3;
    const std::size_t count = static_cast<std::size_t>(png.width) * png.height;
    image.pixels.resize(count * image.channels);
    std::uint8_t* out = image.pixels.data();
    for (std::size_t i = 0; i < count; ++i, out += image.channels) {
        const std::uint8_t* in = png.bgra.data() + 4 * i;
        out[0] = in[2];
        out[1] = in[1];
        out[2] = in[0];
        if (png.hasAlpha) out[3] = in[3];
    }
    return true;
}

bool WritePng(const std::string& path, const Image& image, std::string& error) {
    const std::size_t count = static_cast<std::size_t>(image.width) * image.height;
    if (image.width < 1 || image.height < 1 || (image.channels != 3 && image.channels != 4) ||
        image.pixels.size() < count * image.channels) {
        error = "cannot write " + path + ": the image is empty";
        return false;
    }
    std::vector<std::uint8_t> bgra(count * 4);
    const std::uint8_t* in = image.pixels.data();
    for (std::size_t i = 0; i < count; ++i, in += image.channels) {
        bgra[4 * i + 0] = in[2];
        bgra[4 * i + 1] = in[1];
        bgra[4 * i + 2] = in[0];
        bgra[4 * i + 3] = image.channels == 4 ? in[3] : 255;
    }

    const std::string temporary = TemporaryName(path);
    std::error_code ec;
    if (!q5plat::EncodePngFile(temporary.c_str(), bgra.data(), image.width, image.height,
                               4 * static_cast<std::size_t>(image.width), image.channels == 4,
                               error)) {
        error = "cannot write " + path + ": " + error;
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

// PNG files: the checks and pixel packing both systems share; the codec itself is per platform.
#include "core/platform/png_codec.h"

namespace q5plat {
namespace {

// Pictures above this many pixels (1 GiB as 32-bit rows) are refused before memory is taken.
constexpr std::uint64_t kMaxPixels = std::uint64_t{1} << 28;

bool TooLarge(std::uint64_t width, std::uint64_t height) {
    return width == 0 || height == 0 || width * height > kMaxPixels;
}

} // namespace
} // namespace q5plat

#if defined(_WIN32)
#include "core/platform/win32/png_codec.inc"
#elif defined(__unix__) || defined(__APPLE__)
#include "core/platform/posix/png_codec.inc"
#else
#error "PNG codec: unknown platform"
#endif

namespace q5plat {

bool DecodePngFile(const char* path, PngPixels& out, std::string& error) {
    out = PngPixels();
    if (path == nullptr || path[0] == 0) {
        error = "no file name";
        return false;
    }
    if (!DecodeFile(path, out, error)) {
        out = PngPixels();
        return false;
    }
    return true;
}

bool EncodePng(const std::uint8_t* bgra, std::int32_t width, std::int32_t height,
               std::size_t stride, bool keepAlpha, std::vector<std::uint8_t>& png,
               std::string& error) {
    png.clear();
    if (bgra == nullptr || width < 1 || height < 1 || TooLarge(width, height) ||
        stride < 4 * static_cast<std::size_t>(width)) {
        error = "the image is empty";
        return false;
    }
    if (keepAlpha) return EncodeBytes(bgra, width, height, stride, 4, png, error);

    // Both codecs take opaque pixels as packed 3-byte rows.
    const std::size_t packedStride = 3 * static_cast<std::size_t>(width);
    std::vector<std::uint8_t> packed(packedStride * static_cast<std::size_t>(height));
    for (std::int32_t y = 0; y < height; ++y) {
        const std::uint8_t* in = bgra + static_cast<std::size_t>(y) * stride;
        std::uint8_t* to = packed.data() + static_cast<std::size_t>(y) * packedStride;
        for (std::int32_t x = 0; x < width; ++x, in += 4, to += 3) {
            to[0] = in[0];
            to[1] = in[1];
            to[2] = in[2];
        }
    }
    return EncodeBytes(packed.data(), width, height, packedStride, 3, png, error);
}

} // namespace q5plat

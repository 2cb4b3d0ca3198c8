// Texture decoding through stb_image, reading files through the core library's streams.
#include "host/formats/texture_file.h"

#include <climits>
#include <vector>

#include "host/formats/stb_image_config.h"
#include "host/formats/stream_reading.h"

namespace {

// Images larger than this a side are refused rather than decoded into gigabytes.
constexpr int kMaxSide = 16384;

// The decoder builds each JPEG Huffman table from its 16 code counts without checking that
// they add up to at most 256 codes, and writes past the table when they do not; such tables
// are refused here first. Entropy-coded data stuffs every 0xFF, so a marker found anywhere is one.
bool HuffmanTablesFit(const std::uint8_t* data, std::size_t size) {
    for (std::size_t i = 0; i + 3 < size; ++i) {
        if (data[i] != 0xFF || data[i + 1] != 0xC4) continue;
        std::size_t left = (std::size_t{data[i + 2]} << 8 | data[i + 3]);
        std::size_t at = i + 4;
        left = left >= 2 ? left - 2 : 0;
        while (left >= 17 && at + 17 <= size) {
            std::size_t codes = 0;
            for (std::size_t k = 1; k <= 16; ++k) codes += data[at + k];
            if (codes > 256) return false;
            if (left < 17 + codes) break;
            left -= 17 + codes;
            at += 17 + codes;
        }
    }
    return true;
}

} // namespace

bool DecodeImage(const std::uint8_t* data, std::size_t size, Image& image, std::string& error) {
    if (data == nullptr || size == 0 || size > INT_MAX) {
        error = "no image data";
        return false;
    }
    if (size > 2 && data[0] == 0xFF && data[1] == 0xD8 && !HuffmanTablesFit(data, size)) {
        error = "bad JPEG Huffman table";
        return false;
    }
    const int length = static_cast<int>(size);
    int width = 0, height = 0, channels = 0;
    if (stbi_info_from_memory(data, length, &width, &height, &channels) == 0) {
        error = stbi_failure_reason() != nullptr ? stbi_failure_reason() : "unknown image format";
        return false;
    }
    if (width < 1 || height < 1 || width > kMaxSide || height > kMaxSide) {
        error = "image of " + std::to_string(width) + "x" + std::to_string(height) + " pixels";
        return false;
    }
    // Grey with alpha keeps its alpha; everything else without alpha becomes RGB.
    const int wanted = channels == 2 || channels == 4 ? 4 : 3;
    stbi_uc* pixels = stbi_load_from_memory(data, length, &width, &height, &channels, wanted);
    if (pixels == nullptr) {
        error = stbi_failure_reason() != nullptr ? stbi_failure_reason() : "cannot decode";
        return false;
    }
    image.width = width;
    image.height = height;
    image.channels = wanted;
    image.pixels.assign(pixels, pixels + static_cast<std::size_t>(width) * height * wanted);
    stbi_image_free(pixels);
    return true;
}

bool ReadImageFile(const std::string& path, Image& image, std::string& error) {
    StreamHandle stream = OpenReadStream(path);
    std::vector<std::uint8_t> bytes;
    if (stream == nullptr || !ReadWholeStream(*stream, bytes)) {
        error = "cannot read " + path;
        return false;
    }
    if (!DecodeImage(bytes.data(), bytes.size(), image, error)) {
        error = "cannot read " + path + ": " + error;
        return false;
    }
    return true;
}

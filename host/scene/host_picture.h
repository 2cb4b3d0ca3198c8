// The host's pictures: images held as device-independent bitmaps for textures.
#pragma once

#include <cstdint>
#include <vector>

#include "interface/picture.h"

class HostPicture final : public TPicture {
public:
    // A bottom-up picture of 24 bits (blue, green, red) or 32 bits (blue, green, red, alpha),
    // filled with zeros; one reference, owned by the caller. Null for a size below 1 or another
    // bit count.
    static HostPicture* Create(std::int32_t width, std::int32_t height, std::uint16_t bitCount);
    // From rows of red, green, blue (channels 3) or red, green, blue, alpha (channels 4), top
    // row first; 4 channels give a 32-bit picture whose alpha the renderer may use.
    static HostPicture* FromPixels(std::int32_t width, std::int32_t height, int channels,
                                   const std::uint8_t* pixels);

    // Writes one pixel, (0, 0) at the top left; alpha is ignored by a 24-bit picture.
    void SetPixel(std::int32_t x, std::int32_t y, std::uint8_t red, std::uint8_t green,
                  std::uint8_t blue, std::uint8_t alpha = 255);

private:
    HostPicture() = default;
    ~HostPicture() override = default;

    q5_BITMAPINFOHEADER info_{};
    std::vector<std::uint8_t> pixels_;
};

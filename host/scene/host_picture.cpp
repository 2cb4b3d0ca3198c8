// Creation and filling of the host's pictures.
#include "host/scene/host_picture.h"

HostPicture* HostPicture::Create(std::int32_t width, std::int32_t height, std::uint16_t bitCount) {
    if (width < 1 || height < 1 || (bitCount != 24 && bitCount != 32)) return nullptr;
    auto* p = new HostPicture;
    p->info_.biSize = sizeof(q5_BITMAPINFOHEADER);
    p->info_.biWidth = width;
    p->info_.biHeight = height;
    p->info_.biPlanes = 1;
    p->info_.biBitCount = bitCount;
    const std::int32_t stride = q5DibRowStride(bitCount, width);
    p->info_.biSizeImage = static_cast<std::uint32_t>(stride) * static_cast<std::uint32_t>(height);
    p->pixels_.assign(p->info_.biSizeImage, 0);
    p->header = &p->info_;
    p->bits = p->pixels_.data();
    p->width = width;
    p->height = height;
    p->texels32Ready = bitCount == 32;
    return p;
}

HostPicture* HostPicture::FromPixels(std::int32_t width, std::int32_t height, int channels,
                                     const std::uint8_t* pixels) {
    if ((channels != 3 && channels != 4) || pixels == nullptr) return nullptr;
    HostPicture* p = Create(width, height, channels == 4 ? 32 : 24);
    if (p == nullptr) return nullptr;
    for (std::int32_t y = 0; y < height; ++y)
        for (std::int32_t x = 0; x < width; ++x) {
            const std::uint8_t* s = pixels + (static_cast<std::size_t>(y) * width + x) *
                                                 static_cast<std::size_t>(channels);
            p->SetPixel(x, y, s[0], s[1], s[2], channels == 4 ? s[3] : 255);
        }
    return p;
}

void HostPicture::SetPixel(std::int32_t x, std::int32_t y, std::uint8_t red, std::uint8_t green,
                           std::uint8_t blue, std::uint8_t alpha) {
    if (x < 0 || y < 0 || x >= info_.biWidth || y >= info_.biHeight) return;
    const int bytes = info_.biBitCount / 8;
    std::uint8_t* px = Row(y) + static_cast<std::ptrdiff_t>(x) * bytes;
    px[0] = blue;
    px[1] = green;
    px[2] = red;
    if (bytes == 4) px[3] = alpha;
}

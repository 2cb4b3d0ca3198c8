// Device-independent bitmap description and its row stride, shared by pictures and surfaces.
#pragma once

#include <cstdint>

#pragma pack(push, 1)
// Device-independent bitmap description; an 8-bit picture's palette of 4-byte entries (blue,
// green, red, reserved) follows it directly.
struct q5_BITMAPINFOHEADER {
    std::uint32_t biSize;
    std::int32_t biWidth;
    std::int32_t biHeight;
    std::uint16_t biPlanes;
    std::uint16_t biBitCount;
    std::uint32_t biCompression;
    std::uint32_t biSizeImage;
    std::int32_t biXPelsPerMeter;
    std::int32_t biYPelsPerMeter;
    std::uint32_t biClrUsed;
    std::uint32_t biClrImportant;
};
#pragma pack(pop)
static_assert(sizeof(q5_BITMAPINFOHEADER) == 40);

// Bytes of one bitmap row: rows are padded to whole 32-bit words. Only the low 24 bits of the
// bit count enter the product.
constexpr std::int32_t q5DibRowStride(std::uint32_t bitCount, std::int32_t width) {
    return static_cast<std::int32_t>(((bitCount & 0xFFFFFF) * width + 31) / 32 * 4);
}

// PNG files through the system's image codec: the Imaging Component on Windows, libpng on POSIX.
// Only the reference host uses this; the plug-in module does not carry it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace q5plat {

// A decoded picture: rows top first, 4 bytes a pixel in the order blue, green, red, alpha.
struct PngPixels {
    std::int32_t width = 0;
    std::int32_t height = 0;
    // The file carries transparency; without it every alpha byte is 255.
    bool hasAlpha = false;
    std::vector<std::uint8_t> bgra;
};

// Paths are narrow text: UTF-8 on POSIX, the process's code page on Windows. On failure the
// functions return false with a one-line reason that does not repeat the path.

bool DecodePngFile(const char* path, PngPixels& out, std::string& error);

// The PNG file, in `png`, of width x height pixels of 32-bit blue, green, red, alpha rows, top
// first and `stride` bytes apart. Without `keepAlpha` the file has no alpha channel. Bytes
// rather than a file, so that the caller decides where and how they land.
bool EncodePng(const std::uint8_t* bgra, std::int32_t width, std::int32_t height,
               std::size_t stride, bool keepAlpha, std::vector<std::uint8_t>& png,
               std::string& error);

} // namespace q5plat

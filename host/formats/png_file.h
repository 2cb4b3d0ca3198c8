// PNG files: reading textures and reference images, writing rendered frames.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// An 8-bit image, rows top first, `channels` bytes a pixel: 3 (red, green, blue) or 4 (and
// alpha).
struct Image {
    std::int32_t width = 0, height = 0;
    int channels = 3;
    std::vector<std::uint8_t> pixels;

    const std::uint8_t* Pixel(std::int32_t x, std::int32_t y) const {
        return pixels.data() + (static_cast<std::size_t>(y) * width + x) * channels;
    }
};

// Reads any PNG as 8-bit RGB, or RGBA when the file has alpha. False with a reason on failure.
bool ReadPng(const std::string& path, Image& image, std::string& error);

// Writes the image to a temporary file beside `path` and renames it over `path` once it is
// complete, so a failed write leaves no partial file. False with a reason on failure.
bool WritePng(const std::string& path, const Image& image, std::string& error);

// An RGB image from a bottom-up frame of blue, green, red, x pixels with the given row stride.
Image ImageFromFrame(const std::uint8_t* bits, std::int32_t width, std::int32_t height,
                     std::int32_t stride);

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

// "-" names standard output wherever a picture is written.
inline constexpr const char* kStandardOutputName = "-";

// Whether a picture can go to `path`, asked before any rendering: a file to make or replace
// must be named *.png and its folder must take a new file; a device or a link must open for
// writing. False with one line on why.
bool CheckPngOutput(const std::string& path, std::string& error);
// True when `path` is standard output or leads to a device or pipe, where pictures follow one
// another instead of each having a file.
bool IsPngStream(const std::string& path);

// Writes the image to `path`. A regular file (or a new name) is written to a temporary file
// beside it and renamed over it once complete, so a failed write leaves no partial file;
// standard output, devices and links are written in place, a link staying a link. False with
// a reason on failure.
bool WritePng(const std::string& path, const Image& image, std::string& error);

// An RGB image from a bottom-up frame of blue, green, red, x pixels with the given row stride.
Image ImageFromFrame(const std::uint8_t* bits, std::int32_t width, std::int32_t height,
                     std::int32_t stride);

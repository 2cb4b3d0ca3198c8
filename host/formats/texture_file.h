// Texture images: PNG, JPEG, TGA and BMP, from files or from bytes a model carries, through one
// decoder on every platform so that every build sees the same texels.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "host/formats/png_file.h"

// Decodes an image held in memory into 8-bit RGB, or RGBA when it has alpha. False with the
// decoder's reason.
bool DecodeImage(const std::uint8_t* data, std::size_t size, Image& image, std::string& error);

// Reads and decodes the file at `path`. False with a reason.
bool ReadImageFile(const std::string& path, Image& image, std::string& error);

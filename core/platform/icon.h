// Icon images: loading a module's icon resources, monochrome icons from masks, copies, and
// reading an icon back as pixels.
#pragma once

#include "interface/types.h"

#include <vector>

namespace q5plat {

// Loads icon resource `name` of a module at size x size pixels; a null name loads the integer
// id instead. On POSIX the resource is an icon file (32- or 24-bit entries) of type "ICON"
// in the module's table, named "#<id>" for integer ids; the entry nearest in size is scaled.
// Null when there is no such resource.
q5_HICON LoadIcon(q5_HINSTANCE module, const char* name, std::uint16_t id, std::int32_t size);
// A monochrome icon from AND and XOR masks of one bit per pixel, rows of whole 16-bit words.
q5_HICON CreateMonoIcon(std::int32_t width, std::int32_t height, const std::uint8_t* andMask,
                        const std::uint8_t* xorMask);
q5_HICON CopyIcon(q5_HICON icon);
bool DestroyIcon(q5_HICON icon);

// The icon as rows of 0xAARRGGBB from the top; transparent pixels are 0. False for a null icon.
bool GetIconPixels(q5_HICON icon, std::int32_t& width, std::int32_t& height,
                   std::vector<std::uint32_t>& pixels);

} // namespace q5plat

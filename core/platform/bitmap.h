// Device-independent bitmap sections: the colour surfaces the driver renders into.
#pragma once

#include "interface/bitmap_info.h"
#include "interface/types.h"

namespace q5plat {

// A bottom-up 32-bit section of width x height (300 pixels per metre, no colour table) made
// on the screen's device context; null on failure.
q5_HBITMAP CreateDibSection32(std::int32_t width, std::int32_t height);
// The section's pixel memory, read from the bitmap object.
void* DibSectionBits(q5_HBITMAP bitmap);
std::int32_t DibSectionStride(q5_HBITMAP bitmap);
bool DeleteBitmap(q5_HBITMAP bitmap);

} // namespace q5plat

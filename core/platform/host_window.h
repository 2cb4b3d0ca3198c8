// A plain top-level window for hosts and tests: on POSIX a pixel surface the platform keeps
// (what a window is there), on Windows a real borderless window on the screen.
#pragma once

#include <vector>

#include "interface/types.h"

namespace q5plat {

// Client area of width x height at the screen's top-left corner, filled with black; null on
// failure.
q5_HWND CreateHostWindow(std::int32_t width, std::int32_t height);
void DestroyHostWindow(q5_HWND window);
// The window's pixels as the screen shows them, top row first, 4 bytes each (blue, green,
// red, unused; the unused byte reads as 0).
bool ReadWindowPixels(q5_HWND window, std::vector<std::uint8_t>& pixels, std::int32_t& width,
                      std::int32_t& height);

} // namespace q5plat

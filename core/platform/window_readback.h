// Reading a window of this process back from the window system, as the screen shows it. Only
// programs that show windows link this; the module does not.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace q5plat {

// The client area of this process's top-level window titled `title` (UTF-8), top row first,
// blue, green, red, unused. POSIX: read from the X server that DISPLAY names. False when there
// is no such window or no window system to ask (Windows: windows read themselves back).
bool ReadOwnWindowBack(const std::string& title, std::vector<std::uint8_t>& pixels,
                       std::int32_t& width, std::int32_t& height);

} // namespace q5plat

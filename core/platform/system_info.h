// Facts about the machine: screen depth, processors, the system folder.
#pragma once

#include "interface/types.h"

namespace q5plat {

// Bits per pixel of the screen's device context (POSIX: the host surface format, 32).
int ScreenBitsPerPixel();
int ProcessorCount();
// Narrow system folder into buf; returns its length, 0 where there is none (POSIX).
unsigned SystemDirectoryA(char* buf, unsigned capacity);

} // namespace q5plat

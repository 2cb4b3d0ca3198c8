// Facts about the machine: screen depth, processors, the system folder.
#pragma once

#include "interface/types.h"

namespace q5plat {

// Bits per pixel of the screen's device context (POSIX: the host surface format, 32).
int ScreenBitsPerPixel();
// The machine's processors, or the positive count in environment variable
// kProcessorCountVariable, through which tests show a machine of another size.
int ProcessorCount();
inline constexpr const char* kProcessorCountVariable = "TESSERA_PROCESSORS";
// Sets that variable for this process and the modules it loads; 0 removes it.
void OverrideProcessorCount(int count);
// Narrow system folder into buf; returns its length, 0 where there is none (POSIX).
unsigned SystemDirectoryA(char* buf, unsigned capacity);

} // namespace q5plat

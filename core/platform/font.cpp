// Fonts and text output on each platform.
#include "core/platform/font.h"

#if defined(_WIN32)
#include "core/platform/win32/font.inc"
#elif defined(__unix__) || defined(__APPLE__)
#include "core/platform/posix/font.inc"
#else
#error "font: unknown platform"
#endif

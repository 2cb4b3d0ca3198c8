// Device contexts, bitmap transfers and pen lines on each platform.
#include "core/platform/graphics.h"

#if defined(_WIN32)
#include "core/platform/win32/graphics.inc"
#elif defined(__unix__) || defined(__APPLE__)
#include "core/platform/posix/graphics.inc"
#else
#error "graphics: unknown platform"
#endif

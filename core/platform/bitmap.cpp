// Bitmap sections on each platform.
#include "core/platform/bitmap.h"

#if defined(_WIN32)
#include "core/platform/win32/bitmap.inc"
#elif defined(__unix__) || defined(__APPLE__)
#include "core/platform/posix/bitmap.inc"
#else
#error "bitmap sections: unknown platform"
#endif

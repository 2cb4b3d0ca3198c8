// Desktop windows on each platform.
#include "core/platform/desktop_window.h"

#if defined(_WIN32)
#include "core/platform/win32/desktop_window.inc"
#elif defined(__unix__) || defined(__APPLE__)
#include "core/platform/posix/desktop_window.inc"
#else
#error "desktop windows: unknown platform"
#endif

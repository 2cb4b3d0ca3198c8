// Host windows on each platform.
#include "core/platform/host_window.h"

#if defined(_WIN32)
#include "core/platform/win32/host_window.inc"
#elif defined(__unix__) || defined(__APPLE__)
#include "core/platform/posix/host_window.inc"
#else
#error "host windows: unknown platform"
#endif

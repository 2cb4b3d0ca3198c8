// Reading windows back from the window system on each platform.
#include "core/platform/window_readback.h"

#if defined(_WIN32)
#include "core/platform/win32/window_readback.inc"
#elif defined(__unix__) || defined(__APPLE__)
#include "core/platform/posix/window_readback.inc"
#else
#error "window readback: unknown platform"
#endif

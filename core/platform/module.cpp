// Loaded modules: loading, entry points, the module's own handle and its resources.
#include "core/platform/module.h"

#if defined(_WIN32)
#include "core/platform/win32/module.inc"
#elif defined(__unix__) || defined(__APPLE__)
#include "core/platform/posix/module.inc"
#else
#error "modules: unknown platform"
#endif

// Facts about the machine: screen depth, processors, the system folder.
#include "core/platform/system_info.h"

#if defined(_WIN32)
#include "core/platform/win32/system_info.inc"
#elif defined(__unix__) || defined(__APPLE__)
#include "core/platform/posix/system_info.inc"
#else
#error "system facts: unknown platform"
#endif

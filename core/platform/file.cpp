// Operating-system files.
#include "core/platform/file.h"

#if defined(_WIN32)
#include "core/platform/win32/file.inc"
#elif defined(__unix__) || defined(__APPLE__)
#include "core/platform/posix/file.inc"
#else
#error "files: unknown platform"
#endif

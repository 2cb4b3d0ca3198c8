// Locale services: the platform's code-page conversions and date and time formats.
#include "core/platform/code_page.h"

#if defined(_WIN32)
#include "core/platform/win32/code_page.inc"
#elif defined(__unix__) || defined(__APPLE__)
#include "core/platform/posix/code_page.inc"
#else
#error "code pages: unknown platform"
#endif

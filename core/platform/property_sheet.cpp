// Property sheets on each platform.
#include "core/platform/property_sheet.h"

#if defined(_WIN32)
#include "core/platform/win32/property_sheet.inc"
#elif defined(__unix__) || defined(__APPLE__)
#include "core/platform/posix/property_sheet.inc"
#else
#error "property sheets: unknown platform"
#endif

// The compiled-in resource table that every module carries on POSIX, in place of Win32
// resources. The platform layer finds it through the module handle.
#pragma once

#include "interface/types.h"

extern "C" {
struct q5_RESOURCE_ENTRY {
    const char* type; // e.g. "LNG"
    const char* name; // e.g. "ENG"
    const unsigned char* data;
    std::size_t size;
};
}

// Name of the table symbol each module exports; the table ends with an all-null entry.
inline constexpr const char* kModuleResourceSymbol = "q5_module_resources";

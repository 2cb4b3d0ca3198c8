// Loading plug-in modules and resolving their entry points.
#pragma once

#include "interface/types.h"

// Null when the module cannot be loaded, and for any path holding "Pelion": that module is
// never loaded through here. altered: the module's own dependencies resolve from its folder.
q5_HINSTANCE q5_LoadLibrary(const q5_WCHAR* path, bool altered);
void* q5_GetProcAddress(q5_HINSTANCE module, const char* name);
// True when the platform released the module.
bool q5_FreeLibrary(q5_HINSTANCE module);

// Loads the built plug-in module as a host does, from the working folder: CTest runs every
// test program in its own folder, beside the module.
#pragma once

#include "core/platform/module.h"
#include "interface/plugin_entry.h"

#if defined(_WIN32)
inline constexpr const char* kModuleFileName = "tessera_zb.dll";
#else
inline constexpr const char* kModuleFileName = "./tessera_zb.so";
#endif

// The module stays loaded for the whole test program, like a host keeps its plug-ins.
struct LoadedModule {
    q5_HINSTANCE handle = nullptr;
    q5_DLLFUNC entry = nullptr;

    static LoadedModule& Get() {
        static LoadedModule module = [] {
            LoadedModule m;
            m.handle = q5plat::LoadLibraryA(kModuleFileName, 0);
            if (m.handle != nullptr)
                m.entry =
                    reinterpret_cast<q5_DLLFUNC>(q5plat::GetProcAddress(m.handle, "Q5DLLFunc"));
            return m;
        }();
        return module;
    }
};

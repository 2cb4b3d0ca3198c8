// Loaded modules: library loading, entry points, the module's own handle and its resources.
#pragma once

#include "interface/types.h"

namespace q5plat {

// Load flag that resolves a module's own dependencies from its folder.
inline constexpr std::uint32_t kLoadAlteredSearchPath = 8;

q5_HINSTANCE LoadLibraryA(const char* path, std::uint32_t flags);
q5_HINSTANCE LoadLibraryW(const q5_WCHAR* path, std::uint32_t flags);
void* GetProcAddress(q5_HINSTANCE module, const char* name);
bool FreeLibrary(q5_HINSTANCE module);

// True when a module of that file name is already loaded into the process.
bool IsLibraryLoaded(const char* fileName);

// The handle of the module that contains this code (the plug-in itself, or the program).
q5_HINSTANCE OwnModule();

// Full file name of the running program in narrow text; its length, or 0 when it is unknown
// or does not fit in size units with the terminator.
std::uint32_t GetProgramFileNameA(char* out, std::uint32_t size);

// Loads a library with the activation context made from `contextModule`'s manifest
// (resource 2) active; without a usable context the load proceeds plainly. The context is
// made once per process, from the first module asked for.
q5_HINSTANCE LoadLibraryWithModuleContext(const char* path, q5_HINSTANCE contextModule);

struct ResourceView {
    const void* data = nullptr;
    std::size_t size = 0;
    explicit operator bool() const { return data != nullptr; }
};

// Finds resource (type, name) of a module; a null module means the program itself. Type and
// name match without regard to case; on Windows "#<number>" addresses an integer id, so
// ("#5", "#106") is dialog 106. Not found: an empty view.
ResourceView FindResource(q5_HINSTANCE module, const char* type, const char* name);

} // namespace q5plat

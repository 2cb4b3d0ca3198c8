// DrawDib binding: load the system's "MSVFW32.DLL" with the module's activation context.
#include "plugin/drawdib_binding.h"

#include <cstdio>

#include "core/platform/drawdib.h"
#include "core/platform/module.h"
#include "core/platform/system_info.h"
#include "plugin/plugin_state.h"

namespace {
constexpr const char* kDrawDibLibrary = "MSVFW32.DLL";
constexpr unsigned kPathCapacity = 260;
} // namespace

void BindDrawDib() {
    DriverModule& state = Plugin();
    state.screenDepth = q5plat::ScreenBitsPerPixel();
    // Presentation takes the plain bitmap path, as it does when the library cannot be opened.
    if constexpr (!q5plat::kSystemHasDrawDib) return;
    if (state.screenDepth >= 15 && q5plat::IsLibraryLoaded(kDrawDibLibrary)) return;

    char directory[kPathCapacity];
    const unsigned length = q5plat::SystemDirectoryA(directory, kPathCapacity);
    if (length != 0 && length <= kPathCapacity - 1) {
        char path[kPathCapacity];
        const int written = std::snprintf(path, sizeof path, "%s\\%s", directory, kDrawDibLibrary);
        if (written > 0 && written < static_cast<int>(kPathCapacity))
            state.drawDibModule = q5plat::LoadLibraryWithModuleContext(path, state.module);
    }
    if (state.drawDibModule == nullptr) return;

    auto open = reinterpret_cast<q5_DrawDibOpenFn>(
        q5plat::GetProcAddress(state.drawDibModule, "DrawDibOpen"));
    auto close = reinterpret_cast<q5_DrawDibCloseFn>(
        q5plat::GetProcAddress(state.drawDibModule, "DrawDibClose"));
    auto draw = reinterpret_cast<q5_DrawDibDrawFn>(
        q5plat::GetProcAddress(state.drawDibModule, "DrawDibDraw"));
    state.drawDibOpen = open;
    state.drawDibClose = close;
    state.drawDibDraw = draw;
    if (open == nullptr || close == nullptr || draw == nullptr) return;
    state.drawDib = open();
    if (state.drawDib != nullptr) state.drawDibUsable = true;
}

void UnbindDrawDib() {
    DriverModule& state = Plugin();
    // Without an opened handle the library stays loaded, as it always has.
    if (state.drawDib == nullptr) return;
    state.drawDibClose(state.drawDib);
    q5plat::FreeLibrary(state.drawDibModule);
}

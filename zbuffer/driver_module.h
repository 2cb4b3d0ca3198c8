// What the plug-in frame hands every driver it makes: the module's string table and the
// presentation functions bound at init. Only the entry point's init and shutdown write it.
#pragma once

#include "core/platform/drawdib.h"
#include "interface/types.h"

struct DriverModule {
    q5_HINSTANCE module = nullptr;
    std::uint64_t stringTable = 0;
    q5_HINSTANCE drawDibModule = nullptr;
    q5_DrawDibOpenFn drawDibOpen = nullptr;
    q5_DrawDibCloseFn drawDibClose = nullptr;
    q5_DrawDibDrawFn drawDibDraw = nullptr;
    q5_HDRAWDIB drawDib = nullptr;
    bool drawDibUsable = false; // set once DrawDibOpen succeeded; never cleared
    std::int32_t screenDepth = 0;

    // The module's localized text `id`, or an empty text without a host.
    const q5_WCHAR* String(std::int32_t id) const;
};

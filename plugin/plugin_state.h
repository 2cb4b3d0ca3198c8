// The process-wide state of the plug-in frame, written by the init and shutdown messages.
#pragma once

#include "core/platform/drawdib.h"
#include "core/platform/types.h"

struct PluginState {
    q5_HINSTANCE module = nullptr;
    std::uint64_t stringTable = 0;
    q5_HINSTANCE drawDibModule = nullptr;
    q5_DrawDibOpenFn drawDibOpen = nullptr;
    q5_DrawDibCloseFn drawDibClose = nullptr;
    q5_DrawDibDrawFn drawDibDraw = nullptr;
    q5_HDRAWDIB drawDib = nullptr;
    bool drawDibUsable = false; // set once DrawDibOpen succeeded; never cleared
    std::int32_t screenDepth = 0;
};

// The host API object lives in core/services/host_link.h, shared with the core library.
PluginState& Plugin();

// The plug-in's localized text `id`, or an empty text before init.
const q5_WCHAR* PluginString(std::int32_t id);

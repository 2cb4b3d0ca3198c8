// Storage of the plug-in's process-wide state.
#include "plugin/plugin_state.h"

#include "core/services/host_link.h"
#include "plugin/gapi.h"

PluginState& Plugin() {
    static PluginState state;
    return state;
}

const q5_WCHAR* PluginString(std::int32_t id) {
    q5_GAPI* host = q5GetHostAPI();
    const q5_WCHAR* text = host != nullptr ? host->LGetString(Plugin().stringTable, id) : nullptr;
    return text != nullptr ? text : u"";
}

// Q5DLLFunc: init, shutdown, version, description and driver creation.
#include "plugin/entry.h"

#include <new>

#include "core/services/host_link.h"
#include "core/services/wide_string.h"
#include "interface/driver.h"
#include "interface/gapi.h"
#include "plugin/drawdib_binding.h"
#include "plugin/plugin_state.h"
#include "zbuffer/izb.h"

namespace {

constexpr std::uint64_t kInitResult = 5;
constexpr std::int32_t kDescriptionId = 1;
constexpr std::int32_t kDisplayNameId = 9;

std::uint64_t Init(q5_GAPI* host, q5_HINSTANCE module) {
    // Without a host there is nobody to bind to; answer as for an unknown message.
    if (host == nullptr) return 0;
    q5SetHostAPI(host);
    q5SetLibraryModule(module);
    DriverModule& state = Plugin();
    state.module = module;
    state.stringTable = host->OpenStringTable(module);
    const q5_WCHAR* displayName = host->LGetString(state.stringTable, kDisplayNameId);
    host->RegisterDriver(module, kZBufferDriverName, kDriverRegistrationFlags, displayName);
    BindDrawDib();
    return kInitResult;
}

// Capacity 0 means the caller guarantees room for the whole text.
std::uint64_t CopyText(q5_WCHAR* destination, std::uint64_t capacity, const q5_WCHAR* text) {
    if (destination == nullptr || text == nullptr) return 0;
    if (capacity == 0) {
        q5wcscpy(destination, text);
    } else {
        std::uint64_t i = 0;
        for (; i + 1 < capacity && text[i] != 0; ++i) destination[i] = text[i];
        destination[i] = 0;
    }
    return 1;
}

std::uint64_t Create(const char* name) {
    if (name == nullptr || q5GetHostAPI() == nullptr) return 0;
    if (q5strnicmp(name, kZBufferDriverName, 256) != 0) return 0;
    IZB* driver = new (std::nothrow) IZB(Plugin());
    return reinterpret_cast<std::uint64_t>(driver);
}

} // namespace

extern "C" Q5_MODULE_EXPORT std::uint64_t Q5DLLFunc(std::uint64_t message, std::int64_t a,
                                                    std::uint64_t b, std::uint64_t c) {
    switch (message) {
    case PLUGIN_MSG_INIT:
        return Init(reinterpret_cast<q5_GAPI*>(a), reinterpret_cast<q5_HINSTANCE>(b));
    case PLUGIN_MSG_SHUTDOWN:
        UnbindDrawDib();
        return 0;
    case PLUGIN_MSG_INTERFACE_VERSION:
        return kDriverInterfaceVersion;
    case PLUGIN_MSG_VERSION:
        return CopyText(reinterpret_cast<q5_WCHAR*>(a), c, kPluginVersion);
    case PLUGIN_MSG_DESCRIPTION:
        if (q5GetHostAPI() == nullptr) return 0;
        return CopyText(reinterpret_cast<q5_WCHAR*>(a), c, Plugin().String(kDescriptionId));
    case PLUGIN_MSG_CREATE:
        return Create(reinterpret_cast<const char*>(a));
    default:
        return 0;
    }
}

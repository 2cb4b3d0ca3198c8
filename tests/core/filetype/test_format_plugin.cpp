// A format plug-in module for the tests: when the host initialises it, it registers one format
// with a signature, a handler and an icon from its own resources.
#include "core/filetype/file_type.h"
#include "interface/gapi.h"
#include "interface/plugin_entry.h"

namespace {

constexpr q5_GUID kFormat = {0x7E57F0A7, 0x0001, 0x0002, {1, 2, 3, 4, 5, 6, 7, 8}};
constexpr std::uintptr_t kIconId = 101;

// Tells the caller which operation arrived and that it came from here.
std::uint64_t Handler(std::uint32_t operation, std::uintptr_t, std::uintptr_t, std::uintptr_t) {
    return 0x7E570000u + operation;
}

} // namespace

extern "C" Q5_MODULE_EXPORT std::uint64_t Q5DLLFunc(std::uint64_t message, std::int64_t a,
                                                    std::uint64_t b, std::uint64_t) {
    if (message != PLUGIN_MSG_INIT) return 0;
    auto* host = reinterpret_cast<q5_GAPI*>(a);
    auto* module = reinterpret_cast<q5_HINSTANCE>(b);
    FILETYPE* type = host->RegisterType(u"tpf", u"Test plug-in format", 0, 0x402, kFormat);
    if (type == nullptr) return 0;
    type->handler = Handler;
    type->signature = "signature=0:54 50 46 21";
    type->icon = host->RegisterICON(module, reinterpret_cast<const q5_WCHAR*>(kIconId), &kFormat);
    return 5;
}

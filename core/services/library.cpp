// Loading plug-in modules through the platform's loader.
#include "core/services/library.h"

#include "core/platform/module.h"
#include "core/services/text_convert.h"

namespace {

constexpr std::size_t kNarrowPathBytes = 520;

bool HoldsRefusedName(const q5_WCHAR* path) {
    static constexpr char16_t kRefused[] = u"Pelion";
    for (const q5_WCHAR* p = path; *p != 0; ++p) {
        std::size_t i = 0;
        while (kRefused[i] != 0 && p[i] == kRefused[i]) ++i;
        if (kRefused[i] == 0) return true;
    }
    return false;
}

} // namespace

q5_HINSTANCE q5_LoadLibrary(const q5_WCHAR* path, bool altered) {
    if (path == nullptr || HoldsRefusedName(path)) return nullptr;
    const std::uint32_t flags = altered ? q5plat::kLoadAlteredSearchPath : 0;
    if (q5GetWideSystem()) return q5plat::LoadLibraryW(path, flags);
    char narrow[kNarrowPathBytes];
    WtoAex(path, narrow, static_cast<int>(kNarrowPathBytes));
    return q5plat::LoadLibraryA(narrow, flags);
}

void* q5_GetProcAddress(q5_HINSTANCE module, const char* name) {
    return q5plat::GetProcAddress(module, name);
}

bool q5_FreeLibrary(q5_HINSTANCE module) {
    return q5plat::FreeLibrary(module);
}

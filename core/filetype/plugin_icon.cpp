// Plug-in icons: loading both sizes, reporting a missing resource, and one host icon index
// per format identifier.
#include "core/filetype/plugin_icon.h"

#include "core/containers/collection.h"
#include "core/platform/icon.h"
#include "core/services/format16.h"
#include "core/services/text_convert.h"
#include "core/services/wide_string.h"
#include "interface/gapi.h"
#include "interface/plugin_record.h"

#include <array>
#include <cstring>
#include <new>

namespace {

constexpr std::size_t kMaskBytes = 128;
constexpr std::int32_t kSmallIcon = 16;
constexpr std::int32_t kLargeIcon = 32;
constexpr std::int32_t kMessageUnits = 256;
constexpr std::int32_t kNarrowNameBytes = 256;
constexpr std::int32_t kIconResourceModule = 1;

struct Masks {
    std::array<std::uint8_t, kMaskBytes> andMask{};
    std::array<std::uint8_t, kMaskBytes> xorMask{};
};

// A page: black outline, white inside, its top right corner folded down; transparent around.
Masks DefaultMasks(std::int32_t size) {
    Masks m;
    m.andMask.fill(0xFF);
    const std::int32_t stride = (size + 15) / 16 * 2;
    const std::int32_t left = size * 3 / 16, right = size * 13 / 16 - 1;
    const std::int32_t top = size / 16, bottom = size * 15 / 16 - 1;
    const std::int32_t fold = size / 4;
    for (std::int32_t y = top; y <= bottom; ++y) {
        for (std::int32_t x = left; x <= right; ++x) {
            const std::int32_t intoCorner = (x - (right - fold)) - (y - top);
            if (intoCorner > 0) continue; // cut away by the fold
            const bool edge = x == left || x == right || y == top || y == bottom ||
                              intoCorner == 0 || (x == right - fold && y <= top + fold) ||
                              (y == top + fold && x >= right - fold);
            const std::size_t at = static_cast<std::size_t>(y * stride + x / 8);
            const auto bit = static_cast<std::uint8_t>(0x80 >> (x % 8));
            m.andMask[at] = static_cast<std::uint8_t>(m.andMask[at] & ~bit);
            if (!edge) m.xorMask[at] |= bit;
        }
    }
    return m;
}

void FreeEntry(void* item) {
    auto* entry = static_cast<q5_ICONCACHEENTRY*>(item);
    delete[] entry->resourceName;
    delete entry;
}

// "<string 66><plug-in name> [<resource> ]" as the host's error report.
void ReportMissing(q5_GAPI& host, q5_PLUGINRECORD* record, const q5_WCHAR* resource, bool isName,
                   std::uint16_t id) {
    const q5_WCHAR* name = record != nullptr ? record->GetName() : nullptr;
    if (name == nullptr || *name == 0) name = u"Unknown plugin";
    q5_WCHAR message[kMessageUnits];
    q5wcsncpy(message, host.LGetString(0, kMissingIconStringId), kMessageUnits);
    const auto append = [&message](const q5_WCHAR* text) {
        const std::size_t used = q5wcslen(message);
        q5wcsncpy(message + used, text, kMessageUnits - used);
    };
    append(name);
    append(u" [");
    if (isName) {
        append(resource);
    } else {
        const std::size_t used = q5wcslen(message);
        q5sprintf(message + used, kMessageUnits - used, u"%d", static_cast<int>(id));
    }
    append(u" ]");
    host.ReportMessage(kReportError, message);
}

q5_WCHAR* CopyName(const q5_WCHAR* text) {
    const std::size_t n = q5wcslen(text) + 1;
    auto* copy = new (std::nothrow) q5_WCHAR[n];
    if (copy != nullptr) std::memcpy(copy, text, n * sizeof(q5_WCHAR));
    return copy;
}

} // namespace

q5_HICON q5CreateDefaultIcon(std::int32_t size) {
    const Masks m = DefaultMasks(size);
    return q5plat::CreateMonoIcon(size, size, m.andMask.data(), m.xorMask.data());
}

std::int32_t q5_GAPI::RegisterICON(q5_HINSTANCE module, const q5_WCHAR* resource,
                                   const q5_GUID* id) {
    q5_HINSTANCE resources = GetResourceModule(module, kIconResourceModule);
    const auto value = reinterpret_cast<std::uintptr_t>(resource);
    const bool isName = (value >> 16) != 0;
    const auto intId = static_cast<std::uint16_t>(value & 0xFFFF);
    char narrow[kNarrowNameBytes] = {};
    if (isName) WtoAex(resource, narrow, kNarrowNameBytes);
    const char* name = isName ? narrow : nullptr;
    q5_HICON small = q5plat::LoadIcon(resources, name, intId, kSmallIcon);
    q5_HICON large = q5plat::LoadIcon(resources, name, intId, kLargeIcon);
    q5_PLUGINRECORD* record = FindPluginRecord(module);
    if (small == nullptr || large == nullptr) ReportMissing(*this, record, resource, isName, intId);
    if (id == nullptr) {
        q5plat::DestroyIcon(small);
        q5plat::DestroyIcon(large);
        return -1;
    }
    if (small == nullptr) small = q5CreateDefaultIcon(kSmallIcon);
    if (large == nullptr) large = q5CreateDefaultIcon(kLargeIcon);
    const auto done = [&](std::int32_t index) {
        q5plat::DestroyIcon(small);
        q5plat::DestroyIcon(large);
        return index;
    };
    for (std::int64_t i = 0; iconCache_ != nullptr && i < iconCache_->Count(); ++i) {
        auto* entry = static_cast<q5_ICONCACHEENTRY*>(iconCache_->At(i));
        if (entry->id.Compare(*id)) {
            SetIcons(small, large, entry->index);
            return done(entry->index);
        }
    }
    const std::int32_t index = SetIcons(small, large, -1);
    if (index < 0) return done(index);
    if (iconCache_ == nullptr) {
        iconCache_ = q5_COLLECTION::Create(10, 10);
        if (iconCache_ == nullptr) return done(index);
        iconCache_->freeItem = FreeEntry;
        firstIconIndex_ = index;
    }
    auto* entry = new (std::nothrow) q5_ICONCACHEENTRY{nullptr, intId, *id, index, record};
    if (entry != nullptr && isName) entry->resourceName = CopyName(resource);
    if (entry != nullptr && iconCache_->Insert(entry) < 0) FreeEntry(entry);
    return done(index);
}

// File times and byte sizes rendered for display.
#include "core/services/format_display.h"

#include "core/platform/code_page.h"
#include "core/services/format16.h"
#include "core/services/host_link.h"
#include "core/services/text_convert.h"
#include "core/services/wide_string.h"
#include "interface/gapi.h"

namespace {

constexpr std::size_t kOutCapacity = 64;
constexpr std::int32_t kSizeUnitId = 2241;
constexpr std::uint64_t kMainStringTable = 0;

} // namespace

void q5FormatTime(const q5_FILETIME& time, q5_WCHAR* out) {
    q5plat::CalendarTime local{};
    q5plat::FileTimeToLocalCalendar(time, local);
    // AtoW converts into path-sized buffers, so the wide texts get that size either way.
    q5_WCHAR date[260] = {};
    q5_WCHAR clock[260] = {};
    if (q5GetWideSystem()) {
        q5plat::FormatShortDateW(local, date, 64);
        q5plat::FormatTimeNoSecondsW(local, clock, 64);
    } else {
        char narrowDate[128] = {};
        char narrowClock[128] = {};
        q5plat::FormatShortDateA(local, narrowDate, sizeof narrowDate);
        q5plat::FormatTimeNoSecondsA(local, narrowClock, sizeof narrowClock);
        AtoW(narrowDate, date);
        AtoW(narrowClock, clock);
    }
    q5sprintf(out, kOutCapacity, u"%s %s", date, clock);
}

void q5FormatSize(int bytes, q5_WCHAR* out) {
    int kilobytes = bytes / 1024;
    if (bytes % 1024 != 0) ++kilobytes;
    q5sprintf(out, kOutCapacity, u"%d", kilobytes);

    // Groups from the right without regard to a sign, which counts as a digit here.
    q5_WCHAR scratch[kOutCapacity];
    std::size_t length = q5wcslen(out);
    std::size_t n = 0;
    for (std::size_t copied = 0; copied < length; ++copied) {
        scratch[n++] = out[length - 1 - copied];
        if ((copied + 1) % 3 == 0 && copied + 1 < length) scratch[n++] = u' ';
    }
    for (std::size_t i = 0; i < n; ++i) out[i] = scratch[n - 1 - i];
    out[n] = 0;

    q5_GAPI* host = q5GetHostAPI();
    if (host == nullptr) return;
    const q5_WCHAR* unit = host->LGetString(kMainStringTable, kSizeUnitId);
    if (unit == nullptr) return;
    // Bounded so a long unit text cannot run past the 64 units of out.
    q5wcsncpy(out + n, unit, kOutCapacity - n);
}

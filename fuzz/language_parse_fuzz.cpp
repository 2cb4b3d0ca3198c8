// Parses arbitrary bytes as a language file, 8-bit or (with a byte-order mark) 16-bit.
#include "core/language/language_table.h"
#include "core/services/wide_string.h"
#include "core/stream/stream.h"

#include <cstdint>
#include <cstdlib>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // An application name makes the "$APP_NAME$" substitution run; no file or resource loads.
    static const bool named =
        (q5InitLanguage(nullptr, nullptr, u"XX", u"Fuzzed Application"), true);
    (void)named;
    std::vector<std::uint8_t> bytes(data, data + size);
    if (bytes.empty()) return 0;
    q5_STREAM* stream =
        q5_STREAM::CreateFromMemory(bytes.data(), static_cast<std::int64_t>(bytes.size()));
    if (stream == nullptr) return 0;
    q5_LANGUAGETABLE table(stream, nullptr);
    stream->Release();
    // Every defined text must be readable to its terminator.
    std::size_t total = 0;
    for (std::int32_t id = 0; id <= 65536; ++id) {
        const q5_WCHAR* text = table.Lookup(id, nullptr);
        if (text != nullptr) total += q5wcslen(text);
    }
    if (!table.IsLoaded() && total != 0) std::abort();
    return 0;
}

// Feeds arbitrary and nearly valid texts to q5_GUID::FromStr, narrow and wide.
#include "core/containers/guid.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr char kSample[] = "{01020304-0506-0708-0B0A-0C0D0E0F1011}";

// Reads text from an exactly sized block, so that any read past its end is a finding, and
// checks that a record that was read prints and reads back unchanged.
void CheckNarrow(const std::string& text, q5_GUID& guid, bool& read) {
    std::vector<char> block(text.begin(), text.end());
    block.push_back(0);
    read = guid.FromStr(block.data());
    if (!read) return;
    char printed[39];
    q5_GUID again;
    if (!again.FromStr(guid.ToStr(printed)) || !again.Compare(guid)) std::abort();
}

// The wide form of an ASCII text must read exactly as the narrow one.
void CheckWide(const std::string& text, const q5_GUID& narrowGuid, bool narrowRead) {
    std::vector<q5_WCHAR> block;
    bool ascii = true;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        ascii = ascii && byte < 0x80;
        block.push_back(byte);
    }
    block.push_back(0);
    q5_GUID guid;
    const bool read = guid.FromStr(block.data());
    // Longer texts are cut by the 64-byte conversion buffer.
    if (ascii && text.size() < 64 && (read != narrowRead || !guid.Compare(narrowGuid)))
        std::abort();
}

void Check(const std::string& text) {
    q5_GUID guid;
    bool read = false;
    CheckNarrow(text, guid, read);
    CheckWide(text.substr(0, text.find('\0')), guid, read);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string raw(reinterpret_cast<const char*>(data), size);
    Check(raw);
    // sscanf is not instrumented, so coverage cannot lead the fuzzer to a valid text: the
    // input is also written over a valid one from the offset its first byte names (a zero
    // byte cuts it short).
    if (size > 0) {
        std::string near(kSample);
        const std::size_t at = data[0] % near.size();
        near.replace(at, std::min(size - 1, near.size() - at), raw.substr(1));
        Check(near);
    }
    return 0;
}

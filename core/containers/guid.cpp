// The 128-bit identifier of file formats, plug-ins and icons.
#include "core/containers/guid.h"

#include "core/services/text_convert.h"

#include <cstdio>
#include <cstring>

namespace {

struct Words {
    std::uint32_t w[4];
};

Words AsWords(const q5_GUID& guid) {
    Words words;
    std::memcpy(words.w, &guid, sizeof words.w);
    return words;
}

} // namespace

bool q5_GUID::Compare(const q5_GUID& other) const {
    const Words a = AsWords(*this);
    const Words b = AsWords(other);
    return a.w[0] == b.w[0] && a.w[1] == b.w[1] && a.w[2] == b.w[2] && a.w[3] == b.w[3];
}

bool q5_GUID::IsNull() const {
    const Words a = AsWords(*this);
    return (a.w[0] | a.w[1] | a.w[2] | a.w[3]) == 0;
}

void q5_GUID::SetNull() {
    Data1 = 0;
    Data2 = 0;
    Data3 = 0;
    std::memset(Data4, 0, sizeof Data4);
}

char* q5_GUID::ToStr(char* buffer) const {
    const unsigned group4 = static_cast<unsigned>(Data4[1] << 8 | Data4[0]);
    std::snprintf(buffer, 39, "{%08X-%04X-%04X-%04X-%02X%02X%02X%02X%02X%02X}",
                  static_cast<unsigned>(Data1), static_cast<unsigned>(Data2),
                  static_cast<unsigned>(Data3), group4, static_cast<unsigned>(Data4[2]),
                  static_cast<unsigned>(Data4[3]), static_cast<unsigned>(Data4[4]),
                  static_cast<unsigned>(Data4[5]), static_cast<unsigned>(Data4[6]),
                  static_cast<unsigned>(Data4[7]));
    return buffer;
}

bool q5_GUID::FromStr(const char* text) {
    SetNull();
    if (text == nullptr) return false;
    unsigned long f[10] = {};
    const int read =
        std::sscanf(text, "{%08lX-%04lX-%04lX-%04lX-%02lX%02lX%02lX%02lX%02lX%02lX}", &f[0], &f[1],
                    &f[2], &f[3], &f[4], &f[5], &f[6], &f[7], &f[8], &f[9]);
    // Fields that were not read are still 0, so storing all ten keeps the ones that were.
    Data1 = static_cast<std::uint32_t>(f[0]);
    Data2 = static_cast<std::uint16_t>(f[1]);
    Data3 = static_cast<std::uint16_t>(f[2]);
    Data4[0] = static_cast<std::uint8_t>(f[3]);
    Data4[1] = static_cast<std::uint8_t>(f[3] >> 8);
    for (int i = 2; i < 8; ++i) Data4[i] = static_cast<std::uint8_t>(f[i + 2]);
    return read == 10;
}

bool q5_GUID::FromStr(const q5_WCHAR* text) {
    char narrow[64];
    WtoAex(text, narrow, sizeof narrow);
    return FromStr(narrow);
}

// Arithmetic on Windows-style paths, portable code with no operating-system calls.
#include "core/platform/path.h"

#include <cstring>
#include <string>

namespace {

constexpr std::size_t kRoom = q5plat::kMaxPath - 1; // units before the terminator

std::u16string Text(const q5_WCHAR* s) {
    return s != nullptr ? std::u16string(s) : std::u16string();
}

void Put(const std::u16string& text, q5_WCHAR* out) {
    const std::size_t n = text.size() < kRoom ? text.size() : kRoom;
    text.copy(out, n);
    out[n] = 0;
}

bool IsSeparator(q5_WCHAR c) {
    return c == u'\\' || c == u'/';
}

} // namespace

bool q5GetAbsoluteName(const q5_WCHAR* base, const q5_WCHAR* relative, q5_WCHAR* out) {
    if (out == nullptr) return false;
    out[0] = 0;
    if (relative == nullptr || relative[0] == 0) return false;
    std::u16string rest = relative;
    for (q5_WCHAR& c : rest)
        if (c == u'/') c = u'\\';
    std::u16string result = Text(base);
    if (result.empty() || result.back() != u'\\') result += u'\\';
    std::size_t from = 0;
    while (rest.compare(from, 3, u"..\\") == 0) {
        from += 3;
        // Search from before the trailing "\"; at the root there is nothing left to climb.
        const std::size_t cut = result.size() >= 2 ? result.find_last_of(u'\\', result.size() - 2)
                                                   : std::u16string::npos;
        if (cut != std::u16string::npos) result.resize(cut + 1);
    }
    result.append(rest, from);
    Put(result, out);
    return true;
}

bool q5GetRelativePath(const q5_WCHAR* base, const q5_WCHAR* fullName, q5_WCHAR* out) {
    if (out == nullptr) return false;
    out[0] = 0;
    const std::u16string full = Text(fullName);
    if (base == nullptr || base[0] == 0) {
        Put(full, out);
        return false;
    }
    std::u16string folder = base;
    if (folder.back() != u'\\') folder += u'\\';
    std::size_t shared = 0;
    while (shared < folder.size() && shared < full.size() && folder[shared] == full[shared])
        ++shared;
    if (shared == 0 || folder[shared - 1] != u'\\') {
        Put(full, out);
        return true;
    }
    std::u16string result;
    for (std::size_t i = shared; i < folder.size(); ++i)
        if (folder[i] == u'\\') result += u"..\\";
    result.append(full, shared);
    Put(result, out);
    return true;
}

int q5IsAbsolutePath(const q5_WCHAR* name) {
    if (name == nullptr || name[0] == 0) return 0;
    while (*name == u' ') ++name;
    std::u16string text = name;
    if (text.size() < 3) return 2;
    const std::size_t colon = text.find(u':');
    if (colon != std::u16string::npos)
        return colon + 1 < text.size() && IsSeparator(text[colon + 1]) ? 1 : 0;
    return IsSeparator(text[0]) && IsSeparator(text[1]) ? 1 : 2;
}

bool q5GetPathFromFile(const char* fileName, char* out) {
    if (out == nullptr) return false;
    out[0] = 0;
    if (fileName == nullptr) return false;
    const char* last = std::strrchr(fileName, '\\');
    if (last == nullptr || last == fileName) return false;
    std::size_t n = static_cast<std::size_t>(last - fileName);
    if (n > kRoom) n = kRoom;
    std::memcpy(out, fileName, n);
    out[n] = 0;
    return true;
}

bool q5GetPathFromFile(const q5_WCHAR* fileName, q5_WCHAR* out) {
    if (out == nullptr) return false;
    out[0] = 0;
    if (fileName == nullptr) return false;
    const std::u16string text = fileName;
    const std::size_t last = text.rfind(u'\\');
    if (last == std::u16string::npos || last == 0) return false;
    Put(text.substr(0, last), out);
    return true;
}

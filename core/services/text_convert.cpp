// Conversions between the library's 16-bit text and 8-bit text.
#include "core/services/text_convert.h"

#include "core/platform/code_page.h"

namespace {

int g_narrowCodePage = 0;
bool g_wideSystem = false;

// The fixed capacity of AtoW and WtoA: a path buffer.
constexpr int kPathCapacity = 259;

std::uint32_t NarrowCodePage() {
    return static_cast<std::uint32_t>(g_narrowCodePage);
}

// The shared size rule of the sized conversions: dst[size - 1] keeps a pre-written terminator
// and the conversion gets the elements before it. A size of 1 leaves a capacity of 0, which
// the platform takes as a size query.
template <typename Src, typename Dst, typename Convert>
int ConvertSized(const Src* src, Dst* dst, int size, Convert convert) {
    if (src == nullptr) {
        if (dst != nullptr && size != 0) dst[0] = 0;
        return 0;
    }
    if (size >= 1)
        dst[size - 1] = 0;
    else
        size = -size;
    return convert(src, dst, size - 1);
}

int NarrowToWide(std::uint32_t codePage, const char* src, q5_WCHAR* dst, int capacity) {
    return q5plat::MultiByteToWide(codePage, q5plat::kMbPrecomposed, src, -1, dst, capacity);
}

int WideToNarrow(std::uint32_t codePage, const q5_WCHAR* src, char* dst, int capacity) {
    return q5plat::WideToMultiByte(codePage, 0, src, -1, dst, capacity);
}

} // namespace

int q5GetNarrowCodePage() {
    return g_narrowCodePage;
}
void q5SetNarrowCodePage(int codePage) {
    g_narrowCodePage = codePage;
}
bool q5GetWideSystem() {
    return g_wideSystem;
}
void q5SetWideSystem(bool wide) {
    g_wideSystem = wide;
}

void AtoW(const char* src, q5_WCHAR* dst) {
    if (src == nullptr) {
        dst[0] = 0;
        return;
    }
    NarrowToWide(NarrowCodePage(), src, dst, kPathCapacity);
}

void WtoA(const q5_WCHAR* src, char* dst) {
    if (src == nullptr) {
        dst[0] = 0;
        return;
    }
    WideToNarrow(NarrowCodePage(), src, dst, kPathCapacity);
}

int AtoWex(const char* src, q5_WCHAR* dst, int size) {
    return ConvertSized(src, dst, size, [](const char* s, q5_WCHAR* d, int capacity) {
        return NarrowToWide(NarrowCodePage(), s, d, capacity);
    });
}

int WtoAex(const q5_WCHAR* src, char* dst, int size) {
    return ConvertSized(src, dst, size, [](const q5_WCHAR* s, char* d, int capacity) {
        return WideToNarrow(NarrowCodePage(), s, d, capacity);
    });
}

int UTF8toWideString(const char* src, q5_WCHAR* dst, int size) {
    if (dst == nullptr)
        return src == nullptr ? 0 : NarrowToWide(q5plat::kCodePageUtf8, src, nullptr, 0);
    return ConvertSized(src, dst, size, [](const char* s, q5_WCHAR* d, int capacity) {
        return NarrowToWide(q5plat::kCodePageUtf8, s, d, capacity);
    });
}

int WidetoUTF8String(const q5_WCHAR* src, char* dst, int size) {
    if (dst == nullptr)
        return src == nullptr ? 0 : WideToNarrow(q5plat::kCodePageUtf8, src, nullptr, 0);
    return ConvertSized(src, dst, size, [](const q5_WCHAR* s, char* d, int capacity) {
        return WideToNarrow(q5plat::kCodePageUtf8, s, d, capacity);
    });
}

int QueryAtoWBufSize(const char* src) {
    return src == nullptr ? 0 : NarrowToWide(NarrowCodePage(), src, nullptr, 0);
}

int QueryWtoABufSize(const q5_WCHAR* src) {
    return src == nullptr ? 0 : WideToNarrow(NarrowCodePage(), src, nullptr, 0);
}

std::u16string Utf8ToWide(const std::string& utf8) {
    const int n = UTF8toWideString(utf8.c_str(), nullptr, 0);
    if (n <= 1) return {};
    std::u16string out(static_cast<std::size_t>(n), u'\0');
    UTF8toWideString(utf8.c_str(), out.data(), n);
    out.resize(static_cast<std::size_t>(n - 1));
    return out;
}

std::string WideToUtf8(const q5_WCHAR* text) {
    if (text == nullptr) return {};
    const int n = WidetoUTF8String(text, nullptr, 0);
    if (n <= 1) return {};
    std::string out(static_cast<std::size_t>(n), '\0');
    WidetoUTF8String(text, out.data(), n);
    out.resize(static_cast<std::size_t>(n - 1));
    return out;
}

// The library's own 16-bit string helpers.
#include "core/services/wide_string.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>

namespace {

bool IsSpace(q5_WCHAR c) {
    return c == u' ' || (c >= u'\t' && c <= u'\r');
}

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

// Whether a decimal number text out of a double's range is at least 1 in magnitude, that is,
// whether it overflowed rather than underflowed.
bool AtLeastOne(const char* p, const char* end) {
    if (p != end && *p == '-') ++p;
    std::int64_t whole = 0, zeros = 0; // integer digits from the first non-zero; zeros after "."
    for (; p != end && IsDigit(*p); ++p)
        if (whole > 0 || *p != '0') ++whole;
    if (p != end && *p == '.')
        for (++p; p != end && *p == '0'; ++p) ++zeros;
    while (p != end && IsDigit(*p)) ++p;
    // Decimal exponent of the leading non-zero digit; the mantissa of an out-of-range text
    // has one.
    std::int64_t exponent = whole > 0 ? whole - 1 : -(zeros + 1);
    if (p != end && (*p == 'e' || *p == 'E')) {
        ++p;
        const bool negative = p != end && *p == '-';
        if (p != end && (*p == '-' || *p == '+')) ++p;
        // Far beyond any double's range, and far from the 64-bit limits.
        constexpr std::int64_t kFar = 1'000'000'000;
        std::int64_t written = 0;
        for (; p != end && IsDigit(*p); ++p) written = std::min(written * 10 + (*p - '0'), kFar);
        exponent += negative ? -written : written;
    }
    return exponent >= 0;
}

} // namespace

std::size_t q5wcslen(const q5_WCHAR* s) {
    std::size_t n = 0;
    while (s[n] != 0) ++n;
    return n;
}

q5_WCHAR* q5wcscpy(q5_WCHAR* dst, const q5_WCHAR* src) {
    std::size_t i = 0;
    do {
        dst[i] = src[i];
    } while (src[i++] != 0);
    return dst;
}

q5_WCHAR* q5wcsncpy(q5_WCHAR* dst, const q5_WCHAR* src, std::size_t capacity) {
    if (capacity == 0) return dst;
    std::size_t i = 0;
    for (; i + 1 < capacity && src[i] != 0; ++i) dst[i] = src[i];
    dst[i] = 0;
    return dst;
}

q5_WCHAR* q5wcscat(q5_WCHAR* dst, const q5_WCHAR* src) {
    q5wcscpy(dst + q5wcslen(dst), src);
    return dst;
}

int q5wcscmp(const q5_WCHAR* a, const q5_WCHAR* b) {
    for (;; ++a, ++b) {
        if (*a != *b) return *a < *b ? -1 : 1;
        if (*a == 0) return 0;
    }
}

q5_WCHAR q5towlower(q5_WCHAR c) {
    const auto add = [c](int delta) { return static_cast<q5_WCHAR>(c + delta); };
    if (c < 0x80) return (c >= u'A' && c <= u'Z') ? add(32) : c;
    if (c < 0x100) return (c >= 0xC0 && c <= 0xDE && c != 0xD7) ? add(32) : c;
    if (c < 0x180) {
        // Latin Extended-A pairs capitals with the small letter after them; which of the two
        // comes first changes twice in the block.
        if (c == 0x130) return u'i';
        if (c == 0x178) return 0xFF;
        const bool evenCapital = (c < 0x138 && c != 0x131) || (c >= 0x14A && c < 0x178);
        const bool oddCapital = (c >= 0x139 && c < 0x149) || (c >= 0x179 && c < 0x17F);
        if (evenCapital && c % 2 == 0) return add(1);
        if (oddCapital && c % 2 == 1) return add(1);
        return c;
    }
    if (c >= 0x391 && c <= 0x3A9 && c != 0x3A2) return add(32);
    if (c == 0x386) return 0x3AC;
    if (c >= 0x388 && c <= 0x38A) return add(37);
    if (c == 0x38C) return 0x3CC;
    if (c == 0x38E || c == 0x38F) return add(63);
    if (c >= 0x410 && c <= 0x42F) return add(32);
    if (c >= 0x400 && c <= 0x40F) return add(80);
    return c;
}

int q5wcsnicmp(const q5_WCHAR* a, const q5_WCHAR* b, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const q5_WCHAR x = q5towlower(a[i]);
        const q5_WCHAR y = q5towlower(b[i]);
        if (x != y) return x < y ? -1 : 1;
        if (x == 0) return 0;
    }
    return 0;
}

int q5wcsicmp(const q5_WCHAR* a, const q5_WCHAR* b) {
    return q5wcsnicmp(a, b, SIZE_MAX);
}

int q5strnicmp(const char* a, const char* b, std::size_t count) {
    const auto lower = [](char c) {
        const auto u = static_cast<unsigned char>(c);
        return (u >= 'A' && u <= 'Z') ? u + 32 : u;
    };
    for (std::size_t i = 0; i < count; ++i) {
        const int x = lower(a[i]);
        const int y = lower(b[i]);
        if (x != y) return x < y ? -1 : 1;
        if (x == 0) return 0;
    }
    return 0;
}

std::int32_t q5wtol(const q5_WCHAR* s) {
    while (IsSpace(*s)) ++s;
    const bool negative = *s == u'-';
    if (*s == u'-' || *s == u'+') ++s;
    // Accumulates the magnitude up to one past the largest allowed value.
    constexpr std::int64_t kLimit = std::int64_t{INT32_MAX} + 1;
    std::int64_t value = 0;
    for (; *s >= u'0' && *s <= u'9'; ++s) {
        value = value * 10 + (*s - u'0');
        if (value > kLimit) value = kLimit;
    }
    if (negative) return static_cast<std::int32_t>(-value);
    return static_cast<std::int32_t>(value > INT32_MAX ? INT32_MAX : value);
}

double q5wtof(const q5_WCHAR* s) {
    while (IsSpace(*s)) ++s;
    if (*s == u'+') ++s;
    // Every character of a number is ASCII; the copy stops at the first one that is not.
    char text[512];
    std::size_t n = 0;
    for (; n + 1 < sizeof text && s[n] != 0 && s[n] < 0x80; ++n) text[n] = static_cast<char>(s[n]);
    double value = 0.0;
    const std::from_chars_result read = std::from_chars(text, text + n, value);
    if (read.ec == std::errc::result_out_of_range) {
        const bool negative = text[0] == '-';
        if (!AtLeastOne(text, read.ptr)) return negative ? -0.0 : 0.0;
        return negative ? -HUGE_VAL : HUGE_VAL;
    }
    if (read.ec != std::errc{}) return 0.0;
    return value;
}

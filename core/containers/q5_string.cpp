// The core library's owned string of 16-bit code units.
#include "core/containers/q5_string.h"

#include "core/services/text_convert.h"
#include "core/services/wide_string.h"

#include <cstdlib>
#include <cstring>
#include <functional>
#include <limits>

namespace {

// Wide units needed for the narrow text, terminator excluded; -1 when it cannot be converted.
int NarrowLength(const char* text) {
    return QueryAtoWBufSize(text) - 1;
}

// Converts text, whose wide form is n units, into n + 1 units at dst. The negative size is
// the converters' way of giving that room without a terminator pre-written past its end.
void ConvertNarrow(const char* text, q5_WCHAR* dst, int n) {
    AtoWex(text, dst, -(n + 2));
    dst[n] = 0;
}

// Whether old + extra units still fit the 32-bit length.
bool Fits(std::uint32_t old, std::size_t extra) {
    return extra < std::numeric_limits<std::uint32_t>::max() - old;
}

// The sign of (b - a) at the first differing unit, units read as unsigned numbers.
std::int32_t ReversedCompare(const q5_WCHAR* a, const q5_WCHAR* b) {
    for (;; ++a, ++b) {
        if (*a != *b) return *b > *a ? 1 : -1;
        if (*a == 0) return 0;
    }
}

} // namespace

q5_STRING::q5_STRING(const q5_STRING& other) {
    Set(other);
}

q5_STRING& q5_STRING::operator=(const q5_STRING& other) {
    if (&other != this) {
        ReleaseBuffer();
        Set(other);
    }
    return *this;
}

void q5_STRING::Done() {
    ReleaseBuffer();
}

void q5_STRING::ReleaseBuffer() {
    std::free(buffer_);
    buffer_ = nullptr;
}

bool q5_STRING::Resize(std::uint32_t n) {
    if (n == 0) {
        ReleaseBuffer();
        return true;
    }
    void* block = std::realloc(buffer_, (std::size_t{n} + 1) * sizeof(q5_WCHAR));
    if (block == nullptr) return false;
    buffer_ = static_cast<q5_WCHAR*>(block);
    length_ = n;
    return true;
}

// A text inside our own buffer would move under realloc, so such callers copy it first.
bool q5_STRING::Aliases(const q5_WCHAR* text) const {
    if (buffer_ == nullptr) return false;
    const std::less_equal<const q5_WCHAR*> notAfter;
    return notAfter(buffer_, text) && notAfter(text, buffer_ + length_);
}

bool q5_STRING::Set(const q5_STRING& other) {
    if (&other == this) return true;
    if (other.buffer_ == nullptr) {
        ReleaseBuffer();
        return true;
    }
    return Set(other.buffer_);
}

bool q5_STRING::Set(const q5_WCHAR* text) {
    if (text == nullptr || text[0] == 0) {
        ReleaseBuffer();
        return true;
    }
    if (Aliases(text)) return Set(q5_STRING(text));
    const std::size_t n = q5wcslen(text);
    if (!Fits(0, n) || !Resize(static_cast<std::uint32_t>(n))) return false;
    std::memcpy(buffer_, text, (n + 1) * sizeof(q5_WCHAR));
    return true;
}

bool q5_STRING::Set(const char* text) {
    if (text == nullptr || text[0] == 0) {
        ReleaseBuffer();
        return true;
    }
    const int n = NarrowLength(text);
    if (n < 1 || !Resize(static_cast<std::uint32_t>(n))) return false;
    ConvertNarrow(text, buffer_, n);
    return true;
}

bool q5_STRING::Add(const q5_STRING& other) {
    if (other.buffer_ == nullptr) return true;
    if (buffer_ == nullptr) return Set(other);
    // Both lengths are taken before the resize, which also resizes other when it is this.
    const std::uint32_t old = length_;
    const std::uint32_t extra = other.length_;
    if (!Fits(old, extra) || !Resize(old + extra)) return false;
    std::memcpy(buffer_ + old, other.buffer_, extra * sizeof(q5_WCHAR));
    buffer_[old + extra] = 0;
    return true;
}

bool q5_STRING::Add(q5_WCHAR c) {
    if (c == 0) return false;
    const q5_WCHAR one[2] = {c, 0};
    if (buffer_ == nullptr) return Set(one);
    const std::uint32_t old = length_;
    if (!Resize(old + 1)) return false;
    buffer_[old] = c;
    buffer_[old + 1] = 0;
    return true;
}

bool q5_STRING::Add(const q5_WCHAR* text) {
    if (text == nullptr || text[0] == 0) return true;
    if (buffer_ == nullptr) return Set(text);
    if (Aliases(text)) return Add(q5_STRING(text));
    const std::size_t extra = q5wcslen(text);
    const std::uint32_t old = length_;
    if (!Fits(old, extra) || !Resize(old + static_cast<std::uint32_t>(extra))) return false;
    std::memcpy(buffer_ + old, text, (extra + 1) * sizeof(q5_WCHAR));
    return true;
}

bool q5_STRING::Add(const char* text) {
    if (text == nullptr || text[0] == 0) return true;
    if (buffer_ == nullptr) return Set(text);
    const int extra = NarrowLength(text);
    const std::uint32_t old = length_;
    if (extra < 1 || !Fits(old, static_cast<std::size_t>(extra))) return false;
    if (!Resize(old + static_cast<std::uint32_t>(extra))) return false;
    ConvertNarrow(text, buffer_ + old, extra);
    return true;
}

int q5_STRING::Get(char* buffer, int size) const {
    if (buffer_ == nullptr) {
        if (size != 0) buffer[0] = 0;
        return 0;
    }
    return WtoAex(buffer_, buffer, size);
}

int q5_STRING::Get(q5_WCHAR* buffer, int size) const {
    if (size < 1) return 0;
    std::uint32_t n = 0;
    if (buffer_ != nullptr) {
        n = length_ < static_cast<std::uint32_t>(size - 1) ? length_
                                                           : static_cast<std::uint32_t>(size - 1);
        std::memcpy(buffer, buffer_, n * sizeof(q5_WCHAR));
    }
    buffer[n] = 0;
    return static_cast<int>(n);
}

bool q5_STRING::IsNumeric() const {
    if (buffer_ == nullptr) return false;
    for (const q5_WCHAR* p = buffer_; *p != 0; ++p)
        if (*p < u'0' || *p > u'9') return false;
    return true;
}

std::int32_t q5_STRING::ToInt(bool* error) const {
    if (error != nullptr) *error = buffer_ == nullptr;
    return buffer_ != nullptr ? q5wtol(buffer_) : 0;
}

double q5_STRING::ToFloat(bool* error) const {
    if (error != nullptr) *error = buffer_ == nullptr;
    return buffer_ != nullptr ? q5wtof(buffer_) : 0.0;
}

std::int32_t q5_STRING::Compare(const q5_STRING& other) const {
    if (buffer_ == nullptr) return other.buffer_ == nullptr ? 0 : -1;
    if (other.buffer_ == nullptr) return 1;
    return ReversedCompare(buffer_, other.buffer_);
}

std::int32_t q5_STRING::Compare(const q5_WCHAR* text) const {
    if (buffer_ != nullptr && text != nullptr) return ReversedCompare(buffer_, text);
    return buffer_ != nullptr ? 1 : -1;
}

std::int32_t q5_STRING::CompareNoCase(const q5_STRING& other) const {
    if (buffer_ == nullptr) return other.buffer_ == nullptr ? 0 : -1;
    if (other.buffer_ == nullptr) return 1;
    return q5wcsicmp(other.buffer_, buffer_);
}

// The core library's owned string of 16-bit code units.
#pragma once

#include "interface/types.h"

class q5_STREAM;

// The empty string owns no buffer; a buffer, when present, holds length + 1 units with a
// terminator. Allocation failure leaves the previous text and makes the operation fail.
class q5_STRING {
public:
    q5_STRING() = default;
    explicit q5_STRING(const q5_WCHAR* text) { Set(text); }
    q5_STRING(const q5_STRING& other);
    q5_STRING& operator=(const q5_STRING& other);
    ~q5_STRING() { Done(); }

    void Done();

    bool Set(const q5_STRING& other);
    bool Set(const q5_WCHAR* text);
    bool Set(const char* text);
    bool Add(const q5_STRING& other);
    bool Add(q5_WCHAR c);
    bool Add(const q5_WCHAR* text);
    bool Add(const char* text);

    // Converts into the narrow code page with the sized-conversion rules of WtoAex (a negative
    // size gives the capacity without touching its last element); returns what WtoAex returns.
    int Get(char* buffer, int size) const;
    // Copies at most size - 1 units and a terminator; returns the units copied. A size below 1
    // writes nothing.
    int Get(q5_WCHAR* buffer, int size) const;

    q5_WCHAR* GetBuffer() const { return buffer_; }
    // Never null: the empty string reads as "".
    const q5_WCHAR* GetCStr() const { return buffer_ != nullptr ? buffer_ : u""; }
    std::uint32_t Length() const { return buffer_ != nullptr ? length_ : 0; }

    // Only the digits 0-9, no sign, point or blank; false for the empty string.
    bool IsNumeric() const;
    // Leading decimal number; trailing text is ignored. error is set only for the empty string.
    std::int32_t ToInt(bool* error) const;
    double ToFloat(bool* error) const;

    // -1, 0 or +1. The empty string sorts first, but between two texts the sign is that of
    // (other - this) at the first differing unit: only equality is meant to be relied on.
    std::int32_t Compare(const q5_STRING& other) const;
    // A null text, or this string empty, gives +1 when this is non-empty and -1 otherwise.
    std::int32_t Compare(const q5_WCHAR* text) const;
    std::int32_t CompareNoCase(const q5_STRING& other) const;

    // Persisted form: a signed 16-bit count, then the low bytes of the units when all are below
    // 256, or else the negated count and the 16-bit units in the stream's byte order.
    // Load opens no chunk; it returns 1, or -12 when the buffer cannot be had.
    Q5RESULT Load(q5_STREAM* stream);
    // With a chunk id the text goes into a chunk of its own. The empty string writes the count
    // 0 without a chunk id and nothing at all with one, and returns 0; other strings return 1.
    Q5RESULT Save(q5_STREAM* stream, std::uint16_t chunkId) const;

private:
    bool Resize(std::uint32_t n);
    void ReleaseBuffer();
    bool Aliases(const q5_WCHAR* text) const;

    std::uint32_t length_ = 0; // meaningful only while buffer_ exists
    q5_WCHAR* buffer_ = nullptr;
};

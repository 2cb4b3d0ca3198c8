// The 128-bit identifier of file formats, plug-ins and icons.
#pragma once

#include "interface/types.h"

class q5_STREAM;

struct q5_GUID {
    std::uint32_t Data1;
    std::uint16_t Data2;
    std::uint16_t Data3;
    std::uint8_t Data4[8];

    // Equality of all 16 bytes; not an ordering.
    bool Compare(const q5_GUID& other) const;
    bool IsNull() const;
    void SetNull();

    // Writes "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}" into at least 39 bytes and returns buffer.
    // The fourth group prints Data4[1] before Data4[0].
    char* ToStr(char* buffer) const;
    // Zeroes the record, then reads the ToStr form. True only when all ten fields were read;
    // the fields read before a failure stay stored.
    bool FromStr(const char* text);
    // Converts to the narrow code page (64 bytes at most) and reads that.
    bool FromStr(const q5_WCHAR* text);

    // Data1, Data2 and Data3 in the stream's byte order, then Data4 as it stands; with a chunk
    // id inside a chunk of its own. Both return 1; Load opens no chunk.
    Q5RESULT Save(q5_STREAM* stream, std::uint16_t chunkId) const;
    Q5RESULT Load(q5_STREAM* stream);
};

static_assert(sizeof(q5_GUID) == 16);

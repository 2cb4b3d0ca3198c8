// Stream forms of the string and the GUID: they live with the streams, which build on the
// containers, so that neither folder includes the other in a loop.
#include "core/containers/guid.h"
#include "core/containers/q5_string.h"
#include "core/stream/stream.h"

#include <cstring>

Q5RESULT q5_STRING::Save(q5_STREAM* stream, std::uint16_t chunkId) const {
    // Readers expect no chunk at all for an empty string saved under an id.
    if (buffer_ == nullptr) {
        if (chunkId == 0) stream->WriteWord(0);
        return Q5_NOTHING;
    }
    if (chunkId != 0) stream->NewChunk(chunkId);
    bool narrow = true;
    for (std::uint32_t i = 0; i < length_ && narrow; ++i) narrow = buffer_[i] <= 0xFF;
    if (narrow) {
        stream->WriteWord(static_cast<std::uint16_t>(length_));
        unsigned char piece[256];
        for (std::uint32_t done = 0; done < length_;) {
            const std::uint32_t n = length_ - done < sizeof piece ? length_ - done : sizeof piece;
            for (std::uint32_t i = 0; i < n; ++i)
                piece[i] = static_cast<unsigned char>(buffer_[done + i]);
            stream->Write(piece, n);
            done += n;
        }
    } else {
        stream->WriteWord(static_cast<std::uint16_t>(0u - length_));
        stream->_WriteData(buffer_, length_, sizeof(q5_WCHAR));
    }
    if (chunkId != 0) stream->CloseChunk();
    return Q5_OK;
}

Q5RESULT q5_STRING::Load(q5_STREAM* stream) {
    const auto count = static_cast<std::int16_t>(stream->ReadWord());
    const auto n = static_cast<std::uint32_t>(count < 0 ? -count : count);
    if (!Resize(n)) return Q5_E_ALLOC;
    if (n == 0) return Q5_OK;
    // A short read leaves zeros rather than whatever the heap held.
    std::memset(buffer_, 0, (std::size_t{n} + 1) * sizeof(q5_WCHAR));
    if (count > 0) {
        auto* bytes = reinterpret_cast<unsigned char*>(buffer_);
        stream->Read(bytes, n);
        // Widen in place from the end, where no unread byte is overwritten.
        for (std::uint32_t i = n; i-- > 0;) buffer_[i] = bytes[i];
    } else {
        stream->_ReadData(buffer_, n, sizeof(q5_WCHAR));
    }
    return Q5_OK;
}

Q5RESULT q5_GUID::Save(q5_STREAM* stream, std::uint16_t chunkId) const {
    if (chunkId != 0) stream->NewChunk(chunkId);
    stream->WriteLong(Data1);
    stream->WriteWord(Data2);
    stream->WriteWord(Data3);
    stream->Write(Data4, sizeof Data4);
    if (chunkId != 0) stream->CloseChunk();
    return Q5_OK;
}

Q5RESULT q5_GUID::Load(q5_STREAM* stream) {
    Data1 = stream->ReadLong();
    Data2 = stream->ReadWord();
    Data3 = stream->ReadWord();
    stream->Read(Data4, sizeof Data4);
    return Q5_OK;
}

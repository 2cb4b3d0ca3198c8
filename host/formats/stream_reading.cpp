// Reading model files through the core library's streams.
#include "host/formats/stream_reading.h"

#include "core/services/text_convert.h"
#include "core/stream/file_stream.h"
#include "core/stream/stream.h"

void StreamRelease::operator()(q5_STREAM* stream) const {
    if (stream != nullptr) stream->Release();
}

StreamHandle OpenReadStream(const std::string& path) {
    const std::u16string wide = Utf8ToWide(path);
    if (wide.empty()) return nullptr;
    return StreamHandle(q5_STREAM::CreateW(
        nullptr, wide.c_str(), Q5_STREAM_FILE | Q5_FILE_READ | Q5_FILE_QUIET | Q5_FILE_NORESOLVE));
}

bool ReadWholeStream(q5_STREAM& stream, std::vector<std::uint8_t>& bytes) {
    stream.Reset();
    const std::int64_t size = stream.GetSize();
    if (size < 0 || stream.Seek(0, 0) != 0) return false;
    bytes.resize(static_cast<std::size_t>(size));
    std::int64_t got = 0;
    while (got < size) {
        const std::int64_t n = stream.Read(bytes.data() + got, size - got);
        if (n <= 0) break;
        got += n;
    }
    return got == size;
}

StreamBuffer::int_type StreamBuffer::underflow() {
    if (gptr() < egptr()) return traits_type::to_int_type(*gptr());
    const std::int64_t n = stream_.Read(block_.data(), static_cast<std::int64_t>(block_.size()));
    if (n <= 0) return traits_type::eof();
    setg(block_.data(), block_.data(), block_.data() + n);
    return traits_type::to_int_type(*gptr());
}

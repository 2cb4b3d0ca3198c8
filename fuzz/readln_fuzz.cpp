// Reads arbitrary bytes line by line with every buffer size, checking the terminator's place.
#include "core/stream/stream.h"

#include <cstdint>
#include <cstdlib>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) return 0;
    const std::int32_t room = data[0]; // 0 to 255 bytes, below and above the reserve
    std::vector<std::uint8_t> bytes(data + 1, data + size);
    q5_STREAM* stream =
        q5_STREAM::CreateFromMemory(bytes.data(), static_cast<std::int64_t>(bytes.size()));
    if (stream == nullptr) return 0;
    // Exactly sized, so that a write past the caller's size is a finding.
    std::vector<char> line(room > 0 ? static_cast<std::size_t>(room) : 1);
    for (std::size_t calls = 0; calls <= bytes.size() + 1; ++calls) {
        const std::int32_t n = stream->ReadLn(line.data(), room);
        if (n < 0 || (room > 0 && n > room - 7 && n != 0)) std::abort();
        if (room > 0 && line[static_cast<std::size_t>(n)] != 0) std::abort();
        if (stream->GetStatus() != 0) break;
    }
    if (stream->GetStatus() == 0 && !stream->IsEOF()) std::abort(); // no progress
    stream->Release();
    return 0;
}

// Walks arbitrary bytes as nested chunks, in both byte orders, reading primitives on the way.
#include "core/stream/stream.h"

#include <cstdint>
#include <cstdlib>
#include <vector>

namespace {

constexpr int kMaxDepth = 8;

void Walk(q5_STREAM& stream, int depth) {
    while (stream.CanReadChunk()) {
        std::int64_t payload = 0;
        const std::uint16_t id = stream.OpenChunk(&payload);
        // A chunk smaller than its header would send the reader back to it for ever.
        if (id == 0 || payload < 0) {
            stream.CloseChunk();
            return;
        }
        if (stream.GetCurrentChunkSize() != payload) std::abort();
        if ((id & 1) != 0 && depth < kMaxDepth) {
            Walk(stream, depth + 1);
        } else {
            stream.ReadWord();
            stream.ReadLong();
            stream.ReadFloat();
            char line[24];
            stream.ReadLn(line, sizeof line);
        }
        stream.CloseChunk();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 1) return 0;
    // An exactly sized copy, so that any read past the data is a finding.
    std::vector<std::uint8_t> bytes(data + 1, data + size);
    if (bytes.empty()) return 0;
    q5_STREAM* stream =
        q5_STREAM::CreateFromMemory(bytes.data(), static_cast<std::int64_t>(bytes.size()));
    if (stream == nullptr) return 0;
    stream->SetBinaryMode((data[0] & 1) != 0 ? Q5_STREAM_BINARY_REVERSED
                                             : Q5_STREAM_BINARY_DEFAULT);
    for (int chunks = 0; !stream->IsEOF() && chunks < 4096; ++chunks) {
        std::int64_t payload = 0;
        const std::uint16_t id = stream->OpenChunk(&payload);
        const bool usable = id != 0 && payload >= 0;
        if (usable) Walk(*stream, 1);
        stream->CloseChunk();
        if (!usable) break;
    }
    stream->Release();
    return 0;
}

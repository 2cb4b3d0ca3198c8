// Model and texture files read through the core library's streams: opening by UTF-8 path,
// reading whole, and a standard stream buffer for parsers that read from std::istream.
#pragma once

#include <cstdint>
#include <memory>
#include <streambuf>
#include <string>
#include <vector>

class q5_STREAM;

struct StreamRelease {
    void operator()(q5_STREAM* stream) const;
};
using StreamHandle = std::unique_ptr<q5_STREAM, StreamRelease>;

// The file opened for reading as named, without the host's name resolution; null when it does
// not open. Nothing is reported.
StreamHandle OpenReadStream(const std::string& path);

// Everything from the start of the stream; false when it cannot be read whole.
bool ReadWholeStream(q5_STREAM& stream, std::vector<std::uint8_t>& bytes);

// Reads a q5_STREAM from its current position in blocks, for std::istream-based parsers.
class StreamBuffer : public std::streambuf {
public:
    explicit StreamBuffer(q5_STREAM& stream) : stream_(stream), block_(kBlockBytes) {}

protected:
    int_type underflow() override;

private:
    static constexpr std::size_t kBlockBytes = 1 << 16;
    q5_STREAM& stream_;
    std::vector<char> block_;
};

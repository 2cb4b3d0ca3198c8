// Shared helpers of the stream tests: owning pointers, byte lists and a recording context.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "core/stream/context.h"
#include "core/stream/stream.h"

struct StreamRelease {
    void operator()(q5_STREAM* stream) const {
        if (stream != nullptr) stream->Release();
    }
};
using StreamPtr = std::unique_ptr<q5_STREAM, StreamRelease>;
using Bytes = std::vector<std::uint8_t>;

inline Bytes operator+(Bytes a, const Bytes& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

inline Bytes Text(const std::string& s) {
    return Bytes(s.begin(), s.end());
}

// A new, empty, owning memory stream.
inline StreamPtr NewMemoryStream() {
    return StreamPtr(q5_STREAM::CreateW(nullptr, nullptr,
                                        Q5_STREAM_MEMORY | Q5_MEMORY_GROWABLE | Q5_MEMORY_OWNED));
}

// The first Tell() bytes of a stream; the position is kept.
inline Bytes Contents(q5_STREAM& stream) {
    const std::int64_t end = stream.Tell();
    Bytes bytes(static_cast<std::size_t>(end));
    stream.Seek(0, 0);
    if (end > 0) stream.Read(bytes.data(), end);
    stream.Seek(end, 0);
    return bytes;
}

// Records what a stream tells its context; stops when `stopAfter` continue tests have passed.
class RecordingContext final : public q5_CONTEXT {
public:
    struct ErrorCall {
        Q5RESULT code;
        std::u16string text;
    };
    struct ProgressCall {
        std::int64_t position;
        std::int64_t total;
        std::int32_t kind;
    };
    std::vector<ErrorCall> errors;
    std::vector<ProgressCall> progress;
    std::vector<std::int32_t> aborts;

    void DeleteThis() override { delete this; }
    void Error(Q5RESULT code, const q5_WCHAR* text) override {
        errors.push_back({code, text != nullptr ? text : u""});
    }
    void Progress(std::int64_t position, std::int64_t total, std::int32_t kind) override {
        progress.push_back({position, total, kind});
    }
    void Abort(std::int32_t reason) override {
        aborts.push_back(reason);
        q5_CONTEXT::Abort(reason);
    }
    std::uint32_t References() const { return refCount_; }

    // Created with one reference, which the test holds.
    static RecordingContext* Make() { return new RecordingContext; }

private:
    RecordingContext() = default;
    ~RecordingContext() = default;
};

struct ContextRelease {
    void operator()(RecordingContext* context) const { context->Release(); }
};
using ContextPtr = std::unique_ptr<RecordingContext, ContextRelease>;

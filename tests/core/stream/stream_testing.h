// Shared helpers of the stream tests: owning pointers, byte lists, a recording context, a
// referenced object and the fixture that runs a suite over every back end and byte order.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <list>
#include <memory>
#include <string>
#include <vector>

#include "core/stream/context.h"
#include "core/stream/ref_source.h"
#include "core/stream/stream.h"
#include "support/recording_host.h"

template <typename T> struct ReleaseDeleter {
    void operator()(T* object) const {
        if (object != nullptr) object->Release();
    }
};
using StreamPtr = std::unique_ptr<q5_STREAM, ReleaseDeleter<q5_STREAM>>;
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

// Records what a stream tells its context. Created with one reference, which the test holds.
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
    static RecordingContext* Make() { return new RecordingContext; }

private:
    RecordingContext() = default;
    ~RecordingContext() = default;
};
using ContextPtr = std::unique_ptr<RecordingContext, ReleaseDeleter<RecordingContext>>;

// Saves one word; counts its loads; may leave a chunk open or fail to load.
class WordItem final : public q5_REFSOURCE {
public:
    static WordItem* Make(std::uint16_t value) { return new WordItem(value); }

    void DeleteThis() override { delete this; }
    Q5RESULT Save(q5_STREAM* stream, q5_CONTEXT*) override {
        if (leaveChunkOpen) stream->NewChunk(std::uint16_t{0x77});
        stream->WriteWord(value);
        return Q5_OK;
    }
    Q5RESULT Load(q5_STREAM* stream, q5_CONTEXT*) override {
        ++loads;
        value = stream->ReadWord();
        return loadResult;
    }
    const char* ClassName() override { return "Item"; }
    std::uint32_t References() const { return refCount_; }

    std::uint16_t value;
    bool leaveChunkOpen = false;
    Q5RESULT loadResult = Q5_OK;
    int loads = 0;

private:
    explicit WordItem(std::uint16_t v) : value(v) {}
    ~WordItem() = default;
};

template <Q5_STREAM_BINARY_MODE Mode> struct MemoryBackend {
    static constexpr Q5_STREAM_BINARY_MODE kMode = Mode;
    StreamPtr Writer() { return NewMemoryStream(); }
};

// A caller's area cannot grow, so writers get a zeroed area larger than any test writes. Each
// stream keeps its own area.
template <Q5_STREAM_BINARY_MODE Mode> struct AreaBackend {
    static constexpr Q5_STREAM_BINARY_MODE kMode = Mode;
    std::list<Bytes> areas;
    StreamPtr Open(Bytes bytes) {
        Bytes& area = areas.emplace_back(std::move(bytes));
        return StreamPtr(q5_STREAM::CreateFromMemory(area.data(), area.size()));
    }
    StreamPtr Writer() { return Open(Bytes(4096, 0)); }
    StreamPtr Reader(const Bytes& data) { return Open(data); }
};

// A temporary file, deleted when the stream goes.
template <Q5_STREAM_BINARY_MODE Mode> struct FileBackend {
    static constexpr Q5_STREAM_BINARY_MODE kMode = Mode;
    StreamPtr Writer() {
        return StreamPtr(q5_STREAM::CreateW(nullptr, nullptr, Q5_STREAM_FILE | Q5_FILE_CREATE));
    }
};

// The fixture of typed suites that run once for every back end and byte order.
template <typename Backend> class StreamTest : public ::testing::Test {
protected:
    static constexpr bool kFlipped = Backend::kMode == Q5_STREAM_BINARY_REVERSED;

    StreamPtr Writer() {
        StreamPtr stream = backend_.Writer();
        if (stream) stream->SetBinaryMode(Backend::kMode);
        return stream;
    }
    // A stream whose data is exactly `data`, positioned at its start.
    StreamPtr Reader(const Bytes& data) {
        StreamPtr stream;
        if constexpr (requires(Backend b) { b.Reader(data); }) {
            stream = backend_.Reader(data);
        } else {
            stream = backend_.Writer();
            if (stream) {
                stream->Write(data.data(), static_cast<std::int64_t>(data.size()));
                stream->Seek(0, 0);
            }
        }
        if (stream) stream->SetBinaryMode(Backend::kMode);
        return stream;
    }

    // An unsigned value of `size` bytes in the stream's byte order; a word, a long, a quad.
    static Bytes Value(std::uint64_t v, int size) {
        Bytes b;
        for (int i = 0; i < size; ++i) b.push_back(static_cast<std::uint8_t>(v >> (8 * i)));
        return kFlipped ? Bytes(b.rbegin(), b.rend()) : b;
    }
    static Bytes W(std::uint64_t v) { return Value(v, 2); }
    static Bytes L(std::uint64_t v) { return Value(v, 4); }
    static Bytes Q(std::uint64_t v) { return Value(v, 8); }

    RecordingHost host_;
    ScopedHostAPI scope_{&host_};

private:
    Backend backend_;
};

using StreamBackends =
    ::testing::Types<MemoryBackend<Q5_STREAM_BINARY_DEFAULT>,
                     MemoryBackend<Q5_STREAM_BINARY_REVERSED>,
                     AreaBackend<Q5_STREAM_BINARY_DEFAULT>, AreaBackend<Q5_STREAM_BINARY_REVERSED>,
                     FileBackend<Q5_STREAM_BINARY_DEFAULT>, FileBackend<Q5_STREAM_BINARY_REVERSED>>;

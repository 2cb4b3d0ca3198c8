// Shared helpers of the stream tests: owning pointers, byte lists, a recording context, a
// referenced object and the fixture that runs a suite over every back end and byte order.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "core/stream/context.h"
#include "core/stream/ref_source.h"
#include "core/stream/stream.h"
#include "support/recording_host.h"

template <typename T> struct ReleaseDeleter {
    void operator()(T* object) const { object->Release(); }
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

constexpr std::uint32_t kOwnedMemory = Q5_STREAM_MEMORY | Q5_MEMORY_GROWABLE | Q5_MEMORY_OWNED;
constexpr std::uint32_t kTemporaryFile = Q5_STREAM_FILE | Q5_FILE_CREATE;

inline StreamPtr NewMemoryStream() {
    return StreamPtr(q5_STREAM::CreateW(nullptr, nullptr, kOwnedMemory));
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

// Records the errors and progress a stream reports to its context.
class RecordingContext final : public q5_CONTEXT {
public:
    std::vector<std::pair<Q5RESULT, std::u16string>> errors;
    std::vector<std::array<std::int64_t, 3>> progress; // position, total, kind

    void DeleteThis() override { delete this; }
    void Error(Q5RESULT code, const q5_WCHAR* text) override { errors.emplace_back(code, text); }
    void Progress(std::int64_t position, std::int64_t total, std::int32_t kind) override {
        progress.push_back({position, total, kind});
    }
};
using ContextPtr = std::unique_ptr<RecordingContext, ReleaseDeleter<RecordingContext>>;

// Saves one word; counts its loads; may leave a chunk open or fail to load.
class WordItem final : public q5_REFSOURCE {
public:
    explicit WordItem(std::uint16_t v) : value(v) {}
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
};

// One back end in one byte order: a stream made with `Flags`, or with 0 a caller's area.
template <std::uint32_t Flags, Q5_STREAM_BINARY_MODE Mode> struct Backend {
    static constexpr std::uint32_t kFlags = Flags;
    static constexpr Q5_STREAM_BINARY_MODE kMode = Mode;
};

// The fixture of typed suites that run once for every back end and byte order.
template <typename B> class StreamTest : public ::testing::Test {
protected:
    static constexpr bool kFlipped = B::kMode == Q5_STREAM_BINARY_REVERSED;

    // A caller's area cannot grow, so writers get a zeroed area larger than any test writes.
    StreamPtr Writer() { return Open(B::kFlags == 0 ? Bytes(4096, 0) : Bytes()); }
    // A stream whose data is exactly `data`, positioned at its start.
    StreamPtr Reader(const Bytes& data) { return Open(data); }

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

    StreamPtr Open(Bytes data) {
        StreamPtr stream;
        if constexpr (B::kFlags == 0) {
            Bytes& area = areas_.emplace_back(std::move(data)); // each stream keeps its own
            stream.reset(q5_STREAM::CreateFromMemory(area.data(), area.size()));
        } else {
            stream.reset(q5_STREAM::CreateW(nullptr, nullptr, B::kFlags));
            stream->Write(data.data(), static_cast<std::int64_t>(data.size()));
            stream->Seek(0, 0);
        }
        stream->SetBinaryMode(B::kMode);
        return stream;
    }

    std::list<Bytes> areas_;
};

using StreamBackends =
    ::testing::Types<Backend<kOwnedMemory, Q5_STREAM_BINARY_DEFAULT>,
                     Backend<kOwnedMemory, Q5_STREAM_BINARY_REVERSED>,
                     Backend<0, Q5_STREAM_BINARY_DEFAULT>, Backend<0, Q5_STREAM_BINARY_REVERSED>,
                     Backend<kTemporaryFile, Q5_STREAM_BINARY_DEFAULT>,
                     Backend<kTemporaryFile, Q5_STREAM_BINARY_REVERSED>>;

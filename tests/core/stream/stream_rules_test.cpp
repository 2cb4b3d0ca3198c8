// The stream rules, checked once for every back end (own memory, a caller's area, a file) and
// both byte orders.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "stream_testing.h"
#include "support/recording_host.h"

namespace {

template <Q5_STREAM_BINARY_MODE Mode> struct MemoryBackend {
    static constexpr Q5_STREAM_BINARY_MODE kMode = Mode;
    StreamPtr Writer() { return NewMemoryStream(); }
};

// A caller's area cannot grow, so writers get a zeroed area larger than any test writes.
template <Q5_STREAM_BINARY_MODE Mode> struct AreaBackend {
    static constexpr Q5_STREAM_BINARY_MODE kMode = Mode;
    Bytes area;
    StreamPtr Writer() {
        area.assign(4096, 0);
        return StreamPtr(q5_STREAM::CreateFromMemory(area.data(), area.size()));
    }
    StreamPtr Reader(const Bytes& data) {
        area = data;
        return StreamPtr(q5_STREAM::CreateFromMemory(area.data(), area.size()));
    }
};

// A temporary file, deleted when the stream goes.
template <Q5_STREAM_BINARY_MODE Mode> struct FileBackend {
    static constexpr Q5_STREAM_BINARY_MODE kMode = Mode;
    StreamPtr Writer() {
        return StreamPtr(q5_STREAM::CreateW(nullptr, nullptr, Q5_STREAM_FILE | Q5_FILE_CREATE));
    }
};

template <typename Backend> class StreamRules : public ::testing::Test {
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

    static Bytes Word(std::uint16_t v) {
        const Bytes le = {static_cast<std::uint8_t>(v), static_cast<std::uint8_t>(v >> 8)};
        return kFlipped ? Bytes(le.rbegin(), le.rend()) : le;
    }
    static Bytes Long(std::uint32_t v) {
        const Bytes le = {static_cast<std::uint8_t>(v), static_cast<std::uint8_t>(v >> 8),
                          static_cast<std::uint8_t>(v >> 16), static_cast<std::uint8_t>(v >> 24)};
        return kFlipped ? Bytes(le.rbegin(), le.rend()) : le;
    }

    RecordingHost host_;
    ScopedHostAPI scope_{&host_};

private:
    Backend backend_;
};

using Backends =
    ::testing::Types<MemoryBackend<Q5_STREAM_BINARY_DEFAULT>,
                     MemoryBackend<Q5_STREAM_BINARY_REVERSED>,
                     AreaBackend<Q5_STREAM_BINARY_DEFAULT>, AreaBackend<Q5_STREAM_BINARY_REVERSED>,
                     FileBackend<Q5_STREAM_BINARY_DEFAULT>, FileBackend<Q5_STREAM_BINARY_REVERSED>>;
TYPED_TEST_SUITE(StreamRules, Backends);

TYPED_TEST(StreamRules, WordsAndLongsFollowTheByteOrder) {
    StreamPtr out = this->Writer();
    ASSERT_TRUE(out);
    EXPECT_TRUE(out->WriteWord(0x0102));
    EXPECT_TRUE(out->WriteLong(0x03040506));
    const Bytes expected = this->Word(0x0102) + this->Long(0x03040506);
    EXPECT_EQ(Contents(*out), expected);

    StreamPtr in = this->Reader(expected);
    EXPECT_EQ(in->ReadWord(), 0x0102);
    EXPECT_EQ(in->ReadLong(), 0x03040506u);
}

TYPED_TEST(StreamRules, WideElementsFlipAsWholes) {
    StreamPtr out = this->Writer();
    const std::uint64_t value = 0x0102030405060708ull;
    EXPECT_TRUE(out->_WriteData(&value, 1, 8));
    EXPECT_TRUE(out->WriteFloat(1.0f)); // 0x3F800000
    const Bytes le = {8, 7, 6, 5, 4, 3, 2, 1, 0x00, 0x00, 0x80, 0x3F};
    const Bytes be = {1, 2, 3, 4, 5, 6, 7, 8, 0x3F, 0x80, 0x00, 0x00};
    EXPECT_EQ(Contents(*out), this->kFlipped ? be : le);

    StreamPtr in = this->Reader(this->kFlipped ? be : le);
    std::uint64_t back = 0;
    EXPECT_TRUE(in->_ReadData(&back, 1, 8));
    EXPECT_EQ(back, value);
    EXPECT_EQ(in->ReadFloat(), 1.0f);
    EXPECT_FALSE(in->_ReadData(&back, 1, 8)); // nothing left
}

TYPED_TEST(StreamRules, ChunkHeaderHoldsIdAndWholeSize) {
    StreamPtr out = this->Writer();
    EXPECT_TRUE(out->NewChunk(std::uint16_t{0x0102}));
    out->Write("abc", 3);
    EXPECT_TRUE(out->CloseChunk());
    EXPECT_EQ(Contents(*out), this->Word(0x0102) + this->Long(9) + Text("abc"));
}

TYPED_TEST(StreamRules, OuterChunkSizeCoversTheInnerChunk) {
    StreamPtr out = this->Writer();
    out->NewChunk(std::uint16_t{0x10});
    out->WriteWord(0xAAAA);
    out->NewChunk(std::uint16_t{0x20});
    out->WriteLong(0x11223344);
    out->CloseChunk();
    out->CloseChunk();
    const Bytes expected = this->Word(0x10) + this->Long(18) + this->Word(0xAAAA) +
                           this->Word(0x20) + this->Long(10) + this->Long(0x11223344);
    EXPECT_EQ(Contents(*out), expected);
}

TYPED_TEST(StreamRules, ChunkBeingWrittenHasPayloadMinusSix) {
    StreamPtr out = this->Writer();
    EXPECT_EQ(out->GetCurrentChunkSize(), -1);
    out->NewChunk(std::uint16_t{7});
    out->WriteLong(1);
    EXPECT_EQ(out->GetCurrentChunkSize(), -6);
    EXPECT_EQ(out->GetCurrentChunkID(), 7);
    EXPECT_FALSE(out->CanReadChunk());
    out->CloseChunk();
    EXPECT_EQ(out->GetCurrentChunkID(), 0);
    EXPECT_FALSE(out->CloseChunk());
}

TYPED_TEST(StreamRules, NestedChunksReadBack) {
    StreamPtr in = this->Reader(this->Word(0x10) + this->Long(18) + this->Word(0xAAAA) +
                                this->Word(0x20) + this->Long(10) + this->Long(0x11223344));
    std::int64_t payload = -1;
    EXPECT_EQ(in->OpenChunk(&payload), 0x10);
    EXPECT_EQ(payload, 12);
    EXPECT_EQ(in->ReadWord(), 0xAAAA);
    EXPECT_TRUE(in->CanReadChunk());
    EXPECT_EQ(in->OpenChunk(&payload), 0x20);
    EXPECT_EQ(payload, 4);
    EXPECT_EQ(in->GetCurrentChunkSize(), 4);
    EXPECT_EQ(in->ReadLong(), 0x11223344u);
    EXPECT_FALSE(in->CanReadChunk());
    EXPECT_TRUE(in->CloseChunk());
    EXPECT_FALSE(in->CanReadChunk());
    EXPECT_TRUE(in->CloseChunk());
    EXPECT_EQ(in->Tell(), 18);
    // At the end of data: id 0, an empty payload.
    EXPECT_EQ(in->OpenChunk(&payload), 0);
    EXPECT_EQ(payload, 0);
    EXPECT_TRUE(this->host_.wideReports.empty());
}

TYPED_TEST(StreamRules, CloseChunkMovesToTheChunkEnd) {
    StreamPtr in = this->Reader(this->Word(0x0102) + this->Long(9) + Text("abcXYZW"));
    char five[5];
    in->OpenChunk();
    in->Read(five, 1);
    EXPECT_TRUE(in->CloseChunk()); // unread payload is skipped silently
    EXPECT_EQ(in->Tell(), 9);
    EXPECT_TRUE(this->host_.wideReports.empty());

    in->Seek(0, 0);
    in->OpenChunk();
    in->Read(five, 5);
    EXPECT_TRUE(in->CloseChunk()); // reading past the end is reported and undone
    EXPECT_EQ(in->Tell(), 9);
    ASSERT_EQ(this->host_.wideReports.size(), 1u);
    EXPECT_EQ(this->host_.wideReports[0].level, kReportError);
    EXPECT_EQ(this->host_.wideReports[0].text, u"Invalid chunk usage. ID: 0x102, size:9");
}

TYPED_TEST(StreamRules, TruncatedHeaderReadsAsNoChunk) {
    StreamPtr in = this->Reader({0x01, 0x02, 0x03});
    std::int64_t payload = -1;
    EXPECT_EQ(in->OpenChunk(&payload), 0);
    EXPECT_EQ(payload, 0);
    EXPECT_EQ(in->GetCurrentChunkSize(), 0);
}

TYPED_TEST(StreamRules, ChunkSizeBelowSixIsReportedToTheContext) {
    StreamPtr in = this->Reader(this->Word(0x33) + this->Long(3) + Text("zz"));
    ContextPtr context(RecordingContext::Make());
    in->SetContext(context.get());
    std::int64_t payload = 0;
    EXPECT_EQ(in->OpenChunk(&payload), 0x33);
    EXPECT_EQ(payload, -3);
    ASSERT_EQ(context->errors.size(), 1u);
    EXPECT_EQ(context->errors[0].code, 0);
    EXPECT_EQ(context->errors[0].text, u"Invalid CHUNK");
    EXPECT_FALSE(in->CanReadChunk());
}

TYPED_TEST(StreamRules, ChunkSizeBeyondTheDataEndsTheWalk) {
    StreamPtr in = this->Reader(this->Word(0x44) + this->Long(1000) + Text("pq"));
    EXPECT_EQ(in->OpenChunk(), 0x44);
    EXPECT_TRUE(in->CanReadChunk());
    // A reader that walks nested chunks meets the end of data and stops.
    int opened = 0;
    while (in->CanReadChunk() && opened < 10) {
        ++opened;
        if (in->OpenChunk() == 0) {
            in->CloseChunk();
            break;
        }
        in->CloseChunk();
    }
    EXPECT_EQ(opened, 1);
    EXPECT_TRUE(in->CloseChunk());
    EXPECT_TRUE(in->IsEOF());
}

TYPED_TEST(StreamRules, HugeChunkSizeNeverLeadsBackwards) {
    StreamPtr in =
        this->Reader(Bytes(10, 0) + this->Word(0x66) + this->Long(0xFFFFFFFA) + Text("xy"));
    in->Seek(10, 0);
    EXPECT_EQ(in->OpenChunk(), 0x66);
    in->ReadWord();
    in->CloseChunk();
    EXPECT_EQ(in->Tell(), 18);
}

TYPED_TEST(StreamRules, ContextStopsChunkReading) {
    StreamPtr in = this->Reader(this->Word(0x55) + this->Long(10) + this->Long(0));
    ContextPtr context(RecordingContext::Make());
    in->SetContext(context.get());
    EXPECT_EQ(context->References(), 2u);
    in->OpenChunk();
    EXPECT_TRUE(in->CanReadChunk());
    context->progressCallback = [](q5_CONTEXT*, void*, std::int32_t) { return 0; };
    EXPECT_FALSE(in->CanReadChunk());
    EXPECT_FALSE(in->CloseChunk()); // refused: the chunk stays open
    EXPECT_EQ(in->GetCurrentChunkID(), 0x55);
    context->progressCallback = nullptr;
    context->abortFlag = 1;
    EXPECT_FALSE(in->CanReadChunk());
    context->abortFlag = 0;
    EXPECT_TRUE(in->CloseChunk());
    in->SetContext(nullptr);
    EXPECT_EQ(context->References(), 1u);
}

TYPED_TEST(StreamRules, LongLinesComeInPiecesOfSizeMinusSeven) {
    StreamPtr in = this->Reader(Text(std::string(150, 'x') + "\ny"));
    char line[100];
    EXPECT_EQ(in->ReadLn(line, 100), 93);
    EXPECT_EQ(std::string(line), std::string(93, 'x'));
    EXPECT_EQ(in->ReadLn(line, 100), 57);
    EXPECT_EQ(in->ReadLn(line, 100), 1);
    EXPECT_STREQ(line, "y");
}

TYPED_TEST(StreamRules, RunsOfOneLineEndAreSwallowedButPairsKeepEmptyLines) {
    StreamPtr in = this->Reader(Text("ab\n\ncd\r\r\ref\r\n\r\ngh\n\rx"));
    char line[64];
    std::vector<std::string> lines;
    while (in->ReadLn(line, 64) > 0 || in->GetStatus() == 0) lines.push_back(line);
    EXPECT_EQ(lines, (std::vector<std::string>{"ab", "cd", "ef", "", "gh", "x"}));
}

TYPED_TEST(StreamRules, LineEndCutByTheReadLimitGivesAnEmptyLine) {
    StreamPtr in = this->Reader(Text("ab\r\ncd"));
    char line[10]; // room for 3 bytes: "ab\r"
    EXPECT_EQ(in->ReadLn(line, 10), 2);
    EXPECT_EQ(in->Tell(), 3);
    EXPECT_EQ(in->ReadLn(line, 10), 0);
    EXPECT_EQ(in->ReadLn(line, 10), 2);
    EXPECT_STREQ(line, "cd");
}

TYPED_TEST(StreamRules, EndOfDataEndsLinesWithStatusOne) {
    StreamPtr in = this->Reader(Text("last\n"));
    char line[64];
    EXPECT_EQ(in->ReadLn(line, 64), 4);
    line[0] = 'z';
    EXPECT_EQ(in->ReadLn(line, 64), 0);
    EXPECT_STREQ(line, "");
    EXPECT_EQ(in->GetStatus(), 1);
    EXPECT_TRUE(in->Reset());
    EXPECT_EQ(in->GetStatus(), 0);
}

TYPED_TEST(StreamRules, LinesOfBinaryDataStayInsideTheBuffer) {
    Bytes noise;
    for (int i = 0; i < 300; ++i) noise.push_back(static_cast<std::uint8_t>((i * 37) % 251));
    StreamPtr in = this->Reader(noise);
    char buffer[16 + 8];
    std::memset(buffer, 0x5A, sizeof buffer);
    int lines = 0;
    while (in->GetStatus() == 0 && lines < 400) {
        const std::int32_t n = in->ReadLn(buffer, 16);
        ASSERT_LE(n, 9);
        ASSERT_GE(n, 0);
        ++lines;
        if (in->IsEOF()) break;
    }
    EXPECT_LT(lines, 400);
    for (std::size_t i = 10; i < sizeof buffer; ++i) EXPECT_EQ(buffer[i], 0x5A) << i;
    // Sizes that leave no room read nothing.
    StreamPtr tiny = this->Reader(Text("abc"));
    char small[7] = {'q'};
    EXPECT_EQ(tiny->ReadLn(small, 7), 0);
    EXPECT_EQ(small[0], 0);
}

TYPED_TEST(StreamRules, TextIsWrittenAsItsBytes) {
    StreamPtr out = this->Writer();
    out->WriteLnA("hi");
    out->WriteLnW(u"A");
    EXPECT_EQ(out->PrintA("%d-%s", 7, "x"), 3);
    EXPECT_EQ(out->PrintW(u"%d%hs", 42, "!"), 3);
    EXPECT_EQ(out->PrintA("%s", ""), 0);
    // WriteLnA ends with the word 0x0A0D; WriteLnW writes its text unflipped, then 13 and 10.
    const Bytes expected = Text("hi") + this->Word(0x0A0D) + Bytes({'A', 0}) + this->Word(13) +
                           this->Word(10) + Text("7-x") + Bytes({'4', 0, '2', 0, '!', 0});
    EXPECT_EQ(Contents(*out), expected);
}

TYPED_TEST(StreamRules, CopyToCountsWhatWasAskedAndComesBack) {
    StreamPtr in = this->Reader(Text("abcdefgh"));
    in->Seek(5, 0);
    StreamPtr first = NewMemoryStream();
    EXPECT_EQ(in->CopyTo(first.get(), 2, 3), 3);
    EXPECT_EQ(in->Tell(), 5);
    EXPECT_EQ(Contents(*first), Text("cde"));
    // A negative count means the whole size, even from the middle: the missing bytes read as 0.
    StreamPtr second = NewMemoryStream();
    EXPECT_EQ(in->CopyTo(second.get(), 4, -1), 8);
    EXPECT_EQ(Contents(*second), Text("efgh") + Bytes(4, 0));
}

TYPED_TEST(StreamRules, ShortReadReturnsTheCountAndZeroFills) {
    StreamPtr in = this->Reader(Text("0123456789"));
    EXPECT_FALSE(in->IsEOF());
    Bytes buffer(20, 0xEE);
    EXPECT_EQ(in->Read(buffer.data(), 20), 10);
    EXPECT_EQ(buffer, Text("0123456789") + Bytes(10, 0));
    EXPECT_TRUE(in->IsEOF());
}

TYPED_TEST(StreamRules, TruncateCutsAtThePosition) {
    StreamPtr in = this->Reader(Text("0123456789"));
    in->Seek(5, 0);
    in->Truncate();
    EXPECT_EQ(in->GetSize(), 5);
}

} // namespace

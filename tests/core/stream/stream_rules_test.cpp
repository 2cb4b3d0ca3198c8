// The stream rules and the stream forms of strings, GUIDs and object references, checked once
// for every back end (own memory, a caller's area, a file) and both byte orders.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "core/containers/collection.h"
#include "core/containers/guid.h"
#include "core/containers/q5_string.h"
#include "stream_testing.h"

namespace {

template <typename Backend> class StreamRules : public StreamTest<Backend> {};
TYPED_TEST_SUITE(StreamRules, StreamBackends);

TYPED_TEST(StreamRules, PrimitivesFlipAsWholes) {
    StreamPtr out = this->Writer();
    const std::uint64_t wide = 0x0102030405060708ull;
    EXPECT_TRUE(out->WriteWord(0x0102));
    EXPECT_TRUE(out->WriteLong(0x03040506));
    EXPECT_TRUE(out->_WriteData(&wide, 1, 8));
    EXPECT_TRUE(out->WriteFloat(1.0f)); // 0x3F800000
    const Bytes le = {2, 1, 6, 5, 4, 3, 8, 7, 6, 5, 4, 3, 2, 1, 0x00, 0x00, 0x80, 0x3F};
    const Bytes be = {1, 2, 3, 4, 5, 6, 1, 2, 3, 4, 5, 6, 7, 8, 0x3F, 0x80, 0x00, 0x00};
    EXPECT_EQ(Contents(*out), this->kFlipped ? be : le);

    StreamPtr in = this->Reader(this->kFlipped ? be : le);
    in->Seek(6, 0);
    std::uint64_t back = 0;
    EXPECT_TRUE(in->_ReadData(&back, 1, 8));
    EXPECT_EQ(back, wide);
    EXPECT_FALSE(in->_ReadData(&back, 1, 8)); // nothing left
}

TYPED_TEST(StreamRules, ChunkHeadersHoldIdAndWholeSize) {
    StreamPtr out = this->Writer();
    EXPECT_TRUE(out->NewChunk(std::uint16_t{0x10}));
    out->WriteWord(0xAAAA);
    out->NewChunk(std::uint16_t{0x20});
    out->WriteLong(0x11223344);
    EXPECT_EQ(out->GetCurrentChunkSize(), -6); // a chunk being written
    EXPECT_TRUE(out->CloseChunk());
    EXPECT_TRUE(out->CloseChunk());
    const Bytes expected = this->W(0x10) + this->L(18) + this->W(0xAAAA) + this->W(0x20) +
                           this->L(10) + this->L(0x11223344);
    EXPECT_EQ(Contents(*out), expected);

    StreamPtr in = this->Reader(expected);
    std::int64_t payload = -1;
    EXPECT_EQ(in->OpenChunk(&payload), 0x10);
    EXPECT_EQ(payload, 12);
    EXPECT_EQ(in->ReadWord(), 0xAAAA);
    EXPECT_TRUE(in->CanReadChunk());
    EXPECT_EQ(in->OpenChunk(&payload), 0x20);
    EXPECT_EQ(payload, 4);
    EXPECT_EQ(in->ReadLong(), 0x11223344u);
    EXPECT_FALSE(in->CanReadChunk());
    EXPECT_TRUE(in->CloseChunk());
    EXPECT_TRUE(in->CloseChunk());
    // At the end of data: id 0, an empty payload.
    EXPECT_EQ(in->OpenChunk(&payload), 0);
    EXPECT_EQ(payload, 0);
}

TYPED_TEST(StreamRules, CloseChunkMovesToTheChunkEnd) {
    StreamPtr in = this->Reader(this->W(0x0102) + this->L(9) + Text("abcXYZW"));
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
    EXPECT_EQ(this->host_.wideReports[0].text, u"Invalid chunk usage. ID: 0x102, size:9");
}

// Truncated headers and chunk sizes below 6 or beyond the data never lead the reader astray.
TYPED_TEST(StreamRules, BadChunkHeadersAreContained) {
    std::int64_t payload = -1;
    StreamPtr truncated = this->Reader({0x01, 0x02, 0x03});
    EXPECT_EQ(truncated->OpenChunk(&payload), 0);
    EXPECT_EQ(payload, 0);

    StreamPtr small = this->Reader(this->W(0x33) + this->L(3) + Text("zz"));
    ContextPtr context(new RecordingContext);
    small->SetContext(context.get());
    EXPECT_EQ(small->OpenChunk(&payload), 0x33);
    EXPECT_EQ(payload, -3);
    ASSERT_EQ(context->errors.size(), 1u);
    EXPECT_EQ(context->errors[0], std::make_pair(Q5RESULT{0}, std::u16string(u"Invalid CHUNK")));
    EXPECT_FALSE(small->CanReadChunk());

    // A reader that walks nested chunks meets the end of data and stops.
    StreamPtr beyond = this->Reader(this->W(0x44) + this->L(1000) + Text("pq"));
    EXPECT_EQ(beyond->OpenChunk(), 0x44);
    EXPECT_TRUE(beyond->CanReadChunk());
    EXPECT_EQ(beyond->OpenChunk(), 0); // which ends the walk
    EXPECT_TRUE(beyond->CloseChunk());
    EXPECT_TRUE(beyond->CloseChunk());
    EXPECT_TRUE(beyond->IsEOF());

    StreamPtr huge = this->Reader(Bytes(10, 0) + this->W(0x66) + this->L(0xFFFFFFFA) + Text("xy"));
    huge->Seek(10, 0);
    EXPECT_EQ(huge->OpenChunk(), 0x66);
    huge->ReadWord();
    huge->CloseChunk();
    EXPECT_EQ(huge->Tell(), 18); // never backwards
}

TYPED_TEST(StreamRules, ContextStopsChunkReading) {
    StreamPtr in = this->Reader(this->W(0x55) + this->L(10) + this->L(0));
    ContextPtr context(new RecordingContext);
    in->SetContext(context.get());
    in->OpenChunk();
    EXPECT_TRUE(in->CanReadChunk());
    context->progressCallback = [](q5_CONTEXT*, void*, std::int32_t) { return 0; };
    EXPECT_FALSE(in->CanReadChunk());
    EXPECT_FALSE(in->CloseChunk()); // refused: the chunk stays open
    context->progressCallback = nullptr;
    EXPECT_TRUE(in->CloseChunk());
}

TYPED_TEST(StreamRules, ReadLnTakesAtMostSizeMinusSevenBytes) {
    StreamPtr in = this->Reader(Text(std::string(150, 'x') + "\nab\r\ncd\n"));
    char line[100];
    EXPECT_EQ(in->ReadLn(line, 100), 93);
    EXPECT_EQ(std::string(line), std::string(93, 'x'));
    EXPECT_EQ(in->ReadLn(line, 100), 57);
    // Size 10 leaves room for "ab\r": the line end cut in two gives an empty line.
    EXPECT_EQ(in->ReadLn(line, 10), 2);
    EXPECT_EQ(in->Tell(), 154);
    EXPECT_EQ(in->ReadLn(line, 10), 0);
    EXPECT_EQ(in->ReadLn(line, 10), 2);
    EXPECT_STREQ(line, "cd");
    // The end of the data ends lines with status 1.
    EXPECT_EQ(in->ReadLn(line, 64), 0);
    EXPECT_EQ(in->GetStatus(), 1);

    // A run of one line end is swallowed with the line before it, but CR LF CR LF keeps an
    // empty line.
    in = this->Reader(Text("ab\n\ncd\r\r\ref\r\n\r\ngh\n\rx"));
    std::vector<std::string> lines;
    while (in->ReadLn(line, 64) > 0 || in->GetStatus() == 0) lines.push_back(line);
    EXPECT_EQ(lines, (std::vector<std::string>{"ab", "cd", "ef", "", "gh", "x"}));
}

TYPED_TEST(StreamRules, LinesOfBinaryDataStayInsideTheBuffer) {
    Bytes noise;
    for (int i = 0; i < 300; ++i) noise.push_back(static_cast<std::uint8_t>((i * 37) % 251));
    StreamPtr in = this->Reader(noise);
    char buffer[16 + 8];
    std::memset(buffer, 0x5A, sizeof buffer);
    int lines = 0;
    for (; in->GetStatus() == 0 && lines < 400; ++lines) ASSERT_LE(in->ReadLn(buffer, 16), 9);
    EXPECT_LT(lines, 400);
    for (std::size_t i = 10; i < sizeof buffer; ++i) EXPECT_EQ(buffer[i], 0x5A) << i;
    // A size that leaves no room reads nothing.
    in->Seek(0, 0);
    EXPECT_EQ(in->ReadLn(buffer, 7), 0);
    EXPECT_EQ(in->GetStatus(), 1);
}

TYPED_TEST(StreamRules, TextIsWrittenAsItsBytes) {
    StreamPtr out = this->Writer();
    out->WriteLnA("hi");
    out->WriteLnW(u"A");
    EXPECT_EQ(out->PrintA("%d-%s", 7, "x"), 3);
    EXPECT_EQ(out->PrintW(u"%d%hs", 42, "!"), 3);
    // WriteLnA ends with the word 0x0A0D; WriteLnW writes its text unflipped, then 13 and 10.
    const Bytes expected = Text("hi") + this->W(0x0A0D) + Bytes({'A', 0}) + this->W(13) +
                           this->W(10) + Text("7-x") + Bytes({'4', 0, '2', 0, '!', 0});
    EXPECT_EQ(Contents(*out), expected);
}

TYPED_TEST(StreamRules, ShortReadsCopiesAndTruncation) {
    StreamPtr in = this->Reader(Text("0123456789"));
    Bytes buffer(20, 0xEE);
    EXPECT_EQ(in->Read(buffer.data(), 20), 10); // the rest is zero-filled
    EXPECT_EQ(buffer, Text("0123456789") + Bytes(10, 0));

    // A negative count means the whole size, even from the middle: the missing bytes read as 0.
    in->Seek(5, 0);
    StreamPtr copy = NewMemoryStream();
    EXPECT_EQ(in->CopyTo(copy.get(), 4, -1), 10);
    EXPECT_EQ(in->Tell(), 5);
    EXPECT_EQ(Contents(*copy), Text("456789") + Bytes(4, 0));
    in->Truncate(); // at 5, where the copy left the position
    EXPECT_EQ(in->GetSize(), 5);
}

// Units up to 255 go as single bytes after their count; a wider unit makes the count negative
// and every unit a word. An empty string under a chunk id writes nothing at all.
TYPED_TEST(StreamRules, StringsGoAsBytesOrWordsAfterTheirCount) {
    StreamPtr out = this->Writer();
    EXPECT_EQ(q5_STRING(u"A\u00FF").Save(out.get(), 0), 1);
    EXPECT_EQ(q5_STRING(u"\u0100\uFFFF").Save(out.get(), 0), 1);
    EXPECT_EQ(q5_STRING(u"ab").Save(out.get(), 0x1234), 1);
    EXPECT_EQ(q5_STRING().Save(out.get(), 0), 0);
    EXPECT_EQ(q5_STRING().Save(out.get(), 7), 0);
    const Bytes expected = this->W(2) + Bytes{0x41, 0xFF} + this->W(0xFFFE) + this->W(0x0100) +
                           this->W(0xFFFF) + this->W(0x1234) + this->L(10) + this->W(2) +
                           Text("ab") + this->W(0);
    EXPECT_EQ(Contents(*out), expected);

    StreamPtr in = this->Reader(expected);
    q5_STRING s(u"old");
    const auto load = [&] { return s.Load(in.get()) == 1 ? std::u16string(s.GetCStr()) : u"?"; };
    EXPECT_EQ(load(), u"A\u00FF");
    EXPECT_EQ(load(), u"\u0100\uFFFF");
    EXPECT_EQ(in->OpenChunk(), 0x1234);
    EXPECT_EQ(load(), u"ab");
    EXPECT_EQ(load(), u"");
}

TYPED_TEST(StreamRules, GuidsFlipOnlyTheirFirstThreeParts) {
    constexpr q5_GUID kSample = {
        0x01020304, 0x0506, 0x0708, {0x0A, 0x0B, 0x0C, 0x0D, 0x0E, 0x0F, 0x10, 0x11}};
    StreamPtr out = this->Writer();
    EXPECT_EQ(kSample.Save(out.get(), 0), 1);
    EXPECT_EQ(kSample.Save(out.get(), 0x0102), 1);
    const Bytes record = this->L(0x01020304) + this->W(0x0506) + this->W(0x0708) +
                         Bytes{0x0A, 0x0B, 0x0C, 0x0D, 0x0E, 0x0F, 0x10, 0x11};
    const Bytes expected = record + this->W(0x0102) + this->L(22) + record;
    EXPECT_EQ(Contents(*out), expected);

    StreamPtr in = this->Reader(expected);
    q5_GUID back{};
    EXPECT_EQ(back.Load(in.get()), 1);
    EXPECT_TRUE(back.Compare(kSample));
}

// The first occurrence goes as -1 and the object's data, later ones as their number.
TYPED_TEST(StreamRules, ObjectsGoOnceWithTheirDataThenByNumber) {
    WordItem* item = new WordItem(0xBEEF);
    StreamPtr out = this->Writer();
    EXPECT_EQ(out->Put(item, nullptr, 0x42), Q5_OK);
    EXPECT_EQ(out->Put(item, nullptr, 0), Q5_OK);
    EXPECT_EQ(out->Put(item, nullptr, 0x43), Q5_OK);
    EXPECT_EQ(Contents(*out), this->W(0x42) + this->L(12) + this->L(0xFFFFFFFF) + this->W(0xBEEF) +
                                  this->L(1) + this->W(0x43) + this->L(10) + this->L(1));
    out.reset();
    EXPECT_EQ(item->References(), 1u); // the table's reference went with the stream

    // The reader fills the table in writing order; numbers 5 and 0 name no object.
    StreamPtr in =
        this->Reader(this->L(0xFFFFFFFF) + this->W(0x1234) + this->L(1) + this->L(5) + this->L(0));
    q5_COLLECTION* table = q5_COLLECTION::Create(4, 4);
    item->AddRef(); // the table's reference, given back by the stream
    table->Insert(item);
    EXPECT_FALSE(in->SetObjectTable(table));
    EXPECT_FALSE(in->SetObjectTable(table));
    table->Release();
    q5_REFSOURCE* first = in->Get(nullptr);
    EXPECT_EQ(first, item);
    EXPECT_EQ(item->value, 0x1234);
    q5_REFSOURCE* again = in->Get(nullptr);
    EXPECT_EQ(again, item);
    EXPECT_EQ(item->loads, 1);
    EXPECT_EQ(in->Get(nullptr), nullptr);
    EXPECT_EQ(in->Get(nullptr), nullptr);
    first->Release();
    again->Release();
    in.reset();
    EXPECT_EQ(item->References(), 1u);
    item->Release();
}

} // namespace

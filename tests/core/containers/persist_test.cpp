// The stream forms of strings and GUIDs, byte for byte in both byte orders.
#include <gtest/gtest.h>

#include <string>

#include "core/containers/guid.h"
#include "core/containers/q5_string.h"
#include "core/stream/stream_testing.h"

namespace {

// A new memory stream in the given byte order, holding `initial` from position 0.
StreamPtr Stream(bool reversed = false, const Bytes& initial = {}) {
    StreamPtr stream = NewMemoryStream();
    if (reversed) stream->SetBinaryMode(Q5_STREAM_BINARY_REVERSED);
    if (!initial.empty()) stream->Write(initial.data(), static_cast<std::int64_t>(initial.size()));
    stream->Seek(0, 0);
    return stream;
}

q5_STRING Str(const char16_t* text) {
    return q5_STRING(text);
}

TEST(StringStream, NarrowUnitsGoAsSingleBytes) {
    StreamPtr little = Stream(), reversed = Stream(true);
    EXPECT_EQ(Str(u"A").Save(little.get(), 0), 1);
    EXPECT_EQ(Contents(*little), (Bytes{0x01, 0x00, 0x41}));
    EXPECT_EQ(Str(u"A\u00E9").Save(reversed.get(), 0), 1);
    EXPECT_EQ(Contents(*reversed), (Bytes{0x00, 0x02, 0x41, 0xE9}));
}

TEST(StringStream, WideUnitsGoWithANegativeCount) {
    StreamPtr little = Stream(), reversed = Stream(true);
    EXPECT_EQ(Str(u"\u0100").Save(little.get(), 0), 1);
    EXPECT_EQ(Contents(*little), (Bytes{0xFF, 0xFF, 0x00, 0x01}));
    EXPECT_EQ(Str(u"a\u20AC").Save(reversed.get(), 0), 1);
    EXPECT_EQ(Contents(*reversed), (Bytes{0xFF, 0xFE, 0x00, 0x61, 0x20, 0xAC}));
}

TEST(StringStream, ChunkIdWrapsTheText) {
    StreamPtr stream = Stream();
    EXPECT_EQ(Str(u"ab").Save(stream.get(), 0x1234), 1);
    EXPECT_EQ(Contents(*stream), (Bytes{0x34, 0x12, 0x0A, 0, 0, 0, 0x02, 0x00, 0x61, 0x62}));
}

TEST(StringStream, EmptyStringUnderAnIdWritesNothing) {
    StreamPtr bare = Stream(), chunked = Stream();
    EXPECT_EQ(q5_STRING().Save(bare.get(), 0), 0);
    EXPECT_EQ(Contents(*bare), (Bytes{0x00, 0x00}));
    EXPECT_EQ(q5_STRING().Save(chunked.get(), 7), 0);
    EXPECT_EQ(chunked->Tell(), 0);
}

TEST(StringStream, LoadReadsBothFormsInEitherOrder) {
    q5_STRING s(u"old");
    StreamPtr narrow = Stream(false, {0x03, 0x00, 'x', 0xE9, 'z'});
    EXPECT_EQ(s.Load(narrow.get()), 1);
    EXPECT_EQ(std::u16string(s.GetCStr()), u"x\u00E9z");
    StreamPtr wide = Stream(true, {0xFF, 0xFE, 0x01, 0x00, 0x20, 0xAC});
    EXPECT_EQ(s.Load(wide.get()), 1);
    EXPECT_EQ(std::u16string(s.GetCStr()), u"\u0100\u20AC");
    StreamPtr empty = Stream(false, {0x00, 0x00});
    EXPECT_EQ(s.Load(empty.get()), 1);
    EXPECT_EQ(s.GetBuffer(), nullptr);
}

TEST(StringStream, RoundTripKeepsEveryUnit) {
    for (bool reversed : {false, true}) {
        const q5_STRING original(u"na\u00EFve \u0416 \uFFFF");
        StreamPtr stream = Stream(reversed);
        original.Save(stream.get(), 0);
        stream->Seek(0, 0);
        q5_STRING back;
        EXPECT_EQ(back.Load(stream.get()), 1);
        EXPECT_EQ(back.Compare(original), 0) << reversed;
    }
}

constexpr q5_GUID kSample = {
    0x01020304, 0x0506, 0x0708, {0x0A, 0x0B, 0x0C, 0x0D, 0x0E, 0x0F, 0x10, 0x11}};

TEST(GuidStream, SixteenBytesWithOnlyTheFirstThreePartsInStreamOrder) {
    StreamPtr little = Stream(), reversed = Stream(true);
    EXPECT_EQ(kSample.Save(little.get(), 0), 1);
    EXPECT_EQ(Contents(*little), (Bytes{0x04, 0x03, 0x02, 0x01, 0x06, 0x05, 0x08, 0x07, 0x0A, 0x0B,
                                        0x0C, 0x0D, 0x0E, 0x0F, 0x10, 0x11}));
    EXPECT_EQ(kSample.Save(reversed.get(), 0), 1);
    EXPECT_EQ(Contents(*reversed), (Bytes{0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08, 0x0A,
                                          0x0B, 0x0C, 0x0D, 0x0E, 0x0F, 0x10, 0x11}));
    reversed->Seek(0, 0);
    q5_GUID back{};
    EXPECT_EQ(back.Load(reversed.get()), 1);
    EXPECT_TRUE(back.Compare(kSample));
}

TEST(GuidStream, ChunkIdAddsItsSixByteHeader) {
    StreamPtr stream = Stream();
    EXPECT_EQ(kSample.Save(stream.get(), 0x0102), 1);
    const Bytes bytes = Contents(*stream);
    ASSERT_EQ(bytes.size(), 22u);
    EXPECT_EQ(Bytes(bytes.begin(), bytes.begin() + 6), (Bytes{0x02, 0x01, 22, 0, 0, 0}));
}

} // namespace

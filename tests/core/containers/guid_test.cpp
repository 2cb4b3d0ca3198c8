// The 16-byte identifier: text form in both directions, equality and the null record.
#include "core/containers/guid.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>

namespace {

constexpr q5_GUID kSample = {
    0x01020304, 0x0506, 0x0708, {0x0A, 0x0B, 0x0C, 0x0D, 0x0E, 0x0F, 0x10, 0x11}};
constexpr char kSampleText[] = "{01020304-0506-0708-0B0A-0C0D0E0F1011}";

TEST(GuidText, FourthGroupPrintsItsBytesSwappedReadsBackAndComparesWhole) {
    char buffer[39];
    EXPECT_STREQ(kSample.ToStr(buffer), kSampleText);

    q5_GUID guid;
    ASSERT_TRUE(guid.FromStr(kSampleText));
    EXPECT_TRUE(guid.Compare(kSample));
    ASSERT_TRUE(guid.FromStr(u"{01020304-0506-0708-0B0A-0C0D0E0F1011}"));
    EXPECT_TRUE(guid.Compare(kSample));
    // Compare and IsNull look at every byte, the last included.
    guid.Data4[7] ^= 0x80;
    EXPECT_FALSE(guid.Compare(kSample));
    guid.SetNull();
    EXPECT_TRUE(guid.IsNull());
    guid.Data4[7] = 1;
    EXPECT_FALSE(guid.IsNull());
}

TEST(GuidText, FailedReadsStartFromZeroAndKeepWhatWasRead) {
    q5_GUID guid = kSample;
    EXPECT_FALSE(guid.FromStr("{01020304-0506-0708-0B0A-0C0D0E0F10}"));
    EXPECT_EQ(guid.Data1, 0x01020304u);
    EXPECT_EQ(guid.Data2, 0x0506);
    EXPECT_EQ(guid.Data4[6], 0x10);
    EXPECT_EQ(guid.Data4[7], 0);
    for (const char* text : {"01020304", static_cast<const char*>(nullptr)}) {
        guid = kSample;
        EXPECT_FALSE(guid.FromStr(text));
        EXPECT_TRUE(guid.IsNull());
    }
}

// Every prefix is read from a block of exactly its size, so a read past the end shows under
// the address sanitizer. The last group takes one or two digits and "}" is never checked.
TEST(GuidText, TextsCutShortAreReadOnlyUpToTheirEnd) {
    const std::size_t full = std::strlen(kSampleText);
    for (std::size_t n = 0; n <= full; ++n) {
        auto text = std::make_unique<char[]>(n + 1);
        std::memcpy(text.get(), kSampleText, n);
        text[n] = 0;
        q5_GUID guid;
        EXPECT_EQ(guid.FromStr(text.get()), n >= full - 2) << n;
        EXPECT_TRUE(n != full - 2 || guid.Data4[7] == 0x01) << "one digit of the last group";
    }
}

} // namespace

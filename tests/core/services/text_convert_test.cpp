// Conversions between 16-bit and 8-bit text: sizes, terminators and the size rules.
#include "core/services/text_convert.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace {

constexpr q5_WCHAR kUnused = 0x7777;
const char* const kTwentyChars = "abcdefghijklmnopqrst";

} // namespace

// The result counts the terminator; a negative size leaves the last element alone; size 1 is
// the platform's size query and converts nothing.
TEST(TextConvertSized, CountsTheTerminatorHonoursTheCapacityAndFailsOnTooLongText) {
    q5_WCHAR wide[10];
    char narrow[10];
    EXPECT_EQ(AtoWex("abc", wide, 10), 4);
    EXPECT_EQ(std::u16string(wide), u"abc");
    EXPECT_EQ(WtoAex(u"abc", narrow, 10), 4);
    EXPECT_EQ(std::string(narrow), "abc");
    wide[9] = kUnused;
    EXPECT_EQ(AtoWex("abcdefgh", wide, -10), 9);
    EXPECT_EQ(wide[9], kUnused);
    std::fill(wide, wide + 10, kUnused);
    EXPECT_EQ(AtoWex("abc", wide, 1), 4);
    EXPECT_EQ(wide[0], 0);
    EXPECT_EQ(wide[1], kUnused);
    // Too long a text fails but keeps the terminator written first; a null text gives empty text.
    std::fill(wide, wide + 10, kUnused);
    EXPECT_EQ(AtoWex(kTwentyChars, wide, -10), 0);
    EXPECT_EQ(wide[9], kUnused);
    EXPECT_EQ(AtoWex(kTwentyChars, wide, 10), 0);
    EXPECT_EQ(wide[9], 0);
    EXPECT_EQ(WtoAex(u"abcdefghijklmnopqrst", narrow, 10), 0);
    EXPECT_EQ(narrow[9], 0);
    narrow[0] = 'x';
    EXPECT_EQ(WtoAex(nullptr, narrow, 4), 0);
    EXPECT_EQ(narrow[0], 0);
    EXPECT_EQ(QueryAtoWBufSize(nullptr), 0);
}

// Non-ASCII narrow text is UTF-8 here so that it reads the same on Windows, whose default
// narrow code page is an ANSI one.
TEST(TextConvertSized, NarrowCodePageCarriesNonAsciiTextAndSizeQueriesCountTheTerminator) {
    const int previous = q5GetNarrowCodePage();
    q5SetNarrowCodePage(65001);
    q5_WCHAR wide[8];
    EXPECT_EQ(AtoWex("caf\xC3\xA9", wide, 8), 5);
    EXPECT_EQ(std::u16string(wide), u"caf\u00E9");
    EXPECT_EQ(QueryWtoABufSize(u"caf\u00E9"), 6);
    q5SetNarrowCodePage(previous);
    EXPECT_EQ(QueryAtoWBufSize("abc"), 4);
    EXPECT_EQ(QueryAtoWBufSize(""), 1);
}

// 258 characters and the terminator fill the fixed 259; one more leaves no room for it, and
// nothing past 259 is touched.
TEST(TextConvertFixed, CapacityIsTwoHundredFiftyNine) {
    q5_WCHAR wide[300];
    char narrow[300];
    AtoW(std::string(258, 'p').c_str(), wide);
    EXPECT_EQ(std::u16string(wide), std::u16string(258, u'p'));
    WtoA(std::u16string(258, u'r').c_str(), narrow);
    EXPECT_EQ(std::string(narrow), std::string(258, 'r'));
    wide[258] = 0;
    wide[259] = kUnused;
    AtoW(std::string(259, 'q').c_str(), wide);
    EXPECT_NE(wide[258], 0);
    EXPECT_EQ(wide[259], kUnused);
    AtoW(nullptr, wide);
    EXPECT_EQ(wide[0], 0);
}

// U+1F600 is a surrogate pair in 16-bit text and four bytes in UTF-8; a stray byte becomes
// one U+FFFD.
TEST(TextConvertUtf8, SurrogatePairsRoundTripAndNullDestinationsMeasure) {
    EXPECT_EQ(UTF8toWideString("a\xF0\x9F\x98\x80", nullptr, 0), 4);
    EXPECT_EQ(WidetoUTF8String(u"a\U0001F600", nullptr, 0), 6);
    q5_WCHAR wide[8];
    ASSERT_EQ(UTF8toWideString("\xF0\x9F\x98\x80z", wide, 8), 4);
    EXPECT_EQ(std::u16string(wide), u"\xD83D\xDE00z");
    char narrow[8];
    ASSERT_EQ(WidetoUTF8String(wide, narrow, 8), 6);
    EXPECT_EQ(std::string(narrow), "\xF0\x9F\x98\x80z");
    EXPECT_EQ(WidetoUTF8String(u"\U0001F600", narrow, 4), 0); // four bytes do not fit in three
    EXPECT_EQ(UTF8toWideString("a\xFF", wide, 8), 3);
    EXPECT_EQ(std::u16string(wide), u"a\uFFFD");
}

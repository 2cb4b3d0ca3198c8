// The library's 16-bit string helpers.
#include "core/services/wide_string.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <string>

TEST(WideStringCopy, BoundedCopyAlwaysTerminatesAndCatAppends) {
    q5_WCHAR dst[16] = {u'z', u'z', u'z', u'z', u'z', u'z', u'z', u'z'};
    q5wcsncpy(dst, u"abcdef", 4);
    EXPECT_EQ(std::u16string(dst), u"abc");
    EXPECT_EQ(dst[4], u'z');
    q5wcsncpy(dst, u"xy", 0);
    EXPECT_EQ(dst[0], u'a'); // a count of 0 writes nothing
    q5wcscpy(dst, u"path");
    q5wcscat(dst, u"\\file");
    EXPECT_EQ(std::u16string(dst), u"path\\file");
    EXPECT_EQ(q5wcslen(dst), 9u);
}

TEST(WideStringCompare, UnitsCompareAsUnsignedNumbers) {
    EXPECT_EQ(q5wcscmp(u"abc", u"abc"), 0);
    EXPECT_LT(q5wcscmp(u"ab", u"abc"), 0);
    EXPECT_GT(q5wcscmp(u"\u00E9", u"z"), 0);
    EXPECT_LT(q5wcscmp(u"\U0001F600", u"\uFF01"), 0); // a surrogate unit, 0xD83D
}

TEST(WideStringCompare, IgnoresCaseAcrossScriptsAndOrdersByLowerCase) {
    EXPECT_EQ(q5wcsicmp(u"Hello", u"hELLO"), 0);
    EXPECT_EQ(q5wcsicmp(u"\u00C9\u0178\u03A9\u0416", u"\u00E9\u00FF\u03C9\u0436"), 0);
    EXPECT_NE(q5wcsicmp(u"\u00D7", u"\u00F7"), 0); // multiplication and division signs
    // '_' lies between the capitals and the small letters.
    EXPECT_LT(q5wcsicmp(u"_", u"A"), 0);
    EXPECT_GT(q5wcsicmp(u"b", u"A"), 0);
    EXPECT_EQ(q5wcsnicmp(u"abcX", u"ABCy", 3), 0);
    EXPECT_LT(q5wcsnicmp(u"abcX", u"ABCy", 4), 0);
}

TEST(NarrowCompare, FoldsOnlyAsciiLetters) {
    EXPECT_EQ(q5strnicmp("Tessera K", "TESSERA k", 256), 0);
    EXPECT_GT(q5strnicmp("abc", "ab", 256), 0);
    // Bytes above 0x7F are parts of UTF-8 sequences, never letters of their own.
    EXPECT_NE(q5strnicmp("\xC4", "\xE4", 1), 0);
}

TEST(WideNumbers, ReadTheLongestPrefixAndSaturateAtThirtyTwoBits) {
    EXPECT_EQ(q5wtol(u"  -42xyz"), -42);
    EXPECT_EQ(q5wtol(u"-2147483648"), INT32_MIN);
    EXPECT_EQ(q5wtol(u"2147483648"), INT32_MAX);
    EXPECT_EQ(q5wtol(u"-99999999999999999999"), INT32_MIN);
    EXPECT_EQ(q5wtof(u" 1.5e3x"), 1500.0);
    EXPECT_EQ(q5wtof(u"abc"), 0.0);
    EXPECT_TRUE(std::isinf(q5wtof(u"inf")));
}

// Out of a double's range the size of the number decides, not the sign of its exponent:
// 1 and 400 zeros e-50 is 1e350; 0. and 400 zeros 1e50 is 1e-351.
TEST(WideNumbers, BeyondTheRangeOfADoubleGiveHugeValOrSignedZero) {
    const std::u16string zeros(400, u'0');
    EXPECT_EQ(q5wtof(u"1e400"), HUGE_VAL);
    EXPECT_EQ(q5wtof(u"-0.01e311x"), -HUGE_VAL);
    EXPECT_EQ(q5wtof((u"1" + zeros + u"e-50").c_str()), HUGE_VAL);
    const double tiny = q5wtof((u"0." + zeros + u"1e50").c_str());
    EXPECT_EQ(tiny, 0.0);
    EXPECT_FALSE(std::signbit(tiny));
    const double negativeTiny = q5wtof(u"-123e-400");
    EXPECT_EQ(negativeTiny, 0.0);
    EXPECT_TRUE(std::signbit(negativeTiny));
}

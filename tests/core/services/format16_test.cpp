// The 16-bit formatter: flags, sizes, text kinds, positional arguments and truncation.
#include "core/services/format16.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <limits>
#include <string>

#include "core/services/text_convert.h"

namespace {

constexpr q5_WCHAR kUnused = 0x7777;

// Formats into a roomy buffer and returns the text; the result count must match its length.
template <typename... Args> std::u16string Format(const q5_WCHAR* format, Args... args) {
    q5_WCHAR buffer[256];
    const int count = q5sprintf(buffer, 256, format, args...);
    const std::u16string text(buffer);
    EXPECT_EQ(count, static_cast<int>(text.size()));
    return text;
}

} // namespace

TEST(Format16Integers, FlagsWidthPrecisionSizesAndAlternateForms) {
    EXPECT_EQ(Format(u"%d|%5d|%-5d|%05d|%+d|% d", 42, 42, 42, -42, 42, 42),
              u"42|   42|42   |-0042|+42| 42");
    EXPECT_EQ(Format(u"%.3d|%.0d|%#o|%#x|%#X|%#x|%o", 7, 0, 8, 255, 255, 0, 8),
              u"007||010|0xff|0XFF|0|10");
    EXPECT_EQ(Format(u"%06.3d", -5), u"  -005"); // a precision turns zero padding off
    EXPECT_EQ(Format(u"%*d|%-*d|%.*d|%*d", 4, 7, 4, 7, 3, 7, -4, 7), u"   7|7   |007|7   ");
    // Pointers print as upper-case hex of full width.
    const std::u16string zeros(2 * sizeof(void*) - 4, u'0');
    EXPECT_EQ(Format(u"%p", reinterpret_cast<void*>(std::uintptr_t{0xBEEF})), zeros + u"BEEF");
    // Size modifiers pick the argument width.
    EXPECT_EQ(Format(u"%d %u %x", INT_MIN, UINT_MAX, -1), u"-2147483648 4294967295 ffffffff");
    EXPECT_EQ(Format(u"%lld %hd %hhu", LLONG_MIN, 65535, 511), u"-9223372036854775808 -1 255");
    EXPECT_EQ(Format(u"%I64x %I32d", std::uint64_t{0xFEDCBA9876543210}, std::int32_t{-5}),
              u"fedcba9876543210 -5");
    EXPECT_EQ(Format(u"%zu %Iu %ld", std::size_t{10000000000}, std::size_t{7}, -7L),
              u"10000000000 7 -7");
}

TEST(Format16Text, PlainSIsWideAndHsIsNarrow) {
    EXPECT_EQ(Format(u"%s|%hs|%ls|%S|%ws", u"wide", "narrow", u"ls", "S", u"ws"),
              u"wide|narrow|ls|S|ws");
    EXPECT_EQ(Format(u"%c%hc%C%c", u'W', 'n', 'C', u'\u20AC'), u"WnC\u20AC");
    EXPECT_EQ(Format(u"[%5.2s][%-4hs]", u"abc", "x"), u"[   ab][x   ]");
    EXPECT_EQ(
        Format(u"%s %hs", static_cast<const q5_WCHAR*>(nullptr), static_cast<const char*>(nullptr)),
        u"(null) (null)");
    EXPECT_EQ(Format(u"\u00E9%d\U0001F600 100%%", 1), u"\u00E91\U0001F600 100%");
    // Narrow text follows the narrow code page; UTF-8 here, since Windows' default is an ANSI one.
    const int previous = q5GetNarrowCodePage();
    q5SetNarrowCodePage(65001);
    const std::u16string text = Format(u"%hs|%3hs", "caf\xC3\xA9", "\xE2\x82\xAC");
    q5SetNarrowCodePage(previous);
    EXPECT_EQ(text, u"caf\u00E9|  \u20AC");
}

TEST(Format16Real, FlagsReachTheDigitsAndInfinityIsNeverZeroPadded) {
    EXPECT_EQ(Format(u"%e|%G|[%08.2f]", 12345.678, 1e-10, -3.14159),
              u"1.234568e+04|1E-10|[-0003.14]");
    const double inf = std::numeric_limits<double>::infinity();
    EXPECT_EQ(Format(u"[%6f][%06f][%-5f]", inf, -inf, inf), u"[   inf][  -inf][inf  ]");
}

TEST(Format16Positional, ArgumentsAreReadInPositionOrderWithoutMixingOrGaps) {
    EXPECT_EQ(Format(u"%2$s %1$s", u"world", u"hello"), u"hello world");
    // Position 1 is narrow text, 2 an int, 3 a double: each must be read with its own type.
    EXPECT_EQ(Format(u"%2$d-%1$hs-%3$.2f", "a", 7, 2.5), u"7-a-2.50");
    EXPECT_EQ(Format(u"[%1$*2$d][%1$-*2$d]", 7, 3), u"[  7][7  ]");
    q5_WCHAR buffer[16] = {u'x', u'x', 0};
    int dummy = 0;
    EXPECT_EQ(q5sprintf(buffer, 16, u"%1$d %d", 1, 2), -1);
    EXPECT_EQ(buffer[0], 0);
    EXPECT_EQ(q5sprintf(buffer, 16, u"%1$d %3$d", 1, 2, 3), -1);
    EXPECT_EQ(q5sprintf(buffer, 16, u"%n", &dummy), -1);
}

TEST(Format16Bounds, TruncatesAndReturnsTheFullCount) {
    q5_WCHAR buffer[9] = {kUnused, kUnused, kUnused, kUnused, kUnused, kUnused, kUnused, kUnused};
    EXPECT_EQ(q5sprintf(buffer, 5, u"abc%d", 12345), 8);
    EXPECT_EQ(std::u16string(buffer), u"abc1");
    EXPECT_EQ(buffer[5], kUnused);
    EXPECT_EQ(q5sprintf(buffer, 9, u"%s", u"abcdefgh"), 8); // an exact fit
    EXPECT_EQ(std::u16string(buffer), u"abcdefgh");
    EXPECT_EQ(q5sprintf(nullptr, 0, u"%d-%d", 10, 200), 6);
}

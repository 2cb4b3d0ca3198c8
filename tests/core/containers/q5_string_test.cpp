// The owned 16-bit string: empty forms, building, reading out, numbers and comparison.
#include "core/containers/q5_string.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>

namespace {

std::u16string Text(const q5_STRING& s) {
    return s.GetCStr();
}

q5_STRING Str(const char16_t* text) {
    return q5_STRING(text);
}

// Every kind of text appends, the zero character does not; empty text releases the buffer but
// still reads as "".
TEST(StringBuild, AddAppendsAndEmptyTextReleasesTheBuffer) {
    q5_STRING s;
    EXPECT_TRUE(s.Add("xy"));
    EXPECT_TRUE(s.Add(u'a'));
    EXPECT_TRUE(s.Add(u"bc"));
    EXPECT_TRUE(s.Add(Str(u"f")));
    EXPECT_FALSE(s.Add(u'\0'));
    EXPECT_EQ(Text(s), u"xyabcf");
    EXPECT_TRUE(s.Set(u""));
    EXPECT_EQ(s.GetBuffer(), nullptr);
    EXPECT_EQ(s.Length(), 0u);
    ASSERT_NE(s.GetCStr(), nullptr);
    EXPECT_EQ(s.GetCStr()[0], 0);
    s.Set(u"x");
    EXPECT_TRUE(s.Set(q5_STRING()));
    EXPECT_EQ(s.GetBuffer(), nullptr);
}

TEST(StringBuild, TextFromItsOwnBufferIsSafeAndCopiesOwnTheirText) {
    q5_STRING s(u"abcdef");
    s.Add(s);
    s.Add(s.GetBuffer() + 9);
    EXPECT_EQ(Text(s), u"abcdefabcdefdef");
    s.Set(s.GetBuffer() + 12);
    EXPECT_EQ(Text(s), u"def");

    q5_STRING copy(s), assigned;
    assigned = s;
    s.Set(u"two");
    const q5_STRING& same = assigned;
    assigned = same;
    EXPECT_EQ(Text(copy), u"def");
    EXPECT_EQ(Text(assigned), u"def");
}

// Both forms write only a terminator for the empty string; the narrow one follows the sized
// conversion and so counts the terminator.
TEST(StringGet, CopiesWhatFitsBeforeTheTerminator) {
    const q5_STRING s(u"abcdef");
    char narrow[8];
    EXPECT_EQ(s.Get(narrow, 8), 7);
    EXPECT_STREQ(narrow, "abcdef");
    q5_WCHAR out[8];
    std::fill(out, out + 8, u'Z');
    EXPECT_EQ(s.Get(out, 4), 3);
    EXPECT_EQ(std::u16string(out), u"abc");
    EXPECT_EQ(out[4], u'Z');
    EXPECT_EQ(s.Get(out, 0), 0);
    EXPECT_EQ(out[0], u'a');
    EXPECT_EQ(q5_STRING().Get(out, 3), 0);
    EXPECT_EQ(out[0], 0);
    EXPECT_EQ(q5_STRING().Get(narrow, -4), 0);
    EXPECT_EQ(narrow[0], 0);
}

TEST(StringNumber, OnlyDigitsAreNumericAndOnlyEmptyIsAnError) {
    EXPECT_TRUE(Str(u"007").IsNumeric());
    for (const char16_t* other : {u"-1", u"1.5", u" 1", u""})
        EXPECT_FALSE(Str(other).IsNumeric()) << std::u16string(other).size() << " units";
    bool error = true;
    EXPECT_EQ(Str(u"12abc").ToInt(&error), 12);
    EXPECT_FALSE(error);
    EXPECT_EQ(q5_STRING().ToInt(&error), 0);
    EXPECT_TRUE(error);
    EXPECT_DOUBLE_EQ(Str(u"2.5mm").ToFloat(&error), 2.5);
    EXPECT_FALSE(error);
    EXPECT_EQ(Str(u"-1e999").ToFloat(&error), -HUGE_VAL); // beyond a double, as the C library
    EXPECT_FALSE(error);
}

// Between two texts the sign is (other - this), unsigned; an empty string sorts first; a null
// text never counts as equal.
TEST(StringCompare, BetweenTextsTheSignIsReversed) {
    const struct {
        const char16_t* self;
        const char16_t* other;
        int expected;
    } cases[] = {{u"abc", u"abd", 1}, {u"abc", u"abc", 0}, {u"ab", u"abc", 1}, {u"a", u"\x8000", 1},
                 {u"", u"", 0},       {u"", u"a", -1},     {u"b", u"", 1},     {u"b", u"a", -1}};
    for (const auto& c : cases)
        EXPECT_EQ(Str(c.self).Compare(Str(c.other)), c.expected) << &c - cases;
    EXPECT_EQ(q5_STRING().Compare(static_cast<const q5_WCHAR*>(nullptr)), -1);
    EXPECT_EQ(q5_STRING().Compare(u""), -1);
    EXPECT_EQ(Str(u"a").Compare(u""), -1) << "a non-null text takes the reversed comparison";
}

TEST(StringCompare, NoCaseFoldsAndKeepsTheReversedSign) {
    EXPECT_EQ(Str(u"ReadMe").CompareNoCase(Str(u"README")), 0);
    EXPECT_GT(Str(u"a").CompareNoCase(Str(u"B")), 0);
    EXPECT_EQ(Str(u"a").CompareNoCase(q5_STRING()), 1);
}

} // namespace

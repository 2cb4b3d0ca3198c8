// The owned 16-bit string: empty forms, building, reading out, numbers and comparison.
#include "core/containers/q5_string.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>

namespace {

std::u16string Text(const q5_STRING& s) {
    return s.GetCStr();
}

q5_STRING Str(const char16_t* text) {
    return q5_STRING(text);
}

TEST(StringEmpty, SettingEmptyTextReleasesTheBuffer) {
    q5_STRING s(u"abc");
    ASSERT_NE(s.GetBuffer(), nullptr);
    EXPECT_TRUE(s.Set(u""));
    EXPECT_EQ(s.GetBuffer(), nullptr);
    EXPECT_EQ(s.Length(), 0u);
    ASSERT_NE(s.GetCStr(), nullptr);
    EXPECT_EQ(s.GetCStr()[0], 0);
    s.Set(u"x");
    EXPECT_TRUE(s.Set(static_cast<const char*>(nullptr)));
    EXPECT_EQ(s.GetBuffer(), nullptr);
    s.Set(u"x");
    EXPECT_TRUE(s.Set(q5_STRING()));
    EXPECT_EQ(s.GetBuffer(), nullptr);
}

TEST(StringBuild, AddAppendsEveryKindOfText) {
    q5_STRING s;
    EXPECT_TRUE(s.Add(u'a'));
    EXPECT_TRUE(s.Add(u"bc"));
    EXPECT_TRUE(s.Add("de"));
    EXPECT_TRUE(s.Add(Str(u"f")));
    EXPECT_TRUE(s.Add(q5_STRING()));
    EXPECT_TRUE(s.Add(static_cast<const q5_WCHAR*>(nullptr)));
    EXPECT_TRUE(s.Add(""));
    EXPECT_EQ(Text(s), u"abcdef");
    EXPECT_EQ(s.Length(), 6u);
    q5_STRING fromNarrow;
    EXPECT_TRUE(fromNarrow.Add("xy"));
    EXPECT_EQ(Text(fromNarrow), u"xy");
}

TEST(StringBuild, AddingTheZeroCharacterFails) {
    q5_STRING s(u"ab");
    EXPECT_FALSE(s.Add(u'\0'));
    EXPECT_EQ(Text(s), u"ab");
    q5_STRING empty;
    EXPECT_FALSE(empty.Add(u'\0'));
    EXPECT_EQ(empty.GetBuffer(), nullptr);
}

TEST(StringBuild, TextFromItsOwnBufferIsSafe) {
    q5_STRING s(u"abcdef");
    s.Add(s);
    EXPECT_EQ(Text(s), u"abcdefabcdef");
    s.Add(s.GetBuffer() + 9);
    EXPECT_EQ(Text(s), u"abcdefabcdefdef");
    s.Set(s.GetBuffer() + 12);
    EXPECT_EQ(Text(s), u"def");
}

TEST(StringBuild, CopiesOwnTheirText) {
    q5_STRING a(u"one");
    q5_STRING b(a);
    q5_STRING c;
    c = a;
    a.Set(u"two");
    EXPECT_EQ(Text(b), u"one");
    EXPECT_EQ(Text(c), u"one");
    const q5_STRING& same = c;
    c = same;
    EXPECT_EQ(Text(c), u"one");
    c = q5_STRING();
    EXPECT_EQ(c.GetBuffer(), nullptr);
    b.Done();
    EXPECT_EQ(b.GetBuffer(), nullptr);
    EXPECT_EQ(b.Length(), 0u);
}

TEST(StringGet, NarrowFollowsTheSizedConversionRules) {
    const q5_STRING s(u"abc");
    char out[8];
    std::memset(out, 'Z', sizeof out);
    EXPECT_EQ(s.Get(out, 8), 4);
    EXPECT_STREQ(out, "abc");
    std::memset(out, 'Z', sizeof out);
    EXPECT_EQ(s.Get(out, 3), 0) << "abc and its terminator need 4";
    EXPECT_EQ(out[2], 0);
    std::memset(out, 'Z', sizeof out);
    EXPECT_EQ(s.Get(out, -4), 0) << "capacity 3, last element untouched";
    EXPECT_EQ(out[3], 'Z');
    EXPECT_EQ(s.Get(out, -5), 4);
    EXPECT_STREQ(out, "abc");
}

TEST(StringGet, EmptyWritesOnlyATerminator) {
    char out[4] = {'Z', 'Z', 'Z', 'Z'};
    EXPECT_EQ(q5_STRING().Get(out, -4), 0);
    EXPECT_EQ(out[0], 0);
    EXPECT_EQ(out[1], 'Z');
    q5_WCHAR wide[3] = {u'Z', u'Z', u'Z'};
    EXPECT_EQ(q5_STRING().Get(wide, 3), 0);
    EXPECT_EQ(wide[0], 0);
    EXPECT_EQ(wide[1], u'Z');
}

TEST(StringGet, WideCopiesWhatFitsBeforeTheTerminator) {
    const q5_STRING s(u"abcdef");
    q5_WCHAR out[8];
    std::fill(out, out + 8, u'Z');
    EXPECT_EQ(s.Get(out, 4), 3);
    EXPECT_EQ(std::u16string(out), u"abc");
    EXPECT_EQ(out[4], u'Z');
    EXPECT_EQ(s.Get(out, 8), 6);
    EXPECT_EQ(std::u16string(out), u"abcdef");
    std::fill(out, out + 8, u'Z');
    EXPECT_EQ(s.Get(out, 0), 0);
    EXPECT_EQ(s.Get(out, -3), 0);
    EXPECT_EQ(out[0], u'Z');
}

TEST(StringNumber, IsNumericAcceptsOnlyDigits) {
    EXPECT_TRUE(Str(u"123").IsNumeric());
    EXPECT_TRUE(Str(u"007").IsNumeric());
    EXPECT_FALSE(Str(u"-1").IsNumeric());
    EXPECT_FALSE(Str(u"1.5").IsNumeric());
    EXPECT_FALSE(Str(u" 1").IsNumeric());
    EXPECT_FALSE(Str(u"12a").IsNumeric());
    EXPECT_FALSE(q5_STRING().IsNumeric());
}

TEST(StringNumber, TrailingTextIsIgnoredAndOnlyEmptyIsAnError) {
    bool error = true;
    EXPECT_EQ(Str(u"12abc").ToInt(&error), 12);
    EXPECT_FALSE(error);
    EXPECT_EQ(Str(u"-40").ToInt(nullptr), -40);
    EXPECT_EQ(Str(u"abc").ToInt(&error), 0);
    EXPECT_FALSE(error);
    EXPECT_EQ(q5_STRING().ToInt(&error), 0);
    EXPECT_TRUE(error);
    EXPECT_DOUBLE_EQ(Str(u"2.5mm").ToFloat(&error), 2.5);
    EXPECT_FALSE(error);
    EXPECT_DOUBLE_EQ(q5_STRING().ToFloat(&error), 0.0);
    EXPECT_TRUE(error);
}

TEST(StringCompare, BetweenTextsTheSignIsReversed) {
    EXPECT_EQ(Str(u"abc").Compare(Str(u"abd")), 1);
    EXPECT_EQ(Str(u"abd").Compare(Str(u"abc")), -1);
    EXPECT_EQ(Str(u"abc").Compare(Str(u"abc")), 0);
    EXPECT_EQ(Str(u"ab").Compare(Str(u"abc")), 1);
    EXPECT_EQ(Str(u"abc").Compare(u"abd"), 1);
    EXPECT_EQ(Str(u"abc").Compare(u"abc"), 0);
}

TEST(StringCompare, UnitsCompareAsUnsigned) {
    EXPECT_EQ(Str(u"\xFFFF").Compare(Str(u"a")), -1);
    EXPECT_EQ(Str(u"a").Compare(u"\x8000"), 1);
}

TEST(StringCompare, EmptyStringsSortFirst) {
    const q5_STRING empty;
    EXPECT_EQ(empty.Compare(q5_STRING()), 0);
    EXPECT_EQ(empty.Compare(Str(u"a")), -1);
    EXPECT_EQ(Str(u"b").Compare(empty), 1);
    EXPECT_EQ(Str(u"b").Compare(Str(u"a")), -1);
}

TEST(StringCompare, NullTextNeverCountsAsEqual) {
    EXPECT_EQ(q5_STRING().Compare(static_cast<const q5_WCHAR*>(nullptr)), -1);
    EXPECT_EQ(q5_STRING().Compare(u""), -1);
    EXPECT_EQ(Str(u"a").Compare(static_cast<const q5_WCHAR*>(nullptr)), 1);
    EXPECT_EQ(Str(u"a").Compare(u""), -1) << "a non-null text takes the reversed comparison";
}

TEST(StringCompare, NoCaseFoldsAndKeepsTheReversedSign) {
    EXPECT_EQ(Str(u"ReadMe").CompareNoCase(Str(u"README")), 0);
    EXPECT_GT(Str(u"a").CompareNoCase(Str(u"B")), 0);
    EXPECT_LT(Str(u"B").CompareNoCase(Str(u"a")), 0);
    EXPECT_EQ(q5_STRING().CompareNoCase(q5_STRING()), 0);
    EXPECT_EQ(q5_STRING().CompareNoCase(Str(u"a")), -1);
    EXPECT_EQ(Str(u"a").CompareNoCase(q5_STRING()), 1);
}

} // namespace

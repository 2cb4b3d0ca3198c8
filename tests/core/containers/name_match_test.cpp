// Wildcard matching of file names against one pattern and against pattern lists.
#include "core/containers/name_match.h"

#include <gtest/gtest.h>

#include <string>

namespace {

struct MatchCase {
    const char16_t* pattern;
    const char16_t* name;
    int expected;
};

using Matcher = int (*)(const q5_WCHAR*, const q5_WCHAR*);

template <std::size_t N> void ExpectAll(Matcher match, const MatchCase (&cases)[N]) {
    for (const MatchCase& c : cases) EXPECT_EQ(match(c.pattern, c.name), c.expected) << &c - cases;
}

// "*.*" takes names with and without an extension and the empty pattern only ""; extensions
// compare without case and wholly; a star backtracks past earlier dots. "*." takes only names
// without an extension, and a dot in the pattern may stand for the end of the name. A range
// takes both its ends; a minus at either end of a set is a member; "[" without a closing "]"
// is an ordinary unit; only units below 256 fold.
TEST(NameMatch, StarsDotsQuestionMarksSetsCaseAndNullTexts) {
    // clang-format off
    const MatchCase cases[] = {
        {u"*.*", u"README", 1},       {u"*.*", u"a.b.c", 1},       {u"*", u"", 1},
        {u"", u"a", 0},               {u"*.txt", u"a.TXT", 1},     {u"*.txt", u"a.txt.bak", 0},
        {u"*.tx", u"a.txt", 0},       {u"*.txt", u"a.txt.txt", 1}, {u"*.t?t", u"a.b.tXt", 1},
        {u"a*b*c", u"axxbyyc", 1},    {u"*a?", u"bab", 1},         {u"*.", u"README", 1},
        {u"*.", u"README.", 1},       {u"*.", u"a.b", 0},          {u"readme.", u"readme", 1},
        {u"readme.*", u"readme", 1},  {u"a.b", u"a", 0},           {u"file?", u"file", 0},
        {u"file?", u"file1", 1},      {u"[b-d]", u"b", 1},         {u"[b-d]", u"D", 1},
        {u"[b-d]", u"a", 0},          {u"[b-d]", u"e", 0},         {u"[a-c]*", u"Beta", 1},
        {u"[a-cx-z]", u"y", 1},       {u"[a-cx-z]", u"d", 0},      {u"[]", u"]", 0},
        {u"[-x]", u"-", 1},           {u"[-x]", u"a", 0},          {u"[x-]", u"-", 1},
        {u"[abc", u"[ABC", 1},        {u"\u0430", u"\u0410", 0},   {nullptr, u"a", 0},
        {u"*", nullptr, 0}};
    // clang-format on
    ExpectAll(CmpNameExW, cases);
}

TEST(PatternList, AnySegmentMatchesAndEmptySegmentsMatchNothing) {
    // clang-format off
    const MatchCase cases[] = {
        {u"*.jpg;*.png", u"x.png", 1}, {u"*.jpg;*.png", u"x.jpg", 1}, {u"*.jpg;*.png", u"x.bmp", 0},
        {u"*.gif,*.tif", u"x.tif", 1}, {u"*.jpg;", u"x.bmp", 0},      {u"*.jpg;", u"", 0},
        {u"", u"", 0},                 {u";,", u"", 0},               {u"*.a;;*.b", u"x.b", 1},
        {nullptr, u"a", 0}};
    // clang-format on
    ExpectAll(CmpPatternAndName, cases);
    const std::u16string stem(300, u'a');
    const std::u16string list = u"*" + stem + u".x;*.y";
    EXPECT_EQ(CmpPatternAndName(list.c_str(), (u"b" + stem + u".x").c_str()), 1);
    EXPECT_EQ(CmpPatternAndName(list.c_str(), (u"b" + stem + u".z").c_str()), 0);
}

} // namespace

// Wildcard matching of file names against one pattern and against pattern lists.
#include "core/containers/name_match.h"

#include <gtest/gtest.h>

#include <string>

namespace {

bool Matches(const char16_t* pattern, const char16_t* name) {
    return CmpNameExW(pattern, name) == 1;
}

TEST(NameMatch, StarDotStarTakesNamesWithAndWithoutExtension) {
    EXPECT_TRUE(Matches(u"*.*", u"README"));
    EXPECT_TRUE(Matches(u"*.*", u"a.b.c"));
    EXPECT_TRUE(Matches(u"*", u""));
    EXPECT_TRUE(Matches(u"", u""));
    EXPECT_FALSE(Matches(u"", u"a"));
}

TEST(NameMatch, ExtensionComparesWithoutCaseAndWholly) {
    EXPECT_TRUE(Matches(u"*.txt", u"a.TXT"));
    EXPECT_TRUE(Matches(u"*.txt", u".txt"));
    EXPECT_FALSE(Matches(u"*.txt", u"a.txt.bak"));
    EXPECT_FALSE(Matches(u"*.tx", u"a.txt"));
    EXPECT_FALSE(Matches(u"*.txt", u"txt"));
}

TEST(NameMatch, StarBacktracksPastEarlierDots) {
    EXPECT_TRUE(Matches(u"*.txt", u"a.b.txt"));
    EXPECT_TRUE(Matches(u"*.txt", u"a.txt.txt"));
    EXPECT_TRUE(Matches(u"*.t?t", u"a.b.tXt"));
    EXPECT_TRUE(Matches(u"a*b*c", u"axxbyyc"));
    EXPECT_FALSE(Matches(u"a*b*c", u"axxbyy"));
    EXPECT_TRUE(Matches(u"*a?", u"bab"));
    EXPECT_TRUE(Matches(u"a**", u"a"));
}

TEST(NameMatch, StarDotAcceptsOnlyNamesWithoutExtension) {
    EXPECT_TRUE(Matches(u"*.", u"README"));
    EXPECT_TRUE(Matches(u"*.", u"README."));
    EXPECT_FALSE(Matches(u"*.", u"a.b"));
}

TEST(NameMatch, PatternDotMayStandForTheEndOfTheName) {
    EXPECT_TRUE(Matches(u"readme.", u"readme"));
    EXPECT_TRUE(Matches(u"readme.*", u"readme"));
    EXPECT_FALSE(Matches(u"readme.txt", u"readme"));
    EXPECT_FALSE(Matches(u"a.b", u"a"));
}

TEST(NameMatch, QuestionMarkNeedsOneUnit) {
    EXPECT_FALSE(Matches(u"file?", u"file"));
    EXPECT_TRUE(Matches(u"file?", u"file1"));
    EXPECT_FALSE(Matches(u"file?", u"file12"));
}

TEST(NameMatch, SetsHoldMembersAndRanges) {
    EXPECT_TRUE(Matches(u"[a-c]*", u"Beta"));
    EXPECT_FALSE(Matches(u"[a-c]*", u"delta"));
    EXPECT_TRUE(Matches(u"[a-cx-z]", u"y"));
    EXPECT_FALSE(Matches(u"[a-cx-z]", u"d"));
    EXPECT_TRUE(Matches(u"[aeiou]x", u"Ex"));
    EXPECT_FALSE(Matches(u"[]", u"]"));
    EXPECT_FALSE(Matches(u"[ab]", u""));
}

TEST(NameMatch, MinusAtEitherEndOfASetIsAMember) {
    EXPECT_TRUE(Matches(u"[-x]", u"-"));
    EXPECT_TRUE(Matches(u"[-x]", u"x"));
    EXPECT_FALSE(Matches(u"[-x]", u"a"));
    EXPECT_TRUE(Matches(u"[x-]", u"-"));
}

TEST(NameMatch, OpenBracketWithoutCloseIsAnOrdinaryUnit) {
    EXPECT_TRUE(Matches(u"[abc", u"[ABC"));
    EXPECT_FALSE(Matches(u"[abc", u"a"));
}

TEST(NameMatch, OnlyUnitsBelow256Fold) {
    EXPECT_TRUE(Matches(u"ReadMe", u"README"));
    EXPECT_FALSE(Matches(u"\u0430", u"\u0410"));
    EXPECT_TRUE(Matches(u"\u0430?", u"\u0430b"));
}

TEST(NameMatch, NullTextsMatchNothing) {
    EXPECT_EQ(CmpNameExW(nullptr, u"a"), 0);
    EXPECT_EQ(CmpNameExW(u"*", nullptr), 0);
    EXPECT_EQ(CmpPatternAndName(nullptr, u"a"), 0);
}

TEST(PatternList, AnySegmentMayMatch) {
    EXPECT_EQ(CmpPatternAndName(u"*.jpg;*.png", u"x.png"), 1);
    EXPECT_EQ(CmpPatternAndName(u"*.jpg;*.png", u"x.jpg"), 1);
    EXPECT_EQ(CmpPatternAndName(u"*.jpg;*.png", u"x.bmp"), 0);
    EXPECT_EQ(CmpPatternAndName(u"*.gif,*.tif", u"x.tif"), 1);
}

TEST(PatternList, EmptySegmentsMatchNothing) {
    EXPECT_EQ(CmpPatternAndName(u"*.jpg;", u"x.bmp"), 0);
    EXPECT_EQ(CmpPatternAndName(u"*.jpg;", u""), 0);
    EXPECT_EQ(CmpPatternAndName(u"", u""), 0);
    EXPECT_EQ(CmpPatternAndName(u";,", u""), 0);
    EXPECT_EQ(CmpPatternAndName(u"*.a;;*.b", u"x.b"), 1);
}

TEST(PatternList, LongSegmentsAreMatchedWhole) {
    const std::u16string stem(300, u'a');
    const std::u16string list = u"*" + stem + u".x;*.y";
    EXPECT_EQ(CmpPatternAndName(list.c_str(), (u"b" + stem + u".x").c_str()), 1);
    EXPECT_EQ(CmpPatternAndName(list.c_str(), (u"b" + stem + u".z").c_str()), 0);
}

} // namespace

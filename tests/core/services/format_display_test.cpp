// File times and byte sizes for display.
#include "core/services/format_display.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "core/platform/code_page.h"
#include "core/services/text_convert.h"
#include "support/recording_host.h"

namespace {

std::u16string Size(int bytes) {
    q5_WCHAR out[64];
    q5FormatSize(bytes, out);
    return out;
}

// A host whose size unit is " KB".
class FormatSizeTest : public ::testing::Test {
protected:
    FormatSizeTest() { host_.strings[2241] = u" KB"; }
    RecordingHost host_;
    ScopedHostAPI current_{&host_};
};

// 2023-11-29 14:42:37.250 UTC: (1701268957 s + 11644473600 s) * 10^7 + 2500000 ticks.
constexpr q5_FILETIME kKnownTime = {1273172512u, 31072978u};

} // namespace

TEST_F(FormatSizeTest, RoundsUpToWholeKilobytes) {
    EXPECT_EQ(Size(0), u"0 KB");
    EXPECT_EQ(Size(1), u"1 KB");
    EXPECT_EQ(Size(1024), u"1 KB");
    EXPECT_EQ(Size(1025), u"2 KB");
}

TEST_F(FormatSizeTest, GroupsDigitsByThrees) {
    EXPECT_EQ(Size(123 * 1024), u"123 KB");
    EXPECT_EQ(Size(1234 * 1024), u"1 234 KB");
    EXPECT_EQ(Size(999 * 1024 + 1), u"1 000 KB");
    EXPECT_EQ(Size(1234567 * 1024), u"1 234 567 KB");
}

TEST_F(FormatSizeTest, NegativeSizesRoundTowardPlusOneAndGroupTheSign) {
    EXPECT_EQ(Size(-1), u"1 KB");
    EXPECT_EQ(Size(-1025), u"0 KB");
    // The sign takes a digit's place in the grouping.
    EXPECT_EQ(Size(-123 * 1024), u"- 123 KB");
    EXPECT_EQ(Size(-1000 * 1024), u"-1 000 KB");
}

TEST_F(FormatSizeTest, UnitComesFromTheMainStringTable) {
    Size(5);
    ASSERT_EQ(host_.stringRequests.size(), 1u);
    EXPECT_EQ(host_.stringRequests[0].table, 0u);
    EXPECT_EQ(host_.stringRequests[0].id, 2241);
}

TEST(FormatSize, WithoutAHostTheUnitIsLeftOut) {
    ScopedHostAPI none(nullptr);
    EXPECT_EQ(Size(1234 * 1024), u"1 234");
}

TEST(FormatTime, LocalDateSpaceAndTimeWithoutSeconds) {
    q5plat::CalendarTime local{};
    ASSERT_TRUE(q5plat::FileTimeToLocalCalendar(kKnownTime, local));
    EXPECT_EQ(local.second, 37);
    EXPECT_EQ(local.milliseconds, 250);

    q5_WCHAR date[64];
    q5_WCHAR clock[64];
    ASSERT_GT(q5plat::FormatShortDateW(local, date, 64), 0);
    ASSERT_GT(q5plat::FormatTimeNoSecondsW(local, clock, 64), 0);
    const std::u16string clockText(clock);
    EXPECT_EQ(clockText.find(u"37"), std::u16string::npos);
    EXPECT_NE(std::u16string(date).find(u"23"), std::u16string::npos);

    q5_WCHAR out[64];
    q5FormatTime(kKnownTime, out);
    EXPECT_EQ(std::u16string(out), std::u16string(date) + u" " + clockText);
}

TEST(FormatTime, WideAndNarrowFormattersAgree) {
    q5_WCHAR narrow[64];
    q5FormatTime(kKnownTime, narrow);
    q5SetWideSystem(true);
    q5_WCHAR wide[64];
    q5FormatTime(kKnownTime, wide);
    q5SetWideSystem(false);
    EXPECT_EQ(std::u16string(wide), std::u16string(narrow));
}

#if !defined(_WIN32)
TEST(FormatTime, CLocaleTimeIsHoursColonMinutes) {
    // The C library's "C" locale writes %H:%M:%S, which loses its seconds here.
    q5plat::CalendarTime local{};
    ASSERT_TRUE(q5plat::FileTimeToLocalCalendar(kKnownTime, local));
    char clock[16];
    ASSERT_GT(q5plat::FormatTimeNoSecondsA(local, clock, 16), 0);
    char expected[16];
    std::snprintf(expected, sizeof expected, "%02d:%02d", local.hour, local.minute);
    EXPECT_STREQ(clock, expected);
}
#endif

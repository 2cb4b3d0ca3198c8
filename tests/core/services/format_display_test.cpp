// File times and byte sizes for display.
#include "core/services/format_display.h"

#include <gtest/gtest.h>

#include <iterator>
#include <string>
#include <utility>

#include "core/platform/code_page.h"
#include "core/services/text_convert.h"
#include "support/recording_host.h"

namespace {

std::u16string Size(int bytes) {
    q5_WCHAR out[64];
    q5FormatSize(bytes, out);
    return out;
}

// 2023-11-29 14:42:37.250 UTC: (1701268957 s + 11644473600 s) * 10^7 + 2500000 ticks.
constexpr q5_FILETIME kKnownTime = {1273172512u, 31072978u};

} // namespace

// Sizes round up to whole kilobytes (negative ones toward +1) and group their digits by threes;
// the sign takes a digit's place in the grouping.
TEST(FormatSize, RoundsUpAndGroupsDigitsByThrees) {
    RecordingHost host;
    ScopedHostAPI current(&host);
    host.strings[2241] = u" KB";
    const std::pair<int, std::u16string> cases[] = {{0, u"0 KB"},
                                                    {1024, u"1 KB"},
                                                    {1025, u"2 KB"},
                                                    {999 * 1024 + 1, u"1 000 KB"},
                                                    {1234567 * 1024, u"1 234 567 KB"},
                                                    {-1, u"1 KB"},
                                                    {-123 * 1024, u"- 123 KB"}};
    for (const auto& [bytes, text] : cases) EXPECT_EQ(Size(bytes), text) << bytes;
    // The unit comes from the main string table.
    ASSERT_EQ(host.stringRequests.size(), std::size(cases));
    EXPECT_EQ(host.stringRequests[0].table, 0u);
    EXPECT_EQ(host.stringRequests[0].id, 2241);
    ScopedHostAPI none(nullptr); // without a host the unit is left out
    EXPECT_EQ(Size(1234 * 1024), u"1 234");
}

TEST(FormatTime, LocalDateSpaceAndTimeWithoutSeconds) {
    q5plat::CalendarTime local{};
    ASSERT_TRUE(q5plat::FileTimeToLocalCalendar(kKnownTime, local));
    EXPECT_EQ(local.second, 37);

    q5_WCHAR date[64], clock[64], out[64], wide[64];
    ASSERT_GT(q5plat::FormatShortDateW(local, date, 64), 0);
    ASSERT_GT(q5plat::FormatTimeNoSecondsW(local, clock, 64), 0);
    const std::u16string clockText(clock);
    EXPECT_EQ(clockText.find(u"37"), std::u16string::npos);
    EXPECT_NE(std::u16string(date).find(u"23"), std::u16string::npos);
    q5FormatTime(kKnownTime, out);
    EXPECT_EQ(std::u16string(out), std::u16string(date) + u" " + clockText);
    // The wide formatters give the same text.
    q5SetWideSystem(true);
    q5FormatTime(kKnownTime, wide);
    q5SetWideSystem(false);
    EXPECT_EQ(std::u16string(wide), std::u16string(out));
}

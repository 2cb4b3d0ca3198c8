// Error reports go to the host as level-1 messages, or nowhere before the host is known.
#include "core/services/error_report.h"

#include <gtest/gtest.h>

#include <string>

#include "support/recording_host.h"

TEST(CoreError, AssertionsAndNarrowAndWideReportsKeepTheirOwnChannel) {
    RecordingHost host;
    ScopedHostAPI current(&host);
    CoreAssert(nullptr);
    CoreErrorA("To many items[%d] in collection", 70000);
    CoreErrorW(u"%hs: %s (%d)", "scene.bin", u"damaged chunk", 3);
    CoreErrorW(u"%s", std::u16string(600, u'w').c_str()); // wide messages stop at 511
    ASSERT_EQ(host.narrowReports.size(), 2u);
    EXPECT_EQ(host.narrowReports[0].text, "Assertion failed no comment");
    EXPECT_EQ(host.narrowReports[1].text, "To many items[70000] in collection");
    ASSERT_EQ(host.wideReports.size(), 2u);
    EXPECT_EQ(host.wideReports[0].text, u"scene.bin: damaged chunk (3)");
    EXPECT_EQ(host.wideReports[1].text, std::u16string(511, u'w'));
    EXPECT_EQ(host.narrowReports[0].level, 1);
    EXPECT_EQ(host.wideReports[0].level, 1);
}

TEST(CoreError, ReportsBeforeTheHostAreDroppedNotQueued) {
    RecordingHost host;
    {
        ScopedHostAPI none(nullptr);
        CoreAssert("early");
        CoreErrorW(u"early %d", 2);
    }
    ScopedHostAPI current(&host);
    CoreErrorA("late");
    ASSERT_EQ(host.narrowReports.size(), 1u);
    EXPECT_EQ(host.narrowReports[0].text, "late");
    EXPECT_TRUE(host.wideReports.empty());
}

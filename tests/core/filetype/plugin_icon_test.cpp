// Plug-in icons: one host icon index per format identifier, icons from the plug-in's
// resources, and the report and built-in icon for a missing one.
#include "core/filetype/plugin_icon.h"

#include <gtest/gtest.h>

#include <set>

#include "core/containers/collection.h"
#include "core/platform/icon.h"
#include "core/platform/module.h"
#include "core/services/library.h"
#include "plugin_module_name.h"
#include "support/fake_plugin_record.h"
#include "support/recording_host.h"

namespace {

const q5_WCHAR* IntegerId(std::uintptr_t id) {
    return reinterpret_cast<const q5_WCHAR*>(id);
}

struct Pixels {
    std::int32_t width = 0, height = 0;
    std::vector<std::uint32_t> argb;
    std::set<std::uint32_t> Distinct() const { return {argb.begin(), argb.end()}; }
};

Pixels Read(q5_HICON icon) {
    Pixels p;
    EXPECT_TRUE(q5plat::GetIconPixels(icon, p.width, p.height, p.argb));
    return p;
}

class PluginIcons : public ::testing::Test {
protected:
    void SetUp() override {
        plugin = q5_LoadLibrary(kPluginPath, false);
        ASSERT_NE(plugin, nullptr);
        host.strings[kMissingIconStringId] = u"Icon missing: ";
        host.pluginRecords[plugin] = &record;
        host.pluginRecords[bare] = &record;
    }
    void TearDown() override { q5_FreeLibrary(plugin); }

    static q5_GUID Guid(std::uint32_t n) { return q5_GUID{n, 0, 0, {}}; }

    RecordingHost host;
    ScopedHostAPI scope{&host};
    FakePluginRecord record{u"Test Plug-in"};
    q5_HINSTANCE plugin = nullptr;
    q5_HINSTANCE bare = q5plat::OwnModule(); // the test program, which has no icons
};

TEST_F(PluginIcons, TheSameIdentifierKeepsOneIndex) {
    const q5_GUID a = Guid(1), b = Guid(2);
    EXPECT_EQ(host.RegisterICON(plugin, IntegerId(101), &a), 0);
    EXPECT_EQ(host.RegisterICON(plugin, IntegerId(101), &b), 1);
    EXPECT_EQ(host.RegisterICON(plugin, u"TESTICON", &a), 0);
    EXPECT_EQ(host.setIconIndices, (std::vector<std::int32_t>{-1, -1, 0}));
    EXPECT_EQ(host.icons.size(), 2u);
    ASSERT_NE(host.GetIconCache(), nullptr);
    EXPECT_EQ(host.GetIconCache()->Count(), 2);
    EXPECT_EQ(host.GetFirstIconIndex(), 0);
    auto* entry = static_cast<q5_ICONCACHEENTRY*>(host.GetIconCache()->At(1));
    EXPECT_EQ(entry->resourceId, 101);
    EXPECT_EQ(entry->resourceName, nullptr);
    EXPECT_EQ(entry->plugin, &record);
    EXPECT_TRUE(host.wideReports.empty());
}

TEST_F(PluginIcons, ResourcesGiveASmallAndALargeIcon) {
    const q5_GUID id = Guid(1);
    ASSERT_EQ(host.RegisterICON(plugin, u"TESTICON", &id), 0);
    const Pixels small = Read(host.icons[0].first), large = Read(host.icons[0].second);
    EXPECT_EQ(small.width, 16);
    EXPECT_EQ(small.height, 16);
    EXPECT_EQ(small.Distinct(), std::set<std::uint32_t>{0xFF00FF00u}); // the 16-pixel entry
    EXPECT_EQ(large.width, 32);
    EXPECT_EQ(large.Distinct(), std::set<std::uint32_t>{0xFFFF0000u});
    auto* entry = static_cast<q5_ICONCACHEENTRY*>(host.GetIconCache()->At(0));
    EXPECT_EQ(std::u16string(entry->resourceName), u"TESTICON");
    EXPECT_TRUE(host.wideReports.empty());
}

TEST_F(PluginIcons, AMissingIntegerResourceIsReportedAndReplaced) {
    const q5_GUID id = Guid(1);
    EXPECT_EQ(host.RegisterICON(bare, IntegerId(101), &id), 0);
    ASSERT_EQ(host.wideReports.size(), 1u);
    EXPECT_EQ(host.wideReports[0].level, kReportError);
    EXPECT_EQ(host.wideReports[0].text, u"Icon missing: Test Plug-in [101 ]");
    const Pixels small = Read(host.icons[0].first), large = Read(host.icons[0].second);
    EXPECT_EQ(small.width, 16);
    EXPECT_EQ(large.width, 32);
    EXPECT_EQ(large.height, 32);
    // The built-in icon: monochrome, with black, white and transparent parts.
    const std::set<std::uint32_t> mono{0u, 0xFF000000u, 0xFFFFFFFFu};
    EXPECT_EQ(small.Distinct(), mono);
    EXPECT_EQ(large.Distinct(), mono);
}

TEST_F(PluginIcons, AMissingNameIsReportedWithItsTextAndAnUnknownPlugIn) {
    host.pluginRecords.erase(bare);
    const q5_GUID id = Guid(1);
    EXPECT_EQ(host.RegisterICON(bare, u"NOICON", &id), 0);
    ASSERT_EQ(host.wideReports.size(), 1u);
    EXPECT_EQ(host.wideReports[0].text, u"Icon missing: Unknown plugin [NOICON ]");
    record.name.clear();
    host.pluginRecords[bare] = &record;
    EXPECT_EQ(host.RegisterICON(bare, u"NOICON", &id), 0);
    EXPECT_EQ(host.wideReports[1].text, u"Icon missing: Unknown plugin [NOICON ]");
}

TEST_F(PluginIcons, ANullIdentifierGivesNoIndex) {
    EXPECT_EQ(host.RegisterICON(bare, IntegerId(7), nullptr), -1);
    EXPECT_EQ(host.RegisterICON(plugin, IntegerId(101), nullptr), -1);
    EXPECT_EQ(host.wideReports.size(), 1u); // only the missing one is reported
    EXPECT_TRUE(host.setIconIndices.empty());
    EXPECT_EQ(host.GetIconCache(), nullptr);
}

TEST_F(PluginIcons, TheResourceModuleComesFromTheHost) {
    host.resourceModules[bare] = plugin; // icons of `bare` live in the plug-in module
    const q5_GUID id = Guid(3);
    EXPECT_EQ(host.RegisterICON(bare, IntegerId(101), &id), 0);
    EXPECT_TRUE(host.wideReports.empty());
}

TEST(DefaultIcon, IsAPageWithAnOutline) {
    q5_HICON icon = q5CreateDefaultIcon(32);
    Pixels p = Read(icon);
    q5plat::DestroyIcon(icon);
    ASSERT_EQ(p.argb.size(), 32u * 32u);
    const auto at = [&p](int x, int y) { return p.argb[static_cast<std::size_t>(y * 32 + x)]; };
    EXPECT_EQ(at(0, 0), 0u);            // around the page
    EXPECT_EQ(at(6, 16), 0xFF000000u);  // its left edge
    EXPECT_EQ(at(12, 16), 0xFFFFFFFFu); // inside
    EXPECT_EQ(at(24, 3), 0u);           // cut away by the folded corner
}

} // namespace

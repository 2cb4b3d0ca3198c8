// Plug-in icons: one host icon index per format identifier, icons from the plug-in's
// resources, and the report and built-in icon for a missing one.
#include "core/filetype/plugin_icon.h"

#include <set>

#include "core/platform/icon.h"
#include "core/platform/module.h"
#include "core/services/library.h"
#include "registry_fixture.h"
#include "support/fake_plugin_record.h"

namespace {

const q5_WCHAR* IntegerId(std::uintptr_t id) {
    return reinterpret_cast<const q5_WCHAR*>(id);
}

std::vector<std::uint32_t> Pixels(q5_HICON icon, bool destroy = false) {
    std::int32_t width = 0, height = 0;
    std::vector<std::uint32_t> argb;
    EXPECT_TRUE(q5plat::GetIconPixels(icon, width, height, argb));
    if (destroy) q5plat::DestroyIcon(icon);
    return argb;
}

class PluginIcons : public ::testing::Test {
protected:
    void SetUp() override {
        plugin = q5_LoadLibrary(kPluginPath.c_str(), false);
        ASSERT_NE(plugin, nullptr);
        host.strings[kMissingIconStringId] = u"Icon missing: ";
        host.pluginRecords[plugin] = &record;
        host.pluginRecords[bare] = &record;
    }
    void TearDown() override { q5_FreeLibrary(plugin); }

    RecordingHost host;
    ScopedHostAPI scope{&host};
    FakePluginRecord record{u"Test Plug-in"};
    const q5_GUID a{1, 0, 0, {}}, b{2, 0, 0, {}};
    q5_HINSTANCE plugin = nullptr;
    q5_HINSTANCE bare = q5plat::OwnModule(); // the test program, which has no icons
};

TEST_F(PluginIcons, TheSameIdentifierKeepsOneIndex) {
    EXPECT_EQ(host.RegisterICON(plugin, IntegerId(101), &a), 0);
    EXPECT_EQ(host.RegisterICON(plugin, IntegerId(101), &b), 1);
    EXPECT_EQ(host.RegisterICON(plugin, u"TESTICON", &a), 0);
    EXPECT_EQ(host.setIconIndices, (std::vector<std::int32_t>{-1, -1, 0})); // the third replaces
    ASSERT_NE(host.GetIconCache(), nullptr);
    EXPECT_EQ(host.GetIconCache()->Count(), 2);
    EXPECT_EQ(host.GetFirstIconIndex(), 0);
    auto* entry = static_cast<q5_ICONCACHEENTRY*>(host.GetIconCache()->At(1));
    EXPECT_EQ(entry->resourceId, 101);
    EXPECT_EQ(entry->plugin, &record);
    EXPECT_TRUE(host.wideReports.empty());
}

TEST_F(PluginIcons, ANamedResourceOfTheHostsResourceModuleGivesASmallAndALargeIcon) {
    host.resourceModules[bare] = plugin; // icons of `bare` live in the plug-in module
    ASSERT_EQ(host.RegisterICON(bare, u"TESTICON", &a), 0);
    // The icon file's 16- and 32-pixel entries.
    EXPECT_EQ(Pixels(host.icons[0].first), std::vector<std::uint32_t>(16 * 16, 0xFF00FF00u));
    EXPECT_EQ(Pixels(host.icons[0].second), std::vector<std::uint32_t>(32 * 32, 0xFFFF0000u));
    auto* entry = static_cast<q5_ICONCACHEENTRY*>(host.GetIconCache()->At(0));
    EXPECT_EQ(std::u16string(entry->resourceName), u"TESTICON");
    EXPECT_TRUE(host.wideReports.empty());
}

TEST_F(PluginIcons, AMissingResourceIsReportedAndReplacedByTheBuiltInIcon) {
    EXPECT_EQ(host.RegisterICON(bare, IntegerId(101), &a), 0);
    EXPECT_EQ(Pixels(host.icons[0].first), Pixels(q5CreateDefaultIcon(16), true));
    const std::vector<std::uint32_t> large = Pixels(host.icons[0].second);
    EXPECT_EQ(large, Pixels(q5CreateDefaultIcon(32), true));
    EXPECT_EQ(large.size(), 32u * 32u);
    EXPECT_EQ(std::set<std::uint32_t>(large.begin(), large.end()),
              (std::set<std::uint32_t>{0u, 0xFF000000u, 0xFFFFFFFFu})); // a monochrome picture
    // A plug-in without a name; a null identifier is reported but given no index.
    record.name.clear();
    EXPECT_EQ(host.RegisterICON(bare, u"NOICON", nullptr), -1);
    EXPECT_EQ(host.setIconIndices.size(), 1u);
    EXPECT_EQ(host.wideReports, (std::vector<RecordingHost::Report<std::u16string>>{
                                    {kReportError, u"Icon missing: Test Plug-in [101 ]"},
                                    {kReportError, u"Icon missing: Unknown plugin [NOICON ]"}}));
}

} // namespace

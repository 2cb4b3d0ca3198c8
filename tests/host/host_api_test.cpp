// The reference host's API object with the real driver module loaded from the test's folder.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "core/platform/module.h"
#include "host/app/host_api.h"
#include "host/app/plugin_module.h"
#include "plugin/driver.h"

namespace {

// The module is built beside every program, so the test finds it in its own folder.
std::string ProgramFolder() {
    char path[4096];
    if (q5plat::GetProgramFileNameA(path, sizeof path) == 0) return ".";
    return std::filesystem::path(path).parent_path().string();
}

// The host, its settings and the module, initialised as tessera-render does it.
struct LoadedHost {
    IniSettings settings;
    HostAPI host{settings};
    PluginModule module;
    std::vector<std::pair<std::int32_t, std::string>> messages;

    LoadedHost() {
        host.SetMessageSink([this](std::int32_t level, const std::string& text) {
            messages.emplace_back(level, text);
        });
        host.SetProgramFolder(ProgramFolder());
        if (module.Load(PluginModule::DefaultPath(ProgramFolder()))) {
            host.SetDriverModule(&module);
            module.Init(&host);
        }
    }
};

} // namespace

TEST(HostModule, InitRegistersTheDriverUnderItsLocalizedDisplayName) {
    LoadedHost h;
    ASSERT_TRUE(h.module.Loaded()) << h.module.Error();
    ASSERT_EQ(h.host.Registrations().size(), 1u);
    const HostAPI::Registration& r = h.host.Registrations()[0];
    EXPECT_EQ(r.name, "Tessera K (Z Buffer)");
    EXPECT_EQ(r.flags, 272u);
    // String 9 of the module's own "LNG" table.
    EXPECT_EQ(r.displayName, u"Software Z-Buffer");
}

TEST(HostModule, CreatesDriversByNameThroughTheModule) {
    LoadedHost h;
    ASSERT_TRUE(h.module.Loaded()) << h.module.Error();
    DRIVER3D* d = h.host.CreateDriverByName("tessera k (z buffer)");
    ASSERT_NE(d, nullptr);
    EXPECT_STREQ(d->GetInterfaceName(), "Tessera K (Z Buffer)");
    EXPECT_EQ(d->Release(), 0u);
    EXPECT_EQ(h.host.CreateDriverByName("Some Other Driver"), nullptr);
}

TEST(HostModule, DriverReadsSettingsThroughTheStoreAndItsOverrides) {
    LoadedHost h;
    ASSERT_TRUE(h.module.Loaded()) << h.module.Error();
    h.settings.Parse("[Render\\ZB]\nUse2Thread=0\nRefine=1\n");
    h.host.OverrideSetting("Render\\ZB\\Refine", 0);
    DRIVER3D* d = h.host.CreateDriverByName("Tessera K (Z Buffer)");
    ASSERT_NE(d, nullptr);
    EXPECT_EQ(d->QueryCaps(15), 0); // use two threads, from the file
    EXPECT_EQ(d->QueryCaps(16), 0); // refine, overridden
    d->Release();
    EXPECT_EQ(h.settings.GetInt("Render\\ZB\\Refine", -1), 1);
    EXPECT_FALSE(h.host.SettingsWritten());
}

TEST(HostModule, MissingModuleIsAnErrorNamingThePath) {
    PluginModule m;
    EXPECT_FALSE(m.Load("./no_such_module.so"));
    EXPECT_NE(m.Error().find("no_such_module"), std::string::npos);
    EXPECT_FALSE(m.Init(nullptr));
}

TEST(HostMessages, ReachTheSinkWithTheirLevelAsUtf8) {
    IniSettings settings;
    HostAPI host(settings);
    std::vector<std::pair<std::int32_t, std::string>> seen;
    host.SetMessageSink(
        [&](std::int32_t level, const std::string& text) { seen.emplace_back(level, text); });
    host.ReportMessageA(kReportInfo, "plain");
    host.ReportMessage(kReportError, u"Gr\u00f6\u00dfe \u20ac");
    host.ReportTitledMessage(kReportError, u"Title", u"text");
    ASSERT_EQ(seen.size(), 3u);
    EXPECT_EQ(seen[0], std::make_pair(kReportInfo, std::string("plain")));
    EXPECT_EQ(seen[1], std::make_pair(kReportError, std::string("Gr\xc3\xb6\xc3\x9f"
                                                                "e \xe2\x82\xac")));
    EXPECT_EQ(seen[2].second, "Title: text");
    EXPECT_EQ(host.ErrorCount(), 2);
}

TEST(HostFolders, ApplicationFolderIsTheProgramsOwn) {
    IniSettings settings;
    HostAPI host(settings);
    q5_WCHAR out[32];
    EXPECT_FALSE(host.GetFolder(1, out, 32));
    host.SetProgramFolder("/opt/t");
    ASSERT_TRUE(host.GetFolder(1, out, 32));
    EXPECT_EQ(std::u16string(out), u"/opt/t");
    EXPECT_FALSE(host.GetFolder(1, out, 4)); // does not fit
    EXPECT_FALSE(host.GetFolder(2, out, 32));
}

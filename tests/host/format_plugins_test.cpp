// The reference host's side of the file-type registry: format plug-in records that load on
// demand, the icon list, the configuration's plug-in entries and the host's message text.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "core/filetype/file_type.h"
#include "core/platform/module.h"
#include "host/app/host_api.h"
#include "host/app/host_plugin.h"
#include "support/saved_config.h"

namespace {

#if defined(_WIN32)
constexpr const char* kPluginFile = "test_format_plugin.dll";
#else
constexpr const char* kPluginFile = "test_format_plugin.so";
#endif

struct FormatHost {
    IniSettings settings;
    HostAPI host{settings};
    std::vector<std::pair<std::int32_t, std::string>> messages;
    std::filesystem::path folder = ".";

    FormatHost() {
        char self[4096];
        if (q5plat::GetProgramFileNameA(self, sizeof self) != 0)
            folder = std::filesystem::path(self).parent_path();
        host.SetMessageSink([this](std::int32_t level, const std::string& text) {
            messages.emplace_back(level, text);
        });
    }
};

TEST(HostPlugins, AFormatPlugInRegistersItsFormatWhenLoaded) {
    FormatHost h;
    HostPlugin* plugin = h.host.AddPlugin((h.folder / kPluginFile).u16string(), u"Test formats",
                                          u"test_format_plugin");
    EXPECT_EQ(GetFileTypeByExt(u"x.tpf", nullptr, nullptr), nullptr);
    ASSERT_TRUE(plugin->Load()) << plugin->Error();
    FILETYPE* type = GetFileTypeByExt(u"x.tpf", nullptr, nullptr);
    ASSERT_NE(type, nullptr);
    EXPECT_EQ(type->plugin, plugin);
    EXPECT_EQ(h.host.FindPluginRecord(plugin->Module()), plugin);
    EXPECT_EQ(type->Func3d(2, nullptr, nullptr, nullptr), 0x7E570002u);
    // Its icon went into the host's list during registration.
    EXPECT_EQ(h.host.Icons().size(), 1u);
    EXPECT_EQ(type->icon, 0);
    EXPECT_TRUE(h.messages.empty());
    // The user's choice reaches the type and the configuration; a hidden plug-in is not listed.
    plugin->SetEnabled(false);
    h.host.AddPlugin(u"other", u"Hidden", u"hidden_plugin")->SetHidden(true);
    EXPECT_EQ(type->Func3d(2, nullptr, nullptr, nullptr), 0u);
    EXPECT_EQ(GetFileTypeByExt(u"x.tpf", nullptr, nullptr), nullptr);
    EXPECT_EQ(SaveFiletypeConfigText(h.host).first,
              "[plugins]\r\n{test_format_plugin}\r\nenable=0\r\n[formats]\r\n");
}

TEST(HostPlugins, AModuleThatCannotLoadIsReportedOnceAndNotTriedAgain) {
    FormatHost h;
    HostPlugin* plugin =
        h.host.AddPlugin((h.folder / "no_such_plugin.so").u16string(), u"Missing", u"missing");
    FILETYPE* type = h.host.RegisterType(u"mis", u"Missing format", 0, 0x402, q5_GUID{9, 0, 0, {}});
    type->plugin = plugin;
    EXPECT_TRUE(type->IsEnabled());
    EXPECT_EQ(type->Func3d(1, nullptr, nullptr, nullptr), 0u);
    EXPECT_EQ(plugin->GetState(), kPluginStateFailed);
    EXPECT_FALSE(type->IsEnabled());
    EXPECT_EQ(type->Func3d(1, nullptr, nullptr, nullptr), 0u);
    ASSERT_EQ(h.messages.size(), 1u);
    EXPECT_EQ(h.messages[0].first, kReportError);
    EXPECT_NE(h.messages[0].second.find("cannot load the plug-in"), std::string::npos);
}

TEST(HostPlugins, AMissingIconIsReportedWithTheHostsOwnText) {
    FormatHost h;
    ASSERT_TRUE(h.host.LoadLanguage(h.folder.string()));
    const q5_GUID id{1, 2, 3, {}};
    const auto* resource = reinterpret_cast<const q5_WCHAR*>(std::uintptr_t{5});
    EXPECT_EQ(h.host.RegisterICON(q5plat::OwnModule(), resource, &id), 0);
    EXPECT_EQ(h.host.RegisterICON(q5plat::OwnModule(), resource, &id), 0);
    const std::pair<std::int32_t, std::string> report{
        kReportError, "Cannot load the icon of the plug-in Unknown plugin [5 ]"};
    EXPECT_EQ(h.messages, (std::vector{report, report}));
    EXPECT_EQ(h.host.Icons().size(), 1u);
}

} // namespace

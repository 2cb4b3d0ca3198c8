// The reference host's API object with the real driver module loaded from the test's folder.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "core/platform/module.h"
#include "host/app/host_api.h"
#include "host/app/plugin_module.h"
#include "interface/driver.h"

namespace {

// The host, its settings and the module beside the test program, initialised as
// tessera-render does it.
struct LoadedHost {
    IniSettings settings;
    HostAPI host{settings};
    PluginModule module;

    LoadedHost() {
        char self[4096];
        std::string folder = ".";
        if (q5plat::GetProgramFileNameA(self, sizeof self) != 0)
            folder = std::filesystem::path(self).parent_path().string();
        host.SetProgramFolder(folder);
        if (module.Load(PluginModule::DefaultPath(folder))) {
            host.SetDriverModule(&module);
            module.Init(&host);
        }
    }
};

} // namespace

TEST(HostModule, DriverReadsSettingsThroughTheStoreAndItsOverrides) {
    LoadedHost h;
    ASSERT_TRUE(h.module.Loaded()) << h.module.Error();
    h.settings.Parse("[Render\\ZB]\nUse2Thread=0\nRefine=1\n");
    h.host.OverrideSetting("Render\\ZB\\Refine", 0);
    DRIVER3D* d = h.host.CreateDriverByName("tessera k (z buffer)");
    ASSERT_NE(d, nullptr);
    EXPECT_EQ(d->QueryCaps(15), 0); // use two threads, from the file
    EXPECT_EQ(d->QueryCaps(16), 0); // refine, overridden
    EXPECT_EQ(d->Release(), 0u);
    EXPECT_EQ(h.settings.GetInt("Render\\ZB\\Refine", -1), 1);
    EXPECT_FALSE(h.host.SettingsWritten());
}

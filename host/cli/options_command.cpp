// tessera-render --options.
#include "host/cli/options_command.h"

#include <cstdio>

#include "host/app/host_api.h"
#include "host/app/ini_settings.h"
#include "host/app/options_script.h"
#include "host/app/plugin_module.h"
#include "interface/driver.h"

namespace {

constexpr int kExitFailure = 1;
constexpr int kExitUsage = 2;

} // namespace

int RunOptionsPage(const CliOptions& o, const std::string& folder, const char* program) {
    const auto fail = [program](const std::string& message, int code) {
        std::fprintf(stderr, "%s: %s\n", program, message.c_str());
        return code;
    };
    // Everything the script will do is checked before the driver is loaded.
    for (const auto& [key, value] : o.pageSettings) {
        const PageSetting* setting = FindPageSetting(key);
        if (setting == nullptr)
            return fail("--set " + key +
                            ": not a setting of the driver's options page (see --help)",
                        kExitUsage);
        if (const char* wrong = CheckPageValue(*setting, value))
            return fail("--set " + key + "=" + value + ": " + wrong, kExitUsage);
    }

    IniSettings settings;
    if (!o.settings.empty()) {
        std::string error;
        const SettingsFileOutcome read = LoadSettingsFile(o.settings, settings, error);
        if (read != SettingsFileOutcome::Loaded)
            return fail(error, read == SettingsFileOutcome::Missing ? kExitUsage : kExitFailure);
    }
    HostAPI host(settings);
    host.SetProgramName(program);
    host.SetProgramFolder(folder);
    host.LoadLanguage(folder);
    PluginModule module;
    if (!module.Load(o.driver.empty() ? PluginModule::DefaultPath(folder) : o.driver))
        return fail(module.Error(), kExitFailure);
    host.SetDriverModule(&module);
    if (!module.Init(&host)) return fail(module.Error(), kExitFailure);
    DRIVER3D* driver = host.CreateDriverByName(kZBufferDriverName);
    if (driver == nullptr)
        return fail("the module has no driver " + std::string(kZBufferDriverName), kExitFailure);

    const bool scripted = o.optionsPage != CliOptions::OptionsPage::Show ||
                          !o.pageSettings.empty() || !q5plat::kSheetsForUsers;
    bool shown = false;
    int status = 0;
    if (scripted) {
        host.SetSheetScript([&](q5_HWND page) {
            shown = true;
            for (const auto& [key, value] : o.pageSettings) {
                const PageSetting& setting = *FindPageSetting(key);
                switch (SetPageControl(page, setting, value)) {
                case PageEdit::Disabled:
                    if (!o.quiet)
                        std::fprintf(stderr,
                                     "%s: warning: --set %s: the control is disabled; left "
                                     "as it is\n",
                                     program, key.c_str());
                    break;
                case PageEdit::Missing:
                    std::fprintf(stderr, "%s: the page has no control %d for %s\n", program,
                                 setting.control, key.c_str());
                    status = kExitFailure;
                    break;
                case PageEdit::Done:
                    break;
                }
            }
            std::fputs(DescribePage(page).c_str(), stdout);
            return o.optionsPage != CliOptions::OptionsPage::Cancel && status == 0;
        });
    }
    const bool applied = driver->ShowOptions(nullptr);
    driver->Release();
    if (scripted && !shown)
        return fail("the driver's options page could not be made", kExitFailure);
    std::printf("%s\n", applied ? "options applied" : "options cancelled");
    if (applied && !o.settings.empty() && host.SettingsWritten() && !settings.Save(o.settings))
        return fail("cannot write settings file " + o.settings, kExitFailure);
    return status;
}

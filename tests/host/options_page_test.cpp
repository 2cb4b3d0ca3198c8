// The driver's options page through the module's entry point, the host's property sheet and
// the platform's controls (under Wine: the system's sheet and dialog 106 from the resources).
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>
#include <tuple>
#include <vector>

#include "core/platform/dialog_controls.h"
#include "core/platform/system_info.h"
#include "host/app/host_api.h"
#include "host/app/ini_settings.h"
#include "host/app/options_script.h"
#include "host/app/plugin_module.h"
#include "interface/driver.h"
#include "interface/property_sheet.h"
#include "support/module_loader.h"
#include "support/recording_host.h"
#include "support/test_view.h"

namespace {

constexpr const char* kUse2Thread = "Render\\ZB\\Use2Thread";
constexpr const char* kRefine = "Render\\ZB\\Refine";
constexpr const char* kHQ = "Render\\ZB\\HQ";
constexpr const char* kHQtri = "Render\\ZB\\HQtri";

class OptionsPage : public ::testing::Test {
protected:
    void SetUp() override {
        q5plat::OverrideProcessorCount(2);
        ASSERT_TRUE(module.Load(kModuleFileName)) << module.Error();
        host.SetDriverModule(&module);
        host.SetMessageSink([this](std::int32_t, const std::string& text) { messages += text; });
        ASSERT_TRUE(module.Init(&host)) << module.Error();
        driver = host.CreateDriverByName(kZBufferDriverName);
        ASSERT_NE(driver, nullptr);
        driver->view = &view;
    }
    void TearDown() override {
        if (driver != nullptr) driver->Release();
        q5plat::OverrideProcessorCount(0);
        EXPECT_EQ(messages, "");
    }
    // Shows the page under `script`, which may edit it; `shown` is the page as it opened.
    bool Show(const std::function<bool(q5_HWND page)>& script) {
        host.SetSheetScript([&](q5_HWND page) { return shown = DescribePage(page), script(page); });
        return driver->ShowOptions(nullptr);
    }
    bool Shows(const char* lines) const { return shown.find(lines) != std::string::npos; }

    IniSettings settings;
    HostAPI host{settings};
    PluginModule module;
    TestView view;
    DRIVER3D* driver = nullptr;
    std::string shown, messages;
};

TEST_F(OptionsPage, AnEmptyStoreShowsTheDefaultsWithLocalizedTexts) {
    EXPECT_FALSE(Show([](q5_HWND) { return false; }));
    EXPECT_EQ(shown,
              "2114 check \"Use second processor\" checked enabled\n"
              "2115 check \"Refine static geometry\" checked enabled\n"
              "2116 check \"High quality render if triangles number less than:\" unchecked enabled\n"
              "212 edit \"5000\" enabled\n"
              "214 spin \"\" enabled 1144 (100, 100) 1145 (0, 1e+30)\n");
    EXPECT_FALSE(host.SettingsWritten()) << "cancelled";
}

TEST_F(OptionsPage, UncheckingHighQualityLeavesTheThreshold) {
    settings.SetInt(kHQ, 1);
    settings.SetInt(kHQtri, 7000);
    EXPECT_TRUE(Show([](q5_HWND page) {
        q5plat::CheckDlgButton(page, 2116, false);
        q5plat::SetDlgItemText(page, 212, u"9000");
        return true;
    }));
    EXPECT_TRUE(Shows("than:\" checked enabled\n212 edit \"7000\"")) << shown;
    EXPECT_EQ(settings.GetInt(kHQ, -1), 0);
    EXPECT_EQ(settings.GetInt(kHQtri, -1), 7000);
}

TEST_F(OptionsPage, OnlyAnUnsignedThresholdIsSaved) {
    constexpr std::int32_t kNotSaved = 12345;
    // The largest unsigned number is stored as its 32 bits.
    const std::pair<std::u16string, std::int32_t> cases[] = {
        {u"800", 800},      {u" 12 ", 12},       {u"", kNotSaved},           {u"12x", kNotSaved},
        {u"-5", kNotSaved}, {u"1e3", kNotSaved}, {u"4294967296", kNotSaved}, {u"4294967295", -1},
    };
    for (const auto& [text, saved] : cases) {
        settings = IniSettings();
        EXPECT_TRUE(Show([&text = text](q5_HWND page) {
            q5plat::CheckDlgButton(page, 2116, true);
            q5plat::SetDlgItemText(page, 212, text.c_str());
            return true;
        }));
        EXPECT_EQ(settings.GetInt(kHQtri, kNotSaved), saved) << HostAPI::Utf8(text.c_str());
        EXPECT_EQ(settings.GetInt(kHQ, -1), 1) << "the other settings are still saved";
    }
}

TEST_F(OptionsPage, OkReReadsAndTellsTheViewOnlyOfUse2Thread) {
    const auto uncheck = [](std::int32_t id) {
        return [id](q5_HWND page) { return q5plat::CheckDlgButton(page, id, false), true; };
    };
    EXPECT_TRUE(Show(uncheck(2115)));
    EXPECT_EQ(driver->QueryCaps(kCapsRefine), 0);
    EXPECT_EQ(view.settingsChanges, 0) << "a change of Refine alone is not passed on";
    EXPECT_TRUE(Show(uncheck(2114)));
    EXPECT_EQ(driver->QueryCaps(kCapsUseTwoThreads), 0);
    EXPECT_EQ(view.settingsChanges, 1);
}

TEST_F(OptionsPage, CancellingReReadsNothing) {
    EXPECT_FALSE(Show([this](q5_HWND page) {
        q5plat::CheckDlgButton(page, 2114, false);
        settings.SetInt(kUse2Thread, 0); // a change made elsewhere meanwhile
        settings.SetInt(kRefine, 0);
        return false;
    }));
    EXPECT_EQ(driver->QueryCaps(kCapsUseTwoThreads), 1);
    EXPECT_EQ(driver->QueryCaps(kCapsRefine), 1);
    EXPECT_EQ(view.settingsChanges, 0);
}

TEST_F(OptionsPage, NotifyFourReReadsAndTellsTheViewOnlyOfUse2Thread) {
    // Kind, store values (Use2Thread, Refine), then the cached pair and the view's count after.
    const std::tuple<std::int32_t, int, int, std::int64_t, std::int64_t, int> steps[] = {
        {3, 0, 0, 1, 1, 0}, // other kinds re-read nothing
        {4, 1, 0, 1, 0, 0}, {4, 0, 0, 0, 0, 1}, {4, 0, 1, 0, 1, 1}, {4, 1, 1, 1, 1, 2},
    };
    for (const auto& [kind, use2, refine, cachedUse2, cachedRefine, changes] : steps) {
        settings.SetInt(kUse2Thread, use2);
        settings.SetInt(kRefine, refine);
        EXPECT_EQ(driver->Notify(kind), 0);
        EXPECT_EQ(driver->QueryCaps(kCapsUseTwoThreads), cachedUse2) << kind << use2 << refine;
        EXPECT_EQ(driver->QueryCaps(kCapsRefine), cachedRefine) << kind << use2 << refine;
        EXPECT_EQ(view.settingsChanges, changes) << kind << use2 << refine;
    }
    driver->view = nullptr;
    settings.SetInt(kUse2Thread, 0);
    EXPECT_EQ(driver->Notify(4), 0);
    EXPECT_EQ(driver->QueryCaps(kCapsUseTwoThreads), 0) << "re-read without a view too";
}

// A sheet that keeps the page record and calls its procedure with the help requests.
class HelpSheet final : public q5_PROPERTYSHEET {
public:
    void DeleteThis() override { ++deleted; }
    std::int32_t AddPage(const q5_PROPSHEETPAGE* p) override { return pages.push_back(*p), 1; }
    std::int32_t Run(std::int32_t zero, const q5_WCHAR* title) override {
        runs.emplace_back(zero, title);
        const q5_DLGPROC proc = pages.at(0).pfnDlgProc;
        for (std::int32_t code : {kNotifyHelp, -203, kNotifyApply + 1}) {
            q5_NMHDR header{nullptr, 0, code};
            answers.push_back(
                proc(nullptr, kMsgNotify, 0, reinterpret_cast<std::intptr_t>(&header)));
        }
        answers.push_back(proc(nullptr, kMsgHelp, 0, reinterpret_cast<std::intptr_t>(&helpInfo)));
        answers.push_back(proc(nullptr, 0x0111, 0, 0));
        return result;
    }
    std::vector<q5_PROPSHEETPAGE> pages;
    std::vector<std::pair<std::int32_t, std::u16string>> runs;
    std::vector<std::intptr_t> answers;
    int helpInfo = 0;
    int deleted = 0;
    std::int32_t result = 2;
};

TEST(OptionsPageRecord, TheSheetGetsThePageRecordAndHelpGoesToTheHost) {
    RecordingHost host;
    host.strings = {{5, u"Sheet title"}, {6, u"Page title"}};
    host.stringTableHandle = 77;
    HelpSheet sheet;
    host.createSheet = [&](q5_HWND) { return &sheet; };
    LoadedModule& module = LoadedModule::Get();
    ASSERT_NE(module.entry, nullptr);
    ASSERT_EQ(module.entry(PLUGIN_MSG_INIT, reinterpret_cast<std::intptr_t>(&host),
                           reinterpret_cast<std::uintptr_t>(module.handle), 0),
              5u);
    auto* driver = reinterpret_cast<DRIVER3D*>(
        module.entry(PLUGIN_MSG_CREATE, reinterpret_cast<std::intptr_t>(kZBufferDriverName), 0, 0));
    ASSERT_NE(driver, nullptr);
    TestView view;
    driver->view = &view;
    host.settings[{0, kUse2Thread}] = 0; // would notify the view if OK re-read it
    EXPECT_FALSE(driver->ShowOptions(nullptr)) << "2 is not OK";
    EXPECT_EQ(sheet.deleted, 1) << "released once";
    EXPECT_EQ(view.settingsChanges, 0);
    ASSERT_EQ(sheet.pages.size(), 1u);
    const q5_PROPSHEETPAGE& page = sheet.pages[0];
    EXPECT_EQ(std::tie(page.dwSize, page.dwFlags, page.hInstance, page.hIcon, page.lParam),
              std::make_tuple(104u, 0x28u, module.handle, nullptr, 0));
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(page.pszTemplate), 106u);
    EXPECT_TRUE(page.pszTitle != nullptr && std::u16string(page.pszTitle) == u"Page title");
    EXPECT_EQ(page.pfnCallback, nullptr);
    EXPECT_TRUE(sheet.runs == (decltype(sheet.runs){{0, u"Sheet title"}}));
    // Help notification 1, two other codes 0, the help message 0, another message 0.
    EXPECT_EQ(sheet.answers, (std::vector<std::intptr_t>{1, 0, 0, 0, 0}));
    ASSERT_EQ(host.helpRequests.size(), 2u);
    for (const auto& [topic, zero, argument] : host.helpRequests)
        EXPECT_TRUE(topic == "options_render.htm" && zero == 0) << topic;
    EXPECT_EQ(std::get<2>(host.helpRequests[1]), &sheet.helpInfo);

    sheet.result = 1;
    sheet.AddRef(); // the first run's Release took the creator's reference
    EXPECT_TRUE(driver->ShowOptions(nullptr));
    EXPECT_EQ(view.settingsChanges, 1) << "OK re-read Use2Thread";
    driver->Release();
    module.entry(PLUGIN_MSG_SHUTDOWN, 0, 0, 0);
}

} // namespace

// The reference host's API object: settings, messages, string tables and driver creation.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "core/platform/property_sheet.h"
#include "host/app/ini_settings.h"
#include "interface/gapi.h"

class HostPlugin;
class PluginModule;

class HostAPI final : public q5_GAPI {
public:
    // Receives every message the host shows: its level and the text in UTF-8.
    using MessageSink = std::function<void(std::int32_t level, const std::string& text)>;

    struct Registration {
        std::string name;
        std::uint32_t flags;
        std::u16string displayName;
    };

    // Becomes the core library's host for as long as it lives.
    explicit HostAPI(IniSettings& settings);
    ~HostAPI();
    HostAPI(const HostAPI&) = delete;
    HostAPI& operator=(const HostAPI&) = delete;

    // The module whose drivers CreateDriverByName makes; null detaches it.
    void SetDriverModule(PluginModule* module) { module_ = module; }
    // Messages go to standard error as "<program>: <level>: <text>" unless a sink is set.
    void SetMessageSink(MessageSink sink) { sink_ = std::move(sink); }
    void SetProgramName(std::string name) { program_ = std::move(name); }
    void SetProgramFolder(std::string folder) { programFolder_ = std::move(folder); }
    // Answers reads of `key` with `value` whatever the store holds, without changing the store.
    void OverrideSetting(const std::string& key, std::int32_t value);
    // True once the driver wrote a setting.
    bool SettingsWritten() const { return settingsWritten_; }
    const std::vector<Registration>& Registrations() const { return registrations_; }
    std::int32_t ErrorCount() const { return errors_; }
    // Property sheets run under `script` instead of going to the user; an empty one gives
    // them back to the user.
    void SetSheetScript(q5plat::SheetScript script) { sheetScript_ = std::move(script); }
    // Reads the host's main string table from `folder`/language.ln.
    bool LoadLanguage(const std::string& folder);
    // A format plug-in at `path`, loaded when one of its formats is first used (or by its
    // Load); idText names it in the file-type configuration.
    HostPlugin* AddPlugin(const std::u16string& path, const std::u16string& name,
                          const std::u16string& idText);
    // The icon list: the host's copies of every (small, large) pair given to SetIcons.
    const std::vector<std::pair<q5_HICON, q5_HICON>>& Icons() const { return icons_; }

    std::uint64_t OpenStringTable(q5_HINSTANCE module) override;
    const q5_WCHAR* LGetString(std::uint64_t table, std::int32_t id) override;
    void RegisterDriver(q5_HINSTANCE module, const char* name, std::uint32_t flags,
                        const q5_WCHAR* displayName) override;
    DRIVER3D* CreateDriverByName(const char* name) override;
    void ReportMessageA(std::int32_t level, const char* text) override;
    void ReportMessage(std::int32_t level, const q5_WCHAR* text) override;
    std::int32_t GetSettingInt(std::int32_t scope, const char* key,
                               std::int32_t defaultValue) override;
    void SetSettingInt(std::int32_t scope, const char* key, std::int32_t value) override;
    void ShowHelp(const char* topic, std::int32_t zero, void* messageArgument) override;
    void LocalizeDialog(std::uint64_t table, q5_HWND dialog, std::intptr_t initArgument) override;
    q5_PROPERTYSHEET* CreatePropertySheet(q5_HWND parent, std::int32_t zero) override;
    bool ResolveFileName(const q5_WCHAR* name, q5_WCHAR* out, std::int32_t outSize,
                         q5_FILETIME* time) override;
    bool GetFolder(std::int32_t kind, q5_WCHAR* out, std::int32_t size) override;
    const q5_WCHAR* GetPluginFolder() override;
    q5_PLUGINRECORD* FindPluginRecord(q5_HINSTANCE module) override;
    void ReportTitledMessage(std::int32_t level, const q5_WCHAR* title,
                             const q5_WCHAR* text) override;
    void ReportError(Q5RESULT code) override;
    q5_HINSTANCE GetResourceModule(q5_HINSTANCE module, std::int32_t kind) override;
    std::int32_t SetIcons(q5_HICON small, q5_HICON large, std::int32_t index) override;
    q5_PLUGINRECORD* GetPluginRecord(std::int64_t index) override;
    q5_COLLECTION* GetPlacementCollection() override;

    // 16-bit text as UTF-8; null gives an empty text.
    static std::string Utf8(const q5_WCHAR* text);

private:
    void Emit(std::int32_t level, const std::string& text);
    HostPlugin* RecordOf(q5_HINSTANCE module);

    IniSettings& settings_;
    PluginModule* module_ = nullptr;
    MessageSink sink_;
    std::string program_ = "tessera-render";
    std::string programFolder_;
    std::u16string pluginFolder_;
    std::vector<Registration> registrations_;
    std::vector<std::unique_ptr<HostPlugin>> records_;
    std::vector<std::pair<q5_HICON, q5_HICON>> icons_;
    q5_COLLECTION* placement_ = nullptr;
    std::vector<std::pair<std::string, std::int32_t>> overrides_;
    q5plat::SheetScript sheetScript_;
    std::int32_t errors_ = 0;
    bool settingsWritten_ = false;
};

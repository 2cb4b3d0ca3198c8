// A host API object for tests: it records every call and answers from tables a test fills in.
#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "core/services/host_link.h"
#include "plugin/gapi.h"

class RecordingHost final : public q5_GAPI {
public:
    template <typename Text> struct Report {
        std::int32_t level;
        Text text;
    };
    struct StringRequest {
        std::uint64_t table;
        std::int32_t id;
    };
    struct DriverRegistration {
        q5_HINSTANCE module;
        std::string name;
        std::uint32_t flags;
        std::u16string displayName;
    };
    struct SettingCall {
        std::int32_t scope;
        std::string key;
        std::int32_t value; // the default on a read, the value on a write
    };
    struct HelpCall {
        std::string topic;
        std::int32_t zero;
        void* messageArgument;
    };
    struct DialogLocalization {
        std::uint64_t table;
        q5_HWND dialog;
        std::intptr_t initArgument;
    };
    struct SheetRequest {
        q5_HWND parent;
        std::int32_t zero;
    };

    // Answers: LGetString looks up `strings` by id (any table) and gives "$$$$$$" when absent.
    std::map<std::int32_t, std::u16string> strings;
    std::map<std::pair<std::int32_t, std::string>, std::int32_t> settings;
    std::uint64_t stringTableHandle = 1;
    DRIVER3D* driverToCreate = nullptr;
    // When set, answers CreateDriverByName instead of driverToCreate.
    std::function<DRIVER3D*(const std::string&)> createDriver;
    q5_PROPERTYSHEET* sheetToCreate = nullptr;
    // ResolveFileName answers from `resolvedNames` (name -> file, time); GetFolder from
    // `folders` by kind; FindPluginRecord from `pluginRecords` by module.
    std::map<std::u16string, std::pair<std::u16string, q5_FILETIME>> resolvedNames;
    std::map<std::int32_t, std::u16string> folders;
    const q5_WCHAR* pluginFolder = nullptr;
    std::map<q5_HINSTANCE, q5_PLUGINRECORD*> pluginRecords;

    // Calls, in the order they arrived.
    std::vector<q5_HINSTANCE> openedTables;
    std::vector<StringRequest> stringRequests;
    std::vector<DriverRegistration> registrations;
    std::vector<std::string> driverRequests;
    std::vector<Report<std::string>> narrowReports;
    std::vector<Report<std::u16string>> wideReports;
    std::vector<SettingCall> settingReads;
    std::vector<SettingCall> settingWrites;
    std::vector<HelpCall> helpCalls;
    std::vector<DialogLocalization> localizedDialogs;
    std::vector<SheetRequest> sheetRequests;
    std::vector<std::u16string> resolveRequests;
    struct TitledReport {
        std::int32_t level;
        std::u16string title;
        std::u16string text;
    };
    std::vector<TitledReport> titledReports;
    std::vector<Q5RESULT> errorCodes;

    std::uint64_t OpenStringTable(q5_HINSTANCE module) override {
        openedTables.push_back(module);
        return stringTableHandle;
    }
    const q5_WCHAR* LGetString(std::uint64_t table, std::int32_t id) override {
        stringRequests.push_back({table, id});
        const auto found = strings.find(id);
        return found != strings.end() ? found->second.c_str() : u"$$$$$$";
    }
    void RegisterDriver(q5_HINSTANCE module, const char* name, std::uint32_t flags,
                        const q5_WCHAR* displayName) override {
        registrations.push_back({module, Text(name), flags, Text(displayName)});
    }
    DRIVER3D* CreateDriverByName(const char* name) override {
        driverRequests.push_back(Text(name));
        return createDriver ? createDriver(Text(name)) : driverToCreate;
    }
    void ReportMessageA(std::int32_t level, const char* text) override {
        narrowReports.push_back({level, Text(text)});
    }
    void ReportMessage(std::int32_t level, const q5_WCHAR* text) override {
        wideReports.push_back({level, Text(text)});
    }
    std::int32_t GetSettingInt(std::int32_t scope, const char* key,
                               std::int32_t defaultValue) override {
        settingReads.push_back({scope, Text(key), defaultValue});
        const auto found = settings.find({scope, Text(key)});
        return found != settings.end() ? found->second : defaultValue;
    }
    void SetSettingInt(std::int32_t scope, const char* key, std::int32_t value) override {
        settingWrites.push_back({scope, Text(key), value});
        settings[{scope, Text(key)}] = value;
    }
    void ShowHelp(const char* topic, std::int32_t zero, void* messageArgument) override {
        helpCalls.push_back({Text(topic), zero, messageArgument});
    }
    void LocalizeDialog(std::uint64_t table, q5_HWND dialog, std::intptr_t initArgument) override {
        localizedDialogs.push_back({table, dialog, initArgument});
    }
    q5_PROPERTYSHEET* CreatePropertySheet(q5_HWND parent, std::int32_t zero) override {
        sheetRequests.push_back({parent, zero});
        return sheetToCreate;
    }

    bool ResolveFileName(const q5_WCHAR* name, q5_WCHAR* out, std::int32_t outSize,
                         q5_FILETIME* time) override {
        resolveRequests.push_back(Text(name));
        const auto found = resolvedNames.find(Text(name));
        if (found == resolvedNames.end() || outSize < 1) return false;
        const std::u16string file = found->second.first.substr(0, outSize - 1);
        std::copy(file.begin(), file.end(), out);
        out[file.size()] = 0;
        if (time != nullptr) *time = found->second.second;
        return true;
    }
    bool GetFolder(std::int32_t kind, q5_WCHAR* out, std::int32_t size) override {
        const auto found = folders.find(kind);
        if (found == folders.end() || size < 1) return false;
        const std::u16string folder = found->second.substr(0, size - 1);
        std::copy(folder.begin(), folder.end(), out);
        out[folder.size()] = 0;
        return true;
    }
    const q5_WCHAR* GetPluginFolder() override { return pluginFolder; }
    q5_PLUGINRECORD* FindPluginRecord(q5_HINSTANCE module) override {
        const auto found = pluginRecords.find(module);
        return found != pluginRecords.end() ? found->second : nullptr;
    }
    void ReportTitledMessage(std::int32_t level, const q5_WCHAR* title,
                             const q5_WCHAR* text) override {
        titledReports.push_back({level, Text(title), Text(text)});
    }
    void ReportError(Q5RESULT code) override { errorCodes.push_back(code); }

private:
    // A null text is recorded as empty.
    static std::string Text(const char* s) { return s != nullptr ? s : ""; }
    static std::u16string Text(const q5_WCHAR* s) { return s != nullptr ? s : u""; }
};

// Makes a host current for the core library while in scope and restores the previous one.
class ScopedHostAPI {
public:
    explicit ScopedHostAPI(q5_GAPI* host) : previous_(q5GetHostAPI()) { q5SetHostAPI(host); }
    ~ScopedHostAPI() { q5SetHostAPI(previous_); }
    ScopedHostAPI(const ScopedHostAPI&) = delete;
    ScopedHostAPI& operator=(const ScopedHostAPI&) = delete;

private:
    q5_GAPI* previous_;
};

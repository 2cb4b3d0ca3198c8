// A host API object for tests: it records the calls tests look at and answers from tables a
// test fills in.
#pragma once

#include <algorithm>
#include <functional>
#include <map>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "core/containers/collection.h"
#include "core/platform/icon.h"
#include "core/services/host_link.h"
#include "interface/gapi.h"

class RecordingHost final : public q5_GAPI {
public:
    template <typename Text> struct Report {
        std::int32_t level;
        Text text;
        friend bool operator==(const Report&, const Report&) = default;
    };
    struct StringRequest {
        std::uint64_t table;
        std::int32_t id;
        friend bool operator==(const StringRequest&, const StringRequest&) = default;
    };
    struct TitledReport {
        std::int32_t level;
        std::u16string title, text;
    };
    // Module, name, flags and display name.
    using DriverRegistration = std::tuple<q5_HINSTANCE, std::string, std::uint32_t, std::u16string>;

    // Answers, by id in any table, by (scope, key), by name, kind or module. CreateDriverByName
    // asks `createDriver` when set, else gives `driverToCreate`.
    std::map<std::int32_t, std::u16string> strings;
    std::map<std::pair<std::int32_t, std::string>, std::int32_t> settings;
    std::uint64_t stringTableHandle = 1;
    DRIVER3D* driverToCreate = nullptr;
    std::function<DRIVER3D*(const std::string&)> createDriver;
    std::function<q5_PROPERTYSHEET*(q5_HWND parent)> createSheet; // unset: no sheets
    std::map<std::u16string, std::pair<std::u16string, q5_FILETIME>> resolvedNames;
    std::map<std::int32_t, std::u16string> folders;
    std::map<q5_HINSTANCE, q5_PLUGINRECORD*> pluginRecords;
    std::map<q5_HINSTANCE, q5_HINSTANCE> resourceModules; // a module not listed is its own
    std::vector<q5_PLUGINRECORD*> pluginList;             // what GetPluginRecord walks
    // The host's icon list: copies of the icons given to SetIcons.
    std::vector<std::pair<q5_HICON, q5_HICON>> icons;

    // Calls, in the order they arrived.
    std::vector<q5_HINSTANCE> openedTables;
    std::vector<StringRequest> stringRequests;
    std::vector<DriverRegistration> registrations;
    std::vector<std::string> driverRequests;
    std::vector<Report<std::string>> narrowReports;
    std::vector<Report<std::u16string>> wideReports;
    std::vector<TitledReport> titledReports;
    std::vector<Q5RESULT> errorCodes;
    std::vector<std::int32_t> setIconIndices;
    std::vector<std::tuple<std::string, std::int32_t, void*>> helpRequests;

    RecordingHost() = default;
    RecordingHost(const RecordingHost&) = delete;
    RecordingHost& operator=(const RecordingHost&) = delete;
    ~RecordingHost() {
        for (auto& [small, large] : icons) {
            q5plat::DestroyIcon(small);
            q5plat::DestroyIcon(large);
        }
        if (placement_ != nullptr) placement_->Release();
    }

    std::uint64_t OpenStringTable(q5_HINSTANCE module) override {
        openedTables.push_back(module);
        return stringTableHandle;
    }
    const q5_WCHAR* LGetString(std::uint64_t table, std::int32_t id) override {
        stringRequests.push_back({table, id});
        return strings.contains(id) ? strings[id].c_str() : u"$$$$$$";
    }
    void RegisterDriver(q5_HINSTANCE module, const char* name, std::uint32_t flags,
                        const q5_WCHAR* displayName) override {
        registrations.emplace_back(module, Text(name), flags, Text(displayName));
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
                               std::int32_t fallback) override {
        return settings.contains({scope, key}) ? settings[{scope, key}] : fallback;
    }
    void SetSettingInt(std::int32_t scope, const char* key, std::int32_t value) override {
        settings[{scope, key}] = value;
    }
    void ShowHelp(const char* topic, std::int32_t zero, void* argument) override {
        helpRequests.emplace_back(Text(topic), zero, argument);
    }
    void LocalizeDialog(std::uint64_t, q5_HWND, std::intptr_t) override {}
    q5_PROPERTYSHEET* CreatePropertySheet(q5_HWND parent, std::int32_t) override {
        return createSheet ? createSheet(parent) : nullptr;
    }

    bool ResolveFileName(const q5_WCHAR* name, q5_WCHAR* out, std::int32_t outSize,
                         q5_FILETIME* time) override {
        const std::u16string key = Text(name);
        if (!resolvedNames.contains(key) || !CopyOut(resolvedNames[key].first, out, outSize))
            return false;
        if (time != nullptr) *time = resolvedNames[key].second;
        return true;
    }
    bool GetFolder(std::int32_t kind, q5_WCHAR* out, std::int32_t size) override {
        return folders.contains(kind) && CopyOut(folders[kind], out, size);
    }
    const q5_WCHAR* GetPluginFolder() override { return nullptr; }
    q5_PLUGINRECORD* FindPluginRecord(q5_HINSTANCE module) override {
        return pluginRecords.contains(module) ? pluginRecords[module] : nullptr;
    }
    void ReportTitledMessage(std::int32_t level, const q5_WCHAR* title,
                             const q5_WCHAR* text) override {
        titledReports.push_back({level, Text(title), Text(text)});
    }
    void ReportError(Q5RESULT code) override { errorCodes.push_back(code); }
    q5_HINSTANCE GetResourceModule(q5_HINSTANCE module, std::int32_t) override {
        return resourceModules.contains(module) ? resourceModules[module] : module;
    }
    std::int32_t SetIcons(q5_HICON small, q5_HICON large, std::int32_t index) override {
        setIconIndices.push_back(index);
        const std::pair<q5_HICON, q5_HICON> copies{q5plat::CopyIcon(small),
                                                   q5plat::CopyIcon(large)};
        if (index < 0) {
            icons.push_back(copies);
            return static_cast<std::int32_t>(icons.size() - 1);
        }
        if (static_cast<std::size_t>(index) >= icons.size()) return -1;
        q5plat::DestroyIcon(icons[index].first);
        q5plat::DestroyIcon(icons[index].second);
        icons[index] = copies;
        return index;
    }
    q5_PLUGINRECORD* GetPluginRecord(std::int64_t index) override {
        return index >= 0 && static_cast<std::size_t>(index) < pluginList.size() ? pluginList[index]
                                                                                 : nullptr;
    }
    q5_COLLECTION* GetPlacementCollection() override {
        if (placement_ == nullptr) placement_ = q5_COLLECTION::Create(16, 16);
        if (placement_ != nullptr) placement_->DeleteAll();
        return placement_;
    }

private:
    q5_COLLECTION* placement_ = nullptr;

    // Copies as much of `text` as fits, with a terminator; false when nothing fits.
    static bool CopyOut(const std::u16string& text, q5_WCHAR* out, std::int32_t size) {
        if (size < 1) return false;
        *std::copy_n(text.begin(), std::min<std::size_t>(text.size(), size - 1), out) = 0;
        return true;
    }
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

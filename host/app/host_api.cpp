// The reference host's API object.
#include "host/app/host_api.h"

#include <cstdio>

#include "core/containers/collection.h"
#include "core/language/language_table.h"
#include "core/platform/dialog_controls.h"
#include "core/platform/icon.h"
#include "core/services/host_link.h"
#include "core/services/text_convert.h"
#include "host/app/host_plugin.h"
#include "host/app/host_property_sheet.h"
#include "host/app/plugin_module.h"
#include "interface/driver.h"

namespace {

void DestroyIcons(const std::pair<q5_HICON, q5_HICON>& icons) {
    q5plat::DestroyIcon(icons.first);
    q5plat::DestroyIcon(icons.second);
}

bool CopyOut(const std::u16string& text, q5_WCHAR* out, std::int32_t size) {
    if (out == nullptr || size < 1 || text.size() >= static_cast<std::size_t>(size)) return false;
    text.copy(out, text.size());
    out[text.size()] = 0;
    return true;
}

const char* LevelName(std::int32_t level) {
    switch (level) {
    case kReportInfo:
        return "info";
    case kReportError:
        return "error";
    default:
        return "warning";
    }
}

} // namespace

HostAPI::HostAPI(IniSettings& settings) : settings_(settings) {
    q5SetHostAPI(this);
}

HostAPI::~HostAPI() {
    // Plug-ins go first: they take their handlers out of the registry.
    records_.clear();
    for (const auto& pair : icons_) DestroyIcons(pair);
    if (placement_ != nullptr) placement_->Release();
    if (q5GetHostAPI() == this) q5SetHostAPI(nullptr);
}

bool HostAPI::LoadLanguage(const std::string& folder) {
    std::string withSeparator = folder;
    if (!withSeparator.empty() && withSeparator.back() != '/' && withSeparator.back() != '\\')
        withSeparator += '/';
    return InitLanguage(nullptr, Utf8ToWide(withSeparator).c_str(), u"ENG", u"Tessera");
}

HostPlugin* HostAPI::AddPlugin(const std::u16string& path, const std::u16string& name,
                               const std::u16string& idText) {
    records_.push_back(std::make_unique<HostPlugin>(*this, path, name, idText));
    return records_.back().get();
}

std::string HostAPI::Utf8(const q5_WCHAR* text) {
    return WideToUtf8(text);
}

void HostAPI::Emit(std::int32_t level, const std::string& text) {
    if (level == kReportError) ++errors_;
    if (sink_) {
        sink_(level, text);
        return;
    }
    std::fprintf(stderr, "%s: %s: %s\n", program_.c_str(), LevelName(level), text.c_str());
}

HostPlugin* HostAPI::RecordOf(q5_HINSTANCE module) {
    // Format plug-ins not loaded yet have no module.
    if (module == nullptr) return nullptr;
    for (auto& r : records_)
        if (r->Module() == module) return r.get();
    return nullptr;
}

std::uint64_t HostAPI::OpenStringTable(q5_HINSTANCE module) {
    if (module == nullptr) return 0;
    if (RecordOf(module) == nullptr) {
        std::u16string name = u"module";
        if (module_ != nullptr && module_->Handle() == module) name = Utf8ToWide(module_->Path());
        // The file name alone stays the same wherever the program is installed.
        const std::size_t cut = name.find_last_of(u"/\\");
        std::u16string idText = cut == std::u16string::npos ? name : name.substr(cut + 1);
        records_.push_back(
            std::make_unique<HostPlugin>(module, std::move(name), std::move(idText)));
    }
    return q5OpenStringTable(module);
}

const q5_WCHAR* HostAPI::LGetString(std::uint64_t table, std::int32_t id) {
    return q5LGetString(table, id);
}

void HostAPI::RegisterDriver(q5_HINSTANCE, const char* name, std::uint32_t flags,
                             const q5_WCHAR* displayName) {
    registrations_.push_back(
        {name != nullptr ? name : "", flags, displayName != nullptr ? displayName : u""});
}

DRIVER3D* HostAPI::CreateDriverByName(const char* name) {
    if (module_ == nullptr || name == nullptr) return nullptr;
    return reinterpret_cast<DRIVER3D*>(
        module_->Send(PLUGIN_MSG_CREATE, reinterpret_cast<std::intptr_t>(name)));
}

void HostAPI::ReportMessageA(std::int32_t level, const char* text) {
    Emit(level, text != nullptr ? text : "");
}

void HostAPI::ReportMessage(std::int32_t level, const q5_WCHAR* text) {
    Emit(level, Utf8(text));
}

void HostAPI::OverrideSetting(const std::string& key, std::int32_t value) {
    for (auto& o : overrides_)
        if (o.first == key) {
            o.second = value;
            return;
        }
    overrides_.emplace_back(key, value);
}

std::int32_t HostAPI::GetSettingInt(std::int32_t, const char* key, std::int32_t defaultValue) {
    if (key == nullptr) return defaultValue;
    for (const auto& o : overrides_)
        if (o.first == key) return o.second;
    return settings_.GetInt(key, defaultValue);
}

void HostAPI::SetSettingInt(std::int32_t, const char* key, std::int32_t value) {
    if (key == nullptr) return;
    settings_.SetInt(key, value);
    settingsWritten_ = true;
}

// A command-line host has no help viewer: it names the topic.
void HostAPI::ShowHelp(const char* topic, std::int32_t, void*) {
    std::printf("%s: help: %s\n", program_.c_str(), topic != nullptr ? topic : "");
    std::fflush(stdout);
}

void HostAPI::LocalizeDialog(std::uint64_t table, q5_HWND dialog, std::intptr_t) {
    for (const q5plat::ControlState& control : q5plat::ListDialogControls(dialog)) {
        const std::u16string& text = control.text;
        if (text.size() < 2 || text[0] != u'#' ||
            text.find_first_not_of(u"0123456789", 1) != std::u16string::npos || text.size() > 10)
            continue;
        std::int32_t id = 0;
        for (std::size_t i = 1; i < text.size(); ++i) id = id * 10 + (text[i] - u'0');
        q5plat::SetDlgItemText(dialog, control.id, LGetString(table, id));
    }
}

q5_PROPERTYSHEET* HostAPI::CreatePropertySheet(q5_HWND parent, std::int32_t) {
    return new HostPropertySheet(parent, sheetScript_ ? &sheetScript_ : nullptr);
}

bool HostAPI::ResolveFileName(const q5_WCHAR*, q5_WCHAR*, std::int32_t, q5_FILETIME*) {
    return false;
}

bool HostAPI::GetFolder(std::int32_t kind, q5_WCHAR* out, std::int32_t size) {
    constexpr std::int32_t kApplicationFolder = 1;
    if (kind != kApplicationFolder || programFolder_.empty()) return false;
    return CopyOut(Utf8ToWide(programFolder_), out, size);
}

const q5_WCHAR* HostAPI::GetPluginFolder() {
    if (module_ == nullptr) return nullptr;
    const std::string& path = module_->Path();
    const auto cut = path.find_last_of("/\\");
    pluginFolder_ = Utf8ToWide(cut == std::string::npos ? std::string(".") : path.substr(0, cut));
    return pluginFolder_.c_str();
}

q5_PLUGINRECORD* HostAPI::FindPluginRecord(q5_HINSTANCE module) {
    return RecordOf(module);
}

void HostAPI::ReportTitledMessage(std::int32_t level, const q5_WCHAR* title, const q5_WCHAR* text) {
    Emit(level, Utf8(title) + ": " + Utf8(text));
}

void HostAPI::ReportError(Q5RESULT code) {
    Emit(kReportError, "operation failed (code " + std::to_string(code) + ")");
}

q5_HINSTANCE HostAPI::GetResourceModule(q5_HINSTANCE module, std::int32_t) {
    return module;
}

std::int32_t HostAPI::SetIcons(q5_HICON small, q5_HICON large, std::int32_t index) {
    const std::pair<q5_HICON, q5_HICON> copies{q5plat::CopyIcon(small), q5plat::CopyIcon(large)};
    if (index < 0) {
        icons_.push_back(copies);
        return static_cast<std::int32_t>(icons_.size() - 1);
    }
    if (static_cast<std::size_t>(index) >= icons_.size()) {
        DestroyIcons(copies);
        return -1;
    }
    DestroyIcons(icons_[index]);
    icons_[index] = copies;
    return index;
}

q5_PLUGINRECORD* HostAPI::GetPluginRecord(std::int64_t index) {
    if (index < 0 || static_cast<std::size_t>(index) >= records_.size()) return nullptr;
    return records_[static_cast<std::size_t>(index)].get();
}

q5_COLLECTION* HostAPI::GetPlacementCollection() {
    if (placement_ == nullptr) placement_ = q5_COLLECTION::Create(16, 16);
    if (placement_ != nullptr) placement_->DeleteAll();
    return placement_;
}

// The reference host's plug-in records.
#include "host/app/host_plugin.h"

#include "core/containers/collection.h"
#include "core/filetype/file_type.h"
#include "core/language/language_table.h"
#include "core/services/library.h"
#include "core/services/text_convert.h"
#include "interface/gapi.h"
#include "interface/plugin_entry.h"

namespace {

constexpr std::uint32_t kStateLoaded = 1;
constexpr std::uint64_t kInitAccepted = 5;

std::string Utf8(const std::u16string& text) {
    return WideToUtf8(text.c_str());
}

bool IsAbsolute(const std::u16string& path) {
    return (!path.empty() && (path[0] == u'/' || path[0] == u'\\')) ||
           (path.size() > 2 && path[1] == u':' && (path[2] == u'\\' || path[2] == u'/'));
}

} // namespace

HostPlugin::HostPlugin(q5_HINSTANCE module, std::u16string name, std::u16string idText)
    : module_(module), name_(std::move(name)), idText_(std::move(idText)), state_(kStateLoaded) {}

HostPlugin::HostPlugin(q5_GAPI& host, std::u16string path, std::u16string name,
                       std::u16string idText)
    : host_(&host), path_(std::move(path)), name_(std::move(name)), idText_(std::move(idText)) {}

HostPlugin::~HostPlugin() {
    delete table_;
    if (!ownsModule_) return;
    // The module's handlers and signature texts go with it.
    if (q5_COLLECTION* types = host_->GetFileTypes()) {
        for (std::int64_t i = 0; i < types->Count(); ++i) {
            auto* type = static_cast<FILETYPE*>(types->At(i));
            if (type->plugin != this) continue;
            type->handler = nullptr;
            type->signature = nullptr;
            type->plugin = nullptr;
            type->state &= ~kFileTypeEnabled;
        }
    }
    if (auto entry = reinterpret_cast<q5_DLLFUNC>(q5_GetProcAddress(module_, "Q5DLLFunc")))
        entry(PLUGIN_MSG_SHUTDOWN, 0, 0, 0);
    q5_FreeLibrary(module_);
}

void HostPlugin::SetLanguageTable(q5_LANGUAGETABLE* table) {
    if (table != table_) delete table_;
    table_ = table;
}

void HostPlugin::SetEnabled(bool enabled) {
    flags_ = enabled ? flags_ | kPluginEnabled : flags_ & ~kPluginEnabled;
}

void HostPlugin::SetHidden(bool hidden) {
    flags_ = hidden ? flags_ | kPluginHidden : flags_ & ~kPluginHidden;
}

bool HostPlugin::IsUsable() {
    return (flags_ & kPluginEnabled) != 0 && state_ != kPluginStateFailed;
}

void HostPlugin::Fail(const std::string& why) {
    state_ = kPluginStateFailed;
    error_ = why;
    if (host_ != nullptr) host_->ReportMessageA(kReportError, why.c_str());
}

bool HostPlugin::Load() {
    if (module_ != nullptr) return true;
    if (host_ == nullptr || state_ == kPluginStateFailed) return false;
    const std::string shown = Utf8(path_);
    q5_HINSTANCE module = q5_LoadLibrary(path_.c_str(), IsAbsolute(path_));
    if (module == nullptr) {
        Fail("cannot load the plug-in " + shown);
        return false;
    }
    auto entry = reinterpret_cast<q5_DLLFUNC>(q5_GetProcAddress(module, "Q5DLLFunc"));
    if (entry == nullptr) {
        q5_FreeLibrary(module);
        Fail(shown + " is not a plug-in (it has no Q5DLLFunc)");
        return false;
    }
    // Set first: the plug-in asks for its own record while it registers.
    module_ = module;
    ownsModule_ = true;
    q5_COLLECTION* types = host_->GetFileTypes();
    const std::int64_t before = types != nullptr ? types->Count() : 0;
    const std::uint64_t answer = entry(PLUGIN_MSG_INIT, reinterpret_cast<std::intptr_t>(host_),
                                       reinterpret_cast<std::uintptr_t>(module), 0);
    for (std::int64_t i = before; types != nullptr && i < types->Count(); ++i)
        static_cast<FILETYPE*>(types->At(i))->plugin = this;
    if (answer != kInitAccepted) {
        Fail(shown + " refused to initialise");
        return false;
    }
    state_ = kStateLoaded;
    error_.clear();
    return true;
}

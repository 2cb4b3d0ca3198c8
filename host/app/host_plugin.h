// The reference host's record of a plug-in module: its names, the user's enable choice, its
// string table, and for format plug-ins the loading of the module on first use.
#pragma once

#include <string>

#include "interface/plugin_record.h"

class q5_GAPI;

class HostPlugin final : public q5_PLUGINRECORD {
public:
    // A module the host loaded itself (the render driver): loaded from the start.
    HostPlugin(q5_HINSTANCE module, std::u16string name, std::u16string idText);
    // A format plug-in at `path`, loaded by Load with `host` as its host.
    HostPlugin(q5_GAPI& host, std::u16string path, std::u16string name, std::u16string idText);
    HostPlugin(const HostPlugin&) = delete;
    HostPlugin& operator=(const HostPlugin&) = delete;
    // Sends a loaded format plug-in its shutdown and frees it.
    ~HostPlugin();

    q5_LANGUAGETABLE* GetLanguageTable() override { return table_; }
    void SetLanguageTable(q5_LANGUAGETABLE* table) override;
    const q5_WCHAR* GetName() override { return name_.c_str(); }
    const q5_WCHAR* GetIdText() override { return idText_.c_str(); }
    std::uint32_t GetFlags() override { return flags_; }
    void SetEnabled(bool enabled) override;
    std::uint32_t GetState() override { return state_; }
    bool IsUsable() override;
    // Loads the module, resolves Q5DLLFunc and sends it the init message, during which the
    // plug-in registers its formats; those types are then marked as this plug-in's. A failure
    // is reported once and not tried again.
    bool Load() override;

    void SetHidden(bool hidden);
    q5_HINSTANCE Module() const { return module_; }
    // Why the last Load failed; empty after a success.
    const std::string& Error() const { return error_; }

private:
    void Fail(const std::string& why);

    q5_GAPI* host_ = nullptr;
    q5_HINSTANCE module_ = nullptr;
    bool ownsModule_ = false;
    std::u16string path_;
    std::u16string name_;
    std::u16string idText_;
    std::uint32_t flags_ = kPluginEnabled;
    std::uint32_t state_ = 0;
    std::string error_;
    q5_LANGUAGETABLE* table_ = nullptr;
};

// A plug-in module loaded at run time and spoken to only through its Q5DLLFunc entry point.
#pragma once

#include <cstdint>
#include <string>

#include "interface/plugin_entry.h"
#include "interface/types.h"

class q5_GAPI;

class PluginModule {
public:
    PluginModule() = default;
    PluginModule(const PluginModule&) = delete;
    PluginModule& operator=(const PluginModule&) = delete;
    ~PluginModule() { Unload(); }

    // Loads the module and finds its entry point; on failure Error() says why.
    bool Load(const std::string& path);
    // Sends the init message with the host and the module handle; true when it answered 5.
    bool Init(q5_GAPI* host);
    // Sends shutdown (after a successful init) and frees the module.
    void Unload();

    std::uint64_t Send(std::uint64_t message, std::int64_t a = 0, std::uint64_t b = 0,
                       std::uint64_t c = 0) const;
    bool Loaded() const { return entry_ != nullptr; }
    q5_HINSTANCE Handle() const { return handle_; }
    const std::string& Path() const { return path_; }
    const std::string& Error() const { return error_; }

    // The module's file name in `folder`, as the build places it beside every program.
    static std::string DefaultPath(const std::string& folder);
    // The folder of the running program, where the build places the module; "." when unknown.
    static std::string ProgramFolder();

private:
    q5_HINSTANCE handle_ = nullptr;
    q5_DLLFUNC entry_ = nullptr;
    bool initialised_ = false;
    std::string path_;
    std::string error_;
};

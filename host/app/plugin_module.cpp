// Loading, initialising and unloading the render-driver module.
#include "host/app/plugin_module.h"

#include <filesystem>

#include "core/platform/module.h"

namespace {

// The answer of a module that accepted the init message.
constexpr std::uint64_t kInitAccepted = 5;

} // namespace

bool PluginModule::Load(const std::string& path) {
    Unload();
    path_ = path;
    handle_ = q5plat::LoadLibraryA(path.c_str(), q5plat::kLoadAlteredSearchPath);
    if (handle_ == nullptr) {
        error_ = "cannot load the driver module " + path;
        return false;
    }
    entry_ = reinterpret_cast<q5_DLLFUNC>(q5plat::GetProcAddress(handle_, "Q5DLLFunc"));
    if (entry_ == nullptr) {
        error_ = path + " is not a driver module (it has no Q5DLLFunc)";
        q5plat::FreeLibrary(handle_);
        handle_ = nullptr;
        return false;
    }
    error_.clear();
    return true;
}

bool PluginModule::Init(q5_GAPI* host) {
    if (entry_ == nullptr) return false;
    const std::uint64_t answer = Send(PLUGIN_MSG_INIT, reinterpret_cast<std::intptr_t>(host),
                                      reinterpret_cast<std::uintptr_t>(handle_));
    initialised_ = answer == kInitAccepted;
    if (!initialised_) error_ = path_ + " refused to initialise";
    return initialised_;
}

void PluginModule::Unload() {
    if (entry_ != nullptr && initialised_) Send(PLUGIN_MSG_SHUTDOWN);
    if (handle_ != nullptr) q5plat::FreeLibrary(handle_);
    handle_ = nullptr;
    entry_ = nullptr;
    initialised_ = false;
}

std::uint64_t PluginModule::Send(std::uint64_t message, std::int64_t a, std::uint64_t b,
                                 std::uint64_t c) const {
    return entry_ != nullptr ? entry_(message, a, b, c) : 0;
}

std::string PluginModule::DefaultPath(const std::string& folder) {
#if defined(_WIN32)
    const char* file = "tessera_zb.dll";
#else
    const char* file = "tessera_zb.so";
#endif
    if (folder.empty()) return file;
    const char last = folder.back();
    return last == '/' || last == '\\' ? folder + file : folder + "/" + file;
}

std::string PluginModule::ProgramFolder() {
    char path[4096];
    if (q5plat::GetProgramFileNameA(path, sizeof path) == 0) return ".";
    return std::filesystem::path(path).parent_path().string();
}

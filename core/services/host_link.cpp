// Holds the links the library's user gives it at init.
#include "core/services/host_link.h"

#include "core/platform/module.h"

namespace {
q5_GAPI* g_host = nullptr;
q5_HINSTANCE g_module = nullptr;
} // namespace

q5_GAPI* q5GetHostAPI() {
    return g_host;
}
void q5SetHostAPI(q5_GAPI* host) {
    g_host = host;
}

q5_HINSTANCE q5GetLibraryModule() {
    return g_module != nullptr ? g_module : q5plat::OwnModule();
}
void q5SetLibraryModule(q5_HINSTANCE module) {
    g_module = module;
}

// Holds the host API object for the whole module.
#include "core/services/host_link.h"

namespace {
q5_GAPI* g_host = nullptr;
}

q5_GAPI* q5GetHostAPI() {
    return g_host;
}
void q5SetHostAPI(q5_GAPI* host) {
    g_host = host;
}

// The links from the core library to its user, given at init: the host API object and the
// module whose resources hold the library's own tables.
#pragma once

#include "interface/types.h"

class q5_GAPI;

// Null until the host's init message; reports made before then are dropped.
q5_GAPI* q5GetHostAPI();
void q5SetHostAPI(q5_GAPI* host);

// The module that carries the library; until set, the module this code was linked into.
q5_HINSTANCE q5GetLibraryModule();
void q5SetLibraryModule(q5_HINSTANCE module);

// The one link from the core library to its user: the host API object given at init.
#pragma once

class q5_GAPI;

// Null until the host's init message; reports made before then are dropped.
q5_GAPI* q5GetHostAPI();
void q5SetHostAPI(q5_GAPI* host);

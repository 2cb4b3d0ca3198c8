// The process-wide state of the plug-in frame, written by the init and shutdown messages.
#pragma once

#include "zbuffer/driver_module.h"

// The host API object lives in core/services/host_link.h, shared with the core library.
DriverModule& Plugin();

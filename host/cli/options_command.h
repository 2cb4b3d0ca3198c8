// tessera-render --options: the driver's options page, shown to the user or scripted with
// --set, and the settings it saves.
#pragma once

#include <string>

#include "host/cli/options.h"

// The exit status: 0 when the page was applied or cancelled.
int RunOptionsPage(const CliOptions& options, const std::string& programFolder,
                   const char* program);

// The messages of a plug-in module's entry point Q5DLLFunc, as a host sends them.
#pragma once

#include "interface/types.h"

inline constexpr std::uint64_t PLUGIN_MSG_INIT = 0x1001;
inline constexpr std::uint64_t PLUGIN_MSG_SHUTDOWN = 0x1002;
inline constexpr std::uint64_t PLUGIN_MSG_INTERFACE_VERSION = 0x1010;
inline constexpr std::uint64_t PLUGIN_MSG_VERSION = 0x1020;
inline constexpr std::uint64_t PLUGIN_MSG_DESCRIPTION = 0x1021;
inline constexpr std::uint64_t PLUGIN_MSG_CREATE = 0x10002;

// Type of Q5DLLFunc as a host resolves it.
using q5_DLLFUNC = std::uint64_t (*)(std::uint64_t, std::int64_t, std::uint64_t, std::uint64_t);

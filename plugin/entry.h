// The module's one exported entry point and its messages.
#pragma once

#include "core/platform/types.h"

inline constexpr std::uint64_t PLUGIN_MSG_INIT = 0x1001;
inline constexpr std::uint64_t PLUGIN_MSG_SHUTDOWN = 0x1002;
inline constexpr std::uint64_t PLUGIN_MSG_INTERFACE_VERSION = 0x1010;
inline constexpr std::uint64_t PLUGIN_MSG_VERSION = 0x1020;
inline constexpr std::uint64_t PLUGIN_MSG_DESCRIPTION = 0x1021;
inline constexpr std::uint64_t PLUGIN_MSG_CREATE = 0x10002;

// Registration flag word of the driver; passed to the host unchanged.
inline constexpr std::uint32_t kDriverRegistrationFlags = 272;
inline constexpr const char16_t* kPluginVersion = u"9.0.0";

extern "C" Q5_MODULE_EXPORT std::uint64_t Q5DLLFunc(std::uint64_t message, std::int64_t a,
                                                    std::uint64_t b, std::uint64_t c);

// Type of Q5DLLFunc as a host resolves it.
using q5_DLLFUNC = std::uint64_t (*)(std::uint64_t, std::int64_t, std::uint64_t, std::uint64_t);

// The module's one exported entry point.
#pragma once

#include "interface/plugin_entry.h"

// Registration flag word of the driver; passed to the host unchanged.
inline constexpr std::uint32_t kDriverRegistrationFlags = 272;
inline constexpr const char16_t* kPluginVersion = u"9.0.0";

extern "C" Q5_MODULE_EXPORT std::uint64_t Q5DLLFunc(std::uint64_t message, std::int64_t a,
                                                    std::uint64_t b, std::uint64_t c);

// The cache behind q5_GAPI::RegisterICON: one icon index per format identifier, and the
// built-in icon that stands in for a missing resource.
#pragma once

#include "core/containers/guid.h"
#include "interface/types.h"

class q5_PLUGINRECORD;

// The localized text that starts the missing-icon message.
inline constexpr std::int32_t kMissingIconStringId = 66;

struct q5_ICONCACHEENTRY {
    q5_WCHAR* resourceName;   // a copy; null when the resource is an integer id
    std::uint16_t resourceId; // when resourceName is null
    q5_GUID id;
    std::int32_t index;      // in the host's icon list
    q5_PLUGINRECORD* plugin; // not owned
};

// A monochrome page with a folded corner, size x size (16 or 32); the caller destroys it.
q5_HICON q5CreateDefaultIcon(std::int32_t size);

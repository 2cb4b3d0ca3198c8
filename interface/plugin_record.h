// The host's record of a plug-in module, as the core library sees it: its string table, its
// names, the user's enable choice and the module's loading.
#pragma once

#include "interface/types.h"

class q5_LANGUAGETABLE;

// Bits of GetFlags.
inline constexpr std::uint32_t kPluginEnabled = 0x10; // the user lets the plug-in be used
inline constexpr std::uint32_t kPluginHidden = 0x20;  // not listed in the configuration file
// A GetState value: loading was tried and failed, so the plug-in is not tried again.
inline constexpr std::uint32_t kPluginStateFailed = 8;

// The table operation comes first: a string-table handle is the address of such a record.
class q5_PLUGINRECORD {
public:
    // The plug-in's own table, or null when it has none.
    virtual q5_LANGUAGETABLE* GetLanguageTable() = 0;
    virtual void SetLanguageTable(q5_LANGUAGETABLE* table) = 0;
    // Names the plug-in in messages; null or empty when it has no name.
    virtual const q5_WCHAR* GetName() = 0;
    // The text that identifies the plug-in in the configuration file, stable between runs.
    virtual const q5_WCHAR* GetIdText() = 0;
    virtual std::uint32_t GetFlags() = 0;
    // Sets or clears kPluginEnabled.
    virtual void SetEnabled(bool enabled) = 0;
    virtual std::uint32_t GetState() = 0;
    // True when the plug-in is enabled and has not failed to load.
    virtual bool IsUsable() = 0;
    // Makes the module's handlers available; true when they are.
    virtual bool Load() = 0;

protected:
    ~q5_PLUGINRECORD() = default;
};

// A host's plug-in record for tests: its names, flags and state are fields a test sets, and
// Load answers `loadable`, counting its calls.
#pragma once

#include <memory>
#include <string>
#include <utility>

#include "core/language/language_table.h"
#include "interface/plugin_record.h"

struct FakePluginRecord : q5_PLUGINRECORD {
    explicit FakePluginRecord(std::u16string n = u"", std::u16string id = u"")
        : name(std::move(n)), idText(std::move(id)) {}
    q5_LANGUAGETABLE* GetLanguageTable() override { return table.get(); }
    void SetLanguageTable(q5_LANGUAGETABLE* t) override { table.reset(t); }
    const q5_WCHAR* GetName() override { return name.c_str(); }
    const q5_WCHAR* GetIdText() override { return idText.c_str(); }
    std::uint32_t GetFlags() override { return flags; }
    void SetEnabled(bool enabled) override {
        flags = enabled ? flags | kPluginEnabled : flags & ~kPluginEnabled;
    }
    std::uint32_t GetState() override { return state; }
    bool IsUsable() override {
        return (flags & kPluginEnabled) != 0 && state != kPluginStateFailed;
    }
    bool Load() override {
        ++loads;
        return loadable;
    }
    std::uint64_t Handle() { return reinterpret_cast<std::uint64_t>(this); }

    std::u16string name, idText;
    std::uint32_t flags = kPluginEnabled;
    std::uint32_t state = 0;
    bool loadable = true;
    int loads = 0;
    std::unique_ptr<q5_LANGUAGETABLE> table;
};

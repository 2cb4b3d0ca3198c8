// The host's settings store: integer settings under backslash-separated keys, kept in an INI file.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// "Render\ZB\HQ" lives as "HQ=..." in section "[Render\ZB]". Keys and sections match without
// regard to ASCII case, as Windows profile files do.
class IniSettings {
public:
    // Reads a file; a missing file is an empty store. False when it exists but cannot be read.
    bool Load(const std::string& path);
    bool Save(const std::string& path) const;
    // Parses INI text, replacing what the store held.
    void Parse(const std::string& text);
    std::string Text() const;

    // The default when the key is absent or its value is not a decimal integer.
    std::int32_t GetInt(const std::string& key, std::int32_t defaultValue) const;
    void SetInt(const std::string& key, std::int32_t value);
    bool Changed() const { return changed_; }

private:
    struct Entry {
        std::string section;
        std::string name;
        std::string value;
    };
    Entry* Find(const std::string& section, const std::string& name);
    const Entry* Find(const std::string& section, const std::string& name) const;

    std::vector<Entry> entries_; // in file order, so a saved file keeps its layout
    bool changed_ = false;
};

// A settings file named on a command line must exist (an empty file starts a new one); a
// missing file is the user's mistake, an unreadable one is not. `error` says which.
enum class SettingsFileOutcome { Loaded, Missing, Unreadable };
SettingsFileOutcome LoadSettingsFile(const std::string& path, IniSettings& settings,
                                     std::string& error);

// INI parsing and writing for the host's settings store.
#include "host/app/ini_settings.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace {

bool SameNoCase(const std::string& a, const std::string& b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        char x = a[i], y = b[i];
        if (x >= 'A' && x <= 'Z') x = static_cast<char>(x - 'A' + 'a');
        if (y >= 'A' && y <= 'Z') y = static_cast<char>(y - 'A' + 'a');
        if (x != y) return false;
    }
    return true;
}

std::string Trim(const std::string& s) {
    const auto first = s.find_first_not_of(" \t\r");
    if (first == std::string::npos) return {};
    const auto last = s.find_last_not_of(" \t\r");
    return s.substr(first, last - first + 1);
}

// A key without a backslash lives in the unnamed section.
void SplitKey(const std::string& key, std::string& section, std::string& name) {
    const auto cut = key.rfind('\\');
    if (cut == std::string::npos) {
        section.clear();
        name = key;
    } else {
        section = key.substr(0, cut);
        name = key.substr(cut + 1);
    }
}

} // namespace

bool IniSettings::Load(const std::string& path) {
    std::error_code ignored;
    if (!std::filesystem::exists(path, ignored)) {
        Parse({});
        return true;
    }
    std::ifstream in(path, std::ios::binary);
    if (!in) return false;
    std::ostringstream text;
    text << in.rdbuf();
    Parse(text.str());
    return true;
}

bool IniSettings::Save(const std::string& path) const {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << Text();
    return static_cast<bool>(out.flush());
}

void IniSettings::Parse(const std::string& text) {
    entries_.clear();
    changed_ = false;
    std::istringstream in(text);
    std::string line, section;
    while (std::getline(in, line)) {
        line = Trim(line);
        if (line.empty() || line[0] == ';' || line[0] == '#') continue;
        if (line.front() == '[' && line.back() == ']') {
            section = Trim(line.substr(1, line.size() - 2));
            continue;
        }
        const auto eq = line.find('=');
        if (eq == std::string::npos) continue;
        const std::string name = Trim(line.substr(0, eq));
        const std::string value = Trim(line.substr(eq + 1));
        if (Entry* e = Find(section, name))
            e->value = value;
        else
            entries_.push_back({section, name, value});
    }
}

std::string IniSettings::Text() const {
    std::string out;
    // Keys outside any section must come first, or a reader puts them in the section above.
    std::vector<std::string> sections = {""};
    for (const Entry& e : entries_) {
        bool seen = false;
        for (const std::string& s : sections) seen = seen || SameNoCase(s, e.section);
        if (!seen) sections.push_back(e.section);
    }
    for (const std::string& s : sections) {
        std::string body;
        for (const Entry& e : entries_)
            if (SameNoCase(e.section, s)) body += e.name + "=" + e.value + "\n";
        if (body.empty()) continue;
        if (!out.empty()) out += "\n";
        if (!s.empty()) out += "[" + s + "]\n";
        out += body;
    }
    return out;
}

std::int32_t IniSettings::GetInt(const std::string& key, std::int32_t defaultValue) const {
    std::string section, name;
    SplitKey(key, section, name);
    const Entry* e = Find(section, name);
    if (e == nullptr || e->value.empty()) return defaultValue;
    errno = 0;
    char* end = nullptr;
    const long long v = std::strtoll(e->value.c_str(), &end, 10);
    if (errno != 0 || *end != 0 || v < INT32_MIN || v > INT32_MAX) return defaultValue;
    return static_cast<std::int32_t>(v);
}

void IniSettings::SetInt(const std::string& key, std::int32_t value) {
    std::string section, name;
    SplitKey(key, section, name);
    const std::string text = std::to_string(value);
    if (Entry* e = Find(section, name)) {
        if (e->value == text) return;
        e->value = text;
    } else {
        entries_.push_back({section, name, text});
    }
    changed_ = true;
}

IniSettings::Entry* IniSettings::Find(const std::string& section, const std::string& name) {
    for (Entry& e : entries_)
        if (SameNoCase(e.section, section) && SameNoCase(e.name, name)) return &e;
    return nullptr;
}

const IniSettings::Entry* IniSettings::Find(const std::string& section,
                                            const std::string& name) const {
    return const_cast<IniSettings*>(this)->Find(section, name);
}

SettingsFileOutcome LoadSettingsFile(const std::string& path, IniSettings& settings,
                                     std::string& error) {
    std::error_code ec;
    if (!std::filesystem::exists(path, ec)) {
        error = "settings file " + path + " does not exist (an empty file starts a new one)";
        return SettingsFileOutcome::Missing;
    }
    if (!settings.Load(path)) {
        error = "cannot read settings file " + path;
        return SettingsFileOutcome::Unreadable;
    }
    return SettingsFileOutcome::Loaded;
}

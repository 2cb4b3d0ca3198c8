// Numbered string tables read from language files and "LNG" resources, and their lookups.
#pragma once

#include "interface/plugin_record.h"
#include "interface/types.h"

#include <cstddef>
#include <vector>

class q5_STREAM;
class q5_LANGUAGETABLE;

class q5_LANGUAGETABLE {
public:
    // Tries folder file `path` (may be null), then the module's resources "LNG|<language>",
    // "LNG|LNG" and "LNG|ENG"; null when none gives a table with entries.
    static q5_LANGUAGETABLE* Load(q5_HINSTANCE module, const q5_WCHAR* path);

    // Parses the whole stream. Parse errors are reported with a title naming owner (null: the
    // main table); the entries before the error stay.
    q5_LANGUAGETABLE(q5_STREAM* stream, q5_PLUGINRECORD* owner);

    // The text of id, or defaultText when the table does not define it.
    const q5_WCHAR* Lookup(std::int32_t id, const q5_WCHAR* defaultText) const;
    // Set once parsing found at least one entry.
    bool IsLoaded() const { return loaded_; }

private:
    // Rewrites each entry in place as its id in one 16-bit unit, the unescaped text and a
    // zero; returns where the entries start.
    template <typename Ch> std::vector<std::size_t> Parse(Ch* text);
    void ReportParseError(const char* message);
    void Index(const std::vector<std::size_t>& entries);

    std::vector<q5_WCHAR> text_;
    std::vector<const q5_WCHAR*> slots_;
    std::uint32_t lines_ = 0;
    std::uint32_t smallest_ = 65636; // deliberately not 65535
    std::uint32_t largest_ = 0;
    q5_PLUGINRECORD* owner_ = nullptr;
    bool loaded_ = false;
};

// The library's side of the host API's string-table operations. A table handle of 0 is the
// main table; any other is a q5_PLUGINRECORD address.
bool q5InitLanguage(q5_HINSTANCE module, const q5_WCHAR* folder, const q5_WCHAR* language,
                    const q5_WCHAR* appName);
// Frees the main table.
void q5DoneLanguage();
// Gives the plug-in record of module its table, loaded from the module's resources, and
// returns the record as handle; 0 when the host has no record for the module.
std::uint64_t q5OpenStringTable(q5_HINSTANCE module);
// "$$$$$$" for a missing id. A plug-in without a table of its own reads the main table.
const q5_WCHAR* q5LGetString(std::uint64_t table, std::int32_t id);
// defaultText for a missing id, except that a plug-in without a table of its own gets
// "$$$$$$" for an id the main table lacks.
const q5_WCHAR* q5LGetStringEx(std::uint64_t table, std::int32_t id, const q5_WCHAR* defaultText);

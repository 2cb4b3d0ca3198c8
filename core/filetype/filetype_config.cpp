// The file-type configuration file: which plug-ins and formats are enabled, and the order of
// formats when the user changed it.
#include "core/containers/collection.h"
#include "core/filetype/file_type.h"
#include "core/services/text_convert.h"
#include "core/services/wide_string.h"
#include "core/stream/stream.h"
#include "interface/gapi.h"
#include "interface/plugin_record.h"

#include <cstdio>
#include <cstring>

namespace {

constexpr std::int32_t kLineBytes = 256;
constexpr int kNameBytes = 256;
// What ReadLn gives at most from a 256-byte buffer: a line this long may go on beyond it.
constexpr std::int32_t kLongestRead = kLineBytes - 7;

enum class Section { None, Plugins, Formats };

bool IsBlank(char c) {
    return c == ' ' || c == '\t';
}

bool EqualNoCase(const char* a, const char* b) {
    return std::strlen(a) == std::strlen(b) && q5strnicmp(a, b, std::strlen(b)) == 0;
}

// Splits "key = value" in place, blanks and tabs around both dropped; false without "=".
bool SplitKeyValue(char* line, const char*& key, const char*& value) {
    char* eq = std::strchr(line, '=');
    if (eq == nullptr) return false;
    char* keyEnd = eq;
    while (keyEnd > line && IsBlank(keyEnd[-1])) --keyEnd;
    *keyEnd = 0;
    char* v = eq + 1;
    while (IsBlank(*v)) ++v;
    char* valueEnd = v + std::strlen(v);
    while (valueEnd > v && IsBlank(valueEnd[-1])) --valueEnd;
    *valueEnd = 0;
    key = line;
    value = v;
    return true;
}

// A decimal number with an optional sign and nothing after it.
bool ReadNumber(const char* text, long& out) {
    const char* p = text;
    if (*p == '-' || *p == '+') ++p;
    if (*p < '0' || *p > '9') return false;
    long n = 0;
    for (; *p >= '0' && *p <= '9'; ++p) n = (n * 10 + (*p - '0')) % 1000000;
    if (*p != 0) return false;
    out = text[0] == '-' ? -n : n;
    return true;
}

q5_PLUGINRECORD* FindPluginByIdText(q5_GAPI& host, const char* idText) {
    q5_WCHAR wide[kLineBytes];
    if (AtoWex(idText, wide, kLineBytes) <= 0) return nullptr;
    for (std::int64_t i = 0;; ++i) {
        q5_PLUGINRECORD* record = host.GetPluginRecord(i);
        if (record == nullptr) return nullptr;
        const q5_WCHAR* id = record->GetIdText();
        if (id != nullptr && q5wcsicmp(id, wide) == 0) return record;
    }
}

void WriteLine(q5_STREAM* stream, const char* format, const char* text) {
    char line[kNameBytes + 8];
    std::snprintf(line, sizeof line, format, text);
    // A line end inside a name would start a line the reader takes for an entry.
    for (char* p = line; *p != 0; ++p)
        if (*p == '\r' || *p == '\n') *p = ' ';
    stream->WriteLnA(line);
}

// Puts every registry type the file did not list before the first listed type that follows
// it in type order.
void MergeUnlisted(q5_COLLECTION* types, q5_COLLECTION* placed) {
    for (std::int64_t i = 0; i < types->Count(); ++i) {
        auto* type = static_cast<FILETYPE*>(types->At(i));
        if (placed->IndexOf(type) >= 0) continue;
        std::int64_t at = placed->Count();
        for (std::int64_t k = 0; k < placed->Count(); ++k) {
            if (CompareFileTypes(static_cast<FILETYPE*>(placed->At(k)), type) > 0) {
                at = k;
                break;
            }
        }
        placed->AtInsert(at, type);
    }
}

} // namespace

bool q5_GAPI::SaveFiletypeConfig(q5_STREAM* stream) {
    q5_COLLECTION* types = GetFileTypes();
    if (stream == nullptr) return false;
    bool wrote = false;
    char text[kNameBytes];
    stream->WriteLnA("[plugins]");
    for (std::int64_t i = 0;; ++i) {
        q5_PLUGINRECORD* record = GetPluginRecord(i);
        if (record == nullptr) break;
        if ((record->GetFlags() & kPluginHidden) != 0) continue;
        WtoAex(record->GetIdText(), text, kNameBytes);
        WriteLine(stream, "{%s}", text);
        WriteLine(stream, "enable=%s", (record->GetFlags() & kPluginEnabled) != 0 ? "1" : "0");
        wrote = true;
    }
    bool reordered = false;
    if (types != nullptr) {
        if (q5_SORTEDCOLLECTION* sorted = PreSortFileTypes(types)) {
            for (std::int64_t i = 0; i < types->Count(); ++i) {
                auto* type = static_cast<FILETYPE*>(types->At(i));
                if (type->orderIndex != i) {
                    type->orderIndex = -1;
                    reordered = true;
                }
            }
            sorted->Release();
        }
    }
    stream->WriteLnA("[formats]");
    for (std::int64_t i = 0; types != nullptr && i < types->Count(); ++i) {
        auto* type = static_cast<FILETYPE*>(types->At(i));
        const bool enabled = (type->state & kFileTypeEnabled) != 0;
        if (enabled && !reordered) continue;
        WtoAex(type->name, text, kNameBytes);
        WriteLine(stream, ";%s", text);
        stream->WriteLnA(type->id.ToStr(text));
        if (!enabled) stream->WriteLnA("enable=0");
        if (reordered && type->orderIndex < 0) stream->WriteLnA("order=1");
        wrote = true;
    }
    return wrote;
}

bool q5_GAPI::LoadFiletypeConfig(q5_STREAM* stream) {
    q5_COLLECTION* types = GetFileTypes();
    if (stream == nullptr) return false;
    q5_COLLECTION* placed = GetPlacementCollection();
    Section section = Section::None;
    bool knownSection = false, ordered = false, continuing = false;
    FILETYPE* type = nullptr;
    q5_PLUGINRECORD* plugin = nullptr;
    char line[kLineBytes];
    while (stream->GetStatus() == Q5_STATUS_GOOD) {
        const std::int32_t n = stream->ReadLn(line, kLineBytes);
        // An overlong line is dropped whole: its pieces are not lines of their own.
        const bool cut = n >= kLongestRead;
        const bool skip = continuing || cut;
        continuing = cut;
        if (skip) continue;
        if (char* comment = std::strchr(line, ';')) *comment = 0;
        char* p = line;
        while (IsBlank(*p)) ++p;
        if (*p == 0) continue;
        if (*p == '[') {
            if (EqualNoCase(p, "[formats]"))
                section = Section::Formats;
            else if (EqualNoCase(p, "[plugins]"))
                section = Section::Plugins;
            knownSection = knownSection || section != Section::None;
            type = nullptr;
            plugin = nullptr;
            continue;
        }
        if (section == Section::None) continue;
        if (*p == '{') {
            if (section == Section::Plugins) {
                if (char* close = std::strchr(p, '}')) *close = 0;
                plugin = FindPluginByIdText(*this, p + 1);
            } else {
                q5_GUID id;
                type = id.FromStr(p) ? GetFileINFO(id, 0) : nullptr;
                if (type != nullptr && placed != nullptr && placed->IndexOf(type) < 0)
                    placed->Insert(type);
            }
            continue;
        }
        const char* key = nullptr;
        const char* value = nullptr;
        long number = 0;
        if (!SplitKeyValue(p, key, value)) continue;
        const bool enableKey = EqualNoCase(key, "enable") && ReadNumber(value, number);
        if (section == Section::Plugins && plugin != nullptr && enableKey) {
            plugin->SetEnabled((number & 1) != 0);
        } else if (section == Section::Formats && type != nullptr) {
            if (enableKey) {
                type->state =
                    (type->state & ~kFileTypeEnabled) | static_cast<std::uint32_t>(number & 1);
            } else if (EqualNoCase(key, "order")) {
                type->orderIndex = 1;
                ordered = true;
            }
        }
    }
    if (ordered && placed != nullptr && types != nullptr) {
        MergeUnlisted(types, placed);
        if (placed->Count() == types->Count()) {
            types->DeleteAll();
            for (std::int64_t i = 0; i < placed->Count(); ++i) types->Insert(placed->At(i));
        }
    }
    return knownSection;
}

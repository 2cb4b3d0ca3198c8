// Language files: loading, "$APP_NAME$" substitution, parsing and the string lookups.
#include "core/language/language_table.h"

#include "core/platform/module.h"
#include "core/services/error_report.h"
#include "core/services/format16.h"
#include "core/services/host_link.h"
#include "core/services/text_convert.h"
#include "core/services/wide_string.h"
#include "core/stream/stream.h"
#include "interface/gapi.h"

#include <cstring>
#include <memory>
#include <new>
#include <string>

namespace {

constexpr const q5_WCHAR* kMissing = u"$$$$$$";
constexpr std::size_t kLanguageLength = 8;

struct LanguageState {
    q5_LANGUAGETABLE* main = nullptr;
    bool hasAppName = false;
    std::u16string appName;
    std::u16string folder;
    q5_WCHAR language[kLanguageLength + 1] = {};
};

LanguageState& State() {
    static LanguageState state;
    return state;
}

template <typename Ch> bool IsBlank(Ch c) {
    return c == Ch(' ') || c == Ch('\t');
}

// The text with every "$APP_NAME$" replaced by name, followed by two zeros.
template <typename Ch>
std::vector<Ch> Substitute(const Ch* text, std::size_t length, const std::basic_string<Ch>* name) {
    static constexpr char kTag[] = "$APP_NAME$";
    constexpr std::size_t kTagLength = sizeof kTag - 1;
    std::vector<Ch> out;
    out.reserve(length + 2);
    for (std::size_t i = 0; i < length;) {
        bool tag = name != nullptr && i + kTagLength <= length;
        for (std::size_t k = 0; tag && k < kTagLength; ++k) tag = text[i + k] == Ch(kTag[k]);
        if (tag) {
            out.insert(out.end(), name->begin(), name->end());
            i += kTagLength;
        } else {
            out.push_back(text[i++]);
        }
    }
    out.push_back(0);
    out.push_back(0);
    return out;
}

} // namespace

q5_LANGUAGETABLE* q5_LANGUAGETABLE::Load(q5_HINSTANCE module, const q5_WCHAR* path) {
    q5_GAPI* host = q5GetHostAPI();
    q5_PLUGINRECORD* owner = host != nullptr ? host->FindPluginRecord(module) : nullptr;
    auto build = [owner](q5_STREAM* stream) -> q5_LANGUAGETABLE* {
        if (stream == nullptr) return nullptr;
        q5_LANGUAGETABLE* table = nullptr;
        if (stream->GetStatus() == 0) table = new (std::nothrow) q5_LANGUAGETABLE(stream, owner);
        stream->Release();
        if (table != nullptr && !table->IsLoaded()) {
            delete table;
            table = nullptr;
        }
        return table;
    };
    if (path != nullptr) {
        const std::uint32_t quietRead = Q5_STREAM_FILE | Q5_FILE_READ | Q5_FILE_QUIET;
        if (auto* table = build(q5_STREAM::CreateW(nullptr, path, quietRead))) return table;
    }
    q5_WCHAR name[32];
    q5sprintf(name, 32, u"LNG|%s", State().language);
    if (auto* table = build(q5_STREAM::CreateW(module, name, Q5_STREAM_RESOURCE))) return table;
    // A third source was planned here and never existed.
    q5_STREAM* fallback = q5_STREAM::CreateW(module, u"LNG|LNG", Q5_STREAM_RESOURCE);
    if (fallback == nullptr) fallback = q5_STREAM::CreateW(module, u"LNG|ENG", Q5_STREAM_RESOURCE);
    return build(fallback);
}

q5_LANGUAGETABLE::q5_LANGUAGETABLE(q5_STREAM* stream, q5_PLUGINRECORD* owner) : owner_(owner) {
    const std::int64_t size = stream != nullptr ? stream->GetSize() : 0;
    if (size < 1 || size > INT32_MAX - 4) return;
    // Room for the bytes and at least two zero bytes, aligned for 16-bit units.
    std::vector<q5_WCHAR> raw(static_cast<std::size_t>(size + 4) / 2, 0);
    stream->Read(raw.data(), size);
    const auto* bytes = reinterpret_cast<const unsigned char*>(raw.data());
    const LanguageState& state = State();
    if (size >= 2 && bytes[0] == 0xFF && bytes[1] == 0xFE) {
        std::vector<q5_WCHAR> text =
            Substitute<q5_WCHAR>(raw.data() + 1, static_cast<std::size_t>(size / 2 - 1),
                                 state.hasAppName ? &state.appName : nullptr);
        const std::vector<std::size_t> entries = Parse(text.data());
        text_ = std::move(text);
        Index(entries);
        return;
    }
    std::string narrowName;
    if (state.hasAppName) {
        const int needed = QueryWtoABufSize(state.appName.c_str());
        if (needed > 0) {
            narrowName.assign(static_cast<std::size_t>(needed), '\0');
            WtoAex(state.appName.c_str(), narrowName.data(), needed);
            narrowName.resize(std::strlen(narrowName.c_str()));
        }
    }
    std::vector<char> text =
        Substitute<char>(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(size),
                         state.hasAppName ? &narrowName : nullptr);
    const std::vector<std::size_t> entries = Parse(text.data());
    // The table hands out 16-bit text: each entry is widened into one buffer, keeping the
    // id unit in front of it as in a 16-bit file.
    std::vector<std::size_t> wideEntries;
    for (std::size_t at : entries) {
        wideEntries.push_back(text_.size());
        std::uint16_t id = 0;
        std::memcpy(&id, text.data() + at, 2);
        text_.push_back(id);
        const char* narrow = text.data() + at + 2;
        const int units = QueryAtoWBufSize(narrow);
        const std::size_t from = text_.size();
        text_.resize(from + static_cast<std::size_t>(units > 0 ? units : 1), 0);
        if (units > 0) AtoWex(narrow, text_.data() + from, units);
    }
    Index(wideEntries);
}

template <typename Ch> std::vector<std::size_t> q5_LANGUAGETABLE::Parse(Ch* text) {
    constexpr std::size_t kIdUnits = 2 / sizeof(Ch); // one 16-bit unit
    std::vector<std::size_t> entries;
    std::size_t r = 0;
    std::size_t w = 0;
    auto put = [&](Ch c) {
        if (w >= r) CoreAssert("language parser: write position passed read position");
        text[w++] = c;
    };
    for (;;) {
        const Ch c = text[r];
        if (c == 0) break;
        if (c == Ch('\n')) {
            ++lines_;
            ++r;
            continue;
        }
        if (c == Ch('$') || c == Ch(';')) { // directives and comments run to the line end
            while (text[r] != 0 && text[r] != Ch('\n')) ++r;
            continue;
        }
        if (c < Ch('1') || c > Ch('9')) {
            ++r;
            continue;
        }
        std::uint32_t id = 0;
        for (; text[r] >= Ch('0') && text[r] <= Ch('9'); ++r) {
            if (id < 0x10000000) id = id * 10 + static_cast<std::uint32_t>(text[r] - Ch('0'));
        }
        const auto id16 = static_cast<std::uint16_t>(id);
        while (IsBlank(text[r])) ++r;
        if (text[r] != Ch('=')) {
            ReportParseError("'=' - expected ");
            break;
        }
        ++r;
        while (IsBlank(text[r])) ++r;
        if (text[r] != Ch('"')) {
            ReportParseError("'\"' - expected ");
            break;
        }
        ++r;
        const std::size_t start = w;
        if (w + kIdUnits > r) CoreAssert("language parser: write position passed read position");
        std::memcpy(text + w, &id16, 2);
        w += kIdUnits;
        bool closed = false;
        for (;;) {
            Ch t = text[r];
            if (t == Ch('"')) {
                ++r;
                closed = true;
                break;
            }
            if (t == Ch('\\') && text[r + 1] != 0) {
                t = text[++r];
                ++r;
                if (t == Ch('n')) {
                    put(Ch('\r'));
                    put(Ch('\n'));
                } else {
                    put(t == Ch('t') ? Ch('\t') : t);
                }
                continue;
            }
            if (t == Ch('\r') || t == Ch('\n') || t == 0 || t == Ch('\\')) break;
            put(t);
            ++r;
        }
        if (!closed) {
            ReportParseError("unexpected end of line");
            break;
        }
        put(0);
        entries.push_back(start);
        if (id16 < smallest_) smallest_ = id16;
        if (id16 > largest_) largest_ = id16;
    }
    return entries;
}

void q5_LANGUAGETABLE::ReportParseError(const char* message) {
    q5_GAPI* host = q5GetHostAPI();
    if (host == nullptr) return;
    q5_WCHAR title[256];
    if (owner_ != nullptr) {
        const q5_WCHAR* name = owner_->GetName();
        q5sprintf(title, 256, u"Plugin %s language parse error", name != nullptr ? name : u"");
    } else {
        q5sprintf(title, 256, u"Main language file parse error");
    }
    q5_WCHAR text[256];
    q5sprintf(text, 256, u"%hs\n\nat line:%d", message, static_cast<int>(lines_ + 1));
    host->ReportTitledMessage(kReportError, title, text);
}

// Later entries with the same id replace earlier ones.
void q5_LANGUAGETABLE::Index(const std::vector<std::size_t>& entries) {
    if (entries.empty()) return;
    slots_.assign(largest_ - smallest_ + 1, nullptr);
    for (std::size_t at : entries) slots_[text_[at] - smallest_] = text_.data() + at + 1;
    loaded_ = true;
}

const q5_WCHAR* q5_LANGUAGETABLE::Lookup(std::int32_t id, const q5_WCHAR* defaultText) const {
    if (!loaded_ || id < static_cast<std::int64_t>(smallest_) ||
        id > static_cast<std::int64_t>(largest_))
        return defaultText;
    const q5_WCHAR* text = slots_[static_cast<std::size_t>(id) - smallest_];
    return text != nullptr ? text : defaultText;
}

bool q5InitLanguage(q5_HINSTANCE module, const q5_WCHAR* folder, const q5_WCHAR* language,
                    const q5_WCHAR* appName) {
    LanguageState& state = State();
    if (module == nullptr) module = q5GetLibraryModule();
    state.folder = folder != nullptr ? folder : u"";
    state.hasAppName = appName != nullptr;
    state.appName = appName != nullptr ? appName : u"";
    q5wcsncpy(state.language, language != nullptr ? language : u"", kLanguageLength + 1);
    q5DoneLanguage();
    std::u16string path;
    if (folder != nullptr) path = state.folder + u"language.ln";
    state.main = q5_LANGUAGETABLE::Load(module, folder != nullptr ? path.c_str() : nullptr);
    return state.main != nullptr;
}

void q5DoneLanguage() {
    delete State().main;
    State().main = nullptr;
}

std::uint64_t q5OpenStringTable(q5_HINSTANCE module) {
    q5_GAPI* host = q5GetHostAPI();
    q5_PLUGINRECORD* record = host != nullptr ? host->FindPluginRecord(module) : nullptr;
    if (record == nullptr) return 0;
    if (record->GetLanguageTable() == nullptr)
        record->SetLanguageTable(q5_LANGUAGETABLE::Load(module, nullptr));
    return reinterpret_cast<std::uint64_t>(record);
}

const q5_WCHAR* q5LGetString(std::uint64_t table, std::int32_t id) {
    return q5LGetStringEx(table, id, kMissing);
}

const q5_WCHAR* q5LGetStringEx(std::uint64_t table, std::int32_t id, const q5_WCHAR* defaultText) {
    const q5_LANGUAGETABLE* main = State().main;
    if (table == 0) return main != nullptr ? main->Lookup(id, defaultText) : defaultText;
    q5_LANGUAGETABLE* own = reinterpret_cast<q5_PLUGINRECORD*>(table)->GetLanguageTable();
    if (own != nullptr) return own->Lookup(id, defaultText);
    // Deliberately not defaultText: a plug-in without a table reads the main one strictly.
    return main != nullptr ? main->Lookup(id, kMissing) : kMissing;
}

bool q5_GAPI::InitLanguage(q5_HINSTANCE module, const q5_WCHAR* folder, const q5_WCHAR* language,
                           const q5_WCHAR* appName) {
    return q5InitLanguage(module, folder, language, appName);
}

const q5_WCHAR* q5_GAPI::LGetStringEx(std::uint64_t table, std::int32_t id,
                                      const q5_WCHAR* defaultText) {
    return q5LGetStringEx(table, id, defaultText);
}

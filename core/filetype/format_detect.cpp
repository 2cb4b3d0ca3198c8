// Content detection: the signature descriptions and the search of the registry.
#include "core/filetype/format_detect.h"

#include "core/containers/collection.h"
#include "core/filetype/file_type.h"
#include "core/services/host_link.h"
#include "core/stream/stream.h"
#include "interface/gapi.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace {

// Offsets and sizes beyond this are malformed, so sums of them never overflow.
constexpr std::uint64_t kLargestNumber = (std::uint64_t{1} << 40) - 1;

enum class Verdict { Fail, Pass, Malformed };

std::string_view Trim(std::string_view s) {
    const auto blank = [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; };
    while (!s.empty() && blank(s.front())) s.remove_prefix(1);
    while (!s.empty() && blank(s.back())) s.remove_suffix(1);
    return s;
}

int HexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// Decimal or 0x hex, the whole text; false when it is not a number or is too large.
bool ParseNumber(std::string_view s, std::uint64_t& out) {
    s = Trim(s);
    const bool hex = s.size() > 2 && s[0] == '0' && (s[1] == 'x' || s[1] == 'X');
    if (hex) s.remove_prefix(2);
    if (s.empty()) return false;
    std::uint64_t n = 0;
    for (char c : s) {
        const int d = hex ? HexDigit(c) : (c >= '0' && c <= '9' ? c - '0' : -1);
        if (d < 0) return false;
        n = n * (hex ? 16 : 10) + static_cast<std::uint64_t>(d);
        if (n > kLargestNumber) return false;
    }
    out = n;
    return true;
}

// Splits at `separators` outside double quotes; a backslash inside quotes escapes.
std::vector<std::string_view> Split(std::string_view s, std::string_view separators) {
    std::vector<std::string_view> parts;
    bool quoted = false;
    std::size_t start = 0;
    for (std::size_t i = 0; i < s.size(); ++i) {
        if (quoted && s[i] == '\\') {
            ++i;
        } else if (s[i] == '"') {
            quoted = !quoted;
        } else if (!quoted && separators.find(s[i]) != std::string_view::npos) {
            parts.push_back(s.substr(start, i - start));
            start = i + 1;
        }
    }
    parts.push_back(s.substr(std::min(start, s.size())));
    return parts;
}

struct Content {
    const std::uint8_t* bytes;
    std::size_t size; // bytes available: the prefix, or less at the end of the stream
    std::int64_t streamSize;

    bool Has(std::uint64_t at, std::uint64_t count) const {
        return at <= size && count <= size - at;
    }
};

char Lower(std::uint32_t c) {
    return static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c);
}

// "TEXT" at base, after an optional byte-order mark and blanks.
Verdict TextTerm(std::string_view term, const Content& c, std::uint64_t base) {
    if (term.size() < 2 || term.back() != '"') return Verdict::Malformed;
    std::string text;
    for (std::size_t i = 1; i + 1 < term.size(); ++i) {
        if (term[i] == '\\') {
            if (i + 2 >= term.size() || (term[i + 1] != '"' && term[i + 1] != '\\'))
                return Verdict::Malformed;
            ++i;
        } else if (term[i] == '"') {
            return Verdict::Malformed;
        }
        text += term[i];
    }
    std::uint64_t at = base;
    std::uint32_t width = 1;
    bool bigEndian = false;
    if (c.Has(at, 3) && c.bytes[at] == 0xEF && c.bytes[at + 1] == 0xBB && c.bytes[at + 2] == 0xBF) {
        at += 3;
    } else if (c.Has(at, 2) && c.bytes[at] == 0xFF && c.bytes[at + 1] == 0xFE) {
        at += 2;
        width = 2;
    } else if (c.Has(at, 2) && c.bytes[at] == 0xFE && c.bytes[at + 1] == 0xFF) {
        at += 2;
        width = 2;
        bigEndian = true;
    }
    const auto unit = [&](std::uint64_t i, std::uint32_t& out) {
        if (!c.Has(i, width)) return false;
        out = width == 1 ? c.bytes[i]
                         : (bigEndian ? (c.bytes[i] << 8) | c.bytes[i + 1]
                                      : c.bytes[i] | (c.bytes[i + 1] << 8));
        return true;
    };
    std::uint32_t u = 0;
    while (unit(at, u) && (u == ' ' || u == '\t' || u == '\r' || u == '\n')) at += width;
    for (char expected : text) {
        if (!unit(at, u) || u > 0xFF || Lower(u) != Lower(static_cast<std::uint8_t>(expected)))
            return Verdict::Fail;
        at += width;
    }
    return Verdict::Pass;
}

// OFFSET:HEX at base + OFFSET.
Verdict ByteTerm(std::string_view term, const Content& c, std::uint64_t base) {
    const std::size_t colon = term.find(':');
    std::uint64_t offset = 0;
    if (colon == std::string_view::npos || !ParseNumber(term.substr(0, colon), offset))
        return Verdict::Malformed;
    std::string_view hex = term.substr(colon + 1);
    std::vector<int> pattern; // -1: any byte
    for (std::size_t i = 0; i < hex.size();) {
        if (hex[i] == ' ' || hex[i] == '\t') {
            ++i;
            continue;
        }
        if (i + 1 >= hex.size()) return Verdict::Malformed;
        if (hex[i] == '?' && hex[i + 1] == '?') {
            pattern.push_back(-1);
        } else {
            const int hi = HexDigit(hex[i]), lo = HexDigit(hex[i + 1]);
            if (hi < 0 || lo < 0) return Verdict::Malformed;
            pattern.push_back(hi * 16 + lo);
        }
        i += 2;
    }
    if (pattern.empty() || pattern.size() > kDetectPrefixBytes) return Verdict::Malformed;
    const std::uint64_t at = base + offset;
    if (!c.Has(at, pattern.size())) return Verdict::Fail;
    for (std::size_t i = 0; i < pattern.size(); ++i)
        if (pattern[i] >= 0 && c.bytes[at + i] != pattern[i]) return Verdict::Fail;
    return Verdict::Pass;
}

Verdict Test(std::string_view value, const Content& c, std::uint64_t base) {
    Verdict result = Verdict::Pass;
    for (std::string_view term : Split(value, "&")) {
        term = Trim(term);
        if (term.empty()) return Verdict::Malformed;
        const Verdict v = term.front() == '"' ? TextTerm(term, c, base) : ByteTerm(term, c, base);
        if (v == Verdict::Malformed) return v;
        if (v == Verdict::Fail) result = Verdict::Fail;
    }
    return result;
}

// A number stored at an absolute offset of the content.
Verdict ReadField(std::string_view field, std::uint64_t at, const Content& c, std::uint64_t& out) {
    struct Form {
        std::string_view name;
        std::uint32_t bytes;
        bool bigEndian;
    };
    static constexpr Form kForms[] = {{"u8", 1, false},
                                      {"u16le", 2, false},
                                      {"u16be", 2, true},
                                      {"u32le", 4, false},
                                      {"u32be", 4, true}};
    for (const Form& form : kForms) {
        if (form.name != field) continue;
        if (!c.Has(at, form.bytes)) return Verdict::Fail;
        out = 0;
        for (std::uint32_t i = 0; i < form.bytes; ++i) {
            const std::uint32_t k = form.bigEndian ? i : form.bytes - 1 - i;
            out = (out << 8) | c.bytes[at + k];
        }
        return Verdict::Pass;
    }
    return Verdict::Malformed;
}

Verdict SizeRule(std::string_view rule, const Content& c) {
    rule = Trim(rule);
    std::uint64_t n = 0;
    const auto size = static_cast<std::uint64_t>(c.streamSize);
    const auto verdict = [&](bool holds) {
        return c.streamSize < 0 ? Verdict::Fail : (holds ? Verdict::Pass : Verdict::Fail);
    };
    if (rule.starts_with(">=") || rule.starts_with("<=")) {
        if (!ParseNumber(rule.substr(2), n)) return Verdict::Malformed;
        return verdict(rule[0] == '>' ? size >= n : size <= n);
    }
    if (rule.starts_with("%")) {
        if (!ParseNumber(rule.substr(1), n) || n == 0) return Verdict::Malformed;
        return verdict(size % n == 0);
    }
    const std::size_t plus = rule.find('+');
    if (plus == std::string_view::npos) {
        if (!ParseNumber(rule, n)) return Verdict::Malformed;
        return verdict(size == n);
    }
    const std::size_t star = rule.find('*', plus);
    const std::size_t at = rule.find('@', star == std::string_view::npos ? plus : star);
    std::uint64_t add = 0, scale = 0, offset = 0, field = 0;
    if (star == std::string_view::npos || at == std::string_view::npos ||
        !ParseNumber(rule.substr(0, plus), add) ||
        !ParseNumber(rule.substr(plus + 1, star - plus - 1), scale) ||
        !ParseNumber(rule.substr(at + 1), offset))
        return Verdict::Malformed;
    const Verdict read = ReadField(Trim(rule.substr(star + 1, at - star - 1)), offset, c, field);
    if (read != Verdict::Pass) return read;
    // Both factors are below 2^40, so a product that would not fit is larger than any size.
    if (field != 0 && scale > (kLargestNumber << 20) / field) return Verdict::Fail;
    return verdict(size == add + scale * field);
}

} // namespace

bool q5MatchSignature(const char* description, const std::uint8_t* content, std::size_t size,
                      std::int64_t streamSize) {
    if (description == nullptr || (content == nullptr && size != 0)) return false;
    const Content c{content, size, streamSize};
    std::uint64_t base = 0;
    bool anySignature = false, signatureHit = false, refused = false, sizeHolds = true;
    for (std::string_view clause : Split(description, ";\r\n")) {
        clause = Trim(clause);
        if (clause.empty()) continue;
        const std::size_t eq = clause.find('=');
        if (eq == std::string_view::npos) return false;
        const std::string_view key = Trim(clause.substr(0, eq));
        const std::string_view value = Trim(clause.substr(eq + 1));
        Verdict v = Verdict::Pass;
        if (key == "$seek") {
            if (!ParseNumber(value, base)) return false;
        } else if (key == "signature") {
            anySignature = true;
            v = Test(value, c, base);
            signatureHit = signatureHit || v == Verdict::Pass;
        } else if (key == "antisignature") {
            v = Test(value, c, base);
            refused = refused || v == Verdict::Pass;
        } else if (key == "esize") {
            v = SizeRule(value, c);
            sizeHolds = sizeHolds && v == Verdict::Pass;
        } else {
            return false;
        }
        if (v == Verdict::Malformed) return false;
    }
    return !refused && sizeHolds && (!anySignature || signatureHit);
}

FILETYPE* q5GetFileFormat(q5_STREAM* stream, const q5_WCHAR* fileName, FTINFO* info) {
    FTINFO defaults;
    if (info == nullptr) info = &defaults;
    info->result = nullptr;
    q5_GAPI* host = q5GetHostAPI();
    q5_COLLECTION* types = host != nullptr ? host->GetFileTypes() : nullptr;
    if (types == nullptr) return nullptr;
    std::int64_t first = 0;
    if (info->startAfter != nullptr) {
        first = types->IndexOf(const_cast<FILETYPE*>(info->startAfter));
        if (first < 0) return nullptr;
        ++first;
    }
    std::vector<std::uint8_t> prefix;
    std::int64_t streamSize = -1;
    const bool byContent = stream != nullptr && (info->options & kFtContent) != 0;
    if (byContent) {
        const std::int64_t position = stream->Tell();
        streamSize = stream->GetSize();
        const std::int64_t want = std::min<std::int64_t>(
            static_cast<std::int64_t>(kDetectPrefixBytes), std::max<std::int64_t>(streamSize, 0));
        prefix.resize(static_cast<std::size_t>(want));
        std::int64_t got = 0;
        if (stream->Seek(0, 0) == 0) {
            while (got < want) {
                const std::int64_t n = stream->Read(prefix.data() + got, want - got);
                if (n <= 0) break;
                got += n;
            }
        }
        prefix.resize(static_cast<std::size_t>(got));
        stream->Seek(position, 0);
    }
    const auto usable = [&](const FILETYPE* type) {
        return type->IsEnabled() && info->Accepts(*type);
    };
    for (std::int64_t i = first; byContent && i < types->Count(); ++i) {
        auto* type = static_cast<FILETYPE*>(types->At(i));
        if (!usable(type) || type->signature == nullptr) continue;
        if ((type->flags & kFileTypeNameMustMatch) != 0 &&
            (fileName == nullptr || !type->IsFileOfThisType(fileName, nullptr)))
            continue;
        if (q5MatchSignature(type->signature, prefix.data(), prefix.size(), streamSize))
            return info->result = type;
    }
    for (std::int64_t i = first; fileName != nullptr && i < types->Count(); ++i) {
        auto* type = static_cast<FILETYPE*>(types->At(i));
        const std::uint32_t needed = type->signature == nullptr ? kFtExtension : kFtTrustName;
        if (usable(type) && (info->options & needed) != 0 &&
            type->IsFileOfThisType(fileName, nullptr))
            return info->result = type;
    }
    return nullptr;
}

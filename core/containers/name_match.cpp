// Matching of file names against wildcard patterns and pattern lists.
#include "core/containers/name_match.h"

#include "core/services/wide_string.h"

#include <cctype>
#include <string>

namespace {

// Single-byte upper-casing as the C library's current locale says; other units stay.
q5_WCHAR Upper(q5_WCHAR c) {
    return c < 256 ? static_cast<q5_WCHAR>(std::toupper(c)) : c;
}

bool Contains(const q5_WCHAR* s, q5_WCHAR c) {
    for (; *s != 0; ++s)
        if (*s == c) return true;
    return false;
}

bool HasWildcard(const q5_WCHAR* s) {
    for (; *s != 0; ++s)
        if (*s == u'*' || *s == u'?' || *s == u'[') return true;
    return false;
}

// Matches nc against the set that starts at p (just after "[") and moves p past its "]".
// The caller has made sure that a "]" follows.
bool MatchSet(const q5_WCHAR*& p, q5_WCHAR nc) {
    bool matched = false;
    bool first = true;
    q5_WCHAR previous = 0;
    for (;;) {
        const q5_WCHAR c = Upper(*p++);
        if (c == 0) return false;
        if (c == u']') return matched;
        if (matched) continue;
        if (c == u'-' && !first && *p != u']') {
            const q5_WCHAR high = Upper(*p++);
            if (high == 0) return false;
            matched = previous <= nc && nc <= high;
            previous = high;
        } else {
            matched = c == nc;
            previous = c;
        }
        first = false;
    }
}

int MatchAfterStar(const q5_WCHAR* p, const q5_WCHAR* n);

int Match(const q5_WCHAR* p, const q5_WCHAR* n) {
    for (;;) {
        const q5_WCHAR pc = Upper(*p++);
        const q5_WCHAR nc = Upper(*n);
        if (pc == 0) return nc == 0 ? 1 : 0;
        if (pc == u'*') return MatchAfterStar(p, n);
        if (pc == u'?') {
            if (nc == 0) return 0;
        } else if (pc == u'[' && Contains(p, u']')) {
            if (!MatchSet(p, nc)) return 0;
        } else if (pc != nc) {
            // An extension dot may stand where the name has ended.
            if (pc == u'.' && nc == 0) continue;
            return 0;
        }
        ++n;
    }
}

// p points just after a "*". A "*.ext" tail is settled against the name's first dot without
// backtracking when neither side leaves room for another reading.
int MatchAfterStar(const q5_WCHAR* p, const q5_WCHAR* n) {
    if (*p == 0) return 1;
    if (*p == u'.') {
        if (p[1] == u'*' && p[2] == 0) return 1;
        const q5_WCHAR* dot = n;
        while (*dot != 0 && *dot != u'.') ++dot;
        const bool hasDot = *dot != 0;
        if (p[1] == 0) return !hasDot || dot[1] == 0 ? 1 : 0;
        if (hasDot) {
            n = dot;
            if (!HasWildcard(p) && !Contains(dot + 1, u'.'))
                return q5wcsicmp(p + 1, dot + 1) == 0 ? 1 : 0;
        }
    }
    for (;; ++n) {
        if (Match(p, n) != 0) return 1;
        if (*n == 0) return 0;
    }
}

} // namespace

int CmpNameExW(const q5_WCHAR* pattern, const q5_WCHAR* name) {
    if (pattern == nullptr || name == nullptr) return 0;
    return Match(pattern, name);
}

int CmpPatternAndName(const q5_WCHAR* patterns, const q5_WCHAR* name) {
    if (patterns == nullptr || name == nullptr) return 0;
    const q5_WCHAR* start = patterns;
    for (const q5_WCHAR* p = patterns;; ++p) {
        if (*p != 0 && *p != u';' && *p != u',') continue;
        // Each segment gets its own terminated copy, however long.
        if (p != start && Match(std::u16string(start, p).c_str(), name) != 0) return 1;
        if (*p == 0) return 0;
        start = p + 1;
    }
}

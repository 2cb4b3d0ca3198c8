// Matching of file names against wildcard patterns (*, ?, [sets]) and pattern lists.
#pragma once

#include "interface/types.h"

// 1 when name matches pattern, else 0. Units below 256 compare after upper-casing. A "." in
// the pattern also matches the end of a name, so "readme." and "readme.*" accept "readme".
int CmpNameExW(const q5_WCHAR* pattern, const q5_WCHAR* name);

// 1 when name matches any segment of a list separated by ";" or ",". Empty segments,
// including the one after a trailing separator, match nothing.
int CmpPatternAndName(const q5_WCHAR* patterns, const q5_WCHAR* name);

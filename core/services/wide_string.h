// The library's own 16-bit string helpers; the C wide-string functions assume a 32-bit
// wchar_t on POSIX.
#pragma once

#include "interface/types.h"

std::size_t q5wcslen(const q5_WCHAR* s);
q5_WCHAR* q5wcscpy(q5_WCHAR* dst, const q5_WCHAR* src);
// Copies at most capacity - 1 units and always terminates (when capacity > 0).
q5_WCHAR* q5wcsncpy(q5_WCHAR* dst, const q5_WCHAR* src, std::size_t capacity);
q5_WCHAR* q5wcscat(q5_WCHAR* dst, const q5_WCHAR* src);

// Compares code units as unsigned numbers: negative, 0 or positive like strcmp.
int q5wcscmp(const q5_WCHAR* a, const q5_WCHAR* b);
// Case-insensitive: both sides are lowered (ASCII, Latin-1, Latin Extended-A, basic Greek
// and Cyrillic) before comparing, so '_' sorts before letters as with the C library.
int q5wcsicmp(const q5_WCHAR* a, const q5_WCHAR* b);
int q5wcsnicmp(const q5_WCHAR* a, const q5_WCHAR* b, std::size_t count);
q5_WCHAR q5towlower(q5_WCHAR c);

// Narrow case-insensitive compare of at most count bytes; only ASCII letters fold.
int q5strnicmp(const char* a, const char* b, std::size_t count);

// Leading white space, an optional sign and decimal digits; the value saturates at the
// 32-bit limits so the result is the same on every platform. 0 when there are no digits.
std::int32_t q5wtol(const q5_WCHAR* s);
// Leading white space and the longest prefix that reads as a decimal floating-point number
// ("1.5e3", "inf", "nan"), independent of the C locale; 0.0 when there is none. Beyond a
// double's range it gives what the C library's conversion gives: HUGE_VAL, or 0.0 when too
// small, with the number's sign.
double q5wtof(const q5_WCHAR* s);

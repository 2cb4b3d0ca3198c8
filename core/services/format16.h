// One bounded printf-style formatter for 16-bit text with Windows conventions, the same on
// every platform so that messages read alike everywhere.
#pragma once

#include "interface/types.h"

#include <cstdarg>

// Conversions: d i u x X o c C s S f F e E g G p and %%; flags - + space # 0; width and
// precision as numbers, * or *n$; sizes hh h l ll I I32 I64 z j t, L for floating point.
// Text: %s, %ls and %ws are 16-bit text; %hs and %S narrow text in the narrow code page. %c is
// a 16-bit unit, %hc and %C a narrow character. Precision counts 16-bit units of the result.
// %p is the pointer's value in upper-case hex with 2 * sizeof(void*) digits.
// Positional arguments (%2$d, %1$*3$d) are allowed when every conversion is positional; each
// position is then read once, in order of position numbers, and none may be left out.
//
// Like snprintf: writes at most capacity units including the terminator and returns the count
// the whole output needs without the terminator; a null buffer with capacity 0 only counts.
// An invalid format (%n, mixed positional and sequential arguments, an unknown conversion)
// gives -1 and an empty buffer.
int q5sprintf(q5_WCHAR* buffer, std::size_t capacity, const q5_WCHAR* format, ...);
int q5vsprintf(q5_WCHAR* buffer, std::size_t capacity, const q5_WCHAR* format, std::va_list args);

// Reports of broken invariants, handed to the host as level-1 (error) messages. Nothing is
// reported before the host's init message, and the caller always carries on afterwards.
#pragma once

#include "interface/types.h"

#if defined(__GNUC__) && !defined(__clang__)
#define Q5_PRINTF_LIKE(fmt, args) __attribute__((__format__(gnu_printf, fmt, args)))
#elif defined(__clang__)
#define Q5_PRINTF_LIKE(fmt, args) __attribute__((__format__(printf, fmt, args)))
#else
#define Q5_PRINTF_LIKE(fmt, args)
#endif

// Reports "Assertion failed " followed by text, or by "no comment" when text is null.
void CoreAssert(const char* text);
// Formats into 512 characters (callers keep their messages shorter) and reports the result.
void CoreErrorA(const char* format, ...) Q5_PRINTF_LIKE(1, 2);
// Formats with q5sprintf rules into 512 units, truncating, and reports the result.
void CoreErrorW(const q5_WCHAR* format, ...);

// Conversions between the library's 16-bit text and 8-bit text in the narrow code page or UTF-8.
#pragma once

#include <string>

#include "interface/types.h"

// The process-wide narrow code page (0: the system's ANSI code page; UTF-8 on POSIX).
int q5GetNarrowCodePage();
void q5SetNarrowCodePage(int codePage);
// Selects the wide rather than the narrow date and time formatters of q5FormatTime.
bool q5GetWideSystem();
void q5SetWideSystem(bool wide);

// Convert all of src, terminator included, into a path-sized dst of at least 259 elements.
// A null src gives an empty dst; a src that does not fit leaves dst as the platform left it.
void AtoW(const char* src, q5_WCHAR* dst);
void WtoA(const q5_WCHAR* src, char* dst);

// Sized conversions. A size >= 1 pre-writes dst[size - 1] = 0 and converts into the first
// size - 1 elements; a negative size gives the capacity -size without that pre-written
// terminator. Result: elements written including the terminator, or 0 on failure. A null src
// gives an empty dst and 0.
int AtoWex(const char* src, q5_WCHAR* dst, int size);
int WtoAex(const q5_WCHAR* src, char* dst, int size);
// The same with UTF-8; a null dst asks for the size src needs, terminator included.
int UTF8toWideString(const char* src, q5_WCHAR* dst, int size);
int WidetoUTF8String(const q5_WCHAR* src, char* dst, int size);

// Elements needed for src in the narrow code page, terminator included; 0 for a null src.
int QueryAtoWBufSize(const char* src);
int QueryWtoABufSize(const q5_WCHAR* src);

// Whole texts between UTF-8 and 16-bit units; a null text, or one that does not convert, gives
// an empty result.
std::u16string Utf8ToWide(const std::string& utf8);
std::string WideToUtf8(const q5_WCHAR* text);

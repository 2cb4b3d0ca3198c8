// Basic types shared by the whole module: 16-bit text, result codes, opaque OS handles.
#pragma once

#include <cstddef>
#include <cstdint>

// Wide text is 16-bit code units on every platform.
using q5_WCHAR = char16_t;

// Result code of the core library's operations.
using Q5RESULT = std::int32_t;
inline constexpr Q5RESULT Q5_OK = 1;
inline constexpr Q5RESULT Q5_NOTHING = 0;
inline constexpr Q5RESULT Q5_E_NOTIMPL = -4; // not supported, or out of memory
inline constexpr Q5RESULT Q5_E_NOTAVAIL = -8;
inline constexpr Q5RESULT Q5_E_ALLOC = -12;

// Opaque operating-system handles. On Windows they are the Win32 handles themselves; on POSIX
// they point at the platform layer's own objects.
using q5_HINSTANCE = void*; // a loaded module
using q5_HMEM = void*;      // a movable memory block
using q5_HWND = void*;      // a window (POSIX: a host-owned pixel surface)
using q5_HDC = void*;       // a device context
using q5_HBITMAP = void*;   // a bitmap section
using q5_HICON = void*;     // an icon (POSIX: an image object of the platform layer)

// A file time: 100-nanosecond intervals since 1601-01-01 UTC, in two 32-bit halves.
struct q5_FILETIME {
    std::uint32_t dwLowDateTime;
    std::uint32_t dwHighDateTime;
};

// Marks a symbol that the module exports to hosts.
#if defined(_WIN32)
#define Q5_MODULE_EXPORT __declspec(dllexport)
#else
#define Q5_MODULE_EXPORT __attribute__((visibility("default")))
#endif

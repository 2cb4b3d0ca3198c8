// Entry-point types of the DrawDib functions, bound at run time from "MSVFW32.DLL".
#pragma once

#include "interface/types.h"

using q5_HDRAWDIB = void*;

namespace q5plat {
// Only Windows has the library; elsewhere looking for it would search every library folder.
#if defined(_WIN32)
inline constexpr bool kSystemHasDrawDib = true;
#else
inline constexpr bool kSystemHasDrawDib = false;
#endif
} // namespace q5plat

extern "C" {
#if defined(_WIN32)
#define Q5_WINAPI __stdcall
#else
#define Q5_WINAPI
#endif
typedef q5_HDRAWDIB(Q5_WINAPI* q5_DrawDibOpenFn)();
typedef int(Q5_WINAPI* q5_DrawDibCloseFn)(q5_HDRAWDIB);
typedef int(Q5_WINAPI* q5_DrawDibDrawFn)(q5_HDRAWDIB, q5_HDC, int, int, int, int, void* header,
                                         void* bits, int, int, int, int, unsigned flags);
}

// Fonts and text output on a device context. POSIX draws with FreeType, the face found through
// fontconfig, one pixel colour and no smoothing.
#pragma once

#include "interface/types.h"

namespace q5plat {

using q5_HFONT = void*;

inline constexpr int kBackgroundTransparent = 1;

// `height` is the character cell height in pixels; weight 700 is bold. Null on failure.
q5_HFONT MakeFont(int height, int width, int weight, const q5_WCHAR* face);
bool DeleteFont(q5_HFONT font);
// Returns the font it replaces.
q5_HFONT SelectFont(q5_HDC dc, q5_HFONT font);
// Colour with red in the low byte; returns the previous one.
std::uint32_t SetTextColour(q5_HDC dc, std::uint32_t colour);
int SetBackgroundMode(q5_HDC dc, int mode);
// Writes `length` units of text with the top-left of its cell at (x, y).
bool WriteText(q5_HDC dc, int x, int y, const q5_WCHAR* text, int length);
// Width and height of the cell the text takes in the context's font.
bool MeasureText(q5_HDC dc, const q5_WCHAR* text, int length, int& width, int& height);

} // namespace q5plat

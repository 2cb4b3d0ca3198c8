// Device contexts and what the driver draws through them: bitmap transfers and XOR pen lines.
// On POSIX a window is a host-owned pixel surface and a device context a small object over it.
#pragma once

#include "interface/bitmap_info.h"
#include "interface/types.h"

namespace q5plat {

// POSIX: what a window handle points to. Rows top-down, 4 bytes a pixel (blue, green, red,
// unused). The host owns the pixels.
struct WindowSurface {
    std::uint8_t* bits = nullptr;
    std::int32_t width = 0, height = 0;
    std::int32_t stride = 0; // bytes per row
};

inline constexpr std::uint32_t kSourceCopy = 0xCC0020;
inline constexpr int kStretchColourOnColour = 4;
inline constexpr int kMixXorPen = 7;

// A memory device context compatible with `dc` (null: the screen); null on failure.
q5_HDC CreateMemoryDC(q5_HDC dc);
bool DeleteMemoryDC(q5_HDC dc);
// Selects a bitmap section into a memory context; returns the one it replaces.
q5_HBITMAP SelectBitmap(q5_HDC dc, q5_HBITMAP bitmap);
// Returns the previous mode, 0 on failure.
int SetStretchMode(q5_HDC dc, int mode);

// Stretches the source rectangle of a device-independent bitmap (colour-table use: RGB
// colours) onto the destination rectangle. As on the screen device, the source origin of a
// bottom-up bitmap is its lower-left corner. Returns the source lines copied, 0 on failure.
int StretchDib(q5_HDC dc, int xDest, int yDest, int wDest, int hDest, int xSrc, int ySrc,
               int wSrc, int hSrc, const void* bits, const q5_BITMAPINFOHEADER* header,
               std::uint32_t rop);
// Copies a rectangle of `source` at (xSrc, ySrc) to `dest` at (x, y).
bool BlockCopy(q5_HDC dest, int x, int y, int w, int h, q5_HDC source, int xSrc, int ySrc,
               std::uint32_t rop);
// Sets `lines` scan lines of a bitmap, from `startScan`, to the device; returns the lines set.
int SetDibToDevice(q5_HDC dc, int x, int y, std::uint32_t w, std::uint32_t h, int xSrc,
                   int ySrc, std::uint32_t startScan, std::uint32_t lines, const void* bits,
                   const q5_BITMAPINFOHEADER* header);

q5_HDC AcquireWindowDC(q5_HWND window);
bool ReleaseWindowDC(q5_HWND window, q5_HDC dc);

// Selects the stock white pen.
void SelectWhitePen(q5_HDC dc);
// Returns the previous mix mode, 0 on failure.
int SetMixMode(q5_HDC dc, int mode);
bool MoveTo(q5_HDC dc, int x, int y);
// Draws from the current position to (x, y), without the end pixel, which becomes current.
bool LineTo(q5_HDC dc, int x, int y);

} // namespace q5plat

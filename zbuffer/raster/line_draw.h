// Depth-tested lines: integer clipping, Bresenham stepping, the two-pixel-wide mode and bold
// lines.
#pragma once

#include "zbuffer/raster/raster_context.h"
#include "zbuffer/raster/screen_point.h"

#include <cstdint>

// Clips a line given in whole pixels to columns 0..clipWidth-1 and scanlines
// 0..clipHeight-1, moving the other coordinate and depth along. Returns true when nothing of
// the line is left.
bool ClipLine(const RasterContext& rc, std::int32_t& x0, std::int32_t& y0, std::int32_t& z0,
              std::int32_t& x1, std::int32_t& y1, std::int32_t& z1);

// Draws from `from` up to, but not including, `to` (joined lines share their end pixel once).
// With rc.wideLines each step also draws one neighbour: the pixel below for flat lines, the
// pixel to the right for steep ones.
void DrawLine(RasterContext& rc, const ScreenPoint& from, const ScreenPoint& to, RgbBytes colour);

// The line three times, at fixed subpixel offsets.
void DrawBoldLine(RasterContext& rc, const ScreenPoint& from, const ScreenPoint& to,
                  RgbBytes colour);

// The back-face rule for projected polygons.
#pragma once

#include "interface/screen_vertex.h"

// True when the polygon is to be drawn: its signed area sum (x_i * y_i+1 - x_i+1 * y_i over
// the closed outline, 1/256 pixel, 64-bit) is not positive. Zero-area polygons are drawn.
bool PassesBackFaceTest(const ScreenVertex* const* vertices, int count);

// Single points: one pixel, or a 2 x 2 block at double resolution.
#pragma once

#include "zbuffer/raster/raster_context.h"
#include "zbuffer/raster/screen_point.h"

// With testDepth a pixel is written only where the point is strictly nearer than the stored
// depth, unlike spans and lines, which also win ties.
void PlotPoint(RasterContext& rc, const ScreenPoint& p, RgbBytes colour, bool testDepth);

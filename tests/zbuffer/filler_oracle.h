// A deliberately naive polygon fill worked out from the rasterizer's rules alone: every edge,
// depth, colour and texture value is computed afresh from the end points in 64-bit arithmetic
// at its own scanline and column, nothing is stepped, and texels are read straight from the
// picture. The fillers, which step and skip, are held against it.
#pragma once

#include "zbuffer/raster/raster_context.h"
#include "zbuffer/raster/span_fillers.h"

class TPicture;

// Fills rc.vertexList in `mode` as FillPolygon(rc, mode) must, doubling the vertices in place
// at double resolution as it does, and returns what it must return. Reads the surface, clip,
// per-polygon and depth fields of the context but not its texture binding: textured modes
// sample `texture` (8, 24 or 32 bits, either row order), read by the bitmap's own layout.
int FillPolygonOracle(RasterContext& rc, FillMode mode, const TPicture* texture = nullptr);

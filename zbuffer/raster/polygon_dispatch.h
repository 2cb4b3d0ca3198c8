// Entry points that draw one screen polygon: they choose the filler from the polygon's flags,
// colours and bound texture.
#pragma once

#include "zbuffer/raster/raster_context.h"
#include "zbuffer/raster/span_fillers.h"

#include <cstdint>

// Triangle flags built by the face walk.
inline constexpr std::uint8_t kPolygonFlat = 1;       // colour from flatColour
inline constexpr std::uint8_t kPolygonBlended = 2;    // drawn with opacity
inline constexpr std::uint8_t kPolygonTwoSided = 128; // no back-face test; ignored here

// Untextured mode; a polygon whose vertices share one colour is drawn flat in it (and that
// colour becomes flatColour). Expects 1 <= rc.vertexCount <= 8 for the colour check.
FillMode ChooseUntexturedMode(RasterContext& rc, std::uint8_t flags);
FillMode ChooseTexturedMode(const RasterContext& rc, std::uint8_t flags);

// Draws the `count` vertices of rc.vertexList untextured. Returns 1.
int DrawUntexturedPolygon(RasterContext& rc, int count, std::uint8_t flags);

// Draws `count` triangles, corners[3 i .. 3 i + 2] the i-th, with the pixels DrawUntexturedPolygon
// (rc, 3, 0) gives each in turn, faster. A triangle whose corners share a colour is drawn in it
// without becoming flatColour, which stays as it is.
void DrawUntexturedTriangles(RasterContext& rc, ScreenVertex* const* corners, int count);

// Derives every vertex's u, v from s, t through the bound material's texture matrix, shifts
// them toward the origin and draws textured. Without a bound texture nothing is drawn.
// Returns 0.
int DrawTexturedPolygon(RasterContext& rc, int count, std::uint8_t flags);

// The polygon fillers: one per shading mode, each walking the edges scanline by scanline and
// writing colour and depth span by span.
#pragma once

#include "zbuffer/raster/raster_context.h"

#include <cstdint>

enum class FillMode : std::uint8_t {
    Flat,
    Gouraud,
    FlatBlended,
    GouraudBlended,
    FlatTextured,
    GouraudTextured,
    FlatTexturedBlended,
    GouraudTexturedBlended,
    FlatTextureAlpha, // 32-bit texture, blended through the texel's own alpha
    GouraudTextureAlpha,
};
inline constexpr int kFillModeCount = 10;
// Indexed by FillMode, for benchmarks and test reports.
inline constexpr const char* kFillModeNames[kFillModeCount] = {"Flat",
                                                               "Gouraud",
                                                               "FlatBlended",
                                                               "GouraudBlended",
                                                               "FlatTextured",
                                                               "GouraudTextured",
                                                               "FlatTexturedBlended",
                                                               "GouraudTexturedBlended",
                                                               "FlatTextureAlpha",
                                                               "GouraudTextureAlpha"};

// Fills the polygon of rc.vertexList / rc.vertexCount in the given mode. Returns 0 when it drew
// nothing because the polygon has 0 or more than 8 vertices or fewer than two edges that
// cross a scanline, else 1. Textured modes need a bound texture.
int FillPolygon(RasterContext& rc, FillMode mode);

struct ScreenVertex;

// Fills `count` triangles in Gouraud mode, corners[3 i], corners[3 i + 1] and corners[3 i + 2]
// the i-th, with the pixels FillPolygon gives them one after another; the lane paths set up and
// step short triangles several at a time.
void FillGouraudTriangles(RasterContext& rc, ScreenVertex* const* corners, int count);

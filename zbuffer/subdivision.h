// Refinement of large textured triangles: the rasterizer interpolates texture positions
// linearly on screen, so long edges are split and their midpoints projected afresh to let the
// texture follow the perspective.
#pragma once

#include "interface/screen_vertex.h"
#include "zbuffer/raster/raster_context.h"

#include <cstdint>

class q5_VIEW;

// A projected vertex with the view-space position it came from.
struct RefineVertex {
    ScreenVertex screen;
    float position[3];
};

inline constexpr int kMaxSubdivisionLevel = 6;
inline constexpr float kSplitEdgeSquared = 2304.0f; // pixels squared: edges beyond 48 pixels

// Bit 0 for a long edge a-b, bit 1 for b-c, bit 2 for c-a; 0 beyond the deepest level.
int SubdivisionMask(const ScreenVertex& a, const ScreenVertex& b, const ScreenVertex& c, int level);

// Draws the projected polygon as the fan (0, i - 1, i), subdividing each fan triangle while
// its mask is non-zero. `positions` holds the view-space position of every vertex.
void DrawRefinedFan(RasterContext& rc, q5_VIEW& view, ScreenVertex* const* vertices,
                    const float (*positions)[3], int count, std::uint8_t flags);

// One mesh triangle on its way to the rasterizer: clip-code test, clipping and projection
// through the host's view, facing and back-face tests, outlines, and the dispatch.
#pragma once

#include "zbuffer/raster/raster_context.h"
#include "zbuffer/raster/screen_point.h"
#include "zbuffer/triangle_queue.h"

#include <bit>
#include <cstdint>

class q5_VIEW;

using FaceLineRoutine = void (*)(RasterContext&, const ScreenPoint&, const ScreenPoint&, RgbBytes);

// Where triangles go: the rasterizer's context, the view that clips and projects, and the
// driver's line routine for outlines.
struct FaceTarget {
    RasterContext& rc;
    q5_VIEW& view;
    FaceLineRoutine drawLine;
};

// Records the view's clipper may write for one triangle.
inline constexpr int kClipBufferSize = 16;

// Until the view projects it, a corner keeps its view-space position as float bit patterns in
// x, y and z; that is the view's contract.
inline void SetViewPosition(ScreenVertex& v, const float p[3]) {
    v.x = std::bit_cast<std::int32_t>(p[0]);
    v.y = std::bit_cast<std::int32_t>(p[1]);
    v.z = std::bit_cast<std::int32_t>(p[2]);
}
inline void GetViewPosition(const ScreenVertex& v, float p[3]) {
    // Copies first: bit_cast takes a reference, which a packed field cannot bind.
    const std::int32_t bits[3] = {v.x, v.y, v.z};
    for (int i = 0; i < 3; ++i) p[i] = std::bit_cast<float>(bits[i]);
}

enum class Facing : int { Outside = -1, Back = 0, Front = 1 };

// Which way the triangle faces once projected, by the back-face rule; Outside when the clip codes
// or the clipper leave nothing of it. Works on copies: the corners stay in view space.
Facing FacingTest(FaceTarget& target, ScreenVertex* const corners[3]);

// Clips or projects the corners (in place when no clipping is needed), culls a back face unless
// `flags` has kPolygonTwoSided, and draws through the untextured dispatch. With a queue, an
// opaque triangle the clipper left whole waits in it; anything else has the queue drawn first.
void DrawUntexturedTriangle(FaceTarget& target, ScreenVertex* const corners[3], std::uint8_t flags,
                            TriangleQueue* queue = nullptr);

// The same through the textured dispatch. With `refine` the projected polygon is drawn as a fan
// of triangles, each subdivided while its edges are long.
void DrawTexturedTriangle(FaceTarget& target, ScreenVertex* const corners[3], std::uint8_t flags,
                          bool refine);

// Draws edge k (corner k to corner k + 1, the last back to corner 0) for every bit k set in
// `edgeBits`, as a depth-tested line in `colour`, or in the mean of its two corners' colours
// when `colour` is null. Corners outside the view are clipped by the view first.
void DrawTriangleEdges(FaceTarget& target, ScreenVertex* const corners[3], std::uint8_t edgeBits,
                       const RgbBytes* colour);

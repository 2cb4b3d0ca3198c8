// IZB drawing operations: face groups, and screen primitives handed to the rasterizer through
// the driver's own context.
#include <algorithm>

#include "core/math/matrix3d.h"
#include "interface/mesh.h"
#include "interface/screen_vertex.h"
#include "zbuffer/face_group.h"
#include "zbuffer/izb.h"
#include "zbuffer/raster/fixed_point.h"
#include "zbuffer/raster/line_draw.h"
#include "zbuffer/raster/point_plot.h"
#include "zbuffer/raster/polygon_dispatch.h"
#include "zbuffer/raster/raster_context.h"
#include "zbuffer/raster/screen_quad.h"

namespace {

RgbBytes ColourOf(const ScreenVertex& v) {
    return RgbBytes{v.red, v.green, v.blue};
}

// Colours given to the driver carry red in the low byte.
RgbBytes ColourOf(std::uint32_t c) {
    return RgbBytes{static_cast<std::uint8_t>(c), static_cast<std::uint8_t>(c >> 8),
                    static_cast<std::uint8_t>(c >> 16)};
}

// The rasterizer steps vertices in place, so the caller's stay untouched.
int FillCopy(RasterContext& rc, const ScreenVertex* vertices, int count, std::uint8_t flags) {
    if (vertices == nullptr || count < 1 || count > kMaxPolygonVertices) return 0;
    ScreenVertex copy[kMaxPolygonVertices];
    ScreenVertex* list[kMaxPolygonVertices];
    for (int i = 0; i < count; ++i) {
        copy[i] = vertices[i];
        list[i] = &copy[i];
    }
    rc.vertexList = list;
    const int drawn = DrawUntexturedPolygon(rc, count, flags);
    rc.vertexList = nullptr;
    rc.vertexCount = 0;
    return drawn;
}

ScreenVertex Corner(std::int32_t x, std::int32_t y, RgbBytes c) {
    ScreenVertex v{};
    v.x = x * 256;
    v.y = y * 256;
    v.red = c.red;
    v.green = c.green;
    v.blue = c.blue;
    return v;
}

} // namespace

std::int32_t IZB::DrawFaceGroupPlaced(q5_MESH* mesh, q5_FACERUN* run, q5_RENDERSTATE* state,
                                      const MATRIX3D* placement) {
    if (placement == nullptr || mesh == nullptr || mesh->vertices == nullptr)
        return DrawFaceGroup(mesh, run, state);
    if (view == nullptr || run == nullptr) return -1;
    const std::uint32_t n = mesh->vertexCount;
    if (placedPositions_.size() < n) placedPositions_.resize(n);
    for (std::uint32_t i = 0; i < n; ++i) {
        const q5_MESHVERTEX& v = mesh->vertices[i];
        placedPositions_[i] = POINT3D(v.x, v.y, v.z);
    }
    placement->TransformPoints(placedPositions_.data(), static_cast<int>(n));
    const q5_RENDERSTATE defaults;
    FaceTarget target{raster_, *view, lineRoutine};
    return DrawFaceRun(target, *mesh, *run, state != nullptr ? *state : defaults,
                       placedPositions_.data());
}

std::int32_t IZB::DrawFaceGroup(q5_MESH* mesh, q5_FACERUN* run, q5_RENDERSTATE* state) {
    if (view == nullptr || mesh == nullptr || run == nullptr) return -1;
    const q5_RENDERSTATE defaults;
    FaceTarget target{raster_, *view, lineRoutine};
    return DrawFaceRun(target, *mesh, *run, state != nullptr ? *state : defaults);
}

std::int32_t IZB::DrawScreenPolygon(const ScreenVertex* vertices, std::int32_t count) {
    return FillCopy(raster_, vertices, count, 0);
}

std::int32_t IZB::DrawScreenTriangle(const ScreenVertex* a, const ScreenVertex* b,
                                     const ScreenVertex* c) {
    if (a == nullptr || b == nullptr || c == nullptr) return 0;
    const ScreenVertex v[3] = {*a, *b, *c};
    return FillCopy(raster_, v, 3, 0);
}

std::int32_t IZB::DrawScreenLine(const ScreenVertex* a, const ScreenVertex* b) {
    if (a == nullptr || b == nullptr) return 0;
    lineRoutine(raster_, PointOf(*a), PointOf(*b), ColourOf(*a));
    return 1;
}

std::int32_t IZB::DrawWideLine(const ScreenVertex* a, const ScreenVertex* b) {
    if (a == nullptr || b == nullptr) return 0;
    RasterContext& rc = raster_;
    const std::uint8_t saved = rc.wideLines;
    rc.wideLines = 1;
    lineRoutine(rc, PointOf(*a), PointOf(*b), ColourOf(*a));
    rc.wideLines = saved;
    return 1;
}

std::int32_t IZB::DrawBoldLine(const ScreenVertex* a, const ScreenVertex* b) {
    if (a == nullptr || b == nullptr) return 0;
    ::DrawBoldLine(raster_, PointOf(*a), PointOf(*b), ColourOf(*a));
    return 1;
}

std::int32_t IZB::DrawScreenLines(const ScreenVertex* vertices, std::int32_t count) {
    if (vertices == nullptr || count < 2) return 0;
    for (std::int32_t i = 0; i + 1 < count; i += 2) DrawScreenLine(&vertices[i], &vertices[i + 1]);
    return 1;
}

std::int32_t IZB::DrawPoint(const ScreenVertex* v) {
    if (v == nullptr) return 0;
    PlotPoint(raster_, PointOf(*v), ColourOf(*v), true);
    return 1;
}

std::int32_t IZB::DrawScreenPoints(const ScreenVertex* vertices, std::int32_t count) {
    if (vertices == nullptr || count < 1) return 0;
    for (std::int32_t i = 0; i < count; ++i) DrawPoint(&vertices[i]);
    return 1;
}

void IZB::DrawLine2D(q5_FPOINT a, q5_FPOINT b, std::uint32_t colour) {
    const ScreenPoint from{static_cast<std::int32_t>(a.x * 256.0f),
                           static_cast<std::int32_t>(a.y * 256.0f), 0};
    const ScreenPoint to{static_cast<std::int32_t>(b.x * 256.0f),
                         static_cast<std::int32_t>(b.y * 256.0f), 0};
    lineRoutine(raster_, from, to, ColourOf(colour));
}

// Four flat bands along the frame's edges, nearest depth, in the given colour.
std::int32_t IZB::DrawFrameBorder(std::int32_t, std::int32_t thickness, std::uint32_t colour) {
    const std::int32_t w = surface.supersampling ? surface.W / 2 : surface.W;
    const std::int32_t h = surface.supersampling ? surface.H / 2 : surface.H;
    if (thickness < 1 || w < 1 || h < 1) return 1;
    const std::int32_t t = std::min({thickness, w, h});
    const RgbBytes c = ColourOf(colour);
    raster_.flatColour = c;
    const std::int32_t bands[4][4] = {
        {0, 0, w, t}, {0, h - t, w, h}, {0, t, t, h - t}, {w - t, t, w, h - t}};
    for (const auto& band : bands) {
        if (band[2] <= band[0] || band[3] <= band[1]) continue;
        const ScreenVertex quad[4] = {Corner(band[0], band[1], c), Corner(band[2], band[1], c),
                                      Corner(band[2], band[3], c), Corner(band[0], band[3], c)};
        FillCopy(raster_, quad, 4, kPolygonFlat);
    }
    return 1;
}

std::int32_t IZB::DrawScreenQuad(const q5_SCREENQUAD* quad) {
    if (quad == nullptr) return 1;
    // The host view's screen offset is not modelled yet, so quads keep their positions.
    return ::DrawScreenQuad(raster_, *quad, ScreenOffset{});
}

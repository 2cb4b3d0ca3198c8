// Subdivision of large textured triangles.
#include "zbuffer/subdivision.h"

#include "interface/view.h"
#include "zbuffer/raster/polygon_dispatch.h"

#include <cstdint>

namespace {

float EdgeSquared(const ScreenVertex& a, const ScreenVertex& b) {
    const float dx = static_cast<float>(b.x - a.x) / 256.0f;
    const float dy = static_cast<float>(b.y - a.y) / 256.0f;
    return dx * dx + dy * dy;
}

std::uint8_t MeanByte(std::uint8_t a, std::uint8_t b) {
    return static_cast<std::uint8_t>((a + b) * 0.5);
}

std::int32_t HalfSum(std::int32_t a, std::int32_t b) {
    return static_cast<std::int32_t>((static_cast<std::int64_t>(a) + b) >> 1);
}

RefineVertex Midpoint(q5_VIEW& view, const RefineVertex& a, const RefineVertex& b) {
    RefineVertex m{};
    for (int i = 0; i < 3; ++i) m.position[i] = (a.position[i] + b.position[i]) * 0.5f;
    m.screen.s = (a.screen.s + b.screen.s) * 0.5f;
    m.screen.t = (a.screen.t + b.screen.t) * 0.5f;
    m.screen.red = MeanByte(a.screen.red, b.screen.red);
    m.screen.green = MeanByte(a.screen.green, b.screen.green);
    m.screen.blue = MeanByte(a.screen.blue, b.screen.blue);
    // The screen midpoint stands until the view projects the true one over it.
    m.screen.x = HalfSum(a.screen.x, b.screen.x);
    m.screen.y = HalfSum(a.screen.y, b.screen.y);
    m.screen.z = HalfSum(a.screen.z, b.screen.z);
    view.ProjectPoint(m.position, m.screen);
    return m;
}

// The dispatch moves vertices in place, and subdivided triangles share theirs.
void DrawTriangle(RasterContext& rc, const RefineVertex& a, const RefineVertex& b,
                  const RefineVertex& c, std::uint8_t flags) {
    ScreenVertex copy[3] = {a.screen, b.screen, c.screen};
    ScreenVertex* list[3] = {&copy[0], &copy[1], &copy[2]};
    rc.vertexList = list;
    DrawTexturedPolygon(rc, 3, flags);
    rc.vertexList = nullptr;
}

void DrawSubdivided(RasterContext& rc, q5_VIEW& view, const RefineVertex& a, const RefineVertex& b,
                    const RefineVertex& c, std::uint8_t flags, int level) {
    int mask = SubdivisionMask(a.screen, b.screen, c.screen, level);
    if (mask == 0) {
        DrawTriangle(rc, a, b, c, flags);
        return;
    }
    const int next = level + 1;
    if (mask == 7) {
        const RefineVertex ab = Midpoint(view, a, b);
        const RefineVertex bc = Midpoint(view, b, c);
        const RefineVertex ca = Midpoint(view, c, a);
        DrawSubdivided(rc, view, a, ab, ca, flags, next);
        DrawSubdivided(rc, view, ab, b, bc, flags, next);
        DrawSubdivided(rc, view, ca, bc, c, flags, next);
        DrawSubdivided(rc, view, ab, bc, ca, flags, next);
        return;
    }
    // Rotate the corners so that the split edges start at p[0]; the winding stays.
    const RefineVertex* p[3] = {&a, &b, &c};
    const bool twoEdges = mask == 3 || mask == 5 || mask == 6;
    while (!(mask & 1) || (twoEdges && !(mask & 2))) {
        const RefineVertex* first = p[0];
        p[0] = p[1];
        p[1] = p[2];
        p[2] = first;
        mask = (mask >> 1) | ((mask & 1) << 2);
    }
    const RefineVertex m01 = Midpoint(view, *p[0], *p[1]);
    if (!twoEdges) {
        DrawSubdivided(rc, view, *p[0], m01, *p[2], flags, next);
        DrawSubdivided(rc, view, m01, *p[1], *p[2], flags, next);
        return;
    }
    const RefineVertex m12 = Midpoint(view, *p[1], *p[2]);
    DrawSubdivided(rc, view, m01, *p[1], m12, flags, next);
    DrawSubdivided(rc, view, *p[0], m01, m12, flags, next);
    DrawSubdivided(rc, view, *p[0], m12, *p[2], flags, next);
}

} // namespace

int SubdivisionMask(const ScreenVertex& a, const ScreenVertex& b, const ScreenVertex& c,
                    int level) {
    if (level > kMaxSubdivisionLevel) return 0;
    int mask = 0;
    if (EdgeSquared(a, b) > kSplitEdgeSquared) mask |= 1;
    if (EdgeSquared(b, c) > kSplitEdgeSquared) mask |= 2;
    if (EdgeSquared(c, a) > kSplitEdgeSquared) mask |= 4;
    return mask;
}

void DrawRefinedFan(RasterContext& rc, q5_VIEW& view, ScreenVertex* const* vertices,
                    const float (*positions)[3], int count, std::uint8_t flags) {
    auto refineVertex = [&](int i) {
        RefineVertex r{*vertices[i], {positions[i][0], positions[i][1], positions[i][2]}};
        return r;
    };
    const RefineVertex first = refineVertex(0);
    for (int i = 2; i < count; ++i)
        DrawSubdivided(rc, view, first, refineVertex(i - 1), refineVertex(i), flags, 0);
}

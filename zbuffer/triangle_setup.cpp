// Triangle setup between the face walk and the rasterizer.
#include "zbuffer/triangle_setup.h"

#include "interface/view.h"
#include "zbuffer/back_face.h"
#include "zbuffer/raster/fixed_point.h"
#include "zbuffer/raster/polygon_dispatch.h"
#include "zbuffer/subdivision.h"

#include <algorithm>
#include <cstdint>

namespace {

// Bit 0 of a clip code is no plane.
constexpr std::uint8_t kPlaneBits = 254;

struct ClipCodes {
    std::uint8_t any;     // OR of the codes: a corner lies outside some plane when above 1
    std::uint8_t allSame; // AND of the plane bits: every corner outside one plane
};

ClipCodes CodesOf(const ScreenVertex* const* corners, int n) {
    ClipCodes codes{0, 0xFF};
    for (int i = 0; i < n; ++i) {
        codes.any |= corners[i]->clipCode;
        codes.allSame &= corners[i]->clipCode;
    }
    codes.allSame &= kPlaneBits;
    return codes;
}

// A triangle as the dispatchers take it: a list of projected vertices, either the corners
// themselves or records of the view's clipper held here.
struct ProjectedPolygon {
    ScreenVertex clipped[kClipBufferSize];
    ScreenVertex* list[kClipBufferSize];
    float positions[kClipBufferSize][3]; // view space, kept for refinement
    int count = 0;
};

// Projects the corners in place, or clips them into `out` and projects the result. Leaves
// out.count at 0 when the clip codes or the clipper leave nothing. View-space positions are
// kept only when asked for: most triangles never look at them.
void ClipAndProject(q5_VIEW& view, ScreenVertex* const corners[3], bool textured,
                    ProjectedPolygon& out, bool keepPositions = true) {
    out.count = 0;
    const ClipCodes codes = CodesOf(corners, 3);
    if (codes.any <= 1) {
        for (int i = 0; i < 3; ++i) {
            if (keepPositions) GetViewPosition(*corners[i], out.positions[i]);
            out.list[i] = corners[i];
        }
        view.ProjectVertexList(corners, 3);
        out.count = 3;
        return;
    }
    if (codes.allSame != 0) return;
    int count = 3;
    const bool kept = textured ? view.ClipTexturedPolygon(corners, out.clipped, count)
                               : view.ClipPolygon(corners, out.clipped, count);
    if (!kept || count < 1) return;
    count = std::min(count, kClipBufferSize);
    for (int i = 0; i < count; ++i) {
        if (keepPositions) GetViewPosition(out.clipped[i], out.positions[i]);
        out.list[i] = &out.clipped[i];
    }
    view.ProjectVertices(out.clipped, count, static_cast<int>(sizeof(ScreenVertex)));
    out.count = count;
}

bool Culled(const ProjectedPolygon& p, std::uint8_t flags) {
    return !(flags & kPolygonTwoSided) && !PassesBackFaceTest(p.list, p.count);
}

// The queue draws opaque triangles in their corners' colours, which a flat one must have.
bool Queueable(const RasterContext& rc, const ProjectedPolygon& p, std::uint8_t flags) {
    if (p.count != 3 || (flags & kPolygonBlended)) return false;
    if (!(flags & kPolygonFlat)) return true;
    const RgbBytes c = rc.flatColour;
    for (int i = 0; i < 3; ++i) {
        const ScreenVertex& v = *p.list[i];
        if (v.red != c.red || v.green != c.green || v.blue != c.blue) return false;
    }
    return true;
}

using DispatchFn = int (*)(RasterContext&, int, std::uint8_t);

// The rasterizer takes at most 8 vertices, but a triangle cut by many planes can have more;
// such a polygon goes as a fan of copied triangles, since the dispatch moves vertices in place.
void HandOver(RasterContext& rc, ProjectedPolygon& p, std::uint8_t flags, DispatchFn dispatch) {
    if (p.count <= kMaxPolygonVertices) {
        rc.vertexList = p.list;
        dispatch(rc, p.count, flags);
    } else {
        for (int i = 2; i < p.count; ++i) {
            ScreenVertex copy[3] = {*p.list[0], *p.list[i - 1], *p.list[i]};
            ScreenVertex* fan[3] = {&copy[0], &copy[1], &copy[2]};
            rc.vertexList = fan;
            dispatch(rc, 3, flags);
        }
    }
    rc.vertexList = nullptr;
}

float ViewDistanceSquared(const float a[3], const float b[3]) {
    const float dx = b[0] - a[0], dy = b[1] - a[1], dz = b[2] - a[2];
    return dx * dx + dy * dy + dz * dz;
}

RgbBytes MeanColour(const ScreenVertex& a, const ScreenVertex& b) {
    return RgbBytes{static_cast<std::uint8_t>((a.red + b.red) / 2),
                    static_cast<std::uint8_t>((a.green + b.green) / 2),
                    static_cast<std::uint8_t>((a.blue + b.blue) / 2)};
}

} // namespace

Facing FacingTest(FaceTarget& target, ScreenVertex* const corners[3]) {
    ScreenVertex copy[3] = {*corners[0], *corners[1], *corners[2]};
    ScreenVertex* copies[3] = {&copy[0], &copy[1], &copy[2]};
    ProjectedPolygon p;
    ClipAndProject(target.view, copies, false, p, false);
    if (p.count == 0) return Facing::Outside;
    return PassesBackFaceTest(p.list, p.count) ? Facing::Front : Facing::Back;
}

void DrawUntexturedTriangle(FaceTarget& target, ScreenVertex* const corners[3], std::uint8_t flags,
                            TriangleQueue* queue) {
    ProjectedPolygon p;
    ClipAndProject(target.view, corners, false, p, false);
    if (p.count == 0 || Culled(p, flags)) return;
    if (queue && Queueable(target.rc, p, flags)) {
        queue->Add(target.rc, p.list);
        return;
    }
    if (queue) queue->Flush(target.rc);
    HandOver(target.rc, p, flags, &DrawUntexturedPolygon);
}

void DrawTexturedTriangle(FaceTarget& target, ScreenVertex* const corners[3], std::uint8_t flags,
                          bool refine) {
    ProjectedPolygon p;
    ClipAndProject(target.view, corners, true, p, refine);
    if (p.count == 0 || Culled(p, flags)) return;
    if (refine) {
        DrawRefinedFan(target.rc, target.view, p.list, p.positions, p.count, flags);
        return;
    }
    HandOver(target.rc, p, flags, &DrawTexturedPolygon);
}

void DrawTriangleEdges(FaceTarget& target, ScreenVertex* const corners[3], std::uint8_t edgeBits,
                       const RgbBytes* colour) {
    edgeBits &= 7;
    const ClipCodes codes = CodesOf(corners, 3);
    if (edgeBits == 0 || codes.allSame != 0) return;
    if (codes.any <= 1) {
        ScreenVertex copy[3] = {*corners[0], *corners[1], *corners[2]};
        ScreenVertex* copies[3] = {&copy[0], &copy[1], &copy[2]};
        target.view.ProjectVertexList(copies, 3);
        for (int k = 0; k < 3; ++k) {
            if (!(edgeBits & (1 << k))) continue;
            const int next = (k + 1) % 3;
            const RgbBytes c = colour ? *colour : MeanColour(*corners[k], *corners[next]);
            target.drawLine(target.rc, PointOf(copy[k]), PointOf(copy[next]), c);
        }
        return;
    }
    for (int k = 0; k < 3; ++k) {
        if (!(edgeBits & (1 << k))) continue;
        const ScreenVertex& a = *corners[k];
        const ScreenVertex& b = *corners[(k + 1) % 3];
        // The edge as a triangle with its end twice, so that the view's clipper can cut it.
        ScreenVertex copy[3] = {a, b, b};
        ScreenVertex* copies[3] = {&copy[0], &copy[1], &copy[2]};
        ProjectedPolygon p;
        ClipAndProject(target.view, copies, false, p);
        if (p.count < 2) continue;
        // What is left lies on the edge: its ends are the vertices nearest to and farthest from
        // corner a, in view space.
        float start[3];
        GetViewPosition(a, start);
        int from = 0, to = 0;
        for (int i = 1; i < p.count; ++i) {
            const float d = ViewDistanceSquared(start, p.positions[i]);
            if (d < ViewDistanceSquared(start, p.positions[from])) from = i;
            if (d > ViewDistanceSquared(start, p.positions[to])) to = i;
        }
        target.drawLine(target.rc, PointOf(*p.list[from]), PointOf(*p.list[to]),
                        colour ? *colour : MeanColour(a, b));
    }
}

// Edge building, ordering and the bottom-scanline rule of the scanline rasterizer.
#include "zbuffer/raster/edge_setup.h"

#include <algorithm>
#include <climits>
#include <cmath>

void ApplyDoubleResolution(const RasterContext& rc) {
    if (!rc.doubleResolution) return;
    for (int i = 0; i < rc.vertexCount; ++i) {
        rc.vertexList[i]->x *= 2;
        rc.vertexList[i]->y *= 2;
    }
}

namespace {

// By masks: the compiler may branch on std::min here, and random corners defeat prediction.
std::int32_t Lesser(std::int32_t a, std::int32_t b) {
    return a ^ ((a ^ b) & -static_cast<std::int32_t>(b < a));
}
std::int32_t Greater(std::int32_t a, std::int32_t b) {
    return a ^ ((a ^ b) & -static_cast<std::int32_t>(b > a));
}

} // namespace

PolygonReach ReachOf(const RasterContext& rc) {
    // The walk hands a triangle's edges out in order, each within its own scanlines; other
    // outlines can come to it crossed, with edges used past their ends, and are left to the
    // edge count.
    if (rc.vertexCount != 3) return PolygonReach::Frame;
    ScanlineRange rows;
    return TriangleReach(rc, *rc.vertexList[0], *rc.vertexList[1], *rc.vertexList[2], rows);
}

PolygonReach TriangleReach(const RasterContext& rc, const ScreenVertex& a, const ScreenVertex& b,
                           const ScreenVertex& c, ScanlineRange& rows) {
    const std::int32_t top = ScanlineOf(Lesser(a.y, Lesser(b.y, c.y)));
    const std::int32_t bottom = ScanlineOf(Greater(a.y, Greater(b.y, c.y)));
    rows = {top, bottom};
    // A closed outline that leaves its scanline comes back: two edges cross, or none.
    if (top == bottom) return PolygonReach::NoScanline;
    if (bottom < 0 || top > rc.clipMaxY) return PolygonReach::NoPixel;
    // Edge x stays between its ends, so spans stay between the extreme columns: a span from
    // column L to R writes columns L..R-1. Only where 16.16 edge positions cannot wrap.
    const std::int32_t minX = Lesser(a.x, Lesser(b.x, c.x));
    const std::int32_t maxX = Greater(a.x, Greater(b.x, c.x));
    constexpr std::int32_t kNoWrap = 1 << 22;
    if (minX > -kNoWrap && maxX < kNoWrap) {
        const std::int32_t left = minX >> kSubpixelBits, right = maxX >> kSubpixelBits;
        if (left == right || right <= 0 || left > rc.clipMaxX) return PolygonReach::NoPixel;
    }
    return PolygonReach::Frame;
}

int SetupEdges(const RasterContext& rc, EdgeRecord* edges) {
    ScreenVertex** vertices = rc.vertexList;
    const int n = rc.vertexCount;
    int count = 0;
    for (int i = 0; i < n; ++i) {
        const ScreenVertex* a = vertices[i];
        const ScreenVertex* b = vertices[i + 1 < n ? i + 1 : 0];
        if (a->y == b->y) continue;
        if (a->y > b->y) std::swap(a, b);
        const std::int32_t scanlines = ScanlineOf(b->y) - ScanlineOf(a->y);
        if (scanlines == 0) continue;
        // Colours and texture positions are set only by the modes that read them.
        EdgeRecord& e = edges[count++];
        e.top = a;
        e.bottom = b;
        e.scanlines = scanlines;
        e.x = static_cast<std::int32_t>(static_cast<std::uint32_t>(a->x) << kEdgeFromSubpixel);
        e.xStep = static_cast<std::int32_t>(static_cast<std::uint32_t>(b->x - a->x)
                                            << kEdgeFromSubpixel) /
                  scanlines;
        e.z = a->z + rc.depthBias;
        e.zRemainder = 0;
        e.zStep = (b->z - a->z) / scanlines;
        e.zStepRemainder = (b->z - a->z) % scanlines;
    }
    return count;
}

void SetupEdgeColours(EdgeRecord* edges, int count, std::uint32_t multiplier) {
    auto fixed = [multiplier](std::uint8_t c) { return (c * multiplier) << kEdgeFracBits; };
    for (int i = 0; i < count; ++i) {
        EdgeRecord& e = edges[i];
        e.r = fixed(e.top->red);
        e.g = fixed(e.top->green);
        e.b = fixed(e.top->blue);
        e.rStep = WrappedDifference(e.r, fixed(e.bottom->red)) / e.scanlines;
        e.gStep = WrappedDifference(e.g, fixed(e.bottom->green)) / e.scanlines;
        e.bStep = WrappedDifference(e.b, fixed(e.bottom->blue)) / e.scanlines;
    }
}

std::int32_t TexelPosition(float coordinate, std::int32_t size) {
    const double p = std::trunc(static_cast<double>(coordinate) * kTexelOne * size);
    if (p > kTexelPositionLimit) return kTexelPositionLimit;
    // Only large positions are limited. Below 32 bits (and NaN) the result is what the
    // processor's truncating conversion gives there: the lowest value.
    if (!(p >= INT32_MIN)) return INT32_MIN;
    return static_cast<std::int32_t>(p);
}

void SetupEdgeTexture(const RasterContext& rc, EdgeRecord* edges, int count) {
    for (int i = 0; i < count; ++i) {
        EdgeRecord& e = edges[i];
        e.u = TexelPosition(e.top->u, rc.texWidth);
        e.v = TexelPosition(e.top->v, rc.texHeight);
        e.uStep = WrappedDifference(e.u, TexelPosition(e.bottom->u, rc.texWidth)) / e.scanlines;
        e.vStep = WrappedDifference(e.v, TexelPosition(e.bottom->v, rc.texHeight)) / e.scanlines;
    }
}

EdgeRecord* SortEdges(EdgeRecord* edges, int count) {
    EdgeRecord* head = &edges[0];
    head->next = nullptr;
    for (int i = 1; i < count; ++i) {
        EdgeRecord* e = &edges[i];
        EdgeRecord** link = &head;
        while (*link && (*link)->top->y < e->top->y) link = &(*link)->next;
        e->next = *link;
        *link = e;
    }
    return head;
}

std::int32_t LastScanline(const RasterContext& rc, const EdgeRecord* head, int vertexCount,
                          int edgeCount) {
    const bool twoEdgeTriangle = vertexCount == 3 && edgeCount == 2;
    if (!twoEdgeTriangle && vertexCount != 4) return rc.clipMaxY;

    // Follow both chains the way the scanline walk hands out edges: whichever edge ends
    // first takes the next one of the list.
    const EdgeRecord* a = head;
    const EdgeRecord* b = head->next;
    for (const EdgeRecord* next = b->next; next; next = next->next) {
        if (ScanlineOf(a->bottom->y) <= ScanlineOf(b->bottom->y))
            a = next;
        else
            b = next;
    }
    const std::int32_t bottom = ScanlineOf(a->bottom->y);
    if (bottom == ScanlineOf(b->bottom->y) && bottom <= rc.clipMaxY) return bottom - 1;
    return rc.clipMaxY;
}

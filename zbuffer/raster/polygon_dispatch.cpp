// Untextured and textured polygon dispatch.
#include "zbuffer/raster/polygon_dispatch.h"

#include "interface/material.h"
#include "interface/screen_vertex.h"
#include "zbuffer/raster/fixed_point.h"

#include <algorithm>
#include <cmath>

namespace {

bool SameColour(const ScreenVertex& a, const ScreenVertex& b) {
    return a.red == b.red && a.green == b.green && a.blue == b.blue;
}

bool DrawableCount(int count) {
    return count >= 1 && count <= kMaxPolygonVertices;
}

// Whole-unit shift that keeps fixed-point texture positions non-negative; the sampler wraps.
float TextureShift(float minimum) {
    return minimum < 0.0f ? std::ceil(minimum) - 1.0f : std::floor(minimum);
}

} // namespace

FillMode ChooseUntexturedMode(RasterContext& rc, std::uint8_t flags) {
    const bool blended = (flags & kPolygonBlended) != 0;
    if (!(flags & kPolygonFlat)) {
        const ScreenVertex& first = *rc.vertexList[0];
        for (int i = 1; i < rc.vertexCount; ++i) {
            if (!SameColour(first, *rc.vertexList[i]))
                return blended ? FillMode::GouraudBlended : FillMode::Gouraud;
        }
        rc.flatColour = RgbBytes{first.red, first.green, first.blue};
    }
    return blended ? FillMode::FlatBlended : FillMode::Flat;
}

FillMode ChooseTexturedMode(const RasterContext& rc, std::uint8_t flags) {
    const bool flat = (flags & kPolygonFlat) != 0;
    if (!(flags & kPolygonBlended))
        return flat ? FillMode::FlatTextured : FillMode::GouraudTextured;
    if (rc.textureIs32Bit) return flat ? FillMode::FlatTextureAlpha : FillMode::GouraudTextureAlpha;
    return flat ? FillMode::FlatTexturedBlended : FillMode::GouraudTexturedBlended;
}

int DrawUntexturedPolygon(RasterContext& rc, int count, std::uint8_t flags) {
    rc.vertexCount = count;
    if (!DrawableCount(count)) return 1;
    if (flags & kPolygonBlended) rc.inverseOpacity = 255 - rc.opacity;
    FillPolygon(rc, ChooseUntexturedMode(rc, flags));
    return 1;
}

void DrawUntexturedTriangles(RasterContext& rc, ScreenVertex* const* corners, int count) {
    // Stepping a colour that does not change gives the flat filler's pixels.
    FillGouraudTriangles(rc, corners, count);
}

int DrawTexturedPolygon(RasterContext& rc, int count, std::uint8_t flags) {
    rc.vertexCount = count;
    if (!DrawableCount(count) || !rc.sampleTexel) return 0;

    static constexpr float kIdentity[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    const float(&m)[3][3] = rc.boundMaterial ? rc.boundMaterial->textureMatrix : kIdentity;
    float minU = 0.0f, minV = 0.0f;
    for (int i = 0; i < count; ++i) {
        ScreenVertex& p = *rc.vertexList[i];
        const float s = p.s, t = p.t;
        // Texture rows are stored bottom-up, hence the sign of v.
        const float u = s * m[0][0] + t * m[1][0] + m[2][0];
        const float v = -(s * m[0][1] + t * m[1][1] + m[2][1]);
        p.u = u;
        p.v = v;
        minU = i == 0 ? u : std::min(minU, u);
        minV = i == 0 ? v : std::min(minV, v);
    }
    if (!(minU >= 0.0f && minU < 1.0f && minV >= 0.0f && minV < 1.0f)) {
        const float shiftU = TextureShift(minU), shiftV = TextureShift(minV);
        for (int i = 0; i < count; ++i) {
            rc.vertexList[i]->u -= shiftU;
            rc.vertexList[i]->v -= shiftV;
        }
    }

    if (flags & kPolygonBlended) rc.inverseOpacity = 255 - rc.opacity;
    FillPolygon(rc, ChooseTexturedMode(rc, flags));

    // Edge setup doubled the vertices in place; the caller may reuse them.
    if (rc.doubleResolution) {
        for (int i = 0; i < count; ++i) {
            rc.vertexList[i]->x /= 2;
            rc.vertexList[i]->y /= 2;
        }
    }
    return 0;
}

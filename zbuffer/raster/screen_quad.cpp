// Screen quads: straight to a flat textured filler, without clipping, culling or texture matrix.
#include "zbuffer/raster/screen_quad.h"

#include "interface/screen_vertex.h"
#include "zbuffer/raster/fixed_point.h"
#include "zbuffer/raster/span_fillers.h"
#include "zbuffer/raster/texture_binding.h"

#include <cmath>

int DrawScreenQuad(RasterContext& rc, const q5_SCREENQUAD& quad, const ScreenOffset& offset) {
    ScreenVertex corners[4] = {};
    ScreenVertex* list[4];
    const bool shift = offset.enabled && (quad.flags & q5_SCREENQUAD::kApplyScreenOffset);
    const std::int32_t shiftX = shift ? static_cast<std::int32_t>(offset.x) * kSubpixelOne : 0;
    const std::int32_t shiftY = shift ? static_cast<std::int32_t>(offset.y) * kSubpixelOne : 0;
    for (int i = 0; i < 4; ++i) {
        ScreenVertex& c = corners[i];
        c.x = static_cast<std::int32_t>(quad.position[i][0] * 256.0) - shiftX;
        c.y = static_cast<std::int32_t>(quad.position[i][1] * 256.0) - shiftY;
        c.z = static_cast<std::int32_t>(quad.position[i][2]);
        c.u = quad.uv[i][0];
        c.v = quad.uv[i][1];
        list[i] = &c;
    }

    ScreenVertex** savedList = rc.vertexList;
    rc.vertexList = list;
    rc.vertexCount = 4;
    BindMaterialTexture(rc, quad.material, 0);
    rc.opacity = 255;
    rc.flatColour = RgbBytes{255, 255, 255};
    if (rc.sampleTexel) {
        if (!rc.textureIs32Bit) {
            FillPolygon(rc, FillMode::FlatTextured);
        } else {
            rc.inverseOpacity = 0;
            FillPolygon(rc, FillMode::FlatTextureAlpha);
        }
    }
    // Unbound, so the next textured face binds afresh even with the same material.
    BindMaterialTexture(rc, nullptr, 0);
    rc.vertexList = savedList;
    return 1;
}

// Textured quadrilaterals given directly in screen space: sprites, labels, placed images.
#pragma once

#include "interface/screen_quad.h"
#include "zbuffer/raster/raster_context.h"

#include <cstdint>

// Where the driver wants the host view's screen offset (ox, oy) taken off quads that ask
// for it.
struct ScreenOffset {
    bool enabled = false;
    float x = 0.0f;
    float y = 0.0f;
};

// Draws the quad flat in white through the material's slot-0 texture: 32-bit textures blend by
// their own alpha, others are opaque and come out one step darker (texel * 255 >> 8). The
// texture is unbound afterwards. Without a texture nothing is drawn. Returns 1.
int DrawScreenQuad(RasterContext& rc, const q5_SCREENQUAD& quad, const ScreenOffset& offset);

// Textured quadrilaterals given directly in screen space: sprites, labels, placed images.
#pragma once

#include "zbuffer/raster_context.h"

#include <cstdint>

// The host's quad record, as far as the driver reads it.
struct q5_SCREENQUAD {
    std::uint32_t flags;         // kApplyScreenOffset and host bits
    const q5_MATERIAL* material; // its slot-0 texture is drawn
    float position[4][3];        // x, y in pixels, z as depth
    float uv[4][2];              // texture units 0..1, used as they are

    static constexpr std::uint32_t kApplyScreenOffset = 0x1000;
};

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

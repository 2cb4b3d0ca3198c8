// The host's textured screen quad, as the driver reads it.
#pragma once

#include <cstdint>

struct q5_MATERIAL;

struct q5_SCREENQUAD {
    std::uint32_t flags;         // kApplyScreenOffset and host bits
    const q5_MATERIAL* material; // its slot-0 texture is drawn
    float position[4][3];        // x, y in pixels, z as depth
    float uv[4][2];              // texture units 0..1, used as they are

    static constexpr std::uint32_t kApplyScreenOffset = 0x1000;
};

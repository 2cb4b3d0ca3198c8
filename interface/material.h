// The host's material as the renderer reads it: texture slots, texture matrix and colour.
#pragma once

#include <cstdint>

class TPicture;

inline constexpr int kMaterialSlotCount = 8;
inline constexpr int kSlotDiffuse = 0;    // modulated by the vertex or flat colour
inline constexpr int kSlotReflection = 3; // sphere-mapped, drawn flat in the diffuse colour
inline constexpr int kSlotHalfBright = 7; // drawn flat with grey 128, so at half brightness

struct q5_MATERIAL {
    TPicture* textures[kMaterialSlotCount] = {}; // not owned
    // Row-major 3 x 3; the first two columns map (s, t, 1) to the sampling (u, v).
    float textureMatrix[3][3] = {{1.0f, 0.0f, 0.0f}, {0.0f, 1.0f, 0.0f}, {0.0f, 0.0f, 1.0f}};
    float diffuse[3] = {1.0f, 1.0f, 1.0f}; // red, green, blue
    float intensity = 1.0f;
    float transparency = 1.0f; // factor applied to a face group's opacity on request
    std::uint32_t flags = 0;

    static constexpr std::uint32_t kTwoSided = 1u << 0;
    static constexpr std::uint32_t kDrawEdges = 1u << 1; // outline the flagged edges, no fill
};

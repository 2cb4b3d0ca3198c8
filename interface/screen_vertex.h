// The 36-byte screen vertex exchanged with the host's view object, which clips and projects it.
#pragma once

#include <cstddef>
#include <cstdint>

#pragma pack(push, 1)
// The layout is shared with the host, so every offset is fixed.
struct ScreenVertex {
    std::int32_t x; // 1/256 pixel once projected (the host keeps a float here before)
    std::int32_t y; // 1/256 pixel, growing downwards
    std::int32_t z; // integer depth, smaller is nearer
    std::uint8_t clipCode;
    float u; // sampling coordinates, written by the textured dispatch
    float v;
    float reserved; // the host view's own value; the rasterizer does not read it
    float s;        // source texture coordinates
    float t;
    std::uint8_t red;
    std::uint8_t green;
    std::uint8_t blue;
};
#pragma pack(pop)

static_assert(sizeof(ScreenVertex) == 36);
static_assert(offsetof(ScreenVertex, x) == 0);
static_assert(offsetof(ScreenVertex, y) == 4);
static_assert(offsetof(ScreenVertex, z) == 8);
static_assert(offsetof(ScreenVertex, clipCode) == 12);
static_assert(offsetof(ScreenVertex, u) == 13);
static_assert(offsetof(ScreenVertex, v) == 17);
static_assert(offsetof(ScreenVertex, reserved) == 21);
static_assert(offsetof(ScreenVertex, s) == 25);
static_assert(offsetof(ScreenVertex, t) == 29);
static_assert(offsetof(ScreenVertex, red) == 33);
static_assert(offsetof(ScreenVertex, green) == 34);
static_assert(offsetof(ScreenVertex, blue) == 35);

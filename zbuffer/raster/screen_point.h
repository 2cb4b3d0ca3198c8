// A screen position with depth, as points and line ends are given to the rasterizer.
#pragma once

#include <cstdint>

#include "interface/screen_vertex.h"

// x and y in 1/256 pixel.
struct ScreenPoint {
    std::int32_t x = 0;
    std::int32_t y = 0;
    std::int32_t z = 0;
};

inline ScreenPoint PointOf(const ScreenVertex& v) {
    return ScreenPoint{v.x, v.y, v.z};
}

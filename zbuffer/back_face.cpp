// Back-face rule.
#include "zbuffer/back_face.h"

#include <cstdint>

bool PassesBackFaceTest(const ScreenVertex* const* vertices, int count) {
    std::int64_t area = 0;
    for (int i = 0; i < count; ++i) {
        const ScreenVertex& a = *vertices[i];
        const ScreenVertex& b = *vertices[i + 1 < count ? i + 1 : 0];
        area += static_cast<std::int64_t>(a.x) * b.y - static_cast<std::int64_t>(b.x) * a.y;
    }
    return area <= 0;
}

// POSIX only: the objects behind bitmap and device-context handles, shared by the platform
// files that draw.
#pragma once

#include <cstdint>

#include "core/platform/graphics.h"

namespace q5plat {

struct PosixBitmap {
    std::int32_t width;
    std::int32_t height;
    std::int32_t stride;
    void* bits; // rows bottom-up
};

struct PosixDC {
    WindowSurface* window = nullptr; // a window's context
    PosixBitmap* bitmap = nullptr;   // a memory context's selected section
    int stretchMode = 1;
    int mix = 13; // copy pen
    std::uint32_t penColour = 0;
    int x = 0, y = 0;
    std::uint32_t textColour = 0;
    int backgroundMode = 2; // opaque
    void* font = nullptr;
};

// The pixels a context draws on, addressed by device row (0 at the top).
struct PixelTarget {
    std::uint8_t* bits = nullptr;
    std::int32_t width = 0, height = 0, stride = 0;
    bool bottomUp = false;

    explicit operator bool() const { return bits != nullptr; }
    std::uint8_t* Row(std::int32_t y) const {
        const std::int32_t stored = bottomUp ? height - 1 - y : y;
        return bits + static_cast<std::ptrdiff_t>(stored) * stride;
    }
};

inline PixelTarget TargetOf(q5_HDC dc) {
    const auto* d = static_cast<const PosixDC*>(dc);
    if (d == nullptr) return {};
    if (d->window != nullptr)
        return {d->window->bits, d->window->width, d->window->height, d->window->stride, false};
    if (d->bitmap != nullptr)
        return {static_cast<std::uint8_t*>(d->bitmap->bits), d->bitmap->width, d->bitmap->height,
                d->bitmap->stride, true};
    return {};
}

} // namespace q5plat

// Vertex lighting of the host: an ambient term and two directional lights.
#pragma once

#include "core/math/point.h"

struct Rgb {
    float red = 0, green = 0, blue = 0;
    bool operator==(const Rgb&) const = default;
};

struct DirectionalLight {
    POINT3D direction{0, -1, 0}; // the way the light travels
    Rgb colour;
};

struct Lighting {
    // The same colours and directions.
    bool operator==(const Lighting& other) const;

    Rgb ambient{0.25f, 0.25f, 0.28f};
    DirectionalLight key{{-0.45f, -0.75f, -0.48f}, {0.85f, 0.82f, 0.76f}};
    DirectionalLight fill{{0.6f, -0.25f, 0.76f}, {0.22f, 0.25f, 0.32f}};

    // Colour of a surface point with unit normal n and unit direction toEye, for a base colour
    // and a highlight of the given strength and sharpness (no highlight when strength is 0).
    // Channels are 0..1 and clamped.
    Rgb Shade(const POINT3D& n, const POINT3D& toEye, const Rgb& base, float specular,
              float shininess) const;

    // Unit directions toward the key and the fill light.
    struct Toward {
        POINT3D key, fill;
    };
    Toward Directions() const;
    // Shade with the directions made once for many vertices; the same result.
    Rgb Shade(const Toward& toward, const POINT3D& n, const POINT3D& toEye, const Rgb& base,
              float specular, float shininess) const;
};

// Vertex lighting.
#include "host/scene/lighting.h"

#include "core/services/portable_math.h"

#include <algorithm>
#include <cmath>
#include <utility>

bool Lighting::operator==(const Lighting& other) const {
    const auto same = [](const DirectionalLight& a, const DirectionalLight& b) {
        return a.colour == b.colour && a.direction.x == b.direction.x &&
               a.direction.y == b.direction.y && a.direction.z == b.direction.z;
    };
    return ambient == other.ambient && same(key, other.key) && same(fill, other.fill);
}

Lighting::Toward Lighting::Directions() const {
    Toward toward;
    for (auto [light, to] : {std::pair{&key, &toward.key}, std::pair{&fill, &toward.fill}}) {
        *to = POINT3D(-light->direction.x, -light->direction.y, -light->direction.z);
        to->Normalize();
    }
    return toward;
}

Rgb Lighting::Shade(const POINT3D& n, const POINT3D& toEye, const Rgb& base, float specular,
                    float shininess) const {
    return Shade(Directions(), n, toEye, base, specular, shininess);
}

Rgb Lighting::Shade(const Toward& toward, const POINT3D& n, const POINT3D& toEye, const Rgb& base,
                    float specular, float shininess) const {
    Rgb diffuse = ambient, highlight;
    for (auto [light, toLight] : {std::pair{&key, toward.key}, std::pair{&fill, toward.fill}}) {
        const float lambert = Dot(n, toLight);
        if (lambert <= 0) continue;
        diffuse.red += lambert * light->colour.red;
        diffuse.green += lambert * light->colour.green;
        diffuse.blue += lambert * light->colour.blue;
        if (specular <= 0) continue;
        POINT3D half(toLight.x + toEye.x, toLight.y + toEye.y, toLight.z + toEye.z);
        half.Normalize();
        const float s = specular * q5math::Pow(std::max(Dot(n, half), 0.0f), shininess);
        highlight.red += s * light->colour.red;
        highlight.green += s * light->colour.green;
        highlight.blue += s * light->colour.blue;
    }
    return {std::clamp(base.red * diffuse.red + highlight.red, 0.0f, 1.0f),
            std::clamp(base.green * diffuse.green + highlight.green, 0.0f, 1.0f),
            std::clamp(base.blue * diffuse.blue + highlight.blue, 0.0f, 1.0f)};
}

// Procedural shapes.
#include "host/scene/shapes.h"

#include "core/services/portable_math.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <numbers>
#include <utility>
#include <vector>

namespace {

constexpr float kTwoPi = 2.0f * std::numbers::pi_v<float>;
constexpr float kPi = std::numbers::pi_v<float>;

} // namespace

MeshGeometry MakeSphere(float radius, int rings, int segments) {
    MeshGeometry m;
    for (int i = 0; i <= rings; ++i) {
        const float theta = kPi * static_cast<float>(i) / static_cast<float>(rings);
        for (int j = 0; j <= segments; ++j) {
            const float phi = kTwoPi * static_cast<float>(j) / static_cast<float>(segments);
            const POINT3D n(q5math::Sin(theta) * q5math::Cos(phi), q5math::Cos(theta),
                            -q5math::Sin(theta) * q5math::Sin(phi));
            m.AddVertex(POINT3D(n.x * radius, n.y * radius, n.z * radius), n,
                        POINT2D(static_cast<float>(j) / static_cast<float>(segments),
                                1.0f - static_cast<float>(i) / static_cast<float>(rings)));
        }
    }
    const auto at = [segments](int i, int j) {
        return static_cast<std::uint32_t>(i * (segments + 1) + j);
    };
    for (int i = 0; i < rings; ++i)
        for (int j = 0; j < segments; ++j) {
            // At the poles one triangle of each quad has no area and is dropped.
            m.AddQuad(at(i, j), at(i + 1, j), at(i + 1, j + 1), at(i, j + 1));
        }
    return m;
}

MeshGeometry MakeGeodesicSphere(float radius, int splits) {
    const float g = (1.0f + std::sqrt(5.0f)) / 2.0f;
    std::vector<POINT3D> points = {{-1, g, 0}, {1, g, 0}, {-1, -g, 0}, {1, -g, 0},
                                   {0, -1, g}, {0, 1, g}, {0, -1, -g}, {0, 1, -g},
                                   {g, 0, -1}, {g, 0, 1}, {-g, 0, -1}, {-g, 0, 1}};
    std::vector<std::array<std::uint32_t, 3>> faces = {
        {0, 11, 5},  {0, 5, 1},  {0, 1, 7},  {0, 7, 10}, {0, 10, 11}, {1, 5, 9}, {5, 11, 4},
        {11, 10, 2}, {10, 7, 6}, {7, 1, 8},  {3, 9, 4},  {3, 4, 2},   {3, 2, 6}, {3, 6, 8},
        {3, 8, 9},   {4, 9, 5},  {2, 4, 11}, {6, 2, 10}, {8, 6, 7},   {9, 8, 1}};
    for (POINT3D& p : points) p.Normalize();
    for (int level = 0; level < splits; ++level) {
        std::map<std::pair<std::uint32_t, std::uint32_t>, std::uint32_t> middles;
        const auto middle = [&](std::uint32_t a, std::uint32_t b) {
            const auto key = std::minmax(a, b);
            const auto found = middles.find(key);
            if (found != middles.end()) return found->second;
            POINT3D m((points[a].x + points[b].x) / 2, (points[a].y + points[b].y) / 2,
                      (points[a].z + points[b].z) / 2);
            m.Normalize();
            points.push_back(m);
            const auto index = static_cast<std::uint32_t>(points.size() - 1);
            middles[key] = index;
            return index;
        };
        std::vector<std::array<std::uint32_t, 3>> finer;
        for (const auto& f : faces) {
            const std::uint32_t ab = middle(f[0], f[1]), bc = middle(f[1], f[2]),
                                ca = middle(f[2], f[0]);
            finer.push_back({f[0], ab, ca});
            finer.push_back({f[1], bc, ab});
            finer.push_back({f[2], ca, bc});
            finer.push_back({ab, bc, ca});
        }
        faces.swap(finer);
    }
    MeshGeometry m;
    for (const POINT3D& p : points)
        m.AddVertex(POINT3D(p.x * radius, p.y * radius, p.z * radius), p, POINT2D(0, 0));
    for (const auto& f : faces) m.AddTriangle(f[0], f[1], f[2]);
    return m;
}

MeshGeometry MakeTorus(float majorRadius, float minorRadius, int rings, int sides) {
    MeshGeometry m;
    for (int i = 0; i <= rings; ++i) {
        const float phi = kTwoPi * static_cast<float>(i) / static_cast<float>(rings);
        for (int j = 0; j <= sides; ++j) {
            const float theta = kTwoPi * static_cast<float>(j) / static_cast<float>(sides);
            const POINT3D n(q5math::Cos(theta) * q5math::Cos(phi), q5math::Sin(theta),
                            -q5math::Cos(theta) * q5math::Sin(phi));
            const float r = majorRadius + minorRadius * q5math::Cos(theta);
            m.AddVertex(POINT3D(r * q5math::Cos(phi), minorRadius * n.y, -r * q5math::Sin(phi)), n,
                        POINT2D(static_cast<float>(i) / static_cast<float>(rings),
                                static_cast<float>(j) / static_cast<float>(sides)));
        }
    }
    const auto at = [sides](int i, int j) {
        return static_cast<std::uint32_t>(i * (sides + 1) + j);
    };
    for (int i = 0; i < rings; ++i)
        for (int j = 0; j < sides; ++j)
            m.AddQuad(at(i, j), at(i + 1, j), at(i + 1, j + 1), at(i, j + 1));
    return m;
}

MeshGeometry MakeBox(float sizeX, float sizeY, float sizeZ) {
    MeshGeometry m;
    const float hx = sizeX / 2, hy = sizeY / 2, hz = sizeZ / 2;
    // Each face: its normal and two axes spanning it (u to the right, v up seen from outside).
    struct Face {
        POINT3D n, u, v;
    };
    const Face faces[6] = {
        {{0, 0, 1}, {1, 0, 0}, {0, 1, 0}},  {{0, 0, -1}, {-1, 0, 0}, {0, 1, 0}},
        {{1, 0, 0}, {0, 0, -1}, {0, 1, 0}}, {{-1, 0, 0}, {0, 0, 1}, {0, 1, 0}},
        {{0, 1, 0}, {1, 0, 0}, {0, 0, -1}}, {{0, -1, 0}, {1, 0, 0}, {0, 0, 1}},
    };
    for (const Face& f : faces) {
        std::uint32_t corner[4];
        const float su[4] = {-1, 1, 1, -1}, sv[4] = {-1, -1, 1, 1};
        for (int k = 0; k < 4; ++k) {
            const POINT3D p((f.n.x + su[k] * f.u.x + sv[k] * f.v.x) * hx,
                            (f.n.y + su[k] * f.u.y + sv[k] * f.v.y) * hy,
                            (f.n.z + su[k] * f.u.z + sv[k] * f.v.z) * hz);
            corner[k] = m.AddVertex(p, f.n, POINT2D((su[k] + 1) / 2, (sv[k] + 1) / 2));
        }
        m.AddQuad(corner[0], corner[1], corner[2], corner[3]);
    }
    return m;
}

MeshGeometry MakeGround(float size, int cells, float repeat) {
    MeshGeometry m;
    const POINT3D up(0, 1, 0);
    for (int i = 0; i <= cells; ++i)
        for (int j = 0; j <= cells; ++j) {
            const float fx = static_cast<float>(j) / static_cast<float>(cells);
            const float fz = static_cast<float>(i) / static_cast<float>(cells);
            m.AddVertex(POINT3D((fx - 0.5f) * size, 0, (fz - 0.5f) * size), up,
                        POINT2D(fx * repeat, fz * repeat));
        }
    const auto at = [cells](int i, int j) {
        return static_cast<std::uint32_t>(i * (cells + 1) + j);
    };
    for (int i = 0; i < cells; ++i)
        for (int j = 0; j < cells; ++j)
            m.AddQuad(at(i, j), at(i + 1, j), at(i + 1, j + 1), at(i, j + 1));
    return m;
}

MeshGeometry MakeCylinder(float radius, float height, int segments) {
    MeshGeometry m;
    const float h = height / 2;
    const POINT3D up(0, 1, 0), down(0, -1, 0);
    const std::uint32_t topCentre = m.AddVertex(POINT3D(0, h, 0), up, POINT2D(0.5f, 0.5f));
    const std::uint32_t bottomCentre = m.AddVertex(POINT3D(0, -h, 0), down, POINT2D(0.5f, 0.5f));
    std::uint32_t previous[4] = {};
    for (int j = 0; j <= segments; ++j) {
        const float phi = kTwoPi * static_cast<float>(j) / static_cast<float>(segments);
        const float c = q5math::Cos(phi), s = -q5math::Sin(phi);
        const POINT3D side(c, 0, s);
        const float u = static_cast<float>(j) / static_cast<float>(segments);
        const std::uint32_t now[4] = {
            m.AddVertex(POINT3D(radius * c, h, radius * s), side, POINT2D(u, 1)),
            m.AddVertex(POINT3D(radius * c, -h, radius * s), side, POINT2D(u, 0)),
            m.AddVertex(POINT3D(radius * c, h, radius * s), up,
                        POINT2D(0.5f + c / 2, 0.5f + s / 2)),
            m.AddVertex(POINT3D(radius * c, -h, radius * s), down,
                        POINT2D(0.5f + c / 2, 0.5f + s / 2)),
        };
        if (j > 0) {
            m.AddQuad(previous[0], previous[1], now[1], now[0]);
            // Cap fans: only the rim is an outline edge (corner 1 to corner 2).
            m.AddTriangle(topCentre, previous[2], now[2], 0b010);
            m.AddTriangle(bottomCentre, previous[3], now[3], 0b010);
        }
        for (int k = 0; k < 4; ++k) previous[k] = now[k];
    }
    return m;
}

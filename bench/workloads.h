// The shared benchmark workloads: deterministic random triangles and the ellipsoid mesh,
// generated exactly alike by every program that measures a rasterizer on them.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <vector>

namespace workload {

// Linear congruential generator; next() is called before each use.
class Lcg {
public:
    explicit Lcg(std::uint32_t seed) : s_(seed) {}
    std::uint32_t next() { return s_ = s_ * 1664525u + 1013904223u; }
    // Uniform in [0, n).
    std::uint32_t rnd(std::uint32_t n) {
        return static_cast<std::uint32_t>((static_cast<std::uint64_t>(next()) * n) >> 32);
    }

private:
    std::uint32_t s_;
};

struct Vertex {
    std::int32_t x16, y16; // 1/16 pixel
    std::int32_t z;        // integer depth, 0 .. 2^24
    std::uint8_t r, g, b;
};

struct Triangle {
    Vertex v[3];
    std::int64_t c; // 512 x area
};

struct RandomSet {
    std::int32_t width, height;
    std::vector<Triangle> triangles;
    double coveredPixels; // sum of exact areas
};

inline std::int64_t TwiceArea512(const std::int32_t* x, const std::int32_t* y) {
    const std::int64_t c = static_cast<std::int64_t>(x[1] - x[0]) * (y[2] - y[0]) -
                           static_cast<std::int64_t>(x[2] - x[0]) * (y[1] - y[0]);
    return c < 0 ? -c : c;
}

// The fill set (seed 1): 200 triangles of about a quarter screen each at 1024 x 768.
// The small set (seed 2): 200000 triangles of 16 to 24 pixels.
inline RandomSet Generate(bool small) {
    constexpr std::int32_t W = 1024, H = 768;
    RandomSet set{W, H, {}, 0.0};
    Lcg g(small ? 2 : 1);
    const std::size_t n = small ? 200000 : 200;
    const std::int64_t amin = small ? 16 : 180000, amax = small ? 24 : 213000;
    set.triangles.reserve(n);
    for (std::size_t i = 0; i < n; ++i) {
        std::int32_t ax = 0, ay = 0, bw = W * 16, bh = H * 16;
        if (small) {
            ax = static_cast<std::int32_t>(g.rnd((W - 8) * 16));
            ay = static_cast<std::int32_t>(g.rnd((H - 8) * 16));
            bw = bh = 8 * 16;
        }
        Triangle t{};
        std::int32_t x[3], y[3];
        for (;;) {
            for (int k = 0; k < 3; ++k) {
                x[k] = ax + static_cast<std::int32_t>(g.rnd(bw));
                y[k] = ay + static_cast<std::int32_t>(g.rnd(bh));
            }
            t.c = TwiceArea512(x, y);
            if (512 * amin <= t.c && t.c <= 512 * amax) break;
        }
        for (int k = 0; k < 3; ++k) {
            t.v[k].x16 = x[k];
            t.v[k].y16 = y[k];
            t.v[k].z = static_cast<std::int32_t>(g.rnd(1u << 24));
            t.v[k].r = static_cast<std::uint8_t>(g.rnd(256));
            t.v[k].g = static_cast<std::uint8_t>(g.rnd(256));
            t.v[k].b = static_cast<std::uint8_t>(g.rnd(256));
        }
        set.coveredPixels += static_cast<double>(t.c) / 512.0;
        set.triangles.push_back(t);
    }
    return set;
}

// The ellipsoid mesh at 1920 x 1080: 99,500 triangles; positions in pixels (double),
// depth z in [0.05, 0.95] (smaller nearer), colours from seed 4.
struct MeshVertex {
    double x, y, z;
    std::uint8_t r, g, b;
};
struct Mesh {
    static constexpr std::int32_t kWidth = 1920, kHeight = 1080;
    std::vector<MeshVertex> vertices; // (NLAT + 1) x (NLON + 1), row i, column j
    std::vector<std::uint32_t> indices;
    double coveredPixels;
};

inline Mesh GenerateMesh() {
    constexpr int NLAT = 200, NLON = 250;
    const double pi = std::acos(-1.0);
    Mesh mesh;
    mesh.vertices.resize((NLAT + 1) * (NLON + 1));
    Lcg g(4);
    for (int i = 0; i <= NLAT; ++i)
        for (int j = 0; j <= NLON; ++j) {
            const double th = pi * i / NLAT, ph = 2 * pi * j / NLON;
            MeshVertex& v = mesh.vertices[i * (NLON + 1) + j];
            v.x = 960 + 768 * std::sin(th) * std::cos(ph);
            v.y = 540 - 512 * std::cos(th);
            v.z = 0.5 - 0.45 * std::sin(th) * std::sin(ph);
            if (j < NLON) {
                v.r = static_cast<std::uint8_t>(g.rnd(256));
                v.g = static_cast<std::uint8_t>(g.rnd(256));
                v.b = static_cast<std::uint8_t>(g.rnd(256));
            } else {
                const MeshVertex& first = mesh.vertices[i * (NLON + 1)];
                v.r = first.r;
                v.g = first.g;
                v.b = first.b;
            }
        }
    auto at = [](int i, int j) { return static_cast<std::uint32_t>(i * (NLON + 1) + j); };
    mesh.coveredPixels = 0;
    auto add = [&](std::uint32_t a, std::uint32_t b, std::uint32_t c) {
        mesh.indices.insert(mesh.indices.end(), {a, b, c});
        const MeshVertex &p = mesh.vertices[a], &q = mesh.vertices[b], &r = mesh.vertices[c];
        mesh.coveredPixels += std::abs((q.x - p.x) * (r.y - p.y) - (r.x - p.x) * (q.y - p.y)) / 2;
    };
    for (int i = 0; i < NLAT; ++i)
        for (int j = 0; j < NLON; ++j) {
            if (i == 0) {
                add(at(i, j), at(i + 1, j), at(i + 1, j + 1));
            } else if (i == NLAT - 1) {
                add(at(i, j), at(i + 1, j), at(i, j + 1));
            } else {
                add(at(i, j), at(i + 1, j), at(i + 1, j + 1));
                add(at(i, j), at(i + 1, j + 1), at(i, j + 1));
            }
        }
    return mesh;
}

} // namespace workload

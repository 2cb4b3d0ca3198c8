// Building host meshes triangle by triangle.
#include "host/scene/mesh_geometry.h"

#include <cmath>
#include <cstring>

namespace {

// Edge k of (a, c, b) is edge 2 - k of (a, b, c) walked backwards: 0 <-> 2, 1 stays.
std::uint8_t ReversedEdges(std::uint8_t edges) {
    return static_cast<std::uint8_t>(((edges & 1) << 2) | (edges & 2) | ((edges >> 2) & 1));
}

// A position as its bits, with -0 taken as 0 so that equal points hash alike.
std::uint64_t PositionKey(const POINT3D& p) {
    std::uint64_t key = 0x9E3779B97F4A7C15ull;
    for (float c : {p.x + 0.0f, p.y + 0.0f, p.z + 0.0f}) {
        std::uint32_t bits;
        std::memcpy(&bits, &c, sizeof bits);
        key = (key ^ bits) * 0xBF58476D1CE4E5B9ull;
        key ^= key >> 29;
    }
    return key;
}

std::uint64_t Mix(std::uint64_t a, std::uint64_t b) {
    std::uint64_t x = a * 0x94D049BB133111EBull + b;
    x ^= x >> 31;
    x *= 0xD6E8FEB86659FD93ull;
    return x ^ (x >> 32);
}

} // namespace

void MeshGeometry::ComputeNormals() {
    normals.assign(positions.size(), POINT3D(0, 0, 0));
    for (const Triangle& t : triangles) {
        const POINT3D n =
            Cross(positions[t.v[1]] - positions[t.v[0]], positions[t.v[2]] - positions[t.v[0]]);
        for (std::uint32_t v : t.v) {
            normals[v].x += n.x;
            normals[v].y += n.y;
            normals[v].z += n.z;
        }
    }
    for (POINT3D& n : normals) {
        const float length = std::sqrt(n.x * n.x + n.y * n.y + n.z * n.z);
        if (length > 0 && std::isfinite(length))
            n = POINT3D(n.x / length, n.y / length, n.z / length);
        else
            n = POINT3D(0, 1, 0);
    }
}

bool MeshGeometry::IsClosed() const {
    if (triangles.empty()) return false;
    // Each position is a corner of several triangles: its key is made once.
    std::vector<std::uint64_t> keys(positions.size());
    for (std::size_t i = 0; i < positions.size(); ++i) keys[i] = PositionKey(positions[i]);
    std::uint64_t sum = 0;
    for (const Triangle& t : triangles) {
        const std::uint64_t k[3] = {keys[t.v[0]], keys[t.v[1]], keys[t.v[2]]};
        for (int e = 0; e < 3; ++e) {
            const std::uint64_t a = k[e], b = k[(e + 1) % 3];
            sum += Mix(a, b) - Mix(b, a);
        }
    }
    return sum == 0;
}

std::uint32_t MeshGeometry::AddVertex(const POINT3D& position, const POINT3D& normal,
                                      const POINT2D& uv) {
    positions.push_back(position);
    normals.push_back(normal);
    uvs.push_back(uv);
    return static_cast<std::uint32_t>(positions.size() - 1);
}

void MeshGeometry::AddTriangle(std::uint32_t a, std::uint32_t b, std::uint32_t c,
                               std::uint8_t edges) {
    const POINT3D n = Cross(positions[b] - positions[a], positions[c] - positions[a]);
    if (n.x == 0 && n.y == 0 && n.z == 0) return;
    const POINT3D& na = normals[a];
    const POINT3D& nb = normals[b];
    const POINT3D& nc = normals[c];
    const POINT3D side(na.x + nb.x + nc.x, na.y + nb.y + nc.y, na.z + nb.z + nc.z);
    if (Dot(n, side) < 0)
        triangles.push_back({{a, c, b}, ReversedEdges(edges)});
    else
        triangles.push_back({{a, b, c}, edges});
}

void MeshGeometry::AddQuad(std::uint32_t a, std::uint32_t b, std::uint32_t c, std::uint32_t d) {
    AddTriangle(a, b, c, 0b011);
    AddTriangle(a, c, d, 0b110);
}

void MeshGeometry::Append(const MeshGeometry& other, const POINT3D& offset) {
    const auto base = static_cast<std::uint32_t>(positions.size());
    for (std::size_t i = 0; i < other.positions.size(); ++i) {
        const POINT3D& p = other.positions[i];
        positions.emplace_back(p.x + offset.x, p.y + offset.y, p.z + offset.z);
        normals.push_back(other.normals[i]);
        uvs.push_back(i < other.uvs.size() ? other.uvs[i] : POINT2D(0, 0));
    }
    for (const Triangle& t : other.triangles)
        triangles.push_back({{t.v[0] + base, t.v[1] + base, t.v[2] + base}, t.edges});
    for (const auto& s : other.segments) segments.push_back({s[0] + base, s[1] + base});
    for (std::uint32_t p : other.points) points.push_back(p + base);
}

// Building host meshes triangle by triangle.
#include "host/scene/mesh_geometry.h"

namespace {

// Edge k of (a, c, b) is edge 2 - k of (a, b, c) walked backwards: 0 <-> 2, 1 stays.
std::uint8_t ReversedEdges(std::uint8_t edges) {
    return static_cast<std::uint8_t>(((edges & 1) << 2) | (edges & 2) | ((edges >> 2) & 1));
}

} // namespace

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
}

// Building the driver's view of a scene object for one frame.
#include "host/scene/frame_mesh.h"

#include <cmath>

#include "core/services/portable_math.h"
#include "host/view/camera.h"
#include "host/view/view_volume.h"
#include "interface/view.h"

namespace {

std::uint8_t Byte(float c) {
    const float x = c * 255.0f;
    return static_cast<std::uint8_t>(std::fabs(x) < 1.0e9f ? q5math::Round(x) : std::lround(x));
}

q5_VERTEXCOLOUR VertexColour(const Rgb& c) {
    q5_VERTEXCOLOUR v{};
    v.red = Byte(c.red);
    v.green = Byte(c.green);
    v.blue = Byte(c.blue);
    return v;
}

q5_COLOUR6 Colour6(std::uint8_t red, std::uint8_t green, std::uint8_t blue) {
    q5_COLOUR6 c{};
    c.red = red;
    c.green = green;
    c.blue = blue;
    return c;
}

POINT3D Unit(POINT3D v) {
    v.Normalize();
    return v;
}

} // namespace

void FrameMesh::Place(const SceneObject& object, const Camera& camera, const ViewVolume& volume,
                      std::vector<POINT3D>* worldNormals, std::vector<POINT3D>* worldPositions) {
    const MeshGeometry& g = object.geometry;
    vertices_.resize(g.positions.size());
    if (worldPositions) worldPositions->resize(g.positions.size());
    if (worldNormals) worldNormals->resize(g.positions.size());
    normals_.resize(g.positions.size());
    std::uint8_t all = kClipAllPlanes | kClipOtherHalf;
    for (std::size_t i = 0; i < g.positions.size(); ++i) {
        const POINT3D world = object.placement.PointTransform(g.positions[i]);
        const POINT3D view = camera.PointToView(world);
        vertices_[i] = {view.x, view.y, view.z, volume.ClipCode(view.x, view.y, view.z)};
        all &= vertices_[i].clipCode;
        if (worldPositions) (*worldPositions)[i] = world;
    }
    outside_ = g.positions.empty() || all != 0;

    POINT3D centre(0, 0, 0);
    for (const POINT3D& p : g.positions) {
        centre.x += p.x;
        centre.y += p.y;
        centre.z += p.z;
    }
    if (!g.positions.empty()) {
        const float n = static_cast<float>(g.positions.size());
        centre = POINT3D(centre.x / n, centre.y / n, centre.z / n);
    }
    centreDepth_ = camera.PointToView(object.placement.PointTransform(centre)).z;

    // The driver would reject a face whose corners all lie outside one plane, or all in the
    // half of the frame it does not draw; leaving it out spares the driver's walk.
    faces_.clear();
    corners_.clear();
    drawn_.assign(vertices_.size(), 0);
    faces_.reserve(g.triangles.size());
    corners_.reserve(g.triangles.size());
    for (const MeshGeometry::Triangle& t : g.triangles) {
        if (t.v[0] < vertices_.size() && t.v[1] < vertices_.size() && t.v[2] < vertices_.size() &&
            (vertices_[t.v[0]].clipCode & vertices_[t.v[1]].clipCode & vertices_[t.v[2]].clipCode &
             (kClipAllPlanes | kClipOtherHalf)) != 0)
            continue;
        faces_.push_back({0, t.edges, {t.v[0], t.v[1], t.v[2]}});
        corners_.push_back({t.v[0], t.v[1], t.v[2]});
        for (std::uint32_t v : t.v)
            if (v < drawn_.size()) drawn_[v] = 1;
    }
    // Normals, and in Build the light, only where a kept face reads them.
    for (std::size_t i = 0; i < g.positions.size(); ++i) {
        if (!drawn_[i]) continue;
        const POINT3D normal = Unit(object.placement.VectorTransform(g.normals[i]));
        const POINT3D viewNormal = Unit(camera.DirectionToView(normal));
        normals_[i] = {viewNormal.x, viewNormal.y, viewNormal.z};
        if (worldNormals) (*worldNormals)[i] = normal;
    }
    texcoords_.resize(g.positions.size());
    for (std::size_t i = 0; i < g.positions.size(); ++i)
        texcoords_[i] = i < g.uvs.size() ? std::array<float, 2>{g.uvs[i].x, g.uvs[i].y}
                                         : std::array<float, 2>{0, 0};
}

void FrameMesh::Link(q5_MATERIAL* material) {
    materialSlot_ = material;
    mesh_ = q5_MESH{};
    mesh_.vertices = vertices_.data();
    mesh_.vertexCount = static_cast<std::uint32_t>(vertices_.size());
    mesh_.faces = faces_.data();
    mesh_.faceCount = static_cast<std::uint32_t>(faces_.size());
    mesh_.faceColours = faceColours_.data();
    mesh_.cornerNormalIndex = reinterpret_cast<const std::uint32_t(*)[3]>(corners_.data());
    mesh_.cornerTexcoordIndex = reinterpret_cast<const std::uint32_t(*)[3]>(corners_.data());
    mesh_.normals = reinterpret_cast<const float(*)[3]>(normals_.data());
    mesh_.texcoords = reinterpret_cast<const float(*)[2]>(texcoords_.data());
    mesh_.materials = &materialSlot_;
    mesh_.materialCount = 1;
    mesh_.defaultMaterial = material;
}

void FrameMesh::Build(const SceneObject& object, const HostMaterial& material,
                      const Lighting& lighting, const Camera& camera, const ViewVolume& volume) {
    std::vector<POINT3D>& worldNormals = worldNormals_;
    std::vector<POINT3D>& worldPositions = worldPositions_;
    Place(object, camera, volume, &worldNormals, &worldPositions);

    // A diffuse texture is modulated by the vertex colours, so those carry only the light.
    const bool textured = material.driver.textures[kSlotDiffuse] != nullptr;
    const Rgb base = textured ? Rgb{1, 1, 1} : material.colour;
    const POINT3D& eye = camera.Eye();
    const Lighting::Toward toward = lighting.Directions();
    primary_.resize(worldPositions.size());
    secondary_.resize(worldPositions.size());
    for (std::size_t i = 0; i < worldPositions.size(); ++i) {
        if (!drawn_[i]) continue;
        const POINT3D& p = worldPositions[i];
        const POINT3D toEye = Unit(POINT3D(eye.x - p.x, eye.y - p.y, eye.z - p.z));
        const POINT3D& n = worldNormals[i];
        primary_[i] = VertexColour(
            lighting.Shade(toward, n, toEye, base, material.specular, material.shininess));
        const Rgb back = lighting.Shade(toward, POINT3D(-n.x, -n.y, -n.z), toEye, base,
                                        material.specular, material.shininess);
        secondary_[i] = Colour6(Byte(back.red), Byte(back.green), Byte(back.blue));
    }
    faceColours_.assign(faces_.size(), Colour6(Byte(base.red), Byte(base.green), Byte(base.blue)));

    Link(const_cast<q5_MATERIAL*>(&material.driver));
    mesh_.primaryColours = primary_.data();
    mesh_.secondaryColours = secondary_.data();
}

void FrameMesh::BuildOutline(const SceneObject& object, q5_MATERIAL* outline, std::uint32_t colour,
                             const Camera& camera, const ViewVolume& volume) {
    Place(object, camera, volume, nullptr, nullptr);
    faceColours_.assign(faces_.size(), Colour6(static_cast<std::uint8_t>(colour),
                                               static_cast<std::uint8_t>(colour >> 8),
                                               static_cast<std::uint8_t>(colour >> 16)));
    primary_.clear();
    secondary_.clear();
    Link(outline);
}

void FrameMesh::BuildLines(const SceneObject& object, q5_MATERIAL* lines, std::uint32_t colour,
                           const Camera& camera, const ViewVolume& volume) {
    Place(object, camera, volume, nullptr, nullptr);
    const auto& segments = object.geometry.segments;
    faces_.resize(segments.size());
    corners_.resize(segments.size());
    for (std::size_t f = 0; f < segments.size(); ++f) {
        const std::uint32_t a = segments[f][0], b = segments[f][1];
        // Only the edge from corner 0 to corner 1 is drawn.
        faces_[f] = {0, 1, {a, b, b}};
        corners_[f] = {a, b, b};
    }
    faceColours_.assign(faces_.size(), Colour6(static_cast<std::uint8_t>(colour),
                                               static_cast<std::uint8_t>(colour >> 8),
                                               static_cast<std::uint8_t>(colour >> 16)));
    primary_.clear();
    secondary_.clear();
    Link(lines);
}

void FrameMesh::ProjectPoints(const SceneObject& object, q5_VIEW& view, std::uint32_t colour,
                              std::vector<ScreenVertex>& out) const {
    out.clear();
    for (std::uint32_t p : object.geometry.points) {
        if (p >= vertices_.size() || (vertices_[p].clipCode & kClipAllPlanes) != 0) continue;
        const float position[3] = {vertices_[p].x, vertices_[p].y, vertices_[p].z};
        ScreenVertex v{};
        view.ProjectPoint(position, v);
        v.red = static_cast<std::uint8_t>(colour);
        v.green = static_cast<std::uint8_t>(colour >> 8);
        v.blue = static_cast<std::uint8_t>(colour >> 16);
        out.push_back(v);
    }
}

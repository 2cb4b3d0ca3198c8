// Building the driver's view of a scene object for one frame.
#include "host/scene/frame_mesh.h"

#include <cmath>
#include <cstring>

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

void FrameMesh::Refresh(const SceneObject& object, bool withNormals) {
    const MeshGeometry& g = object.geometry;
    const std::size_t n = g.positions.size();
    const bool current = object.serial != 0 && object.serial == serial_ &&
                         worldPositions_.size() == n &&
                         std::memcmp(object.placement.m, placement_.m, sizeof placement_.m) == 0;
    if (!current) {
        serial_ = object.serial;
        placement_ = object.placement;
        worldPositions_.resize(n);
        for (std::size_t i = 0; i < n; ++i)
            worldPositions_[i] = object.placement.PointTransform(g.positions[i]);
        POINT3D centre(0, 0, 0);
        for (const POINT3D& p : g.positions) {
            centre.x += p.x;
            centre.y += p.y;
            centre.z += p.z;
        }
        if (n != 0) {
            const float count = static_cast<float>(n);
            centre = POINT3D(centre.x / count, centre.y / count, centre.z / count);
        }
        worldCentre_ = object.placement.PointTransform(centre);
        texcoords_.resize(n);
        for (std::size_t i = 0; i < n; ++i)
            texcoords_[i] = i < g.uvs.size() ? std::array<float, 2>{g.uvs[i].x, g.uvs[i].y}
                                             : std::array<float, 2>{0, 0};
        worldNormals_.clear();
        lightKey_.reset();
    }
    if (withNormals && worldNormals_.size() != n) {
        worldNormals_.resize(n);
        for (std::size_t i = 0; i < n; ++i)
            worldNormals_[i] = Unit(object.placement.VectorTransform(g.normals[i]));
    }
}

void FrameMesh::Place(const SceneObject& object, const Camera& camera, const ViewVolume& volume,
                      bool viewNormals) {
    const MeshGeometry& g = object.geometry;
    const std::size_t n = g.positions.size();
    vertices_.resize(n);
    std::uint8_t all = kClipAllPlanes | kClipOtherHalf;
    for (std::size_t i = 0; i < n; ++i) {
        const POINT3D view = camera.PointToView(worldPositions_[i]);
        vertices_[i] = {view.x, view.y, view.z, volume.ClipCode(view.x, view.y, view.z)};
        all &= vertices_[i].clipCode;
    }
    outside_ = n == 0 || all != 0;
    centreDepth_ = camera.PointToView(worldCentre_).z;

    // The driver would reject a face whose corners all lie outside one plane, or all in the
    // half of the frame it does not draw; leaving it out spares the driver's walk.
    faces_.clear();
    corners_.clear();
    drawn_.assign(n, 0);
    faces_.reserve(g.triangles.size());
    corners_.reserve(g.triangles.size());
    for (const MeshGeometry::Triangle& t : g.triangles) {
        if (t.v[0] < n && t.v[1] < n && t.v[2] < n &&
            (vertices_[t.v[0]].clipCode & vertices_[t.v[1]].clipCode & vertices_[t.v[2]].clipCode &
             (kClipAllPlanes | kClipOtherHalf)) != 0)
            continue;
        faces_.push_back({0, t.edges, {t.v[0], t.v[1], t.v[2]}});
        corners_.push_back({t.v[0], t.v[1], t.v[2]});
        for (std::uint32_t v : t.v)
            if (v < n) drawn_[v] = 1;
    }
    // The driver reads normals only to sphere-map a reflection, and only a kept face's.
    normals_.resize(viewNormals ? n : 0);
    if (!viewNormals) return;
    for (std::size_t i = 0; i < n; ++i) {
        if (!drawn_[i]) continue;
        const POINT3D viewNormal = Unit(camera.DirectionToView(worldNormals_[i]));
        normals_[i] = {viewNormal.x, viewNormal.y, viewNormal.z};
    }
}

void FrameMesh::Link(q5_MATERIAL* material, bool withNormals) {
    materialSlot_ = material;
    mesh_ = q5_MESH{};
    mesh_.vertices = vertices_.data();
    mesh_.vertexCount = static_cast<std::uint32_t>(vertices_.size());
    mesh_.faces = faces_.data();
    mesh_.faceCount = static_cast<std::uint32_t>(faces_.size());
    mesh_.faceColours = faceColours_.data();
    mesh_.cornerNormalIndex = reinterpret_cast<const std::uint32_t(*)[3]>(corners_.data());
    mesh_.cornerTexcoordIndex = reinterpret_cast<const std::uint32_t(*)[3]>(corners_.data());
    mesh_.normals =
        withNormals ? reinterpret_cast<const float(*)[3]>(normals_.data()) : nullptr;
    mesh_.texcoords = reinterpret_cast<const float(*)[2]>(texcoords_.data());
    mesh_.materials = &materialSlot_;
    mesh_.materialCount = 1;
    mesh_.defaultMaterial = material;
}

void FrameMesh::Light(const HostMaterial& material, const Lighting& lighting,
                      const Camera& camera) {
    // A diffuse texture is modulated by the vertex colours, so those carry only the light.
    const bool textured = material.driver.textures[kSlotDiffuse] != nullptr;
    const Rgb base = textured ? Rgb{1, 1, 1} : material.colour;
    const std::size_t n = worldPositions_.size();
    const bool eyeFree = material.specular <= 0;
    const LightKey key{lighting, base, material.shininess};
    if (!eyeFree || lightKey_ != key || lit_.size() != n || primary_.size() != n) {
        lit_.assign(n, 0);
        primary_.resize(n);
        secondary_.resize(n);
    }
    if (eyeFree)
        lightKey_ = key;
    else
        lightKey_.reset();

    const POINT3D& eye = camera.Eye();
    const Lighting::Toward toward = lighting.Directions();
    for (std::size_t i = 0; i < n; ++i) {
        if (!drawn_[i] || lit_[i]) continue;
        const POINT3D& p = worldPositions_[i];
        // Only a highlight looks toward the eye.
        const POINT3D toEye =
            eyeFree ? POINT3D(0, 0, 0) : Unit(POINT3D(eye.x - p.x, eye.y - p.y, eye.z - p.z));
        const POINT3D& normal = worldNormals_[i];
        primary_[i] = VertexColour(
            lighting.Shade(toward, normal, toEye, base, material.specular, material.shininess));
        const Rgb back = lighting.Shade(toward, POINT3D(-normal.x, -normal.y, -normal.z), toEye,
                                        base, material.specular, material.shininess);
        secondary_[i] = Colour6(Byte(back.red), Byte(back.green), Byte(back.blue));
        lit_[i] = eyeFree;
    }
    faceColours_.assign(faces_.size(), Colour6(Byte(base.red), Byte(base.green), Byte(base.blue)));
}

void FrameMesh::Build(const SceneObject& object, const HostMaterial& material,
                      const Lighting& lighting, const Camera& camera, const ViewVolume& volume) {
    const bool reflection = material.driver.textures[kSlotReflection] != nullptr;
    Refresh(object, true);
    Place(object, camera, volume, reflection);
    Light(material, lighting, camera);
    Link(const_cast<q5_MATERIAL*>(&material.driver), reflection);
    mesh_.primaryColours = primary_.data();
    mesh_.secondaryColours = secondary_.data();
}

void FrameMesh::BuildOutline(const SceneObject& object, q5_MATERIAL* outline, std::uint32_t colour,
                             const Camera& camera, const ViewVolume& volume) {
    Refresh(object, false);
    Place(object, camera, volume, false);
    faceColours_.assign(faces_.size(), Colour6(static_cast<std::uint8_t>(colour),
                                               static_cast<std::uint8_t>(colour >> 8),
                                               static_cast<std::uint8_t>(colour >> 16)));
    primary_.clear();
    secondary_.clear();
    Link(outline, false);
}

void FrameMesh::BuildLines(const SceneObject& object, q5_MATERIAL* lines, std::uint32_t colour,
                           const Camera& camera, const ViewVolume& volume) {
    Refresh(object, false);
    Place(object, camera, volume, false);
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
    Link(lines, false);
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

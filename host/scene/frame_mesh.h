// One scene object as the driver sees it in one frame: view-space corners with clip codes, lit
// vertex colours, view-space normals and the packed tables of the host mesh.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "core/math/matrix3d.h"
#include "host/scene/scene.h"
#include "interface/mesh.h"
#include "interface/screen_vertex.h"

class q5_VIEW;

class Camera;
struct ViewVolume;

class FrameMesh {
public:
    // The object lit and placed in view space; `material` must outlive the frame.
    void Build(const SceneObject& object, const HostMaterial& material, const Lighting& lighting,
               const Camera& camera, const ViewVolume& volume);
    // The object's model edges only, in one colour (red in the low byte), drawn by `outline`
    // (a material with the edge-drawing bit).
    void BuildOutline(const SceneObject& object, q5_MATERIAL* outline, std::uint32_t colour,
                      const Camera& camera, const ViewVolume& volume);

    // The object's lines as edges of degenerate faces, drawn by `lines` (a material with the
    // edge-drawing bit) in one colour.
    void BuildLines(const SceneObject& object, q5_MATERIAL* lines, std::uint32_t colour,
                    const Camera& camera, const ViewVolume& volume);
    // The object's points that lie inside the view volume, projected by `view`, in one colour;
    // after Build or BuildLines of the same object.
    void ProjectPoints(const SceneObject& object, q5_VIEW& view, std::uint32_t colour,
                       std::vector<ScreenVertex>& out) const;

    q5_MESH& Mesh() { return mesh_; }
    // View-space depth of the object's centre, for drawing blended objects back to front.
    float CentreDepth() const { return centreDepth_; }
    // True when every corner lies outside one and the same plane, or in the half of the frame
    // that the volume does not draw: nothing can show.
    bool WhollyOutside() const { return outside_; }

private:
    // The object in world space: placed corners, texture coordinates, the centre and, when
    // asked for, unit normals. They stay while the object's serial and placement do, so a
    // turning camera does not make them again.
    void Refresh(const SceneObject& object, bool withNormals);
    void Place(const SceneObject& object, const Camera& camera, const ViewVolume& volume,
               bool viewNormals);
    void Light(const HostMaterial& material, const Lighting& lighting, const Camera& camera);
    void Link(q5_MATERIAL* material, bool withNormals);

    q5_MESH mesh_;
    q5_MATERIAL* materialSlot_ = nullptr;
    std::vector<q5_MESHVERTEX> vertices_;
    std::vector<std::uint8_t> drawn_; // per vertex: a kept face uses it
    std::vector<q5_VERTEXCOLOUR> primary_;
    std::vector<q5_COLOUR6> secondary_;
    std::vector<q5_MESHFACE> faces_;
    std::vector<q5_COLOUR6> faceColours_;
    std::vector<std::array<std::uint32_t, 3>> corners_;
    std::vector<std::array<float, 3>> normals_;
    std::vector<std::array<float, 2>> texcoords_;
    float centreDepth_ = 0;
    bool outside_ = false;

    // Refresh's world-space data and what it was made from.
    std::uint64_t serial_ = 0;
    MATRIX3D placement_;
    std::vector<POINT3D> worldPositions_, worldNormals_;
    POINT3D worldCentre_{0, 0, 0};

    // Light without a highlight does not depend on the eye: what was lit under these values
    // stays lit while only the camera moves.
    struct LightKey {
        Lighting lighting;
        Rgb base;
        float shininess = 0;
        bool operator==(const LightKey&) const = default;
    };
    std::optional<LightKey> lightKey_;
    std::vector<std::uint8_t> lit_; // per vertex: primary_ and secondary_ hold its light
};

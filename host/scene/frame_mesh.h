// One scene object as the driver sees it in one frame: view-space corners with clip codes, lit
// vertex colours, view-space normals and the packed tables of the host mesh.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

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
    void Place(const SceneObject& object, const Camera& camera, const ViewVolume& volume,
               std::vector<POINT3D>* worldNormals, std::vector<POINT3D>* worldPositions);
    void Link(q5_MATERIAL* material);

    q5_MESH mesh_;
    q5_MATERIAL* materialSlot_ = nullptr;
    std::vector<q5_MESHVERTEX> vertices_;
    std::vector<std::uint8_t> drawn_; // per vertex: a kept face uses it
    std::vector<POINT3D> worldNormals_, worldPositions_; // Build's, kept for their room
    std::vector<q5_VERTEXCOLOUR> primary_;
    std::vector<q5_COLOUR6> secondary_;
    std::vector<q5_MESHFACE> faces_;
    std::vector<q5_COLOUR6> faceColours_;
    std::vector<std::array<std::uint32_t, 3>> corners_;
    std::vector<std::array<float, 3>> normals_;
    std::vector<std::array<float, 2>> texcoords_;
    float centreDepth_ = 0;
    bool outside_ = false;
};

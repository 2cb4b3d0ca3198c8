// A scene of the host: placed meshes, their materials and pictures, the lights and the backdrop.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "core/math/matrix3d.h"
#include "host/scene/host_picture.h"
#include "host/scene/lighting.h"
#include "host/scene/mesh_geometry.h"
#include "interface/material.h"

// What the driver reads (q5_MATERIAL) and what the host's lighting adds to it.
struct HostMaterial {
    q5_MATERIAL driver; // textures point at pictures the scene holds
    Rgb colour{0.8f, 0.8f, 0.8f};
    float specular = 0.0f;
    float shininess = 24.0f;
    std::string name;
};

struct SceneObject {
    std::string name;
    MeshGeometry geometry;
    MATRIX3D placement; // object to world
    std::size_t material = 0;
    float opacity = 1.0f; // below 1 the object is blended, after every opaque one
    bool twoSided = false;
    bool outlined = false; // drawn, then outlined along its model edges
    bool framed = true;    // counts when the default camera frames the scene
    // Given by the scene, unique in the run: what a frame mesh derived from the object stays
    // valid while the serial and the placement do.
    std::uint64_t serial = 0;
};

struct Bounds {
    POINT3D centre{0, 0, 0};
    float radius = 0;
    bool empty = true;
};

class Scene {
public:
    Scene() = default;
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;
    ~Scene();

    // Takes over the caller's reference; returns the picture for use in materials.
    HostPicture* Hold(HostPicture* picture);
    std::size_t AddMaterial(const HostMaterial& material);
    HostMaterial& Material(std::size_t index) { return *materials_[index]; }
    const HostMaterial& Material(std::size_t index) const { return *materials_[index]; }
    std::size_t MaterialCount() const { return materials_.size(); }
    void AddObject(SceneObject object);
    const std::vector<SceneObject>& Objects() const { return objects_; }

    // A sphere around every framed object (or every object when none is framed).
    Bounds FramedBounds() const;
    Bounds AllBounds() const;

    Lighting lighting;
    std::uint32_t background[2] = {0x00302010, 0x00C0A890}; // top, bottom; red in the low byte
    std::uint32_t outlineColour = 0x00101010;
    // Suggested orbit of the default camera, in degrees.
    double yaw = 30.0, pitch = 20.0, fovY = 40.0;
    // Scales the distance at which the default camera fits the framed objects.
    double fit = 1.0;

private:
    Bounds BoundsOf(bool framedOnly) const;

    std::vector<HostPicture*> pictures_;
    std::vector<std::unique_ptr<HostMaterial>> materials_;
    std::vector<SceneObject> objects_;
};

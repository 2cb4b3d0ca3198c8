// Scene bookkeeping and bounds.
#include "host/scene/scene.h"

#include <algorithm>
#include <atomic>
#include <cfloat>
#include <cmath>

Scene::~Scene() {
    for (HostPicture* p : pictures_) p->Release();
}

HostPicture* Scene::Hold(HostPicture* picture) {
    if (picture != nullptr) pictures_.push_back(picture);
    return picture;
}

std::size_t Scene::AddMaterial(const HostMaterial& material) {
    materials_.push_back(std::make_unique<HostMaterial>(material));
    return materials_.size() - 1;
}

void Scene::AddObject(SceneObject object) {
    static std::atomic<std::uint64_t> lastSerial{0};
    object.serial = ++lastSerial;
    objects_.push_back(std::move(object));
}

Bounds Scene::FramedBounds() const {
    Bounds b = BoundsOf(true);
    return b.empty ? BoundsOf(false) : b;
}

Bounds Scene::AllBounds() const {
    return BoundsOf(false);
}

// Centred on the box around the placed corners, reaching the farthest corner.
Bounds Scene::BoundsOf(bool framedOnly) const {
    float lo[3] = {FLT_MAX, FLT_MAX, FLT_MAX}, hi[3] = {-FLT_MAX, -FLT_MAX, -FLT_MAX};
    std::vector<POINT3D> placed;
    for (const SceneObject& o : objects_) {
        if (framedOnly && !o.framed) continue;
        for (const POINT3D& p : o.geometry.positions) {
            placed.push_back(o.placement.PointTransform(p));
            for (int k = 0; k < 3; ++k) {
                lo[k] = std::min(lo[k], placed.back()[k]);
                hi[k] = std::max(hi[k], placed.back()[k]);
            }
        }
    }
    Bounds b;
    if (placed.empty()) return b;
    b.empty = false;
    b.centre = POINT3D((lo[0] + hi[0]) / 2, (lo[1] + hi[1]) / 2, (lo[2] + hi[2]) / 2);
    float farthest = 0;
    for (const POINT3D& p : placed) {
        const float dx = p.x - b.centre.x, dy = p.y - b.centre.y, dz = p.z - b.centre.z;
        farthest = std::max(farthest, dx * dx + dy * dy + dz * dz);
    }
    b.radius = std::sqrt(farthest);
    return b;
}

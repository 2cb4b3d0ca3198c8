// Fitting the camera to a scene.
#include "host/scene/framing.h"

#include "core/services/portable_math.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

// Room left around the framed objects, as a share of the frame.
constexpr double kMargin = 1.08;
// The near plane stays at least this share of the camera distance away from the eye.
constexpr double kNearShare = 0.2;

} // namespace

Framing FrameScene(const Bounds& framed, const Bounds& all, const Shot& shot, std::int32_t width,
                   std::int32_t height) {
    Framing f;
    const double radius = framed.empty ? 1.0 : std::max<double>(framed.radius, 1e-3);
    const POINT3D centre = shot.target ? *shot.target
                           : framed.empty ? POINT3D(0, 0, 0)
                                          : framed.centre;
    const double halfY = shot.fovY * std::numbers::pi / 360.0;
    const double halfX = q5math::Atan(q5math::Tan(halfY) * width / std::max(height, 1));
    f.distance = shot.distance > 0
                     ? shot.distance
                     : shot.fit * kMargin * radius / q5math::Sin(std::min(halfX, halfY));
    f.camera.Orbit(centre, shot.yaw, shot.pitch, f.distance);

    // Depth precision follows the ratio far / near, so the planes sit just around the scene.
    const Bounds& reach = all.empty ? framed : all;
    const POINT3D& eye = f.camera.Eye();
    const double dx = reach.centre.x - eye.x, dy = reach.centre.y - eye.y,
                 dz = reach.centre.z - eye.z;
    const double toCentre = std::sqrt(dx * dx + dy * dy + dz * dz);
    const double extent = reach.empty ? radius : std::max<double>(reach.radius, radius);
    const double farZ = toCentre + extent * 1.01 + 1e-3;
    // Whatever lies much nearer than the framed objects is cut away, for the same reason.
    const double nearZ = std::max(toCentre - extent * 1.01, f.distance * kNearShare);
    f.volume = ViewVolume::Perspective(width, height, shot.fovY, nearZ, farZ);
    return f;
}

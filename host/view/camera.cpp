// Camera placement through the core library's look-at frame.
#include "host/view/camera.h"

#include "core/services/portable_math.h"

#include <algorithm>
#include <cmath>
#include <numbers>

Camera::Camera() : eye_(0, 0, -1), target_(0, 0, 0) {
    LookAt(eye_, target_, POINT3D(0, 1, 0));
}

void Camera::LookAt(const POINT3D& eye, const POINT3D& target, const POINT3D& up) {
    eye_ = eye;
    target_ = target;
    POINT3D e = eye, t = target;
    // SetView takes the up direction as a point beside the eye.
    POINT3D upPoint(eye.x + up.x, eye.y + up.y, eye.z + up.z);
    MATRIX3D viewToWorld;
    viewToWorld.SetView(e, t, upPoint);
    worldToView_.Invert(viewToWorld);
    for (auto& row : worldToView_.m) row[0] = -row[0];
}

void Camera::Orbit(const POINT3D& target, double yawDegrees, double pitchDegrees, double distance) {
    const double yaw = yawDegrees * std::numbers::pi / 180.0;
    const double pitch = std::clamp(pitchDegrees, -89.0, 89.0) * std::numbers::pi / 180.0;
    const POINT3D eye(
        static_cast<float>(target.x + distance * q5math::Cos(pitch) * q5math::Sin(yaw)),
        static_cast<float>(target.y + distance * q5math::Sin(pitch)),
        static_cast<float>(target.z + distance * q5math::Cos(pitch) * q5math::Cos(yaw)));
    LookAt(eye, target, POINT3D(0, 1, 0));
}

POINT3D Camera::PointToView(const POINT3D& world) const {
    return worldToView_.PointTransform(world);
}

POINT3D Camera::DirectionToView(const POINT3D& world) const {
    return worldToView_.VectorTransform(world);
}

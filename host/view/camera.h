// A perspective camera: where the eye is, where it looks, and the world-to-view transform.
#pragma once

#include "core/math/matrix3d.h"

// The world is right-handed with y up. View space has x to the right of the picture, y up and
// z away from the eye, which is left-handed: the world-to-view transform mirrors x, so faces
// that wind counter-clockwise seen from outside stay counter-clockwise on screen.
class Camera {
public:
    Camera();

    // `up` is a direction; it must not be parallel to the line of sight.
    void LookAt(const POINT3D& eye, const POINT3D& target, const POINT3D& up);
    // The eye on a sphere around target: yaw in degrees about the world's y axis (0 puts the eye
    // on the +z side), pitch in degrees above the horizon (kept within +-89).
    void Orbit(const POINT3D& target, double yawDegrees, double pitchDegrees, double distance);

    const MATRIX3D& WorldToView() const { return worldToView_; }
    const POINT3D& Eye() const { return eye_; }
    const POINT3D& Target() const { return target_; }
    POINT3D PointToView(const POINT3D& world) const;
    POINT3D DirectionToView(const POINT3D& world) const;

private:
    MATRIX3D worldToView_;
    POINT3D eye_, target_;
};

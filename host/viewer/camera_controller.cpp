// Orbit, pan and zoom as arithmetic on the shot.
#include "host/viewer/camera_controller.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numbers>

#include "core/services/portable_math.h"

namespace {

// Distance factor of one wheel notch toward the scene.
constexpr double kNotchFactor = 0.8;
// A zoom rectangle needs this many pixels a side to mean a region rather than a slip.
constexpr std::int32_t kMinRectSide = 4;
// The eye stays at least this share of the scene's size away from the orbit centre.
constexpr double kMinDistanceShare = 1e-4;
constexpr double kPitchLimit = 89.0;

struct Vec {
    double x, y, z;
    Vec operator+(const Vec& o) const { return {x + o.x, y + o.y, z + o.z}; }
    Vec operator-(const Vec& o) const { return {x - o.x, y - o.y, z - o.z}; }
    Vec operator*(double s) const { return {x * s, y * s, z * s}; }
};

Vec ToVec(const POINT3D& p) {
    return {p.x, p.y, p.z};
}
POINT3D ToPoint(const Vec& v) {
    return POINT3D(static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z));
}
double Radians(double degrees) {
    return degrees * std::numbers::pi / 180.0;
}

// The picture's right and up directions and the direction from the orbit centre to the eye, in
// the world, for the camera Camera::Orbit places.
struct Axes {
    Vec right, up, toEye;
};
Axes AxesOf(const Shot& shot) {
    const double yaw = Radians(shot.yaw);
    const double pitch = Radians(std::clamp(shot.pitch, -kPitchLimit, kPitchLimit));
    const double sy = q5math::Sin(yaw), cy = q5math::Cos(yaw);
    const double sp = q5math::Sin(pitch), cp = q5math::Cos(pitch);
    return {{cy, 0.0, -sy}, {-sp * sy, cp, -sp * cy}, {cp * sy, sp, cp * cy}};
}

// The point that pixel (x, y) shows on the plane through the orbit centre facing the eye.
Vec OnCentrePlane(const Shot& shot, double x, double y, std::int32_t width, std::int32_t height) {
    const ViewVolume v = ViewVolume::Perspective(width, height, shot.fovY, 1.0, 2.0);
    const double u = (2.0 * x / v.width - 1.0) * v.tanHalfX * shot.distance;
    const double w = (1.0 - 2.0 * y / v.height) * v.tanHalfY * shot.distance;
    const Axes a = AxesOf(shot);
    return ToVec(*shot.target) + a.right * u + a.up * w;
}

} // namespace

void CameraController::SetScene(const Bounds& framed, const Bounds& all, const Shot& home,
                                std::int32_t width, std::int32_t height) {
    framed_ = framed;
    all_ = all;
    home_ = home;
    Reset(width, height);
}

void CameraController::Reset(std::int32_t width, std::int32_t height) {
    shot_ = home_;
    if (!home_.target || home_.distance <= 0) Fit(width, height);
}

void CameraController::Fit(std::int32_t width, std::int32_t height) {
    Shot fitted = shot_;
    fitted.target.reset();
    fitted.distance = 0.0;
    fitted.fit = home_.fit;
    const Framing f = FrameScene(framed_, all_, fitted, width, height);
    shot_.distance = f.distance;
    shot_.target = f.camera.Target();
}

void CameraController::Orbit(double dx, double dy) {
    shot_.yaw = std::remainder(shot_.yaw - dx * kOrbitDegreesPerPixel, 360.0);
    shot_.pitch = std::clamp(shot_.pitch + dy * kOrbitDegreesPerPixel, -kPitchLimit, kPitchLimit);
}

void CameraController::Pan(double dx, double dy, std::int32_t width, std::int32_t height) {
    const ViewVolume v = ViewVolume::Perspective(width, height, shot_.fovY, 1.0, 2.0);
    const double perPixel = 2.0 * v.tanHalfY * shot_.distance / v.height;
    const Axes a = AxesOf(shot_);
    shot_.target =
        ToPoint(ToVec(*shot_.target) - a.right * (dx * perPixel) + a.up * (dy * perPixel));
}

void CameraController::ZoomAt(double notches, std::int32_t x, std::int32_t y, std::int32_t width,
                              std::int32_t height) {
    const double least = kMinDistanceShare * std::max<double>(all_.radius, 1.0);
    const double factor = std::max(q5math::Pow(kNotchFactor, notches), least / shot_.distance);
    const Vec under = OnCentrePlane(shot_, x + 0.5, y + 0.5, width, height);
    const Vec target = ToVec(*shot_.target);
    shot_.target = ToPoint(target + (under - target) * (1.0 - factor));
    shot_.distance *= factor;
}

bool CameraController::ZoomToRect(std::int32_t x0, std::int32_t y0, std::int32_t x1,
                                  std::int32_t y1, std::int32_t width, std::int32_t height) {
    const std::int32_t w = std::abs(x1 - x0), h = std::abs(y1 - y0);
    if (w < kMinRectSide || h < kMinRectSide) return false;
    const double share = std::max(double(w) / std::max(width, 1), double(h) / std::max(height, 1));
    shot_.target = ToPoint(OnCentrePlane(shot_, (x0 + x1) / 2.0, (y0 + y1) / 2.0, width, height));
    shot_.distance *= share;
    return true;
}

void CameraController::CentreOn(const POINT3D& point) {
    const Axes a = AxesOf(shot_);
    const Vec eye = ToVec(*shot_.target) + a.toEye * shot_.distance;
    const Vec d = eye - ToVec(point);
    const double distance = std::sqrt(d.x * d.x + d.y * d.y + d.z * d.z);
    if (!(distance > 0)) return;
    // Same eye, new aim: the direction to the eye gives the new yaw and pitch.
    shot_.yaw = q5math::Atan2(d.x, d.z) * 180.0 / std::numbers::pi;
    shot_.pitch =
        std::clamp(q5math::Asin(std::clamp(d.y / distance, -1.0, 1.0)) * 180.0 / std::numbers::pi,
                   -kPitchLimit, kPitchLimit);
    shot_.target = point;
    shot_.distance = distance;
}

Framing CameraController::Frame(std::int32_t width, std::int32_t height) const {
    return FrameScene(framed_, all_, shot_, width, height);
}

std::string CameraController::RenderArguments() const {
    char text[256];
    // Enough digits that reading them back gives the same numbers.
    std::snprintf(text, sizeof text, "--camera %.17g,%.17g,%.17g,%.17g --target %.9g,%.9g,%.9g",
                  shot_.yaw, shot_.pitch, shot_.distance, shot_.fovY, shot_.target->x,
                  shot_.target->y, shot_.target->z);
    return text;
}

POINT3D UnprojectPixel(const Framing& framing, std::int32_t x, std::int32_t y, std::int32_t depth) {
    const ViewVolume& v = framing.volume;
    const double ndc = (depth - v.DepthOffset()) / v.DepthScale();
    const double a = (v.farZ + v.nearZ) / (v.farZ - v.nearZ);
    const double b = 2.0 * v.farZ * v.nearZ / (v.farZ - v.nearZ);
    const double z = b / (a - ndc);
    const double vx = (2.0 * (x + 0.5) / v.width - 1.0) * z * v.tanHalfX;
    const double vy = (1.0 - 2.0 * (y + 0.5) / v.height) * z * v.tanHalfY;
    MATRIX3D viewToWorld;
    viewToWorld.Invert(framing.camera.WorldToView());
    return viewToWorld.PointTransform(
        POINT3D(static_cast<float>(vx), static_cast<float>(vy), static_cast<float>(z)));
}

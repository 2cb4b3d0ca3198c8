// The viewer's camera moves, as changes of an orbit shot that tessera-render can repeat.
#pragma once

#include <cstdint>
#include <string>

#include "host/scene/framing.h"

// Degrees of turn per pixel dragged.
inline constexpr double kOrbitDegreesPerPixel = 0.4;

class CameraController {
public:
    // The scene's bounds and its default shot; the camera goes to that shot, fitted to a
    // width x height frame.
    void SetScene(const Bounds& framed, const Bounds& all, const Shot& home, std::int32_t width,
                  std::int32_t height);
    // Back to the default shot.
    void Reset(std::int32_t width, std::int32_t height);
    // Keeps the direction, aims at the framed objects and moves to the distance that fits them.
    void Fit(std::int32_t width, std::int32_t height);

    // A drag of (dx, dy) pixels: right turns the scene to the right, down shows it from above.
    void Orbit(double dx, double dy);
    // A drag that moves the scene with the cursor, at the depth of the orbit centre.
    void Pan(double dx, double dy, std::int32_t width, std::int32_t height);
    // Wheel notches (positive: nearer) keeping the point under pixel (x, y) on the plane of the
    // orbit centre where it is.
    void ZoomAt(double notches, std::int32_t x, std::int32_t y, std::int32_t width,
                std::int32_t height);
    // Makes the pixel rectangle between two corners fill the frame; false (nothing changes)
    // when it is too thin to mean a region.
    bool ZoomToRect(std::int32_t x0, std::int32_t y0, std::int32_t x1, std::int32_t y1,
                    std::int32_t width, std::int32_t height);
    // Orbits around `point` from where the eye is, so that it comes to the frame's centre.
    void CentreOn(const POINT3D& point);

    const Shot& CurrentShot() const { return shot_; }
    Framing Frame(std::int32_t width, std::int32_t height) const;
    // The camera as tessera-render's options, exactly: --camera Y,P,D,FOV --target X,Y,Z.
    std::string RenderArguments() const;

private:
    Bounds framed_, all_;
    Shot home_, shot_;
};

// The world point that pixel (x, y) shows at integer depth `depth` of a frame drawn with
// `framing`; the inverse of the view's projection through the pixel's centre.
POINT3D UnprojectPixel(const Framing& framing, std::int32_t x, std::int32_t y, std::int32_t depth);

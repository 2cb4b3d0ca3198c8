// The camera's view volume in view space: clip codes, plane distances and projection to screen.
#pragma once

#include <cstdint>

// Clip-code bits, one per plane of the view volume; bit 0 is not a plane.
inline constexpr std::uint8_t kClipNear = 1 << 1;
inline constexpr std::uint8_t kClipFar = 1 << 2;
inline constexpr std::uint8_t kClipLeft = 1 << 3;
inline constexpr std::uint8_t kClipRight = 1 << 4;
inline constexpr std::uint8_t kClipTop = 1 << 5;
inline constexpr std::uint8_t kClipBottom = 1 << 6;
inline constexpr std::uint8_t kClipAllPlanes = 0x7E;
// Not a plane: the corner projects into the half of the frame that this view does not draw.
// Only the driver's test for a triangle wholly outside reads it; the clipper ignores it.
inline constexpr std::uint8_t kClipOtherHalf = 1 << 7;

// Screen positions are in 1/256 pixel.
inline constexpr int kScreenSubpixels = 256;
// Integer depth spans 0 (near plane) to 2^30 (far plane).
inline constexpr double kDepthRange = 1073741824.0;

// The rows a view draws when two drivers share a frame, each drawing one half.
enum class FrameHalf : std::uint8_t { Whole, Top, Bottom };

struct ScreenPosition {
    std::int32_t x = 0, y = 0, z = 0;
};

// View space: x right, y up, z away from the eye. A perspective camera with its eye at the
// origin sees the frustum |x| <= z * tanHalfX, |y| <= z * tanHalfY, near <= z <= far.
struct ViewVolume {
    std::int32_t width = 1, height = 1; // frame in pixels
    double tanHalfX = 1.0, tanHalfY = 1.0;
    double nearZ = 0.1, farZ = 100.0;
    FrameHalf half = FrameHalf::Whole;
    std::int32_t splitRow = 0; // first row of the bottom half

    // Vertical field of view in degrees; the horizontal one follows from the frame's aspect.
    static ViewVolume Perspective(std::int32_t width, std::int32_t height, double fovYDegrees,
                                  double nearZ, double farZ);

    // Distance of (x, y, z) inside one plane: >= 0 inside or on it, negative outside.
    double PlaneDistance(std::uint8_t planeBit, double x, double y, double z) const;
    // Plane bits, and kClipOtherHalf for a corner in front of the near plane that projects
    // more than a margin into the half this volume does not draw.
    std::uint8_t ClipCode(double x, double y, double z) const;
    // The same volume drawing one half of the frame, split before row `splitRow`.
    ViewVolume Half(FrameHalf which, std::int32_t splitRow) const;

    // Depth mapping: integer depth = DepthScale() * zNdc + DepthOffset(), zNdc in [-1, 1] from
    // the near to the far plane (affine in 1 / z, so it interpolates linearly across the screen).
    double DepthScale() const { return kDepthRange / 2; }
    double DepthOffset() const { return kDepthRange / 2; }
    double NdcDepth(double z) const;
    // Integer depth steps per unit of distance along the line of sight, at distance z.
    double DepthStepsPerUnit(double z) const;
    // A point at or behind the eye is treated as lying on the near plane.
    ScreenPosition Project(double x, double y, double z) const;
};

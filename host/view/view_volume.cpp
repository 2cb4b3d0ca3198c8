// Clip codes and perspective projection of the view volume.
#include "host/view/view_volume.h"

#include "core/services/portable_math.h"

#include <algorithm>
#include <cmath>
#include <numbers>

ViewVolume ViewVolume::Perspective(std::int32_t width, std::int32_t height, double fovYDegrees,
                                   double nearZ, double farZ) {
    ViewVolume v;
    v.width = std::max(width, 1);
    v.height = std::max(height, 1);
    v.tanHalfY = q5math::Tan(fovYDegrees * std::numbers::pi / 360.0);
    v.tanHalfX = v.tanHalfY * v.width / v.height;
    v.nearZ = nearZ;
    v.farZ = farZ;
    return v;
}

double ViewVolume::PlaneDistance(std::uint8_t planeBit, double x, double y, double z) const {
    switch (planeBit) {
    case kClipNear:
        return z - nearZ;
    case kClipFar:
        return farZ - z;
    case kClipLeft:
        return x + z * tanHalfX;
    case kClipRight:
        return z * tanHalfX - x;
    case kClipTop:
        return z * tanHalfY - y;
    case kClipBottom:
        return y + z * tanHalfY;
    default:
        return 0.0;
    }
}

std::uint8_t ViewVolume::ClipCode(double x, double y, double z) const {
    std::uint8_t code = 0;
    for (std::uint8_t bit = kClipNear; bit <= kClipBottom;
         bit = static_cast<std::uint8_t>(bit << 1))
        if (PlaneDistance(bit, x, y, z) < 0.0) code |= bit;
    if (half == FrameHalf::Whole || (code & kClipNear) != 0) return code;
    // Rows, unrounded. The margin covers the rounding of projected corners, of the corners
    // the clipper and subdivision make inside a triangle, and the pixels of drawn edges.
    constexpr double kMarginRows = 2.0;
    const double row = 0.5 * height * (1.0 - y / (z * tanHalfY));
    if (half == FrameHalf::Top ? row >= splitRow + kMarginRows : row < splitRow - kMarginRows)
        code |= kClipOtherHalf;
    return code;
}

ViewVolume ViewVolume::Half(FrameHalf which, std::int32_t row) const {
    ViewVolume v = *this;
    v.half = which;
    v.splitRow = row;
    return v;
}

double ViewVolume::NdcDepth(double z) const {
    return (farZ + nearZ) / (farZ - nearZ) - 2.0 * farZ * nearZ / ((farZ - nearZ) * z);
}

double ViewVolume::DepthStepsPerUnit(double z) const {
    return DepthScale() * 2.0 * farZ * nearZ / ((farZ - nearZ) * z * z);
}

ScreenPosition ViewVolume::Project(double x, double y, double z) const {
    z = std::max(z, nearZ);
    // Far outside the frame a position only needs to stay representable in 1/256 pixel.
    constexpr double kLimit = 1.0e6;
    const double px = std::clamp(0.5 * width * (1.0 + x / (z * tanHalfX)), -kLimit, kLimit);
    const double py = std::clamp(0.5 * height * (1.0 - y / (z * tanHalfY)), -kLimit, kLimit);
    const double depth = std::clamp(DepthScale() * NdcDepth(z) + DepthOffset(), 0.0, kDepthRange);
    ScreenPosition p;
    p.x = static_cast<std::int32_t>(q5math::Round(px * kScreenSubpixels));
    p.y = static_cast<std::int32_t>(q5math::Round(py * kScreenSubpixels));
    p.z = static_cast<std::int32_t>(q5math::Round(depth));
    return p;
}

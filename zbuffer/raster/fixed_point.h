// Fixed-point scales and sentinels shared by the rasterizer, the lines and the quads.
#pragma once

#include <cstdint>

inline constexpr int kSubpixelBits = 8; // screen x and y: 1/256 pixel
inline constexpr std::int32_t kSubpixelOne = 1 << kSubpixelBits;
inline constexpr int kEdgeFracBits = 16;                                // edge x and colours: 16.16
inline constexpr int kEdgeFromSubpixel = kEdgeFracBits - kSubpixelBits; // 24.8 -> 16.16
inline constexpr int kTexelFracBits = 12; // texture positions: 20.12 texels
inline constexpr double kTexelOne = 1 << kTexelFracBits;
inline constexpr std::uint32_t kTexelIndexMask = 0xFFFFF;    // 20 integer bits of a position
inline constexpr std::int32_t kTexelPositionLimit = 1 << 29; // keeps 20.12 positions in range

inline constexpr std::int32_t kDepthEmpty = 0x7FFFFFFF;  // a cleared depth entry: farthest
inline constexpr std::uint8_t kAlphaOpaque = 255;        // fourth byte of an opaque write
inline constexpr std::int32_t kFullCoverage = 255 * 255; // alpha coverage numerator

inline constexpr int kMaxPolygonVertices = 8;

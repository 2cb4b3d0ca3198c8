// Sutherland-Hodgman clipping of view-space polygons against the planes of the view volume.
#pragma once

#include <cstdint>

#include "host/view/view_volume.h"

// A polygon corner while it is being clipped: position, texture coordinates and colour.
struct ClipVertex {
    double x = 0, y = 0, z = 0;
    float s = 0, t = 0;
    float red = 0, green = 0, blue = 0;
};

// A triangle clipped by six planes gains at most one corner per plane.
inline constexpr int kMaxClipVertices = 16;

// Clips the polygon of `count` corners (room for kMaxClipVertices) in place against every plane
// whose bit is set in `planes`; returns the corners left, 0 when nothing remains. Texture
// coordinates are carried when `withTexture` is set, left at 0 on new corners otherwise.
int ClipPolygonToVolume(const ViewVolume& volume, std::uint8_t planes, ClipVertex* polygon,
                        int count, bool withTexture);

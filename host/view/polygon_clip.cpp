// Polygon clipping against the view volume, one plane at a time.
#include "host/view/polygon_clip.h"

namespace {

ClipVertex Between(const ClipVertex& a, const ClipVertex& b, double t, bool withTexture) {
    ClipVertex v;
    v.x = a.x + (b.x - a.x) * t;
    v.y = a.y + (b.y - a.y) * t;
    v.z = a.z + (b.z - a.z) * t;
    const float f = static_cast<float>(t);
    if (withTexture) {
        v.s = a.s + (b.s - a.s) * f;
        v.t = a.t + (b.t - a.t) * f;
    }
    v.red = a.red + (b.red - a.red) * f;
    v.green = a.green + (b.green - a.green) * f;
    v.blue = a.blue + (b.blue - a.blue) * f;
    return v;
}

int ClipAgainst(const ViewVolume& volume, std::uint8_t plane, const ClipVertex* in, int count,
                ClipVertex* out, bool withTexture) {
    int n = 0;
    for (int i = 0; i < count && n < kMaxClipVertices; ++i) {
        const ClipVertex& a = in[i];
        const ClipVertex& b = in[(i + 1) % count];
        const double da = volume.PlaneDistance(plane, a.x, a.y, a.z);
        const double db = volume.PlaneDistance(plane, b.x, b.y, b.z);
        if (da >= 0) out[n++] = a;
        // The edge crosses the plane: keep the crossing, computed from the inside end so
        // both neighbours of a crossing edge produce the same point.
        if ((da >= 0) != (db >= 0) && n < kMaxClipVertices) {
            out[n++] = da >= 0 ? Between(a, b, da / (da - db), withTexture)
                               : Between(b, a, db / (db - da), withTexture);
        }
    }
    return n;
}

} // namespace

int ClipPolygonToVolume(const ViewVolume& volume, std::uint8_t planes, ClipVertex* polygon,
                        int count, bool withTexture) {
    ClipVertex scratch[kMaxClipVertices];
    for (std::uint8_t plane = kClipNear; plane <= kClipBottom && count > 0;
         plane = static_cast<std::uint8_t>(plane << 1)) {
        if ((planes & plane) == 0) continue;
        count = ClipAgainst(volume, plane, polygon, count, scratch, withTexture);
        for (int i = 0; i < count; ++i) polygon[i] = scratch[i];
    }
    return count >= 3 ? count : 0;
}

// Clipping and projection of face corners for the driver.
#include "host/view/host_view.h"

#include <bit>
#include <cmath>
#include <cstring>

#include "host/view/polygon_clip.h"
#include "interface/screen_vertex.h"

namespace {

// Before projection a corner's x, y and z hold view-space floats as bit patterns.
float FloatIn(std::int32_t bits) {
    return std::bit_cast<float>(bits);
}
std::int32_t FloatBits(double value) {
    return std::bit_cast<std::int32_t>(static_cast<float>(value));
}

std::uint8_t ColourByte(float c) {
    return static_cast<std::uint8_t>(std::lround(std::fmin(std::fmax(c, 0.0f), 255.0f)));
}

} // namespace

void HostView::SetFade(bool on, std::uint32_t colour) {
    fade_ = colour;
    if (on)
        settings_.flags |= q5_RENDERSETTINGS::kFlagDepthFade;
    else
        settings_.flags &= ~q5_RENDERSETTINGS::kFlagDepthFade;
}

bool HostView::ClipPolygon(ScreenVertex* const corners[3], ScreenVertex* out, int& count) {
    return Clip(corners, out, count, false);
}

bool HostView::ClipTexturedPolygon(ScreenVertex* const corners[3], ScreenVertex* out, int& count) {
    return Clip(corners, out, count, true);
}

bool HostView::Clip(ScreenVertex* const corners[3], ScreenVertex* out, int& count,
                    bool withTexture) {
    ClipVertex polygon[kMaxClipVertices];
    std::uint8_t planes = 0;
    const int in = count < 3 ? count : 3;
    for (int i = 0; i < in; ++i) {
        const ScreenVertex& c = *corners[i];
        ClipVertex& v = polygon[i];
        v.x = FloatIn(c.x);
        v.y = FloatIn(c.y);
        v.z = FloatIn(c.z);
        if (withTexture) {
            v.s = c.s;
            v.t = c.t;
        }
        v.red = c.red;
        v.green = c.green;
        v.blue = c.blue;
        planes |= c.clipCode;
    }
    count = in < 3
                ? 0
                : ClipPolygonToVolume(volume_, planes & kClipAllPlanes, polygon, in, withTexture);
    for (int i = 0; i < count; ++i) {
        const ClipVertex& v = polygon[i];
        ScreenVertex& o = out[i];
        std::memset(&o, 0, sizeof o);
        o.x = FloatBits(v.x);
        o.y = FloatBits(v.y);
        o.z = FloatBits(v.z);
        o.s = v.s;
        o.t = v.t;
        o.red = ColourByte(v.red);
        o.green = ColourByte(v.green);
        o.blue = ColourByte(v.blue);
    }
    return count > 0;
}

void HostView::Project(ScreenVertex& v) {
    const float z = FloatIn(v.z);
    const ScreenPosition* known = projected_.Find(v.x, v.y, v.z);
    ScreenPosition p;
    if (known != nullptr) {
        p = *known;
    } else {
        p = volume_.Project(FloatIn(v.x), FloatIn(v.y), z);
        projected_.Keep(v.x, v.y, v.z, p);
    }
    v.x = p.x;
    v.y = p.y;
    v.z = p.z;
    // The view's own value: the corner's distance along the line of sight.
    v.reserved = z;
}

void HostView::ProjectVertices(ScreenVertex* vertices, int count, int stride) {
    auto* bytes = reinterpret_cast<std::uint8_t*>(vertices);
    for (int i = 0; i < count; ++i)
        Project(*reinterpret_cast<ScreenVertex*>(bytes + static_cast<std::ptrdiff_t>(i) * stride));
}

void HostView::ProjectVertexList(ScreenVertex* const* vertices, int count) {
    for (int i = 0; i < count; ++i) Project(*vertices[i]);
}

void HostView::ProjectPoint(const float point[3], ScreenVertex& out) {
    const ScreenPosition p = volume_.Project(point[0], point[1], point[2]);
    out.x = p.x;
    out.y = p.y;
    out.z = p.z;
    out.reserved = point[2];
}

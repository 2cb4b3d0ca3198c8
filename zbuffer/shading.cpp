// Colour conversion, tint and sphere mapping.
#include "zbuffer/shading.h"

#include "core/services/portable_math.h"
#include "interface/screen_vertex.h"

#include <algorithm>
#include <cmath>

namespace {

std::uint8_t ChannelByte(double c) {
    // Written so that NaN lands on 0 too.
    const double clamped = c > 0.0 ? std::min(c, 1.0) : 0.0;
    return static_cast<std::uint8_t>(clamped * 255.0);
}

} // namespace

RgbBytes ColourToBytes(float red, float green, float blue) {
    return RgbBytes{ChannelByte(red), ChannelByte(green), ChannelByte(blue)};
}

RgbBytes TintColour(RgbBytes colour, const float factors[3]) {
    return RgbBytes{ChannelByte(colour.red / 255.0 * factors[0]),
                    ChannelByte(colour.green / 255.0 * factors[1]),
                    ChannelByte(colour.blue / 255.0 * factors[2])};
}

void SphereMapCoordinates(const double viewDirection[3], const double normal[3], float& s,
                          float& t) {
    const double* e = viewDirection;
    const double* n = normal;
    const double twoNDotE = 2.0 * (n[0] * e[0] + n[1] * e[1] + n[2] * e[2]);
    double r[3] = {twoNDotE * n[0] - e[0], twoNDotE * n[1] - e[1], twoNDotE * n[2] - e[2]};
    const double length = std::sqrt(r[0] * r[0] + r[1] * r[1] + r[2] * r[2]);
    if (length > 0.0) {
        for (double& c : r) c /= length;
    }
    constexpr double kInverseTwoPi = 0.15915497620314795;
    double sv =
        (r[1] == 0.0 && r[0] == 0.0) ? 0.5 : q5math::Atan2(r[1], -r[0]) * kInverseTwoPi + 0.25;
    const double tv = (1.0 - r[2]) * 0.5;
    sv += 0.5;
    if (sv > 1.0) sv -= 1.0;
    s = static_cast<float>(sv);
    t = static_cast<float>(tv);
}

void SetSphereMapCoordinates(ScreenVertex& vertex, const double viewDirection[3],
                             const double normal[3]) {
    float s = 0.0f, t = 0.0f;
    SphereMapCoordinates(viewDirection, normal, s, t);
    vertex.s = s;
    vertex.t = t;
}

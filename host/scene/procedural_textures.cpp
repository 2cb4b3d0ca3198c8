// Procedural pictures: a checkerboard and an environment for reflections.
#include "host/scene/procedural_textures.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

std::uint8_t Channel(std::uint32_t colour, int k) {
    return static_cast<std::uint8_t>(colour >> (8 * k));
}

std::uint8_t Mix(double a, double b, double t) {
    return static_cast<std::uint8_t>(std::clamp(std::lround(a + (b - a) * t), 0L, 255L));
}

} // namespace

HostPicture* MakeCheckerPicture(std::int32_t size, int cells, std::uint32_t light,
                                std::uint32_t dark) {
    HostPicture* p = HostPicture::Create(size, size, 24);
    if (p == nullptr || cells < 1) return p;
    const std::int32_t cell = std::max(size / cells, 1);
    for (std::int32_t y = 0; y < size; ++y)
        for (std::int32_t x = 0; x < size; ++x) {
            const bool odd = ((x / cell) + (y / cell)) % 2 != 0;
            const std::uint32_t c = odd ? dark : light;
            const bool seam = x % cell == 0 || y % cell == 0;
            const double shade = seam ? 0.8 : 1.0;
            p->SetPixel(x, y, Mix(0, Channel(c, 0), shade), Mix(0, Channel(c, 1), shade),
                        Mix(0, Channel(c, 2), shade));
        }
    return p;
}

HostPicture* MakeEnvironmentPicture(std::int32_t size) {
    HostPicture* p = HostPicture::Create(size, size, 24);
    if (p == nullptr) return p;
    constexpr double kTwoPi = 2.0 * std::numbers::pi;
    // The sun, up and to the left behind the viewer.
    const double sun[3] = {-0.45, 0.75, -0.48};
    const double sunLength = std::sqrt(sun[0] * sun[0] + sun[1] * sun[1] + sun[2] * sun[2]);
    for (std::int32_t row = 0; row < size; ++row) {
        // Rows count from the top of the picture; t counts from its bottom.
        const double t = 1.0 - (row + 0.5) / size;
        const double z = 1.0 - 2.0 * t;
        const double across = std::sqrt(std::max(0.0, 1.0 - z * z));
        for (std::int32_t column = 0; column < size; ++column) {
            const double s = (column + 0.5) / size;
            // Inverse of the renderer's s = atan2(y, -x) / 2pi + 0.75 (mod 1).
            const double angle = (s - 0.75) * kTwoPi;
            const double x = -across * std::cos(angle), y = across * std::sin(angle);
            double red, green, blue;
            if (y >= 0) {
                const double h = std::pow(y, 0.6);
                red = 235 + (70 - 235) * h;
                green = 240 + (120 - 240) * h;
                blue = 250 + (200 - 250) * h;
            } else {
                const double d = std::pow(-y, 0.5);
                red = 150 + (60 - 150) * d;
                green = 130 + (45 - 130) * d;
                blue = 105 + (35 - 105) * d;
            }
            const double toSun = (x * sun[0] + y * sun[1] + z * sun[2]) / sunLength;
            if (toSun > 0.96) {
                const double glow = std::min(1.0, (toSun - 0.96) / 0.03);
                red += (255 - red) * glow;
                green += (250 - green) * glow;
                blue += (235 - blue) * glow;
            }
            p->SetPixel(column, row, Mix(0, red, 1), Mix(0, green, 1), Mix(0, blue, 1));
        }
    }
    return p;
}

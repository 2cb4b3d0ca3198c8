// Procedural pictures: a checkerboard and an environment for reflections.
#include "host/scene/procedural_textures.h"

#include <algorithm>
#include <cmath>

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
    // Bands of light and dark around the line of sight, as a studio reflects in chrome.
    struct Band {
        double t;
        double red, green, blue;
    };
    constexpr Band kBands[] = {
        {0.00, 215, 220, 230}, {0.22, 120, 126, 140}, {0.36, 36, 38, 48},  {0.44, 60, 62, 74},
        {0.50, 250, 250, 255}, {0.60, 150, 190, 235}, {1.00, 50, 95, 170},
    };
    constexpr int kBandCount = static_cast<int>(sizeof kBands / sizeof kBands[0]);
    for (std::int32_t row = 0; row < size; ++row) {
        // Rows count from the top of the picture; t counts from its bottom.
        const double t = 1.0 - (row + 0.5) / size;
        int k = 0;
        while (k + 2 < kBandCount && t > kBands[k + 1].t) ++k;
        const Band& a = kBands[k];
        const Band& b = kBands[k + 1];
        const double f = std::clamp((t - a.t) / (b.t - a.t), 0.0, 1.0);
        for (std::int32_t column = 0; column < size; ++column)
            p->SetPixel(column, row, Mix(a.red, b.red, f), Mix(a.green, b.green, f),
                        Mix(a.blue, b.blue, f));
    }
    return p;
}

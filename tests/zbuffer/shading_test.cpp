// Colour conversion, tint and sphere-map coordinates.
#include "zbuffer/screen_vertex.h"
#include "zbuffer/shading.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

TEST(ColourToBytes, ClampsThenTruncates) {
    const RgbBytes c = ColourToBytes(1.5f, -0.2f, 0.5f);
    EXPECT_EQ(c.red, 255);
    EXPECT_EQ(c.green, 0);
    EXPECT_EQ(c.blue, 127); // 127.5 truncated
    EXPECT_EQ(ColourToBytes(NAN, 0.999f, 0.0f).red, 0);
    EXPECT_EQ(ColourToBytes(NAN, 0.999f, 0.0f).green, 254);
}

TEST(TintColour, ScalesEachChannelByItsFactor) {
    const float factors[3] = {0.3f, 0.5f, 2.0f};
    const RgbBytes c = TintColour(RgbBytes{255, 51, 255}, factors);
    EXPECT_EQ(c.red, 76);   // 1.0 * 0.3 * 255 = 76.5
    EXPECT_EQ(c.green, 25); // 0.2 * 0.5 * 255 = 25.5
    EXPECT_EQ(c.blue, 255); // clamped
}

constexpr double kTolerance = 1e-6;

TEST(SphereMap, ReflectionAlongViewGivesSOfOne) {
    const double e[3] = {0, 0, 1}, n[3] = {0, 0, 1};
    float s = 0, t = 0;
    SphereMapCoordinates(e, n, s, t);
    EXPECT_NEAR(s, 1.0, kTolerance); // 0.5 + 0.5, not wrapped to 0
    EXPECT_NEAR(t, 0.0, kTolerance);

    const double side[3] = {1, 0, 0}; // reflects to -e
    SphereMapCoordinates(e, side, s, t);
    EXPECT_NEAR(s, 1.0, kTolerance);
    EXPECT_NEAR(t, 1.0, kTolerance);
}

TEST(SphereMap, ReflectionAlongXWrapsPastOne) {
    // r = (1, 0, 0): atan2(0, -1) / 2pi + 0.25 = 0.75, plus 0.5 wraps to 0.25.
    const double e[3] = {0, 0, 1}, n[3] = {std::sqrt(0.5), 0, std::sqrt(0.5)};
    float s = 0, t = 0;
    SphereMapCoordinates(e, n, s, t);
    EXPECT_NEAR(s, 0.25, kTolerance);
    EXPECT_NEAR(t, 0.5, kTolerance);
}

TEST(SphereMap, StoresIntoTheVertex) {
    // r = (0, -1, 0): atan2(-1, 0) / 2pi + 0.25 = 0, plus 0.5.
    const double e[3] = {0, 0, 1}, n[3] = {0, -std::sqrt(0.5), std::sqrt(0.5)};
    ScreenVertex v{};
    SetSphereMapCoordinates(v, e, n);
    EXPECT_NEAR(v.s, 0.5, kTolerance);
    EXPECT_NEAR(v.t, 0.5, kTolerance);
}

} // namespace

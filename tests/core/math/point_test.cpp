// Point operations and the quantised normal encoding.
#include "math_testing.h"

#include <limits>

TEST(PointNormalize, UnitLengthAndZeroBecomesPlusZ) {
    POINT3D zf(0, 0, 0);
    _point3d d(3, 0, -4), zd(0, 0, 0);
    zf.Normalize();
    d.Normalize();
    zd.Normalize();
    EXPECT_POINT_NEAR(zf, 0, 0, 1, 0);
    EXPECT_POINT_NEAR(d, 0.6, 0, -0.8, kDoubleTol);
    EXPECT_POINT_NEAR(zd, 0, 0, 1, 0);
}

// Rounding halves away from zero, and no step is no operation.
TEST(PointComponents, RoundLimitAbsAndSwap) {
    POINT3D p(1.25f, -1.25f, 0.2f);
    p.Round(-1);
    EXPECT_POINT_NEAR(p, 1.25f, -1.25f, 0.2f, 0);
    p.Round(0.5f);
    EXPECT_POINT_NEAR(p, 1.5, -1.5, 0, 0);
    _point3d d(2.5, -2.5, 0.74);
    d.Round(1);
    EXPECT_POINT_NEAR(d, 3, -3, 1, 0);
    // Limit tests the minimum first.
    _point3d inverted(-2, 0.5, 3);
    inverted.Limit(1, 0);
    EXPECT_POINT_NEAR(inverted, 1, 1, 0, 0);
    POINT3D a(-1, -0.0f, 2);
    a.ABS();
    EXPECT_POINT_NEAR(a, 1, 0, 2, 0);
    EXPECT_TRUE(std::signbit(a.y)); // -0 is not below 0

    const float expected[7][3] = {{1, 2, 3}, {1, 3, 2}, {2, 1, 3}, {2, 3, 1},
                                  {3, 1, 2}, {3, 2, 1}, {1, 2, 3}};
    for (int mode = 0; mode <= 6; ++mode) {
        POINT3D s(1, 2, 3);
        s.Swap(mode);
        EXPECT_POINT_NEAR(s, expected[mode][0], expected[mode][1], expected[mode][2], 0) << mode;
    }
}

// With 1000 steps: pi/2 snaps to 1.5708 (polar index 500, azimuth 250), pi to 3.1416 (polar
// 1000, azimuth 500), 3pi/2 to 4.7124 (azimuth 750). Just below a full turn the azimuth snaps
// past 2pi and folds to 0.
TEST(PointEncodeNormal, PolesAxesAndFolding) {
    EXPECT_EQ(POINT3D(0, 0, 5).EncodeNormal(1000), 0u);
    EXPECT_EQ(POINT3D(0, 0, -1).EncodeNormal(1000), 1000u << 16);
    EXPECT_EQ(POINT3D(0, 0, -1).EncodeNormal(70000), (70000u & 0xFFFF) << 16);
    EXPECT_EQ(POINT3D(2, 0, 0).EncodeNormal(1000), 500u << 16);
    EXPECT_EQ(POINT3D(0, 1, 0).EncodeNormal(1000), 250u | 500u << 16);
    EXPECT_EQ(POINT3D(0, -1, 0).EncodeNormal(1000), 750u | 500u << 16);
    EXPECT_EQ(POINT3D(1, -1e-9f, 0).EncodeNormal(1000), 500u << 16);
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(POINT3D(nan, nan, nan).EncodeNormal(1000), 0u);
}

// Half a step in each angle plus the 0.1 mrad snap bound the angle between the two.
TEST(PointDecodeNormal, RoundTripStaysWithinHalfAStepAndZeroStepsGiveNaN) {
    POINT3D p;
    p.DecodeNormal(1000u << 16, 1000);
    EXPECT_POINT_NEAR(p, 0, 0, -1, kFloatTol);
    p.DecodeNormal(5 | 7 << 16, 0);
    EXPECT_FALSE(std::isfinite(p.x));
    constexpr unsigned kSteps = 65535;
    const double bound = std::sqrt(2.0) * (kPi / kSteps + 0.00005) + kFloatTol;
    TestRandom rng(11);
    for (int i = 0; i < 2000; ++i) {
        const POINT3D v = rng.Direction();
        POINT3D back;
        back.DecodeNormal(v.EncodeNormal(kSteps), kSteps);
        EXPECT_NEAR(back.Length(), 1, kFloatTol);
        // From sine and cosine: acos alone loses a small angle to float rounding.
        const _point3d a(v.x, v.y, v.z), b(back.x, back.y, back.z);
        const _point3d c(a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x);
        EXPECT_LE(std::atan2(c.Length(), a.x * b.x + a.y * b.y + a.z * b.z), bound);
    }
}

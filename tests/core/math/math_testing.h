// Tolerances, seeded random inputs and comparisons shared by the geometry tests.
#pragma once

#include "core/math/geometry.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>

inline constexpr double kPi = std::numbers::pi;

inline constexpr double kDoubleTol = 1e-12;    // a handful of double terms, libm trigonometry
inline constexpr double kIterativeTol = 1e-9;  // Newton, Jacobi; well-conditioned inverses
inline constexpr double kFloatTol = 1e-6;      // one pass through a float: a few ulps near 1
inline constexpr double kFloatChainTol = 2e-5; // float chains: last ulps differ by C library
inline constexpr double kFloatPartsTol = 1e-4; // matrices rebuilt from float parts up to 10

inline MATRIX3D RowsMatrix(const double (&rows)[4][4]) {
    return MATRIX3D(&rows[0][0], 16);
}

inline MATRIX3D Scaled(float x, float y, float z) {
    MATRIX3D m;
    m.SetScale(POINT3D(x, y, z));
    return m;
}

class TestRandom {
public:
    explicit TestRandom(unsigned seed) : gen_(seed) {}

    double Uniform(double lo, double hi) { return std::uniform_real_distribution<>(lo, hi)(gen_); }
    float UniformF(double lo, double hi) { return static_cast<float>(Uniform(lo, hi)); }

    POINT3D Direction() {
        POINT3D p(0, 0, 0);
        while (p.Length() < 0.1f) p = POINT3D(UniformF(-1, 1), UniformF(-1, 1), UniformF(-1, 1));
        p.Normalize();
        return p;
    }

    MATRIX3D Rotation() {
        MATRIX3D r;
        r.SetRotate(_point3d(Uniform(-3, 3), Uniform(-1.4, 1.4), Uniform(-3, 3)));
        return r;
    }

    // Axis scale with random mirrors, then rotation, then translation.
    MATRIX3D Affine() {
        POINT3D s(UniformF(0.5, 3), UniformF(0.5, 3), UniformF(0.5, 3));
        for (int i = 0; i < 3; ++i) s[i] *= Uniform(0, 1) < 0.5 ? -1.0f : 1.0f;
        MATRIX3D m = Scaled(s.x, s.y, s.z);
        m.Transform(Rotation());
        m.Offset(POINT3D(UniformF(-10, 10), UniformF(-10, 10), UniformF(-10, 10)));
        return m;
    }

    // Every element of the upper 4x3 random: shear and non-aligned stretch included.
    MATRIX3D General() {
        MATRIX3D m;
        for (int i = 0; i < 12; ++i) m.m[i / 3][i % 3] = Uniform(-2, 2);
        return m;
    }

private:
    std::mt19937 gen_;
};

inline ::testing::AssertionResult MatrixNear(const MATRIX3D& a, const MATRIX3D& b, double tol) {
    for (int i = 0; i < 16; ++i)
        if (const double x = a.m[i / 4][i % 4], y = b.m[i / 4][i % 4]; !(std::fabs(x - y) <= tol))
            return ::testing::AssertionFailure() << "element " << i << ": " << x << " vs " << y;
    return ::testing::AssertionSuccess();
}

template <typename P>
::testing::AssertionResult PointNear(const P& p, double x, double y, double z, double tol) {
    if (std::fabs(p.x - x) <= tol && std::fabs(p.y - y) <= tol && std::fabs(p.z - z) <= tol)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "(" << p.x << ", " << p.y << ", " << p.z << ")";
}

#define EXPECT_POINT_NEAR(p, x, y, z, tol) EXPECT_TRUE(PointNear((p), (x), (y), (z), (tol)))

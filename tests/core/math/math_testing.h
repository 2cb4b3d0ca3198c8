// Tolerances, seeded random inputs and comparisons shared by the geometry tests.
#pragma once

#include "core/math/geometry.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>

inline constexpr double kPi = std::numbers::pi;

// Double arithmetic over a handful of terms, including libm trigonometry.
inline constexpr double kDoubleTol = 1e-12;
// Iterative double algorithms (Newton, Jacobi) and inverses of well-conditioned input.
inline constexpr double kIterativeTol = 1e-9;
// Values that pass through a float once: a few float ulps near 1.
inline constexpr double kFloatTol = 1e-6;
// Chains of float arithmetic and float trigonometry, whose last ulp differs between C libraries.
inline constexpr double kFloatChainTol = 2e-5;
// Matrices rebuilt from float parts of magnitude up to 10.
inline constexpr double kFloatPartsTol = 1e-4;

// Fixed-seed source of test inputs.
class TestRandom {
public:
    explicit TestRandom(unsigned seed) : gen_(seed) {}

    double Uniform(double lo, double hi) { return std::uniform_real_distribution<>(lo, hi)(gen_); }
    float UniformF(double lo, double hi) { return static_cast<float>(Uniform(lo, hi)); }

    POINT3D Direction() {
        POINT3D p(UniformF(-1, 1), UniformF(-1, 1), UniformF(-1, 1));
        while (p.Length() < 0.1f) p = POINT3D(UniformF(-1, 1), UniformF(-1, 1), UniformF(-1, 1));
        p.Normalize();
        return p;
    }

    MATRIX3D Rotation() {
        MATRIX3D r;
        r.SetRotate(_point3d(Uniform(-3, 3), Uniform(-1.4, 1.4), Uniform(-3, 3)));
        return r;
    }

    // Axis scale (with random mirrors when asked), then rotation, then translation.
    MATRIX3D Affine(bool mirrors) {
        POINT3D s(UniformF(0.5, 3), UniformF(0.5, 3), UniformF(0.5, 3));
        for (int i = 0; mirrors && i < 3; ++i) s[i] *= Uniform(0, 1) < 0.5 ? -1.0f : 1.0f;
        MATRIX3D m;
        m.SetScale(s);
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
    for (int i = 0; i < 16; ++i) {
        if (!(std::fabs(a.m[i / 4][i % 4] - b.m[i / 4][i % 4]) <= tol)) {
            return ::testing::AssertionFailure()
                   << "element " << i << ": " << a.m[i / 4][i % 4] << " vs " << b.m[i / 4][i % 4];
        }
    }
    return ::testing::AssertionSuccess();
}

template <typename P>
::testing::AssertionResult PointNear(const P& p, double x, double y, double z, double tol) {
    if (std::fabs(p.x - x) <= tol && std::fabs(p.y - y) <= tol && std::fabs(p.z - z) <= tol) {
        return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure() << "(" << p.x << ", " << p.y << ", " << p.z << ") vs ("
                                         << x << ", " << y << ", " << z << ")";
}

#define EXPECT_POINT_NEAR(p, x, y, z, tol) EXPECT_TRUE(PointNear((p), (x), (y), (z), (tol)))

inline MATRIX3D RowsMatrix(const double (&rows)[4][4]) {
    return MATRIX3D(&rows[0][0], 16);
}

inline MATRIX3D Scaled(float x, float y, float z) {
    MATRIX3D m;
    m.SetScale(POINT3D(x, y, z));
    return m;
}

// Tolerances, seeded random inputs and matrix comparison shared by the geometry tests.
#pragma once

#include "core/math/geometry.h"

#include <gtest/gtest.h>

#include <cmath>
#include <iomanip>
#include <numbers>
#include <random>
#include <sstream>

inline constexpr double kPi = std::numbers::pi;

// Double arithmetic over a handful of terms, including libm trigonometry.
inline constexpr double kDoubleTol = 1e-12;
// Iterative double algorithms (Newton, Jacobi) on well-conditioned input.
inline constexpr double kIterativeTol = 1e-9;
// Values that pass through a float once: a few float ulps near 1.
inline constexpr double kFloatTol = 1e-6;
// Chains of float arithmetic and float trigonometry, whose last ulp differs between C libraries.
inline constexpr double kFloatChainTol = 2e-5;

// Fixed-seed source of test inputs, identical on every platform.
class TestRandom {
public:
    explicit TestRandom(unsigned seed) : gen_(seed) {}

    double Uniform(double lo, double hi) { return std::uniform_real_distribution<>(lo, hi)(gen_); }

    POINT3D Direction() {
        for (;;) {
            POINT3D p(static_cast<float>(Uniform(-1, 1)), static_cast<float>(Uniform(-1, 1)),
                      static_cast<float>(Uniform(-1, 1)));
            const float len = p.Length();
            if (len > 0.1f && len <= 1) return POINT3D(p.x / len, p.y / len, p.z / len);
        }
    }

    _point3d Angles() { return _point3d(Uniform(-3, 3), Uniform(-1.4, 1.4), Uniform(-3, 3)); }

    MATRIX3D Rotation() {
        MATRIX3D r;
        r.SetRotate(Angles());
        return r;
    }

    // Rotation, axis scale (optionally with mirrors), and translation.
    MATRIX3D Affine(bool mirrors) {
        POINT3D s(static_cast<float>(Uniform(0.5, 3)), static_cast<float>(Uniform(0.5, 3)),
                  static_cast<float>(Uniform(0.5, 3)));
        if (mirrors) {
            for (int i = 0; i < 3; ++i) {
                if (Uniform(0, 1) < 0.5) s[i] = -s[i];
            }
        }
        MATRIX3D m;
        m.SetScale(s);
        m.Transform(Rotation());
        m.Offset(POINT3D(static_cast<float>(Uniform(-10, 10)), static_cast<float>(Uniform(-10, 10)),
                         static_cast<float>(Uniform(-10, 10))));
        return m;
    }

    // Every element of the upper 3x4 random: shear and non-aligned stretch included.
    MATRIX3D General() {
        MATRIX3D m;
        for (int i = 0; i < 4; ++i) {
            for (int j = 0; j < 3; ++j) m.m[i][j] = Uniform(-2, 2);
        }
        return m;
    }

private:
    std::mt19937 gen_;
};

inline std::string Describe(const MATRIX3D& a) {
    std::ostringstream s;
    s.precision(17);
    for (const auto& row : a.m)
        s << "\n  " << row[0] << ' ' << row[1] << ' ' << row[2] << ' ' << row[3];
    return s.str();
}

inline ::testing::AssertionResult MatrixNear(const MATRIX3D& actual, const MATRIX3D& expected,
                                             double tol) {
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j < 4; ++j) {
            if (!(std::fabs(actual.m[i][j] - expected.m[i][j]) <= tol)) {
                return ::testing::AssertionFailure()
                       << "element [" << i << "][" << j << "] differs by more than " << tol
                       << "\nactual:" << Describe(actual) << "\nexpected:" << Describe(expected);
            }
        }
    }
    return ::testing::AssertionSuccess();
}

inline MATRIX3D RowsMatrix(const double (&rows)[4][4]) {
    return MATRIX3D(&rows[0][0], 16);
}

template <typename P>
::testing::AssertionResult PointNear(const P& p, double x, double y, double z, double tol) {
    if (std::fabs(p.x - x) <= tol && std::fabs(p.y - y) <= tol && std::fabs(p.z - z) <= tol) {
        return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure()
           << std::setprecision(17) << "(" << p.x << ", " << p.y << ", " << p.z
           << ") is not within " << tol << " of (" << x << ", " << y << ", " << z << ")";
}

#define EXPECT_POINT_NEAR(p, x, y, z, tol) EXPECT_TRUE(PointNear((p), (x), (y), (z), (tol)))

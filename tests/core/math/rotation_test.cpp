// Rotation matrices, quaternions, axis-angle pairs and Euler angles.
#include "math_testing.h"

#include <limits>

namespace {

MATRIX3D AxisTurn(int axis, double a) {
    MATRIX3D m;
    if (axis == 0) m.SetRotateX(a);
    if (axis == 1) m.SetRotateY(a);
    if (axis == 2) m.SetRotateZ(a);
    return m;
}

// Rebuilds a rotation from Euler angles by its own composition of single-axis turns. Static
// axes apply in sequence order with angles (a, b, c); rotating axes compose the other way.
MATRIX3D FromEuler(int order, const POINT3D& e) {
    static constexpr int kSequence[12][3] = {{0, 1, 2}, {0, 1, 0}, {0, 2, 1}, {0, 2, 0},
                                             {1, 2, 0}, {1, 2, 1}, {1, 0, 2}, {1, 0, 1},
                                             {2, 0, 1}, {2, 0, 2}, {2, 1, 0}, {2, 1, 2}};
    const int* s = kSequence[order & 0xFF];
    const MATRIX3D first = AxisTurn(s[0], e.x), second = AxisTurn(s[1], e.y),
                   third = AxisTurn(s[2], e.z);
    MATRIX3D r;
    if (order & 0x100) {
        r.SetMul(third, second);
        r.Transform(first);
    } else {
        r.SetMul(first, second);
        r.Transform(third);
    }
    return r;
}

MATRIX3D FromQuat(const QUAT& q) {
    MATRIX3D m;
    m.SetRotate(q);
    return m;
}

MATRIX3D Transposed(MATRIX3D m) {
    m.Transpose();
    return m;
}

#define EXPECT_QUAT_NEAR(q, ex, ey, ez, ew, tol)                                                   \
    do {                                                                                           \
        EXPECT_NEAR((q).x, (ex), (tol));                                                           \
        EXPECT_NEAR((q).y, (ey), (tol));                                                           \
        EXPECT_NEAR((q).z, (ez), (tol));                                                           \
        EXPECT_NEAR((q).w, (ew), (tol));                                                           \
    } while (0)

} // namespace

TEST(RotationAxes, QuarterTurnsFollowTheRightHandRule) {
    EXPECT_POINT_NEAR(AxisTurn(2, kPi / 2).PointTransform(_point3d(1, 0, 0)), 0, 1, 0, kDoubleTol);
    EXPECT_POINT_NEAR(AxisTurn(0, kPi / 2).PointTransform(_point3d(0, 1, 0)), 0, 0, 1, kDoubleTol);
    EXPECT_POINT_NEAR(AxisTurn(1, kPi / 2).PointTransform(_point3d(0, 0, 1)), 1, 0, 0, kDoubleTol);
}

TEST(RotationEuler, XTurnsFirst) {
    MATRIX3D m;
    m.SetRotate(_point3d(kPi / 2, kPi / 2, 0));
    EXPECT_POINT_NEAR(m.PointTransform(_point3d(0, 1, 0)), 1, 0, 0, kDoubleTol);
    m.SetRotate(_point3d(0, kPi / 2, kPi / 2));
    EXPECT_POINT_NEAR(m.PointTransform(_point3d(0, 0, 1)), 0, 1, 0, kDoubleTol);
    // Rotate post-multiplies: the translation is applied before the turn.
    m.SetTranslate(_point3d(1, 0, 0));
    m.RotateZ(kPi / 2);
    EXPECT_POINT_NEAR(m.PointTransform(_point3d(0, 0, 0)), 0, 1, 0, kDoubleTol);
}

TEST(RotationEuler, YawPitchRollTurnsZThenXThenY) {
    const float q = static_cast<float>(kPi / 2);
    MATRIX3D m;
    m.SetRotateYPW(q, q, 0);
    EXPECT_POINT_NEAR(m.PointTransform(_point3d(0, 1, 0)), 1, 0, 0, kFloatTol);
    m.SetRotateYPW(0, q, q);
    EXPECT_POINT_NEAR(m.PointTransform(_point3d(1, 0, 0)), 0, 0, 1, kFloatTol);
}

TEST(RotationAxisAngle, LengthOfAxisDoesNotMatter) {
    MATRIX3D zero, twoZ;
    zero.SetRotate(_point3d(0, 0, 0), 0.7);
    twoZ.SetRotate(_point3d(0, 0, 2), 0.7);
    EXPECT_TRUE(MatrixNear(zero, AxisTurn(2, 0.7), kDoubleTol));
    EXPECT_TRUE(MatrixNear(twoZ, AxisTurn(2, 0.7), kDoubleTol));
}

TEST(RotationAxisAngle, TurnsAboutAnyAxis) {
    MATRIX3D m;
    m.SetRotate(_point3d(1, 1, 1), 2 * kPi / 3);
    EXPECT_POINT_NEAR(m.PointTransform(_point3d(1, 0, 0)), 0, 1, 0, kDoubleTol);
    m.SetRotate(_point3d(-1, 0, 0), kPi / 2);
    EXPECT_POINT_NEAR(m.PointTransform(_point3d(0, 1, 0)), 0, 0, -1, kDoubleTol);
    m.SetRotate(_point3d(0, -3, 0), kPi / 2);
    EXPECT_POINT_NEAR(m.PointTransform(_point3d(1, 0, 0)), 0, 0, 1, kDoubleTol);
}

TEST(RotationAxisAngle, AboutAPointKeepsThatPoint) {
    MATRIX3D m;
    m.SetRotate(ANGLEAXISex(POINT3D(1, 0, 0), POINT3D(0, 0, 1), static_cast<float>(kPi)));
    EXPECT_POINT_NEAR(m.PointTransform(_point3d(1, 0, 0)), 1, 0, 0, kFloatTol);
    EXPECT_POINT_NEAR(m.PointTransform(_point3d(0, 0, 0)), 2, 0, 0, kFloatTol);

    MATRIX3D before = m;
    m.Rotate(ANGLEAXISex(POINT3D(1, 0, 0), POINT3D(0, 0, 1), 0));
    EXPECT_TRUE(m.Equal(before, 0));
}

TEST(QuatFromMatrix, TraceMethodKnownValues) {
    EXPECT_QUAT_NEAR(QUAT(AxisTurn(2, 0.8)), 0, 0, -std::sin(0.4), std::cos(0.4), kFloatTol);
    // Negative trace: the z branch keeps z positive.
    EXPECT_QUAT_NEAR(QUAT(AxisTurn(2, 3.0)), 0, 0, std::sin(1.5), -std::cos(1.5), kFloatTol);
    MATRIX3D scaled;
    scaled.m[3][3] = 4;
    EXPECT_QUAT_NEAR(QUAT(scaled), 0, 0, 0, std::sqrt(7.0) / 4, kFloatTol);
    EXPECT_TRUE(MatrixNear(FromQuat(QUAT(AxisTurn(2, 0.8))), AxisTurn(2, 0.8), kFloatTol));
}

TEST(QuatAngleAxis, IdentityAndTheNegatedAxis) {
    const ANGLEAXIS id{QUAT()};
    EXPECT_POINT_NEAR(id.axis, 1, 0, 0, 0);
    EXPECT_EQ(id.angle, 0);

    MATRIX3D m;
    m.SetRotate(_point3d(0, 0, 1), 0.7);
    const ANGLEAXIS aa(m);
    EXPECT_POINT_NEAR(aa.axis, 0, 0, -1, kFloatTol);
    EXPECT_NEAR(aa.angle, 0.7, kFloatTol);
}

// Matrix, quaternion, Euler triple and axis-angle pair describe the same turn; the axis-angle
// pair read from a matrix describes its inverse.
TEST(RotationForms, RoundTripThroughEachOther) {
    TestRandom rng(7);
    for (int i = 0; i < 200; ++i) {
        const MATRIX3D r = rng.Rotation();
        const QUAT q(r);
        EXPECT_NEAR(q.Length(), 1, kFloatTol);
        EXPECT_TRUE(MatrixNear(FromQuat(q), r, kFloatTol));

        POINT3D e;
        r.GetRotate(e);
        MATRIX3D fromEuler;
        fromEuler.SetRotate(e);
        EXPECT_TRUE(MatrixNear(fromEuler, r, kFloatTol));
        EXPECT_TRUE(MatrixNear(FromQuat(QUAT(e)), r, kFloatTol));
        MATRIX3D fromPoint;
        fromPoint.SetRotate(POINT3D(q));
        EXPECT_TRUE(MatrixNear(fromPoint, r, kFloatChainTol));

        const ANGLEAXIS aa(r);
        MATRIX3D fromAxis;
        fromAxis.SetRotate(aa);
        EXPECT_TRUE(MatrixNear(fromAxis, Transposed(r), kFloatChainTol));
        EXPECT_TRUE(MatrixNear(FromQuat(QUAT(aa)), Transposed(r), kFloatChainTol));

        QUAT polar;
        r.GetRotate(polar);
        EXPECT_TRUE(MatrixNear(FromQuat(polar), r, kFloatTol));
    }
}

TEST(QuatArithmetic, HamiltonProduct) {
    const QUAT i(1, 0, 0, 0), j(0, 1, 0, 0);
    EXPECT_QUAT_NEAR(i * j, 0, 0, 1, 0, 0);
    EXPECT_QUAT_NEAR(j * i, 0, 0, -1, 0, 0);
    const QUAT a(0.1f, 0.2f, 0.3f, 0.9f);
    EXPECT_QUAT_NEAR(a * QUAT(), a.x, a.y, a.z, a.w, 0);
}

TEST(QuatArithmetic, DivisionSignFollowsTheConjugateSquared) {
    const QUAT a(0, 0.6f, 0, 0.8f);
    EXPECT_QUAT_NEAR(a / a, 0, 0, 0, 1, kFloatTol);
    const QUAT b(0.8f, 0, 0, 0.6f);
    EXPECT_QUAT_NEAR(b / b, 0, 0, 0, -1, kFloatTol);
    const float h = static_cast<float>(std::sqrt(0.5));
    const QUAT quarter(h, 0, 0, h);
    EXPECT_FALSE(std::isfinite((a / quarter).w));
}

TEST(QuatArithmetic, InvertAndNormalize) {
    QUAT q(1, 0, 0, 1);
    q.Invert();
    EXPECT_QUAT_NEAR(q, -0.5, 0, 0, 0.5, 0);
    q = QUAT(0, 0, 0, 2);
    q.Invert();
    EXPECT_QUAT_NEAR(q, 0, 0, 0, 0.5, 0);
    q = QUAT(0, 3, 0, 4);
    q.Normalize();
    EXPECT_QUAT_NEAR(q, 0, 0.6, 0, 0.8, kFloatTol);

    QUAT zero(0, 0, 0, 0);
    zero.Invert();
    zero.Normalize();
    EXPECT_QUAT_NEAR(zero, 0, 0, 0, 0, 0);
}

// The y-z exchange turns a rotation about z into the opposite rotation about y.
TEST(QuatFlip, ZTurnBecomesOppositeYTurn) {
    QUAT q(AxisTurn(2, 0.8));
    q.Flip();
    EXPECT_QUAT_NEAR(q, 0, std::sin(0.4), 0, std::cos(0.4), kFloatTol);
}

TEST(QuatSlerp, EndsAndNearlyEqualBlend) {
    QUAT a(0, 0, std::sin(0.1f), std::cos(0.1f)), b(0.6f, 0, 0, 0.8f);
    EXPECT_QUAT_NEAR(QUAT(0, a, b, 0), a.x, a.y, a.z, a.w, 0);
    EXPECT_QUAT_NEAR(QUAT(1, a, b, 0), b.x, b.y, b.z, b.w, 0);
    QUAT negated(-0.6f, 0, 0, -0.8f);
    EXPECT_QUAT_NEAR(QUAT(1, a, negated, 0), 0.6f, 0, 0, 0.8f, 0);

    QUAT doubled(0, 0, 2 * a.z, 2 * a.w);
    EXPECT_QUAT_NEAR(QUAT(0.25f, a, a, 0), a.x, a.y, a.z, a.w, 0);
    EXPECT_QUAT_NEAR(QUAT(0.5f, a, doubled, 0), 0, 0, 1.5f * a.z, 1.5f * a.w, kFloatTol);
}

// From the identity to a 0.2 turn about z with one extra half-turn: halfway lies at
// (0, 0, cos 0.05, -sin 0.05).
TEST(QuatSlerp, SpinAddsHalfTurns) {
    QUAT a, b(0, 0, std::sin(0.1f), std::cos(0.1f));
    EXPECT_QUAT_NEAR(QUAT(0.5f, a, b, 1), 0, 0, std::cos(0.05), -std::sin(0.05), kFloatChainTol);
}

TEST(QuatSlerp, StaysOnTheArcBetweenItsEnds) {
    TestRandom rng(8);
    const auto angle = [](const QUAT& p, const QUAT& q) {
        const double d = static_cast<double>(p.x) * q.x + static_cast<double>(p.y) * q.y +
                         static_cast<double>(p.z) * q.z + static_cast<double>(p.w) * q.w;
        return std::acos(std::min(1.0, std::fabs(d)));
    };
    for (int i = 0; i < 200; ++i) {
        QUAT a(rng.Rotation()), b(rng.Rotation());
        const float t = static_cast<float>(rng.Uniform(0, 1));
        const QUAT r(t, a, b, 0);
        EXPECT_NEAR(r.Length(), 1, kFloatTol);
        const double whole = angle(a, b);
        EXPECT_NEAR(angle(a, r) + angle(r, b), whole, 1e-3);
        EXPECT_NEAR(angle(a, r), t * whole, 1e-3);
    }
}

TEST(EulerAngles, StaticXyzRebuildsTheTriple) {
    MATRIX3D m;
    m.SetRotate(POINT3D(0.1f, 0.2f, 0.3f));
    EXPECT_POINT_NEAR(m.GetEulerAngles(0), 0.1, 0.2, 0.3, kFloatTol);
    EXPECT_POINT_NEAR(m.GetEulerAngles(12), 0.1, 0.2, 0.3, kFloatTol);
    EXPECT_POINT_NEAR(m.GetEulerAngles(0x100 | 200), 0.1, 0.2, 0.3, kFloatTol);
}

TEST(EulerAngles, RotatingXyzTurnsAboutZFirst) {
    MATRIX3D m;
    m.SetRotateZ(0.3);
    m.RotateY(0.2);
    m.RotateX(0.1);
    EXPECT_POINT_NEAR(m.GetEulerAngles(0x100), 0.1, 0.2, 0.3, kFloatTol);
}

TEST(EulerAngles, EveryOrderRebuildsTheMatrix) {
    TestRandom rng(9);
    for (int i = 0; i < 100; ++i) {
        const MATRIX3D r = rng.Rotation();
        const QUAT q(r);
        for (int order = 0; order < 12; ++order) {
            for (const int frame : {0, 0x100}) {
                const POINT3D fromMatrix = r.GetEulerAngles(order | frame);
                EXPECT_TRUE(MatrixNear(FromEuler(order | frame, fromMatrix), r, kFloatChainTol))
                    << "order " << (order | frame);
                const POINT3D fromQuat = q.GetEulerAngles(order | frame);
                EXPECT_TRUE(MatrixNear(FromEuler(order | frame, fromQuat), r, kFloatChainTol))
                    << "order " << (order | frame);
            }
        }
    }
}

TEST(EulerAngles, GimbalLockPutsTheTurnInTheFirstAngle) {
    MATRIX3D m;
    m.SetRotate(_point3d(0.3, kPi / 2, 0.5));
    const POINT3D e = m.GetEulerAngles(0);
    EXPECT_EQ(e.z, 0);
    EXPECT_TRUE(MatrixNear(FromEuler(0, e), m, kFloatTol));
}

TEST(RotationDegenerate, ZeroAndNanInputsDoNotThrowOrHang) {
    QUAT zero(0, 0, 0, 0);
    EXPECT_TRUE(MatrixNear(FromQuat(zero), MATRIX3D(), 0));
    const ANGLEAXIS aa(zero);
    EXPECT_EQ(aa.angle, 0);
    const float nan = std::numeric_limits<float>::quiet_NaN();
    QUAT bad(nan, 0, 0, 1);
    const POINT3D e = bad.GetEulerAngles(0);
    EXPECT_TRUE(std::isnan(e.x) || std::isnan(e.y) || std::isnan(e.z));
    MATRIX3D m;
    m.SetRotate(_point3d(nan, 0, 0), 1.0);
    EXPECT_TRUE(std::isnan(m.m[0][0]));
}

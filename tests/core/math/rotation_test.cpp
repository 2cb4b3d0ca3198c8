// Rotation matrices, quaternions, axis-angle pairs and Euler angles.
#include "math_testing.h"

#include <algorithm>

namespace {

MATRIX3D AxisTurn(int axis, double a) {
    MATRIX3D m;
    if (axis == 0) m.SetRotateX(a);
    if (axis == 1) m.SetRotateY(a);
    if (axis == 2) m.SetRotateZ(a);
    return m;
}

// Static axes turn in sequence order by (a, b, c); rotating axes compose the other way round.
MATRIX3D FromEuler(int order, const POINT3D& e) {
    static constexpr int kSequence[12][3] = {{0, 1, 2}, {0, 1, 0}, {0, 2, 1}, {0, 2, 0},
                                             {1, 2, 0}, {1, 2, 1}, {1, 0, 2}, {1, 0, 1},
                                             {2, 0, 1}, {2, 0, 2}, {2, 1, 0}, {2, 1, 2}};
    const int* s = kSequence[order & 0xFF];
    MATRIX3D a = AxisTurn(s[0], e.x), b = AxisTurn(s[1], e.y), c = AxisTurn(s[2], e.z);
    if (order & 0x100) std::swap(a, c);
    a.Transform(b);
    a.Transform(c);
    return a;
}

::testing::AssertionResult QuatNear(const QUAT& q, double x, double y, double z, double w) {
    if (PointNear(q, x, y, z, kFloatChainTol) && std::fabs(q.w - w) <= kFloatChainTol)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << q.x << ", " << q.y << ", " << q.z << ", " << q.w;
}

} // namespace

TEST(RotationBuilders, TurnByTheRightHandRuleInOrder) {
    EXPECT_POINT_NEAR(AxisTurn(2, kPi / 2).PointTransform(_point3d(1, 0, 0)), 0, 1, 0, kDoubleTol);
    EXPECT_POINT_NEAR(AxisTurn(0, kPi / 2).PointTransform(_point3d(0, 1, 0)), 0, 0, 1, kDoubleTol);
    EXPECT_POINT_NEAR(AxisTurn(1, kPi / 2).PointTransform(_point3d(0, 0, 1)), 1, 0, 0, kDoubleTol);
    MATRIX3D m;
    m.SetTranslate(_point3d(1, 0, 0));
    m.RotateZ(kPi / 2); // post-multiplied: moved, then turned
    EXPECT_POINT_NEAR(m.PointTransform(_point3d(0, 0, 0)), 0, 1, 0, kDoubleTol);
}

TEST(RotationAxisAngle, AnyAxisAnyLengthAnyPoint) {
    MATRIX3D m;
    m.SetRotate(_point3d(0, 0, 0), 0.7);
    EXPECT_TRUE(MatrixNear(m, AxisTurn(2, 0.7), kDoubleTol));
    m.SetRotate(_point3d(0, 0, 2), 0.7);
    EXPECT_TRUE(MatrixNear(m, AxisTurn(2, 0.7), kDoubleTol));
    m.SetRotate(_point3d(1, 1, 1), 2 * kPi / 3);
    EXPECT_POINT_NEAR(m.PointTransform(_point3d(1, 0, 0)), 0, 1, 0, kDoubleTol);
    m.SetRotate(_point3d(-1, 0, 0), kPi / 2);
    EXPECT_POINT_NEAR(m.PointTransform(_point3d(0, 1, 0)), 0, 0, -1, kDoubleTol);
    // A half turn about the point (1, 0, 0).
    m.SetRotate(ANGLEAXISex(POINT3D(1, 0, 0), POINT3D(0, 0, 1), static_cast<float>(kPi)));
    EXPECT_POINT_NEAR(m.PointTransform(_point3d(0, 0, 0)), 2, 0, 0, kFloatTol);
}

// The negative trace takes the z branch; a corner m33 scales the result by 1/sqrt(m33). The
// axis read from a matrix comes out negated.
TEST(QuatConversions, KnownValues) {
    EXPECT_TRUE(QuatNear(QUAT(AxisTurn(2, 0.8)), 0, 0, -std::sin(0.4), std::cos(0.4)));
    EXPECT_TRUE(QuatNear(QUAT(AxisTurn(2, 3.0)), 0, 0, std::sin(1.5), -std::cos(1.5)));
    MATRIX3D scaled;
    scaled.m[3][3] = 4;
    EXPECT_TRUE(QuatNear(QUAT(scaled), 0, 0, 0, std::sqrt(7.0) / 4));
    const ANGLEAXIS aa(AxisTurn(2, 0.7));
    EXPECT_POINT_NEAR(aa.axis, 0, 0, -1, kFloatTol);
    EXPECT_NEAR(aa.angle, 0.7, kFloatTol);
    EXPECT_EQ(ANGLEAXIS(QUAT(0, 0, 0, 0)).angle, 0);
}

// A quaternion read from a matrix describes the same turn; an axis-angle pair its inverse.
TEST(RotationForms, RoundTripThroughEachOther) {
    TestRandom rng(7);
    for (int i = 0; i < 200; ++i) {
        const MATRIX3D r = rng.Rotation();
        MATRIX3D inverse = r, m;
        inverse.Transpose();
        m.SetRotate(QUAT(r));
        EXPECT_TRUE(MatrixNear(m, r, kFloatTol));
        m.SetRotate(ANGLEAXIS(r));
        EXPECT_TRUE(MatrixNear(m, inverse, kFloatChainTol));
    }
}

// The divisor is the conjugate squared: its w is negative when the vector part outweighs the
// scalar, and zero for a quarter turn.
TEST(QuatArithmetic, ProductInverseAndDivision) {
    EXPECT_TRUE(QuatNear(QUAT(1, 0, 0, 0) * QUAT(0, 1, 0, 0), 0, 0, 1, 0));
    QUAT q(1, 0, 0, 1);
    q.Invert();
    EXPECT_TRUE(QuatNear(q, -0.5, 0, 0, 0.5));
    const QUAT a(0, 0.6f, 0, 0.8f), b(0.8f, 0, 0, 0.6f);
    EXPECT_TRUE(QuatNear(a / a, 0, 0, 0, 1));
    EXPECT_TRUE(QuatNear(b / b, 0, 0, 0, -1));
    EXPECT_FALSE(std::isfinite((a / QUAT(1, 0, 0, 1)).w));
}

TEST(QuatSlerp, EndsSpinNearlyEqualBlendAndTheArcBetween) {
    QUAT id, a(0, 0, std::sin(0.1f), std::cos(0.1f)), b(0.6f, 0, 0, 0.8f), nb(-0.6f, 0, 0, -0.8f);
    EXPECT_TRUE(PointNear(QUAT(0, a, b, 0), a.x, a.y, a.z, 0));
    EXPECT_TRUE(QuatNear(QUAT(1, a, nb, 0), 0.6f, 0, 0, 0.8f)); // the shorter arc
    QUAT twice(0, 0, 2 * a.z, 2 * a.w);
    EXPECT_TRUE(QuatNear(QUAT(0.5f, a, twice, 0), 0, 0, 1.5f * a.z, 1.5f * a.w));
    // One extra half-turn from the identity to a 0.2 turn about z.
    EXPECT_TRUE(QuatNear(QUAT(0.5f, id, a, 1), 0, 0, std::cos(0.05), -std::sin(0.05)));
    // Random ends: the result stays on the arc between them.
    const auto angle = [](const QUAT& p, const QUAT& q) {
        const double d = double(p.x) * q.x + double(p.y) * q.y + double(p.z) * q.z + p.w * q.w;
        return std::acos(std::min(1.0, std::fabs(d)));
    };
    TestRandom rng(8);
    for (int i = 0; i < 200; ++i) {
        QUAT p(rng.Rotation()), q(rng.Rotation());
        const float t = rng.UniformF(0, 1);
        EXPECT_NEAR(angle(p, QUAT(t, p, q, 0)), t * angle(p, q), 1e-3);
    }
}

// Unknown orders act as XYZ; in gimbal lock the third angle is 0.
TEST(EulerAngles, KnownTriplesUnknownOrdersAndEveryOrderRebuildsTheMatrix) {
    MATRIX3D m;
    m.SetRotate(POINT3D(0.1f, 0.2f, 0.3f));
    EXPECT_POINT_NEAR(m.GetEulerAngles(0x100 | 200), 0.1, 0.2, 0.3, kFloatTol);
    m.SetRotate(_point3d(0.3, kPi / 2, 0.5));
    const POINT3D e = m.GetEulerAngles(0);
    EXPECT_EQ(e.z, 0);
    EXPECT_TRUE(MatrixNear(FromEuler(0, e), m, kFloatTol));
    // Every order, static and rotating, rebuilds random rotations from matrix and quaternion.
    TestRandom rng(9);
    for (int i = 0; i < 100; ++i) {
        const MATRIX3D r = rng.Rotation();
        const QUAT q(r);
        for (int order = 0; order < 12; ++order) {
            for (const int o : {order, order | 0x100}) {
                EXPECT_TRUE(MatrixNear(FromEuler(o, r.GetEulerAngles(o)), r, kFloatChainTol)) << o;
                EXPECT_TRUE(MatrixNear(FromEuler(o, q.GetEulerAngles(o)), r, kFloatChainTol)) << o;
            }
        }
    }
}

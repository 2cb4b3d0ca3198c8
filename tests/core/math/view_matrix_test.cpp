// Planar angle, look-at frames, direction-and-roll cameras and direction alignment.
#include "math_testing.h"

namespace {

_point3d Row(const MATRIX3D& m, int i) {
    return _point3d(m.m[i][0], m.m[i][1], m.m[i][2]);
}

// The rows of the 3x3 part against `rows`.
::testing::AssertionResult RowsNear(const MATRIX3D& m, const double (&rows)[3][3], double tol) {
    for (int i = 0; i < 3; ++i) {
        const auto r = PointNear(Row(m, i), rows[i][0], rows[i][1], rows[i][2], tol);
        if (!r) return ::testing::AssertionFailure() << "row " << i << ": " << r.message();
    }
    return ::testing::AssertionSuccess();
}

double Dot(const _point3d& a, const POINT3D& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

} // namespace

TEST(AngleByXY, QuadrantsAndAxes) {
    EXPECT_EQ(GetAngleByXY(0, 0), 0);
    EXPECT_EQ(GetAngleByXY(0, -1), -kPi / 2);
    EXPECT_TRUE(GetAngleByXY(1, 0) == 0 && std::signbit(GetAngleByXY(1, 0)));
    EXPECT_EQ(GetAngleByXY(-1, 0), kPi);
    EXPECT_NEAR(GetAngleByXY(-1, 1), 3 * kPi / 4, kDoubleTol);
    EXPECT_NEAR(GetAngleByXY(-1, -1), 5 * kPi / 4, kDoubleTol);
}

TEST(FromUpDir, CoincidentPointsLookDownMinusZAndUpAtFromMakesNoRoll) {
    POINT3D from(1, 2, 3), to(1, 2, 3), up(1, 2, 3);
    MATRIX3D out, unused;
    unused._FromUpDir(out, from, to, up);
    EXPECT_TRUE(RowsNear(out, {{-1, 0, 0}, {0, 1, 0}, {0, 0, -1}}, kFloatTol));
    // The roll pass runs only when up differs from from.
    from = POINT3D(0, 0, 0);
    to = POINT3D(0, 0, 5);
    POINT3D side(1, 0, 0);
    out._FromUpDir(out, from, to, from);
    EXPECT_TRUE(out.IsIdentity(0));
    out._FromUpDir(out, from, to, side);
    EXPECT_POINT_NEAR(out.PointTransform(side), 0, 1, 0, kFloatTol);
}

TEST(SetView, PlacesTheEyeLooksAtTheTargetWithUpOnPlusY) {
    TestRandom rng(32);
    for (int i = 0; i < 200; ++i) {
        POINT3D eye(rng.UniformF(-5, 5), rng.UniformF(-5, 5), rng.UniformF(-5, 5));
        const POINT3D dir = rng.Direction(), upDir = rng.Direction();
        if (std::fabs(Dot(_point3d(dir.x, dir.y, dir.z), upDir)) > 0.95) continue;
        POINT3D target(eye.x + 3 * dir.x, eye.y + 3 * dir.y, eye.z + 3 * dir.z);
        POINT3D up(eye.x + upDir.x, eye.y + upDir.y, eye.z + upDir.z);
        MATRIX3D v;
        v.SetView(eye, target, up);
        EXPECT_POINT_NEAR(v.PointTransform(POINT3D(0, 0, 0)), eye.x, eye.y, eye.z, kFloatChainTol);
        EXPECT_POINT_NEAR(v.PointTransform(POINT3D(0, 0, 3)), target.x, target.y, target.z,
                          kFloatPartsTol);
        EXPECT_NEAR(Dot(Row(v, 0), upDir), 0, kFloatPartsTol);
        EXPECT_GT(Dot(Row(v, 1), upDir), 0);
    }
}

TEST(Set3DSCamera, FrameRowsRollAndTheDegenerateZDirection) {
    POINT3D x(2, 0, 0), z(0, 0, 1);
    MATRIX3D m;
    m.Set3DSCamera(x, 0);
    EXPECT_TRUE(RowsNear(m, {{0, 1, 0}, {0, 0, 1}, {1, 0, 0}}, kFloatTol));
    m.Set3DSCamera(x, static_cast<float>(kPi / 2)); // roll about the viewing axis comes first
    EXPECT_TRUE(RowsNear(m, {{0, 0, 1}, {0, -1, 0}, {1, 0, 0}}, kFloatTol));
    m.Set3DSCamera(z, 0);
    EXPECT_TRUE(RowsNear(m, {{0, 0, 1}, {0, 0, -1}, {0, 0, 1}}, 0));
}

TEST(SetAlignVectors, TurnsFromOntoToWithParallelOppositeAndQuarterTurnCases) {
    MATRIX3D m, z;
    m.SetAlignVectors(POINT3D(1, 0, 0), POINT3D(3, 0, 0));
    EXPECT_TRUE(m.IsIdentity(0));
    m.SetAlignVectors(POINT3D(1, 0, 0), POINT3D(0, 1, 0));
    z.SetRotateZ(kPi / 2);
    EXPECT_TRUE(MatrixNear(m, z, kFloatTol));
    // The half-turn axis (from.y, from.z, from.x) is not perpendicular to this from: it turns
    // (0, r, r) to (r, 0, -r), not to its opposite.
    const double r = std::sqrt(0.5);
    m.SetAlignVectors(POINT3D(0, 1, 1), POINT3D(0, -1, -1));
    EXPECT_POINT_NEAR(m.PointTransform(_point3d(0, r, r)), r, 0, -r, kFloatTol);
    TestRandom rng(33);
    for (int i = 0; i < 200; ++i) {
        const POINT3D from = rng.Direction(), to = rng.Direction();
        m.SetAlignVectors(POINT3D(2 * from.x, 2 * from.y, 2 * from.z), to);
        EXPECT_POINT_NEAR(m.PointTransform(from), to.x, to.y, to.z, kFloatPartsTol);
    }
}

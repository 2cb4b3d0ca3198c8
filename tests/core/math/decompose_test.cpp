// Full and polar decompositions, and composition from the polar parts.
#include "math_testing.h"

#include <limits>

namespace {

// Row form of Decompose's parts: diag(scale) * shear * rotation, then the translation.
MATRIX3D FromDecomposed(const _point3d& t, const _point3d& r, const _point3d& s,
                        const _point3d& sh) {
    MATRIX3D m = RowsMatrix(
        {{s.x, 0, 0, 0}, {sh.x * s.y, s.y, 0, 0}, {sh.y * s.z, sh.z * s.z, s.z, 0}, {0, 0, 0, 1}});
    MATRIX3D rot;
    rot.SetRotate(r);
    m.Transform(rot);
    m.m[3][0] = t.x;
    m.m[3][1] = t.y;
    m.m[3][2] = t.z;
    return m;
}

// The upper 3x3 that the polar parts stand for: f * U diag(k) U^T * R(q).
MATRIX3D FromPolarParts(const AFFINEPARTS& p) {
    MATRIX3D u, ut, q, m;
    u.SetRotate(p.u);
    ut = u;
    ut.Transpose();
    q.SetRotate(p.q);
    m.SetMul(u, Scaled(p.k.x * p.f, p.k.y * p.f, p.k.z * p.f));
    m.Transform(ut);
    m.Transform(q);
    return m;
}

} // namespace

TEST(Decompose, KnownCases) {
    POINT3D t(9, 9, 9), r(9, 9, 9), s(9, 9, 9), sh(9, 9, 9);
    POINT4D p(9, 9, 9, 9);
    ASSERT_TRUE(MATRIX3D().Decompose(&t, &r, &s, &sh, &p));
    EXPECT_POINT_NEAR(t, 0, 0, 0, 0);
    EXPECT_POINT_NEAR(r, 0, 0, 0, 0);
    EXPECT_POINT_NEAR(s, 1, 1, 1, 0);
    EXPECT_POINT_NEAR(sh, 0, 0, 0, 0);
    EXPECT_TRUE(PointNear(p, 0, 0, 0, 0) && p.w == 0);

    MATRIX3D m = Scaled(2, 3, 4);
    m.Offset(POINT3D(1, 2, 3));
    m.m[1][0] = 1.5; // y row leans along x by 0.5 of its length
    ASSERT_TRUE(m.Decompose(&t, &r, &s, &sh, nullptr));
    EXPECT_POINT_NEAR(t, 1, 2, 3, 0);
    EXPECT_POINT_NEAR(s, 2, 3, 4, 0);
    EXPECT_POINT_NEAR(sh, 0.5, 0, 0, 0);

    m.SetTranslate(_point3d(2, 4, 6));
    m.m[3][3] = 2; // everything is divided by it first
    ASSERT_TRUE(m.Decompose(&t, nullptr, &s, nullptr, nullptr));
    EXPECT_POINT_NEAR(t, 1, 2, 3, 0);
    EXPECT_POINT_NEAR(s, 0.5, 0.5, 0.5, 0);
}

// A single mirror comes out as three negative scales and a half-turn about x.
TEST(Decompose, MirrorNegatesTheScaleTriple) {
    _point3d t, r, s, sh;
    ASSERT_TRUE(Scaled(-1, 1, 1).Decompose(&t, &r, &s, &sh, nullptr));
    EXPECT_POINT_NEAR(s, -1, -1, -1, 0);
    EXPECT_POINT_NEAR(r, std::copysign(kPi, r.x), 0, 0, kDoubleTol);
    EXPECT_TRUE(MatrixNear(FromDecomposed(t, r, s, sh), Scaled(-1, 1, 1), kDoubleTol));
}

// Right-hand side (0.5, 0, 0, 1) times the transposed inverse of diag(2, 2, 2, 1).
TEST(Decompose, PerspectiveFromTheFourthColumn) {
    MATRIX3D m = Scaled(2, 2, 2);
    m.m[0][3] = 0.5;
    _point4d p;
    _point3d s;
    ASSERT_TRUE(m.Decompose(nullptr, nullptr, &s, nullptr, &p));
    EXPECT_TRUE(PointNear(p, 0.25, 0, 0, 0) && p.w == 1);
    EXPECT_POINT_NEAR(s, 2, 2, 2, 0);
}

TEST(Decompose, FailsWithoutWritingOnZeroCornerOrSingularMatrix) {
    MATRIX3D m;
    m.m[3][3] = 0;
    POINT3D t(7, 7, 7);
    EXPECT_FALSE(m.Decompose(&t, nullptr, nullptr, nullptr, nullptr));
    EXPECT_FALSE(Scaled(1, 0, 1).Decompose(&t, nullptr, nullptr, nullptr, nullptr));
    EXPECT_POINT_NEAR(t, 7, 7, 7, 0);
    EXPECT_POINT_NEAR(Scaled(1, 0, 1).GetScale(), 0, 0, 0, 0);
}

TEST(Decompose, PartsRebuildTheMatrix) {
    TestRandom rng(21);
    for (int i = 0; i < 200; ++i) {
        const MATRIX3D m = i % 2 ? rng.General() : rng.Affine(true);
        _point3d t, r, s, sh;
        ASSERT_TRUE(m.Decompose(&t, &r, &s, &sh, nullptr));
        EXPECT_TRUE(MatrixNear(FromDecomposed(t, r, s, sh), m, kIterativeTol));
    }
}

TEST(AffineDecompose, KnownCases) {
    AFFINEPARTS p;
    MATRIX3D turn;
    turn.SetRotateZ(0.8);
    turn.AffineDecompose(p);
    const QUAT q(turn);
    EXPECT_TRUE(PointNear(p.q, q.x, q.y, q.z, kFloatTol));
    EXPECT_NEAR(p.q.w, q.w, kFloatTol);
    EXPECT_POINT_NEAR(p.k, 1, 1, 1, kFloatTol);
    EXPECT_EQ(p.f, 1);

    MATRIX3D mirror = Scaled(-2, -2, -2);
    mirror.Offset(POINT3D(1, 2, 3));
    mirror.AffineDecompose(p);
    EXPECT_EQ(p.f, -1);
    EXPECT_POINT_NEAR(p.k, 2, 2, 2, kFloatTol);
    EXPECT_NEAR(std::fabs(p.q.w), 1, kFloatTol);
    EXPECT_POINT_NEAR(p.t, 1, 2, 3, 0);
    Scaled(1, 2, 3).AffineDecompose(p);
    EXPECT_POINT_NEAR(p.k, 1, 2, 3, kFloatTol);
    EXPECT_NEAR(std::fabs(p.u.w), 1, kFloatTol);
}

TEST(AffineDecompose, ComposeRebuildsAxisStretchRotationTranslation) {
    TestRandom rng(22);
    for (int i = 0; i < 200; ++i) {
        const MATRIX3D m = rng.Affine(true);
        AFFINEPARTS p;
        m.AffineDecompose(p);
        MATRIX3D back;
        back.AffineCompose(p);
        EXPECT_TRUE(MatrixNear(back, m, kFloatPartsTol)) << i;
    }
}

// Any matrix is f * (U K U^T) * R(q) with unit quaternions, K >= 0, f the sign of the
// determinant, and u the nearest to the identity of its axis-permuted equivalents.
TEST(AffineDecompose, PolarPartsMultiplyBackToAnyMatrix) {
    const float h = static_cast<float>(std::sqrt(0.5));
    TestRandom rng(23);
    for (int i = 0; i < 200; ++i) {
        MATRIX3D m = rng.General();
        AFFINEPARTS p;
        m.AffineDecompose(p);
        m.NoTranslate();
        EXPECT_TRUE(MatrixNear(FromPolarParts(p), m, kFloatPartsTol)) << i;
        EXPECT_NEAR(p.q.Length(), 1, kFloatTol);
        EXPECT_NEAR(p.u.Length(), 1, kFloatTol);
        EXPECT_TRUE(p.k.x >= 0 && p.k.y >= 0 && p.k.z >= 0);
        EXPECT_EQ(p.f, m.Det() < 0 ? -1.0f : 1.0f);
        for (const QUAT& turn : {QUAT(1, 0, 0, 0), QUAT(h, 0, 0, h), QUAT(0, h, 0, -h),
                                 QUAT(0.5f, -0.5f, 0.5f, 0.5f), QUAT(0, h, h, 0)}) {
            EXPECT_LE(std::fabs((p.u * turn).w), std::fabs(p.u.w) + kFloatTol);
        }
    }
}

TEST(AffineDecompose, SingularMatricesStillFactor) {
    MATRIX3D rankTwo = Scaled(1, 2, 0);
    rankTwo.Rotate(POINT3D(0.3f, 0.5f, 0.7f));
    const MATRIX3D rankOne =
        RowsMatrix({{1, 2, 3, 0}, {2, 4, 6, 0}, {-1, -2, -3, 0}, {0, 0, 0, 1}});
    for (const MATRIX3D& m : {rankTwo, rankOne, Scaled(0, 0, 0)}) {
        AFFINEPARTS p;
        m.AffineDecompose(p);
        EXPECT_EQ(p.f, 1);
        EXPECT_NEAR(p.q.Length(), 1, kFloatTol);
        EXPECT_TRUE(MatrixNear(FromPolarParts(p), m, kFloatPartsTol));
    }
    MATRIX3D nan;
    nan.m[1][2] = std::numeric_limits<double>::quiet_NaN();
    AFFINEPARTS p;
    nan.AffineDecompose(p); // returns, with non-finite parts
    EXPECT_FALSE(std::isfinite(p.q.w) && std::isfinite(p.k.x));
}

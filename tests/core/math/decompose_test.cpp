// Full and polar decompositions, and composition from the polar parts.
#include "math_testing.h"

#include <limits>

namespace {

MATRIX3D Scaled(float x, float y, float z) {
    MATRIX3D m;
    m.SetScale(POINT3D(x, y, z));
    return m;
}

// Row form of the parts of Decompose: diag(scale) * shear * rotation, then translation.
MATRIX3D FromDecomposed(const _point3d& t, const _point3d& r, const _point3d& s,
                        const _point3d& sh) {
    MATRIX3D m;
    m.m[0][0] = s.x;
    m.m[1][0] = sh.x * s.y;
    m.m[1][1] = s.y;
    m.m[2][0] = sh.y * s.z;
    m.m[2][1] = sh.z * s.z;
    m.m[2][2] = s.z;
    MATRIX3D rot;
    rot.SetRotate(r);
    m.Transform(rot);
    m.m[3][0] = t.x;
    m.m[3][1] = t.y;
    m.m[3][2] = t.z;
    return m;
}

// The upper 3x3 of f * U diag(k) U^T * R(q), which the polar parts say the matrix is.
MATRIX3D FromPolarParts(const AFFINEPARTS& p) {
    MATRIX3D u;
    u.SetRotate(p.u);
    MATRIX3D ut = u;
    ut.Transpose();
    MATRIX3D m;
    m.SetMul(u, Scaled(p.k.x * p.f, p.k.y * p.f, p.k.z * p.f));
    m.Transform(ut);
    MATRIX3D q;
    q.SetRotate(p.q);
    m.Transform(q);
    return m;
}

double Det3(const MATRIX3D& m) {
    MATRIX3D c = m;
    c.NoTranslate();
    return c.Det();
}

} // namespace

TEST(Decompose, IdentityHasNeutralParts) {
    POINT3D t(9, 9, 9), r(9, 9, 9), s(9, 9, 9), sh(9, 9, 9);
    POINT4D p(9, 9, 9, 9);
    ASSERT_TRUE(MATRIX3D().Decompose(&t, &r, &s, &sh, &p));
    EXPECT_POINT_NEAR(t, 0, 0, 0, 0);
    EXPECT_POINT_NEAR(r, 0, 0, 0, 0);
    EXPECT_POINT_NEAR(s, 1, 1, 1, 0);
    EXPECT_POINT_NEAR(sh, 0, 0, 0, 0);
    EXPECT_POINT_NEAR(p, 0, 0, 0, 0);
    EXPECT_EQ(p.w, 0);
}

TEST(Decompose, ScaleThenTranslation) {
    MATRIX3D m = Scaled(2, 3, 4);
    m.Offset(POINT3D(1, 2, 3));
    POINT3D t, s;
    ASSERT_TRUE(m.Decompose(&t, nullptr, &s, nullptr, nullptr));
    EXPECT_POINT_NEAR(t, 1, 2, 3, 0);
    EXPECT_POINT_NEAR(s, 2, 3, 4, 0);
    EXPECT_POINT_NEAR(m.GetScale(), 2, 3, 4, 0);
}

// A single mirror comes out as three negative scales and a half-turn about x.
TEST(Decompose, MirrorNegatesTheScaleTriple) {
    _point3d t, r, s, sh;
    ASSERT_TRUE(Scaled(-1, 1, 1).Decompose(&t, &r, &s, &sh, nullptr));
    EXPECT_POINT_NEAR(s, -1, -1, -1, 0);
    EXPECT_NEAR(std::fabs(r.x), kPi, kDoubleTol);
    EXPECT_EQ(r.y, 0);
    EXPECT_EQ(r.z, 0);
    EXPECT_TRUE(MatrixNear(FromDecomposed(t, r, s, sh), Scaled(-1, 1, 1), kDoubleTol));
}

TEST(Decompose, DividesByTheLastElement) {
    MATRIX3D m;
    m.SetTranslate(_point3d(2, 4, 6));
    m.m[3][3] = 2;
    _point3d t, s;
    ASSERT_TRUE(m.Decompose(&t, nullptr, &s, nullptr, nullptr));
    EXPECT_POINT_NEAR(t, 1, 2, 3, 0);
    EXPECT_POINT_NEAR(s, 0.5, 0.5, 0.5, 0);
}

TEST(Decompose, ShearOfTheYRowAlongX) {
    MATRIX3D m;
    m.m[1][0] = 0.5;
    _point3d r, s, sh;
    ASSERT_TRUE(m.Decompose(nullptr, &r, &s, &sh, nullptr));
    EXPECT_POINT_NEAR(sh, 0.5, 0, 0, 0);
    EXPECT_POINT_NEAR(s, 1, 1, 1, 0);
    EXPECT_POINT_NEAR(r, 0, 0, 0, 0);
}

// Right-hand side (0.5, 0, 0, 1) times the transposed inverse of diag(2, 2, 2, 1).
TEST(Decompose, PerspectiveFromTheFourthColumn) {
    MATRIX3D m = Scaled(2, 2, 2);
    m.m[0][3] = 0.5;
    _point4d p;
    _point3d s;
    ASSERT_TRUE(m.Decompose(nullptr, nullptr, &s, nullptr, &p));
    EXPECT_EQ(p.x, 0.25);
    EXPECT_EQ(p.y, 0);
    EXPECT_EQ(p.z, 0);
    EXPECT_EQ(p.w, 1);
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

TEST(AffineDecompose, RotationGivesItsQuaternion) {
    MATRIX3D m;
    m.SetRotateZ(0.8);
    AFFINEPARTS p;
    m.AffineDecompose(p);
    const QUAT q(m);
    EXPECT_NEAR(p.q.x, q.x, kFloatTol);
    EXPECT_NEAR(p.q.y, q.y, kFloatTol);
    EXPECT_NEAR(p.q.z, q.z, kFloatTol);
    EXPECT_NEAR(p.q.w, q.w, kFloatTol);
    EXPECT_POINT_NEAR(p.k, 1, 1, 1, kFloatTol);
    EXPECT_EQ(p.f, 1);
    EXPECT_NEAR(std::fabs(p.u.w), 1, kFloatTol);
}

TEST(AffineDecompose, MirrorAndStretchGoToSignAndFactors) {
    MATRIX3D m = Scaled(-2, -2, -2);
    m.Offset(POINT3D(1, 2, 3));
    AFFINEPARTS p;
    m.AffineDecompose(p);
    EXPECT_EQ(p.f, -1);
    EXPECT_POINT_NEAR(p.k, 2, 2, 2, kFloatTol);
    EXPECT_NEAR(std::fabs(p.q.w), 1, kFloatTol);
    EXPECT_POINT_NEAR(p.t, 1, 2, 3, 0);

    Scaled(1, 2, 3).AffineDecompose(p);
    EXPECT_EQ(p.f, 1);
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
        EXPECT_TRUE(MatrixNear(back, m, 1e-4)) << "case " << i;
    }
}

// Any matrix is f * (U K U^T) * R(q) with R and U proper rotations, K non-negative, and u the
// nearest to the identity of its 24 axis-permuted equivalents.
TEST(AffineDecompose, PolarPartsMultiplyBackToAnyMatrix) {
    TestRandom rng(23);
    for (int i = 0; i < 200; ++i) {
        const MATRIX3D m = rng.General();
        AFFINEPARTS p;
        m.AffineDecompose(p);
        EXPECT_NEAR(p.q.Length(), 1, kFloatTol);
        EXPECT_NEAR(p.u.Length(), 1, kFloatTol);
        EXPECT_GE(p.k.x, 0);
        EXPECT_GE(p.k.y, 0);
        EXPECT_GE(p.k.z, 0);
        EXPECT_EQ(p.f, Det3(m) < 0 ? -1.0f : 1.0f);
        MATRIX3D upper = m;
        upper.NoTranslate();
        EXPECT_TRUE(MatrixNear(FromPolarParts(p), upper, 1e-4)) << "case " << i;

        const float h = static_cast<float>(std::sqrt(0.5));
        for (const QUAT& turn : {QUAT(1, 0, 0, 0), QUAT(h, 0, 0, h), QUAT(0, h, 0, -h),
                                 QUAT(0.5f, -0.5f, 0.5f, 0.5f), QUAT(0, h, h, 0)}) {
            EXPECT_LE(std::fabs((p.u * turn).w), std::fabs(p.u.w) + kFloatTol);
        }
    }
}

TEST(AffineDecompose, SingularMatricesStillFactor) {
    MATRIX3D rankTwo = Scaled(1, 2, 0);
    rankTwo.Rotate(POINT3D(0.3f, 0.5f, 0.7f));
    MATRIX3D rankOne = RowsMatrix({{1, 2, 3, 0}, {2, 4, 6, 0}, {-1, -2, -3, 0}, {0, 0, 0, 1}});
    for (const MATRIX3D& m : {rankTwo, rankOne, Scaled(0, 0, 0)}) {
        AFFINEPARTS p;
        m.AffineDecompose(p);
        EXPECT_EQ(p.f, 1);
        EXPECT_NEAR(p.q.Length(), 1, kFloatTol);
        EXPECT_TRUE(MatrixNear(FromPolarParts(p), m, 1e-5)) << Describe(m);
    }
}

TEST(AffineDecompose, NanMatrixReturns) {
    MATRIX3D m;
    m.m[1][2] = std::numeric_limits<double>::quiet_NaN();
    AFFINEPARTS p;
    m.AffineDecompose(p);
    EXPECT_TRUE(std::isnan(p.q.w) || std::isnan(p.k.x));
}

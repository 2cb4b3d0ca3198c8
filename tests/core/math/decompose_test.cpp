// Full and polar decompositions, and composition from the polar parts.
#include "math_testing.h"

#include <limits>

namespace {

// Row form of Decompose's parts: diag(scale) * shear * rotation, then the translation.
MATRIX3D FromDecomposed(const _point3d& t, const _point3d& r, const _point3d& s,
                        const _point3d& sh) {
    MATRIX3D m = RowsMatrix(
        {{s.x, 0, 0, 0}, {sh.x * s.y, s.y, 0, 0}, {sh.y * s.z, sh.z * s.z, s.z, 0}, {0, 0, 0, 1}});
    m.Rotate(r);
    for (int j = 0; j < 3; ++j) m.m[3][j] = t[j];
    return m;
}

// The upper 3x3 that the polar parts stand for: f * U diag(k) U^T * R(q).
MATRIX3D FromPolarParts(const AFFINEPARTS& p) {
    MATRIX3D u, m;
    u.SetRotate(p.u);
    m.SetMul(u, Scaled(p.k.x * p.f, p.k.y * p.f, p.k.z * p.f));
    u.Transpose();
    m.Transform(u);
    m.Rotate(p.q);
    return m;
}

} // namespace

// A single mirror comes out as three negative scales and a half-turn about x. The perspective
// is the right-hand side (0.5, 0, 0, 1) times the transposed inverse of diag(2, 2, 2, 1). A zero
// corner or a singular matrix fails and writes nothing.
TEST(Decompose, KnownCasesAndFailures) {
    POINT3D t(9, 9, 9), r, s(9, 9, 9), sh;
    POINT4D p(9, 9, 9, 9);
    ASSERT_TRUE(MATRIX3D().Decompose(&t, nullptr, &s, nullptr, &p));
    EXPECT_POINT_NEAR(t, 0, 0, 0, 0);
    EXPECT_POINT_NEAR(s, 1, 1, 1, 0);
    EXPECT_TRUE(PointNear(p, 0, 0, 0, 0) && p.w == 0);
    ASSERT_TRUE(Scaled(-1, 1, 1).Decompose(nullptr, &r, &s, nullptr, nullptr));
    EXPECT_POINT_NEAR(s, -1, -1, -1, 0);
    EXPECT_POINT_NEAR(r, std::copysign(kPi, r.x), 0, 0, kFloatTol);

    // The y row leans along x by 0.5 of its length; everything is divided by m33 first.
    MATRIX3D m = Scaled(4, 6, 8);
    m.Offset(POINT3D(2, 4, 6));
    m.m[1][0] = 3;
    m.m[3][3] = 2;
    ASSERT_TRUE(m.Decompose(&t, nullptr, &s, &sh, nullptr));
    EXPECT_POINT_NEAR(t, 1, 2, 3, 0);
    EXPECT_POINT_NEAR(s, 2, 3, 4, 0);
    EXPECT_POINT_NEAR(sh, 0.5, 0, 0, 0);

    m = Scaled(2, 2, 2);
    m.m[0][3] = 0.5;
    ASSERT_TRUE(m.Decompose(nullptr, nullptr, nullptr, nullptr, &p));
    EXPECT_TRUE(PointNear(p, 0.25, 0, 0, 0) && p.w == 1);

    m.m[3][3] = 0;
    EXPECT_FALSE(m.Decompose(&t, nullptr, nullptr, nullptr, nullptr));
    EXPECT_FALSE(Scaled(1, 0, 1).Decompose(&t, nullptr, nullptr, nullptr, nullptr));
    EXPECT_POINT_NEAR(t, 1, 2, 3, 0);
}

// Random affine and general matrices (shear, non-aligned stretch) rebuild from their parts;
// AffineCompose, which leaves out U, only those stretched along their axes. The polar form is
// f * (U K U^T) * R(q) with K >= 0, f the sign of the determinant, and u the nearest to the
// identity of its axis-permuted equivalents.
TEST(Decompose, EveryFormOfPartsRebuildsTheMatrix) {
    const float h = static_cast<float>(std::sqrt(0.5));
    TestRandom rng(21);
    for (int i = 0; i < 400; ++i) {
        MATRIX3D m = i % 2 ? rng.General() : rng.Affine();
        _point3d t, r, s, sh;
        ASSERT_TRUE(m.Decompose(&t, &r, &s, &sh, nullptr));
        EXPECT_TRUE(MatrixNear(FromDecomposed(t, r, s, sh), m, kIterativeTol)) << i;
        AFFINEPARTS p;
        m.AffineDecompose(p);
        MATRIX3D back;
        back.AffineCompose(p);
        EXPECT_TRUE(i % 2 == 1 || MatrixNear(back, m, kFloatPartsTol)) << i;
        m.NoTranslate();
        EXPECT_TRUE(MatrixNear(FromPolarParts(p), m, kFloatPartsTol)) << i;
        EXPECT_TRUE(p.k.x >= 0 && p.k.y >= 0 && p.k.z >= 0);
        EXPECT_EQ(p.f, m.Det() < 0 ? -1.0f : 1.0f);
        for (const QUAT& turn : {QUAT(1, 0, 0, 0), QUAT(h, 0, 0, h), QUAT(0, h, 0, -h),
                                 QUAT(0.5f, -0.5f, 0.5f, 0.5f), QUAT(0, h, h, 0)}) {
            EXPECT_LE(std::fabs((p.u * turn).w), std::fabs(p.u.w) + kFloatTol);
        }
    }
}

// Ranks two and one take the rank-2 procedure; a NaN element ends the iteration too.
TEST(AffineDecompose, SingularMatricesStillFactor) {
    MATRIX3D rankTwo = Scaled(1, 2, 0);
    rankTwo.Rotate(POINT3D(0.3f, 0.5f, 0.7f));
    const MATRIX3D rankOne =
        RowsMatrix({{1, 2, 3, 0}, {2, 4, 6, 0}, {-1, -2, -3, 0}, {0, 0, 0, 1}});
    AFFINEPARTS p;
    for (const MATRIX3D& m : {rankTwo, rankOne}) {
        m.AffineDecompose(p);
        EXPECT_EQ(p.f, 1);
        EXPECT_TRUE(MatrixNear(FromPolarParts(p), m, kFloatPartsTol));
    }
    Scaled(std::numeric_limits<float>::quiet_NaN(), 1, 1).AffineDecompose(p);
    EXPECT_FALSE(std::isfinite(p.q.w) && std::isfinite(p.k.x));
}

// Matrix construction, composition, inversion, helpers and point transformation.
#include "math_testing.h"

#include <cstring>
#include <limits>

namespace {

MATRIX3D Numbered() {
    MATRIX3D m;
    for (int i = 0; i < 16; ++i) m.m[i / 4][i % 4] = i + 1;
    return m;
}

MATRIX3D Translation(float x, float y, float z) {
    MATRIX3D m;
    m.SetTranslate(POINT3D(x, y, z));
    return m;
}

} // namespace

TEST(MatrixBasics, ConstructionAndTolerances) {
    MATRIX3D m;
    m.m[2][1] = 1e-21;
    EXPECT_TRUE(m.IsIdentity(0));
    m.m[2][1] = 1e-19;
    EXPECT_FALSE(m.IsIdentity(0));
    m.m[2][1] = 0;
    m.m[0][3] = 0.01;
    EXPECT_FALSE(m.IsIdentity(0.001));
    m.m[0][3] = 0.0005;
    EXPECT_TRUE(m.IsIdentity(0.001));

    MATRIX3D a = Numbered(), b = Numbered();
    b.m[3][3] = std::nextafter(16.0, 17.0);
    EXPECT_FALSE(a.Equal(b, 0));
    EXPECT_TRUE(a.Equal(b, 1e-12));
    a.m[0][0] = std::numeric_limits<double>::quiet_NaN();
    EXPECT_FALSE(a.Equal(a, 0));
    EXPECT_FALSE(a.IsIdentity(1e9));
    // Built from sixteen or twelve values; any other count gives the identity.
    float v[16];
    for (int i = 0; i < 16; ++i) v[i] = static_cast<float>(i + 1);
    EXPECT_TRUE(MATRIX3D(v, 16).Equal(Numbered(), 0));
    const MATRIX3D twelve = RowsMatrix({{1, 2, 3, 0}, {4, 5, 6, 0}, {7, 8, 9, 0}, {10, 11, 12, 1}});
    EXPECT_TRUE(MATRIX3D(v, 12).Equal(twelve, 0));
    EXPECT_TRUE(MATRIX3D(v, 7).IsIdentity(0));
}

TEST(MatrixSetMul, AppliesTheFirstArgumentFirst) {
    const MATRIX3D turnXtoY = RowsMatrix({{0, 1, 0, 0}, {-1, 0, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}});
    MATRIX3D m;
    m.SetMul(Translation(1, 2, 3), turnXtoY);
    EXPECT_POINT_NEAR(m.PointTransform(POINT3D(1, 0, 0)), -2, 2, 3, 0);
    m.SetMul(turnXtoY, Translation(1, 2, 3));
    EXPECT_POINT_NEAR(m.PointTransform(POINT3D(1, 0, 0)), 1, 3, 3, 0);
}

TEST(MatrixAliasing, ResultMayBeEitherArgument) {
    using Op = void (MATRIX3D::*)(const MATRIX3D&, const MATRIX3D&);
    TestRandom rng(3);
    for (int i = 0; i < 20; ++i) {
        const MATRIX3D a = rng.General(), b = rng.General();
        for (Op op :
             {&MATRIX3D::SetMul, &MATRIX3D::SetM1, &MATRIX3D::SetM2, &MATRIX3D::SetLocalMatrix}) {
            MATRIX3D expected, first = a, second = b;
            (expected.*op)(a, b);
            (first.*op)(first, b);
            (second.*op)(a, second);
            EXPECT_TRUE(first.Equal(expected, 0));
            EXPECT_TRUE(second.Equal(expected, 0));
        }
        MATRIX3D expected, self = a;
        expected.Invert(a);
        self.Invert(self);
        EXPECT_TRUE(self.Equal(expected, 0));
        expected.SetMul(a, a);
        self = a;
        self.Transform(self);
        EXPECT_TRUE(self.Equal(expected, 0));
    }
}

// A singular matrix inverts to the identity: det = 2^-45 between terms of size 1 is lost in
// their rounding, 2^-30 is not. The fourth column is ignored and comes out (0, 0, 0, 1).
TEST(MatrixInvert, KnownAndSingularInverses) {
    MATRIX3D m = Translation(1, -2, 3);
    m.m[0][3] = 0.5;
    m.Invert();
    EXPECT_TRUE(m.Equal(Translation(-1, 2, -3), 0));
    m.Invert(Scaled(2, 2, 2));
    EXPECT_TRUE(m.Equal(Scaled(0.5f, 0.5f, 0.5f), 0));
    m = Scaled(1, 0, 1);
    m.Invert();
    EXPECT_TRUE(m.IsIdentity(0));
    MATRIX3D c =
        RowsMatrix({{1, 1, 0, 0}, {1, 1 + std::ldexp(1.0, -45), 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}});
    m.Invert(c);
    EXPECT_TRUE(m.IsIdentity(0));
    c.m[1][1] = 1 + std::ldexp(1.0, -30);
    m.Invert(c);
    EXPECT_EQ(m.m[0][0], 1 + std::ldexp(1.0, 30));
}

TEST(MatrixInvert, ProductsWithTheInverse) {
    TestRandom rng(5);
    for (int i = 0; i < 200; ++i) {
        const MATRIX3D parent = rng.Affine(true), world = rng.Affine(true);
        MATRIX3D inv, m;
        inv.Invert(parent);
        m.SetMul(parent, inv);
        EXPECT_TRUE(m.IsIdentity(kIterativeTol));
        m.SetLocalMatrix(parent, world);
        m.Transform(parent);
        EXPECT_TRUE(MatrixNear(m, world, kIterativeTol));
        m.SetM2(world, parent);
        m.SetMul(parent, m);
        EXPECT_TRUE(MatrixNear(m, world, kIterativeTol));
        MATRIX3D local, m1;
        local.SetLocalMatrix(parent, world);
        m1.SetM1(world, parent);
        EXPECT_TRUE(m1.Equal(local, 0));
    }
}

TEST(MatrixHelpers, TranslationAndScale) {
    MATRIX3D m = Numbered();
    m.m[0][1] = -0.0;
    const MATRIX3D before = m;
    m.Scale(POINT3D(1, 1, 1));
    EXPECT_EQ(std::memcmp(&m, &before, sizeof m), 0);
    m.Scale(POINT3D(2, 3, 4));
    m.MoveTo(POINT3D(1, 2, 3));
    m.Offset(POINT3D(10, 20, 30));
    EXPECT_TRUE(m.Equal(
        RowsMatrix({{2, 0, 12, 4}, {10, 18, 28, 8}, {18, 30, 44, 12}, {11, 22, 33, 16}}), 0));

    MATRIX3D n = RowsMatrix({{3, 0, 4, 7}, {0, 0, 0, 0}, {0, 0.1, 0, 0}, {5, 6, 7, 1}});
    n.NoScale();
    EXPECT_TRUE(
        n.Equal(RowsMatrix({{0.6f, 0, 0.8f, 7}, {0, 0, 1, 0}, {0, 1, 0, 0}, {5, 6, 7, 1}}), 0));
    n.NoTranslate();
    EXPECT_POINT_NEAR(n.PointTransform(_point3d(0, 0, 0)), 0, 0, 0, 0);
}

TEST(MatrixOrientation, DeterminantMirrorAndSign) {
    EXPECT_EQ(RowsMatrix({{2, 0, 0, 0}, {0, 3, 0, 0}, {0, 0, 4, 0}, {1, 2, 3, 1}}).Det(), 24);
    EXPECT_EQ(RowsMatrix({{1, 2, 0, 0}, {3, 4, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 2}}).Det(), -4);
    EXPECT_EQ(RowsMatrix({{0, 0, 0, 1}, {0, 0, 1, 0}, {1, 0, 0, 0}, {0, 1, 0, 0}}).Det(), -1);

    MATRIX3D m;
    EXPECT_FALSE(m.IsFlipped());
    EXPECT_EQ(m.Sign(), 1.0f);
    m.SetScale(POINT3D(-1, 2, 3));
    m.Rotate(POINT3D(0.3f, 0.2f, 0.1f));
    EXPECT_TRUE(m.IsFlipped());
    EXPECT_EQ(m.Sign(), -1.0f);
    EXPECT_EQ(Scaled(-1, 2, 0).Sign(), 1.0f); // singular: no sign to report
}

TEST(MatrixFlip, ExchangesYAndZOfTheAffinePart) {
    MATRIX3D m = Numbered();
    m.Flip();
    EXPECT_TRUE(
        m.Equal(RowsMatrix({{1, 3, 2, 4}, {9, 11, 10, 8}, {5, 7, 6, 12}, {13, 15, 14, 16}}), 0));
    m.Flip();
    EXPECT_TRUE(m.Equal(Numbered(), 0));
}

// Only the affine part applies. x*1e8 + y*0.5 - z*1e8 is 0.5 in double but 0 when summed in
// float: float points sum in double except in matrix3d.
TEST(MatrixTransform, AffineOnlyAndSummedInDouble) {
    MATRIX3D m = Translation(1, 1, 1);
    m.m[2][3] = 1;
    m.m[3][3] = 2;
    EXPECT_POINT_NEAR(m.PointTransform(POINT3D(1, 0, 0)), 2, 1, 1, 0);
    EXPECT_POINT_NEAR(m.PointTransform(_point3d(1, 0, 0)), 2, 1, 1, 0);
    EXPECT_POINT_NEAR(m.VectorTransform(_point3d(0, 0, 2)), 0, 0, 2, 0);
    MATRIX3D big;
    big.m[0][0] = 1e8;
    big.m[1][0] = 0.5;
    big.m[2][0] = -1e8;
    EXPECT_EQ(big.PointTransform(POINT3D(1, 1, 1)).x, 0.5f);
    POINT3D out;
    matrix3d(big).p_Transform(POINT3D(1, 1, 1), out);
    EXPECT_EQ(out.x, 0.0f);
}

TEST(MatrixTransformPoints, InPlaceSeparateAndEmpty) {
    const MATRIX3D m = RowsMatrix({{0, 1, 0, 0}, {-1, 0, 0, 0}, {0, 0, 1, 0}, {5, 6, 7, 1}});
    POINT3D pts[2] = {{1, 0, 0}, {0, 1, 0}};
    POINT3D out[2] = {{9, 9, 9}, {9, 9, 9}};
    m.TransformPoints(pts, out, 0);
    EXPECT_POINT_NEAR(out[0], 9, 9, 9, 0);
    m.TransformPoints(pts, out, 2);
    EXPECT_POINT_NEAR(out[1], 4, 6, 7, 0);
    m.TransformPoints(pts, pts, 2); // each point read before it is written
    EXPECT_POINT_NEAR(pts[1], 4, 6, 7, 0);
    _point3d dv[2] = {{1, 0, 0}, {0, 1, 0}};
    m.TransformVectors(dv, 2);
    EXPECT_POINT_NEAR(dv[1], -1, 0, 0, 0);
    matrix3d(m).TransformPoints(out, pts, 2);
    EXPECT_POINT_NEAR(pts[0], -2, 11, 14, 0);
}

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

TEST(MatrixIdentity, ZeroToleranceMeans1e20) {
    MATRIX3D m;
    m.m[2][1] = 1e-21;
    EXPECT_TRUE(m.IsIdentity(0));
    m.m[2][1] = 1e-19;
    EXPECT_FALSE(m.IsIdentity(0));
}

TEST(MatrixIdentity, ToleranceCoversTheFourthColumn) {
    MATRIX3D m;
    m.m[0][3] = 0.01;
    EXPECT_FALSE(m.IsIdentity(0.001));
    m.m[0][3] = 0.0005;
    m.m[3][3] = 1.0005;
    EXPECT_TRUE(m.IsIdentity(0.001));
    m.m[1][1] = std::numeric_limits<double>::quiet_NaN();
    EXPECT_FALSE(m.IsIdentity(0.001));
}

TEST(MatrixEqual, ZeroToleranceIsExact) {
    MATRIX3D a = Numbered(), b = Numbered();
    EXPECT_TRUE(a.Equal(b, 0));
    b.m[3][3] = std::nextafter(16.0, 17.0);
    EXPECT_FALSE(a.Equal(b, 0));
    EXPECT_TRUE(a.Equal(b, 1e-12));
    a.m[0][0] = b.m[0][0] = std::numeric_limits<double>::quiet_NaN();
    EXPECT_FALSE(a.Equal(a, 0));
}

TEST(MatrixConstruct, SixteenValuesRowByRow) {
    float v[16];
    for (int i = 0; i < 16; ++i) v[i] = static_cast<float>(i + 1);
    EXPECT_TRUE(MATRIX3D(v, 16).Equal(Numbered(), 0));
}

TEST(MatrixConstruct, TwelveValuesFillThreeColumns) {
    double v[12];
    for (int i = 0; i < 12; ++i) v[i] = i + 1;
    const MATRIX3D expected =
        RowsMatrix({{1, 2, 3, 0}, {4, 5, 6, 0}, {7, 8, 9, 0}, {10, 11, 12, 1}});
    EXPECT_TRUE(MATRIX3D(v, 12).Equal(expected, 0));
    EXPECT_TRUE(MATRIX3D(v, 7).IsIdentity(0));
}

TEST(MatrixSetMul, AppliesTheFirstArgumentFirst) {
    // B turns x onto y.
    const MATRIX3D b = RowsMatrix({{0, 1, 0, 0}, {-1, 0, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}});
    MATRIX3D ab;
    ab.SetMul(Translation(1, 2, 3), b);
    EXPECT_POINT_NEAR(ab.PointTransform(POINT3D(1, 0, 0)), -2, 2, 3, 0);

    MATRIX3D x, y;
    x.m[0][1] = 2;
    y.m[1][2] = 3;
    MATRIX3D xy, yx;
    xy.SetMul(x, y);
    yx.SetMul(y, x);
    EXPECT_EQ(xy.m[0][2], 6);
    EXPECT_EQ(yx.m[0][2], 0);
}

TEST(MatrixAliasing, ResultMayBeAnArgument) {
    TestRandom rng(3);
    for (int i = 0; i < 50; ++i) {
        const MATRIX3D a = rng.General(), b = rng.General();
        MATRIX3D expected, alias;

        expected.SetMul(a, b);
        alias = a;
        alias.SetMul(alias, b);
        EXPECT_TRUE(alias.Equal(expected, 0));
        alias = b;
        alias.SetMul(a, alias);
        EXPECT_TRUE(alias.Equal(expected, 0));
        alias = a;
        alias.Transform(b);
        EXPECT_TRUE(alias.Equal(expected, 0));

        expected.SetMul(a, a);
        alias = a;
        alias.SetMul(alias, alias);
        EXPECT_TRUE(alias.Equal(expected, 0));

        expected.SetM1(a, b);
        alias = b;
        alias.SetM1(a, alias);
        EXPECT_TRUE(alias.Equal(expected, 0));
        expected.SetM2(a, b);
        alias = a;
        alias.SetM2(alias, b);
        EXPECT_TRUE(alias.Equal(expected, 0));
        expected.SetLocalMatrix(a, b);
        alias = a;
        alias.SetLocalMatrix(alias, b);
        EXPECT_TRUE(alias.Equal(expected, 0));

        expected.Invert(a);
        alias = a;
        alias.Invert(alias);
        EXPECT_TRUE(alias.Equal(expected, 0));
        alias = a;
        alias.Invert();
        EXPECT_TRUE(alias.Equal(expected, 0));

        alias = a;
        alias.Transpose();
        EXPECT_EQ(alias.m[1][3], a.m[3][1]);
        EXPECT_EQ(alias.m[3][1], a.m[1][3]);
    }
}

TEST(MatrixInvert, TranslationAndScale) {
    MATRIX3D inv;
    inv.Invert(Translation(1, -2, 3));
    EXPECT_TRUE(inv.Equal(Translation(-1, 2, -3), 0));
    MATRIX3D s;
    s.SetScale(POINT3D(2, 2, 2));
    s.Invert();
    EXPECT_TRUE(
        s.Equal(RowsMatrix({{0.5, 0, 0, 0}, {0, 0.5, 0, 0}, {0, 0, 0.5, 0}, {0, 0, 0, 1}}), 0));
}

TEST(MatrixInvert, SingularGivesIdentity) {
    MATRIX3D zeroRow = Translation(1, 2, 3);
    zeroRow.m[1][1] = 0;
    zeroRow.Invert();
    EXPECT_TRUE(zeroRow.IsIdentity(0));

    // det = 2^-45 out of terms of size 1: lost in their rounding.
    MATRIX3D cancelling =
        RowsMatrix({{1, 1, 0, 0}, {1, 1 + std::ldexp(1.0, -45), 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}});
    MATRIX3D inv;
    inv.Invert(cancelling);
    EXPECT_TRUE(inv.IsIdentity(0));
    // det = 2^-30 is still well above the rounding of the terms.
    cancelling.m[1][1] = 1 + std::ldexp(1.0, -30);
    inv.Invert(cancelling);
    EXPECT_NEAR(inv.m[0][0], 1 + std::ldexp(1.0, 30), 1e-3);
}

TEST(MatrixInvert, FourthColumnComesOutAffine) {
    MATRIX3D m = Translation(4, 5, 6);
    m.m[0][3] = 0.5;
    m.m[3][3] = 3;
    MATRIX3D inv;
    inv.Invert(m);
    EXPECT_TRUE(inv.Equal(Translation(-4, -5, -6), 0));
}

TEST(MatrixInvert, InverseTimesMatrixIsIdentity) {
    TestRandom rng(5);
    for (int i = 0; i < 200; ++i) {
        const MATRIX3D m = rng.Affine(true);
        MATRIX3D inv, product;
        inv.Invert(m);
        product.SetMul(m, inv);
        EXPECT_TRUE(product.IsIdentity(kIterativeTol)) << Describe(product);
    }
}

TEST(MatrixLocal, LocalTimesParentIsWorld) {
    TestRandom rng(6);
    for (int i = 0; i < 50; ++i) {
        const MATRIX3D parent = rng.Affine(true), world = rng.Affine(true);
        MATRIX3D local;
        local.SetLocalMatrix(parent, world);
        MATRIX3D m1;
        m1.SetM1(world, parent);
        EXPECT_TRUE(m1.Equal(local, 0));
        local.Transform(parent);
        EXPECT_TRUE(MatrixNear(local, world, kIterativeTol));

        MATRIX3D m2;
        m2.SetM2(world, parent);
        MATRIX3D back;
        back.SetMul(parent, m2);
        EXPECT_TRUE(MatrixNear(back, world, kIterativeTol));
    }
}

TEST(MatrixTranslate, RowThreeHelpers) {
    MATRIX3D m;
    m.SetScale(POINT3D(2, 3, 4));
    m.MoveTo(POINT3D(1, 2, 3));
    m.Offset(POINT3D(10, 20, 30));
    EXPECT_TRUE(
        m.Equal(RowsMatrix({{2, 0, 0, 0}, {0, 3, 0, 0}, {0, 0, 4, 0}, {11, 22, 33, 1}}), 0));
    m.NoTranslate();
    EXPECT_EQ(m.m[3][0], 0);
    EXPECT_EQ(m.m[3][2], 0);
    EXPECT_EQ(m.m[0][0], 2);
}

TEST(MatrixScale, ScalesColumns) {
    MATRIX3D m = Numbered();
    m.Scale(POINT3D(2, 3, 4));
    const MATRIX3D expected =
        RowsMatrix({{2, 6, 12, 4}, {10, 18, 28, 8}, {18, 30, 44, 12}, {26, 42, 60, 16}});
    EXPECT_TRUE(m.Equal(expected, 0));
}

TEST(MatrixScale, UnitScaleKeepsEveryBit) {
    MATRIX3D m = Numbered();
    m.m[0][1] = -0.0;
    MATRIX3D before = m;
    m.Scale(POINT3D(1, 1, 1));
    EXPECT_EQ(std::memcmp(&m, &before, sizeof m), 0);
}

TEST(MatrixNoScale, NormalizesAxisRowsThroughFloats) {
    MATRIX3D m = RowsMatrix({{3, 0, 4, 7}, {0, 0, 0, 0}, {0, 0.1, 0, 0}, {5, 6, 7, 1}});
    m.NoScale();
    EXPECT_TRUE(
        m.Equal(RowsMatrix({{0.6f, 0, 0.8f, 7}, {0, 0, 1, 0}, {0, 1, 0, 0}, {5, 6, 7, 1}}), 0));
}

TEST(MatrixDet, FullFourByFour) {
    EXPECT_EQ(RowsMatrix({{2, 0, 0, 0}, {0, 3, 0, 0}, {0, 0, 4, 0}, {1, 2, 3, 1}}).Det(), 24);
    EXPECT_EQ(RowsMatrix({{1, 2, 0, 0}, {3, 4, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 2}}).Det(), -4);
    EXPECT_EQ(RowsMatrix({{0, 0, 0, 1}, {0, 0, 1, 0}, {0, 1, 0, 0}, {1, 0, 0, 0}}).Det(), 1);
    EXPECT_EQ(RowsMatrix({{0, 0, 0, 1}, {0, 0, 1, 0}, {1, 0, 0, 0}, {0, 1, 0, 0}}).Det(), -1);
}

TEST(MatrixOrientation, MirrorIsFlippedWithNegativeSign) {
    MATRIX3D m;
    EXPECT_FALSE(m.IsFlipped());
    EXPECT_EQ(m.Sign(), 1.0f);
    m.SetScale(POINT3D(-1, 2, 3));
    m.Rotate(POINT3D(0.3f, 0.2f, 0.1f));
    EXPECT_TRUE(m.IsFlipped());
    EXPECT_EQ(m.Sign(), -1.0f);
    m.SetScale(POINT3D(-1, 2, 0)); // singular: no sign to report
    EXPECT_EQ(m.Sign(), 1.0f);
}

TEST(MatrixFlip, ExchangesYAndZOfTheAffinePart) {
    MATRIX3D m = Numbered();
    m.Flip();
    const MATRIX3D expected =
        RowsMatrix({{1, 3, 2, 4}, {9, 11, 10, 8}, {5, 7, 6, 12}, {13, 15, 14, 16}});
    EXPECT_TRUE(m.Equal(expected, 0));
    m.Flip();
    EXPECT_TRUE(m.Equal(Numbered(), 0));

    MATRIX3D t = Translation(1, 2, 3);
    t.Flip();
    EXPECT_TRUE(t.Equal(Translation(1, 3, 2), 0));
}

TEST(MatrixTransform, NoPerspectiveDivision) {
    MATRIX3D m = Translation(1, 1, 1);
    m.m[2][3] = 1;
    m.m[3][3] = 2;
    EXPECT_POINT_NEAR(m.PointTransform(POINT3D(1, 0, 0)), 2, 1, 1, 0);
    EXPECT_POINT_NEAR(m.PointTransform(_point3d(1, 0, 0)), 2, 1, 1, 0);
    EXPECT_POINT_NEAR(m.VectorTransform(POINT3D(1, 0, 0)), 1, 0, 0, 0);
    EXPECT_POINT_NEAR(m.VectorTransform(_point3d(0, 0, 2)), 0, 0, 2, 0);
}

// x*1e8 + y*0.5 - z*1e8 is 0.5 in double but 0 when summed in float.
TEST(MatrixTransform, FloatPointsSumInDoubleExceptInMatrix3d) {
    MATRIX3D m;
    m.m[0][0] = 1e8;
    m.m[1][0] = 0.5;
    m.m[2][0] = -1e8;
    const POINT3D p(1, 1, 1);
    EXPECT_EQ(m.PointTransform(p).x, 0.5f);
    const matrix3d f(m);
    POINT3D out;
    f.p_Transform(p, out);
    EXPECT_EQ(out.x, 0.0f);
    f.v_Transform(p, out);
    EXPECT_EQ(out.x, 0.0f);
}

TEST(MatrixTransformPoints, InPlaceSeparateAndEmpty) {
    const MATRIX3D m = RowsMatrix({{0, 1, 0, 0}, {-1, 0, 0, 0}, {0, 0, 1, 0}, {5, 6, 7, 1}});
    POINT3D pts[2] = {{1, 0, 0}, {0, 1, 0}};
    POINT3D out[2] = {{9, 9, 9}, {9, 9, 9}};
    m.TransformPoints(pts, out, 2);
    EXPECT_POINT_NEAR(out[0], 5, 7, 7, 0);
    EXPECT_POINT_NEAR(out[1], 4, 6, 7, 0);
    m.TransformPoints(pts, pts, 2); // same pointer: each point read before it is written
    EXPECT_POINT_NEAR(pts[1], 4, 6, 7, 0);

    _point3d dv[2] = {{1, 0, 0}, {0, 1, 0}};
    m.TransformVectors(dv, 2);
    EXPECT_POINT_NEAR(dv[0], 0, 1, 0, 0);
    EXPECT_POINT_NEAR(dv[1], -1, 0, 0, 0);
    m.TransformPoints(dv, 0);
    m.TransformVectors(out, pts, 0);
    EXPECT_POINT_NEAR(dv[0], 0, 1, 0, 0);
    EXPECT_POINT_NEAR(pts[1], 4, 6, 7, 0);

    POINT3D fout[2];
    matrix3d(m).TransformPoints(out, fout, 2);
    EXPECT_POINT_NEAR(fout[0], -2, 11, 14, 0);
}

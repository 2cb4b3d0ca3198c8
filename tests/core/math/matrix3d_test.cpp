// Matrix construction, composition, inversion, helpers and point transformation.
#include "math_testing.h"

#include <cstring>
#include <limits>

namespace {

constexpr float kNumbered[16] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};

MATRIX3D Translation(float x, float y, float z) {
    MATRIX3D m;
    m.SetTranslate(POINT3D(x, y, z));
    return m;
}

} // namespace

// A zero tolerance still allows 1e-20 for IsIdentity, any other is used as given; Equal with 0
// wants exact equality, which NaN never has. Twelve values fill three columns of each row. A
// mirror shows in the determinant's sign.
TEST(MatrixBasics, ConstructionAndTolerances) {
    MATRIX3D m;
    m.m[2][1] = 1e-21;
    EXPECT_TRUE(m.IsIdentity(0));
    m.m[2][1] = 1e-19;
    EXPECT_FALSE(m.IsIdentity(0));
    EXPECT_TRUE(m.IsIdentity(1e-19));

    MATRIX3D a(kNumbered, 16), b = a;
    b.m[3][3] = std::nextafter(16.0, 17.0);
    EXPECT_FALSE(a.Equal(b, 0));
    a.m[0][0] = std::numeric_limits<double>::quiet_NaN();
    EXPECT_FALSE(a.Equal(a, 0));
    EXPECT_EQ(b.m[1][2], 7);
    EXPECT_EQ(b.m[3][0], 13);
    const MATRIX3D twelve = RowsMatrix({{1, 2, 3, 0}, {4, 5, 6, 0}, {7, 8, 9, 0}, {10, 11, 12, 1}});
    EXPECT_TRUE(MATRIX3D(kNumbered, 12).Equal(twelve, 0));

    EXPECT_EQ(RowsMatrix({{0, 0, 0, 1}, {0, 0, 1, 0}, {1, 0, 0, 0}, {0, 1, 0, 0}}).Det(), -1);
    MATRIX3D mirror = Scaled(-1, 2, 3);
    mirror.Rotate(POINT3D(0.3f, 0.2f, 0.1f));
    EXPECT_TRUE(mirror.IsFlipped());
    EXPECT_EQ(mirror.Sign(), -1.0f);
}

TEST(MatrixComposition, ResultMayAliasAnArgumentAndInversesCancel) {
    using Op = void (MATRIX3D::*)(const MATRIX3D&, const MATRIX3D&);
    TestRandom rng(3);
    for (int i = 0; i < 100; ++i) {
        const MATRIX3D a = rng.Affine(), b = rng.Affine();
        for (Op op :
             {&MATRIX3D::SetMul, &MATRIX3D::SetM1, &MATRIX3D::SetM2, &MATRIX3D::SetLocalMatrix}) {
            MATRIX3D expected, first = a, second = b;
            (expected.*op)(a, b);
            (first.*op)(first, b);
            (second.*op)(a, second);
            EXPECT_TRUE(first.Equal(expected, 0) && second.Equal(expected, 0));
        }
        // SetLocalMatrix(P, W) and SetM1(W, P) are both W * P^-1; SetM2(W, P) is P^-1 * W.
        MATRIX3D m, m1;
        m.SetLocalMatrix(a, b);
        m1.SetM1(b, a);
        EXPECT_TRUE(m1.Equal(m, 0));
        m.Transform(a);
        EXPECT_TRUE(MatrixNear(m, b, kIterativeTol));
        m.SetM2(b, a);
        m.SetMul(a, m);
        EXPECT_TRUE(MatrixNear(m, b, kIterativeTol));
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
    MATRIX3D c =
        RowsMatrix({{1, 1, 0, 0}, {1, 1 + std::ldexp(1.0, -45), 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}});
    m.Invert(c);
    EXPECT_TRUE(m.IsIdentity(0));
    c.m[1][1] = 1 + std::ldexp(1.0, -30);
    m.Invert(c);
    EXPECT_EQ(m.m[0][0], 1 + std::ldexp(1.0, 30));
}

// Scale multiplies the columns, unless it is exactly (1, 1, 1); Flip exchanges y and z of the
// affine part and leaves the fourth column.
TEST(MatrixHelpers, ScaleFlipAndNoScale) {
    MATRIX3D m(kNumbered, 16);
    m.m[0][1] = -0.0;
    const MATRIX3D before = m;
    m.Scale(POINT3D(1, 1, 1));
    EXPECT_EQ(std::memcmp(&m, &before, sizeof m), 0);
    m.Scale(POINT3D(2, 3, 4));
    EXPECT_TRUE(m.Equal(
        RowsMatrix({{2, 0, 12, 4}, {10, 18, 28, 8}, {18, 30, 44, 12}, {26, 42, 60, 16}}), 0));
    m = MATRIX3D(kNumbered, 16);
    m.Flip();
    EXPECT_TRUE(
        m.Equal(RowsMatrix({{1, 3, 2, 4}, {9, 11, 10, 8}, {5, 7, 6, 12}, {13, 15, 14, 16}}), 0));
    MATRIX3D n = RowsMatrix({{3, 0, 4, 7}, {0, 0, 0, 0}, {0, 0.1, 0, 0}, {5, 6, 7, 1}});
    n.NoScale();
    EXPECT_TRUE(
        n.Equal(RowsMatrix({{0.6f, 0, 0.8f, 7}, {0, 0, 1, 0}, {0, 1, 0, 0}, {5, 6, 7, 1}}), 0));
}

// SetMul(A, B) applies A first. Only the affine part applies. x*1e8 + y*0.5 - z*1e8 is 0.5 in
// double but 0 when summed in float: float points sum in double except in matrix3d.
// Transforming in place reads each point before writing it.
TEST(MatrixTransform, AffineOnlyInOrderAndSummedInDouble) {
    const MATRIX3D turn = RowsMatrix({{0, 1, 0, 0}, {-1, 0, 0, 0}, {0, 0, 1, 0}, {5, 6, 7, 1}});
    MATRIX3D m;
    m.SetMul(Translation(1, 2, 3), turn);
    EXPECT_POINT_NEAR(m.PointTransform(POINT3D(1, 0, 0)), 3, 8, 10, 0);
    m.SetMul(turn, Translation(1, 2, 3));
    EXPECT_POINT_NEAR(m.PointTransform(POINT3D(1, 0, 0)), 6, 9, 10, 0);
    m = Translation(1, 1, 1);
    m.m[2][3] = 1;
    m.m[3][3] = 2;
    EXPECT_POINT_NEAR(m.PointTransform(POINT3D(1, 0, 0)), 2, 1, 1, 0);
    POINT3D pts[2] = {{1, 0, 0}, {0, 1, 0}};
    turn.TransformPoints(pts, pts, 2);
    EXPECT_POINT_NEAR(pts[1], 4, 6, 7, 0);
    MATRIX3D big;
    big.m[0][0] = 1e8;
    big.m[1][0] = 0.5;
    big.m[2][0] = -1e8;
    EXPECT_EQ(big.PointTransform(POINT3D(1, 1, 1)).x, 0.5f);
    POINT3D out;
    matrix3d(big).p_Transform(POINT3D(1, 1, 1), out);
    EXPECT_EQ(out.x, 0.0f);
}

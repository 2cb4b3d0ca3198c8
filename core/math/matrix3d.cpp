// Construction, composition, inversion and point transformation of the 4x4 matrices.
#include "core/math/matrix3d.h"

#include <cmath>

namespace {

template <typename T> void FillFromValues(double (&m)[4][4], const T* values, int count) {
    if (count == 16) {
        for (int i = 0; i < 16; ++i) m[i / 4][i % 4] = values[i];
    } else if (count == 12) {
        for (int r = 0; r < 4; ++r) {
            for (int c = 0; c < 3; ++c) m[r][c] = values[3 * r + c];
        }
    }
}

double Det3(double a, double b, double c, double d, double e, double f, double g, double h,
            double i) {
    // Expanded along the first column (a, d, g).
    return a * (e * i - f * h) - d * (b * i - c * h) + g * (b * f - c * e);
}

} // namespace

MATRIX3D::MATRIX3D() {
    IdentityMatrix();
}

MATRIX3D::MATRIX3D(bool identity) {
    if (identity) IdentityMatrix();
}

MATRIX3D::MATRIX3D(const float* values, int count) {
    IdentityMatrix();
    FillFromValues(m, values, count);
}

MATRIX3D::MATRIX3D(const double* values, int count) {
    IdentityMatrix();
    FillFromValues(m, values, count);
}

void MATRIX3D::IdentityMatrix() {
    for (auto& row : m) {
        for (double& e : row) e = 0;
    }
    m[0][0] = m[1][1] = m[2][2] = m[3][3] = 1;
}

bool MATRIX3D::IsIdentity(double tolerance) const {
    const double tol = tolerance == 0 ? 1e-20 : tolerance;
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j < 4; ++j) {
            const double expected = i == j ? 1.0 : 0.0;
            if (!(std::fabs(m[i][j] - expected) <= tol)) return false;
        }
    }
    return true;
}

bool MATRIX3D::Equal(const MATRIX3D& other, double tolerance) const {
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j < 4; ++j) {
            if (tolerance == 0) {
                if (!(m[i][j] == other.m[i][j])) return false;
            } else if (!(std::fabs(m[i][j] - other.m[i][j]) <= tolerance)) {
                return false;
            }
        }
    }
    return true;
}

void MATRIX3D::SetMul(const MATRIX3D& a, const MATRIX3D& b) {
    MATRIX3D r(false);
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j < 4; ++j) {
            r.m[i][j] = a.m[i][0] * b.m[0][j] + a.m[i][1] * b.m[1][j] + a.m[i][2] * b.m[2][j] +
                        a.m[i][3] * b.m[3][j];
        }
    }
    *this = r;
}

void MATRIX3D::Transform(const MATRIX3D& after) {
    SetMul(*this, after);
}

void MATRIX3D::SetM1(const MATRIX3D& a, const MATRIX3D& b) {
    MATRIX3D inv(false);
    inv.Invert(b);
    SetMul(a, inv);
}

void MATRIX3D::SetM2(const MATRIX3D& a, const MATRIX3D& b) {
    MATRIX3D inv(false);
    inv.Invert(b);
    SetMul(inv, a);
}

void MATRIX3D::SetLocalMatrix(const MATRIX3D& parent, const MATRIX3D& world) {
    MATRIX3D inv(false);
    inv.Invert(parent);
    SetMul(world, inv);
}

// Affine inverse: the fourth column of src is ignored and comes out as (0, 0, 0, 1). A matrix
// whose determinant is lost in the rounding of its own terms counts as singular and inverts to
// the identity, without a report.
void MATRIX3D::Invert(const MATRIX3D& src) {
    const auto& s = src.m;
    MATRIX3D r;

    const double terms[6] = {
        s[0][0] * s[1][1] * s[2][2],  s[1][0] * s[2][1] * s[0][2],  s[2][0] * s[0][1] * s[1][2],
        -s[2][0] * s[1][1] * s[0][2], -s[1][0] * s[0][1] * s[2][2], -s[0][0] * s[2][1] * s[1][2],
    };
    double positive = 0, negative = 0;
    for (double t : terms) {
        if (t >= 0) {
            positive += t;
        } else {
            negative += t;
        }
    }
    const double det = positive + negative;
    if ((positive - negative) * 1e-12 > std::fabs(det) || det == 0) {
        *this = r;
        return;
    }

    const double k = 1.0 / det;
    r.m[0][0] = (s[1][1] * s[2][2] - s[1][2] * s[2][1]) * k;
    r.m[0][1] = -(s[0][1] * s[2][2] - s[0][2] * s[2][1]) * k;
    r.m[0][2] = (s[0][1] * s[1][2] - s[0][2] * s[1][1]) * k;
    r.m[1][0] = -(s[1][0] * s[2][2] - s[1][2] * s[2][0]) * k;
    r.m[1][1] = (s[0][0] * s[2][2] - s[0][2] * s[2][0]) * k;
    r.m[1][2] = -(s[0][0] * s[1][2] - s[0][2] * s[1][0]) * k;
    r.m[2][0] = (s[1][0] * s[2][1] - s[1][1] * s[2][0]) * k;
    r.m[2][1] = -(s[0][0] * s[2][1] - s[0][1] * s[2][0]) * k;
    r.m[2][2] = (s[0][0] * s[1][1] - s[0][1] * s[1][0]) * k;
    for (int j = 0; j < 3; ++j) {
        r.m[3][j] = -(s[3][0] * r.m[0][j] + s[3][1] * r.m[1][j] + s[3][2] * r.m[2][j]);
    }
    *this = r;
}

void MATRIX3D::Invert() {
    Invert(MATRIX3D(*this));
}

void MATRIX3D::Transpose() {
    MATRIX3D r(false);
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j < 4; ++j) r.m[i][j] = m[j][i];
    }
    *this = r;
}

void MATRIX3D::SetTranslate(const POINT3D& t) {
    SetTranslate(_point3d(t.x, t.y, t.z));
}

void MATRIX3D::SetTranslate(const _point3d& t) {
    IdentityMatrix();
    m[3][0] = t.x;
    m[3][1] = t.y;
    m[3][2] = t.z;
}

void MATRIX3D::MoveTo(const POINT3D& t) {
    m[3][0] = t.x;
    m[3][1] = t.y;
    m[3][2] = t.z;
}

void MATRIX3D::Offset(const POINT3D& t) {
    m[3][0] += t.x;
    m[3][1] += t.y;
    m[3][2] += t.z;
}

void MATRIX3D::NoTranslate() {
    MoveTo(POINT3D(0, 0, 0));
}

void MATRIX3D::SetScale(const POINT3D& s) {
    IdentityMatrix();
    m[0][0] = s.x;
    m[1][1] = s.y;
    m[2][2] = s.z;
}

void MATRIX3D::Scale(const POINT3D& s) {
    if (s.x == 1 && s.y == 1 && s.z == 1) return;
    MATRIX3D sm;
    sm.SetScale(s);
    Transform(sm);
}

// Each axis row goes through a float vector, so the rows lose their double precision.
void MATRIX3D::NoScale() {
    for (int i = 0; i < 3; ++i) {
        POINT3D r(static_cast<float>(m[i][0]), static_cast<float>(m[i][1]),
                  static_cast<float>(m[i][2]));
        r.Normalize();
        m[i][0] = r.x;
        m[i][1] = r.y;
        m[i][2] = r.z;
    }
}

double MATRIX3D::Det() const {
    const auto& a = m;
    const double minor0 =
        Det3(a[1][1], a[1][2], a[1][3], a[2][1], a[2][2], a[2][3], a[3][1], a[3][2], a[3][3]);
    const double minor1 =
        Det3(a[1][0], a[1][2], a[1][3], a[2][0], a[2][2], a[2][3], a[3][0], a[3][2], a[3][3]);
    const double minor2 =
        Det3(a[1][0], a[1][1], a[1][3], a[2][0], a[2][1], a[2][3], a[3][0], a[3][1], a[3][3]);
    const double minor3 =
        Det3(a[1][0], a[1][1], a[1][2], a[2][0], a[2][1], a[2][2], a[3][0], a[3][1], a[3][2]);
    return a[0][0] * minor0 - a[0][1] * minor1 + a[0][2] * minor2 - a[0][3] * minor3;
}

bool MATRIX3D::IsFlipped() const {
    float r[3][3];
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) r[i][j] = static_cast<float>(m[i][j]);
    }
    const float cx = r[0][1] * r[1][2] - r[0][2] * r[1][1];
    const float cy = r[0][2] * r[1][0] - r[0][0] * r[1][2];
    const float cz = r[0][0] * r[1][1] - r[0][1] * r[1][0];
    return cx * r[2][0] + cy * r[2][1] + cz * r[2][2] < 0;
}

// Conjugation by the y-z exchange on the 3x4 affine part, converting between y-up and z-up
// frames. Column 3 of rows 1 and 2 stays where it is; it is 0 in any affine matrix.
void MATRIX3D::Flip() {
    const MATRIX3D o(*this);
    m[3][1] = o.m[3][2];
    m[3][2] = o.m[3][1];
    m[1][1] = o.m[2][2];
    m[2][2] = o.m[1][1];
    m[2][1] = o.m[1][2];
    m[1][2] = o.m[2][1];
    m[1][0] = o.m[2][0];
    m[2][0] = o.m[1][0];
    m[0][1] = o.m[0][2];
    m[0][2] = o.m[0][1];
}

void MATRIX3D::p_Transform(const POINT3D& in, POINT3D& out) const {
    const double x = in.x, y = in.y, z = in.z;
    out.x = static_cast<float>(x * m[0][0] + y * m[1][0] + z * m[2][0] + m[3][0]);
    out.y = static_cast<float>(x * m[0][1] + y * m[1][1] + z * m[2][1] + m[3][1]);
    out.z = static_cast<float>(x * m[0][2] + y * m[1][2] + z * m[2][2] + m[3][2]);
}

// Components are written one by one: in and out must not be the same point.
void MATRIX3D::p_Transform(const _point3d& in, _point3d& out) const {
    out.x = in.x * m[0][0] + in.y * m[1][0] + in.z * m[2][0] + m[3][0];
    out.y = in.x * m[0][1] + in.y * m[1][1] + in.z * m[2][1] + m[3][1];
    out.z = in.x * m[0][2] + in.y * m[1][2] + in.z * m[2][2] + m[3][2];
}

void MATRIX3D::v_Transform(const POINT3D& in, POINT3D& out) const {
    const double x = in.x, y = in.y, z = in.z;
    out.x = static_cast<float>(x * m[0][0] + y * m[1][0] + z * m[2][0]);
    out.y = static_cast<float>(x * m[0][1] + y * m[1][1] + z * m[2][1]);
    out.z = static_cast<float>(x * m[0][2] + y * m[1][2] + z * m[2][2]);
}

void MATRIX3D::v_Transform(const _point3d& in, _point3d& out) const {
    out.x = in.x * m[0][0] + in.y * m[1][0] + in.z * m[2][0];
    out.y = in.x * m[0][1] + in.y * m[1][1] + in.z * m[2][1];
    out.z = in.x * m[0][2] + in.y * m[1][2] + in.z * m[2][2];
}

POINT3D MATRIX3D::PointTransform(const POINT3D& p) const {
    POINT3D r;
    p_Transform(p, r);
    return r;
}

_point3d MATRIX3D::PointTransform(const _point3d& p) const {
    _point3d r;
    p_Transform(p, r);
    return r;
}

POINT3D MATRIX3D::VectorTransform(const POINT3D& v) const {
    POINT3D r;
    v_Transform(v, r);
    return r;
}

_point3d MATRIX3D::VectorTransform(const _point3d& v) const {
    _point3d r;
    v_Transform(v, r);
    return r;
}

// The counts are ints counted down as unsigned numbers: a negative count is a caller error.
void MATRIX3D::TransformPoints(POINT3D* points, int n) const {
    for (unsigned int k = static_cast<unsigned int>(n); k != 0; --k, ++points) {
        const POINT3D t = *points;
        p_Transform(t, *points);
    }
}

void MATRIX3D::TransformPoints(_point3d* points, int n) const {
    for (unsigned int k = static_cast<unsigned int>(n); k != 0; --k, ++points) {
        const _point3d t = *points;
        p_Transform(t, *points);
    }
}

void MATRIX3D::TransformPoints(const POINT3D* src, POINT3D* dst, int n) const {
    if (src == dst) {
        TransformPoints(dst, n);
        return;
    }
    for (unsigned int k = static_cast<unsigned int>(n); k != 0; --k) p_Transform(*src++, *dst++);
}

void MATRIX3D::TransformPoints(const _point3d* src, _point3d* dst, int n) const {
    if (src == dst) {
        TransformPoints(dst, n);
        return;
    }
    for (unsigned int k = static_cast<unsigned int>(n); k != 0; --k) p_Transform(*src++, *dst++);
}

void MATRIX3D::TransformVectors(POINT3D* vectors, int n) const {
    for (unsigned int k = static_cast<unsigned int>(n); k != 0; --k, ++vectors) {
        const POINT3D t = *vectors;
        v_Transform(t, *vectors);
    }
}

void MATRIX3D::TransformVectors(_point3d* vectors, int n) const {
    for (unsigned int k = static_cast<unsigned int>(n); k != 0; --k, ++vectors) {
        const _point3d t = *vectors;
        v_Transform(t, *vectors);
    }
}

void MATRIX3D::TransformVectors(const POINT3D* src, POINT3D* dst, int n) const {
    if (src == dst) {
        TransformVectors(dst, n);
        return;
    }
    for (unsigned int k = static_cast<unsigned int>(n); k != 0; --k) v_Transform(*src++, *dst++);
}

void MATRIX3D::TransformVectors(const _point3d* src, _point3d* dst, int n) const {
    if (src == dst) {
        TransformVectors(dst, n);
        return;
    }
    for (unsigned int k = static_cast<unsigned int>(n); k != 0; --k) v_Transform(*src++, *dst++);
}

matrix3d::matrix3d() {
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j < 4; ++j) m[i][j] = i == j ? 1.0f : 0.0f;
    }
}

matrix3d::matrix3d(const MATRIX3D& src) {
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j < 4; ++j) m[i][j] = static_cast<float>(src.m[i][j]);
    }
}

void matrix3d::p_Transform(const POINT3D& in, POINT3D& out) const {
    out.x = in.x * m[0][0] + in.y * m[1][0] + in.z * m[2][0] + m[3][0];
    out.y = in.x * m[0][1] + in.y * m[1][1] + in.z * m[2][1] + m[3][1];
    out.z = in.x * m[0][2] + in.y * m[1][2] + in.z * m[2][2] + m[3][2];
}

void matrix3d::v_Transform(const POINT3D& in, POINT3D& out) const {
    out.x = in.x * m[0][0] + in.y * m[1][0] + in.z * m[2][0];
    out.y = in.x * m[0][1] + in.y * m[1][1] + in.z * m[2][1];
    out.z = in.x * m[0][2] + in.y * m[1][2] + in.z * m[2][2];
}

void matrix3d::TransformPoints(const POINT3D* src, POINT3D* dst, int n) const {
    for (unsigned int k = static_cast<unsigned int>(n); k != 0; --k) p_Transform(*src++, *dst++);
}

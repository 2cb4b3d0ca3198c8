// Polar decomposition of a matrix into translation, rotation, stretch and sign, and back.
//
// The matrix is handled in column-vector form A (the transpose of the library's row form).
// A = Q * S with Q orthogonal and S symmetric positive semi-definite (scaled Newton iteration on
// the polar factor); S = U * K * U^T by Jacobi rotations; U is then "snuggled" to the signed
// axis permutation that leaves its rotation smallest.
#include "core/math/affine_decompose.h"

#include "core/math/matrix3d.h"
#include "core/math/trace_quaternion.h"

#include <cmath>
#include <utility>

namespace {

// Scales (c, s) to unit length; a zero pair becomes (1, 0).
void NormalizeOrUnit(double& c, double& s) {
    const double d = std::sqrt(c * c + s * s);
    if (d > 0) {
        c /= d;
        s /= d;
    } else {
        c = 1;
        s = 0;
    }
}

using tessera::math_detail::QuatD;

constexpr double kSqrtHalf = 0.7071067811865476;

struct Mat3 {
    double a[3][3];
};

Mat3 Identity3() {
    return Mat3{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
}

Mat3 Transposed(const Mat3& m) {
    Mat3 t;
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) t.a[i][j] = m.a[j][i];
    }
    return t;
}

Mat3 Mul(const Mat3& x, const Mat3& y) {
    Mat3 r;
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) {
            r.a[i][j] = x.a[i][0] * y.a[0][j] + x.a[i][1] * y.a[1][j] + x.a[i][2] * y.a[2][j];
        }
    }
    return r;
}

double Dot3(const double* u, const double* v) {
    return u[0] * v[0] + u[1] * v[1] + u[2] * v[2];
}

void Cross3(const double* u, const double* v, double* out) {
    out[0] = u[1] * v[2] - u[2] * v[1];
    out[1] = u[2] * v[0] - u[0] * v[2];
    out[2] = u[0] * v[1] - u[1] * v[0];
}

// Largest absolute column sum.
double NormOne(const Mat3& m) {
    double best = 0;
    for (int j = 0; j < 3; ++j) {
        const double s = std::fabs(m.a[0][j]) + std::fabs(m.a[1][j]) + std::fabs(m.a[2][j]);
        if (s > best) best = s;
    }
    return best;
}

// Largest absolute row sum.
double NormInf(const Mat3& m) {
    double best = 0;
    for (const auto& row : m.a) {
        const double s = std::fabs(row[0]) + std::fabs(row[1]) + std::fabs(row[2]);
        if (s > best) best = s;
    }
    return best;
}

// Transposed adjugate: its rows are the cross products of the other two rows of m.
Mat3 AdjugateTransposed(const Mat3& m) {
    Mat3 r;
    Cross3(m.a[1], m.a[2], r.a[0]);
    Cross3(m.a[2], m.a[0], r.a[1]);
    Cross3(m.a[0], m.a[1], r.a[2]);
    return r;
}

// Column holding the element of largest magnitude, or -1 for a zero matrix.
int ColumnOfLargest(const Mat3& m) {
    double best = 0;
    int col = -1;
    for (const auto& row : m.a) {
        for (int j = 0; j < 3; ++j) {
            if (std::fabs(row[j]) > best) {
                best = std::fabs(row[j]);
                col = j;
            }
        }
    }
    return col;
}

// Householder vector u (u.u = 2) such that (I - u u^T) v lies along the z axis. A zero v gives
// u = 0, the identity, rather than NaNs.
void MakeReflector(const double* v, double* u) {
    const double len = std::sqrt(Dot3(v, v));
    u[0] = v[0];
    u[1] = v[1];
    u[2] = v[2] + (v[2] < 0 ? -len : len);
    const double uu = Dot3(u, u);
    const double k = uu > 0 ? std::sqrt(2 / uu) : 0;
    for (int i = 0; i < 3; ++i) u[i] *= k;
}

// m = (I - u u^T) * m
void ReflectColumns(Mat3& m, const double* u) {
    for (int j = 0; j < 3; ++j) {
        const double s = u[0] * m.a[0][j] + u[1] * m.a[1][j] + u[2] * m.a[2][j];
        for (int i = 0; i < 3; ++i) m.a[i][j] -= u[i] * s;
    }
}

// m = m * (I - u u^T)
void ReflectRows(Mat3& m, const double* u) {
    for (auto& row : m.a) {
        const double s = Dot3(u, row);
        for (int j = 0; j < 3; ++j) row[j] -= u[j] * s;
    }
}

double Det(const Mat3& m) {
    double c[3];
    Cross3(m.a[1], m.a[2], c);
    return Dot3(m.a[0], c);
}

// (I - u1 u1^T) * d * (I - u2 u2^T) for a diagonal-block d; a singular matrix leaves the sign
// along its null direction free, and it is chosen so that the factor is a proper rotation.
Mat3 ReflectedRotation(Mat3 d, const double* u1, const double* u2, int freeRow) {
    Mat3 q = d;
    ReflectColumns(q, u1);
    ReflectRows(q, u2);
    if (Det(q) < 0) {
        d.a[freeRow][freeRow] = -d.a[freeRow][freeRow];
        q = d;
        ReflectColumns(q, u1);
        ReflectRows(q, u2);
    }
    return q;
}

// Orthogonal polar factor of a matrix of rank 1 or 0. Two reflections bring m to a single
// element at [2][2]; the factor keeps that element's sign.
Mat3 PolarFactorRank1(Mat3 m) {
    Mat3 d = Identity3();
    const int col = ColumnOfLargest(m);
    if (col < 0) return d;
    const double v1[3] = {m.a[0][col], m.a[1][col], m.a[2][col]};
    double u1[3], u2[3];
    MakeReflector(v1, u1);
    ReflectColumns(m, u1);
    MakeReflector(m.a[2], u2);
    ReflectRows(m, u2);
    if (m.a[2][2] < 0) d.a[2][2] = -1;
    return ReflectedRotation(d, u1, u2, 0);
}

// Orthogonal polar factor of a singular m whose transposed adjugate is adjT. Reflections
// clear the third row and column, leaving a 2x2 block whose polar factor has a closed form.
Mat3 PolarFactorRank2(Mat3 m, const Mat3& adjT) {
    const int col = ColumnOfLargest(adjT);
    if (col < 0) return PolarFactorRank1(m);
    // A column of the transposed adjugate is orthogonal to every column of m.
    const double v1[3] = {adjT.a[0][col], adjT.a[1][col], adjT.a[2][col]};
    double u1[3], u2[3], v2[3];
    MakeReflector(v1, u1);
    ReflectColumns(m, u1);
    Cross3(m.a[0], m.a[1], v2);
    MakeReflector(v2, u2);
    ReflectRows(m, u2);

    const double w = m.a[0][0], x = m.a[0][1], y = m.a[1][0], z = m.a[1][1];
    Mat3 q = Identity3();
    if (w * z > x * y) {
        // Positive 2x2 determinant: a rotation.
        double c = z + w, s = y - x;
        NormalizeOrUnit(c, s);
        q.a[0][0] = q.a[1][1] = c;
        q.a[0][1] = -s;
        q.a[1][0] = s;
    } else {
        // Otherwise a reflection.
        double c = z - w, s = y + x;
        NormalizeOrUnit(c, s);
        q.a[0][0] = -c;
        q.a[1][1] = c;
        q.a[0][1] = q.a[1][0] = s;
    }
    return ReflectedRotation(q, u1, u2, 2);
}

// A = Q * S. Returns the determinant of the last iterate, whose sign is that of det Q; 0 when
// A is singular, whose Q then comes from the rank-deficient procedures as a proper rotation.
double PolarDecompose(const Mat3& a, Mat3& q, Mat3& s) {
    constexpr double kTolerance = 1e-6;
    // Bounds the loop should non-finite elements keep the test from settling.
    constexpr int kMaxIterations = 100;

    // Iterates on the transpose; the polar factor of A^T is Q^T.
    Mat3 mk = Transposed(a);
    double mOne = NormOne(mk), mInf = NormInf(mk);
    double det = 0;
    for (int iteration = 0; iteration < kMaxIterations; ++iteration) {
        const Mat3 ek = AdjugateTransposed(mk);
        det = Dot3(mk.a[0], ek.a[0]);
        if (det == 0) {
            mk = PolarFactorRank2(mk, ek);
            break;
        }
        const double eOne = NormOne(ek), eInf = NormInf(ek);
        const double gamma = std::sqrt(std::sqrt((mOne * mInf) / (eOne * eInf)) / std::fabs(det));
        const double g1 = gamma * 0.5;
        const double g2 = 0.5 / (gamma * det);
        Mat3 change = mk;
        for (int i = 0; i < 3; ++i) {
            for (int j = 0; j < 3; ++j) {
                mk.a[i][j] = g1 * mk.a[i][j] + g2 * ek.a[i][j];
                change.a[i][j] -= mk.a[i][j];
            }
        }
        const double changeOne = NormOne(change);
        mOne = NormOne(mk);
        mInf = NormInf(mk);
        if (!(changeOne > mOne * kTolerance)) break;
    }
    q = Transposed(mk);
    s = Mul(mk, a);
    for (int i = 0; i < 3; ++i) {
        for (int j = i; j < 3; ++j) s.a[i][j] = s.a[j][i] = 0.5 * (s.a[i][j] + s.a[j][i]);
    }
    return det;
}

// S = U * diag(k) * U^T for symmetric S, by cyclic Jacobi rotations.
void SpectralDecompose(const Mat3& s, Mat3& u, double* k) {
    constexpr int kMaxSweeps = 20;
    u = Identity3();
    double diag[3] = {s.a[0][0], s.a[1][1], s.a[2][2]};
    // off[i] couples the two axes other than i.
    double off[3] = {s.a[1][2], s.a[2][0], s.a[0][1]};
    for (int sweep = 0; sweep < kMaxSweeps; ++sweep) {
        if (std::fabs(off[0]) + std::fabs(off[1]) + std::fabs(off[2]) == 0) break;
        for (int i = 2; i >= 0; --i) {
            const int p = (i + 1) % 3;
            const int q = (p + 1) % 3;
            const double a = off[i];
            if (a == 0) continue;
            const double g = 100.0 * std::fabs(a);
            // Too small to change either diagonal element: drop it.
            if (std::fabs(diag[p]) + g == std::fabs(diag[p]) &&
                std::fabs(diag[q]) + g == std::fabs(diag[q])) {
                off[i] = 0;
                continue;
            }
            const double h = diag[q] - diag[p];
            double t;
            if (std::fabs(h) + g == std::fabs(h)) {
                t = a / h;
            } else {
                const double theta = 0.5 * h / a;
                t = 1.0 / (std::fabs(theta) + std::sqrt(theta * theta + 1.0));
                if (theta < 0) t = -t;
            }
            const double c = 1.0 / std::sqrt(t * t + 1.0);
            const double sn = t * c;
            const double tau = sn / (c + 1.0);
            const double ta = t * a;
            off[i] = 0;
            diag[p] -= ta;
            diag[q] += ta;
            const double offQ = off[q];
            off[q] -= sn * (off[p] + tau * off[q]);
            off[p] += sn * (offQ - tau * off[p]);
            for (auto& row : u.a) {
                const double up = row[p], uq = row[q];
                row[p] -= sn * (uq + tau * up);
                row[q] += sn * (up - tau * uq);
            }
        }
    }
    for (int i = 0; i < 3; ++i) k[i] = diag[i];
}

QuatD QuatOf(const Mat3& m) {
    double full[4][4] = {};
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) full[i][j] = m.a[i][j];
    }
    full[3][3] = 1;
    return tessera::math_detail::QuaternionByTrace(full);
}

QuatD Product(const QuatD& a, const QuatD& b) {
    return QuatD{a.w * b.x + a.x * b.w + a.y * b.z - a.z * b.y,
                 a.w * b.y + a.y * b.w + a.z * b.x - a.x * b.z,
                 a.w * b.z + a.z * b.w + a.x * b.y - a.y * b.x,
                 a.w * b.w - a.x * b.x - a.y * b.y - a.z * b.z};
}

// The 24 rotations that map the coordinate axes onto themselves, identity first.
constexpr QuatD kAxisTurns[24] = {
    {0, 0, 0, 1},
    {1, 0, 0, 0},
    {0, 1, 0, 0},
    {0, 0, 1, 0},
    {kSqrtHalf, 0, 0, kSqrtHalf},
    {-kSqrtHalf, 0, 0, kSqrtHalf},
    {0, kSqrtHalf, 0, kSqrtHalf},
    {0, -kSqrtHalf, 0, kSqrtHalf},
    {0, 0, kSqrtHalf, kSqrtHalf},
    {0, 0, -kSqrtHalf, kSqrtHalf},
    {kSqrtHalf, kSqrtHalf, 0, 0},
    {kSqrtHalf, -kSqrtHalf, 0, 0},
    {kSqrtHalf, 0, kSqrtHalf, 0},
    {kSqrtHalf, 0, -kSqrtHalf, 0},
    {0, kSqrtHalf, kSqrtHalf, 0},
    {0, kSqrtHalf, -kSqrtHalf, 0},
    {0.5, 0.5, 0.5, 0.5},
    {0.5, 0.5, -0.5, 0.5},
    {0.5, -0.5, 0.5, 0.5},
    {0.5, -0.5, -0.5, 0.5},
    {-0.5, 0.5, 0.5, 0.5},
    {-0.5, 0.5, -0.5, 0.5},
    {-0.5, -0.5, 0.5, 0.5},
    {-0.5, -0.5, -0.5, 0.5},
};

// Which axis of the original frame each axis of the turned frame came from, for an axis turn
// p: column i of p's rotation matrix is +-e[from[i]].
void AxisSources(const QuatD& p, int* from) {
    const double x = p.x, y = p.y, z = p.z, w = p.w;
    const double r[3][3] = {
        {1 - 2 * (y * y + z * z), 2 * (x * y - w * z), 2 * (x * z + w * y)},
        {2 * (x * y + w * z), 1 - 2 * (x * x + z * z), 2 * (y * z - w * x)},
        {2 * (x * z - w * y), 2 * (y * z + w * x), 1 - 2 * (x * x + y * y)},
    };
    for (int i = 0; i < 3; ++i) {
        int best = 0;
        for (int j = 1; j < 3; ++j) {
            if (std::fabs(r[j][i]) > std::fabs(r[best][i])) best = j;
        }
        from[i] = best;
    }
}

// The stretch S = U K U^T is unchanged when U's axes are permuted or negated (with K permuted
// alike), and, where stretch factors are equal, when U turns within their plane. Picks the
// turn p that brings u * p nearest the identity, permutes k to match and returns p.
QuatD Snuggle(const QuatD& u, double* k) {
    if (k[0] == k[1] && k[1] == k[2]) {
        // Any rotation will do: undo u entirely.
        return QuatD{-u.x, -u.y, -u.z, u.w};
    }

    int best = 0;
    double bestW = -1;
    for (int c = 0; c < 24; ++c) {
        const double w = std::fabs(Product(u, kAxisTurns[c]).w);
        if (w > bestW) {
            bestW = w;
            best = c;
        }
    }
    QuatD p = kAxisTurns[best];
    int from[3];
    AxisSources(p, from);
    const double old[3] = {k[0], k[1], k[2]};
    for (int i = 0; i < 3; ++i) k[i] = old[from[i]];

    // Two equal factors: a turn about the odd axis is free; take the one that maximizes w.
    int odd = -1;
    if (k[0] == k[1]) {
        odd = 2;
    } else if (k[0] == k[2]) {
        odd = 1;
    } else if (k[1] == k[2]) {
        odd = 0;
    }
    if (odd >= 0) {
        const QuatD v = Product(u, p);
        const double vc = odd == 0 ? v.x : odd == 1 ? v.y : v.z;
        const double t = std::sqrt(v.w * v.w + vc * vc);
        if (t > 0) {
            QuatD twist{0, 0, 0, v.w / t};
            const double along = -vc / t;
            if (odd == 0) twist.x = along;
            if (odd == 1) twist.y = along;
            if (odd == 2) twist.z = along;
            p = Product(p, twist);
        }
    }
    return p;
}

Mat3 UpperColumnForm(const MATRIX3D& m) {
    Mat3 a;
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) a.a[i][j] = m.m[j][i];
    }
    return a;
}

QUAT Narrow(const QuatD& q) {
    return QUAT(static_cast<float>(q.x), static_cast<float>(q.y), static_cast<float>(q.z),
                static_cast<float>(q.w));
}

} // namespace

void MATRIX3D::AffineDecompose(AFFINEPARTS& parts) const {
    const Mat3 a = UpperColumnForm(*this);
    const double t[3] = {m[3][0], m[3][1], m[3][2]};

    Mat3 q, s;
    const double det = PolarDecompose(a, q, s);
    double f = 1;
    if (det < 0) {
        for (auto& row : q.a) {
            for (double& e : row) e = -e;
        }
        f = -1;
    }
    const QuatD rotation = QuatOf(q);

    Mat3 u;
    double k[3];
    SpectralDecompose(s, u, k);
    QuatD stretch = QuatOf(u);
    stretch = Product(stretch, Snuggle(stretch, k));

    parts.t = POINT3D(static_cast<float>(t[0]), static_cast<float>(t[1]), static_cast<float>(t[2]));
    parts.q = Narrow(rotation);
    parts.u = Narrow(stretch);
    parts.k = POINT3D(static_cast<float>(k[0]), static_cast<float>(k[1]), static_cast<float>(k[2]));
    parts.f = static_cast<float>(f);
    // From the column-vector convention of the decomposition to the library's.
    parts.q.Invert();
}

// The stretch rotation u is not applied: the result is exact only for an axis-aligned stretch,
// which is every matrix built from rotation, axis scale, mirror and translation.
void MATRIX3D::AffineCompose(const AFFINEPARTS& parts) {
    SetScale(parts.k);
    if (parts.f < 0) Scale(POINT3D(-1, -1, -1));
    Rotate(parts.q);
    Offset(parts.t);
}

float MATRIX3D::Sign() const {
    Mat3 q, s;
    return PolarDecompose(UpperColumnForm(*this), q, s) < 0 ? -1.0f : 1.0f;
}

void MATRIX3D::GetRotate(QUAT& q) const {
    AFFINEPARTS parts;
    AffineDecompose(parts);
    q = parts.q;
}

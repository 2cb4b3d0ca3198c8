// Euler-angle extraction in any of the 24 axis orders, from a matrix or a quaternion.
#include "core/math/matrix3d.h"
#include "core/math/quaternion.h"
#include "core/services/portable_math.h"

#include <cfloat>
#include <cmath>
#include <utility>

namespace {

// A 4x4 in column-vector form (v' = M v), as the extraction method is written for.
struct ColumnMatrix {
    double m[4][4];
};

struct EulerTriple {
    double a, b, c;
    int code;
};

// Order codes pack four bits: bit 0 rotating frame, bit 1 first axis repeated, bit 2 odd
// parity, bits 3-4 the inner axis. Indexed by the low byte of the caller's order value: the
// static-axis code, then the rotating-axis one.
constexpr int kOrderCodes[12][2] = {
    {0, 21},  // XYZ
    {2, 3},   // XYX
    {4, 9},   // XZY
    {6, 7},   // XZX
    {8, 5},   // YZX
    {10, 11}, // YZY
    {12, 17}, // YXZ
    {14, 15}, // YXY
    {16, 13}, // ZXY
    {18, 19}, // ZXZ
    {20, 1},  // ZYX
    {22, 23}, // ZYZ
};

int OrderCode(int order) {
    const int sequence = order & 0xFF;
    if (sequence >= 12) return 0;
    return kOrderCodes[sequence][(order & 0x100) != 0 ? 1 : 0];
}

EulerTriple Extract(const ColumnMatrix& cm, int code) {
    static constexpr int kNext[4] = {1, 2, 0, 1};
    const auto& M = cm.m;
    const bool rotating = (code & 1) != 0;
    const bool repeated = (code & 2) != 0;
    const int parity = (code >> 2) & 1;
    const int i = (code >> 3) & 3;
    const int j = kNext[i + parity];
    const int k = kNext[i + 1 - parity];
    // Below this the middle angle is at gimbal lock and the outer angles are not separable.
    const double lock = 16 * static_cast<double>(FLT_EPSILON);

    EulerTriple e{0, 0, 0, code};
    if (repeated) {
        const double sy = std::sqrt(M[i][j] * M[i][j] + M[i][k] * M[i][k]);
        if (sy > lock) {
            e.a = q5math::Atan2(M[i][j], M[i][k]);
            e.b = q5math::Atan2(sy, M[i][i]);
            e.c = q5math::Atan2(M[j][i], -M[k][i]);
        } else {
            e.a = q5math::Atan2(-M[j][k], M[j][j]);
            e.b = q5math::Atan2(sy, M[i][i]);
        }
    } else {
        const double cy = std::sqrt(M[i][i] * M[i][i] + M[j][i] * M[j][i]);
        if (cy > lock) {
            e.a = q5math::Atan2(M[k][j], M[k][k]);
            e.b = q5math::Atan2(-M[k][i], cy);
            e.c = q5math::Atan2(M[j][i], M[i][i]);
        } else {
            e.a = q5math::Atan2(-M[j][k], M[j][j]);
            e.b = q5math::Atan2(-M[k][i], cy);
        }
    }
    if (parity != 0) {
        e.a = -e.a;
        e.b = -e.b;
        e.c = -e.c;
    }
    if (rotating) std::swap(e.a, e.c);
    return e;
}

POINT3D ToPoint(const EulerTriple& e) {
    return POINT3D(static_cast<float>(e.a), static_cast<float>(e.b), static_cast<float>(e.c));
}

} // namespace

POINT3D MATRIX3D::GetEulerAngles(int order) const {
    ColumnMatrix cm;
    for (int r = 0; r < 4; ++r) {
        for (int c = 0; c < 4; ++c) cm.m[r][c] = m[c][r];
    }
    return ToPoint(Extract(cm, OrderCode(order)));
}

POINT3D QUAT::GetEulerAngles(int order) const {
    const double qx = x, qy = y, qz = z, qw = w;
    const double n = qx * qx + qy * qy + qz * qz + qw * qw;
    const double s = n > 0 ? 2.0 / n : 0.0;
    const double xs = qx * s, ys = qy * s, zs = qz * s;
    const double wx = qw * xs, wy = qw * ys, wz = qw * zs;
    const double xx = qx * xs, xy = qx * ys, xz = qx * zs;
    const double yy = qy * ys, yz = qy * zs, zz = qz * zs;

    ColumnMatrix cm{};
    auto& M = cm.m;
    M[0][0] = 1.0 - (yy + zz);
    M[0][1] = xy + wz;
    M[0][2] = xz - wy;
    M[1][0] = xy - wz;
    M[1][1] = 1.0 - (xx + zz);
    M[1][2] = yz + wx;
    M[2][0] = xz + wy;
    M[2][1] = yz - wx;
    M[2][2] = 1.0 - (xx + yy);
    M[3][3] = 1.0;
    return ToPoint(Extract(cm, OrderCode(order)));
}

// Quaternion of a rotation matrix by the trace method, shared by QUAT and the decomposition.
#pragma once

#include <cmath>

namespace tessera::math_detail {

struct QuatD {
    double x, y, z, w;
};

// Reads the matrix as given (no transposition); m[3][3] other than 1 scales the result by
// 1/sqrt(m[3][3]).
inline QuatD QuaternionByTrace(const double (&m)[4][4]) {
    QuatD q{0, 0, 0, 1};
    const double tr = m[0][0] + m[1][1] + m[2][2];
    if (tr >= 0) {
        double s = std::sqrt(tr + m[3][3]);
        q.w = s / 2;
        s = 0.5 / s;
        q.x = (m[2][1] - m[1][2]) * s;
        q.y = (m[0][2] - m[2][0]) * s;
        q.z = (m[1][0] - m[0][1]) * s;
    } else {
        int i = 0;
        if (m[1][1] > m[0][0]) i = 1;
        if (m[2][2] > m[i][i]) i = 2;
        if (i == 0) {
            double s = std::sqrt(m[0][0] - (m[1][1] + m[2][2]) + m[3][3]);
            q.x = s / 2;
            s = 0.5 / s;
            q.y = (m[0][1] + m[1][0]) * s;
            q.z = (m[2][0] + m[0][2]) * s;
            q.w = (m[2][1] - m[1][2]) * s;
        } else if (i == 1) {
            double s = std::sqrt(m[1][1] - (m[2][2] + m[0][0]) + m[3][3]);
            q.y = s / 2;
            s = 0.5 / s;
            q.z = (m[1][2] + m[2][1]) * s;
            q.x = (m[0][1] + m[1][0]) * s;
            q.w = (m[0][2] - m[2][0]) * s;
        } else {
            double s = std::sqrt(m[2][2] - (m[0][0] + m[1][1]) + m[3][3]);
            q.z = s / 2;
            s = 0.5 / s;
            q.x = (m[2][0] + m[0][2]) * s;
            q.y = (m[1][2] + m[2][1]) * s;
            q.w = (m[1][0] - m[0][1]) * s;
        }
    }
    if (m[3][3] != 1) {
        const double k = 1 / std::sqrt(m[3][3]);
        q.x *= k;
        q.y *= k;
        q.z *= k;
        q.w *= k;
    }
    return q;
}

} // namespace tessera::math_detail

// Rotation matrices from single-axis angles, Euler triples, axis-angle pairs and quaternions.
#include "core/math/rotation.h"
#include "core/math/matrix3d.h"
#include "core/math/quaternion.h"
#include "core/services/portable_math.h"

#include <algorithm>
#include <cmath>

void MATRIX3D::SetRotateX(double a) {
    IdentityMatrix();
    const double c = q5math::Cos(a), s = q5math::Sin(a);
    m[1][1] = c;
    m[1][2] = s;
    m[2][1] = -s;
    m[2][2] = c;
}

void MATRIX3D::SetRotateY(double a) {
    IdentityMatrix();
    const double c = q5math::Cos(a), s = q5math::Sin(a);
    m[0][0] = c;
    m[0][2] = -s;
    m[2][0] = s;
    m[2][2] = c;
}

void MATRIX3D::SetRotateZ(double a) {
    IdentityMatrix();
    const double c = q5math::Cos(a), s = q5math::Sin(a);
    m[0][0] = c;
    m[0][1] = s;
    m[1][0] = -s;
    m[1][1] = c;
}

void MATRIX3D::SetRotate(const POINT3D& euler) {
    SetRotate(_point3d(euler.x, euler.y, euler.z));
}

void MATRIX3D::SetRotate(const _point3d& euler) {
    SetRotateX(euler.x);
    MATRIX3D r(false);
    r.SetRotateY(euler.y);
    Transform(r);
    r.SetRotateZ(euler.z);
    Transform(r);
}

void MATRIX3D::SetRotateYPW(float a, float b, float c) {
    IdentityMatrix();
    RotateZ(c);
    RotateX(b);
    RotateY(a);
}

// The unit axis is rebuilt from its azimuth and polar angle rather than by dividing by the
// length; a zero axis turns about +z.
void MATRIX3D::SetRotate(const _point3d& axis, double angle) {
    const double pi = 4 * q5math::Atan(1.0);
    const double len = std::sqrt(axis.x * axis.x + axis.y * axis.y + axis.z * axis.z);
    double phi = 0, cost = 1, sint = 0;
    if (len != 0) {
        if (axis.x == 0) {
            phi = axis.y >= 0 ? pi / 2 : 3 * pi / 2;
        } else {
            phi = q5math::Atan(axis.y / axis.x);
            if (axis.x < 0) phi += pi;
        }
        cost = axis.z / len;
        sint = std::sqrt(std::max(0.0, 1 - cost * cost));
    }
    const double ux = sint * q5math::Cos(phi), uy = sint * q5math::Sin(phi), uz = cost;
    const double c = q5math::Cos(angle), s = q5math::Sin(angle), d = 1 - c;

    IdentityMatrix();
    m[0][0] = c + d * ux * ux;
    m[1][1] = c + d * uy * uy;
    m[2][2] = c + d * uz * uz;
    m[0][1] = d * ux * uy + s * uz;
    m[1][0] = d * ux * uy - s * uz;
    m[0][2] = d * ux * uz - s * uy;
    m[2][0] = d * ux * uz + s * uy;
    m[1][2] = d * uy * uz + s * ux;
    m[2][1] = d * uy * uz - s * ux;
}

void MATRIX3D::SetRotate(const ANGLEAXIS& aa) {
    SetRotate(_point3d(aa.axis.x, aa.axis.y, aa.axis.z), aa.angle);
}

void MATRIX3D::SetRotate(const ANGLEAXISex& aa) {
    SetRotate(_point3d(aa.origin.x, aa.origin.y, aa.origin.z),
              _point3d(aa.axis.x, aa.axis.y, aa.axis.z), aa.angle);
}

// Rotation about the axis through origin: points on that axis stay where they are.
void MATRIX3D::SetRotate(const _point3d& origin, const _point3d& axis, double angle) {
    SetRotate(axis, angle);
    if (origin.x == 0 && origin.y == 0 && origin.z == 0) return;
    const _point3d turned = VectorTransform(origin);
    m[3][0] = origin.x - turned.x;
    m[3][1] = origin.y - turned.y;
    m[3][2] = origin.z - turned.z;
}

// Products in float as the quaternion holds them; the diagonal's subtraction from 1 in double.
// The quaternion is used as it is, not normalized.
void MATRIX3D::SetRotate(const QUAT& q) {
    const float xx = q.x * q.x, yy = q.y * q.y, zz = q.z * q.z;
    const float xy = q.x * q.y, xz = q.x * q.z, yz = q.y * q.z;
    const float wx = q.w * q.x, wy = q.w * q.y, wz = q.w * q.z;
    IdentityMatrix();
    m[0][0] = 1.0 - static_cast<double>(2.0f * (yy + zz));
    m[0][1] = 2.0f * (xy - wz);
    m[0][2] = 2.0f * (xz + wy);
    m[1][0] = 2.0f * (xy + wz);
    m[1][1] = 1.0 - static_cast<double>(2.0f * (xx + zz));
    m[1][2] = 2.0f * (yz - wx);
    m[2][0] = 2.0f * (xz - wy);
    m[2][1] = 2.0f * (yz + wx);
    m[2][2] = 1.0 - static_cast<double>(2.0f * (xx + yy));
}

void MATRIX3D::RotateX(double a) {
    Rotate(_point3d(a, 0, 0));
}

void MATRIX3D::RotateY(double a) {
    Rotate(_point3d(0, a, 0));
}

void MATRIX3D::RotateZ(double a) {
    Rotate(_point3d(0, 0, a));
}

void MATRIX3D::Rotate(const POINT3D& euler) {
    Rotate(_point3d(euler.x, euler.y, euler.z));
}

void MATRIX3D::Rotate(const _point3d& euler) {
    MATRIX3D r(false);
    r.SetRotateX(euler.x);
    Transform(r);
    r.SetRotateY(euler.y);
    Transform(r);
    r.SetRotateZ(euler.z);
    Transform(r);
}

void MATRIX3D::Rotate(const ANGLEAXIS& aa) {
    MATRIX3D r(false);
    r.SetRotate(aa);
    Transform(r);
}

void MATRIX3D::Rotate(const ANGLEAXISex& aa) {
    if (aa.angle == 0) return;
    MATRIX3D r(false);
    r.SetRotate(aa);
    Transform(r);
}

void MATRIX3D::Rotate(const QUAT& q) {
    MATRIX3D r(false);
    r.SetRotate(q);
    Transform(r);
}

void MATRIX3D::GetRotate(ANGLEAXIS& aa) const {
    aa = ANGLEAXIS(*this);
}

// The vector part is taken as the axis as it stands, so the axis of a matrix's quaternion
// comes out negated relative to the axis the matrix was built from; the sign relation between
// the three forms is long-standing and kept.
ANGLEAXIS::ANGLEAXIS(const QUAT& q) {
    const double n = static_cast<double>(q.x) * q.x + static_cast<double>(q.y) * q.y +
                     static_cast<double>(q.z) * q.z;
    if (n > 0) {
        angle =
            static_cast<float>(2 * q5math::Acos(std::clamp(static_cast<double>(q.w), -1.0, 1.0)));
        const double k = 1 / std::sqrt(n);
        axis = POINT3D(static_cast<float>(q.x * k), static_cast<float>(q.y * k),
                       static_cast<float>(q.z * k));
    } else {
        axis = POINT3D(1, 0, 0);
        angle = 0;
    }
}

ANGLEAXIS::ANGLEAXIS(const MATRIX3D& m) : ANGLEAXIS(QUAT(m)) {}

ANGLEAXIS::ANGLEAXIS(const POINT3D& euler) : ANGLEAXIS(QUAT(euler)) {}

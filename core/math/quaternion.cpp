// Quaternion conversions, arithmetic and spherical interpolation.
#include "core/math/quaternion.h"

#include "core/math/matrix3d.h"
#include "core/math/rotation.h"
#include "core/math/trace_quaternion.h"
#include "core/services/portable_math.h"

#include <cmath>
#include <numbers>

QUAT::QUAT(const MATRIX3D& m) {
    const auto q = tessera::math_detail::QuaternionByTrace(m.m);
    x = static_cast<float>(q.x);
    y = static_cast<float>(q.y);
    z = static_cast<float>(q.z);
    w = static_cast<float>(q.w);
}

QUAT::QUAT(const ANGLEAXIS& aa) {
    MATRIX3D m(false);
    m.SetRotate(ANGLEAXISex(POINT3D(0, 0, 0), aa.axis, aa.angle));
    *this = QUAT(m);
}

QUAT::QUAT(const POINT3D& euler) {
    MATRIX3D m(false);
    m.SetRotate(euler);
    *this = QUAT(m);
}

QUAT::QUAT(float t, QUAT& a, QUAT& b, int spin) {
    double cosom = static_cast<double>(a.x) * b.x + static_cast<double>(a.y) * b.y +
                   static_cast<double>(a.z) * b.z + static_cast<double>(a.w) * b.w;
    // Take the shorter arc: q and -q are the same rotation.
    const bool flip = cosom < 0;
    if (flip) cosom = -cosom;
    if (cosom > 1) cosom = 1;
    double wa, wb;
    if (1 - cosom >= 0.001) {
        const double om = q5math::Acos(cosom);
        const double phi = om + spin * std::numbers::pi;
        const double sinom = q5math::Sin(om);
        wa = q5math::Sin(om - t * phi) / sinom;
        wb = q5math::Sin(t * phi) / sinom;
    } else {
        // Nearly equal ends: the sines vanish, a linear blend is as good.
        wa = 1.0 - t;
        wb = t;
    }
    if (flip) wb = -wb;
    x = static_cast<float>(wa * a.x + wb * b.x);
    y = static_cast<float>(wa * a.y + wb * b.y);
    z = static_cast<float>(wa * a.z + wb * b.z);
    w = static_cast<float>(wa * a.w + wb * b.w);
}

float QUAT::Length() const {
    return std::sqrt(w * w + x * x + y * y + z * z);
}

void QUAT::Normalize() {
    const float len = Length();
    if (len == 0) return;
    w /= len;
    x /= len;
    y /= len;
    z /= len;
}

void QUAT::Invert() {
    const float n = w * w + x * x + y * y + z * z;
    if (!(n > 0)) return;
    const double inv = 1.0 / n;
    x = static_cast<float>(-x * inv);
    y = static_cast<float>(-y * inv);
    z = static_cast<float>(-z * inv);
    w = static_cast<float>(w * inv);
}

// Converts the rotation between a y-up and a z-up frame.
void QUAT::Flip() {
    MATRIX3D m(false);
    m.SetRotate(*this);
    m.Flip();
    m.GetRotate(*this);
}

QUAT operator*(const QUAT& a, const QUAT& b) {
    return QUAT(a.w * b.x + a.x * b.w + a.y * b.z - a.z * b.y,
                a.w * b.y + a.y * b.w + a.z * b.x - a.x * b.z,
                a.w * b.z + a.z * b.w + a.x * b.y - a.y * b.x,
                a.w * b.w - a.x * b.x - a.y * b.y - a.z * b.z);
}

// a times the conjugate of b, normalized. The divisor is the conjugate squared rather than the
// norm of b; after normalizing it only decides the overall sign, and a quarter-turn b (whose
// conjugate squared has w = 0) gives a non-finite result. Long-standing behaviour, kept.
QUAT operator/(const QUAT& a, const QUAT& b) {
    const QUAT conj(-b.x, -b.y, -b.z, b.w);
    QUAT n = a * conj;
    const QUAT d = conj * conj;
    n.x /= d.w;
    n.y /= d.w;
    n.z /= d.w;
    n.w /= d.w;
    n.Normalize();
    return n;
}

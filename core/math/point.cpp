// Operations of the point types and the quantised normal encoding.
#include "core/math/point.h"

#include "core/math/matrix3d.h"
#include "core/math/quaternion.h"
#include "core/services/portable_math.h"

#include <cmath>
#include <cstdint>
#include <numbers>

namespace {

constexpr double kPi = std::numbers::pi;
constexpr double kTwoPi = 2.0 * std::numbers::pi;

// Halves round away from zero; a step that is not positive leaves the value alone.
double RoundToStep(double c, double step) {
    if (!(step > 0)) return c;
    if (c > 0) return std::floor(c / step + 0.5) * step;
    return -std::floor(-c / step + 0.5) * step;
}

// Angle of (a, b) from the +a axis in [0, 2pi]; (a > 0, b = 0) gives exactly 2pi, which the
// encoder folds back to 0.
double FullTurnAngle(double a, double b) {
    if (a == 0) {
        if (b == 0) return 0;
        return b > 0 ? kPi / 2 : 3 * kPi / 2;
    }
    const double t = q5math::Atan(std::fabs(b) / std::fabs(a));
    if (b > 0) return a > 0 ? t : kPi - t;
    return a > 0 ? kTwoPi - t : kPi + t;
}

double FoldFullTurn(double angle) {
    return angle >= kTwoPi ? angle - kTwoPi : angle;
}

// Integer part, kept to its low 16 bits. Values no integer type holds (NaN from a NaN vector)
// give 0, as the truncating conversion of the hardware does.
unsigned int Low16OfIntegerPart(double v) {
    if (!(std::fabs(v) < 9.2e18)) return 0;
    return static_cast<unsigned int>(static_cast<std::uint64_t>(static_cast<std::int64_t>(v)) &
                                     0xFFFFu);
}

template <typename P, typename T> void LimitComponents(P& p, T minimum, T maximum) {
    for (int i = 0; i < 3; ++i) {
        if (minimum > p[i]) {
            p[i] = minimum;
        } else if (p[i] > maximum) {
            p[i] = maximum;
        }
    }
}

template <typename P> void AbsComponents(P& p) {
    for (int i = 0; i < 3; ++i) {
        if (p[i] < 0) p[i] = -p[i];
    }
}

} // namespace

float POINT2D::Length() const {
    return std::sqrt(x * x + y * y);
}

float POINT3D::Length() const {
    return std::sqrt(x * x + y * y + z * z);
}

double _point3d::Length() const {
    return std::sqrt(x * x + y * y + z * z);
}

void POINT3D::Normalize() {
    const float s = x * x + y * y + z * z;
    // A vector already of unit length keeps its exact bits.
    if (s == 1.0f) return;
    const float len = std::sqrt(s);
    if (len == 0.0f) {
        x = 0;
        y = 0;
        z = 1;
        return;
    }
    x /= len;
    y /= len;
    z /= len;
}

void _point3d::Normalize() {
    const double s = x * x + y * y + z * z;
    if (s == 1.0) return;
    const double len = std::sqrt(s);
    if (len == 0.0) {
        x = 0;
        y = 0;
        z = 1;
        return;
    }
    const double inv = 1.0 / len;
    x *= inv;
    y *= inv;
    z *= inv;
}

void POINT3D::Limit(float minimum, float maximum) {
    LimitComponents(*this, minimum, maximum);
}

void _point3d::Limit(double minimum, double maximum) {
    LimitComponents(*this, minimum, maximum);
}

void POINT3D::Round(float step) {
    for (int i = 0; i < 3; ++i) (*this)[i] = static_cast<float>(RoundToStep((*this)[i], step));
}

void _point3d::Round(double step) {
    for (int i = 0; i < 3; ++i) (*this)[i] = RoundToStep((*this)[i], step);
}

void POINT3D::ABS() {
    AbsComponents(*this);
}

void _point3d::ABS() {
    AbsComponents(*this);
}

void POINT3D::Swap(int mode) {
    const POINT3D o = *this;
    switch (mode) {
    case 1:
        *this = POINT3D(o.x, o.z, o.y);
        break;
    case 2:
        *this = POINT3D(o.y, o.x, o.z);
        break;
    case 3:
        *this = POINT3D(o.y, o.z, o.x);
        break;
    case 4:
        *this = POINT3D(o.z, o.x, o.y);
        break;
    case 5:
        *this = POINT3D(o.z, o.y, o.x);
        break;
    default:
        break;
    }
}

unsigned int POINT3D::EncodeNormal(unsigned int steps) const {
    const double dx = x, dy = y, dz = z;
    const double r = std::sqrt(dx * dx + dy * dy);
    double theta = FoldFullTurn(FullTurnAngle(dx, dy));
    double phi = FoldFullTurn(FullTurnAngle(dz, r));
    // Snapping to 0.1 mrad first makes directions that differ only by rounding noise encode
    // alike.
    theta = FoldFullTurn(RoundToStep(theta, 0.0001));
    phi = FoldFullTurn(RoundToStep(phi, 0.0001));
    if (q5math::Sin(phi) == 0) theta = 0;
    theta = theta / kTwoPi * steps;
    phi = phi / kPi * steps;
    const unsigned int low = Low16OfIntegerPart(theta + 0.5);
    const unsigned int high = Low16OfIntegerPart(phi + 0.5);
    return low | (high << 16);
}

void POINT3D::DecodeNormal(unsigned int code, unsigned int steps) {
    const double a = code & 0xFFFFu;
    const double b = code >> 16;
    const double theta = a / steps * kTwoPi;
    const double phi = b / steps * kPi;
    x = static_cast<float>(q5math::Cos(theta) * q5math::Sin(phi));
    y = static_cast<float>(q5math::Sin(theta) * q5math::Sin(phi));
    z = static_cast<float>(q5math::Cos(phi));
}

POINT3D::POINT3D(const QUAT& q) : x(0), y(0), z(0) {
    MATRIX3D m;
    m.SetRotate(q);
    m.GetRotate(*this);
}

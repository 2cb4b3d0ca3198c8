// Full decomposition of a matrix into translation, Euler rotation, scale, shear and perspective.
#include "core/math/matrix3d.h"
#include "core/services/portable_math.h"

#include <algorithm>
#include <cmath>

namespace {

double Dot(const _point3d& a, const _point3d& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

_point3d Cross(const _point3d& a, const _point3d& b) {
    return _point3d(a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x);
}

// a - s * b
_point3d Sub(const _point3d& a, double s, const _point3d& b) {
    return _point3d(a.x - s * b.x, a.y - s * b.y, a.z - s * b.z);
}

} // namespace

bool MATRIX3D::Decompose(_point3d* translation, _point3d* rotation, _point3d* scale,
                         _point3d* shear, _point4d* perspective) const {
    MATRIX3D L(*this);
    const double w = L.m[3][3];
    if (w == 0) return false;
    for (auto& row : L.m) {
        for (double& e : row) e /= w;
    }

    MATRIX3D P(L);
    P.m[0][3] = P.m[1][3] = P.m[2][3] = 0;
    P.m[3][3] = 1;
    if (P.Det() == 0) return false;

    _point4d persp(0, 0, 0, 0);
    if (L.m[0][3] != 0 || L.m[1][3] != 0 || L.m[2][3] != 0) {
        const double rhs[4] = {L.m[0][3], L.m[1][3], L.m[2][3], L.m[3][3]};
        MATRIX3D inv(false);
        inv.Invert(P);
        // rhs as a row vector times the transpose of the inverse.
        double out[4];
        for (int j = 0; j < 4; ++j) {
            out[j] = rhs[0] * inv.m[j][0] + rhs[1] * inv.m[j][1] + rhs[2] * inv.m[j][2] +
                     rhs[3] * inv.m[j][3];
        }
        persp = _point4d(out[0], out[1], out[2], out[3]);
        L.m[0][3] = L.m[1][3] = L.m[2][3] = 0;
        L.m[3][3] = 1;
    }

    const _point3d move(L.m[3][0], L.m[3][1], L.m[3][2]);

    // Gram-Schmidt on the axis rows: their lengths are the scale, the leftover dot products
    // the shear.
    _point3d r0(L.m[0][0], L.m[0][1], L.m[0][2]);
    _point3d r1(L.m[1][0], L.m[1][1], L.m[1][2]);
    _point3d r2(L.m[2][0], L.m[2][1], L.m[2][2]);
    _point3d sc, sh;
    sc.x = r0.Length();
    r0.Normalize();
    sh.x = Dot(r0, r1);
    r1 = Sub(r1, sh.x, r0);
    sc.y = r1.Length();
    r1.Normalize();
    sh.x /= sc.y;
    sh.y = Dot(r0, r2);
    r2 = Sub(r2, sh.y, r0);
    sh.z = Dot(r1, r2);
    r2 = Sub(r2, sh.z, r1);
    sc.z = r2.Length();
    r2.Normalize();
    sh.y /= sc.z;
    sh.z /= sc.z;

    // A mirrored frame is carried by negative scales so that the rows form a rotation.
    if (Dot(r0, Cross(r1, r2)) < 0) {
        sc = _point3d(-sc.x, -sc.y, -sc.z);
        r0 = _point3d(-r0.x, -r0.y, -r0.z);
        r1 = _point3d(-r1.x, -r1.y, -r1.z);
        r2 = _point3d(-r2.x, -r2.y, -r2.z);
    }

    // Angles for SetRotate's Rx * Ry * Rz. The clamp keeps a row that rounding left a hair
    // longer than 1 from giving NaN.
    _point3d rot;
    rot.y = q5math::Asin(std::clamp(-r0.z, -1.0, 1.0));
    if (q5math::Cos(rot.y) != 0) {
        rot.x = q5math::Atan2(r1.z, r2.z);
        rot.z = q5math::Atan2(r0.y, r0.x);
    } else {
        rot.x = q5math::Atan2(-r2.x, r1.y);
        rot.z = 0;
    }

    if (translation) *translation = move;
    if (rotation) *rotation = rot;
    if (scale) *scale = sc;
    if (shear) *shear = sh;
    if (perspective) *perspective = persp;
    return true;
}

bool MATRIX3D::Decompose(POINT3D* translation, POINT3D* rotation, POINT3D* scale, POINT3D* shear,
                         POINT4D* perspective) const {
    _point3d t, r, s, h;
    _point4d p;
    if (!Decompose(&t, &r, &s, &h, &p)) return false;
    const auto narrow = [](const _point3d& v) {
        return POINT3D(static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z));
    };
    if (translation) *translation = narrow(t);
    if (rotation) *rotation = narrow(r);
    if (scale) *scale = narrow(s);
    if (shear) *shear = narrow(h);
    if (perspective) {
        *perspective = POINT4D(static_cast<float>(p.x), static_cast<float>(p.y),
                               static_cast<float>(p.z), static_cast<float>(p.w));
    }
    return true;
}

// A matrix that does not decompose has no meaningful scale; it reports (0, 0, 0).
POINT3D MATRIX3D::GetScale() const {
    POINT3D s(0, 0, 0);
    Decompose(nullptr, nullptr, &s, nullptr, nullptr);
    return s;
}

// A matrix that does not decompose leaves the angles as they were.
void MATRIX3D::GetRotate(POINT3D& euler) const {
    Decompose(nullptr, &euler, nullptr, nullptr, nullptr);
}

void MATRIX3D::GetRotate(_point3d& euler) const {
    Decompose(nullptr, &euler, nullptr, nullptr, nullptr);
}

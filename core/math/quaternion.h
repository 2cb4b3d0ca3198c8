// The rotation quaternion: vector part first, scalar last.
#pragma once

#include "core/math/point.h"

struct MATRIX3D;
struct ANGLEAXIS;

struct QUAT {
    float x, y, z, w;

    // The identity rotation (0, 0, 0, 1).
    QUAT() : x(0), y(0), z(0), w(1) {}
    QUAT(float x_, float y_, float z_, float w_) : x(x_), y(y_), z(z_), w(w_) {}
    explicit QUAT(const MATRIX3D& m);
    explicit QUAT(const ANGLEAXIS& aa);
    explicit QUAT(const POINT3D& euler);
    // Spherical interpolation from a (t = 0) to b (t = 1) along the shorter arc; each unit of
    // spin adds a half-turn.
    QUAT(float t, QUAT& a, QUAT& b, int spin);

    float Length() const;
    void Normalize();
    void Invert();
    void Flip();
    POINT3D GetEulerAngles(int order) const;
};

QUAT operator*(const QUAT& a, const QUAT& b);
QUAT operator/(const QUAT& a, const QUAT& b);

static_assert(sizeof(QUAT) == 16);

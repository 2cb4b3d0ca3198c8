// Axis-angle rotations, about the origin or about an axis through a point.
#pragma once

#include "core/math/point.h"

struct MATRIX3D;
struct QUAT;

struct ANGLEAXIS {
    POINT3D axis;
    float angle; // radians

    ANGLEAXIS() = default;
    ANGLEAXIS(const POINT3D& axis_, float angle_) : axis(axis_), angle(angle_) {}
    explicit ANGLEAXIS(const QUAT& q);
    explicit ANGLEAXIS(const MATRIX3D& m);
    explicit ANGLEAXIS(const POINT3D& euler);
};

struct ANGLEAXISex {
    POINT3D origin;
    POINT3D axis;
    float angle; // radians

    ANGLEAXISex() = default;
    ANGLEAXISex(const POINT3D& origin_, const POINT3D& axis_, float angle_)
        : origin(origin_), axis(axis_), angle(angle_) {}
};

static_assert(sizeof(ANGLEAXIS) == 16);
static_assert(sizeof(ANGLEAXISex) == 28);

// Point and direction value types of the geometry library, with the 32-bit normal encoding.
#pragma once

#include "interface/types.h"

class q5_STREAM;
struct QUAT;

struct POINT2D {
    float x, y;

    POINT2D() = default;
    POINT2D(float x_, float y_) : x(x_), y(y_) {}

    float& operator[](int i) { return this->*kMembers[i]; }
    const float& operator[](int i) const { return this->*kMembers[i]; }

    float Length() const;

private:
    static constexpr float POINT2D::*kMembers[2] = {&POINT2D::x, &POINT2D::y};
};

// A position, a direction, or a triple of Euler angles in radians (about x, y, z).
struct POINT3D {
    float x, y, z;

    POINT3D() = default;
    POINT3D(float x_, float y_, float z_) : x(x_), y(y_), z(z_) {}
    // The Euler angles of the quaternion's rotation, as the matrix decomposition yields them.
    explicit POINT3D(const QUAT& q);

    float& operator[](int i) { return this->*kMembers[i]; }
    const float& operator[](int i) const { return this->*kMembers[i]; }

    float Length() const;
    void Normalize();
    void Limit(float minimum, float maximum);
    void Round(float step);
    void ABS();
    void Swap(int mode);

    unsigned int EncodeNormal(unsigned int steps) const;
    void DecodeNormal(unsigned int code, unsigned int steps);

    // x, y, z as three 4-byte floats in the stream's byte order; with a non-zero chunk id
    // inside a chunk of its own. 1, or -8 when the stream failed.
    Q5RESULT Load(q5_STREAM* stream);
    Q5RESULT Save(q5_STREAM* stream, unsigned short chunkId) const;

private:
    static constexpr float POINT3D::*kMembers[3] = {&POINT3D::x, &POINT3D::y, &POINT3D::z};
};

// Vector arithmetic on single-precision points, in float as every caller expects.
inline POINT3D operator-(const POINT3D& a, const POINT3D& b) {
    return POINT3D(a.x - b.x, a.y - b.y, a.z - b.z);
}
inline POINT3D Cross(const POINT3D& a, const POINT3D& b) {
    return POINT3D(a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x);
}
inline float Dot(const POINT3D& a, const POINT3D& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

struct _point3d {
    double x, y, z;

    _point3d() = default;
    _point3d(double x_, double y_, double z_) : x(x_), y(y_), z(z_) {}

    double& operator[](int i) { return this->*kMembers[i]; }
    const double& operator[](int i) const { return this->*kMembers[i]; }

    double Length() const;
    void Normalize();
    void Limit(double minimum, double maximum);
    void Round(double step);
    void ABS();

private:
    static constexpr double _point3d::*kMembers[3] = {&_point3d::x, &_point3d::y, &_point3d::z};
};

// The perspective part of a matrix decomposition.
struct POINT4D {
    float x, y, z, w;

    POINT4D() = default;
    POINT4D(float x_, float y_, float z_, float w_) : x(x_), y(y_), z(z_), w(w_) {}
};

struct _point4d {
    double x, y, z, w;

    _point4d() = default;
    _point4d(double x_, double y_, double z_, double w_) : x(x_), y(y_), z(z_), w(w_) {}
};

static_assert(sizeof(POINT2D) == 8);
static_assert(sizeof(POINT3D) == 12);
static_assert(sizeof(_point3d) == 24);
static_assert(sizeof(POINT4D) == 16);
static_assert(sizeof(_point4d) == 32);

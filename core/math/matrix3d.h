// The 4x4 transformation matrix in double (MATRIX3D) and single (matrix3d) precision.
//
// Points are row vectors multiplied on the left (p' = p * M), the translation is row 3, and
// SetMul(A, B) applies A first. Every operation computes into a temporary, so an argument may
// be the matrix itself.
#pragma once

#include "core/math/point.h"

struct QUAT;
struct ANGLEAXIS;
struct ANGLEAXISex;
struct AFFINEPARTS;

struct MATRIX3D {
    double m[4][4];

    // The identity.
    MATRIX3D();
    // Identity when true; false writes nothing, for a matrix about to be overwritten.
    explicit MATRIX3D(bool identity);
    // 16 values fill the matrix row by row; 12 values fill columns 0-2 of the four rows. The
    // matrix starts as the identity, so column 3 of the 12-value form is (0, 0, 0, 1) and any
    // other count gives the identity.
    MATRIX3D(const float* values, int count);
    MATRIX3D(const double* values, int count);

    void IdentityMatrix();
    bool IsIdentity(double tolerance) const;
    bool Equal(const MATRIX3D& other, double tolerance) const;

    // Composition.
    void SetMul(const MATRIX3D& a, const MATRIX3D& b);
    void Transform(const MATRIX3D& after);
    void SetM1(const MATRIX3D& a, const MATRIX3D& b);
    void SetM2(const MATRIX3D& a, const MATRIX3D& b);
    void SetLocalMatrix(const MATRIX3D& parent, const MATRIX3D& world);
    void Invert(const MATRIX3D& src);
    void Invert();
    void Transpose();

    // Translation and scale.
    void SetTranslate(const POINT3D& t);
    void SetTranslate(const _point3d& t);
    void MoveTo(const POINT3D& t);
    void Offset(const POINT3D& t);
    void NoTranslate();
    void SetScale(const POINT3D& s);
    void Scale(const POINT3D& s);
    void NoScale();
    POINT3D GetScale() const;

    // Orientation.
    double Det() const;
    bool IsFlipped() const;
    float Sign() const;
    void Flip();

    // Points and vectors.
    POINT3D PointTransform(const POINT3D& p) const;
    _point3d PointTransform(const _point3d& p) const;
    POINT3D VectorTransform(const POINT3D& v) const;
    _point3d VectorTransform(const _point3d& v) const;
    void TransformPoints(POINT3D* points, int n) const;
    void TransformPoints(_point3d* points, int n) const;
    void TransformPoints(const POINT3D* src, POINT3D* dst, int n) const;
    void TransformPoints(const _point3d* src, _point3d* dst, int n) const;
    void TransformVectors(POINT3D* vectors, int n) const;
    void TransformVectors(_point3d* vectors, int n) const;
    void TransformVectors(const POINT3D* src, POINT3D* dst, int n) const;
    void TransformVectors(const _point3d* src, _point3d* dst, int n) const;

    // Rotation builders: Set... overwrite the matrix, Rotate... post-multiply (this = this * R).
    void SetRotateX(double a);
    void SetRotateY(double a);
    void SetRotateZ(double a);
    void SetRotate(const POINT3D& euler);
    void SetRotate(const _point3d& euler);
    void SetRotateYPW(float a, float b, float c);
    void SetRotate(const _point3d& axis, double angle);
    void SetRotate(const ANGLEAXIS& aa);
    void SetRotate(const ANGLEAXISex& aa);
    void SetRotate(const _point3d& origin, const _point3d& axis, double angle);
    void SetRotate(const QUAT& q);
    void RotateX(double a);
    void RotateY(double a);
    void RotateZ(double a);
    void Rotate(const POINT3D& euler);
    void Rotate(const _point3d& euler);
    void Rotate(const ANGLEAXIS& aa);
    void Rotate(const ANGLEAXISex& aa);
    void Rotate(const QUAT& q);

    // Rotation read back.
    void GetRotate(ANGLEAXIS& aa) const;
    void GetRotate(POINT3D& euler) const;
    void GetRotate(_point3d& euler) const;
    void GetRotate(QUAT& q) const;
    POINT3D GetEulerAngles(int order) const;

    // Decompositions. Decompose fails, writing nothing, when m[3][3] is 0 or the matrix is
    // singular; any output may be null. The shear triple holds (xy, xz, yz).
    bool Decompose(POINT3D* translation, POINT3D* rotation, POINT3D* scale, POINT3D* shear,
                   POINT4D* perspective) const;
    bool Decompose(_point3d* translation, _point3d* rotation, _point3d* scale, _point3d* shear,
                   _point4d* perspective) const;
    void AffineDecompose(AFFINEPARTS& parts) const;
    void AffineCompose(const AFFINEPARTS& parts);

    // View and camera matrices.
    void _FromUpDir(MATRIX3D& out, POINT3D& from, POINT3D& to, POINT3D& up);
    void SetView(POINT3D& eye, POINT3D& target, POINT3D& up);
    void Set3DSCamera(POINT3D& direction, float roll);
    void SetAlignVectors(POINT3D from, POINT3D to);

    // Compact form: a 16-bit mask of the elements that differ from the identity, then those
    // elements. Inside a chunk of its own (non-zero id) they are floats when every one of them
    // is a float exactly, otherwise doubles; without a chunk always doubles, because only a
    // chunk's size tells the reader the width. The identity writes nothing unless forced.
    // Load reads floats when the open chunk's payload is exactly mask plus floats. Both
    // return 1.
    Q5RESULT Save(q5_STREAM* stream, unsigned short chunkId, bool force) const;
    Q5RESULT Load(q5_STREAM* stream);

private:
    void p_Transform(const POINT3D& in, POINT3D& out) const;
    void p_Transform(const _point3d& in, _point3d& out) const;
    void v_Transform(const POINT3D& in, POINT3D& out) const;
    void v_Transform(const _point3d& in, _point3d& out) const;
};

// Single-precision copy of a MATRIX3D for bulk transformation of float points.
struct matrix3d {
    float m[4][4];

    // The identity.
    matrix3d();
    explicit matrix3d(const MATRIX3D& src);

    void p_Transform(const POINT3D& in, POINT3D& out) const;
    void v_Transform(const POINT3D& in, POINT3D& out) const;
    // Source and destination must not overlap.
    void TransformPoints(const POINT3D* src, POINT3D* dst, int n) const;
};

static_assert(sizeof(MATRIX3D) == 128);
static_assert(sizeof(matrix3d) == 64);

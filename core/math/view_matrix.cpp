// Look-at frames, direction-and-roll cameras and direction alignment.
#include "core/math/view_matrix.h"

#include "core/math/rotation.h"
#include "core/services/portable_math.h"

#include <cmath>
#include <numbers>

namespace {

constexpr double kPi = std::numbers::pi;
constexpr float kPiF = std::numbers::pi_v<float>;

// Rotation from yaw w (about y), pitch p and roll r, in single precision.
void BuildYawPitchRoll(MATRIX3D& out, float w, float p, float r) {
    const float cw = q5math::Cos(w), sw = q5math::Sin(w);
    const float cp = q5math::Cos(p), sp = q5math::Sin(p);
    const float cr = q5math::Cos(r), sr = q5math::Sin(r);
    out.IdentityMatrix();
    out.m[0][0] = cw * cr - sw * sp * sr;
    out.m[0][1] = cw * sr + sw * sp * cr;
    out.m[0][2] = -sw * cp;
    out.m[1][0] = -cp * sr;
    out.m[1][1] = cp * cr;
    out.m[1][2] = sp;
    out.m[2][0] = sw * cr + cw * sp * sr;
    out.m[2][1] = sw * sr - cw * cr * sp;
    out.m[2][2] = cw * cp;
}

} // namespace

double GetAngleByXY(double x, double y) {
    if (x == 0) {
        if (y == 0) return 0;
        return y > 0 ? kPi / 2 : -kPi / 2;
    }
    const double t = q5math::Atan(std::fabs(y) / std::fabs(x));
    if (y > 0) return x > 0 ? t : kPi - t;
    return x > 0 ? -t : kPi + t;
}

// A frame that turns the direction from -> to onto +z, rolled so that the up point lands on
// +y. The up point is used as given, not relative to from.
void MATRIX3D::_FromUpDir(MATRIX3D& out, POINT3D& from, POINT3D& to, POINT3D& up) {
    POINT3D d = to - from;
    if (std::fabs(d.x) < 1e-20 && std::fabs(d.y) < 1e-20 && std::fabs(d.z) < 1e-20) {
        d = POINT3D(0, 0, -1);
    }
    const float len = d.Length();
    const float pitch = q5math::Asin(d.y / len);
    const float yaw = static_cast<float>(-GetAngleByXY(d.z, d.x));
    const bool rollPass = from.x != up.x || from.y != up.y || from.z != up.z;

    BuildYawPitchRoll(out, yaw, pitch, 0);
    if (!rollPass) return;
    const POINT3D q = out.PointTransform(up);
    const float roll = static_cast<float>(kPi / 2 - GetAngleByXY(q.x, q.y));
    BuildYawPitchRoll(out, yaw, pitch, roll);
}

// The up argument is a point: its offset from the eye is the up direction.
void MATRIX3D::SetView(POINT3D& eye, POINT3D& target, POINT3D& up) {
    POINT3D d = target - eye;
    POINT3D u = up - eye;
    POINT3D origin(0, 0, 0);
    MATRIX3D frame(false);
    _FromUpDir(frame, origin, d, u);
    Invert(frame);
    Offset(eye);
}

// A direction along the z axis yields a zero auxiliary vector and a degenerate frame (rows 0
// and 2 parallel); callers avoid such directions.
void MATRIX3D::Set3DSCamera(POINT3D& direction, float roll) {
    POINT3D n = direction;
    n.Normalize();
    const POINT3D h = n.x == 0 && n.y == 0 ? POINT3D(-n.y, 0, 0) : POINT3D(0, 0, 1);
    POINT3D a = Cross(h, n);
    a.Normalize();
    POINT3D b = Cross(a, n);
    b.Normalize();
    const POINT3D c(-b.x, -b.y, -b.z);

    MATRIX3D frame;
    const POINT3D rows[3] = {a, c, n};
    for (int i = 0; i < 3; ++i) {
        frame.m[i][0] = rows[i].x;
        frame.m[i][1] = rows[i].y;
        frame.m[i][2] = rows[i].z;
    }
    SetRotateZ(roll);
    Transform(frame);
}

// Opposite directions turn half-way about the cyclic permutation of from, which is
// perpendicular to it only when from lies along a coordinate axis.
void MATRIX3D::SetAlignVectors(POINT3D from, POINT3D to) {
    from.Normalize();
    to.Normalize();
    POINT3D axis = Cross(from, to);
    if (axis.x == 0 && axis.y == 0 && axis.z == 0) {
        if (Dot(from, to) > 0) {
            IdentityMatrix();
        } else {
            SetRotate(ANGLEAXIS(POINT3D(from.y, from.z, from.x), kPiF));
        }
        return;
    }
    const float d = Dot(from, to);
    axis.Normalize();
    float angle;
    if (d >= 0.9999999999) {
        angle = 0;
    } else if (d <= -0.9999999999) {
        angle = kPiF;
    } else {
        angle = q5math::Acos(d);
    }
    SetRotate(ANGLEAXIS(axis, angle));
}

// Camera and orientation matrices (members of MATRIX3D) and the planar angle they share.
#pragma once

#include "core/math/matrix3d.h"

// Angle of the point (x, y) from the +x axis, in (-pi/2, 3pi/2].
double GetAngleByXY(double x, double y);

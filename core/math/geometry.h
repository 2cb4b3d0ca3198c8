// All of the geometry library in one include.
#pragma once

#include "core/math/affine_decompose.h"
#include "core/math/matrix3d.h"
#include "core/math/point.h"
#include "core/math/quaternion.h"
#include "core/math/rotation.h"
#include "core/math/view_matrix.h"

// Parts of the polar (affine) decomposition of a matrix.
#pragma once

#include "core/math/point.h"
#include "core/math/quaternion.h"

// The matrix is a stretch K along the axes of u, an optional mirror f, the rotation q and the
// translation t. q follows the library's quaternion convention; u that of the decomposition.
struct AFFINEPARTS {
    POINT3D t; // translation
    QUAT q;    // essential rotation
    QUAT u;    // stretch rotation
    POINT3D k; // stretch factors
    float f;   // sign of the determinant, +1 or -1
};

static_assert(sizeof(AFFINEPARTS) == 60);

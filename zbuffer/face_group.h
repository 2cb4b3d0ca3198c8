// The face-group walk: a run of a host mesh's faces, each given its material's opacity, colour
// and texture source and handed triangle by triangle to the triangle setup.
#pragma once

#include "zbuffer/triangle_setup.h"

#include <cstdint>

class q5_MESH;
struct q5_FACERUN;
struct q5_RENDERSTATE;
struct POINT3D;

// Draws the faces run.firstFace .. run.firstFace + run.faceCount - 1 in order. `placed`, when
// given, replaces the mesh's vertex positions (one per mesh vertex); clip codes and normals stay
// the mesh's. Returns 1 when the walk reached the end of the run, -1 when it stopped early: at
// the end of the mesh's faces, at a face without a material, or at a corner that names no
// vertex.
std::int32_t DrawFaceRun(FaceTarget& target, q5_MESH& mesh, const q5_FACERUN& run,
                         const q5_RENDERSTATE& state, const POINT3D* placed = nullptr);

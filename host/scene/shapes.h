// Procedural shapes for the built-in scenes, centred on the origin, wound counter-clockwise
// seen from outside. Texture coordinates count t from the bottom of the picture.
#pragma once

#include "host/scene/mesh_geometry.h"

// Smooth sphere; s runs around the y axis, t from the bottom pole up.
MeshGeometry MakeSphere(float radius, int rings, int segments);
// Sphere of near-equal triangles (an icosahedron split `splits` times), free of the thin
// triangles a latitude-longitude sphere has at its poles; texture coordinates are all 0.
MeshGeometry MakeGeodesicSphere(float radius, int splits);
// Ring around the y axis: major radius to the tube's centre, minor radius of the tube.
MeshGeometry MakeTorus(float majorRadius, float minorRadius, int rings, int sides);
// Box with flat faces (each face its own corners), each face mapped to the whole texture.
MeshGeometry MakeBox(float sizeX, float sizeY, float sizeZ);
// Horizontal square at y = 0 facing up, split into cells; the texture repeats `repeat` times.
MeshGeometry MakeGround(float size, int cells, float repeat);
// Upright cylinder with flat caps, shaded smooth around its side.
MeshGeometry MakeCylinder(float radius, float height, int segments);

// A host mesh as the scene keeps it: object-space triangles with normals and texture coordinates.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "core/math/point.h"

struct MeshGeometry {
    struct Triangle {
        std::uint32_t v[3];
        // Bit k: the edge from corner k to corner k + 1 is an edge of the model (not a diagonal
        // that splits one of its polygons), so outlines draw it.
        std::uint8_t edges;
    };

    std::vector<POINT3D> positions;
    std::vector<POINT3D> normals; // one unit normal per position
    std::vector<POINT2D> uvs;     // empty, or one per position
    std::vector<Triangle> triangles;
    // Lines and points of a model, drawn with the driver's lines and points.
    std::vector<std::array<std::uint32_t, 2>> segments;
    std::vector<std::uint32_t> points;

    std::uint32_t AddVertex(const POINT3D& position, const POINT3D& normal, const POINT2D& uv);
    // Adds a triangle facing the side its corners' normals point to, whatever order the corners
    // come in; a triangle of zero area is dropped.
    void AddTriangle(std::uint32_t a, std::uint32_t b, std::uint32_t c, std::uint8_t edges = 7);
    // A quadrilateral a-b-c-d as two triangles; its diagonal is not an outline edge.
    void AddQuad(std::uint32_t a, std::uint32_t b, std::uint32_t c, std::uint32_t d);
    // Smooth unit normals from the triangles around each position, weighted by their area;
    // positions on no triangle face up.
    void ComputeNormals();
    // Whether every edge is shared, in opposite directions, by exactly the triangles on its
    // two sides, with corners equal by position: a surface that shows no back faces. Decided
    // by a 64-bit sum over the edges, so a one-in-2^64 open mesh may pass for closed.
    bool IsClosed() const;
    // Appends another mesh moved by `offset`.
    void Append(const MeshGeometry& other, const POINT3D& offset);
};

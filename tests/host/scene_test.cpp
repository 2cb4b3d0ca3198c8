// Procedural shapes and vertex lighting of the host's scenes.
#include <gtest/gtest.h>

#include <cmath>

#include "host/scene/lighting.h"
#include "host/scene/shapes.h"

namespace {

// Every triangle winds counter-clockwise seen from the side its first corner's normal points to.
void ExpectFacesOutward(const MeshGeometry& m) {
    ASSERT_FALSE(m.triangles.empty());
    for (const auto& t : m.triangles) {
        const POINT3D &a = m.positions[t.v[0]], &b = m.positions[t.v[1]], &c = m.positions[t.v[2]],
                      &n = m.normals[t.v[0]];
        const float ux = b.x - a.x, uy = b.y - a.y, uz = b.z - a.z;
        const float vx = c.x - a.x, vy = c.y - a.y, vz = c.z - a.z;
        ASSERT_GT(n.x * (uy * vz - uz * vy) + n.y * (uz * vx - ux * vz) + n.z * (ux * vy - uy * vx),
                  0.0f);
    }
}

} // namespace

TEST(Shapes, WindCounterClockwiseFromOutside) {
    ExpectFacesOutward(MakeSphere(1, 6, 8));
    ExpectFacesOutward(MakeGeodesicSphere(1, 1));
    ExpectFacesOutward(MakeTorus(1, 0.3f, 8, 6));
    ExpectFacesOutward(MakeBox(1, 2, 3));
    ExpectFacesOutward(MakeGround(4, 2, 1));
    ExpectFacesOutward(MakeCylinder(1, 2, 6));
}

TEST(Shapes, ReversedTriangleKeepsItsOutlineEdges) {
    // Corners given clockwise: the triangle is turned round, and the edge that was 0-1 is
    // now edge 2 (from the last corner back to the first).
    MeshGeometry m;
    const POINT3D up(0, 0, 1);
    m.AddVertex(POINT3D(0, 0, 0), up, POINT2D(0, 0));
    m.AddVertex(POINT3D(0, 1, 0), up, POINT2D(0, 0));
    m.AddVertex(POINT3D(1, 0, 0), up, POINT2D(0, 0));
    m.AddTriangle(0, 1, 2, 0b001);
    ASSERT_EQ(m.triangles.size(), 1u);
    EXPECT_EQ(m.triangles[0].v[1], 2u);
    EXPECT_EQ(m.triangles[0].v[2], 1u);
    EXPECT_EQ(m.triangles[0].edges, 0b100);
}

TEST(Lighting, AmbientPlusEachLightFacingTheSurface) {
    Lighting l;
    l.ambient = {0.1f, 0.2f, 0.3f};
    l.key = {POINT3D(0, -2, 0), {0.5f, 0.5f, 0.5f}}; // straight down, unnormalised
    l.fill = {POINT3D(0, 1, 0), {1.0f, 1.0f, 1.0f}}; // from below: faces away
    const Rgb c = l.Shade(POINT3D(0, 1, 0), POINT3D(0, 0, 1), {1.0f, 0.5f, 0.0f}, 0, 1);
    EXPECT_NEAR(c.red, 0.6f, 1e-6);
    EXPECT_NEAR(c.green, 0.35f, 1e-6);
    EXPECT_NEAR(c.blue, 0.0f, 1e-6);
    // Half-lit at 60 degrees, and clamped at full brightness.
    const float s = std::sqrt(3.0f) / 2;
    const Rgb tilted = l.Shade(POINT3D(s, 0.5f, 0), POINT3D(0, 0, 1), {1, 1, 1}, 0, 1);
    EXPECT_NEAR(tilted.red, 0.35f, 1e-6);
    l.ambient = {2, 2, 2};
    EXPECT_EQ(l.Shade(POINT3D(0, 1, 0), POINT3D(0, 0, 1), {1, 1, 1}, 0, 1).red, 1.0f);
}

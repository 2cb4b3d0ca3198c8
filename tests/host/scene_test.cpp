// Camera placement, procedural shapes and vertex lighting of the host's scenes.
#include <gtest/gtest.h>

#include <cmath>

#include "host/scene/frame_mesh.h"
#include "host/scene/lighting.h"
#include "host/scene/shapes.h"
#include "host/view/camera.h"
#include "host/view/view_volume.h"

namespace {

POINT3D Sub(const POINT3D& a, const POINT3D& b) {
    return POINT3D(a.x - b.x, a.y - b.y, a.z - b.z);
}
POINT3D Cross(const POINT3D& a, const POINT3D& b) {
    return POINT3D(a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x);
}
float Dot(const POINT3D& a, const POINT3D& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

// Every triangle winds counter-clockwise seen from the side its corner normals point to.
void ExpectFacesOutward(const MeshGeometry& m) {
    ASSERT_FALSE(m.triangles.empty());
    for (const auto& t : m.triangles) {
        const POINT3D& a = m.positions[t.v[0]];
        const POINT3D n = Cross(Sub(m.positions[t.v[1]], a), Sub(m.positions[t.v[2]], a));
        const POINT3D& na = m.normals[t.v[0]];
        ASSERT_GT(Dot(n, na), 0.0f);
    }
}

int FlaggedEdges(const MeshGeometry& m) {
    int n = 0;
    for (const auto& t : m.triangles)
        n += (t.edges & 1) + ((t.edges >> 1) & 1) + ((t.edges >> 2) & 1);
    return n;
}

} // namespace

TEST(CameraOrbit, EyeSitsOnTheOrbitAndLooksAtTheTarget) {
    Camera c;
    c.Orbit(POINT3D(0, 0, 0), 0, 0, 5);
    EXPECT_NEAR(c.Eye().z, 5.0f, 1e-5);
    const POINT3D target = c.PointToView(POINT3D(0, 0, 0));
    EXPECT_NEAR(target.x, 0.0f, 1e-5);
    EXPECT_NEAR(target.y, 0.0f, 1e-5);
    EXPECT_NEAR(target.z, 5.0f, 1e-5);
}

TEST(CameraOrbit, ViewSpaceHasXRightAndYUp) {
    // From +z looking toward -z with y up, the world's +x lies to the right.
    Camera c;
    c.Orbit(POINT3D(0, 0, 0), 0, 0, 5);
    const POINT3D right = c.PointToView(POINT3D(1, 0, 0));
    EXPECT_NEAR(right.x, 1.0f, 1e-5);
    EXPECT_NEAR(right.z, 5.0f, 1e-5);
    const POINT3D up = c.PointToView(POINT3D(0, 1, 0));
    EXPECT_NEAR(up.y, 1.0f, 1e-5);
}

TEST(CameraOrbit, YawOf90DegreesLooksAlongMinusX) {
    Camera c;
    c.Orbit(POINT3D(1, 2, 3), 90, 0, 4);
    EXPECT_NEAR(c.Eye().x, 5.0f, 1e-5);
    EXPECT_NEAR(c.Eye().y, 2.0f, 1e-5);
    EXPECT_NEAR(c.Eye().z, 3.0f, 1e-5);
    const POINT3D d = c.DirectionToView(POINT3D(-1, 0, 0));
    EXPECT_NEAR(d.z, 1.0f, 1e-5);
}

TEST(Shapes, WindCounterClockwiseFromOutside) {
    ExpectFacesOutward(MakeSphere(1, 6, 8));
    ExpectFacesOutward(MakeGeodesicSphere(1, 1));
    ExpectFacesOutward(MakeTorus(1, 0.3f, 8, 6));
    ExpectFacesOutward(MakeBox(1, 2, 3));
    ExpectFacesOutward(MakeGround(4, 2, 1));
    ExpectFacesOutward(MakeCylinder(1, 2, 6));
}

TEST(Shapes, OutlinesSkipTheDiagonalsOfSplitQuads) {
    // A box has 12 edges, each shared by two triangles; the six diagonals are not flagged.
    EXPECT_EQ(MakeBox(1, 1, 1).triangles.size(), 12u);
    EXPECT_EQ(FlaggedEdges(MakeBox(1, 1, 1)), 24);
    // A ground of 2 x 2 cells: 12 cell sides, inner ones counted from both cells.
    EXPECT_EQ(FlaggedEdges(MakeGround(2, 2, 1)), 16);
}

TEST(Shapes, GeodesicSphereHasEqualRadiusEverywhere) {
    const MeshGeometry m = MakeGeodesicSphere(2, 2);
    EXPECT_EQ(m.triangles.size(), 20u * 16u);
    for (const POINT3D& p : m.positions) EXPECT_NEAR(p.Length(), 2.0f, 1e-5);
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

TEST(FrameMeshBuild, CarriesViewPositionsClipCodesAndLitColours) {
    Scene scene;
    HostMaterial m;
    m.colour = {1, 1, 1};
    const std::size_t material = scene.AddMaterial(m);
    SceneObject o;
    o.geometry = MakeBox(2, 2, 2);
    o.material = material;
    Camera camera;
    camera.Orbit(POINT3D(0, 0, 0), 0, 0, 5);
    ViewVolume v;
    v.tanHalfX = v.tanHalfY = 1;
    v.nearZ = 4.5; // cuts the front face (at z = 4) away
    v.farZ = 100;
    scene.lighting.ambient = {0.5f, 0.5f, 0.5f};
    scene.lighting.key.colour = scene.lighting.fill.colour = {0, 0, 0};
    FrameMesh fm;
    fm.Build(o, scene.Material(material), scene.lighting, camera, v);
    const q5_MESH& mesh = fm.Mesh();
    ASSERT_EQ(mesh.vertexCount, 24u);
    ASSERT_EQ(mesh.faceCount, 12u);
    int near = 0;
    for (std::uint32_t i = 0; i < mesh.vertexCount; ++i) {
        const q5_MESHVERTEX& p = mesh.vertices[i];
        EXPECT_EQ(p.clipCode, p.z < 4.5f ? kClipNear : 0);
        near += p.z < 4.5f;
        EXPECT_EQ(mesh.primaryColours[i].red, 128); // 0.5 of white, rounded
    }
    EXPECT_EQ(near, 12); // the front face and the front corners of four sides
    EXPECT_FLOAT_EQ(fm.CentreDepth(), 5.0f);
    EXPECT_FALSE(fm.WhollyOutside());
    EXPECT_EQ(mesh.defaultMaterial, &scene.Material(material).driver);
}

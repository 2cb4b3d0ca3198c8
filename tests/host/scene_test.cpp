// Procedural shapes and vertex lighting of the host's scenes.
#include <gtest/gtest.h>

#include <cmath>

#include "host/scene/frame_mesh.h"
#include "host/scene/lighting.h"
#include "host/scene/scene.h"
#include "host/scene/shapes.h"
#include "host/view/camera.h"
#include "host/view/view_volume.h"

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

// Every face of `kept` as the driver would read it equals the same face of `fresh`.
void ExpectSameMesh(FrameMesh& kept, FrameMesh& fresh) {
    const q5_MESH &a = kept.Mesh(), &b = fresh.Mesh();
    ASSERT_EQ(a.faceCount, b.faceCount);
    ASSERT_GT(a.faceCount, 0u);
    ASSERT_EQ(a.normals == nullptr, b.normals == nullptr);
    EXPECT_EQ(kept.CentreDepth(), fresh.CentreDepth());
    for (std::uint32_t f = 0; f < a.faceCount; ++f) {
        for (int k = 0; k < 3; ++k) {
            // Read out of the packed records: a reference there would be misaligned.
            const std::uint32_t v = a.faces[f].vertex[k], w = b.faces[f].vertex[k];
            ASSERT_EQ(v, w);
            const q5_MESHVERTEX &p = a.vertices[v], &q = b.vertices[v];
            ASSERT_TRUE(p.x == q.x && p.y == q.y && p.z == q.z && p.clipCode == q.clipCode) << f;
            const q5_VERTEXCOLOUR &c = a.primaryColours[v], &d = b.primaryColours[v];
            ASSERT_TRUE(c.red == d.red && c.green == d.green && c.blue == d.blue) << f;
            const q5_COLOUR6 &e = a.secondaryColours[v], &g = b.secondaryColours[v];
            ASSERT_TRUE(e.red == g.red && e.green == g.green && e.blue == g.blue) << f;
            ASSERT_EQ(a.texcoords[v][0], b.texcoords[v][0]);
            if (a.normals != nullptr) {
                ASSERT_EQ(a.normals[v][2], b.normals[v][2]);
            }
        }
    }
}

} // namespace

TEST(FrameMeshes, AKeptMeshDrawsWhatAFreshOneDoesWhateverChanged) {
    Scene scene;
    HostMaterial plain, shiny;
    plain.colour = {0.9f, 0.5f, 0.2f};
    shiny.specular = 0.6f;
    const std::size_t plainIndex = scene.AddMaterial(plain), shinyIndex = scene.AddMaterial(shiny);
    // Two objects with as many corners, so that only what identifies an object tells them apart.
    SceneObject sphere, larger;
    sphere.geometry = MakeSphere(1, 12, 16);
    larger.geometry = MakeSphere(1.4f, 12, 16);
    scene.AddObject(std::move(sphere));
    scene.AddObject(std::move(larger));
    const SceneObject &a = scene.Objects()[0], &b = scene.Objects()[1];

    const ViewVolume volume = ViewVolume::Perspective(160, 120, 40, 0.5, 50);
    Camera near, far;
    near.Orbit(POINT3D(0, 0, 0), 30, 20, 3.5);
    far.Orbit(POINT3D(0, 0, 0), 140, -35, 6);
    FrameMesh kept;
    const auto expectFresh = [&](const SceneObject& object, std::size_t material,
                                 const Lighting& lighting, const Camera& camera) {
        FrameMesh fresh;
        kept.Build(object, scene.Material(material), lighting, camera, volume);
        fresh.Build(object, scene.Material(material), lighting, camera, volume);
        ExpectSameMesh(kept, fresh);
    };
    Lighting lighting;
    expectFresh(a, plainIndex, lighting, near);
    // The camera turns: the light stays, the highlight follows the eye.
    expectFresh(a, plainIndex, lighting, far);
    expectFresh(a, shinyIndex, lighting, near);
    expectFresh(a, shinyIndex, lighting, far);
    // Another object, one turned, another light and another colour.
    expectFresh(b, plainIndex, lighting, far);
    SceneObject moved = b;
    moved.placement.SetRotateX(0.7);
    expectFresh(moved, plainIndex, lighting, far);
    lighting.key.colour = {0.2f, 0.9f, 0.3f};
    expectFresh(moved, plainIndex, lighting, far);
    scene.Material(plainIndex).colour = {0.1f, 0.2f, 0.9f};
    expectFresh(moved, plainIndex, lighting, far);
    // A reflection needs view-space normals, which turn with the camera. The frame mesh only
    // asks whether there is a picture.
    HostMaterial& reflective = scene.Material(shinyIndex);
    reflective.driver.textures[kSlotReflection] = reinterpret_cast<TPicture*>(&reflective);
    expectFresh(moved, shinyIndex, lighting, near);
    expectFresh(moved, shinyIndex, lighting, far);
    reflective.driver.textures[kSlotReflection] = nullptr;
}

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

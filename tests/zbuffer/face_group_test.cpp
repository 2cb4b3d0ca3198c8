// IZB's face-group drawing: clip codes, culling, opacity, material set-up, texture sources,
// outlines, subdivision and the walk's result, through a view that projects x and y in whole
// pixels and depth as z.
#include <gtest/gtest.h>

#include <array>
#include <utility>
#include <vector>

#include "core/math/matrix3d.h"
#include "plugin/mesh.h"
#include "raster_frame.h"
#include "support/test_view.h"
#include "zbuffer/izb.h"

namespace {

using Call = TestView::Call;

// Corners as (x, y, clip code) in view space.
using Triangle = std::array<std::array<float, 3>, 3>;

// A mesh of loose triangles, each face with its own three vertices at depth 100.
struct TestMesh {
    std::vector<q5_MESHVERTEX> vertices;
    std::vector<q5_MESHFACE> faces;
    std::vector<q5_COLOUR6> faceColours;
    std::vector<q5_VERTEXCOLOUR> colours; // used when `lit`
    q5_MATERIAL material;
    bool lit = false;
    q5_MESH mesh;

    void Add(const Triangle& corners, std::uint8_t edgeBits = 0) {
        q5_MESHFACE face{0, edgeBits, {}};
        for (int k = 0; k < 3; ++k) {
            const auto& c = corners[k];
            face.vertex[k] = static_cast<std::uint32_t>(vertices.size());
            vertices.push_back({c[0], c[1], 100.0f, static_cast<std::uint8_t>(c[2])});
            colours.push_back({{}, 200, 100, 50, 0});
        }
        faces.push_back(face);
        faceColours.push_back({{}, 200, 100, 40});
    }
    q5_MESH* Get() {
        mesh.vertices = vertices.data();
        mesh.vertexCount = static_cast<std::uint32_t>(vertices.size());
        mesh.faces = faces.data();
        mesh.faceCount = static_cast<std::uint32_t>(faces.size());
        mesh.faceColours = faceColours.data();
        mesh.primaryColours = lit ? colours.data() : nullptr;
        mesh.defaultMaterial = &material;
        return &mesh;
    }
};

// Drawn as it stands (non-positive area once projected) over rows 0-3 of 4, 3, 2 and 1
// pixels; Reversed is culled.
constexpr Triangle kFront = {{{0, 0, 0}, {0, 4, 0}, {4, 0, 0}}};
constexpr Triangle kReversed = {{{0, 0, 0}, {4, 0, 0}, {0, 4, 0}}};
constexpr Bgra kFaceColour{40, 100, 200, 255}, kVertexColour{50, 100, 200, 255};

class FaceGroup : public ::testing::Test {
protected:
    void SetUp() override {
        driver->Attach(1, &context);
        driver->Resize(16, 16);
        Clear();
    }
    void TearDown() override { driver->Release(); }
    void Clear() {
        driver->FrameStep(0);
        driver->ClearFrame(0);
        view.calls.clear();
    }
    std::int32_t Draw(std::uint8_t flags = 0, float opacity = 1.0f) {
        q5_FACERUN run{0, static_cast<std::uint32_t>(m.faces.size()), opacity, flags};
        return driver->DrawFaceGroup(m.Get(), &run, &state);
    }
    Bgra Pixel(int x, int y) const { return SurfacePixel(driver->surface, x, y); }
    std::int32_t Depth(int x, int y) const {
        return driver->surface.depth[y * driver->surface.W + x];
    }
    int Written() const { return SurfaceWritten(driver->surface); }

    TestView view;
    q5_RENDERCONTEXT context{&view};
    q5_RENDERSTATE state;
    IZB* driver = new IZB();
    TestMesh m;
};

TEST_F(FaceGroup, ClipCodesChooseBetweenProjectingDroppingAndClipping) {
    view.clipLeft = 9.0f;
    m.Add({{{0, 0, 1}, {0, 4, 1}, {4, 0, 1}}});  // code 1 is no plane: projected as it is
    m.Add({{{0, 0, 2}, {0, 4, 2}, {4, 0, 6}}});  // all outside plane 1: no view call at all
    m.Add({{{4, 0, 2}, {4, 8, 4}, {12, 0, 0}}}); // partly outside: the view clips it
    EXPECT_EQ(Draw(), 1);
    EXPECT_EQ(view.Sequence(), (std::vector<Call>{Call::ProjectVertexList, Call::ClipPolygon,
                                                  Call::ProjectVertices}));
    EXPECT_EQ(view.calls[2].count, 3);
    // What is left of the third is (9,0) (9,3) (12,0).
    EXPECT_EQ(
        SurfaceSpans(driver->surface),
        (Spans{{0, 0, 4}, {0, 9, 12}, {1, 0, 3}, {1, 9, 11}, {2, 0, 2}, {2, 9, 10}, {3, 0, 1}}));
    EXPECT_EQ(Pixel(0, 0), kFaceColour);
    EXPECT_EQ(Depth(11, 0), 100);

    Clear();
    view.clipLeft = 100.0f; // nothing left: no projection either
    Draw();
    EXPECT_EQ(view.Sequence(), (std::vector<Call>{Call::ProjectVertexList, Call::ClipPolygon}));
}

TEST_F(FaceGroup, OneWindingIsCulledUnlessTheFaceIsTwoSided) {
    m.Add(kReversed);
    Draw();
    EXPECT_EQ(Written(), 0);
    const std::uint32_t faceFlags[1] = {q5_MESH::kFaceTwoSided};
    for (int way = 0; way < 3; ++way) { // the request bit, the material bit, the face flag
        Clear();
        m.material.flags = way == 1 ? q5_MATERIAL::kTwoSided : 0;
        m.mesh.faceFlags = way == 2 ? faceFlags : nullptr;
        Draw(way == 0 ? q5_FACERUN::kTwoSided : 0);
        EXPECT_EQ(Written(), 10) << way;
    }

    Clear();
    m.mesh.faceFlags = nullptr;
    const std::uint16_t remap[1][3] = {{0, 2, 1}};
    m.mesh.cornerRemap = remap;
    Draw();
    EXPECT_EQ(Written(), 10) << "the corner remap puts the corners in drawn order";
}

// Over a cleared frame a blended pixel's alpha is the opacity itself.
TEST_F(FaceGroup, OpacityIsClampedThenTruncatedToAByte) {
    m.Add(kFront);
    const std::pair<float, std::uint8_t> cases[] = {{1.5f, 255}, {-0.2f, 0}, {0.5f, 127}};
    for (const auto& [opacity, alpha] : cases) {
        Clear();
        Draw(q5_FACERUN::kBlend, opacity);
        EXPECT_EQ(Pixel(0, 0).a, alpha) << opacity;
        EXPECT_EQ(Depth(0, 0), 100) << "blending still writes depth";
    }
    EXPECT_EQ(Pixel(0, 0).r, 200 * 127 / 256);

    Clear();
    m.material.transparency = 0.5f;
    Draw(q5_FACERUN::kBlend | q5_FACERUN::kUseMaterialTransparency, 1.0f);
    EXPECT_EQ(Pixel(0, 0).a, 127);
}

class FaceGroupTextured : public FaceGroup {
protected:
    FaceGroupTextured() { white.Fill(0xFFFFFF); }
    static constexpr std::uint8_t kTextured = q5_FACERUN::kTexturedAllowed;
    TestPicture white{2, 2, 24};
};

TEST_F(FaceGroupTextured, ARepeatedMaterialIsSetUpOnce) {
    q5_MATERIAL other;
    other.textures[kSlotDiffuse] = &white;
    m.material.textures[kSlotDiffuse] = &white;
    for (int i = 0; i < 4; ++i) m.Add(kFront);
    q5_MATERIAL* table[2] = {&m.material, &other};
    m.faces[2].material = 1; // materials 0, 0, 1, 0
    m.mesh.materials = table;
    m.mesh.materialCount = 2;
    Draw(kTextured);
    EXPECT_EQ(view.calls[0].count, kSlotDiffuse);
    std::vector<const q5_MATERIAL*> prepared;
    for (const auto& r : view.calls)
        if (r.call == Call::PrepareTextureCoordinates) prepared.push_back(r.material);
    EXPECT_EQ(prepared, (std::vector<const q5_MATERIAL*>{&m.material, &other, &m.material}));
}

TEST_F(FaceGroupTextured, DiffuseTextureIsModulatedByTheVertexColours) {
    m.material.textures[kSlotDiffuse] = &white;
    m.lit = true;
    m.Add(kFront);
    Draw(kTextured);
    EXPECT_EQ(Pixel(0, 0), (Bgra{255 * 50 >> 8, 255 * 100 >> 8, 255 * 200 >> 8, 255}));

    Clear();
    Draw(); // textured drawing not allowed: the vertex colour alone
    EXPECT_EQ(Pixel(0, 0), kVertexColour);

    Clear();
    TestPicture empty{1, 1, 24};
    empty.header = nullptr;
    m.material.textures[kSlotDiffuse] = &empty;
    Draw(kTextured);
    EXPECT_EQ(Pixel(0, 0), kVertexColour) << "a picture without image: untextured";
}

TEST_F(FaceGroupTextured, SlotSevenIsDrawnFlatAtHalfBrightness) {
    m.material.textures[kSlotHalfBright] = &white;
    m.lit = true;
    m.Add(kFront);
    Draw(kTextured);
    EXPECT_EQ(Pixel(0, 0), (Bgra{127, 127, 127, 255}));
    EXPECT_EQ(view.calls[0].call, Call::PrepareTextureCoordinates);
    EXPECT_EQ(view.calls[0].count, kSlotHalfBright);
}

TEST_F(FaceGroupTextured, ReflectionIsDrawnInTheNormalisedDiffuseColour) {
    m.material.textures[kSlotReflection] = &white;
    m.material.diffuse[0] = 0.5f; // scaled by 510: red 255, green 127
    m.material.diffuse[1] = 0.25f;
    m.material.diffuse[2] = 0.0f;
    m.Add(kFront);
    Draw(kTextured);
    EXPECT_EQ(Pixel(0, 0), (Bgra{0, 255 * 127 >> 8, 255 * 255 >> 8, 255}));
    EXPECT_EQ(view.Count(Call::PrepareTextureCoordinates), 0);

    // 80 % of a red highlight: red 204 + 51, green 127 * 0.2 = 25.4.
    Clear();
    state.highlightColour = 0x0000FF;
    Draw(kTextured | q5_FACERUN::kHighlight);
    EXPECT_EQ(Pixel(0, 0), (Bgra{0, 255 * 25 >> 8, 255 * 255 >> 8, 255}));

    Clear();
    m.material.diffuse[0] = m.material.diffuse[1] = m.material.diffuse[2] = 0.01f;
    m.material.intensity = 0.5f; // too dark to normalise: every channel 127
    Draw(kTextured);
    EXPECT_EQ(Pixel(0, 0), (Bgra{126, 126, 126, 255}));
}

TEST_F(FaceGroup, FaceColourIsTintedPerFace) {
    m.Add(kFront);
    m.faceColours[0] = {{}, 255, 255, 255};
    const float tint[1][3] = {{0.5f, 1.0f, 0.0f}};
    m.mesh.faceTint = tint;
    Draw();
    EXPECT_EQ(Pixel(0, 0), (Bgra{0, 255, 127, 255}));
}

TEST_F(FaceGroup, TwoSidedColouringGivesBackFacesTheSecondaryColours) {
    state.twoSidedColouring = true;
    m.lit = true;
    m.Add(kReversed);
    std::vector<q5_COLOUR6> secondary(3, q5_COLOUR6{{}, 250, 0, 0});
    m.mesh.secondaryColours = secondary.data();
    Draw(q5_FACERUN::kTwoSided);
    EXPECT_EQ(Pixel(0, 0), (Bgra{0, 0, 250, 255}));

    Clear();
    m.faces[0].vertex[1] = 2; // now front-facing
    m.faces[0].vertex[2] = 1;
    Draw(q5_FACERUN::kTwoSided);
    EXPECT_EQ(Pixel(0, 0), kVertexColour);

    Clear();
    m.faces[0].vertex[1] = 1;
    m.faces[0].vertex[2] = 2;
    m.lit = false;
    const q5_COLOUR6 backs[1] = {{{}, 0, 0, 99}};
    m.mesh.backFaceColours = backs;
    Draw(q5_FACERUN::kTwoSided);
    EXPECT_EQ(Pixel(0, 0), (Bgra{99, 0, 0, 255}));
}

TEST_F(FaceGroup, OutlinesDrawOnlyTheFlaggedEdgesAndNoFill) {
    m.material.flags = q5_MATERIAL::kDrawEdges;
    m.Add(kFront, 0b101); // corner 0 to 1 and corner 2 to 0, each without its end pixel
    Draw();
    EXPECT_EQ(Written(), 8);
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(Pixel(0, i), kFaceColour) << i;
        EXPECT_EQ(Depth(4 - i, 0), 100) << i;
    }

    Clear();
    m.lit = true;
    m.colours[0].red = 100;
    m.colours[2].red = 50;
    Draw();
    EXPECT_EQ(Pixel(0, 2).r, 150) << "mean of 100 and 200";
    EXPECT_EQ(Pixel(2, 0).r, 75) << "mean of 50 and 100";

    Clear();
    view.clipLeft = 1.0f;
    m.faces.clear();
    m.Add({{{-4, 0, 2}, {-4, 8, 2}, {4, 0, 0}}}, 0b100); // corner 2 (4,0) to corner 0 (-4,0)
    Draw();
    EXPECT_EQ(view.Sequence(), (std::vector<Call>{Call::ClipPolygon, Call::ProjectVertices}));
    EXPECT_EQ(SurfaceSpans(driver->surface), (Spans{{0, 2, 5}}))
        << "from (4,0) to the clip plane at x = 1, leaving the end pixel";
}

class FaceGroupRefine : public FaceGroupTextured {
protected:
    void SetUp() override {
        FaceGroupTextured::SetUp();
        m.material.textures[kSlotDiffuse] = &white;
        state.refine = true;
    }
};

TEST_F(FaceGroupRefine, EdgesLongerThan48PixelsAreSplitAndTheirMidpointsProjected) {
    const struct {
        const char* what;
        Triangle corners;
        int projected;
    } cases[] = {
        // clang-format off
        {"sides of 40", {{{0, 0, 0}, {20, 34.64f, 0}, {40, 0, 0}}}, 0},
        {"legs of 100: three midpoints, then three in each 50-pixel quarter",
         {{{0, 0, 0}, {0, 100, 0}, {100, 0, 0}}}, 3 + 4 * 3},
        {"legs of 96: the quarters split only their 67.9-pixel edge; 48 is not longer than 48",
         {{{0, 0, 0}, {0, 96, 0}, {96, 0, 0}}}, 3 + 4},
        {"edges 60, 67.1 and 30: two split, and the three halves are short",
         {{{0, 0, 0}, {0, 60, 0}, {30, 0, 0}}}, 2},
        // clang-format on
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        Clear();
        m.faces.clear();
        m.Add(c.corners);
        Draw(kTextured);
        EXPECT_EQ(view.Count(Call::ProjectPoint), c.projected);
        EXPECT_EQ(Pixel(3, 3).a, 255);
    }
    std::vector<std::array<float, 3>> points;
    for (const auto& r : view.calls)
        if (r.call == Call::ProjectPoint) points.push_back({r.point[0], r.point[1], r.point[2]});
    EXPECT_EQ(points, (std::vector<std::array<float, 3>>{{0, 30, 100}, {15, 30, 100}}));

    Clear();
    state.refine = false;
    m.faces.clear();
    m.Add({{{0, 0, 0}, {0, 100, 0}, {100, 0, 0}}});
    Draw(kTextured);
    EXPECT_EQ(view.Count(Call::ProjectPoint), 0);
}

TEST_F(FaceGroupRefine, SplitTrianglesCarryTheTextureAcross) {
    driver->Resize(128, 128);
    Clear();
    TestPicture halves{2, 1, 24}; // left texel red, right texel blue
    halves.SetTexel(0, 0, 0xFF0000);
    halves.SetTexel(1, 0, 0x0000FF);
    m.material.textures[kSlotDiffuse] = &halves;
    const float st[3][2] = {{0, 0}, {0, 0}, {1, 0}}; // s runs from 0 at x = 0 to 1 at x = 100
    m.Add({{{0, 0, 0}, {0, 100, 0}, {100, 0, 0}}});
    m.faceColours[0] = {{}, 255, 255, 255};
    m.mesh.texcoords = st;
    Draw(kTextured);
    EXPECT_EQ(Pixel(10, 10), (Bgra{0, 0, 254, 255}));
    EXPECT_EQ(Pixel(70, 10), (Bgra{254, 0, 0, 255}));
    EXPECT_EQ(Pixel(30, 60), (Bgra{0, 0, 254, 255}));
}

TEST_F(FaceGroup, WalkReportsWhetherItReachedTheEndOfTheRun) {
    m.Add(kFront);
    m.Add({{{8, 8, 0}, {8, 12, 0}, {12, 8, 0}}});
    q5_FACERUN run{1, 5, 1.0f, 0};
    EXPECT_EQ(driver->DrawFaceGroup(m.Get(), &run, &state), -1) << "the mesh has 2 faces";
    EXPECT_EQ(Written(), 10) << "face 1 is drawn before the walk stops";

    Clear();
    m.faces[1].vertex[2] = 99;
    run = {0, 2, 1.0f, 0};
    EXPECT_EQ(driver->DrawFaceGroup(m.Get(), &run, &state), -1) << "no vertex 99";

    m.faces[1].vertex[2] = 5;
    m.Get()->defaultMaterial = nullptr;
    EXPECT_EQ(driver->DrawFaceGroup(&m.mesh, &run, &state), -1) << "no material";
    EXPECT_EQ(Written(), 10);

    m.Get();
    EXPECT_EQ(driver->DrawFaceGroup(&m.mesh, &run, &state), 1);
    EXPECT_EQ(Written(), 20);
}

TEST_F(FaceGroup, PlacedGroupMovesTheVerticesByItsMatrix) {
    m.Add(kFront);
    MATRIX3D placement;
    placement.SetTranslate(POINT3D(2, 3, 0));
    q5_FACERUN run{0, 1, 1.0f, 0};
    EXPECT_EQ(driver->DrawFaceGroupPlaced(m.Get(), &run, &state, &placement), 1);
    EXPECT_EQ(Written(), 10);
    EXPECT_EQ(Depth(2, 3), 100);
    EXPECT_EQ(Depth(0, 0), kDepthEmpty);
    const float y = m.vertices[1].y; // copied out of the packed record
    EXPECT_EQ(y, 4.0f) << "the mesh keeps its own positions";
}

} // namespace

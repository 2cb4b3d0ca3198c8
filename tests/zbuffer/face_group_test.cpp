// IZB's face-group drawing through a test view: clip codes, culling, opacity, material set-up,
// colour and texture sources, outlines, subdivision and the walk's result.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <utility>
#include <vector>

#include "core/math/matrix3d.h"
#include "interface/mesh.h"
#include "raster_frame.h"
#include "support/test_view.h"
#include "zbuffer/izb.h"

namespace {

// Corners as (x, y, clip code) in view space.
using Triangle = std::array<std::array<float, 3>, 3>;
using Prepared = std::vector<std::pair<const q5_MATERIAL*, int>>;

// Drawn as it stands (non-positive area once projected) over rows 0-3 of 4, 3, 2 and 1
// pixels; Reversed is culled.
constexpr Triangle kFront = {{{0, 0, 0}, {0, 4, 0}, {4, 0, 0}}};
constexpr Triangle kReversed = {{{0, 0, 0}, {4, 0, 0}, {0, 4, 0}}};
constexpr Bgra kFaceColour{40, 100, 200, 255}, kVertexColour{50, 100, 200, 255};

constexpr std::uint8_t kTextured = q5_FACERUN::kTexturedAllowed;

// A mesh of up to four loose triangles, each face with its own three vertices at depth 100,
// drawn into a 16 x 16 frame; lit by vertex colours once a test sets mesh.primaryColours.
class FaceGroup : public ::testing::Test {
protected:
    void SetUp() override {
        driver->Attach(1, &context);
        driver->Resize(16, 16);
        Clear();
        white.Fill(0xFFFFFF);
        std::ranges::fill(colours, q5_VERTEXCOLOUR{{}, 200, 100, 50, 0});
        mesh.faceColours = faceColours;
    }
    void TearDown() override { driver->Release(); }
    void Clear() {
        driver->FrameStep(0);
        driver->ClearFrame(0);
        view.calls.clear();
    }
    void Add(const Triangle& corners, std::uint8_t edgeBits = 0) {
        q5_MESHFACE& face = faces[mesh.faceCount] = {0, edgeBits, {}};
        for (int k = 0; k < 3; ++k) {
            face.vertex[k] = mesh.vertexCount;
            vertices[mesh.vertexCount++] = {corners[k][0], corners[k][1], 100.0f,
                                            static_cast<std::uint8_t>(corners[k][2])};
        }
        faceColours[mesh.faceCount++] = {{}, 200, 100, 40};
    }
    std::int32_t Draw(std::uint8_t flags = 0, float opacity = 1.0f) {
        q5_FACERUN run{0, mesh.faceCount, opacity, flags};
        return driver->DrawFaceGroup(&mesh, &run, &state);
    }
    Bgra Pixel(int x, int y) const { return SurfacePixel(SurfaceOf(*driver), x, y); }
    // Draws the faces into a cleared frame and gives the pixel at the origin.
    Bgra Redraw(std::uint8_t flags = 0, float opacity = 1.0f) {
        Clear();
        Draw(flags, opacity);
        return Pixel(0, 0);
    }
    Spans Written() const { return SurfaceSpans(SurfaceOf(*driver)); }

    TestView view;
    q5_RENDERCONTEXT context{&view};
    q5_RENDERSTATE state;
    DriverModule module;
    IZB* driver = new IZB(module);
    q5_MESHVERTEX vertices[12];
    q5_MESHFACE faces[4];
    q5_COLOUR6 faceColours[4];
    q5_VERTEXCOLOUR colours[12];
    q5_MATERIAL material;
    q5_MESH mesh{.vertices = vertices, .faces = faces, .defaultMaterial = &material};
    TestPicture white{2, 2, 24};
};
class FaceGroupTextured : public FaceGroup {};

TEST_F(FaceGroup, ClipCodesChooseBetweenProjectingDroppingAndClipping) {
    view.clipLeft = 9.0f;
    Add({{{0, 0, 1}, {0, 4, 1}, {4, 0, 1}}});  // code 1 is no plane: projected as it is
    Add({{{0, 0, 2}, {0, 4, 2}, {4, 0, 6}}});  // all outside plane 1: no view call at all
    Add({{{4, 0, 2}, {4, 8, 4}, {12, 0, 0}}}); // partly outside: the view clips it
    // Codes 3, 5 and 1 share only bit 0, which is no plane: clipped, not dropped.
    Add({{{10, 8, 3}, {10, 12, 5}, {14, 8, 1}}});
    EXPECT_EQ(Draw(), 1);
    EXPECT_EQ(view.calls, (std::vector<std::string>{"project list 3", "clip 3", "project 3",
                                                    "clip 3", "project 3"}));
    // What is left of the third is (9,0) (9,3) (12,0); the fourth is wholly inside.
    const Spans expected{{0, 0, 4}, {0, 9, 12},  {1, 0, 3},   {1, 9, 11},   {2, 0, 2},   {2, 9, 10},
                         {3, 0, 1}, {8, 10, 14}, {9, 10, 13}, {10, 10, 12}, {11, 10, 11}};
    EXPECT_EQ(Written(), expected);
    EXPECT_EQ(Pixel(0, 0), kFaceColour);
}

TEST_F(FaceGroup, OneWindingIsCulledUnlessTheFaceIsTwoSided) {
    Add(kReversed);
    Draw();
    EXPECT_EQ(PixelsIn(Written()), 0);
    const std::uint32_t faceFlags[1] = {q5_MESH::kFaceTwoSided};
    for (int way = 0; way < 3; ++way) { // the request bit, the material bit, the face flag
        Clear();
        material.flags = way == 1 ? q5_MATERIAL::kTwoSided : 0;
        mesh.faceFlags = way == 2 ? faceFlags : nullptr;
        Draw(way == 0 ? q5_FACERUN::kTwoSided : 0);
        EXPECT_EQ(PixelsIn(Written()), 10) << way;
    }
}

// Over a cleared frame a blended pixel's alpha is the opacity itself.
TEST_F(FaceGroup, OpacityIsClampedThenTruncatedToAByte) {
    Add(kFront);
    EXPECT_EQ(Redraw(q5_FACERUN::kBlend, 1.5f).a, 255);
    EXPECT_EQ(Redraw(q5_FACERUN::kBlend, -0.2f).a, 0);
    EXPECT_EQ(Redraw(q5_FACERUN::kBlend, 0.5f), (Bgra{40 * 127 / 256, 100 * 127 / 256, 99, 127}));
    material.transparency = 0.5f;
    EXPECT_EQ(Redraw(q5_FACERUN::kBlend | q5_FACERUN::kUseMaterialTransparency, 1.0f).a, 127);
}

TEST_F(FaceGroup, FaceColourIsTintedPerFace) {
    Add(kFront);
    faceColours[0] = {{}, 255, 255, 255};
    const float tint[1][3] = {{0.5f, 1.0f, 0.0f}};
    mesh.faceTint = tint;
    EXPECT_EQ(Redraw(), (Bgra{0, 255, 127, 255}));
}

TEST_F(FaceGroup, TwoSidedColouringGivesBackFacesTheSecondaryColours) {
    state.twoSidedColouring = true;
    mesh.primaryColours = colours;
    Add(kReversed);
    Add({{{8, 8, 0}, {8, 12, 0}, {12, 8, 0}}}); // front-facing
    const std::vector<q5_COLOUR6> secondary(6, q5_COLOUR6{{}, 250, 0, 0});
    mesh.secondaryColours = secondary.data();
    EXPECT_EQ(Redraw(q5_FACERUN::kTwoSided), (Bgra{0, 0, 250, 255}));
    EXPECT_EQ(Pixel(8, 8), kVertexColour);
}

TEST_F(FaceGroup, OutlinesDrawOnlyTheFlaggedEdgesAndNoFill) {
    material.flags = q5_MATERIAL::kDrawEdges;
    Add(kFront, 0b101); // corner 0 to 1 and corner 2 to 0, each without its end pixel
    Draw();
    EXPECT_EQ(Written(), (Spans{{0, 0, 5}, {1, 0, 1}, {2, 0, 1}, {3, 0, 1}}));
    EXPECT_EQ(Pixel(0, 3), kFaceColour);

    Clear();
    mesh.primaryColours = colours;
    colours[0].red = 100;
    colours[2].red = 50;
    Draw();
    EXPECT_EQ(Pixel(0, 2).r, 150) << "mean of 100 and 200";
    EXPECT_EQ(Pixel(2, 0).r, 75) << "mean of 50 and 100";
}

// Untextured triangles wait to be drawn together; on equal depths the later face still wins,
// whether it is clipped, outlined or textured.
TEST_F(FaceGroup, LaterFacesDrawOverEarlierOnesWhicheverWayTheyGo) {
    view.clipLeft = 9.0f;
    q5_MATERIAL outlined, textured;
    outlined.flags = q5_MATERIAL::kDrawEdges;
    textured.textures[kSlotDiffuse] = &white;
    q5_MATERIAL* table[3] = {&material, &outlined, &textured};
    mesh.materials = table;
    mesh.materialCount = 3;
    // Each later face covers pixel (9, 0); what is left of the clipped one is the quad (9,0)
    // (9,5) (12,8) (12,0), which does not go through the queue.
    const Triangle first = {{{9, 0, 0}, {9, 3, 0}, {12, 0, 0}}};
    const struct {
        const char* what;
        Triangle corners;
        std::uint32_t material;
    } kLater[] = {{"clipped", {{{4, 0, 2}, {12, 8, 0}, {12, 0, 0}}}, 0},
                  {"outlined", first, 1},
                  {"textured", first, 2}};
    for (const auto& later : kLater) {
        mesh.faceCount = mesh.vertexCount = 0;
        Add(later.corners, 0b001);
        faces[0].material = later.material;
        faceColours[0] = {{}, 3, 2, 1};
        Clear();
        Draw(kTextured);
        const Bgra alone = Pixel(9, 0);
        ASSERT_NE(alone, kFaceColour) << later.what;

        mesh.faceCount = mesh.vertexCount = 0;
        Add(first);
        Add(later.corners, 0b001);
        faces[1].material = later.material;
        faceColours[1] = {{}, 3, 2, 1};
        Clear();
        Draw(kTextured);
        EXPECT_EQ(Pixel(9, 0), alone) << later.what;
    }
}

TEST_F(FaceGroup, WalkReportsWhetherItReachedTheEndOfTheRun) {
    Add(kFront);
    Add({{{8, 8, 0}, {8, 12, 0}, {12, 8, 0}}});
    q5_FACERUN run{1, 5, 1.0f, 0};
    EXPECT_EQ(driver->DrawFaceGroup(&mesh, &run, &state), -1) << "the mesh has 2 faces";
    EXPECT_EQ(Written(), (Spans{{8, 8, 12}, {9, 8, 11}, {10, 8, 10}, {11, 8, 9}}));
    run = {0, 2, 1.0f, 0};
    EXPECT_EQ(driver->DrawFaceGroup(&mesh, &run, &state), 1);
}

TEST_F(FaceGroup, PlacedGroupMovesTheVerticesByItsMatrix) {
    Add(kFront);
    MATRIX3D placement;
    placement.SetTranslate(POINT3D(2, 3, 0));
    q5_FACERUN run{0, 1, 1.0f, 0};
    EXPECT_EQ(driver->DrawFaceGroupPlaced(&mesh, &run, &state, &placement), 1);
    EXPECT_EQ(Written(), (Spans{{3, 2, 6}, {4, 2, 5}, {5, 2, 4}, {6, 2, 3}}));
    const float y = vertices[1].y; // copied out of the packed record
    EXPECT_EQ(y, 4.0f) << "the mesh keeps its own positions";
}

TEST_F(FaceGroupTextured, ARepeatedMaterialIsSetUpOnce) {
    q5_MATERIAL other;
    other.textures[kSlotDiffuse] = &white;
    material.textures[kSlotDiffuse] = &white;
    for (int i = 0; i < 4; ++i) Add(kFront);
    q5_MATERIAL* table[2] = {&material, &other};
    faces[2].material = 1; // materials 0, 0, 1, 0
    mesh.materials = table;
    mesh.materialCount = 2;
    Draw(kTextured);
    EXPECT_EQ(
        view.prepared,
        (Prepared{{&material, kSlotDiffuse}, {&other, kSlotDiffuse}, {&material, kSlotDiffuse}}));
}

TEST_F(FaceGroupTextured, DiffuseTextureIsModulatedByTheVertexColours) {
    material.textures[kSlotDiffuse] = &white;
    mesh.primaryColours = colours;
    Add(kFront);
    EXPECT_EQ(Redraw(kTextured), (Bgra{255 * 50 >> 8, 255 * 100 >> 8, 255 * 200 >> 8, 255}));
    EXPECT_EQ(Redraw(), kVertexColour) << "textured drawing not allowed: the vertex colour alone";
    TestPicture empty{1, 1, 24};
    empty.header = nullptr;
    material.textures[kSlotDiffuse] = &empty;
    EXPECT_EQ(Redraw(kTextured), kVertexColour) << "a picture without image: untextured";
}

TEST_F(FaceGroupTextured, SlotSevenIsDrawnFlatAtHalfBrightness) {
    material.textures[kSlotHalfBright] = &white;
    mesh.primaryColours = colours;
    Add(kFront);
    EXPECT_EQ(Redraw(kTextured), (Bgra{127, 127, 127, 255}));
    EXPECT_EQ(view.prepared, (Prepared{{&material, kSlotHalfBright}}));
}

TEST_F(FaceGroupTextured, ReflectionIsDrawnInTheNormalisedDiffuseColour) {
    material.textures[kSlotReflection] = &white;
    std::ranges::copy(std::array{0.5f, 0.25f, 0.0f}, material.diffuse); // by 510: 255, 127, 0
    Add(kFront);
    EXPECT_EQ(Redraw(kTextured), (Bgra{0, 255 * 127 >> 8, 255 * 255 >> 8, 255}));
    EXPECT_TRUE(view.prepared.empty());
    // 80 % of a red highlight: red 204 + 51, green 127 * 0.2 = 25.4.
    state.highlightColour = 0x0000FF;
    EXPECT_EQ(Redraw(kTextured | q5_FACERUN::kHighlight),
              (Bgra{0, 255 * 25 >> 8, 255 * 255 >> 8, 255}));
    material.diffuse[0] = material.diffuse[1] = material.diffuse[2] = 0.01f;
    material.intensity = 0.5f; // too dark to normalise: every channel 127
    EXPECT_EQ(Redraw(kTextured), (Bgra{126, 126, 126, 255}));
}

class FaceGroupRefine : public FaceGroupTextured {
protected:
    void SetUp() override {
        FaceGroupTextured::SetUp();
        material.textures[kSlotDiffuse] = &white;
        state.refine = true;
    }
};

TEST_F(FaceGroupRefine, EdgesLongerThan48PixelsAreSplitAndTheirMidpointsProjected) {
    const auto projected = [this](const Triangle& corners) {
        Clear();
        mesh.faceCount = mesh.vertexCount = 0;
        Add(corners);
        Draw(kTextured);
        EXPECT_EQ(Pixel(3, 3).a, 255);
        return std::ranges::count(view.calls, "point");
    };
    EXPECT_EQ(projected({{{0, 0, 0}, {20, 34.64f, 0}, {40, 0, 0}}}), 0) << "sides of 40";
    // Three midpoints, then three in each 50-pixel quarter.
    EXPECT_EQ(projected({{{0, 0, 0}, {0, 100, 0}, {100, 0, 0}}}), 3 + 4 * 3);
    // Legs of 96: the quarters split only their 67.9-pixel edge; 48 is not longer than 48.
    EXPECT_EQ(projected({{{0, 0, 0}, {0, 96, 0}, {96, 0, 0}}}), 3 + 4);
    state.refine = false;
    EXPECT_EQ(projected({{{0, 0, 0}, {0, 100, 0}, {100, 0, 0}}}), 0) << "refinement is off";
}

TEST_F(FaceGroupRefine, SplitTrianglesCarryTheTextureAcross) {
    driver->Resize(128, 128);
    Clear();
    TestPicture halves{2, 1, 24}; // left texel red, right texel blue
    halves.SetTexel(0, 0, 0xFF0000);
    halves.SetTexel(1, 0, 0x0000FF);
    material.textures[kSlotDiffuse] = &halves;
    const float st[3][2] = {{0, 0}, {0, 0}, {1, 0}}; // s runs from 0 at x = 0 to 1 at x = 100
    Add({{{0, 0, 0}, {0, 100, 0}, {100, 0, 0}}});
    mesh.texcoords = st;
    Draw(kTextured); // in the face colour: red 255 * 200 >> 8, blue 255 * 40 >> 8
    EXPECT_EQ(Pixel(10, 10), (Bgra{0, 0, 199, 255}));
    EXPECT_EQ(Pixel(70, 10), (Bgra{39, 0, 0, 255}));
}

} // namespace

// Clip codes, clipping and projection of the host's view.
#include <gtest/gtest.h>

#include <bit>

#include "host/view/host_view.h"
#include "host/view/polygon_clip.h"
#include "host/view/view_volume.h"
#include "interface/screen_vertex.h"

namespace {

// A 200 x 100 frame seeing 45 degrees either side horizontally and tan = 0.5 vertically, from
// z = 1 to z = 9, so plane positions are easy to write down.
ViewVolume TestVolume() {
    ViewVolume v;
    v.width = 200;
    v.height = 100;
    v.tanHalfX = 1.0;
    v.tanHalfY = 0.5;
    v.nearZ = 1.0;
    v.farZ = 9.0;
    return v;
}

ScreenVertex Corner(float x, float y, float z, std::uint8_t red) {
    ScreenVertex c{};
    c.x = std::bit_cast<std::int32_t>(x);
    c.y = std::bit_cast<std::int32_t>(y);
    c.z = std::bit_cast<std::int32_t>(z);
    c.red = red;
    c.clipCode = TestVolume().ClipCode(x, y, z);
    return c;
}

} // namespace

TEST(ClipCodes, OneBitPerPlaneOutsideAndNoneOnAPlane) {
    const ViewVolume v = TestVolume();
    EXPECT_EQ(v.ClipCode(0, 0, 5), 0);
    EXPECT_EQ(v.ClipCode(0, 0, 0.5), kClipNear);
    EXPECT_EQ(v.ClipCode(-6, 0, 5), kClipLeft);
    EXPECT_EQ(v.ClipCode(0, -3, 5), kClipBottom);
    EXPECT_EQ(v.ClipCode(12, 6, 10), kClipRight | kClipTop | kClipFar);
    EXPECT_EQ(v.ClipCode(5, 2.5, 5), 0);
    EXPECT_EQ(v.ClipCode(0, 0, 1), 0);
    EXPECT_EQ(v.ClipCode(0, 0, 9), 0);
}

TEST(Projection, DepthRunsFromZeroAtNearToTwoToThe30AtFar) {
    const ViewVolume v = TestVolume();
    EXPECT_EQ(v.Project(0, 0, 1).z, 0);
    EXPECT_EQ(v.Project(0, 0, 9).z, 1 << 30);
    // zNdc = (9 + 1) / 8 - 2 * 9 / (8 * z); at z = 1.8 that is 0, the middle of the range.
    EXPECT_EQ(v.Project(0, 0, 1.8).z, 1 << 29);
}

TEST(PolygonClip, CutAtTheNearPlaneCarriesTextureAndColourOnlyWhenAsked) {
    // One corner in front of the near plane (z = 0), two behind it (z = 3): both cut edges
    // cross z = 1 a third of the way along from the outside corner.
    const ClipVertex triangle[3] = {
        {0, 0, 0, 0, 0, 0, 0, 0}, {0.6, 0, 3, 0.9f, 0, 255, 0, 0}, {0, 0.6, 3, 0, 0.9f, 0, 255, 0}};
    ClipVertex p[kMaxClipVertices] = {triangle[0], triangle[1], triangle[2]};
    ASSERT_EQ(ClipPolygonToVolume(TestVolume(), kClipNear, p, 3, true), 4);
    // Order: the crossing on edge 0-1, corner 1, corner 2, the crossing on edge 2-0.
    EXPECT_DOUBLE_EQ(p[0].z, 1.0);
    EXPECT_NEAR(p[0].x, 0.2, 1e-12);
    EXPECT_NEAR(p[0].s, 0.3f, 1e-6);
    EXPECT_NEAR(p[0].red, 85.0f, 1e-4);
    EXPECT_EQ(p[1].s, 0.9f);
    EXPECT_DOUBLE_EQ(p[3].z, 1.0);
    EXPECT_NEAR(p[3].y, 0.2, 1e-12);
    EXPECT_NEAR(p[3].t, 0.3f, 1e-6);
    EXPECT_NEAR(p[3].green, 85.0f, 1e-4);
    // Without texture the new corners have no coordinates; the old ones keep theirs.
    ClipVertex q[kMaxClipVertices] = {triangle[0], triangle[1], triangle[2]};
    ASSERT_EQ(ClipPolygonToVolume(TestVolume(), kClipNear, q, 3, false), 4);
    EXPECT_EQ(q[0].s, 0.0f);
    EXPECT_EQ(q[1].s, 0.9f);
}

TEST(PolygonClip, OnlyTheNamedPlanesCut) {
    ClipVertex p[kMaxClipVertices] = {{0, 0, 0.5}, {1, 0, 5}, {0, 1, 5}};
    EXPECT_EQ(ClipPolygonToVolume(TestVolume(), kClipFar | kClipLeft, p, 3, true), 3);
    EXPECT_EQ(p[0].z, 0.5);
    ClipVertex beyond[kMaxClipVertices] = {{0, 0, 10}, {1, 0, 11}, {0, 0, 12}};
    EXPECT_EQ(ClipPolygonToVolume(TestVolume(), kClipFar, beyond, 3, true), 0);
}

TEST(HostViewClip, ClipsFloatCornersAndProjectsTheResultInPlace) {
    HostView view;
    view.SetVolume(TestVolume());
    ScreenVertex a = Corner(0, 0, 0, 0), b = Corner(0.6f, 0, 3, 255), c = Corner(0, 0.6f, 3, 255);
    ScreenVertex* corners[3] = {&a, &b, &c};
    ScreenVertex out[16];
    int count = 3;
    ASSERT_TRUE(view.ClipPolygon(corners, out, count));
    ASSERT_EQ(count, 4);
    EXPECT_EQ(out[0].red, 85);
    EXPECT_EQ(out[0].clipCode, 0);
    view.ProjectVertices(out, count, sizeof(ScreenVertex));
    // (0.2, 0, 1) lands at 100 + 0.2 * 100 = 120 pixels, on the near plane (depth 0).
    EXPECT_EQ(out[0].x, 120 * 256);
    EXPECT_EQ(out[0].y, 50 * 256);
    EXPECT_EQ(out[0].z, 0);
    // (0.6, 0, 3): 100 + 0.2 * 100 again.
    EXPECT_EQ(out[1].x, 120 * 256);
    // Wholly outside one plane: nothing is left.
    a = Corner(20, 0, 5, 0), b = Corner(30, 0, 5, 0), c = Corner(20, 1, 5, 0);
    count = 3;
    EXPECT_FALSE(view.ClipTexturedPolygon(corners, out, count));
    EXPECT_EQ(count, 0);
}

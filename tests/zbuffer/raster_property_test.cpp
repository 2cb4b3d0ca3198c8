// Properties over many random polygons: writes stay inside the frame and the polygon's box,
// coverage follows the width, shared edges are filled once, opaque redrawing changes nothing.
#include "raster_frame.h"
#include "zbuffer/raster/span_fillers.h"
#include "zbuffer/raster/texture_binding.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <numbers>
#include <random>

namespace {

// A convex polygon of n vertices on a circle, with random colours, depths and texture positions.
std::vector<ScreenVertex> RandomConvex(std::mt19937& rng, double cx, double cy, double r, int n) {
    std::uniform_real_distribution<double> angle(0.0, 2.0 * std::numbers::pi);
    std::uniform_int_distribution<int> depth(-5000, 5000);
    std::uniform_real_distribution<float> uv(0.0f, 3.0f);
    std::vector<double> angles(n);
    for (double& a : angles) a = angle(rng);
    std::sort(angles.begin(), angles.end());
    std::vector<ScreenVertex> out;
    for (double a : angles) {
        out.push_back(
            Vertex(cx + r * std::cos(a), cy + r * std::sin(a), depth(rng), rng(), rng(), rng()));
        out.back().u = uv(rng), out.back().v = uv(rng);
    }
    return out;
}

class EveryMode : public ::testing::TestWithParam<int> {
protected:
    EveryMode() : texture(8, 8, 32) {
        std::mt19937 rng(7);
        for (int y = 0; y < 8; ++y)
            for (int x = 0; x < 8; ++x) texture.SetTexel(x, y, static_cast<std::uint32_t>(rng()));
        material.textures[0] = &texture;
    }
    FillMode Mode() const { return static_cast<FillMode>(GetParam()); }
    TestPicture texture;
    q5_MATERIAL material;
};

// Polygons from a third of a pixel to hundreds across, the large ones reaching far above and
// left of the frame, where the fast path jumps instead of stepping.
TEST_P(EveryMode, MatchesTheReferenceStaysInItsBoxAndRedrawsOpaqueUnchanged) {
    std::mt19937 rng(4321 + GetParam());
    std::uniform_real_distribution<double> logRadius(-1.0, 6.0);
    std::uniform_int_distribution<int> count(3, 8), bias(-3, 3);
    // Blended modes change the colour on every pass, so only opaque ones redraw unchanged.
    const bool opaque = Mode() <= FillMode::Gouraud || Mode() == FillMode::FlatTextured ||
                        Mode() == FillMode::GouraudTextured;
    for (int i = 0; i < 500; ++i) {
        RasterFrame fast(40, 30), reference(40, 30);
        const std::mt19937 start = rng;
        for (RasterFrame* f : {&fast, &reference}) {
            rng = start; // the same background, state and polygon for both
            for (int y = 0; y < 30; ++y)
                for (int x = 0; x < 40; ++x)
                    f->Set(x, y, std::bit_cast<Bgra>(static_cast<std::uint32_t>(rng())));
            BindMaterialTexture(f->rc, &material, 0);
            f->rc.opacity = static_cast<std::int32_t>(rng() % 256);
            f->rc.inverseOpacity = 255 - f->rc.opacity;
            f->rc.flatColour = RgbBytes{static_cast<std::uint8_t>(rng()), 9, 200};
            f->rc.doubleResolution = rng() % 4 == 0;
            f->rc.depthAlwaysPasses = rng() % 5 == 0;
            f->rc.depthBias = 1024 * bias(rng);
        }
        const double r = std::exp(logRadius(rng));
        std::uniform_real_distribution<double> centre(-r, 40.0);
        const Polygon p(RandomConvex(rng, centre(rng), centre(rng), r, count(rng)));
        const int scale = fast.rc.doubleResolution ? 2 : 1; // vertices are doubled first
        int minX = INT32_MAX, maxX = INT32_MIN, minY = INT32_MAX, maxY = INT32_MIN;
        for (const ScreenVertex& v : p.vertices) {
            minX = std::min(minX, scale * v.x >> 8), maxX = std::max(maxX, scale * v.x >> 8);
            minY = std::min(minY, scale * v.y >> 8), maxY = std::max(maxY, scale * v.y >> 8);
        }
        const RasterFrame before = fast;
        ASSERT_EQ(fast.Draw(p, Mode()), reference.Draw(p, Mode(), FillPolygonReference));
        ASSERT_TRUE(fast == reference) << "polygon " << i;
        ASSERT_TRUE(fast.GuardsIntact()) << "polygon " << i << " wrote above or below the frame";
        for (int y = 0; y < 30; ++y)
            for (int x = 0; x < 40; ++x)
                ASSERT_TRUE((!fast.Written(x, y) && fast.Pixel(x, y) == before.Pixel(x, y)) ||
                            (x >= minX && x <= maxX && y >= minY && y <= maxY))
                    << "polygon " << i << " wrote " << x << "," << y;
        if (!opaque) continue;
        fast.Draw(p, Mode());
        ASSERT_TRUE(fast == reference) << "redrawing polygon " << i;
    }
}

INSTANTIATE_TEST_SUITE_P(Fillers, EveryMode, ::testing::Range(0, kFillModeCount));

// Exact width at height y of a triangle whose corners lie on three different heights.
double WidthAt(const double (&v)[3][2], double y) {
    double lo = INFINITY, hi = -INFINITY;
    for (int i = 0; i < 3; ++i) {
        const double *a = v[i], *b = v[(i + 1) % 3];
        if (y < std::min(a[1], b[1]) || y > std::max(a[1], b[1])) continue;
        const double x = a[0] + (y - a[1]) * (b[0] - a[0]) / (b[1] - a[1]);
        lo = std::min(lo, x), hi = std::max(hi, x);
    }
    return hi > lo ? hi - lo : 0.0;
}

TEST(Coverage, LargeTrianglesFillTheirWidthOnEveryScanline) {
    std::mt19937 rng(5);
    std::uniform_int_distribution<int> px(0, 63), py(0, 47);
    for (int i = 0; i < 300; ++i) {
        double v[3][2];
        do {
            for (auto& c : v) c[0] = px(rng), c[1] = py(rng);
        } while (v[0][1] == v[1][1] || v[1][1] == v[2][1] || v[0][1] == v[2][1]);
        RasterFrame f(64, 48);
        f.Draw(
            Polygon{Vertex(v[0][0], v[0][1]), Vertex(v[1][0], v[1][1]), Vertex(v[2][0], v[2][1])});
        std::vector<int> filled(48);
        for (const Span& s : f.WrittenSpans()) filled[s[0]] += s[2] - s[1];
        for (int y = 0; y < 48; ++y)
            ASSERT_NEAR(filled[y], WidthAt(v, y), 1.01) << "triangle " << i << " row " << y;
    }
}

TEST(SharedEdges, PolygonsAboveAndBelowAHorizontalEdgeNeverShareAPixel) {
    std::mt19937 rng(11);
    std::uniform_real_distribution<double> x(-4.0, 36.0), y(2.0, 22.0), reach(1.0, 12.0);
    for (int i = 0; i < 300; ++i) {
        const double edgeY = y(rng), x0 = x(rng), x1 = x0 + reach(rng) * 2.5;
        const double up = edgeY - reach(rng), down = edgeY + reach(rng);
        RasterFrame upper(32, 24), lower(32, 24);
        // Triangles for even i, quads for odd.
        Polygon above = i % 2 ? Polygon{Vertex(x0 + 0.5, up), Vertex(x1 - 0.3, up),
                                        Vertex(x1, edgeY), Vertex(x0, edgeY)}
                              : Polygon{Vertex(x(rng), up), Vertex(x1, edgeY), Vertex(x0, edgeY)};
        Polygon below = i % 2 ? Polygon{Vertex(x0, edgeY), Vertex(x1, edgeY),
                                        Vertex(x1 + 0.7, down), Vertex(x0 - 0.2, down)}
                              : Polygon{Vertex(x0, edgeY), Vertex(x1, edgeY), Vertex(x(rng), down)};
        upper.Draw(above);
        lower.Draw(below);
        // The upper polygon leaves the edge's scanline to the lower one.
        const int shared = static_cast<int>(std::floor(edgeY));
        for (const Span& s : upper.WrittenSpans()) ASSERT_LT(s[0], shared) << "pair " << i;
        for (const Span& s : lower.WrittenSpans()) ASSERT_GE(s[0], shared) << "pair " << i;
    }
}

} // namespace

// Properties over many random polygons: writes stay inside the clip bounds and the polygon's
// box, coverage follows the area, shared horizontal edges are filled once, and opaque
// redrawing changes nothing.
#include "raster_frame.h"
#include "zbuffer/span_fillers.h"
#include "zbuffer/texture_binding.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <numbers>
#include <random>

namespace {

constexpr int kPolygonsPerMode = 300;

// A convex polygon of n vertices around (cx, cy), in 1/256 pixel, with random colours, depths
// and texture positions.
std::vector<ScreenVertex> RandomConvex(std::mt19937& rng, double cx, double cy, double radius,
                                       int n) {
    std::uniform_real_distribution<double> angle(0.0, 2.0 * std::numbers::pi);
    std::uniform_int_distribution<int> depth(-5000, 5000);
    std::uniform_real_distribution<float> uv(0.0f, 3.0f);
    const auto byte = [&rng] { return static_cast<std::uint8_t>(rng()); };
    std::vector<double> angles(n);
    for (double& a : angles) a = angle(rng);
    std::sort(angles.begin(), angles.end());
    std::vector<ScreenVertex> out;
    for (double a : angles) {
        out.push_back(Vertex(cx + radius * std::cos(a), cy + radius * std::sin(a), depth(rng),
                             byte(), byte(), byte()));
        out.back().u = uv(rng);
        out.back().v = uv(rng);
    }
    return out;
}

class EveryMode : public ::testing::TestWithParam<FillMode> {
protected:
    EveryMode() : texture(8, 8, 32) {
        std::mt19937 rng(7);
        for (int y = 0; y < 8; ++y)
            for (int x = 0; x < 8; ++x) texture.SetTexel(x, y, static_cast<std::uint32_t>(rng()));
        material.textures[0] = &texture;
    }
    void Prepare(RasterContext& rc, std::mt19937& rng) {
        BindMaterialTexture(rc, &material, 0);
        rc.opacity = static_cast<std::int32_t>(rng() % 256);
        rc.inverseOpacity = 255 - rc.opacity;
        rc.flatColour = RgbBytes{static_cast<std::uint8_t>(rng()), 9, 200};
    }
    TestPicture texture;
    q5_MATERIAL material;
};

// Blended modes change the colour on every pass, so only opaque ones redraw unchanged.
bool Opaque(FillMode mode) {
    return mode == FillMode::Flat || mode == FillMode::Gouraud || mode == FillMode::FlatTextured ||
           mode == FillMode::GouraudTextured;
}

TEST_P(EveryMode, StaysInsideItsBoundsAndRedrawsOpaqueUnchanged) {
    constexpr Bgra kUntouched{0x5C, 0x5C, 0x5C, 0x5C};
    std::mt19937 rng(1234 + static_cast<int>(GetParam()));
    std::uniform_real_distribution<double> centre(-12.0, 44.0), radius(0.3, 25.0);
    std::uniform_int_distribution<int> count(3, 8);
    for (int i = 0; i < kPolygonsPerMode; ++i) {
        RasterFrame f(32, 24, kUntouched);
        Prepare(f.rc, rng);
        Polygon p(RandomConvex(rng, centre(rng), centre(rng) * 0.75, radius(rng), count(rng)));
        int minX = INT32_MAX, maxX = INT32_MIN, minY = INT32_MAX, maxY = INT32_MIN;
        for (int k = 0; k < p.Count(); ++k) {
            minX = std::min(minX, p[k].x >> 8), maxX = std::max(maxX, p[k].x >> 8);
            minY = std::min(minY, p[k].y >> 8), maxY = std::max(maxY, p[k].y >> 8);
        }
        f.Draw(p, GetParam());
        ASSERT_TRUE(f.GuardsIntact()) << "polygon " << i << " wrote above or below the frame";
        for (int y = 0; y < 24; ++y)
            for (int x = 0; x < 32; ++x)
                ASSERT_TRUE((!f.Written(x, y) && f.Pixel(x, y) == kUntouched) ||
                            (x >= minX && x <= maxX && y >= minY && y <= maxY))
                    << "polygon " << i << " wrote " << x << "," << y;
        if (!Opaque(GetParam())) continue;
        const auto colour = f.Colour();
        const auto depth = f.DepthBuffer();
        f.Draw(p, GetParam());
        ASSERT_EQ(f.Colour(), colour) << "redrawing polygon " << i;
        ASSERT_EQ(f.DepthBuffer(), depth) << "redrawing polygon " << i;
    }
}

TEST_P(EveryMode, FastPathMatchesTheReferenceBitForBit) {
    std::mt19937 rng(4321 + static_cast<int>(GetParam()));
    // Mostly large polygons reaching far above and left of the frame, where the fast path
    // jumps instead of stepping.
    std::uniform_real_distribution<double> centre(-300.0, 60.0), radius(0.5, 400.0);
    std::uniform_int_distribution<int> count(3, 8), bias(-3, 3);
    for (int i = 0; i < kPolygonsPerMode; ++i) {
        RasterFrame fast(40, 30), reference(40, 30);
        const std::mt19937 start = rng;
        for (RasterFrame* f : {&fast, &reference}) {
            rng = start; // the same background, state and polygon for both
            for (int y = 0; y < 30; ++y)
                for (int x = 0; x < 40; ++x)
                    f->Set(x, y, std::bit_cast<Bgra>(static_cast<std::uint32_t>(rng())));
            Prepare(f->rc, rng);
            f->rc.doubleResolution = rng() % 4 == 0;
            f->rc.depthAlwaysPasses = rng() % 5 == 0;
            f->rc.depthBias = 1024 * bias(rng);
        }
        const Polygon original(
            RandomConvex(rng, centre(rng), centre(rng), radius(rng), count(rng)));
        Polygon a(original), b(original);
        a.Use(fast.rc);
        b.Use(reference.rc);
        ASSERT_EQ(FillPolygon(fast.rc, GetParam()), FillPolygonReference(reference.rc, GetParam()));
        ASSERT_EQ(fast.Colour(), reference.Colour()) << "polygon " << i;
        ASSERT_EQ(fast.DepthBuffer(), reference.DepthBuffer()) << "polygon " << i;
    }
}

INSTANTIATE_TEST_SUITE_P(Fillers, EveryMode,
                         ::testing::Values(FillMode::Flat, FillMode::Gouraud, FillMode::FlatBlended,
                                           FillMode::GouraudBlended, FillMode::FlatTextured,
                                           FillMode::GouraudTextured, FillMode::FlatTexturedBlended,
                                           FillMode::GouraudTexturedBlended,
                                           FillMode::FlatTextureAlpha,
                                           FillMode::GouraudTextureAlpha));

// Exact width of a triangle at height y (vertices in whole pixels).
double WidthAt(const double (&v)[3][2], double y) {
    double lo = INFINITY, hi = -INFINITY;
    for (int i = 0; i < 3; ++i) {
        const double* a = v[i];
        const double* b = v[(i + 1) % 3];
        if (a[1] == b[1] || y < std::min(a[1], b[1]) || y > std::max(a[1], b[1])) continue;
        const double x = a[0] + (y - a[1]) * (b[0] - a[0]) / (b[1] - a[1]);
        lo = std::min(lo, x);
        hi = std::max(hi, x);
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
        const int top = static_cast<int>(std::min({v[0][1], v[1][1], v[2][1]}));
        const int bottom = static_cast<int>(std::max({v[0][1], v[1][1], v[2][1]}));
        double filled = 0.0;
        for (int y = top; y <= bottom; ++y) {
            ASSERT_NEAR(f.WrittenInRow(y), WidthAt(v, y), 1.01) << "triangle " << i << " row " << y;
            filled += f.WrittenInRow(y);
        }
        const double area = std::abs((v[1][0] - v[0][0]) * (v[2][1] - v[0][1]) -
                                     (v[2][0] - v[0][0]) * (v[1][1] - v[0][1])) /
                            2.0;
        ASSERT_NEAR(filled, area, bottom - top + 1) << "triangle " << i;
        ASSERT_EQ(filled, f.WrittenCount());
    }
}

TEST(SharedEdges, PolygonsAboveAndBelowAHorizontalEdgeNeverShareAPixel) {
    std::mt19937 rng(11);
    std::uniform_real_distribution<double> x(-4.0, 36.0), y(2.0, 22.0), reach(1.0, 12.0);
    for (int i = 0; i < 300; ++i) {
        const double edgeY = y(rng);
        double x0 = x(rng), x1 = x(rng);
        if (x0 > x1) std::swap(x0, x1);
        if (x1 - x0 < 1.0) x1 = x0 + 1.0;
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
        const int shared = static_cast<int>(std::floor(edgeY));
        ASSERT_EQ(upper.WrittenInRow(shared), 0) << "polygon pair " << i;
        for (int r = 0; r < 24; ++r)
            for (int c = 0; c < 32; ++c)
                ASSERT_FALSE(upper.Written(c, r) && lower.Written(c, r))
                    << "pair " << i << " at " << c << "," << r;
    }
}

} // namespace

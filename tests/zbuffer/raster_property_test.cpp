// Properties over many random polygons: writes stay inside the clip bounds and the polygon's
// box, coverage follows the area, shared horizontal edges are filled once, and opaque
// redrawing changes nothing.
#include "raster_frame.h"
#include "zbuffer/span_fillers.h"
#include "zbuffer/texture_binding.h"

#include <gtest/gtest.h>

#include <algorithm>
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
    std::uniform_int_distribution<int> byte(0, 255), depth(-5000, 5000);
    std::uniform_real_distribution<float> uv(0.0f, 3.0f);
    std::vector<double> angles(n);
    for (double& a : angles) a = angle(rng);
    std::sort(angles.begin(), angles.end());
    std::vector<ScreenVertex> out;
    for (double a : angles) {
        ScreenVertex v =
            Vertex(cx + radius * std::cos(a), cy + radius * std::sin(a), depth(rng),
                   static_cast<std::uint8_t>(byte(rng)), static_cast<std::uint8_t>(byte(rng)),
                   static_cast<std::uint8_t>(byte(rng)));
        v.u = uv(rng);
        v.v = uv(rng);
        out.push_back(v);
    }
    return out;
}

// A frame with guard rows above and below both buffers, to catch writes outside them.
class GuardedFrame {
public:
    static constexpr int kGuardRows = 2;
    GuardedFrame(int width, int height)
        : width_(width), height_(height),
          colour_(static_cast<std::size_t>(width) * 4 * (height + 2 * kGuardRows), 0x5C),
          depth_(static_cast<std::size_t>(width) * (height + 2 * kGuardRows), kDepthEmpty) {
        AttachRasterBuffers(rc, colour_.data() + width * 4 * kGuardRows,
                            depth_.data() + width * kGuardRows, width, height);
    }
    // Screen position of every changed entry; guard rows come out as rows outside 0..height-1.
    std::vector<std::pair<int, int>> Changed() const {
        std::vector<std::pair<int, int>> out;
        const int rows = height_ + 2 * kGuardRows;
        for (int m = 0; m < rows; ++m) {
            for (int x = 0; x < width_; ++x) {
                const std::uint8_t* p = &colour_[(m * width_ + x) * 4];
                const bool colour = p[0] != 0x5C || p[1] != 0x5C || p[2] != 0x5C || p[3] != 0x5C;
                // Colour memory rows run bottom-up, depth rows top-down.
                if (colour) out.emplace_back(x, height_ - 1 - (m - kGuardRows));
                if (depth_[m * width_ + x] != kDepthEmpty) out.emplace_back(x, m - kGuardRows);
            }
        }
        return out;
    }
    RasterContext rc;

private:
    int width_, height_;
    std::vector<std::uint8_t> colour_;
    std::vector<std::int32_t> depth_;
};

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

TEST_P(EveryMode, WritesStayInsideTheClipBoundsAndThePolygonBox) {
    std::mt19937 rng(1234 + static_cast<int>(GetParam()));
    std::uniform_real_distribution<double> centre(-12.0, 44.0), radius(0.3, 25.0);
    std::uniform_int_distribution<int> count(3, 8);
    for (int i = 0; i < kPolygonsPerMode; ++i) {
        GuardedFrame f(32, 24);
        Prepare(f.rc, rng);
        Polygon p(RandomConvex(rng, centre(rng), centre(rng) * 0.75, radius(rng), count(rng)));
        int minX = INT32_MAX, maxX = INT32_MIN, minY = INT32_MAX, maxY = INT32_MIN;
        for (int k = 0; k < p.Count(); ++k) {
            minX = std::min(minX, p[k].x >> 8), maxX = std::max(maxX, p[k].x >> 8);
            minY = std::min(minY, p[k].y >> 8), maxY = std::max(maxY, p[k].y >> 8);
        }
        p.Use(f.rc);
        FillPolygon(f.rc, GetParam());
        for (auto [x, y] : f.Changed()) {
            ASSERT_TRUE(y >= 0 && y < 24) << "polygon " << i << " wrote row " << y;
            ASSERT_TRUE(x >= minX && x <= maxX && y >= minY && y <= maxY)
                << "polygon " << i << " wrote " << x << "," << y;
        }
    }
}

TEST_P(EveryMode, FastPathMatchesTheReferenceBitForBit) {
    std::mt19937 rng(4321 + static_cast<int>(GetParam()));
    // Mostly large polygons reaching far above and left of the frame, where the fast path
    // jumps instead of stepping.
    std::uniform_real_distribution<double> centre(-300.0, 60.0), radius(0.5, 400.0);
    std::uniform_int_distribution<int> count(3, 8), byte(0, 255), bias(-3, 3);
    for (int i = 0; i < kPolygonsPerMode; ++i) {
        RasterFrame fast(40, 30), reference(40, 30);
        std::uniform_int_distribution<std::int32_t> depth(-6000, 6000);
        for (int y = 0; y < 30; ++y) {
            for (int x = 0; x < 40; ++x) {
                const Bgra p{
                    static_cast<std::uint8_t>(byte(rng)), static_cast<std::uint8_t>(byte(rng)),
                    static_cast<std::uint8_t>(byte(rng)), static_cast<std::uint8_t>(byte(rng))};
                fast.Set(x, y, p);
                reference.Set(x, y, p);
            }
        }
        Prepare(fast.rc, rng);
        const bool doubled = rng() % 4 == 0, always = rng() % 5 == 0;
        const std::int32_t depthBias = 1024 * bias(rng);
        const Polygon original(
            RandomConvex(rng, centre(rng), centre(rng), radius(rng), count(rng)));
        RasterFrame* frames[2] = {&fast, &reference};
        for (RasterFrame* f : frames) {
            RasterContext& rc = f->rc;
            if (f == &reference) {
                BindMaterialTexture(rc, &material, 0);
                rc.opacity = fast.rc.opacity;
                rc.inverseOpacity = fast.rc.inverseOpacity;
                rc.flatColour = fast.rc.flatColour;
            }
            rc.doubleResolution = doubled;
            rc.depthAlwaysPasses = always;
            rc.depthBias = depthBias;
        }
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

// Blended modes change the colour on every pass, so only opaque ones redraw unchanged.
class OpaqueModes : public EveryMode {};

TEST_P(OpaqueModes, RedrawAtTheSameDepthChangesNothing) {
    const FillMode mode = GetParam();
    std::mt19937 rng(99);
    std::uniform_real_distribution<double> centre(0.0, 32.0), radius(1.0, 20.0);
    for (int i = 0; i < kPolygonsPerMode; ++i) {
        RasterFrame f(32, 24, Bgra{1, 2, 3, 4});
        Prepare(f.rc, rng);
        const Polygon original(RandomConvex(rng, centre(rng), centre(rng), radius(rng), 3 + i % 6));
        Polygon first(original);
        first.Use(f.rc);
        FillPolygon(f.rc, mode);
        const auto colour = f.Colour();
        const auto depth = f.DepthBuffer();
        Polygon second(original);
        second.Use(f.rc);
        FillPolygon(f.rc, mode);
        ASSERT_EQ(f.Colour(), colour) << "polygon " << i;
        ASSERT_EQ(f.DepthBuffer(), depth) << "polygon " << i;
    }
}

INSTANTIATE_TEST_SUITE_P(Fillers, OpaqueModes,
                         ::testing::Values(FillMode::Flat, FillMode::Gouraud,
                                           FillMode::FlatTextured, FillMode::GouraudTextured));

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
        Polygon p{Vertex(v[0][0], v[0][1]), Vertex(v[1][0], v[1][1]), Vertex(v[2][0], v[2][1])};
        p.Use(f.rc);
        FillPolygon(f.rc, FillMode::Flat);
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
        above.Use(upper.rc);
        FillPolygon(upper.rc, FillMode::Flat);
        below.Use(lower.rc);
        FillPolygon(lower.rc, FillMode::Flat);
        const int shared = static_cast<int>(std::floor(edgeY));
        ASSERT_EQ(upper.WrittenInRow(shared), 0) << "polygon pair " << i;
        for (int r = 0; r < 24; ++r)
            for (int c = 0; c < 32; ++c)
                ASSERT_FALSE(upper.Written(c, r) && lower.Written(c, r))
                    << "pair " << i << " at " << c << "," << r;
    }
}

} // namespace

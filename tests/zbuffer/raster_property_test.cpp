// Properties over many random polygons: coverage follows the width, shared edges are filled
// once.
#include "raster_frame.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

namespace {

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

namespace {

// A clear copies its first block over the rest: sizes around the block's, and the entries
// after the cleared ones stay as they were.
TEST(DepthClear, SetsExactlyTheCountedEntriesToTheFarthestDepth) {
    for (const std::size_t count : {0u, 1u, 1023u, 1024u, 1025u, 2048u, 5000u}) {
        std::vector<std::int32_t> depth(count + 8, 5);
        ClearDepthEntries(depth.data(), count);
        for (std::size_t i = 0; i < depth.size(); ++i)
            ASSERT_EQ(depth[i], i < count ? kDepthEmpty : 5) << "entry " << i << " of " << count;
    }
}

} // namespace

// Every filler against the naive oracle: thousands of random polygons per mode and path, drawn
// by the filler, by the plain filler and by the oracle over the same random frame content, must
// leave the same colour and depth bytes.
#include "filler_oracle.h"
#include "raster_frame.h"
#include "zbuffer/raster/polygon_dispatch.h"
#include "zbuffer/raster/texture_binding.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <deque>
#include <numbers>
#include <random>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

namespace {

constexpr int kFrames = 200;
constexpr int kPolygonsPerFrame = 50;

using Rng = std::mt19937;

int Between(Rng& rng, int lo, int hi) {
    return std::uniform_int_distribution<int>(lo, hi)(rng);
}
double Real(Rng& rng, double lo, double hi) {
    return std::uniform_real_distribution<double>(lo, hi)(rng);
}
// 0 and 255 often: they take their own ways through the blends.
std::uint8_t Channel(Rng& rng) {
    const int pick = Between(rng, 0, 5);
    return pick == 0 ? 0 : pick == 1 ? 255 : static_cast<std::uint8_t>(rng());
}

struct Texture {
    Texture(Rng& rng, int width, int height, int bits, bool topDown)
        : picture(width, height, bits, topDown) {
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                picture.SetTexel(x, y, (rng() & 0xFFFFFF) | std::uint32_t{Channel(rng)} << 24);
        // The palette's reserved bytes come back as alpha.
        auto* palette = reinterpret_cast<std::uint8_t*>(picture.header) + 40;
        for (int i = 0; i < 256 * 4; ++i) palette[i] = i % 4 == 3 ? Channel(rng) : rng() & 0xFF;
        material.textures[0] = &picture;
    }
    TestPicture picture;
    q5_MATERIAL material;
};

// Everything a polygon is drawn with besides its vertices.
struct DrawState {
    std::int32_t opacity, depthBias;
    RgbBytes flat;
    bool doubled, alwaysPasses;
    const Texture* texture;

    void ApplyTo(RasterContext& rc, Polygon& polygon) const {
        rc.opacity = opacity;
        rc.inverseOpacity = 255 - opacity;
        rc.depthBias = depthBias;
        rc.flatColour = flat;
        rc.doubleResolution = doubled;
        rc.depthAlwaysPasses = alwaysPasses;
        if (texture) BindMaterialTexture(rc, &texture->material, 0);
        polygon.Use(rc);
    }
};

// Triangles anywhere in a box, slim or round convex polygons of up to 8 corners, axis-aligned
// rectangles and crossed polygons whose edges come to the walk out of order, from a fifth of a
// pixel to many frames across, often beside or over the frame's edges; some snapped to half
// pixels so that edges turn horizontal or share scanlines. Crossed polygons are never quads:
// which two of a crossed quad's edges end it is left open.
std::vector<ScreenVertex> RandomPolygon(Rng& rng, int width, int height, std::int32_t depthScale) {
    const double r = std::exp(Real(rng, std::log(0.2), std::log(700.0)));
    const double cx = Real(rng, -0.3 * width, 1.3 * width);
    const double cy = Real(rng, -0.3 * height, 1.3 * height);
    std::vector<std::array<double, 2>> corners;
    const int kind = Between(rng, 0, 7);
    if (kind < 3 || kind == 7) {
        const int n = kind == 7 ? std::array{3, 5, 6, 7, 8}[Between(rng, 0, 4)] : 3;
        for (int i = 0; i < n; ++i)
            corners.push_back({cx + Real(rng, -r, r), cy + Real(rng, -r, r)});
    } else if (kind == 3) {
        const double w = Real(rng, 0, r), h = Real(rng, 0, r);
        corners = {{cx - w, cy - h}, {cx + w, cy - h}, {cx + w, cy + h}, {cx - w, cy + h}};
    } else {
        const int n = Between(rng, 3, 8);
        const double slim = Real(rng, 0.05, 1.0), turn = Real(rng, 0, std::numbers::pi);
        std::vector<double> angles(n);
        for (double& a : angles) a = Real(rng, 0, 2 * std::numbers::pi);
        std::sort(angles.begin(), angles.end());
        for (double a : angles) {
            const double x = r * std::cos(a), y = slim * r * std::sin(a);
            corners.push_back({cx + x * std::cos(turn) - y * std::sin(turn),
                               cy + x * std::sin(turn) + y * std::cos(turn)});
        }
    }
    if (Between(rng, 0, 3) == 0)
        for (auto& c : corners) c = {std::round(2 * c[0]) / 2, std::round(2 * c[1]) / 2};
    if (rng() % 2) std::reverse(corners.begin(), corners.end());

    // Depths stay within 2^30 so that their differences fit 32 bits.
    const std::int32_t base = Between(rng, -depthScale, depthScale);
    const std::int32_t spread = std::array{0, depthScale / 64, depthScale}[Between(rng, 0, 2)];
    const bool oneColour = Between(rng, 0, 4) == 0;
    const double uvRange = std::array{1.0, 8.0, 100.0}[Between(rng, 0, 2)];
    const RgbBytes shared{Channel(rng), Channel(rng), Channel(rng)};
    std::vector<ScreenVertex> out;
    for (const auto& c : corners) {
        const std::int32_t z =
            std::clamp(base + Between(rng, -spread, spread), -(1 << 30), 1 << 30);
        const RgbBytes colour =
            oneColour ? shared : RgbBytes{Channel(rng), Channel(rng), Channel(rng)};
        ScreenVertex v = Vertex(c[0], c[1], z, colour.red, colour.green, colour.blue);
        // Now and then far enough out to be limited to 2^29 or to leave 32 bits below.
        const auto coordinate = [&] {
            return static_cast<float>(Between(rng, 0, 15) == 0 ? Real(rng, -1e6, 1e6)
                                                               : Real(rng, -uvRange / 4, uvRange));
        };
        v.u = coordinate();
        v.v = coordinate();
        out.push_back(v);
    }
    return out;
}

std::string Describe(const std::vector<ScreenVertex>& vertices, const DrawState& s) {
    std::ostringstream o;
    o << "opacity " << s.opacity << ", depth bias " << s.depthBias << ", flat " << int{s.flat.red}
      << ',' << int{s.flat.green} << ',' << int{s.flat.blue}
      << (s.doubled ? ", double resolution" : "")
      << (s.alwaysPasses ? ", depth always passes" : "");
    if (s.texture) {
        const q5_BITMAPINFOHEADER& h = *s.texture->picture.header;
        o << ", texture " << h.biWidth << 'x' << h.biHeight << 'x' << h.biBitCount
          << (s.texture->picture.rowsTopDown ? " top-down" : "");
    }
    o.precision(9);
    for (const ScreenVertex& v : vertices)
        o << "\n  x " << v.x << " y " << v.y << " (1/256 px) z " << v.z << " rgb " << int{v.red}
          << ',' << int{v.green} << ',' << int{v.blue} << " u " << v.u << " v " << v.v;
    return o.str();
}

std::string Show(const RasterFrame& f, int x, int y) {
    const Bgra p = f.Pixel(x, y);
    return "bgra " + std::to_string(p.b) + ',' + std::to_string(p.g) + ',' + std::to_string(p.r) +
           ',' + std::to_string(p.a) + " depth " + std::to_string(f.Depth(x, y));
}

// Empty when both frames, guard rows included, hold the same bytes; else the first pixel that
// differs, with what was there before.
std::string FirstDifference(const RasterFrame& fast, const RasterFrame& oracle,
                            const RasterFrame& before, int width, int height) {
    if (fast == oracle) return "";
    for (int i = 0; i < width * height; ++i) {
        const int x = i % width, y = i / width;
        if (Show(fast, x, y) != Show(oracle, x, y))
            return "pixel " + std::to_string(x) + "," + std::to_string(y) + ": filler " +
                   Show(fast, x, y) + ", oracle " + Show(oracle, x, y) + ", before " +
                   Show(before, x, y);
    }
    return fast.GuardsIntact() ? "the oracle wrote outside the frame"
                               : "the filler wrote outside the frame";
}

class FillerOracle : public ::testing::TestWithParam<std::tuple<int, SimdPath>> {};

TEST_P(FillerOracle, FillerWritesWhatTheRulesGiveForRandomPolygons) {
    const auto [modeIndex, path] = GetParam();
    if (!SimdPathSupported(path)) GTEST_SKIP() << "the processor lacks this path";
    const auto mode = static_cast<FillMode>(modeIndex);
    Rng rng(9173 + modeIndex);
    std::deque<Texture> textures;
    constexpr int kSizes[][3] = {{1, 1, 32},   {8, 8, 32}, {7, 13, 32}, {5, 3, 24},
                                 {64, 16, 24}, {16, 4, 8}, {3, 9, 8}};
    for (const auto& [w, h, bits] : kSizes)
        for (bool topDown : {false, true}) textures.emplace_back(rng, w, h, bits, topDown);

    for (int frame = 0; frame < kFrames; ++frame) {
        const int width = Between(rng, 1, 48), height = Between(rng, 1, 36);
        RasterFrame fast(width, height), plain(width, height), oracle(width, height);
        fast.rc.simdPath = path;
        plain.rc.simdPath = SimdPath::Scalar;
        // Depths near one another, so that ties and crossings are common, or spread wide.
        const std::int32_t depthScale = std::array{64, 1 << 20, 1 << 30}[Between(rng, 0, 2)];
        for (int i = 0; i < width * height; ++i) {
            const auto pixel = std::bit_cast<Bgra>(static_cast<std::uint32_t>(rng()));
            const std::int32_t depth =
                Between(rng, 0, 7) == 0 ? kDepthEmpty : Between(rng, -depthScale, depthScale);
            for (RasterFrame* f : {&fast, &plain, &oracle}) {
                f->Set(i % width, i / width, pixel);
                f->rc.depthBase[i] = depth;
            }
        }

        for (int i = 0; i < kPolygonsPerFrame; ++i) {
            const int opacityPick = Between(rng, 0, 3);
            DrawState s;
            s.opacity = opacityPick == 0 ? 0 : opacityPick == 1 ? 255 : Between(rng, 0, 255);
            s.depthBias =
                Between(rng, -4, 4) * 1024 + (Between(rng, 0, 3) == 0 ? Between(rng, -9, 9) : 0);
            s.flat = RgbBytes{Channel(rng), Channel(rng), Channel(rng)};
            s.doubled = Between(rng, 0, 3) == 0;
            s.alwaysPasses = Between(rng, 0, 5) == 0;
            s.texture = mode >= FillMode::FlatTextured
                            ? &textures[Between(rng, 0, static_cast<int>(textures.size()) - 1)]
                            : nullptr;
            const std::vector<ScreenVertex> vertices =
                RandomPolygon(rng, width, height, depthScale);

            const RasterFrame before = oracle; // read only: its context still points at oracle's
            Polygon forFiller(vertices), forPlain(vertices), forOracle(vertices);
            s.ApplyTo(fast.rc, forFiller);
            s.ApplyTo(plain.rc, forPlain);
            s.ApplyTo(oracle.rc, forOracle);
            const auto where = [&] {
                return "frame " + std::to_string(frame) + " (" + std::to_string(width) + "x" +
                       std::to_string(height) + "), polygon " + std::to_string(i) + ": " +
                       Describe(vertices, s);
            };
            ASSERT_EQ(FillPolygon(fast.rc, mode),
                      FillPolygonOracle(oracle.rc, mode, s.texture ? &s.texture->picture : nullptr))
                << where();
            ASSERT_EQ(std::memcmp(forFiller.vertices.data(), forOracle.vertices.data(),
                                  vertices.size() * sizeof(ScreenVertex)),
                      0)
                << "vertices left differently, " << where();
            ASSERT_EQ(FirstDifference(fast, oracle, before, width, height), "") << where();
            if (path != SimdPath::Scalar) {
                FillPolygon(plain.rc, mode);
                ASSERT_EQ(FirstDifference(fast, plain, before, width, height), "")
                    << "against the plain filler, " << where();
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(EveryModeAndPath, FillerOracle,
                         ::testing::Combine(::testing::Range(0, kFillModeCount),
                                            ::testing::Values(SimdPath::Scalar, SimdPath::Sse2,
                                                              SimdPath::Avx2)),
                         [](const auto& info) {
                             return std::string(kFillModeNames[std::get<0>(info.param)]) + "_" +
                                    kSimdPathNames[static_cast<int>(std::get<1>(info.param))];
                         });

class TriangleBatch : public ::testing::TestWithParam<SimdPath> {};

// Batches mix triangles of one scanline and of none, triangles beside the frame, short ones that
// are set up together and tall ones drawn on their own between them, overlapping in depth.
TEST_P(TriangleBatch, BatchDrawsWhatTheDispatchDrawsTriangleByTriangle) {
    const SimdPath path = GetParam();
    if (!SimdPathSupported(path)) GTEST_SKIP() << "the processor lacks this path";
    Rng rng(4711);
    for (int frame = 0; frame < 400; ++frame) {
        const int width = Between(rng, 1, 64), height = Between(rng, 1, 64);
        RasterFrame batch(width, height), single(width, height);
        batch.rc.simdPath = single.rc.simdPath = path;
        const std::int32_t depthScale = std::array{64, 1 << 20, 1 << 30}[Between(rng, 0, 2)];
        for (int i = 0; i < width * height; ++i) {
            const auto pixel = std::bit_cast<Bgra>(static_cast<std::uint32_t>(rng()));
            const std::int32_t depth =
                Between(rng, 0, 7) == 0 ? kDepthEmpty : Between(rng, -depthScale, depthScale);
            for (RasterFrame* f : {&batch, &single}) {
                f->Set(i % width, i / width, pixel);
                f->rc.depthBase[i] = depth;
            }
        }
        const std::int32_t depthBias = Between(rng, -4, 4) * 1024;
        const bool doubled = Between(rng, 0, 9) == 0, alwaysPasses = Between(rng, 0, 9) == 0;
        const RgbBytes flat{Channel(rng), Channel(rng), Channel(rng)};
        for (RasterFrame* f : {&batch, &single}) {
            f->rc.depthBias = depthBias;
            f->rc.doubleResolution = doubled;
            f->rc.depthAlwaysPasses = alwaysPasses;
            f->rc.flatColour = flat;
        }

        std::vector<ScreenVertex> vertices;
        const int count = Between(rng, 1, 40);
        while (static_cast<int>(vertices.size()) < 3 * count) {
            // Small ones mostly: they are what goes into groups.
            const std::vector<ScreenVertex> p = RandomPolygon(rng, width, height, depthScale);
            if (p.size() == 3) vertices.insert(vertices.end(), p.begin(), p.end());
        }
        std::vector<ScreenVertex> forBatch = vertices, forSingle = vertices;
        std::vector<ScreenVertex*> corners;
        for (ScreenVertex& v : forBatch) corners.push_back(&v);
        const RasterFrame before = single;
        DrawUntexturedTriangles(batch.rc, corners.data(), count);
        for (int i = 0; i < count; ++i) {
            ScreenVertex* list[3] = {&forSingle[3 * i], &forSingle[3 * i + 1],
                                     &forSingle[3 * i + 2]};
            single.rc.vertexList = list;
            single.rc.flatColour = flat;
            DrawUntexturedPolygon(single.rc, 3, 0);
        }
        const std::string where = "frame " + std::to_string(frame) + " (" + std::to_string(width) +
                                  "x" + std::to_string(height) + "), " + std::to_string(count) +
                                  " triangles";
        ASSERT_EQ(FirstDifference(batch, single, before, width, height), "") << where;
        ASSERT_EQ(
            std::memcmp(forBatch.data(), forSingle.data(), forBatch.size() * sizeof(ScreenVertex)),
            0)
            << "vertices left differently, " << where;
        const RgbBytes left = batch.rc.flatColour;
        EXPECT_TRUE(left.red == flat.red && left.green == flat.green && left.blue == flat.blue)
            << "flat colour changed, " << where;
    }
}

INSTANTIATE_TEST_SUITE_P(EveryPath, TriangleBatch,
                         ::testing::Values(SimdPath::Scalar, SimdPath::Sse2, SimdPath::Avx2),
                         [](const auto& info) {
                             return std::string(kSimdPathNames[static_cast<int>(info.param)]);
                         });

} // namespace

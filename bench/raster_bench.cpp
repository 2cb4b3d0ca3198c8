// Rasterizer speed at 1024 x 768 on the shared workloads: fill rate of every filler on large
// triangles, the rate of small triangles through the dispatch, and the line routine.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "bench/bench_common.h"
#include "bench/osmesa_peer.h"
#include "bench/workloads.h"
#include "interface/material.h"
#include "interface/picture.h"
#include "interface/screen_vertex.h"
#include "zbuffer/back_face.h"
#include "zbuffer/raster/fixed_point.h"
#include "zbuffer/raster/line_draw.h"
#include "zbuffer/raster/polygon_dispatch.h"
#include "zbuffer/raster/raster_context.h"
#include "zbuffer/raster/span_fillers.h"
#include "zbuffer/raster/texture_binding.h"

namespace {

using bench::MeshSet;
using bench::PerFrameCounters;

constexpr int kWidth = 1024, kHeight = 768;

// The benchmark texture: 256 x 256, 32 bits, texel (s, t) = (R s, G t, B (s ^ t) / 2, A 255).
class BenchTexture : public TPicture {
public:
    BenchTexture() : texels_(256 * 256 * 4) {
        header_.biSize = 40;
        header_.biWidth = 256;
        header_.biHeight = 256;
        header_.biPlanes = 1;
        header_.biBitCount = 32;
        for (int t = 0; t < 256; ++t)
            for (int s = 0; s < 256; ++s) {
                std::uint8_t* p = &texels_[(t * 256 + s) * 4];
                p[0] = static_cast<std::uint8_t>((s ^ t) >> 1);
                p[1] = static_cast<std::uint8_t>(t);
                p[2] = static_cast<std::uint8_t>(s);
                p[3] = 255;
            }
        header = &header_;
        bits = texels_.data();
        rowsTopDown = true;
        texels32Ready = true;
        width = height = 256;
    }
    ~BenchTexture() override = default;

private:
    q5_BITMAPINFOHEADER header_{};
    std::vector<std::uint8_t> texels_;
};

struct Frame {
    std::vector<std::uint8_t> colour = std::vector<std::uint8_t>(kWidth * kHeight * 4);
    std::vector<std::int32_t> depth = std::vector<std::int32_t>(kWidth * kHeight);
    RasterContext rc;
    Frame() { AttachRasterBuffers(rc, colour.data(), depth.data(), kWidth, kHeight); }
    void Clear() {
        std::memset(colour.data(), 0, colour.size());
        ClearDepthEntries(depth.data(), depth.size());
    }
};

std::vector<ScreenVertex> ToScreen(const workload::RandomSet& set) {
    std::vector<ScreenVertex> out;
    out.reserve(set.triangles.size() * 3);
    for (const workload::Triangle& t : set.triangles)
        for (const workload::Vertex& v : t.v) {
            ScreenVertex s{};
            s.x = v.x16 * 16;
            s.y = v.y16 * 16;
            s.z = v.z;
            s.red = v.r;
            s.green = v.g;
            s.blue = v.b;
            // One texel per pixel, wrapping.
            s.u = s.s = static_cast<float>(v.x16) / 16.0f / 256.0f;
            s.v = s.t = static_cast<float>(v.y16) / 16.0f / 256.0f;
            out.push_back(s);
        }
    return out;
}

const workload::RandomSet& FillSet() {
    static const workload::RandomSet set = workload::Generate(false);
    return set;
}
const workload::RandomSet& SmallSet() {
    static const workload::RandomSet set = workload::Generate(true);
    return set;
}

// Frames that hand the rasterizer vertices it must leave alone check them afterwards.
void FailIfChanged(benchmark::State& state, const std::vector<ScreenVertex>& pristine,
                   const std::vector<ScreenVertex>& drawn) {
    if (std::memcmp(pristine.data(), drawn.data(), drawn.size() * sizeof(ScreenVertex)))
        state.SkipWithError("the rasterizer changed the vertices it was given");
}

// Whole frames of a triangle set: clear, then `draw` with each triangle in the vertex list.
// The rasterizer steps vertices in place, so each frame starts from fresh copies.
template <typename Draw>
void DrawFrames(benchmark::State& state, Frame& frame, const workload::RandomSet& set, Draw draw) {
    const std::vector<ScreenVertex> pristine = ToScreen(set);
    std::vector<ScreenVertex> vertices = pristine;
    ScreenVertex* list[3];
    for (auto _ : state) {
        frame.Clear();
        for (std::size_t i = 0; i < vertices.size(); i += 3) {
            for (int k = 0; k < 3; ++k) list[k] = &vertices[i + k];
            frame.rc.vertexList = list;
            draw(frame.rc);
        }
        benchmark::DoNotOptimize(frame.colour.data());
        state.PauseTiming();
        vertices = pristine;
        state.ResumeTiming();
    }
    PerFrameCounters(state, set.coveredPixels, static_cast<double>(set.triangles.size()));
}

// One frame: clear colour and depth, fill all 200 large triangles with one filler.
void FillRate(benchmark::State& state, FillMode mode, bool depthAlwaysPasses) {
    Frame frame;
    BenchTexture texture;
    q5_MATERIAL material;
    material.textures[kSlotDiffuse] = &texture;
    BindMaterialTexture(frame.rc, &material, kSlotDiffuse);
    frame.rc.opacity = 128;
    frame.rc.inverseOpacity = 127;
    frame.rc.flatColour = RgbBytes{200, 120, 40};
    frame.rc.depthAlwaysPasses = depthAlwaysPasses ? 1 : 0;

    DrawFrames(state, frame, FillSet(), [mode](RasterContext& rc) {
        rc.vertexCount = 3;
        FillPolygon(rc, mode);
    });
}

// One frame of 200,000 small Gouraud triangles through the untextured dispatch, in one batch.
void SmallTriangles(benchmark::State& state) {
    Frame frame;
    const workload::RandomSet& set = SmallSet();
    const std::vector<ScreenVertex> pristine = ToScreen(set);
    std::vector<ScreenVertex> vertices = pristine;
    std::vector<ScreenVertex*> corners;
    for (ScreenVertex& v : vertices) corners.push_back(&v);
    for (auto _ : state) {
        frame.Clear();
        DrawUntexturedTriangles(frame.rc, corners.data(), static_cast<int>(corners.size() / 3));
        benchmark::DoNotOptimize(frame.colour.data());
    }
    FailIfChanged(state, pristine, vertices);
    PerFrameCounters(state, set.coveredPixels, static_cast<double>(set.triangles.size()));
}

// Depth-tested lines along every edge of a triangle set, in the vertex colour.
void Lines(benchmark::State& state, const workload::RandomSet& set) {
    Frame frame;
    const std::vector<ScreenVertex> vertices = ToScreen(set);
    for (auto _ : state) {
        frame.Clear();
        for (std::size_t i = 0; i < vertices.size(); i += 3)
            for (int k = 0; k < 3; ++k) {
                const ScreenVertex& a = vertices[i + k];
                const ScreenVertex& b = vertices[i + (k + 1) % 3];
                DrawLine(frame.rc, PointOf(a), PointOf(b), RgbBytes{a.red, a.green, a.blue});
            }
        benchmark::DoNotOptimize(frame.colour.data());
    }
    state.counters["Mlines/s"] = benchmark::Counter(static_cast<double>(vertices.size()) * 1e-6,
                                                    benchmark::Counter::kIsIterationInvariantRate);
}

// The ellipsoid mesh at 1920 x 1080, straight into the rasterizer (no host view).
void MeshFrame(benchmark::State& state, bool cull) {
    constexpr int W = workload::Mesh::kWidth, H = workload::Mesh::kHeight;
    std::vector<std::uint8_t> colour(static_cast<std::size_t>(W) * H * 4);
    std::vector<std::int32_t> depth(static_cast<std::size_t>(W) * H);
    RasterContext rc;
    AttachRasterBuffers(rc, colour.data(), depth.data(), W, H);
    const workload::Mesh& mesh = MeshSet();
    std::vector<ScreenVertex> projected;
    for (const workload::MeshVertex& v : mesh.vertices) {
        ScreenVertex s{};
        s.x = static_cast<std::int32_t>(v.x * 256.0);
        s.y = static_cast<std::int32_t>(v.y * 256.0);
        s.z = static_cast<std::int32_t>(v.z * 16777216.0);
        s.red = v.r;
        s.green = v.g;
        s.blue = v.b;
        projected.push_back(s);
    }
    // Untextured drawing at single resolution leaves the vertices as they are, so the corners
    // are pointed to where they lie, as the face-group walk does; checked after the frames.
    const std::vector<ScreenVertex> pristine = projected;
    std::vector<ScreenVertex*> corners(mesh.indices.size());
    for (auto _ : state) {
        std::memset(colour.data(), 0, colour.size());
        ClearDepthEntries(depth.data(), depth.size());
        std::size_t kept = 0;
        for (std::size_t i = 0; i < mesh.indices.size(); i += 3) {
            ScreenVertex** list = &corners[kept];
            for (int k = 0; k < 3; ++k) list[k] = &projected[mesh.indices[i + k]];
            if (!cull || PassesBackFaceTest(list, 3)) kept += 3;
        }
        DrawUntexturedTriangles(rc, corners.data(), static_cast<int>(kept / 3));
        benchmark::DoNotOptimize(colour.data());
    }
    FailIfChanged(state, pristine, projected);
    PerFrameCounters(state, mesh.coveredPixels, static_cast<double>(mesh.indices.size() / 3));
    state.counters["written%"] =
        100.0 *
        static_cast<double>(std::count_if(depth.begin(), depth.end(),
                                          [](std::int32_t d) { return d != kDepthEmpty; })) /
        (W * H);
}

// The same frames through llvmpipe (OSMesa), one thread.
void PeerRandom(benchmark::State& state, bool small, OsmesaPeer::Variant variant) {
    const workload::RandomSet& set = small ? SmallSet() : FillSet();
    auto peer = OsmesaPeer::Create(set.width, set.height);
    if (!peer) {
        state.SkipWithError("no OSMesa context");
        return;
    }
    state.SetLabel(peer->Renderer());
    for (auto _ : state) peer->DrawRandomSet(set, variant);
    PerFrameCounters(state, set.coveredPixels, static_cast<double>(set.triangles.size()));
}

} // namespace

int main(int argc, char** argv) {
    bench::ChoosePeerThreads();
    for (int m = 0; m < kFillModeCount; ++m)
        bench::Frame(std::string("fill/") + kFillModeNames[m], FillRate, static_cast<FillMode>(m),
                     false);
    bench::Frame("fillw/Gouraud", FillRate, FillMode::Gouraud, true);
    bench::Frame("small/Gouraud", SmallTriangles);
    bench::Frame("lines/fill-edges", Lines, std::cref(FillSet()));
    bench::Frame("lines/small-edges", Lines, std::cref(SmallSet()));
    bench::Frame("mesh/tessera", MeshFrame, false);
    bench::Frame("meshcull/tessera", MeshFrame, true);
    bench::Frame("fill/llvmpipe", PeerRandom, false, OsmesaPeer::Variant{});
    bench::Frame("fillw/llvmpipe", PeerRandom, false, OsmesaPeer::Variant{false, true});
    bench::Frame("textured/llvmpipe", PeerRandom, false, OsmesaPeer::Variant{true, false});
    bench::Frame("small/llvmpipe", PeerRandom, true, OsmesaPeer::Variant{});
    bench::Frame("mesh/llvmpipe", bench::PeerMesh, false);
    bench::Frame("meshcull/llvmpipe", bench::PeerMesh, true);
    return bench::RunRegistered(argc, argv);
}

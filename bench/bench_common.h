// Pieces shared by the benchmark programs: the workload sets, per-frame rate counters and the
// peer's mesh frames.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <string>
#include <utility>

#include "bench/osmesa_peer.h"
#include "bench/workloads.h"

namespace bench {

inline const workload::Mesh& MeshSet() {
    static const workload::Mesh mesh = workload::GenerateMesh();
    return mesh;
}

// Rates of one frame's covered pixels and triangles per second of wall time.
inline void PerFrameCounters(benchmark::State& state, double pixels, double triangles) {
    state.counters["Mpixels/s"] =
        benchmark::Counter(pixels * 1e-6, benchmark::Counter::kIsIterationInvariantRate);
    state.counters["Mtriangles/s"] =
        benchmark::Counter(triangles * 1e-6, benchmark::Counter::kIsIterationInvariantRate);
}

inline void MeshCounters(benchmark::State& state) {
    PerFrameCounters(state, MeshSet().coveredPixels,
                     static_cast<double>(MeshSet().indices.size() / 3));
}

// The ellipsoid mesh drawn by llvmpipe, whole frames.
inline void PeerMesh(benchmark::State& state, bool cull) {
    auto peer = OsmesaPeer::Create(workload::Mesh::kWidth, workload::Mesh::kHeight);
    if (!peer) {
        state.SkipWithError("no OSMesa context");
        return;
    }
    state.SetLabel(peer->Renderer());
    for (auto _ : state) peer->DrawMesh(MeshSet(), cull);
    MeshCounters(state);
    state.counters["written%"] = peer->WrittenPercent();
}

// Registers a whole-frame benchmark: wall-clock time in milliseconds.
template <typename... Args> void Frame(const std::string& name, Args&&... args) {
    benchmark::RegisterBenchmark(name.c_str(), std::forward<Args>(args)...)
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
}

inline int RunRegistered(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}

// The peer rasterizes on the calling thread (LP_NUM_THREADS=0) unless the environment already
// says how many threads it adds; must run before any GL context exists.
inline void ChoosePeerThreads() {
    setenv("LP_NUM_THREADS", "0", 0);
    setenv("GALLIUM_DRIVER", "llvmpipe", 0);
}

} // namespace bench

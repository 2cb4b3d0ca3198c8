// Whole frames through the real pipeline: the reference host loads the module, its view clips
// and projects, the driver walks face groups. The demo scene at 1920 x 1080 and the shared
// ellipsoid mesh, beside llvmpipe (OSMesa, one thread) drawing the same mesh in the same run.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "bench/bench_common.h"
#include "bench/workloads.h"
#include "core/platform/module.h"
#include "host/app/host_api.h"
#include "host/app/ini_settings.h"
#include "host/app/plugin_module.h"
#include "host/app/render_session.h"
#include "host/scene/builtin_scenes.h"
#include "host/scene/framing.h"
#include "host/scene/scene.h"
#include "interface/driver.h"
#include "interface/material.h"
#include "interface/mesh.h"
#include "zbuffer/raster/fixed_point.h"

namespace {

using bench::MeshSet;

// The module from the bench's own folder, initialised once for the whole run.
struct Pipeline {
    IniSettings settings;
    HostAPI host{settings};
    PluginModule module;
    RenderSession session;
    RenderSession lower; // the bottom half's driver when two threads draw a frame
    bool ready = false;
    std::string error;

    Pipeline() {
        char path[4096];
        std::string folder = ".";
        if (q5plat::GetProgramFileNameA(path, sizeof path) != 0) {
            folder = path;
            folder = folder.substr(0, folder.find_last_of("/\\"));
        }
        host.SetProgramName("pipeline_bench");
        host.SetProgramFolder(folder);
        if (!module.Load(PluginModule::DefaultPath(folder))) {
            error = module.Error();
            return;
        }
        host.SetDriverModule(&module);
        if (!module.Init(&host)) {
            error = module.Error();
            return;
        }
        ready = session.Attach(nullptr, error) && lower.Attach(nullptr, error);
    }
};

Pipeline& Shared() {
    static Pipeline pipeline;
    return pipeline;
}

void DemoFrame(benchmark::State& state) {
    Pipeline& p = Shared();
    Scene scene;
    if (!p.ready || !BuildBuiltInScene("demo", scene)) {
        state.SkipWithError(p.error.empty() ? "no demo scene" : p.error.c_str());
        return;
    }
    FrameRequest request;
    request.width = 1920;
    request.height = 1080;
    request.background[0] = scene.background[0];
    request.background[1] = scene.background[1];
    Shot shot;
    shot.yaw = scene.yaw;
    shot.pitch = scene.pitch;
    shot.fovY = scene.fovY;
    shot.fit = scene.fit;
    const Framing framing =
        FrameScene(scene.FramedBounds(), scene.AllBounds(), shot, request.width, request.height);
    Image image;
    std::string error;
    for (auto _ : state) {
        if (!p.session.Render(scene, framing.camera, framing.volume, request, image, error)) {
            state.SkipWithError(error.c_str());
            return;
        }
    }
}

// Where the frame splits when two drivers draw it.
constexpr std::int32_t kSplitRow = workload::Mesh::kHeight / 2;

// The mesh placed in view space so that the view's projection lands every vertex on the
// workload's pixel position; depth order follows the workload's z.
struct ViewSpaceMesh {
    ViewVolume volume;
    std::vector<POINT3D> world; // camera at the origin looking down +z: world = view
    std::vector<POINT3D> view;
    std::vector<q5_MESHVERTEX> vertices;
    std::vector<q5_VERTEXCOLOUR> colours;
    std::vector<q5_MESHFACE> allFaces;
    std::vector<q5_MESHFACE> faces; // those the driver may draw, as the host's frame mesh keeps
    q5_MATERIAL material;
    q5_MESH mesh;

    explicit ViewSpaceMesh(const workload::Mesh& m, FrameHalf half = FrameHalf::Whole) {
        volume = ViewVolume::Perspective(workload::Mesh::kWidth, workload::Mesh::kHeight, 60.0, 0.5,
                                         20.0)
                     .Half(half, kSplitRow);
        for (const workload::MeshVertex& v : m.vertices) {
            const double z = 1.0 + 9.0 * v.z;
            const double x = (2.0 * v.x / workload::Mesh::kWidth - 1.0) * z * volume.tanHalfX;
            const double y = (1.0 - 2.0 * v.y / workload::Mesh::kHeight) * z * volume.tanHalfY;
            world.emplace_back(static_cast<float>(x), static_cast<float>(y), static_cast<float>(z));
            q5_VERTEXCOLOUR c{};
            c.red = v.r;
            c.green = v.g;
            c.blue = v.b;
            colours.push_back(c);
        }
        vertices.resize(world.size());
        for (std::size_t i = 0; i < m.indices.size(); i += 3) {
            q5_MESHFACE f{};
            f.vertex[0] = m.indices[i];
            f.vertex[1] = m.indices[i + 1];
            f.vertex[2] = m.indices[i + 2];
            allFaces.push_back(f);
        }
        mesh.vertices = vertices.data();
        mesh.vertexCount = static_cast<std::uint32_t>(vertices.size());
        mesh.primaryColours = colours.data();
        faces.reserve(allFaces.size());
        mesh.defaultMaterial = &material;
    }

    // The per-frame host work: view transform, clip codes, and the faces that can show.
    void Transform(const MATRIX3D& worldToView) {
        view.resize(world.size());
        worldToView.TransformPoints(world.data(), view.data(), static_cast<int>(world.size()));
        for (std::size_t i = 0; i < world.size(); ++i) {
            const POINT3D& p = view[i];
            vertices[i].x = p.x;
            vertices[i].y = p.y;
            vertices[i].z = p.z;
            vertices[i].clipCode = volume.ClipCode(p.x, p.y, p.z);
        }
        faces.clear();
        for (const q5_MESHFACE& f : allFaces)
            if ((vertices[f.vertex[0]].clipCode & vertices[f.vertex[1]].clipCode &
                 vertices[f.vertex[2]].clipCode & (kClipAllPlanes | kClipOtherHalf)) == 0)
                faces.push_back(f);
        mesh.faces = faces.data();
        mesh.faceCount = static_cast<std::uint32_t>(faces.size());
    }
};

// Gives the session's driver the mesh's view volume and the frame size.
DRIVER3D& Prepare(RenderSession& session, const ViewSpaceMesh& scene) {
    DRIVER3D& d = *session.Driver();
    session.View().SetVolume(scene.volume);
    session.View().SetSecondBackground(0);
    q5_RENDERCONTEXT& context = session.View().Context();
    context.depthScale = scene.volume.DepthScale();
    context.depthOffset = scene.volume.DepthOffset();
    d.Resize(workload::Mesh::kWidth, workload::Mesh::kHeight);
    return d;
}

bool DrawMeshFrame(DRIVER3D& d, ViewSpaceMesh& scene, bool cull) {
    const MATRIX3D worldToView; // identity: the mesh is built in view space
    q5_RENDERSTATE renderState;
    d.FrameStep(0);
    d.ClearFrame(0);
    scene.Transform(worldToView);
    q5_FACERUN run;
    run.faceCount = scene.mesh.faceCount;
    run.flags = cull ? 0 : q5_FACERUN::kTwoSided;
    const bool walked = d.DrawFaceGroup(&scene.mesh, &run, &renderState) == 1;
    d.FrameStep(1);
    return walked;
}

// Share of the frame the last frame wrote, to check against the peer's.
void CountWritten(benchmark::State& state, DRIVER3D& d) {
    const auto* depth = reinterpret_cast<const std::int32_t*>(d.GetValue(kValueDepthBits, 0));
    const std::int64_t entries = d.GetValue(kValueDepthBytes, 0) / 4;
    std::int64_t written = 0;
    for (std::int64_t i = 0; i < entries; ++i) written += depth[i] != kDepthEmpty;
    state.counters["written%"] =
        100.0 * static_cast<double>(written) / static_cast<double>(entries);
    bench::MeshCounters(state);
}

void MeshPipeline(benchmark::State& state, bool cull) {
    Pipeline& p = Shared();
    if (!p.ready) {
        state.SkipWithError(p.error.c_str());
        return;
    }
    ViewSpaceMesh scene(MeshSet());
    DRIVER3D& d = Prepare(p.session, scene);
    for (auto _ : state) {
        if (!DrawMeshFrame(d, scene, cull)) {
            state.SkipWithError("the face walk did not finish");
            return;
        }
    }
    CountWritten(state, d);
}

// The host's "Render\ZB\Use2Thread": two drivers, each on its own thread with its own copy of
// the vertices, draw a half each; the bottom half's rows then join the top driver's frame.
void MeshPipelineInHalves(benchmark::State& state, bool cull) {
    Pipeline& p = Shared();
    if (!p.ready) {
        state.SkipWithError(p.error.c_str());
        return;
    }
    ViewSpaceMesh top(MeshSet(), FrameHalf::Top), bottom(MeshSet(), FrameHalf::Bottom);
    DRIVER3D& upper = Prepare(p.session, top);
    DRIVER3D& lower = Prepare(p.lower, bottom);
    for (auto _ : state) {
        bool lowerWalked = false;
        std::thread second([&] { lowerWalked = DrawMeshFrame(lower, bottom, cull); });
        const bool upperWalked = DrawMeshFrame(upper, top, cull);
        second.join();
        if (!upperWalked || !lowerWalked) {
            state.SkipWithError("the face walk did not finish");
            return;
        }
        std::string error;
        if (!JoinFrameHalves(upper, lower, kSplitRow, error)) {
            state.SkipWithError(error.c_str());
            return;
        }
    }
    CountWritten(state, upper);
}

} // namespace

int main(int argc, char** argv) {
    bench::ChoosePeerThreads();
    bench::Frame("demo-1920x1080/tessera", DemoFrame);
    bench::Frame("mesh/tessera-pipeline", MeshPipeline, false);
    bench::Frame("mesh/llvmpipe", bench::PeerMesh, false);
    bench::Frame("mesh/tessera-pipeline-halves", MeshPipelineInHalves, false);
    bench::Frame("meshcull/tessera-pipeline", MeshPipeline, true);
    bench::Frame("meshcull/tessera-pipeline-halves", MeshPipelineInHalves, true);
    bench::Frame("meshcull/llvmpipe", bench::PeerMesh, true);
    return bench::RunRegistered(argc, argv);
}

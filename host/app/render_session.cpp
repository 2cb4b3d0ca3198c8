// The frame sequence of the driver as the host runs it.
#include "host/app/render_session.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "core/platform/system_info.h"
#include "host/scene/frame_mesh.h"
#include "host/scene/scene.h"
#include "host/view/camera.h"
#include "interface/driver.h"
#include "interface/material.h"
#include "interface/mesh.h"
#include "interface/picture.h"

namespace {

// Frame phases of DRIVER3D::FrameStep.
enum Phase : std::int32_t {
    kBegin = 0,
    kEnd = 1,
    kSupersampleRequest = 2,
    kFade = 3,
    kSupersampleBegin = 4,
    kSupersampleEnd = 5,
    kSupersampleDone = 6,
};

// The driver sizes each surface in 32 bits.
constexpr std::uint64_t kMaxSurfaceBytes = 0xFFFFFFFFu;

// Outlines lie on their faces, so they are pulled nearer by this share of their distance for
// the faces not to hide them.
constexpr double kOutlinePull = 0.004;
// The driver's depth offset counts in steps of this many depth units.
constexpr double kDepthOffsetUnit = 1024.0;

// Pixels between a label and the frame's top-left corner.
constexpr std::int32_t kLabelMargin = 8;

// Frame sizes the host accepts.
constexpr std::int32_t kMaxSide = 16384;
// Below this many rows a frame is not worth a second thread.
constexpr std::int32_t kMinRowsForHalves = 64;

// True when no depth of the frame being drawn moved from what clearing left: nothing of the
// scene reached a pixel.
bool NothingDrawn(DRIVER3D& d, std::int32_t cleared) {
    const auto* depth = reinterpret_cast<const std::int32_t*>(d.GetValue(kValueDepthBits, 0));
    const std::int64_t count = d.GetValue(kValueDepthBytes, 0) / 4;
    if (depth == nullptr || count <= 0) return false;
    return std::all_of(depth, depth + count, [cleared](std::int32_t z) { return z == cleared; });
}

double MillisecondsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
        .count();
}

} // namespace

bool RenderSession::AttachDrawer(Drawer& drawer, q5_PROGRESS* progress, q5_HWND window,
                                 std::string& error) {
    if (drawer.driver == nullptr && !ChooseDriver(&drawer.driver, kZBufferDriverName)) {
        error = "the software Z-buffer driver could not be created";
        return false;
    }
    q5_RENDERCONTEXT& context = drawer.view.Context();
    context.view = &drawer.view;
    context.progress = progress;
    drawer.driver->Attach(reinterpret_cast<std::uintptr_t>(window), &context);
    drawer.driver->progress = progress;
    return true;
}

bool RenderSession::Attach(q5_PROGRESS* progress, std::string& error, q5_HWND window) {
    return AttachDrawer(first_, progress, window, error);
}

RenderSession::RenderSession() = default;

RenderSession::~RenderSession() {
    Detach();
}

void RenderSession::Detach() {
    if (first_.driver != nullptr) RemoveDriver(first_.driver, true);
    if (second_.driver != nullptr) RemoveDriver(second_.driver, true);
}

bool RenderSession::DrawFrame(const Scene& scene, const Camera& camera, const ViewVolume& volume,
                              const FrameRequest& request, std::string& error) {
    halves_ = false;
    if (first_.driver == nullptr) {
        error = "no driver is attached";
        return false;
    }
    if (request.width < 1 || request.height < 1 || request.width > kMaxSide ||
        request.height > kMaxSide) {
        error = "the frame size is out of range";
        return false;
    }
    const std::uint64_t scale = request.supersample ? 2 : 1;
    const std::uint64_t drawnWidth = scale * request.width, drawnHeight = scale * request.height;
    if (4 * drawnWidth * drawnHeight > kMaxSurfaceBytes) {
        error = "a frame of " + std::to_string(drawnWidth) + "x" + std::to_string(drawnHeight) +
                " pixels is more than the driver's surfaces hold (4 GiB); use a smaller --size" +
                (request.supersample ? " or no --supersample" : "");
        return false;
    }
    width_ = request.width;
    height_ = request.height;

    // The second driver has no progress object: the progress line is the first's alone, and
    // cancelling stops the first, whose frame is then not read. Without a second driver the
    // first draws the whole frame.
    std::string noSecondDriver;
    const bool halves = request.twoThreads && request.height >= kMinRowsForHalves &&
                        q5plat::ProcessorCount() >= 2 &&
                        AttachDrawer(second_, nullptr, nullptr, noSecondDriver);
    // Holding the picture counts references, which must not happen on two threads at once.
    first_.driver->SetBkImage(request.backgroundPicture);
    if (!halves) {
        if (second_.driver != nullptr) second_.driver->SetBkImage(nullptr);
        if (!DrawPart(first_, scene, camera, volume, request, error)) return false;
    } else {
        second_.driver->SetBkImage(request.backgroundPicture);
        const std::int32_t split = balancer_.Split(request.height);
        std::string secondError;
        bool secondDrawn = false;
        double bottomMs = 0.0;
        std::thread bottom([&] {
            const auto start = std::chrono::steady_clock::now();
            secondDrawn = DrawPart(second_, scene, camera, volume.Half(FrameHalf::Bottom, split),
                                   request, secondError);
            bottomMs = MillisecondsSince(start);
        });
        const auto start = std::chrono::steady_clock::now();
        const bool firstDrawn =
            DrawPart(first_, scene, camera, volume.Half(FrameHalf::Top, split), request, error);
        const double topMs = MillisecondsSince(start);
        bottom.join();
        balancer_.Observe(split, request.height, topMs, bottomMs);
        second_.driver->SetBkImage(nullptr);
        if (!firstDrawn) return false;
        if (!secondDrawn) {
            error = secondError;
            return false;
        }
        if (!JoinFrameHalves(*first_.driver, *second_.driver, split, error)) return false;
        halves_ = true;
    }

    DRIVER3D& d = *first_.driver;
    const bool drewSomething = first_.drewSomething || (halves && second_.drewSomething);
    if (!scene.Objects().empty() && !drewSomething) {
        error = "nothing reaches the picture: every face is culled or outside the view "
                "(try --two-sided or another --camera)";
        return false;
    }
    if (!request.label.empty())
        d.DrawText(kLabelMargin, kLabelMargin, request.label.c_str(), request.labelColour);
    if (q5_PROGRESS::Cancelled(first_.view.Context().progress)) {
        error = "interrupted";
        return false;
    }
    return true;
}

bool JoinFrameHalves(DRIVER3D& top, DRIVER3D& bottom, std::int32_t splitRow, std::string& error) {
    const std::int64_t width = top.GetValue(kValueWidth, 0), height = top.GetValue(kValueHeight, 0);
    auto* colour = reinterpret_cast<std::uint8_t*>(top.GetValue(kValueColourBits, 0));
    const auto* colourBelow =
        reinterpret_cast<const std::uint8_t*>(bottom.GetValue(kValueColourBits, 0));
    auto* depth = reinterpret_cast<std::uint8_t*>(top.GetValue(kValueDepthBits, 0));
    const auto* depthBelow =
        reinterpret_cast<const std::uint8_t*>(bottom.GetValue(kValueDepthBits, 0));
    if (colour == nullptr || colourBelow == nullptr || depth == nullptr || depthBelow == nullptr ||
        bottom.GetValue(kValueWidth, 0) != width || bottom.GetValue(kValueHeight, 0) != height ||
        height < splitRow || top.GetValue(kValueDepthBytes, 0) != 4 * width * height ||
        bottom.GetValue(kValueDepthBytes, 0) != 4 * width * height) {
        error = "the two halves of the frame do not match (out of memory?)";
        return false;
    }
    // Colour rows are stored bottom row first, depth rows top row first.
    const std::size_t rowsBelow = static_cast<std::size_t>(height - splitRow);
    const std::size_t colourRow = q5DibRowStride(32, static_cast<std::int32_t>(width));
    std::memcpy(colour, colourBelow, rowsBelow * colourRow);
    const std::size_t depthRow = 4 * static_cast<std::size_t>(width);
    const std::size_t skipped = static_cast<std::size_t>(splitRow) * depthRow;
    std::memcpy(depth + skipped, depthBelow + skipped, rowsBelow * depthRow);
    return true;
}

bool RenderSession::DrawPart(Drawer& drawer, const Scene& scene, const Camera& camera,
                             const ViewVolume& volume, const FrameRequest& request,
                             std::string& error) {
    const std::uint64_t scale = request.supersample ? 2 : 1;
    // A surface the driver could not allocate is null; drawing must not start then.
    const auto surfacesMissing = [&](std::uint64_t width, std::uint64_t height) {
        if (drawer.driver->GetValue(kValueColourBits, 0) != 0 &&
            drawer.driver->GetValue(kValueDepthBits, 0) != 0)
            return false;
        error = "out of memory for a frame of " + std::to_string(width) + "x" +
                std::to_string(height) + " pixels";
        return true;
    };
    HostView& view = drawer.view;
    view.SetVolume(volume);
    view.SetSecondBackground(request.background[1]);
    view.SetFade(request.fade, request.fadeColour);
    view.SetSupersample(request.supersample ? 2.0 : 1.0);
    q5_RENDERCONTEXT& context = view.Context();
    context.depthScale = volume.DepthScale();
    context.depthOffset = volume.DepthOffset();

    DRIVER3D& d = *drawer.driver;
    d.Resize(request.width, request.height);
    if (surfacesMissing(request.width, request.height)) return false;
    d.FrameStep(kBegin);
    if (request.supersample) {
        d.FrameStep(kSupersampleRequest);
        d.FrameStep(kSupersampleBegin);
        if (surfacesMissing(scale * request.width, scale * request.height)) return false;
    }
    context.backgroundMode = request.backgroundMode;
    d.ClearFrame(request.background[0]);
    q5_RENDERSTATE state;
    state.refine = request.refine;
    state.twoSidedColouring = true;
    // Toward the eye, so sphere maps reflect the way a mirror does.
    state.viewDirection[0] = 0.0;
    state.viewDirection[1] = 0.0;
    state.viewDirection[2] = -1.0;

    const auto& objects = scene.Objects();
    // Kept from frame to frame, so that their tables are not allocated again.
    std::vector<std::unique_ptr<FrameMesh>>& meshes = drawer.meshes;
    meshes.resize(objects.size());
    std::vector<std::size_t> opaque, blended;
    for (std::size_t i = 0; i < objects.size(); ++i) {
        if (!meshes[i]) meshes[i] = std::make_unique<FrameMesh>();
        meshes[i]->Build(objects[i], scene.Material(objects[i].material), scene.lighting, camera,
                         volume);
        (objects[i].opacity < 1.0f ? blended : opaque).push_back(i);
    }
    std::stable_sort(blended.begin(), blended.end(), [&](std::size_t a, std::size_t b) {
        return meshes[a]->CentreDepth() > meshes[b]->CentreDepth();
    });

    const auto draw = [&](FrameMesh& mesh, float opacity, std::uint8_t flags) {
        if (mesh.WhollyOutside()) return;
        q5_FACERUN run;
        run.faceCount = mesh.Mesh().faceCount;
        run.opacity = opacity;
        run.flags = static_cast<std::uint8_t>(flags | q5_FACERUN::kTexturedAllowed);
        d.DrawFaceGroup(&mesh.Mesh(), &run, &state);
    };
    const auto sides = [&](const SceneObject& o) {
        return o.twoSided ? q5_FACERUN::kTwoSided : std::uint8_t{0};
    };

    for (std::size_t i : opaque) draw(*meshes[i], 1.0f, sides(objects[i]));

    // Lines and points of model files, in their material's colour.
    q5_MATERIAL lines;
    lines.flags = q5_MATERIAL::kDrawEdges;
    std::vector<ScreenVertex> points;
    for (std::size_t i = 0; i < objects.size(); ++i) {
        const MeshGeometry& g = objects[i].geometry;
        if (g.segments.empty() && g.points.empty()) continue;
        const Rgb& c = scene.Material(objects[i].material).colour;
        const auto byte = [](float v) {
            return static_cast<std::uint32_t>(std::clamp(v, 0.0f, 1.0f) * 255.0f + 0.5f);
        };
        const std::uint32_t colour = byte(c.red) | byte(c.green) << 8 | byte(c.blue) << 16;
        if (!g.segments.empty()) {
            FrameMesh segments;
            segments.BuildLines(objects[i], &lines, colour, camera, volume);
            draw(segments, 1.0f, 0);
        }
        meshes[i]->ProjectPoints(objects[i], view, colour, points);
        if (!points.empty())
            d.DrawScreenPoints(points.data(), static_cast<std::int32_t>(points.size()));
    }

    q5_MATERIAL outline;
    outline.flags = q5_MATERIAL::kDrawEdges;
    for (std::size_t i = 0; i < objects.size(); ++i) {
        if (!objects[i].outlined && !request.edges) continue;
        FrameMesh edges;
        edges.BuildOutline(objects[i], &outline, scene.outlineColour, camera, volume);
        const double z = std::max<double>(edges.CentreDepth(), volume.nearZ);
        const auto pull = static_cast<std::uint32_t>(
            std::max(1.0, volume.DepthStepsPerUnit(z) * kOutlinePull * z / kDepthOffsetUnit));
        d.DepthOffset(pull);
        draw(edges, 1.0f, sides(objects[i]));
        // Unsigned arithmetic wraps, so this takes the same pull back.
        d.DepthOffset(0u - pull);
    }

    for (std::size_t i : blended)
        draw(*meshes[i], objects[i].opacity, q5_FACERUN::kBlend | sides(objects[i]));

    // Read before supersampling ends, which replaces the depth buffer.
    drawer.drewSomething = !NothingDrawn(d, kClearedDepth);
    if (request.fade) d.FrameStep(kFade);
    if (request.supersample) {
        d.FrameStep(kSupersampleEnd);
        d.FrameStep(kSupersampleDone);
    }
    d.FrameStep(kEnd);
    return true;
}

bool RenderSession::ReadFrame(Image& image, std::string& error) {
    DRIVER3D* d = first_.driver;
    const auto* bits = d != nullptr
                           ? reinterpret_cast<const std::uint8_t*>(d->GetValue(kValueColourBits, 0))
                           : nullptr;
    const auto width = d != nullptr ? static_cast<std::int32_t>(d->GetValue(kValueWidth, 0)) : 0;
    const auto height = d != nullptr ? static_cast<std::int32_t>(d->GetValue(kValueHeight, 0)) : 0;
    if (bits == nullptr || width != width_ || height != height_) {
        error = "the driver has no frame of the requested size (out of memory?)";
        return false;
    }
    image = ImageFromFrame(bits, width, height, q5DibRowStride(32, width));
    return true;
}

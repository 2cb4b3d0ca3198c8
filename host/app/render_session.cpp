// The frame sequence of the driver as the host runs it.
#include "host/app/render_session.h"

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

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

// GetValue ids of the finished frame.
constexpr std::int32_t kValueWidth = 100;
constexpr std::int32_t kValueHeight = 101;
constexpr std::int32_t kValueColourBits = 102;
constexpr std::int32_t kValueDepthBytes = 105;
constexpr std::int32_t kValueDepthBits = 104;
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

// True when no depth of the frame being drawn moved from what clearing left: nothing of the
// scene reached a pixel.
bool NothingDrawn(DRIVER3D& d, std::int32_t cleared) {
    const auto* depth = reinterpret_cast<const std::int32_t*>(d.GetValue(kValueDepthBits, 0));
    const std::int64_t count = d.GetValue(kValueDepthBytes, 0) / 4;
    if (depth == nullptr || count <= 0) return false;
    return std::all_of(depth, depth + count, [cleared](std::int32_t z) { return z == cleared; });
}

} // namespace

bool RenderSession::Attach(q5_PROGRESS* progress, std::string& error) {
    if (driver_ == nullptr && !ChooseDriver(&driver_, kZBufferDriverName)) {
        error = "the software Z-buffer driver could not be created";
        return false;
    }
    q5_RENDERCONTEXT& context = view_.Context();
    context.view = &view_;
    context.progress = progress;
    driver_->Attach(0, &context);
    driver_->progress = progress;
    return true;
}

void RenderSession::Detach() {
    if (driver_ != nullptr) RemoveDriver(driver_, true);
}

bool RenderSession::Render(const Scene& scene, const Camera& camera, const ViewVolume& volume,
                           const FrameRequest& request, Image& image, std::string& error) {
    if (driver_ == nullptr) {
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
    // A surface the driver could not allocate is null; drawing must not start then.
    const auto surfacesMissing = [&](std::uint64_t width, std::uint64_t height) {
        if (driver_->GetValue(kValueColourBits, 0) != 0 &&
            driver_->GetValue(kValueDepthBits, 0) != 0)
            return false;
        error = "out of memory for a frame of " + std::to_string(width) + "x" +
                std::to_string(height) + " pixels";
        return true;
    };
    view_.SetVolume(volume);
    view_.SetSecondBackground(request.background[1]);
    view_.SetFade(request.fade, request.fadeColour);
    view_.SetSupersample(request.supersample ? 2.0 : 1.0);
    q5_RENDERCONTEXT& context = view_.Context();
    context.depthScale = volume.DepthScale();
    context.depthOffset = volume.DepthOffset();

    DRIVER3D& d = *driver_;
    d.Resize(request.width, request.height);
    if (surfacesMissing(request.width, request.height)) return false;
    d.FrameStep(kBegin);
    if (request.supersample) {
        d.FrameStep(kSupersampleRequest);
        d.FrameStep(kSupersampleBegin);
        if (surfacesMissing(drawnWidth, drawnHeight)) return false;
    }
    d.SetBkImage(request.backgroundPicture);
    context.backgroundMode = request.backgroundMode;
    d.ClearFrame(request.background[0]);
    const auto* depth = reinterpret_cast<const std::int32_t*>(d.GetValue(kValueDepthBits, 0));
    const std::int32_t clearedDepth = depth != nullptr ? *depth : 0;

    q5_RENDERSTATE state;
    state.refine = request.refine;
    state.twoSidedColouring = true;
    // Toward the eye, so sphere maps reflect the way a mirror does.
    state.viewDirection[0] = 0.0;
    state.viewDirection[1] = 0.0;
    state.viewDirection[2] = -1.0;

    const auto& objects = scene.Objects();
    std::vector<std::unique_ptr<FrameMesh>> meshes;
    std::vector<std::size_t> opaque, blended;
    for (std::size_t i = 0; i < objects.size(); ++i) {
        auto mesh = std::make_unique<FrameMesh>();
        mesh->Build(objects[i], scene.Material(objects[i].material), scene.lighting, camera,
                    volume);
        (objects[i].opacity < 1.0f ? blended : opaque).push_back(i);
        meshes.push_back(std::move(mesh));
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
        meshes[i]->ProjectPoints(objects[i], view_, colour, points);
        if (!points.empty()) d.DrawScreenPoints(points.data(), static_cast<std::int32_t>(points.size()));
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

    if (!objects.empty() && NothingDrawn(d, clearedDepth)) {
        error = "nothing reaches the picture: every face is culled or outside the view "
                "(try --two-sided or another --camera)";
        return false;
    }
    if (request.fade) d.FrameStep(kFade);
    if (request.supersample) {
        d.FrameStep(kSupersampleEnd);
        d.FrameStep(kSupersampleDone);
    }
    d.FrameStep(kEnd);
    if (!request.label.empty())
        d.DrawText(kLabelMargin, kLabelMargin, request.label.c_str(), request.labelColour);

    if (q5_PROGRESS::Cancelled(context.progress)) {
        error = "interrupted";
        return false;
    }
    const auto* bits = reinterpret_cast<const std::uint8_t*>(d.GetValue(kValueColourBits, 0));
    const auto width = static_cast<std::int32_t>(d.GetValue(kValueWidth, 0));
    const auto height = static_cast<std::int32_t>(d.GetValue(kValueHeight, 0));
    if (bits == nullptr || width != request.width || height != request.height) {
        error = "the driver has no frame of the requested size (out of memory?)";
        return false;
    }
    image = ImageFromFrame(bits, width, height, q5DibRowStride(32, width));
    return true;
}

// Drives the render driver through whole frames of a scene and reads back the pictures.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "host/app/split_balancer.h"
#include "host/formats/png_file.h"
#include "host/view/host_view.h"
#include "interface/types.h"

class Camera;
class FrameMesh;
class Scene;
class DRIVER3D;
class TPicture;

struct FrameRequest {
    std::int32_t width = 1280, height = 720;
    std::uint32_t background[2] = {0, 0}; // top and bottom, red in the low byte
    bool supersample = false;
    bool fade = false;
    std::uint32_t fadeColour = 0;
    bool edges = false;  // outline every object, not only those that ask for it
    bool refine = false; // subdivide large textured triangles
    // Drawn by the clear in place of the colours; held by the caller for the frame.
    TPicture* backgroundPicture = nullptr;
    std::int32_t backgroundMode = 0; // 0 stretch, 2 centre, any other tile
    // Written over the finished frame at the top left, red in the colour's low byte.
    std::u16string label;
    std::uint32_t labelColour = 0xFFFFFF;
    // "Render\ZB\Use2Thread": a second driver on a second thread draws the bottom half.
    bool twoThreads = false;
};

// Copies the rows from `splitRow` down, colour and depth, from `bottom`'s finished frame into
// `top`'s, of the same size; false with a reason when the frames do not match.
bool JoinFrameHalves(DRIVER3D& top, DRIVER3D& bottom, std::int32_t splitRow, std::string& error);

class RenderSession {
public:
    RenderSession();
    ~RenderSession();
    RenderSession(const RenderSession&) = delete;
    RenderSession& operator=(const RenderSession&) = delete;

    // Selects the software Z-buffer driver through the core library's host (which creates it
    // from the loaded module) and attaches it to the view and to `window` (may be null).
    bool Attach(q5_PROGRESS* progress, std::string& error, q5_HWND window = nullptr);
    // Drops the drivers.
    void Detach();
    // The driver that holds each finished frame, whole.
    DRIVER3D* Driver() const { return first_.driver; }
    HostView& View() { return first_.view; }

    // One frame: clear, every object, outlines, blended objects back to front, optional
    // supersampling and depth fade, the label. The finished frame stays in Driver().
    bool DrawFrame(const Scene& scene, const Camera& camera, const ViewVolume& volume,
                   const FrameRequest& request, std::string& error);
    // The finished frame as RGB, top row first.
    bool ReadFrame(Image& image, std::string& error);
    bool Render(const Scene& scene, const Camera& camera, const ViewVolume& volume,
                const FrameRequest& request, Image& image, std::string& error) {
        return DrawFrame(scene, camera, volume, request, error) && ReadFrame(image, error);
    }
    // Whether the last frame was drawn by two drivers, one half each.
    bool DrewInHalves() const { return halves_; }

private:
    struct Drawer {
        HostView view;
        DRIVER3D* driver = nullptr;
        bool drewSomething = false; // in the last frame
        std::vector<std::unique_ptr<FrameMesh>> meshes;
    };
    bool AttachDrawer(Drawer& drawer, q5_PROGRESS* progress, q5_HWND window, std::string& error);
    // Everything of a frame one driver draws, up to the end of the frame.
    bool DrawPart(Drawer& drawer, const Scene& scene, const Camera& camera,
                  const ViewVolume& volume, const FrameRequest& request, std::string& error);

    Drawer first_, second_;
    std::int32_t width_ = 0, height_ = 0;
    bool halves_ = false;
    SplitBalancer balancer_;
};

// Drives the render driver through whole frames of a scene and reads back the pictures.
#pragma once

#include <cstdint>
#include <string>

#include "host/formats/png_file.h"
#include "host/view/host_view.h"

class Camera;
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
};

class RenderSession {
public:
    RenderSession() = default;
    ~RenderSession() { Detach(); }
    RenderSession(const RenderSession&) = delete;
    RenderSession& operator=(const RenderSession&) = delete;

    // Selects the software Z-buffer driver through the core library's host (which creates it
    // from the loaded module) and attaches it to the view.
    bool Attach(q5_PROGRESS* progress, std::string& error);
    // Drops the driver.
    void Detach();
    DRIVER3D* Driver() const { return driver_; }
    HostView& View() { return view_; }

    // One frame: clear, every object, outlines, blended objects back to front, optional
    // supersampling and depth fade; the finished frame lands in `image` (RGB, top row first).
    bool Render(const Scene& scene, const Camera& camera, const ViewVolume& volume,
                const FrameRequest& request, Image& image, std::string& error);

private:
    HostView view_;
    DRIVER3D* driver_ = nullptr;
};

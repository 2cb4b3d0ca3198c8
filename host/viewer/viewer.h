// tessera-view's controller, the same on every platform: it owns the scene, the camera and the
// driver, turns window events into camera moves and settings, and draws frames when they are due.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "host/app/render_session.h"
#include "host/scene/scene.h"
#include "host/viewer/camera_controller.h"
#include "host/viewer/viewer_script.h"
#include "host/viewer/viewer_window.h"

class HostAPI;
class IniSettings;

struct ViewerOptions {
    std::vector<std::string> models; // empty: the built-in scene
    std::string scene = "demo";
    std::int32_t width = 1280, height = 720;
    bool twoSided = false; // back faces of every model object
    bool headsUp = true;   // the line with the name, triangles and frame time
};

class Viewer {
public:
    // The window, host and settings outlive the viewer.
    Viewer(ViewerWindow& window, HostAPI& host, IniSettings& settings,
           const ViewerOptions& options);

    // Makes the driver for the window; false with `error`.
    bool Start(std::string& error);
    // Replaces the scene with the model files, or with built-in scene `builtIn` when there are
    // none. On failure the scene is left as it was, and the reason is shown and printed.
    bool Open(const std::vector<std::string>& models, const std::string& builtIn);
    // Steps run whenever the viewer has nothing left to do, as if a user did them.
    void SetScript(std::vector<ScriptStep> steps) { script_ = std::move(steps); }
    // A message of the host: errors and warnings go to standard error and into the window.
    void Report(std::int32_t level, const std::string& text);

    bool TwoThreads() const { return twoThreads_; }
    // Handles events and draws until the window closes; the process exit status.
    int Run();
    // Draws `frames` frames turning once around the scene; false with `error`.
    bool BenchmarkOrbit(int frames, double& milliseconds, std::string& error);

private:
    enum class Drag { None, Orbit, Pan, Band };
    struct Band {
        std::int32_t x0 = 0, y0 = 0, x1 = 0, y1 = 0;
        bool shown = false;
    };
    struct OptionsPanel {
        q5_HWND page = nullptr;
        std::size_t focus = 0;
        int result = -1; // -1 open, 0 cancelled, 1 applied
    };

    // The next event; draws what is due and runs script steps whenever the queue is empty.
    bool NextEvent(q5plat::WindowEvent& event);
    void Handle(const q5plat::WindowEvent& event);
    void HandleKey(std::uint32_t key, std::uint32_t modifiers);
    void HandlePanelKey(std::uint32_t key, std::uint32_t modifiers);
    void RunScriptStep();

    FrameRequest Request(std::int32_t width, std::int32_t height) const;
    // Draws the frame with its overlays and shows it.
    void Redraw();
    // Shows the frame in the driver; `drawn`: it was just drawn, so a mismatch is not retried.
    void Present(bool drawn);
    void DrawOverlays(const std::string& problem);
    void DrawLine(std::int32_t x, std::int32_t y, const std::string& text, std::uint32_t colour);
    void DrawBand();
    void CentreOnPixel(std::int32_t x, std::int32_t y);
    void WritePicture();
    void ShowOptions();
    // The driver's page as a panel over the frame, driven by keys; true when applied.
    bool ShowOptionsPanel();
    void Toggle(bool& flag);

    ViewerWindow& window_;
    HostAPI& host_;
    IniSettings& settings_;
    ViewerOptions options_;
    RenderSession session_;
    std::unique_ptr<Scene> scene_ = std::make_unique<Scene>();
    std::vector<std::string> models_; // what the scene holds; empty: a built-in scene
    std::string sceneName_ = "nothing open";
    CameraController camera_;
    Framing drawn_; // the camera of the frame in the driver
    std::int32_t drawnWidth_ = 0, drawnHeight_ = 0;
    double frameMs_ = 0.0;

    bool supersample_ = false, fade_ = false, edges_ = false, gradient_ = true;
    bool twoThreads_ = false; // the driver's Use2Thread setting, which U switches
    bool help_ = false;
    std::string message_; // the last thing to tell the user
    bool messageIsError_ = false;

    bool dirty_ = true;       // the frame must be drawn again
    bool presentDue_ = false; // the frame must be shown again
    bool minimised_ = false;
    bool quit_ = false;
    Drag drag_ = Drag::None;
    std::int32_t lastX_ = 0, lastY_ = 0;
    Band band_;
    OptionsPanel panel_;
    bool panelOpen_ = false;

    std::vector<ScriptStep> script_;
    std::size_t scriptNext_ = 0;
    std::int32_t awaitWidth_ = 0, awaitHeight_ = 0; // a scripted resize not yet seen
    int status_ = 0;
};

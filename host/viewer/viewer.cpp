// The viewer's event handling, drawing on demand and overlays.
#include "host/viewer/viewer.h"

#include <chrono>
#include <cstdio>
#include <filesystem>

#include "core/platform/dialog_controls.h"
#include "core/platform/property_sheet.h"
#include "core/services/text_convert.h"
#include "host/app/host_api.h"
#include "host/app/ini_settings.h"
#include "host/app/scene_loading.h"
#include "host/formats/png_file.h"
#include "host/scene/builtin_scenes.h"
#include "interface/driver.h"

namespace {

using q5plat::WindowEvent;
using q5plat::WindowEventKind;

constexpr const char* kProgram = "tessera-view";
// A host message level that is neither information nor an error.
constexpr std::int32_t kReportWarning = 2;
constexpr const char* kUse2Thread = "Render\\ZB\\Use2Thread";

// Text overlays: the driver's 13-pixel face, a line every 18 pixels from the top-left corner.
constexpr std::int32_t kMargin = 8;
constexpr std::int32_t kLineHeight = 18;
constexpr std::uint32_t kWhite = 0xFFFFFF, kBlack = 0x000000, kRed = 0x6060FF, kYellow = 0x40FFFF;

constexpr const char* kHelp[] = {
    "left drag: orbit    right or shift+left drag: pan    wheel: zoom at the cursor",
    "ctrl+left drag: zoom to the rectangle    double-click: centre on the point",
    "R reset   F fit   S supersampling   D depth fade   E edges   T two-sided faces",
    "B background gradient   U two threads   I heads-up line   C print the camera",
    "P write the view to a PNG   O driver options   H help   Q quit",
    "drop a model file on the window to open it",
};

double MillisecondsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
        .count();
}

std::string Thousands(std::size_t n) {
    std::string digits = std::to_string(n), out;
    for (std::size_t i = 0; i < digits.size(); ++i) {
        if (i > 0 && (digits.size() - i) % 3 == 0) out += ',';
        out += digits[i];
    }
    return out;
}

// An RGB image of top-down blue, green, red, unused rows.
Image ImageFromWindowPixels(const std::vector<std::uint8_t>& pixels, std::int32_t width,
                            std::int32_t height) {
    const std::int32_t stride = 4 * width;
    // ImageFromFrame reads bottom-up rows: start at the last row and step back.
    return ImageFromFrame(pixels.data() + static_cast<std::ptrdiff_t>(height - 1) * stride, width,
                          height, -stride);
}

} // namespace

Viewer::Viewer(ViewerWindow& window, HostAPI& host, IniSettings& settings,
               const ViewerOptions& options)
    : window_(window), host_(host), settings_(settings), options_(options) {
    // Until a scene opens, the camera looks at an empty one.
    camera_.SetScene(Bounds{}, Bounds{}, Shot{}, options.width, options.height);
}

bool Viewer::Start(std::string& error) {
    if (!session_.Attach(nullptr, error, window_.DriverWindow())) return false;
    twoThreads_ = session_.Driver()->QueryCaps(kCapsUseTwoThreads) != 0;
    return true;
}

void Viewer::Report(std::int32_t level, const std::string& text) {
    const bool error = level == kReportError;
    std::fprintf(stderr, "%s: %s: %s\n", kProgram,
                 error                  ? "error"
                 : level == kReportInfo ? "info"
                                        : "warning",
                 text.c_str());
    if (level == kReportInfo) return;
    message_ = text;
    messageIsError_ = error;
    dirty_ = true;
}

bool Viewer::Open(const std::vector<std::string>& models, const std::string& builtIn) {
    auto scene = std::make_unique<Scene>();
    std::string error;
    std::vector<std::string> warnings;
    bool loaded = false;
    if (!models.empty()) {
        loaded = LoadModels(models, options_.twoSided, *scene, warnings, error);
    } else {
        loaded = BuildBuiltInScene(builtIn, *scene);
        if (!loaded) error = "unknown scene '" + builtIn + "'";
    }
    for (const std::string& warning : warnings) Report(kReportWarning, warning);
    if (!loaded) {
        Report(kReportError, error);
        return false;
    }
    const bool sameScene = models == models_ && (!models.empty() || builtIn == sceneName_);
    scene_ = std::move(scene);
    models_ = models;
    sceneName_ = models.empty() ? builtIn : std::filesystem::path(models[0]).filename().string();
    if (models.size() > 1) sceneName_ += " +" + std::to_string(models.size() - 1);
    std::int32_t width = 0, height = 0;
    window_.ClientSize(width, height);
    // Reading the same files again (two-sided faces) keeps the view.
    if (!sameScene) {
        Shot home;
        home.yaw = scene_->yaw;
        home.pitch = scene_->pitch;
        home.fovY = scene_->fovY;
        home.fit = scene_->fit;
        camera_.SetScene(scene_->FramedBounds(), scene_->AllBounds(), home, width, height);
    }
    window_.SetTitle(std::string(kProgram) + " - " + sceneName_);
    if (warnings.empty()) message_.clear();
    dirty_ = true;
    return true;
}

int Viewer::Run() {
    WindowEvent event;
    while (!quit_ && NextEvent(event)) Handle(event);
    return status_;
}

bool Viewer::NextEvent(WindowEvent& event) {
    for (;;) {
        // Every waiting event first: a burst of mouse moves costs one frame.
        if (window_.NextEvent(event, false)) return true;
        if (quit_) return false;
        if (dirty_) {
            Redraw();
            continue;
        }
        if (presentDue_) {
            Present(false);
            continue;
        }
        if (awaitWidth_ == 0 && scriptNext_ < script_.size()) {
            RunScriptStep();
            continue;
        }
        return window_.NextEvent(event, true);
    }
}

void Viewer::RunScriptStep() {
    const ScriptStep& step = script_[scriptNext_++];
    switch (step.kind) {
    case ScriptStep::Kind::Event:
        if (step.event.kind == WindowEventKind::Resize) {
            std::int32_t width = 0, height = 0;
            window_.ClientSize(width, height);
            if (width == step.event.width && height == step.event.height) return;
            awaitWidth_ = step.event.width;
            awaitHeight_ = step.event.height;
        }
        if (!window_.PostEvent(step.event)) {
            std::fprintf(stderr, "%s: script line %d: this window takes no posted events\n",
                         kProgram, step.line);
            status_ = 1;
            quit_ = true;
        }
        return;
    case ScriptStep::Kind::Capture: {
        std::vector<std::uint8_t> pixels;
        std::int32_t width = 0, height = 0;
        std::string error;
        if (!window_.ReadPixels(pixels, width, height) ||
            !WritePng(step.file, ImageFromWindowPixels(pixels, width, height), error)) {
            std::fprintf(stderr, "%s: script line %d: cannot capture the window to %s%s%s\n",
                         kProgram, step.line, step.file.c_str(), error.empty() ? "" : ": ",
                         error.c_str());
            status_ = 1;
        }
        return;
    }
    case ScriptStep::Kind::Camera:
        std::printf("%s\n", camera_.RenderArguments().c_str());
        std::fflush(stdout);
        return;
    }
}

void Viewer::Handle(const WindowEvent& e) {
    std::int32_t width = 0, height = 0;
    window_.ClientSize(width, height);
    switch (e.kind) {
    case WindowEventKind::Quit:
        quit_ = true;
        if (panelOpen_) panel_.result = 0;
        return;
    case WindowEventKind::Resize:
        if (e.width == awaitWidth_ && e.height == awaitHeight_) awaitWidth_ = awaitHeight_ = 0;
        dirty_ = true;
        return;
    case WindowEventKind::Expose:
        presentDue_ = true;
        return;
    case WindowEventKind::Minimise:
        minimised_ = true;
        return;
    case WindowEventKind::Restore:
        minimised_ = false;
        dirty_ = true;
        return;
    case WindowEventKind::Key:
        if (panelOpen_)
            HandlePanelKey(e.key, e.modifiers);
        else
            HandleKey(e.key, e.modifiers);
        return;
    case WindowEventKind::DropFiles:
        if (!panelOpen_) Open(e.files, "");
        return;
    default:
        break;
    }
    if (panelOpen_) return; // the panel takes keys only
    switch (e.kind) {
    case WindowEventKind::MouseDown:
        lastX_ = e.x;
        lastY_ = e.y;
        if (e.button == q5plat::kButtonLeft && (e.modifiers & q5plat::kModifierControl)) {
            drag_ = Drag::Band;
            band_ = Band{e.x, e.y, e.x, e.y, false};
        } else if (e.button == q5plat::kButtonLeft && (e.modifiers & q5plat::kModifierShift) == 0) {
            drag_ = Drag::Orbit;
        } else {
            drag_ = Drag::Pan;
        }
        return;
    case WindowEventKind::MouseMove: {
        const double dx = e.x - lastX_, dy = e.y - lastY_;
        lastX_ = e.x;
        lastY_ = e.y;
        if (drag_ == Drag::Orbit) camera_.Orbit(dx, dy);
        if (drag_ == Drag::Pan) camera_.Pan(dx, dy, width, height);
        if (drag_ == Drag::Orbit || drag_ == Drag::Pan) dirty_ = true;
        if (drag_ == Drag::Band) {
            // Drawn twice, an XOR line is gone: the old band goes, the new one comes.
            if (band_.shown) DrawBand();
            band_.x1 = e.x;
            band_.y1 = e.y;
            DrawBand();
            band_.shown = true;
            window_.Show();
        }
        return;
    }
    case WindowEventKind::MouseUp:
        if (drag_ == Drag::Band) {
            if (band_.shown) {
                DrawBand();
                window_.Show();
            }
            band_.shown = false;
            if (camera_.ZoomToRect(band_.x0, band_.y0, e.x, e.y, width, height)) dirty_ = true;
        } else if (drag_ != Drag::None && (e.x != lastX_ || e.y != lastY_)) {
            const double dx = e.x - lastX_, dy = e.y - lastY_;
            if (drag_ == Drag::Orbit) camera_.Orbit(dx, dy);
            if (drag_ == Drag::Pan) camera_.Pan(dx, dy, width, height);
            dirty_ = true;
        }
        drag_ = Drag::None;
        return;
    case WindowEventKind::DoubleClick:
        drag_ = Drag::None;
        if (e.button == q5plat::kButtonLeft) CentreOnPixel(e.x, e.y);
        return;
    case WindowEventKind::Wheel:
        camera_.ZoomAt(e.wheel, e.x, e.y, width, height);
        dirty_ = true;
        return;
    default:
        return;
    }
}

void Viewer::Toggle(bool& flag) {
    flag = !flag;
    dirty_ = true;
}

void Viewer::HandleKey(std::uint32_t key, std::uint32_t modifiers) {
    (void)modifiers;
    std::int32_t width = 0, height = 0;
    window_.ClientSize(width, height);
    switch (key) {
    case 'r':
        camera_.Reset(width, height);
        dirty_ = true;
        break;
    case 'f':
        camera_.Fit(width, height);
        dirty_ = true;
        break;
    case 's':
        Toggle(supersample_);
        break;
    case 'd':
        Toggle(fade_);
        break;
    case 'e':
        Toggle(edges_);
        break;
    case 'b':
        Toggle(gradient_);
        break;
    case 'i':
        Toggle(options_.headsUp);
        break;
    case 't':
        if (models_.empty()) {
            Report(kReportWarning,
                   "two-sided faces apply to model files; this is a built-in scene");
            break;
        }
        options_.twoSided = !options_.twoSided;
        Open(models_, sceneName_);
        break;
    case 'u':
        twoThreads_ = !twoThreads_;
        settings_.SetInt(kUse2Thread, twoThreads_ ? 1 : 0);
        dirty_ = true;
        break;
    case 'c':
        std::printf("%s\n", camera_.RenderArguments().c_str());
        std::fflush(stdout);
        break;
    case 'p':
        WritePicture();
        break;
    case 'h':
    case q5plat::kKeyF1:
        help_ = !help_;
        dirty_ = true;
        break;
    case 'o':
        ShowOptions();
        break;
    case 'q':
        quit_ = true;
        break;
    case q5plat::kKeyEscape:
        help_ = false;
        message_.clear();
        dirty_ = true;
        break;
    default:
        break;
    }
}

FrameRequest Viewer::Request(std::int32_t width, std::int32_t height) const {
    FrameRequest r;
    r.width = width;
    r.height = height;
    r.background[0] = scene_->background[0];
    r.background[1] = gradient_ ? scene_->background[1] : scene_->background[0];
    r.supersample = supersample_;
    r.fade = fade_;
    r.fadeColour = r.background[0];
    r.edges = edges_;
    r.refine = session_.Driver()->QueryCaps(kCapsRefine) != 0;
    r.twoThreads = twoThreads_;
    return r;
}

void Viewer::Redraw() {
    dirty_ = false;
    presentDue_ = false;
    if (minimised_) return; // nothing shows: nothing is drawn
    std::int32_t width = 0, height = 0;
    window_.ClientSize(width, height);
    if (width < 1 || height < 1 || window_.DriverWindow() == nullptr) return;
    const FrameRequest request = Request(width, height);
    drawn_ = camera_.Frame(width, height);
    std::string error;
    const auto start = std::chrono::steady_clock::now();
    const bool drawn = session_.DrawFrame(*scene_, drawn_.camera, drawn_.volume, request, error);
    frameMs_ = MillisecondsSince(start);
    drawnWidth_ = drawn ? width : 0;
    drawnHeight_ = drawn ? height : 0;
    DrawOverlays(error);
    Present(true);
}

void Viewer::Present(bool drawn) {
    presentDue_ = false;
    std::int32_t width = 0, height = 0;
    window_.ClientSize(width, height);
    DRIVER3D* driver = session_.Driver();
    if (minimised_ || driver->GetValue(kValueWidth, 0) != width ||
        driver->GetValue(kValueHeight, 0) != height) {
        // The frame in the driver no longer fits the window; a new one does unless it just failed.
        dirty_ = !minimised_ && !drawn;
        return;
    }
    q5_HDC dc = window_.AcquireDC();
    if (dc == nullptr) return;
    const q5_URECT rect{0, 0, static_cast<std::uint32_t>(width),
                        static_cast<std::uint32_t>(height)};
    driver->PresentRect(dc, &rect);
    window_.ReleaseDC(dc);
    if (band_.shown) DrawBand();
    window_.Show();
}

void Viewer::DrawLine(std::int32_t x, std::int32_t y, const std::string& text,
                      std::uint32_t colour) {
    const std::u16string wide = Utf8ToWide(text);
    if (wide.empty()) return;
    // A shadow keeps the text readable over any picture.
    session_.Driver()->DrawText(x + 1, y + 1, wide.c_str(), kBlack);
    session_.Driver()->DrawText(x, y, wide.c_str(), colour);
}

void Viewer::DrawOverlays(const std::string& problem) {
    std::int32_t y = kMargin;
    const auto line = [&](const std::string& text, std::uint32_t colour) {
        DrawLine(kMargin, y, text, colour);
        y += kLineHeight;
    };
    if (options_.headsUp) {
        char text[128];
        std::snprintf(text, sizeof text, "    %s triangles    %.1f ms",
                      Thousands(TriangleCount(*scene_)).c_str(), frameMs_);
        std::string state = sceneName_ + text;
        // What the keys switched on, so that the picture explains itself.
        const std::pair<bool, const char*> switches[] = {{supersample_, "supersampled"},
                                                         {fade_, "depth fade"},
                                                         {edges_, "edges"},
                                                         {options_.twoSided, "two-sided"},
                                                         {!gradient_, "solid background"},
                                                         {twoThreads_, "two threads"}};
        for (const auto& [on, name] : switches)
            if (on) state += std::string("    ") + name;
        line(state, kWhite);
    }
    if (!problem.empty()) line(problem, kRed);
    // Notes go with the heads-up line; errors show whatever the user turned off.
    if (!message_.empty() && (messageIsError_ || options_.headsUp))
        line(message_, messageIsError_ ? kRed : kYellow);
    if (help_)
        for (const char* text : kHelp) line(text, kWhite);
    if (!panelOpen_) return;
    line("Driver options: Tab next, Space toggle, type into a field, Enter apply, Esc cancel",
         kYellow);
    const auto controls = q5plat::ListDialogControls(panel_.page);
    for (std::size_t i = 0; i < controls.size(); ++i) {
        const q5plat::ControlState& c = controls[i];
        std::string text = i == panel_.focus ? "> " : "  ";
        const std::string caption = WideToUtf8(c.text.c_str());
        if (c.kind == q5plat::ControlKind::CheckBox)
            text += (c.checked ? "[x] " : "[ ] ") + caption;
        else if (c.kind == q5plat::ControlKind::Edit)
            text += "[" + caption + "]";
        else if (c.kind == q5plat::ControlKind::Other && !caption.empty())
            text += caption;
        else
            continue;
        if (!c.enabled) text += " (disabled)";
        line(text, i == panel_.focus ? kYellow : kWhite);
    }
}

void Viewer::DrawBand() {
    q5_HWND window = window_.DriverWindow();
    const float x0 = static_cast<float>(band_.x0), y0 = static_cast<float>(band_.y0);
    const float x1 = static_cast<float>(band_.x1), y1 = static_cast<float>(band_.y1);
    DRIVER3D* d = session_.Driver();
    d->DrawXorLine(window, {x0, y0}, {x1, y0});
    d->DrawXorLine(window, {x1, y0}, {x1, y1});
    d->DrawXorLine(window, {x1, y1}, {x0, y1});
    d->DrawXorLine(window, {x0, y1}, {x0, y0});
}

void Viewer::CentreOnPixel(std::int32_t x, std::int32_t y) {
    DRIVER3D* d = session_.Driver();
    if (supersample_) {
        // A supersampled frame ends with a depth buffer of its own size that holds nothing
        // drawn: the depths come from the same view drawn once more at the window's size.
        FrameRequest plain = Request(drawnWidth_, drawnHeight_);
        plain.supersample = false;
        drawn_ = camera_.Frame(drawnWidth_, drawnHeight_);
        std::string error;
        if (drawnWidth_ == 0 ||
            !session_.DrawFrame(*scene_, drawn_.camera, drawn_.volume, plain, error))
            return;
        dirty_ = true; // the window shows the supersampled frame again
    }
    const auto width = static_cast<std::int32_t>(d->GetValue(kValueWidth, 0));
    const auto height = static_cast<std::int32_t>(d->GetValue(kValueHeight, 0));
    const auto* depth = reinterpret_cast<const std::int32_t*>(d->GetValue(kValueDepthBits, 0));
    const std::int64_t count = d->GetValue(kValueDepthBytes, 0) / 4;
    if (depth == nullptr || width != drawnWidth_ || height != drawnHeight_ || x < 0 || y < 0 ||
        x >= width || y >= height)
        return;
    if (count < std::int64_t{width} * height) return;
    const std::int32_t z = depth[std::int64_t{y} * width + x];
    if (z == kClearedDepth) {
        message_ = "nothing under the cursor to centre on";
        messageIsError_ = false;
        dirty_ = true;
        return;
    }
    camera_.CentreOn(UnprojectPixel(drawn_, x, y, z));
    dirty_ = true;
}

void Viewer::WritePicture() {
    std::int32_t width = 0, height = 0;
    window_.ClientSize(width, height);
    std::string stem =
        models_.empty() ? sceneName_ : std::filesystem::path(models_[0]).stem().string();
    std::string name;
    for (int i = 1; i < 10000; ++i) {
        char number[16];
        std::snprintf(number, sizeof number, "-%03d.png", i);
        name = stem + "-view" + number;
        if (!std::filesystem::exists(name)) break;
    }
    // The view without the overlays, drawn again.
    const Framing framing = camera_.Frame(width, height);
    Image image;
    std::string error;
    if (session_.DrawFrame(*scene_, framing.camera, framing.volume, Request(width, height),
                           error) &&
        session_.ReadFrame(image, error) && WritePng(name, image, error)) {
        std::printf("%s: wrote %s\n", kProgram, name.c_str());
        std::fflush(stdout);
        message_ = "wrote " + name;
        messageIsError_ = false;
    } else {
        Report(kReportError, "cannot write " + name + ": " + error);
    }
    dirty_ = true;
}

void Viewer::ShowOptions() {
    const int changesBefore = session_.View().SettingsChangeCount();
    bool applied = false;
    if (q5plat::kSheetsForUsers && script_.empty()) {
        // A person at a desktop gets the system's own sheet with the driver's page.
        host_.SetSheetScript({});
        applied = session_.Driver()->ShowOptions(window_.DriverWindow());
    } else {
        applied = ShowOptionsPanel();
    }
    // The driver tells its view when "Render\ZB\Use2Thread" changed.
    if (session_.View().SettingsChangeCount() != changesBefore)
        twoThreads_ = session_.Driver()->QueryCaps(kCapsUseTwoThreads) != 0;
    message_ = applied ? "options applied" : "options cancelled";
    messageIsError_ = false;
    dirty_ = true;
}

bool Viewer::ShowOptionsPanel() {
    host_.SetSheetScript([this](q5_HWND page) {
        panel_ = OptionsPanel{page, 0, -1};
        const auto controls = q5plat::ListDialogControls(page);
        while (panel_.focus < controls.size() &&
               controls[panel_.focus].kind == q5plat::ControlKind::Other)
            ++panel_.focus;
        panelOpen_ = true;
        dirty_ = true;
        WindowEvent event;
        while (panel_.result < 0) {
            if (!NextEvent(event)) {
                panel_.result = 0;
                break;
            }
            Handle(event);
        }
        panelOpen_ = false;
        return panel_.result == 1;
    });
    const bool applied = session_.Driver()->ShowOptions(nullptr);
    host_.SetSheetScript({});
    return applied;
}

void Viewer::HandlePanelKey(std::uint32_t key, std::uint32_t modifiers) {
    const auto controls = q5plat::ListDialogControls(panel_.page);
    if (controls.empty() || key == q5plat::kKeyEscape) {
        panel_.result = 0;
        return;
    }
    if (key == q5plat::kKeyEnter) {
        panel_.result = 1;
        return;
    }
    dirty_ = true;
    if (key == q5plat::kKeyTab || key == q5plat::kKeyDown || key == q5plat::kKeyUp) {
        const bool back = key == q5plat::kKeyUp || (modifiers & q5plat::kModifierShift);
        for (std::size_t step = 0; step < controls.size(); ++step) {
            panel_.focus = (panel_.focus + (back ? controls.size() - 1 : 1)) % controls.size();
            if (controls[panel_.focus].kind != q5plat::ControlKind::Other) break;
        }
        return;
    }
    if (panel_.focus >= controls.size()) return;
    const q5plat::ControlState& c = controls[panel_.focus];
    if (!c.enabled) return;
    if (c.kind == q5plat::ControlKind::CheckBox && key == ' ') {
        q5plat::CheckDlgButton(panel_.page, c.id, !c.checked);
    } else if (c.kind == q5plat::ControlKind::Edit) {
        std::u16string text = c.text;
        if (key == q5plat::kKeyBackspace && !text.empty())
            text.pop_back();
        else if (key >= 0x20 && key < 0x7F)
            text.push_back(static_cast<char16_t>(key));
        q5plat::SetDlgItemText(panel_.page, c.id, text.c_str());
    }
}

bool Viewer::BenchmarkOrbit(int frames, double& milliseconds, std::string& error) {
    Redraw(); // the first frame makes the surfaces
    if (drawnWidth_ == 0) {
        error = "the first frame could not be drawn";
        return false;
    }
    // Pixels of drag per frame for one whole turn.
    const double step = 360.0 / frames / kOrbitDegreesPerPixel;
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < frames; ++i) {
        camera_.Orbit(step, 0.0);
        Redraw();
        if (drawnWidth_ == 0) {
            error = "frame " + std::to_string(i + 1) + " could not be drawn";
            return false;
        }
    }
    milliseconds = MillisecondsSince(start);
    return true;
}

// The viewer's window on Windows: a native desktop window whose device context the driver
// presents into.
#include <utility>

#include "core/platform/desktop_window.h"
#include "core/platform/graphics.h"
#include "core/platform/host_window.h"
#include "core/services/text_convert.h"
#include "host/viewer/viewer_window.h"

namespace {

class NativeViewerWindow final : public ViewerWindow {
public:
    explicit NativeViewerWindow(std::unique_ptr<q5plat::DesktopWindow> window)
        : window_(std::move(window)) {}

    bool NextEvent(q5plat::WindowEvent& event, bool wait) override {
        return window_->NextEvent(event, wait);
    }
    q5_HWND DriverWindow() override { return window_->Handle(); }
    q5_HDC AcquireDC() override { return q5plat::AcquireWindowDC(window_->Handle()); }
    void ReleaseDC(q5_HDC dc) override { q5plat::ReleaseWindowDC(window_->Handle(), dc); }
    void Show() override { window_->Flush(); }
    void ClientSize(std::int32_t& width, std::int32_t& height) const override {
        if (!window_->ClientSize(width, height)) width = height = 0;
    }
    void SetTitle(const std::string& utf8) override { window_->SetTitle(Utf8ToWide(utf8).c_str()); }
    bool ReadPixels(std::vector<std::uint8_t>& pixels, std::int32_t& width,
                    std::int32_t& height) override {
        return q5plat::ReadWindowPixels(window_->Handle(), pixels, width, height);
    }
    bool PostEvent(const q5plat::WindowEvent& event) override { return window_->Post(event); }

private:
    std::unique_ptr<q5plat::DesktopWindow> window_;
};

} // namespace

std::unique_ptr<ViewerWindow> OpenViewerWindow(const std::string& title, std::int32_t width,
                                               std::int32_t height, std::string& error) {
    auto window = q5plat::DesktopWindow::Open(Utf8ToWide(title).c_str(), width, height, error);
    if (!window) return nullptr;
    return std::make_unique<NativeViewerWindow>(std::move(window));
}

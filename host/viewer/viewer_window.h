// The window tessera-view draws in: an SDL2 window on POSIX, a native window on Windows.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "core/platform/window_events.h"
#include "interface/types.h"

class ViewerWindow {
public:
    virtual ~ViewerWindow() = default;

    // Waits for the next event when `wait`, else returns false at once when there is none.
    virtual bool NextEvent(q5plat::WindowEvent& event, bool wait) = 0;
    // The handle the driver draws in: PresentRect's device context comes from it, and
    // DrawXorLine takes it. Valid until the next Resize event is handled.
    virtual q5_HWND DriverWindow() = 0;
    // A device context of DriverWindow() for PresentRect, and its release.
    virtual q5_HDC AcquireDC() = 0;
    virtual void ReleaseDC(q5_HDC dc) = 0;
    // Shows what was drawn into the window since the last call.
    virtual void Show() = 0;
    virtual void ClientSize(std::int32_t& width, std::int32_t& height) const = 0;
    virtual void SetTitle(const std::string& utf8) = 0;
    // The client area as the screen shows it, top row first, blue, green, red, unused.
    virtual bool ReadPixels(std::vector<std::uint8_t>& pixels, std::int32_t& width,
                            std::int32_t& height) = 0;
    // Puts `event` through the platform's own event queue, as the user's input would come, so
    // that a script drives the window; a Resize event resizes the window. False when the
    // platform cannot.
    virtual bool PostEvent(const q5plat::WindowEvent& event) {
        (void)event;
        return false;
    }
};

// Opens the platform's viewer window with a client area of width x height; null with `error`.
std::unique_ptr<ViewerWindow> OpenViewerWindow(const std::string& title, std::int32_t width,
                                               std::int32_t height, std::string& error);

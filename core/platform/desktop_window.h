// A resizable top-level window on the desktop that reports its input as WindowEvents: a native
// window on Windows. POSIX has none here (its viewer window comes from SDL), so opening fails.
// Programs link this; the module does not.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <string>

#include "core/platform/window_events.h"
#include "interface/types.h"

namespace q5plat {

class DesktopWindow {
public:
    // A window with a client area of width x height, shown, accepting dropped files; null
    // with `error` when it cannot be made.
    static std::unique_ptr<DesktopWindow> Open(const q5_WCHAR* title, std::int32_t width,
                                               std::int32_t height, std::string& error);
    ~DesktopWindow();
    DesktopWindow(const DesktopWindow&) = delete;
    DesktopWindow& operator=(const DesktopWindow&) = delete;

    q5_HWND Handle() const { return window_; }
    // Runs the thread's message loop until this window has an event; without `wait` it
    // returns false at once when none is pending.
    bool NextEvent(WindowEvent& event, bool wait);
    bool SetTitle(const q5_WCHAR* title);
    bool ClientSize(std::int32_t& width, std::int32_t& height) const;
    // The client area's top-left corner in screen pixels.
    bool ClientOrigin(std::int32_t& x, std::int32_t& y) const;
    // Puts `event` through the window's own queue as the system delivers a user's input, so
    // that a script drives the window: mouse, wheel, key, drop and close become posted
    // messages, Expose invalidates the client area, Resize resizes it and Minimise and Restore
    // ask the system to. False when the event cannot be expressed or posted.
    bool Post(const WindowEvent& event);
    // Sends what the thread drew into the window on to the screen.
    void Flush();
    // True while a button pressed in the window holds the mouse to it.
    bool CapturesMouse() const;

    // Turns one of the window's messages into events; false when the system's default
    // handling should run. Called by the window procedure only.
    bool Receive(std::uint32_t message, std::uintptr_t w, std::intptr_t l);

private:
    DesktopWindow() = default;

    q5_HWND window_ = nullptr;
    std::deque<WindowEvent> events_;
    std::int32_t width_ = 0, height_ = 0; // the last size reported
    std::uint32_t buttons_ = 0;           // buttons held since a press in the window
    bool minimised_ = false;
};

// Posts a message to a window's queue as the system would deliver it (scripts and tests
// drive a window this way); false when it cannot be posted.
bool PostWindowMessage(q5_HWND window, std::uint32_t message, std::uintptr_t w, std::intptr_t l);

} // namespace q5plat

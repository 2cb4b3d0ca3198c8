// Input and window events of an interactive window, the same on every platform.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace q5plat {

enum class WindowEventKind {
    Quit,        // the window was closed
    Resize,      // width and height: the new client size
    Expose,      // the client area must be drawn again
    Minimise,    // the window was minimised: nothing is visible
    Restore,     // back from minimised
    MouseDown,   // button, x, y
    MouseUp,     // button, x, y
    MouseMove,   // x, y, buttons held
    DoubleClick, // button, x, y
    Wheel,       // wheel, x, y: the cursor's position
    Key,         // key, modifiers
    DropFiles,   // files
};

inline constexpr std::uint32_t kButtonLeft = 1;
inline constexpr std::uint32_t kButtonRight = 2;
inline constexpr std::uint32_t kButtonMiddle = 4;

inline constexpr std::uint32_t kModifierShift = 1;
inline constexpr std::uint32_t kModifierControl = 2;
inline constexpr std::uint32_t kModifierAlt = 4;

// Keys that are not characters; characters are their lower-case ASCII codes.
inline constexpr std::uint32_t kKeyEscape = 0x1B;
inline constexpr std::uint32_t kKeyEnter = 0x0D;
inline constexpr std::uint32_t kKeyTab = 0x09;
inline constexpr std::uint32_t kKeyBackspace = 0x08;
inline constexpr std::uint32_t kKeyUp = 0x100;
inline constexpr std::uint32_t kKeyDown = 0x101;
inline constexpr std::uint32_t kKeyLeft = 0x102;
inline constexpr std::uint32_t kKeyRight = 0x103;
inline constexpr std::uint32_t kKeyF1 = 0x110;

struct WindowEvent {
    WindowEventKind kind = WindowEventKind::Expose;
    std::int32_t x = 0, y = 0;          // client pixels from the top-left corner
    std::int32_t width = 0, height = 0; // Resize
    std::uint32_t button = 0;           // the button that went down or up
    std::uint32_t buttons = 0;          // buttons held
    std::uint32_t modifiers = 0;
    double wheel = 0.0; // notches, positive away from the user
    std::uint32_t key = 0;
    std::vector<std::string> files; // UTF-8 paths
};

} // namespace q5plat

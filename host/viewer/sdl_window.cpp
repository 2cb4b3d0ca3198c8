// The viewer window on POSIX: an SDL2 window whose pixel surface is the driver's window.
#include <SDL.h>

#include <cstring>
#include <utility>

#include "core/platform/graphics.h"
#include "core/platform/window_readback.h"
#include "host/viewer/viewer_window.h"

namespace {

using q5plat::WindowEvent;
using q5plat::WindowEventKind;

// SDL2's name of 32-bit pixels stored blue, green, red, unused: the driver's window layout.
constexpr Uint32 kDriverFormat = SDL_PIXELFORMAT_RGB888;

// One SDL bit and the viewer's bit for the same button or modifier.
struct BitPair {
    Uint32 sdl;
    std::uint32_t ours;
};
constexpr BitPair kButtonBits[] = {{SDL_BUTTON_LMASK, q5plat::kButtonLeft},
                                   {SDL_BUTTON_RMASK, q5plat::kButtonRight},
                                   {SDL_BUTTON_MMASK, q5plat::kButtonMiddle}};
constexpr BitPair kModifierBits[] = {{KMOD_SHIFT, q5plat::kModifierShift},
                                     {KMOD_CTRL, q5plat::kModifierControl},
                                     {KMOD_ALT, q5plat::kModifierAlt}};

template <std::size_t N> std::uint32_t Ours(Uint32 sdl, const BitPair (&pairs)[N]) {
    std::uint32_t bits = 0;
    for (const BitPair& p : pairs)
        if (sdl & p.sdl) bits |= p.ours;
    return bits;
}

template <std::size_t N> Uint32 Sdl(std::uint32_t ours, const BitPair (&pairs)[N]) {
    Uint32 bits = 0;
    for (const BitPair& p : pairs)
        if (ours & p.ours) bits |= p.sdl;
    return bits;
}

// SDL numbers buttons 1, 2, 3 and gives each the mask bit of its number.
std::uint32_t Button(Uint8 sdl) {
    return Ours(SDL_BUTTON(sdl), kButtonBits);
}
Uint8 SdlButton(std::uint32_t button) {
    const Uint32 mask = Sdl(button, kButtonBits);
    Uint8 number = 1;
    while (mask > static_cast<Uint32>(SDL_BUTTON(number))) ++number;
    return number;
}

// Window events that carry nothing but their kind.
constexpr struct {
    Uint8 sdl;
    WindowEventKind kind;
} kWindowEvents[] = {
    {SDL_WINDOWEVENT_EXPOSED, WindowEventKind::Expose},
    {SDL_WINDOWEVENT_MINIMIZED, WindowEventKind::Minimise},
    {SDL_WINDOWEVENT_RESTORED, WindowEventKind::Restore},
    {SDL_WINDOWEVENT_CLOSE, WindowEventKind::Quit},
};

constexpr struct {
    SDL_Keycode sdl;
    std::uint32_t key;
} kSpecialKeys[] = {
    {SDLK_ESCAPE, q5plat::kKeyEscape},  {SDLK_RETURN, q5plat::kKeyEnter},
    {SDLK_KP_ENTER, q5plat::kKeyEnter}, {SDLK_TAB, q5plat::kKeyTab},
    {SDLK_UP, q5plat::kKeyUp},          {SDLK_DOWN, q5plat::kKeyDown},
    {SDLK_LEFT, q5plat::kKeyLeft},      {SDLK_RIGHT, q5plat::kKeyRight},
    {SDLK_F1, q5plat::kKeyF1},
};

// 0 for keys the viewer has no use for.
std::uint32_t Key(SDL_Keycode sdl) {
    for (const auto& k : kSpecialKeys)
        if (k.sdl == sdl) return k.key;
    // SDL's key codes of printable keys are their characters.
    if (sdl >= 0x20 && sdl < 0x7F) return static_cast<std::uint32_t>(sdl);
    return 0;
}

SDL_Keycode SdlKey(std::uint32_t key) {
    for (const auto& k : kSpecialKeys)
        if (k.key == key) return k.sdl;
    return static_cast<SDL_Keycode>(key);
}

class SdlWindow final : public ViewerWindow {
public:
    SdlWindow(SDL_Window* window, std::string title) : window_(window), title_(std::move(title)) {}
    ~SdlWindow() override {
        if (shadow_ != nullptr) SDL_FreeSurface(shadow_);
        SDL_DestroyWindow(window_);
        SDL_QuitSubSystem(SDL_INIT_VIDEO);
    }

    bool NextEvent(WindowEvent& event, bool wait) override {
        SDL_Event e;
        for (;;) {
            if (!(wait ? SDL_WaitEvent(&e) : SDL_PollEvent(&e))) return false;
            if (Translate(e, event)) return true;
        }
    }

    q5_HWND DriverWindow() override {
        if (!valid_ && !PointSurface()) return nullptr;
        return reinterpret_cast<q5_HWND>(&surface_);
    }
    q5_HDC AcquireDC() override {
        q5_HWND window = DriverWindow();
        return window != nullptr ? q5plat::AcquireWindowDC(window) : nullptr;
    }
    void ReleaseDC(q5_HDC dc) override {
        q5plat::ReleaseWindowDC(reinterpret_cast<q5_HWND>(&surface_), dc);
    }

    void Show() override {
        if (!valid_) return;
        if (shadow_ != nullptr) {
            SDL_Surface* screen = SDL_GetWindowSurface(window_);
            if (screen == nullptr) return;
            SDL_BlitSurface(shadow_, nullptr, screen, nullptr);
        }
        SDL_UpdateWindowSurface(window_);
    }

    void ClientSize(std::int32_t& width, std::int32_t& height) const override {
        int w = 0, h = 0;
        SDL_GetWindowSize(window_, &w, &h);
        width = w;
        height = h;
    }

    void SetTitle(const std::string& utf8) override {
        SDL_SetWindowTitle(window_, utf8.c_str());
        title_ = utf8;
    }

    bool ReadPixels(std::vector<std::uint8_t>& pixels, std::int32_t& width,
                    std::int32_t& height) override {
        // What the X server shows, where SDL draws through one.
        const char* driver = SDL_GetCurrentVideoDriver();
        if (driver != nullptr && std::strcmp(driver, "x11") == 0)
            return q5plat::ReadOwnWindowBack(title_, pixels, width, height);
        SDL_Surface* screen = SDL_GetWindowSurface(window_);
        if (screen == nullptr) return false;
        width = screen->w;
        height = screen->h;
        pixels.assign(std::size_t(4) * width * height, 0);
        return SDL_ConvertPixels(width, height, screen->format->format, screen->pixels,
                                 screen->pitch, kDriverFormat, pixels.data(), 4 * width) == 0;
    }

    bool PostEvent(const WindowEvent& event) override {
        SDL_Event e;
        SDL_zero(e);
        const Uint32 id = SDL_GetWindowID(window_);
        switch (event.kind) {
        case WindowEventKind::Quit:
            e.type = SDL_QUIT;
            break;
        case WindowEventKind::Resize:
            // The window system answers with the size change, as it does for the user.
            SDL_SetWindowSize(window_, event.width, event.height);
            return true;
        case WindowEventKind::Expose:
        case WindowEventKind::Minimise:
        case WindowEventKind::Restore:
            e.type = SDL_WINDOWEVENT;
            e.window.windowID = id;
            for (const auto& w : kWindowEvents)
                if (w.kind == event.kind) e.window.event = w.sdl;
            break;
        case WindowEventKind::MouseDown:
        case WindowEventKind::MouseUp:
        case WindowEventKind::DoubleClick:
            e.type =
                event.kind == WindowEventKind::MouseUp ? SDL_MOUSEBUTTONUP : SDL_MOUSEBUTTONDOWN;
            e.button.windowID = id;
            e.button.button = SdlButton(event.button);
            e.button.state = event.kind == WindowEventKind::MouseUp ? SDL_RELEASED : SDL_PRESSED;
            e.button.clicks = event.kind == WindowEventKind::DoubleClick ? 2 : 1;
            e.button.x = event.x;
            e.button.y = event.y;
            break;
        case WindowEventKind::MouseMove:
            e.type = SDL_MOUSEMOTION;
            e.motion.windowID = id;
            e.motion.state = Sdl(event.buttons, kButtonBits);
            e.motion.x = event.x;
            e.motion.y = event.y;
            break;
        case WindowEventKind::Wheel:
            e.type = SDL_MOUSEWHEEL;
            e.wheel.windowID = id;
            e.wheel.preciseY = static_cast<float>(event.wheel);
            e.wheel.y = static_cast<Sint32>(event.wheel);
            e.wheel.mouseX = event.x;
            e.wheel.mouseY = event.y;
            break;
        case WindowEventKind::Key:
            e.type = SDL_KEYDOWN;
            e.key.windowID = id;
            e.key.state = SDL_PRESSED;
            e.key.keysym.sym = SdlKey(event.key);
            e.key.keysym.mod = static_cast<Uint16>(Sdl(event.modifiers, kModifierBits));
            break;
        case WindowEventKind::DropFiles:
            // As the window system drops several files: a begin, the files, the end.
            for (std::size_t i = 0; i < event.files.size() + 2; ++i) {
                SDL_Event drop;
                SDL_zero(drop);
                drop.drop.windowID = id;
                drop.type = i == 0                        ? SDL_DROPBEGIN
                            : i == event.files.size() + 1 ? SDL_DROPCOMPLETE
                                                          : SDL_DROPFILE;
                if (drop.type == SDL_DROPFILE)
                    drop.drop.file = SDL_strdup(event.files[i - 1].c_str());
                if (SDL_PushEvent(&drop) != 1) return false;
            }
            return true;
        }
        // Mouse events carry no keyboard state; SDL's own is what the window reads for them.
        SDL_SetModState(static_cast<SDL_Keymod>(Sdl(event.modifiers, kModifierBits)));
        return SDL_PushEvent(&e) == 1;
    }

private:
    // Points the driver's window at the pixels SDL shows, or at a copy in the driver's layout
    // when the screen keeps another one.
    bool PointSurface() {
        SDL_Surface* screen = SDL_GetWindowSurface(window_);
        if (screen == nullptr) return false;
        SDL_Surface* target = screen;
        if (shadow_ != nullptr) SDL_FreeSurface(shadow_);
        shadow_ = nullptr;
        if (screen->format->format != kDriverFormat) {
            shadow_ = SDL_CreateRGBSurfaceWithFormat(0, screen->w, screen->h, 32, kDriverFormat);
            if (shadow_ == nullptr) return false;
            target = shadow_;
        }
        surface_.bits = static_cast<std::uint8_t*>(target->pixels);
        surface_.width = target->w;
        surface_.height = target->h;
        surface_.stride = target->pitch;
        valid_ = true;
        return true;
    }

    bool Translate(const SDL_Event& e, WindowEvent& event) {
        event = WindowEvent{};
        switch (e.type) {
        case SDL_QUIT:
            event.kind = WindowEventKind::Quit;
            return true;
        case SDL_WINDOWEVENT:
            switch (e.window.event) {
            case SDL_WINDOWEVENT_SIZE_CHANGED:
                valid_ = false;
                event.kind = WindowEventKind::Resize;
                event.width = e.window.data1;
                event.height = e.window.data2;
                return true;
            default:
                for (const auto& w : kWindowEvents)
                    if (w.sdl == e.window.event) {
                        event.kind = w.kind;
                        return true;
                    }
                return false;
            }
        case SDL_MOUSEBUTTONDOWN:
        case SDL_MOUSEBUTTONUP:
            event.kind = e.type == SDL_MOUSEBUTTONUP ? WindowEventKind::MouseUp
                         : e.button.clicks == 2      ? WindowEventKind::DoubleClick
                                                     : WindowEventKind::MouseDown;
            event.button = Button(e.button.button);
            event.x = e.button.x;
            event.y = e.button.y;
            event.buttons = Ours(SDL_GetMouseState(nullptr, nullptr), kButtonBits);
            event.modifiers = Ours(SDL_GetModState(), kModifierBits);
            return event.button != 0;
        case SDL_MOUSEMOTION:
            event.kind = WindowEventKind::MouseMove;
            event.x = e.motion.x;
            event.y = e.motion.y;
            event.buttons = Ours(e.motion.state, kButtonBits);
            event.modifiers = Ours(SDL_GetModState(), kModifierBits);
            return true;
        case SDL_MOUSEWHEEL:
            event.kind = WindowEventKind::Wheel;
            event.wheel =
                e.wheel.direction == SDL_MOUSEWHEEL_FLIPPED ? -e.wheel.preciseY : e.wheel.preciseY;
            event.x = e.wheel.mouseX;
            event.y = e.wheel.mouseY;
            event.modifiers = Ours(SDL_GetModState(), kModifierBits);
            return true;
        case SDL_KEYDOWN:
            event.kind = WindowEventKind::Key;
            event.key = Key(e.key.keysym.sym);
            event.modifiers = Ours(e.key.keysym.mod, kModifierBits);
            return event.key != 0;
        case SDL_DROPBEGIN:
            dropping_ = true;
            dropped_.clear();
            return false;
        case SDL_DROPFILE:
            dropped_.emplace_back(e.drop.file);
            SDL_free(e.drop.file);
            if (dropping_) return false; // the rest of the drop follows
            [[fallthrough]];
        case SDL_DROPCOMPLETE:
            dropping_ = false;
            event.kind = WindowEventKind::DropFiles;
            event.files.swap(dropped_);
            return !event.files.empty();
        default:
            return false;
        }
    }

    SDL_Window* window_;
    std::string title_;
    q5plat::WindowSurface surface_;
    SDL_Surface* shadow_ = nullptr;
    bool valid_ = false;
    // Files of a drop in progress: several files dropped at once open together.
    bool dropping_ = false;
    std::vector<std::string> dropped_;
};

} // namespace

std::unique_ptr<ViewerWindow> OpenViewerWindow(const std::string& title, std::int32_t width,
                                               std::int32_t height, std::string& error) {
    // The window's own pixels, not a texture: the driver draws straight into them.
    SDL_SetHint(SDL_HINT_FRAMEBUFFER_ACCELERATION, "0");
    if (SDL_InitSubSystem(SDL_INIT_VIDEO) != 0) {
        error = std::string("cannot open a window: ") + SDL_GetError();
        return nullptr;
    }
    // Without a display SDL falls back to windows nobody sees, unless asked for them.
    const char* driver = SDL_GetCurrentVideoDriver();
    if (driver != nullptr && SDL_getenv("SDL_VIDEODRIVER") == nullptr &&
        (std::strcmp(driver, "offscreen") == 0 || std::strcmp(driver, "dummy") == 0)) {
        error = "cannot open a window: no display (set DISPLAY, or run under xvfb-run)";
        SDL_QuitSubSystem(SDL_INIT_VIDEO);
        return nullptr;
    }
    SDL_Window* window =
        SDL_CreateWindow(title.c_str(), SDL_WINDOWPOS_UNDEFINED, SDL_WINDOWPOS_UNDEFINED, width,
                         height, SDL_WINDOW_RESIZABLE | SDL_WINDOW_ALLOW_HIGHDPI);
    if (window == nullptr) {
        error = std::string("cannot open a window: ") + SDL_GetError();
        SDL_QuitSubSystem(SDL_INIT_VIDEO);
        return nullptr;
    }
    SDL_EventState(SDL_DROPBEGIN, SDL_ENABLE);
    SDL_EventState(SDL_DROPFILE, SDL_ENABLE);
    SDL_EventState(SDL_DROPCOMPLETE, SDL_ENABLE);
    return std::make_unique<SdlWindow>(window, title);
}

// The viewer's native window: window messages in, events out; a frame presented by the driver
// and read back from the screen; the driver's options page over the window. Windows only
// (under Wine with Xvfb); POSIX has no native window.
#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "core/platform/desktop_window.h"

#if defined(_WIN32)
#include "core/platform/dialog_controls.h"
#include "core/platform/system_info.h"
#include "host/app/host_api.h"
#include "host/app/ini_settings.h"
#include "host/app/plugin_module.h"
#include "host/app/render_session.h"
#include "host/scene/builtin_scenes.h"
#include "host/scene/framing.h"
#include "host/scene/scene.h"
#include "host/viewer/viewer_window.h"
#include "interface/driver.h"
#include "support/module_loader.h"
#include "support/test_view.h"
#endif

namespace {

using q5plat::DesktopWindow;
using q5plat::WindowEvent;
using Kind = q5plat::WindowEventKind;

#if defined(_WIN32)

// Message numbers and parameter bits as the system defines them.
constexpr std::uint32_t kWmKeyDown = 0x0100, kWmMouseMove = 0x0200, kWmLButtonDown = 0x0201,
                        kWmLButtonUp = 0x0202, kWmLButtonDblClk = 0x0203, kWmRButtonDown = 0x0204,
                        kWmRButtonUp = 0x0205, kWmMouseWheel = 0x020A;
constexpr std::uintptr_t kMkLButton = 1, kMkRButton = 2, kMkShift = 4, kMkControl = 8;

// Two signed 16-bit coordinates in one parameter, x low.
std::intptr_t Point(int x, int y) {
    return static_cast<std::intptr_t>((static_cast<std::uint32_t>(y) & 0xFFFF) << 16 |
                                      (static_cast<std::uint32_t>(x) & 0xFFFF));
}

WindowEvent Event(Kind kind, int x = 0, int y = 0, std::uint32_t button = 0,
                  std::uint32_t buttons = 0, std::uint32_t modifiers = 0, double wheel = 0) {
    return {kind, x, y, 0, 0, button, buttons, modifiers, wheel, 0, {}};
}
WindowEvent KeyEvent(std::uint32_t key, std::uint32_t modifiers = 0) {
    return {Kind::Key, 0, 0, 0, 0, 0, 0, modifiers, 0, key, {}};
}
auto Fields(const WindowEvent& e) {
    return std::make_tuple(static_cast<int>(e.kind), e.x, e.y, e.width, e.height, e.button,
                           e.buttons, e.modifiers, e.wheel, e.key, e.files);
}
std::pair<std::int32_t, std::int32_t> ClientSize(DesktopWindow& window) {
    std::int32_t w = 0, h = 0;
    EXPECT_TRUE(window.ClientSize(w, h));
    return {w, h};
}

// Every pending event but the exposures, and how many exposures there were; a window that
// never validated its paint region would repeat them without end, and fails here.
std::vector<WindowEvent> DrainEvents(DesktopWindow& window, int* exposures = nullptr) {
    std::vector<WindowEvent> events;
    WindowEvent e;
    for (int i = 0; i < 1000; ++i) {
        if (!window.NextEvent(e, false)) return events;
        if (e.kind != Kind::Expose)
            events.push_back(e);
        else if (exposures != nullptr)
            ++*exposures;
    }
    ADD_FAILURE() << "the events never ran dry";
    return events;
}

TEST(NativeWindowOpening, GivesTheClientSizeAskedForAndOnePaintingWithoutAResize) {
    std::string error;
    std::unique_ptr<DesktopWindow> window = DesktopWindow::Open(u"opening", 200, 150, error);
    ASSERT_TRUE(window) << error;
    EXPECT_EQ(ClientSize(*window), std::make_pair(200, 150));
    int exposures = 0;
    EXPECT_TRUE(DrainEvents(*window, &exposures).empty()) << "showing at its own size is no resize";
    EXPECT_EQ(exposures, 1);
}

// One window for the whole suite: under Wine without a window manager each window takes
// two seconds to go.
class NativeWindow : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        std::string error;
        window = DesktopWindow::Open(u"native window test", 160, 120, error).release();
        ASSERT_NE(window, nullptr) << error;
    }
    static void TearDownTestSuite() { delete window; }
    void SetUp() override {
        ASSERT_NE(window, nullptr);
        DrainEvents(*window);
    }
    void Post(std::uint32_t message, std::uintptr_t w, std::intptr_t l) {
        ASSERT_TRUE(q5plat::PostWindowMessage(window->Handle(), message, w, l)) << message;
    }
    WindowEvent One() {
        const std::vector<WindowEvent> events = DrainEvents(*window);
        EXPECT_EQ(events.size(), 1u);
        return events.empty() ? WindowEvent{} : events[0];
    }

    static inline DesktopWindow* window = nullptr;
};

TEST_F(NativeWindow, MouseWheelAndKeyMessagesGiveButtonsModifiersAndHoldTheMouseWhileHeld) {
    using q5plat::kButtonLeft, q5plat::kButtonRight, q5plat::kModifierShift,
        q5plat::kModifierControl;
    // Message, its buttons and modifiers, the event at the message's position, captured after.
    const std::tuple<std::uint32_t, std::uintptr_t, WindowEvent, bool> steps[] = {
        {kWmLButtonDown, kMkLButton | kMkShift,
         Event(Kind::MouseDown, 10, 20, kButtonLeft, kButtonLeft, kModifierShift), true},
        // Outside the client area while held: negative coordinates.
        {kWmMouseMove, kMkLButton, Event(Kind::MouseMove, -5, 300, 0, kButtonLeft), true},
        {kWmRButtonDown, kMkLButton | kMkRButton,
         Event(Kind::MouseDown, 12, 22, kButtonRight, kButtonLeft | kButtonRight), true},
        {kWmLButtonUp, kMkRButton, Event(Kind::MouseUp, 13, 23, kButtonLeft, kButtonRight), true},
        {kWmRButtonUp, 0, Event(Kind::MouseUp, 14, 24, kButtonRight), false},
        {kWmMouseMove, kMkControl, Event(Kind::MouseMove, 15, 25, 0, 0, kModifierControl), false},
        // The second press of a double click comes as the double click.
        {kWmLButtonDblClk, kMkLButton, Event(Kind::DoubleClick, 40, 41, kButtonLeft, kButtonLeft),
         true},
        {kWmLButtonUp, 0, Event(Kind::MouseUp, 40, 41, kButtonLeft), false},
    };
    for (const auto& [message, w, expected, captured] : steps) {
        SCOPED_TRACE(message);
        Post(message, w, Point(expected.x, expected.y));
        EXPECT_EQ(Fields(One()), Fields(expected));
        EXPECT_EQ(window->CapturesMouse(), captured);
    }
    // The wheel: the delta in the high word in 120ths of a notch, positive away from the user;
    // the cursor in screen pixels.
    std::int32_t ox = 0, oy = 0;
    ASSERT_TRUE(window->ClientOrigin(ox, oy));
    Post(kWmMouseWheel, static_cast<std::uintptr_t>(0x10000 - 300) << 16 | kMkControl | kMkLButton,
         Point(ox + 30, oy + 40));
    EXPECT_EQ(Fields(One()), Fields(Event(Kind::Wheel, 30, 40, 0, q5plat::kButtonLeft,
                                          q5plat::kModifierControl, -2.5)));
    Post(kWmKeyDown, 0x10, 1 | 0x2A << 16);
    EXPECT_TRUE(DrainEvents(*window).empty()) << "shift alone types nothing";
}

// Keys come once, as lower-case characters or key codes. Resizes and minimising change the
// window itself.
TEST_F(NativeWindow, EventsPostedAsTheSystemsInputComeBackAsTheyWere) {
    using namespace q5plat;
    const WindowEvent events[] = {
        Event(Kind::MouseDown, 10, 20, kButtonLeft, kButtonLeft, kModifierShift),
        Event(Kind::MouseMove, -3, 21, 0, kButtonLeft),
        Event(Kind::MouseUp, 12, 22, kButtonLeft, 0),
        Event(Kind::DoubleClick, 5, 6, kButtonRight, kButtonRight),
        Event(Kind::MouseUp, 5, 6, kButtonRight, 0),
        Event(Kind::Wheel, 30, 40, 0, kButtonRight, kModifierControl, -1.5),
        KeyEvent('p'),
        KeyEvent('7'),
        KeyEvent('?'), // typed with shift
        KeyEvent(kKeyEscape),
        KeyEvent(kKeyEnter),
        KeyEvent(kKeyUp),
        KeyEvent(kKeyTab, kModifierShift),
        KeyEvent(kKeyBackspace),
        KeyEvent(kKeyF1, kModifierControl | kModifierAlt),
        {Kind::DropFiles, 7, 8, 0, 0, 0, 0, 0, 0, 0,
         {"C:\\a b\\x.obj", "D:\\\xC3\xA9t\xC3\xA9.gltf"}},
        {Kind::Resize, 0, 0, 240, 130, 0, 0, 0, 0, 0, {}},
        Event(Kind::Quit),
    };
    for (const WindowEvent& sent : events) {
        SCOPED_TRACE(static_cast<int>(sent.kind));
        ASSERT_TRUE(window->Post(sent));
        EXPECT_EQ(Fields(One()), Fields(sent));
    }
    EXPECT_EQ(ClientSize(*window), std::make_pair(240, 130));
    for (Kind kind : {Kind::Minimise, Kind::Restore}) {
        ASSERT_TRUE(window->Post(Event(kind)));
        EXPECT_EQ(One().kind, kind) << "one event: the size is as it was";
    }
    EXPECT_EQ(ClientSize(*window), std::make_pair(240, 130));
    int exposures = 0;
    ASSERT_TRUE(window->Post(Event(Kind::Expose)));
    EXPECT_TRUE(DrainEvents(*window, &exposures).empty());
    EXPECT_EQ(exposures, 1);
}

// The viewer's window with the driver module loaded as tessera-view loads it.
class ViewerWindowWithDriver : public ::testing::Test {
protected:
    void SetUp() override {
        q5plat::OverrideProcessorCount(2);
        ASSERT_TRUE(module.Load(kModuleFileName)) << module.Error();
        host.SetDriverModule(&module);
        ASSERT_TRUE(module.Init(&host)) << module.Error();
        window = OpenViewerWindow("viewer window test", kW, kH, error);
        ASSERT_TRUE(window) << error;
        for (q5plat::WindowEvent e; window->NextEvent(e, false);) {
        }
    }
    void TearDown() override { q5plat::OverrideProcessorCount(0); }

    static constexpr std::int32_t kW = 160, kH = 120;
    std::string error;
    IniSettings settings;
    HostAPI host{settings};
    PluginModule module;
    std::unique_ptr<ViewerWindow> window;
};

TEST_F(ViewerWindowWithDriver, AFramePresentedToTheWindowReadsBackAsTheDriverDrewIt) {
    Scene scene;
    ASSERT_TRUE(BuildBuiltInScene("cube", scene));
    RenderSession session;
    ASSERT_TRUE(session.Attach(nullptr, error, window->DriverWindow())) << error;
    FrameRequest request;
    request.width = kW;
    request.height = kH;
    request.background[0] = request.background[1] = 0x402010; // red in the low byte
    const Framing framing = FrameScene(scene.FramedBounds(), scene.AllBounds(), Shot{}, kW, kH);
    Image frame;
    ASSERT_TRUE(session.Render(scene, framing.camera, framing.volume, request, frame, error))
        << error;
    ASSERT_EQ(frame.channels, 3);

    q5_HDC dc = window->AcquireDC();
    ASSERT_NE(dc, nullptr);
    const q5_URECT all{0, 0, kW, kH};
    EXPECT_TRUE(session.Driver()->PresentRect(dc, &all));
    window->ReleaseDC(dc);
    window->Show();

    std::vector<std::uint8_t> shown;
    std::int32_t w = 0, h = 0;
    ASSERT_TRUE(window->ReadPixels(shown, w, h) && w == kW && h == kH) << w << "x" << h;
    int differing = 0, background = 0;
    for (std::int32_t i = 0; i < kW * kH; ++i) {
        const std::uint8_t *rgb = &frame.pixels[i * 3], *bgrx = &shown[i * 4];
        differing += bgrx[2] != rgb[0] || bgrx[1] != rgb[1] || bgrx[0] != rgb[2];
        background += rgb[0] == 0x10 && rgb[1] == 0x20 && rgb[2] == 0x40;
    }
    EXPECT_EQ(differing, 0);
    EXPECT_TRUE(background > 0 && background < kW * kH) << "the cube covers part of it";
}

TEST_F(ViewerWindowWithDriver, TheOptionsPageOpensOverTheWindowAndAChangeReachesTheView) {
    DRIVER3D* driver = host.CreateDriverByName(kZBufferDriverName);
    ASSERT_NE(driver, nullptr);
    TestView view;
    driver->view = &view;
    std::u16string label;
    host.SetSheetScript([&](q5_HWND page) {
        label = q5plat::GetDlgItemText(page, 2114);
        q5plat::CheckDlgButton(page, 2114, false);
        return true;
    });
    EXPECT_TRUE(driver->ShowOptions(window->DriverWindow()));
    EXPECT_TRUE(label == u"Use second processor") << "dialog 106 from the module's resources";
    EXPECT_EQ(settings.GetInt("Render\\ZB\\Use2Thread", -1), 0);
    EXPECT_EQ(view.settingsChanges, 1);
    driver->Release();
}

#else

TEST(NativeWindow, OpeningSaysThereIsNoNativeWindowHere) {
    std::string error;
    EXPECT_EQ(DesktopWindow::Open(u"", 10, 10, error), nullptr);
    EXPECT_FALSE(error.empty());
    EXPECT_FALSE(q5plat::PostWindowMessage(nullptr, 0, 0, 0));
}

#endif

} // namespace

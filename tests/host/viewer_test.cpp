// The viewer's camera moves, checked through the projection they lead to, and its scripts.
#include <gtest/gtest.h>

#include <cmath>
#include <sstream>
#include <string>
#include <vector>

#include "host/cli/options.h"
#include "host/viewer/camera_controller.h"
#include "host/viewer/viewer_script.h"

namespace {

constexpr std::int32_t kWidth = 400, kHeight = 300;
// Positions come back through 1/256-pixel projection and float world coordinates.
constexpr double kPixelTolerance = 0.02;

struct Pixel {
    double x, y;
};

Pixel OnScreen(const Framing& f, const POINT3D& world) {
    const POINT3D v = f.camera.PointToView(world);
    const ScreenPosition s = f.volume.Project(v.x, v.y, v.z);
    return {s.x / double(kScreenSubpixels), s.y / double(kScreenSubpixels)};
}

std::int32_t DepthOf(const Framing& f, const POINT3D& world) {
    const POINT3D v = f.camera.PointToView(world);
    return f.volume.Project(v.x, v.y, v.z).z;
}

double Distance(const POINT3D& a, const POINT3D& b) {
    return std::sqrt(double(a.x - b.x) * (a.x - b.x) + double(a.y - b.y) * (a.y - b.y) +
                     double(a.z - b.z) * (a.z - b.z));
}

class CameraMoves : public testing::Test {
protected:
    void SetUp() override {
        bounds_.centre = POINT3D(1, 2, 3);
        bounds_.radius = 2;
        bounds_.empty = false;
        home_.yaw = 30;
        home_.pitch = 20;
        home_.fovY = 40;
        camera_.SetScene(bounds_, bounds_, home_, kWidth, kHeight);
    }
    Framing Now() const { return camera_.Frame(kWidth, kHeight); }
    // The world point that pixel (x, y) shows on the plane of the orbit centre.
    POINT3D UnderPixel(std::int32_t x, std::int32_t y) const {
        const Framing f = Now();
        return UnprojectPixel(f, x, y, DepthOf(f, f.camera.Target()));
    }

    Bounds bounds_;
    Shot home_;
    CameraController camera_;
};

TEST_F(CameraMoves, StartAndResetAtTheFittedShot) {
    const Framing fitted = FrameScene(bounds_, bounds_, home_, kWidth, kHeight);
    camera_.Orbit(120, -40);
    camera_.Pan(30, 10, kWidth, kHeight);
    camera_.ZoomAt(3, 10, 20, kWidth, kHeight);
    camera_.Reset(kWidth, kHeight);
    EXPECT_LT(Distance(Now().camera.Eye(), fitted.camera.Eye()), 1e-5);
    EXPECT_LT(Distance(Now().camera.Target(), bounds_.centre), 1e-6);
}

TEST_F(CameraMoves, OrbitTurnsAboutTheCentreAndStopsShortOfThePoles) {
    camera_.Orbit(50, 30);
    const Pixel centre = OnScreen(Now(), bounds_.centre);
    EXPECT_NEAR(centre.x, kWidth / 2.0, kPixelTolerance);
    EXPECT_NEAR(centre.y, kHeight / 2.0, kPixelTolerance);
    EXPECT_DOUBLE_EQ(camera_.CurrentShot().yaw, 30 - 50 * kOrbitDegreesPerPixel);
    camera_.Orbit(-50, -30);
    EXPECT_NEAR(camera_.CurrentShot().yaw, home_.yaw, 1e-12);
    EXPECT_NEAR(camera_.CurrentShot().pitch, home_.pitch, 1e-12);
    camera_.Orbit(0, 10000);
    EXPECT_EQ(camera_.CurrentShot().pitch, 89.0);
    camera_.Orbit(0, -20000);
    EXPECT_EQ(camera_.CurrentShot().pitch, -89.0);
}

TEST_F(CameraMoves, PanCarriesTheCentreWithTheCursor) {
    camera_.Pan(40, -25, kWidth, kHeight);
    const Pixel moved = OnScreen(Now(), bounds_.centre);
    EXPECT_NEAR(moved.x, kWidth / 2.0 + 40, kPixelTolerance);
    EXPECT_NEAR(moved.y, kHeight / 2.0 - 25, kPixelTolerance);
}

TEST_F(CameraMoves, WheelKeepsThePointUnderTheCursor) {
    const POINT3D under = UnderPixel(100, 60);
    const Pixel before = OnScreen(Now(), under);
    const double distance = camera_.CurrentShot().distance;
    camera_.ZoomAt(2, 100, 60, kWidth, kHeight);
    const Pixel after = OnScreen(Now(), under);
    EXPECT_NEAR(after.x, before.x, kPixelTolerance);
    EXPECT_NEAR(after.y, before.y, kPixelTolerance);
    EXPECT_LT(camera_.CurrentShot().distance, distance);
    camera_.ZoomAt(-2, 100, 60, kWidth, kHeight);
    EXPECT_NEAR(camera_.CurrentShot().distance, distance, 1e-9 * distance);
}

TEST_F(CameraMoves, RectangleComesToFillTheFrame) {
    const POINT3D corner = UnderPixel(100, 75), opposite = UnderPixel(299, 224);
    const Pixel a = OnScreen(Now(), corner), b = OnScreen(Now(), opposite);
    ASSERT_TRUE(camera_.ZoomToRect(100, 75, 300, 225, kWidth, kHeight));
    // Half the frame each way: every pixel of the rectangle becomes two.
    const Pixel a2 = OnScreen(Now(), corner), b2 = OnScreen(Now(), opposite);
    EXPECT_NEAR(a2.x, 2 * (a.x - 100), kPixelTolerance);
    EXPECT_NEAR(a2.y, 2 * (a.y - 75), kPixelTolerance);
    EXPECT_NEAR(b2.x, 2 * (b.x - 100), kPixelTolerance);
    EXPECT_NEAR(b2.y, 2 * (b.y - 75), kPixelTolerance);

    const Shot before = camera_.CurrentShot();
    EXPECT_FALSE(camera_.ZoomToRect(10, 10, 12, 200, kWidth, kHeight));
    EXPECT_EQ(camera_.CurrentShot().distance, before.distance);
}

TEST_F(CameraMoves, CentreOnTurnsTheViewToThePointFromTheSameEye) {
    const POINT3D eye = Now().camera.Eye();
    const POINT3D point(2.5f, 1.0f, 3.5f);
    camera_.CentreOn(point);
    const Pixel p = OnScreen(Now(), point);
    EXPECT_NEAR(p.x, kWidth / 2.0, kPixelTolerance);
    EXPECT_NEAR(p.y, kHeight / 2.0, kPixelTolerance);
    EXPECT_LT(Distance(Now().camera.Eye(), eye), 1e-4);
}

TEST_F(CameraMoves, UnprojectingAPixelFindsWhatItShows) {
    const Framing f = Now();
    for (const POINT3D& p : {POINT3D(1, 2, 3), POINT3D(2.2f, 1.1f, 2.5f), POINT3D(0, 3, 4)}) {
        const POINT3D v = f.camera.PointToView(p);
        const ScreenPosition s = f.volume.Project(v.x, v.y, v.z);
        const POINT3D back = UnprojectPixel(f, s.x / kScreenSubpixels, s.y / kScreenSubpixels, s.z);
        // Within the footprint of one pixel at that distance.
        const double pixel = 2.0 * v.z * f.volume.tanHalfY / kHeight;
        EXPECT_LT(Distance(back, p), 1.5 * pixel) << p.x << "," << p.y << "," << p.z;
    }
}

TEST_F(CameraMoves, RenderArgumentsGiveTheRendererTheSameCamera) {
    camera_.Orbit(33, -17);
    camera_.Pan(-12, 7, kWidth, kHeight);
    camera_.ZoomAt(1.5, 250, 40, kWidth, kHeight);
    std::vector<std::string> words{"tessera-render"};
    std::istringstream arguments(camera_.RenderArguments());
    for (std::string w; arguments >> w;) words.push_back(w);
    std::vector<const char*> argv;
    for (const std::string& w : words) argv.push_back(w.c_str());
    CliOptions o;
    std::string error;
    ASSERT_EQ(ParseCommandLine(int(argv.size()), argv.data(), o, error), ParseOutcome::Run)
        << error;
    Shot shot;
    shot.yaw = *o.yaw;
    shot.pitch = *o.pitch;
    shot.distance = *o.distance;
    shot.fovY = *o.fov;
    shot.target = o.target;
    const Framing render = FrameScene(bounds_, bounds_, shot, kWidth, kHeight);
    const Framing view = Now();
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c)
            EXPECT_EQ(render.camera.WorldToView().m[r][c], view.camera.WorldToView().m[r][c]);
    EXPECT_EQ(render.volume.nearZ, view.volume.nearZ);
    EXPECT_EQ(render.volume.farZ, view.volume.farZ);
}

using q5plat::WindowEventKind;

TEST(ViewerScript, ReadsEventsAndCommands) {
    std::vector<ScriptStep> steps;
    std::string error;
    ASSERT_TRUE(ParseViewerScript("# a note\n"
                                  "drag 10 20 30 40 right shift\n"
                                  "\n"
                                  "key P ctrl   # upper case is the same key\n"
                                  "key escape\n"
                                  "wheel -1.5 7 8\n"
                                  "size 320 200\n"
                                  "capture out.png\n"
                                  "camera\n",
                                  steps, error))
        << error;
    ASSERT_EQ(steps.size(), 9u);
    const WindowEventKind drag[] = {WindowEventKind::MouseDown, WindowEventKind::MouseMove,
                                    WindowEventKind::MouseUp};
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(steps[i].event.kind, drag[i]);
        EXPECT_EQ(steps[i].event.modifiers, q5plat::kModifierShift);
        EXPECT_EQ(steps[i].line, 2);
    }
    EXPECT_EQ(steps[0].event.button, q5plat::kButtonRight);
    EXPECT_EQ(steps[1].event.buttons, q5plat::kButtonRight);
    EXPECT_EQ(steps[2].event.buttons, 0u);
    EXPECT_EQ(steps[0].event.x, 10);
    EXPECT_EQ(steps[2].event.y, 40);
    EXPECT_EQ(steps[3].event.key, std::uint32_t('p'));
    EXPECT_EQ(steps[3].event.modifiers, q5plat::kModifierControl);
    EXPECT_EQ(steps[4].event.key, q5plat::kKeyEscape);
    EXPECT_EQ(steps[5].event.wheel, -1.5);
    EXPECT_EQ(steps[6].event.kind, WindowEventKind::Resize);
    EXPECT_EQ(steps[6].event.height, 200);
    EXPECT_EQ(steps[7].kind, ScriptStep::Kind::Capture);
    EXPECT_EQ(steps[7].file, "out.png");
    EXPECT_EQ(steps[8].kind, ScriptStep::Kind::Camera);
}

TEST(ViewerScript, NamesTheFirstLineThatDoesNotRead) {
    const std::pair<const char*, const char*> wrong[] = {
        {"camera\nmove 1\n", "line 2: "},
        {"key nosuchkey\n", "line 1: unknown key"},
        {"\n\ndown 1 2 left right\n", "line 3: one button"},
        {"size 0 10\n", "line 1: "},
        {"capture\n", "line 1: "},
        {"jump 1 2\n", "line 1: unknown step 'jump'"},
    };
    for (const auto& [text, start] : wrong) {
        std::vector<ScriptStep> steps;
        std::string error;
        EXPECT_FALSE(ParseViewerScript(text, steps, error)) << text;
        EXPECT_EQ(error.rfind(start, 0), 0u) << text << " gave " << error;
    }
}

} // namespace

// tessera-view end to end: a script drives the real window (through SDL's event queue under
// Xvfb on POSIX, through the window's message queue on Windows), the window is read back, and
// each view must match tessera-render's picture of the camera the viewer prints, pixel for
// pixel.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "core/platform/module.h"
#include "host/formats/png_file.h"

namespace fs = std::filesystem;

namespace {

std::string Slurp(const fs::path& p) {
    std::ifstream in(p, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

// Lines without their ends; Windows programs end text lines with CR LF.
std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        lines.push_back(line);
    }
    return lines;
}

#if defined(_WIN32)
// A program beside this test program, in the system's own form (the build's path is the build
// machine's, which a Windows command interpreter may not read).
std::string Beside(const char* program) {
    char self[4096];
    if (q5plat::GetProgramFileNameA(self, sizeof self) == 0) return program;
    return (fs::path(self).parent_path() / fs::path(program).filename()).string();
}
#endif

Image Read(const fs::path& p) {
    Image image;
    std::string error;
    EXPECT_TRUE(ReadPng(p.string(), image, error)) << p << ": " << error;
    return image;
}

// Pixels that differ between two pictures of one size; -1 when the sizes differ.
long Differences(const Image& a, const Image& b) {
    if (a.width != b.width || a.height != b.height || a.channels != b.channels) return -1;
    long count = 0;
    for (std::size_t i = 0; i < a.pixels.size(); i += a.channels)
        for (int c = 0; c < a.channels; ++c)
            if (a.pixels[i + c] != b.pixels[i + c]) {
                ++count;
                break;
            }
    return count;
}

class ViewerWindow : public testing::Test {
protected:
    void SetUp() override {
#if !defined(_WIN32)
        if (std::system("command -v xvfb-run > /dev/null && command -v xauth > /dev/null") != 0)
            GTEST_SKIP() << "xvfb-run or xauth is missing (apt-get install xvfb xauth): no X "
                            "server to show the window on";
#endif
        const testing::TestInfo* t = testing::UnitTest::GetInstance()->current_test_info();
        dir_ = fs::absolute("viewer_window_out") / t->name();
        fs::remove_all(dir_);
        fs::create_directories(dir_);
    }

    // Runs the viewer with `script`, on POSIX on an X server of its own; its exit code.
    int View(const std::string& args, const std::string& script) {
        std::ofstream(dir_ / "script.txt") << script;
#if defined(_WIN32)
        // The test runs on the desktop it was given. The command interpreter drops the
        // outermost quotes of the line, hence the extra pair.
        const std::string command = "\"cd /d \"" + dir_.string() + "\" && \"" +
                                    Beside(TESSERA_VIEW) + "\" " + args +
                                    " --script script.txt > out.txt 2> err.txt\"";
#else
        // Test programs may run side by side: each looks for a free display from its own
        // starting number, so that two do not race for the same one.
        const int start = 100 + static_cast<int>(std::random_device{}() % 5000);
        const std::string command = "cd '" + dir_.string() + "' && xvfb-run -a -n " +
                                    std::to_string(start) +
                                    " -s '-screen 0 1024x768x24' '" TESSERA_VIEW "' " + args +
                                    " --script script.txt > out.txt 2> err.txt";
#endif
        const int status = std::system(command.c_str());
        err_ = Slurp(dir_ / "err.txt");
        out_ = Lines(Slurp(dir_ / "out.txt"));
        return status;
    }

    // tessera-render's picture of the same view; empty on failure.
    Image Render(const std::string& args, const std::string& name) {
        const fs::path file = dir_ / (name + "-render.png");
#if defined(_WIN32)
        const std::string command = "\"\"" + Beside(TESSERA_RENDER) + "\" -q " + args + " -o \"" +
                                    file.string() + "\" 2> \"" +
                                    (dir_ / "render-err.txt").string() + "\"\"";
#else
        const std::string command = "'" TESSERA_RENDER "' -q " + args + " -o '" + file.string() +
                                    "' 2> '" + (dir_ / "render-err.txt").string() + "'";
#endif
        if (std::system(command.c_str()) != 0) {
            ADD_FAILURE() << command << ": " << Slurp(dir_ / "render-err.txt");
            return Image{};
        }
        return Read(file);
    }

    // A file name as an argument of either program.
    static std::string Quoted(const fs::path& p) {
#if defined(_WIN32)
        return "\"" + p.string() + "\"";
#else
        return "'" + p.string() + "'";
#endif
    }

    fs::path dir_;
    std::string err_;
    std::vector<std::string> out_;
};

TEST_F(ViewerWindow, EveryViewMatchesTheRendererAfterMovesResizeAndToggles) {
    // Each capture is followed by the camera line, in this order.
    const std::string script = "drag 160 120 200 135\n"
                               "capture orbit.png\ncamera\n"
                               "wheel 2 100 70\n"
                               "capture zoom.png\ncamera\n"
                               "size 360 200\n"
                               "capture resize.png\ncamera\n"
                               "key e\n"
                               "capture edges.png\ncamera\n"
                               "drag 100 60 130 90 right\n"
                               "capture pan.png\ncamera\n"
                               "dblclick 250 140\n"
                               "capture centre.png\ncamera\n"
                               "key s\n"
                               "capture supersampled.png\ncamera\n"
                               "dblclick 60 150\n"
                               "capture centre-supersampled.png\ncamera\n"
                               "key d\n"
                               "capture faded.png\ncamera\n"
                               "key p\n"
                               "quit\n";
    ASSERT_EQ(View("--scene demo --size 320x240 --no-heads-up", script), 0) << err_;
    EXPECT_EQ(err_, "");
    const struct {
        const char* name;
        const char* size;
        const char* extra;
    } views[] = {
        {"orbit", "320x240", ""},
        {"zoom", "320x240", ""},
        {"resize", "360x200", ""},
        {"edges", "360x200", " --edges"},
        {"pan", "360x200", " --edges"},
        {"centre", "360x200", " --edges"},
        {"supersampled", "360x200", " --edges --supersample"},
        {"centre-supersampled", "360x200", " --edges --supersample"},
        {"faded", "360x200", " --edges --supersample --fade"},
    };
    ASSERT_EQ(out_.size(), std::size(views) + 1) << err_;
    std::string previous;
    for (std::size_t i = 0; i < std::size(views); ++i) {
        SCOPED_TRACE(views[i].name);
        ASSERT_EQ(out_[i].rfind("--camera ", 0), 0u) << out_[i];
        // Every step moved the camera, except the toggles and the resize.
        if (i != 2 && i != 3 && i != 6 && i != 8) {
            EXPECT_NE(out_[i], previous);
        }
        previous = out_[i];
        const Image shown = Read(dir_ / (std::string(views[i].name) + ".png"));
        const Image rendered =
            Render(out_[i] + " --size " + views[i].size + views[i].extra, views[i].name);
        EXPECT_EQ(Differences(shown, rendered), 0);
    }
    // P writes the view without the overlays, the renderer's picture again.
    EXPECT_EQ(out_.back(), "tessera-view: wrote demo-view-001.png");
    EXPECT_EQ(Differences(Read(dir_ / "demo-view-001.png"), Read(dir_ / "faded-render.png")), 0);
}

TEST_F(ViewerWindow, RubberBandIsAnXorRectangleThatZoomsToItsRegion) {
    const std::string script = "capture before.png\n"
                               "down 40 30 left ctrl\n"
                               "move 120 90 left ctrl\n"
                               "move 200 150 left ctrl\n"
                               "capture band.png\n"
                               "up 200 150 left ctrl\n"
                               "capture after.png\n"
                               "camera\n"
                               "quit\n";
    ASSERT_EQ(View("--scene cube --size 320x240 --no-heads-up", script), 0) << err_;
    const Image before = Read(dir_ / "before.png"), band = Read(dir_ / "band.png");
    ASSERT_EQ(Differences(before, band), 2 * (200 - 40) + 2 * (150 - 30));
    // The first band is gone; the last one is the frame's pixels inverted on its outline.
    for (std::int32_t y = 0; y < before.height; ++y)
        for (std::int32_t x = 0; x < before.width; ++x) {
            const bool outline = ((y == 30 || y == 150) && x >= 40 && x <= 200) ||
                                 ((x == 40 || x == 200) && y >= 30 && y <= 150);
            if (!outline) continue;
            for (int c = 0; c < 3; ++c)
                ASSERT_EQ(band.Pixel(x, y)[c], 255 - before.Pixel(x, y)[c]) << x << "," << y;
        }
    ASSERT_EQ(out_.size(), 1u) << err_;
    EXPECT_EQ(Differences(Read(dir_ / "after.png"),
                          Render(out_[0] + " --scene cube --size 320x240", "after")),
              0);
}

TEST_F(ViewerWindow, DoubleClickFindsTheSameSurfacePointWhenSupersampled) {
    const std::string script = "dblclick 60 150\ncamera\n"
                               "key r\nkey s\ndblclick 60 150\ncamera\nquit\n";
    ASSERT_EQ(View("--scene demo --size 320x240", script), 0) << err_;
    ASSERT_EQ(out_.size(), 2u) << err_;
    EXPECT_EQ(out_[0], out_[1]);
}

TEST_F(ViewerWindow, AMinimisedWindowDrawsNothingUntilItIsBack) {
#if defined(_WIN32)
    // A window the system really minimised has no client area to read back.
    const bool readable = false;
#else
    // Without a window manager the minimise is the viewer's own: the old frame stays shown.
    const bool readable = true;
#endif
    const std::string script = std::string("capture before.png\nminimise\nkey e\n") +
                               (readable ? "capture minimised.png\n" : "") +
                               "restore\ncapture restored.png\ncamera\nquit\n";
    ASSERT_EQ(View("--scene cube --size 240x180 --no-heads-up", script), 0) << err_;
    ASSERT_EQ(out_.size(), 1u) << err_;
    if (readable) {
        EXPECT_EQ(Differences(Read(dir_ / "before.png"), Read(dir_ / "minimised.png")), 0);
    }
    EXPECT_EQ(Differences(Read(dir_ / "restored.png"),
                          Render(out_[0] + " --scene cube --size 240x180 --edges", "restored")),
              0);
}

TEST_F(ViewerWindow, OptionsPanelAppliesTheDriverPageAndTheViewFollows) {
    std::ofstream(dir_ / "zb.ini") << "";
    // The page's second control is Refine, on by default.
    const std::string script = "capture before.png\n"
                               "key o\nkey tab\nkey space\ncapture panel.png\nkey enter\n"
                               "capture applied.png\ncamera\n"
                               "key o\nkey tab\nkey space\nkey escape\n"
                               "capture cancelled.png\nquit\n";
    ASSERT_EQ(View("--scene demo --size 320x240 --no-heads-up --settings zb.ini", script), 0)
        << err_;
    EXPECT_NE(Slurp(dir_ / "zb.ini").find("Refine=0"), std::string::npos) << Slurp(dir_ / "zb.ini");
    ASSERT_EQ(out_.size(), 1u) << err_;
    const Image applied = Read(dir_ / "applied.png");
    EXPECT_GT(Differences(Read(dir_ / "before.png"), applied), 0);
    EXPECT_GT(Differences(applied, Read(dir_ / "panel.png")), 0); // the panel was shown
    EXPECT_EQ(Differences(applied,
                          Render(out_[0] + " --size 320x240 --settings " + Quoted(dir_ / "zb.ini"),
                                 "applied")),
              0);
    EXPECT_EQ(Differences(applied, Read(dir_ / "cancelled.png")), 0);
}

TEST_F(ViewerWindow, SeveralFilesOpenAsOneSceneFromTheCommandLineOrADrop) {
    const std::string data = TESSERA_TEST_DATA;
    const std::string two = data + "/pyramid.obj " + data + "/textured.obj";
    ASSERT_EQ(View(two + " --size 240x180 --no-heads-up", "capture given.png\nquit\n"), 0) << err_;
    const Image given = Read(dir_ / "given.png");
    const std::string script = "drop " + two + "\ncapture dropped.png\n" + "drop " + data +
                               "/pyramid.obj\ncapture one.png\ncamera\nquit\n";
    ASSERT_EQ(View("--scene cube --size 240x180 --no-heads-up", script), 0) << err_;
    EXPECT_EQ(Differences(given, Read(dir_ / "dropped.png")), 0);
    const Image one = Read(dir_ / "one.png");
    EXPECT_GT(Differences(given, one), 0);
    ASSERT_EQ(out_.size(), 1u) << err_;
    EXPECT_EQ(Differences(one, Render(data + "/pyramid.obj --size 240x180 " + out_[0], "one")), 0);
}

TEST_F(ViewerWindow, AFileThatCannotBeOpenedIsReportedAndTheViewerGoesOn) {
    const std::string script = "drop missing.obj\ncamera\nquit\n";
    ASSERT_EQ(View("--scene cube --size 200x150", script), 0) << err_;
    EXPECT_NE(err_.find("missing.obj"), std::string::npos) << err_;
    ASSERT_EQ(out_.size(), 1u);
    EXPECT_EQ(out_[0].rfind("--camera ", 0), 0u);
}

} // namespace

// tessera-render end to end: pictures against committed golden images and digests, exact on
// every platform, and bad input.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <numeric>
#include <sstream>
#include <string>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

#include "core/platform/module.h"
#include "core/platform/system_info.h"
#include "host/app/ini_settings.h"
#include "host/formats/png_file.h"
#include "support/cross_build.h"

namespace fs = std::filesystem;

namespace {

const fs::path kOut = "render_cli_out";

struct Outcome {
    int exit = -1;
    std::string err;
    fs::path outFile; // what the program wrote to standard output
};

std::string Slurp(const fs::path& p) {
    std::ifstream in(p, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

// Files of the running test case, so that test cases may run side by side.
fs::path OwnFile(const std::string& what) {
    const testing::TestInfo* t = testing::UnitTest::GetInstance()->current_test_info();
    std::string name = std::string(t->test_suite_name()) + "." + t->name() + "." + what;
    std::replace(name.begin(), name.end(), '/', '_');
    return kOut / name;
}

#if defined(_WIN32)
// The program beside this test program, named in the system's own form (the build's path is
// the build machine's, which a Windows command interpreter may not read).
std::string RenderProgram() {
    char self[4096];
    if (q5plat::GetProgramFileNameA(self, sizeof self) == 0) return TESSERA_RENDER;
    return (fs::path(self).parent_path() / fs::path(TESSERA_RENDER).filename()).string();
}
#endif

// Runs the program with its output in files of the running test case. On POSIX `shellPrefix`
// runs in the same shell first, such as a "ulimit".
Outcome Render(const std::string& args, const std::string& shellPrefix = "") {
    fs::create_directories(kOut);
    // Files of their own for each run: under Wine a program that has just ended may still hold
    // its redirections for a moment, and the next run's shell cannot open them then.
    static int runs = 0;
    const std::string run = std::to_string(++runs);
    const fs::path out = OwnFile("stdout" + run), err = OwnFile("stderr" + run);
    const std::string redirect = " > " + out.string() + " 2> " + err.string();
    Outcome r{-1, "", out};
#if defined(_WIN32)
    // The command interpreter drops the outermost quotes of the line, hence the extra pair;
    // its exit code is the program's. Under Wine, on a busy machine, the interpreter now and
    // then fails to start a program it found a moment before and answers 9009 ("can't
    // recognize"): the program never ran, so it is started again.
    (void)shellPrefix;
    const std::string line = "\"\"" + RenderProgram() + "\" " + args + redirect + "\"";
    constexpr int kCannotStart = 9009;
    for (int attempt = 0; attempt < 4; ++attempt) {
        if (attempt > 0) std::this_thread::sleep_for(std::chrono::milliseconds(250 * attempt));
        r.exit = std::system(line.c_str());
        if (r.exit != kCannotStart) break;
    }
#else
    const fs::path code = OwnFile("exit" + run);
    const std::string command =
        shellPrefix + "\"" TESSERA_RENDER "\" " + args + redirect + "; echo $? > " + code.string();
    if (std::system(command.c_str()) != 0) return r;
    r.exit = std::atoi(Slurp(code).c_str());
#endif
    r.err = Slurp(err);
    return r;
}

long Lines(const std::string& text) { return std::count(text.begin(), text.end(), '\n'); }

// Text as written on every system: Windows ends its lines in "\r\n".
std::string Text(std::string s) {
    s.erase(std::remove(s.begin(), s.end(), '\r'), s.end());
    return s;
}

Image Png(const fs::path& p) {
    Image image;
    std::string error;
    EXPECT_TRUE(ReadPng(p.string(), image, error)) << p << ": " << error;
    return image;
}

const bool kUpdating = std::getenv("TESSERA_UPDATE_GOLDEN") != nullptr;

// Renders `args` to NAME.png, which must match golden/NAME.png exactly (or replace it when
// updating).
void ExpectMatchesGolden(const std::string& name, const std::string& args) {
    SCOPED_TRACE(name);
    const fs::path rendered = kOut / (name + ".png");
    const fs::path golden = fs::path(TESSERA_GOLDEN_DIR) / (name + ".png");
    fs::remove(rendered);
    const Outcome r = Render(args + " -o " + rendered.string());
    ASSERT_EQ(r.exit, 0) << r.err;
    EXPECT_EQ(r.err, "");
    if (kUpdating) {
        fs::copy_file(rendered, golden, fs::copy_options::overwrite_existing);
        return;
    }
    const Image got = Png(rendered), want = Png(golden);
    ASSERT_EQ(std::tie(got.width, got.height, got.channels),
              std::tie(want.width, want.height, want.channels));
    EXPECT_EQ(std::inner_product(got.pixels.begin(), got.pixels.end(), want.pixels.begin(), 0L,
                                 std::plus<>(), std::not_equal_to<>()),
              0)
        << "channel values that differ";
}

// Digest of the size and pixels of each of a turntable's pictures, NAME_000.png and on: one
// start of the program (slow under Wine) renders many cameras.
std::uint64_t TurntableDigest(const std::string& name, const std::string& args) {
    constexpr int kTurntableFrames = 12; // as each case's --frames asks
    const auto frame = [&](int k) {
        return kOut / (name + (k < 10 ? "_00" : "_0") + std::to_string(k) + ".png");
    };
    const fs::path unnumbered = kOut / (name + ".png");
    for (int k = 0; k < kTurntableFrames; ++k) fs::remove(frame(k));
    fs::remove(unnumbered);
    const Outcome r = Render(args + " -o " + unnumbered.string());
    EXPECT_EQ(r.exit, 0) << args << ": " << r.err;
    EXPECT_EQ(r.err, "") << args << ": no progress line into a file";
    EXPECT_FALSE(fs::exists(unnumbered)) << args;
    std::uint64_t digest = kFnv1aStart;
    for (int k = 0; k < kTurntableFrames; ++k) {
        const Image image = Png(frame(k));
        const std::int32_t shape[3] = {image.width, image.height, image.channels};
        digest =
            Fnv1a(image.pixels.data(), image.pixels.size(), Fnv1a(shape, sizeof shape, digest));
    }
    return digest;
}

} // namespace

// The demo; a textured cube with every edge outlined; ground clipped by the view volume, with
// depth fade; a blended sphere supersampled over a given gradient; a model file's material.
TEST(RenderGolden, EachPictureMatchesItsGoldenImage) {
    const std::pair<const char*, const char*> cases[] = {
        {"demo", "--size 256x144"},
        {"cube_edges", "--scene cube --size 96x96 --edges"},
        {"clip_fade", "--scene clip --size 128x96 --fade"},
        {"glass_supersample",
         "--scene glass --size 96x96 --supersample --background \"#f0f0f0,#404060\""},
        {"model_pyramid", TESSERA_TEST_DATA "/pyramid.obj --size 96x96 --orbit 30,25"},
        {"model_obj", TESSERA_TEST_DATA "/textured.obj --size 96x96 --orbit 35,30"},
        {"model_gltf", TESSERA_TEST_DATA "/embedded.gltf --size 96x96"},
        {"model_glb", TESSERA_TEST_DATA "/embedded.glb --size 96x96 --orbit -40,15"},
        {"background_centre", "--scene cube --size 128x96 --distance 14 --background-mode centre "
                              "--background-image " TESSERA_TEST_DATA "/backdrop.png"},
        {"background_tile", "--scene cube --size 128x96 --distance 14 --background-mode tile "
                            "--background-image " TESSERA_TEST_DATA "/backdrop.png"},
        {"model_inside_two_sided",
         TESSERA_TEST_DATA "/pyramid.obj --size 64x64 --camera 0,0,0.05 --two-sided"},
    };
    for (const auto& [name, args] : cases) ExpectMatchesGolden(name, args);
}

// golden/random_cameras.txt: built-in scenes from cameras at fractional angles, distances and
// fields of view, whose sines and tangents once differed between C libraries, each with the
// digest of the pixels the Linux build rendered, which every build must match.
TEST(RenderGolden, RandomCamerasGiveTheLinuxPixelsExactly) {
    const fs::path manifest = fs::path(TESSERA_GOLDEN_DIR) / "random_cameras.txt";
    std::istringstream recorded(Slurp(manifest));
    std::ostringstream text;
    int cases = 0;
    for (std::string line; std::getline(recorded, line); text << line << '\n') {
        if (line.empty() || line[0] == '#') continue;
        const std::string args = line.substr(17); // after the digest
        std::ostringstream digest;
        digest << std::hex << std::setw(16) << std::setfill('0')
               << TurntableDigest("camera_" + std::to_string(cases++), args);
        line = digest.str() + ' ' + args;
    }
    ASSERT_EQ(cases, 40) << manifest;
    if (kUpdating) {
        std::ofstream out(manifest);
        out << text.str();
        ASSERT_TRUE(out.good()) << manifest;
        return;
    }
    EXPECT_EQ(text.str(), Slurp(manifest)) << "pictures of camera_N in " << kOut;
}

// PNG signatures in `bytes`: pictures that follow one another in a stream.
int PngCount(const std::string& bytes) {
    int count = 0;
    for (auto at = bytes.find("\x89PNG\r\n\x1a\n"); at != std::string::npos; ++count)
        at = bytes.find("\x89PNG\r\n\x1a\n", at + 1);
    return count;
}

// Targets that are not a regular file are written as they are: standard output (one picture
// or a stream of them; a file here, redirected by the shell), and a link, which stays a link
// to the picture.
TEST(RenderOutput, StandardOutputIsWrittenThrough) {
    const std::pair<const char*, int> toStandardOutput[] = {{"-o -", 1}, {"--frames 3 -o -", 3}};
    fs::path last;
    for (const auto& [args, pictures] : toStandardOutput) {
        const Outcome r = Render(std::string("--scene cube --size 24x24 ") + args);
        ASSERT_EQ(r.exit, 0) << args << ": " << r.err;
        EXPECT_EQ(PngCount(Slurp(r.outFile)), pictures) << args;
        EXPECT_FALSE(fs::exists("-"));
        last = r.outFile;
    }
    EXPECT_EQ(Png(last).width, 24);
}

TEST(RenderOutput, ALinkIsWrittenThroughAndStaysALink) {
#if defined(_WIN32)
    GTEST_SKIP() << "links of the machine beneath look like their targets to programs under Wine";
#else
    // Once with the link leading nowhere yet, once over an older picture.
    const fs::path link = OwnFile("link.png"), target = OwnFile("target.png");
    for (const fs::path& p : {link, target}) fs::remove(p);
    fs::create_symlink(target.filename(), link);
    for (const char* size : {"16x16", "20x20"}) {
        const Outcome r =
            Render(std::string("--scene cube --size ") + size + " -o " + link.string());
        ASSERT_EQ(r.exit, 0) << r.err;
        EXPECT_TRUE(fs::is_symlink(link));
        const Image image = Png(target);
        EXPECT_EQ(std::to_string(image.width) + "x" + std::to_string(image.height), size);
    }
#endif
}

// A render that fails leaves the file it was to replace as it was, and no temporary file
// beside it: a frame beyond the driver's surfaces on every platform, and on POSIX a frame the
// memory limit leaves no room for, which fails inside the driver.
TEST(RenderOutput, AFailedRenderLeavesNoPartialFile) {
    const fs::path folder = OwnFile("folder");
    fs::remove_all(folder);
    fs::create_directories(folder);
    const fs::path picture = folder / "old.png";
    std::vector<std::pair<std::string, std::string>> cases = { // shell prefix, arguments
        {"", "--size 16384x16384 --supersample"}};
#if !defined(_WIN32) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    // 800 MB of address space: the frame's 512 MB of surfaces fit, the supersampled 2 GB not.
    cases.emplace_back("ulimit -v 800000; ", "--size 8192x8192 --supersample");
#endif
    for (const auto& [prefix, args] : cases) {
        std::ofstream(picture) << "an older picture";
        const Outcome r = Render("--scene cube " + args + " -o " + picture.string(), prefix);
        EXPECT_EQ(r.exit, 1) << args;
        EXPECT_EQ(Lines(r.err), 1) << r.err;
        EXPECT_EQ(Slurp(picture), "an older picture") << args;
        EXPECT_EQ(std::distance(fs::directory_iterator(folder), fs::directory_iterator()), 1)
            << args << ": a file beside the picture";
    }
}

#if !defined(_WIN32)
// On a terminal, which script(1) gives the program: frames show a progress line, and no
// picture is poured onto the screen.
TEST(RenderTerminal, ProgressLineAndNoPictureOnTheScreen) {
    if (std::system("command -v script > /dev/null") != 0)
        GTEST_SKIP() << "no script(1) to give the program a terminal";
    const std::pair<std::string, const char*> cases[] = {
        {"--frames 2 -o " + (kOut / "tty.png").string(), "frame 2/2"},
        {"-o -", "standard output is a terminal"},
    };
    for (const auto& [args, says] : cases) {
        const fs::path log = OwnFile("terminal");
        std::system(("script -qec '\"" TESSERA_RENDER "\" --scene cube --size 16x16 " + args +
                     "' /dev/null > " + log.string()).c_str());
        EXPECT_NE(Slurp(log).find(says), std::string::npos) << args << ": " << Slurp(log);
        EXPECT_EQ(Slurp(log).find("PNG"), std::string::npos) << args;
    }
}
#endif

// --version alone on standard output; --verbose adds the load, the module and each frame;
// --quiet leaves standard error empty.
TEST(RenderInformation, VersionVerboseAndQuiet) {
    const std::string picture = (kOut / "information.png").string();
    const struct {
        std::string args;
        std::string out;              // all of standard output
        std::vector<const char*> err; // what standard error holds, one line each
    } cases[] = {
        {"--version", "tessera-render " TESSERA_VERSION "\n", {}},
        {"--scene cube --size 16x16 --verbose -o " + picture,
         "",
         {"loaded scene cube", "12 triangles", "tessera_zb", "frame 1/1 16x16: rendered in"}},
        {"--scene cube --size 16x16 --quiet --frames 2 -o " + picture, "", {}},
    };
    for (const auto& c : cases) {
        const Outcome r = Render(c.args);
        EXPECT_EQ(r.exit, 0) << c.args << ": " << r.err;
        EXPECT_EQ(Text(Slurp(r.outFile)), c.out) << c.args;
        EXPECT_EQ(Lines(r.err), c.err.empty() ? 0 : 3) << c.args << ": " << r.err;
        for (const char* says : c.err) EXPECT_NE(r.err.find(says), std::string::npos) << r.err;
    }
}

// Each bad input: a non-zero exit (not a crash), one line on standard error, no picture.
struct BadInput {
    const char* name;
    const char* args;
    int exit;
    const char* says;
    friend void PrintTo(const BadInput& c, std::ostream* os) { *os << c.args; }
};

// The model is missing too in "UnwritableFolder": the output is checked first. /proc takes no
// new file even from root, and under Wine it is the same folder of the machine beneath.
const BadInput kBadInputs[] = {
    {"ZeroSize", "--size 0x10", 2, "--size"},
    {"UnknownOption", "--bogus", 2, "unknown option --bogus"},
    {"UnknownScene", "--scene nowhere", 2, "unknown scene"},
    {"MissingModel", "no_such_model.obj", 1, "no_such_model.obj"},
    {"EverythingCulled", TESSERA_TEST_DATA "/pyramid.obj --camera 0,0,0.05", 1,
     "nothing reaches the picture"}, // a closed model seen from inside: only back faces
    {"NotFinite", TESSERA_TEST_DATA "/not_finite.obj", 1, "not finite"},
    {"NotAModel", TESSERA_TEST_DATA "/textured.mtl", 1, "not a model format"},
    {"MissingDriver", "--driver ./no_such_driver.so", 1, "no_such_driver"},
    {"MissingFolder", "-o render_cli_out/missing/x.png", 1, "does not exist"},
    {"OutputIsAFolder", "-o render_cli_out", 1, "folder"},
    {"UnwritableFolder", "no_such_model.obj -o /proc/tessera_test.png", 1,
     "cannot write /proc/tessera_test.png"},
    {"UnderAFile", "-o " TESSERA_TEST_DATA "/pyramid.obj/x.png", 1, "is a file, not a folder"},
    {"NotPng", "-o render_cli_out/picture.JPG", 1, "must end in .png"},
    {"MissingSettings", "--settings render_cli_out/no_such.ini", 2, "does not exist"},
    {"SceneAndModel", "--scene cube model.obj", 2, "choose one"},
    {"QuietAndVerbose", "--quiet --verbose", 2, "choose one"},
    {"PitchBeyond90", "--orbit 0,90.5", 2, "-90 to 90"},
    {"PitchBelow90", "--camera 10,-91,5", 2, "-90 to 90"},
    {"BackgroundModeAlone", "--background-mode tile", 2, "give --background-image"},
    {"BackgroundNotAPicture", "--background-image " TESSERA_TEST_DATA "/pyramid.obj", 1,
     "cannot use background image"},
};

class RenderBadInput : public testing::TestWithParam<BadInput> {};

TEST_P(RenderBadInput, FailsWithOneLineAndNoPicture) {
    const BadInput& c = GetParam();
    const fs::path picture = OwnFile("bad.png");
    fs::remove(picture);
    const bool ownOutput = std::string(c.args).find("-o ") != std::string::npos;
    const Outcome r = Render(c.args + (ownOutput ? std::string() : " -o " + picture.string()));
    EXPECT_EQ(r.exit, c.exit) << r.err;
    EXPECT_EQ(Lines(r.err), 1) << r.err;
    EXPECT_NE(r.err.find(c.says), std::string::npos) << r.err;
    EXPECT_FALSE(fs::exists(picture));
}

INSTANTIATE_TEST_SUITE_P(Cases, RenderBadInput, testing::ValuesIn(kBadInputs),
                         [](const testing::TestParamInfo<BadInput>& info) {
                             return std::string(info.param.name);
                         });

// The options page scripted from the command line, on a machine of one processor.
TEST(RenderOptions, SetEditsThePageWhichIsPrintedAppliedAndSaved) {
    fs::create_directories(kOut);
    const fs::path ini = OwnFile("settings.ini");
    std::ofstream(ini) << "[Render\\ZB]\nRefine=0\n";
    const std::string file = " --settings " + ini.string();
    q5plat::OverrideProcessorCount(1);
    Outcome r = Render("--options=apply --set \"Render\\ZB\\HQ=1\" --set \"render\\zb\\hqtri=7000\" "
                       "--set \"Render\\ZB\\Use2Thread=1\"" + file);
    q5plat::OverrideProcessorCount(0);
    ASSERT_EQ(r.exit, 0) << r.err;
    EXPECT_EQ(Text(r.err), "tessera-render: warning: --set Render\\ZB\\Use2Thread: the control "
                           "is disabled; left as it is\n");
    EXPECT_EQ(Text(Slurp(r.outFile)),
              "2114 check \"Use second processor\" unchecked disabled\n"
              "2115 check \"Refine static geometry\" unchecked enabled\n"
              "2116 check \"High quality render if triangles number less than:\" checked enabled\n"
              "212 edit \"7000\" enabled\n"
              "214 spin \"\" enabled 1144 (100, 100) 1145 (0, 1e+30)\n"
              "options applied\n");
    IniSettings saved;
    ASSERT_TRUE(saved.Load(ini.string()));
    EXPECT_EQ(saved.Text(), "[Render\\ZB]\nRefine=0\nHQ=1\nHQtri=7000\n")
        << "Use2Thread left alone on one processor";

    // Cancelled: printed, nothing saved; a value a check box does not take stops before the page.
    r = Render("--options=cancel --set \"Render\\ZB\\HQ=0\"" + file);
    EXPECT_EQ(r.exit, 0) << r.err;
    const std::string out = Text(Slurp(r.outFile));
    EXPECT_NE(out.find("less than:\" unchecked"), std::string::npos) << out;
    EXPECT_EQ(out.substr(out.size() - 18), "options cancelled\n");
    for (const auto& [set, says] : {std::pair{"HQ=2", "a check box takes 0 or 1"},
                                    {"Speed=2", "not a setting of the driver's options page"}}) {
        r = Render(std::string("--options --set \"Render\\ZB\\") + set + "\"" + file);
        EXPECT_EQ(r.exit, 2);
        EXPECT_NE(r.err.find(says), std::string::npos) << r.err;
    }
    ASSERT_TRUE(saved.Load(ini.string()));
    EXPECT_EQ(saved.GetInt("Render\\ZB\\HQ", -1), 1);
}

// A label changes only pixels inside its box at the top-left corner, and some of them are the
// label's colour (white); the system's text may smooth the rest.
TEST(RenderLabel, ALabelIsWrittenAtTheTopLeftOnly) {
    const fs::path plain = OwnFile("plain.png"), labelled = OwnFile("labelled.png");
    ASSERT_EQ(Render("--scene cube --size 160x90 -o " + plain.string()).exit, 0);
    const Outcome r = Render("--scene cube --size 160x90 --label \"Tessera 42\" -o " +
                             labelled.string());
    ASSERT_EQ(r.exit, 0) << r.err;
    const Image a = Png(plain), b = Png(labelled);
    ASSERT_EQ(std::tie(a.width, a.height), std::tie(b.width, b.height));
    int changed = 0, white = 0;
    for (int y = 0; y < a.height; ++y)
        for (int x = 0; x < a.width; ++x) {
            const std::uint8_t *p = a.Pixel(x, y), *q = b.Pixel(x, y);
            if (std::equal(p, p + 3, q)) continue;
            ++changed;
            white += q[0] == 255 && q[1] == 255 && q[2] == 255;
            EXPECT_TRUE(x >= 8 && x < 100 && y >= 8 && y < 8 + 15) << x << "," << y;
        }
    EXPECT_GT(white, 30);
    EXPECT_GE(changed, white);
}

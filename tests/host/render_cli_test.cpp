// tessera-render end to end: pictures against committed golden images and digests, exact on
// every platform, and bad input.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <numeric>
#include <sstream>
#include <string>
#include <tuple>
#include <utility>

#include "core/platform/module.h"
#include "host/formats/png_file.h"
#include "support/cross_build.h"

namespace fs = std::filesystem;

namespace {

const fs::path kOut = "render_cli_out";

struct Outcome {
    int exit = -1;
    std::string err;
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
    for (char& c : name)
        if (c == '/') c = '_';
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

// Runs the program with its output in files of the running test case. A crash shows as an
// exception code such as 0xC0000005 on Windows and as an exit code above 128 elsewhere.
Outcome Render(const std::string& args) {
    fs::create_directories(kOut);
    const fs::path out = OwnFile("stdout"), err = OwnFile("stderr");
    const std::string redirect = " > " + out.string() + " 2> " + err.string();
    Outcome r;
#if defined(_WIN32)
    // The command interpreter drops the outermost quotes of the line, hence the extra pair;
    // its exit code is the program's.
    r.exit = std::system(("\"\"" + RenderProgram() + "\" " + args + redirect + "\"").c_str());
#else
    const fs::path code = OwnFile("exit");
    const std::string command =
        "\"" TESSERA_RENDER "\" " + args + redirect + "; echo $? > " + code.string();
    if (std::system(command.c_str()) != 0) return r;
    r.exit = std::atoi(Slurp(code).c_str());
#endif
    r.err = Slurp(err);
    return r;
}

long Lines(const std::string& text) {
    return std::count(text.begin(), text.end(), '\n');
}

bool Updating() {
    return std::getenv("TESSERA_UPDATE_GOLDEN") != nullptr;
}

// Renders `args` to NAME.png and compares its pixels with golden/NAME.png, which must match
// exactly. With TESSERA_UPDATE_GOLDEN set in the environment the rendering replaces the golden
// image instead.
void ExpectMatchesGolden(const std::string& name, const std::string& args) {
    SCOPED_TRACE(name);
    const fs::path rendered = kOut / (name + ".png");
    const fs::path golden = fs::path(TESSERA_GOLDEN_DIR) / (name + ".png");
    fs::remove(rendered);
    const Outcome r = Render(args + " -o " + rendered.string());
    ASSERT_EQ(r.exit, 0) << r.err;
    EXPECT_EQ(r.err, "");
    if (Updating()) {
        fs::copy_file(rendered, golden, fs::copy_options::overwrite_existing);
        return;
    }
    Image got, want;
    std::string error;
    ASSERT_TRUE(ReadPng(rendered.string(), got, error)) << error;
    ASSERT_TRUE(ReadPng(golden.string(), want, error)) << error;
    ASSERT_EQ(std::tie(got.width, got.height, got.channels),
              std::tie(want.width, want.height, want.channels));
    EXPECT_EQ(std::inner_product(got.pixels.begin(), got.pixels.end(), want.pixels.begin(), 0L,
                                 std::plus<>(), std::not_equal_to<>()),
              0)
        << "channel values that differ";
}

// Digest of a turntable's pictures, NAME_000.png and on: the size and every channel of every
// pixel of each in turn. A turntable lets one start of the program (slow under Wine) render
// many cameras.
std::uint64_t TurntableDigest(const std::string& name, const std::string& args) {
    constexpr int kTurntableFrames = 12; // as each case's --frames asks
    const auto frame = [&](int k) {
        return kOut / (name + (k < 10 ? "_00" : "_0") + std::to_string(k) + ".png");
    };
    for (int k = 0; k < kTurntableFrames; ++k) fs::remove(frame(k));
    const Outcome r = Render(args + " -o " + (kOut / (name + ".png")).string());
    EXPECT_EQ(r.exit, 0) << args << ": " << r.err;
    std::uint64_t digest = kFnv1aStart;
    for (int k = 0; k < kTurntableFrames; ++k) {
        Image image;
        std::string error;
        EXPECT_TRUE(ReadPng(frame(k).string(), image, error)) << error;
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
    const std::pair<const char*, std::string> cases[] = {
        {"demo", "--size 256x144"},
        {"cube_edges", "--scene cube --size 96x96 --edges"},
        {"clip_fade", "--scene clip --size 128x96 --fade"},
        {"glass_supersample",
         "--scene glass --size 96x96 --supersample --background \"#f0f0f0,#404060\""},
#if defined(TESSERA_HAVE_ASSIMP)
        {"pyramid", std::string(TESSERA_TEST_DATA) + "/pyramid.obj --size 96x96 --orbit 30,25"},
#endif
    };
    for (const auto& [name, args] : cases) ExpectMatchesGolden(name, args);
}

// golden/random_cameras.txt holds built-in scenes seen from cameras at fractional angles,
// distances and fields of view (drawn once by a fixed generator), the kind of camera whose sines
// and tangents once came out a bit apart on different C libraries, which flipped a pixel in a
// few pictures per thousand. Each case carries the digest of the pixels the Linux build
// rendered; every build must render the same pixels. TESSERA_UPDATE_GOLDEN=1 rewrites them.
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
    if (Updating()) {
        std::ofstream out(manifest);
        out << text.str();
        ASSERT_TRUE(out.good()) << manifest;
        return;
    }
    EXPECT_EQ(text.str(), Slurp(manifest)) << "pictures of camera_N in " << kOut;
}

TEST(RenderSequence, FramesAreNumberedWithAProgressLine) {
    for (int i = 0; i < 3; ++i) fs::remove(kOut / ("turn_00" + std::to_string(i) + ".png"));
    const Outcome r =
        Render("--scene cube --size 32x32 --frames 3 -o " + (kOut / "turn.png").string());
    ASSERT_EQ(r.exit, 0) << r.err;
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(fs::exists(kOut / ("turn_00" + std::to_string(i) + ".png")));
    EXPECT_FALSE(fs::exists(kOut / "turn.png"));
    EXPECT_NE(r.err.find("frame 3/3"), std::string::npos);
}

// Each bad input: a non-zero exit (not a crash), one line on standard error, no picture.
struct BadInput {
    const char* name;
    const char* args;
    int exit;
    const char* says;
    friend void PrintTo(const BadInput& c, std::ostream* os) { *os << c.args; }
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

INSTANTIATE_TEST_SUITE_P(
    Cases, RenderBadInput,
    testing::Values(BadInput{"ZeroSize", "--size 0x10", 2, "--size"},
                    BadInput{"HugeSize", "--size 100000x100000", 2, "--size"},
                    BadInput{"UnknownOption", "--bogus", 2, "unknown option --bogus"},
                    BadInput{"UnknownScene", "--scene nowhere", 2, "unknown scene"},
                    BadInput{"MissingModel", "no_such_model.obj", 1, "no_such_model.obj"},
                    BadInput{"MissingDriver", "--driver ./no_such_driver.so", 1, "no_such_driver"},
                    BadInput{"MissingFolder", "-o render_cli_out/missing/x.png", 1,
                             "does not exist"},
                    BadInput{"OutputIsAFolder", "-o render_cli_out", 1, "folder"},
                    // A folder in which nothing can be created, not even by root; under Wine it
                    // is the same folder of the machine beneath.
                    BadInput{"UnwritableFolder", "--scene cube -o /proc/tessera_test.png", 1,
                             "cannot write /proc/tessera_test.png"}),
    [](const testing::TestParamInfo<BadInput>& info) { return std::string(info.param.name); });

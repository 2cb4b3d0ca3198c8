// Model files through the file-type registry: which format reads a file, the materials users
// expect, and damaged files refused without a crash. What each committed model hands the scene
// (faces, lines, points, textures, no warnings) is in the golden images of render_cli_test.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "core/filetype/file_type.h"
#include "host/app/host_api.h"
#include "host/formats/model_file.h"
#include "host/formats/model_formats.h"
#include "host/formats/stream_reading.h"
#include "host/scene/scene.h"

namespace fs = std::filesystem;

namespace {

const fs::path kData = TESSERA_TEST_DATA;
const fs::path kWork = "model_formats_out";

std::string Slurp(const fs::path& p) {
    std::ifstream in(p, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

fs::path Write(const std::string& name, const std::string& bytes) {
    fs::create_directories(kWork);
    std::ofstream(kWork / name, std::ios::binary) << bytes;
    return kWork / name;
}

class ModelFormats : public testing::Test {
protected:
    void SetUp() override {
        host.SetMessageSink([](std::int32_t, const std::string&) {});
        RegisterModelFormats(host);
    }
    IniSettings settings;
    HostAPI host{settings};
};

struct Loaded {
    explicit Loaded(const fs::path& path, bool twoSided = false) {
        ModelOptions options;
        options.twoSided = twoSided;
        ok = LoadModel(path.string(), scene, options, warnings, error);
    }
    bool ok = false;
    Scene scene;
    std::vector<std::string> warnings;
    std::string error;
};

std::string FormatOf(const fs::path& path) {
    StreamHandle stream = OpenReadStream(path.string());
    if (stream == nullptr) return "unopened";
    const FILETYPE* type = FindModelFormat(*stream, path.string());
    return type != nullptr ? HostAPI::Utf8(type->name) : "none";
}

} // namespace

// By extension when the content agrees; by content when the extension is missing or wrong.
TEST_F(ModelFormats, FoundByExtensionOrElseByContent) {
    const std::string glb = Slurp(kData / "embedded.glb"), gltf = Slurp(kData / "embedded.gltf");
    const std::pair<fs::path, const char*> cases[] = {
        {kData / "textured.obj", "Wavefront OBJ"},
        {kData / "embedded.gltf", "glTF 2.0"},
        {kData / "embedded.glb", "glTF 2.0 binary"},
        {Write("binary_named.obj", glb), "glTF 2.0 binary"},
        {Write("binary_without_extension", glb), "glTF 2.0 binary"},
        {Write("json_named.model", gltf), "glTF 2.0"},
        {Write("plain.txt", "hello\n"), "none"},
    };
    for (const auto& [path, format] : cases) EXPECT_EQ(FormatOf(path), format) << path;
}

#if defined(TESSERA_HAVE_ASSIMP)
// Formats of their own go to Assimp, faces, lines and points alike.
TEST_F(ModelFormats, OtherFormatsGoThroughAssimp) {
    const fs::path ply =
        Write("mixed.ply", "ply\nformat ascii 1.0\nelement vertex 4\nproperty float x\n"
                           "property float y\nproperty float z\nelement face 1\n"
                           "property list uchar int vertex_indices\nend_header\n"
                           "0 0 0\n1 0 0\n0 1 0\n0 0 1\n3 0 1 2\n");
    EXPECT_EQ(FormatOf(ply), "Stanford Polygon Library (PLY) (Assimp)");
    const Loaded m(ply);
    ASSERT_TRUE(m.ok) << m.error;
    ASSERT_EQ(m.scene.Objects().size(), 1u);
    EXPECT_EQ(m.scene.Objects()[0].geometry.triangles.size(), 1u);
    const Loaded broken(
        Write("broken.ply", "ply\nformat ascii 1.0\nelement vertex 2\nend_header\n"));
    EXPECT_TRUE(!broken.ok && broken.error.find('\n') == std::string::npos) << broken.error;
}
#endif

// No colour: neutral grey. Opacity 0 on every material: opaque, with a warning. Back faces
// drawn for open objects, for closed ones only when asked.
TEST_F(ModelFormats, MaterialsAndSidesAsUsersExpect) {
    const std::string box =
        "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nv 0 0 1\nv 1 0 1\nv 1 1 1\nv 0 1 1\n"
        "f 1 4 3 2\nf 5 6 7 8\nf 1 2 6 5\nf 3 4 8 7\nf 2 3 7 6\nf 1 5 8 4\n";
    Write("clear.mtl", "newmtl a\nd 0\nnewmtl b\nKd 0.5 0.25 0\nd 0\n");
    const fs::path closed = Write("closed.obj", "mtllib clear.mtl\nusemtl a\n" + box);
    const fs::path open =
        Write("open.obj", "mtllib clear.mtl\nusemtl b\n" + box.substr(0, 48) + "f 1 2 3\n");
    for (bool twoSided : {false, true}) {
        const Loaded c(closed, twoSided), o(open, twoSided);
        ASSERT_TRUE(c.ok && o.ok) << c.error << o.error;
        ASSERT_EQ(c.scene.Objects().size(), 1u);
        const SceneObject& cube = c.scene.Objects()[0];
        EXPECT_EQ(cube.twoSided, twoSided);
        EXPECT_EQ(o.scene.Objects()[0].twoSided, true);
        EXPECT_EQ(cube.opacity, 1.0f);
        ASSERT_EQ(c.warnings.size(), 1u);
        EXPECT_NE(c.warnings[0].find("opacity 0"), std::string::npos) << c.warnings[0];
        const Rgb grey = c.scene.Material(cube.material).colour;
        const Rgb given = o.scene.Material(o.scene.Objects()[0].material).colour;
        EXPECT_EQ(std::tie(grey.red, grey.green, grey.blue), std::make_tuple(0.7f, 0.7f, 0.7f));
        EXPECT_EQ(std::tie(given.red, given.green, given.blue), std::make_tuple(0.5f, 0.25f, 0.0f));
    }
}

// Each texture that cannot be used is named once however many materials name it, and the
// materials are drawn without it; a picture named with the exporter's folders is found beside
// the model.
TEST_F(ModelFormats, EachTextureThatFailsIsReportedOnce) {
    Write("not_an_image.png", "this is text, not a PNG");
    Write("beside.png", Slurp(kData / "checker.png"));
    Write("damaged.mtl", "newmtl a\nmap_Kd missing.png\nnewmtl b\nmap_Kd missing.png\nnewmtl c\n"
                         "map_Kd not_an_image.png\nnewmtl d\nmap_Kd missing.jpg\n"
                         "newmtl e\nmap_Kd C:\\exporter\\maps\\beside.png\n");
    std::string obj = "mtllib damaged.mtl\nv 0 0 0\nv 1 0 0\nv 0 1 0\n";
    for (const char* m : {"a", "b", "c", "d", "e"})
        obj += std::string("usemtl ") + m + "\nf 1 2 3\n";
    const Loaded m(Write("damaged.obj", obj));
    ASSERT_TRUE(m.ok) << m.error;
    ASSERT_EQ(m.warnings.size(), 3u);
    const char* named[] = {"missing.png", "not_an_image.png", "missing.jpg"};
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_NE(m.warnings[i].find(named[i]), std::string::npos) << m.warnings[i];
    std::vector<std::string> textured;
    for (std::size_t i = 0; i < m.scene.MaterialCount(); ++i)
        if (m.scene.Material(i).driver.textures[kSlotDiffuse] != nullptr)
            textured.push_back(m.scene.Material(i).name);
    EXPECT_EQ(textured, std::vector<std::string>{"e"});
}

TEST_F(ModelFormats, AModelThatShowsNothingSaysWhy) {
    const std::pair<std::string, const char*> cases[] = {
        {"v 0 0 0\nv 1 1 1\nv 2 2 2\nf 1 2 3\nf 1 1 2\n", "zero area"},
        {"# only a comment\nv 0 0 0\n", "no faces, lines or points"},
        {"f 1 2 3\n", "no faces, lines or points"},
    };
    for (const auto& [text, says] : cases) {
        const Loaded m(Write("nothing.obj", text));
        EXPECT_FALSE(m.ok) << text;
        EXPECT_NE(m.error.find(says), std::string::npos) << m.error;
    }
}

// The configuration file beside the settings turns the own OBJ reader off; Assimp's, where
// the build has it, reads OBJ files then.
TEST_F(ModelFormats, TheChoicesFileBesideTheSettingsDisablesAFormat) {
    const fs::path settings = Write("render.ini", "");
    Write("filetypes.cfg", "[formats]\n{7E55E001-0B1E-4F00-0080-4F424A000001}\nenable=0\n");
    std::string error;
    ASSERT_TRUE(LoadFormatChoices(host, FormatChoicesFile(settings.string()), error)) << error;
    EXPECT_NE(ListModelFormats().find("Wavefront OBJ                           obj  (disabled)"),
              std::string::npos)
        << ListModelFormats();
#if defined(TESSERA_HAVE_ASSIMP)
    EXPECT_EQ(FormatOf(kData / "textured.obj"), "Wavefront Object (Assimp)");
    const Loaded m(kData / "textured.obj");
    EXPECT_TRUE(m.ok) << m.error;
#else
    EXPECT_EQ(FormatOf(kData / "textured.obj"), "none");
#endif
}

// Cut at many points and with bytes flipped, each model either loads or is refused with one
// line; a glTF file cut anywhere is always refused.
TEST_F(ModelFormats, TruncatedAndCorruptedCopiesAreRefusedCleanly) {
    const char* files[] = {"textured.obj", "embedded.gltf", "embedded.glb", "textured.mtl"};
    std::uint32_t seed = 12345;
    const auto next = [&seed] { return seed = seed * 1664525u + 1013904223u; };
    for (const char* file : files) {
        const std::string bytes = Slurp(kData / file);
        ASSERT_FALSE(bytes.empty()) << file;
        const std::string extension = fs::path(file).extension().string();
        const bool gltf = extension == ".gltf" || extension == ".glb";
        const std::size_t step = std::max<std::size_t>(1, bytes.size() / 60);
        // A damaged material library is read through a model that names it.
        const auto damaged = [&](const std::string& bytes) {
            const fs::path written = Write("damaged" + extension, bytes);
            return extension != ".mtl" ? written : Write("names_damaged.obj",
                "mtllib damaged.mtl\nusemtl png\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
        };
        for (std::size_t cut = 0; cut < bytes.size(); cut += step) {
            const Loaded m(damaged(bytes.substr(0, cut)));
            EXPECT_TRUE(m.ok ? !gltf : !m.error.empty() && m.error.find('\n') == std::string::npos)
                << file << " cut at " << cut << ": " << m.error;
        }
        for (int round = 0; round < 60; ++round) {
            std::string flipped = bytes;
            for (int k = 0; k < 1 + round % 4; ++k)
                flipped[next() % flipped.size()] ^= static_cast<char>(1 + next() % 255);
            const Loaded m(damaged(flipped));
            EXPECT_EQ(m.error.find('\n'), std::string::npos) << m.error;
        }
    }
}

// The common OBJ lines are read outside tinyobjloader: the same text in forms left to it (extra
// numbers it ignores, a '+' on an index) must give the same bits, with materials in order,
// across CR LF and lone CR line ends.
TEST_F(ModelFormats, PlainObjLinesReadAsTheParserReadsThem) {
    Write("feed.mtl", "newmtl a\nKd 1 0 0\nnewmtl b\nKd 0 1 0\n");
    std::uint32_t seed = 777;
    const auto next = [&seed] { return (seed = seed * 1664525u + 1013904223u) >> 8; };
    const auto number = [&] {
        std::string s = next() % 3 == 0 ? "-" : next() % 4 == 0 ? "+" : "";
        s += std::to_string(next() % 5 == 0 ? 123456789012ull + next() : next() % 100);
        if (next() % 4 != 0) s += "." + std::to_string(next()).substr(0, 1 + next() % 7);
        return s;
    };
    const char* ends[] = {"\n", "\r\n", "\r", "\n"};
    std::string plain = "mtllib feed.mtl\n", left = plain;
    const auto line = [&](const std::string& a, const std::string& b) {
        const char* end = ends[next() % 4];
        plain += a + end;
        left += b + end;
    };
    for (int i = 0; i < 30; ++i) {
        const std::string v = "v " + number() + " " + number() + "\t" + number();
        line(v, v + " 1 2");
        const std::string n = "vn " + number() + " " + number() + " " + number();
        line(n, n + " 0");
        const std::string t = "vt " + number() + " " + number();
        line(t, t + " 0 0");
    }
    for (int i = 0; i < 40; ++i) {
        if (i % 7 == 0) line(i % 2 ? "usemtl a" : "usemtl b", i % 2 ? "usemtl a" : "usemtl b");
        const int a = 1 + next() % 30, b = 1 + next() % 30, c = -1 - next() % 30;
        const std::string forms[] = {"%/%/%", "%//%", "%/%", "%"};
        const std::string& form = forms[i % 4];
        std::string face = "f", faceLeft = "f";
        for (int corner : {a, b, c}) {
            std::string text;
            for (char ch : form) text += ch == '%' ? std::to_string(corner) : std::string(1, ch);
            faceLeft += (corner == a ? " +" : " ") + text;
            face += " " + text;
        }
        line(face, faceLeft);
        if (i % 10 == 0) line("l 1 2 -1", "l 1 2 -1");
    }
    const Loaded p(Write("feed_plain.obj", plain)), l(Write("feed_left.obj", left));
    ASSERT_TRUE(p.ok && l.ok) << p.error << l.error;
    ASSERT_EQ(p.scene.Objects().size(), l.scene.Objects().size());
    EXPECT_GE(p.scene.Objects().size(), 3u); // two materials and the lines
    const auto bytes = [](const auto& v) {
        return std::string(reinterpret_cast<const char*>(v.data()), v.size() * sizeof v[0]);
    };
    for (std::size_t i = 0; i < p.scene.Objects().size(); ++i) {
        const SceneObject &a = p.scene.Objects()[i], &b = l.scene.Objects()[i];
        EXPECT_EQ(a.name, b.name);
        EXPECT_EQ(bytes(a.geometry.positions), bytes(b.geometry.positions)) << a.name;
        EXPECT_EQ(bytes(a.geometry.normals), bytes(b.geometry.normals)) << a.name;
        EXPECT_EQ(bytes(a.geometry.uvs), bytes(b.geometry.uvs)) << a.name;
        EXPECT_EQ(a.geometry.triangles.size(), b.geometry.triangles.size()) << a.name;
        EXPECT_EQ(bytes(a.geometry.segments), bytes(b.geometry.segments)) << a.name;
    }
}

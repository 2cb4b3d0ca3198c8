// Modules: loading the built plug-in from the test's folder, its entry points and resources.
#include "core/platform/module.h"
#include "core/platform/system_info.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace {

#if defined(_WIN32)
constexpr const char* kModulePath = "tessera_zb.dll";
constexpr const q5_WCHAR* kModulePathW = u"tessera_zb.dll";
constexpr const char* kModuleFile = "tessera_zb.dll";
#else
constexpr const char* kModulePath = "./tessera_zb.so";
constexpr const q5_WCHAR* kModulePathW = u"./tessera_zb.so";
constexpr const char* kModuleFile = "tessera_zb.so";
#endif

// The module's English string table, byte for byte.
constexpr char kEnglishTable[] =
    "1=\"Software Z-Buffer video driver\"\r\n"
    "2=\"Software Z-Buffer\"\r\n"
    "3=\"Corvane Systems, Inc.\"\r\n"
    "4=\"Software Z-Buffer\"\r\n"
    "5=\"Software Z-Buffer Properties\"\r\n"
    "6=\"Driver\"\r\n"
    "7=\"Software Z-Buffer\"\r\n"
    "8=\"Corvane Systems, Inc\"\r\n"
    "9=\"Software Z-Buffer\"\r\n"
    "10=\"Out of memory\"\r\n"
    "11=\"Use second processor\"\r\n"
    "12=\"Refine static geometry\"\r\n"
    "13=\"High quality render if triangles number less than:\"\r\n"
    "14=\"Use extra maps : opacity, emission & ambient occlusion.\\nNote: may be very slow in "
    "high resolution and on large models.\"\r\n";

std::string Bytes(const q5plat::ResourceView& view) {
    return view ? std::string(static_cast<const char*>(view.data), view.size) : std::string();
}

class PluginModule : public ::testing::Test {
protected:
    void SetUp() override {
        module_ = q5plat::LoadLibraryA(kModulePath, q5plat::kLoadAlteredSearchPath);
        ASSERT_NE(module_, nullptr) << "the test runs beside " << kModuleFile;
    }
    void TearDown() override {
        if (module_ != nullptr) {
            EXPECT_TRUE(q5plat::FreeLibrary(module_));
        }
    }
    q5_HINSTANCE module_ = nullptr;
};

TEST_F(PluginModule, LoadsOnceFindsItsEntryPointAndIsKnownByItsFileName) {
    EXPECT_NE(q5plat::GetProcAddress(module_, "Q5DLLFunc"), nullptr);
    EXPECT_EQ(q5plat::GetProcAddress(module_, "Q5DLLFuncMissing"), nullptr);
    // Wide and in-context loads give the same module.
    for (q5_HINSTANCE again : {q5plat::LoadLibraryW(kModulePathW, 0),
                               q5plat::LoadLibraryWithModuleContext(kModulePath, module_)}) {
        EXPECT_EQ(again, module_);
        if (again != nullptr) q5plat::FreeLibrary(again);
    }
    EXPECT_TRUE(q5plat::IsLibraryLoaded(kModuleFile));
    EXPECT_FALSE(q5plat::IsLibraryLoaded("tessera_no_such_module.dll"));
    EXPECT_EQ(q5plat::LoadLibraryA("tessera_no_such_module.dll", 0), nullptr);
    EXPECT_EQ(q5plat::LoadLibraryW(u"tessera_no_such_module.dll", 0), nullptr);
}

// The module's own copy of OwnModule, reached through its export, names the module; the
// test program's copy names the program.
TEST_F(PluginModule, OwnModuleIsTheModuleHoldingTheCode) {
    using OwnModuleFn = q5_HINSTANCE (*)();
    auto moduleOwn =
        reinterpret_cast<OwnModuleFn>(q5plat::GetProcAddress(module_, "_ZN6q5plat9OwnModuleEv"));
    ASSERT_NE(moduleOwn, nullptr);
    EXPECT_EQ(moduleOwn(), module_);
    EXPECT_NE(q5plat::OwnModule(), nullptr);
    EXPECT_NE(q5plat::OwnModule(), module_);
}

TEST_F(PluginModule, CarriesTheEnglishStringTableAndNoOtherText) {
    EXPECT_EQ(Bytes(q5plat::FindResource(module_, "LNG", "ENG")), kEnglishTable);
    EXPECT_EQ(q5plat::FindResource(module_, "LNG", "ENG").size, sizeof kEnglishTable - 1);
    EXPECT_EQ(Bytes(q5plat::FindResource(module_, "lng", "eng")), kEnglishTable);
    const q5plat::ResourceView views[] = {
        q5plat::FindResource(module_, "LNG", "FRA"), q5plat::FindResource(module_, "TXT", "ENG"),
        q5plat::FindResource(module_, "LN", "ENG"),
        q5plat::FindResource(nullptr, "LNG", "ENG"), // the test program carries none
    };
    for (const auto& view : views) {
        EXPECT_FALSE(view);
        EXPECT_EQ(view.size, 0u);
    }
}

#if defined(_WIN32)

// Reads an extended dialog template: a header, then DWORD-aligned items.
class TemplateReader {
public:
    explicit TemplateReader(const q5plat::ResourceView& view)
        : base_(static_cast<const unsigned char*>(view.data)), size_(view.size) {}
    unsigned Byte() { return at_ < size_ ? base_[at_++] : 0u; }
    unsigned U16() { return Byte() | Byte() << 8; }
    unsigned U32() { return U16() | U16() << 16; }
    int S16() { return static_cast<std::int16_t>(U16()); }
    // A name, or an ordinal given back as "#<n>".
    std::string NameOrOrdinal() {
        unsigned first = U16();
        if (first == 0xFFFF) return "#" + std::to_string(U16());
        std::string text;
        for (; first != 0; first = U16()) text += static_cast<char>(first);
        return text;
    }
    void AlignToDword() { at_ = (at_ + 3) & ~std::size_t{3}; }

private:
    const unsigned char* base_;
    std::size_t at_ = 0;
    std::size_t size_;
};

TEST_F(PluginModule, OptionsDialogIsAChildPageWithFiveControls) {
    const q5plat::ResourceView dialog = q5plat::FindResource(module_, "#5", "#106");
    ASSERT_TRUE(dialog);
    TemplateReader in(dialog);
    EXPECT_EQ(in.U16(), 1u);          // extended template version
    EXPECT_EQ(in.U16(), 0xFFFFu);     // extended template signature
    in.U32();                         // help id
    EXPECT_EQ(in.U32(), 0u);          // extended style
    EXPECT_EQ(in.U32(), 0x40000040u); // WS_CHILD | DS_SETFONT: no caption, no border
    const unsigned count = in.U16();
    ASSERT_EQ(count, 5u);
    const int frame[] = {in.S16(), in.S16(), in.S16(), in.S16()};
    EXPECT_THAT(frame, ::testing::ElementsAre(0, 0, 236, 150));
    EXPECT_EQ(in.NameOrOrdinal() + in.NameOrOrdinal() + in.NameOrOrdinal(),
              "");           // menu, class, caption
    EXPECT_EQ(in.U16(), 8u); // points
    in.U32();                // weight, italic, character set
    EXPECT_EQ(in.NameOrOrdinal(), "MS Sans Serif");

    // Each item as "id class style x,y,cx,cy text". Button and edit are the system's class
    // atoms 0x80 and 0x81; check boxes are WS_CHILD | WS_VISIBLE | WS_TABSTOP |
    // BS_AUTOCHECKBOX, the edit has WS_BORDER in place of a button style, the spin control
    // its own bits 0x36.
    std::vector<std::string> items;
    for (unsigned i = 0; i < count; ++i) {
        in.AlignToDword();
        in.U32(); // help id
        in.U32(); // extended style
        char style[16];
        std::snprintf(style, sizeof style, "%08X", in.U32());
        std::string rect = std::to_string(in.S16());
        for (int k = 0; k < 3; ++k) rect += "," + std::to_string(in.S16());
        const std::string id = std::to_string(in.U32());
        const std::string windowClass = in.NameOrOrdinal();
        items.push_back(id + " " + windowClass + " " + style + " " + rect + " " +
                        in.NameOrOrdinal());
        for (unsigned extra = in.U16(); extra != 0; --extra) in.Byte();
    }
    EXPECT_THAT(items, ::testing::ElementsAre("2114 #128 50010003 12,12,105,12 #11",
                                              "2115 #128 50010003 12,23,105,12 #12",
                                              "2116 #128 50010003 12,34,204,12 #13",
                                              "212 #129 50810000 25,50,44,12 ",
                                              "214 Q5_UPDOWN 50000036 68,50,11,12 "));
}

TEST_F(PluginModule, ManifestAsksToRunAsTheInvoker) {
    const std::string manifest = Bytes(q5plat::FindResource(module_, "#24", "#2"));
    EXPECT_NE(manifest.find("level=\"asInvoker\""), std::string::npos) << manifest;
    EXPECT_NE(manifest.find("uiAccess=\"false\""), std::string::npos) << manifest;
}

TEST_F(PluginModule, LoadsTheSystemVideoLibraryInItsContext) {
    char dir[260] = {};
    const unsigned length = q5plat::SystemDirectoryA(dir, sizeof dir);
    ASSERT_GT(length, 0u);
    ASSERT_LT(length, 260u - std::strlen("\\MSVFW32.DLL"));
    const std::string path = std::string(dir) + "\\MSVFW32.DLL";
    q5_HINSTANCE video = q5plat::LoadLibraryWithModuleContext(path.c_str(), module_);
    ASSERT_NE(video, nullptr) << path;
    EXPECT_TRUE(q5plat::IsLibraryLoaded("MSVFW32.DLL"));
    EXPECT_NE(q5plat::GetProcAddress(video, "DrawDibOpen"), nullptr);
    EXPECT_NE(q5plat::GetProcAddress(video, "DrawDibDraw"), nullptr);
    EXPECT_TRUE(q5plat::FreeLibrary(video));
}

#endif

} // namespace

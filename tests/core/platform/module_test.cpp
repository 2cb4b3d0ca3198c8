// Modules: loading the built plug-in from the test's folder, its entry points and resources.
#include "core/platform/module.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <string>

#include "support/module_loader.h"

namespace {

const std::string kModuleFile = std::filesystem::path(kModuleFileName).filename().string();
const std::u16string kModulePathW(kModuleFileName, kModuleFileName + std::strlen(kModuleFileName));

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
        module_ = q5plat::LoadLibraryA(kModuleFileName, q5plat::kLoadAlteredSearchPath);
        ASSERT_NE(module_, nullptr) << "the test runs beside " << kModuleFile;
    }
    void TearDown() override { EXPECT_TRUE(module_ == nullptr || q5plat::FreeLibrary(module_)); }
    q5_HINSTANCE module_ = nullptr;
};

TEST_F(PluginModule, LoadsOnceFindsItsEntryPointAndIsKnownByItsFileName) {
    EXPECT_NE(q5plat::GetProcAddress(module_, "Q5DLLFunc"), nullptr);
    EXPECT_EQ(q5plat::GetProcAddress(module_, "Q5DLLFuncMissing"), nullptr);
    // Wide and in-context loads give the same module.
    for (q5_HINSTANCE again : {q5plat::LoadLibraryW(kModulePathW.c_str(), 0),
                               q5plat::LoadLibraryWithModuleContext(kModuleFileName, module_)}) {
        EXPECT_EQ(again, module_);
        if (again != nullptr) q5plat::FreeLibrary(again);
    }
    EXPECT_TRUE(q5plat::IsLibraryLoaded(kModuleFile.c_str()));
    EXPECT_FALSE(q5plat::IsLibraryLoaded("tessera_no_such_module.dll"));
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

TEST_F(PluginModule, CarriesTheEnglishStringTableFoundWithoutRegardToCase) {
    EXPECT_EQ(Bytes(q5plat::FindResource(module_, "lng", "eng")), kEnglishTable);
    for (const auto& view :
         {q5plat::FindResource(module_, "LNG", "FRA"), q5plat::FindResource(module_, "LN", "ENG"),
          q5plat::FindResource(nullptr, "LNG", "ENG")}) { // the test program carries none
        EXPECT_FALSE(view);
        EXPECT_EQ(view.size, 0u);
    }
}

#if defined(_WIN32)
// The options page: an extended template (version 1, signature 0xFFFF) whose item count follows
// the help id and both styles, and whose DWORD-aligned items carry these ids in tab order.
TEST_F(PluginModule, CarriesTheOptionsDialogWithItsControlIds) {
    const std::string dialog = Bytes(q5plat::FindResource(module_, "#5", "#106"));
    ASSERT_GT(dialog.size(), 18u);
    EXPECT_EQ(dialog.substr(0, 4), std::string("\x01\x00\xFF\xFF", 4));
    EXPECT_EQ(dialog.substr(16, 2), std::string("\x05\x00", 2));
    std::size_t at = 18;
    for (const unsigned id : {2114u, 2115u, 2116u, 212u, 214u}) {
        const char bytes[4] = {static_cast<char>(id & 0xFF), static_cast<char>(id >> 8), 0, 0};
        at = dialog.find(std::string(bytes, 4), at);
        ASSERT_NE(at, std::string::npos) << id;
        EXPECT_EQ(at % 4, 0u) << id;
    }
}

TEST_F(PluginModule, ManifestAsksToRunAsTheInvoker) {
    const std::string manifest = Bytes(q5plat::FindResource(module_, "#24", "#2"));
    EXPECT_NE(manifest.find("level=\"asInvoker\""), std::string::npos) << manifest;
}
#endif

} // namespace

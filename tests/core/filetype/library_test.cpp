// Loading plug-in modules: the test module is loaded, resolved and freed; the sibling driver's
// name is refused.
#include "core/services/library.h"

#include <filesystem>

#include "core/platform/module.h"
#include "registry_fixture.h"

namespace {

namespace fs = std::filesystem;

TEST(Library, APlugInModuleIsLoadedResolvedAndFreed) {
    q5_HINSTANCE module = q5_LoadLibrary(kPluginPath.c_str(), false);
    ASSERT_NE(module, nullptr);
    EXPECT_NE(q5_GetProcAddress(module, "Q5DLLFunc"), nullptr);
    EXPECT_EQ(q5_GetProcAddress(module, "NoSuchEntry"), nullptr);
    EXPECT_TRUE(q5_FreeLibrary(module));
    EXPECT_FALSE(q5_FreeLibrary(nullptr));
    EXPECT_EQ(q5_LoadLibrary(nullptr, false), nullptr);
    EXPECT_EQ(q5_LoadLibrary(u"no_such_module_here.dll", false), nullptr);
}

TEST(Library, APathNamingTheSiblingDriverLoadsNothing) {
    // Loadable copies, so that only the name can keep them from loading.
    const std::string suffix = fs::path(kPluginFile).extension().string();
    const fs::path inName = "Pelion_copy" + suffix;
    const fs::path inFolder = fs::path("Pelion") / ("folder_copy" + suffix);
    const fs::path lowerCase = "test_pelion" + suffix;
    fs::create_directories("Pelion");
    for (const fs::path& copy : {inName, inFolder, lowerCase}) {
        fs::remove(copy); // MinGW's runtime does not overwrite in copy_file
        fs::copy_file(kPluginFile, copy);
    }
    for (const fs::path& refused : {inName, inFolder}) {
        const std::u16string path = fs::absolute(refused).u16string();
        EXPECT_EQ(q5_LoadLibrary(path.c_str(), false), nullptr);
        EXPECT_EQ(q5_LoadLibrary(path.c_str(), true), nullptr);
        q5_HINSTANCE direct = q5plat::LoadLibraryW(path.c_str(), 0);
        EXPECT_NE(direct, nullptr) << "the copy itself loads";
        q5plat::FreeLibrary(direct);
    }
    // The refusal is case-sensitive; this load searches the module's own folder first.
    q5_HINSTANCE module = q5_LoadLibrary(fs::absolute(lowerCase).u16string().c_str(), true);
    EXPECT_NE(module, nullptr);
    EXPECT_TRUE(q5_FreeLibrary(module));
}

} // namespace

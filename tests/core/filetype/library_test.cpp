// Loading plug-in modules: a real module is loaded, resolved, called and freed; the sibling
// driver's name is refused.
#include "core/services/library.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "core/filetype/file_type.h"
#include "core/filetype/format_detect.h"
#include "core/platform/module.h"
#include "core/stream/stream.h"
#include "interface/plugin_entry.h"
#include "plugin_module_name.h"
#include "support/recording_host.h"

namespace {

namespace fs = std::filesystem;

std::u16string Wide(const fs::path& path) {
    return path.u16string();
}

TEST(Library, APlugInModuleIsLoadedResolvedCalledAndFreed) {
    RecordingHost host;
    ScopedHostAPI scope(&host);
    q5_HINSTANCE module = q5_LoadLibrary(kPluginPath, false);
    ASSERT_NE(module, nullptr);
    auto entry = reinterpret_cast<q5_DLLFUNC>(q5_GetProcAddress(module, "Q5DLLFunc"));
    ASSERT_NE(entry, nullptr);
    EXPECT_EQ(q5_GetProcAddress(module, "NoSuchEntry"), nullptr);
    EXPECT_EQ(entry(PLUGIN_MSG_INIT, reinterpret_cast<std::intptr_t>(&host),
                    reinterpret_cast<std::uintptr_t>(module), 0),
              5u);

    FILETYPE* type = GetFileTypeByExt(u"sample.TPF", nullptr, nullptr);
    ASSERT_NE(type, nullptr);
    EXPECT_EQ(std::u16string(type->name), u"Test plug-in format");
    EXPECT_EQ(type->Func3d(3, nullptr, nullptr, nullptr), 0x7E570003u);
    char content[] = "TPF!and the rest";
    q5_STREAM* stream = q5_STREAM::CreateFromMemory(content, sizeof content);
    EXPECT_EQ(q5GetFileFormat(stream, u"no-extension", nullptr), type);
    stream->Release();

    // The handler and the signature text belong to the module.
    type->handler = nullptr;
    type->signature = nullptr;
    EXPECT_TRUE(q5_FreeLibrary(module));
}

TEST(Library, AnAbsolutePathLoadsWithTheModulesOwnFolderFirst) {
    const std::u16string path = Wide(fs::absolute(kPluginFile));
    q5_HINSTANCE module = q5_LoadLibrary(path.c_str(), true);
    ASSERT_NE(module, nullptr);
    EXPECT_NE(q5_GetProcAddress(module, "Q5DLLFunc"), nullptr);
    EXPECT_TRUE(q5_FreeLibrary(module));
}

TEST(Library, APathNamingTheSiblingDriverLoadsNothing) {
    // Loadable copies, so that only the name can keep them from loading.
    const fs::path inName = "Pelion_copy" + kPluginSuffix;
    const fs::path inFolder = fs::path("Pelion") / ("folder_copy" + kPluginSuffix);
    const fs::path lowerCase = "test_pelion" + kPluginSuffix;
    fs::create_directories("Pelion");
    for (const fs::path& copy : {inName, inFolder, lowerCase}) {
        fs::remove(copy); // MinGW's runtime does not overwrite in copy_file
        fs::copy_file(kPluginFile, copy);
    }

    for (const fs::path& refused : {inName, inFolder}) {
        const std::u16string path = Wide(fs::absolute(refused));
        EXPECT_EQ(q5_LoadLibrary(path.c_str(), false), nullptr);
        EXPECT_EQ(q5_LoadLibrary(path.c_str(), true), nullptr);
        q5_HINSTANCE direct = q5plat::LoadLibraryW(path.c_str(), 0);
        EXPECT_NE(direct, nullptr) << "the copy itself loads";
        q5plat::FreeLibrary(direct);
    }
    // The refusal is case-sensitive.
    const std::u16string lower = Wide(fs::absolute(lowerCase));
    q5_HINSTANCE module = q5_LoadLibrary(lower.c_str(), false);
    EXPECT_NE(module, nullptr);
    EXPECT_TRUE(q5_FreeLibrary(module));
}

TEST(Library, FailuresAreNullOrFalse) {
    EXPECT_EQ(q5_LoadLibrary(nullptr, false), nullptr);
    EXPECT_EQ(q5_LoadLibrary(u"no_such_module_here.dll", false), nullptr);
    EXPECT_EQ(q5_GetProcAddress(nullptr, "Q5DLLFunc"), nullptr);
    EXPECT_FALSE(q5_FreeLibrary(nullptr));
}

} // namespace

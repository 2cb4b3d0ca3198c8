// A registry of file types in a recording host, made current for the core library, and the
// test plug-in module as the build places it beside the test programs.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/containers/collection.h"
#include "core/filetype/file_type.h"
#include "support/recording_host.h"

#if defined(_WIN32)
inline const std::string kPluginFile = "test_format_plugin.dll";
#else
inline const std::string kPluginFile = "./test_format_plugin.so";
#endif
inline const std::u16string kPluginPath(kPluginFile.begin(), kPluginFile.end());

using Texts = std::vector<std::u16string>;

class RegistryTest : public ::testing::Test {
protected:
    // Identifiers differ in their first part only.
    static q5_GUID Guid(std::uint32_t n) { return q5_GUID{n, 0, 0, {}}; }

    FILETYPE* Register(const q5_WCHAR* extensions, const q5_WCHAR* name, std::uint32_t n,
                       std::uint32_t flags = 2) {
        FILETYPE* type = host.RegisterType(extensions, name, 0, flags, Guid(n));
        EXPECT_NE(type, nullptr);
        return type;
    }

    // The registry's names in registry order, a disabled type's followed by "-".
    Texts Names() {
        Texts names;
        q5_COLLECTION* types = host.GetFileTypes();
        for (std::int64_t i = 0; i < types->Count(); ++i) {
            const auto* type = static_cast<FILETYPE*>(types->At(i));
            names.push_back(std::u16string(type->name) + (type->IsEnabled() ? u"" : u"-"));
        }
        return names;
    }

    RecordingHost host;
    ScopedHostAPI scope{&host};
};

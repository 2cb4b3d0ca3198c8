// A registry of file types in a recording host, made current for the core library.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/containers/collection.h"
#include "core/filetype/file_type.h"
#include "support/recording_host.h"

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

    // The registry's names in registry order.
    std::vector<std::u16string> Names() {
        std::vector<std::u16string> names;
        q5_COLLECTION* types = host.GetFileTypes();
        for (std::int64_t i = 0; i < types->Count(); ++i)
            names.emplace_back(static_cast<FILETYPE*>(types->At(i))->name);
        return names;
    }

    RecordingHost host;
    ScopedHostAPI scope{&host};
};

// Machine facts: screen depth, processor count, system folder.
#include "core/platform/system_info.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <utility>

TEST(SystemInfo, ProcessorsScreenDepthAndSystemFolder) {
    EXPECT_GE(q5plat::ProcessorCount(), 1);
#if defined(_WIN32)
    const int bits = q5plat::ScreenBitsPerPixel();
    EXPECT_TRUE(bits == 1 || bits == 4 || bits == 8 || bits == 15 || bits == 16 || bits == 24 ||
                bits == 32)
        << bits;
    char dir[260] = {};
    const unsigned length = q5plat::SystemDirectoryA(dir, sizeof dir);
    ASSERT_GT(length, 0u);
    EXPECT_EQ(length, std::strlen(dir));
    // Too small a buffer: the answer is the size needed, terminating zero included.
    char tiny[2] = {};
    EXPECT_EQ(q5plat::SystemDirectoryA(tiny, sizeof tiny), length + 1);
#else
    // The driver draws into the host's 32-bit surfaces, and there is no system folder to load
    // platform libraries from.
    EXPECT_EQ(q5plat::ScreenBitsPerPixel(), 32);
    char dir[8] = "x";
    EXPECT_EQ(q5plat::SystemDirectoryA(dir, sizeof dir), 0u);
    EXPECT_EQ(dir[0], '\0');
#endif
}

// Tests show machines of other sizes through the environment, which loaded modules share.
TEST(SystemInfo, AProcessorCountCanBeForced) {
    const int machine = q5plat::ProcessorCount();
    for (const auto& [forced, seen] : {std::pair{1, 1}, std::pair{7, 7}, std::pair{0, machine}}) {
        q5plat::OverrideProcessorCount(forced);
        EXPECT_EQ(q5plat::ProcessorCount(), seen) << forced;
    }
    EXPECT_EQ(std::getenv(q5plat::kProcessorCountVariable), nullptr) << "0 removes it";
}

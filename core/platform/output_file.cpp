// Output files: the naming both systems share; the file calls themselves are per platform.
#include "core/platform/output_file.h"

#include <cstdint>
#include <cstdio>
#include <random>

namespace q5plat {
namespace {

// Tries of a fresh temporary name before giving up on a folder.
constexpr int kTemporaryTries = 16;

// Beside the target, so that the final rename stays on one file system.
std::string TemporaryName(const std::string& path) {
    static thread_local std::mt19937 numbers{std::random_device{}()};
    char suffix[32];
    std::snprintf(suffix, sizeof suffix, ".tmp%08x", static_cast<unsigned>(numbers()));
    return path + suffix;
}

} // namespace
} // namespace q5plat

#if defined(_WIN32)
#include "core/platform/win32/output_file.inc"
#elif defined(__unix__) || defined(__APPLE__)
#include "core/platform/posix/output_file.inc"
#else
#error "output files: unknown platform"
#endif

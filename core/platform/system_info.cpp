// Facts about the machine: screen depth, processors, the system folder.
#include "core/platform/system_info.h"

#include <cstdlib>
#include <string>

namespace q5plat {
namespace {

int MachineProcessorCount();
bool SetVariable(const char* name, const char* value);

} // namespace

int ProcessorCount() {
    if (const char* forced = std::getenv(kProcessorCountVariable)) {
        char* end = nullptr;
        const long count = std::strtol(forced, &end, 10);
        if (end != forced && *end == 0 && count > 0 && count < 100000)
            return static_cast<int>(count);
    }
    return MachineProcessorCount();
}

void OverrideProcessorCount(int count) {
    SetVariable(kProcessorCountVariable, count > 0 ? std::to_string(count).c_str() : nullptr);
}

} // namespace q5plat

#if defined(_WIN32)
#include "core/platform/win32/system_info.inc"
#elif defined(__unix__) || defined(__APPLE__)
#include "core/platform/posix/system_info.inc"
#else
#error "system facts: unknown platform"
#endif

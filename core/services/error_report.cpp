// Reports of broken invariants, handed to the host.
#include "core/services/error_report.h"

#include "core/services/format16.h"
#include "core/services/host_link.h"
#include "interface/gapi.h"

#include <cstdarg>
#include <cstdio>

namespace {

constexpr std::size_t kMessageCapacity = 512;

} // namespace

void CoreAssert(const char* text) {
    CoreErrorA("Assertion failed %s", text != nullptr ? text : "no comment");
}

void CoreErrorA(const char* format, ...) {
    q5_GAPI* host = q5GetHostAPI();
    if (host == nullptr) return;
    char message[kMessageCapacity];
    std::va_list args;
    va_start(args, format);
    std::vsnprintf(message, sizeof message, format, args);
    va_end(args);
    host->ReportMessageA(kReportError, message);
}

void CoreErrorW(const q5_WCHAR* format, ...) {
    q5_GAPI* host = q5GetHostAPI();
    if (host == nullptr) return;
    q5_WCHAR message[kMessageCapacity];
    std::va_list args;
    va_start(args, format);
    q5vsprintf(message, kMessageCapacity, format, args);
    va_end(args);
    host->ReportMessage(kReportError, message);
}

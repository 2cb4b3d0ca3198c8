// ChooseDriver and RemoveDriver: how a host picks, checks and drops its render driver.
#include "interface/driver.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "core/services/error_report.h"
#include "core/services/host_link.h"
#include "core/services/wide_string.h"
#include "interface/gapi.h"
#include "interface/view.h"

namespace {

constexpr unsigned kErrorBadVersion = 1;
// Never set: the selection step has no path that detects a missing driver by itself.
constexpr unsigned kErrorNotFound = 2;
constexpr std::size_t kMaxNameCompare = 256;
constexpr std::size_t kMaxMessage = 255;

bool SelectStep(DRIVER3D** holder, const char* name, int depth) {
    if (depth >= 2) {
        CoreErrorA("Software driver not found!");
        return false;
    }
    unsigned errors = 0;
    if (name == nullptr || *name == '\0') name = kZBufferDriverName;

    if (*holder != nullptr) {
        // A prefix match on purpose: "X (Z Buffer) extra" keeps the current "X (Z Buffer)".
        const char* current = (*holder)->GetInterfaceName();
        const std::size_t n = current != nullptr ? strnlen(current, kMaxNameCompare) : 0;
        if (n >= 1 && q5strnicmp(name, current, n) == 0) return true;
        RemoveDriver(*holder, true);
        *holder = nullptr;
    }

    q5_GAPI* host = q5GetHostAPI();
    DRIVER3D* driver = host != nullptr ? host->CreateDriverByName(name) : nullptr;
    if (driver != nullptr) {
        if (driver->GetInterfaceVersion() == kDriverInterfaceVersion) {
            if (driver->QueryCaps(18) != kLayoutCheck18 ||
                driver->QueryCaps(19) != kLayoutCheck19 ||
                driver->QueryCaps(20) != kLayoutCheck20) {
                CoreErrorA("Driver (%s) was not properly compiled.\nPlease recompile it, using "
                           "correct compiler settings",
                           name);
            }
        } else {
            driver->Release();
            driver = nullptr;
            errors |= kErrorBadVersion;
            if (std::strcmp(name, kZBufferDriverName) == 0) {
                *holder = nullptr;
                return false;
            }
        }
    }

    *holder = driver;
    if (driver != nullptr) return true;

    const bool result = SelectStep(holder, nullptr, depth + 1);
    if (errors != 0) {
        std::string message;
        if (errors & kErrorBadVersion)
            message += "Driver version not valid, please recompile driver;";
        if (errors & kErrorNotFound) message += "Driver not found;";
        message.resize(std::min(message.size(), kMaxMessage));
        if (host != nullptr) host->ReportMessageA(kReportError, message.c_str());
    }
    return result;
}

} // namespace

bool ChooseDriver(DRIVER3D** holder, const char* name) {
    if (holder == nullptr) return false;
    return SelectStep(holder, name, 0);
}

bool RemoveDriver(DRIVER3D*& holder, bool notify) {
    DRIVER3D* driver = holder;
    if (driver == nullptr) return false;
    if (notify && driver->view != nullptr) driver->view->OnDriverDetached(0, 0);
    holder = nullptr;
    driver->Release();
    return true;
}

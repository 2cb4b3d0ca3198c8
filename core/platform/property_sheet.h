// Property sheets of the host: the system's sheet on Windows; on POSIX, pages over control
// sets that only a script edits. Hosts link this; the module does not.
#pragma once

#include <functional>
#include <vector>

#include "interface/property_sheet.h"

namespace q5plat {

// Edits the first page of a sheet that no user sees; true ends it with OK, false cancels.
using SheetScript = std::function<bool(q5_HWND page)>;

// Whether a sheet without a script can go to a user.
#if defined(_WIN32)
inline constexpr bool kSheetsForUsers = true;
#else
inline constexpr bool kSheetsForUsers = false;
#endif

// Results of RunPropertySheet besides kSheetOk.
inline constexpr std::int32_t kSheetCancelled = 2;
inline constexpr std::int32_t kSheetFailed = -1;

// Shows a sheet of `pages`, read as the platform's page records. Without a script the user
// runs it modally (Windows; POSIX has no user interface and fails) and the result is the
// system's. With one, the pages are made and initialised, the script edits the first, and the
// sheet ends with OK (every page gets the apply notification; kSheetOk) or is cancelled
// (kSheetCancelled, nothing applied).
std::int32_t RunPropertySheet(q5_HWND parent, const q5_WCHAR* title,
                              const std::vector<q5_PROPSHEETPAGE>& pages,
                              const SheetScript* script);

} // namespace q5plat

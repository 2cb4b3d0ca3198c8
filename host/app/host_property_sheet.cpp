// The reference host's property sheet.
#include "host/app/host_property_sheet.h"

#include "core/platform/dialog_controls.h"

HostPropertySheet::HostPropertySheet(q5_HWND parent, const q5plat::SheetScript* script)
    : parent_(parent), script_(script) {}

void HostPropertySheet::DeleteThis() {
    delete this;
}

std::int32_t HostPropertySheet::AddPage(const q5_PROPSHEETPAGE* page) {
    if (page == nullptr) return 0;
    pages_.push_back(*page);
    return 1;
}

std::int32_t HostPropertySheet::Run(std::int32_t, const q5_WCHAR* title) {
    // Driver dialogs name the host's spin control class.
    q5plat::RegisterSpinControlClass();
    return q5plat::RunPropertySheet(parent_, title, pages_, script_);
}

// The reference host's property sheet: it keeps the pages a driver adds and runs them through
// the platform's sheet, under the host's script when it has one.
#pragma once

#include <vector>

#include "core/platform/property_sheet.h"

class HostPropertySheet final : public q5_PROPERTYSHEET {
public:
    // `script` (null: the user runs the sheet) outlives the sheet.
    HostPropertySheet(q5_HWND parent, const q5plat::SheetScript* script);

    void DeleteThis() override;
    std::int32_t AddPage(const q5_PROPSHEETPAGE* page) override;
    std::int32_t Run(std::int32_t zero, const q5_WCHAR* title) override;

private:
    ~HostPropertySheet() = default;

    q5_HWND parent_;
    const q5plat::SheetScript* script_;
    std::vector<q5_PROPSHEETPAGE> pages_;
};

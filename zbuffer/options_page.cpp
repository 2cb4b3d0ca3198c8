// The driver's options page, "Driver", and the four settings it edits.
#include "zbuffer/options_page.h"
#include "core/platform/dialog_controls.h"
#include "core/platform/system_info.h"
#include "core/services/host_link.h"
#include "interface/gapi.h"
#include "interface/property_sheet.h"
#include "interface/view.h"
#include "zbuffer/izb.h"

namespace {

using namespace options_page;

constexpr const char* kUse2Thread = "Render\\ZB\\Use2Thread";
constexpr const char* kRefine = "Render\\ZB\\Refine";
constexpr const char* kHighQuality = "Render\\ZB\\HQ";
constexpr const char* kHighQualityTriangles = "Render\\ZB\\HQtri";
constexpr const char* kHelpTopic = "options_render.htm";
constexpr std::int32_t kSheetTitleId = 5;
constexpr std::int32_t kPageTitleId = 6;
constexpr std::int32_t kKindSettingsChanged = 4;
constexpr std::uint32_t kPageRecordSize = 104;

// The page record carries no driver, so the page learns whose string table to use from
// ShowOptions, which runs the modal sheet on the same thread.
thread_local const DriverModule* gShowingModule = nullptr;

std::int32_t Setting(q5_GAPI* host, const char* key, std::int32_t defaultValue) {
    return host->GetSettingInt(0, key, defaultValue);
}

// Decimal digits with optional surrounding spaces, within 32 bits.
bool ParseUnsigned(const std::u16string& text, std::uint32_t& value) {
    std::size_t i = 0, end = text.size();
    while (i < end && text[i] == u' ') ++i;
    while (end > i && text[end - 1] == u' ') --end;
    if (i == end) return false;
    std::uint64_t n = 0;
    for (; i < end; ++i) {
        if (text[i] < u'0' || text[i] > u'9') return false;
        n = n * 10 + static_cast<std::uint64_t>(text[i] - u'0');
        if (n > 0xFFFFFFFFu) return false;
    }
    value = static_cast<std::uint32_t>(n);
    return true;
}

void InitialisePage(q5_GAPI* host, q5_HWND page, std::intptr_t initArgument) {
    const std::uint64_t table = gShowingModule != nullptr ? gShowingModule->stringTable : 0;
    host->LocalizeDialog(table, page, initArgument);
    if (q5plat::ProcessorCount() >= 2) {
        q5plat::CheckDlgButton(page, kUse2ThreadBox, Setting(host, kUse2Thread, 1) != 0);
    } else {
        q5plat::EnableDlgItem(page, kUse2ThreadBox, false);
        q5plat::CheckDlgButton(page, kUse2ThreadBox, false);
    }
    q5plat::CheckDlgButton(page, kRefineBox, Setting(host, kRefine, 1) != 0);
    q5plat::CheckDlgButton(page, kHighQualityBox, Setting(host, kHighQuality, 0) != 0);
    const auto triangles = static_cast<std::uint32_t>(Setting(host, kHighQualityTriangles, 5000));
    std::u16string digits;
    for (std::uint32_t n = triangles;; n /= 10) {
        digits.insert(digits.begin(), static_cast<q5_WCHAR>(u'0' + n % 10));
        if (n < 10) break;
    }
    q5plat::SetDlgItemText(page, kTrianglesEdit, digits.c_str());
    // The host's spin control gives 1144's pair its own meaning; 1145's is the range.
    double pair1144[2] = {100.0, 100.0};
    double range[2] = {0.0, 1e30};
    q5plat::SendDlgItemMessage(page, kTrianglesSpin, q5plat::kSpinMessage1144, 0,
                               reinterpret_cast<std::intptr_t>(pair1144));
    q5plat::SendDlgItemMessage(page, kTrianglesSpin, q5plat::kSpinMessage1145, 0,
                               reinterpret_cast<std::intptr_t>(range));
}

void ApplyPage(q5_GAPI* host, q5_HWND page) {
    if (q5plat::IsDlgItemEnabled(page, kUse2ThreadBox))
        host->SetSettingInt(0, kUse2Thread, q5plat::IsDlgButtonChecked(page, kUse2ThreadBox));
    host->SetSettingInt(0, kRefine, q5plat::IsDlgButtonChecked(page, kRefineBox));
    const bool highQuality = q5plat::IsDlgButtonChecked(page, kHighQualityBox);
    host->SetSettingInt(0, kHighQuality, highQuality);
    std::uint32_t triangles = 0;
    if (highQuality && ParseUnsigned(q5plat::GetDlgItemText(page, kTrianglesEdit), triangles))
        host->SetSettingInt(0, kHighQualityTriangles, static_cast<std::int32_t>(triangles));
}

std::intptr_t OptionsPageProc(q5_HWND page, std::uint32_t message, std::uintptr_t,
                              std::intptr_t l) {
    q5_GAPI* host = q5GetHostAPI();
    if (host == nullptr) return 0;
    switch (message) {
    case kMsgInitDialog:
        InitialisePage(host, page, l);
        return 1;
    case kMsgNotify: {
        const auto* header = reinterpret_cast<const q5_NMHDR*>(l);
        if (header == nullptr) return 0;
        if (header->code == kNotifyApply) {
            ApplyPage(host, page);
            return 1;
        }
        if (header->code == kNotifyHelp) {
            host->ShowHelp(kHelpTopic, 0, reinterpret_cast<void*>(l));
            return 1;
        }
        return 0;
    }
    case kMsgHelp:
        host->ShowHelp(kHelpTopic, 0, reinterpret_cast<void*>(l));
        return 0;
    default:
        return 0;
    }
}

} // namespace

bool IZB::ShowOptions(q5_HWND parent) {
    q5_GAPI* host = q5GetHostAPI();
    q5_PROPERTYSHEET* sheet = host != nullptr ? host->CreatePropertySheet(parent, 0) : nullptr;
    if (sheet == nullptr) return false;
    q5_PROPSHEETPAGE page = {};
    page.dwSize = kPageRecordSize;
    page.dwFlags = kPageUseTitle | kPageHasHelp;
    page.hInstance = module_.module;
    page.pszTemplate = q5IntResource(kDialogId);
    page.pszTitle = module_.String(kPageTitleId);
    page.pfnDlgProc = OptionsPageProc;
    sheet->AddPage(&page);
    const DriverModule* outer = gShowingModule;
    gShowingModule = &module_;
    const std::int32_t result = sheet->Run(0, module_.String(kSheetTitleId));
    gShowingModule = outer;
    sheet->Release();
    if (result == kSheetOk && view != nullptr) {
        const bool before = useTwoThreads;
        ReadSettings();
        if (useTwoThreads != before) view->OnDriverSettingsChanged();
    }
    return result == kSheetOk;
}

std::int32_t IZB::Notify(std::int32_t kind) {
    if (kind == kKindSettingsChanged) {
        const bool before = useTwoThreads;
        ReadSettings();
        if (useTwoThreads != before && view != nullptr) view->OnDriverSettingsChanged();
    }
    return 0;
}

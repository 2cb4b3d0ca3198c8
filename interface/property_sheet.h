// The host's property sheet, the page record a driver hands it and the notification header
// its pages receive.
#pragma once

#include <cstddef>

#include "interface/extension.h"

// A dialog procedure; on 64-bit Windows it is the system's own dialog procedure type.
using q5_DLGPROC = std::intptr_t (*)(q5_HWND dialog, std::uint32_t message, std::uintptr_t w,
                                     std::intptr_t l);

// Dialog messages and the sheet's notification codes the pages see.
inline constexpr std::uint32_t kMsgInitDialog = 272;
inline constexpr std::uint32_t kMsgNotify = 78;
inline constexpr std::uint32_t kMsgHelp = 83;
inline constexpr std::int32_t kNotifyApply = -202;
inline constexpr std::int32_t kNotifyHelp = -205;

inline constexpr std::uint32_t kPageUseTitle = 0x8;
inline constexpr std::uint32_t kPageHasHelp = 0x20;

// The platform's 64-bit property-page record in its newest form, 104 bytes; the sheet reads it
// as it stands.
struct q5_PROPSHEETPAGE {
    std::uint32_t dwSize;
    std::uint32_t dwFlags;
    q5_HINSTANCE hInstance;
    const q5_WCHAR* pszTemplate; // or an integer resource id in the low 16 bits
    void* hIcon;
    const q5_WCHAR* pszTitle;
    q5_DLGPROC pfnDlgProc;
    std::intptr_t lParam;
    void* pfnCallback;
    std::uint32_t* pcRefParent;
    const q5_WCHAR* pszHeaderTitle;
    const q5_WCHAR* pszHeaderSubTitle;
    void* hActCtx;
    void* hbmHeader;
};
static_assert(sizeof(void*) == 8, "the page record is the 64-bit one");
static_assert(sizeof(q5_PROPSHEETPAGE) == 104);
static_assert(offsetof(q5_PROPSHEETPAGE, hInstance) == 8);
static_assert(offsetof(q5_PROPSHEETPAGE, pszTemplate) == 16);
static_assert(offsetof(q5_PROPSHEETPAGE, pszTitle) == 32);
static_assert(offsetof(q5_PROPSHEETPAGE, pfnDlgProc) == 40);
static_assert(offsetof(q5_PROPSHEETPAGE, lParam) == 48);
static_assert(offsetof(q5_PROPSHEETPAGE, pfnCallback) == 56);
static_assert(offsetof(q5_PROPSHEETPAGE, hActCtx) == 88);
static_assert(offsetof(q5_PROPSHEETPAGE, hbmHeader) == 96);

// The header that the second argument of a notification message points to.
struct q5_NMHDR {
    q5_HWND hwndFrom;
    std::uintptr_t idFrom;
    std::int32_t code;
};
static_assert(sizeof(q5_NMHDR) == 24 && offsetof(q5_NMHDR, code) == 16);

// An integer resource id as the record's template field carries it.
inline const q5_WCHAR* q5IntResource(std::uint16_t id) {
    return reinterpret_cast<const q5_WCHAR*>(static_cast<std::uintptr_t>(id));
}

// Result of Run when the user closed the sheet with OK.
inline constexpr std::int32_t kSheetOk = 1;

class q5_PROPERTYSHEET : public q5_interface {
public:
    // Slots 4-8 are the host's own; drivers never call them.
    virtual std::int64_t HostOperation4() { return 0; }
    virtual std::int64_t HostOperation5() { return 0; }
    virtual std::int64_t HostOperation6() { return 0; }
    virtual std::int64_t HostOperation7() { return 0; }
    virtual std::int64_t HostOperation8() { return 0; }
    // Slot 9: the sheet keeps a copy of the record.
    virtual std::int32_t AddPage(const q5_PROPSHEETPAGE* page) = 0;
    // Slot 10: shows the sheet; kSheetOk when it was closed with OK.
    virtual std::int32_t Run(std::int32_t zero, const q5_WCHAR* title) = 0;

protected:
    ~q5_PROPERTYSHEET() = default;
};
